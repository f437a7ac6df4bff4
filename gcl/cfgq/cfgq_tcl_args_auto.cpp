// The Tcl package gui_settings as tables: commands, argument definitions, name tables with
// abbreviations, lookups, argument processors, and the package's registration.
#include "cfgq_tcl_args_auto.h"

#include <array>
#include <cstddef>

#include "cfgq_tcl.h"
#include "gen.h"
#include "msg.h"
#include "qtl.h"

namespace {

constexpr const char* module_name = "CFGQ";
// Named in internal-error reports; written out so that the text does not depend on the build.
constexpr const char* this_file = "gcl/cfgq/cfgq_tcl_args_auto.cpp";

constexpr const char* package_namespace = "::korvel::gui_settings";
constexpr const char* package_version = "1.0";
constexpr const char* package_short_name = "gui_settings";
constexpr const char* static_package_prefix = "Gui_settings";
constexpr const char* unregister_module = "gcl_cfgq";
constexpr const char* entry_point_stem = "cfgq_gui_settings";
constexpr std::uint32_t new_table_buckets = 61;

enum command_slot : std::size_t {
  get_value_slot,
  create_registry_slot,
  read_registry_slot,
  get_all_keys_slot,
  clear_registry_slot,
  command_count
};

ATCL_CALLBACK command_table[] = {
    {cfgq_gui_settings_get_value_cmd, "gui_settings::get_value", nullptr},
    {cfgq_create_registry_cmd, "cfgq_create_registry", nullptr},
    {cfgq_read_registry_cmd, "cfgq_read_registry", nullptr},
    {cfgq_get_all_keys_cmd, "cfgq_get_all_keys", nullptr},
    {cfgq_clear_registry_cmd, "cfgq_clear_registry", nullptr},
    {nullptr, nullptr, nullptr},
};

// ---- Argument definitions --------------------------------------------------------------------

constexpr ATCL_ARG_DEFINITION get_value_arguments[] = {
    {CFGQ_AUTO_ARGUMENT_KEY, 1, 1, 1, nullptr},
    {0, 0, 0, 0, nullptr},
};
constexpr ATCL_ARG_DEFINITION create_registry_arguments[] = {
    {CFGQ_AUTO_ARGUMENT_KEY, 1, 0, 0, nullptr},
    {CFGQ_AUTO_ARGUMENT_VALUE, 1, 0, 0, nullptr},
    {CFGQ_AUTO_ARGUMENT_TYPE, 1, 1, 0, nullptr},
    {0, 0, 0, 0, nullptr},
};
constexpr ATCL_ARG_DEFINITION read_registry_arguments[] = {
    {CFGQ_AUTO_ARGUMENT_KEY, 1, 0, 0, nullptr},
    {CFGQ_AUTO_ARGUMENT_TYPE, 1, 1, 0, nullptr},
    {0, 0, 0, 0, nullptr},
};
constexpr ATCL_ARG_DEFINITION get_all_keys_arguments[] = {
    {CFGQ_AUTO_ARGUMENT_TYPE, 1, 1, 0, nullptr},
    {0, 0, 0, 0, nullptr},
};
constexpr ATCL_ARG_DEFINITION clear_registry_arguments[] = {
    {CFGQ_AUTO_ARGUMENT_TYPE, 1, 1, 0, nullptr},
    {0, 0, 0, 0, nullptr},
};

// The Tcl command library speaks in plain 32-bit identifiers.
const char* atcl_id_to_name(ATCL_ARGUMENT_ID id) {
  return cfgq_auto_argument_name(static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(id));
}
template <CFGQ_AUTO_ARGUMENT_ENUM (*lookup)(const char*)>
ATCL_ARGUMENT_ID atcl_name_to_id(const char* name) {
  return lookup(name);
}

constexpr ATCL_CMD_DEFINITION command_definitions[command_count] = {
    {package_short_name, "gui_settings::get_value", atcl_id_to_name,
     atcl_name_to_id<cfgq_gui_settings_get_value_name_to_id>, nullptr, nullptr,
     get_value_arguments, nullptr, nullptr},
    {package_short_name, "cfgq_create_registry", atcl_id_to_name,
     atcl_name_to_id<cfgq_create_registry_name_to_id>, nullptr, nullptr,
     create_registry_arguments, nullptr, nullptr},
    {package_short_name, "cfgq_read_registry", atcl_id_to_name,
     atcl_name_to_id<cfgq_read_registry_name_to_id>, nullptr, nullptr, read_registry_arguments,
     nullptr, nullptr},
    {package_short_name, "cfgq_get_all_keys", atcl_id_to_name,
     atcl_name_to_id<cfgq_get_all_keys_name_to_id>, nullptr, nullptr, get_all_keys_arguments,
     nullptr, nullptr},
    {package_short_name, "cfgq_clear_registry", atcl_id_to_name,
     atcl_name_to_id<cfgq_clear_registry_name_to_id>, nullptr, nullptr,
     clear_registry_arguments, nullptr, nullptr},
};

// ---- Accepted names and abbreviations --------------------------------------------------------

struct abbreviation {
  const char* name;
  CFGQ_AUTO_ARGUMENT_ENUM id;
};

constexpr abbreviation help_abbreviations[] = {
    {"he", CFGQ_AUTO_ARGUMENT_HELP},           {"hel", CFGQ_AUTO_ARGUMENT_HELP},
    {"l", CFGQ_AUTO_ARGUMENT_LONG_HELP},       {"lo", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"lon", CFGQ_AUTO_ARGUMENT_LONG_HELP},     {"long", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_", CFGQ_AUTO_ARGUMENT_LONG_HELP},   {"long_h", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_he", CFGQ_AUTO_ARGUMENT_LONG_HELP}, {"long_hel", CFGQ_AUTO_ARGUMENT_LONG_HELP},
};
constexpr abbreviation read_registry_abbreviations[] = {
    {"he", CFGQ_AUTO_ARGUMENT_HELP},           {"hel", CFGQ_AUTO_ARGUMENT_HELP},
    {"k", CFGQ_AUTO_ARGUMENT_KEY},             {"ke", CFGQ_AUTO_ARGUMENT_KEY},
    {"l", CFGQ_AUTO_ARGUMENT_LONG_HELP},       {"lo", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"lon", CFGQ_AUTO_ARGUMENT_LONG_HELP},     {"long", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_", CFGQ_AUTO_ARGUMENT_LONG_HELP},   {"long_h", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_he", CFGQ_AUTO_ARGUMENT_LONG_HELP}, {"long_hel", CFGQ_AUTO_ARGUMENT_LONG_HELP},
};
constexpr abbreviation create_registry_abbreviations[] = {
    {"he", CFGQ_AUTO_ARGUMENT_HELP},           {"hel", CFGQ_AUTO_ARGUMENT_HELP},
    {"k", CFGQ_AUTO_ARGUMENT_KEY},             {"ke", CFGQ_AUTO_ARGUMENT_KEY},
    {"l", CFGQ_AUTO_ARGUMENT_LONG_HELP},       {"lo", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"lon", CFGQ_AUTO_ARGUMENT_LONG_HELP},     {"long", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_", CFGQ_AUTO_ARGUMENT_LONG_HELP},   {"long_h", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"long_he", CFGQ_AUTO_ARGUMENT_LONG_HELP}, {"long_hel", CFGQ_AUTO_ARGUMENT_LONG_HELP},
    {"v", CFGQ_AUTO_ARGUMENT_VALUE},           {"va", CFGQ_AUTO_ARGUMENT_VALUE},
    {"val", CFGQ_AUTO_ARGUMENT_VALUE},         {"valu", CFGQ_AUTO_ARGUMENT_VALUE},
};

// What each command accepts: exact names (identifiers), abbreviations and the size its
// abbreviation table is reserved for. Indexed by command slot.
struct command_names {
  std::array<bool, 8> accepts_exactly;  // indexed by identifier
  const abbreviation* abbreviations;
  std::size_t abbreviation_count;
  std::uint32_t reserved_for;
};

constexpr std::array<bool, 8> help_only = {false, true, true, true, false, false, false, false};
constexpr std::array<bool, 8> help_and_key = {false, true, true, true, true, false, false, false};
constexpr std::array<bool, 8> help_key_and_value = {false, true, true, true,
                                                    true,  false, true, false};

constexpr command_names names_of[command_count] = {
    {help_only, help_abbreviations, std::size(help_abbreviations), 20},
    {help_key_and_value, create_registry_abbreviations, std::size(create_registry_abbreviations),
     32},
    {help_and_key, read_registry_abbreviations, std::size(read_registry_abbreviations), 24},
    {help_only, help_abbreviations, std::size(help_abbreviations), 20},
    {help_only, help_abbreviations, std::size(help_abbreviations), 20},
};

// ---- Tables built on first use ---------------------------------------------------------------
// Function-local statics: built once even when two threads arrive together, built again at the
// next use when building throws, released at unload.

const CFGQ_NAME_TABLE& full_name_table() {
  static const std::unique_ptr<const CFGQ_NAME_TABLE> table = [] {
    auto built = std::make_unique<CFGQ_NAME_TABLE>();
    built->reserve(0);
    for (std::int32_t id = CFGQ_AUTO_ARGUMENT_H; id <= CFGQ_AUTO_ARGUMENT_VALUE; ++id) {
      built->insert(CFGQ_AUTO_ARGUMENT_NAMES[id], id);
    }
    return built;
  }();
  return *table;
}

std::unique_ptr<const CFGQ_NAME_TABLE> build_abbreviation_table(const command_names& names) {
  auto built = std::make_unique<CFGQ_NAME_TABLE>();
  built->reserve(names.reserved_for);
  for (std::size_t i = 0; i < names.abbreviation_count; ++i) {
    built->insert(names.abbreviations[i].name, names.abbreviations[i].id);
  }
  return built;
}

// One table object per command, even where the contents are equal.
template <std::size_t slot>
const CFGQ_NAME_TABLE& abbreviation_table() {
  static const std::unique_ptr<const CFGQ_NAME_TABLE> table =
      build_abbreviation_table(names_of[slot]);
  return *table;
}

template <std::size_t slot>
CFGQ_AUTO_ARGUMENT_ENUM name_to_id(const char* name) {
  const bool given = !gen_is_empty_string(name);
  if (given) {
    if (const CFGQ_NAME_TABLE::ENTRY* entry = full_name_table().find(name)) {
      if (names_of[slot].accepts_exactly[static_cast<std::size_t>(entry->id)]) {
        return static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id);
      }
    }
  }
  const CFGQ_NAME_TABLE& abbreviations = abbreviation_table<slot>();
  if (!given) return CFGQ_AUTO_ARGUMENT_EMPTY;
  const CFGQ_NAME_TABLE::ENTRY* entry = abbreviations.find(name);
  return entry ? static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id) : CFGQ_AUTO_ARGUMENT_NONE;
}

