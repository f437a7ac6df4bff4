// A write of a file that did not happen, or not completely: what the file layer records for
// those who ask afterwards (the cfgq tool, whose exit status tells it). The public interface
// keeps its own results; this is the outcome beside them.
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <QString>

struct cfgq_write_failure {
  QString path;            // the file
  QString reason;          // the system's reason, as a person reads it
  long long lock_pid = 0;  // the process holding the file's lock, when that was the reason
};

// Records `failure` unless an earlier one waits to be taken.
void cfgq_file_note_failure(const cfgq_write_failure& failure);

// Takes the first failure recorded since the last call: true and *failure filled, or false when
// every write since then succeeded.
bool cfgq_file_take_failure(cfgq_write_failure* failure);
