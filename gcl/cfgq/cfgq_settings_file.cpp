// The settings file's owner: records per real file, aliases, the locked and checked write, the
// set-asides and the copies of damaged files. See cfgq_settings_file.h for the design.
#include "cfgq_settings_file.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QThread>

#include "cfgq_diagnostics.h"
#include "cfgq_file_lock.h"
#include "cfgq_file_platform.h"
#include "cfgq_file_private_dir.h"
#include "cfgq_location.h"
#include "cfgq_settings_cache.h"
#include "cfgq_tool.h"

namespace platform = cfgq_platform;

// What Qt's parsed state on an alias was read from. A file's state (inode, size, stamps) tells
// a rewrite apart, since every write renames a new file into place; but a file system with
// one-second stamps, or a coarse clock, can give a rewrite the old inode number, size and stamps
// within one tick. While the stamp is that recent (not `settled`), the content's hash decides.
struct cfgq_file_view {
  bool valid = false;
  platform::file_state state;
  bool settled = false;
  quint64 hash = 0;  // of the bytes, when not settled
};

// One alias of a real file, and what the settings objects opened on it hold of the file.
struct cfgq_file_generation {
  QString alias;              // the path Qt's settings objects open
  bool discarding = false;    // the alias points into the void: writes through it are dropped
  QString refusal;            // why writes are refused (for an object that can't write at all)
  cfgq_file_view known;       // the file as Qt's parsed state on this alias last matched it
  int dirty_objects = 0;      // objects on this alias with changes not yet written
};

// Everything the process knows of one real file, whatever path reached it: one record per
// file identity (its directory's device and inode, and its name; the file's own inode changes
// at every write).
//
// Locking. `file_records::m_mutex` guards the table of records only and is never held while
// another lock is taken. A record's `mutex` guards every field below that is not const after
// the record is made (`current`, `generations`, `checked`, `beside`, `swept`, `pending_like`)
// and every generation reached through it, and is held while Qt reads or writes the file
// through an alias. The order is: the file's lock among processes ("<file>.lock") first, then
// the record's mutex, then the keepers' mutex (cfgq_settings_cache.cpp) and Qt's own. No mutex
// is ever held while waiting for the file's lock: a thread that has to wait gives the record's
// mutex back for the wait (file_lock::take) and looks at the record afresh afterwards.
struct cfgq_file_record {
  QString real;        // the file's final path, as the process first reached it
  QByteArray native;   // the same in the file system's encoding
  bool shared = true;  // other processes use it (the temporary file is this process's alone)
  qint64 number = 0;   // names this record's aliases
  qint64 settle_ns = 0;  // how old a stamp must be to tell every later write (see cfgq_file_view)
  std::mutex mutex;
  std::shared_ptr<cfgq_file_generation> current;
  int generations = 0;
  platform::file_state checked;  // the file as last found free of damage
  // Where aliases go when the runtime directory can't take them: beside the file.
  std::unique_ptr<cfgq_private_dir> beside;
  bool swept = false;            // gone writers' leftovers beside the file removed once
  platform::file_state pending_like;  // owner and mode of a set-aside file, for the next one
};

namespace {

// New files up to this size have what Qt holds counted after each write (see write_checked).
constexpr qint64 exact_check_bytes = 256 * 1024;
// Below this much free room a runtime directory can't be trusted with an alias: Qt writes its
// own lock file beside each alias at every write.
constexpr qint64 min_private_room = 64 * 1024;

// The process's private directory in the runtime directory (see cfgq_private_base): aliases and
// Qt's own locks of them, and the note that removes the process's temporary settings file once
// it is gone. Empty when it can't be made there (missing, full): aliases then go beside each file.
class process_directory {
 public:
  process_directory() {
    const QString temp = QString::fromStdString(cfgq_temp_directory());
    const QString base = cfgq_private_base();
    cfgq_sweep_private_dirs(temp);
    if (base != temp) cfgq_sweep_private_dirs(base);
    QString why;
    const QString temporary = cfgq_temporary_settings_file();
    const QByteArray note =
        temporary.isEmpty() ? QByteArray() : "remove=" + QFile::encodeName(temporary) + '\n';
    m_dir = cfgq_private_dir::make(base, note, &why);
    if (!m_dir) {
      cfgq_debug("No private directory for the settings file's aliases: " + why.toStdString() +
                 "; they go beside the settings file");
    }
  }
  process_directory(const process_directory&) = delete;
  process_directory& operator=(const process_directory&) = delete;

