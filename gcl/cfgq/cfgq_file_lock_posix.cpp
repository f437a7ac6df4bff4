// The POSIX platform's locks among processes: the lock files of the settings file and the
// environment stores, the owner files of private directories, and where locks reach.
// May use: cfgq_file_platform, cfgq_file_platform_posix.
#include "cfgq_file_platform.h"
#include "cfgq_file_platform_posix.h"

#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>

namespace cfgq_platform {

using namespace posix;

namespace {

// The program's name as the lock's readers compare it: the name of /proc/<pid>/exe.
QByteArray program_name() {
  std::vector<char> buffer(4096);
  const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size() - 1);
  if (length <= 0) return QByteArray();
  const QByteArray path(buffer.data(), static_cast<int>(length));
  return path.mid(path.lastIndexOf('/') + 1);
}

QByteArray read_small(int fd) {
  char buffer[4096];
  const ssize_t got = ::pread(fd, buffer, sizeof buffer, 0);
  return got > 0 ? QByteArray(buffer, static_cast<int>(got)) : QByteArray();
}

// The lock file's text: process id, program, host, one a line; false when it holds no holder.
bool parse_lock(const QByteArray& bytes, lock_holder* holder) {
  const QList<QByteArray> lines = bytes.split('\n');
  if (lines.size() < 3) return false;
  bool number = false;
  holder->pid = lines[0].toLongLong(&number);
  if (!number || holder->pid <= 0) return false;
  holder->program = QString::fromUtf8(lines[1]);
  holder->host = QString::fromUtf8(lines[2]);
  holder->this_host = lines[2] == QSysInfo::machineHostName().toUtf8();
  return true;
}

// Opens a lock or marker file for taking its system lock: for writing where the process may (an
// NFS client forwards only a writer's exclusive lock), else for reading. Never through a link,
// never waiting on a pipe.
int open_for_locking(const QByteArray& path) {
  const int fd = ::open(path.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd >= 0 || errno != EACCES) return fd;
  return ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

// True when `path` still names the file open as `fd`.
bool still_named(int fd, const QByteArray& path) {
  struct stat open_file {};
  struct stat named {};
  return ::fstat(fd, &open_file) == 0 && ::lstat(path.constData(), &named) == 0 &&
         open_file.st_dev == named.st_dev && open_file.st_ino == named.st_ino;
}

// Makes `path` exclusively and takes its system lock before anything else can: a file that a
// sweeper removed between the two is given up. -1 with errno when it can't be made; -2 when it
// was lost to another process.
int make_locked(const QByteArray& path) {
  owned_fd fd(::open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                     owner_only));
  if (fd.get() < 0) return -1;
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 || !still_named(fd.get(), path)) return -2;
  return fd.release();
}

// Removes the lock at `path` when its system lock is free (and, for a lock naming another
// host, it is older than `foreign_stale_ms`); true when it is gone, so that the caller may try
// again.
bool remove_if_stale(const QByteArray& path, qint64 foreign_stale_ms) {
  const owned_fd fd(open_for_locking(path));
  if (fd.get() < 0) return errno == ENOENT;
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return false;
  lock_holder holder;
  if (parse_lock(read_small(fd.get()), &holder) && !holder.this_host) {
    struct timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const qint64 age_ms = (qint64{now.tv_sec} - st.st_mtim.tv_sec) * 1'000 +
                          (now.tv_nsec - st.st_mtim.tv_nsec) / 1'000'000;
    if (age_ms < foreign_stale_ms) return false;
  }
  // Still the file locked: another process may have taken over and made a new one meanwhile.
  if (!still_named(fd.get(), path)) return errno == ENOENT;
  return ::unlink(path.constData()) == 0 || errno == ENOENT;
}

}  // namespace

struct lock_file::state {
  owned_fd fd;
};

lock_file::lock_file(const QString& path, qint64 foreign_stale_ms)
    : m_path(path), m_foreign_stale_ms(foreign_stale_ms), m_state(std::make_unique<state>()) {}

lock_file::~lock_file() {
  if (m_state->fd.get() < 0) return;
  // Removed while still locked, so that no other process takes it over in between.
  ::unlink(QFile::encodeName(m_path).constData());
}

