// Value access on a view: found and missing values, the last-error code, the size limit, yes/no
// and the debug diagnostics of blanks and refused values.
#include <functional>
#include <optional>
#include <string>

#include <QVariantMap>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;
using Key = CFGQ_REGISTRY_KEY;

constexpr qsizetype refused_units = 10'000'000;
#ifdef _WIN32
constexpr bool qt_keys_ignore_case = true;  // Qt's INI files on Windows
#else
constexpr bool qt_keys_ignore_case = false;
#endif

class ValuesTest : public cfgq_test::SettingsTest {};

TEST_F(ValuesTest, ReadFindsOnlyTheGroupsOwnKeysByExactName) {
  Key key(Key::GENERAL, nullptr, nullptr);
  EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);
  key.set_value("Case_key", 1);
  key.set_value("Sub/Inner", 2);
  const struct {
    const char* name;
    bool found_by_get_value;
    bool found_by_contains;
  } probes[] = {
      {"Case_key", true, true},
      {"case_key", false, qt_keys_ignore_case},  // another case is another name
      {"Sub/Inner", false, true},  // a path reaches into the subgroup for the forwards only
      {"Sub", false, false},       // a subgroup is not a value
      {"Inner", false, false},
      {"Case_key", true, true},    // a find after a miss clears the code again
  };
  for (const auto& probe : probes) {
    SCOPED_TRACE(probe.name);
    QVariant out(QStringLiteral("untouched"));
    EXPECT_EQ(key.get_value(probe.name, &out), probe.found_by_get_value);
    EXPECT_EQ(out.toString(), probe.found_by_get_value ? "1" : "untouched");
    EXPECT_EQ(key.get_last_error(),
              probe.found_by_get_value ? Key::REGISTRY_NO_ERROR : Key::REGISTRY_VALUE_NOT_FOUND);
    EXPECT_EQ(key.contains(probe.name), probe.found_by_contains);
  }
  EXPECT_EQ(key.value("Sub/Inner").toInt(), 2);
  // Forwards never touch the code; every write resets it, even a refused one.
  QVariant out;
  for (const QVariant& written : {QVariant(QStringLiteral("v")),
                                  QVariant(QString(refused_units, QLatin1Char('x')))}) {
    ASSERT_FALSE(key.get_value("Absent", &out));
    key.remove("Absent");
    EXPECT_EQ(key.value("Absent", 7).toInt(), 7);
    ASSERT_EQ(key.get_last_error(), Key::REGISTRY_VALUE_NOT_FOUND);
    key.set_value("Other", written);
    EXPECT_EQ(key.get_last_error(), Key::REGISTRY_NO_ERROR);
  }
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

TEST_F(ValuesTest, YesNoAndIsEqualCompareTheTextInTheAskedCase) {
  const struct {
    QVariant stored;  // invalid: no value at all
    const char* text;
    bool equal_sensitive, equal_insensitive, yes, no;
  } rows[] = {
      {QStringLiteral("Yes"), "Yes", true, true, true, false},
      {QStringLiteral("yEs"), "Yes", false, true, true, false},
      {QStringLiteral("nO"), "No", false, true, false, true},
      {QStringLiteral("Yes "), "Yes", false, false, false, false},
      {QStringLiteral("Dark_Theme"), "dark_theme", false, true, false, false},
      {QStringLiteral("Dark_Theme"), "Dark", false, false, false, false},
      {12, "12", true, true, false, false},  // compared as text
      {QStringLiteral(""), "", true, true, false, false},
      {QVariantMap{{"k", 1}}, "", false, false, false, false},  // not convertible to text
      {QVariant(), "", false, false, false, false},
  };
  Key key(Key::GENERAL, nullptr, nullptr);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.stored.toString().toStdString() + " / " +
                 (row.stored.isValid() ? row.stored.typeName() : "no value") + " / " + row.text);
    key.remove("Answer");
    if (row.stored.isValid()) key.set_value("Answer", row.stored);
    EXPECT_EQ(key.is_equal("Answer", row.text, Qt::CaseSensitive), row.equal_sensitive);
    EXPECT_EQ(key.is_equal("Answer", row.text, Qt::CaseInsensitive), row.equal_insensitive);
    EXPECT_EQ(key.is_yes("Answer"), row.yes);
    EXPECT_EQ(key.is_no("Answer"), row.no);
    EXPECT_EQ(key.get_last_error(),
              row.stored.isValid() ? Key::REGISTRY_NO_ERROR : Key::REGISTRY_VALUE_NOT_FOUND);
  }
}

