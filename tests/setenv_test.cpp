// Persistent environment variables: store choice, list rules, the process environment, and the
// environment.d files that hold the stores outside Windows.
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <vector>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_setenv.h"
#include "test_support.h"

namespace {

using cfgq_env::store;
using cfgq_env::write_outcome;
using cfgq_test::EnvGuard;

constexpr const char* generator_path =
    "/usr/lib/systemd/user-environment-generators/30-systemd-environment-d-generator";

int announcements = 0;
void count_announcement() { ++announcements; }

// Two store files in a fresh directory, and announcements counted instead of made.
class SetenvTest : public ::testing::Test {
 protected:
  SetenvTest()
      : m_user("KORVEL_USER_ENV_FILE", path("user.conf").toStdString()),
        m_system("KORVEL_SYSTEM_ENV_FILE", path("system.conf").toStdString()),
        m_debug("KORVEL_DEBUG", std::nullopt) {
    announcements = 0;
    m_old_announcer = cfgq_env::set_announcer(count_announcement);
  }
  ~SetenvTest() override { cfgq_env::set_announcer(m_old_announcer); }

  QString path(const QString& name) const { return QDir(m_dir.path()).absoluteFilePath(name); }
  QString location(store which) const { return cfgq_env::store_location(which); }

  // The file's bytes, or nullopt when there is no file.
  std::optional<QByteArray> bytes(store which) const {
    QFile file(location(which));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return file.readAll();
  }
  void put(store which, const std::optional<QByteArray>& content) const {
    QFile::remove(location(which));
    if (content) cfgq_test::write_file(location(which), *content);
  }
  QString read(store which, const QString& name) const {
    return cfgq_env::store_read(location(which), name);
  }

  QTemporaryDir m_dir;

 private:
  EnvGuard m_user, m_system, m_debug;
  cfgq_env::announcer m_old_announcer = nullptr;
};

TEST_F(SetenvTest, ChoosesStoreAndAppliesListRules) {
  struct row {
    const char* label;
    std::optional<QByteArray> user, system;  // file contents before
    const char* value;
    bool append;
    const char* separator;
    bool result;
    const char* scope;  // "-": left as it was
    const char* user_after;
    const char* system_after;
  };
  const row rows[] = {
      {"neither store", std::nullopt, std::nullopt, "c", true, ";", true, "user", "c", ""},
      {"neither, list value kept whole", std::nullopt, "OTHER=x\n", "a;;b", true, ";", true,
       "user", "a;;b", ""},
      {"append", "V=a;b\n", std::nullopt, "c", true, ";", true, "user", "a;b;c", ""},
      {"append drops empty items", "V=a;;b;\n", std::nullopt, "c", true, ";", true, "user",
       "a;b;c", ""},
      {"replace", "V=a;b\n", std::nullopt, "c", false, ";", true, "user", "c", ""},
      {"present ignoring case, replace", "V=a;b\n", std::nullopt, "B", false, ";", false, "-",
       "a;b", ""},
      {"present ignoring case, append", "V=a;b\n", std::nullopt, "A", true, ";", false, "-",
       "a;b", ""},
      {"part of an item is not present", "V=ab;c\n", std::nullopt, "b", true, ";", true, "user",
       "ab;c;b", ""},
      {"machine only", std::nullopt, "V=x;y\n", "z", true, ";", true, "system", "", "x;y;z"},
      {"machine only, present", std::nullopt, "V=x;Y\n", "y", true, ";", false, "-", "", "x;Y"},
      {"both: user only", "V=u\n", "V=m\n", "c", true, ";", true, "user", "u;c", "m"},
      {"both: machine text not tested", "V=u\n", "V=m\n", "m", true, ";", true, "user", "u;m",
       "m"},
      {"empty user text counts as absent", "V=\"\"\n", "V=m\n", "c", true, ";", true, "system",
       "", "m;c"},
      {"empty separator is ';'", "V=a;b\n", std::nullopt, "c", true, "", true, "user", "a;b;c",
       ""},
      {"colon separator", "V=a;b:c\n", std::nullopt, "d", true, ":", true, "user", "a;b:c:d", ""},
      {"colon separator, ';' inside an item", "V=a;b:c\n", std::nullopt, "b", true, ":", true,
       "user", "a;b:c:b", ""},
      {"separator matched with case", "V=aXb\n", std::nullopt, "b", true, "x", true, "user",
       "aXbxb", ""},
      {"longer separator", "V=a::b::::c\n", std::nullopt, "b", false, "::", false, "-",
       "a::b::::c", ""},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.label);
    put(store::user, r.user);
    put(store::system, r.system);
    const auto user_before = bytes(store::user);
    const auto system_before = bytes(store::system);
    announcements = 0;
    QString scope = QStringLiteral("-");

    EXPECT_EQ(cfgq_setenv("V", r.value, scope, r.append, r.separator, false), r.result);
    EXPECT_EQ(scope, QString(r.scope));
    EXPECT_EQ(read(store::user, "V"), QString(r.user_after));
    EXPECT_EQ(read(store::system, "V"), QString(r.system_after));
    EXPECT_EQ(announcements, r.result ? 1 : 0);
    if (!r.result) {
      EXPECT_EQ(bytes(store::user), user_before);
      EXPECT_EQ(bytes(store::system), system_before);
    }
  }
}

