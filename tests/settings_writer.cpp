// A writer on the settings file as the suite's tools write it: one view per value, destroyed
// right after the write. The reliability tests start several of these at once, or kill one at a
// random moment, and then check that the file holds every value whose view was destroyed.
//
//   settings_writer loop NAME LOG           writes General/NAME_<i> = "NAME:<i>" for i = 0, 1, ...
//                                           until the process is killed
//   settings_writer count NAME COUNT        counts General/NAME up from 0 to COUNT - 1 in fixed-
//                                           width text, checking before each step that the file
//                                           still holds the previous step; exits 1 on a lost step
//   settings_writer check LOG...            checks every value logged by a writer; prints
//                                           "checked N missing M" and exits 1 when M > 0
//   settings_writer one KEY VALUE           writes one value, as a short-lived tool does
//   settings_writer event KEY VALUE         writes one value that Qt flushes from the event loop
//                                           while the view still stands, as a graphical tool does
//   settings_writer hold FILE               holds FILE's lock until killed, as a stopped writer
//   settings_writer raw FILE COUNT          writes COUNT values of 90 bytes to FILE with Qt alone
//                                           (no library) and exits with QSettings' status
//
// With LOG, each value's key is appended to LOG as one line once its view has been destroyed,
// so a line in the log means the value had reached the file when the process died.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>
#ifdef _WIN32
#include <windows.h>
#define O_CLOEXEC _O_NOINHERIT
#define pause() Sleep(INFINITE)
#endif

#include <QCoreApplication>
#include <QFile>
#include <QLockFile>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "cfgq.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

QString value_for(const QString& key) {
  // "NAME_<i>" holds "NAME:<i>": a value that tells which write it came from.
  QString value = key;
  value[key.lastIndexOf(QLatin1Char('_'))] = QLatin1Char(':');
  return value;
}

// Appends one line with a single write(2), so a killed writer leaves whole lines only.
bool log_line(int fd, const QString& key) {
  const QByteArray line = key.toUtf8() + '\n';
  return ::write(fd, line.constData(), static_cast<size_t>(line.size())) == line.size();
}

int write_values(const QString& name, const char* log_path) {
  const int log = ::open(log_path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (log < 0) {
    std::fprintf(stderr, "settings_writer: %s: %s\n", log_path, std::strerror(errno));
    return 2;
  }
  for (long i = 0;; ++i) {
    const QString key = name + QLatin1Char('_') + QString::number(i);
    {
      Key view(Key::GENERAL, nullptr, nullptr);
      view.set_value(key, value_for(key));
    }
    if (!log_line(log, key)) return 2;
  }
}

// Every step leaves the file the same size, as a tool that updates a window size or a counter
// does; another process's step of the same size must still be seen.
int count_up(const QString& name, long count) {
  long lost = 0;
  for (long i = 0; i < count; ++i) {
    Key view(Key::GENERAL, nullptr, nullptr);
    QVariant previous;
    if (i > 0 && (!view.get_value(name, &previous) || previous.toLongLong() != i - 1)) ++lost;
    view.set_value(name, QStringLiteral("%1").arg(i, 8, 10, QLatin1Char('0')));
  }
  if (lost != 0)
    std::fprintf(stderr, "settings_writer: %ld lost steps of %s\n", lost, qPrintable(name));
  return lost == 0 ? 0 : 1;
}

int check_logs(int count, char** logs) {
  long checked = 0;
  long missing = 0;
  Key view(Key::GENERAL, nullptr, nullptr);
  for (int i = 0; i < count; ++i) {
    QFile log(QString::fromLocal8Bit(logs[i]));
    if (!log.open(QIODevice::ReadOnly)) continue;  // a writer killed before its first value
    for (const QByteArray& line : log.readAll().split('\n')) {
      if (line.isEmpty()) continue;
      const QString key = QString::fromUtf8(line);
      QVariant stored;
      ++checked;
      if (!view.get_value(key, &stored) || stored.toString() != value_for(key)) {
        std::fprintf(stderr, "settings_writer: lost %s\n", line.constData());
        ++missing;
      }
    }
  }
  std::printf("checked %ld missing %ld\n", checked, missing);
  return missing == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "loop" && argc == 4) return write_values(QString::fromLocal8Bit(argv[2]), argv[3]);
  if (mode == "count" && argc == 4) {
    return count_up(QString::fromLocal8Bit(argv[2]), std::strtol(argv[3], nullptr, 10));
  }
  if (mode == "check" && argc >= 3) return check_logs(argc - 2, argv + 2);
  if (mode == "hold" && argc == 3) {
    // Takes the lock of the settings file at argv[2] and keeps it until killed, as a writer
    // stopped in the middle of its write does.
    QLockFile lock(QString::fromLocal8Bit(argv[2]) + QStringLiteral(".lock"));
    if (!lock.tryLock(10'000)) return 1;
    std::printf("locked\n");
    std::fflush(stdout);
    for (;;) ::pause();
  }
  if (mode == "raw" && argc == 4) {
    QSettings raw(QString::fromLocal8Bit(argv[2]), QSettings::IniFormat);
    for (long i = 0; i < std::strtol(argv[3], nullptr, 10); ++i) {
      raw.setValue(QStringLiteral("k%1").arg(i), QString(90, QLatin1Char('x')));
    }
    raw.sync();
    return raw.status();
  }
  if (mode == "one" && argc == 4) {
    // One value through one view, as a short-lived tool writes.
    Key view(Key::GENERAL, nullptr, nullptr);
    view.set_value(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    return 0;
  }
  if (mode == "event" && argc == 4) {
    QCoreApplication app(argc, argv);
    Key view(Key::GENERAL, nullptr, nullptr);
    view.set_value(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    QCoreApplication::processEvents();
    return 0;
  }
  std::fprintf(stderr,
               "usage: settings_writer loop NAME LOG | count NAME COUNT | check LOG... | "
               "one KEY VALUE | event KEY VALUE | hold FILE | raw FILE COUNT\n");
  return 2;
}
