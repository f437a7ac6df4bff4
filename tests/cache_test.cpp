// The settings files' parsed state kept between views, and the one-lookup reads built on it.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStringList>
#include <QVariant>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_settings_cache.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using cfgq_test::SettingsTest;

// What the file holds right now, read past every settings object of the process.
QByteArray bytes_on_disk(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return QByteArray();
  return file.readAll();
}

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

// The number of kept files once one more file is opened: one more, up to the bound.
int kept_after_one_more(int before) { return std::min(before + 1, max_kept_settings_files); }

using SettingsCacheTest = SettingsTest;

TEST_F(SettingsCacheTest, NewViewSeesWhatAnotherProcessWroteSinceTheLastView) {
  struct Case {
    const char* what;
    const char* replacement;  // for the value on disk; null: the file is removed
    qint64 mtime_step_ms;     // the file's new time after the old one: 0 keeps the write's own
  };
  const std::vector<Case> cases = {
      {"longer file", "Dark and bold", 0},
      {"same size, two seconds later", "Light", 2000},
      {"same size, a millisecond later", "Light", 1},
      {"file removed", nullptr, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    write_general("Theme", QStringLiteral("Dusk1"));
    ASSERT_EQ(read_general("Theme"), "Dusk1");  // kept from here on
    if (c.replacement == nullptr) {
      ASSERT_TRUE(QFile::remove(profile_file()));
    } else {
      const QDateTime before = QFileInfo(profile_file()).lastModified();
      write_profile_file(bytes_on_disk(profile_file()).replace("Dusk1", c.replacement));
      if (c.mtime_step_ms != 0) {
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

TEST_F(SettingsCacheTest, NewViewSeesWhatTheToolWroteFromAnotherProcess) {
  const QString tool = QStringLiteral(CFGQ_BINARY_DIR "/tools/cfgq");
  if (!QFileInfo(tool).isExecutable()) GTEST_SKIP() << "the cfgq tool is not built";
  write_general("Theme", QStringLiteral("Dusk"));
  ASSERT_EQ(read_general("Theme"), "Dusk");  // kept from here on
  // Each value is written by a process of its own while this one keeps the file.
  for (const char* value : {"Light", "Dark and bold", "X"}) {
    SCOPED_TRACE(value);
    ASSERT_EQ(QProcess::execute(tool, {"set", "General", "Theme", value}), 0);
    EXPECT_EQ(read_general("Theme"), value);
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
  EXPECT_TRUE(bytes_on_disk(temp_path).contains("Where=temp"));
  EXPECT_TRUE(bytes_on_disk(profile_file()).contains("Where=profile"));
}

TEST_F(SettingsCacheTest, ViewWritesReachTheDiskWhenTheViewIsDestroyed) {
  ASSERT_EQ(read_general("Theme"), "<none>");  // the file is kept from here on
  {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    view.set_value("Theme", QStringLiteral("Amber"));
    CFGQ_REGISTRY_KEY below(view, "Sub");
    below.set_value("Depth", 2);
  }
  const QByteArray disk = bytes_on_disk(profile_file());
  EXPECT_TRUE(disk.contains("Theme=Amber")) << disk.constData();
  EXPECT_TRUE(disk.contains("Depth=2")) << disk.constData();
}

TEST_F(SettingsCacheTest, KeepsOneParsedCopyPerFileInUse) {
  const int before = cfgq_kept_settings_file_count();
  write_general("Theme", QStringLiteral("Dusk"));
  const int kept = cfgq_kept_settings_file_count();
  EXPECT_EQ(kept, kept_after_one_more(before));

  // Many views, nested, on several threads at once, all on one file.
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&wrong] {
      for (int i = 0; i < 50; ++i) {
        CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
        CFGQ_REGISTRY_KEY below(view, "Sub");
        QVariant value;
        if (!view.get_value("Theme", &value) || value.toString() != "Dusk") ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(cfgq_kept_settings_file_count(), kept);

  // The temporary file of an isolated run is a second file in use.
  {
    EnvGuard isolated("KORVEL_REGTEST", "1");
    EXPECT_EQ(read_general("Theme"), "<none>");
  }
  EXPECT_EQ(cfgq_kept_settings_file_count(), kept_after_one_more(kept));
}

TEST_F(SettingsCacheTest, KeepsOnlyTheFilesOpenedLast) {
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
  QString temp_path;
  {
    EnvGuard isolated("PBUILD_BUILD", "1");
    temp_path = CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr).fileName();
  }
  // A child forked from here keeps both files, writes both and ends through exit(): the kept
  // files are released during unload, and the temporary file is deleted after them.
  const std::string style = GTEST_FLAG_GET(death_test_style);
  GTEST_FLAG_SET(death_test_style, "fast");
  EXPECT_EXIT(
      {
        write_general("Where", QStringLiteral("child"));
        EnvGuard isolated("PBUILD_BUILD", "1");
        write_general("Where", QStringLiteral("temp"));
        std::exit(cfgq_kept_settings_file_count() >= 2 ? 0 : 3);
      },
      ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, style);
  EXPECT_FALSE(QFileInfo::exists(temp_path));
  EXPECT_TRUE(bytes_on_disk(profile_file()).contains("Where=child"));
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

// Two fresh copies of a data file, one for each way of reading, under `dir`.
class two_copies {
 public:
  // With `pending`, both get the same keys not yet written (and write them when destroyed).
  two_copies(const QTemporaryDir& dir, const char* data_file, bool pending)
      : fast(copy_of(dir, data_file), QSettings::IniFormat),
        slow(copy_of(dir, data_file), QSettings::IniFormat) {
    if (!pending) return;
    for (QSettings* settings : {&fast, &slow}) {
      settings->setValue("g/new\\key", 1);
      settings->setValue("g/invalid", QVariant());
    }
  }

  QSettings fast, slow;

 private:
  // Every copy has a path of its own: no parsed state is shared between copies.
  static QString copy_of(const QTemporaryDir& dir, const char* data_file) {
    static int copies = 0;
    QFile data(QStringLiteral(CFGQ_TEST_DATA_DIR "/") + data_file);
    QFile copy(dir.filePath(QString::number(++copies) + ".kreg"));
    if (data.open(QIODevice::ReadOnly) && copy.open(QIODevice::WriteOnly)) copy.write(data.readAll());
    return copy.fileName();
  }
};

void expect_same_answer(QSettings& fast, QSettings& slow, const QString& group,
                        const QString& name) {
  SCOPED_TRACE(("group \"" + group + "\", name \"" + name + "\"").toStdString());
  fast.beginGroup(group);
  slow.beginGroup(group);
  const QVariant untouched = QStringLiteral("untouched");
  QVariant fast_value = untouched, slow_value = untouched;
  EXPECT_EQ(cfgq_find_own_value(fast, name, &fast_value), find_by_listing(slow, name, &slow_value));
  EXPECT_EQ(fast_value, slow_value);
  EXPECT_EQ(fast_value.metaType(), slow_value.metaType());
  fast.endGroup();
  slow.endGroup();
}

TEST(OwnValueLookupTest, AgreesWithTheGroupsKeyListOnNearMisses) {
  // Qt parses sections as they are first needed, so the answer may depend on what was asked
  // before: each question on fresh copies, and all of them in turn on one pair of copies.
  for (const char* data_file : odd_files) {
    SCOPED_TRACE(data_file);
    QTemporaryDir dir;
    two_copies history(dir, data_file, true);
    for (const QString& group : odd_groups) {
      for (const QString& name : near_miss_names) {
        two_copies fresh(dir, data_file, false);
        expect_same_answer(fresh.fast, fresh.slow, group, name);
        expect_same_answer(history.fast, history.slow, group, name);
      }
    }
  }
}

TEST_F(SettingsCacheTest, GetValueAgreesWithTheGroupsKeyListOnNearMisses) {
  for (const char* data_file : odd_files) {
    SCOPED_TRACE(data_file);
    // The view reads the profile file; the listing reads a copy nobody else opens.
    QFile data(QStringLiteral(CFGQ_TEST_DATA_DIR "/") + data_file);
    ASSERT_TRUE(data.open(QIODevice::ReadOnly));
    const QByteArray bytes = data.readAll();
    write_profile_file(bytes);
    QTemporaryDir dir;
    QFile copy(dir.filePath("copy.kreg"));
    ASSERT_TRUE(copy.open(QIODevice::WriteOnly));
    copy.write(bytes);
    copy.close();
    QSettings listed_copy(copy.fileName(), QSettings::IniFormat);

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

TEST_F(SettingsCacheTest, SetValueRefusesTheSameValuesAsTheirTextFormDictates) {
  // Bytes count as their UTF-8 text: ten million bytes of two-byte characters are half as long.
  const QByteArray two_byte_char("\xc3\xa9");
  const std::vector<std::pair<const char*, QVariant>> values = {
      {"bytes at the limit", QByteArray(10'000'000, 'a')},
      {"invalid bytes at the limit", QByteArray(10'000'000, '\xff')},
      {"two-byte characters", two_byte_char.repeated(5'000'000)},
      {"text just below", QString(9'999'999, QLatin1Char('a'))},
      {"number", 42},
  };
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  for (const auto& [what, value] : values) {
    SCOPED_TRACE(what);
    view.set_value("Big", QStringLiteral("old"));
    view.set_value("Big", value);
    const bool stored = value.toString().size() < 10'000'000;
    EXPECT_EQ(view.value("Big"), stored ? value : QVariant(QStringLiteral("old")));
  }
  view.remove("Big");  // keeps the file small for the views after this one
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

namespace {

TEST(ProfileFileTest, RememberedPathEqualsTheWorkedOutOne) {
  QTemporaryDir first, second;
  const QString start = QDir::currentPath();
  const std::vector<std::string> dirs = {"/home/user", "/home/user/", "/home//user", "/home/./user",
                                         "/home/x/../user", "/", "relative/dir", "", "/home/user"};
  for (const QString& working_dir : {first.path(), second.path()}) {
    ASSERT_TRUE(QDir::setCurrent(working_dir));
    for (int round = 0; round < 2; ++round) {  // worked out, then remembered
      for (const std::string& dir : dirs) {
        SCOPED_TRACE("\"" + dir + "\" in " + working_dir.toStdString());
        EXPECT_EQ(cfgq_profile_settings_file(dir),
                  QDir(QString::fromStdString(dir)).absoluteFilePath("korvel2.kreg"));
      }
    }
  }
  QDir::setCurrent(start);
}

}  // namespace