// Slots are filled at a command's first invocation, unguarded: each command runs on the
// thread of its interpreter.
using command_object_table = std::array<std::unique_ptr<ATCL_CMD>, command_count>;

command_object_table& command_objects() {
  static command_object_table table;
  return table;
}

int process_args(std::size_t slot, ATCL_ARGS* args, bool* done, int argc,
                 const char* const* argv) {
  if (args == nullptr) MSG_INTERNAL_ERROR::report("args != 0", module_name, this_file, __LINE__);
  std::unique_ptr<ATCL_CMD>& command = command_objects()[slot];
  if (!command) command = std::make_unique<ATCL_CMD>(&command_definitions[slot]);
  return args->process_tcl_command_arguments(command.get(), done, argc, argv);
}

// ---- Lifetime of the package in the process --------------------------------------------------

// Registers the static package at load, unless the Tcl command library loads packages itself,
// and unregisters the package at unload in processes that run the suite's Qt framework.
class package_lifetime {
 public:
  package_lifetime() {
    // Tcl keeps the static package list without an interpreter, so this is safe in processes
    // that never create one.
    if (!atcl_is_dynamically_loading()) {
      Tcl_StaticPackage(nullptr, static_package_prefix, Gui_settings_Init, nullptr);
    }
  }
  ~package_lifetime() {
    if (gen_get_is_qt()) cfgq_gui_settings_unregister_tcl();
  }
  package_lifetime(const package_lifetime&) = delete;
  package_lifetime& operator=(const package_lifetime&) = delete;
};

