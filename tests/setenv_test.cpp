// Persistent environment variables: store choice, list rules, the process environment, the
// session's own value, what the stores refuse, and where the user's store lives.
#include <pwd.h>
#include <unistd.h>

#include <optional>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_setenv.h"
#include "cfgq_tool.h"
#include "test_support.h"

namespace {

using cfgq_env::store;
using cfgq_env::write_outcome;
using cfgq_test::EnvGuard;

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

// A variable this process's environment defines reads as "${NAME}" from the user's store while
// neither file sets it, so that an append extends the session's value.
TEST_F(SetenvTest, SessionValueIsTheUserStoresUntilAFileSetsIt) {
  EnvGuard session("V", "s");
  const struct {
    const char* label;
    std::optional<QByteArray> system;
    const char* value;
    bool append, result;
    const char* scope;
    const char* user_after;
    const char* system_after;
  } rows[] = {
      {"append extends", std::nullopt, "c", true, true, "user", "${V};c", ""},
      {"replace replaces", std::nullopt, "c", false, true, "user", "c", ""},
      {"the reference is an item", std::nullopt, "${v}", true, false, "-", "${V}", ""},
      {"machine file first", "V=m\n", "c", true, true, "system", "", "m;c"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.label);
    put(store::user, std::nullopt);
    put(store::system, r.system);
    QString scope = QStringLiteral("-");
    EXPECT_EQ(cfgq_setenv("V", r.value, scope, r.append, ";", false), r.result);
    EXPECT_EQ(scope, QString(r.scope));
    EXPECT_EQ(read(store::user, "V"), QString(r.user_after));
    EXPECT_EQ(read(store::system, "V"), QString(r.system_after));
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
  // The cfgq tool asks for it after the call.
  cfgq_write_failure failure;
  ASSERT_TRUE(cfgq_tool_take_write_failure(&failure));
  EXPECT_EQ(failure.path, location(store::user));
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
  // Without a usable HOME, the password database's home directory.
  const passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const QString from_database = QString(entry->pw_dir) + "/.config/environment.d/90-korvel.conf";
  for (const std::optional<std::string>& bad_home :
       {std::optional<std::string>(), std::optional<std::string>(""),
        std::optional<std::string>("relative"), std::optional<std::string>("/nonexistent/x")}) {
    EnvGuard guard("HOME", bad_home);
    EXPECT_EQ(location(store::user), QDir(entry->pw_dir).exists() ? from_database : QString());
  }
  EnvGuard system_file("KORVEL_SYSTEM_ENV_FILE", std::nullopt);
  EXPECT_EQ(location(store::system), "/etc/environment.d/80-korvel.conf");
}

}  // namespace
