// The settings file's owner: opening a view's settings object on the file's current alias, and
// keeping clean objects for the next view. See cfgq_settings_file.h for the design; how changes
// are written is in cfgq_settings_file_write.cpp.
#include "cfgq_settings_file.h"

#include <thread>
#include <utility>
#include <vector>

#include <QThread>

#include "cfgq_diagnostics.h"
#include "cfgq_file_damage.h"
#include "cfgq_file_record.h"
#include "cfgq_file_write.h"
#include "cfgq_limits.h"
#include "cfgq_file_location.h"
#include "cfgq_settings_cache.h"

namespace platform = cfgq_platform;

namespace {

// Clean settings objects that this thread's views have finished with, most recent last. A
// settings object is not to be shared between threads, and Qt delivers its events on the thread
// that made it, so each thread keeps its own.
constexpr std::size_t max_idle_objects = 4;

// Where a thread's variables outlive Qt's knowledge of the thread (Windows), only the thread
// that loaded the library, whose variables go at the process's exit, keeps objects.
const std::thread::id loading_thread = std::this_thread::get_id();

bool keeps_idle_objects() {
  return platform::thread_end_deletes_qt_objects() || std::this_thread::get_id() == loading_thread;
}

struct idle_list {
  std::vector<std::unique_ptr<cfgq_settings_file>> objects;
};

std::vector<std::unique_ptr<cfgq_settings_file>>& idle_objects() {
  return platform::per_thread<idle_list>().objects;
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
    auto generation = cfgq_void_generation(QStringLiteral("no settings file can be made"));
    return std::unique_ptr<cfgq_settings_file>(
        new cfgq_settings_file(generation->alias, path, nullptr, generation));
  }
  // The temporary file is ours by name: whatever was planted there is replaced, never followed
  // (while no write of the process is under way: a write gives the file a second name).
  std::shared_ptr<cfgq_file_record> record;
  std::unique_lock<std::mutex> guard;
  if (temporary) {
    record = cfgq_file_record_for(path, false);
    guard = std::unique_lock<std::mutex>(record->mutex);
    cfgq_secure_temporary_file(path);
  }
  platform::file_state state;
  QString refusal;
  const QString real = cfgq_real_file(path, &state, &refusal);
  if (state.exists && !state.regular) refusal = QStringLiteral("not a regular file");
  if (!refusal.isEmpty()) {
    auto generation = cfgq_void_generation(refusal);
    return std::unique_ptr<cfgq_settings_file>(
        new cfgq_settings_file(generation->alias, path, nullptr, generation));
  }
  if (!temporary) {
    record = cfgq_file_record_for(real, true);
    guard = std::unique_lock<std::mutex>(record->mutex);
  }
  if (state.exists && cfgq_over_file_limit(state.size)) {
    QString why;
    if (!cfgq_set_aside(*record, guard, state, cfgq_large_suffix, true, &why)) {
      // Never loaded, never replaced: the view holds nothing until the lock is free.
      auto generation = cfgq_void_generation(why);
      return std::unique_ptr<cfgq_settings_file>(
          new cfgq_settings_file(generation->alias, path, nullptr, generation));
    }
    state = platform::state_of(real, true);
  }
  std::shared_ptr<cfgq_file_generation> generation =
      record->current ? record->current : cfgq_new_generation(*record);

  // The file is as Qt's parsed state on the alias last matched it, and checked: an object this
  // thread finished with on the same alias reads nothing and checks nothing either. A file that
  // changed since (however alike its stamps) is read on a new alias.
  const bool known = cfgq_still_known(*record, *generation, state);
  if (known && generation->dirty_objects == 0 &&
      (!state.exists || state.size == 0 || record->checked.same_as(state))) {
    if (std::unique_ptr<cfgq_settings_file> idle = take_idle(*record, path)) {
      cfgq_keep_settings_file(generation->alias);
      return idle;
    }
  }
  if (!known && generation->known.valid && generation->dirty_objects == 0) {
    generation = cfgq_new_generation(*record);
  }

