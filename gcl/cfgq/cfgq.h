// cfgq: the user-settings library of the Korvel design suite.
//
// All settings of one user live in one INI file, korvel2.kreg in the user's profile directory:
//
//   [25.1_pro]                         main key of a suite version and edition
//   Registry_version=27
//   General\Show_tips=Yes              section "General" of one tool, value "Show_tips"
//   Change%20Manager%20Window\Show_apply_confirmation_dialog=No
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

  // Deletes the settings object, which writes the view's pending changes to the file, under the
  // file's lock, waiting for another process's lock for a bounded time. A write that fails (a
  // lock held too long, a full disk, a file that can't be written) leaves the file as it was
  // and is reported on the debug channel CFGQ.
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
  // The path of the settings file in use, as it was located (a link keeps its own name).
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
// environment is set too. A store that doesn't take the write (no rights, or a name or value it
// can't hold, such as a NUL) is not an error: the result is still true, the store is as it was,
// and the reason goes to the debug channel "CFGQ" at level 2. Outside Windows an empty value
// removes the variable from the store.
CFGQ_EXPORT bool cfgq_setenv(const QString& env_name, const QString& env_value, QString& scope,
                             bool append, QString separator, bool update_process);

// ---- Key catalogue ---------------------------------------------------------------------------
// The names under which the suite's tools store their settings, grouped by the module code of
// the tool that owns them, and a few value texts (CFGQ_YES_STR is "Yes", CFGQ_NO_STR is "No";
// is_yes and is_no compare with them). Every text is part of the file format, letter for letter.
// A constant names no section: a tool uses it in the section of its own module, e.g.
//   CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::OFCQ, nullptr, nullptr).set_yes(CFGQ_OFCQ_SHOW_MDI_TABS)
//   leaves "Show_MDI_tabs=Yes" under [25.1_pro/Orlesk_Foundation_Class].
// Equal texts under different module codes ("Tooltip_enable") are one value within one section.

// ACVQ
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_AUTO_LAYER_DISABLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_DISABLE_FM_SHADING_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_ENABLE_LOAD_CLOCK_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_LAYER_SETTINGS_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_SHOW_DETAILED_TOOLTIPS_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_SKIP_GLOBAL_FANIN_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_ACVQ_TOOLTIP_ENABLE_STR;

// APEQ
CFGQ_EXPORT extern const char* const CFGQ_APEQ_AUTO_LOCATE_ACV_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_ENABLE_ROLLOVER_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_NO_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_TOOLTIP_ENABLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_APEQ_YES_STR;

// ASEQ
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_ACTIVATE_NODE_FILTER;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_ACTIVATE_SYSTEM_TAB;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_DROP_DOWN_LISTS;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_ECHO_TCL_COMMANDS;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_AFTER_ENTER;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_DIRECTION;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_DOWN;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_LEFT;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_RIGHT;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_MOVE_UP;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_SHOW_ASSIGNED_PIN_NAMES;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_SHOW_ASSIGNED_PIN_NUMBERS;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_SHOW_PAD_NUMBERS;
CFGQ_EXPORT extern const char* const CFGQ_ASEQ_SINGLE_CLICK_EDIT;

// BMWQ
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_READ_FROM_USER_SPECIFIED_PROJECT;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_READ_SETTINGS_FROM_ANOTHER_PROJECT;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_SHOW_PROJECT_INTRO_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_SHOW_TIMING_INTRO_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_SHOW_XACTO_EXPORT_MODULE_INTRO_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_USER_SPECIFIED_PROJECT_NAME;
CFGQ_EXPORT extern const char* const CFGQ_BMWQ_USER_SPECIFIED_REVISION_NAME;

// CFWQ
CFGQ_EXPORT extern const char* const CFGQ_CFWQ_SHOW_MODULE_SETTINGS_STR;
CFGQ_EXPORT extern const char* const CFGQ_CFWQ_SHOW_MODULE_START_STR;
CFGQ_EXPORT extern const char* const CFGQ_CFWQ_SHOW_PROCESS_WND_STR;
CFGQ_EXPORT extern const char* const CFGQ_CFWQ_SHOW_TIME_STR;

// DEEQU
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_AUTO_EXPAND_TO_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_AUTO_ZOOM_TO_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_FILTER_PARTITION;
CFGQ_EXPORT extern const char* const CFGQ_DEEQU_FILTER_REGISTER;

