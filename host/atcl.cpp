// Tcl command library stand-in. Its state is plain data: packages' static destructors may still
// unregister through it while the process exits, after any object with a destructor here would
// already be gone.
#include "atcl.h"

#include <cstdarg>
#include <cstring>

#include "msg.h"

namespace {

// The interpreter packages register into, and whether Tcl loaded us as a package.
Tcl_Interp* current_interpreter = nullptr;
bool loaded_as_package = false;
// The interpreter whose command is running on this thread (the innermost one), null outside a
// command. A package's commands may live in several interpreters; parse errors and help belong
// to the one that called, not to the interpreter packages register into.
thread_local Tcl_Interp* calling_interpreter = nullptr;

// The package between atcl_begin_package_setup and atcl_end_package_setup.
struct package_setup {
  const char* name_space;
  const char* version;
  bool unregistering;
};
package_setup setup = {nullptr, nullptr, false};

// The command tables of registered packages, by namespace. The suite registers a handful.
struct registered_package {
  const char* name_space;
  ATCL_CALLBACK* table;
};
constexpr int max_packages = 32;
registered_package packages[max_packages] = {};

void trace(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

void trace(const char* format, ...) {
  va_list args;
  va_start(args, format);
  msg_local_vdebug("ATCL", MSG_D_LEVEL_1, format, args);
  va_end(args);
}

const char* text_or_empty(const char* text) { return text ? text : ""; }

bool same_text(const char* a, const char* b) { return std::strcmp(text_or_empty(a), text_or_empty(b)) == 0; }

registered_package* find_package(const char* name_space) {
  for (registered_package& package : packages) {
    if (package.table != nullptr && same_text(package.name_space, name_space)) return &package;
  }
  return nullptr;
}

// Table names are taken from the global namespace, whatever namespace the script loads from.
std::string global_command_name(const char* name) {
  const std::string text(name);
  return text.compare(0, 2, "::") == 0 ? text : "::" + text;
}

// Every command of a package runs through here, so that the parser knows its interpreter.
int call_command(ClientData data, Tcl_Interp* interp, int argc, const char* argv[]) {
  const ATCL_CALLBACK& entry = *static_cast<const ATCL_CALLBACK*>(data);
  struct restore_on_return {
    Tcl_Interp* outer;
    ~restore_on_return() { calling_interpreter = outer; }
  } restore{calling_interpreter};
  calling_interpreter = interp;
  return entry.proc(entry.client_data, interp, argc, argv);
}

void create_commands(Tcl_Interp* interp, const ATCL_CALLBACK* table) {
  for (const ATCL_CALLBACK* entry = table; entry->proc || entry->name || entry->client_data;
       ++entry) {
    if (entry->proc == nullptr || entry->name == nullptr) continue;
    Tcl_CreateCommand(interp, global_command_name(entry->name).c_str(), call_command,
                      const_cast<ATCL_CALLBACK*>(entry), nullptr);
    trace("created command %s", entry->name);
  }
}

// Interpreters that were made the one in use and are not deleted yet, the most recent last.
// When the one in use is deleted (a child interpreter that loaded a package), the most recent
// survivor takes its place: the process still has an interpreter. A handful at most.
constexpr int max_interpreters = 16;
Tcl_Interp* live_interpreters[max_interpreters] = {};
int live_interpreter_count = 0;

// Takes `interp` out of live_interpreters; returns whether it was there.
bool drop_live_interpreter(Tcl_Interp* interp) {
  for (int i = 0; i < live_interpreter_count; ++i) {
    if (live_interpreters[i] != interp) continue;
    for (int j = i + 1; j < live_interpreter_count; ++j) {
      live_interpreters[j - 1] = live_interpreters[j];
    }
    live_interpreters[--live_interpreter_count] = nullptr;
    return true;
  }
  return false;
}

void forget_interpreter(ClientData, Tcl_Interp* interp) {
  drop_live_interpreter(interp);
  if (current_interpreter == interp) {
    current_interpreter =
        live_interpreter_count > 0 ? live_interpreters[live_interpreter_count - 1] : nullptr;
  }
}

bool is_positional(const ATCL_ARG_DEFINITION& argument) { return argument.positional != 0; }

// The argument list of a definition, walked up to its closing record.
template <typename F>
void for_each_argument(const ATCL_CMD_DEFINITION& definition, F&& visit) {
  if (definition.arguments == nullptr) return;
  for (const ATCL_ARG_DEFINITION* argument = definition.arguments; argument->id != 0; ++argument) {
    visit(*argument);
  }
}

int live_commands = 0;

}  // namespace

// ---- Interpreter -----------------------------------------------------------------------------

Tcl_Interp* atcl_get_interpreter() { return current_interpreter; }

void atcl_set_interpreter(Tcl_Interp* interp) {
  if (current_interpreter == interp) return;
  current_interpreter = interp;
  if (interp == nullptr) return;
  const bool known = drop_live_interpreter(interp);
  if (live_interpreter_count == max_interpreters) {
    Tcl_DontCallWhenDeleted(live_interpreters[0], forget_interpreter, nullptr);
    drop_live_interpreter(live_interpreters[0]);
  }
  live_interpreters[live_interpreter_count++] = interp;
  // A deleted interpreter must not be handed out again, at exit least of all.
  if (!known) Tcl_CallWhenDeleted(interp, forget_interpreter, nullptr);
}

bool atcl_is_dynamically_loading() { return loaded_as_package; }

extern "C" int Atcl_Init(Tcl_Interp* interp) {
  loaded_as_package = true;
  atcl_set_interpreter(interp);
  trace("loaded as a package");
  return TCL_OK;
}

// ---- Packages --------------------------------------------------------------------------------

void atcl_begin_package_setup(const char* name_space, const char* version, const char* module,
                              const char* stem, bool unregistering) {
  setup = {name_space, version, unregistering};
  trace("begin setup of %s %s (%s)%s%s%s%s", text_or_empty(name_space), text_or_empty(version),
        unregistering ? "unregistering" : "registering", module ? " module " : "",
        text_or_empty(module), stem ? " entry points " : "", text_or_empty(stem));
}

void atcl_register_callbacks(ATCL_CALLBACK* table) {
  trace("register callbacks of %s", text_or_empty(setup.name_space));
  if (table == nullptr) return;
  registered_package* package = find_package(setup.name_space);
  if (package == nullptr) {
    for (registered_package& free_slot : packages) {
      if (free_slot.table == nullptr) {
        package = &free_slot;
        break;
      }
    }
  }
  // Without a free slot the commands are still created; only unregistration can't find them.
  if (package != nullptr) *package = {setup.name_space, table};
  if (current_interpreter != nullptr) create_commands(current_interpreter, table);
}

void atcl_unregister_package(Tcl_Interp* interp) {
  trace("unregister %s", text_or_empty(setup.name_space));
  registered_package* package = find_package(setup.name_space);
  if (package == nullptr) return;
  if (interp != nullptr) {
    for (const ATCL_CALLBACK* entry = package->table;
         entry->proc || entry->name || entry->client_data; ++entry) {
      if (entry->name == nullptr) continue;
      Tcl_DeleteCommand(interp, global_command_name(entry->name).c_str());
    }
  }
  *package = {nullptr, nullptr};
}

void atcl_end_package_setup() {
  trace("end setup of %s", text_or_empty(setup.name_space));
  setup = {nullptr, nullptr, false};
}

// ---- Output ----------------------------------------------------------------------------------

void atcl_error_msg_impl(Tcl_Interp* interp, const char* message, ...) {
  if (interp == nullptr) return;
  Tcl_SetObjResult(interp, Tcl_NewStringObj(text_or_empty(message), -1));
}

void atcl_tcl_output(Tcl_Interp* interp, const char* text, bool no_newline) {
  Tcl_Channel channel = nullptr;
  if (interp != nullptr) channel = Tcl_GetChannel(interp, "stdout", nullptr);
  if (channel == nullptr) channel = Tcl_GetStdChannel(TCL_STDOUT);
  if (channel == nullptr) return;
  Tcl_WriteChars(channel, text_or_empty(text), -1);
  if (!no_newline) Tcl_WriteChars(channel, "\n", 1);
  Tcl_Flush(channel);
}

// ---- Commands and their arguments ------------------------------------------------------------

ATCL_CMD::ATCL_CMD(const ATCL_CMD_DEFINITION* definition)
    : m_definition(definition), m_h_id(0), m_help_id(0), m_long_help_id(0), m_empty_id(0) {
  ++live_commands;
  if (definition == nullptr || definition->name_to_id == nullptr) return;
  m_h_id = definition->name_to_id("h");
  m_help_id = definition->name_to_id("help");
  m_long_help_id = definition->name_to_id("long_help");
  m_empty_id = definition->name_to_id("");
}

ATCL_CMD::~ATCL_CMD() { --live_commands; }

int ATCL_CMD::live_count() { return live_commands; }

ATCL_CMD::word_kind ATCL_CMD::classify(const char* name,
                                       const ATCL_ARG_DEFINITION** argument) const {
  if (m_definition == nullptr || m_definition->name_to_id == nullptr) return word_kind::unknown;
  const ATCL_ARGUMENT_ID id = m_definition->name_to_id(name);
  if (id == 0 || id == m_empty_id) return word_kind::unknown;
  if (id == m_h_id || id == m_help_id) return word_kind::help;
  if (id == m_long_help_id) return word_kind::long_help;
  word_kind kind = word_kind::unknown;
  for_each_argument(*m_definition, [&](const ATCL_ARG_DEFINITION& candidate) {
    if (kind == word_kind::unknown && candidate.id == id && !is_positional(candidate)) {
      *argument = &candidate;
      kind = word_kind::option;
    }
  });
  return kind;
}

std::string ATCL_CMD::usage() const {
  const ATCL_CMD_DEFINITION& d = *m_definition;
  std::string options, positionals;
  for_each_argument(d, [&](const ATCL_ARG_DEFINITION& argument) {
    // Only identifiers from the definition reach the package's identifier-to-name function.
    const char* name = text_or_empty(d.id_to_name ? d.id_to_name(argument.id) : nullptr);
    if (is_positional(argument)) {
      positionals += std::string(" ") + name;
    } else {
      options += std::string(" ?-") + name + " " + name + "?";
    }
  });
  return "Usage: " + std::string(text_or_empty(d.command_name)) + options + positionals;
}

std::string ATCL_CMD::long_usage() const {
  const ATCL_CMD_DEFINITION& d = *m_definition;
  std::string text = usage() + "\nPackage: " + text_or_empty(d.package_name) + "\n";
  int place = 0;
  for_each_argument(d, [&](const ATCL_ARG_DEFINITION& argument) {
    const char* name = text_or_empty(d.id_to_name ? d.id_to_name(argument.id) : nullptr);
    if (is_positional(argument)) {
      text += "  " + std::string(name) + "  positional argument " + std::to_string(++place) + "\n";
    } else {
      text += "  -" + std::string(name) + " " + name + "  named option\n";
    }
  });
  text += "  -h, -help  print the usage\n  -long_help  print this description\n"
          "  --  ends the options";
  return text;
}

ATCL_ARGS::ATCL_ARGS() = default;

ATCL_ARGS::~ATCL_ARGS() = default;

int ATCL_ARGS::process_tcl_command_arguments(const ATCL_CMD* command, bool* done, int argc,
                                             const char* const* argv) {
  m_positional.clear();
  m_options.clear();
  if (done != nullptr) *done = false;
  Tcl_Interp* interp = calling_interpreter ? calling_interpreter : current_interpreter;
  const std::string command_name =
      command ? text_or_empty(command->definition().command_name) : std::string();
  auto fail = [&](const std::string& what, const char* word) {
    atcl_error_msg_impl(interp, ("ERROR: " + command_name + ": " + what + " \"" + word + "\"").c_str());
    return TCL_ERROR;
  };
  if (command == nullptr) return TCL_ERROR;

  std::vector<const ATCL_ARG_DEFINITION*> positional_places;
  for_each_argument(command->definition(), [&](const ATCL_ARG_DEFINITION& argument) {
    if (is_positional(argument)) positional_places.push_back(&argument);
  });

  bool options_ended = false;
  for (int i = 1; i < argc; ++i) {
    const char* word = argv[i] ? argv[i] : "";
    if (!options_ended && std::strcmp(word, "--") == 0) {
      options_ended = true;
      continue;
    }
    if (!options_ended && word[0] == '-' && word[1] != '\0') {
      const ATCL_ARG_DEFINITION* argument = nullptr;
      const ATCL_CMD::word_kind kind = command->classify(word + 1, &argument);
      if (kind == ATCL_CMD::word_kind::unknown) return fail("unknown option", word);
      if (kind == ATCL_CMD::word_kind::option) {
        if (i + 1 >= argc) return fail("missing value for option", word);
        ++i;
        m_options.emplace_back(argument->id, argv[i] ? argv[i] : "");
        continue;
      }
      const bool long_help = kind == ATCL_CMD::word_kind::long_help;
      atcl_tcl_output(interp, (long_help ? command->long_usage() : command->usage()).c_str(),
                      false);
      m_positional.clear();
      m_options.clear();
      if (done != nullptr) *done = true;
      return TCL_OK;
    }
    if (m_positional.size() >= positional_places.size()) return fail("surplus argument", word);
    m_positional.push_back(word);
  }
  return TCL_OK;
}

const char* ATCL_ARGS::get_one_arg_pos_option(int place) const {
  if (place < 0 || static_cast<std::size_t>(place) >= m_positional.size()) return nullptr;
  return m_positional[static_cast<std::size_t>(place)];
}

const char* ATCL_ARGS::get_one_arg_option(ATCL_ARGUMENT_ID id) const {
  const char* value = nullptr;
  for (const auto& option : m_options) {
    if (option.first == id) value = option.second;  // the last one given wins
  }
  return value;
}