  // Empty when there is none, or when its file system has no room left for Qt's locks.
  QString usable_path() const {
    if (!m_dir || platform::free_bytes(m_dir->path()) < min_private_room) return QString();
    return m_dir->path();
  }
  QString path() const { return m_dir ? m_dir->path() : QString(); }
  qint64 next_number() { return ++m_numbers; }

 private:
  std::unique_ptr<cfgq_private_dir> m_dir;
  std::atomic<qint64> m_numbers{0};
};

process_directory& private_dir() {
  static process_directory instance;
  return instance;
}

// How old a stamp of a file in `dir` must be before no later write can share its tick: a few
// milliseconds where the file system keeps fine stamps, seconds where it keeps whole ones.
qint64 settle_time_ns(const QString& dir) {
  const platform::file_state state = platform::state_of(dir, true);
  const bool whole_seconds = state.exists && state.changed_ns % 1'000'000'000 == 0 &&
                             state.modified_ms % 1'000 == 0;
  return whole_seconds ? 3'000'000'000 : 50'000'000;
}

class file_records {
 public:
  std::shared_ptr<cfgq_file_record> find_or_make(const QString& real, bool shared) {
    // Records live as long as the process: each thread remembers the one it used last.
    thread_local std::shared_ptr<cfgq_file_record> last;
    if (last && last->real == real) return last;
    // Keyed by what the file is, not by the path that reached it (a bind mount, a second
    // mount of one export): its directory's identity and its name.
    const QFileInfo info(real);
    const platform::file_state dir = platform::state_of(info.absolutePath(), true);
    const key identity = dir.exists ? key{dir.device, dir.inode, info.fileName()}
                                    : key{-1, -1, real};
    std::lock_guard<std::mutex> lock(m_mutex);
    std::shared_ptr<cfgq_file_record>& record = m_records[identity];
    // A record made through another path stands for this file only while that path still
    // reaches it: a directory removed and made anew may get the old one's inode number.
    if (record && record->real != real) {
      const platform::file_state then =
          platform::state_of(QFileInfo(record->real).absolutePath(), true);
      if (!then.same_file(dir)) record.reset();
    }
    if (!record) {
      record = std::make_shared<cfgq_file_record>();
      record->real = real;
      record->native = QFile::encodeName(real);
      record->shared = shared;
      record->number = private_dir().next_number();
      record->settle_ns = settle_time_ns(info.absolutePath());
    }
    last = record;
    return record;
  }

