// The settings view: its constructors, groups and value operations. Its file belongs to its
// settings object (cfgq_settings_file.h); where the file lies is cfgq_file_location.h, and the
// sections are cfgq_registry_sections.cpp.
// May use: cfgq, cfgq_diagnostics, cfgq_file_location, cfgq_registry_lookup, cfgq_settings_file.
#include "cfgq.h"
#include "cfgq_file_location.h"
#include "cfgq_diagnostics.h"
#include "cfgq_settings_file.h"
#include "cfgq_registry_lookup.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QMap>
#include <QSettings>
#include <QStringList>
#include <fmt/format.h>
#include <fmt/printf.h>

#include "cfg.h"
#include "fio.h"
#include "gen.h"
#include "mem.h"
#include "msg.h"
#include "tst.h"
#include "ver.h"

namespace {

constexpr const char* module_name = "CFGQ";
// Named in internal-error reports; written out so that the text does not depend on the build.
constexpr const char* this_file = "gcl/cfgq/cfgq_registry_key.cpp";

const MEM_INITIALIZER mem_initializer(module_name);


// Appends argument `index` to a fallback text: formatted alone as "{index}\n" (which only the
// first argument can satisfy), or "(unprintable)\n".
template <typename Arg>
void append_fallback_argument(std::string& text, int index, const Arg& arg) {
  text += fmt::format("arg[{}]: ", index);
  try {
    text += fmt::format(fmt::runtime(fmt::sprintf("{%d}\n", index)), arg);
  } catch (...) {
    text += "(unprintable)\n";
  }
}

// The text posted instead of a diagnostic whose formatting failed.
template <typename... Args>
std::string fallback_text(std::string_view format, const Args&... args) {
  std::string text =
      fmt::format("ERROR: args not compatible with format string\nformat: {}\n", format);
  int index = 0;
  (append_fallback_argument(text, index++, args), ...);
  return text;
}

// A printf-style diagnostic text; a formatting failure never leaves the caller.
template <typename... Args>
std::string printf_text(const char* format, const Args&... args) {
  try {
    return fmt::sprintf(format, args...);
  } catch (...) {
  }
  try {
    return fallback_text(format, args...);
  } catch (...) {
    return std::string();
  }
}

// A "{}"-style diagnostic text; a formatting failure never leaves the caller.
template <typename... Args>
std::string brace_text(const char* format, const Args&... args) {
  try {
    return fmt::format(fmt::runtime(format), args...);
  } catch (...) {
  }
  try {
    return fallback_text(format, args...);
  } catch (...) {
    return std::string();
  }
}

// Blanks in value names are accepted, but they are a trap for scripts and the file's readers.
// Only U+0020 counts; tabs and other whitespace draw nothing.
void warn_about_blank(const QString& value_name) {
  if (!value_name.contains(QLatin1Char(' '))) return;
  const QByteArray name = value_name.toLocal8Bit();
  const std::string text = printf_text(
      "Using whitespace in CFGQ_REGISTRY_KEY value_name \"%s\" is not recommended; use "
      "underscore instead",
      name.constData());
  // Passed as the argument of "%s": a value name may contain '%'.
  cfgq_debug(text);
}

}  // namespace

CFGQ_REGISTRY_KEY::CFGQ_REGISTRY_KEY(SUB_KEY key, const char* version, const char* suffix)
    : m_last_error(REGISTRY_NO_ERROR), m_settings() {
  init();
  if (!(key >= SUB_KEY_BEGIN() && key < SUB_KEY_END())) {
    MSG_INTERNAL_ERROR::report("key >= SUB_KEY_BEGIN() && key < SUB_KEY_END()", module_name,
                               this_file, __LINE__);
  }
  if (key == NO_MAIN_KEY) return;
  beginGroup(get_main_key_name(version, suffix));
  if (key == NO_SUB_KEY) return;
  // LAST_SUB_KEY enters a group with an empty name: one more level, the same path.
  beginGroup(QString::fromUtf8(DEFAULT_SUB_KEYS[key].sub_key_name));
}

CFGQ_REGISTRY_KEY::CFGQ_REGISTRY_KEY(const char* section, const char* version, const char* suffix)
    : m_last_error(REGISTRY_NO_ERROR), m_settings() {
  init();
  beginGroup(get_main_key_name(version, suffix));
  if (!gen_is_empty_string(section)) beginGroup(QString::fromUtf8(section));
}

CFGQ_REGISTRY_KEY::CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const char* group)
    : m_last_error(REGISTRY_NO_ERROR), m_settings() {
  init();
  // The parent's whole path is one level, entered even when empty: one endGroup leaves it.
  beginGroup(parent.group());
  if (!gen_is_empty_string(group)) beginGroup(QString::fromUtf8(group));
}