// DEEQ
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_CELL_ATTR_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_COLOR_THEME;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_ENABLE_ROLLOVER;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_FILTER_ACROSS_HIERARCHY;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_FILTER_REGISTER;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_FLAT_NET_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_LAST_ACTIVE_WINDOW;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_LAST_OPEN_TABS;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_LOCATE_INTO_NEW_TAB;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_MAINTAIN_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_NODE_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_NODE_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_PIN_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_PIN_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_PORT_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_PORT_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_RIP_ATTR_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_RIP_ATTR_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_TAB_ARRANGEMENT;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_TIMING_ATTR_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_DEEQ_VCONN_ATTR_SHOW;

// DPWQ
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_COLOR_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_FILE_PATH_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_FLATTEN_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_LAST_REV_PATH_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_PARTITION_NAME_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_POST_FIT_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_POST_SYNTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_EXPORT_ROUTING_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_FENMARK_REGION_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_FITTER_PRESERVATION_LEVEL_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_IMPORT_FILE_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_DESIGN_PARTITION_ASGNS_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_DESTROY_EXISTING_FENMARK_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_DISABLE_AUTO_GLOBAL_PROMOTION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_EXCLUDED_PARTITIONS_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_FENMARK_ASGNS_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_GENERATE_MAKEFILES_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_GLOBAL_PROMOTION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_OUTPUT_DIRECTORY_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_PIN_LOCATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_PROJECT_CREATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_PROJECT_ROOT_DIRECTORY_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_TIMING_ASGNS_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_UNRELATED_FENMARK_ASGN_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_INPUT_PIN_DELAY_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_INPUT_PIN_TIMING_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_OUTPUT_PIN_DELAY_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_OUTPUT_PIN_TIMING_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_PIN_CREATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_KPM_VIRTUAL_PIN_LOCATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_NETLIST_STATUS_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_DPWQ_NETLIST_TYPE_COLUMN_VISIBLE_STR;

// ECO
CFGQ_EXPORT extern const char* const CFGQ_ECO_SHOW_APPLY_CONFIRM_DLG;
CFGQ_EXPORT extern const char* const CFGQ_ECO_SHOW_DELETE_CONFIRM_DLG;
CFGQ_EXPORT extern const char* const CFGQ_ECO_SHOW_RESTORE_CONFIRM_DLG;

// FIF
CFGQ_EXPORT extern const char* const CFGQ_FIF_FIND_FILE_TYPE_INDEX;
CFGQ_EXPORT extern const char* const CFGQ_FIF_FIND_FILE_TYPE_STR;

// FMWQ
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_DONT_SHOW_AGAIN_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_ENABLED_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_HEIGHT_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_MEMBERS_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_ORIGIN_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_RESERVED_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_SIZE_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_SOFT_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_STATE_COLUMN_VISIBLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_FMWQ_WIDTH_COLUMN_VISIBLE_STR;

// GEDQ
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_DBLCLK_SHOW_PROPSHEET_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_GRIDLINE_SPACING_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_INCLUDE_BORDER_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_NO_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_PARTIAL_LINE_SELECTION_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_BLOCKIO_ABLOCKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_CONNECTION_RECT_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_GRIDLINES_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_IOSTANDARD_ABLOCKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_LOCATION_ABLOCKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_MAPPER_ABLOCKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_PAGEBREAKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_SHOW_PARAM_ABLOCKS_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_USE_RUBBERBANDING_STR;
CFGQ_EXPORT extern const char* const CFGQ_GEDQ_YES_STR;

// ICTQ
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_CURRENT_MRN;
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_LAST_MAJOR_INFO_MSG_VIEWED;
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_LAST_MINOR_INFO_MSG_VIEWED;
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_LAST_MRN_VIEWED;
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_NR_MSG_URL;
CFGQ_EXPORT extern const char* const CFGQ_ICTQ_PROJECT_DIRECTORY;

