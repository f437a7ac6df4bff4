// The settings file in a real home directory: many short-lived writers, an oversized file opened
// by many processes at once, a stopped lock holder, linked profiles, a person's own files beside
// the settings file, a disk that fills up mid-write, umask 000, links to things that are not
// files, deep nesting and bytes that are not UTF-8. Writers run as separate processes: the tool,
// the test writer and a stock tclsh.
#include <algorithm>
#include <csignal>
#include <functional>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QStringList>
#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cfgq.h"
#include "cfgq_tool.h"
#include "gen.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;
using cfgq_test::read_bytes;
using cfgq_test::write_file;

struct run_result {
  int status = -1;
  QByteArray out, err;
};

class FileOwnerTest : public cfgq_test::SettingsTest {
 public:
  // Runs `program` with `args` in this test's environment plus `extra` ("NAME=value").
  run_result run(const QString& program, const QStringList& args,
                 const QStringList& extra = {}) const {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const QString& item : extra) {
      const int eq = item.indexOf('=');
      env.insert(item.left(eq), item.mid(eq + 1));
    }
    process.setProcessEnvironment(env);
    process.start(program, args);
    if (!process.waitForFinished(120'000)) return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
  }
  run_result cfgq(const QStringList& args, const QStringList& extra = {}) const {
    return run(QStringLiteral(CFGQ_TOOL_PATH), args, extra);
  }
  // A Tcl script with the package loaded.
  run_result tcl(const QString& script, QStringList extra = {}) const {
    // Under AddressSanitizer a stock tclsh needs its runtime loaded first.
    const QString runtime = QStringLiteral(CFGQ_ASAN_RUNTIME);
    for (QString& item : extra) {
      if (item.startsWith("LD_PRELOAD=") && !runtime.isEmpty()) item.insert(11, runtime + ' ');
    }
    if (!runtime.isEmpty() && extra.filter("LD_PRELOAD=").isEmpty()) {
      extra << "LD_PRELOAD=" + runtime << "ASAN_OPTIONS=detect_leaks=0";
    }
    return run(QStringLiteral(CFGQ_TCLSH), {QStringLiteral(CFGQ_TCL_RUNNER)},
               extra + QStringList{QStringLiteral("CFGQ_TCL_SCRIPT=") + script,
                                   QStringLiteral("TCLLIBPATH=" CFGQ_TCL_PACKAGE)});
  }
  // The names in the home directory, sorted.
  QStringList home_entries() const {
    return QDir(home()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot, QDir::Name);
  }
  // After a write of "NEW"/"New" that may have failed: the file holds its old bytes (and the
  // failure was visible) or all `keys` old values and the new one.
  void expect_old_or_complete(const QString& file, const QByteArray& old_bytes, int keys,
                              const char* name, bool visible) const {
    const QByteArray now = read_bytes(file);
    if (now == old_bytes) {
      EXPECT_TRUE(visible);
      return;
    }
    QSettings check(cfgq_test::fresh_copy(file).path(), QSettings::IniFormat);
    EXPECT_EQ(check.childGroups(), QStringList{"25.1_pro"});
    check.beginGroup("25.1_pro/General");
    EXPECT_EQ(check.childKeys().size(), keys + 1);
    EXPECT_TRUE(check.contains(name));
  }
  // True when writing `key` through a view of this process fails visibly (*failure says how):
  // at the view's end, or flushed by the event loop while the view stands.
  static bool view_write_fails(const char* key, cfgq_write_failure* failure,
                               bool by_event_loop = false) {
    while (cfgq_tool_take_write_failure(failure)) {
    }
    auto view = std::make_unique<Key>(Key::GENERAL, nullptr, nullptr);
    view->set_value(key, "1");
    if (by_event_loop) QCoreApplication::processEvents(); else view.reset();
    return cfgq_tool_take_write_failure(failure);
  }
  int values_in(const QString& group) const {
    QSettings raw(profile_file(), QSettings::IniFormat);
    raw.beginGroup(group);
    return static_cast<int>(raw.childKeys().size());
  }
};

// Starts `count` shell loops at once and waits for them; each runs `body` with $k its number.
void run_loops(int count, const QString& body, const QProcessEnvironment& env) {
  std::vector<std::unique_ptr<QProcess>> loops;
  for (int k = 0; k < count; ++k) {
    auto loop = std::make_unique<QProcess>();
    QProcessEnvironment mine = env;
    mine.insert(QStringLiteral("k"), QString::number(k));
    loop->setProcessEnvironment(mine);
    loop->setProcessChannelMode(QProcess::ForwardedChannels);
    loop->start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), body});
    loops.push_back(std::move(loop));
  }
  for (auto& loop : loops) EXPECT_TRUE(loop->waitForFinished(600'000));
}

// Short-lived writers of every kind on one file, each value through a process of its own: none
// may be lost, and nothing may be left beside the file.
TEST_F(FileOwnerTest, ShortLivedWritersOfEveryKindLoseNothing) {
  const int per_loop = 40;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("N"), QString::number(per_loop));
  env.insert(QStringLiteral("CFGQ"), QStringLiteral(CFGQ_TOOL_PATH));
  env.insert(QStringLiteral("WRITER"), QStringLiteral(CFGQ_SETTINGS_WRITER));
  env.insert(QStringLiteral("TCLSH"), QStringLiteral(CFGQ_TCLSH));
  env.insert(QStringLiteral("RUNNER"), QStringLiteral(CFGQ_TCL_RUNNER));
  env.insert(QStringLiteral("TCLLIBPATH"), QStringLiteral(CFGQ_TCL_PACKAGE));
  if (*CFGQ_ASAN_RUNTIME != '\0') {
    env.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(CFGQ_ASAN_RUNTIME));
    env.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
  }
  const struct {
    const char* what;
    int loops;
    const char* body;
  } rows[] = {
      {"cfgq set", 6, "i=0; while [ $i -lt $N ]; do \"$CFGQ\" set General L${k}_$i v$i || exit 1; "
                      "i=$((i+1)); done"},
      {"C++, tclsh and cfgq", 6,
       "i=0; while [ $i -lt $N ]; do case $((k % 3)) in "
       "0) \"$CFGQ\" set General L${k}_$i v$i ;; "
       "1) CFGQ_TCL_SCRIPT=\"cfgq_create_registry -key L${k}_$i -value v$i General\" "
       "\"$TCLSH\" \"$RUNNER\" ;; "
       "2) \"$WRITER\" one L${k}_$i v$i ;; esac || exit 1; \"$CFGQ\" keys General >/dev/null; "
       "i=$((i+1)); done"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    write_profile_file("[25.1_pro]\nRegistry_version=27\n");  // migrated: cfgq set migrates nothing away
    run_loops(row.loops, QString::fromUtf8(row.body), env);
    EXPECT_EQ(values_in(QStringLiteral("25.1_pro/General")), row.loops * per_loop);
    EXPECT_EQ(home_entries(), QStringList{QStringLiteral("korvel2.kreg")});
  }
}

