// General-utilities stand-in. Every query reads the environment when asked.
#include "gen.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

std::string env_text(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

#ifndef _WIN32
// Owns a file descriptor and closes it on every path.
class owned_fd {
 public:
  explicit owned_fd(int fd) : m_fd(fd) {}
  ~owned_fd() {
    if (m_fd >= 0) ::close(m_fd);
  }
  owned_fd(const owned_fd&) = delete;
  owned_fd& operator=(const owned_fd&) = delete;
  int get() const { return m_fd; }

 private:
  int m_fd;
};
#endif

}  // namespace

bool gen_is_empty_string(const char* text) { return text == nullptr || text[0] == '\0'; }

// The temporary directory, temporary files and the profile directory; Windows has its own in
// gen_win.cpp.
#ifndef _WIN32

std::string gen_get_temp_path() {
  std::string dir = env_text("TMPDIR");
  if (dir.empty()) dir = "/tmp";
  return dir;
}

std::string gen_create_temp_file(const std::string& directory, const std::string& prefix) {
  std::string pattern = directory;
  if (!pattern.empty() && pattern.back() != '/') pattern += '/';
  pattern += prefix + "XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  // mkostemp opens with O_CREAT | O_EXCL, so a link at the chosen name is never followed.
  owned_fd fd(::mkostemp(name.data(), O_CLOEXEC));
  if (fd.get() < 0) return std::string();
  if (::fchmod(fd.get(), S_IRUSR | S_IWUSR) != 0) {
    ::unlink(name.data());
    return std::string();
  }
  return std::string(name.data());
}

std::string gen_get_user_profile_directory() {
  return env_text("HOME");
}

#endif  // !_WIN32

int gen_strcmp(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return a == b ? 0 : (a == nullptr ? -1 : 1);
  return std::strcmp(a, b);
}

bool gen_get_is_qt() { return env_text("KORVEL_QT_PROCESS") == "1"; }