// KUI
CFGQ_EXPORT extern const char* const CFGQ_KUI_CONFIRM_BEFORE_SAVE;
CFGQ_EXPORT extern const char* const CFGQ_KUI_CONFIRM_BEFORE_STARTING_TASK;
CFGQ_EXPORT extern const char* const CFGQ_KUI_CONFIRM_BEFORE_STOP_TASK;
CFGQ_EXPORT extern const char* const CFGQ_KUI_CURRENT_PROJECT;
CFGQ_EXPORT extern const char* const CFGQ_KUI_DOCK_WIDGET;
CFGQ_EXPORT extern const char* const CFGQ_KUI_ETE;
CFGQ_EXPORT extern const char* const CFGQ_KUI_ETE_CLO;
CFGQ_EXPORT extern const char* const CFGQ_KUI_LOCATION_SELECTION_MODEL;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SEPARATE_PJNQ_DOCK_WIDGETS;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SHOW_MULTI_INSTANCE_DLG;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SHOW_PROJECT_OPEN_SECURITY_PROMPT;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SINGLETON_DETACH_STATE;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SYNCH_TO_CHIP_PLANNER;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SYNCH_TO_PIN_PLANNER;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SYNCH_TO_TECH_MAP_VIEWER_POSTFIT;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SYNCH_TO_TECH_MAP_VIEWER_POSTMAP;
CFGQ_EXPORT extern const char* const CFGQ_KUI_SYNCH_WITH_ANIMATION;
CFGQ_EXPORT extern const char* const CFGQ_KUI_USE_ETE;

// LFPQ
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_EDGE_ANIMATION_SPEED_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_EDGE_ENABLE_ANIMATIONS_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_EDGE_FAILING_SLACK_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_ENABLE_DIRECTIONAL_BUNDLES_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_MAX_TARGET_PARTITION_SIZE_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_MIN_TARGET_PARTITION_SIZE_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_TOOLTIP_ENABLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_LFPQ_ZOOM_FIT_ON_HIERARCHY_DISPLAY_STR;

// LIST_CTR: list-control column layouts
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_COMPILER_SETTINGS_CHIPS;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_COMPILER_SETTINGS_GENERAL;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_OPTIONS_EDA_TOOL_PATH_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_OPTIONS_USER_LIBRARY_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_EDA_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_FILES;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_LIBRARY;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_GENERAL_VHDL_INPUT;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_TIMING_CLOCK;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_FILES;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_GLOBAL_LIBRARY;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_PROJECT_WIZARD_LIBRARY;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETD_ADD_FILES_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETD_MULTIPLE_SIMULATION_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETD_POWER_INPUT_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETD_TESTBENCH_FILE_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETD_TESTBENCH_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SETTINGS_DIALOG_DEVICE_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SIGNAL_PROBE_SETTINGS_PINS;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_SIMULATOR_SETTINGS_GENERAL;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_TIMING_WIZARD_CLOCK_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_TMW_NEW_FLOW_DLG_LIST;
CFGQ_EXPORT extern const char* const CFGQ_LIST_CTR_TMW_TCL_SCRIPTS_DLG_LIST;

// MEDQ
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_ADDRESS_RADIX;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_ASK_TO_UPDATE_FROM_SIM;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_CONFIRM_BEFORE_REFRESH;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_DEFAULT_NUMBER_OF_WORDS;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_DEFAULT_WORD_SIZE;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_MEMORY_RADIX;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_NUMBER_OF_COLUMNS;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_SHOW_ASCII_COLUMN;
CFGQ_EXPORT extern const char* const CFGQ_MEDQ_SHOW_DELIMITERS;

// MSWQ
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_COLOR_CODING_STR;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_FILE_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_FLAG_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_FREEZE_ID_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_HIDE_SUPPRESSION_RULE_NOTIFICATION;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_ID_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_LINE_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_PARTITION_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_SEARCH_MODE;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_SHOW_ALL_SUBMESSAGES_STR;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_SHOW_FILTER_BAR;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_SHOW_TAB_MSG_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_SOURCE_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_TIME_COL;
CFGQ_EXPORT extern const char* const CFGQ_MSWQ_WRAP_MSG_TEXT;

// NUIQU
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTOHIDE_INST_WITHOUT_LOGIC;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTOHIDE_LEAF_INST_PINS;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTOHIDE_PINS;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTO_EXPAND_TO_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTO_RESTORE_LAST_CLOSED_VIEW;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_AUTO_ZOOM_TO_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_FILTER_PARTITION;
CFGQ_EXPORT extern const char* const CFGQ_NUIQU_FILTER_REGISTER;

