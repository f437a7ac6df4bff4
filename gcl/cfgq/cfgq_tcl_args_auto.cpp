// The Tcl package gui_settings as tables: one row per command, from which its definition, its
// entry in the command table, its accepted names and abbreviations follow; the name tables, the
// lookups and argument processors, and the package's registration.
#include "cfgq_tcl_args_auto.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

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

// ---- The commands ----------------------------------------------------------------------------
// One row per command: its name, what it does once its line is parsed, and its arguments in
// record order. The options a command accepts and their abbreviations follow from the arguments.

constexpr std::size_t max_arguments = 3;

constexpr ATCL_ARG_DEFINITION named(CFGQ_AUTO_ARGUMENT_ENUM id) { return {id, 1, 0, 0, nullptr}; }
constexpr ATCL_ARG_DEFINITION positional(CFGQ_AUTO_ARGUMENT_ENUM id) {
  return {id, 1, 1, 0, nullptr};
}

struct command_row {
  const char* name;
  cfgq_tcl_body* body;
  // Unused records stay zero: the first of them ends the list.
  std::array<ATCL_ARG_DEFINITION, max_arguments + 1> arguments;
};

// In cfgq_tcl_command order.
constexpr command_row command_rows[CFGQ_TCL_COMMAND_COUNT] = {
    // The appearance name is positional and the one record whose second flag is set.
    {"gui_settings::get_value", cfgq_get_value_body,
     {{{CFGQ_AUTO_ARGUMENT_KEY, 1, 1, 1, nullptr}}}},
    {"cfgq_create_registry", cfgq_create_registry_body,
     {{named(CFGQ_AUTO_ARGUMENT_KEY), named(CFGQ_AUTO_ARGUMENT_VALUE),
       positional(CFGQ_AUTO_ARGUMENT_TYPE)}}},
    {"cfgq_read_registry", cfgq_read_registry_body,
     {{named(CFGQ_AUTO_ARGUMENT_KEY), positional(CFGQ_AUTO_ARGUMENT_TYPE)}}},
    {"cfgq_get_all_keys", cfgq_get_all_keys_body, {{positional(CFGQ_AUTO_ARGUMENT_TYPE)}}},
    {"cfgq_clear_registry", cfgq_clear_registry_body, {{positional(CFGQ_AUTO_ARGUMENT_TYPE)}}},
};

// ---- Accepted names and abbreviations --------------------------------------------------------

// Every command takes the help requests; the Tcl command library answers them.
constexpr CFGQ_AUTO_ARGUMENT_ENUM help_requests[] = {
    CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP};

// The names a command's lookup takes exactly: the help requests and the command's named options
// (a positional argument is not named on the line), as a mask indexed by identifier.
std::array<bool, CFGQ_AUTO_ARGUMENT_EMPTY> accepted_names(const command_row& row) {
  std::array<bool, CFGQ_AUTO_ARGUMENT_EMPTY> accepted{};
  for (const CFGQ_AUTO_ARGUMENT_ENUM id : help_requests) accepted[id] = true;
  for (const ATCL_ARG_DEFINITION& argument : row.arguments) {
    if (argument.id != CFGQ_AUTO_ARGUMENT_NONE && argument.positional == 0) {
      accepted[static_cast<std::size_t>(argument.id)] = true;
    }
  }
  return accepted;
}

// A command's abbreviations: every proper prefix of an accepted name that begins exactly one
// accepted name and is not an accepted name itself ("h" is its own name, never short for
// "help"). Names are taken in alphabetical order, each one's prefixes from the shortest.
struct abbreviations {
  std::vector<std::string> texts;
  std::vector<CFGQ_AUTO_ARGUMENT_ENUM> ids;
};

abbreviations abbreviations_of(const std::array<bool, CFGQ_AUTO_ARGUMENT_EMPTY>& accepted) {
  std::vector<std::pair<std::string, CFGQ_AUTO_ARGUMENT_ENUM>> names;
  for (std::int32_t id = CFGQ_AUTO_ARGUMENT_H; id < CFGQ_AUTO_ARGUMENT_EMPTY; ++id) {
    if (accepted[id]) {
      names.emplace_back(CFGQ_AUTO_ARGUMENT_NAMES[id], static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(id));
    }
  }
  std::sort(names.begin(), names.end());
  const auto begins = [](const std::string& name, const std::string& prefix) {
    return name.compare(0, prefix.size(), prefix) == 0;
  };
  abbreviations found;
  for (const auto& [name, id] : names) {
    for (std::size_t length = 1; length < name.size(); ++length) {
      const std::string prefix = name.substr(0, length);
      // A prefix that is an accepted name begins that name too, so it never has one owner.
      const auto owners = std::count_if(names.begin(), names.end(), [&](const auto& other) {
        return begins(other.first, prefix);
      });
      if (owners == 1) {
        found.texts.push_back(prefix);
        found.ids.push_back(id);
      }
    }
  }
  return found;
}

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

// One command's accepted names and its abbreviation table, which points into `texts`.
struct command_names {
  std::array<bool, CFGQ_AUTO_ARGUMENT_EMPTY> accepted;
  std::vector<std::string> texts;
  CFGQ_NAME_TABLE abbreviations;
};

