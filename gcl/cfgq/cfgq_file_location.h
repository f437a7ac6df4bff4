// Where the settings file lies and what its companions are called: the profile's file or the
// process's temporary one, the isolated runs, main-key names, and the limits and suffixes that
// the library and the cfgq tool share.
// May use: cfgq_file_platform, cfgq_limits.
#pragma once

#include <string>

#include <QString>

#include "cfgq_limits.h"

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

// Where the process's private directory goes: the user's runtime directory ($XDG_RUNTIME_DIR,
// when it is the user's own), else the system's memory file system (/dev/shm), else the
// temporary directory. Qt syncs its own lock files to disk; in memory that costs nothing.
QString cfgq_private_base();

// Makes the temporary settings file at `path` a regular file of this user, with one link, that
// only its owner can read and write: anything else standing there (a link or pipe planted at its
// name) is replaced, never followed.
void cfgq_secure_temporary_file(const QString& path);
