// Persistent environment variables: store choice, list rules, the process environment, the
// session's own value, what the stores refuse, and where the user's store lives.
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_file_private_dir.h"
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
    // The session's value: the user store reads it as "${V}" while neither file sets V.
    const char* session = nullptr;
  };
  const auto none = std::nullopt;
  const row rows[] = {
      {"neither store", none, none, "c", true, ";", true, "user", "c", ""},
      {"neither, list value kept whole", none, "OTHER=x\n", "a;;b", true, ";", true, "user", "a;;b", ""},
      {"append drops empty items", "V=a;;b;\n", none, "c", true, ";", true, "user", "a;b;c", ""},
      {"replace", "V=a;b\n", none, "c", false, ";", true, "user", "c", ""},
      {"present ignoring case, replace", "V=a;b\n", none, "B", false, ";", false, "-", "a;b", ""},
      {"present ignoring case, append", "V=a;b\n", none, "A", true, ";", false, "-", "a;b", ""},
      {"part of an item is not present", "V=ab;c\n", none, "b", true, ";", true, "user", "ab;c;b", ""},
      {"machine only", none, "V=x;y\n", "z", true, ";", true, "system", "", "x;y;z"},
      {"machine only, present", none, "V=x;Y\n", "y", true, ";", false, "-", "", "x;Y"},
      {"both: user only, machine text not tested", "V=u\n", "V=m\n", "m", true, ";", true, "user", "u;m", "m"},
      {"empty user text counts as absent", "V=\"\"\n", "V=m\n", "c", true, ";", true, "system", "", "m;c"},
      {"empty separator is ';'", "V=a;b\n", none, "c", true, "", true, "user", "a;b;c", ""},
      {"colon separator, ';' inside an item", "V=a;b:c\n", none, "b", true, ":", true, "user", "a;b:c:b", ""},
      {"separator matched with case", "V=aXb\n", none, "b", true, "x", true, "user", "aXbxb", ""},
      {"longer separator", "V=a::b::::c\n", none, "b", false, "::", false, "-", "a::b::::c", ""},
      {"session: append extends", none, none, "c", true, ";", true, "user", "${V};c", "", "s"},
      {"session: replace replaces", none, none, "c", false, ";", true, "user", "c", "", "s"},
      {"session: the reference is an item", none, none, "${v}", true, ";", false, "-", "${V}", "", "s"},
      {"session: machine file first", none, "V=m\n", "c", true, ";", true, "system", "", "m;c", "s"},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.label);
    EnvGuard session("V", r.session ? std::optional<std::string>(r.session) : std::nullopt);
    put(store::user, r.user);
    put(store::system, r.system);
    const auto user_before = bytes(store::user), system_before = bytes(store::system);
    announcements = 0;
    QString scope = QStringLiteral("-");
    EXPECT_EQ(cfgq_setenv("V", r.value, scope, r.append, r.separator, false), r.result);
    EXPECT_EQ(scope, QString(r.scope));
    EXPECT_EQ(read(store::user, "V"), QString(r.user_after));
    EXPECT_EQ(read(store::system, "V"), QString(r.system_after));
    EXPECT_EQ(announcements, r.result ? 1 : 0);
    if (!r.result) { EXPECT_TRUE(bytes(store::user) == user_before && bytes(store::system) == system_before); }
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
    put(store::user, *r.stored ? std::optional<QByteArray>(QByteArray("P=") + r.stored + '\n') : std::nullopt);
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
  const std::pair<QString, QString> rows[] = {
      {"", "v"}, {"1A", "v"}, {"A-B", "v"}, {"A B", "v"}, {"A=B", "v"}, {QString::fromUtf8("\xC3\x89"), "v"},
      {QString("A") + QChar::Null, "v"}, {"A", QString("a") + QChar::Null + "b"}, {"A", QString("a") + lone_high},
      {"A", QString(lone_low) + "a"}, {"A", QString(lone_low) + lone_high},
  };
  for (const auto& [name, value] : rows) {
    SCOPED_TRACE((name + "=" + value).toStdString());
    put(store::user, before);
    EXPECT_EQ(cfgq_env::store_write(location(store::user), name, value).outcome, write_outcome::refused);
    EXPECT_EQ(bytes(store::user), before);
  }
  // A valid pair next to those near misses is written.
  EXPECT_EQ(cfgq_env::store_write(location(store::user), "A_1", QString(lone_high) + lone_low).outcome,
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

// A writer killed mid-write leaves its staged file in a private directory beside the store: the
// next write removes it once nobody holds its owner file, and leaves a live writer's and the
// person's own files alone, whatever their names.
TEST_F(SetenvTest, NextWriteRemovesOnlyDeadWritersLeftovers) {
  const QString store_file = location(store::user);
  const QString parent = cfgq_beside_parent(store_file);
  QString why;
  const auto live = cfgq_private_dir::make(parent, {}, &why);
  ASSERT_TRUE(live) << why.toStdString();
  const QString dead = parent + "/cfgq.AbCdEf";
  ASSERT_TRUE(QDir().mkpath(dead));
  for (const QString& file : {dead + "/owner", dead + "/new.XyZ123", live->file("new.XyZ123")}) {
    cfgq_test::write_file(file, "x");
  }
  const QStringList kept = {store_file + ".cfgq-new.99999.AbCdEf", store_file + ".bak",
                            store_file + ".AbCdEf"};
  for (const QString& file : kept) cfgq_test::write_file(file, "x");
  ASSERT_EQ(cfgq_env::store_write(store_file, "A", "1").outcome, write_outcome::written);
  EXPECT_FALSE(QFile::exists(dead));
  EXPECT_TRUE(QFile::exists(live->file("new.XyZ123")));
  for (const QString& file : kept) EXPECT_TRUE(QFile::exists(file)) << file.toStdString();
}

TEST_F(SetenvTest, UserFileFollowsXdgConfigHome) {
  EnvGuard user_file("KORVEL_USER_ENV_FILE", "");
  EnvGuard home("HOME", m_dir.path().toStdString());
  const QString under_home = path(".config/environment.d/90-korvel.conf");
  const std::pair<std::optional<std::string>, QString> rows[] = {
      {std::nullopt, under_home}, {"", under_home}, {"relative/dir", under_home}, {"/xdg", "/xdg/environment.d/90-korvel.conf"}};
  for (const auto& [config_home, expected] : rows) {
    SCOPED_TRACE(config_home.value_or("(unset)"));
    EnvGuard guard("XDG_CONFIG_HOME", config_home);
    EXPECT_EQ(location(store::user), expected);
  }
  // Without a usable HOME, the password database's home directory.
  const passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const QString from_database = QString(entry->pw_dir) + "/.config/environment.d/90-korvel.conf";
  using maybe = std::optional<std::string>;
  for (const maybe& bad_home : {maybe(), maybe(""), maybe("relative"), maybe("/nonexistent/x")}) {
    EnvGuard guard("HOME", bad_home);
    EXPECT_EQ(location(store::user), QDir(entry->pw_dir).exists() ? from_database : QString());
  }
  EnvGuard system_file("KORVEL_SYSTEM_ENV_FILE", std::nullopt);
  EXPECT_EQ(location(store::system), "/etc/environment.d/80-korvel.conf");
}

}  // namespace
