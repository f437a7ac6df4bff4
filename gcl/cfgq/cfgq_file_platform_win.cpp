// File-system operations of the settings file's owner on Windows.
// May use: cfgq_file_platform.
#include "cfgq_file_platform.h"

#include <windows.h>

#include <limits>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QRandomGenerator>
#include <QSysInfo>

namespace cfgq_platform {

namespace {

// Owns a Win32 handle and closes it on every path.
class owned_handle {
 public:
  explicit owned_handle(HANDLE handle) : m_handle(handle) {}
  ~owned_handle() {
    if (valid()) ::CloseHandle(m_handle);
  }
  owned_handle(const owned_handle&) = delete;
  owned_handle& operator=(const owned_handle&) = delete;
  bool valid() const { return m_handle != INVALID_HANDLE_VALUE && m_handle != nullptr; }
  HANDLE get() const { return m_handle; }

 private:
  HANDLE m_handle;
};

std::wstring native(const QString& path) {
  return QDir::toNativeSeparators(path).toStdWString();
}

QString error_text(DWORD error) {
  wchar_t* text = nullptr;
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  QString result = length > 0 ? QString::fromWCharArray(text, static_cast<int>(length)).trimmed()
                              : QStringLiteral("error %1").arg(error);
  if (text != nullptr) ::LocalFree(text);
  return result;
}

void set_why(QString* why) {
  if (why != nullptr) *why = error_text(::GetLastError());
}

// The longest single pause between tries of a refused rename; the pauses double from 5 ms, so
// all of them together come to about a second.
constexpr DWORD rename_retry_limit_ms = 640;

qint64 to_ms(const FILETIME& time) {
  ULARGE_INTEGER value;
  value.LowPart = time.dwLowDateTime;
  value.HighPart = time.dwHighDateTime;
  // 100 ns ticks since 1601 to ms since 1970.
  return static_cast<qint64>(value.QuadPart / 10'000) - 11'644'473'600'000LL;
}

FILETIME from_ms(qint64 ms) {
  ULARGE_INTEGER value;
  value.QuadPart = static_cast<ULONGLONG>(ms + 11'644'473'600'000LL) * 10'000;
  FILETIME time;
  time.dwLowDateTime = value.LowPart;
  time.dwHighDateTime = value.HighPart;
  return time;
}

}  // namespace

file_state state_of(const QString& path, bool follow_links) {
  const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | (follow_links ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
  const owned_handle file(::CreateFileW(native(path).c_str(), FILE_READ_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, flags, nullptr));
  if (!file.valid()) return {};
  BY_HANDLE_FILE_INFORMATION info;
  if (!::GetFileInformationByHandle(file.get(), &info)) return {};
  file_state state;
  state.exists = true;
  state.link = (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && !follow_links;
  state.regular = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && !state.link;
  state.size = (static_cast<qint64>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
  state.modified_ms = to_ms(info.ftLastWriteTime);
  state.device = info.dwVolumeSerialNumber;
  state.inode = (static_cast<qint64>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
  // The change time moves with every write, also one whose modification time is then set back:
  // the same file rewritten to the same size with its old time is still told apart.
  FILE_BASIC_INFO basic;
  if (::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &basic, sizeof basic) &&
      basic.ChangeTime.QuadPart != 0) {
    state.changed_ns = (basic.ChangeTime.QuadPart - 116'444'736'000'000'000LL) * 100;
  } else {
    state.changed_ns = to_ms(info.ftLastWriteTime) * 1'000'000;
  }
  state.mode = (info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) ? 0400 : 0600;
  state.owner = this_user();  // what the process reaches in the profile counts as its user's
  return state;
}

file_state state_of(const QByteArray& native, bool follow_links) {
  return state_of(QFile::decodeName(native), follow_links);
}

QString final_target(const QString& path) {
  const owned_handle file(::CreateFileW(native(path).c_str(), 0,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file.valid()) {
    // A link whose target is missing: Qt knows where it points.
    const QString target = QFileInfo(path).symLinkTarget();
    return target.isEmpty() ? path : target;
  }
  wchar_t buffer[MAX_PATH * 4];
  const DWORD length = ::GetFinalPathNameByHandleW(file.get(), buffer, MAX_PATH * 4,
                                                   FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
  if (length == 0 || length >= MAX_PATH * 4) return path;
  QString result = QString::fromWCharArray(buffer, static_cast<int>(length));
  if (result.startsWith(QLatin1String("\\\\?\\"))) result = result.mid(4);
  return QDir::fromNativeSeparators(result);
}

bool touch_distinct(const QString& path, qint64 after_ms, QString* why) {
  const owned_handle file(::CreateFileW(native(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file.valid()) {
    set_why(why);
    return false;
  }
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  qint64 new_ms = to_ms(now);
  if (after_ms < 0) new_ms = 1'000;
  else if (new_ms <= after_ms) new_ms = after_ms + 1;
  const FILETIME written = from_ms(new_ms);
  if (::SetFileTime(file.get(), nullptr, nullptr, &written)) return true;
  set_why(why);
  return false;
}

void adopt_owner(const QString& path, const QString& directory) {
  // A file made in the profile inherits the profile's access list: nothing to hand over.
  (void)path;
  (void)directory;
}

void adopt_owner(const QString& path) { (void)path; }

bool make_directories(const QString& directory, QString* why) {
  if (QDir().mkpath(directory)) return true;
  set_why(why);
  return false;
}

bool make_private_file(const QString& path, const file_state* like, QString* why) {
  // A new file in the profile inherits the profile's access list, which is the user's own.
  const owned_handle file(::CreateFileW(native(path).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) {
    set_why(why);
    return false;
  }
  (void)like;
  return true;
}

bool restore_owner_and_mode(const QString& path, const file_state& like, QString* why) {
  // Ownership and access lists stay with the directory's inheritance on Windows.
  (void)path;
  (void)like;
  (void)why;
  return true;
}

bool read_file(const QString& path, QByteArray* bytes, bool* missing, QString* why) {
  // Shared for deletion too: a writer may rename its new file over this one meanwhile.
  const owned_handle file(::CreateFileW(native(path).c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  *missing = false;
  if (!file.valid()) {
    const DWORD error = ::GetLastError();
    *missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    *why = error_text(error);
    return false;
  }
  bytes->clear();
  char buffer[1 << 16];
  for (;;) {
    DWORD got = 0;
    if (!::ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr)) {
      set_why(why);
      return false;
    }
    if (got == 0) return true;
    bytes->append(buffer, static_cast<qsizetype>(got));
  }
}

bool write_new_file(const QString& path, const QByteArray& bytes, QString* why) {
  // A new file in the profile inherits the profile's access list, which is the user's own.
  const owned_handle file(::CreateFileW(native(path).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD wrote = 0;
  if (file.valid() &&
      (bytes.isEmpty() || (::WriteFile(file.get(), bytes.constData(),
                                       static_cast<DWORD>(bytes.size()), &wrote, nullptr) &&
                           wrote == static_cast<DWORD>(bytes.size()))) &&
      ::FlushFileBuffers(file.get())) {
    return true;
  }
  set_why(why);
  return false;
}

void sync_directory(const QString& directory) {
  // The rename is written through (MOVEFILE_WRITE_THROUGH): nothing more to flush.
  (void)directory;
}

bool hard_link(const QString& from, const QString& to, QString* why) {
  if (::CreateHardLinkW(native(to).c_str(), native(from).c_str(), nullptr)) return true;
  set_why(why);
  return false;
}

bool rename_over(const QString& from, const QString& to, QString* why) {
  // Another process may hold the file open without letting it be deleted (a reader through Qt,
  // an editor, a virus scanner, the search indexer): the system then refuses to replace it.
  // Such a hold is brief, so the rename is tried again for about a second before the write
  // fails. The rename replaces the file in one step or not at all, so the old file stays until
  // the new one takes its name (unlike ReplaceFileW, which can fail having moved the old file
  // away). A read-only file is refused at once: waiting would not change that.
  const std::wstring source = native(from);
  const std::wstring target = native(to);
  DWORD error = ERROR_SUCCESS;
  for (DWORD pause_ms = 5;; pause_ms *= 2) {
    if (::MoveFileExW(source.c_str(), target.c_str(),
                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      return true;
    }
    error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    const bool read_only =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
                      (error == ERROR_ACCESS_DENIED && !read_only);
    if (!held || pause_ms > rename_retry_limit_ms) break;
    ::Sleep(pause_ms);
  }
  if (why != nullptr) *why = error_text(error);
  return false;
}

bool remove_file(const QString& path) {
  return ::DeleteFileW(native(path).c_str()) || ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

QString make_private_dir(const QString& pattern) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    QString path = pattern;
    const QString letters = QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
    for (int i = path.size() - 6; i < path.size(); ++i) {
      path[i] = letters[QRandomGenerator::system()->bounded(letters.size())];
    }
    if (::CreateDirectoryW(native(path).c_str(), nullptr)) return path;
    if (::GetLastError() != ERROR_ALREADY_EXISTS) return QString();
  }
  return QString();
}

bool make_link(const QString& target, const QString& link) {
  // No links on Windows: making one needs a privilege or developer mode, and Wine reports
  // success without making one. Without a link the owner writes the file under its own name
  // and Qt takes the file's lock itself.
  (void)target;
  (void)link;
  return false;
}

void own_private_file(const QString& path) {
  const file_state state = state_of(path, false);
  if (state.exists && state.link) remove_file(path);
  if (!state.exists || state.link) make_private_file(path, nullptr, nullptr);
}

namespace {

// Opens `path` for its system lock: a byte-range lock on its first byte, which the system gives
// back when the process ends however it ends.
HANDLE open_locked(const QString& path, DWORD disposition) {
  HANDLE handle = ::CreateFileW(native(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return handle;
  OVERLAPPED at = {};
  if (!::LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &at)) {
    ::CloseHandle(handle);
    ::SetLastError(ERROR_LOCK_VIOLATION);
    return INVALID_HANDLE_VALUE;
  }
  return handle;
}

}  // namespace

struct lock_file::state {
  explicit state(const QString& path) : lock(path) {}
  QLockFile lock;  // on Windows the writer's open handle is the lock: Qt's own does it right
};

lock_file::lock_file(const QString& path, qint64 foreign_stale_ms)
    : m_path(path), m_foreign_stale_ms(foreign_stale_ms), m_state(std::make_unique<state>(path)) {
  m_state->lock.setStaleLockTime(static_cast<int>(foreign_stale_ms));
}

lock_file::~lock_file() = default;

lock_file::attempt lock_file::try_take(QString* why) {
  if (m_state->lock.tryLock(0)) return attempt::taken;
  if (m_state->lock.error() == QLockFile::LockFailedError) return attempt::held;
  if (why != nullptr) *why = error_text(::GetLastError());
  return attempt::failed;
}

bool read_lock_holder(const QString& path, lock_holder* holder) {
  QLockFile lock(path);
  qint64 pid = 0;
  QString host;
  QString program;
  if (!lock.getLockInfo(&pid, &host, &program)) return false;
  holder->pid = pid;
  holder->program = program;
  holder->host = host;
  holder->this_host = host == QSysInfo::machineHostName();
  return true;
}

bool lock_is_held(const QString& path) {
  // Qt's lock file on Windows is held open without sharing deletion: held while it can't go.
  const owned_handle file(::CreateFileW(native(path).c_str(), DELETE, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return !file.valid() && ::GetLastError() != ERROR_FILE_NOT_FOUND;
}

struct held_file::state {
  HANDLE handle = INVALID_HANDLE_VALUE;
  ~state() {
    if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
  }
};

held_file::held_file() = default;
held_file::~held_file() = default;

bool held_file::make(const QString& path, const QByteArray& text, QString* why) {
  auto made = std::make_unique<state>();
  made->handle = open_locked(path, CREATE_NEW);
  if (made->handle == INVALID_HANDLE_VALUE) {
    set_why(why);
    return false;
  }
  DWORD wrote = 0;
  if (!text.isEmpty() &&
      (!::WriteFile(made->handle, text.constData(), static_cast<DWORD>(text.size()), &wrote,
                    nullptr) ||
       wrote != static_cast<DWORD>(text.size()))) {
    set_why(why);
    made.reset();
    remove_file(path);
    return false;
  }
  m_state = std::move(made);
  return true;
}

bool held_file::made() const { return m_state != nullptr; }

void held_file::release() { m_state.reset(); }

holding held_file::take(const QString& path) {
  auto taken = std::make_unique<state>();
  taken->handle = open_locked(path, OPEN_EXISTING);
  if (taken->handle == INVALID_HANDLE_VALUE) {
    return ::GetLastError() == ERROR_FILE_NOT_FOUND ? holding::missing : holding::held;
  }
  m_state = std::move(taken);
  return holding::free;
}

holding holding_of(const QString& path) { return held_file().take(path); }

bool locks_stay_local(const QString& path) {
  (void)path;
  return false;
}

QString memory_dir() { return QString(); }

bool thread_end_deletes_qt_objects() { return false; }

namespace {

// A thread's values to destroy as it ends, in a fiber-local slot: the system calls
// run_thread_end with it as the thread ends, before the DLLs are told.
struct thread_end_list {
  std::vector<std::pair<void (*)(void*), void*>> entries;
};

void WINAPI run_thread_end(void* list) {
  auto* ending = static_cast<thread_end_list*>(list);
  for (auto it = ending->entries.rbegin(); it != ending->entries.rend(); ++it) it->first(it->second);
  delete ending;
}

}  // namespace

void at_thread_end(void (*destroy)(void*), void* value) {
  static const DWORD slot = ::FlsAlloc(run_thread_end);
  auto* list = static_cast<thread_end_list*>(::FlsGetValue(slot));
  if (list == nullptr) {
    list = new thread_end_list();
    ::FlsSetValue(slot, list);
  }
  list->entries.emplace_back(destroy, value);
}

qint64 this_user() { return 0; }

qint64 this_process() { return static_cast<qint64>(::GetCurrentProcessId()); }

bool process_is_stopped(qint64 pid) {
  (void)pid;
  return false;
}

qint64 free_bytes(const QString& path) {
  ULARGE_INTEGER available;
  if (!::GetDiskFreeSpaceExW(native(path).c_str(), &available, nullptr, nullptr)) {
    return std::numeric_limits<qint64>::max();
  }
  return static_cast<qint64>(available.QuadPart);
}

QString last_error_text() { return error_text(::GetLastError()); }

}  // namespace cfgq_platform
