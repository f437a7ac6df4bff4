// The cfgq tool's environment commands, run as a subprocess on a fresh home, each outcome read
// back through the session manager's own generator: a fresh account, references a person wrote,
// hand-edited stores, hostile values; then failures (odd files, write faults at many offsets,
// permissions, another user, no home directory).
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "test_support.h"

namespace {

using cfgq_test::read_bytes;
using cfgq_test::write_file;

constexpr const char* generator_path = "/usr/lib/systemd/user-environment-generators/30-systemd-environment-d-generator";
constexpr const char* login_path = "/usr/local/bin:/usr/bin:/bin";

struct tool_result {
  int status = -1;
  QString out, err;
};

std::string text(const QStringList& args) { return args.join(' ').toStdString(); }

// The generator prints NAME=VALUE, a value in "..." with backslash escapes and C escapes.
QByteArray unescaped(const QByteArray& text) {
  if (!text.startsWith('"')) return text;
  QByteArray value;
  for (qsizetype i = 1; i + 1 < text.size(); ++i) {
    if (text[i] != '\\') {
      value.append(text[i]);
      continue;
    }
    const char c = text[++i];
    if (c == 'x') value.append(char(text.mid(i + 1, 2).toInt(nullptr, 16))), i += 2;
    else value.append(c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c);
  }
  return value;
}

class EnvToolTest : public ::testing::Test {
 protected:
  QString home() const { return m_home.path(); }
  QString store() const { return home() + "/.config/environment.d/90-korvel.conf"; }