const package_lifetime package_at_load;

}  // namespace

const char* const CFGQ_AUTO_ARGUMENT_NAMES[7] = {"", "h", "help", "long_help", "key", "type",
                                                 "value"};

// ---- CFGQ_NAME_TABLE -------------------------------------------------------------------------

CFGQ_NAME_TABLE::CFGQ_NAME_TABLE()
    : m_bucket_count(new_table_buckets),
      m_entry_count(0),
      m_buckets(std::make_unique<ENTRY*[]>(new_table_buckets)) {}

CFGQ_NAME_TABLE::~CFGQ_NAME_TABLE() = default;

std::uint32_t CFGQ_NAME_TABLE::hash(const char* name) {
  std::uint32_t h = 0;
  for (const char* p = name; p != nullptr && *p != '\0'; ++p) {
    // Bytes count as signed: a name byte above 0x7f subtracts.
    const auto byte = static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(*p)));
    h ^= (h << 5) + (h >> 2) + byte;
  }
  return h;
}

void CFGQ_NAME_TABLE::link_at_head(ENTRY* entry) {
  ENTRY*& head = m_buckets[hash(entry->name) % m_bucket_count];
  entry->prev = nullptr;
  entry->next = head;
  if (head != nullptr) head->prev = entry;
  head = entry;
}

