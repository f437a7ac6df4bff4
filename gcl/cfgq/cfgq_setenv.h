// Persistent environment variables: the logic behind cfgq_setenv and the small store layer it
// runs on. Each platform supplies the store layer in a file of its own (cfgq_setenv_posix.cpp,
// cfgq_setenv_win.cpp); the logic in cfgq_setenv.cpp is the same everywhere. Internal to the
// library: tests reach it through the static archive.
// May use: cfgq, cfgq_file_failure.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <QString>

namespace cfgq_env {

// The two persistent stores: one for the current user, one for the whole machine.
enum class store { system, user };

// "system" or "user": the text cfgq_setenv reports in `scope`.
QString store_name(store which);

// ---- Store layer: one implementation per platform --------------------------------------------

// Where `which` lives. On Windows the registry path
// ("HKEY_CURRENT_USER\Environment", "HKEY_LOCAL_MACHINE\SYSTEM\...\Environment"). Elsewhere the
// file in environment.d format: KORVEL_USER_ENV_FILE, else
// $XDG_CONFIG_HOME/environment.d/90-korvel.conf (~/.config/... when unset, empty or relative;
// the home directory from HOME, else from the password database); KORVEL_SYSTEM_ENV_FILE, else
// /etc/environment.d/80-korvel.conf. Worked out at every call. Empty when the user has no usable
// home directory; no_location_reason() then says why.
QString store_location(store which);
QString no_location_reason();

// The text of variable `name` in the store at `location`, as the logic sees it: empty text when
// the variable is absent and when the store can't be read; that is not an error. Outside
// Windows, the user's store also reads "${NAME}" for a variable that neither store file sets
// and this process's environment defines: the session's own value, which a login keeps unless
// the store replaces it (as Windows joins a user's Path after the machine's).
QString store_read(const QString& location, const QString& name);

// The text the store itself holds for `name` (no session value); nullopt when it holds none.
std::optional<QString> store_text(const QString& location, const QString& name);

// Every variable the store holds, name and text, in the store's order.
std::vector<std::pair<QString, QString>> store_variables(const QString& location);

// Why the session manager can't use the store as it stands (a file holding a NUL byte, for
// example); empty when it can.
QString store_problem(const QString& location);

enum class write_outcome {
  written,  // the store holds the text now (or, for empty text, no longer holds the variable)
  refused,  // the store can't hold this name or text; the store is as it was
  failed,   // the platform refused the write (rights, a missing or odd path); as it was
};

struct write_result {
  write_outcome outcome;
  QString reason;  // why, for refused and failed (the system's reason where there is one)
};

// Sets variable `name` to `text` in the store at `location`, keeping everything else the store
// holds. Empty text removes the variable on stores that can't hold an empty value (files).
write_result store_write(const QString& location, const QString& name, const QString& text);

// The platform's own announcement of an environment change: on Windows a WM_SETTINGCHANGE
// broadcast with "Environment" and a time-out of 5000 ms; elsewhere nothing (programs started
// later read the stores; running ones never see a change). Never blocks beyond that time-out.
void announce_change_by_platform();

// ---- Announcement ----------------------------------------------------------------------------

using announcer = void (*)();

// Replaces the call that announces a change (nullptr: the platform's own) and returns the one
// in force before, so that a test can count announcements and put the old one back.
announcer set_announcer(announcer replacement);

// Calls the announcer in force.
void announce_change();

}  // namespace cfgq_env

// ---- The logic, in the manner of the library's free functions --------------------------------

// The variable's text in the store at `location` (empty when absent).
QString read_native_setting(const QString& location, const QString& env_name);

// Writes the variable's text to the store at `location`. Returns whether the store took it; a
// store that did not is reported on the debug channel "CFGQ" at level 2 with the path and the
// reason, and is otherwise not an error: callers go on as if it had.
bool write_native_setting(const QString& location, const QString& env_name, const QString& text);

// Chooses the store (the user's, unless only the machine's holds the variable), applies the list
// rules with `separator` (empty means ";"), writes, announces and sets `scope`; returns true.
// Returns false, writing nothing, announcing nothing and leaving `scope` as it was, when the
// chosen store's list already holds `env_value`, ignoring case.
bool set_persistent_environment(const QString& env_name, const QString& env_value, QString& scope,
                                bool append, const QString& separator);
