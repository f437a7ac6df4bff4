// File-system operations of the settings file's owner on POSIX systems.
#include "cfgq_file_platform.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace cfgq_platform {

namespace {

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

constexpr mode_t owner_only = S_IRUSR | S_IWUSR;

file_state from_stat(const struct stat& st) {
  file_state state;
  state.exists = true;
  state.regular = S_ISREG(st.st_mode);
  state.link = S_ISLNK(st.st_mode);
  state.size = st.st_size;
  state.modified_ms = qint64{st.st_mtim.tv_sec} * 1'000 + st.st_mtim.tv_nsec / 1'000'000;
  state.device = static_cast<qint64>(st.st_dev);
  state.inode = static_cast<qint64>(st.st_ino);
  state.changed_ns = qint64{st.st_ctim.tv_sec} * 1'000'000'000 + st.st_ctim.tv_nsec;
  state.mode = st.st_mode & 07777;
  state.owner = st.st_uid;
  state.group = st.st_gid;
  return state;
}

QString error_text(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

void set_why(QString* why, int error) {
  if (why != nullptr) *why = error_text(error);
}

}  // namespace

file_state state_of(const QString& path, bool follow_links) {
  struct stat st {};
  const QByteArray native = QFile::encodeName(path);
  const int result = follow_links ? ::stat(native.constData(), &st) : ::lstat(native.constData(), &st);
  if (result != 0) return {};
  return from_stat(st);
}

QString final_target(const QString& path) {
  QString current = path;
  // Forty links, as the kernel allows, then the chain counts as a loop.
  for (int hop = 0; hop < 40; ++hop) {
    const QByteArray native = QFile::encodeName(current);
    std::vector<char> buffer(4096);
    const ssize_t length = ::readlink(native.constData(), buffer.data(), buffer.size());
    if (length < 0 || static_cast<size_t>(length) >= buffer.size()) return current;
    const QString target = QFile::decodeName(QByteArray(buffer.data(), static_cast<int>(length)));
    current = QDir::cleanPath(QFileInfo(current).dir().absoluteFilePath(target));
  }
  return path;
}

bool touch_later(const QString& path, qint64 after_ms, QString* why) {
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  qint64 new_ms = qint64{now.tv_sec} * 1'000 + now.tv_nsec / 1'000'000;
  if (new_ms <= after_ms) new_ms = after_ms + 1;
  const struct timespec times[2] = {
      {0, UTIME_OMIT},
      {static_cast<time_t>(new_ms / 1'000), static_cast<long>(new_ms % 1'000) * 1'000'000}};
  if (::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0) return true;
  set_why(why, errno);
  return false;
}

bool make_private_file(const QString& path, const file_state* like, QString* why) {
  const owned_fd fd(::open(QFile::encodeName(path).constData(),
                           O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, owner_only));
  if (fd.get() < 0) {
    set_why(why, errno);
    return false;
  }
  // The mode given to open is narrowed by the umask only, never widened; fchmod says it exactly.
  const mode_t mode = like != nullptr && like->exists ? static_cast<mode_t>(like->mode) : owner_only;
  if (like != nullptr && like->exists && ::geteuid() == 0) {
    // Only root can give a file away; the file keeps its owner through the set-aside.
    if (::fchown(fd.get(), static_cast<uid_t>(like->owner), static_cast<gid_t>(like->group)) != 0) {
      set_why(why, errno);
    }
  }
  ::fchmod(fd.get(), mode);
  return true;
}

void restore_owner_and_mode(const QString& path, const file_state& like) {
  if (!like.exists) return;
  const QByteArray native = QFile::encodeName(path);
  const owned_fd fd(::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat st {};
  if (fd.get() < 0 || ::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) return;
  if ((st.st_uid != like.owner || st.st_gid != like.group) && ::geteuid() == 0) {
    if (::fchown(fd.get(), static_cast<uid_t>(like.owner), static_cast<gid_t>(like.group)) != 0) {
      return;
    }
  }
  if ((st.st_mode & 07777) != like.mode) ::fchmod(fd.get(), static_cast<mode_t>(like.mode));
}

bool hard_link(const QString& from, const QString& to, QString* why) {
  if (::link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0) {
    return true;
  }
  set_why(why, errno);
  return false;
}

bool rename_over(const QString& from, const QString& to, QString* why) {
  if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0) {
    return true;
  }
  set_why(why, errno);
  return false;
}

bool remove_file(const QString& path) {
  return ::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
}

QString make_private_dir(const QString& pattern) {
  QByteArray native = QFile::encodeName(pattern);
  if (::mkdtemp(native.data()) == nullptr) return QString();
  // mkdtemp makes it 0700 whatever the umask.
  return QFile::decodeName(native);
}

bool make_link(const QString& target, const QString& link) {
  return ::symlink(QFile::encodeName(target).constData(), QFile::encodeName(link).constData()) == 0;
}

void own_private_file(const QString& path) {
  const QByteArray native = QFile::encodeName(path);
  // O_NONBLOCK: a pipe planted at the path must not stop the process here.
  const owned_fd fd(::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (fd.get() < 0) {
    // ELOOP: a symbolic link stands at the path. ENOENT: the file is gone.
    const int error = errno;
    if (error == ELOOP) {
      struct stat link {};
      if (::lstat(native.constData(), &link) != 0 || !S_ISLNK(link.st_mode)) return;
      if (::unlink(native.constData()) != 0) return;
    }
    if (error == ELOOP || error == ENOENT) make_private_file(path, nullptr, nullptr);
    return;
  }
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0) return;
  // No link left: a writer on another thread renamed a new file into place since the open, and
  // that file is the one to keep.
  if (st.st_nlink == 0) return;
  if (!S_ISREG(st.st_mode) || st.st_uid != ::geteuid() || st.st_nlink != 1) {
    // Not ours to read: a directory stays (Qt then can't use it); anything else is replaced,
    // unless a writer replaced it first.
    struct stat now {};
    if (S_ISDIR(st.st_mode) || ::lstat(native.constData(), &now) != 0) return;
    if (now.st_dev != st.st_dev || now.st_ino != st.st_ino) return;
    if (::unlink(native.constData()) != 0) return;
    make_private_file(path, nullptr, nullptr);
    return;
  }
  if ((st.st_mode & 07777) != owner_only) ::fchmod(fd.get(), owner_only);
}

void remove_dead_empty_lock(const QString& path, qint64 min_age_ms) {
  const QByteArray native = QFile::encodeName(path);
  const owned_fd fd(::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (fd.get() < 0) return;
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size != 0) return;
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const qint64 age_ms = (qint64{now.tv_sec} - st.st_mtim.tv_sec) * 1'000 +
                        (now.tv_nsec - st.st_mtim.tv_nsec) / 1'000'000;
  if (age_ms < min_age_ms) return;
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return;
  ::unlink(native.constData());
}

qint64 this_user() { return ::geteuid(); }

qint64 this_process() { return ::getpid(); }

bool process_is_gone(qint64 pid) {
  if (pid <= 0) return false;
  return ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

bool process_is_stopped(qint64 pid) {
  QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
  if (!stat.open(QIODevice::ReadOnly)) return false;
  const QByteArray line = stat.readAll();
  // "pid (name) S ...": the state follows the last ')' (a name may hold one).
  const int close = line.lastIndexOf(')');
  if (close < 0 || close + 2 >= line.size()) return false;
  const char state = line.at(close + 2);
  return state == 'T' || state == 't';
}

QString last_error_text() { return error_text(errno); }

}  // namespace cfgq_platform
