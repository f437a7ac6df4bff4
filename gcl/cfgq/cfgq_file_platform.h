// The few file-system operations the settings file's owner needs beyond Qt, one implementation
// per platform (cfgq_file_platform_posix.cpp, cfgq_file_platform_win.cpp; the build picks one).
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <memory>
#include <utility>

#include <QString>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace cfgq_platform {

// What a look at a path found. `exists` false: nothing there (the other fields are then 0).
// The inode and the change time tell a file replaced by a rename from the one it replaced, even
// when both have the same size and the same modification time in milliseconds.
struct file_state {
  bool exists = false;
  bool regular = false;  // a regular file (after following links, when the look followed them)
  bool link = false;     // a symbolic link (only from a look that does not follow links)
  qint64 size = 0;
  qint64 modified_ms = 0;
  qint64 device = 0;
  qint64 inode = 0;
  qint64 changed_ns = 0;
  unsigned mode = 0;  // permission bits
  qint64 owner = -1;
  qint64 group = -1;

  // The same file in the same state, as far as a look can tell.
  bool same_as(const file_state& other) const {
    return exists == other.exists && size == other.size && modified_ms == other.modified_ms &&
           device == other.device && inode == other.inode && changed_ns == other.changed_ns;
  }
  // The same file (it may have been written in place since).
  bool same_file(const file_state& other) const {
    return exists && other.exists && device == other.device && inode == other.inode;
  }
};

// A look at `path` (or at `native`, the path in the file system's encoding), following links
// or not.
file_state state_of(const QString& path, bool follow_links);
file_state state_of(const QByteArray& native, bool follow_links);

// The path that `path` finally names: each symbolic link along the last component replaced by
// its target (relative targets taken from the link's directory), also when the last target does
// not exist. `path` itself when it is no link, or when the links go round.
QString final_target(const QString& path);

// Gives the file at `path` a modification time that differs from `known_ms` as the file system
// stores it (whole seconds on some), later than now's where it can: anything comparing
// modification times then sees it changed. `known_ms` < 0: the stamp to differ from is not
// known; the file gets one that no write gives. False with errno-style reason in *why.
bool touch_distinct(const QString& path, qint64 known_ms, QString* why);

// Makes an empty regular file at `path` that nobody else can read or write, exclusively (never
// through a link). With a `like` state of an existing file, takes its permission bits and, when
// the process may, its owner and group; without one, a file made by root in a directory of
// another user goes to that user (see adopt_owner). False (reason in *why) when no file could be
// made.
bool make_private_file(const QString& path, const file_state* like, QString* why);

// Root acting in another user's directory (sudo -E in a home): gives `path`, just made by this
// process, the owner and group of `directory` (by default the one it stands in). Nothing for
// other users, nothing for a directory of root's.
void adopt_owner(const QString& path, const QString& directory);
void adopt_owner(const QString& path);

// Gives the file at `path` the owner, group and permission bits of `like` where they differ (a
// write by another user, such as root, replaced the file). False (reason in *why) when the owner
// can't be kept; a group the process can't give is left.
bool restore_owner_and_mode(const QString& path, const file_state& like, QString* why);

// A second name for the file at `from` (no copy, no space). False (reason in *why) when the file
// system can't give one.
bool hard_link(const QString& from, const QString& to, QString* why);

// The whole content of the file at `path`, read without keeping others from replacing it
// meanwhile (on Windows a plain open refuses their renames). False (reason in *why) when it
// can't be read; *missing says whether there is no file.
bool read_file(const QString& path, QByteArray* bytes, bool* missing, QString* why);

// Makes the file at `path` exclusively, the user's alone, and writes all of `bytes` to it,
// flushed to disk. False (reason in *why) when any of it fails: a full disk, a quota.
bool write_new_file(const QString& path, const QByteArray& bytes, QString* why);

// Flushes the directory's entries to disk (a rename in it is then kept across a crash).
void sync_directory(const QString& directory);

// Makes the missing directories of `directory`, each the user's alone (the owner's of the
// directory above, for root in another user's directory). False (reason in *why) on failure.
bool make_directories(const QString& directory, QString* why);

// Renames `from` to `to`, replacing `to`. False (reason in *why) on failure.
bool rename_over(const QString& from, const QString& to, QString* why);

// Removes the file (not a directory) at `path`; true when none is left.
bool remove_file(const QString& path);

// A new directory that only this user can enter, at `pattern` whose last six characters are
// "XXXXXX" (replaced to make the name unique). Empty text when none could be made.
QString make_private_dir(const QString& pattern);

// Makes a symbolic link at `link` naming `target`. False when it could not.
bool make_link(const QString& target, const QString& link);

// Makes `path` a regular file of this user with one link that only its owner can read and
// write: anything else standing there (a link or pipe planted at its name, another user's file)
// is replaced by an empty such file, never followed; a directory stays. A missing file is made.
void own_private_file(const QString& path);