  std::unique_ptr<cfgq_settings_file> settings;
  // An object on `generation`'s alias, after its copy (where it is one) got the file's content
  // unless `known`; an object that holds nothing and writes nothing when the file can't be
  // read: Qt would read an old copy, or none, and a write would put that in the file's place.
  const auto make_object = [&](bool known_file) {
    QString why;
    if (cfgq_refresh_copy(*record, *generation, known_file, &why)) {
      settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
      return true;
    }
    auto refused = cfgq_void_generation(QStringLiteral("the file can't be read: ") + why);
    settings.reset(new cfgq_settings_file(refused->alias, path, nullptr, refused));
    return false;
  };
  if (generation->dirty_objects > 0 && (takes_own_lock(*record, *generation) || generation->copy)) {
    // Opening writes the changes other objects on the alias hold: under the file's lock, and,
    // for a copy, put in the file's place (a copy's content alone is refreshed away).
    cfgq_file_write file_write(record->real);
    QString why;
    qint64 holder = 0;
    const bool locked =
        !takes_own_lock(*record, *generation) || file_write.lock(&why, &holder, &guard);
    // Looked at again after any wait: a write refused meanwhile points the alias into the void.
    if (!locked || generation->discarding) {
      // Those changes wait for their own objects' writes; this object reads the file anew.
      generation = cfgq_new_generation(*record);
      make_object(false);
    } else {
      const QString failure = write_checked(*record, *generation, file_write, [&]() -> QSettings& {
        settings.reset(new cfgq_settings_file(generation->alias, path, record, generation));
        return *settings;
      });
      if (!failure.isEmpty()) {
        // The other objects' changes are refused at their own ends; this one reads anew.
        cfgq_discard_writes(*record, *generation);
        report_failure(record->real, failure);
        generation = cfgq_new_generation(*record);
        make_object(false);
      }
    }
  } else {
    // Qt takes the file's stamp after reading its content: when the file changed meanwhile, Qt
    // may hold the old content under the new stamp and would never read it again. The object
    // is made again on a new alias, which reads the file afresh, a few times; the last one's
    // write then makes its Qt state read the file again first (see write_checked).
    for (int tries = 0;; ++tries) {
      if (!make_object(known && tries == 0)) return settings;
      const platform::file_state after = platform::state_of(record->native, true);
      if (after.same_as(state) && cfgq_copy_intact(*generation) &&
          cfgq_remember_view(*record, *generation, state, nullptr)) {
        break;
      }
      generation->known.valid = false;
      if (tries == 2) {
        cfgq_new_generation(*record);
        break;
      }
      settings.reset();
      generation = cfgq_new_generation(*record);
      state = platform::state_of(record->native, true);
    }
  }
  cfgq_keep_damaged_copy(*record, *settings, generation->known.state);
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
                        file->thread() == QThread::currentThread() && keeps_idle_objects();
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
  const QString real = cfgq_real_file(path, &state, &refusal);
  if (!state.exists || !state.regular || !refusal.isEmpty()) return;
  std::shared_ptr<cfgq_file_record> record = cfgq_file_record_for(real, true);
  std::unique_lock<std::mutex> guard(record->mutex);
  QString why;
  if (!cfgq_set_aside(*record, guard, state, cfgq_corrupt_suffix, false, &why)) {
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
  // (what Qt holds for the alias is the refused state). A copy is made anew from the file then.
  if (generation.discarding && generation.dirty_objects == 0 &&
      generation.alias != m_record->real &&
      (generation.copy || cfgq_point_alias(generation.alias, m_record->real))) {
    generation.discarding = false;
    generation.known.valid = false;
  }
  ++generation.dirty_objects;
}

cfgq_settings_file::~cfgq_settings_file() { finish(); }

