// Keepers of the settings files' parsed state, and the lookups that let a view answer at the cost
// of one map search instead of listing a group.
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

#include <QDir>
#include <QSettings>
#include <QStringList>

namespace {

// Qt's INI keys ignore case on these platforms; a hit is then checked against the key's spelling.
#if defined(Q_OS_WIN) || defined(Q_OS_DARWIN)
constexpr bool qt_ini_keys_ignore_case = true;
#else
constexpr bool qt_ini_keys_ignore_case = false;
#endif

// No text form of these types comes near this many UTF-16 code units ("-1.7976931348623157e+308").
constexpr qsizetype short_text_utf16_units = 64;

// Stands for "no such key" in a lookup. Nobody outside this file can make a value of this type,
// so a stored value is never mistaken for it.
struct missing_value {};

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

bool cfgq_find_own_value(const QSettings& settings, const QString& name, QVariant* found) {
  // The group's key list can hold "" (a line "=x" in the file), while Qt's lookups refuse an
  // empty name: ask the list, and read the value as the list-based lookup always did.
  if (name.isEmpty()) {
    if (!settings.childKeys().contains(name)) return false;
    *found = settings.value(name, QVariant());
    return true;
  }
  // Only the group's own keys count. Qt's lookups would drop a leading, trailing or doubled "/"
  // and reach into subgroups, while no own key holds a "/". A backslash needs nothing: in memory
  // it is an ordinary character, for the lookup and the key list alike (only the file's reader
  // turns "\" into "/").
  if (name.contains(QLatin1Char('/'))) return false;
  const QVariant missing = QVariant::fromValue(missing_value{});
  QVariant value = settings.value(name, missing);
  if (value.metaType() == missing.metaType()) {
    // Qt parses a file's sections when first asked, and a lookup parses the section that best
    // matches the key, while the key list parses the one that matches the group. They differ
    // only when a hand-written section is named after a subgroup ("[g/a]" beside "[g]"), and
    // then the group's own section may still be unread. A name that ends just after the group's
    // path ("g/" and a NUL) makes the lookup parse the group's section; then ask once more.
    // (A hit needs no such care: the section a lookup parses never holds an own key of the
    // group unless it is the group's section. Only a key written twice, in the group's section
    // and in a section named after a subgroup, may read its other copy.)
    settings.contains(QString(QChar(0)));
    value = settings.value(name, missing);
    if (value.metaType() == missing.metaType()) return false;
  }
  if (qt_ini_keys_ignore_case && !settings.childKeys().contains(name, Qt::CaseSensitive)) {
    return false;
  }
  *found = std::move(value);
  return true;
}

bool cfgq_text_reaches(const QVariant& value, qsizetype limit, qsizetype* length) {
  switch (value.typeId()) {
    case QMetaType::QString:
      // The text form of a text is the text itself.
      *length = static_cast<const QString*>(value.constData())->size();
      return *length >= limit;
    case QMetaType::QByteArray:
      // Decoding UTF-8 never gives more UTF-16 code units than there are bytes.
      if (static_cast<const QByteArray*>(value.constData())->size() < limit) return false;
      break;
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
      if (limit > short_text_utf16_units) return false;
      break;
    default:
      break;
  }
  *length = value.toString().size();
  return *length >= limit;
}

QString cfgq_profile_settings_file(const std::string& profile_dir) {
  struct answer {
    std::string dir;
    QString path;
  };
  thread_local std::unique_ptr<answer> last;
  if (last && last->dir == profile_dir) return last->path;
  const QString dir = QString::fromStdString(profile_dir);
  QString path = QDir(dir).absoluteFilePath(QStringLiteral("korvel2.kreg"));
  // A relative directory is taken from the working directory, which may change in between.
  if (QDir::isAbsolutePath(dir)) last = std::make_unique<answer>(answer{profile_dir, path});
  return path;
}