void CFGQ_NAME_TABLE::reserve(std::uint32_t wanted) {
  const std::uint32_t needed = 5 * (wanted / 4);
  if (needed <= m_bucket_count) return;
  const std::uint32_t new_count = qtl_hash_50_percent_increase_size(needed);
  std::unique_ptr<ENTRY*[]> old_buckets = std::move(m_buckets);
  const std::uint32_t old_count = m_bucket_count;
  m_buckets = std::make_unique<ENTRY*[]>(new_count);
  m_bucket_count = new_count;
  for (std::uint32_t bucket = 0; bucket < old_count; ++bucket) {
    for (ENTRY* entry = old_buckets[bucket]; entry != nullptr;) {
      ENTRY* const next = entry->next;  // link_at_head overwrites it
      link_at_head(entry);
      entry = next;
    }
  }
}

void CFGQ_NAME_TABLE::insert(const char* name, std::int32_t id) {
  for (ENTRY* entry = m_buckets[hash(name) % m_bucket_count]; entry; entry = entry->next) {
    if (gen_strcmp(entry->name, name) == 0) {
      entry->id = id;
      return;
    }
  }
  m_storage.push_back(std::make_unique<ENTRY>(ENTRY{name, id, nullptr, nullptr}));
  link_at_head(m_storage.back().get());
  ++m_entry_count;
  reserve(m_entry_count);
}

const CFGQ_NAME_TABLE::ENTRY* CFGQ_NAME_TABLE::find(const char* name) const {
  for (const ENTRY* entry = m_buckets[hash(name) % m_bucket_count]; entry; entry = entry->next) {
    if (gen_strcmp(entry->name, name) == 0) return entry;
  }
  return nullptr;
}

// ---- Lookups and processors ------------------------------------------------------------------

const char* cfgq_auto_argument_name(CFGQ_AUTO_ARGUMENT_ENUM id) {
  full_name_table();
  if (id >= CFGQ_AUTO_ARGUMENT_EMPTY || id <= CFGQ_AUTO_ARGUMENT_NONE) {
    MSG_INTERNAL_ERROR::report("The calling function has passed an illegal CFGQ_AUTO_ARGUMENT_ENUM",
                               module_name, this_file, __LINE__);
  }
  return CFGQ_AUTO_ARGUMENT_NAMES[id];
}

