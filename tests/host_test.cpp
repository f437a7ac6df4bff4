// The stand-ins for the suite's infrastructure libraries, steered through their environment
// variables as a deployed suite would steer them.
#include <cstdarg>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cfg.h"
#include "fio.h"
#include "gen.h"
#include "host_defaults.h"
#include "mem.h"
#include "msg.h"
#include "test_support.h"
#include "tst.h"
#include "ver.h"

namespace {

using cfgq_test::EnvGuard;
using cfgq_test::read_bytes;
using cfgq_test::write_file;

// Each test gets a scratch directory; every variable a stand-in reads starts unset.
class HostTest : public ::testing::Test {
 protected:
  QString path(const QString& name) const { return QDir(m_dir.path()).absoluteFilePath(name); }
  std::string dir() const { return m_dir.path().toStdString(); }


 private:
  QTemporaryDir m_dir;
  EnvGuard m_debug{"KORVEL_DEBUG", std::nullopt};
  EnvGuard m_config{"KORVEL_CONFIG_ON", std::nullopt};
  EnvGuard m_regtest{"KORVEL_REGTEST", std::nullopt};
  EnvGuard m_qt{"KORVEL_QT_PROCESS", std::nullopt};
};

bool debug(const char* channel, MSG_D_LEVEL level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const bool printed = msg_local_vdebug(channel, level, format, args);
  va_end(args);
  return printed;
}

// ---- Messaging ---------------------------------------------------------------------------------

TEST_F(HostTest, DebugSettingEnablesChannelsUpToTheirLevel) {
  struct Row {
    const char* setting;  // nullptr: unset
    int highest_cfgq_level;  // -1: CFGQ prints nothing
  };
  // Malformed levels ("CFGQ:", "CFGQ:2x") enable nothing for their entry.
  const Row rows[] = {
      {nullptr, -1},          {"", -1},          {"CFGQ", 1 << 20},     {"CFGQ:2", 2},
      {" CFGQ : 3 ", 3},      {"OTHER:5,CFGQ:1", 1}, {",,CFGQ:1,", 1}, {"CFGQ:1,CFGQ:3", 3},
      {"OTHER", -1},          {"cfgq", -1},      {"CFGQX:3", -1},       {"CFGQ:", -1},
      {"CFGQ:2x", -1},        {"CFGQ:x,CFGQ:1", 1}, {"CFGQ;2", -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.setting ? std::string("KORVEL_DEBUG=\"") + row.setting + "\"" : "unset");
    EnvGuard setting("KORVEL_DEBUG",
                     row.setting ? std::optional<std::string>(row.setting) : std::nullopt);
    const MSG_D reporter(nullptr);
    for (const MSG_D_LEVEL level : {MSG_D_LEVEL_0, MSG_D_LEVEL_1, MSG_D_LEVEL_2, MSG_D_LEVEL_3}) {
      SCOPED_TRACE(level);
      const bool expected = level <= row.highest_cfgq_level;
      EXPECT_EQ(reporter.is_channel_enabled("CFGQ", level), expected);
      ::testing::internal::CaptureStderr();
      EXPECT_EQ(debug("CFGQ", level, "%s", "text"), expected);
      EXPECT_EQ(::testing::internal::GetCapturedStderr(), expected ? "CFGQ: text\n" : "");
    }
    EXPECT_EQ(MSG_D::debug_messages_enabled(nullptr), row.setting && row.setting[0] != '\0');
  }
}

TEST_F(HostTest, DebugLineIsChannelThenText) {
  EnvGuard setting("KORVEL_DEBUG", "CFGQ:2");
  ::testing::internal::CaptureStderr();
  // The text is an argument: '%' in it is printed as it stands.
  EXPECT_TRUE(debug("CFGQ", MSG_D_LEVEL_2, "%s", "100% done, %d left"));
  EXPECT_TRUE(debug("CFGQ", MSG_D_LEVEL_1, "%s=%d", "count", 7));
  // The unchecked output prints whatever the setting.
  EXPECT_TRUE(msg_local_vdebug_no_checking_impl("OTHER", "%s", "always"));
  EXPECT_FALSE(msg_local_vdebug_no_checking_impl(nullptr, "%s", "nowhere"));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "CFGQ: 100% done, %d left\nCFGQ: count=7\nOTHER: always\n");
}

