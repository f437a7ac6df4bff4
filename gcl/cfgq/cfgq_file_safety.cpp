// Safety around the settings file: leftovers of killed writers, copies of damaged files, writes
// of other processes that Qt can't tell apart, and the ownership and mode of the process's
// temporary settings file.
#include "cfgq_file_safety.h"

#include <cerrno>
#include <cstdio>
#include <mutex>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLockFile>
#include <QSet>
#include <QSettings>
#include <QStringList>
#include <QTemporaryFile>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#endif

namespace {

// A writer replaces the settings file through a temporary "<file>.XXXXXX" that it creates and
// renames into place while holding "<file>.lock"; a writer killed in between leaves it behind.
constexpr int temporary_suffix_letters = 6;

// The paths whose left-over temporaries this process has already removed.
class cleaned_paths {
 public:
  bool contains(const QString& path) {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_paths.contains(path);
  }
  void insert(const QString& path) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_paths.insert(path);
  }

 private:
  std::mutex m_mutex;
  QSet<QString> m_paths;
};

cleaned_paths& cleaned() {
  static cleaned_paths instance;
  return instance;
}

#ifndef _WIN32
// A writer killed after creating its lock file and before writing its process id into it leaves
// an empty lock that Qt takes for a live one until it is 30 s old, stalling every writer.
constexpr qint64 dead_empty_lock_age_ms = 1'000;

void remove_dead_empty_lock(const QString& lock_path);
#endif

// Removes the temporaries and the lock that killed writers left beside `path`. True when nothing
// is left to do for the rest of the process; false when a later view should look again.
bool remove_stale_temporaries(const QString& path) {
  const QFileInfo file(path);
  const QString file_name = file.fileName();
  if (file_name.isEmpty()) return true;
  const QDir dir = file.dir();
  QStringList candidates;
  const QStringList entries =
      dir.entryList({file_name + QStringLiteral(".??????")},
                    QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks);
  for (const QString& name : entries) {
    if (cfgq_is_stale_temporary_name(name, file_name, true)) candidates.append(name);
  }
  // Writers make and rename their temporaries only while they hold the lock, so while this
  // process holds it, no temporary belongs to a live writer. A lock that stood before and could
  // still be taken was a killed writer's: whatever it left was modified after the lock was made.
  // Taking it also removes such a lock, which would otherwise stand until the next write.
  const QString lock_path = path + QStringLiteral(".lock");
#ifndef _WIN32
  remove_dead_empty_lock(lock_path);
#endif
  const QFileInfo old_lock(lock_path);
  const bool lock_stood = old_lock.exists();
  if (candidates.isEmpty() && !lock_stood) return true;
  const QDateTime lock_made = old_lock.lastModified();
  QLockFile lock(lock_path);
  if (!lock.tryLock(0)) {
    // A live writer's lock goes with its writer. Temporaries, or an empty lock too young to
    // judge, are worth another look at a later view; a lock alone is not.
    return candidates.isEmpty() && old_lock.size() != 0;
  }
  for (const QString& name : candidates) {
    const QFileInfo candidate(dir.filePath(name));
    if (!candidate.isFile() || candidate.isSymLink()) continue;
    const bool left_by_that_writer = lock_stood && candidate.lastModified() >= lock_made;
    if (cfgq_is_stale_temporary_name(name, file_name, left_by_that_writer)) {
      QFile::remove(candidate.filePath());
    }
  }
  return true;
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

constexpr mode_t owner_only = S_IRUSR | S_IWUSR;

void remove_dead_empty_lock(const QString& lock_path) {
  const QByteArray native = QFile::encodeName(lock_path);
  const owned_fd fd(::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (fd.get() < 0) return;
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size != 0) return;
  // A live writer holds an flock on its lock file from just after creating it; a young empty lock
  // may be one that has not taken it yet.
  const qint64 age_ms = QDateTime::currentMSecsSinceEpoch() -
                        (qint64{st.st_mtim.tv_sec} * 1'000 + st.st_mtim.tv_nsec / 1'000'000);
  if (age_ms < dead_empty_lock_age_ms) return;
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return;
  ::unlink(native.constData());
}

// Makes an empty file at `path` that nobody else can read; never follows a link.
void make_private_file(const QByteArray& path) {
  const owned_fd fd(
      ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, owner_only));
  // The mode given to open is narrowed by the umask only, never widened; fchmod says it exactly.
  if (fd.get() >= 0) ::fchmod(fd.get(), owner_only);
}

// Makes the temporary settings file a regular file of this user, with one link, that only its
// owner can read and write.
void secure_temporary_file(const QString& path) {
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
    if (error == ELOOP || error == ENOENT) make_private_file(native);
    return;
  }
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0) return;
  // No link left: a writer on another thread or in another process renamed a new file into place
  // since the open, and that file is the one to keep.
  if (st.st_nlink == 0) return;
  if (!S_ISREG(st.st_mode) || st.st_uid != ::geteuid() || st.st_nlink != 1) {
    // Not ours to read: a directory stays (Qt then can't use it); anything else is replaced,
    // unless a writer replaced it first.
    struct stat now {};
    if (S_ISDIR(st.st_mode) || ::lstat(native.constData(), &now) != 0) return;
    if (now.st_dev != st.st_dev || now.st_ino != st.st_ino) return;
    if (::unlink(native.constData()) != 0) return;
    make_private_file(native);
    return;
  }
  if ((st.st_mode & 07777) != owner_only) ::fchmod(fd.get(), owner_only);
}
#endif

