// Keepers of the settings files' parsed state.
//
// Qt shares one parsed copy of a file between the settings objects of a process, but once the
// last of them is gone it keeps that copy only for small files (a few hundred parsed keys).
// Every view owns its own settings object, and most callers make one view per operation, so
// without a keeper each view on a realistic file would re-read and re-parse the whole file.
#include "cfgq_settings_cache.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <QSettings>

namespace {

class settings_keepers {
 public:
  settings_keepers() = default;
  settings_keepers(const settings_keepers&) = delete;
  settings_keepers& operator=(const settings_keepers&) = delete;

  void keep(const QString& path) {
    std::unique_ptr<QSettings> dropped;  // destroyed after the lock is given back
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      // Most views open the file opened last: look there first.
      if (!m_kept.empty() && m_kept.back().first == path) return;
      auto it = std::find_if(m_kept.begin(), m_kept.end(),
                             [&](const kept_file& kept) { return kept.first == path; });
      if (it != m_kept.end()) {
        std::rotate(it, it + 1, m_kept.end());
        return;
      }
      std::unique_ptr<QSettings> keeper;
      try {
        // The caller's own settings object is open on the file, so this one shares its parsed
        // state instead of reading the file again.
        keeper = std::make_unique<QSettings>(path, QSettings::IniFormat);
        if (static_cast<int>(m_kept.size()) == max_kept_settings_files) {
          dropped = std::move(m_kept.front().second);
          m_kept.erase(m_kept.begin());
        }
        m_kept.emplace_back(path, std::move(keeper));
      } catch (...) {
        // Out of memory: the file is simply not kept, and views re-read it as Qt would.
      }
    }
  }

  void release(const QString& path) {
    std::unique_ptr<QSettings> dropped;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      auto it = std::find_if(m_kept.begin(), m_kept.end(),
                             [&](const kept_file& kept) { return kept.first == path; });
      if (it == m_kept.end()) return;
      dropped = std::move(it->second);
      m_kept.erase(it);
    }
  }

  int count() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_kept.size());
  }

 private:
  using kept_file = std::pair<QString, std::unique_ptr<QSettings>>;

  std::mutex m_mutex;
  std::vector<kept_file> m_kept;  // least recently opened first
};

std::atomic<bool> keepers_made{false};

settings_keepers& keepers() {
  // Made at the first keep, which always follows the process's first settings object, so it is
  // destroyed (at unload or exit) while Qt's own table of open files still stands, and before
  // the temporary settings file, made earlier, is deleted.
  static settings_keepers instance;
  keepers_made.store(true, std::memory_order_release);
  return instance;
}

}  // namespace

void cfgq_keep_settings_file(const QString& path) { keepers().keep(path); }

void cfgq_release_settings_file(const QString& path) {
  // Nothing is kept yet; asking for the keepers here would make them before Qt's table.
  if (!keepers_made.load(std::memory_order_acquire)) return;
  keepers().release(path);
}

int cfgq_kept_settings_file_count() {
  if (!keepers_made.load(std::memory_order_acquire)) return 0;
  return keepers().count();
}
