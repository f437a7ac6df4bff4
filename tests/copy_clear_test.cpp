// Whole-group operations on a view: copying a group tree onto another, and clearing.
#include <algorithm>
#include <string>

#include <QFile>
#include <QSettings>
#include <QStringList>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using Key = CFGQ_REGISTRY_KEY;

class CopyClearTest : public cfgq_test::SettingsTest {};

// Each row fills a group of its own, copies its "Src" onto `to` and compares the count and the
// keys of both groups afterwards.
TEST_F(CopyClearTest, CopiesEveryLevelAndMergesIntoTheDestination) {
  const QStringList source{"Src/a=1", "Src/b=2", "Src/Sub/c=3", "Src/Sub/d=4", "Src/Sub/e=5"};
  const QStringList copied{"Sub/c=3", "Sub/d=4", "Sub/e=5", "a=1", "b=2"};
  const struct {
    const char* what;
    QStringList before;  // "path=value"
    const char* to;
    int count;
    QStringList after;  // the keys at or below `to`
  } rows[] = {
      {"new destination", source, "Dst", 5, copied},
      {"onto itself", source, "Src", 5, copied},
      {"deep tree", {"Src/L1/L2/L3/deep=x", "Src/L1/mid=y", "Src/Other/L2/side=z"}, "Dst", 3,
       {"L1/L2/L3/deep=x", "L1/mid=y", "Other/L2/side=z"}},
      {"existing destination",
       source + QStringList{"Dst/a=old", "Dst/kept=k", "Dst/Sub/c=old", "Dst/Sub/kept=k",
                            "Dst/Only_here/x=k"},
       "Dst", 5,
       {"Only_here/x=k", "Sub/c=3", "Sub/d=4", "Sub/e=5", "Sub/kept=k", "a=1", "b=2", "kept=k"}},
  };
  int row_number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const QString group = QStringLiteral("Row%1/").arg(row_number++);
    QStringList source_after;
    {
      Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
      root.beginGroup(group);
      for (const QString& entry : row.before) {
        const qsizetype equals = entry.indexOf('=');
        root.set_value(entry.left(equals), entry.mid(equals + 1));
        if (entry.startsWith("Src/")) source_after << entry.mid(4);
      }
      QVariant out;
      ASSERT_FALSE(root.get_value("Absent", &out));
      EXPECT_EQ(root.copy("Src", row.to), row.count);
      EXPECT_EQ(root.get_last_error(), Key::REGISTRY_NO_ERROR);  // through its writes
    }
    EXPECT_EQ(listing(group + row.to), row.after);
    source_after.sort();
    EXPECT_EQ(listing(group + "Src"), source_after);
  }
}

TEST_F(CopyClearTest, CopyIntoItsOwnSubgroupVisitsOnlyWhatWasThere) {
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  root.set_value("Src/a", "1");
  root.set_value("Src/Sub/b", "2");
  // Each level's lists are taken when the level is entered: "Src/Sub" is entered after "a" has
  // landed in it (so 1 + 2 keys), but "Src/Sub/Sub", made by that level's own writes, is never
  // entered.
  EXPECT_EQ(root.copy("Src", "Src/Sub"), 3);
  EXPECT_EQ(root.value("Src/Sub/a").toString(), "1");
  EXPECT_EQ(root.value("Src/Sub/Sub/a").toString(), "1");
  EXPECT_EQ(root.value("Src/Sub/Sub/b").toString(), "2");
  EXPECT_EQ(root.childGroups(), QStringList{"Src"});
  root.beginGroup("Src/Sub/Sub");
  EXPECT_TRUE(root.childGroups().isEmpty());
}

