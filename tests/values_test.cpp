// Value access on a view: found and missing values, the last-error code, the size limit, yes/no
// and the debug diagnostics of blanks and refused values.
#include <optional>
#include <string>

#include <QSettings>
#include <QVariantMap>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using Key = CFGQ_REGISTRY_KEY;

constexpr qsizetype refused_units = 10'000'000;

class ValuesTest : public cfgq_test::SettingsTest {};

TEST_F(ValuesTest, ReadTellsMissingFromPresentAndKeepsTheOutParameter) {
  Key key(Key::GENERAL, nullptr, nullptr);
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);
  key.set_value("Show_tips", "Yes");

  QVariant out(QStringLiteral("untouched"));
  EXPECT_FALSE(key.get_value("Absent", &out));
  EXPECT_EQ(out.toString(), "untouched");
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);

  EXPECT_TRUE(key.get_value("Show_tips", &out));
  EXPECT_EQ(out.toString(), "Yes");
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);

  // Forwards never touch the code, whatever they find.
  EXPECT_FALSE(key.get_value("Absent", &out));
  EXPECT_EQ(key.value("Absent", 7).toInt(), 7);
  EXPECT_FALSE(key.contains("Absent"));
  key.remove("Absent");
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);
}

TEST_F(ValuesTest, EveryWriteResetsTheLastErrorEvenARefusedOne) {
  struct Write {
    const char* what;
    QVariant value;
  };
  const Write writes[] = {
      {"accepted", QStringLiteral("v")},
      {"refused for size", QString(refused_units, QLatin1Char('x'))},
  };
  Key key(Key::GENERAL, nullptr, nullptr);
  for (const Write& write : writes) {
    SCOPED_TRACE(write.what);
    QVariant out;
    ASSERT_FALSE(key.get_value("Absent", &out));
    ASSERT_EQ(key.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);
    key.set_value("Other", write.value);
    EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);
  }
  ASSERT_FALSE(key.is_yes("Absent"));
  key.set_no("Other");
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);
}

TEST_F(ValuesTest, ReadFindsOnlyTheGroupsOwnKeysByExactName) {
  Key key(Key::GENERAL, nullptr, nullptr);
  key.set_value("Case_key", 1);
  key.set_value("Sub/Inner", 2);

  struct Probe {
    const char* name;
    bool found_by_get_value;
    bool found_by_contains;
  };
  const Probe probes[] = {
      {"Case_key", true, true},
      {"case_key", false, false},   // another case is another name
      {"CASE_KEY", false, false},
      {"Sub/Inner", false, true},   // a path reaches into the subgroup for the forwards only
      {"Sub", false, false},        // a subgroup is not a value
      {"Inner", false, false},
  };
  for (const Probe& probe : probes) {
    SCOPED_TRACE(probe.name);
    QVariant out;
    EXPECT_EQ(key.get_value(probe.name, &out), probe.found_by_get_value);
    EXPECT_EQ(key.get_last_error(),
              probe.found_by_get_value ? Key::REGISTRY_NO_ERROR : Key::REGISTRY_VALUE_NOT_FOUND);
    EXPECT_EQ(key.contains(probe.name), probe.found_by_contains);
  }
  EXPECT_EQ(key.value("Sub/Inner").toInt(), 2);
}

TEST_F(ValuesTest, RefusesValuesOfTenMillionUtf16UnitsAndKeepsTheOldOne) {
  Key key(Key::GENERAL, nullptr, nullptr);
  key.set_value("Big", "old");

  // Two bytes each in UTF-8: the limit counts code units, not bytes.
  const QString largest_stored(refused_units - 1, QChar(0x00e9));
  key.set_value("Big", largest_stored);
  QVariant out;
  ASSERT_TRUE(key.get_value("Big", &out));
  EXPECT_EQ(out.toString().size(), refused_units - 1);

  key.set_value("Big", QString(refused_units, QLatin1Char('y')));
  ASSERT_TRUE(key.get_value("Big", &out));
  EXPECT_EQ(out.toString(), largest_stored);

  // A refused value never creates its name, in whatever type it comes.
  key.set_value("Never", QByteArray(refused_units, 'z'));
  EXPECT_FALSE(key.contains("Never"));
  // Don't leave a file above the size limit behind.
  key.remove("Big");
}

TEST_F(ValuesTest, YesAndNoReadInAnyCase) {
  struct Row {
    QVariant stored;  // invalid: no value at all
    bool yes;
    bool no;
  };
  const Row rows[] = {
      {QStringLiteral("Yes"), true, false},  {QStringLiteral("yes"), true, false},
      {QStringLiteral("YES"), true, false},  {QStringLiteral("yEs"), true, false},
      {QStringLiteral("No"), false, true},   {QStringLiteral("nO"), false, true},
      {QStringLiteral("Yes "), false, false}, {QStringLiteral("Y"), false, false},
      {QStringLiteral("1"), false, false},   {QStringLiteral(""), false, false},
      {QVariantMap{{"k", 1}}, false, false},  // not convertible to text
      {QVariant(), false, false},
  };
  Key key(Key::GENERAL, nullptr, nullptr);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.stored.isValid()
                     ? row.stored.toString().toStdString() + " / " + row.stored.typeName()
                     : std::string("(no value)"));
    key.remove("Answer");
    if (row.stored.isValid()) key.set_value("Answer", row.stored);
    EXPECT_EQ(key.is_yes("Answer"), row.yes);
    EXPECT_EQ(key.is_no("Answer"), row.no);
    EXPECT_EQ(key.get_last_error(),
              row.stored.isValid() ? Key::REGISTRY_NO_ERROR : Key::REGISTRY_VALUE_NOT_FOUND);
  }
}