// Writes `bytes` to `path` through a new temporary file beside it, renamed into place, so that a
// link planted at `path` is replaced, never written through.
bool replace_file(const QString& path, const QByteArray& bytes) {
  QTemporaryFile temporary(path + QStringLiteral(".XXXXXX.tmp"));
  if (!temporary.open()) return false;
  if (temporary.write(bytes) != bytes.size() || !temporary.flush()) return false;
  // The copy holds the settings file's contents: nobody else may read it.
  temporary.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  if (std::rename(QFile::encodeName(temporary.fileName()).constData(),
                  QFile::encodeName(path).constData()) != 0) {
    return false;
  }
  temporary.setAutoRemove(false);
  return true;
}

// True when Qt reads the file of `settings`, a settings object standing at the root, with a format
// error. Qt finds a damaged header when it reads the file, but a damaged line only when it parses
// the line's section, which it does when a key of that section is first asked for.
bool reads_with_format_error(const QSettings& settings) {
  if (settings.status() == QSettings::FormatError) return true;
  // At the root, the key list parses every section but holds only the root's own keys; every
  // key of a large file would make a list as large as the parsed file.
  (void)settings.childKeys();
  return settings.status() == QSettings::FormatError;
}

// True when Qt reads `bytes` with a format error.
bool has_format_error(const QString& dir, const QByteArray& bytes) {
  QTemporaryFile probe(dir + QStringLiteral("/cfgq-format-check-XXXXXX"));
  if (!probe.open() || probe.write(bytes) != bytes.size() || !probe.flush()) return false;
  probe.close();
  const QSettings reader(probe.fileName(), QSettings::IniFormat);
  return reads_with_format_error(reader);
}

// A state per settings file, shared by the threads of the process.
class file_states {
 public:
  bool find(const QString& path, cfgq_file_state* state) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_states.constFind(path);
    if (it == m_states.constEnd()) return false;
    *state = *it;
    return true;
  }
  bool holds(const QString& path, const cfgq_file_state& state) {
    cfgq_file_state found;
    return find(path, &found) && found == state;
  }
  void set(const QString& path, const cfgq_file_state& state) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_states.insert(path, state);
  }

 private:
  std::mutex m_mutex;
  QHash<QString, cfgq_file_state> m_states;
};

// What each file looked like when it was last known to be read without format errors: Qt parses
// a file again only when its size or modification time changed, and so does the check.
file_states& checked() {
  static file_states instance;
  return instance;
}

// What each file looked like when this process's settings objects last read or wrote it; Qt
// keeps one parsed copy per file and process, and so does this record.
file_states& known() {
  static file_states instance;
  return instance;
}

