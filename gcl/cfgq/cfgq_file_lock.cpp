// Taking a file's lock among processes within the lock wait.
#include "cfgq_file_lock.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <random>
#include <thread>

#include <QElapsedTimer>

namespace platform = cfgq_platform;

namespace {

constexpr qint64 default_lock_wait_ms = 10'000;

qint64 number_from_environment(const char* name, qint64 fallback) {
  const char* text = std::getenv(name);
  if (text == nullptr || *text == '\0') return fallback;
  char* end = nullptr;
  const long long value = std::strtoll(text, &end, 10);
  return (end != nullptr && *end == '\0' && value >= 0) ? value : fallback;
}

}  // namespace

qint64 cfgq_lock_wait_ms() {
  return number_from_environment("KORVEL_LOCK_WAIT_MS", default_lock_wait_ms);
}

cfgq_file_lock::cfgq_file_lock(const QString& file)
    : m_path(file + QStringLiteral(".lock")), m_lock(m_path, cfgq_lock_wait_ms()) {}

bool cfgq_file_lock::take(QString* why, qint64* holder, std::unique_lock<std::mutex>* guard) {
  QString failure;
  platform::lock_file::attempt attempt = m_lock.try_take(&failure);
  if (attempt == platform::lock_file::attempt::held) {
    const bool release = guard != nullptr && guard->owns_lock();
    if (release) guard->unlock();
    attempt = wait(&failure);
    if (release) guard->lock();
  }
  if (attempt == platform::lock_file::attempt::taken) return true;
  if (attempt == platform::lock_file::attempt::failed) {
    *why = QStringLiteral("its lock file can't be made: ") + failure;
    return false;
  }
  const qint64 wait_ms = cfgq_lock_wait_ms();
  platform::lock_holder who;
  if (platform::read_lock_holder(m_path, &who)) {
    QString state;
    if (who.this_host) {
      *holder = who.pid;
      if (platform::process_is_stopped(who.pid)) state = QStringLiteral(", stopped");
    } else {
      state = QStringLiteral(", on host ") + who.host;
    }
    *why = QStringLiteral("locked by process %1 (%2%3) for more than %4 ms")
               .arg(who.pid)
               .arg(who.program.isEmpty() ? QStringLiteral("unknown") : who.program, state)
               .arg(wait_ms);
  } else {
    *why = QStringLiteral("locked by another process for more than %1 ms").arg(wait_ms);
  }
  return false;
}

platform::lock_file::attempt cfgq_file_lock::wait(QString* failure) {
  // Short, jittered polls: a waiter that sleeps long loses the lock to every writer that comes
  // after it.
  const qint64 wait_ms = cfgq_lock_wait_ms();
  QElapsedTimer waited;
  waited.start();
  std::minstd_rand jitter(static_cast<unsigned>(platform::this_process()) ^
                          static_cast<unsigned>(
                              std::hash<std::thread::id>()(std::this_thread::get_id())));
  for (;;) {
    const platform::lock_file::attempt attempt = m_lock.try_take(failure);
    if (attempt != platform::lock_file::attempt::held || waited.elapsed() >= wait_ms) {
      return attempt;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(500 + jitter() % 2'000));
  }
}
