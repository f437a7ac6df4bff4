// The cfgq tool's watch, check, completion and manual page, run as subprocesses on a fresh HOME
// per test: watch against a second process that writes, check over unhealthy setups.
#include <signal.h>
#include <sys/stat.h>

#include <functional>

#include <QDateTime>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QSysInfo>
#include <QThread>
#include <gtest/gtest.h>

#include "test_support.h"

namespace {

using cfgq_test::read_bytes;
using cfgq_test::write_file;

const QString tool = QStringLiteral(CFGQ_TOOL_PATH);

struct tool_result {
  int status = -1;
  QString out;
  QString err;
};

std::string text(const QString& s) { return s.toStdString(); }

class CliWatchCheckTest : public cfgq_test::SettingsTest {
 protected:
  tool_result run(const QStringList& args) const {
    QProcess process;
    process.start(tool, args);
    EXPECT_TRUE(process.waitForFinished(60'000)) << text(args.join(QLatin1Char(' ')));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
  }

  // Names, sizes, modes and times of everything in HOME: what check must leave as it found it.
  QStringList home_state() const {
    QStringList state;
    QDirIterator it(home(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
      const QFileInfo info(it.next());
      state << QStringLiteral("%1 %2 %3 %4").arg(info.fileName()).arg(info.size())
                   .arg(info.permissions()).arg(info.lastModified().toMSecsSinceEpoch());
    }
    state.sort();
    return state;
  }
};

// A child process that is stopped (SIGSTOP) while the test looks; killed with the object.
struct stopped_child {
  QProcess process;
  // With `lock`, the command takes that file's system lock (flock) first: stopped once it holds it.
  explicit stopped_child(const QStringList& command = {QStringLiteral("sleep"), QStringLiteral("60")},
                         const QString& lock = QString()) {
    process.start(command.first(), command.mid(1));
    process.waitForStarted();
    for (int i = 0; i < 200 && !lock.isEmpty() &&
                    QProcess::execute(QStringLiteral("flock"), {"-n", lock, "true"}) == 0;
         ++i) {
      QThread::msleep(10);
    }
    ::kill(static_cast<pid_t>(process.processId()), SIGSTOP);
    // The stop lands asynchronously; wait until the process table shows it.
    for (int i = 0; i < 200 && !read_bytes(stat_path()).contains(") T "); ++i) QThread::msleep(10);
  }
  ~stopped_child() {
    process.kill();
    process.waitForFinished();
  }
  QString stat_path() const { return QStringLiteral("/proc/%1/stat").arg(process.processId()); }
};

qint64 finished_process_id() {
  QProcess process;
  process.start(QStringLiteral("true"), QStringList());
  process.waitForStarted();
  const qint64 pid = process.processId();
  process.waitForFinished();
  return pid;
}

QByteArray lock_naming(qint64 pid) {
  return QByteArray::number(pid) + "\nkorvel_tool\n" + QSysInfo::machineHostName().toUtf8() + "\n";
}

TEST_F(CliWatchCheckTest, CheckReportsEachProblemOnOneLineAndChangesNothing) {
  const QByteArray healthy = "[25.1_pro]\nGeneral\\Width=640\n";
  const auto big_file = [&](qint64 size) {
    return healthy + "General\\History=" + QByteArray(size - healthy.size() - 17, 'x') + "\n";
  };
  std::unique_ptr<stopped_child> holder;
  const struct {
    const char* what;
    std::function<void()> setup;
    QStringList findings;  // one line each; none: healthy
  } cases[] = {
      {"no file yet", [] {}, {}},
      {"a private file", [&] { write_profile_file(healthy); }, {}},
      {"a file near the limit", [&] { write_profile_file(big_file(8'500'000)); },
       {"8,500,000 bytes, 85% of the 10,000,000-byte limit (room left: 1,500,000 bytes): 'cfgq set' and 'cfgq import' refuse"}},
      {"a file over the limit", [&] { write_profile_file(big_file(10'000'001)); }, {"10,000,001 bytes, over the 10,000,000-byte limit"}},
      {"format errors", [&] { write_profile_file(healthy + "this line lost its equals sign\n"); }, {"format errors: damaged lines are skipped"}},
      {"bytes that are not UTF-8", [&] { write_profile_file(healthy + "General\\Name=caf\xe9\n"); },
       {"1 line with bytes that are not UTF-8 (first: line 3)"}},
      {"a dead writer's lock", [&] { write_file(profile_file() + ".lock", lock_naming(finished_process_id())); }, {"which no longer holds it; the next write takes it over"}},
      {"a stopped writer's lock", [&] {
         // The writer holds the lock file's system lock, as every writer does, and stops.
         holder = std::make_unique<stopped_child>(QStringList{"flock", profile_file() + ".lock", "sleep", "60"},
                                                  profile_file() + ".lock");
         QFile lock(profile_file() + ".lock");
         if (lock.open(QIODevice::WriteOnly)) lock.write(lock_naming(holder->process.processId()));
       },
       {"which is stopped: writers wait for it"}},
      {"another host's writer's lock", [&] {
         holder = std::make_unique<stopped_child>(QStringList{"flock", profile_file() + ".lock", "sleep", "60"},
                                                  profile_file() + ".lock");
         QFile lock(profile_file() + ".lock");
         if (lock.open(QIODevice::WriteOnly)) lock.write("4242\nkpm\nfarm-node-17\n");
       },
       {"held by process 4242 (kpm) on host farm-node-17"}},
      {"set-aside copies", [&] { for (const char* end : {".large", ".format-error"}) write_file(profile_file() + end, healthy); },
       {"korvel2.kreg.large: a set-aside copy (", "korvel2.kreg.format-error: a set-aside copy ("}},
      {"a file others may write", [&] { write_profile_file(healthy); ::chmod(QFile::encodeName(profile_file()), 0666); },
       {"others may change it (mode 0666)"}},
      {"a file others may read", [&] { write_profile_file(healthy); ::chmod(QFile::encodeName(profile_file()), 0640); },
       {"others may read it (mode 0640)"}},
      {"a directory others may write", [&] { ::chmod(QFile::encodeName(home()), 0777); }, {"others may write this directory (mode 0777)"}},
  };
  // Files the test makes are private unless a case says otherwise.
  const struct umask_guard {
    mode_t old = ::umask(077);
    ~umask_guard() { ::umask(old); }
  } private_files;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    QDir(home()).removeRecursively();
    QDir().mkpath(home());
    c.setup();
    const QStringList before = home_state();
    const tool_result r = run({"check"});
    EXPECT_EQ(home_state(), before);
    EXPECT_TRUE(r.err.isEmpty()) << text(r.err);
    EXPECT_EQ(r.status, c.findings.isEmpty() ? 0 : 1);
    if (c.findings.isEmpty()) { EXPECT_TRUE(r.out.startsWith(profile_file() + ": healthy (")) << text(r.out); }
    const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (c.findings.isEmpty()) continue;
    ASSERT_EQ(lines.size(), c.findings.size()) << text(r.out);
    for (int i = 0; i < lines.size(); ++i) {
      EXPECT_TRUE(lines.at(i).startsWith(home())) << text(lines.at(i));
      EXPECT_TRUE(lines.at(i).contains(c.findings.at(i))) << text(lines.at(i));
    }
  }
}

TEST_F(CliWatchCheckTest, WatchPrintsWhatAnotherProcessChangesUntilStopped) {
  const struct {
    const char* what;
    QStringList args;
    int stop_signal;
    QList<QStringList> writes;  // each is followed by one printed line, except a line ""
    QStringList lines;
  } cases[] = {
      {"text, every section", {"watch"}, SIGTERM,
       {{"set", "General", "Width", "640"}, {"set", "General", "Width", "800"},
        {"set", "Pin_Planner", "Filter", " all"}, {"clear", "General"}},
       {"added General/Width = 640", "changed General/Width: 640 -> 800",
        "added Pin_Planner/Filter = \" all\"", "removed General/Width (was 800)"}},
      {"JSON lines, one section", {"watch", "GENERAL", "--json"}, SIGINT,
       {{"set", "Pin_Planner", "Filter", "x"}, {"set", "General", "Recent", "--json", "[\"a\",\"b\"]"},
        {"set", "General", "Dialogs/Find", "1"}, {"clear", "General"}},
       {"", "{\"event\":\"added\",\"key\":\"General/Recent\",\"new\":[\"a\",\"b\"]}",
        "{\"event\":\"added\",\"key\":\"General/Dialogs/Find\",\"new\":1}",
        "{\"event\":\"removed\",\"key\":\"General/Dialogs/Find\",\"old\":1}\n"
        "{\"event\":\"removed\",\"key\":\"General/Recent\",\"old\":[\"a\",\"b\"]}"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    QFile::remove(profile_file());
    QProcess watch;
    watch.start(tool, c.args);
    // The watch says on standard error when it looks; writes before that would go unseen.
    QElapsedTimer clock;
    clock.start();
    while (!watch.readAllStandardError().contains("watching") && clock.elapsed() < 10'000) {
      watch.waitForReadyRead(100);
    }
    QString out;
    QStringList expected;
    for (int i = 0; i < c.writes.size(); ++i) {
      ASSERT_EQ(run(c.writes.at(i)).status, 0);
      if (c.lines.at(i).isEmpty()) continue;
      expected << c.lines.at(i).split(QLatin1Char('\n'));
      // One line per change, so each write is seen on its own.
      while (out.count(QLatin1Char('\n')) < expected.size() && clock.elapsed() < 20'000) {
        watch.waitForReadyRead(100);
        out += QString::fromUtf8(watch.readAllStandardOutput());
      }
    }
    ::kill(static_cast<pid_t>(watch.processId()), c.stop_signal);
    ASSERT_TRUE(watch.waitForFinished(10'000));
    out += QString::fromUtf8(watch.readAllStandardOutput());
    EXPECT_EQ(watch.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(watch.exitCode(), 0);
    EXPECT_EQ(out.split(QLatin1Char('\n'), Qt::SkipEmptyParts), expected);
  }
}

TEST_F(CliWatchCheckTest, CompletionNamesCommandsOptionsSectionsAndKeys) {
  write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\nGeneral\\Dialogs\\Find=300\n"
      "Change%20Manager%20Window\\Pos=1\n[24.3_pro]\nGeneral\\Old=1\n");
  const struct {
    QStringList words;
    int status;
    QString candidates;
  } cases[] = {
      {{"w"}, 0, "watch\n"}, {{"-"}, 0, "--file\n--help\n--version\n--write\n"}, {{"--file", "x", "get", "Gen"}, 0, "General\n"}, {{"--file", ""}, 1, ""}, {{"help", "ch"}, 0, "check\n"},
      {{"get", "Gen"}, 0, "General\n"}, {{"keys", "GEN"}, 0, "GENERAL\n"}, {{"get", "Change"}, 0, "Change Manager Window\n"},
      {{"get", "GENERAL", ""}, 0, "Dialogs/Find\nShow_tips\n"}, {{"get", "--main-key", "24.3_pro", "General", ""}, 0, "Old\n"},
      {{"show", "--main-key", ""}, 0, "24.3_pro\n25.1_pro\n"}, {{"watch", "--"}, 0, "--help\n--json\n--main-key\n"},
      {{"export", "-o", ""}, 1, ""}, {{"nosuch", ""}, 0, ""},
  };
  for (const auto& c : cases) {
    const tool_result r = run(QStringList{"__complete"} + c.words);
    EXPECT_TRUE(r.status == c.status && r.out == c.candidates) << text(c.words.join(' ') + " -> " + r.out);
  }
  // The bash script hands the line to the tool and quotes what comes back.
  QProcess bash;
  bash.start(QStringLiteral("bash"),
             {"-c", QStringLiteral("source %1; COMP_WORDS=(%2 get Chan); COMP_CWORD=2; _cfgq; "
                                   "printf '%s\\n' \"${COMPREPLY[@]}\"").arg(QStringLiteral(CFGQ_BASH_COMPLETION), tool)});
  ASSERT_TRUE(bash.waitForFinished(10'000));
  EXPECT_EQ(bash.readAllStandardOutput(), "Change\\ Manager\\ Window\n");
}

TEST_F(CliWatchCheckTest, ManualPageRendersEveryCommandOfTheHelp) {
  const tool_result page = run({"--manpage"});
  ASSERT_EQ(page.status, 0);
  EXPECT_EQ(page.out.toUtf8(), read_bytes(QStringLiteral(CFGQ_MANUAL_PAGE))) << "the build's cfgq.1";
  // Every exit status the manual lists is given by some command, and there are no others.
  const std::pair<int, QStringList> statuses[] = {
      {0, {"path"}}, {1, {"get", "General", "x"}}, {2, {"export", "Genral"}}, {3, {"export", "-o", "/nonexistent/x"}}};
  for (const auto& [status, args] : statuses) {
    EXPECT_TRUE(page.out.contains(QStringLiteral(".TP\n.B %1\n").arg(status))) << status;
    EXPECT_EQ(run(args).status, status) << text(args.join(QLatin1Char(' ')));
  }
  EXPECT_EQ(page.out.count(QRegularExpression(QStringLiteral("\n\\.B \\d\n"))), 4);
  for (const char* section : {"ENVIRONMENT", "FILES", "EXIT STATUS", "EXAMPLES", "SEE ALSO"}) {
    EXPECT_TRUE(page.out.contains(QStringLiteral(".SH %1\n").arg(section))) << section;
  }
  const QString groff = QStandardPaths::findExecutable(QStringLiteral("groff"));
  if (groff.isEmpty()) GTEST_SKIP() << "no groff to render the page";
  QProcess render;
  render.start(groff, {"-man", "-Tutf8", "-ww", "-P-cbou", CFGQ_MANUAL_PAGE});  // plain text
  ASSERT_TRUE(render.waitForFinished(30'000));
  EXPECT_EQ(render.exitCode(), 0);
  EXPECT_EQ(render.readAllStandardError(), QByteArray()) << "no roff warnings";
  // Words broken at the end of a line joined again.
  QString rendered = QString::fromUtf8(render.readAllStandardOutput());
  rendered.remove(QRegularExpression(QStringLiteral("\u2010\n *")));
  for (const QString& line : run({"--help"}).out.split(QLatin1Char('\n'))) {
    // "  get SECTION KEY [--json]" lines of --help name the commands.
    if (!line.startsWith(QLatin1String("  ")) || line.startsWith(QLatin1String("   "))) continue;
    EXPECT_TRUE(rendered.contains(QStringLiteral("cfgq ") + line.trimmed())) << text(line);
  }
}

}  // namespace
