// Shared pieces of the cfgq tool: the command table, exit statuses, output and error lines,
// and how a command finds the main key and section it works on.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <QByteArray>
#include <QCommandLineParser>
#include <QSettings>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "cfgq.h"
#include "cfgq_tool.h"

namespace cli {

// The copy `reset` keeps beside the settings file, for `recover --merge reset`. A name of the
// tool's own: the library's set-aside copies end in .large, .corrupt and .format-error.
constexpr const char* reset_copy_suffix = ".reset";

// Exit statuses; --help and README list the same.
constexpr int exit_ok = 0;
constexpr int exit_absent = 1;  // the value, section or file looked up is not there
constexpr int exit_usage = 2;   // bad command line or bad input (unknown command, bad JSON, ...)
constexpr int exit_failed = 3;  // a file could not be read or written


// Writes UTF-8 text (or raw bytes) to standard output. A failed write is remembered for
// finish_output.
void print(const QString& text);
void print_bytes(const QByteArray& bytes);
// Flushes and closes standard output at exit: `status` when every byte got out, else exit_failed
// with "cfgq: <what>: standard output: <reason>".
int finish_output(const QString& what, int status);
// Writes "cfgq: <what>: <why>" to standard error and returns `status`.
int fail(const QString& what, const QString& why, int status);
// Writes "cfgq: <text>" to standard error: a note beside a successful result.
void note(const QString& text);
// The system's reason for errno value `error`, as a person reads it.
QString system_reason(int error);
// Reads standard input to its end, or to one byte past `most`. False with *why on a read error.
// (The C library's reads: a pipe's end is an end on every platform, never an error.)
bool read_standard_input(qint64 most, QByteArray* bytes, QString* why);

// ---- Writes ------------------------------------------------------------------------------

// After the views that wrote have been destroyed (a view writes when it goes): exit_failed with
// "cfgq: <what>: <path>: <reason>" when the library reports a write of the settings file that did
// not happen completely; exit_ok when every write since the last check went through.
int check_writes(const QString& what);

// Replaces the file at `path` (a link is followed to the regular file it names) with `bytes`, so
// that it holds either its old bytes or all of the new ones, through the library's staged write
// under the file's lock (cfgq_tool_replace_file). A new file is 0600 whatever the umask; an
// existing one keeps its owner and mode. False with *why (the system's reason) when the file was left as it was.
bool write_file_atomically(const QString& path, const QByteArray& bytes, QString* why);

// Brackets a command that reads or writes settings: warns on standard error when the run is
// isolated (the values live in a temporary file), and at the end says when the library kept a
// damaged settings file aside during the command.
class settings_run {
 public:
  settings_run();
  ~settings_run();
  settings_run(const settings_run&) = delete;
  settings_run& operator=(const settings_run&) = delete;

