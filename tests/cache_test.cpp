// The settings files' parsed state kept between views, and the one-lookup reads built on it.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <QVariant>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_settings_cache.h"
#include "cfgq_registry_lookup.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using cfgq_test::read_bytes;
using cfgq_test::SettingsTest;

// Reads General/<name> of the running version through a fresh view, "<none>" when absent.
QString read_general(const char* name) {
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  QVariant value;
  if (!view.get_value(QString::fromUtf8(name), &value)) return QStringLiteral("<none>");
  return value.toString();
}

void write_general(const char* name, const QVariant& value) {
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  view.set_value(QString::fromUtf8(name), value);
}

using SettingsCacheTest = SettingsTest;

TEST_F(SettingsCacheTest, NewViewSeesWhatAnotherProcessWroteSinceTheLastView) {
  struct Case {
    const char* what;
    const char* replacement;  // for the value on disk; null: the file is removed
    qint64 mtime_step_ms;     // the file's new time after the old one: 0 keeps the write's own
    bool set_time;            // the new time is set, also when it is the old one
  };
  const std::vector<Case> cases = {
      {"longer file", "Dark and bold", 0, false},
      {"same size, two seconds later", "Light", 2000, true},
      {"same size, a millisecond later", "Light", 1, true},
      {"same size, the old time kept", "Dusk2", 0, true},
      {"file removed", nullptr, 0, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    write_general("Theme", QStringLiteral("Dusk1"));
    ASSERT_EQ(read_general("Theme"), "Dusk1");  // kept from here on
    if (c.replacement == nullptr) {
      ASSERT_TRUE(QFile::remove(profile_file()));
    } else {
      const QDateTime before = QFileInfo(profile_file()).lastModified();
      write_profile_file(read_bytes(profile_file()).replace("Dusk1", c.replacement));
      if (c.set_time) {
        QFile file(profile_file());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(before.addMSecs(c.mtime_step_ms),
                                     QFileDevice::FileModificationTime));
      }
    }
    EXPECT_EQ(read_general("Theme"),
              c.replacement == nullptr ? QStringLiteral("<none>") : QString(c.replacement));
  }
}

TEST_F(SettingsCacheTest, FileSetAsideForItsSizeLeavesTheNextViewOnAnEmptyFile) {
  for (const bool view_alive : {false, true}) {
    SCOPED_TRACE(view_alive ? "another view alive" : "no other view");
    write_general("Theme", QStringLiteral("Dusk"));
    std::unique_ptr<CFGQ_REGISTRY_KEY> holder;
    if (view_alive) holder = std::make_unique<CFGQ_REGISTRY_KEY>(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    ASSERT_EQ(read_general("Theme"), "Dusk");

    QByteArray large = "[25.1_pro/General]\nTheme=Huge\nFiller=";
    large += QByteArray(10'000'001 - large.size() - 1, 'x') + '\n';
    write_profile_file(large);

    EXPECT_EQ(read_general("Theme"), "<none>");
    EXPECT_EQ(QFileInfo(profile_file() + ".large").size(), 10'000'001);
    holder.reset();
  }
}

TEST_F(SettingsCacheTest, IsolatedAndProfileRunsKeepTheirOwnFiles) {
  write_general("Where", QStringLiteral("profile"));
  QString temp_path;
  {
    EnvGuard isolated("PBUILD_BUILD", "1");
    EXPECT_EQ(read_general("Where"), "<none>");
    write_general("Where", QStringLiteral("temp"));
    temp_path = CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr).fileName();
  }
  EXPECT_EQ(read_general("Where"), "profile");
  {
    EnvGuard isolated("QT_QPA_PLATFORM", "minimal");
    EXPECT_EQ(read_general("Where"), "temp");
  }
  EXPECT_NE(temp_path, profile_file());
  EXPECT_TRUE(read_bytes(temp_path).contains("Where=temp"));
  EXPECT_TRUE(read_bytes(profile_file()).contains("Where=profile"));
}