 private:
  using key = std::tuple<qint64, qint64, QString>;
  struct key_hash {
    size_t operator()(const key& k) const {
      return qHashMulti(0, std::get<0>(k), std::get<1>(k), std::get<2>(k));
    }
  };
  std::mutex m_mutex;
  std::unordered_map<key, std::shared_ptr<cfgq_file_record>, key_hash> m_records;
};

file_records& records() {
  static file_records instance;
  return instance;
}

// The directory for the record's next alias: the process's runtime directory, or, when that is
// missing or full, a private directory of the process beside the file. Empty when neither can
// be had (Qt then opens the file under its own name). The record's mutex is held.
QString alias_directory(cfgq_file_record& record) {
  const QString runtime = private_dir().usable_path();
  if (!runtime.isEmpty()) return runtime;
  if (!record.beside) {
    QString why;
    record.beside = cfgq_private_dir::make(cfgq_beside_parent(record.real), {}, &why);
    if (!record.beside) cfgq_debug("No private directory beside the settings file: " + why.toStdString());
  }
  return record.beside ? record.beside->path() : QString();
}

// A new alias of the record's file; the record's views from now on open it. The old alias stays
// (objects opened on it may still write through it) but loses its keeper.
std::shared_ptr<cfgq_file_generation> new_generation(cfgq_file_record& record) {
  auto generation = std::make_shared<cfgq_file_generation>();
  const QString dir = alias_directory(record);
  if (dir.isEmpty()) {
    generation->alias = record.real;
  } else {
    generation->alias = QDir(dir).filePath(
        QStringLiteral("f%1.%2").arg(record.number).arg(++record.generations));
    if (!platform::make_link(record.real, generation->alias)) generation->alias = record.real;
  }
  if (record.current) cfgq_release_settings_file(record.current->alias);
  record.current = generation;
  return generation;
}

// Points `generation`'s alias into the void: whatever its objects write from now on is dropped.
void discard_writes(const cfgq_file_record& record, cfgq_file_generation& generation) {
  if (generation.discarding) return;
  generation.discarding = true;
  if (generation.alias == record.real || generation.alias.isEmpty()) return;
  const QString replacement = generation.alias + QStringLiteral(".new");
  platform::remove_file(replacement);
  if (platform::make_link(generation.alias + QStringLiteral(".void"), replacement)) {
    platform::rename_over(replacement, generation.alias, nullptr);
  }
  cfgq_release_settings_file(generation.alias);
}

void report_failure(const QString& path, const QString& reason, qint64 lock_pid = 0) {
  cfgq_debug("Settings not written: " + path.toStdString() + ": " + reason.toStdString());
  cfgq_write_failure failure;
  failure.path = path;
  failure.reason = reason;
  failure.lock_pid = lock_pid;
  cfgq_note_write_failure(failure);
}

// True when writes through `generation` need the file's lock taken by the owner: the file is
// shared with other processes and Qt's settings objects open it through an alias (opened under
// its own name, Qt takes that lock itself).
bool takes_own_lock(const cfgq_file_record& record, const cfgq_file_generation& generation) {
  return record.shared && generation.alias != record.real;
}

// Why the file at `real` can't be written through `generation`'s alias, as the system says it.
QString write_refusal_reason(const QString& real, const cfgq_file_generation& generation) {
  const QFileInfo info(real);
  if (info.exists()) {
    QFile file(real);
    if (!file.open(QIODevice::ReadWrite)) return file.errorString();
  }
  // Qt writes its own lock file beside the alias: a full directory there refuses every write.
  const QString alias_dir = QFileInfo(generation.alias).absolutePath();
  if (platform::free_bytes(alias_dir) < min_private_room) {
    return QStringLiteral("no room left in %1").arg(alias_dir);
  }
  if (platform::free_bytes(info.absolutePath()) < min_private_room) {
    return QStringLiteral("no room left in %1").arg(info.absolutePath());
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

// The line ends in the file at `path`, -1 when it can't be read; *hash gets a hash of its bytes.
qint64 line_ends_in(const QString& path, bool* ends_with_line_end, quint64* hash) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return -1;
  qint64 count = 0;
  char last = '\n';
  size_t mixed = 0;
  std::vector<char> buffer(1 << 16);
  for (;;) {
    const qint64 got = file.read(buffer.data(), static_cast<qint64>(buffer.size()));
    if (got < 0) return -1;
    if (got == 0) break;
    const char* p = buffer.data();
    const char* end = p + got;
    mixed = qHashBits(p, static_cast<size_t>(got), mixed);
    while ((p = static_cast<const char*>(std::memchr(p, '\n', end - p))) != nullptr) {
      ++count;
      ++p;
    }
    last = buffer[static_cast<size_t>(got - 1)];
  }
  *ends_with_line_end = last == '\n';
  *hash = mixed;
  return count;
}

// A hash of the bytes of the file at `native`, and the state of the file it read (not existing
// when it could not be read).
quint64 content_hash(const QByteArray& native, platform::file_state* read) {
  bool ends_with_line_end = true;
  quint64 hash = 0;
  const platform::file_state before = platform::state_of(native, true);
  if (line_ends_in(QFile::decodeName(native), &ends_with_line_end, &hash) < 0 ||
      !platform::state_of(native, true).same_as(before)) {
    *read = platform::file_state();
    return 0;
  }
  *read = before;
  return hash;
}

// True when a stamp is older than anything a later write could share (see cfgq_file_view).
bool stamp_settled(const platform::file_state& state, qint64 settle_ns) {
  const qint64 now_ns = std::chrono::duration_cast<std::chrono::nanoseconds>(
                            std::chrono::system_clock::now().time_since_epoch())
                            .count();
  return now_ns - state.changed_ns > settle_ns;
}

// What Qt read on `generation` was the file in `state`: remembered, with the hash of its bytes
// while its stamp is recent. False when the file changed again before the hash was taken.
bool remember_view(const cfgq_file_record& record, cfgq_file_generation& generation,
                   const platform::file_state& state, const quint64* hash_of_content) {
  cfgq_file_view& view = generation.known;
  view.state = state;
  view.settled = !state.exists || stamp_settled(state, record.settle_ns);
  view.valid = true;
  if (view.settled) return true;
  if (hash_of_content != nullptr) {
    view.hash = *hash_of_content;
    return true;
  }
  platform::file_state read;
  view.hash = content_hash(record.native, &read);
  view.valid = read.same_as(state);
  return view.valid;
}

// True when the file, now in `now`, is still what `generation`'s Qt state was read from.
bool still_known(const cfgq_file_record& record, cfgq_file_generation& generation,
                 const platform::file_state& now) {
  cfgq_file_view& view = generation.known;
  if (!view.valid || !now.same_as(view.state)) return false;
  if (view.settled) return true;
  platform::file_state read;
  if (content_hash(record.native, &read) != view.hash || !read.same_as(now)) return false;
  // Once the stamp is old enough, later writes show in it: no more reading needed.
  view.settled = stamp_settled(now, record.settle_ns);
  return true;
}

bool is_valid_utf8(const QByteArray& bytes) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData());
  const auto* end = p + bytes.size();
  while (p < end) {
    if (*p < 0x80) {
      ++p;
      continue;
    }
    int follow = 0;
    unsigned min = 0;
    unsigned code = 0;
    if ((*p & 0xE0) == 0xC0) {
      follow = 1, min = 0x80, code = *p & 0x1F;
    } else if ((*p & 0xF0) == 0xE0) {
      follow = 2, min = 0x800, code = *p & 0x0F;
    } else if ((*p & 0xF8) == 0xF0) {
      follow = 3, min = 0x10000, code = *p & 0x07;
    } else {
      return false;
    }
    if (end - p <= follow) return false;
    for (int i = 1; i <= follow; ++i) {
      if ((p[i] & 0xC0) != 0x80) return false;
      code = (code << 6) | (p[i] & 0x3F);
    }
    if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    p += follow + 1;
  }
  return true;
}

