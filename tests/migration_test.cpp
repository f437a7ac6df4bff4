// Carrying settings forward from earlier versions, and resetting the running version's settings.
//
// The running version, the version list and the 64-bit switch are fixed at their first use in a
// process, so every scenario runs in a child process of its own (EXPECT_EXIT) with its own
// environment, and reports what it found wrong on stderr.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include <QSettings>
#include <QStringList>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;

struct Suite {
  const char* running;           // KORVEL_VERSION
  const char* versions;          // KORVEL_VERSIONS
  const char* config = nullptr;  // KORVEL_CONFIG_ON
};

// What a scenario found wrong; empty when all is well.
class Findings {
 public:
  void expect_eq(const std::string& what, const QStringList& actual, const QStringList& expected) {
    if (actual == expected) return;
    m_text += what + ":\n  actual:   " + actual.join(" | ").toStdString() +
              "\n  expected: " + expected.join(" | ").toStdString() + "\n";
  }
  const std::string& text() const { return m_text; }

 private:
  std::string m_text;
};

class MigrationTest : public cfgq_test::SettingsTest {
 protected:
  // Runs `scenario` in a child process under `suite`; the child passes when it finds nothing.
  void run_in_child(const Suite& suite, const std::function<void(Findings&)>& scenario) {
    EXPECT_EXIT(
        {
          cfgq_test::set_env("KORVEL_VERSION", suite.running);
          cfgq_test::set_env("KORVEL_VERSIONS", suite.versions);
          if (suite.config != nullptr) cfgq_test::set_env("KORVEL_CONFIG_ON", suite.config);
          Findings findings;
          scenario(findings);
          std::fputs(findings.text().c_str(), stderr);
          std::fflush(stderr);
          std::exit(findings.text().empty() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
  }

  // Replaces the settings file with `entries` ("path=value").
  void write_file(const QStringList& entries) const {
    QSettings raw(profile_file(), QSettings::IniFormat);
    raw.clear();
    for (const QString& entry : entries) {
      const qsizetype equals = entry.indexOf('=');
      raw.setValue(entry.left(equals), entry.mid(equals + 1));
    }
  }

  // `entries` with the lines below `group` removed.
  static QStringList without(QStringList entries, const QString& group) {
    entries.removeIf([&](const QString& entry) { return entry.startsWith(group + "/"); });
    return entries;
  }
};

// An earlier version's settings, a few of them outside "General".
const QStringList settings_24_1{
    "24.1_pro/General/Show_tips=Yes",
    "24.1_pro/Setup/Last_device=D1",
    "24.1_pro/Setup/Columns/Width=80",
};

// Each row migrates one file and compares the running version's main key with what it should
// hold; every other main key stays as it was.
TEST_F(MigrationTest, CarriesTheFirstListedVersionWithSettingsForward) {
  const QStringList from_24_1{"General/Show_tips=Yes", "Registry_version=27",
                              "Setup/Columns/Width=80", "Setup/Last_device=D1"};
  const struct {
    const char* what;
    Suite suite;
    QStringList file;
    const char* main_key;
    QStringList expected;
  } rows[] = {
      // 24.3 has settings only under another edition, which a migration never reads.
      {"running and empty versions skipped", {"25.1", "25.1;24.3;24.1"},
       settings_24_1 + QStringList{"24.3_lite/General/Theme=Dark"}, "25.1_pro", from_24_1},
      {"first listed version wins", {"25.1", "24.1;24.3"},
       settings_24_1 + QStringList{"24.3_pro/General/Newer_only=1"}, "25.1_pro", from_24_1},
      // 24.1 has settings only without "_64-Bit": not a source.
      {"64-bit settings", {"25.1", "24.1;24.3", "separate_settings_for_64_bit"},
       settings_24_1 + QStringList{"24.3_64-Bit_pro/General/Bits=64"}, "25.1_64-Bit_pro",
       {"General/Bits=64", "Registry_version=27"}},
      {"start screens of General take their defaults", {"25.1", "24.3"},
       {"24.3_pro/General/Show_welcome_screen=No", "24.3_pro/General/Show_whatsnew_screen=No",
        "24.3_pro/General/Show_tips=No", "24.3_pro/Setup/Show_welcome_screen=No"},
       "25.1_pro",
       {"General/Show_tips=No", "Registry_version=27", "Setup/Show_welcome_screen=No"}},
      {"only the running version", {"25.1", "25.1"}, settings_24_1, "25.1_pro",
       {"Registry_version=27"}},
      {"no version with settings", {"25.1", "24.3;23.4"}, settings_24_1, "25.1_pro",
       {"Registry_version=27"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    run_in_child(row.suite, [&](Findings& findings) {
      write_file(row.file);
      CFGQ_REGISTRY::migrate_registry_settings();
      findings.expect_eq(row.main_key, listing(row.main_key), row.expected);
      QStringList others = row.file;
      others.sort();
      findings.expect_eq("every other main key", without(listing(), row.main_key), others);
    });
  }
}

// An empty version list (set, but to empty text) names no earlier version to carry forward.
TEST_F(MigrationTest, EmptyVersionListCarriesNothingForward) {
  run_in_child({"25.1", ""}, [&](Findings& findings) {
    write_file(settings_24_1);
    CFGQ_REGISTRY::migrate_registry_settings();
    findings.expect_eq("25.1_pro", listing("25.1_pro"), {"Registry_version=27"});
  });
}

TEST_F(MigrationTest, PresentMainKeyIsKeptOnlyWithACurrentMarker) {
  struct Row {
    const char* marker;  // null: none
    bool kept;
  };
  const Row rows[] = {{nullptr, false}, {"26", false}, {"abc", false}, {"", false},
                      {"27", true},     {"30", true}};
  run_in_child({"25.1", "24.3"}, [&](Findings& findings) {
    for (const Row& row : rows) {
      QStringList file{"25.1_pro/General/Show_tips=Yes", "25.1_pro/Setup/Sub/Deep=1",
                       "24.3_pro/General/From_earlier=1"};
      if (row.marker != nullptr) file << QString("25.1_pro/Registry_version=") + row.marker;
      write_file(file);
      CFGQ_REGISTRY::migrate_registry_settings();
      const QStringList expected =
          row.kept ? QStringList{"General/Show_tips=Yes", "Registry_version=27",
                                 "Setup/Sub/Deep=1"}
                   : QStringList{"Registry_version=27"};
      findings.expect_eq(std::string("marker ") + (row.marker ? row.marker : "(none)"),
                         listing("25.1_pro"), expected);
    }
  });
}

TEST_F(MigrationTest, SecondRunChangesNothingButTheMarker) {
  run_in_child({"25.1", "24.1"}, [&](Findings& findings) {
    write_file(settings_24_1);
    CFGQ_REGISTRY::migrate_registry_settings();
    const QStringList after_first = listing();
    {
      // Later changes: the source grows, and the marker is found newer than this library.
      QSettings raw(profile_file(), QSettings::IniFormat);
      raw.setValue("24.1_pro/General/Added_later", "1");
      raw.setValue("25.1_pro/Registry_version", 31);
    }
    CFGQ_REGISTRY::migrate_registry_settings();
    QStringList expected = after_first;
    expected << "24.1_pro/General/Added_later=1";
    expected.sort();
    findings.expect_eq("file", listing(), expected);
  });
}

TEST_F(MigrationTest, DeleteCurrentSettingsLeavesOnlyTheMarker) {
  run_in_child({"25.1", "24.1"}, [&](Findings& findings) {
    const QStringList others = settings_24_1 + QStringList{"25.1_lite/General/Theme=Dark"};
    for (const bool present : {false, true}) {
      write_file(present ? others + QStringList{"25.1_pro/General/Show_tips=No",
                                                "25.1_pro/Setup/Sub/Deep=1",
                                                "25.1_pro/Registry_version=27"}
                         : others);
      CFGQ_REGISTRY::delete_current_settings();
      QStringList expected = others;
      expected << "25.1_pro/Registry_version=27";
      expected.sort();
      findings.expect_eq(present ? "full main key" : "absent main key", listing(), expected);
      // The reset is not undone by a migration.
      CFGQ_REGISTRY::migrate_registry_settings();
      findings.expect_eq("migrated after reset", listing(), expected);
    }
  });
}

}  // namespace