// NUIQ
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_CELL_ATTR_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_COLOR_FOLLOW_SYSTEM_THEME;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_COLOR_THEME;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_ENABLE_ROLLOVER;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_FILTER_ACROSS_HIERARCHY;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_FILTER_REGISTER;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_FLAT_NET_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_LOCATE_INTO_NEW_TAB;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_MAINTAIN_SELECTION;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_NODE_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_NODE_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_PIN_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_PIN_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_PORT_NAME_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_PORT_NAME_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_RIP_ATTR_MAX_LENGTH;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_RIP_ATTR_SHOW_FULL;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_TIMING_ATTR_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_NUIQ_VCONN_ATTR_SHOW;

// OFCQ
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_AUTO_PLUGIN_SETTINGS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_CASCADE_MRU_MENUS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_CURRENT_DIRECTORY;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_DEFAULT_DIRECTORY;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_DEFAULT_LAYOUT_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_DETACH_ON_OPENING;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_KORVEL_II_LAYOUT_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_KORVEL_II_MENU_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_LAST_PROJECT_OPEN;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_LIMIT_TO_SINGLE_INSTANCE;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_MENU_LEFT_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_MENU_OFF_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_MENU_RIGHT_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_MRU_FILES;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_MRU_PROJECTS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_NUMBER_MRU_LISTS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_PELLUM_LAYOUT_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_PELLUM_MENU_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_PROMPT_TO_ADD_FILES_TO_PROJECT;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_RELOAD_LAST_PROJECT_WORKSPACE;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_RELOAD_LAST_WORKSPACE;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_RELOAD_LAST_WORKSPACE_FILES;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_RMENU_DELAY_INTERVAL;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SAVE_BEFORE_LAUNCH_TASK;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SCREEN_HEIGHT;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SCREEN_WIDTH;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SHOW_FULLPATH_IN_WINDOW_TITLE;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SHOW_MDI_TABS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_SHOW_RADIAL_MENU;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_TOOLBAR_LARGE_ICONS;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_TOOLTIP_ENABLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_OFCQ_USER_LIBRARIES;

// PGMTQ
CFGQ_EXPORT extern const char* const CFGQ_PGMTQ_OJI_PID;
CFGQ_EXPORT extern const char* const CFGQ_PGMTQ_AUTO_SIGNED_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMTQ_DEFINED_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMTQ_FLASH_VECTOR_CACHE_STR;

// PGMWQ
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_OJI_PID;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_AUTO_CHECK_PROGRAM_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_BACKGROUND_PROGRAMMING_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_BITSTREAM_ENCRYPTION_LEGAL_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_CHECKSUM_WITHOUT_USERCODE_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_CONFIGURE_VOLATILE_SECURITY_KEY_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_FLASH_FULL_ERASE;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_INITIATE_CONFIGURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_MSG_BOX_WHEN_DONE_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_PFL_USE_CRC_CHECK_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_TCK_FREQ_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_USE_BITSTREAM_COMPRESSION_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_USE_CONFIG_IO_INSTRUCTION_STR;
CFGQ_EXPORT extern const char* const CFGQ_PGMWQ_VIEW_INT;

// PJM
CFGQ_EXPORT extern const char* const CFGQ_PJM_AUTO_CLOSE_STATW_AFTER_TASK_END;
CFGQ_EXPORT extern const char* const CFGQ_PJM_AUTO_OPEN_STATW_BEFORE_TASK;
CFGQ_EXPORT extern const char* const CFGQ_PJM_AUTO_OPEN_TOOL_WINDOW_BEFORE_TASK;
CFGQ_EXPORT extern const char* const CFGQ_PJM_CLOSE_WELCOME_SCREEN_AFTER_PROJECT_LOAD;
CFGQ_EXPORT extern const char* const CFGQ_PJM_CORELET_DIRECTORY;
CFGQ_EXPORT extern const char* const CFGQ_PJM_DISPLAY_BITMAPS_IN_MENUS;
CFGQ_EXPORT extern const char* const CFGQ_PJM_SHOW_WELCOME_SCREEN;
CFGQ_EXPORT extern const char* const CFGQ_PJM_SHOW_WHATSNEW_SCREEN;

// PPLQ
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_ERROR_CHECK_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_IOBANK_COLOR_INTENSITY_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_MAKE_PAD_ASSIGNMENT_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_COLOR_CODING_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_FITTER_USAGE_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_NODE_NAMES_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_PIN_TYPES_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_TOP_LEVEL_GROUP_ONLY_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_SHOW_VIEW_MODE_ICON_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_PPLQ_TOOLTIP_ENABLE_STR;