TEST_F(SettingsCacheTest, KeepsOneParsedCopyPerFileInUseUpToTheBound) {
  const int before = cfgq_kept_settings_file_count();
  // Many views, nested, all on one file: one file more.
  for (int i = 0; i < 10; ++i) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    CFGQ_REGISTRY_KEY below(view, "Sub");
    below.set_value("Theme", i);
  }
  EXPECT_EQ(cfgq_kept_settings_file_count(), std::min(before + 1, max_kept_settings_files));
  // A tool walking many profiles keeps a bounded number of parsed files, and still reads each.
  std::vector<std::unique_ptr<QTemporaryDir>> homes;
  for (int i = 0; i < max_kept_settings_files + 2; ++i) {
    homes.push_back(std::make_unique<QTemporaryDir>());
    EnvGuard home("HOME", homes.back()->path().toStdString());
    write_general("Index", i);
  }
  EXPECT_EQ(cfgq_kept_settings_file_count(), max_kept_settings_files);
  for (int i = 0; i < static_cast<int>(homes.size()); ++i) {
    SCOPED_TRACE(i);
    EnvGuard home("HOME", homes[i]->path().toStdString());
    EXPECT_EQ(read_general("Index"), QString::number(i));
  }
}

TEST_F(SettingsCacheTest, ReleasesKeptFilesAtExitBeforeTheTemporaryFileGoes) {
  write_general("Where", QStringLiteral("profile"));
  {
    EnvGuard isolated("PBUILD_BUILD", "1");
    CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  }
  // A child keeps both files, writes both and ends through exit(): the kept files are released
  // during unload, and the temporary file is deleted after them. Where there is no fork the
  // child runs this test anew in a new process, with a home and a temporary file of its own: it
  // finds this process's home in the environment and names its temporary file there.
  const char* const parent_variable = "CFGQ_TEST_PARENT_HOME";
  const std::string parent_home = qEnvironmentVariableIsSet(parent_variable)
                                      ? qEnvironmentVariable(parent_variable).toStdString()
                                      : home().toStdString();
  EnvGuard parent(parent_variable, parent_home);
  const QString report = QString::fromStdString(parent_home) + "/child_temp_path";
  const std::string style = GTEST_FLAG_GET(death_test_style);
  GTEST_FLAG_SET(death_test_style, "fast");
  EXPECT_EXIT(
      {
        EnvGuard home_of_parent("HOME", parent_home);
        write_general("Where", QStringLiteral("child"));
        EnvGuard isolated("PBUILD_BUILD", "1");
        write_general("Where", QStringLiteral("temp"));
        QFile named(report);
        if (!named.open(QIODevice::WriteOnly)) std::exit(4);
        named.write(CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr).fileName().toUtf8());
        named.close();
        std::exit(cfgq_kept_settings_file_count() >= 2 ? 0 : 3);
      },
      ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, style);
  const QString child_temp = QString::fromUtf8(read_bytes(report));
  EXPECT_FALSE(child_temp.isEmpty());
  EXPECT_FALSE(QFileInfo::exists(child_temp)) << child_temp.toStdString();
  EXPECT_TRUE(read_bytes(profile_file()).contains("Where=child"));
}

// ---- One-lookup reads ------------------------------------------------------------------------

// The definition the fast read must agree with: the group's own keys, listed.
bool find_by_listing(const QSettings& settings, const QString& name, QVariant* found) {
  if (!settings.childKeys().contains(name, Qt::CaseSensitive)) return false;
  *found = settings.value(name, QVariant());
  return true;
}

// Near misses of every way Qt rewrites a key: slashes, backslashes, escapes, case, blanks.
const QStringList near_miss_names = {
    "", "k", "K", "/k", "k/", "//k", "k//", "\\k", "k\\", "a\\b", "a/b", "x/y", "x%2Fy", "lead",
    "/lead", "trail", "trail/", "d/d", "d//d", "e", "%65", "sp ace", "a", " a ", "a ", "c\\d",
    "c/d", "sub", "sub/", "sub/z", "/sub/z", "sub2", "sub2/w", "new\\key", "new/key", "invalid",
    "Invalid", "General", "g", "g/k", "k\t", "\u00e9", "E\u0301", "b", "z", "y", "top"};
