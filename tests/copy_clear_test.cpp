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

class CopyClearTest : public cfgq_test::SettingsTest {
 protected:
  // Every key at or below `group` of the file, sorted, as "path=value".
  QStringList listing(const QString& group) const {
    QSettings raw(profile_file(), QSettings::IniFormat);
    raw.beginGroup(group);
    QStringList lines;
    for (const QString& key : raw.allKeys()) lines << key + "=" + raw.value(key).toString();
    lines.sort();
    return lines;
  }

  // Fills "Src" at the root: two keys and a subgroup of three.
  static void fill_source(Key& root) {
    root.set_value("Src/a", "1");
    root.set_value("Src/b", "2");
    root.set_value("Src/Sub/c", "3");
    root.set_value("Src/Sub/d", "4");
    root.set_value("Src/Sub/e", "5");
  }
};

TEST_F(CopyClearTest, CopiesKeysAndSubgroupsAndCountsEveryKey) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    fill_source(root);
    QVariant out;
    ASSERT_FALSE(root.get_value("Absent", &out));
    EXPECT_EQ(root.copy("Src", "Dst"), 5);
    EXPECT_EQ(root.get_last_error(), Key::REGISTRY_NO_ERROR);  // through its writes
  }
  const QStringList expected{"Sub/c=3", "Sub/d=4", "Sub/e=5", "a=1", "b=2"};
  EXPECT_EQ(listing("Dst"), expected);
  EXPECT_EQ(listing("Src"), expected);
}

TEST_F(CopyClearTest, CopiesEveryLevelOfADeepTree) {
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  root.set_value("Src/L1/L2/L3/deep", "x");
  root.set_value("Src/L1/mid", "y");
  root.set_value("Src/Other/L2/side", "z");
  EXPECT_EQ(root.copy("Src", "Dst"), 3);
  EXPECT_EQ(root.value("Dst/L1/L2/L3/deep").toString(), "x");
  EXPECT_EQ(root.value("Dst/L1/mid").toString(), "y");
  EXPECT_EQ(root.value("Dst/Other/L2/side").toString(), "z");
}

TEST_F(CopyClearTest, MergesIntoAnExistingDestination) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    fill_source(root);
    root.set_value("Dst/a", "old");
    root.set_value("Dst/kept", "k");
    root.set_value("Dst/Sub/c", "old");
    root.set_value("Dst/Sub/kept", "k");
    root.set_value("Dst/Only_here/x", "k");
    EXPECT_EQ(root.copy("Src", "Dst"), 5);
  }
  const QStringList expected{"Only_here/x=k", "Sub/c=3", "Sub/d=4", "Sub/e=5",
                             "Sub/kept=k",    "a=1",     "b=2",     "kept=k"};
  EXPECT_EQ(listing("Dst"), expected);
}

TEST_F(CopyClearTest, CopyOntoItselfRewritesTheSameValues) {
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    fill_source(root);
    EXPECT_EQ(root.copy("Src", "Src"), 5);
  }
  EXPECT_EQ(listing("Src"), (QStringList{"Sub/c=3", "Sub/d=4", "Sub/e=5", "a=1", "b=2"}));
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