 private:
  std::vector<std::pair<QString, QByteArray>> m_copies;  // set-aside copy, its state at the start
};

// The text of an isolated run's cause, "QT_QPA_PLATFORM=minimal"; empty in a normal run.
QString isolation_cause();

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
std::vector<command> store_commands();     // path show get set unset keys clear sections
std::vector<command> backup_commands();    // export import
std::vector<command> recover_commands();   // recover
std::vector<command> version_commands();   // migrate reset
std::vector<command> watch_commands();     // watch
std::vector<command> check_commands();     // check
std::vector<command> env_commands();       // setenv getenv unsetenv env

// ---- Before a write of the settings file -----------------------------------------------

// Adds --main-key and --no-migrate to a command that writes values.
void add_write_options(QCommandLineParser& parser);

// Before a command writes the running version's main key: when that key has not been migrated
// yet, runs the once-per-version migration a suite program runs at its start and says on
// standard error what it did; with --no-migrate, only writes the current marker, so that the
// next start of a suite program keeps what the command writes. exit_ok, or the failed write's
// status. Nothing happens for another main key (--main-key) or a migrated one.
int migrate_before_write(const invocation& call, const QString& what);

// Values a command is about to write: key paths from the file's root, and values.
using pending_writes = QList<QPair<QString, QVariant>>;

// exit_ok when the settings file stays within max_file_bytes once `writes` are written; else
// exit_failed with a line that gives the size it would reach, the room left and how to make
// room. Near the limit the size is found by writing the file's content and the values into a
// private copy with the same writer, so the answer is exact.
int check_room(const QString& what, const pending_writes& writes);

// The room left in the settings file: max_file_bytes less its size, as text ("87,655 bytes").
QString room_left(qint64 size);

// An upper bound of the bytes one "key=value" line takes in the settings file (commands_recover).
qint64 line_bytes(const QString& path_in_main_key, const QVariant& value);

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
// The running version's main key ("25.1_pro").
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
// The section table's group name that `name` matches when compared without regard to case;
// empty when none does.
QString similar_section(const QString& name);
// The candidate closest to `name` (letter case aside, a few letters added, dropped or changed),
// for "did you mean" hints; empty when none is close.
QString nearest_name(const QString& name, const QStringList& candidates);
// " (did you mean 'General'?)" for a section that holds nothing in `main_key`: the main key's
// groups and the section table are the candidates. Empty when none is close.
QString section_hint(const QString& section, const QString& main_key);

// True when `section` (resolved) is one of the section table's group names or a group of
// `main_key` that holds values: a section a command that writes a file may take.
bool section_known(const QString& section, const QString& main_key);

// The settings a command reads and writes: a library view of the user's settings file, or with
// --file a plain settings object on a private copy of that file (never a library view, so the
// file is never set aside, renamed or cleaned up around; with --write the copy goes back to it
// at the end). The methods are the view's.
class settings_view {
 public:
  explicit settings_view(std::unique_ptr<CFGQ_REGISTRY_KEY> view);
  explicit settings_view(std::unique_ptr<QSettings> raw);
  ~settings_view();
  settings_view(const settings_view&) = delete;
  settings_view& operator=(const settings_view&) = delete;

  void beginGroup(const QString& group);
  void endGroup();
  QString group() const;
  QString fileName() const;  // the file the user named
  bool get_value(const QString& name, QVariant* value);  // the group's own keys only
  void set_value(const QString& name, const QVariant& value);
  QVariant value(const QString& key) const;
  bool contains(const QString& key) const;
  void remove(const QString& key);
  QStringList allKeys() const;
  QStringList childKeys() const;
  QStringList childGroups() const;
  void clear_registry_key();

 private:
  std::unique_ptr<CFGQ_REGISTRY_KEY> m_view;
  std::unique_ptr<QSettings> m_raw;
};

// A view at `group` (levels joined by "/", may be empty) below `main_key`; open_root at the
// root of the file.
std::unique_ptr<settings_view> open_view(const QString& main_key, const QString& group);
std::unique_ptr<settings_view> open_root();

// ---- --file FILE [--write] -------------------------------------------------------------------

// Makes the commands work on `path` instead of the user's settings file: read from a private
// copy, and written back (staged, checked, renamed) only when `write` is set. False, with *why
// and *status, when the file can't be read, or is over the size limit and `write` is set.
bool use_other_file(const QString& path, bool write, QString* why, int* status);
// True while --file is in force; *writable says whether --write came with it.
bool other_file_in_use(bool* writable = nullptr);
// After a command under --file --write: writes the copy back when the command changed it and
// it stays within the size limit. exit_ok, or the failure's status after its error line.
int finish_other_file(const QString& what);

// Splits a KEY argument at its "/" into the subgroup path and the value name, dropping empty
// levels: "Dialogs//Find/Width" gives ("Dialogs/Find", "Width"). False when no name is left.
bool split_key(const QString& key, QString* subgroup, QString* name);

// Before a command reads settings: exit_ok when the settings file is absent or may be a settings
// file; else a clear error (exit_failed) for a directory, a JSON document or binary data in its
// place, which the library would otherwise read as an empty or nonsensical file.
int check_settings_file(const QString& what);

// Checks that the settings file (or, while it does not exist, its directory) can be written,
// so that a write is not lost silently when the view flushes. Empty when it can; else why not.
QString unwritable_reason(const QString& file_path);

// The first names of a list joined by ", ", then "and N more": a report stays readable when
// thousands of values are named.
QString listed_names(const QStringList& names);

// Text for a count: "1 value", "3 values".
QString count_of(qsizetype n, const char* singular, const char* plural);

}  // namespace cli