// REDQ
CFGQ_EXPORT extern const char* const CFGQ_REDQ_JTAG_DEVICE_STR;
CFGQ_EXPORT extern const char* const CFGQ_REDQ_JTAG_FILE_STR;
CFGQ_EXPORT extern const char* const CFGQ_REDQ_JTAG_HARDWARE_STR;

// RSMQ
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_APPEND_STR;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_CURRENT_STR;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_DEFAULT_STR;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_ENABLE_AUTO_HIGHLIGHT_PREVIOUS_NEXT_NODE;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_EXPAND_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_EXPAND_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_FILTER_BETWEEN_NODES_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_FILTER_BETWEEN_NODES_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_FIND_DISPLAY_STR;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_MAX_ZOOM_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_MIN_ZOOM_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_SHOW_FULL_CONNECTION;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_SHOW_NODE_NAME;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_SHOW_ROLLOVER;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_TOOLTIP_DELAY_UNTIL_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_TOOLTIP_DISPLAY_DURATION;
CFGQ_EXPORT extern const char* const CFGQ_RSMQ_TOOLTIP_ENABLE_STR;

// RTLVQ
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_APPEND_STR;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_AUTO_HIDE_TEXT_STR;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_BOX_SELECTION_ON_NET;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_CONSTANT_SIGNAL_FORMAT;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_CURRENT_PAGE_SELECT_NET;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_CURRENT_STR;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_DEFAULT_STR;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_ENABLE_AUTO_EXPAND;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_ENABLE_TMV_POST_MAP;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_EXPAND_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_EXPAND_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_EXPAND_REGISTER;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FILTER_ACROSS_HIERARCHY;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FILTER_IN_NEW_VIEW;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FILTER_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FILTER_LEVEL_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FILTER_REGISTER;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_FIND_DISPLAY_STR;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_MAINTAIN_ZOOM_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_MAX_ZOOM_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_MIN_ZOOM_LEVEL;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_PARTITION_NODE;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_PARTITION_PORT;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_FULL_CONNECTION;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_GLOBAL_NET;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_INST_BOX;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_NET_NAME;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_NODE_NAME;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_SHOW_ROLLOVER;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_TOOLTIP_DELAY_UNTIL_SHOW;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_TOOLTIP_DISPLAY_DURATION;
CFGQ_EXPORT extern const char* const CFGQ_RTLVQ_TOOLTIP_ENABLE_STR;

// SEDQ
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_ALIGN_LEFT_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_AUTO_RECOMPILE_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_COLUMNPP_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_DISPLAY_MODE_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_FIT_DATA_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_INTER_LINE_SPACING_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_LINK_GROUPS_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_LINK_MNEMONICS_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_LINK_ORDER_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_LINK_PROPERTIES_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_MSB_FIRST_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_NAME_WIDTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_NODE_HIERARCHY_DEPTH;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_PAGES_TALL_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_PAGES_WIDE_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_ROWPP_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_ALIAS_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_DUPLICATE_BUTTONS_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_HORZ_GRID_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_LEADING_ZEROES_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_SYNC_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_TAP_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_TIME_BARS_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_TYPE_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_SHOW_VERT_GRID_STR;
CFGQ_EXPORT extern const char* const CFGQ_SEDQ_TEMPLATE_DIALOG_DEFAULT_SELECTION;

// Device lists
CFGQ_EXPORT extern const char* const CFGQ_SHOW_ADVANCED_DEVICES;
CFGQ_EXPORT extern const char* const CFGQ_SHOW_AVAILABLE_DEVICE_PACKAGE;
CFGQ_EXPORT extern const char* const CFGQ_SHOW_AVAILABLE_DEVICE_PIN_COUNT;
CFGQ_EXPORT extern const char* const CFGQ_SHOW_AVAILABLE_DEVICE_SPEED_GRADE;
CFGQ_EXPORT extern const char* const CFGQ_SHOW_FIXCAST_COMPATIBLE_ONLY;

