// General-utilities stand-in. Every query reads the environment when asked.
#include "gen.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifndef _WIN32
#include <fcntl.h>
#include <pwd.h>
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
  // The process id in the name lets a later process tell that its maker is gone.
  pattern += prefix + "." + std::to_string(::getpid()) + ".XXXXXX";
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
  std::string home = env_text("HOME");
  if (!home.empty()) return home;
  // No HOME (a service, `env -u HOME`): the password database, as the system's own lookup does.
  std::vector<char> buffer(16384);
  struct passwd entry {};
  struct passwd* found = nullptr;
  if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
      found != nullptr && found->pw_dir != nullptr) {
    home = found->pw_dir;
  }
  return home;
}

#endif  // !_WIN32

int gen_strcmp(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return a == b ? 0 : (a == nullptr ? -1 : 1);
  return std::strcmp(a, b);
}

bool gen_get_is_qt() { return env_text("KORVEL_QT_PROCESS") == "1"; }