// ---- Configuration and test mode ---------------------------------------------------------------

TEST_F(HostTest, ConfigurationSwitchIsOnOnlyWhenNamedAsAWholeEntry) {
  const std::string name = "separate_settings_for_64_bit";
  struct Row {
    const char* setting;
    bool on;
  };
  const Row rows[] = {
      {nullptr, false}, {"", false}, {"separate_settings_for_64_bit", true},
      {"other,separate_settings_for_64_bit", true}, {"separate_settings_for_64_bit,other", true},
      {" separate_settings_for_64_bit ", true},     {"separate_settings_for_64_bit_x", false},
      {"separate_settings", false},                 {"SEPARATE_SETTINGS_FOR_64_BIT", false},
      {"other;separate_settings_for_64_bit", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.setting ? row.setting : "unset");
    EnvGuard setting("KORVEL_CONFIG_ON",
                     row.setting ? std::optional<std::string>(row.setting) : std::nullopt);
    EXPECT_EQ(cfg_is_on(name), row.on);
  }
  EnvGuard empty_entries("KORVEL_CONFIG_ON", ",,");
  EXPECT_FALSE(cfg_is_on(""));
}

TEST_F(HostTest, RegressionTestModeNeedsExactlyOne) {
  for (const char* value : {"1", "1 ", " 1", "01", "true", "0", "", "2"}) {
    SCOPED_TRACE(std::string("KORVEL_REGTEST=\"") + value + "\"");
    EnvGuard setting("KORVEL_REGTEST", value);
    EXPECT_EQ(tst_is_regtest_mode(), std::string(value) == "1");
  }
  EXPECT_FALSE(tst_is_regtest_mode());
}

// ---- General utilities -------------------------------------------------------------------------

TEST_F(HostTest, DirectoriesAndProcessKindComeFromTheEnvironment) {
#ifdef _WIN32
  // The system's choice after TMP: TEMP, as the run set it. Empty text reads as unset there.
  const std::string fallback = QDir::fromNativeSeparators(qEnvironmentVariable("TEMP")).toStdString();
  const std::string scratch = "C:/scratch dir";
#else
  const std::string fallback = "/tmp";
  const std::string scratch = "/var/scratch dir";
#endif
  const std::pair<std::optional<std::string>, std::string> temp_dirs[] = {
      {std::nullopt, fallback}, {"", fallback}, {scratch, scratch}};
  for (const auto& [setting, expected] : temp_dirs) {
    EnvGuard guard("TMPDIR", setting);
    EXPECT_EQ(gen_get_temp_path(), expected) << setting.value_or("unset");
  }
  EnvGuard home("HOME", "/home/\xc3\xa9mile");
  EXPECT_EQ(gen_get_user_profile_directory(), "/home/\xc3\xa9mile");
  EXPECT_FALSE(gen_get_is_qt());
  for (const char* value : {"1", "0", " 1", ""}) {
    EnvGuard qt("KORVEL_QT_PROCESS", value);
    EXPECT_EQ(gen_get_is_qt(), std::string(value) == "1") << value;
  }
}