// TEDQ
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_AUTO_DETACH;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_AUTO_INDENT;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_ENABLE_CALLTIP;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_ENABLE_CLASSIC_FIND_DIALOG;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_ENABLE_SHOW_ERROR_MARK;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_ENABLE_SHOW_HIGHLIGHT_INSTANCES;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_INDENT_GUIDE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_INSERT_SPACE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_PRINT_COLOR_MODE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SAVE_BACKUP_FILE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_ALL;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_DELIMITERS;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_LIST;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_LOCAL_KEYWORDS;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_AUTOCOMPLETE_SYNTAX_KEYWORDS;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_LINE_NUMBER;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_NEW_LINE_MARKER;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SHOW_WHITE_SPACE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_SPLIT_VERTICAL_ORIENTATION;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_TAB_SIZE;
CFGQ_EXPORT extern const char* const CFGQ_TEDQ_USER_TEMPLATE_LOCATION;

// TFWQ
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_DELAY_DELAY_WIDTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_DELAY_SOURCE_WIDTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_DELAY_TARGET_WIDTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_OPEN_IN_TAB_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_REG_VALUE_WIDTH_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_SHOW_TIME_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_WND_HEIGHT_STR;
CFGQ_EXPORT extern const char* const CFGQ_TFWQ_WND_WIDTH_STR;

// WEDQ
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_ABSOLUTE_TIME_BARS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_ANALOG_WAVEFORM_DISPLAY_SCALE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_ANALOG_WAVEFORM_DISPLAY_STYLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_CENTER_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_COMMENTS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_EXTENSION_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_GRID_DUTY_CYCLE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_GRID_PERIOD_UNITS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_GRID_PERIOD_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_GRID_PHASE_UNITS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DEFAULT_GRID_PHASE_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_DONT_CARE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_EXPAND_GROUPS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_EXTEND_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_EXTEND_USING_DEFAULT_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_EXTEND_USING_END_TIME_DLG_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_FIT_IN_WINDOW_ON_OPEN_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_FORCING_HIGH_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_FORCING_LOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_FORCING_UNKNOWN_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_GRID_LINES_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_GROUP_DIALOG_RADIX_USED_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_GROW_END_TIME_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_HIGH_IMPEDANCE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_INTER_LINE_SPACING_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_LAST_CLK_PATTERN_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_LAST_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_LEFT_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_MICROSECONDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_MILLISECONDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_MSB_FIRST_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NAMES_EVERY_PAGE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NAMES_PERCENTAGE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NANOSECONDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NEW_FILE_END_TIME_UNITS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NEW_FILE_END_TIME_VALUE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NODE_NAME_COLUMN_WIDTH;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NODE_NAME_JUSTIFY_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_NODE_VALUE_JUSTIFY_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_PICOSECONDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_PRINT_ROW_HEIGHT_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_PROMPT_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_RIGHT_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SAVE_WAVEFORM_IN_CVWF_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SECONDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SHOW_COMMENTS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SHOW_HORZ_GRID_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SHOW_TIME_BARS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SHOW_TIME_FIELDS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SHOW_VERT_GRID_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SNAP_GRID_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_SNAP_TRANS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_TIME_BARS_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_TOOLTIP_DELAY_UNTIL_SHOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_TOOLTIP_DISPLAY_DURATION_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_TRUNCATE_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_UNINITIALIZED_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_WEAK_HIGH_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_WEAK_LOW_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_WEAK_UNKNOWN_STR;
CFGQ_EXPORT extern const char* const CFGQ_WEDQ_WIDTH_STR;

