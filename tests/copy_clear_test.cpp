// Whole-group operations on a view: copying a group tree onto another, and clearing.
#include <QStringList>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

class CopyClearTest : public cfgq_test::SettingsTest {};

// Each row fills a group of its own, copies its "Src" onto `to` from the group's "View"
// subgroup (paths are relative to the current group) and compares the count and the keys of
// both groups afterwards.
TEST_F(CopyClearTest, CopiesEveryLevelAndMergesIntoTheDestination) {
  const QStringList source{"Src/a=1", "Src/b=2", "Src/Sub/c=3", "Src/Sub/d=4", "Src/Sub/e=5"};
  const QStringList copied{"Sub/c=3", "Sub/d=4", "Sub/e=5", "a=1", "b=2"};
  const struct {
    const char* what;
    QStringList before;  // "path=value"
    const char* from;
    const char* to;
    int count;
    QStringList after;  // the keys at or below `to`
  } rows[] = {
      {"new destination", source, "Src", "Dst", 5, copied},
      {"onto itself", source, "Src", "Src", 5, copied},
      {"deep tree", {"Src/L1/L2/L3/deep=x", "Src/L1/mid=y", "Src/Other/L2/side=z"}, "Src", "Dst",
       3, {"L1/L2/L3/deep=x", "L1/mid=y", "Other/L2/side=z"}},
      {"existing destination",
       source + QStringList{"Dst/a=old", "Dst/kept=k", "Dst/Sub/c=old", "Dst/Sub/kept=k",
                            "Dst/Only_here/x=k"},
       "Src", "Dst", 5,
       {"Only_here/x=k", "Sub/c=3", "Sub/d=4", "Sub/e=5", "Sub/kept=k", "a=1", "b=2", "kept=k"}},
      {"a sibling whose name begins like the source's", source, "Src", "Src_2", 5, copied},
      {"names with stray slashes", source, "/Src/", "Dst//New/", 5, copied},
      {"missing source", source, "Missing", "Dst", 0, {}},
      {"missing source below an existing group", source, "Src/Missing", "Dst", 0, {}},
  };
  int row_number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const QString group = QStringLiteral("Row%1/").arg(row_number++);
    {
      Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
      root.beginGroup(group);
      for (const QString& entry : row.before) {
        const qsizetype equals = entry.indexOf('=');
        root.set_value(entry.left(equals), entry.mid(equals + 1));
      }
      QVariant out;
      ASSERT_FALSE(root.get_value("Absent", &out));
      EXPECT_EQ(root.copy(row.from, row.to), row.count);
      EXPECT_EQ(root.group(), group.chopped(1));
      // Set by the copy's writes; a copy that wrote nothing leaves the read's outcome.
      EXPECT_EQ(root.get_last_error(),
                row.count ? Key::REGISTRY_NO_ERROR : Key::REGISTRY_VALUE_NOT_FOUND);
    }
    EXPECT_EQ(listing(group + row.to), row.after);
    QStringList source_after;
    for (const QString& entry : row.before) {
      if (entry.startsWith("Src/")) source_after << entry.mid(4);
    }
    source_after.sort();
    if (QString(row.to) != "Src") {
      EXPECT_EQ(listing(group + "Src"), source_after);
    }
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

TEST_F(CopyClearTest, ClearingASectionLeavesEverythingElseAndClearEmptiesTheFile) {
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
  {
    Key directories(Key::DIRECTORIES, nullptr, nullptr);
    directories.clear();
    EXPECT_EQ(directories.group(), "25.1_pro/Directories");
  }
  EXPECT_TRUE(listing("").isEmpty());
}

}  // namespace