TEST_F(CopyClearTest, MissingSourceCopiesNothingAndCreatesNoGroup) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    root.set_value("Existing/a", "1");
  }
  const QByteArray before = profile_bytes();
  ASSERT_FALSE(before.isEmpty());
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    QVariant out;
    ASSERT_FALSE(root.get_value("Absent", &out));
    EXPECT_EQ(root.copy("Missing", "Dst"), 0);
    EXPECT_EQ(root.copy("Existing/Missing", "Dst"), 0);
    EXPECT_FALSE(root.childGroups().contains("Dst"));
    // No write happened, so the last read's outcome stands.
    EXPECT_EQ(root.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);
  }
  EXPECT_EQ(profile_bytes(), before);
}

TEST_F(CopyClearTest, CopyLeavesTheCurrentGroupAsItWas) {
  Key general(Key::GENERAL, nullptr, nullptr);
  const QString before = general.group();
  ASSERT_EQ(before, "25.1_pro/General");
  general.set_value("Src/a", "1");
  general.set_value("Src/Sub/b", "2");
  for (const char* source : {"Src", "Missing"}) {
    SCOPED_TRACE(source);
    general.copy(source, "Dst");
    EXPECT_EQ(general.group(), before);
  }
  // Paths are relative to the current group.
  EXPECT_EQ(general.value("Dst/Sub/b").toString(), "2");
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  EXPECT_FALSE(root.childGroups().contains("Dst"));
}

TEST_F(CopyClearTest, OversizedSourceValueIsCountedButNotWritten) {
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  root.set_value("Src/small", "s");
  root.set_value("Dst/big", "old");
  {
    // Settings objects of one process share their data, so this puts a value above the limit
    // where the view can read it; the file never holds it.
    QSettings raw(profile_file(), QSettings::IniFormat);
    raw.setValue("Src/big", QString(10'000'000, QLatin1Char('x')));
    EXPECT_EQ(root.copy("Src", "Dst"), 2);
    raw.remove("Src/big");
  }
  EXPECT_EQ(root.value("Dst/big").toString(), "old");
  EXPECT_EQ(root.value("Dst/small").toString(), "s");
}

TEST_F(CopyClearTest, BlankKeyNameDrawsOneDiagnosticPerCopy) {
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  root.set_value("Src/Two words", "1");
  root.set_value("Src/Plain", "2");
  EnvGuard debug("KORVEL_DEBUG", "CFGQ:2");
  testing::internal::CaptureStderr();
  EXPECT_EQ(root.copy("Src", "Dst"), 2);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "CFGQ: Using whitespace in CFGQ_REGISTRY_KEY value_name \"Two words\" is not "
            "recommended; use underscore instead\n");
  EXPECT_EQ(root.value("Dst/Two words").toString(), "1");
}

TEST_F(CopyClearTest, ClearingASectionLeavesEverythingElse) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    root.set_value("25.1_pro/General/a", "1");
    root.set_value("25.1_pro/General/Sub/b", "2");
    root.set_value("25.1_pro/General_Extra/c", "3");  // shares the section's name as a prefix
    root.set_value("25.1_pro/Directories/d", "4");
    root.set_value("25.1_pro/Registry_version", 27);
    root.set_value("24.3_pro/General/a", "5");
  }
  {
    Key general(Key::GENERAL, nullptr, nullptr);
    general.clear_registry_key();
    EXPECT_TRUE(general.allKeys().isEmpty());
    EXPECT_EQ(general.group(), "25.1_pro/General");
  }
  EXPECT_EQ(listing(""), (QStringList{"24.3_pro/General/a=5", "25.1_pro/Directories/d=4",
                                      "25.1_pro/General_Extra/c=3",
                                      "25.1_pro/Registry_version=27"}));
}

TEST_F(CopyClearTest, ClearEmptiesTheWholeFileFromAnyGroup) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    root.set_value("25.1_pro/General/a", "1");
    root.set_value("24.3_pro/General/a", "2");
    root.set_value("top", "3");
  }
  {
    Key directories(Key::DIRECTORIES, nullptr, nullptr);
    directories.clear();
    EXPECT_EQ(directories.group(), "25.1_pro/Directories");
  }
  EXPECT_TRUE(listing("").isEmpty());
}

}  // namespace
