// The watch command: prints each value that changes as other processes write the settings
// file, until SIGINT or SIGTERM (on Windows Ctrl-C, Ctrl-Break or the console's closing) ends it.
#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#endif

#include <cerrno>
#include <cstdio>
#include <memory>

#include <QCoreApplication>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLocale>
#include <QSocketNotifier>
#include <QTimer>

#include "cfgq_tool.h"
#include "cli.h"
#include "export_format.h"
#include "settings_snapshot.h"

namespace cli {
namespace {

#ifdef _WIN32
// Quits the event loop on Ctrl-C, Ctrl-Break or the console's closing. The handler runs on a
// thread of the system's and queues the quit to the loop; it is removed when the object goes.
class stop_on_signals {
 public:
  stop_on_signals() : m_installed(::SetConsoleCtrlHandler(on_event, TRUE) != 0) {}
  ~stop_on_signals() {
    if (m_installed) ::SetConsoleCtrlHandler(on_event, FALSE);
  }
  stop_on_signals(const stop_on_signals&) = delete;
  stop_on_signals& operator=(const stop_on_signals&) = delete;

  bool installed() const { return m_installed; }

 private:
  static BOOL WINAPI on_event(DWORD) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
    return TRUE;
  }
  bool m_installed;
};
#else
// Quits the event loop on SIGINT or SIGTERM. The handler only writes a byte to a pipe; the loop
// reads it. The previous handlers come back when the object goes.
class stop_on_signals {
 public:
  stop_on_signals() {
    if (::pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    write_end = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    struct sigaction action {};
    action.sa_handler = on_signal;
    sigemptyset(&action.sa_mask);
    m_installed = ::sigaction(SIGINT, &action, &m_old_int) == 0 &&
                  ::sigaction(SIGTERM, &action, &m_old_term) == 0;
  }
  ~stop_on_signals() {
    if (m_installed) {
      ::sigaction(SIGINT, &m_old_int, nullptr);
      ::sigaction(SIGTERM, &m_old_term, nullptr);
    }
    m_notifier.reset();
    write_end = -1;
    for (const int fd : m_pipe) {
      if (fd >= 0) ::close(fd);
    }
  }
  stop_on_signals(const stop_on_signals&) = delete;
  stop_on_signals& operator=(const stop_on_signals&) = delete;

  bool installed() const { return m_installed; }

 private:
  static void on_signal(int) {
    const int saved = errno;
    const char byte = 1;
    if (write_end >= 0) (void)!::write(write_end, &byte, 1);
    errno = saved;
  }

  static inline volatile sig_atomic_t write_end = -1;
  int m_pipe[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> m_notifier;
  struct sigaction m_old_int {};
  struct sigaction m_old_term {};
  bool m_installed = false;
};
#endif

// A value as a line shows it: long ones are cut, as in `show`.
QString shown(const QVariant& value) {
  constexpr qsizetype most_shown = 200;
  const QString text = value_for_display(value);
  if (text.size() <= most_shown) return text;
  return QStringLiteral("%1... (%2 characters)")
      .arg(text.left(most_shown), QLocale(QLocale::English).toString(text.size()));
}

class settings_watch {
 public:
  settings_watch(QString path, QString group, bool json)
      : m_path(std::move(path)), m_group(std::move(group)), m_json(json) {}

  // Takes the first snapshot and starts watching; false, with *why, when it can't.
  bool start(QString* why) {
    const QString directory = QFileInfo(m_path).absolutePath();
    if (!QFileInfo(directory).isDir()) {
      *why = QStringLiteral("the settings file's directory %1 does not exist").arg(directory);
      return false;
    }
    // The file is replaced by a rename on every write, so its directory is watched by name; a
    // short pause lets a writer's lock, temporary and rename settle into one look. The pause is
    // not restarted by later notices, so that a steady stream of writes is still looked at.
    m_settle.setSingleShot(true);
    m_settle.setInterval(20);
    QObject::connect(&m_settle, &QTimer::timeout, [this] { look(); });
    const auto changed = [this] {
      if (!m_settle.isActive()) m_settle.start();
    };
    QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, changed);
    QObject::connect(&m_watcher, &QFileSystemWatcher::fileChanged, changed);
    if (!m_watcher.addPath(directory)) {
      // No change notices here (a limit on watches, a file system without them): look twice a second.
      QObject::connect(&m_poll, &QTimer::timeout, [this] { look(); });
      m_poll.start(500);
    }
    watch_file();
    // The first snapshot comes after the watch is in place, so that no write falls between.
    m_last = read_settings(m_path, m_group);
    if (!m_last.unreadable.isEmpty()) note(QStringLiteral("%1: %2").arg(m_path, m_last.unreadable));
    return true;
  }

 private:

  // In-place writes change the file, not the directory: the file is watched too, again after
  // each rename has put a new file at its name.
  void watch_file() {
    if (m_poll.isActive() || m_watcher.files().contains(m_path)) return;
    if (QFileInfo(m_path).isFile()) m_watcher.addPath(m_path);
  }

  void look() {
    watch_file();
    settings_snapshot now;
    if (!read_file_bytes(m_path, &now.bytes, &now.exists, &now.unreadable)) {
      // Keeps the last values: an unreadable moment says nothing about what changed.
      if (now.unreadable != m_last.unreadable) note(QStringLiteral("%1: %2").arg(m_path, now.unreadable));
      m_last.unreadable = now.unreadable;
      return;
    }
    if (now.exists == m_last.exists && now.bytes == m_last.bytes && m_last.unreadable.isEmpty()) return;
    if (!now.exists && m_last.exists) note(QStringLiteral("%1 was removed").arg(m_path));
    parse_settings(now.bytes, m_group, &now);
    if (!now.unreadable.isEmpty()) {
      note(QStringLiteral("%1: %2").arg(m_path, now.unreadable));
      m_last.unreadable = now.unreadable;
      return;
    }
    if (now.format_error && !m_last.format_error) {
      note(QStringLiteral("%1 now reads with format errors; damaged lines are skipped").arg(m_path));
    }
    report(m_last.values, now.values);
    m_last = std::move(now);
  }

  void report(const QMap<QString, QVariant>& before, const QMap<QString, QVariant>& after) const {
    // Both maps are sorted by key path: one pass over the two gives the changes in that order.
    auto old_it = before.constBegin();
    auto new_it = after.constBegin();
    while (old_it != before.constEnd() || new_it != after.constEnd()) {
      if (new_it == after.constEnd() || (old_it != before.constEnd() && old_it.key() < new_it.key())) {
        emit_change(old_it.key(), &old_it.value(), nullptr);
        ++old_it;
      } else if (old_it == before.constEnd() || new_it.key() < old_it.key()) {
        emit_change(new_it.key(), nullptr, &new_it.value());
        ++new_it;
      } else {
        if (old_it.value() != new_it.value()) emit_change(new_it.key(), &old_it.value(), &new_it.value());
        ++old_it;
        ++new_it;
      }
    }
    std::fflush(stdout);
  }

  void emit_change(const QString& key, const QVariant* old_value, const QVariant* new_value) const {
    // Key paths below the main key: the section, when one was given, comes first.
    const qsizetype slash = m_group.indexOf(QLatin1Char('/'));
    const QString path = slash < 0 ? key : m_group.mid(slash + 1) + QLatin1Char('/') + key;
    // The migration marker is no setting, as in `show`.
    if (slash < 0 && key == QLatin1String(cfgq_registry_version_name)) return;
    const char* event = old_value == nullptr ? "added" : new_value == nullptr ? "removed" : "changed";
    if (m_json) {
      // Written member by member, to keep the order event, key, old, new.
      QString line = QStringLiteral("{\"event\":\"%1\",\"key\":%2")
                         .arg(QLatin1String(event), json_text(QJsonValue(path)));
      if (old_value != nullptr) line += QStringLiteral(",\"old\":") + json_text(value_to_json(*old_value));
      if (new_value != nullptr) line += QStringLiteral(",\"new\":") + json_text(value_to_json(*new_value));
      print(line + QStringLiteral("}\n"));
    } else if (old_value == nullptr) {
      print(QStringLiteral("added %1 = %2\n").arg(path, shown(*new_value)));
    } else if (new_value == nullptr) {
      print(QStringLiteral("removed %1 (was %2)\n").arg(path, shown(*old_value)));
    } else {
      print(QStringLiteral("changed %1: %2 -> %3\n").arg(path, shown(*old_value), shown(*new_value)));
    }
  }

  const QString m_path;
  const QString m_group;  // main key, then the section when one was given
  const bool m_json;
  settings_snapshot m_last;
  QFileSystemWatcher m_watcher;
  QTimer m_settle;
  QTimer m_poll;
};

void add_watch_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("json"),
                    QStringLiteral("Print one JSON object per change: {\"event\": \"changed\", "
                                   "\"key\": \"General/Width\", \"old\": 640, \"new\": 800}.")});
  add_main_key_option(parser);
}

