// Keeps each settings file's parsed state alive in the process between views, so that opening a
// view costs a file check and a lookup instead of a re-read of the whole file.
#pragma once

#include <string>

#include <QSettings>
#include <QString>
#include <QVariant>

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

// True when `settings`, standing in its current group, holds the own (direct) key `name`, whose
// value then goes to *found. Agrees exactly with settings.childKeys().contains(name): case-
// sensitive, a name with "/" never matches. *found is untouched on a miss. One map lookup for a
// name that is there, three for one that is not, instead of listing the group (where Qt's INI
// keys ignore case, a name that is there is checked against the list).
bool cfgq_find_own_value(const QSettings& settings, const QString& name, QVariant* found);

// True when value.toString() has `limit` or more UTF-16 code units; its length then goes to
// *length. Values whose text is known to be shorter (numbers, or bytes fewer than `limit`, which
// never give more code units than bytes) are answered without converting them.
bool cfgq_text_reaches(const QVariant& value, qsizetype limit, qsizetype* length);

// QDir(profile_dir).absoluteFilePath("korvel2.kreg") for a UTF-8 directory path. Each thread
// remembers its last answer for an absolute directory, as the path is worked out for every view.
QString cfgq_profile_settings_file(const std::string& profile_dir);