// Eight processes that open a view at the same moment on a file above the size limit: it is set
// aside once, byte for byte, keeps its mode, and the user's data is never in neither file.
TEST_F(FileOwnerTest, OversizedFileIsSetAsideOnceByConcurrentStarts) {
  QByteArray big = "[25.1_pro]\nGeneral\\Precious=kept\nGeneral\\Filler=";
  big += QByteArray(10'000'100, 'x');
  big += '\n';
  for (int round = 0; round < 5; ++round) {
    SCOPED_TRACE(round);
    QFile::remove(profile_file() + ".large");
    write_profile_file(big);
    ::chmod(QFile::encodeName(profile_file()).constData(), 0640);
    std::vector<std::unique_ptr<QProcess>> starts;
    for (int p = 0; p < 8; ++p) {
      auto process = std::make_unique<QProcess>();
      process->start(QStringLiteral(CFGQ_TOOL_PATH),
                     {QStringLiteral("get"), QStringLiteral("General"), QStringLiteral("Precious")});
      starts.push_back(std::move(process));
    }
    for (auto& process : starts) EXPECT_TRUE(process->waitForFinished(120'000));
    EXPECT_EQ(read_bytes(profile_file() + ".large"), big);
    EXPECT_FALSE(QFileInfo::exists(profile_file())) << "a set-aside leaves no file in its place";
  }
  // The next write makes the file, with the mode the set-aside file had.
  EXPECT_EQ(cfgq({"set", "General", "K", "v"}).status, 0);
  struct stat st {};
  ASSERT_EQ(::stat(QFile::encodeName(profile_file()).constData(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
}

// A process that takes the settings file's lock and stops (SIGSTOP) holding it, as a writer
// stopped in the middle of its write; killed at the latest when this goes.
class stopped_lock_holder {
 public:
  explicit stopped_lock_holder(const QString& file) : m_pid(::fork()) {
    if (m_pid == 0) {
      QLockFile lock(file + ".lock");
      if (!lock.tryLock(0)) ::_exit(1);
      ::raise(SIGSTOP);
      ::_exit(0);
    }
    int status = 0;
    m_stopped = m_pid > 0 && ::waitpid(m_pid, &status, WUNTRACED) == m_pid && WIFSTOPPED(status);
  }
  ~stopped_lock_holder() { end(); }
  stopped_lock_holder(const stopped_lock_holder&) = delete;
  stopped_lock_holder& operator=(const stopped_lock_holder&) = delete;
  bool stopped() const { return m_stopped; }
  pid_t pid() const { return m_pid; }
  void end() {
    if (m_pid <= 0) return;
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
  }

 private:
  pid_t m_pid;
  bool m_stopped = false;
};

// A writer stopped while it holds the file's lock makes others wait a bounded time, then their
// write fails visibly, naming the holder; the file stays as it was. So too when, in a program
// with an event loop, Qt flushes a view's changes on its own before the view ends.
TEST_F(FileOwnerTest, StoppedLockHolderGivesABoundedVisibleFailure) {
  int argc = 1;
  char name[] = "file_owner_test";
  char* argv[] = {name, nullptr};
  QCoreApplication app(argc, argv);
  cfgq_test::EnvGuard wait("KORVEL_LOCK_WAIT_MS", std::string("300"));
  for (const bool by_event_loop : {false, true}) {
    SCOPED_TRACE(by_event_loop ? "flushed by the event loop" : "written at the view's end");
    { Key(Key::GENERAL, nullptr, nullptr).set_value("Before", "1"); }
    const QByteArray before = profile_bytes();
    stopped_lock_holder holder(profile_file());
    ASSERT_TRUE(holder.stopped());
    cfgq_write_failure failure;
    ASSERT_TRUE(view_write_fails("During", &failure, by_event_loop));
    EXPECT_EQ(failure.lock_pid, holder.pid());
    EXPECT_TRUE(failure.reason.contains("stopped")) << failure.reason.toStdString();
    EXPECT_EQ(profile_bytes(), before);
    // Later views of the process don't read the refused value back from memory.
    QVariant during;
    EXPECT_FALSE(Key(Key::GENERAL, nullptr, nullptr).get_value("During", &during));
    holder.end();
    // The dead holder's lock is taken over at once.
    EXPECT_FALSE(view_write_fails("After", &failure, by_event_loop)) << failure.reason.toStdString();
    EXPECT_EQ(raw_value("25.1_pro/General/After").toString(), "1");
    EXPECT_FALSE(QFileInfo::exists(profile_file() + ".lock"));
  }
  // A view that lives on after its flush was refused writes its later changes, and only those.
  Key long_lived(Key::GENERAL, nullptr, nullptr);
  {
    stopped_lock_holder holder(profile_file());
    long_lived.set_value("Refused", "1");
    QCoreApplication::processEvents();
  }
  long_lived.set_value("Later", "1");
  QCoreApplication::processEvents();
  EXPECT_EQ(raw_value("25.1_pro/General/Later").toString(), "1");
  EXPECT_FALSE(raw_value("25.1_pro/General/Refused").isValid());
}

// Two profiles whose settings files are links to one file share one lock and lose nothing.
TEST_F(FileOwnerTest, LinkedProfilesShareOneLock) {
  QTemporaryDir other;
  ASSERT_TRUE(QFile::link(profile_file(), other.filePath("korvel2.kreg")));
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("A"), home());
  env.insert(QStringLiteral("B"), other.path());
  env.insert(QStringLiteral("CFGQ"), QStringLiteral(CFGQ_TOOL_PATH));
  run_loops(4,
            QStringLiteral("i=0; while [ $i -lt 30 ]; do if [ $((k % 2)) = 0 ]; then H=$A; "
                           "else H=$B; fi; HOME=$H \"$CFGQ\" set General L${k}_$i v || exit 1; "
                           "i=$((i+1)); done"),
            env);
  EXPECT_EQ(values_in(QStringLiteral("25.1_pro/General")), 120);
  EXPECT_TRUE(QFileInfo(other.filePath("korvel2.kreg")).isSymLink());
}

// Two paths to one file (a directory reached through a link, as a second mount of one export
// is) are one file to the process: a view on either sees the other's unwritten changes, and
// both write under one lock.
TEST_F(FileOwnerTest, TwoPathsToOneFileAreOneFile) {
  QTemporaryDir other;
  const QString through_link = other.filePath("home");
  ASSERT_TRUE(QFile::link(home(), through_link));
  Key direct(Key::GENERAL, nullptr, nullptr);
  direct.set_value("Pending", "1");
  cfgq_test::EnvGuard second_path("HOME", through_link.toStdString());
  QVariant seen;
  EXPECT_TRUE(Key(Key::GENERAL, nullptr, nullptr).get_value("Pending", &seen));
  { Key(Key::GENERAL, nullptr, nullptr).set_value("Other", "2"); }
  EXPECT_EQ(raw_value("25.1_pro/General/Other").toString(), "2");
  EXPECT_EQ(raw_value("25.1_pro/General/Pending").toString(), "1");
}

// A person's copies beside the settings file, whatever their names, survive reads and writes of
// every kind, also beside a dead writer's lock; so does a file that only looks like a
// temporary of ours.
TEST_F(FileOwnerTest, PersonsFilesBesideTheSettingsFileStay) {
  { Key(Key::GENERAL, nullptr, nullptr).set_value("Show_tips", "Yes"); }
  const QStringList names = {"korvel2.kreg.Backup", "korvel2.kreg.MyCopy", "korvel2.kreg.AbCdEf",
                             "korvel2.kreg.backup", "korvel2.kreg.orig",
                             "korvel2.kreg.cfgq-new.1", "CFGQ.1.abcdef"};
  for (const QString& name : names) write_file(QDir(home()).filePath(name), name.toUtf8());
  // A dead writer's lock: taken by a process that ends without giving it back.
  const pid_t writer = ::fork();
  if (writer == 0) {
    QLockFile lock(profile_file() + ".lock");
    ::_exit(lock.tryLock(0) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(writer, &status, 0), writer);
  ASSERT_TRUE(QFileInfo::exists(profile_file() + ".lock"));
  EXPECT_EQ(cfgq({"path"}).status, 0);
  EXPECT_EQ(cfgq({"get", "General", "Show_tips"}).out, "Yes\n");
  EXPECT_EQ(cfgq({"set", "General", "K", "v"}).status, 0);
  EXPECT_EQ(tcl("puts [cfgq_read_registry -key K General]").out, "v\n");
  for (const QString& name : names) {
    EXPECT_EQ(read_bytes(QDir(home()).filePath(name)), name.toUtf8()) << name.toStdString();
  }
}

// What a killed process left goes with the next process that finds the locks of its files free,
// wherever it ran (another host or PID namespace names process ids that mean nothing here);
// what a live process has stays, and so does anything that only looks like a leftover.
TEST_F(FileOwnerTest, KilledProcessesLeftoversGoLookAlikesStay) {
  QTemporaryDir temp;
  QTemporaryDir runtime;
  const QStringList env = {"TMPDIR=" + temp.path(), "XDG_RUNTIME_DIR=" + runtime.path()};
  const auto entries = [](const QString& dir) {
    return QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
  };
  // Two writers, each with its private directory and temporary file; one is killed.
  std::unique_ptr<QProcess> watchers[2];
  for (auto& watcher : watchers) {
    const QStringList before = entries(runtime.path());
    watcher = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& item : env) environment.insert(item.section('=', 0, 0), item.section('=', 1));
    watcher->setProcessEnvironment(environment);
    watcher->start(QStringLiteral(CFGQ_SETTINGS_WRITER),
                   {"loop", QStringLiteral("W%1").arg(&watcher - watchers), temp.filePath("log")});
    for (int i = 0; i < 500 && entries(runtime.path()).size() == before.size(); ++i) ::usleep(10'000);
  }
  ASSERT_EQ(entries(runtime.path()).size(), 2);
  ASSERT_EQ(entries(temp.path()).filter("CFGQ.").size(), 2);
  ::kill(static_cast<pid_t>(watchers[0]->processId()), SIGKILL);
  watchers[0]->waitForFinished();
  // A killed writer's staged write beside the settings file, and look-alikes of a person's.
  const QString beside = QDir(home()).filePath(".korvel2.kreg.cfgq/cfgq.Ab12Cd");
  ASSERT_TRUE(QDir().mkpath(beside));
  write_file(beside + "/owner", "");
  write_file(beside + "/stage", "half a file");
  const QStringList look_alikes = {temp.filePath("CFGQ.99999.AbC123"),
                                   temp.filePath("cfgq.AbC123/mine"),
                                   profile_file() + ".cfgq-new.99999x"};
  for (const QString& file : look_alikes) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
    write_file(file, "x");
  }
  EXPECT_EQ(cfgq({"set", "General", "K", "v"}, env).status, 0);
  EXPECT_EQ(entries(runtime.path()).size(), 1) << "the live writer's directory only";
  EXPECT_EQ(entries(temp.path()).filter(QRegularExpression("^CFGQ\\.[0-9]+\\.[A-Za-z0-9]{6}$")).size(), 2)
      << "the live writer's temporary file and the look-alike";
  EXPECT_FALSE(QFileInfo::exists(beside));
  for (const QString& file : look_alikes) EXPECT_TRUE(QFileInfo::exists(file)) << file.toStdString();
  watchers[1]->kill();
  watchers[1]->waitForFinished();
}

// A write stopped by a full disk at any offset of the new file leaves the old bytes or the
// complete new content, and says so, for each writer.
TEST_F(FileOwnerTest, WriteCutShortAtAnyOffsetKeepsTheOldFile) {
  const struct {
    const char* what;
    int keys;  // the file's size follows: about 25 bytes a key
    int step;  // offsets tried: every step-th
  } sizes[] = {{"100 bytes", 3, 1}, {"20 KiB", 800, 997}, {"1 MB", 40'000, 99'991}};
  const struct {
    const char* what;
    std::function<run_result(const FileOwnerTest&, const QStringList&)> write;
  } writers[] = {
      {"cfgq set", [](const FileOwnerTest& t, const QStringList& env) {
         return t.cfgq({"set", "General", "New", "value"}, env);
       }},
      {"tclsh", [](const FileOwnerTest& t, const QStringList& env) {
         return t.tcl("cfgq_create_registry -key New -value value General", env);
       }},
      {"event loop", [](const FileOwnerTest& t, const QStringList& env) {
         return t.run(QStringLiteral(CFGQ_SETTINGS_WRITER), {"event", "New", "value"}, env);
       }},
  };
  for (const auto& size : sizes) {
    QByteArray old_bytes;
    {
      QSettings raw(profile_file(), QSettings::IniFormat);
      raw.clear();
      raw.setValue(QStringLiteral("25.1_pro/Registry_version"), 27);  // migrated: a write keeps the values
      for (int i = 0; i < size.keys; ++i) raw.setValue(QStringLiteral("25.1_pro/General/K%1").arg(i), i);
    }
    old_bytes = profile_bytes();
    for (const auto& writer : writers) {
      for (qint64 offset = 0; offset <= old_bytes.size() + 20; offset += size.step) {
        SCOPED_TRACE(std::string(size.what) + ", " + writer.what + ", offset " +
                     std::to_string(offset));
        write_profile_file(old_bytes);
        const run_result result = writer.write(
            *this, {"LD_PRELOAD=" CFGQ_WRITE_FAULT, "WRITE_FAULT_DIR=" + home(),
                    "WRITE_FAULT_OFFSET=" + QString::number(offset), "KORVEL_DEBUG=CFGQ",
                    "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"});
        expect_old_or_complete(profile_file(), old_bytes, size.keys, "New",
                               result.err.contains("Settings not written"));
        EXPECT_EQ(home_entries().filter(".cfgq-new").size(), 0);
      }
    }
  }
}

// The same on a real, nearly full memory file system as HOME (where this process may mount one):
// one or two free pages, small and larger files, the tool and tclsh.
TEST_F(FileOwnerTest, NearlyFullFileSystemKeepsTheOldFile) {
  QTemporaryDir mount_point;
  const QString dir = mount_point.path();
  if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=512k", "tmpfs", dir}) != 0) {
    GTEST_SKIP() << "no memory file system can be mounted here";
  }
  const QString file = dir + "/korvel2.kreg";
  for (const int keys : {5, 300}) {
    for (const int free_pages : {1, 2}) {
      for (const bool tcl_writer : {false, true}) {
        SCOPED_TRACE(std::to_string(keys) + " keys, " + std::to_string(free_pages) + " pages, " +
                     (tcl_writer ? "tclsh" : "cfgq"));
        QDir(dir).removeRecursively();
        QByteArray old_bytes = "[25.1_pro]\nRegistry_version=27\n";
        for (int i = 0; i < keys; ++i) old_bytes += QByteArray("General\\K") + QByteArray::number(i) + "=value " + QByteArray::number(i) + "\n";
        write_file(file, old_bytes);
        {
          // Fill the file system, then give back the pages wanted.
          QFile filler(dir + "/filler");
          ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
          const QByteArray page(4096, 'f');
          while (filler.write(page) == page.size() && filler.flush()) {
          }
          filler.close();
          ASSERT_TRUE(filler.resize(std::max<qint64>(0, filler.size() - free_pages * 4096)));
        }
        const QStringList env = {"HOME=" + dir};
        const run_result result =
            tcl_writer ? tcl("cfgq_create_registry -key NEW -value six General", env)
                       : cfgq({"set", "General", "NEW", "six"}, env);
        expect_old_or_complete(file, old_bytes, keys, "NEW", tcl_writer || result.status == 3);
      }
    }
  }
  QProcess::execute("umount", {dir});
}

// A new file is the user's alone whatever the umask, an existing one keeps the mode it has,
// and nothing is written through a link to something that is not a regular file, into a
// directory standing at the path, or below a profile path that is a regular file.
TEST_F(FileOwnerTest, ModesAreKeptAndNonFilesAreNeverWritten) {
  const mode_t old_mask = ::umask(0);
  for (const mode_t mode : {0000, 0640, 0644, 0660}) {
    SCOPED_TRACE(mode);
    QFile::remove(profile_file());
    if (mode != 0) {
      write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\n");
      ::chmod(QFile::encodeName(profile_file()).constData(), mode);
    }
    { Key(Key::GENERAL, nullptr, nullptr).set_value("K", "v"); }
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(profile_file()).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, mode == 0 ? 0600u : mode);
    EXPECT_EQ(raw_value("25.1_pro/General/K").toString(), "v");
  }
  ::umask(old_mask);

  QTemporaryDir targets;
  const QString fifo = targets.filePath("fifo");
  ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
  const QString file_home = targets.filePath("a_file");
  write_file(file_home, "a regular file where HOME should be a directory\n");
  const struct {
    const char* what;
    std::function<void()> plant;
    QString home;
  } rows[] = {
      {"link to a pipe", [&] { QFile::link(fifo, profile_file()); }, home()},
      {"link to a directory", [&] { QFile::link(targets.path(), profile_file()); }, home()},
      {"directory", [&] { QDir(home()).mkdir("korvel2.kreg"); }, home()},
      {"HOME is a file", [] {}, file_home},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    QFile::remove(profile_file());
    QDir(home()).rmdir("korvel2.kreg");
    row.plant();
    const QStringList before = home_entries();
    const QByteArray file_home_bytes = read_bytes(file_home);
    cfgq_test::EnvGuard home_guard("HOME", row.home.toStdString());
    cfgq_write_failure failure;
    EXPECT_TRUE(view_write_fails("K", &failure));
    EXPECT_EQ(home_entries(), before);
    EXPECT_EQ(read_bytes(file_home), file_home_bytes);
    EXPECT_FALSE(QFileInfo(fifo).isFile());
  }
}

// Hostile content: a key nested 25,000 levels deep neither crashes the copy of migration nor
// stops its marker; bytes that are not UTF-8 are kept as a byte-exact copy before a write
// replaces them; a NUL in a Tcl value comes back as Tcl holds it.
TEST_F(FileOwnerTest, HostileContentIsHandled) {
  QByteArray deep = "[24.3_pro]\n";
  for (int i = 0; i < 25'000; ++i) deep += "g\\";
  deep += "Width=640\n";
  write_profile_file(deep);
  const run_result migrated = cfgq({"migrate"});
  EXPECT_EQ(migrated.status, 0) << migrated.err.constData();
  EXPECT_TRUE(raw_value("25.1_pro/Registry_version").isValid());

  const QByteArray undecodable = "[25.1_pro]\nGeneral\\A=\xff\xfe\xc3\x28 bad\n";
  write_profile_file(undecodable);
  const run_result written = cfgq({"set", "General", "B", "1"}, {"KORVEL_DEBUG=CFGQ"});
  EXPECT_EQ(read_bytes(profile_file() + ".format-error"), undecodable);
  EXPECT_TRUE(written.err.contains("not UTF-8")) << written.err.constData();

  const run_result nul = tcl(
      "cfgq_create_registry -key N -value \"a\\0b\" General; "
      "set r [cfgq_read_registry -key N General]; puts [expr {$r eq \"a\\0b\"}]");
  EXPECT_EQ(nul.out, "1\n");
}

// Without HOME the profile directory comes from the password database.
TEST_F(FileOwnerTest, ProfileDirectoryWithoutHome) {
  cfgq_test::EnvGuard no_home("HOME", std::nullopt);
  const struct passwd* entry = ::getpwuid(::geteuid());
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(gen_get_user_profile_directory(), std::string(entry->pw_dir));
}

}  // namespace
