// Carrying a user's settings forward from an earlier suite version, and resetting the running
// version's settings.
// May use: cfgq, cfgq_file_location.
#include <string>
#include <vector>

#include <QString>
#include <QStringList>
#include <QVariant>

#include "cfgq.h"
#include "cfgq_file_location.h"
#include "ver.h"

namespace {

// The settings format the running library writes; a main key with an older (or no) marker was
// written by tools before the first migration of this version and is started afresh.
constexpr int CURRENT_REGISTRY_VERSION = 27;
const QString registry_version_name = QString::fromLatin1(cfgq_registry_version_name);

struct NON_MIGRATED_KEY {
  CFGQ_REGISTRY_KEY::SUB_KEY sub_key;
  const char* key_name;  // null in the closing row
};

// Values that take their defaults in a new version instead of the earlier version's: the start
// screens should greet the user once more after an upgrade.
const NON_MIGRATED_KEY NON_MIGRATED_KEYS[] = {
    {CFGQ_REGISTRY_KEY::GENERAL, CFGQ_PJM_SHOW_WELCOME_SCREEN},
    {CFGQ_REGISTRY_KEY::GENERAL, CFGQ_PJM_SHOW_WHATSNEW_SCREEN},
    {CFGQ_REGISTRY_KEY::LAST_SUB_KEY, nullptr},
};

// Reaches the view's section table, which only views and their kin may read.
class section_table : public CFGQ_REGISTRY_KEY {
 public:
  static QString group_name(SUB_KEY key) {
    return QString::fromUtf8(DEFAULT_SUB_KEYS[key].sub_key_name);
  }
};

// The running version's main key; a source key differs only in its version text, so both carry
// the same "_64-Bit" part and edition.
QString current_main_key() { return get_main_key_name(nullptr, nullptr); }

}  // namespace

CFGQ_REGISTRY::CFGQ_REGISTRY() = default;

void CFGQ_REGISTRY::migrate_registry_settings() {
  CFGQ_REGISTRY_KEY root(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  const QString current = current_main_key();
  const std::vector<std::string> versions = ver_get_all_versions();
  const QString running = QString::fromUtf8(ver_get_version().c_str());

  if (root.childGroups().contains(current, Qt::CaseSensitive)) {
    root.beginGroup(current);
    const QVariant marker = root.value(registry_version_name, QVariant());
    // A marker that is not a number reads as 0: older than any format.
    if (!marker.isValid() || marker.toInt() < CURRENT_REGISTRY_VERSION) root.remove(QString());
    root.setValue(registry_version_name, CURRENT_REGISTRY_VERSION);
    return;
  }

  // The list is the order of preference: the first earlier version with any value wins, even
  // when the size limit refused all of them, because copy counts what it visits.
  int count = 0;
  for (auto version = versions.begin(); version != versions.end() && count == 0; ++version) {
    const QString text = QString::fromUtf8(version->c_str());
    if (text == running) continue;
    const QByteArray local = text.toLocal8Bit();
    count = root.copy(get_main_key_name(local.constData(), nullptr), current);
  }

  if (count > 0) {
    for (const NON_MIGRATED_KEY* row = NON_MIGRATED_KEYS;
         row->sub_key != CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++row) {
      root.remove(QStringLiteral("%1/%2/%3")
                      .arg(current)
                      .arg(section_table::group_name(row->sub_key))
                      .arg(QString::fromUtf8(row->key_name)));
    }
  }

  // Written even when nothing was copied, so the next run does not search again.
  root.beginGroup(current);
  root.setValue(registry_version_name, CURRENT_REGISTRY_VERSION);
}

void CFGQ_REGISTRY::delete_current_settings() {
  CFGQ_REGISTRY_KEY root(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  const QString current = current_main_key();
  const bool present = root.childGroups().contains(current, Qt::CaseSensitive);
  root.beginGroup(current);
  if (present) root.remove(QString());
  // The marker keeps a later migration from bringing the old settings back.
  root.setValue(registry_version_name, CURRENT_REGISTRY_VERSION);
}