std::unique_ptr<const command_names> build_command_names(const command_row& row) {
  auto built = std::make_unique<command_names>();
  built->accepted = accepted_names(row);
  abbreviations found = abbreviations_of(built->accepted);
  built->texts = std::move(found.texts);
  // Reserved for twice its entries, as the package's tables always were.
  built->abbreviations.reserve(static_cast<std::uint32_t>(2 * built->texts.size()));
  for (std::size_t i = 0; i < built->texts.size(); ++i) {
    built->abbreviations.insert(built->texts[i].c_str(), found.ids[i]);
  }
  return built;
}

// One table object per command, even where the contents are equal.
template <std::size_t slot>
const command_names& names_of() {
  static const std::unique_ptr<const command_names> names = build_command_names(command_rows[slot]);
  return *names;
}

template <std::size_t slot>
CFGQ_AUTO_ARGUMENT_ENUM name_to_id(const char* name) {
  const bool given = !gen_is_empty_string(name);
  if (given) {
    if (const CFGQ_NAME_TABLE::ENTRY* entry = full_name_table().find(name)) {
      if (names_of<slot>().accepted[static_cast<std::size_t>(entry->id)]) {
        return static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id);
      }
    }
  }
  const CFGQ_NAME_TABLE& abbreviations = names_of<slot>().abbreviations;
  if (!given) return CFGQ_AUTO_ARGUMENT_EMPTY;
  const CFGQ_NAME_TABLE::ENTRY* entry = abbreviations.find(name);
  return entry ? static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(entry->id) : CFGQ_AUTO_ARGUMENT_NONE;
}

// ---- Definitions and the command table, one entry per row ------------------------------------

// The Tcl command library speaks in plain 32-bit identifiers.
const char* atcl_id_to_name(ATCL_ARGUMENT_ID id) {
  return cfgq_auto_argument_name(static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(id));
}
template <std::size_t slot>
ATCL_ARGUMENT_ID atcl_name_to_id(const char* name) {
  return name_to_id<slot>(name);
}

template <std::size_t slot>
int procedure(ClientData, Tcl_Interp* interp, int argc, const char* argv[]) {
  return cfgq_tcl_run(static_cast<cfgq_tcl_command>(slot), command_rows[slot].body, interp, argc,
                      argv);
}

template <std::size_t... slot>
constexpr std::array<ATCL_CMD_DEFINITION, CFGQ_TCL_COMMAND_COUNT> make_definitions(
    std::index_sequence<slot...>) {
  return {{{package_short_name, command_rows[slot].name, atcl_id_to_name, atcl_name_to_id<slot>,
            nullptr, nullptr, command_rows[slot].arguments.data(), nullptr, nullptr}...}};
}

// Ends with an entry whose fields are all null.
template <std::size_t... slot>
constexpr std::array<ATCL_CALLBACK, CFGQ_TCL_COMMAND_COUNT + 1> make_command_table(
    std::index_sequence<slot...>) {
  return {{{procedure<slot>, command_rows[slot].name, nullptr}..., {nullptr, nullptr, nullptr}}};
}

using all_slots = std::make_index_sequence<CFGQ_TCL_COMMAND_COUNT>;
constexpr std::array<ATCL_CMD_DEFINITION, CFGQ_TCL_COMMAND_COUNT> command_definitions =
    make_definitions(all_slots{});
std::array<ATCL_CALLBACK, CFGQ_TCL_COMMAND_COUNT + 1> command_table =
    make_command_table(all_slots{});

template <std::size_t... slot>
constexpr std::array<CFGQ_AUTO_ARGUMENT_ENUM (*)(const char*), CFGQ_TCL_COMMAND_COUNT>
make_lookups(std::index_sequence<slot...>) {
  return {{name_to_id<slot>...}};
}
constexpr auto name_lookups = make_lookups(all_slots{});

// Slots are filled at a command's first invocation, unguarded: each command runs on the
// thread of its interpreter.
using command_object_table = std::array<std::unique_ptr<ATCL_CMD>, CFGQ_TCL_COMMAND_COUNT>;

command_object_table& command_objects() {
  static command_object_table table;
  return table;
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
    const auto byte =
        static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(*p)));
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

const char* cfgq_tcl_command_name(cfgq_tcl_command command) {
  return command_rows[command].name;
}

CFGQ_AUTO_ARGUMENT_ENUM cfgq_tcl_name_to_id(cfgq_tcl_command command, const char* name) {
  return name_lookups[command](name);
}

int cfgq_tcl_process_args(cfgq_tcl_command command, ATCL_ARGS* args, bool* done, int argc,
                          const char* const* argv) {
  if (args == nullptr) MSG_INTERNAL_ERROR::report("args != 0", module_name, this_file, __LINE__);
  std::unique_ptr<ATCL_CMD>& object = command_objects()[command];
  if (!object) object = std::make_unique<ATCL_CMD>(&command_definitions[command]);
  return args->process_tcl_command_arguments(object.get(), done, argc, argv);
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
  atcl_register_callbacks(command_table.data());
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