CFGQ_REGISTRY_KEY::CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const QString& group)
    : m_last_error(REGISTRY_NO_ERROR), m_settings() {
  init();
  beginGroup(parent.group());
  if (!group.isEmpty()) beginGroup(group);
}

CFGQ_REGISTRY_KEY::CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const std::string& group)
    : m_last_error(REGISTRY_NO_ERROR), m_settings() {
  init();
  beginGroup(parent.group());
  if (group.length() != 0) beginGroup(QString::fromUtf8(group.c_str()));
}

CFGQ_REGISTRY_KEY::~CFGQ_REGISTRY_KEY() {
  // A settings object with changes writes them as it goes: under the file's lock, checked,
  // reported on the debug channel when they could not be written. A clean one serves the
  // thread's next view.
  cfgq_settings_file::close(std::move(m_settings));
}

namespace {

cfgq_settings_file& owner_of(QSettings& settings) {
  // Every view's settings object is made by init, as the settings file's owner.
  return static_cast<cfgq_settings_file&>(settings);
}

}  // namespace

void CFGQ_REGISTRY_KEY::init() {
  const QString path = get_registry_file_path();
  const bool temporary = cfgq_isolated_run(nullptr);
  try {
    // Sets aside a file above the size limit before anything reads it.
    m_settings = cfgq_settings_file::open(path, temporary);
  } catch (...) {
    cfgq_settings_file::set_aside_damaged(get_registry_file_path());
    // Not guarded: a second failure reaches the caller constructing the view.
    m_settings = cfgq_settings_file::open(get_registry_file_path(), temporary);
  }
}

void CFGQ_REGISTRY_KEY::check_array_sizes() {}

void CFGQ_REGISTRY_KEY::beginGroup(const QString& group) {
  owner_of(*m_settings).begin_group(group);
}

void CFGQ_REGISTRY_KEY::endGroup() { owner_of(*m_settings).end_group(); }

QString CFGQ_REGISTRY_KEY::group() const { return m_settings->group(); }

QString CFGQ_REGISTRY_KEY::fileName() const {
  return static_cast<const cfgq_settings_file&>(*m_settings).path();
}

QVariant CFGQ_REGISTRY_KEY::value(const QString& key, const QVariant& default_value) const {
  return m_settings->value(key, default_value);
}

bool CFGQ_REGISTRY_KEY::contains(const QString& key) const { return m_settings->contains(key); }

void CFGQ_REGISTRY_KEY::remove(const QString& key) {
  owner_of(*m_settings).mark_changed();
  m_settings->remove(key);
}

QList<QString> CFGQ_REGISTRY_KEY::allKeys() const { return m_settings->allKeys(); }

QList<QString> CFGQ_REGISTRY_KEY::childKeys() const { return m_settings->childKeys(); }

QList<QString> CFGQ_REGISTRY_KEY::childGroups() const { return m_settings->childGroups(); }

bool CFGQ_REGISTRY_KEY::get_value(const QString& value_name, QVariant* variant_value) {
  if (variant_value == nullptr) {
    MSG_INTERNAL_ERROR::report("variant_value != NULL", module_name, this_file, __LINE__);
  }
  warn_about_blank(value_name);
  // Only the group's own keys count, case-sensitively: a name with '/' would reach into a
  // subgroup. One lookup, where listing the group's keys cost time in proportion to the group.
  if (!cfgq_find_own_value(*m_settings, value_name, variant_value)) {
    m_last_error = REGISTRY_VALUE_NOT_FOUND;
    return false;
  }
  m_last_error = REGISTRY_NO_ERROR;
  return true;
}

void CFGQ_REGISTRY_KEY::set_value(const QString& value_name, const QVariant& value) {
  warn_about_blank(value_name);
  // The length of value.toString(), without converting values whose text is known to be short.
  qsizetype length = 0;
  if (cfgq_text_reaches(value, max_value_utf16_units, &length)) {
    if (cfgq_debug_enabled()) {
      const std::string text =
          brace_text("Value too large. Size is {}. Value will not be set.", length);
      msg_local_vdebug_no_checking_impl(module_name, "%s", text.c_str());
    }
  } else {
    owner_of(*m_settings).mark_changed();
    m_settings->setValue(value_name, value);
  }
  // Also after a refused value: a write never leaves a read's outcome behind.
  m_last_error = REGISTRY_NO_ERROR;
}

void CFGQ_REGISTRY_KEY::setValue(const QString& value_name, const QVariant& value) {
  set_value(value_name, value);
}

bool CFGQ_REGISTRY_KEY::is_equal(const QString& value_name, const QString& text,
                                 Qt::CaseSensitivity sensitivity) {
  QVariant stored;
  if (!get_value(value_name, &stored)) return false;
  if (!stored.isValid() || !stored.canConvert(QMetaType::fromType<QString>())) return false;
  return QString::compare(stored.toString(), text, sensitivity) == 0;
}

