// The records of the process's settings files, their aliases, and the change detection.
#include "cfgq_file_record.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <tuple>
#include <unordered_map>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "cfgq_diagnostics.h"
#include "cfgq_file_location.h"
#include "cfgq_settings_cache.h"

namespace platform = cfgq_platform;

namespace {

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
    if (!m_dir || platform::free_bytes(m_dir->path()) < cfgq_min_private_room) return QString();
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
    struct last_record {
      std::shared_ptr<cfgq_file_record> record;
    };
    std::shared_ptr<cfgq_file_record>& last = platform::per_thread<last_record>().record;
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

}  // namespace

std::shared_ptr<cfgq_file_record> cfgq_file_record_for(const QString& real, bool shared) {
  return records().find_or_make(real, shared);
}

QString cfgq_process_dir() { return private_dir().path(); }

namespace {

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

}  // namespace

std::shared_ptr<cfgq_file_generation> cfgq_new_generation(cfgq_file_record& record) {
  auto generation = std::make_shared<cfgq_file_generation>();
  const QString dir = alias_directory(record);
  if (dir.isEmpty()) {
    generation->alias = record.real;
  } else {
    generation->alias = QDir(dir).filePath(
        QStringLiteral("f%1.%2").arg(record.number).arg(++record.generations));
    generation->copy = !platform::make_link(record.real, generation->alias);
  }
  if (record.current) {
    cfgq_release_settings_file(record.current->alias);
    // A copy nobody writes through any more goes (an object still open on it reads nothing more
    // from it, and one with changes refreshes it before it writes).
    if (record.current->copy && record.current->dirty_objects == 0) {
      platform::remove_file(record.current->alias);
    }
  }
  record.current = generation;
  return generation;
}

void cfgq_discard_writes(const cfgq_file_record& record, cfgq_file_generation& generation) {
  if (generation.discarding) return;
  generation.discarding = true;
  if (generation.alias == record.real || generation.alias.isEmpty()) return;
  // Qt writes a copy only to the copy: nothing of it reaches the file without the owner.
  if (!generation.copy) {
    const QString replacement = generation.alias + QStringLiteral(".new");
    platform::remove_file(replacement);
    if (platform::make_link(generation.alias + QStringLiteral(".void"), replacement)) {
      platform::rename_over(replacement, generation.alias, nullptr);
    }
  }
  cfgq_release_settings_file(generation.alias);
}

std::shared_ptr<cfgq_file_generation> cfgq_void_generation(const QString& reason) {
  auto generation = std::make_shared<cfgq_file_generation>();
  generation->discarding = true;
  generation->refusal = reason;
  const QString& dir = private_dir().path();
  generation->alias = dir.isEmpty() ? QString()
                                    : QDir(dir).filePath(QStringLiteral("void.%1").arg(
                                          private_dir().next_number()));
  return generation;
}

QString cfgq_real_file(const QString& path, platform::file_state* state, QString* refusal) {
  // Each thread remembers the last path it looked at in the file system's encoding.
  struct last_path {
    QString path;
    QByteArray native;
  };
  last_path& last = platform::per_thread<last_path>();
  if (last.path != path) {
    last.native = QFile::encodeName(path);
    last.path = path;
  }
  const platform::file_state seen = platform::state_of(last.native, false);
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

bool cfgq_refresh_copy(const cfgq_file_record& record, cfgq_file_generation& generation,
                       bool known, QString* why) {
  if (!generation.copy) return true;
  // A copy that went (its generation ended, a cleaner emptied the temporary directory) is made
  // again: Qt would take a missing copy for an empty file and write that in the file's place.
  const platform::file_state seen = platform::state_of(generation.alias, false);
  if (known && seen.exists && seen.same_as(generation.copy_state)) return true;
  if (seen.exists) generation.copy_ms = std::max(generation.copy_ms, seen.modified_ms);
  QByteArray bytes;
  bool missing = false;
  if (!platform::read_file(record.real, &bytes, &missing, why)) {
    // No file: no copy, which Qt reads as empty.
    if (!missing) return false;
    generation.copy_state = platform::file_state();
    if (platform::remove_file(generation.alias)) return true;
    *why = QStringLiteral("the old copy can't be removed: ") + platform::last_error_text();
    return false;
  }
  const QString replacement = generation.alias + QStringLiteral(".new");
  platform::remove_file(replacement);
  if (!platform::write_new_file(replacement, bytes, why) ||
      !platform::rename_over(replacement, generation.alias, why)) {
    platform::remove_file(replacement);
    return false;
  }
  // Qt reads a file again only when its size or time changed: the copy gets a later time than
  // any it had (it may have been removed and made anew since Qt read it).
  if (generation.copy_ms >= 0) platform::touch_distinct(generation.alias, generation.copy_ms, nullptr);
  generation.copy_state = platform::state_of(generation.alias, false);
  generation.copy_ms = std::max(generation.copy_ms, generation.copy_state.modified_ms);
  return true;
}

bool cfgq_copy_intact(const cfgq_file_generation& generation) {
  return !generation.copy ||
         platform::state_of(generation.alias, false).same_as(generation.copy_state);
}

bool cfgq_point_alias(const QString& alias, const QString& target) {
  const QString replacement = alias + QStringLiteral(".new");
  platform::remove_file(replacement);
  return platform::make_link(target, replacement) &&
         platform::rename_over(replacement, alias, nullptr);
}

qint64 cfgq_scan_file(const QString& path, bool* ends_with_line_end, quint64* hash) {
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

namespace {

// A hash of the bytes of the file at `native`, and the state of the file it read (not existing
// when it could not be read).
quint64 content_hash(const QByteArray& native, platform::file_state* read) {
  bool ends_with_line_end = true;
  quint64 hash = 0;
  const platform::file_state before = platform::state_of(native, true);
  if (cfgq_scan_file(QFile::decodeName(native), &ends_with_line_end, &hash) < 0 ||
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

}  // namespace

bool cfgq_remember_view(const cfgq_file_record& record, cfgq_file_generation& generation,
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

bool cfgq_still_known(const cfgq_file_record& record, cfgq_file_generation& generation,
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

