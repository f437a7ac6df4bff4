// Keeping the settings file safe around the views that open and write it: temporaries left by
// killed writers, copies of damaged files, and the temporary settings file's ownership and mode.
#pragma once

#include <QString>

class QSettings;

// Appended to the settings file's path for the copy of a file that Qt read with format errors.
constexpr const char* format_error_suffix = ".format-error";

// Call before a settings object opens `path`. `temporary` says that `path` is the process's
// temporary settings file.
//  - When the file was replaced since this process's settings objects last read or wrote it, but
//    kept its size and its modification time in milliseconds (another process's write of the
//    same size within one tick of a coarse file-system clock), gives it a new modification time:
//    Qt, which compares only those two, would otherwise go on using what it read before and
//    write that back over the other process's change.
//  - The first time a process opens `path`, and until it succeeds, removes the temporaries that
//    killed writers left beside it ("<file>.XXXXXX"), and a killed writer's lock, while holding
//    the file's write lock so that no writer of any process has a temporary open. See
//    cfgq_is_stale_temporary_name for which names.
//  - For the temporary settings file: anything standing at `path` other than a regular file of
//    this user with one link (a symbolic or hard link planted there, a pipe) is removed and an
//    empty file is made in its place, exclusively and without following links; the file is made
//    readable and writable by its owner only. A missing file is made the same way.
// Failures are not reported: the settings object then opens whatever stands at `path`.
// Returns the file's size in bytes as it then stands, -1 when there is none (the size check of
// the view's opening uses it: one stat less per view). Safe to call from several threads at once.
qint64 cfgq_prepare_settings_file(const QString& path, bool temporary);

// Call once a settings object has opened its file, while it stands at the file's root. Records
// the file as this process's settings objects now know it. When Qt reads the file with a format
// error (status FormatError once every section is parsed; checked again only after the file
// changed), keeps a byte-exact copy of it at its path with ".format-error" appended, replacing an
// older copy, so that the next write, which keeps only what Qt could read, loses nothing for
// good. The copy is replaced only by bytes that Qt also reads with a format error. The file
// itself stays where it is and is used as Qt read it.
void cfgq_settings_file_opened(const QSettings& settings);

// The size and modification time of the file at `path`, and (POSIX) its inode and the time of its
// last change in nanoseconds, which tell a replaced file from an untouched one; -1 for all when
// there is no file.
struct cfgq_file_state {
  qint64 size = -1;
  qint64 modified_ms = -1;
  qint64 inode = -1;
  qint64 changed_ns = -1;
  bool operator==(const cfgq_file_state& other) const {
    return size == other.size && modified_ms == other.modified_ms && inode == other.inode &&
           changed_ns == other.changed_ns;
  }
};
cfgq_file_state cfgq_state_of(const QString& path);

// Call just before a settings object on `path` is destroyed (which writes its changes). Does what
// cfgq_prepare_settings_file does for a file replaced behind Qt's back, so that the write reads
// the other process's change first, and returns the file's state for cfgq_settings_file_written.
cfgq_file_state cfgq_settings_file_closing(const QString& path);

// Call after a settings object on `path` has been destroyed, with the state that
// cfgq_settings_file_closing returned: when the destruction wrote the file, records it as this
// process's settings objects now know it, and as free of format errors (Qt writes only what it
// parsed). For the process's temporary settings file (`temporary`), also makes the file readable
// and writable by its owner only again if the write created it afresh.
void cfgq_settings_file_written(const QString& path, const cfgq_file_state& before, bool temporary);

// True for a name that a killed writer's temporary of the file named `file_name` can have:
// `file_name`, ".", then six ASCII letters. Letters of one case only (as in "backup" or "OLDONE")
// count only when `one_case_too` is set: such names are also what a person gives a copy.
bool cfgq_is_stale_temporary_name(const QString& name, const QString& file_name, bool one_case_too);