// True when Qt reads the file of `settings`, standing at the root, with a format error. Qt finds
// a damaged header when it reads the file, a damaged line only when it parses its section.
bool reads_with_format_error(const QSettings& settings) {
  if (settings.status() == QSettings::FormatError) return true;
  (void)settings.childKeys();
  return settings.status() == QSettings::FormatError;
}

// Before any write can replace what Qt could not read faithfully (a format error, bytes that
// are not UTF-8), keeps a byte-exact copy of the file as "<file>.format-error". A file checked
// once is checked again only after it changed. Called with the record's mutex held.
void keep_damaged_copy(cfgq_file_record& record, QSettings& settings,
                       const platform::file_state& state) {
  if (!state.exists || state.size == 0 || record.checked.same_as(state)) return;
  QFile file(record.real);
  if (!file.open(QIODevice::ReadOnly)) return;
  const QByteArray bytes = file.readAll();
  file.close();
  const bool format_error = reads_with_format_error(settings);
  const bool undecodable = !is_valid_utf8(bytes);
  if (!format_error && !undecodable) {
    record.checked = state;
    return;
  }
  // Another process may have rewritten the file since Qt read it: its writer saw the damage
  // first and kept the copy, which clean bytes must not replace.
  if (!undecodable) {
    // In the process's own directory: a process killed here leaves nothing beside the user's
    // file, and its directory goes with it.
    const QString dir = private_dir().path().isEmpty()
                            ? (record.beside ? record.beside->path()
                                             : QString::fromStdString(cfgq_temp_directory()))
                            : private_dir().path();
    QTemporaryFile probe(QDir(dir).filePath(QStringLiteral("format-check.XXXXXX")));
    if (!probe.open() || probe.write(bytes) != bytes.size() || !probe.flush()) return;
    probe.close();
    const QSettings reader(probe.fileName(), QSettings::IniFormat);
    if (!reads_with_format_error(reader)) return;
  }
  const QString copy = record.real + QLatin1String(cfgq_format_error_suffix);
  QString why;
  if (cfgq_replace_file(copy, bytes, &why)) {
    cfgq_debug("Kept a copy of " + record.real.toStdString() + " as " + copy.toStdString() +
               ": " + (undecodable ? "it holds bytes that are not UTF-8" : "it has format errors") +
               ", which the next write would not keep");
    record.checked = state;
  } else {
    cfgq_debug("Could not keep a copy of the damaged file " + record.real.toStdString() + ": " +
               why.toStdString());
  }
}

// Points the alias `alias` at `target`, replacing the link in one step.
bool point_alias(const QString& alias, const QString& target) {
  const QString replacement = alias + QStringLiteral(".new");
  platform::remove_file(replacement);
  return platform::make_link(target, replacement) &&
         platform::rename_over(replacement, alias, nullptr);
}

