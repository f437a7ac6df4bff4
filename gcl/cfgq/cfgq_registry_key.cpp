// The settings view: locating and opening the settings file, sections, main keys and groups.
#include "cfgq.h"
#include "cfgq_registry_key.h"
#include "cfgq_file_safety.h"
#include "cfgq_settings_cache.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

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

// The process's temporary settings file. Filled at the first path computation that obtains one,
// and deleted with its file when the library unloads.
class temp_settings_file {
 public:
  temp_settings_file() = default;
  temp_settings_file(const temp_settings_file&) = delete;
  temp_settings_file& operator=(const temp_settings_file&) = delete;
  ~temp_settings_file() {
    if (!m_path.isEmpty()) FIO_FILE_SYSTEM::remove_if_exists(m_path.toStdString());
  }

  QString path() {
    std::lock_guard<std::mutex> lock(m_mutex);
    // Asked for again while empty: a temporary directory that could not take the file (missing,
    // full) may take it at a later view. Once obtained, the path never changes.
    if (m_path.isEmpty()) {
      m_path = QString::fromStdString(gen_create_temp_file(gen_get_temp_path(), "CFGQ"));
    }
    return m_path;
  }

 private:
  std::mutex m_mutex;
  QString m_path;
};

temp_settings_file temp_registry_file;

bool separate_64_bit_settings() {
  // Fixed at the first main-key name of the process; later configuration changes don't count.
  static const bool separate = cfg_is_on("separate_settings_for_64_bit");
  return separate;
}

// True when the environment variable `name` holds exactly `text`; an unset one reads as empty.
// Read as bytes: decoding to a QString first cost a third of each path computation, and an ASCII
// text matches the bytes exactly when it matches their decoded form.
bool environment_is(const char* name, const char* text) {
  const char* value = std::getenv(name);
  return value != nullptr && std::strcmp(value, text) == 0;
}

bool is_isolated_run() { return cfgq_isolated_run(nullptr); }

// A value whose text form has this many UTF-16 code units or more is not stored. (The same
// figure limits the settings file, counted in bytes, when it is opened.)
constexpr qsizetype max_value_utf16_units = 10'000'000;

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

// msg_local_vdebug takes its arguments as a va_list only.
void post_debug(const char* channel, MSG_D_LEVEL level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  msg_local_vdebug(channel, level, format, args);
  va_end(args);
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
  post_debug(module_name, MSG_D_LEVEL_2, "%s", text.c_str());
}

// Asked before the size text is formatted, so that a refused value costs no formatting when
// nobody listens.
bool cfgq_debug_enabled() {
  if (!msg_initialized) return false;
  if (!MSG_D::debug_messages_enabled(nullptr)) return false;
  const MSG_D reporter(nullptr);
  return reporter.is_channel_enabled(module_name, MSG_D_LEVEL_2);
}

// Renames the settings file to its name with `suffix` appended, replacing an older such file.
void set_aside(const char* suffix) {
  const QString file = get_registry_file_path();
  // The file's parsed state goes with it: a file set aside for its size must not stay in memory.
  cfgq_release_settings_file(file);
  const std::string path = file.toStdString();
  FIO_FILE_SYSTEM::remove_if_exists(path + suffix);
  FIO_FILE_SYSTEM::rename(path, path + suffix);
}

}  // namespace

bool cfgq_isolated_run(QString* why) {
  const char* cause = nullptr;
  if (tst_is_regtest_mode()) {
    cause = "KORVEL_REGTEST=1";
  } else if (environment_is("QT_QPA_PLATFORM", "minimal")) {
    cause = "QT_QPA_PLATFORM=minimal";
  } else if (environment_is("PBUILD_BUILD", "1")) {
    cause = "PBUILD_BUILD=1";
  }
  if (cause != nullptr && why != nullptr) *why = QString::fromLatin1(cause);
  return cause != nullptr;
}

QString get_main_key_name(const char* version, const char* suffix) {
  QString name = version != nullptr ? QString::fromUtf8(version)
                                    : QString::fromStdString(ver_get_version());
  if (separate_64_bit_settings()) name += QLatin1String("_64-Bit");
  if (suffix != nullptr) {
    const QString given = QString::fromUtf8(suffix);
    if (!name.endsWith(given, Qt::CaseSensitive)) return name + given;
  }
  if (!name.endsWith(QLatin1String("_pro"), Qt::CaseSensitive)) name += QLatin1String("_pro");
  return name;
}