  // The tool's environment: this process's, on the fresh home, with the machine store beside it.
  QProcessEnvironment tool_environment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"KORVEL_USER_ENV_FILE", "XDG_CONFIG_HOME", "KORVEL_DEBUG", "KORVEL_LIST", "KORVEL_HOME",
                             "XDG_DATA_DIRS", "XDG_CONFIG_DIRS", "MANPATH"}) {
      environment.remove(name);
    }
    environment.insert("LD_LIBRARY_PATH", "/session/lib");  // the shell has it, a login does not
    environment.insert("HOME", home());
    environment.insert("KORVEL_SYSTEM_ENV_FILE", home() + "/system.conf");
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    return environment;
  }

  // Runs `cfgq args` (after `prefix`, a program that starts it: runuser, env).
  tool_result cfgq(const QStringList& args, const QProcessEnvironment& environment,
                   const QStringList& prefix = {}) const {
    QProcess process;
    process.setProcessEnvironment(environment);
    QStringList line = prefix;
    line << CFGQ_TOOL_PATH << args;
    process.start(line.takeFirst(), line);
    EXPECT_TRUE(process.waitForFinished(60'000));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
  }
  tool_result cfgq(const QStringList& args) const { return cfgq(args, tool_environment()); }

  // What a login on this home gets from the generator, name -> value.
  std::map<QByteArray, QByteArray> login() const {
    QProcess generator;
    QProcessEnvironment environment;
    environment.insert("HOME", home());
    environment.insert("PATH", login_path);
    generator.setProcessEnvironment(environment);
    generator.start(generator_path, {});
    EXPECT_TRUE(generator.waitForFinished(30'000));
    EXPECT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    std::map<QByteArray, QByteArray> seen;
    for (const QByteArray& line : generator.readAllStandardOutput().split('\n')) {
      const qsizetype equals = line.indexOf('=');
      if (equals > 0) seen[line.left(equals)] = unescaped(line.mid(equals + 1));
    }
    return seen;
  }

  void SetUp() override {
    if (!QFileInfo::exists(generator_path)) {
      GTEST_SKIP() << "no environment.d generator at " << generator_path
                   << " (Debian package systemd; scripts/setup.sh installs it)";
    }
  }

  QTemporaryDir m_home;
};

// 100,000 characters, within the system's limit for one argument.
const QString big_value = QString::fromUtf8(" a\"b'c\\d`e\tf\ng\xC3\xA9 ").repeated(6250);

TEST_F(EnvToolTest, LoginSeesWhatTheToolWrote) {
  struct env_case {
    const char* label;
    std::optional<QByteArray> before;  // the user store's bytes
    std::vector<QStringList> commands;  // each exits 0
    // What the login gets ("$PATH": the login's own PATH, "$HOME" the home); nullptr: what it
    // gets without the stores.
    std::vector<std::pair<const char*, const char*>> login;
    std::optional<QByteArray> after;  // the store's exact bytes, where they matter
  };
  const std::vector<env_case> cases = {
      {"append extends the login's PATH", std::nullopt,
       {{"setenv", "PATH", "/opt/korvel/bin", "--append"}, {"setenv", "PATH", "/OPT/Korvel/bin", "--append"}},
       {{"PATH", "$PATH:/opt/korvel/bin"}}, "PATH=\"${PATH:+${PATH}:}/opt/korvel/bin\"\n"},
      {"lists a login lacks: no empty item, defaults kept", std::nullopt,
       {{"setenv", "LD_LIBRARY_PATH", "/opt/k/lib", "--append"}, {"setenv", "XDG_DATA_DIRS", "/opt/k/share", "--append"},
        {"setenv", "XDG_CONFIG_DIRS", "/opt/k/etc", "--append"}, {"setenv", "MANPATH", "/opt/k/man", "--append"},
        {"setenv", "MANPATH", "/opt/k/man", "--append"}, {"setenv", "MANPATH", "/opt/k2/man", "--append"}},
       {{"LD_LIBRARY_PATH", "/opt/k/lib"}, {"XDG_DATA_DIRS", "/usr/local/share/:/usr/share/:/opt/k/share"},
        {"XDG_CONFIG_DIRS", "/etc/xdg:/opt/k/etc"}, {"MANPATH", "/opt/k/man:/opt/k2/man:"}}, std::nullopt},
      {"append to a list the session lacks", std::nullopt,
       {{"setenv", "KORVEL_LIST", "/opt/k/lib", "--append"}, {"setenv", "KORVEL_LIST", "/opt/k2/lib", "--append"}},
       {{"KORVEL_LIST", "/opt/k/lib:/opt/k2/lib"}, {"PATH", nullptr}}, std::nullopt},
      {"references and dollars", std::nullopt,
       {{"setenv", "KORVEL_HOME", "${HOME}/korvel"}, {"setenv", "KORVEL_PRICE", "5$$"}},
       {{"KORVEL_HOME", "$HOME/korvel"}, {"KORVEL_PRICE", "5$"}}, std::nullopt},
      {"a person's PATH line is extended", "PATH=${PATH}:/home/me/bin\n", {{"setenv", "PATH", "/opt/k/bin", "--append"}},
       {{"PATH", "$PATH:/home/me/bin:/opt/k/bin"}}, "PATH=\"${PATH:+${PATH}:}/home/me/bin:/opt/k/bin\"\n"},
      {"other edits leave it", "PATH=$PATH:/home/me/bin\n", {{"setenv", "KORVEL_HOME", "/opt/k"}, {"unsetenv", "KORVEL_HOME"}},
       {{"PATH", "$PATH:/home/me/bin"}}, "PATH=$PATH:/home/me/bin\n"},
      {"unsetenv gives the login's own back", "PATH=${PATH}:/x\n", {{"unsetenv", "PATH"}}, {{"PATH", nullptr}}, ""},
      {"comments, blanks, continuation, duplicates", "# mine\n\n; old\nA=1\nB=x\\\ny\nA=2\n", {{"setenv", "C", "v"}},
       {{"A", "2"}, {"B", "xy"}, {"C", "v"}}, "# mine\n\n; old\nA=1\nB=x\\\ny\nA=2\nC=\"v\"\n"},
      {"crlf", "# mine\r\nA=1\r\nB=2\r\n", {{"setenv", "A", "3"}, {"setenv", "C", "4"}},
       {{"A", "3"}, {"B", "2"}, {"C", "4"}}, "# mine\r\nA=\"3\"\r\nB=2\r\nC=\"4\"\r\n"},
      {"duplicates of the name written", "A=1\nB=2\nA=3\n", {{"setenv", "A", "4"}}, {{"A", "4"}, {"B", "2"}}, "B=2\nA=\"4\"\n"},
      {"plain values come back exactly", std::nullopt,
       {{"setenv", "V1", "  blanks  "}, {"setenv", "V2", "\"q\" 'q'"}, {"setenv", "V3", "a\\b\\"},
        {"setenv", "V4", "`cmd`"}, {"setenv", "V5", "\ttab\n\nline\r\n"},
        {"setenv", "V6", QString::fromUtf8("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80")},
        {"setenv", "V7", "#;=x"}, {"setenv", "V8", big_value}},
       {{"V1", "  blanks  "}, {"V2", "\"q\" 'q'"}, {"V3", "a\\b\\"}, {"V4", "`cmd`"},
        {"V5", "\ttab\n\nline\r\n"}, {"V6", "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"}, {"V7", "#;=x"}},
       std::nullopt},
  };
  const auto without_stores = login();
  const QByteArray base_path =
      without_stores.count("PATH") ? without_stores.at("PATH") : QByteArray(login_path);
  for (const env_case& c : cases) {
    SCOPED_TRACE(c.label);
    QDir(home() + "/.config").removeRecursively();
    if (c.before) {
      ASSERT_TRUE(QDir().mkpath(QFileInfo(store()).path()));
      write_file(store(), *c.before);
    }
    for (const QStringList& command : c.commands) EXPECT_EQ(cfgq(command).status, 0) << text(command);
    const auto seen = login();
    for (const auto& [name, expected] : c.login) {
      SCOPED_TRACE(name);
      const auto found = seen.find(name);
      if (expected == nullptr) {  // as without the stores
        EXPECT_EQ(found == seen.end(), without_stores.count(name) == 0);
        continue;
      }
      QByteArray value(expected);
      value.replace("$PATH", base_path).replace("$HOME", QFile::encodeName(home()));
      ASSERT_NE(found, seen.end());
      EXPECT_EQ(found->second, value);
    }
    if (c.after) { EXPECT_EQ(read_bytes(store()), *c.after); }
  }
  EXPECT_EQ(login().at("V8"), big_value.toUtf8());  // the last case's long value
}

TEST_F(EnvToolTest, MessagesSayWhatHappenedAndWhere) {
  const struct {
    QStringList args;
    int status;
    const char* out;
  } steps[] = {
      {{"setenv", "PATH", "/opt/k", "--append"}, 0,
       "Appended /opt/k to PATH in the user store (@STORE@), after the session's own PATH:\n"
       "  PATH=${PATH:+${PATH}:}/opt/k\nPrograms started after your next login see the change"},
      {{"setenv", "PATH", "/OPT/K", "--append"}, 0,
       "PATH already holds /OPT/K in the user store (@STORE@) (items are compared ignoring " "case); nothing changed.\n"},
      {{"setenv", "KORVEL_HOME", "/a"}, 0, "Set KORVEL_HOME in the user store (@STORE@):\n"},
      {{"setenv", "KORVEL_HOME", "/b"}, 0,
       "Replaced KORVEL_HOME in the user store (@STORE@); it was /a, now:\n  KORVEL_HOME=/b\n"},
      {{"getenv", "KORVEL_HOME"}, 0, "user store (@STORE@): /b\nsystem store (@HOME@/system.conf): not set\n"
       "'cfgq setenv KORVEL_HOME' writes the user store.\n"},
      {{"getenv", "PATH", "--login"}, 0, "PATH=/usr/local/bin:/usr/bin:/bin:/opt/k\n"},
      {{"env"}, 0, "user store (@STORE@):\n  PATH=${PATH:+${PATH}:}/opt/k\n  KORVEL_HOME=/b\n"
                   "system store (@HOME@/system.conf):\n  (none)\n"},
      {{"unsetenv", "KORVEL_HOME"}, 0, "Removed KORVEL_HOME from the user store (@STORE@).\n"},
      {{"getenv", "KORVEL_HOME"}, 1, "user store (@STORE@): not set\n"},
      {{"getenv", "KORVEL_HOME", "--login"}, 1, ""},
      {{"unsetenv", "KORVEL_HOME"}, 1, "Neither store sets KORVEL_HOME; nothing changed.\n"},
      {{"setenv", "KORVEL_HOME", "/c", "--append"}, 0, "Set KORVEL_HOME in the user store"},
      {{"unsetenv", "PATH"}, 0, "Removed PATH"},
      {{"setenv", "PATH", "/only"}, 0, "It replaces the session's own PATH at the next login"},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(text(step.args));
    const tool_result r = cfgq(step.args);
    EXPECT_EQ(r.status, step.status) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(QString(step.out).replace("@STORE@", store()).replace("@HOME@", home()))) << r.out.toStdString();
  }
}

// Each failure: exit 3, "cfgq: <what>: <path>: <reason>", and the store as it was.
TEST_F(EnvToolTest, StoresThatCantBeWrittenFailVisibly) {
  const QString dir = QFileInfo(store()).path();
  const auto nul = [](const QString& s) { write_file(s, QByteArray("A=1\n\0\n", 6)); };
  const struct {
    void (*make)(const QString& store);
    QStringList args;
    const char* reason;
  } cases[] = {
      {[](const QString& s) { QDir().mkpath(s); }, {"setenv", "A", "v"}, "not a regular file"},
      {[](const QString& s) { QFile::link("/dev/null", s); }, {"setenv", "A", "v"}, "a link to something other than a regular file"},
      {[](const QString& s) { QFile::link(s + ".gone", s); }, {"setenv", "A", "v"}, "a link to nothing"},
      {nul, {"setenv", "B", "v"}, "line 2 holds a NUL byte"},
      {nul, {"unsetenv", "A"}, "line 2 holds a NUL byte"},
      {[](const QString& s) { write_file(s, "A=\xff\n"); }, {"setenv", "B", "v"}, "line 1 holds a value that is not UTF-8"},
      {[](const QString& s) { write_file(s, "A=\"1\n"); }, {"setenv", "B", "v"}, "the file ends inside a quote that is never closed (line 1)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.reason);
    QDir(home() + "/.config").removeRecursively();
    ASSERT_TRUE(QDir().mkpath(dir));
    c.make(store());
    const QByteArray before = read_bytes(store());
    const tool_result r = cfgq(c.args);
    EXPECT_EQ(read_bytes(store()), before);
    EXPECT_EQ(QDir(dir).entryList(QDir::Files | QDir::System | QDir::Hidden).size(),
              QFileInfo(store()).isDir() ? 0 : 1);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(r.err.startsWith(QString("cfgq: %1 %2: %3: %4").arg(c.args[0], c.args[1], store(), c.reason)))
        << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
  }
  EXPECT_FALSE(QFileInfo("/dev/null").isFile());

  // A link to a regular file is written where it points, and stays a link.
  QDir(home() + "/.config").removeRecursively();
  ASSERT_TRUE(QDir().mkpath(dir));
  write_file(home() + "/real.conf", "A=1\n");
  ASSERT_TRUE(QFile::link(home() + "/real.conf", store()));
  EXPECT_EQ(cfgq({"setenv", "B", "2"}).status, 0);
  EXPECT_TRUE(QFileInfo(store()).isSymLink());
  EXPECT_EQ(read_bytes(home() + "/real.conf"), "A=1\nB=\"2\"\n");
}

// A write that runs out of space at any offset leaves the old bytes or the whole new file.
TEST_F(EnvToolTest, WriteFaultsLeaveOldOrNewBytes) {
  const QString dir = QFileInfo(store()).path();
  ASSERT_TRUE(QDir().mkpath(dir));
  // About 100 bytes at every offset, 1 MB at a stride.
  for (const auto& [lines, stride] : {std::pair<int, int>{14, 1}, {110'000, 199'999}}) {
    QByteArray old_bytes = "# kept\n";
    for (int i = 0; i < lines; ++i) old_bytes += QByteArray("K") + QByteArray::number(i) + "=x\n";
    const QByteArray new_bytes = old_bytes + "NEW=\"value\"\n";
    std::vector<qsizetype> offsets;
    for (qsizetype at = 0; at <= new_bytes.size(); at += stride) offsets.push_back(at);
    offsets.push_back(new_bytes.size() - 1);
    for (const char* mode : {"short", "enospc"}) {
      for (const qsizetype at : offsets) {
        SCOPED_TRACE(std::to_string(old_bytes.size()) + " bytes, " + mode + " at " +
                     std::to_string(at));
        write_file(store(), old_bytes);
        QProcessEnvironment environment = tool_environment();
        for (const auto& [name, value] : {std::pair<QString, QString>{"LD_PRELOAD", CFGQ_WRITE_FAULT}, {"WRITE_FAULT_DIR", dir},
                                          {"WRITE_FAULT_OFFSET", QString::number(at)}, {"WRITE_FAULT_MODE", mode}}) {
          environment.insert(name, value);
        }
        const tool_result r = cfgq({"setenv", "NEW", "value"}, environment);
        const QByteArray now = read_bytes(store());
        if (at >= new_bytes.size()) {
          EXPECT_EQ(r.status, 0) << r.err.toStdString();
          EXPECT_EQ(now, new_bytes);
        } else {
          EXPECT_EQ(r.status, 3);
          // The lock's own few bytes, or the new file's, meet the full disk.
          EXPECT_TRUE(r.err.startsWith(QString("cfgq: setenv NEW: %1: ").arg(store())) &&
                      r.err.endsWith(": No space left on device\n")) << r.err.toStdString();
          EXPECT_EQ(now, old_bytes);
        }
        EXPECT_EQ(QDir(dir).entryList(QDir::Files | QDir::Hidden).size(), 1);
      }
    }
  }
}

TEST_F(EnvToolTest, NewStoresArePrivateAndOldOnesKeepOwnerAndMode) {
  QProcess process;  // umask 000 for the tool
  process.setProcessEnvironment(tool_environment());
  process.setChildProcessModifier([] { umask(0); });
  process.start(CFGQ_TOOL_PATH, {"setenv", "A", "1"});
  ASSERT_TRUE(process.waitForFinished(60'000));
  ASSERT_EQ(process.exitCode(), 0);
  for (const auto& [path, mode] : {std::pair<QString, mode_t>{home() + "/.config", 0700},
                                   {QFileInfo(store()).path(), 0700}, {store(), 0600}}) {
    struct stat st;
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, mode) << path.toStdString();
  }
  ASSERT_EQ(chmod(QFile::encodeName(store()).constData(), 0640), 0);
  const bool root = geteuid() == 0;
  if (root) { ASSERT_EQ(chown(QFile::encodeName(store()).constData(), 65534, 65534), 0); }
  EXPECT_EQ(cfgq({"setenv", "A", "2"}).status, 0);
  struct stat st;
  ASSERT_EQ(stat(QFile::encodeName(store()).constData(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  if (root) { EXPECT_EQ(st.st_uid, 65534u); }
}

// Another user's rights bind where root's don't: as root, the tool runs as nobody.
TEST_F(EnvToolTest, ReadOnlyStoreAndNoHomeAsAnotherUser) {
  if (geteuid() != 0 || !QFileInfo::exists("/usr/sbin/runuser") ||
      !cfgq_test::reachable_by_others(CFGQ_TOOL_PATH)) {
    GTEST_SKIP() << "needs root, runuser and a build another user can reach";
  }
  QTemporaryDir outside_private_tmp("/tmp/cfgq-env-test-XXXXXX");  // nobody must reach it
  const QString own = outside_private_tmp.path() + "/nobody";
  const QString dir = own + "/.config/environment.d";
  ASSERT_TRUE(QDir().mkpath(dir));
  write_file(dir + "/90-korvel.conf", "A=1\n");
  ASSERT_EQ(chmod(QFile::encodeName(outside_private_tmp.path()).constData(), 0755), 0);
  for (const QString& path : {own, own + "/.config", dir, dir + "/90-korvel.conf"}) {
    ASSERT_EQ(chown(QFile::encodeName(path).constData(), 65534, 65534), 0);
  }
  ASSERT_EQ(chmod(QFile::encodeName(dir).constData(), 0500), 0);
  const QStringList as_nobody = {"/usr/sbin/runuser", "-u", "nobody", "--", "env", "HOME=" + own};
  tool_result r = cfgq({"setenv", "A", "2"}, tool_environment(), as_nobody);
  EXPECT_EQ(r.status, 3);
  EXPECT_EQ(r.err, QString("cfgq: setenv A: %1/90-korvel.conf: its lock file can't be made: "
                           "Permission denied\n").arg(dir));
  EXPECT_EQ(read_bytes(dir + "/90-korvel.conf"), "A=1\n");

  // nobody's home in the password database does not exist.
  r = cfgq({"setenv", "A", "2"}, tool_environment(),
           {"/usr/sbin/runuser", "-u", "nobody", "--", "env", "-u", "HOME"});
  EXPECT_EQ(r.status, 3);
  EXPECT_TRUE(r.err.startsWith("cfgq: setenv A: no home directory")) << r.err.toStdString();
}

}  // namespace
