// What the cfgq tool asks the library beyond the public header: where the settings file is,
// whether the run is isolated, the running main key, and whether a write of the settings file
// failed. Nothing here opens a view or touches the file.
#pragma once

#include <QString>

#include "cfgq_export.h"

// The settings file that a view opened now would use (the profile's korvel2.kreg, or the
// process's temporary file in an isolated run).
CFGQ_EXPORT QString cfgq_tool_settings_file();

// True when views of this process use the temporary file; *why then names the cause, such as
// "QT_QPA_PLATFORM=minimal", "PBUILD_BUILD=1" or "KORVEL_REGTEST=1".
CFGQ_EXPORT bool cfgq_tool_isolated_run(QString* why);

// The running version's main key ("25.1_pro"), as a view's constructor names it.
CFGQ_EXPORT QString cfgq_tool_main_key();

// A write of the settings file that did not happen, or did not happen completely.
struct cfgq_write_failure {
  QString path;            // the settings file
  QString reason;          // the system's reason, as a person reads it
  long long lock_pid = 0;  // the process holding the file's lock, when that was the reason
};

// Takes the first write failure recorded since the last call: true and *failure filled when a
// view's write failed, false when every write since then succeeded.
CFGQ_EXPORT bool cfgq_tool_take_write_failure(cfgq_write_failure* failure);

// Records a write failure for cfgq_tool_take_write_failure (the library's file layer calls it).
void cfgq_note_write_failure(const cfgq_write_failure& failure);
