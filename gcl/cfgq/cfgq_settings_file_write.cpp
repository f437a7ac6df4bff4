// How a settings object's changes reach the file: the steps of cfgq_file_write, with Qt writing
// the staged file through the object's alias.
// May use: cfgq_diagnostics, cfgq_file_record, cfgq_file_write, cfgq_limits, cfgq_settings_file.
#include <algorithm>

#include <QFileInfo>

#include "cfgq_diagnostics.h"
#include "cfgq_file_record.h"
#include "cfgq_file_write.h"
#include "cfgq_limits.h"
#include "cfgq_settings_file.h"

namespace platform = cfgq_platform;

namespace {

// New files up to this size have what Qt holds counted after each write (see write_checked).
constexpr qint64 exact_check_bytes = 256 * 1024;

// Why the file at `real` can't be written through `generation`'s alias, as the system says it.
QString write_refusal_reason(const QString& real, const cfgq_file_generation& generation) {
  const QFileInfo info(real);
  if (info.exists()) {
    QFile file(real);
    if (!file.open(QIODevice::ReadWrite)) return file.errorString();
  }
  // Qt writes its own lock file beside the alias: a full directory there refuses every write.
  for (const QString& dir : {QFileInfo(generation.alias).absolutePath(), info.absolutePath()}) {
    if (platform::free_bytes(dir) < cfgq_min_private_room) {
      return QStringLiteral("no room left in %1").arg(dir);
    }
  }
  return QStringLiteral("the new file could not be written");
}

// How many line ends Qt's writer puts in a file holding what `settings` (standing at the root)
// holds: a line per key, a header per top-level group (and one for the root's own keys), and a
// blank line between groups. A file cut short has fewer: its last line end went with the cut.
qint64 expected_line_ends(QSettings& settings) {
  const qint64 keys = settings.allKeys().size();
  if (keys == 0) return 0;
  const qint64 sections = settings.childGroups().size() + (settings.childKeys().isEmpty() ? 0 : 1);
  return keys + 2 * sections - 1;
}

// Why what Qt wrote to `target` (now in `written`) is not the complete content `settings`
// holds, or empty text; *hash gets the hash of the bytes read.
QString incomplete(QSettings& settings, const QString& target, const QString& real,
                   const platform::file_state& written, int dirty_objects, quint64* hash) {
  bool ends_with_line_end = true;
  const qint64 found = cfgq_scan_file(target, &ends_with_line_end, hash);
  // Qt finds a failed write itself except in the last buffer it flushes, which only a full file
  // system or a quota can refuse. Counting what Qt holds costs a walk over every key, so it is
  // done where that last buffer is most of the file, or where space is short; elsewhere a cut
  // shows in the last line. The count is exact only while no other object on the alias can
  // change what Qt holds (their first change waits for the record's mutex).
  const bool worth_counting =
      written.size <= exact_check_bytes ||
      platform::free_bytes(QFileInfo(real).absolutePath()) < 2 * written.size;
  const qint64 expected =
      worth_counting && dirty_objects == 0 ? expected_line_ends(settings) : found;
  if (found == expected && (written.size == 0 || ends_with_line_end)) return QString();
  return QStringLiteral("the new content was cut short (disk full or over quota?)");
}

// The owner and mode a new settings file takes: those of the file last set aside from its place
// (by this process, or as its set-aside copy keeps them), else none.
platform::file_state owner_of_new_file(const cfgq_file_record& record) {
  if (record.pending_like.exists) return record.pending_like;
  for (const char* suffix : {cfgq_large_suffix, cfgq_corrupt_suffix}) {
    const platform::file_state copy =
        platform::state_of(record.real + QLatin1String(suffix), false);
    if (copy.exists && copy.regular) return copy;
  }
  return {};
}

}  // namespace

bool cfgq_settings_file::takes_own_lock(const cfgq_file_record& record,
                                        const cfgq_file_generation& generation) {
  return record.shared && generation.alias != record.real;
}

void cfgq_settings_file::report_failure(const QString& path, const QString& reason,
                                        qint64 lock_pid) {
  cfgq_debug("Settings not written: " + path.toStdString() + ": " + reason.toStdString());
  cfgq_file_note_failure({path, reason, lock_pid});
}

