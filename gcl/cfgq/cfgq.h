// cfgq: the user-settings library of the Korvel design suite.
//
// All settings of one user live in one INI file, korvel2.kreg in the user's profile directory:
//
//   [25.1_pro]                         main key of a suite version and edition
//   Registry_version=27
//   [25.1_pro/General]                 one section per tool below it
//   Show_tips=Yes
//
// A CFGQ_REGISTRY_KEY is a view on that file standing in one group; it reads and writes values
// by name. This is the library's only public header.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <QList>
#include <QString>
#include <QVariant>
#include <Qt>

#include "cfgq_export.h"

class QSettings;

// A position in the range FIRST..LAST of an enumeration E. A position with `past_end` set stands
// one step after `enum_value`; END positions are (LAST, past_end).
template <typename E, E FIRST, E LAST>
struct GEN_ITERATOR {
  E enum_value;
  bool past_end;

  // Position of the iterator on a line where enumerator v sits at 2v.
  constexpr std::int64_t position() const {
    return 2 * static_cast<std::int64_t>(enum_value) + (past_end ? 1 : 0);
  }
};

template <typename E, E F, E L>
constexpr bool operator<(E value, const GEN_ITERATOR<E, F, L>& it) {
  return 2 * static_cast<std::int64_t>(value) < it.position();
}
template <typename E, E F, E L>
constexpr bool operator>=(E value, const GEN_ITERATOR<E, F, L>& it) {
  return !(value < it);
}

// A view on the user's settings file, standing in one group. Each view owns its own QSettings
// object on the file and writes its pending changes when it is destroyed. A view is used by one
// thread at a time; views can't be copied or assigned.
class CFGQ_EXPORT CFGQ_REGISTRY_KEY {
 public:
  // The sections of a main key. NO_MAIN_KEY (the root of the file), NO_SUB_KEY (the main key
  // itself) and LAST_SUB_KEY name no section.
  enum SUB_KEY : std::int32_t {
    NO_MAIN_KEY,
    NO_SUB_KEY,
    GENERAL,
    DIRECTORIES,
    GRAPHICS_EDITOR,
    TEXT_EDITOR,
    RECENT_FILES,
    SETUP,
    TOOLS_MENU,
    CUIQ,
    UNB,
    FLP,
    LFP,
    ACV,
    APE,
    PROJECT_MANAGER,
    MEMORY_EDITOR,
    PCL,
    PJN,
    WED,
    DBU,
    LIST_CONTROLS,
    EDA,
    RPWQ,
    KORVEL_MURMEL,
    SLD,
    TCL,
    ASEQ,
    FMW,
    PROGRAMMER,
    FIF,
    SED,
    ISMCE,
    ASD_BACK_ANNOTATE,
    SETD,
    TOOL_WND,
    RESIZE,
    DCS,
    RTLV,
    RSMQ,
    MSG,
    PPLQ,
    CPS,
    WIZARDS,
    REVISION,
    DPW,
    TAWQ,
    OAW,
    SDE,
    TMW,
    CFWQ,
    OFCQ,
    KGQ,
    KUI,
    ECO,
    ESLC,
    CSETQ,
    SHLPQ,
    TOOLBAR,
    NUI,
    DEPLG,
    CMPM,
    PDPW,
    NUIQU,
    KCOLOR,
    KINST,
    DEEQ,
    PTCGUI,
    LAST_SUB_KEY
  };

  // Outcome of the view's last value operation.
  enum REGISTRY_ERROR_CODE : std::int32_t {
    REGISTRY_NO_ERROR,        // the last operation succeeded
    REGISTRY_VALUE_NOT_FOUND  // the last read asked for a name the current group does not hold
  };

  // One row of the section table: the enumerator's name and the section's group name in the file.
  struct ENUMERATED_SUB_KEY_NAME {
    const char* enum_name;
    const char* sub_key_name;  // empty for NO_MAIN_KEY, NO_SUB_KEY and LAST_SUB_KEY
  };