bool CFGQ_REGISTRY_KEY::is_yes(const QString& value_name) {
  return is_equal(value_name, QString::fromUtf8(CFGQ_YES_STR), Qt::CaseInsensitive);
}

bool CFGQ_REGISTRY_KEY::is_no(const QString& value_name) {
  return is_equal(value_name, QString::fromUtf8(CFGQ_NO_STR), Qt::CaseInsensitive);
}

void CFGQ_REGISTRY_KEY::set_yes(const QString& value_name) {
  set_value(value_name, QVariant(QString::fromUtf8(CFGQ_YES_STR)));
}

void CFGQ_REGISTRY_KEY::set_no(const QString& value_name) {
  set_value(value_name, QVariant(QString::fromUtf8(CFGQ_NO_STR)));
}

CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE CFGQ_REGISTRY_KEY::get_last_error() { return m_last_error; }

namespace {

// A group path as Qt takes it: its names without empty ones ("/a//b/" is "a/b").
QString normal_group_path(const QString& path) {
  return path.split(QLatin1Char('/'), Qt::SkipEmptyParts).join(QLatin1Char('/'));
}

// True when one group lies within the other (or they are one group): a copy between them writes
// where it still reads.
bool group_paths_overlap(const QString& a, const QString& b) {
  const QString x = normal_group_path(a) + QLatin1Char('/');
  const QString y = normal_group_path(b) + QLatin1Char('/');
  return x == QLatin1String("/") || y == QLatin1String("/") || x.startsWith(y) || y.startsWith(x);
}

// A copy between groups that don't overlap, as the walk below would make it (nothing it writes
// is in what it reads), in one pass over the file's keys: a key's path is walked once, so a
// hand-made file nested hundreds of thousands of levels deep costs time in proportion to its
// size, not to the square of its depth.
int copy_disjoint(QSettings& settings, const QString& source, const QString& destination,
                  const std::function<void(const QString&, const QVariant&)>& set_value) {
  settings.beginGroup(source);
  const QStringList keys = settings.allKeys();
  std::vector<std::pair<QString, QVariant>> buffer;
  buffer.reserve(static_cast<size_t>(keys.size()));
  for (const QString& key : keys) {
    // A hand-edited file can hold a key such as "a//b", below a subgroup with an empty name,
    // which no walk of the groups can enter: it is not copied.
    if (key.startsWith(QLatin1Char('/')) || key.contains(QLatin1String("//"))) continue;
    buffer.emplace_back(key, settings.value(key, QVariant()));
  }
  settings.endGroup();

  settings.beginGroup(destination);
  for (const auto& [key, value] : buffer) {
    // Counted whether or not set_value stores it: the count tells that the source held keys.
    set_value(key, value);
  }
  settings.endGroup();
  return static_cast<int>(buffer.size());
}

}  // namespace

int CFGQ_REGISTRY_KEY::copy(const QString& source, const QString& destination) {
  if (!group_paths_overlap(source, destination)) {
    return copy_disjoint(*m_settings, source, destination,
                         [this](const QString& key, const QVariant& value) { set_value(key, value); });
  }
  // Groups that overlap: group by group, depth first, each group's values before its subgroups', as a recursive walk
  // would go; the groups still to visit wait on a list, not on the stack, so a hand-made file
  // nested thousands of levels deep is copied like any other.
  std::vector<std::pair<QString, QString>> pending{{source, destination}};
  int count = 0;
  while (!pending.empty()) {
    const auto [from, to] = std::move(pending.back());
    pending.pop_back();
    m_settings->beginGroup(from);
    // Both lists and every value of this level are taken before anything is written, so a
    // destination inside the source (or equal to it) can't change what is visited.
    const QStringList keys = m_settings->childKeys();
    const QStringList groups = m_settings->childGroups();
    QMap<QString, QVariant> buffer;
    for (const QString& key : keys) buffer.insert(key, m_settings->value(key, QVariant()));
    m_settings->endGroup();

    m_settings->beginGroup(to);
    for (const QString& key : keys) {
      // Counted whether or not set_value stores it: the count tells that the source held keys.
      set_value(key, buffer.value(key));
      ++count;
    }
    m_settings->endGroup();

    for (auto group = groups.crbegin(); group != groups.crend(); ++group) {
      // A hand-edited file can hold a key such as "a//b", listed as a subgroup with an empty
      // name. Entering "<source>/" enters the source again, which would never end.
      if (group->isEmpty()) continue;
      pending.emplace_back(from + QLatin1Char('/') + *group, to + QLatin1Char('/') + *group);
    }
  }
  return count;
}

void CFGQ_REGISTRY_KEY::clear_registry_key() {
  owner_of(*m_settings).mark_changed();
  for (const QString& key : m_settings->allKeys()) m_settings->remove(key);
}

void CFGQ_REGISTRY_KEY::clear() {
  owner_of(*m_settings).mark_changed();
  m_settings->clear();
}