QString cfgq_settings_file::write_checked(cfgq_file_record& record,
                                          cfgq_file_generation& generation,
                                          cfgq_file_write& file_write,
                                          const std::function<QSettings&()>& write) {
  // 1. The lock is held (or not needed). A link, device or directory put in place of the file
  // since it was opened is not written.
  const platform::file_state before = platform::state_of(record.native, false);
  if (before.exists && !before.regular) return QStringLiteral("not a regular file");
  QString why;
  if (generation.copy) {
    // Qt merges its changes into the copy: it must hold the file as it is now.
    const bool known = before.exists && cfgq_still_known(record, generation, before);
    if (!cfgq_refresh_copy(record, generation, known, &why)) {
      return QStringLiteral("the file can't be read: ") + why;
    }
  } else if (before.exists && !cfgq_still_known(record, generation, before)) {
    // Another process wrote the file since Qt read it: make sure Qt sees it changed, by more
    // than its size and modification time, and reads it again before it merges and writes.
    platform::touch_distinct(record.real,
                             generation.known.valid ? generation.known.state.modified_ms : -1,
                             nullptr);
  }

  // 2. Qt writes the stage: the alias points at it for the write. Only through an alias of its
  // own can the write be staged; without one Qt writes the file itself, and a cut is found, not
  // undone. A copy is a stage of its own, staged again as a whole once Qt wrote it.
  const bool direct = generation.alias == record.real;
  const bool staged = !direct && !generation.copy;
  if (staged) {
    const bool sweep = record.shared && !record.swept;  // gone writers' stages: once a process
    if (!file_write.stage_current(before, sweep, &why)) return why;
    record.swept = record.swept || sweep;
    if (!cfgq_point_alias(generation.alias, file_write.stage())) {
      return QStringLiteral("the file can't be staged for writing: ") +
             platform::last_error_text();
    }
  } else if (direct && !before.exists) {
    // Qt would make a new file readable by everyone (and writable, under umask 000).
    platform::make_private_file(record.real, nullptr, nullptr);
  }
  const QString target = staged ? file_write.stage() : generation.alias;
  const platform::file_state start = platform::state_of(target, true);
  QSettings& settings = write();

  // 3. What Qt wrote is checked.
  const platform::file_state written = platform::state_of(target, true);
  QString failure;
  quint64 written_hash = 0;
  if (settings.status() == QSettings::AccessError) {
    failure = write_refusal_reason(record.real, generation);
  } else if (!written.same_as(start)) {
    failure = incomplete(settings, target, record.real, written, generation.dirty_objects,
                         &written_hash);
    if (!failure.isEmpty() && direct) failure += QStringLiteral("; the file may be damaged");
  }

  // 4. Qt's state now stands for the staged file, which becomes the file itself (same inode,
  // same stamp) or goes with the write object. Qt made it as this process's user: it takes the
  // old file's owner and mode, or those of a file set aside from its place.
  if (staged) cfgq_point_alias(generation.alias, record.real);
  if (!direct && failure.isEmpty() && !written.same_as(start)) {
    QByteArray bytes;
    bool missing = false;
    if ((!staged && (!platform::read_file(target, &bytes, &missing, &why) ||
                     !file_write.stage_bytes(bytes, &why))) ||
        !file_write.commit(before.exists ? before : owner_of_new_file(record), &why)) {
      failure = why;
    }
  }
  if (!failure.isEmpty()) return failure;

  // 5. The record remembers what Qt now holds.
  if (!written.same_as(start)) record.pending_like = platform::file_state();
  const platform::file_state now = platform::state_of(record.native, true);
  if (generation.copy) {
    generation.copy_state = written;
    generation.copy_ms = std::max(generation.copy_ms, written.modified_ms);
  }
  if (!cfgq_remember_view(record, generation, now, written_hash != 0 ? &written_hash : nullptr)) {
    generation.known.valid = false;
  }
  // Qt writes only what it parsed without error: the new file needs no check for damage.
  record.checked = now;
  return QString();
}

void cfgq_settings_file::write_changes(const std::function<QSettings&()>& write) {
  m_changed = false;
  if (!m_record) {
    // Nothing usable behind the path: the changes go into the void with this object.
    report_failure(m_path, m_generation->refusal);
    write();
    return;
  }
  cfgq_file_record& record = *m_record;
  cfgq_file_generation& generation = *m_generation;
  std::unique_lock<std::mutex> guard(record.mutex);
  cfgq_file_write file_write(record.real);
  QString why;
  qint64 holder = 0;
  const bool locked = generation.discarding || !takes_own_lock(record, generation) ||
                      file_write.lock(&why, &holder, &guard);
  // Counted as unwritten until the lock is had: an object opened on the alias meanwhile would
  // write these changes, so it opens under the lock too.
  --generation.dirty_objects;
  // Looked at again after any wait for the lock: another object's write may have been refused.
  if (generation.discarding) {
    report_failure(m_path, QStringLiteral("an earlier write of the same changes was refused"));
    write();
    return;
  }
  const QString failure = locked ? write_checked(record, generation, file_write, write) : why;
  if (failure.isEmpty()) return;
  // The changes stay in Qt's state of this alias; later objects must not read them back, and
  // when the write was not even tried, this object's end must not make it.
  cfgq_discard_writes(record, generation);
  if (record.current.get() == &generation) cfgq_new_generation(record);
  report_failure(m_path, failure, locked ? 0 : holder);
  // What Qt still holds unwritten now goes into the void.
  write();
}

void cfgq_settings_file::finish() {
  if (m_finished || !m_changed) return;
  m_finished = true;
  write_changes([this]() -> QSettings& {
    sync();
    // The check counts what Qt holds from the root.
    while (!group().isEmpty()) endGroup();
    return *this;
  });
}

bool cfgq_settings_file::event(QEvent* event) {
  if (event->type() != QEvent::UpdateRequest) return QSettings::event(event);
  // Qt flushes pending changes from the event loop on its own: that write, too, takes the
  // file's lock and is staged and checked. It is made by a second object at the root of the
  // same alias, which shares this one's parsed state and pending changes: the check counts from
  // the root while this object keeps its groups. (Nothing may make Qt read between the write
  // and the check: a write cut to nothing would be read back as an empty file that checks out.)
  if (m_changed && !m_finished) {
    std::unique_ptr<QSettings> root;
    write_changes([&]() -> QSettings& {
      root = std::make_unique<QSettings>(fileName(), QSettings::IniFormat);
      return *root;
    });
  }
  // Qt's own flush then finds nothing left to write.
  return QSettings::event(event);
}