TEST_F(SetenvTest, SetsProcessEnvironmentOnlyWhenAskedAndWritten) {
  struct row {
    const char* label;
    bool update_process, append;
    const char* separator;
    std::optional<std::string> process_before;
    const char* stored;  // the user store's text before; "" for none
    std::optional<std::string> process_after;
  };
  const row rows[] = {
      {"append onto process value", true, true, ":", "p", "", "p:c"},
      {"append onto unset", true, true, ":", std::nullopt, "", "c"},
      {"append onto empty", true, true, ":", "", "", "c"},
      {"default separator", true, true, "", "p", "", "p;c"},
      {"no item test in the process", true, true, ";", "c", "a", "c;c"},
      {"replace", true, false, ";", "p", "", "c"},
      {"not asked", false, true, ";", "p", "", "p"},
      {"not asked, unset", false, false, ";", std::nullopt, "", std::nullopt},
      {"false result", true, true, ";", "p", "a;C", "p"},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.label);
    put(store::user, *r.stored ? std::optional<QByteArray>(QByteArray("P=") + r.stored + '\n')
                               : std::nullopt);
    EnvGuard process("P", r.process_before);
    QString scope;
    cfgq_setenv("P", "c", scope, r.append, r.separator, r.update_process);
    const char* now = std::getenv("P");
    EXPECT_EQ(now ? std::optional<std::string>(now) : std::nullopt, r.process_after);
  }
}

TEST_F(SetenvTest, EditKeepsEveryOtherByte) {
  struct row {
    const char* label;
    std::optional<QByteArray> before;
    const char* value;
    std::optional<QByteArray> after;
  };
  const row rows[] = {
      {"new file", std::nullopt, "v", "FOO=\"v\"\n"},
      {"no final line break", "# c", "v", "# c\nFOO=\"v\"\n"},
      {"replaced in place",
       "# head\nA=1\nFOO=old # not a comment\n; semi\nB='x'\n", "v",
       "# head\nA=1\nFOO=\"v\"\n; semi\nB='x'\n"},
      {"earlier duplicates dropped", "FOO=1\nA=2\n  FOO=3\n", "v", "A=2\n  FOO=\"v\"\n"},
      {"multi-line old value", "FOO=\"a\nb\"\nA=1\n", "v", "FOO=\"v\"\nA=1\n"},
      {"continued old value", "FOO=a\\\nb\nA=1\n", "v", "FOO=\"v\"\nA=1\n"},
      {"similar names kept", "FOOBAR=1\nFO=2\n", "v", "FOOBAR=1\nFO=2\nFOO=\"v\"\n"},
      {"crlf replaced", "A=1\r\nFOO=x\r\nB=2\r\n", "v", "A=1\r\nFOO=\"v\"\r\nB=2\r\n"},
      {"crlf removed", "A=1\r\nFOO=x\r\nB=2\r\n", "", "A=1\r\nB=2\r\n"},
      {"empty removes every assignment", "FOO=x\nA=1\nFOO=y", "", "A=1\n"},
      {"empty without assignment: no file", std::nullopt, "", std::nullopt},
      // Text appended here would continue the comment or the value.
      {"continued comment at end", "A=1\n# c \\\n", "v", "FOO=\"v\"\nA=1\n# c \\\n"},
      {"unfinished quote at end", "A=\"1", "v", "FOO=\"v\"\nA=\"1"},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.label);
    put(store::user, r.before);
    const auto result = cfgq_env::store_write(location(store::user), "FOO", r.value);
    EXPECT_EQ(result.outcome, write_outcome::written) << result.reason.toStdString();
    EXPECT_EQ(bytes(store::user), r.after);
  }
}

// Values that the format treats specially, each stored as its own variable V<n>.
const std::vector<QString>& odd_values() {
  static const std::vector<QString> values = {
      "$",       "${X}",       "$HOME",         "$$",         "a\\",    "\\n",      "back`tick`",
      "\"q\"",   "'s'",        "a=b",           "#hash",      ";semi",  "  both  ", "\ttab",
      "l1\nl2",  "l1\r\nl2\n", "\xC3\xA9 \xE4\xB8\xAD", "a\\\nb",  "\\$x",   "x\\"};
  return values;
}

