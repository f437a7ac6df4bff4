// Shared pieces of the cfgq tool: the command table, exit statuses, output and error lines,
// and how a command finds the main key and section it works on.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include "cfgq.h"

namespace cli {

// Exit statuses; --help and README list the same.
constexpr int exit_ok = 0;
constexpr int exit_absent = 1;  // the value, section or file looked up is not there
constexpr int exit_usage = 2;   // bad command line or bad input (unknown command, bad JSON, ...)
constexpr int exit_failed = 3;  // a file could not be read or written

// The library refuses values whose text form has this many UTF-16 code units or more.
constexpr qsizetype max_value_utf16_units = 10'000'000;
// The library sets aside a settings file of more than this many bytes when it opens it.
constexpr qint64 max_file_bytes = 10'000'000;

// Writes UTF-8 text (or raw bytes) to standard output.
void print(const QString& text);
void print_bytes(const QByteArray& bytes);
// Writes "cfgq: <what>: <why>" to standard error and returns `status`.
int fail(const QString& what, const QString& why, int status);
// Writes "cfgq: <text>" to standard error: a note beside a successful result.
void note(const QString& text);

// One parsed command line, handed to a command's body.
struct invocation {
  QString command;             // the command word, "get"
  const QCommandLineParser& options;
  QStringList args;            // positional arguments after the command word
};

struct command {
  const char* name;       // "get"
  const char* arguments;  // "SECTION KEY [--json]", as shown in usage lines
  int min_args;
  int max_args;
  const char* summary;  // one line for `cfgq --help`
  const char* details;  // the body of `cfgq help get`
  void (*add_options)(QCommandLineParser& parser);  // null when the command has none
  int (*run)(const invocation& call);
};

// The commands of each group, in the order `cfgq --help` lists them.
std::vector<command> store_commands();     // path show get set keys clear sections
std::vector<command> backup_commands();    // export import
std::vector<command> recover_commands();   // recover
std::vector<command> version_commands();   // migrate reset setenv
std::vector<command> watch_commands();     // watch
std::vector<command> check_commands();     // check

// ---- Hidden entries: the manual page and shell completion (manual_and_completion.cpp) ---

// The text of `cfgq help COMMAND`.
using help_text = QString (*)(const command& c);
// The manual page cfgq(1) in roff, from the command table and the tool's --help text.
QString manual_page(const std::vector<command>& commands, const QString& tool_help, help_text help,
                    const QString& version);
// `cfgq __complete WORD... CURRENT`: prints the candidates for CURRENT, the last word of the
// command line, one a line. Exit status 1 when CURRENT is a file name for the shell to complete.
int complete(const std::vector<command>& commands, const QStringList& words, help_text help);

// ---- Main keys and sections ------------------------------------------------------------

// Adds --main-key to a command that reads or writes values.
void add_main_key_option(QCommandLineParser& parser);
// The running version's main key: the group of a view built for NO_SUB_KEY.
QString running_main_key();
// The main key a command works on: --main-key when given, else the running version's.
// Only for commands that took add_main_key_option.
QString chosen_main_key(const invocation& call);
// The settings file in use.
QString settings_file_path();

// Row `key` of the section table (enumerator name and group name).
const CFGQ_REGISTRY_KEY::ENUMERATED_SUB_KEY_NAME& section_row(int key);

// A SECTION argument: a group path used as given ("General", "Change Manager Window",
// "General/Dialogs"), with empty levels dropped, whose first level may be an enumerator of the
// section table standing for its group name (GENERAL, ECO/Details). Empty on an argument that
// names no section; *why then says why.
std::optional<QString> resolve_section(const QString& argument, QString* why);
// The section table's group name that `name` matches when compared without regard to case,
// for "did you mean" hints; empty when none does.
QString similar_section(const QString& name);

// A view at `group` (levels joined by "/", may be empty) below `main_key`.
std::unique_ptr<CFGQ_REGISTRY_KEY> open_view(const QString& main_key, const QString& group);

// Splits a KEY argument at its "/" into the subgroup path and the value name, dropping empty
// levels: "Dialogs//Find/Width" gives ("Dialogs/Find", "Width"). False when no name is left.
bool split_key(const QString& key, QString* subgroup, QString* name);

// Checks that the settings file (or, while it does not exist, its directory) can be written,
// so that a write is not lost silently when the view flushes. Empty when it can; else why not.
QString unwritable_reason(const QString& file_path);

// The first names of a list joined by ", ", then "and N more": a report stays readable when
// thousands of values are named.
QString listed_names(const QStringList& names);

// Text for a count: "1 value", "3 values".
QString count_of(qsizetype n, const char* singular, const char* plural);

}  // namespace cli