  using SUB_KEY_ITERATOR = GEN_ITERATOR<SUB_KEY, NO_MAIN_KEY, LAST_SUB_KEY>;
  using REGISTRY_ERROR_CODE_ITERATOR =
      GEN_ITERATOR<REGISTRY_ERROR_CODE, REGISTRY_NO_ERROR, REGISTRY_VALUE_NOT_FOUND>;

  // (NO_MAIN_KEY, false) and (LAST_SUB_KEY, true): a section s is valid when
  // s >= SUB_KEY_BEGIN() && s < SUB_KEY_END().
  static const SUB_KEY_ITERATOR SUB_KEY_BEGIN();
  static const SUB_KEY_ITERATOR SUB_KEY_END();
  // (REGISTRY_NO_ERROR, false) and (REGISTRY_VALUE_NOT_FOUND, true).
  static const REGISTRY_ERROR_CODE_ITERATOR REGISTRY_ERROR_CODE_BEGIN();
  static const REGISTRY_ERROR_CODE_ITERATOR REGISTRY_ERROR_CODE_END();

  // A view on `key` of the main key named by `version` and `suffix` (null: the running version,
  // no suffix). NO_MAIN_KEY stands at the root of the file and ignores version and suffix;
  // NO_SUB_KEY stands at the main key itself; GENERAL stands at "<main key>/General".
  // A section outside NO_MAIN_KEY..LAST_SUB_KEY is an internal error that ends the process.
  CFGQ_REGISTRY_KEY(SUB_KEY key, const char* version, const char* suffix);

  // A view on the group `section` (used as given: any group name, "/" reaching deeper) of the
  // main key named by `version` and `suffix`. A null or empty `section` stands at the main key.
  CFGQ_REGISTRY_KEY(const char* section, const char* version, const char* suffix);

  // A view at `parent`'s current group path, entered as one group, then at `group` below it
  // unless `group` is null or empty. The new view has its own settings object and is independent
  // of `parent` afterwards; `parent` may be destroyed first.
  CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const char* group);
  CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const QString& group);
  // As above; `group` is taken up to its first zero character.
  CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY& parent, const std::string& group);

  // Deletes the settings object, which writes the view's pending changes to the file.
  ~CFGQ_REGISTRY_KEY();

  CFGQ_REGISTRY_KEY(const CFGQ_REGISTRY_KEY&) = delete;
  CFGQ_REGISTRY_KEY& operator=(const CFGQ_REGISTRY_KEY&) = delete;

  // ---- Groups ----------------------------------------------------------------------------

  // Enters `group` below the current group (QSettings::beginGroup).
  void beginGroup(const QString& group);
  // Leaves the most recently entered group (QSettings::endGroup).
  void endGroup();
  // The current group path, levels joined by "/", empty at the root (QSettings::group).
  QString group() const;
  // The path of the settings file in use (QSettings::fileName).
  QString fileName() const;

  // ---- Values ----------------------------------------------------------------------------

  // Reads `value_name` from the current group's own keys (never a subgroup's; the comparison is
  // case-sensitive, and a name with "/" never matches) into *variant_value, sets the last error to
  // REGISTRY_NO_ERROR and returns true. Without such a key: returns false, leaves *variant_value
  // as it was and sets REGISTRY_VALUE_NOT_FOUND. variant_value must not be null (internal error).
  bool get_value(const QString& value_name, QVariant* variant_value);

  // Stores `value` under `value_name`, unless its text form (QVariant::toString) has 10,000,000
  // or more UTF-16 code units: such a value is not stored and the old value stays. Either way the
  // last error becomes REGISTRY_NO_ERROR. A name with a blank draws a debug diagnostic.
  void set_value(const QString& value_name, const QVariant& value);
  // Exactly set_value.
  void setValue(const QString& value_name, const QVariant& value);

  // True when `value_name` exists (get_value) and its text form equals `text` under
  // `sensitivity`. A missing or non-text value is false.
  bool is_equal(const QString& value_name, const QString& text, Qt::CaseSensitivity sensitivity);
  // The value reads "Yes" / "No" in any case.
  bool is_yes(const QString& value_name);
  bool is_no(const QString& value_name);
  // set_value with the text "Yes" / "No".
  void set_yes(const QString& value_name);
  void set_no(const QString& value_name);

  // The outcome of the last get_value or set_value (and of what is built on them).
  REGISTRY_ERROR_CODE get_last_error();

  // Thin forwards to the settings object; they check nothing and leave the last error alone.
  // Names may be paths: "/" reaches into subgroups.
  QVariant value(const QString& key, const QVariant& default_value = QVariant()) const;  // value
  bool contains(const QString& key) const;                                              // contains
  void remove(const QString& key);  // remove: "" removes everything in the current group
  QList<QString> allKeys() const;      // every key at or below the current group, as paths
  QList<QString> childKeys() const;    // the current group's own keys
  QList<QString> childGroups() const;  // the current group's direct subgroups

  // ---- Copy and clear --------------------------------------------------------------------

  // Copies the group `source` with all its subgroups onto `destination` (both relative to the
  // current group), merging: destination keys missing from the source stay, keys in both take
  // the source's value. Every value goes through set_value. Returns the number of keys visited,
  // refused ones included; 0 for a missing source, which leaves the file as it was. Empty groups
  // are never created. The current group is the same afterwards.
  //   copy("24.3_pro", "25.1_pro") on a root view carries a whole main key forward.
  int copy(const QString& source, const QString& destination);

  // Removes every value at or below the current group; nothing outside it changes.
  void clear_registry_key();
  // Removes every value in the whole file, whatever the current group (QSettings::clear).
  void clear();

 protected:
  // One row per SUB_KEY, indexed by its value.
  static const ENUMERATED_SUB_KEY_NAME DEFAULT_SUB_KEYS[LAST_SUB_KEY + 1];

  // Opens the settings file into m_settings; called once, by the constructors.
  void init();
  // Has no effect: the resizing tables always have equal lengths.
  void check_array_sizes();

 private:
  REGISTRY_ERROR_CODE m_last_error;
  std::unique_ptr<QSettings> m_settings;
};