TEST_F(SetenvTest, OddValuesRoundTripThroughTheFile) {
  for (std::size_t i = 0; i < odd_values().size(); ++i) {
    const QString& value = odd_values()[i];
    SCOPED_TRACE(value.toStdString());
    const QString name = QStringLiteral("V%1").arg(i);
    ASSERT_EQ(cfgq_env::store_write(location(store::user), name, value).outcome,
              write_outcome::written);
    EXPECT_EQ(read(store::user, name), value);
  }
  // Later writes keep the earlier values intact.
  for (std::size_t i = 0; i < odd_values().size(); ++i) {
    EXPECT_EQ(read(store::user, QStringLiteral("V%1").arg(i)), odd_values()[i]);
  }
}

// The generator prints NAME=VALUE lines, quoting a value as "..." with backslash escapes and C
// escapes for control characters.
QByteArray generator_value(const QByteArray& text) {
  if (!text.startsWith('"')) return text;
  QByteArray value;
  for (qsizetype i = 1; i + 1 < text.size(); ++i) {
    if (text[i] != '\\') {
      value.append(text[i]);
      continue;
    }
    const char c = text[++i];
    if (c == 'n') value.append('\n');
    else if (c == 't') value.append('\t');
    else if (c == 'r') value.append('\r');
    else if (c == 'x') value.append(char(text.mid(i + 1, 2).toInt(nullptr, 16))), i += 2;
    else value.append(c);
  }
  return value;
}

