// Where the settings file lies and what its companions are called: the profile's file or the
// process's temporary one, the isolated runs, main-key names, and the limits and suffixes that
// the library and the cfgq tool share.
#pragma once

#include <string>

#include <QString>

// Settings files above this many bytes are set aside as ".large" and never loaded.
constexpr qint64 max_file_bytes = 10'000'000;
// A value whose text form has this many UTF-16 code units or more is not stored.
constexpr qsizetype max_value_utf16_units = 10'000'000;

// Appended to the settings file's path for the copies set aside beside it.
constexpr const char* cfgq_large_suffix = ".large";
constexpr const char* cfgq_corrupt_suffix = ".corrupt";
constexpr const char* cfgq_format_error_suffix = ".format-error";

// The value at the root of a main key that marks it as filled by migration.
constexpr const char* cfgq_registry_version_name = "Registry_version";

// The name of a main key: the version text (null: the running version), "_64-Bit" when the
// process keeps separate 64-bit settings, then `suffix`, or "_pro" when no suffix is given or the
// name already ends with it (and not with "_pro").
QString get_main_key_name(const char* version, const char* suffix);

// The settings file in use: the process's temporary file in isolated runs (regression tests,
// QT_QPA_PLATFORM=minimal, PBUILD_BUILD=1), else korvel2.kreg in the user's profile directory
// (empty when there is no profile directory). Worked out anew at every call; only the temporary
// file is remembered.
QString get_registry_file_path();

// True in an isolated run, whose views use the process's temporary file; *why (when not null)
// then names the cause.
bool cfgq_isolated_run(QString* why);

// The process's temporary settings file (made at the first path computation; empty when none
// could be made).
QString cfgq_temporary_settings_file();

// The directory for temporary files.
std::string cfgq_temp_directory();

// Removes from `temp_dir` the temporary settings files and private directories of processes
// that are provably gone: names the library gives them ("CFGQ.<pid>.XXXXXX",
// "cfgq.<pid>.XXXXXX"), owned by this user, whose process no longer runs.
void cfgq_remove_dead_process_files(const QString& temp_dir);

// Makes the temporary settings file at `path` a regular file of this user, with one link, that
// only its owner can read and write: anything else standing there (a link or pipe planted at its
// name) is replaced, never followed.
void cfgq_secure_temporary_file(const QString& path);