QString get_registry_file_path() {
  // The temporary file is made at the first call of the process, isolated or not, so that every
  // later isolated view of the process finds the same file.
  const QString temp_path = temp_registry_file.path();
  if (is_isolated_run()) return temp_path;
  return cfgq_profile_settings_file(gen_get_user_profile_directory());
}

const CFGQ_REGISTRY_KEY::ENUMERATED_SUB_KEY_NAME
    CFGQ_REGISTRY_KEY::DEFAULT_SUB_KEYS[CFGQ_REGISTRY_KEY::LAST_SUB_KEY + 1] = {
        {"NO_MAIN_KEY", ""},
        {"NO_SUB_KEY", ""},
        {"GENERAL", "General"},
        {"DIRECTORIES", "Directories"},
        {"GRAPHICS_EDITOR", "Graphics_Editor"},
        {"TEXT_EDITOR", "Text_Editor"},
        {"RECENT_FILES", "Recent_Files"},
        {"SETUP", "Setup"},
        {"TOOLS_MENU", "Tools_Menu"},
        {"CUIQ", "CUIQ"},
        {"UNB", "UNB"},
        {"FLP", "Floorplanner"},
        {"LFP", "Logical_Floorplan"},
        {"ACV", "Chip_Viewer"},
        {"APE", "Atom_Property_Editor"},
        {"PROJECT_MANAGER", "Project_Manager"},
        {"MEMORY_EDITOR", "Memory_Editor"},
        {"PCL", "PCL"},
        {"PJN", "PJN"},
        {"WED", "WED"},
        {"DBU", "DBU"},
        {"LIST_CONTROLS", "List_Control_Widths"},
        {"EDA", "EDA_Tools"},
        {"RPWQ", "Report_Window"},
        {"KORVEL_MURMEL", "Korvel_Murmel"},
        {"SLD", "SLD"},
        {"TCL", "Tcl_Toolbar"},
        {"ASEQ", "Assignment_Editor"},
        {"FMW", "FenMark_Regions_Window"},
        {"PROGRAMMER", "Programmer"},
        {"FIF", "Find_in_Files"},
        {"SED", "Trescan"},
        {"ISMCE", "In-System_Memory_Content_Editor"},
        {"ASD_BACK_ANNOTATE", "Back_Annotate_Dialog"},
        {"SETD", "Settings_Dialog"},
        {"TOOL_WND", "TOOL_WND"},
        {"RESIZE", "Resizable_Window"},
        {"DCS", "Dialog_Control_State"},
        {"RTLV", "RTL_Viewer"},
        {"RSMQ", "State_Machine_Viewer"},
        {"MSG", "Messages"},
        {"PPLQ", "Pin_Planner"},
        {"CPS", "Critical_Path_Settings"},
        {"WIZARDS", "Wizards"},
        {"REVISION", "Revisions_Dialog"},
        {"DPW", "DPW"},
        {"TAWQ", "Horvane_Timing_Analyzer"},
        {"OAW", "Advisors"},
        {"SDE", "Simulation_Debugger"},
        {"TMW", "Task_Manager_Window"},
        {"CFWQ", "Compiler_Flow_Window"},
        {"OFCQ", "Orlesk_Foundation_Class"},
        {"KGQ", "Korvel"},
        {"KUI", "Korvel_UI_Framework"},
        {"ECO", "Change Manager Window"},
        {"ESLC", "EDA_Simulation_Library_Compiler"},
        {"CSETQ", "Device_Dialog"},
        {"SHLPQ", "Self_Help"},
        {"TOOLBAR", "Toolbar"},
        {"NUI", "NUI_Viewer"},
        {"DEPLG", "Design_Planner"},
        {"CMPM", "Compiler_Manager"},
        {"PDPW", "Draftwell"},
        {"NUIQU", "RTL_Analyzer"},
        {"KCOLOR", "Korvel_Color_Setting"},
        {"KINST", "Korvel_Installer"},
        {"DEEQ", "Design_Entry_Editor"},
        {"PTCGUI", "Power_and_Thermal_Analyzer"},
        {"LAST_SUB_KEY", ""},
};

const CFGQ_REGISTRY_KEY::SUB_KEY_ITERATOR CFGQ_REGISTRY_KEY::SUB_KEY_BEGIN() {
  return {NO_MAIN_KEY, false};
}