// Other modules, and texts without a module code
CFGQ_EXPORT extern const char* const CFGQ_AUTO_OPEN_DASHBOARD_BEFORE_TASK;
CFGQ_EXPORT extern const char* const CFGQ_CFGDQ_OJI_STR;
CFGQ_EXPORT extern const char* const CFGQ_CONWQ_COMMAND_HISTORY;
CFGQ_EXPORT extern const char* const CFGQ_EDA_ENABLE_CROSS_PROBING;
CFGQ_EXPORT extern const char* const CFGQ_ELA_COMPILE_BEFORE_TRESCAN;
CFGQ_EXPORT extern const char* const CFGQ_FCTGQ_SHOW_INTRO_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_FCTGQ_SHOW_OPTIMIZATION_INTRO_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_FIDQ_OJI_PID;
CFGQ_EXPORT extern const char* const CFGQ_GTFQ_OPEN_GENERATED_FILE_STR;
CFGQ_EXPORT extern const char* const CFGQ_HLP_WHATS_NEW_LAST_DISPLAYED_VERSION;
CFGQ_EXPORT extern const char* const CFGQ_HLP_WINDOW_COORDINATES;
CFGQ_EXPORT extern const char* const CFGQ_IO_BANK_REG_KEY_PREFIX;
CFGQ_EXPORT extern const char* const CFGQ_IP_CATALOG_FILTER_BY_DESCRIPTION;
CFGQ_EXPORT extern const char* const CFGQ_IP_CATALOG_SHOW_ALL_IP;
CFGQ_EXPORT extern const char* const CFGQ_KISQ_SHOW_TIME_STR;
CFGQ_EXPORT extern const char* const CFGQ_MDB_SHOW_UNARCHIVE_SECURITY_PROMPT;
CFGQ_EXPORT extern const char* const CFGQ_MWPIM_HDL;
CFGQ_EXPORT extern const char* const CFGQ_NA_STR;
CFGQ_EXPORT extern const char* const CFGQ_NO_STR;
CFGQ_EXPORT extern const char* const CFGQ_PAGE_SETUP_MARGINS;
CFGQ_EXPORT extern const char* const CFGQ_PSETQ_DESIGN_TEMPLATE_DOWNLOAD_PATH;
CFGQ_EXPORT extern const char* const CFGQ_PSETQ_USE_PROJECT_RELATIVE_PATH;
CFGQ_EXPORT extern const char* const CFGQ_PTWQ_SHOW_TIME_STR;
CFGQ_EXPORT extern const char* const CFGQ_RPWQ_DA_WAIVER_DLG_OWNER_NAME;
CFGQ_EXPORT extern const char* const CFGQ_RPWQ_DISABLE_DA_WAIVER_DLG_MSG;
CFGQ_EXPORT extern const char* const CFGQ_SETDQ_ALWAYS_ACCEPT_REC;
CFGQ_EXPORT extern const char* const CFGQ_SETDQ_LAST_OPENED_PAGE;
CFGQ_EXPORT extern const char* const CFGQ_SFWQ_SHOW_TIME_STR;
CFGQ_EXPORT extern const char* const CFGQ_SLDQ_PRINT_COLUMN_PP;
CFGQ_EXPORT extern const char* const CFGQ_SLDQ_PRINT_ROW_PP;
CFGQ_EXPORT extern const char* const CFGQ_TMWQ_EXPANDED_NODES;
CFGQ_EXPORT extern const char* const CFGQ_TMWQ_FILE;
CFGQ_EXPORT extern const char* const CFGQ_WIZMAN_AUTO_ADD_KIP;
CFGQ_EXPORT extern const char* const CFGQ_YES_STR;

// Numbered key names: entry i holds the name ending in i + 1 ("Tcl_1" .. "Tcl_10").
// CFGQ_CFWQ_SHOW_PROCESS_WND_STR ("CFW_show_process_window_%d") takes a window number, and
// CFGQ_IO_BANK_REG_KEY_PREFIX ("IO_BANKS_") a caller's suffix.
CFGQ_EXPORT extern const char* CFGQ_OFCQ_RADIAL_MENU_ID[8];
CFGQ_EXPORT extern const char* CFGQ_PJM_TCL[10];
CFGQ_EXPORT extern const char* CFGQ_FIF_FIND_TARGET[5];
CFGQ_EXPORT extern const char* CFGQ_FIF_FIND_LOCATION[5];
CFGQ_EXPORT extern const char* CFGQ_RECENTLY_SELECTED_DEVICES[3];
CFGQ_EXPORT extern const char* CFGQ_RECENTLY_SELECTED_TOP_LEVEL[5];
CFGQ_EXPORT extern const char* CFGQ_SHLPQ_KEYWORD_ID[15];
// Resizable dialogs: entry i of the three arrays is one dialog's resource identifier and the
// keys of its stored width and height. Entry 0 holds the count 23 and entry 23 holds 0, both
// with empty texts; the dialogs are entries 1..22.
CFGQ_EXPORT extern const char* CFGQ_OFCQ_RESIZING_CX[24];
CFGQ_EXPORT extern const char* CFGQ_OFCQ_RESIZING_CY[24];
CFGQ_EXPORT extern const std::uint32_t CFGQ_OFCQ_RESIZING_ID[24];