const QStringList odd_groups = {"", "g", "g/sub", "g/a", "G", "h", "h/c", "h-x"};

// A file of hand-written odd keys, or of sections named after subgroups, whose own sections
// Qt parses only when asked.
const char* const odd_files[] = {"odd_keys.kreg", "subgroup_sections.kreg"};

TEST_F(SettingsCacheTest, GetValueAgreesWithTheGroupsKeyListOnNearMisses) {
  for (const char* data_file : odd_files) {
    SCOPED_TRACE(data_file);
    // The view reads the profile file; the listing reads a copy nobody else opens.
    const QByteArray bytes =
        cfgq_test::read_bytes(QStringLiteral(CFGQ_TEST_DATA_DIR "/") + data_file);
    ASSERT_FALSE(bytes.isEmpty());
    write_profile_file(bytes);
    QTemporaryDir dir;
    ASSERT_NO_FATAL_FAILURE(cfgq_test::write_file(dir.filePath("copy.kreg"), bytes));
    QSettings listed_copy(dir.filePath("copy.kreg"), QSettings::IniFormat);

    CFGQ_REGISTRY_KEY root(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
    for (const QString& group : odd_groups) {
      CFGQ_REGISTRY_KEY view(root, group);
      listed_copy.beginGroup(group);
      for (const QString& name : near_miss_names) {
        SCOPED_TRACE(("group \"" + group + "\", name \"" + name + "\"").toStdString());
        QVariant expected = QStringLiteral("untouched");
        const bool listed = find_by_listing(listed_copy, name, &expected);
        QVariant value = QStringLiteral("untouched");
        EXPECT_EQ(view.get_value(name, &value), listed);
        EXPECT_EQ(view.get_last_error(), listed ? CFGQ_REGISTRY_KEY::REGISTRY_NO_ERROR
                                                : CFGQ_REGISTRY_KEY::REGISTRY_VALUE_NOT_FOUND);
        EXPECT_EQ(value, expected);
      }
      listed_copy.endGroup();
    }
  }
}

// ---- Measuring a value's text ----------------------------------------------------------------

TEST(TextLengthTest, AgreesWithTheTextFormAtTheLimit) {
  constexpr qsizetype limit = 10'000'000;
  const QByteArray two_byte_char("\xc3\xa9");          // one UTF-16 unit from two bytes
  const QByteArray four_byte_char("\xf0\x9f\x98\x80");  // two UTF-16 units from four bytes
  const std::vector<std::pair<const char*, QVariant>> values = {
      {"text below", QString(limit - 1, QLatin1Char('a'))},
      {"text at", QString(limit, QLatin1Char('a'))},
      {"bytes below", QByteArray(limit - 1, 'a')},
      {"bytes at", QByteArray(limit, 'a')},
      {"two-byte characters", two_byte_char.repeated(limit / 2)},
      {"four-byte characters", four_byte_char.repeated(limit / 4 + 1)},
      {"invalid bytes", QByteArray(limit, '\xff')},
      {"text list", QStringList{QString(limit, QLatin1Char('a'))}},
      {"number", 123456789},
      {"double", -1.7976931348623157e+308},
      {"bool", true},
      {"invalid", QVariant()},
  };
  // The small limit takes the conversion for every type, the real one the shortcuts.
  for (const qsizetype at : {qsizetype(5), limit}) {
    for (const auto& [what, value] : values) {
      SCOPED_TRACE(std::string(what) + " against " + std::to_string(at));
      const qsizetype expected = value.toString().size();
      qsizetype length = -1;
      EXPECT_EQ(cfgq_text_reaches(value, at, &length), expected >= at);
      if (expected >= at) {
        EXPECT_EQ(length, expected);
      }
    }
  }
}

}  // namespace
