// How the library writes a file: the settings file (through Qt), the environment stores, the
// tool's output files and the copies of damaged files all go through one cfgq_file_write, from
// top to bottom:
//
//   1. lock    The file's lock among processes ("<file>.lock", see cfgq_file_lock), waited for a
//              bounded time. Everything below happens under it.
//   2. stage   A private directory of this process beside the file (".<name>.cfgq/cfgq.XXXXXX",
//              see cfgq_private_dir) receives the new content as "stage": the bytes given,
//              written and flushed to disk, or, for a writer that edits the file (Qt merging its
//              changes), a second name of the current file for it to replace. Gone writers'
//              directories there are swept first.
//   3. check   The stage must hold the complete new content: a write error or a short write
//              fails here (for Qt's write, the caller counts what it wrote).
//   4. commit  The stage takes the old file's owner and mode (root writing a user's file keeps
//              it the user's), is renamed over the file in one step, and the rename is flushed.
//   5. report  Any step that fails returns false with the system's reason; the file is then
//              exactly as it was.
//
// The object owns what it made: its destructor removes the stage directory (with an uncommitted
// stage in it) and the directory beside the file once it is empty, and then gives the lock back.
// A process killed in between leaves a directory whose owner file nobody holds, which the next
// writer's sweep removes.
// May use: cfgq_file_failure, cfgq_file_lock, cfgq_file_platform, cfgq_file_private_dir.
#pragma once

#include <memory>
#include <mutex>

#include <QByteArray>
#include <QString>

#include "cfgq_file_failure.h"
#include "cfgq_file_lock.h"
#include "cfgq_file_platform.h"
#include "cfgq_file_private_dir.h"

class cfgq_file_write {
 public:
  // A write of the file at `file`, its final path (links already followed).
  explicit cfgq_file_write(const QString& file);
  ~cfgq_file_write();
  cfgq_file_write(const cfgq_file_write&) = delete;
  cfgq_file_write& operator=(const cfgq_file_write&) = delete;

  // 1. Takes the file's lock; `guard`, when it holds a mutex, is given back for any wait. False
  // after the bounded wait: *why says who holds it (*holder: its process id on this host).
  bool lock(QString* why, qint64* holder, std::unique_lock<std::mutex>* guard = nullptr);

  // 2. Stages `bytes`, complete and flushed (3), in the mode of a new private file. False, with
  // the reason, when they could not all be written (a full disk, a quota).
  bool stage_bytes(const QByteArray& bytes, QString* why);
  // 2. Stages the current file, in `before`, for a writer that replaces it: a second name of it
  // (no copy, no space), a private copy where the file system has no second names, or an empty
  // private file when there is no file yet. `sweep`: remove gone writers' stages first.
  bool stage_current(const cfgq_platform::file_state& before, bool sweep, QString* why);
  // The staged file, once staged.
  const QString& stage() const { return m_stage; }

  // 4. Replaces the file with the stage, which takes the owner and mode of `like` (the old file,
  // or the one last set aside from its place); with no `like`, a new file is the user's alone,
  // or, made by root in another user's directory, that user's.
  bool commit(const cfgq_platform::file_state& like, QString* why);

 private:
  bool make_stage_dir(bool sweep, QString* why);

  QString m_file;
  QString m_parent;  // the directory beside the file that holds the stage directory
  cfgq_file_lock m_lock;  // declared first: given back last
  std::unique_ptr<cfgq_private_dir> m_dir;
  QString m_stage;
};

// The whole write of `bytes` to the file at `path`: whatever stands there is replaced (a link
// too, never written through); missing directories are made, the user's alone. False, with the
// reason, when the file was left as it was.
bool cfgq_write_file(const QString& path, const QByteArray& bytes, QString* why);