// A settings file's lock among processes, "<file>.lock", in the form every writer of the file
// reads: the holder's process id, program and host (then machine and boot ids), a line each.
// It is made exclusively and held locked by the system (flock, which Linux NFS clients forward
// to the server) while it stands. Whether its holder still runs is told by that system lock
// alone, never by the process id or host it names (a process of another host or PID namespace
// says nothing here): a lock file whose system lock can be taken is stale and is taken over at
// once; one naming another host also has to be older than `foreign_stale_ms`, since a mount
// whose locks stay on the client proves nothing about other hosts.
class lock_file {
 public:
  lock_file(const QString& path, qint64 foreign_stale_ms);
  ~lock_file();  // gives the lock back
  lock_file(const lock_file&) = delete;
  lock_file& operator=(const lock_file&) = delete;

  enum class attempt { taken, held, failed };
  // One try, without waiting: the lock is taken, or held by another, or can't be made (*why).
  attempt try_take(QString* why);

 private:
  struct state;
  QString m_path;
  qint64 m_foreign_stale_ms;
  std::unique_ptr<state> m_state;
};

// Who a lock file says holds it. Only for reports: it proves nothing about liveness.
struct lock_holder {
  qint64 pid = 0;
  QString program;
  QString host;
  bool this_host = false;
};
// Reads the lock file at `path`; false when it holds no holder.
bool read_lock_holder(const QString& path, lock_holder* holder);
// True when the system lock of the lock file at `path` is held by some process.
bool lock_is_held(const QString& path);

// A marker file that a process keeps locked (flock) while it runs, so that any process on any
// host can tell whether what it marks still has a live owner.
class held_file {
 public:
  held_file();
  ~held_file();  // unlocks and closes; the file stays
  held_file(const held_file&) = delete;
  held_file& operator=(const held_file&) = delete;
  // Makes `path` exclusively, locks it and writes `text`. False (reason in *why) when it can't:
  // a full file system fails here.
  bool make(const QString& path, const QByteArray& text, QString* why);
  // Takes the lock of the existing marker at `path` when no one holds it (free: held by this
  // object from now on); held when someone does, or when it can't be opened; missing when
  // there is none. Whoever removes what a marker marks holds it meanwhile, so that its maker,
  // between making the file and locking it, gives it up rather than take it over half removed.
  enum class holding { missing, free, held };
  holding take(const QString& path);
  bool made() const;
  // Unlocks and closes now (on Windows a removed file goes only once closed).
  void release();

 private:
  struct state;
  std::unique_ptr<state> m_state;
};
using holding = held_file::holding;
// Whether the marker file at `path` has a live owner. A file that can't be opened counts as held.
holding holding_of(const QString& path);

// True when the file system holding `path` keeps its locks on this host only (an NFS mount with
// local_lock= or nolock): its free system locks say nothing about other hosts.
bool locks_stay_local(const QString& path);

// A directory in memory that every user may write and where one user's names are safe from
// another's (/dev/shm with its sticky bit); empty where there is none.
QString memory_dir();

// True when a settings object kept for a thread can be deleted as the thread ends. Not on
// Windows, where the order in which the C++ runtime, the threads library and Qt let go of an
// ending thread is not to be relied on.
bool thread_end_deletes_qt_objects();

// Calls destroy(value) in this thread as it ends, the last registered first.
void at_thread_end(void (*destroy)(void*), void* value);

// This thread's own T, made at first use and deleted as the thread ends (at_thread_end). Each
// use site has a type of its own. Unlike a thread_local object with a destructor, this holds up
// in a DLL built with mingw-w64, whose runtime can free such an object's storage before it
// runs the destructor: the runtime holds only a pointer here.
template <class T>
T& per_thread() {
  thread_local T* value = nullptr;
  if (value == nullptr) {
    value = new T();
    at_thread_end([](void* made) { delete static_cast<T*>(made); }, value);
  }
  return *value;
}

// This process's user.
qint64 this_user();
// This process's id.
qint64 this_process();
// True when process `pid` runs but is stopped (it holds what it holds until continued).
bool process_is_stopped(qint64 pid);

// Free bytes for this user on the file system holding `path`; the largest number when unknown.
qint64 free_bytes(const QString& path);

// The text of the last system error of this thread ("No space left on device").
QString last_error_text();

#ifndef _WIN32
// Owns a file descriptor and closes it on every path.
class owned_fd {
 public:
  explicit owned_fd(int fd = -1) : m_fd(fd) {}
  ~owned_fd() {
    if (m_fd >= 0) ::close(m_fd);
  }
  owned_fd(const owned_fd&) = delete;
  owned_fd& operator=(const owned_fd&) = delete;
  owned_fd(owned_fd&& other) noexcept : m_fd(other.release()) {}
  owned_fd& operator=(owned_fd&& other) noexcept {
    if (this != &other) {
      if (m_fd >= 0) ::close(m_fd);
      m_fd = other.release();
    }
    return *this;
  }
  int get() const { return m_fd; }
  // Hands the descriptor over; this one then owns none.
  int release() { return std::exchange(m_fd, -1); }
  // Closes now, for the close's own result.
  int close() { return ::close(std::exchange(m_fd, -1)); }

 private:
  int m_fd;
};
#endif

}  // namespace cfgq_platform
