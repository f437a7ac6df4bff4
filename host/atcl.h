// Tcl command library stand-in: the interpreter that the suite's packages register into, the
// creation and removal of a package's commands, command-line parsing and help for commands.
//
// Command-line syntax parsed by ATCL_ARGS:
//   cfgq_create_registry -key Show_tips -value Yes General
// Named options start with "-" and take the next word as their value; a unique prefix of an
// option name is accepted through the package's own lookup. Positional arguments fill their
// places in order, before or after the options; "--" ends the options, and a lone "-" is a
// positional word. -h, -help and -long_help print the usage and end the command with TCL_OK.
//
// Everything here runs on the interpreter's thread. Debug traces go to channel "ATCL" (level 1).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <tcl.h>

// An argument identifier of a package's argument enumeration; 0 means "no such name".
using ATCL_ARGUMENT_ID = std::int32_t;
// Gives the name of an identifier that the package's lookup returned (without the leading "-").
using ATCL_ID_TO_NAME = const char* (*)(ATCL_ARGUMENT_ID id);
// Gives the identifier of a bare option name (no "-"), a full name or an accepted abbreviation:
// 0 when the command accepts no such name, a package-chosen value for an empty or null name.
using ATCL_NAME_TO_ID = ATCL_ARGUMENT_ID (*)(const char* name);

// One command of a package: its procedure, its name in the interpreter (namespace qualifiers
// allowed, "gui_settings::get_value") and the client data handed to the procedure. A table of
// these ends with an entry whose three fields are all null.
struct ATCL_CALLBACK {
  Tcl_CmdProc* proc;
  const char* name;
  ClientData client_data;
};

// One argument of a command. A list of these ends with a record whose identifier is 0.
struct ATCL_ARG_DEFINITION {
  ATCL_ARGUMENT_ID id;
  std::int32_t count;           // words the argument takes; 1 for every argument parsed here
  std::uint8_t positional;      // 1: given by its place on the line, 0: a named option
  std::uint8_t reserved_flag;   // carried for the package; this stand-in does not act on it
  const char* reserved_text;    // null
};

// The static description of one command, read by the ATCL_CMD constructor.
struct ATCL_CMD_DEFINITION {
  const char* package_name;
  const char* command_name;
  ATCL_ID_TO_NAME id_to_name;
  ATCL_NAME_TO_ID name_to_id;
  const void* reserved_1;  // null
  const void* reserved_2;  // null
  const ATCL_ARG_DEFINITION* arguments;
  const void* reserved_3;  // null
  const void* reserved_4;  // null
};

// A command ready for parsing: its definition and the identifiers of the help requests and of
// the empty name, asked of the package's lookup once, at construction. The definition must
// outlive the object.
class ATCL_CMD {
 public:
  explicit ATCL_CMD(const ATCL_CMD_DEFINITION* definition);
  ~ATCL_CMD();
  ATCL_CMD(const ATCL_CMD&) = delete;
  ATCL_CMD& operator=(const ATCL_CMD&) = delete;

  const ATCL_CMD_DEFINITION& definition() const { return *m_definition; }

  // The one-line usage, "Usage: NAME ?-option value? ... positional ...".
  std::string usage() const;
  // The usage followed by one line per argument and the help requests.
  std::string long_usage() const;

  // How many command objects exist in the process (released ones no longer count).
  static int live_count();

 private:
  friend class ATCL_ARGS;
  enum class word_kind { unknown, help, long_help, option };
  // What the option word's bare name means for this command; *argument is set for an option.
  word_kind classify(const char* name, const ATCL_ARG_DEFINITION** argument) const;

  const ATCL_CMD_DEFINITION* m_definition;
  ATCL_ARGUMENT_ID m_h_id, m_help_id, m_long_help_id, m_empty_id;
};

// The arguments of one command invocation. A local of the command procedure; the texts it hands
// out point into the invocation's argument words and live as long as those.
class ATCL_ARGS {
 public:
  ATCL_ARGS();
  ~ATCL_ARGS();
  ATCL_ARGS(const ATCL_ARGS&) = delete;
  ATCL_ARGS& operator=(const ATCL_ARGS&) = delete;

  // Parses argv[1..argc-1] (argv[0] is the command's name) for `command`. Returns TCL_OK with
  // *done false and the holder filled; TCL_OK with *done true after printing help (nothing more
  // to do); TCL_ERROR with a message naming the offending word (an unknown option, an option
  // without its value, a surplus positional word) in the result of the interpreter whose
  // command is running, which also gets the help; outside a command, the interpreter in use.
  // A missing positional argument is not an error here: the command decides.
  int process_tcl_command_arguments(const ATCL_CMD* command, bool* done, int argc,
                                    const char* const* argv);

  // The positional argument at `place` (0 = first), or null when it was not given.
  const char* get_one_arg_pos_option(int place) const;
  // The value of the named option `id` (the last one given), or null when it was not given.
  const char* get_one_arg_option(ATCL_ARGUMENT_ID id) const;

 private:
  std::vector<const char*> m_positional;
  std::vector<std::pair<ATCL_ARGUMENT_ID, const char*>> m_options;
};

// Opens the setup of the package `name_space` at `version`. `module` and `stem` name the
// package's library and entry points when it is being unregistered (null otherwise). The next
// register or unregister call applies to that package.
void atcl_begin_package_setup(const char* name_space, const char* version, const char* module,
                              const char* stem, bool unregistering);

// Records the command table of the package in setup and creates each command in the
// interpreter, when one exists (replacing a command of the same name). The table must stay
// valid until the package is unregistered.
void atcl_register_callbacks(ATCL_CALLBACK* table);

// Removes the commands of the package in setup from `interp` and forgets its table. Commands
// that are already gone are not an error; a package never registered changes nothing.
void atcl_unregister_package(Tcl_Interp* interp);

// Closes the setup opened by atcl_begin_package_setup.
void atcl_end_package_setup();

// The interpreter in use, null when none exists (or every one made the interpreter in use has
// been deleted).
Tcl_Interp* atcl_get_interpreter();

// Makes `interp` the interpreter in use (null: none). A host program that creates its own
// interpreter calls this before loading packages. The stand-in forgets the interpreter when
// Tcl deletes it; the one in use before it, if still alive, is then the interpreter in use
// again (a child interpreter that loaded a package and was deleted).
void atcl_set_interpreter(Tcl_Interp* interp);

// True once the stand-in was loaded into an interpreter as a Tcl package (Atcl_Init): packages
// are then loaded by the interpreter and must not register themselves as static packages.
bool atcl_is_dynamically_loading();

// Sets the interpreter's result to `message`, taken as plain text: a "%" in it stays as it is.
// The further arguments are not read.
void atcl_error_msg_impl(Tcl_Interp* interp, const char* message, ...);

// Writes `text` and a newline to the interpreter's standard output channel and flushes it.
// `no_newline` true leaves the newline out.
void atcl_tcl_output(Tcl_Interp* interp, const char* text, bool no_newline);

// The Tcl load entry of the stand-in (`load libkorvel_host.so Atcl`): records `interp` as the
// interpreter in use and marks the process as loading packages dynamically. Returns TCL_OK.
extern "C" int Atcl_Init(Tcl_Interp* interp);
