// Internals of the settings store shared by the library's sources: main-key names and the
// settings file's location.
#pragma once

#include <QString>

// The name of a main key: the version text (null: the running version), "_64-Bit" when the
// process keeps separate 64-bit settings, then `suffix`, or "_pro" when no suffix is given or the
// name already ends with it (and not with "_pro").
QString get_main_key_name(const char* version, const char* suffix);

// The settings file in use: the process's temporary file in isolated runs (regression tests,
// QT_QPA_PLATFORM=minimal, PBUILD_BUILD=1), else korvel2.kreg in the user's profile directory.
// Worked out anew at every call; only the temporary file is remembered.
QString get_registry_file_path();

// True in an isolated run (regression tests, QT_QPA_PLATFORM=minimal, PBUILD_BUILD=1), whose
// views use the process's temporary file; *why (when not null) then names the cause.
bool cfgq_isolated_run(QString* why);

// Settings files above this many bytes are set aside as ".large" and never loaded.
// (The same figure limits a value's length, counted in UTF-16 code units, in set_value.)
constexpr qint64 max_file_bytes = 10'000'000;
