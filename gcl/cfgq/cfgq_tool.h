// What the cfgq tool asks the library beyond the public header: where the settings file is,
// whether the run is isolated, the running main key, and whether a write of the settings file
// failed. Nothing here opens a view or touches the file.
// May use: cfgq_export, cfgq_file_failure, cfgq_file_location, cfgq_file_lock, cfgq_file_platform,
//   cfgq_file_write, cfgq_limits.
#pragma once

#include <memory>

#include <QList>
#include <QPair>
#include <QString>

#include "cfgq_export.h"
#include "cfgq_file_failure.h"
#include "cfgq_limits.h"

// The settings file that a view opened now would use (the profile's korvel2.kreg, or the
// process's temporary file in an isolated run).
CFGQ_EXPORT QString cfgq_tool_settings_file();

// True when views of this process use the temporary file; *why then names the cause, such as
// "QT_QPA_PLATFORM=minimal", "PBUILD_BUILD=1" or "KORVEL_REGTEST=1".
CFGQ_EXPORT bool cfgq_tool_isolated_run(QString* why);

// The running version's main key ("25.1_pro"), as a view's constructor names it.
CFGQ_EXPORT QString cfgq_tool_main_key();

// Takes the first write failure recorded since the last call: true and *failure filled when a
// view's write failed, false when every write since then succeeded.
CFGQ_EXPORT bool cfgq_tool_take_write_failure(cfgq_write_failure* failure);

// What the lock of the settings file at `path` ("<path>.lock") says, for a report. Whether its
// holder runs is told by the system lock alone; pid, program and host are what the file names.
struct cfgq_lock_report {
  bool exists = false;        // a lock file stands
  bool held = false;          // some process, on some host, holds its system lock
  long long pid = 0;          // 0 when the file names none
  QString program;
  QString host;
  bool this_host = false;     // the host named is this one
  long long age_ms = 0;       // since the lock file was made
  bool locks_stay_local = false;  // the file lies where locks don't reach other hosts
};
CFGQ_EXPORT cfgq_lock_report cfgq_tool_lock_report(const QString& path);

// Replaces the file at `path` (or the regular file a link there names) with `bytes` as the
// library writes its own files: under the file's lock, staged beside it, every write checked,
// synced, renamed over it; the old file's owner and mode, the user's alone for a new one. False,
// with the reason in *why, when the file was left as it was.
CFGQ_EXPORT bool cfgq_tool_replace_file(const QString& path, const QByteArray& bytes, QString* why);

// How long writers wait for a held lock, in milliseconds (KORVEL_LOCK_WAIT_MS).
CFGQ_EXPORT long long cfgq_tool_lock_wait_ms();

// The persistent environment stores beyond cfgq_setenv: where they are, what they hold, and
// removing a variable. A failed store write of cfgq_setenv is reported through
// cfgq_tool_take_write_failure.
struct cfgq_env_store {
  QString scope;    // "user" or "system", as cfgq_setenv reports it
  QString path;     // the store's file (registry key on Windows); empty when there is none
  QString problem;  // why there is no path, or why the session can't use the store as it stands
};

CFGQ_EXPORT cfgq_env_store cfgq_tool_env_store(bool system);

// The text the store at `path` holds for `name`, before expansion; false when it holds none.
CFGQ_EXPORT bool cfgq_tool_env_text(const QString& path, const QString& name, QString* text);

// Every variable the store at `path` holds, name and text, in the store's order.
CFGQ_EXPORT QList<QPair<QString, QString>> cfgq_tool_env_variables(const QString& path);

// Holds a lock of the tool's own for a whole `setenv` (its read of the current value and its
// write; cfgq_setenv itself takes no lock across its steps), so that concurrent calls through
// the tool keep every change, a list's appended items included. Released when the returned
// object goes. Null, with *why, when the lock could not be had within the lock wait.
CFGQ_EXPORT std::shared_ptr<void> cfgq_tool_hold_env_lock(QString* why);

// Removes `name` from the store at `path`; false, with *why, when the store could not be written.
CFGQ_EXPORT bool cfgq_tool_env_remove(const QString& path, const QString& name, QString* why);
