// A file's lock among processes, "<file>.lock", as every writer of the settings file and of the
// environment stores takes it: tried at once, then waited for a bounded time (a stopped or
// hostile holder never blocks a writer for ever). Liveness comes from the lock file's system
// lock only (see cfgq_platform::lock_file).
// May use: cfgq_file_platform.
#pragma once

#include <mutex>

#include <QString>

#include "cfgq_file_platform.h"

// How long a write waits for another process's lock before it gives up: KORVEL_LOCK_WAIT_MS
// milliseconds, 10,000 by default.
qint64 cfgq_lock_wait_ms();

class cfgq_file_lock {
 public:
  // The lock of the file at `file` ("<file>.lock" beside it).
  explicit cfgq_file_lock(const QString& file);
  // Takes the lock; `guard`, when it holds a mutex, is given back for any wait and taken again
  // before this returns (no mutex is ever held across the wait). False after the wait; *why then
  // says who holds it (*holder: its process id, when it runs on this host), or why the lock
  // can't be made.
  bool take(QString* why, qint64* holder, std::unique_lock<std::mutex>* guard = nullptr);

 private:
  cfgq_platform::lock_file::attempt wait(QString* failure);

  QString m_path;
  cfgq_platform::lock_file m_lock;
};