TEST_F(HostTest, TemporaryFilesAreNewPrivateAndNeverAPlantedName) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only";
#else
  // Names a careless implementation might pick, planted as links to a file that must survive.
  ASSERT_NO_FATAL_FAILURE(write_file(path("victim"), "keep"));
  const std::string pid = std::to_string(::getpid());
  for (const std::string& name : {std::string("CFGQ"), std::string("CFGQXXXXXX"), "CFGQ" + pid,
                                  std::string("CFGQ0"), std::string("CFGQ.tmp")}) {
    ASSERT_EQ(::symlink(path("victim").toStdString().c_str(), (dir() + "/" + name).c_str()), 0);
  }
  const mode_t old_mask = ::umask(0277);  // the file must be usable by its owner whatever the mask
  std::set<std::string> paths;
  for (int i = 0; i < 30; ++i) {
    // A directory given with its trailing separator gives the same kind of path.
    const std::string made = gen_create_temp_file(i % 2 ? dir() : dir() + "/", "CFGQ");
    ASSERT_FALSE(made.empty());
    EXPECT_TRUE(paths.insert(made).second) << "repeated " << made;
    const QFileInfo info(QString::fromStdString(made));
    EXPECT_EQ(info.absolutePath(), QString::fromStdString(dir()));
    EXPECT_TRUE(info.fileName().startsWith("CFGQ")) << made;
    struct stat st {};
    ASSERT_EQ(::lstat(made.c_str(), &st), 0);
    EXPECT_TRUE(S_ISREG(st.st_mode)) << made;
    EXPECT_EQ(st.st_mode & 07777, static_cast<mode_t>(0600)) << made;
    EXPECT_EQ(st.st_size, 0);
  }
  ::umask(old_mask);
  EXPECT_EQ(read_bytes(path("victim")), "keep");
  EXPECT_EQ(gen_create_temp_file(dir() + "/not/there", "CFGQ"), "");
  EXPECT_FALSE(QFile::exists(path("not")));
#endif
}

// ---- File system -------------------------------------------------------------------------------

TEST_F(HostTest, RemoveToleratesAbsentFilesAndNeverFollowsALink) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only";
#else
  ASSERT_NO_FATAL_FAILURE(write_file(path("target"), "keep"));
  ASSERT_EQ(::symlink(path("target").toStdString().c_str(), path("link").toStdString().c_str()), 0);
  EXPECT_TRUE(FIO_FILE_SYSTEM::remove_if_exists(path("link").toStdString()));
  EXPECT_FALSE(QFileInfo(path("link")).isSymLink());
  EXPECT_EQ(read_bytes(path("target")), "keep");
  EXPECT_TRUE(FIO_FILE_SYSTEM::remove_if_exists(path("link").toStdString()));
  EXPECT_FALSE(FIO_FILE_SYSTEM::remove_if_exists(""));
#endif
}

// ---- Version -----------------------------------------------------------------------------------

// Runs `read` in a child under `variable`=`setting` (nullptr: unset); the child passes when
// `read` gives `expected` both before and after the variable changes.
template <typename Read, typename T>
void expect_read_once(const char* variable, const char* setting, Read read, const T& expected) {
  SCOPED_TRACE(setting ? std::string(variable) + "=\"" + setting + "\"" : "unset");
  EnvGuard guard(variable, setting ? std::optional<std::string>(setting) : std::nullopt);
  EXPECT_EXIT(
      {
        const bool first = read() == expected;
        cfgq_test::set_env(variable, "99.9");
        std::exit(first && read() == expected ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// The version stand-in reads its variables once per process, so every case runs in a child.
TEST_F(HostTest, VersionsComeFromTheEnvironmentOnce) {
  std::vector<std::string> default_versions;
  for (const QString& version : QString(KORVEL_DEFAULT_VERSIONS).split(';', Qt::SkipEmptyParts)) {
    default_versions.push_back(version.toStdString());
  }
  const std::pair<const char*, std::vector<std::string>> lists[] = {
      {nullptr, default_versions},
      {"24.3", {"24.3"}},
      {"24.3;24.1;23.4", {"24.3", "24.1", "23.4"}},
      {"24.3;;24.1;", {"24.3", "24.1"}},
      {"25.1;24.3", {"25.1", "24.3"}},
  };
  for (const auto& [setting, expected] : lists) {
    expect_read_once("KORVEL_VERSIONS", setting, ver_get_all_versions, expected);
  }
  const std::pair<const char*, std::string> running[] = {
      {nullptr, KORVEL_DEFAULT_VERSION}, {"26.2", "26.2"}, {"26.2 Lite", "26.2 Lite"}};
  for (const auto& [setting, expected] : running) {
    expect_read_once("KORVEL_VERSION", setting, ver_get_version, expected);
  }
}

// A variable set to empty text is not an unset one: it names no version.
TEST_F(HostTest, EmptyVersionTextsNameNoVersion) {
  expect_read_once("KORVEL_VERSIONS", "", ver_get_all_versions, std::vector<std::string>{});
  expect_read_once("KORVEL_VERSION", "", ver_get_version, std::string());
}

}  // namespace