lock_file::attempt lock_file::try_take(QString* why) {
  if (m_state->fd.get() >= 0) return attempt::taken;
  const QByteArray native = QFile::encodeName(m_path);
  for (int round = 0; round < 2; ++round) {
    const int made = make_locked(native);
    if (made >= 0) {
      owned_fd fd(made);
      const QByteArray text = QByteArray::number(this_process()) + '\n' + program_name() + '\n' +
                              QSysInfo::machineHostName().toUtf8() + '\n' +
                              QSysInfo::machineUniqueId() + '\n' + QSysInfo::bootUniqueId() + '\n';
      if (const int error = [&] {
            qsizetype done = 0;
            while (done < text.size()) {
              const ssize_t wrote = ::write(fd.get(), text.constData() + done, text.size() - done);
              if (wrote < 0 && errno == EINTR) continue;
              if (wrote <= 0) return wrote < 0 ? errno : ENOSPC;
              done += wrote;
            }
            return 0;
          }()) {
        set_why(why, error);
        ::unlink(native.constData());
        return attempt::failed;
      }
      m_state->fd = std::move(fd);
      return attempt::taken;
    }
    if (made == -1 && errno != EEXIST) {
      set_why(why, errno);
      return attempt::failed;
    }
    if (made == -1 && !remove_if_stale(native, m_foreign_stale_ms)) return attempt::held;
  }
  return attempt::held;
}

bool read_lock_holder(const QString& path, lock_holder* holder) {
  const owned_fd fd(::open(QFile::encodeName(path).constData(),
                           O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  return fd.get() >= 0 && parse_lock(read_small(fd.get()), holder);
}

bool lock_is_held(const QString& path) { return holding_of(path) == holding::held; }

struct held_file::state {
  owned_fd fd;
};

held_file::held_file() = default;
held_file::~held_file() = default;

bool held_file::make(const QString& path, const QByteArray& text, QString* why) {
  const QByteArray native = QFile::encodeName(path);
  const int made = make_locked(native);
  if (made < 0) {
    set_why(why, made == -1 ? errno : EAGAIN);
    return false;
  }
  owned_fd fd(made);
  if (const int error = write_all(fd.get(), text)) {
    set_why(why, error);
    ::unlink(native.constData());
    return false;
  }
  adopt_owner(path);
  m_state = std::make_unique<state>();
  m_state->fd = std::move(fd);
  return true;
}

bool held_file::made() const { return m_state != nullptr; }

void held_file::release() { m_state.reset(); }

holding held_file::take(const QString& path) {
  owned_fd fd(open_for_locking(QFile::encodeName(path)));
  if (fd.get() < 0) return errno == ENOENT ? holding::missing : holding::held;
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return holding::held;
  m_state = std::make_unique<state>();
  m_state->fd = std::move(fd);
  return holding::free;
}

holding holding_of(const QString& path) { return held_file().take(path); }

bool locks_stay_local(const QString& path) {
  // The mount holding the path: the longest mount point that is a prefix of its directory.
  const QString dir = QFileInfo(path).absolutePath();
  QFile mounts(QStringLiteral("/proc/self/mounts"));
  if (!mounts.open(QIODevice::ReadOnly)) return false;
  qsizetype best = -1;
  bool local = false;
  for (const QByteArray& line : mounts.readAll().split('\n')) {
    const QList<QByteArray> fields = line.split(' ');
    if (fields.size() < 4) continue;
    // Blanks in a mount point are written as \040.
    const QString point = QFile::decodeName(QByteArray(fields[1]).replace("\\040", " "));
    const bool under = dir == point || point == QLatin1String("/") ||
                       dir.startsWith(point + QLatin1Char('/'));
    if (!under || point.size() <= best) continue;
    best = point.size();
    const QByteArray options = ',' + fields[3] + ',';
    local = fields[2].startsWith("nfs") &&
            (options.contains(",nolock,") || options.contains(",local_lock=flock,") ||
             options.contains(",local_lock=all,"));
  }
  return local;
}

}  // namespace cfgq_platform
