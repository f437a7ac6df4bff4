// The owner of a view's settings file: every view's settings object is one of these.
//
// Opening one locates the real file behind the path (through links), sets aside a file above
// the size limit or one whose loading failed, and opens Qt's settings object on it. Finishing
// one writes the view's changes under the file's lock, checks what reached the disk, and puts
// the old file back when the new one came out short. Each real file has one record in the
// process, shared by all its views, that says what the process's settings objects hold of it.
//
// Qt's settings objects tell a changed file only by its size and its modification time, take
// that stamp after reading the content, and wait for ever for the lock of a stopped writer. So
// the settings objects never open the file under its own name: they open a link to it in a
// private directory of the process (an alias), which keeps Qt's own lock private, while the
// owner takes the file's real lock ("<file>.lock", the protocol every writer of the file
// follows) for a bounded time around every write. An alias also lets the owner start afresh:
// settings objects opened on a new alias read the file anew, and an alias pointed into the
// void discards the changes of a write that was refused. Where no link can be made (Windows),
// the alias is a private copy of the file: the owner gives it the file's content before Qt
// reads it and puts what Qt wrote in the file's place, so Qt never opens the file itself.
// May use: cfgq_diagnostics, cfgq_file_damage, cfgq_file_location, cfgq_file_record,
//   cfgq_file_write, cfgq_limits, cfgq_settings_cache.
#pragma once

#include <functional>
#include <memory>

#include <QEvent>
#include <QSettings>
#include <QString>

struct cfgq_file_record;
struct cfgq_file_generation;
class cfgq_file_write;

class cfgq_settings_file : public QSettings {
 public:
  // Opens the settings file at `path` (the profile's file or the process's temporary file,
  // `temporary`). A file above max_file_bytes is renamed to ".large" first, under the file's
  // lock and only if it is still the file measured; the new, empty file keeps the old one's
  // owner and mode. A path with nothing usable behind it (empty, a device, a directory) opens
  // a settings object that holds nothing and whose writes are refused. Throws what Qt throws.
  static std::unique_ptr<cfgq_settings_file> open(const QString& path, bool temporary);

  // Ends a view's use of `settings`, an object made by open. One with changes writes them as it
  // is deleted; a clean one is kept, back at the root, for this thread's next view of the same
  // file while the file stays as it is: that view then costs no new settings object.
  static void close(std::unique_ptr<QSettings> settings);

  // A view enters and leaves its groups through these, so that close can take it back to the
  // root level by level.
  void begin_group(const QString& group);
  void end_group();

  // Renames the file at `path` to its name with ".corrupt" appended, under the file's lock, as
  // init does when opening it threw.
  static void set_aside_damaged(const QString& path);

  ~cfgq_settings_file() override;
  cfgq_settings_file(const cfgq_settings_file&) = delete;
  cfgq_settings_file& operator=(const cfgq_settings_file&) = delete;

  // The path the view was opened on (a link keeps its own name here).
  const QString& path() const { return m_path; }

  // Call before every change made through this object: only an object that changed something
  // writes, and while it has unwritten changes, other objects on the file open under its lock.
  void mark_changed();

  // Writes this object's changes to the file (when it has any) under the file's lock, checks
  // them and reports a failure on the debug channel and to cfgq_file_take_failure. Called by
  // the destructor; a second call does nothing.
  void finish();

 protected:
  // Qt's own flush from the event loop: written as the object's end writes (see finish).
  bool event(QEvent* event) override;

 private:
  cfgq_settings_file(const QString& alias, const QString& path,
                     std::shared_ptr<cfgq_file_record> record,
                     std::shared_ptr<cfgq_file_generation> generation);

  // A clean object this thread finished with on the record's current alias, opened on `path`;
  // null when there is none. Objects on the record's earlier aliases go. The record's mutex is
  // held.
  static std::unique_ptr<cfgq_settings_file> take_idle(const cfgq_file_record& record,
                                                       const QString& path);

  // Writes the changes pending on this object's alias under the file's lock, `write` making Qt
  // write them and returning an object at the root of the alias; reports a failure and discards
  // the changes. The object is clean afterwards.
  void write_changes(const std::function<QSettings&()>& write);

  // The write itself, from top to bottom (cfgq_settings_file_write.cpp): with the file's lock
  // held in `file_write` or not needed, lets Qt write the staged file through `generation`'s
  // alias (`write` makes the settings object that writes, or has one write, and returns it
  // standing at the root), checks what Qt wrote and replaces the file with it, so that the file
  // holds its old bytes or the complete new content. Returns why the write failed, or empty
  // text. The record's mutex is held.
  static QString write_checked(cfgq_file_record& record, cfgq_file_generation& generation,
                               cfgq_file_write& file_write,
                               const std::function<QSettings&()>& write);
  // True when writes through `generation` need the file's lock taken by the owner: the file is
  // shared with other processes and Qt's settings objects open it through an alias (opened
  // under its own name, Qt takes that lock itself).
  static bool takes_own_lock(const cfgq_file_record& record,
                             const cfgq_file_generation& generation);
  // Reports a write that failed on the debug channel and to cfgq_file_take_failure.
  static void report_failure(const QString& path, const QString& reason, qint64 lock_pid = 0);

  QString m_path;
  std::shared_ptr<cfgq_file_record> m_record;          // null for a file that can't be written
  std::shared_ptr<cfgq_file_generation> m_generation;  // the alias this object opened
  bool m_changed = false;
  bool m_finished = false;
  int m_levels = 0;  // groups entered through begin_group and not yet left
};
