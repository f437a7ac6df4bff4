// Keeps each settings file's parsed state alive in the process between views, so that opening a
// view costs a file check and a lookup instead of a re-read of the whole file.
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <QString>

// Makes sure a process-wide, read-only settings object holds the file at `path` (a keeper), so
// that Qt keeps the file's parsed state after the last view on it is gone. Call it once a view's
// own settings object is open on `path`: the keeper then shares that object's parsed state and
// reads nothing. At most max_kept_settings_files files are kept; opening another one releases
// the keeper of the file opened least recently. Safe to call from several threads at once.
void cfgq_keep_settings_file(const QString& path);

// Releases the keeper of `path`, if any, so that the file's parsed state goes with its last view.
// Call it before the file is set aside: a file above the size limit must not stay in memory.
void cfgq_release_settings_file(const QString& path);

// The number of files kept (for tests).
int cfgq_kept_settings_file_count();

// How many files keep their parsed state between views. A process uses the profile file and its
// temporary file; the rest leaves room for a tool that walks several profiles.
constexpr int max_kept_settings_files = 4;