int run_watch(const invocation& call) {
  // The main key comes from the library without a view: a view could set the file aside.
  const QString main_key = call.options.isSet(QStringLiteral("main-key"))
                               ? call.options.value(QStringLiteral("main-key"))
                               : cfgq_tool_main_key();
  QString group = main_key;
  if (!call.args.isEmpty()) {
    QString why;
    const std::optional<QString> section = resolve_section(call.args.first(), &why);
    if (!section) return fail(call.command, why, exit_usage);
    group += QLatin1Char('/') + *section;
  }
  const QString path = settings_file_path();
  const stop_on_signals stop;
  if (!stop.installed()) {
    return fail(call.command, QStringLiteral("can't catch SIGINT and SIGTERM"), exit_failed);
  }
  settings_watch watch(path, group, call.options.isSet(QStringLiteral("json")));
  QString why;
  if (!watch.start(&why)) return fail(call.command, why, exit_failed);
  note(QStringLiteral("watching %1 for changes below %2; Ctrl-C ends").arg(path, group));
  QCoreApplication::exec();
  return exit_ok;
}

}  // namespace

std::vector<command> watch_commands() {
  return {
      {"watch", "[SECTION] [--json]", 0, 1, "print each value that changes, as it changes",
       "Prints a line for each value of the running version's settings (or of one section) that\n"
       "another process adds, changes or removes, until interrupted (Ctrl-C, SIGINT or SIGTERM\n"
       "end it with exit status 0):\n"
       "  added General/Width = 640\n"
       "  changed General/Width: 640 -> 800\n"
       "  removed General/Width (was 800)\n"
       "Key paths are below the main key. With --json, each change is one JSON object on a\n"
       "line, values in the export notation ('cfgq help export'); \"old\" is absent for an added\n"
       "value and \"new\" for a removed one. The settings file is read, never written.\n"
       "Changes that follow each other quickly may be reported as one (a value set twice in a\n"
       "moment may show only its last change); a value's final state is always reported. The\n"
       "migration marker Registry_version is not reported.",
       add_watch_options, run_watch},
  };
}

}  // namespace cli
