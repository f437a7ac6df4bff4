// File-system operations of the settings file's owner on POSIX systems.
#include "cfgq_file_platform.h"
#include "cfgq_file_platform_posix.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

namespace cfgq_platform {

using namespace posix;

namespace {

// Creates the missing directories of `directory`, each readable by the user alone.
int make_directories(const QByteArray& directory) {
  struct stat st;
  if (directory.isEmpty() || stat(directory.constData(), &st) == 0) return 0;
  const qsizetype slash = directory.lastIndexOf('/');
  if (slash > 0) {
    if (const int error = make_directories(directory.left(slash))) return error;
  }
  if (mkdir(directory.constData(), 0700) != 0) return errno == EEXIST ? 0 : errno;
  adopt_owner(QFile::decodeName(directory));
  // The umask may have taken bits away that the owner needs.
  return chmod(directory.constData(), 0700) == 0 ? 0 : errno;
}

}  // namespace

bool make_directories(const QString& directory, QString* why) {
  if (const int error = make_directories(QFile::encodeName(directory))) {
    if (why != nullptr) *why = QStringLiteral("can't create %1: %2").arg(directory, error_text(error));
    return false;
  }
  return true;
}

bool read_file(const QString& path, QByteArray* bytes, bool* missing, QString* why) {
  QFile file(path);
  *missing = false;
  if (file.open(QIODevice::ReadOnly)) {
    *bytes = file.readAll();
    if (file.error() == QFileDevice::NoError) return true;
  }
  *missing = !file.exists();
  *why = file.errorString();
  return false;
}

bool write_new_file(const QString& path, const QByteArray& bytes, QString* why) {
  const owned_fd fd(::open(QFile::encodeName(path).constData(),
                           O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, owner_only));
  int error = fd.get() < 0 ? errno : 0;
  if (error == 0 && ::fchmod(fd.get(), owner_only) != 0) error = errno;
  if (error == 0) error = write_all(fd.get(), bytes);
  if (error == 0 && ::fsync(fd.get()) != 0) error = errno;
  if (error == 0) return true;
  set_why(why, error);
  return false;
}

void sync_directory(const QString& directory) {
  const owned_fd dir(::open(QFile::encodeName(directory).constData(),
                            O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.get() >= 0) ::fsync(dir.get());
}

file_state state_of(const QByteArray& native, bool follow_links) {
  struct stat st {};
  const int result = follow_links ? ::stat(native.constData(), &st) : ::lstat(native.constData(), &st);
  if (result != 0) return {};
  return from_stat(st);
}

file_state state_of(const QString& path, bool follow_links) {
  return state_of(QFile::encodeName(path), follow_links);
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

bool touch_distinct(const QString& path, qint64 known_ms, QString* why) {
  const QByteArray native = QFile::encodeName(path);
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  qint64 new_ms = qint64{now.tv_sec} * 1'000 + now.tv_nsec / 1'000'000;
  // Where the file system keeps whole seconds, the next whole second after the known stamp. An
  // unknown stamp could be any a write gave: one that no write gives.
  const qint64 first = known_ms < 0 ? 1'000 : std::max(new_ms, known_ms + 1);
  for (const qint64 candidate : {first, std::max(new_ms, (known_ms / 1'000 + 1) * 1'000)}) {
    const struct timespec times[2] = {
        {0, UTIME_OMIT},
        {static_cast<time_t>(candidate / 1'000), static_cast<long>(candidate % 1'000) * 1'000'000}};
    if (::utimensat(AT_FDCWD, native.constData(), times, 0) != 0) {
      set_why(why, errno);
      return false;
    }
    if (known_ms < 0 || state_of(native, true).modified_ms != known_ms) return true;
  }
  set_why(why, EINVAL);
  return false;
}

void adopt_owner(const QString& path, const QString& directory) {
  if (::geteuid() != 0) return;
  struct stat dir {};
  if (::stat(QFile::encodeName(directory).constData(), &dir) != 0 || dir.st_uid == 0) return;
  ::lchown(QFile::encodeName(path).constData(), dir.st_uid, dir.st_gid);
}

void adopt_owner(const QString& path) { adopt_owner(path, QFileInfo(path).absolutePath()); }

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
  if (like == nullptr || !like->exists) adopt_owner(path);
  return true;
}

bool restore_owner_and_mode(const QString& path, const file_state& like, QString* why) {
  const QByteArray native = QFile::encodeName(path);
  const owned_fd fd(::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat st {};
  if (fd.get() < 0 || ::fstat(fd.get(), &st) != 0) {
    set_why(why, errno);
    return false;
  }
  if (st.st_uid != like.owner || st.st_gid != like.group) {
    // Only root gives a file away; anyone may give it a group of theirs.
    const uid_t owner = ::geteuid() == 0 ? static_cast<uid_t>(like.owner) : static_cast<uid_t>(-1);
    if (::fchown(fd.get(), owner, static_cast<gid_t>(like.group)) != 0) {
      ::fchown(fd.get(), owner, static_cast<gid_t>(-1));
    }
    if (::fstat(fd.get(), &st) != 0 || st.st_uid != like.owner) {
      if (why != nullptr) {
        *why = QStringLiteral("can't keep its owner (uid %1): %2")
                   .arg(like.owner)
                   .arg(error_text(EPERM));
      }
      return false;
    }
  }
  if ((st.st_mode & 07777) != like.mode) ::fchmod(fd.get(), static_cast<mode_t>(like.mode));
  return true;
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

bool thread_end_deletes_qt_objects() { return true; }

void at_thread_end(void (*destroy)(void*), void* value) {
  struct ender {
    std::vector<std::pair<void (*)(void*), void*>> entries;
    ~ender() {
      for (auto it = entries.rbegin(); it != entries.rend(); ++it) it->first(it->second);
    }
  };
  thread_local ender list;
  list.entries.emplace_back(destroy, value);
}

QString memory_dir() {
  struct stat st {};
  // A shared directory like /tmp: only with its sticky bit may one user's names be safe there.
  if (::lstat("/dev/shm", &st) != 0 || !S_ISDIR(st.st_mode) || (st.st_mode & S_ISVTX) == 0 ||
      ::access("/dev/shm", W_OK | X_OK) != 0) {
    return QString();
  }
  return QStringLiteral("/dev/shm");
}

qint64 this_user() { return ::geteuid(); }

qint64 this_process() { return ::getpid(); }

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

qint64 free_bytes(const QString& path) {
  struct statvfs vfs {};
  if (::statvfs(QFile::encodeName(path).constData(), &vfs) != 0) {
    return std::numeric_limits<qint64>::max();
  }
  return static_cast<qint64>(vfs.f_bavail) * static_cast<qint64>(vfs.f_frsize);
}

QString last_error_text() { return error_text(errno); }

}  // namespace cfgq_platform