// Stages the file at `real` as `stage` for a write: a second name of the same file (no copy, no
// space), or a private copy where the file system has no second names, or an empty private file
// when there is no file yet. False when nothing could be staged.
bool stage_file(const QString& real, const platform::file_state& before, const QString& stage) {
  if (!before.exists) return platform::make_private_file(stage, nullptr, nullptr);
  if (platform::hard_link(real, stage, nullptr)) return true;
  QFile source(real);
  if (!source.open(QIODevice::ReadOnly)) return false;
  const QByteArray bytes = source.readAll();
  if (!platform::make_private_file(stage, &before, nullptr)) return false;
  QFile copy(stage);
  return copy.open(QIODevice::WriteOnly) && copy.write(bytes) == bytes.size() && copy.flush();
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

// Lets Qt write the file through `generation`'s alias (`write` makes the settings object that
// writes, or has one write, and returns it standing at the root), with the file's lock held or
// not needed, and checks the outcome, so that the file holds its old bytes or the complete new
// content. Qt writes a staged copy of the file (see stage_file) in a private directory of this
// process beside the file, whose alias points there for the write, and only a staged file that
// Qt wrote completely is renamed over the file. A file that is no regular file is not written;
// Qt is made to read again a file written by others since it read it. Returns why the write
// failed, or empty text. The record's mutex is held.
QString write_checked(cfgq_file_record& record, cfgq_file_generation& generation,
                      const std::function<QSettings&()>& write) {
  const platform::file_state before = platform::state_of(record.native, false);
  if (before.exists && !before.regular) {
    // A link, device or directory put in place of the file since it was opened.
    return QStringLiteral("not a regular file");
  }
  if (before.exists && !still_known(record, generation, before)) {
    // Another process wrote the file since Qt read it: make sure Qt sees it changed, by more
    // than its size and modification time, and reads it again before it merges and writes.
    platform::touch_distinct(record.real,
                             generation.known.valid ? generation.known.state.modified_ms : -1,
                             nullptr);
  }
  // Gone writers' leftovers go, under the file's lock, before this process's first write.
  const QString parent = cfgq_beside_parent(record.real);
  if (!record.swept && record.shared) {
    cfgq_sweep_private_dirs(parent);
    record.swept = true;
  }
  std::unique_ptr<cfgq_private_dir> stage_dir;
  QString stage;
  // Only through an alias of its own can the write be staged; without one Qt writes the file
  // itself and a cut is found, not undone.
  bool staged = false;
  if (generation.alias != record.real) {
    QString why;
    stage_dir = cfgq_private_dir::make(parent, {}, &why);
    if (!stage_dir) {
      return QStringLiteral("the file can't be staged for writing in %1: %2").arg(parent, why);
    }
    stage = stage_dir->file(QStringLiteral("stage"));
    staged = stage_file(record.real, before, stage) && point_alias(generation.alias, stage);
    if (!staged) {
      return QStringLiteral("the file can't be staged for writing: ") +
             platform::last_error_text();
    }
  } else if (!before.exists) {
    // Qt would make a new file readable by everyone (and writable, under umask 000).
    platform::make_private_file(record.real, nullptr, nullptr);
  }
  const QString target = staged ? stage : record.real;
  const platform::file_state start = platform::state_of(target, true);

  QSettings& settings = write();
  const platform::file_state written = platform::state_of(target, true);
  QString failure;
  quint64 written_hash = 0;
  if (settings.status() == QSettings::AccessError) {
    failure = write_refusal_reason(record.real, generation);
  } else if (!written.same_as(start)) {
    bool ends_with_line_end = true;
    const qint64 found = line_ends_in(target, &ends_with_line_end, &written_hash);
    // Qt finds a failed write itself except in the last buffer it flushes, which only a full
    // file system or a quota can refuse. Counting what Qt holds costs a walk over every key, so
    // it is done where that last buffer is most of the file, or where space is short; elsewhere
    // a cut shows in the last line. The count is exact only while no other object on the alias
    // can change what Qt holds (their first change waits for the record's mutex).
    const bool worth_counting =
        written.size <= exact_check_bytes ||
        platform::free_bytes(QFileInfo(record.real).absolutePath()) < 2 * written.size;
    const bool exact = worth_counting && generation.dirty_objects == 0;
    const qint64 expected = exact ? expected_line_ends(settings) : found;
    if (found != expected || (written.size > 0 && !ends_with_line_end)) {
      failure = QStringLiteral("the new content was cut short (disk full or over quota?)");
      if (!staged) failure += QStringLiteral("; the file may be damaged");
    }
  }
  bool replaced = false;
  if (staged) {
    // Qt's state now stands for the staged file, which becomes the file itself (same inode,
    // same stamp) or goes.
    point_alias(generation.alias, record.real);
    if (failure.isEmpty() && !written.same_as(start)) {
      // Qt made a new file as this process's user: give it the old file's owner and mode (root
      // writing a user's file), or those of a file set aside from its place, or the owner of the
      // file's directory (root making a file in a user's home).
      const platform::file_state like = before.exists ? before : owner_of_new_file(record);
      if (like.exists) {
        platform::restore_owner_and_mode(stage, like);
      } else {
        platform::adopt_owner(stage, QFileInfo(record.real).absolutePath());
      }
      QString why;
      if (platform::rename_over(stage, record.real, &why)) {
        replaced = true;
      } else {
        failure = why;
      }
    }
  }
  stage_dir.reset();
  cfgq_remove_if_empty(parent);
  if (!failure.isEmpty()) return failure;
  if (replaced || !written.same_as(start)) record.pending_like = platform::file_state();
  const platform::file_state now = platform::state_of(record.native, true);
  if (!remember_view(record, generation, now, written_hash != 0 ? &written_hash : nullptr)) {
    generation.known.valid = false;
  }
  // Qt writes only what it parsed without error: the new file needs no check for damage.
  record.checked = now;
  return QString();
}

// Renames the record's file to its name with `suffix` appended, if it is still the file that
// `measured` describes (and, for `size_limit` >= 0, still larger than it), under the file's lock,
// so that it happens once however many processes found it. No file is made in its place: the
// next write makes one, with the set-aside file's owner and mode. False when the lock could not
// be had (*why says why). The record's mutex is held in `guard` (given back for any wait).
bool set_aside(cfgq_file_record& record, std::unique_lock<std::mutex>& guard,
               const platform::file_state& measured, const char* suffix, qint64 size_limit,
               QString* why) {
  cfgq_file_lock lock(record.real);
  qint64 holder = 0;
  // Taken even where Qt opens the file under its own name: no settings object holds it here.
  if (record.shared && !lock.take(why, &holder, &guard)) return false;
  const platform::file_state now = platform::state_of(record.real, true);
  if (!now.same_file(measured) || (size_limit >= 0 && now.size <= size_limit)) return true;
  // The file's parsed state goes with it: a file set aside for its size must not stay in memory.
  if (record.current) cfgq_release_settings_file(record.current->alias);
  QString rename_why;
  if (!platform::rename_over(record.real, record.real + QLatin1String(suffix), &rename_why)) {
    cfgq_debug("Could not set aside " + record.real.toStdString() + ": " +
               rename_why.toStdString());
    return true;
  }
  record.pending_like = now;
  // Settings objects must not go on with what they read of the old file.
  new_generation(record);
  return true;
}

// A settings object that holds nothing and whose writes go nowhere, for a path with nothing
// usable behind it; `reason` says why, when one of its writes is refused.
std::shared_ptr<cfgq_file_generation> void_generation(const QString& reason) {
  auto generation = std::make_shared<cfgq_file_generation>();
  generation->discarding = true;
  generation->refusal = reason;
  const QString& dir = private_dir().path();
  generation->alias = dir.isEmpty() ? QString()
                                    : QDir(dir).filePath(QStringLiteral("void.%1").arg(
                                          private_dir().next_number()));
  return generation;
}

// The file that `path` names, through links, and its state (that of the link's target). A link
// is followed only to a file its own owner owns: *refusal says why otherwise.
QString real_file(const QString& path, platform::file_state* state, QString* refusal) {
  // Each thread remembers the last path it looked at in the file system's encoding.
  thread_local QString last_path;
  thread_local QByteArray last_native;
  if (last_path != path) {
    last_native = QFile::encodeName(path);
    last_path = path;
  }
  const platform::file_state seen = platform::state_of(last_native, false);
  if (!seen.link) {
    *state = seen;
    return path;
  }
  const QString real = platform::final_target(path);
  *state = platform::state_of(real, true);
  if (state->exists && state->owner != seen.owner) {
    *refusal = QStringLiteral("%1 is a link to %2, which its owner does not own").arg(path, real);
  }
  return real;
}

// Clean settings objects that this thread's views have finished with, most recent last. A
// settings object is not to be shared between threads, and Qt delivers its events on the thread
// that made it, so each thread keeps its own.
constexpr std::size_t max_idle_objects = 4;

std::vector<std::unique_ptr<cfgq_settings_file>>& idle_objects() {
  thread_local std::vector<std::unique_ptr<cfgq_settings_file>> objects;
  return objects;
}

}  // namespace