const CFGQ_REGISTRY_KEY::SUB_KEY_ITERATOR CFGQ_REGISTRY_KEY::SUB_KEY_END() {
  return {LAST_SUB_KEY, true};
}

const CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_ITERATOR
CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_BEGIN() {
  return {REGISTRY_NO_ERROR, false};
}

const CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_ITERATOR CFGQ_REGISTRY_KEY::REGISTRY_ERROR_CODE_END() {
  return {REGISTRY_VALUE_NOT_FOUND, true};
}

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
  if (!m_settings) return;
  const QString path = m_settings->fileName();
  // The temporary file is the only file at its path: no need to read the environment again.
  const bool temporary = path == temp_registry_file.path();
  // A settings object writes the file when destroyed only after changes of its own: a view that
  // only read needs no look at the file before and after.
  if (!temporary && !cfgq_view_settings::of(*m_settings).changed()) return;
  const cfgq_file_state before = cfgq_settings_file_closing(path);
  m_settings.reset();
  cfgq_settings_file_written(path, before, temporary);
}

void CFGQ_REGISTRY_KEY::init() {
  // The preparation looks at the file anyway: its size (-1 for no file) spares a second look.
  const qint64 size = cfgq_prepare_settings_file(get_registry_file_path(), is_isolated_run());
  // Strictly greater: a file of exactly max_file_bytes is still opened.
  if (size > max_file_bytes) set_aside(".large");

  try {
    m_settings =
        std::make_unique<cfgq_view_settings>(get_registry_file_path(), QSettings::IniFormat);
  } catch (...) {
    set_aside(".corrupt");
    // Not guarded: a second failure reaches the caller constructing the view.
    m_settings =
        std::make_unique<cfgq_view_settings>(get_registry_file_path(), QSettings::IniFormat);
  }
  // Notes the file as Qt now knows it, and copies a file Qt could read only in part before any
  // write can replace it.
  cfgq_settings_file_opened(*m_settings);
  // Keeps the file's parsed state for the next view, which then costs a lookup, not a re-read.
  cfgq_keep_settings_file(m_settings->fileName());
}

void CFGQ_REGISTRY_KEY::check_array_sizes() {}

void CFGQ_REGISTRY_KEY::beginGroup(const QString& group) { m_settings->beginGroup(group); }

void CFGQ_REGISTRY_KEY::endGroup() { m_settings->endGroup(); }

QString CFGQ_REGISTRY_KEY::group() const { return m_settings->group(); }

QString CFGQ_REGISTRY_KEY::fileName() const { return m_settings->fileName(); }

QVariant CFGQ_REGISTRY_KEY::value(const QString& key, const QVariant& default_value) const {
  return m_settings->value(key, default_value);
}

bool CFGQ_REGISTRY_KEY::contains(const QString& key) const { return m_settings->contains(key); }

void CFGQ_REGISTRY_KEY::remove(const QString& key) {
  cfgq_view_settings::of(*m_settings).mark_changed();
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
    cfgq_view_settings::of(*m_settings).mark_changed();
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

int CFGQ_REGISTRY_KEY::copy(const QString& source, const QString& destination) {
  m_settings->beginGroup(source);
  // Both lists and every value of this level are taken before anything is written, so a
  // destination inside the source (or equal to it) can't change what is visited.
  const QStringList keys = m_settings->childKeys();
  const QStringList groups = m_settings->childGroups();
  QMap<QString, QVariant> buffer;
  for (const QString& key : keys) buffer.insert(key, m_settings->value(key, QVariant()));
  m_settings->endGroup();

  int count = 0;
  m_settings->beginGroup(destination);
  for (const QString& key : keys) {
    // Counted whether or not set_value stores it: the count tells that the source held keys.
    set_value(key, buffer.value(key));
    ++count;
  }
  m_settings->endGroup();

  for (const QString& group : groups) {
    // A hand-edited file can hold a key such as "a//b", listed as a subgroup with an empty name.
    // Entering "<source>/" enters the source again, which would never end.
    if (group.isEmpty()) continue;
    count += copy(source + QLatin1Char('/') + group, destination + QLatin1Char('/') + group);
  }
  return count;
}

void CFGQ_REGISTRY_KEY::clear_registry_key() {
  cfgq_view_settings::of(*m_settings).mark_changed();
  for (const QString& key : m_settings->allKeys()) m_settings->remove(key);
}

void CFGQ_REGISTRY_KEY::clear() {
  cfgq_view_settings::of(*m_settings).mark_changed();
  m_settings->clear();
}
