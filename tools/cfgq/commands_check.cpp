// The check command: a health report of the settings file and what lies beside it. It only
// looks: it opens no view (which could set the file aside or remove a lock) and writes nothing.
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStringDecoder>

#include "cfgq_tool.h"
#include "cli.h"
#include "settings_snapshot.h"

namespace cli {
namespace {

// Above this share of max_file_bytes, one large value can push the file past the limit.
constexpr qint64 warn_percent = 80;

QString number(qint64 n) { return QLocale(QLocale::English).toString(n); }

class report {
 public:
  void finding(const QString& about, const QString& what) {
    print(QStringLiteral("%1: %2\n").arg(about, what));
    ++m_findings;
  }
  int findings() const { return m_findings; }

 private:
  int m_findings = 0;
};

void check_size(const QString& path, qint64 size, report* out) {
  const qint64 percent = size * 100 / max_file_bytes;
  if (cfgq_over_file_limit(size)) {
    out->finding(path, QStringLiteral("%1 bytes, over the %2-byte limit: the next program that "
                                      "opens it sets every setting aside as %3.large")
                           .arg(number(size), number(max_file_bytes), QFileInfo(path).fileName()));
  } else if (percent >= warn_percent) {
    out->finding(path, QStringLiteral("%1 bytes, %2% of the %3-byte limit (room left: %4): "
                                      "'cfgq set' and 'cfgq import' refuse what would not fit "
                                      "(see 'cfgq show' for what grew)")
                           .arg(number(size)).arg(percent).arg(number(max_file_bytes), room_left(size)));
  }
}

// Lines of the file that are not valid UTF-8: their text can't be read back as written.
void check_encoding(const QString& path, const QByteArray& bytes, report* out) {
  qsizetype line_number = 0;
  qsizetype bad_lines = 0;
  qsizetype first_bad = 0;
  for (const QByteArray& line : bytes.split('\n')) {
    ++line_number;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder.decode(line);  // decoding happens on conversion
    if (!decoder.hasError()) continue;
    if (bad_lines++ == 0) first_bad = line_number;
  }
  if (bad_lines == 0) return;
  out->finding(path, QStringLiteral("%1 with bytes that are not UTF-8 (first: line %2); such "
                                    "text reads back as U+FFFD")
                         .arg(count_of(bad_lines, "line", "lines"))
                         .arg(first_bad));
}

// The state letter of /proc/PID/stat ("R", "S", "T", ...), empty when no such process runs.
QString process_state(qint64 pid, QString* name) {
  QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
  if (!stat.open(QIODevice::ReadOnly)) return QString();
  const QByteArray text = stat.readAll();
  // "PID (name) S ...": the name may hold blanks and parentheses, so the last ")" ends it.
  const qsizetype open = text.indexOf('(');
  const qsizetype close = text.lastIndexOf(')');
  if (open < 0 || close < open || close + 2 >= text.size()) return QString();
  *name = QString::fromUtf8(text.mid(open + 1, close - open - 1));
  return QString(QLatin1Char(text.at(close + 2)));
}

void check_lock(const QString& path, report* out) {
  const cfgq_lock_report lock = cfgq_tool_lock_report(path);
  if (lock.locks_stay_local) {
    out->finding(path, QStringLiteral("lies on a mount whose locks stay on this host (nolock or "
                                      "local_lock=): writers on other hosts are not kept apart; "
                                      "mount it with working locks, or write it from one host"));
  }
  if (!lock.exists) return;
  const QString lock_path = path + QStringLiteral(".lock");
  const QString where = lock.host.isEmpty() ? QString()
                        : lock.this_host    ? QStringLiteral(" on this host")
                                            : QStringLiteral(" on host %1").arg(lock.host);
  const QString who = lock.pid > 0 ? QStringLiteral("process %1 (%2)%3")
                                         .arg(lock.pid)
                                         .arg(lock.program.isEmpty() ? QStringLiteral("unknown")
                                                                     : lock.program, where)
                                   : QStringLiteral("a process that wrote no name");
  if (!lock.held) {
    const QString when = lock.this_host || lock.host.isEmpty() || lock.age_ms >= cfgq_tool_lock_wait_ms()
                             ? QStringLiteral("the next write takes it over")
                             : QStringLiteral("the next write takes it over once it is %1 ms old")
                                   .arg(cfgq_tool_lock_wait_ms());
    out->finding(lock_path, QStringLiteral("left by %1, which no longer holds it; %2").arg(who, when));
    return;
  }
  QString name;
  if (lock.this_host && lock.pid > 0) {
    const QString state = process_state(lock.pid, &name);
    if (state == QLatin1String("T") || state == QLatin1String("t")) {
      out->finding(lock_path, QStringLiteral("held by %1, which is stopped: writers wait for it, "
                                             "then fail; resume it (kill -CONT %2) or end it")
                                  .arg(who)
                                  .arg(lock.pid));
      return;
    }
  }
  out->finding(lock_path, QStringLiteral("held by %1 for %2 ms; writers wait up to %3 ms for it, "
                                         "then fail")
                              .arg(who)
                              .arg(lock.age_ms)
                              .arg(cfgq_tool_lock_wait_ms()));
}

void check_set_aside_copies(const QString& path, report* out) {
  for (const char* suffix : {cfgq_large_suffix, cfgq_corrupt_suffix, cfgq_format_error_suffix}) {
    const QFileInfo copy(path + QLatin1String(suffix));
    if (!copy.exists()) continue;
    out->finding(copy.filePath(),
                 QStringLiteral("a set-aside copy (%1 bytes, %2) waiting for 'cfgq recover'")
                     .arg(number(copy.size()),
                          copy.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm"))));
  }
}

#ifdef _WIN32
// On Windows a file in the profile takes the profile's access list, which is the user's own;
// the check reads no access lists.
void check_permissions(const QString&, report*) {}
#else
QString mode_text(mode_t mode) { return QStringLiteral("0%1").arg(mode & 07777, 3, 8, QLatin1Char('0')); }

void check_permissions(const QString& path, report* out) {
  struct stat st {};
  if (::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISREG(st.st_mode)) {
    if ((st.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
      out->finding(path, QStringLiteral("others may change it (mode %1); chmod 600 makes it yours alone")
                             .arg(mode_text(st.st_mode)));
    } else if ((st.st_mode & (S_IRGRP | S_IROTH)) != 0) {
      out->finding(path, QStringLiteral("others may read it (mode %1); chmod 600 makes it yours alone")
                             .arg(mode_text(st.st_mode)));
    }
    if (st.st_uid != ::getuid()) {
      out->finding(path, QStringLiteral("belongs to another user (uid %1)").arg(st.st_uid));
    }
  }
  const QString directory = QFileInfo(path).absolutePath();
  if (::stat(QFile::encodeName(directory).constData(), &st) == 0 &&
      (st.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    out->finding(directory, QStringLiteral("others may write this directory (mode %1), and so "
                                           "replace the settings file")
                                .arg(mode_text(st.st_mode)));
  }
}
#endif

int run_check(const invocation&) {
  const QString path = settings_file_path();
  report out;
  settings_snapshot snapshot;
  const QFileInfo file(path);
  if (file.exists() && !file.isFile()) {
    out.finding(path, QStringLiteral("not a regular file; no program can keep settings in it"));
  } else if (!read_file_bytes(path, &snapshot.bytes, &snapshot.exists, &snapshot.unreadable)) {
    out.finding(path, QStringLiteral("can't be read: %1").arg(snapshot.unreadable));
  } else if (snapshot.exists) {
    check_size(path, file.size(), &out);
    check_encoding(path, snapshot.bytes, &out);
    parse_settings(snapshot.bytes, QString(), &snapshot);
    if (!snapshot.unreadable.isEmpty()) {
      out.finding(path, snapshot.unreadable);
    } else if (snapshot.format_error) {
      out.finding(path, QStringLiteral("format errors: damaged lines are skipped, and the next "
                                       "program that opens it keeps a copy as %1.format-error")
                            .arg(file.fileName()));
    }
  }
  check_lock(path, &out);
  check_set_aside_copies(path, &out);
  check_permissions(path, &out);
  if (out.findings() > 0) return exit_absent;
  if (!snapshot.exists) {
    print(QStringLiteral("%1: healthy (not created yet; no settings stored)\n").arg(path));
  } else {
    print(QStringLiteral("%1: healthy (%2 bytes, %3% of the %4-byte limit; room left: %5)\n")
              .arg(path, number(file.size()))
              .arg(file.size() * 100 / max_file_bytes)
              .arg(number(max_file_bytes), room_left(file.size())));
  }
  return exit_ok;
}

}  // namespace

std::vector<command> check_commands() {
  return {
      {"check", "", 0, 0, "a health report of the settings file",
       "Looks at the settings file and what lies beside it and prints one line per finding:\n"
       "a file above 80% of the 10,000,000-byte limit (the next large value would set every\n"
       "setting aside) or over it, format errors, bytes that are not UTF-8, a lock left by a\n"
       "process that no longer runs or is stopped, set-aside copies waiting for 'cfgq recover',\n"
       "and a file others may read or change (or a directory they may write).\n"
       "Exit status 0 when all is well (one line says so, with the room left below the\n"
       "limit), 1 when something needs attention.\n"
       "It changes nothing and reads the file directly, so it is safe on a damaged file.",
       nullptr, run_check},
  };
}

}  // namespace cli