cfgq_settings_file::cfgq_settings_file(const QString& alias, const QString& path,
                                       std::shared_ptr<cfgq_file_record> record,
                                       std::shared_ptr<cfgq_file_generation> generation)
    : QSettings(alias, QSettings::IniFormat),
      m_path(path),
      m_record(std::move(record)),
      m_generation(std::move(generation)) {}

std::unique_ptr<cfgq_settings_file> cfgq_settings_file::open(const QString& path,
                                                             bool temporary) {
  if (path.isEmpty()) {
    auto generation = void_generation(QStringLiteral("no settings file can be made"));
    return std::unique_ptr<cfgq_settings_file>(
        new cfgq_settings_file(generation->alias, path, nullptr, generation));
  }
  // The temporary file is ours by name: whatever was planted there is replaced, never followed
  // (while no write of the process is under way: a write gives the file a second name).
  std::shared_ptr<cfgq_file_record> record;
  std::unique_lock<std::mutex> guard;
  if (temporary) {
    record = records().find_or_make(path, false);
    guard = std::unique_lock<std::mutex>(record->mutex);
    cfgq_secure_temporary_file(path);
  }
  platform::file_state state;
  QString refusal;
  const QString real = real_file(path, &state, &refusal);
  if (state.exists && !state.regular) refusal = QStringLiteral("not a regular file");
  if (!refusal.isEmpty()) {
    auto generation = void_generation(refusal);
    return std::unique_ptr<cfgq_settings_file>(
        new cfgq_settings_file(generation->alias, path, nullptr, generation));
  }
  if (!temporary) {
    record = records().find_or_make(real, true);
    guard = std::unique_lock<std::mutex>(record->mutex);
  }
  if (state.exists && state.size > max_file_bytes) {
    QString why;
    if (!set_aside(*record, guard, state, cfgq_large_suffix, max_file_bytes, &why)) {
      // Never loaded, never replaced: the view holds nothing until the lock is free.
      auto generation = void_generation(why);
      return std::unique_ptr<cfgq_settings_file>(
          new cfgq_settings_file(generation->alias, path, nullptr, generation));
    }
    state = platform::state_of(real, true);
  }
  std::shared_ptr<cfgq_file_generation> generation =
      record->current ? record->current : new_generation(*record);

  // The file is as Qt's parsed state on the alias last matched it, and checked: an object this
  // thread finished with on the same alias reads nothing and checks nothing either. A file that
  // changed since (however alike its stamps) is read on a new alias.
  const bool known = still_known(*record, *generation, state);
  if (known && generation->dirty_objects == 0 &&
      (!state.exists || state.size == 0 || record->checked.same_as(state))) {
    if (std::unique_ptr<cfgq_settings_file> idle = take_idle(*record, path)) {
      cfgq_keep_settings_file(generation->alias);
      return idle;
    }
  }
  if (!known && generation->known.valid && generation->dirty_objects == 0) {
    generation = new_generation(*record);
  }

  std::unique_ptr<cfgq_settings_file> settings;
  if (generation->dirty_objects > 0 && takes_own_lock(*record, *generation)) {
    // Opening writes the changes other objects on the alias hold: under the file's lock.
    cfgq_file_lock lock(record->real);
    QString why;
    qint64 holder = 0;
    const bool locked = lock.take(&why, &holder, &guard);
    // Looked at again after any wait: a write refused meanwhile points the alias into the void.
    if (!locked || generation->discarding) {
      // Those changes wait for their own objects' writes; this object reads the file anew.
      generation = new_generation(*record);
      settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
    } else {
      const QString failure = write_checked(*record, *generation, [&]() -> QSettings& {
        settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
        return *settings;
      });
      if (!failure.isEmpty()) {
        // The other objects' changes are refused at their own ends; this one reads anew.
        discard_writes(*record, *generation);
        report_failure(record->real, failure);
        generation = new_generation(*record);
        settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
      }
    }
  } else {
    // Qt takes the file's stamp after reading its content: when the file changed meanwhile, Qt
    // may hold the old content under the new stamp and would never read it again. The object
    // is made again on a new alias, which reads the file afresh, a few times; the last one's
    // write then makes its Qt state read the file again first (see write_checked).
    for (int tries = 0;; ++tries) {
      settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
      const platform::file_state after = platform::state_of(record->native, true);
      if (after.same_as(state) && remember_view(*record, *generation, state, nullptr)) break;
      generation->known.valid = false;
      if (tries == 2) {
        new_generation(*record);
        break;
      }
      settings.reset();
      generation = new_generation(*record);
      state = platform::state_of(record->native, true);
    }
  }
  keep_damaged_copy(*record, *settings, generation->known.state);
  // Keeps the file's parsed state for the next view, which then costs a lookup, not a re-read.
  cfgq_keep_settings_file(generation->alias);
  return settings;
}

