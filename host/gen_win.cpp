// General-utilities stand-in on Windows: the temporary directory, temporary files and the user's
// profile directory, through the Win32 API. The platform-neutral queries are in gen.cpp.
#include "gen.h"

#include <algorithm>
#include <memory>

#include "wide_text_win.h"

#include <bcrypt.h>
#include <knownfolders.h>
#include <sddl.h>
#include <shlobj.h>

namespace {

// Owns a file handle and closes it on every path.
class owned_handle {
 public:
  explicit owned_handle(HANDLE handle) : m_handle(handle) {}
  ~owned_handle() {
    if (valid()) CloseHandle(m_handle);
  }
  owned_handle(const owned_handle&) = delete;
  owned_handle& operator=(const owned_handle&) = delete;
  bool valid() const { return m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE; }

 private:
  HANDLE m_handle;
};

struct local_free {
  void operator()(void* memory) const { LocalFree(memory); }
};
struct task_memory_free {
  void operator()(wchar_t* memory) const { CoTaskMemFree(memory); }
};

// An environment variable as UTF-8, read in UTF-16 so that a profile path outside the process's
// code page comes through whole; empty when unset.
std::string env_utf8(const wchar_t* name) {
  std::wstring value(64, L'\0');
  for (;;) {
    const DWORD length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    if (length == 0) return std::string();
    if (length < value.size()) {
      value.resize(length);
      return wide_to_utf8(value);
    }
    value.resize(length);  // too small: `length` counts the terminating NUL
  }
}

// Sixteen random hexadecimal digits from the system's generator, so that the next name is
// unpredictable to anyone planting files in the directory.
bool random_name_part(std::wstring* part) {
  unsigned char bytes[8];
  if (!BCRYPT_SUCCESS(BCryptGenRandom(nullptr, bytes, sizeof bytes,
                                      BCRYPT_USE_SYSTEM_PREFERRED_RNG))) {
    return false;
  }
  static const wchar_t digits[] = L"0123456789abcdef";
  part->clear();
  for (unsigned char byte : bytes) {
    part->push_back(digits[byte >> 4]);
    part->push_back(digits[byte & 0x0f]);
  }
  return true;
}

// A path as the suite's Qt code writes it, with "/" between the levels ("C:/Users/me"): the
// library compares the paths it is given with the ones Qt hands back.
std::string with_slashes(std::wstring path) {
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return wide_to_utf8(path);
}

// This process's user as SID text ("S-1-5-21-...").
bool current_user_sid(std::wstring* sid) {
  HANDLE raw_token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &raw_token)) return false;
  const owned_handle token(raw_token);
  DWORD size = 0;
  GetTokenInformation(raw_token, TokenUser, nullptr, 0, &size);
  std::string buffer(size, '\0');
  if (size == 0 || !GetTokenInformation(raw_token, TokenUser, buffer.data(), size, &size)) {
    return false;
  }
  LPWSTR raw_text = nullptr;
  if (!ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &raw_text)) {
    return false;
  }
  const std::unique_ptr<void, local_free> text(raw_text);
  *sid = raw_text;
  return true;
}

bool ends_with_separator(const std::wstring& path) {
  return !path.empty() && (path.back() == L'\\' || path.back() == L'/');
}

// How many names are tried before giving up; a clash is already unlikely at the first.
constexpr int name_attempts = 100;

}  // namespace

std::string gen_get_temp_path() {
  // The system's choice: TMP, TEMP or USERPROFILE, else the Windows directory.
  wchar_t buffer[MAX_PATH + 1];
  const DWORD length = GetTempPathW(MAX_PATH + 1, buffer);
  if (length == 0 || length > MAX_PATH) return std::string();
  std::wstring dir(buffer, length);
  // "C:\Users\me\AppData\Local\Temp\" -> "...\Temp", as the other platforms give it; a drive's
  // root keeps its separator.
  if (dir.size() > 3 && ends_with_separator(dir)) dir.pop_back();
  return with_slashes(dir);
}

std::string gen_create_temp_file(const std::string& directory, const std::string& prefix) {
  std::wstring base;
  std::wstring wide_prefix;
  if (!utf8_to_wide(directory, &base) || !utf8_to_wide(prefix, &wide_prefix)) return std::string();
  if (!base.empty() && !ends_with_separator(base)) base += L'\\';
  base += wide_prefix;

  // Only this user has access, and nothing is inherited from the directory. The user is named
  // by its own SID: the owner-rights entry (OW) also took the replace-by-rename that Qt's save
  // needs away from the user under Wine.
  std::wstring user_sid;
  if (!current_user_sid(&user_sid)) return std::string();
  const std::wstring sddl = L"D:P(A;;FA;;;" + user_sid + L")";
  PSECURITY_DESCRIPTOR raw_descriptor = nullptr;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1,
                                                            &raw_descriptor, nullptr)) {
    return std::string();
  }
  const std::unique_ptr<void, local_free> descriptor(raw_descriptor);
  SECURITY_ATTRIBUTES attributes{};
  attributes.nLength = sizeof attributes;
  attributes.lpSecurityDescriptor = descriptor.get();
  attributes.bInheritHandle = FALSE;

  for (int attempt = 0; attempt < name_attempts; ++attempt) {
    std::wstring part;
    if (!random_name_part(&part)) return std::string();
    const std::wstring path = base + part + L".tmp";
    // CREATE_NEW fails on any existing name, a link included, and never opens what it points to.
    const owned_handle file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, &attributes,
                                        CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT,
                                        nullptr));
    if (file.valid()) return with_slashes(path);
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) return std::string();
  }
  return std::string();
}

std::string gen_get_user_profile_directory() {
  std::string dir = env_utf8(L"USERPROFILE");
  if (!dir.empty()) {
    std::replace(dir.begin(), dir.end(), '\\', '/');
    return dir;
  }
  // Unset in the environment: ask the shell for the profile folder.
  PWSTR raw_path = nullptr;
  const HRESULT result = SHGetKnownFolderPath(FOLDERID_Profile, KF_FLAG_DEFAULT, nullptr, &raw_path);
  // The buffer is the caller's to free even when the call fails.
  const std::unique_ptr<wchar_t, task_memory_free> path(raw_path);
  if (FAILED(result) || path == nullptr) return std::string();
  return with_slashes(path.get());
}