// Carries a user's settings forward from an earlier suite version, and resets the running
// version's settings.
class CFGQ_EXPORT CFGQ_REGISTRY {
 public:
  // Does nothing.
  CFGQ_REGISTRY();

  // Fills the running version's main key once: when absent, with a copy of the first earlier
  // installed version that has settings; when present without a current marker, it is emptied.
  // Writes the marker "Registry_version" = 27 in every case.
  static void migrate_registry_settings();

  // Removes everything under the running version's main key and writes the marker, so that the
  // tools start from their defaults and no later migration brings old settings back.
  static void delete_current_settings();
};

// Sets the environment variable `env_name` persistently: in the user's store, or in the
// machine's store when only that one holds it. With `append`, `env_value` is added to the end of
// the list the variable holds (items between `separator`s; empty means ";"). Returns false, and
// changes nothing, when the chosen store's list already holds `env_value` (ignoring case).
// On true, `scope` is "user" or "system" and, with `update_process`, the running process's
// environment is set too.
CFGQ_EXPORT bool cfgq_setenv(const QString& env_name, const QString& env_value, QString& scope,
                             bool append, QString separator, bool update_process);

// ---- Key catalogue ---------------------------------------------------------------------------
// The names under which the suite's tools store their settings. Every text is part of the file
// format, letter for letter.

CFGQ_EXPORT extern const char* const CFGQ_YES_STR;  // "Yes"
CFGQ_EXPORT extern const char* const CFGQ_NO_STR;   // "No"
CFGQ_EXPORT extern const char* const CFGQ_PJM_SHOW_WELCOME_SCREEN;   // "Show_welcome_screen"
CFGQ_EXPORT extern const char* const CFGQ_PJM_SHOW_WHATSNEW_SCREEN;  // "Show_whatsnew_screen"