// Gives the file at `path`, now in `state`, a new modification time when it was replaced since
// this process last knew it but looks the same to Qt (same size, same modification time in
// milliseconds), so that Qt reads it again. True when it did.
bool reveal_unseen_change(const QString& path, const cfgq_file_state& state) {
#ifndef _WIN32
  cfgq_file_state last;
  if (state.size < 0 || !known().find(path, &last)) return false;
  if (state.size != last.size || state.modified_ms != last.modified_ms) return false;
  if (state.inode == last.inode && state.changed_ns == last.changed_ns) return false;
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  qint64 new_ms = qint64{now.tv_sec} * 1'000 + now.tv_nsec / 1'000'000;
  // The clock may still be in the same millisecond: one later is different enough.
  if (new_ms <= state.modified_ms) new_ms = state.modified_ms + 1;
  const struct timespec times[2] = {
      {0, UTIME_OMIT},
      {static_cast<time_t>(new_ms / 1'000), static_cast<long>(new_ms % 1'000) * 1'000'000}};
  return ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0;
#else
  (void)path;
  (void)state;
  return false;
#endif
}

}  // namespace

cfgq_file_state cfgq_state_of(const QString& path) {
#ifndef _WIN32
  // Asked three times per view: QFileInfo::lastModified goes through the local time zone (a
  // stat of /etc/localtime each time), which made it most of a reading view's cost.
  struct stat st {};
  if (::stat(QFile::encodeName(path).constData(), &st) != 0) return {};
  return {static_cast<qint64>(st.st_size),
          static_cast<qint64>(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1'000'000,
          static_cast<qint64>(st.st_ino),
          static_cast<qint64>(st.st_ctim.tv_sec) * 1'000'000'000 + st.st_ctim.tv_nsec};
#else
  const QFileInfo info(path);
  if (!info.exists()) return {};
  return {info.size(), info.lastModified().toMSecsSinceEpoch(), -1, -1};
#endif
}

bool cfgq_is_stale_temporary_name(const QString& name, const QString& file_name,
                                  bool one_case_too) {
  if (name.size() != file_name.size() + 1 + temporary_suffix_letters) return false;
  if (!name.startsWith(file_name) || name[file_name.size()] != QLatin1Char('.')) return false;
  bool upper = false;
  bool lower = false;
  for (qsizetype i = file_name.size() + 1; i < name.size(); ++i) {
    const char16_t c = name[i].unicode();
    if (c >= u'A' && c <= u'Z') {
      upper = true;
    } else if (c >= u'a' && c <= u'z') {
      lower = true;
    } else {
      return false;
    }
  }
  return (upper && lower) || one_case_too;
}

qint64 cfgq_prepare_settings_file(const QString& path, bool temporary) {
  if (path.isEmpty()) return -1;
  if (!cleaned().contains(path) && remove_stale_temporaries(path)) cleaned().insert(path);
#ifndef _WIN32
  if (temporary) secure_temporary_file(path);
#else
  (void)temporary;
#endif
  const cfgq_file_state state = cfgq_state_of(path);
  reveal_unseen_change(path, state);
  return state.size;
}

cfgq_file_state cfgq_settings_file_closing(const QString& path) {
  const cfgq_file_state state = cfgq_state_of(path);
  return reveal_unseen_change(path, state) ? cfgq_state_of(path) : state;
}

void cfgq_settings_file_opened(const QSettings& settings) {
  const QString path = settings.fileName();
  const cfgq_file_state state = cfgq_state_of(path);
  known().set(path, state);
  if (state.size <= 0 || checked().holds(path, state)) return;
  if (!reads_with_format_error(settings)) {
    checked().set(path, state);
    return;
  }
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return;
  const QByteArray bytes = file.readAll();
  file.close();
  // Another process may have rewritten the file since Qt read it; its writer saw the damage
  // first and kept the copy, which clean bytes must not replace.
  if (!has_format_error(QFileInfo(path).absolutePath(), bytes)) return;
  replace_file(path + QLatin1String(format_error_suffix), bytes);
}

void cfgq_settings_file_written(const QString& path, const cfgq_file_state& before,
                                bool temporary) {
  // Qt writes only what it parsed without error: a file that changed while this process's
  // settings object wrote it needs no check at the next view.
  const cfgq_file_state after = cfgq_state_of(path);
  if (!(after == before)) {
    // Only a write brings Qt's knowledge up to date: without pending changes it reads nothing.
    known().set(path, after);
    checked().set(path, after);
  }
  if (!temporary) return;
#ifndef _WIN32
  struct stat st {};
  const QByteArray native = QFile::encodeName(path);
  if (::lstat(native.constData(), &st) != 0 || !S_ISREG(st.st_mode)) return;
  if ((st.st_mode & 07777) != owner_only) ::chmod(native.constData(), owner_only);
#else
  (void)path;
#endif
}