CFGQ_AUTO_ARGUMENT_ENUM cfgq_gui_settings_get_value_name_to_id(const char* name) {
  return name_to_id<get_value_slot>(name);
}
CFGQ_AUTO_ARGUMENT_ENUM cfgq_create_registry_name_to_id(const char* name) {
  return name_to_id<create_registry_slot>(name);
}
CFGQ_AUTO_ARGUMENT_ENUM cfgq_read_registry_name_to_id(const char* name) {
  return name_to_id<read_registry_slot>(name);
}
CFGQ_AUTO_ARGUMENT_ENUM cfgq_get_all_keys_name_to_id(const char* name) {
  return name_to_id<get_all_keys_slot>(name);
}
CFGQ_AUTO_ARGUMENT_ENUM cfgq_clear_registry_name_to_id(const char* name) {
  return name_to_id<clear_registry_slot>(name);
}

int cfgq_gui_settings_get_value_process_args(ATCL_ARGS* args, bool* done, int argc,
                                             const char* const* argv) {
  return process_args(get_value_slot, args, done, argc, argv);
}
int cfgq_create_registry_process_args(ATCL_ARGS* args, bool* done, int argc,
                                      const char* const* argv) {
  return process_args(create_registry_slot, args, done, argc, argv);
}
int cfgq_read_registry_process_args(ATCL_ARGS* args, bool* done, int argc,
                                    const char* const* argv) {
  return process_args(read_registry_slot, args, done, argc, argv);
}
int cfgq_get_all_keys_process_args(ATCL_ARGS* args, bool* done, int argc,
                                   const char* const* argv) {
  return process_args(get_all_keys_slot, args, done, argc, argv);
}
int cfgq_clear_registry_process_args(ATCL_ARGS* args, bool* done, int argc,
                                     const char* const* argv) {
  return process_args(clear_registry_slot, args, done, argc, argv);
}

const ATCL_CMD* cfgq_auto_command_object(int slot) {
  if (slot < 0 || slot >= static_cast<int>(command_count)) return nullptr;
  return command_objects()[static_cast<std::size_t>(slot)].get();
}

// ---- Registration ----------------------------------------------------------------------------

extern "C" int Gui_settings_Init(Tcl_Interp*) {
  cfgq_gui_settings_register_tcl();
  return TCL_OK;
}

extern "C" int Gui_settings_Unload(Tcl_Interp*, int) {
  cfgq_gui_settings_unregister_tcl();
  return TCL_OK;
}

namespace {
constexpr const char* no_interpreter_message =
    "A Tcl interpreter must exist before registering ::korvel::gui_settings!";
}  // namespace

extern "C" void cfgq_gui_settings_register_tcl() {
  atcl_begin_package_setup(package_namespace, package_version, nullptr, nullptr, false);
  atcl_register_callbacks(command_table);
  atcl_end_package_setup();
  if (atcl_get_interpreter() == nullptr) {
    MSG_INTERNAL_ERROR::report(no_interpreter_message, module_name, this_file, __LINE__);
  }
  // Not examined: the commands exist whether or not providing succeeds.
  Tcl_PkgProvideEx(atcl_get_interpreter(), package_namespace, package_version, nullptr);
}

extern "C" void cfgq_gui_settings_unregister_tcl() {
  Tcl_Interp* const interp = atcl_get_interpreter();
  if (interp == nullptr) {
    // The same report as registration's: either way the package has no interpreter to work in.
    MSG_INTERNAL_ERROR::report(no_interpreter_message, module_name, this_file, __LINE__);
  }
  atcl_begin_package_setup(package_namespace, package_version, unregister_module,
                           entry_point_stem, true);
  atcl_unregister_package(interp);
  atcl_end_package_setup();
}
