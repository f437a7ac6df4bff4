// The settings view: main-key names, the groups each constructor enters, the section table, where
// the settings file lies, how it is opened and set aside, and the process's temporary file.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QtGlobal>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"
#include "ver.h"

namespace {

using cfgq_test::EnvGuard;
using cfgq_test::read_bytes;
using cfgq_test::write_file;
using Key = CFGQ_REGISTRY_KEY;

constexpr qint64 size_limit_bytes = 10'000'000;

// An INI file of exactly `size` bytes holding [<main_key>] k=v, padded with a comment line.
QByteArray settings_file_of_size(const QByteArray& main_key, qint64 size) {
  QByteArray bytes = "[" + main_key + "]\nk=v\n;";
  bytes += QByteArray(size - bytes.size() - 1, 'x');
  bytes += '\n';
  return bytes;
}

// Qt warns on an endGroup without a matching beginGroup; counting those tells how many levels a
// view had entered, including levels that add nothing to the group path.
int unmatched_end_groups = 0;
void count_unmatched_end_groups(QtMsgType, const QMessageLogContext&, const QString& text) {
  if (text.contains(QLatin1String("No matching beginGroup"))) ++unmatched_end_groups;
}

// The view's group path, then the path after each endGroup until none is left to leave.
std::vector<QString> group_trail(Key& view) {
  std::vector<QString> trail{view.group()};
  unmatched_end_groups = 0;
  const QtMessageHandler previous = qInstallMessageHandler(count_unmatched_end_groups);
  for (int i = 0; i < 8; ++i) {
    view.endGroup();
    if (unmatched_end_groups != 0) break;
    trail.push_back(view.group());
  }
  qInstallMessageHandler(previous);
  return trail;
}

// Runs in a child process: prints each mismatch and returns how many there were.
struct MainKeyRow {
  const char* version;
  const char* suffix;
  const char* expected;
};
int main_key_mismatches(const std::vector<MainKeyRow>& rows) {
  int mismatches = 0;
  for (const MainKeyRow& row : rows) {
    const QString name = Key(Key::NO_SUB_KEY, row.version, row.suffix).group();
    if (name != QString::fromUtf8(row.expected)) {
      std::fprintf(stderr, "version %s suffix %s: got %s, want %s\n",
                   row.version ? row.version : "(null)", row.suffix ? row.suffix : "(null)",
                   name.toUtf8().constData(), row.expected);
      ++mismatches;
    }
  }
  return mismatches;
}

class RegistryKeyTest : public cfgq_test::SettingsTest {
 protected:
  // The process's temporary settings file, as an isolated view reports it.
  QString temp_file() {
    EnvGuard isolated("PBUILD_BUILD", "1");
    return Key(Key::NO_MAIN_KEY, nullptr, nullptr).fileName();
  }
};

using RegistryKeyDeathTest = RegistryKeyTest;

TEST_F(RegistryKeyTest, NamesMainKeysFromVersionAndSuffix) {
  const MainKeyRow rows[] = {
      {"25.1", nullptr, "25.1_pro"},
      {"25.1", "_pro", "25.1_pro"},
      {"25.1", "_std", "25.1_std"},
      {"25.1", "", "25.1_pro"},
      {"25.1_pro", nullptr, "25.1_pro"},
      {"25.1_pro", "_pro", "25.1_pro"},
      {"25.1_pro", "_std", "25.1_pro_std"},
      // A name that already ends with the suffix still gets "_pro", unless it ends with "_pro".
      {"25.1_std", "_std", "25.1_std_pro"},
      {"25.1pro", "pro", "25.1pro_pro"},
      // Both endings compare case-sensitively.
      {"25.1_PRO", nullptr, "25.1_PRO_pro"},
      {"25.1_STD", "_std", "25.1_STD_std"},
      {"", nullptr, "_pro"},
      {"", "_std", "_std"},
      {"24.3 Lite", " Lite", "24.3 Lite_pro"},
  };
  for (const MainKeyRow& row : rows) {
    SCOPED_TRACE(std::string("version \"") + row.version + "\" suffix " +
                 (row.suffix ? std::string("\"") + row.suffix + "\"" : "null"));
    EXPECT_EQ(Key(Key::NO_SUB_KEY, row.version, row.suffix).group(),
              QString::fromUtf8(row.expected));
    // The section-name constructor names its main key the same way.
    EXPECT_EQ(Key(static_cast<const char*>(nullptr), row.version, row.suffix).group(),
              QString::fromUtf8(row.expected));
  }
  // Without a version text the running version is used.
  EXPECT_EQ(Key(Key::NO_SUB_KEY, nullptr, nullptr).group(),
            QString::fromStdString(ver_get_version()) + "_pro");
  EXPECT_EQ(Key(Key::NO_SUB_KEY, nullptr, "_std").group(),
            QString::fromStdString(ver_get_version()) + "_std");
}

// The 64-bit switch is read once per process, so each case runs in a fresh child.
TEST_F(RegistryKeyTest, SeparateSixtyFourBitSettingsAddMarkerBeforeSuffix) {
  EnvGuard on("KORVEL_CONFIG_ON", "other,separate_settings_for_64_bit");
  EXPECT_EXIT(std::exit(main_key_mismatches({
                  {"25.1", nullptr, "25.1_64-Bit_pro"},
                  {"25.1", "_pro", "25.1_64-Bit_pro"},
                  {"25.1", "_std", "25.1_64-Bit_std"},
                  {"25.1_pro", nullptr, "25.1_pro_64-Bit_pro"},
                  {"", nullptr, "_64-Bit_pro"},
                  // The marker itself as the suffix: the name ends with it, so "_pro" follows.
                  {"25.1", "_64-Bit", "25.1_64-Bit_pro"},
              })),
              ::testing::ExitedWithCode(0), "");
}

TEST_F(RegistryKeyTest, SixtyFourBitSwitchIsReadOnlyAtFirstMainKey) {
  EXPECT_EXIT(
      {
        const int before = main_key_mismatches({{"25.1", nullptr, "25.1_pro"}});
        cfgq_test::set_env("KORVEL_CONFIG_ON", "separate_settings_for_64_bit");
        std::exit(before + main_key_mismatches({{"25.1", nullptr, "25.1_pro"}}));
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        cfgq_test::set_env("KORVEL_CONFIG_ON", "separate_settings_for_64_bit");
        const int before = main_key_mismatches({{"25.1", nullptr, "25.1_64-Bit_pro"}});
        cfgq_test::set_env("KORVEL_CONFIG_ON", std::nullopt);
        std::exit(before + main_key_mismatches({{"25.1", nullptr, "25.1_64-Bit_pro"}}));
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(RegistryKeyTest, EachConstructorEntersItsGroups) {
  using make_view = std::function<std::unique_ptr<Key>()>;
  const auto section = [](Key::SUB_KEY key) {
    return [key] { return std::make_unique<Key>(key, "25.1", nullptr); };
  };
  const auto named = [](const char* name) {
    return [name] { return std::make_unique<Key>(name, "25.1", nullptr); };
  };
  // Views below a view; the parent is gone before the trail is taken.
  const auto below = [](Key::SUB_KEY parent_key, auto group) {
    return [parent_key, group] {
      const Key parent(parent_key, "25.1", nullptr);
      return std::make_unique<Key>(parent, group);
    };
  };
  struct Row {
    const char* what;
    make_view make;
    std::vector<QString> trail;  // the path, then the path after each endGroup
  };
  const std::string with_zero("Ab\0cd", 5);
  const std::string zero_first("\0x", 2);
  const Row rows[] = {
      {"NO_MAIN_KEY", section(Key::NO_MAIN_KEY), {""}},
      {"NO_SUB_KEY", section(Key::NO_SUB_KEY), {"25.1_pro", ""}},
      {"GENERAL", section(Key::GENERAL), {"25.1_pro/General", "25.1_pro", ""}},
      {"ECO", section(Key::ECO), {"25.1_pro/Change Manager Window", "25.1_pro", ""}},
      // An empty group name: one more level, no change of path.
      {"LAST_SUB_KEY", section(Key::LAST_SUB_KEY), {"25.1_pro", "25.1_pro", ""}},
      {"NO_MAIN_KEY ignores version and suffix",
       [] { return std::make_unique<Key>(Key::NO_MAIN_KEY, "x", "_y"); }, {""}},
      {"section name", named("Programmer"), {"25.1_pro/Programmer", "25.1_pro", ""}},
      {"section name outside the table", named("My Tool"), {"25.1_pro/My Tool", "25.1_pro", ""}},
      {"section name with a slash is one level", named("A/B"), {"25.1_pro/A/B", "25.1_pro", ""}},
      {"section name in UTF-8", named("Gr\xc3\xb6\xc3\x9f" "e"),
       {QString::fromUtf8("25.1_pro/Gr\xc3\xb6\xc3\x9f" "e"), "25.1_pro", ""}},
      {"null section name", named(nullptr), {"25.1_pro", ""}},
      {"empty section name", named(""), {"25.1_pro", ""}},
      {"below root, const char*", below(Key::NO_MAIN_KEY, "G"), {"G", "", ""}},
      {"below root, QString", below(Key::NO_MAIN_KEY, QString("G")), {"G", "", ""}},
      {"below root, std::string", below(Key::NO_MAIN_KEY, std::string("G")), {"G", "", ""}},
      {"below root, null", below(Key::NO_MAIN_KEY, static_cast<const char*>(nullptr)), {"", ""}},
      {"below root, empty QString", below(Key::NO_MAIN_KEY, QString()), {"", ""}},
      {"below root, empty std::string", below(Key::NO_MAIN_KEY, std::string()), {"", ""}},
      // The parent's whole path is a single level.
      {"below GENERAL, const char*", below(Key::GENERAL, "Sub"),
       {"25.1_pro/General/Sub", "25.1_pro/General", ""}},
      {"below GENERAL, QString", below(Key::GENERAL, QString("Sub")),
       {"25.1_pro/General/Sub", "25.1_pro/General", ""}},
      {"below GENERAL, std::string", below(Key::GENERAL, std::string("Sub")),
       {"25.1_pro/General/Sub", "25.1_pro/General", ""}},
      {"below GENERAL, empty const char*", below(Key::GENERAL, ""), {"25.1_pro/General", ""}},
      {"below GENERAL, empty QString", below(Key::GENERAL, QString("")), {"25.1_pro/General", ""}},
      {"below GENERAL, std::string with a zero", below(Key::GENERAL, with_zero),
       {"25.1_pro/General/Ab", "25.1_pro/General", ""}},
      // Not of length 0, so a group is entered: the text before the zero, which is empty.
      {"below GENERAL, std::string starting with a zero", below(Key::GENERAL, zero_first),
       {"25.1_pro/General", "25.1_pro/General", ""}},
      {"below a view below a view",
       [] {
         const Key general(Key::GENERAL, "25.1", nullptr);
         const Key middle(general, "A");
         return std::make_unique<Key>(middle, "B");
       },
       {"25.1_pro/General/A/B", "25.1_pro/General/A", ""}},
  };
  // Twice: a thread's views take over the settings objects of the views before them.
  for (const int round : {1, 2}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(std::string(row.what) + ", round " + std::to_string(round));
      const std::unique_ptr<Key> view = row.make();
      EXPECT_EQ(group_trail(*view), row.trail);
    }
  }
}

TEST_F(RegistryKeyTest, ViewBelowViewIsIndependentOfItsParent) {
  Key parent(Key::GENERAL, "25.1", nullptr);
  Key child(parent, "Sub");
  parent.beginGroup("Elsewhere");
  EXPECT_EQ(child.group(), "25.1_pro/General/Sub");
  child.endGroup();
  EXPECT_EQ(parent.group(), "25.1_pro/General/Elsewhere");
}

TEST_F(RegistryKeyTest, GroupsAreWrittenToTheFileAsPaths) {
  {
    Key eco(Key::ECO, "25.1", nullptr);
    eco.set_value("Width", 640);
    Key older(Key::GENERAL, "24.3", "_std");
    older.set_value("Show_tips", "No");
  }
  EXPECT_EQ(raw_value("25.1_pro/Change Manager Window/Width").toInt(), 640);
  EXPECT_EQ(raw_value("24.3_std/General/Show_tips").toString(), "No");
  // The root view lists the main key of every version and edition in the file.
  const Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  EXPECT_EQ(root.childGroups(), (QList<QString>{"24.3_std", "25.1_pro"}));
}

TEST_F(RegistryKeyDeathTest, SectionOutOfRangeIsAnInternalError) {
  for (const int section : {-1, static_cast<int>(Key::LAST_SUB_KEY) + 1}) {
    SCOPED_TRACE(section);
    EXPECT_DEATH(Key(static_cast<Key::SUB_KEY>(section), "25.1", nullptr),
                 "key >= SUB_KEY_BEGIN\\(\\) && key < SUB_KEY_END\\(\\)\n"
                 "Module: CFGQ\nFile: gcl/cfgq/cfgq_registry_key");
  }
}

// ---- Where the settings file lies ------------------------------------------------------------

TEST_F(RegistryKeyTest, OnlyExactIsolationValuesSelectTheTemporaryFile) {
  const QString temp = temp_file();
  EXPECT_TRUE(QFileInfo(temp).fileName().startsWith("CFGQ")) << temp.toStdString();
  EXPECT_EQ(QFileInfo(temp).absolutePath(),
            QFileInfo(QString::fromStdString(cfgq_test::get_env("TMPDIR").value_or(""))).absoluteFilePath());
  struct Row {
    const char* variable;
    const char* value;
    bool isolated;
  };
  const Row rows[] = {
      {"PBUILD_BUILD", "1", true}, {"PBUILD_BUILD", "1 ", false}, {"PBUILD_BUILD", " 1", false},
      {"PBUILD_BUILD", "01", false}, {"PBUILD_BUILD", "true", false}, {"PBUILD_BUILD", "", false},
      {"QT_QPA_PLATFORM", "minimal", true}, {"QT_QPA_PLATFORM", "Minimal", false},
      {"QT_QPA_PLATFORM", "offscreen", false}, {"QT_QPA_PLATFORM", "minimal ", false},
      {"KORVEL_REGTEST", "1", true}, {"KORVEL_REGTEST", "0", false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.variable) + "=\"" + row.value + "\"");
    EnvGuard guard(row.variable, row.value);
    EXPECT_EQ(Key(Key::GENERAL, nullptr, nullptr).fileName(), row.isolated ? temp : profile_file());
  }
  EXPECT_EQ(Key(Key::GENERAL, nullptr, nullptr).fileName(), profile_file());
}

TEST_F(RegistryKeyTest, IsolatedViewsShareTheTemporaryFile) {
  EnvGuard isolated("KORVEL_REGTEST", "1");
  QString written_to;
  {
    Key writer(Key::GENERAL, "shared", nullptr);
    writer.set_value("Count", 42);
    written_to = writer.fileName();
  }
  Key reader("General", "shared", nullptr);
  EXPECT_EQ(reader.fileName(), written_to);
  QVariant count;
  ASSERT_TRUE(reader.get_value("Count", &count));
  EXPECT_EQ(count.toInt(), 42);
  EXPECT_FALSE(QFile::exists(profile_file()));
  reader.remove("");
}

// The temporary file is obtained at the first path computation of the process, isolated or not.
TEST_F(RegistryKeyTest, TemporaryFileIsMadeAtFirstPathComputation) {
  EXPECT_EXIT(
      {
        const QDir tmp(QString::fromStdString(cfgq_test::get_env("TMPDIR").value_or("")));
        const Key ordinary(Key::GENERAL, nullptr, nullptr);
        const QStringList made = tmp.entryList({"CFGQ*"}, QDir::Files);
        cfgq_test::set_env("PBUILD_BUILD", "1");
        const Key isolated(Key::GENERAL, nullptr, nullptr);
        std::exit(made.size() == 1 && isolated.fileName() == tmp.absoluteFilePath(made[0]) ? 0
                                                                                             : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// A temporary directory that can't take the file leaves the path to be obtained again later.
TEST_F(RegistryKeyTest, TemporaryFileIsObtainedOnceTheDirectoryCanTakeIt) {
  const QString good_dir = home();
  EXPECT_EXIT(
      {
        cfgq_test::set_env("TMPDIR", (home() + "/missing").toUtf8().constData());
        cfgq_test::set_env("PBUILD_BUILD", "1");
        { const Key first(Key::GENERAL, nullptr, nullptr); }
        cfgq_test::set_env("TMPDIR", good_dir.toUtf8().constData());
        const QString second = Key(Key::GENERAL, nullptr, nullptr).fileName();
        const QString third = Key(Key::GENERAL, nullptr, nullptr).fileName();
        std::exit(second.startsWith(good_dir + "/CFGQ") && third == second ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// ---- Opening the file ------------------------------------------------------------------------

TEST_F(RegistryKeyTest, FileOfExactlyTheLimitIsOpened) {
  write_profile_file(settings_file_of_size("25.1_pro", size_limit_bytes));
  ASSERT_EQ(QFileInfo(profile_file()).size(), size_limit_bytes);
  const Key view(Key::NO_SUB_KEY, "25.1", nullptr);
  EXPECT_EQ(view.value("k").toString(), "v");
  EXPECT_FALSE(QFile::exists(profile_file() + ".large"));
}

// On the profile's file and on the temporary one: the newer set-aside copy replaces an older one,
// and the file starts afresh.
TEST_F(RegistryKeyTest, FileAboveTheLimitIsSetAsideAsLarge) {
  const QByteArray big = settings_file_of_size("25.1_pro", size_limit_bytes + 1);
  for (const bool isolated : {false, true}) {
    SCOPED_TRACE(isolated ? "temporary file" : "profile file");
    EnvGuard isolation("PBUILD_BUILD", isolated ? "1" : "");
    const QString file = isolated ? temp_file() : profile_file();
    write_file(file + ".large", "old large copy");
    write_file(file, big);
    {
      Key view(Key::NO_SUB_KEY, "25.1", nullptr);
      EXPECT_EQ(view.fileName(), file);
      EXPECT_TRUE(view.allKeys().isEmpty());
      EXPECT_EQ(read_bytes(file + ".large"), big);
      view.set_value("Fresh", 1);
    }
    EXPECT_TRUE(read_bytes(file).contains("Fresh=1"));
    EXPECT_LT(QFileInfo(file).size(), 100);
  }
}

TEST_F(RegistryKeyTest, AbsentFileIsCreatedOnlyByAWrite) {
  {
    Key reader(Key::GENERAL, "25.1", nullptr);
    QVariant value("untouched");
    EXPECT_FALSE(reader.get_value("Anything", &value));
    EXPECT_EQ(value.toString(), "untouched");
  }
  EXPECT_FALSE(QFile::exists(profile_file()));
  {
    Key writer(Key::GENERAL, "25.1", nullptr);
    writer.set_value("Show_tips", "Yes");
  }
  EXPECT_EQ(raw_value("25.1_pro/General/Show_tips").toString(), "Yes");
}

// ---- The process's temporary file across the library's lifetime ------------------------------

// Runs the probe program with the test's HOME and TMPDIR and returns the path it printed.
QString run_probe(const char* value) {
  QProcess probe;
  probe.start(QStringLiteral(CFGQ_VIEW_PROBE), {QString::fromUtf8(value)});
  if (!probe.waitForFinished(60'000) || probe.exitStatus() != QProcess::NormalExit ||
      probe.exitCode() != 0) {
    return QString();
  }
  return QString::fromUtf8(probe.readAllStandardOutput()).section(QLatin1Char('\n'), 0, 0).trimmed();
}

TEST_F(RegistryKeyTest, TemporaryFileIsDeletedWhenTheLibraryUnloads) {
  const QString tmp = home() + "/tmp";
  ASSERT_TRUE(QDir().mkpath(tmp));
  EnvGuard tmpdir("TMPDIR", tmp.toStdString());
  const auto leftovers = [&tmp] { return QDir(tmp).entryList({"CFGQ*"}, QDir::Files); };
  {
    EnvGuard isolated("PBUILD_BUILD", "1");
    const QString used = run_probe("isolated");
    EXPECT_TRUE(used.startsWith(tmp + "/CFGQ")) << used.toStdString();
    EXPECT_FALSE(QFile::exists(used));
  }
  EXPECT_TRUE(leftovers().isEmpty()) << leftovers().join(" ").toStdString();

  // An ordinary run made a temporary file too and deleted it; the profile file stays.
  EXPECT_EQ(run_probe("ordinary"), profile_file());
  EXPECT_TRUE(leftovers().isEmpty()) << leftovers().join(" ").toStdString();
  EXPECT_EQ(raw_value(QString::fromStdString(ver_get_version()) + "_pro/General/Probe").toString(),
            "ordinary");
}

}  // namespace
