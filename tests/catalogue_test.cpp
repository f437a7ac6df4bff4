// The key catalogue's shape: what the library exports, the numbered and resizing arrays, and
// how catalogue texts behave as value names.
#include <cstdint>
#include <iterator>
#include <set>
#include <string>

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QStringList>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using Key = CFGQ_REGISTRY_KEY;

class CatalogueTest : public cfgq_test::SettingsTest {};

TEST_F(CatalogueTest, LibraryExportsEveryCatalogueObject) {
  const QString nm = QStandardPaths::findExecutable("nm");
  if (nm.isEmpty()) GTEST_SKIP() << "nm is not installed";
  QProcess process;
  process.start(nm, {"-D", "--defined-only", CFGQ_LIBRARY_FILE});
  ASSERT_TRUE(process.waitForFinished(30'000));
  ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();

  // "<address> <type> <name>"; data objects are D/d (initialised) or R/r (read-only).
  const QRegularExpression line(R"(^[0-9a-f]+ ([A-Za-z]) (CFGQ_[A-Z0-9_]+)$)");
  std::set<std::string> objects;
  for (const QString& text : QString::fromUtf8(process.readAllStandardOutput()).split('\n')) {
    const QRegularExpressionMatch match = line.match(text);
    if (!match.hasMatch()) continue;
    SCOPED_TRACE(text.toStdString());
    EXPECT_TRUE(QString("DdRr").contains(match.captured(1)));
    objects.insert(match.captured(2).toStdString());
  }
  // 527 key constants, 9 name arrays, 1 identifier array.
  EXPECT_EQ(objects.size(), 537u);
  for (const char* name : {"CFGQ_YES_STR", "CFGQ_WIZMAN_AUTO_ADD_KIP",
                           "CFGQ_ACVQ_TOOLTIP_ENABLE_STR", "CFGQ_OFCQ_RESIZING_ID",
                           "CFGQ_SHLPQ_KEYWORD_ID"}) {
    EXPECT_EQ(objects.count(name), 1u) << name;
  }
}

TEST_F(CatalogueTest, NumberedNameArraysCountFromOne) {
  struct Array {
    const char* const* names;
    std::size_t length;
    std::size_t expected_length;
    const char* prefix;
  };
  const Array arrays[] = {
      {CFGQ_OFCQ_RADIAL_MENU_ID, std::size(CFGQ_OFCQ_RADIAL_MENU_ID), 8, "Menu ID "},
      {CFGQ_PJM_TCL, std::size(CFGQ_PJM_TCL), 10, "Tcl_"},
      {CFGQ_FIF_FIND_TARGET, std::size(CFGQ_FIF_FIND_TARGET), 5, "Find_Target_"},
      {CFGQ_FIF_FIND_LOCATION, std::size(CFGQ_FIF_FIND_LOCATION), 5, "Find_Location_"},
      {CFGQ_RECENTLY_SELECTED_DEVICES, std::size(CFGQ_RECENTLY_SELECTED_DEVICES), 3,
       "Recently_selected_devices_"},
      {CFGQ_RECENTLY_SELECTED_TOP_LEVEL, std::size(CFGQ_RECENTLY_SELECTED_TOP_LEVEL), 5,
       "Recently_selected_top-level_"},
      {CFGQ_SHLPQ_KEYWORD_ID, std::size(CFGQ_SHLPQ_KEYWORD_ID), 15, "Keyword"},
  };
  for (const Array& array : arrays) {
    SCOPED_TRACE(array.prefix);
    ASSERT_EQ(array.length, array.expected_length);
    for (std::size_t i = 0; i < array.length; ++i) {
      ASSERT_NE(array.names[i], nullptr);
      EXPECT_EQ(std::string(array.names[i]), array.prefix + std::to_string(i + 1));
    }
  }
}

TEST_F(CatalogueTest, ResizingTableIsFramedAndParallel) {
  ASSERT_EQ(std::size(CFGQ_OFCQ_RESIZING_ID), 24u);
  ASSERT_EQ(std::size(CFGQ_OFCQ_RESIZING_CX), 24u);
  ASSERT_EQ(std::size(CFGQ_OFCQ_RESIZING_CY), 24u);
  EXPECT_EQ(CFGQ_OFCQ_RESIZING_ID[0], 23u);
  EXPECT_EQ(CFGQ_OFCQ_RESIZING_ID[23], 0u);
  std::set<std::uint32_t> identifiers;
  std::set<std::string> widths;
  for (std::size_t i = 0; i < 24; ++i) {
    SCOPED_TRACE(i);
    const std::string width = CFGQ_OFCQ_RESIZING_CX[i];
    const std::string height = CFGQ_OFCQ_RESIZING_CY[i];
    if (i == 0 || i == 23) {
      EXPECT_EQ(width + height, "");
      continue;
    }
    identifiers.insert(CFGQ_OFCQ_RESIZING_ID[i]);
    widths.insert(width);
    // One dialog per entry: the height key is the width key with its last letter changed.
    ASSERT_GT(width.size(), 3u);
    EXPECT_EQ(width.substr(width.size() - 3), " CX");
    EXPECT_EQ(height, width.substr(0, width.size() - 1) + "Y");
  }
  EXPECT_EQ(identifiers.size(), 22u);
  EXPECT_EQ(identifiers.count(0u), 0u);
  EXPECT_EQ(widths.size(), 22u);
}

TEST_F(CatalogueTest, EqualTextsUnderDifferentModulesAddressOneValue) {
  Key pins(Key::PPLQ, nullptr, nullptr);
  pins.set_no(CFGQ_OFCQ_TOOLTIP_ENABLE_STR);
  EXPECT_TRUE(pins.is_no(CFGQ_PPLQ_TOOLTIP_ENABLE_STR));
  EXPECT_EQ(pins.childKeys(), QStringList{"Tooltip_enable"});
}

TEST_F(CatalogueTest, TextsWithBlanksAreStoredUnchangedAndDrawTheDiagnostic) {
  EnvGuard debug("KORVEL_DEBUG", "CFGQ:2");
  {
    Key trescan(Key::SED, nullptr, nullptr);
    testing::internal::CaptureStderr();
    trescan.set_yes(CFGQ_SEDQ_SHOW_TAP_STR);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "CFGQ: Using whitespace in CFGQ_REGISTRY_KEY value_name \"Show tap mode\" is not "
              "recommended; use underscore instead\n");
  }
  EXPECT_EQ(raw_value("25.1_pro/Trescan/Show tap mode").toString(), "Yes");
}

}  // namespace