std::unique_ptr<cfgq_settings_file> cfgq_settings_file::take_idle(
    const cfgq_file_record& record, const QString& path) {
  auto& idle = idle_objects();
  std::unique_ptr<cfgq_settings_file> found;
  for (auto it = idle.begin(); it != idle.end();) {
    if ((*it)->m_record.get() != &record) {
      ++it;
    } else if ((*it)->m_generation == record.current && (*it)->m_path == path && !found) {
      found = std::move(*it);
      it = idle.erase(it);
    } else if ((*it)->m_generation != record.current) {
      // An object on an alias the file has left: its parsed state is not to outlive it here.
      it = idle.erase(it);
    } else {
      ++it;
    }
  }
  return found;
}

void cfgq_settings_file::close(std::unique_ptr<QSettings> settings) {
  if (!settings) return;
  // Every view's settings object comes from open.
  auto* file = static_cast<cfgq_settings_file*>(settings.get());
  const bool reusable = file->m_record && !file->m_changed && !file->m_finished &&
                        !file->m_generation->discarding && file->status() == QSettings::NoError &&
                        file->thread() == QThread::currentThread();
  if (!reusable) return;  // deleted here, writing its changes
  while (file->m_levels > 0) file->end_group();
  if (!file->group().isEmpty()) return;
  settings.release();
  auto& idle = idle_objects();
  std::unique_ptr<cfgq_settings_file> oldest;
  if (idle.size() == max_idle_objects) {
    oldest = std::move(idle.front());
    idle.erase(idle.begin());
  }
  idle.emplace_back(file);
}