TEST_F(ValuesTest, ValuesReachTheFileUnderTheRunningVersionsSection) {
  {
    Key key(Key::GENERAL, nullptr, nullptr);
    key.set_value("Recent", QStringLiteral("a;b"));
    key.setValue("Width", 640);
    key.set_yes("Agreed");
    key.set_no("Refused");
  }
  EXPECT_EQ(listing(), (QStringList{"25.1_pro/General/Agreed=Yes", "25.1_pro/General/Recent=a;b",
                                    "25.1_pro/General/Refused=No", "25.1_pro/General/Width=640"}));
  Key reopened(Key::GENERAL, nullptr, nullptr);
  QVariant out;
  EXPECT_TRUE(reopened.get_value("Width", &out));
  EXPECT_EQ(out.toInt(), 640);
}

// A profile directory named in UTF-8 beyond ASCII (on Windows given to the process in UTF-16).
TEST_F(ValuesTest, AProfileDirectoryBeyondAsciiHoldsTheFile) {
  const QString profile = home() + QString::fromUtf8("/\xc3\x89mile \xe6\x97\xa5\xe6\x9c\xac");
  ASSERT_TRUE(QDir().mkpath(profile));
  const cfgq_test::EnvGuard guard("HOME", profile.toStdString());
  { Key(Key::GENERAL, nullptr, nullptr).set_value("Width", 640); }
  QSettings file(profile + QStringLiteral("/korvel2.kreg"), QSettings::IniFormat);
  EXPECT_EQ(file.value(QStringLiteral("25.1_pro/General/Width")).toInt(), 640);
  QVariant out;
  EXPECT_TRUE(Key(Key::GENERAL, nullptr, nullptr).get_value("Width", &out));
  EXPECT_EQ(out.toInt(), 640);
}

// ---- Diagnostics on the "CFGQ" debug channel -------------------------------------------------

std::string blank_text(const std::string& name) {
  return "CFGQ: Using whitespace in CFGQ_REGISTRY_KEY value_name \"" + name +
         "\" is not recommended; use underscore instead\n";
}
const std::string size_text = "CFGQ: Value too large. Size is 10000000. Value will not be set.\n";

TEST_F(ValuesTest, DiagnosticsPrintOnlyWhenTheChannelIsOnAtLevelTwo) {
  const QString oversized(refused_units, QLatin1Char('x'));
  QVariant out;
  const auto write_blank = [](Key& key) { key.set_value("Name with %s blank", 1); };
  const auto write_both = [&](Key& key) { key.set_value("Two words", oversized); };
  const struct {
    const char* debug;  // KORVEL_DEBUG; null: unset
    std::function<void(Key&)> action;
    std::string expected;
  } rows[] = {
      {"CFGQ:2", write_blank, blank_text("Name with %s blank")},
      {"CFGQ:2", [&](Key& key) { key.get_value("Name with %s blank", &out); },
       blank_text("Name with %s blank")},
      {"CFGQ", [](Key& key) { key.set_yes("Name with %s blank"); },
       blank_text("Name with %s blank")},
      {"OTHER:3,CFGQ:3", [&](Key& key) { key.set_value("Plain_name", oversized); }, size_text},
      {"CFGQ:2", write_both, blank_text("Two words") + size_text},
      {"CFGQ:2", [](Key& key) { key.set_value("Name\twith\ttabs", 1); }, ""},
      {"CFGQ:1", write_both, ""},
      {"OTHER:2", write_both, ""},
      {nullptr, write_both, ""},
  };
  Key key(Key::GENERAL, nullptr, nullptr);
  int row_number = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row_number++);
    EnvGuard debug("KORVEL_DEBUG",
                   row.debug ? std::optional<std::string>(row.debug) : std::nullopt);
    testing::internal::CaptureStderr();
    row.action(key);
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
