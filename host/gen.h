// General-utilities stand-in: strings, the temporary directory, the user's profile, process kind.
#pragma once

#include <string>

// True for a null pointer and for empty text.
bool gen_is_empty_string(const char* text);

// The directory for temporary files: $TMPDIR, or /tmp when unset or empty (on Windows, the
// system's temporary directory, without its trailing separator).
std::string gen_get_temp_path();

// Creates a new, empty file in `directory` whose name starts with `prefix`, readable and writable
// by its owner only, and returns its full path. The file is created exclusively (an existing file
// or a link planted at that name is never opened). Returns empty text when no file can be made.
std::string gen_create_temp_file(const std::string& directory, const std::string& prefix);

// The user's profile directory as UTF-8: $HOME ($USERPROFILE on Windows); without it, the
// password database's home directory of the user; empty when there is none.
std::string gen_get_user_profile_directory();

// 0 exactly when both texts are equal; a null pointer equals only another null pointer.
int gen_strcmp(const char* a, const char* b);

// True when the process runs the suite's Qt framework: KORVEL_QT_PROCESS is "1".
bool gen_get_is_qt();