void cfgq_settings_file::begin_group(const QString& group) {
  beginGroup(group);
  ++m_levels;
}

void cfgq_settings_file::end_group() {
  endGroup();
  if (m_levels > 0) --m_levels;
}

void cfgq_settings_file::set_aside_damaged(const QString& path) {
  platform::file_state state;
  QString refusal;
  const QString real = real_file(path, &state, &refusal);
  if (!state.exists || !state.regular || !refusal.isEmpty()) return;
  std::shared_ptr<cfgq_file_record> record = records().find_or_make(real, true);
  std::unique_lock<std::mutex> guard(record->mutex);
  QString why;
  if (!set_aside(*record, guard, state, cfgq_corrupt_suffix, -1, &why)) {
    cfgq_debug("Could not set aside " + real.toStdString() + ": " + why.toStdString());
  }
}

void cfgq_settings_file::mark_changed() {
  if (m_changed) return;
  m_changed = true;
  if (!m_record) return;
  std::lock_guard<std::mutex> guard(m_record->mutex);
  cfgq_file_generation& generation = *m_generation;
  // A refused write pointed this object's alias into the void. Once no object on it holds
  // refused changes any more, a long-lived object's new change may reach the file again: the
  // alias points back at the file, and the write makes Qt read the file afresh before it merges
  // (what Qt holds for the alias is the refused state).
  if (generation.discarding && generation.dirty_objects == 0 &&
      generation.alias != m_record->real && point_alias(generation.alias, m_record->real)) {
    generation.discarding = false;
    generation.known.valid = false;
  }
  ++generation.dirty_objects;
}

cfgq_settings_file::~cfgq_settings_file() { finish(); }

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
  cfgq_file_lock lock(record.real);
  QString why;
  qint64 holder = 0;
  const bool locked = generation.discarding || !takes_own_lock(record, generation) ||
                      lock.take(&why, &holder, &guard);
  // Counted as unwritten until the lock is had: an object opened on the alias meanwhile would
  // write these changes, so it opens under the lock too.
  --generation.dirty_objects;
  // Looked at again after any wait for the lock: another object's write may have been refused.
  if (generation.discarding) {
    report_failure(m_path, QStringLiteral("an earlier write of the same changes was refused"));
    write();
    return;
  }
  if (!locked) {
    discard_writes(record, generation);
    if (record.current.get() == &generation) new_generation(record);
    report_failure(m_path, why, holder);
    write();
    return;
  }
  const QString failure = write_checked(record, generation, write);
  if (failure.isEmpty()) return;
  // The changes stay in Qt's state of this alias; later objects must not read them back, and
  // when the write was not even tried, this object's end must not make it.
  discard_writes(record, generation);
  if (record.current.get() == &generation) new_generation(record);
  report_failure(m_path, failure);
  // What Qt still holds unwritten now goes into the void.
  write();
}