TEST_F(SetenvTest, OddValuesRoundTripThroughTheSessionGenerator) {
  if (!QFileInfo::exists(generator_path)) GTEST_SKIP() << "no environment.d generator here";
  // The default user file, below XDG_CONFIG_HOME; the directory does not exist yet.
  EnvGuard user_file("KORVEL_USER_ENV_FILE", std::nullopt);
  EnvGuard config_home("XDG_CONFIG_HOME", path("config").toStdString());
  for (std::size_t i = 0; i < odd_values().size(); ++i) {
    QString scope;
    ASSERT_TRUE(cfgq_setenv(QStringLiteral("CFGQ_TEST_V%1").arg(i), odd_values()[i], scope,
                            false, ";", false));
  }
  ASSERT_TRUE(QFileInfo::exists(path("config/environment.d/90-korvel.conf")));

  QProcess generator;
  QProcessEnvironment environment;
  environment.insert("HOME", m_dir.path());
  environment.insert("XDG_CONFIG_HOME", path("config"));
  generator.setProcessEnvironment(environment);
  generator.start(generator_path, {});
  ASSERT_TRUE(generator.waitForFinished(30'000));
  QMap<QByteArray, QByteArray> seen;
  for (const QByteArray& line : generator.readAllStandardOutput().split('\n')) {
    const qsizetype equals = line.indexOf('=');
    if (equals > 0) seen[line.left(equals)] = generator_value(line.mid(equals + 1));
  }
  for (std::size_t i = 0; i < odd_values().size(); ++i) {
    SCOPED_TRACE(odd_values()[i].toStdString());
    EXPECT_EQ(seen.value(QStringLiteral("CFGQ_TEST_V%1").arg(i).toUtf8()),
              odd_values()[i].toUtf8());
  }
}

TEST_F(SetenvTest, RefusesWhatTheFormatCannotHold) {
  const QByteArray before = "# kept\nA=1\n";
  const QChar lone_high(char16_t(0xD800)), lone_low(char16_t(0xDC00));
  struct row {
    const char* label;
    QString name, value;
  };
  const row rows[] = {
      {"empty name", "", "v"},
      {"leading digit", "1A", "v"},
      {"dash", "A-B", "v"},
      {"blank", "A B", "v"},
      {"equals", "A=B", "v"},
      {"non-ASCII name", QString::fromUtf8("\xC3\x89"), "v"},
      {"NUL in name", QString("A") + QChar::Null, "v"},
      {"NUL in value", "A", QString("a") + QChar::Null + "b"},
      {"lone high surrogate", "A", QString("a") + lone_high},
      {"lone low surrogate", "A", QString(lone_low) + "a"},
      {"swapped pair", "A", QString(lone_low) + lone_high},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.label);
    put(store::user, before);
    EXPECT_EQ(cfgq_env::store_write(location(store::user), r.name, r.value).outcome,
              write_outcome::refused);
    EXPECT_EQ(bytes(store::user), before);
  }
  // A valid pair next to those near misses is written.
  EXPECT_EQ(cfgq_env::store_write(location(store::user), "A_1",
                                  QString(lone_high) + lone_low).outcome,
            write_outcome::written);
}

TEST_F(SetenvTest, RefusedWriteStillReportsDoneAndTellsTheDebugChannel) {
  put(store::user, "A=1\n");
  EnvGuard debug("KORVEL_DEBUG", "CFGQ:2");
  QString scope;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(cfgq_setenv("A-B", "v", scope, false, ";", false));
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_EQ(scope, "user");
  EXPECT_EQ(announcements, 1);
  EXPECT_EQ(bytes(store::user), QByteArray("A=1\n"));
  EXPECT_NE(printed.find("CFGQ: cfgq_setenv: A-B refused to "), std::string::npos) << printed;
}

TEST_F(SetenvTest, UnwritableStoreLeavesItsFile) {
  // Works as root too: no permission can make a directory a file.
  ASSERT_TRUE(QDir().mkpath(location(store::user)));
  EnvGuard debug("KORVEL_DEBUG", "CFGQ");
  QString scope;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(cfgq_setenv("A", "v", scope, false, ";", false));
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NE(printed.find("CFGQ: cfgq_setenv: A could not be written to " +
                         location(store::user).toStdString() + ": "),
            std::string::npos)
      << printed;
  EXPECT_EQ(scope, "user");
  EXPECT_TRUE(QFileInfo(location(store::user)).isDir());
  EXPECT_EQ(announcements, 1);

  // A parent that is a file.
  put(store::system, "A=1\n");
  const QString below_file = location(store::system) + "/90-korvel.conf";
  EXPECT_EQ(cfgq_env::store_write(below_file, "A", "v").outcome, write_outcome::failed);
  EXPECT_EQ(bytes(store::system), QByteArray("A=1\n"));
}

TEST_F(SetenvTest, ReadOnlyDirectoryLeavesItsFile) {
  if (geteuid() == 0) GTEST_SKIP() << "permissions don't bind root";
  const QString locked = path("locked");
  ASSERT_TRUE(QDir().mkpath(locked));
  const QString file = locked + "/90-korvel.conf";
  ASSERT_NO_FATAL_FAILURE(cfgq_test::write_file(file, "A=1\n"));
  ASSERT_EQ(chmod(locked.toLocal8Bit().constData(), 0555), 0);
  EXPECT_EQ(cfgq_env::store_write(file, "A", "v").outcome, write_outcome::failed);
  EXPECT_EQ(cfgq_env::store_write(file, "A", "").outcome, write_outcome::failed);
  chmod(locked.toLocal8Bit().constData(), 0755);
  EXPECT_EQ(cfgq_test::read_bytes(file), QByteArray("A=1\n"));
}

TEST_F(SetenvTest, ReadsTheFileAsTheSessionGeneratorDoes) {
  put(store::user,
      "A=1\nA=\"\"\n"              // an empty value does not count
      "B = spaced  \n"             // blanks around "=" and at the end go
      "C=\"x\" 'y' z\n"            // pieces run together
      "D=a\\\nb\n"                 // escaped line break
      "# E=hidden \\\nE=hidden\n"  // a comment carried on
      "F=\"\\q\\$\"\n"             // unknown escapes keep their backslash
      "G='$$'\n"                   // "$$" even in single quotes
      "1H=x\n"                     // not a name
      "I=\xff\n"                   // not UTF-8
      "J");
  const std::pair<const char*, const char*> expected[] = {
      {"A", "1"}, {"B", "spaced"}, {"C", "xyz"}, {"D", "ab"},  {"E", ""},
      {"F", "\\q$"}, {"G", "$"},    {"1H", ""},    {"I", ""}, {"J", ""}};
  for (const auto& [name, value] : expected) {
    SCOPED_TRACE(name);
    EXPECT_EQ(read(store::user, name), QString(value));
  }
}

TEST_F(SetenvTest, UserFileFollowsXdgConfigHome) {
  EnvGuard user_file("KORVEL_USER_ENV_FILE", "");
  EnvGuard home("HOME", m_dir.path().toStdString());
  const QString under_home = path(".config/environment.d/90-korvel.conf");
  const std::pair<std::optional<std::string>, QString> rows[] = {
      {std::nullopt, under_home},
      {"", under_home},
      {"relative/dir", under_home},
      {"/xdg", "/xdg/environment.d/90-korvel.conf"},
  };
  for (const auto& [config_home, expected] : rows) {
    SCOPED_TRACE(config_home.value_or("(unset)"));
    EnvGuard guard("XDG_CONFIG_HOME", config_home);
    EXPECT_EQ(location(store::user), expected);
  }
  EnvGuard system_file("KORVEL_SYSTEM_ENV_FILE", std::nullopt);
  EXPECT_EQ(location(store::system), "/etc/environment.d/90-korvel.conf");
}

}  // namespace