TEST_F(ValuesTest, SetYesAndSetNoWriteTheCatalogueTexts) {
  {
    Key key(Key::GENERAL, nullptr, nullptr);
    key.set_yes("Agreed");
    key.set_no("Refused");
    EXPECT_TRUE(key.is_yes("Agreed"));
    EXPECT_FALSE(key.is_no("Agreed"));
    EXPECT_TRUE(key.is_no("Refused"));
  }
  EXPECT_EQ(raw_value("25.1_pro/General/Agreed").toString(), "Yes");
  EXPECT_EQ(raw_value("25.1_pro/General/Refused").toString(), "No");
}

TEST_F(ValuesTest, IsEqualFollowsTheRequestedCaseSensitivity) {
  Key key(Key::GENERAL, nullptr, nullptr);
  key.set_value("Theme", "Dark_Theme");
  key.set_value("Count", 12);
  EXPECT_TRUE(key.is_equal("Theme", "Dark_Theme", Qt::CaseSensitive));
  EXPECT_FALSE(key.is_equal("Theme", "dark_theme", Qt::CaseSensitive));
  EXPECT_TRUE(key.is_equal("Theme", "dark_theme", Qt::CaseInsensitive));
  EXPECT_FALSE(key.is_equal("Theme", "Dark", Qt::CaseInsensitive));
  EXPECT_TRUE(key.is_equal("Count", "12", Qt::CaseSensitive));  // compared as text

  EXPECT_FALSE(key.is_equal("Missing", "", Qt::CaseInsensitive));
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);
}

TEST_F(ValuesTest, ValuesReachTheFileUnderTheRunningVersionsSection) {
  {
    Key key(Key::GENERAL, nullptr, nullptr);
    key.set_value("Recent", QStringLiteral("a;b"));
    key.setValue("Width", 640);
  }
  EXPECT_EQ(raw_value("25.1_pro/General/Recent").toString(), "a;b");
  EXPECT_EQ(raw_value("25.1_pro/General/Width").toInt(), 640);
  Key reopened(Key::GENERAL, nullptr, nullptr);
  QVariant out;
  EXPECT_TRUE(reopened.get_value("Width", &out));
  EXPECT_EQ(out.toInt(), 640);
}

// ---- Diagnostics on the "CFGQ" debug channel -------------------------------------------------

std::string blank_text(const std::string& name) {
  return "CFGQ: Using whitespace in CFGQ_REGISTRY_KEY value_name \"" + name +
         "\" is not recommended; use underscore instead\n";
}
const std::string size_text = "CFGQ: Value too large. Size is 10000000. Value will not be set.\n";

TEST_F(ValuesTest, DiagnosticsPrintOnlyWhenTheChannelIsOnAtLevelTwo) {
  enum class Action { write_blank, read_blank, write_tab, write_oversized, set_yes_blank, write_both };
  struct Row {
    const char* debug;  // KORVEL_DEBUG; null: unset
    Action action;
    std::string expected;
  };
  const Row rows[] = {
      {"CFGQ:2", Action::write_blank, blank_text("Name with %s blank")},
      {"CFGQ:2", Action::read_blank, blank_text("Name with %s blank")},
      {"CFGQ:2", Action::set_yes_blank, blank_text("Name with %s blank")},
      {"CFGQ", Action::write_blank, blank_text("Name with %s blank")},
      {"OTHER:3,CFGQ:3", Action::write_oversized, size_text},
      {"CFGQ:2", Action::write_both, blank_text("Two words") + size_text},
      {"CFGQ:2", Action::write_oversized, size_text},
      {"CFGQ:2", Action::write_tab, ""},
      {"CFGQ:1", Action::write_blank, ""},
      {"CFGQ:1", Action::write_oversized, ""},
      {"OTHER:2", Action::write_blank, ""},
      {"OTHER:2", Action::write_oversized, ""},
      {nullptr, Action::write_blank, ""},
      {nullptr, Action::write_oversized, ""},
  };
  Key key(Key::GENERAL, nullptr, nullptr);
  const QString oversized(refused_units, QLatin1Char('x'));
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.debug ? row.debug : "(unset)") + " action " +
                 std::to_string(static_cast<int>(row.action)));
    EnvGuard debug("KORVEL_DEBUG",
                   row.debug ? std::optional<std::string>(row.debug) : std::nullopt);
    QVariant out;
    testing::internal::CaptureStderr();
    switch (row.action) {
      case Action::write_blank: key.set_value("Name with %s blank", 1); break;
      case Action::read_blank: key.get_value("Name with %s blank", &out); break;
      case Action::set_yes_blank: key.set_yes("Name with %s blank"); break;
      case Action::write_tab: key.set_value("Name\twith\ttabs", 1); break;
      case Action::write_oversized: key.set_value("Plain_name", oversized); break;
      case Action::write_both: key.set_value("Two words", oversized); break;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.expected);
  }
}

class ValuesDeathTest : public cfgq_test::SettingsTest {};

TEST_F(ValuesDeathTest, ReadIntoNullIsAnInternalError) {
  Key key(Key::GENERAL, nullptr, nullptr);
  EXPECT_DEATH(key.get_value("Show_tips", nullptr),
               "variant_value != NULL\nModule: CFGQ\nFile: gcl/cfgq/cfgq_registry_key.cpp");
}

}  // namespace
