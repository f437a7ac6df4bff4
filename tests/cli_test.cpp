// The cfgq tool, run as a subprocess on a fresh HOME per test: commands on empty and populated
// files, exit statuses and error lines, awkward keys and values, the export format's round
// trip, reset's confirmation, migration and recovery of set-aside copies.
#include <algorithm>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QSettings>
#include <QRect>
#include <QSize>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "test_support.h"

namespace {

using cfgq_test::write_file;

struct tool_result {
  int status = -1;
  QString out;
  QString err;
  QByteArray out_bytes;
};

// A command, its exit status, and text in standard output (status 0) or standard error.
struct row {
  QStringList args;
  int status;
  QString part;
};

std::string text(const QString& s) { return s.toStdString(); }
std::string text(const QStringList& args) { return args.join(QLatin1Char(' ')).toStdString(); }

class CliTest : public cfgq_test::SettingsTest {
 protected:
  tool_result run(const QStringList& args, const QList<QPair<QString, QString>>& env = {},
                  const QByteArray& input = {}, const QString& output_file = {}) const {
    return run_program(QStringLiteral(CFGQ_TOOL_PATH), args, env, input, output_file);
  }

  tool_result run_program(const QString& program, const QStringList& args,
                          const QList<QPair<QString, QString>>& env = {}, const QByteArray& input = {},
                          const QString& output_file = {}) const {
    QProcess process;
    if (!output_file.isEmpty()) process.setStandardOutputFile(output_file);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KORVEL_USER_ENV_FILE"), home() + QStringLiteral("/user.env"));
    environment.insert(QStringLiteral("KORVEL_SYSTEM_ENV_FILE"), home() + QStringLiteral("/system.env"));
    for (const auto& [name, value] : env) environment.insert(name, value);
    process.setProcessEnvironment(environment);
    process.start(program, args);
    process.write(input);
    process.closeWriteChannel();  // standard input is a pipe, never a terminal
    EXPECT_TRUE(process.waitForFinished(60'000)) << text(args);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    const QByteArray out = process.readAllStandardOutput();
    return {process.exitCode(), QString::fromUtf8(out),
            QString::fromUtf8(process.readAllStandardError()), out};
  }

  // Each row's status and text; a failure is one "cfgq: " line on standard error, nothing else.
  void expect_rows(const std::vector<row>& rows) const {
    for (const row& c : rows) {
      SCOPED_TRACE(text(c.args));
      const tool_result r = run(c.args);
      EXPECT_EQ(r.status, c.status) << text(r.err);
      EXPECT_TRUE((c.status == 0 ? r.out : r.err).contains(c.part)) << text(r.out + r.err);
      if (c.status == 0) continue;
      EXPECT_TRUE(r.err.startsWith(QLatin1String("cfgq: ")) && r.err.count(QLatin1Char('\n')) == 1) << text(r.err);
      EXPECT_TRUE(r.out.isEmpty());
    }
  }

  // A profile with two sections, a subgroup and another version's main key.
  void write_populated_profile() const {
    write_profile_file("[25.1_pro]\nRegistry_version=27\nGeneral\\Show_tips=Yes\nGeneral\\Width=640\n"
        "General\\Dialogs\\Find=300\nPin_Planner\\Filter=all pins\n" "[24.3_pro]\nGeneral\\Show_tips=No\n");
  }
};

TEST_F(CliTest, UsageErrorsExitTwoWithOneErrorLine) {
  expect_rows({
      {{}, 2, "cfgq: command: missing"},
      {{"frobnicate"}, 2, "cfgq: frobnicate: unknown command"},
      {{"delete", "General", "k"}, 2, "cfgq: delete: unknown command (did you mean unset?)"},
      {{"set", "General", "Off", "-5"}, 2, "Unknown option '5'. (if '-5' is a value, put -- before the arguments: cfgq set -- General Off -5)"},
      {{"set", "General", "k", "v", "--value-file", "f"}, 2, "cfgq: set General/k: give VALUE or --value-file, not both"},
      {{"--bogus"}, 2, "cfgq: --bogus: unknown option"},
      {{"get", "General"}, 2, "cfgq: get: missing argument (usage: cfgq get SECTION KEY [--json]"},
      {{"get", "General", "a", "b"}, 2, "cfgq: get: unexpected argument 'b'"},
      {{"show", "--bogus"}, 2, "cfgq: show: Unknown option 'bogus'"},
      {{"get", "NO_SUB_KEY", "k"}, 2, "cfgq: get: NO_SUB_KEY names no section"},
      {{"get", "General", "//"}, 2, "cfgq: get: a key name must not be empty"},
      {{"clear", "/"}, 2, "cfgq: clear: a section name must not be empty"},
      {{"set", "General", "k", "[1", "--json"}, 2, "cfgq: set General/k: not a JSON value"},
      {{"set", "General", "k", "{\"@bytes\": 1}", "--json"}, 2, "@bytes needs base64 text"},
      {{"recover", "--merge", "/nonexistent/copy"}, 2, "cfgq: recover --merge /nonexistent/copy: no such file"},
      {{"setenv", "1X", "v"}, 2, "cfgq: setenv 1X: not a variable name"},
      {{"keys", "General", "--main-key", "25.1_pro/General"}, 2, "cfgq: keys: --main-key '25.1_pro/General' is not a main key"},
  });
  EXPECT_FALSE(QFileInfo::exists(profile_file()));
}

// The environment.d stores hold what a login expands: a "$" it would expand to nothing is refused.
TEST_F(CliTest, SetenvRefusesWhatALoginWouldExpandToNothing) {
  expect_rows({
      {{"setenv", "V", "costs $5"}, 2, "cfgq: setenv V: a login would expand '$5' to nothing"},
      {{"setenv", "V", "${HOME}/${A-b}"}, 2, "cfgq: setenv V: a login would expand '${A-b}' to nothing"},
  });
}

TEST_F(CliTest, HelpVersionAndAnEmptyProfile) {
  for (const char* command : {"get", "export", "recover", "setenv"}) {
    const tool_result help = run({"help", command});
    EXPECT_TRUE(help.status == 0 && help.out.startsWith(QStringLiteral("Usage: cfgq ") + command)) << text(help.out);
    EXPECT_EQ(help.out, run({command, "--help"}).out);
  }
  const tool_result version = run({"--version"}, {{"KORVEL_VERSION", "24.3"}, {"KORVEL_CONFIG_ON", "separate_settings_for_64_bit"}});
  EXPECT_TRUE(version.out.contains("suite version: 24.3\nmain key: 24.3_64-Bit_pro\n")) << text(version.out);
  expect_rows({
      {{"--version"}, 0, "main key: 25.1_pro\n"},
      {{"show"}, 0, "No settings are stored yet for 25.1_pro.\nSettings file: " + profile_file() + " (not created yet)"},
      {{"show", "--all"}, 0, "No settings are stored yet."},
      {{"show", "General"}, 1, "cfgq: show General: no settings under 'General' in 25.1_pro\n"},
      {{"show", "--json"}, 0, "{\n}\n"},
      {{"get", "General", "Show_tips"}, 1, "cfgq: get General/Show_tips: no settings under 'General'"},
      {{"get", "General", "Show_tips", "--default", "Yes"}, 0, "Yes\n"},
      {{"unset", "General", "Show_tips"}, 1, "cfgq: unset General/Show_tips: no settings under"},
      {{"keys", "GENERAL", "--json"}, 1, "cfgq: keys General: no settings under 'General' in 25.1_pro"},
      {{"migrate", "--dry-run"}, 0, "No earlier version's settings were found; migrate would only mark"},
      {{"clear", "General"}, 0, "Nothing to clear"},
      {{"sections"}, 0, "GENERAL             General                           -\n"},
      {{"export"}, 0, "\"settings\": {\n    }"},
      {{"recover"}, 0, "No set-aside copies beside"},
  });
  EXPECT_EQ(run({"path"}).out, profile_file() + QLatin1Char('\n'));
  EXPECT_FALSE(QFileInfo::exists(profile_file()));
}

TEST_F(CliTest, CommandsOnAPopulatedProfile) {
  write_populated_profile();
  // The migration marker is no setting: show leaves it out.
  EXPECT_EQ(run({"show"}).out, "[25.1_pro]\n  [General]\n    Show_tips = Yes\n    Width = 640\n"
            "    [Dialogs]\n      Find = 300\n  [Pin_Planner]\n    Filter = all pins\n");
  const tool_result all = run({"show", "--all"});
  EXPECT_TRUE(all.out.contains(QLatin1String("[24.3_pro]\n  [General]\n    Show_tips = No\n"))) << text(all.out);
  EXPECT_TRUE(all.out.contains(QLatin1String("[25.1_pro]  (running version)")));
  EXPECT_FALSE(all.out.contains(QLatin1String("Registry_version")));
  expect_rows({
      {{"show", "PPLQ"}, 0, "[25.1_pro/Pin_Planner]\n  Filter = all pins\n"},
      {{"show", "GENERAL/Dialogs"}, 0, "[25.1_pro/General/Dialogs]\n  Find = 300\n"},
      {{"get", "General", "Show_tips", "--main-key", "24.3_pro", "--default", "x"}, 0, "No\n"},
      {{"get", "General", "Dialogs/Find"}, 0, "300\n"},
      {{"get", "General", "Dialogs"}, 1, "cfgq: get General/Dialogs: "},  // the subgroup itself is no value
      {{"keys", "General"}, 0, "Dialogs/Find\nShow_tips\nWidth\n"},
      {{"sections"}, 0, "PPLQ                Pin_Planner                       1\n"},
      // Mistyped sections and keys get a hint.
      {{"get", "Generall", "Show_tips"}, 1, "cfgq: get Generall/Show_tips: no settings under 'Generall' in 25.1_pro (did you mean 'General'?)\n"},
      {{"show", "Pin_Planer/x"}, 1, "no settings under 'Pin_Planer/x' in 25.1_pro (did you mean 'Pin_Planner/x'?)"},
      {{"keys", "Recent_File"}, 1, "(did you mean 'Recent_Files'?)"},
      {{"get", "General", "Show_tip"}, 1, "cfgq: get General/Show_tip: not set in 25.1_pro (did you mean 'General/Show_tips'?)\n"},
      {{"unset", "General", "Dialogs/Fnd"}, 1, "(did you mean 'General/Dialogs/Find'?)"},
      {{"get", "General", "Colour"}, 1, "cfgq: get General/Colour: not set in 25.1_pro\n"},
      {{"unset", "General", "Dialogs/Find", "--main-key", "24.3_pro"}, 1, "cfgq: unset General/Dialogs/Find: "},
      {{"unset", "GENERAL", "Width"}, 0, ""},
      // A typo never gives an empty export that replaces a backup.
      {{"export", "Genral", "-o", "x"}, 2, "cfgq: export: no section 'Genral' in 25.1_pro (did you mean 'General'?)\n"},
      {{"export", "General/Dialgs", "-o", "x"}, 2, "cfgq: export: no section 'General/Dialgs' in 25.1_pro"},
      {{"export", "-o", "x", "--main-key", "24.3_pr"}, 2, "holds no main key '24.3_pr' (did you mean '24.3_pro'?)"},
      {{"export", "Setup"}, 0, "\"section\": \"Setup\""},
  });
  EXPECT_EQ(run({"set", "General", "Dialogs", "a key with the group's name"}).status, 0);
  EXPECT_EQ(run({"unset", "General", "Dialogs"}).status, 0);
  EXPECT_EQ(listing(QStringLiteral("25.1_pro")),
            (QStringList{"General/Dialogs/Find=300", "General/Show_tips=Yes", "Pin_Planner/Filter=all pins",
                         "Registry_version=27"}));
  EXPECT_EQ(run({"clear", "General"}).out, "Removed 2 values from 25.1_pro/General.\n");
  EXPECT_EQ(raw_value("25.1_pro/Pin_Planner/Filter").toString(), "all pins");
  EXPECT_EQ(raw_value("24.3_pro/General/Show_tips").toString(), "No");
}

// What scripts read: JSON in the export notation and NUL-terminated items.
TEST_F(CliTest, ListingsForScripts) {
  write_populated_profile();
  ASSERT_EQ(run({"set", "General", "two\nlines", "a\nb"}).status, 0);
  using namespace std::string_literals;  // "\0" inside literals
  const struct {
    QStringList args;
    std::string out;
  } cases[] = {
      {{"keys", "General", "-z"}, "Dialogs/Find\0Show_tips\0Width\0two\nlines\0"s},
      {{"keys", "General", "--json"}, "[\"Dialogs/Find\",\"Show_tips\",\"Width\",\"two\\nlines\"]\n"},
      {{"show", "PPLQ", "--null"}, "Filter\0all pins\0"s},
      {{"show", "General/Dialogs", "--json"}, "{\n    \"Find\": 300\n}\n"},
      {{"show", "--json", "--main-key", "24.3_pro"}, "{\n    \"General\": {\n        \"Show_tips\": \"No\"\n    }\n}\n"},
      {{"show", "General", "--all", "-z"}, "24.3_pro/General/Show_tips\0No\0" "25.1_pro/General/Dialogs/Find\0" "300\0"
       "25.1_pro/General/Show_tips\0Yes\0" "25.1_pro/General/Width\0" "640\0" "25.1_pro/General/two\nlines\0a\nb\0"s},
      {{"show", "PPLQ", "--flat"}, "Pin_Planner/Filter=all pins\n"},
      {{"show", "--flat", "--main-key", "24.3_pro"}, "General/Show_tips=No\n"},
      {{"show", "PPLQ", "--all", "--json"}, "{\n    \"25.1_pro\": {\n        \"Filter\": \"all pins\"\n    }\n}\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(text(c.args));
    const tool_result r = run(c.args);
    EXPECT_EQ(r.status, 0) << text(r.err);
    EXPECT_EQ(r.out_bytes.toStdString(), c.out);
  }
  const tool_result all = run({"show", "--json"});
  EXPECT_FALSE(all.out.contains(QLatin1String("Registry_version")));
  EXPECT_TRUE(all.out.contains(QLatin1String("\"two\\nlines\": \"a\\nb\""))) << text(all.out);
}

TEST_F(CliTest, WritesThatFailExitThreeWithPathAndReason) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only";
#else
  write_populated_profile();
  ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), home() + QStringLiteral("/null.json")));
  const struct {
    QStringList args;
    const char* output_file;  // standard output goes here
    QString message;
  } cases[] = {
      {{"export", "--output", home() + "/missing/dir/x.json"}, "",
       QStringLiteral("cfgq: export: %1/missing/dir/x.json: No such file or directory\n").arg(home())},
      {{"export", "-o", home() + "/null.json"}, "", QStringLiteral("cfgq: export: %1/null.json: not a regular file\n").arg(home())},
      {{"export"}, "/dev/full", "cfgq: export: standard output: No space left on device\n"},
      {{"get", "General", "Show_tips"}, "/dev/full", "cfgq: get: standard output: No space left on device\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(text(c.args));
    const tool_result r = run(c.args, {}, {}, QString::fromLatin1(c.output_file));
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(r.err, c.message);
  }
  EXPECT_FALSE(QFileInfo(QStringLiteral("/dev/null")).isFile());
  if (geteuid() == 0) GTEST_SKIP() << "root may write any file";
  ASSERT_TRUE(QFile::setPermissions(profile_file(), QFile::ReadOwner));
  const QByteArray before = profile_bytes();
  for (const QStringList& args : {QStringList{"set", "General", "k", "v"}, QStringList{"clear", "General"},
                                  QStringList{"reset", "--yes"}, QStringList{"migrate", "--yes"}}) {
    SCOPED_TRACE(text(args));
    const tool_result r = run(args);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(r.err.contains(profile_file() + QStringLiteral(": no permission to write it"))) << text(r.err);
  }
  EXPECT_EQ(profile_bytes(), before);
#endif
}

// A write of the settings file that the library reports as failed: a read-only directory around
// a writable file, for a user other than root.
TEST_F(CliTest, ASettingsWriteTheLibraryReportsFailedExitsThree) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only";
#else
  if (geteuid() != 0 || !QFileInfo::exists(QStringLiteral("/usr/bin/setpriv")) ||
      !cfgq_test::reachable_by_others(CFGQ_TOOL_PATH)) {
    GTEST_SKIP() << "needs root, and a build that nobody can reach, to run the tool as nobody";
  }
  QTemporaryDir other_home(QStringLiteral("/tmp/cfgq-nobody-XXXXXX"));
  const QString file = other_home.filePath(QStringLiteral("korvel2.kreg"));
  write_file(file, "[25.1_pro]\nGeneral\\A=1\n");
  ASSERT_EQ(::chown(QFile::encodeName(file).constData(), 65534, 65534), 0);
  ASSERT_EQ(::chmod(QFile::encodeName(other_home.path()).constData(), 0755), 0);
  const tool_result r = run_program(QStringLiteral("/usr/bin/setpriv"),
                                    {"--reuid=65534", "--regid=65534", "--clear-groups", "--",
                                     CFGQ_TOOL_PATH, "set", "General", "k", "v"},
                                    {{"HOME", other_home.path()}});
  EXPECT_EQ(r.status, 3) << text(r.err);
  EXPECT_TRUE(r.err.startsWith(QStringLiteral("cfgq: set General/k: %1: ").arg(file))) << text(r.err);
  EXPECT_FALSE(r.err.contains(QLatin1String("Unknown error")));
#endif
}

// Export to a file on a disk that fills up at every point of the new content: the file holds its
// old bytes or all of the new ones, and a failure says why. A fresh file is private.
TEST_F(CliTest, ExportOutputIsCompleteOrNotMade) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only";
#else
  write_populated_profile();
  const QString dir = home() + QStringLiteral("/out");
  const QString backup = dir + QStringLiteral("/backup.json");
  ASSERT_TRUE(QDir().mkpath(dir));
  write_file(backup, "old backup");
  const QByteArray complete = run({"export"}).out_bytes;
  ASSERT_GT(complete.size(), 100);
  const QString shim = QStringLiteral(CFGQ_BINARY_DIR "/tests/libwrite_fault.so");
  int failed = 0;
  for (const char* mode : {"short", "enospc"}) {
    for (qsizetype offset = 0; offset <= complete.size(); offset += offset < 16 ? 1 : 37) {
      SCOPED_TRACE(std::string(mode) + " at " + std::to_string(offset));
      const tool_result r = run({"export", "--output", backup},
                                {{"LD_PRELOAD", shim}, {"ASAN_OPTIONS", "verify_asan_link_order=0"},
                                 {"WRITE_FAULT_DIR", dir}, {"WRITE_FAULT_MODE", mode},
                                 {"WRITE_FAULT_OFFSET", QString::number(offset)}});
      const QByteArray now = cfgq_test::read_bytes(backup);
      if (r.status == 0) {
        EXPECT_EQ(now, complete);
        write_file(backup, "old backup");
        continue;
      }
      ++failed;
      // The lock's own few bytes, or the export's, meet the full disk.
      EXPECT_TRUE(r.err.startsWith(QStringLiteral("cfgq: export: %1: ").arg(backup)) &&
                  r.err.endsWith(": No space left on device\n")) << text(r.err);
      EXPECT_EQ(now, "old backup");
      EXPECT_EQ(QDir(dir).entryList(QDir::Files | QDir::Hidden), QStringList{"backup.json"});
    }
  }
  EXPECT_GT(failed, 20);
  QProcess process;
  process.setChildProcessModifier([] { ::umask(0); });
  const QString fresh = home() + "/fresh.json";
  for (const mode_t mode : {mode_t(0600), mode_t(0640)}) {  // a new file is private; an old one keeps its mode
    process.start(QStringLiteral(CFGQ_TOOL_PATH), {"export", "-o", fresh});
    ASSERT_TRUE(process.waitForFinished(60'000));
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(fresh).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, mode);
    ::chmod(QFile::encodeName(fresh).constData(), 0640);
  }
#endif
}

TEST_F(CliTest, AwkwardAndTypedValuesRoundTripThroughSetAndGet) {
  const char* awkward[][2] = {
      {"with blanks", "  leading and trailing blanks  "}, {"k=ey", "a=b; c, d # not a comment"},
      {"\"quoted\"", "say \"hi\" and 'bye'"},              {"Grüße/日本", "non-ASCII: äöü ß 日本語 😀"},
      {"lines", "first\nsecond\r\nthird\ttab\n"},         {"back\\slash", "C:\\Program Files\\Korvel\\"},
      {"@at", "@ByteArray(not bytes)"},                   {"percent%s", "100% %s %d"},
      {"dash", "-starts with a dash"},                    {"empty", ""},
  };
  for (const auto& [key_text, value_text] : awkward) {
    const QString key = QString::fromUtf8(key_text), value = QString::fromUtf8(value_text);
    SCOPED_TRACE(key_text);
    ASSERT_EQ(run({"set", "--", "Text_Editor", key, value}).status, 0);
    EXPECT_EQ(run({"get", "TEXT_EDITOR", key}).out, value + QLatin1Char('\n'));
    EXPECT_EQ(raw_value(QStringLiteral("25.1_pro/Text_Editor/") + key).toString(), value);
  }
  const struct {
    const char* json;
    QByteArray plain;  // what plain `get` prints
  } typed[] = {
      {"[\"a\",\"b, c\"]", "a\nb, c\n"}, {"640", "640\n"}, {"1.5", "1.5\n"}, {"true", "true\n"},
      {"{\"@bytes\":\"AAH/\"}", QByteArray("\x00\x01\xff", 3)}, {"\"007\"", "007\n"},
      {"9007199254740992", "9007199254740992\n"}, {"\"9007199254740993\"", "9007199254740993\n"},  // beyond 2^53: text
  };
  for (const auto& c : typed) {
    SCOPED_TRACE(c.json);
    ASSERT_EQ(run({"set", "General", "v", QString::fromUtf8(c.json), "--json"}).status, 0);
    EXPECT_EQ(run({"get", "General", "v", "--json"}).out, QString::fromUtf8(c.json) + QLatin1Char('\n'));
    EXPECT_EQ(run({"get", "General", "v"}).out_bytes, c.plain);
  }
}

TEST_F(CliTest, ExportClearImportGivesBackTheSameFile) {
  {
    QSettings raw(profile_file(), QSettings::IniFormat);
    raw.beginGroup(QStringLiteral("25.1_pro"));
    const QList<QPair<const char*, QVariant>> values = {
        {"Registry_version", 27}, {"General/text", "plain text"}, {"General/number_text", "007"},
        {"General/integer", 640}, {"General/double", 1.25}, {"General/integral_double", 1e6},
        {"General/flag", true}, {"General/empty", QString()}, {"General/at", "@starts with at"},
        {"General/list", QStringList{"a", "b, c", ""}}, {"General/empty_list", QStringList{}},
        {"General/bytes", QByteArray("\x00\x01\xfe\xff text", 9)}, {"General/size", QSize(800, 600)},
        {"General/time", QDateTime(QDate(2026, 11, 23), QTime(3, 4, 5), Qt::UTC)},
        {"General/@key", "a key that begins with @"}, {"General/shared", "a key with a group's name"},
        {"General/shared/inner", "inside the group"}, {"Pin_Planner/Deep/er/Still", "äöü\nnext line"},
        {"Change Manager Window/x", 1}};
    for (const auto& [key, value] : values) raw.setValue(QString::fromUtf8(key), value);
  }
  const QByteArray original = profile_bytes();
  const QString backup = home() + QStringLiteral("/backup.json");
  ASSERT_EQ(run({"export", "--output", backup}).status, 0);
  for (const char* section : {"General", "PPLQ", "ECO"}) ASSERT_EQ(run({"clear", section}).status, 0);
  ASSERT_NE(profile_bytes(), original);
  const tool_result import = run({"import", backup});
  EXPECT_EQ(import.out, "Imported into 25.1_pro: 19 values written, 0 refused.\n") << text(import.err);
  // The same lines; their order is the writer's (by name here, as first written on Windows).
  const auto lines = [](QByteArray bytes) {
    QList<QByteArray> list = bytes.replace('\r', "").split('\n');
    std::sort(list.begin(), list.end());
    return list;
  };
  EXPECT_EQ(lines(profile_bytes()), lines(original)) << profile_bytes().toStdString();

  // One section's export goes to another section, through standard output and input.
  const tool_result piped = run({"import", "-", "Wizards"}, {}, run({"export", "PPLQ"}).out_bytes);
  EXPECT_EQ(piped.out, "Imported into 25.1_pro/Wizards: 1 value written, 0 refused.\n") << text(piped.err);
  EXPECT_EQ(raw_value("25.1_pro/Wizards/Deep/er/Still").toString(), "äöü\nnext line");
  EXPECT_EQ(run({"import", backup, "Setup"}).status, 1);
}

TEST_F(CliTest, ImportCountsWhatTheSizeLimitRefused) {
  write_profile_file("[25.1_pro]\nRegistry_version=27\nGeneral\\Huge=old\n");
  write_file(home() + QStringLiteral("/big.json"),
             "{\"cfgq_export\": 1, \"section\": \"General\", \"settings\": {\"a\": \"1\", \"b\": [\"x\", \"y\"], "
             "\"Huge\": \"" + QByteArray(10'000'000, 'x') + "\"}}");
  const tool_result r = run({"import", home() + QStringLiteral("/big.json")});
  EXPECT_TRUE(r.out.startsWith(QLatin1String("Imported into 25.1_pro/General: 2 values written, 1 refused.\n")))
      << text(r.out.left(200));
  EXPECT_TRUE(r.out.contains(QLatin1String("Huge")));
  EXPECT_EQ(raw_value("25.1_pro/General/Huge").toString(), "old");
  EXPECT_EQ(raw_value("25.1_pro/General/b").toStringList(), (QStringList{"x", "y"}));
}

TEST_F(CliTest, ImportRejectsBadInputAndWritesNothing) {
  write_populated_profile();
  const QByteArray before = profile_bytes();
  const char* cases[][2] = {
      {"{bad", "not valid JSON"},
      {"[]", "not a cfgq export"},
      {"{\"cfgq_export\": 2, \"settings\": {}}", "made by a newer cfgq (export format 2; this cfgq reads format 1)"},
      {"{\"cfgq_export\": 1, \"section\": 5, \"settings\": {}}", "\"section\" must name a section"},
      {"{\"cfgq_export\": 1, \"settings\": {\"G\": {\"ok\": \"1\", \"x\": {\"@bytes\": \"!!\"}}}}", "G/x: @bytes needs base64"},
      {"{\"cfgq_export\": 1, \"settings\": {\"G\": {\"@weird\": 1}}}", "unknown tag \"@weird\""},
      {"{\"cfgq_export\": 1, \"settings\": {\"G\": {\"l\": [\"a\", 1]}}}", "G/l: a list may only hold text"},
      {"{\"cfgq_export\": 1, \"settings\": {\"G\": {\"v\": {\"@variant\": \"AAAA\"}}}}", "G/v: @variant does not hold"},
      {"{\"cfgq_export\": 1, \"settings\": {\"a/b\": 1}}", "must be non-empty and without \"/\""},
  };
  const QString file = home() + QStringLiteral("/in.json");
  for (const auto& [json, message] : cases) {
    SCOPED_TRACE(json);
    write_file(file, json);
    const tool_result r = run({"import", file});
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.err.startsWith(QStringLiteral("cfgq: import %1: ").arg(file)) && r.err.contains(message)) << text(r.err);
    EXPECT_EQ(profile_bytes(), before);
  }
  EXPECT_EQ(run({"import", home() + QStringLiteral("/missing.json")}).status, 3);
}

TEST_F(CliTest, ResetAndMigrateNeedYesWithoutATerminal) {
  write_populated_profile();
  const QByteArray before = profile_bytes();
  const tool_result refused = run({"reset"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err, "cfgq: reset: standard input is not a terminal; add --yes to confirm\n");
  EXPECT_EQ(profile_bytes(), before);
  EXPECT_EQ(run({"reset", "--yes"}).out, "Removed 4 values from 25.1_pro; the tools start from their defaults.\n"
            "The file as it was is kept as " + profile_file() + ".reset; 'cfgq recover --merge reset' brings the values back.\n");
  EXPECT_EQ(run({"keys", "General"}).status, 1);
  EXPECT_EQ(raw_value("25.1_pro/Registry_version").toString(), "27");
  EXPECT_EQ(raw_value("24.3_pro/General/Show_tips").toString(), "No");
  EXPECT_TRUE(run({"recover"}).out.contains(profile_file() + ".reset\n"));
  EXPECT_TRUE(run({"recover", "--merge", "reset"}).out.contains("restored: 4 values\n"));
  EXPECT_EQ(run({"get", "General", "Dialogs/Find"}).out, "300\n");

  // migrate carries an earlier version forward once.
  write_profile_file("[24.3_pro]\nGeneral\\Show_tips=No\nGeneral\\Show_welcome_screen=No\nSetup\\Path=/opt\n");
  EXPECT_TRUE(run({"show"}).out.contains(QLatin1String("The file holds settings of 24.3_pro")));
  const QByteArray earlier = profile_bytes();
  EXPECT_EQ(run({"migrate", "--dry-run"}).out,
            "migrate would carry 24.3_pro (version 24.3) forward into 25.1_pro: 3 values, less the "
            "few that each version keeps for itself.\n");
  EXPECT_EQ(profile_bytes(), earlier);
  EXPECT_EQ(run({"migrate"}).out, "Carried 2 values forward into 25.1_pro from 24.3_pro (version 24.3).\n");
  EXPECT_EQ(run({"get", "Setup", "Path"}).out, "/opt\n");
  EXPECT_EQ(run({"migrate"}).out, "25.1_pro is migrated already; nothing changed.\n");

  // Values written before the first migration go only with a yes.
  write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\n");
  const QByteArray stale = profile_bytes();
  EXPECT_EQ(run({"migrate", "--dry-run"}).out,
            "25.1_pro holds 1 value written before its first migration (no current format marker); "
            "migrate would remove it, so that the tools start from their defaults.\n");
  const tool_result no = run({"migrate"});
  EXPECT_EQ(no.status, 2);
  EXPECT_TRUE(no.err.contains(QLatin1String("standard input is not a terminal: add --yes"))) << text(no.err);
  EXPECT_EQ(profile_bytes(), stale);
  EXPECT_EQ(run({"migrate", "--yes"}).out,
            "Removed the 1 value that 25.1_pro held from before its first migration; the tools "
            "start from their defaults.\n");
  EXPECT_TRUE(run({"show"}).out.contains(QLatin1String("marked as migrated")));
}

// --file works on another file through a private copy: never set aside or changed unless
// --write is given, and --write refuses a file over the size limit.
TEST_F(CliTest, FileOptionWorksOnAnotherFile) {
  const QString large = home() + QStringLiteral("/korvel2.kreg.large"), other = home() + QStringLiteral("/other.kreg");
  const QByteArray big = "[25.1_pro]\nGeneral\\Width=1\nGeneral\\Big=" + QByteArray(10'000'001, 'x') + "\n";
  write_file(large, big);
  write_file(other, "[25.1_pro]\nGeneral\\Width=640\n");
  expect_rows({
      {{"--file", large, "get", "General", "Width"}, 0, "1\n"},
      {{"--file", large, "--write", "set", "General", "Width", "2"}, 3, "over the 10,000,000-byte limit"},
      {{"--file", other, "set", "General", "Width", "5"}, 2, "cfgq: set: --file opens the file read-only; add --write"},
      {{"--file", other, "reset", "--yes"}, 2, "cfgq: reset: not with --file"},
      {{"--file", home() + "/none", "show"}, 1, "no such file"},
      {{"--write", "show"}, 2, "cfgq: --write: only with --file FILE"},
      {{"--file", other, "--write", "set", "General", "Width", "5"}, 0, ""},
      {{"--file=" + other, "show", "--flat"}, 0, "General/Width=5\n"},
  });
  EXPECT_EQ(cfgq_test::read_bytes(large), big);
  EXPECT_EQ(QDir(home()).entryList(QDir::Files), (QStringList{"korvel2.kreg.large", "other.kreg"}));
}

// Writes to a version not migrated yet migrate it first, as a suite program does at its start,
// and say so; --no-migrate only marks it, so that the next start keeps what was written.
TEST_F(CliTest, WritesMigrateAVersionFirst) {
  const QByteArray earlier = "[24.3_pro]\nGeneral\\Show_tips=No\nGeneral\\Show_welcome_screen=No\n";
  const QByteArray premature = "[25.1_pro]\nGeneral\\A=1\nGeneral\\B=2\n";
  const struct {
    QByteArray file;
    QStringList args;
    const char* note;
    QStringList after;  // the running main key
  } cases[] = {
      {earlier, {"set", "General", "Width", "10"}, "carried 1 value forward from 24.3_pro (version 24.3)",
       {"General/Show_tips=No", "General/Width=10", "Registry_version=27"}},
      {earlier, {"import", "-", "--no-migrate"}, "marked it as migrated without migrating (--no-migrate)",
       {"General/Width=10", "Registry_version=27"}},
      {premature, {"clear", "General"}, "removed the 2 values it held from before its first migration", {"Registry_version=27"}},
      {premature, {"unset", "General", "A", "--no-migrate"}, "without migrating", {"General/B=2", "Registry_version=27"}},
      {"", {"set", "General", "Width", "10"}, "", {"General/Width=10", "Registry_version=27"}},  // nothing to tell
      {earlier, {"set", "General", "Width", "10", "--main-key", "23.4_pro"}, "", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(text(c.args));
    write_profile_file(c.file);
    const tool_result r = run(c.args, {}, "{\"cfgq_export\": 1, \"settings\": {\"General\": {\"Width\": 10}}}");
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(*c.note ? r.err.startsWith(QLatin1String("cfgq: note: 25.1_pro was not migrated yet; ")) &&
                              r.err.contains(QLatin1String(c.note)) && r.err.count('\n') == 1
                        : r.err.isEmpty()) << text(r.err);
    EXPECT_EQ(listing(QStringLiteral("25.1_pro")), c.after);
    if (!c.after.isEmpty()) { EXPECT_EQ(run({"set", "General", "k", "v"}).err, ""); }  // once
  }
}

// Near the size limit a write that would not fit is refused and changes nothing; one that
// replaces a large value fits. check gives the same room.
TEST_F(CliTest, WritesPastTheSizeLimitAreRefused) {
  write_profile_file("[25.1_pro]\nRegistry_version=27\nGeneral\\Big=" + QByteArray(9'500'000, 'x') + "\n");
  const QString value = home() + QStringLiteral("/value");
  write_file(value, QByteArray(600'000, 'y'));
  const QByteArray json = "{\"cfgq_export\": 1, \"section\": \"Setup\", \"settings\": {\"a\": \"" +
                          QByteArray(300'000, 'z') + "\", \"b\": [\"" + QByteArray(300'000, 'z') + "\", \"\"]}}";
  const QByteArray before = profile_bytes();
  const QString room = QStringLiteral("Room left: %1 bytes").arg(QLocale(QLocale::English).toString(10'000'000 - before.size()));
  for (const QStringList& args : {QStringList{"set", "General", "Blob", "--value-file", value}, QStringList{"import", "-"}}) {
    const tool_result r = run(args, {}, json);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(r.err.contains(QLatin1String("would grow to 10,10")) && r.err.contains(room)) << text(r.err);
    EXPECT_EQ(profile_bytes(), before);
  }
  EXPECT_TRUE(run({"check"}).out.contains(QStringLiteral("(%1)").arg(room.toLower()))) << text(run({"check"}).out);
  EXPECT_EQ(run({"set", "General", "Big", "--value-file", value}).status, 0);
  EXPECT_EQ(raw_value("25.1_pro/General/Big").toString().size(), 600'000);
}

// The confirmations need a terminal: `script` gives the tool one, fed from a pipe.
TEST_F(CliTest, ResetAndMigrateAskOnATerminal) {
  if (!QFileInfo::exists(QStringLiteral("/usr/bin/script"))) GTEST_SKIP() << "no script(1)";
  const struct {
    const char* command;
    const char* answer;
    const char* question;
    const char* done;  // printed when the answer is yes
  } cases[] = {
      {"reset", "\n", "Remove all 4 values of 25.1_pro from ", nullptr},
      {"reset", "yes\n", "Remove all 4 values of 25.1_pro from ", "Removed 4 values from 25.1_pro"},
      {"migrate", "no\n", "25.1_pro holds 1 value written before its first migration", nullptr},
      {"migrate", "y\n", "Remove it, so that the tools start from their defaults? [y/N] ",
       "Removed the 1 value that 25.1_pro held from before its first migration"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.command) + " " + c.answer);
    if (c.command == std::string("migrate")) {
      write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\n");
    } else {
      write_populated_profile();
    }
    const QByteArray before = profile_bytes();
    const tool_result r = run_program(QStringLiteral("/usr/bin/script"),
                                      {"-q", "-e", "-c", QStringLiteral(CFGQ_TOOL_PATH " %1").arg(c.command), "/dev/null"},
                                      {}, c.answer);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains(QLatin1String(c.question))) << text(r.out);
    EXPECT_TRUE(r.out.contains(QLatin1String(c.done ? c.done : "Nothing changed."))) << text(r.out);
    EXPECT_EQ(c.done ? run({"keys", "General"}).status == 1 : profile_bytes() == before, true);
  }
}

TEST_F(CliTest, SetTakesItsValueFromStandardInputOrAFile) {
  const QString file = home() + QStringLiteral("/value.txt");
  write_file(file, "line 1\nline 2\n\n");
  const struct {
    QStringList args;
    QByteArray input;
    int status;
    const char* stored;  // the value read back, or the error
  } cases[] = {
      {{"set", "General", "k", "-"}, "hi\n", 0, "hi"},
      {{"set", "General", "k", "--value-file", file}, "", 0, "line 1\nline 2\n"},
      {{"set", "General", "k", "-", "--json"}, "[\"a\", \"b\"]\n", 0, "a, b"},
      {{"set", "General", "k", "-"}, "bad \xff\n", 2, "cfgq: set General/k: standard input: not valid UTF-8 text\n"},
      {{"set", "General", "k", "--value-file", home() + "/none"}, "", 3, "cfgq: set General/k: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(text(c.args));
    const tool_result r = run(c.args, {}, c.input);
    EXPECT_EQ(r.status, c.status) << text(r.err);
    if (c.status != 0) {
      EXPECT_TRUE(r.err.startsWith(QString::fromUtf8(c.stored))) << text(r.err);
      continue;
    }
    const QVariant value = raw_value(QStringLiteral("25.1_pro/General/k"));
    EXPECT_EQ(value.metaType().id() == QMetaType::QStringList ? value.toStringList().join(", ") : value.toString(),
              QString::fromUtf8(c.stored));
  }
  // A value the command line can't carry: over 128 kB.
  write_file(file, QByteArray(300'000, 'x'));
  ASSERT_EQ(run({"set", "General", "big", "--value-file", file}).status, 0);
  EXPECT_EQ(raw_value(QStringLiteral("25.1_pro/General/big")).toString().size(), 300'000);
}

// Runs whose settings go to a temporary file say so, naming the variable that made them so.
TEST_F(CliTest, IsolatedRunsWarnOnStandardError) {
  for (const auto& [name, value] : {std::pair<const char*, const char*>{"QT_QPA_PLATFORM", "minimal"},
                                    {"PBUILD_BUILD", "1"}, {"KORVEL_REGTEST", "1"}}) {
    SCOPED_TRACE(name);
    const tool_result set = run({"set", "General", "k", "v"}, {{name, value}});
    EXPECT_EQ(set.status, 0);
    EXPECT_TRUE(set.err.startsWith(QStringLiteral("cfgq: warning: %1=%2 makes this an isolated run: ").arg(name, value)))
        << text(set.err);
    EXPECT_EQ(set.err.count('\n'), 1);
    const tool_result path = run({"path"}, {{name, value}});
    EXPECT_NE(path.out, profile_file() + QLatin1Char('\n'));
    EXPECT_TRUE(path.err.contains(QLatin1String("temporary file, removed when it exits"))) << text(path.err);
  }
  EXPECT_TRUE(run({"show"}).err.isEmpty());
  EXPECT_FALSE(QFileInfo::exists(profile_file()));
}

TEST_F(CliTest, ShowTellsTypesApart) {
  {
    QSettings raw(profile_file(), QSettings::IniFormat);
    const QList<QPair<const char*, QVariant>> values = {
        {"a_text_list", "[\"a\",\"b\"]"}, {"b_list", QStringList{"a", "b"}}, {"c_text_bytes", "{\"@bytes\": \"AA==\"}"},
        {"d_bytes", QByteArray("\x00", 1)}, {"e_size", QSize(640, 480)}, {"f_text_size", "@Size(640 480)"},
        {"g_rect", QRect(1, 2, 3, 4)}, {"h_time", QDateTime(QDate(2026, 11, 23), QTime(3, 4, 5), Qt::UTC)}, {"i_number", 640}};
    for (const auto& [key, value] : values) raw.setValue(QStringLiteral("25.1_pro/General/") + key, value);
  }
  EXPECT_EQ(run({"show", "General"}).out,
            "[25.1_pro/General]\n  a_text_list = \"[\\\"a\\\",\\\"b\\\"]\"\n  b_list = [\"a\",\"b\"]\n"
            "  c_text_bytes = \"{\\\"@bytes\\\": \\\"AA==\\\"}\"\n  d_bytes = {\"@bytes\":\"AA==\"}\n"
            "  e_size = @Size(640 480)\n  f_text_size = \"@Size(640 480)\"\n  g_rect = @Rect(1 2 3 4)\n"
            "  h_time = @DateTime(2026-11-23T03:04:05.000Z)\n  i_number = 640\n");
}

// Files in the settings file's place that are no settings file; a damaged one kept aside.
TEST_F(CliTest, ReadsSayWhatStandsInTheSettingsFilesPlace) {
  const struct {
    QByteArray bytes;  // empty: a directory
    const char* message;
  } cases[] = {
      {"{\"cfgq_export\": 1, \"settings\": {}}\n", "holds JSON, not settings"},
      {"", "a directory, not a settings file"},
      {QByteArray("\x7f" "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x03\0>\0", 20), "holds binary data, not settings"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    QFile::remove(profile_file());
    QDir().rmdir(profile_file());
    if (c.bytes.isEmpty()) { ASSERT_TRUE(QDir().mkdir(profile_file())); } else { write_profile_file(c.bytes); }
    for (const char* command : {"show", "export"}) {
      const tool_result r = run({command});
      EXPECT_EQ(r.status, 3);
      EXPECT_TRUE(r.err.startsWith(QStringLiteral("cfgq: %1: %2: %3").arg(command, profile_file(), c.message)))
          << text(r.err);
    }
  }
  QDir().rmdir(profile_file());
  write_file(profile_file(), cfgq_test::read_bytes(QStringLiteral(CFGQ_TEST_DATA_DIR "/damaged_line_without_equals.kreg")));
  const tool_result set = run({"set", "General", "k", "v"});
  EXPECT_EQ(set.status, 0);
  EXPECT_TRUE(set.err.contains(QStringLiteral("a byte-exact copy was kept as %1.format-error").arg(profile_file())))
      << text(set.err);
}

TEST_F(CliTest, DeepNestingIsNoCrash) {
  write_profile_file("[25.1_pro]\nGeneral\\" + QByteArray("g\\").repeated(25'000) + "Width=640\n");
  for (const QStringList& args : {QStringList{"show", "--all"}, QStringList{"export"}}) {
    const tool_result deep = run(args);
    EXPECT_TRUE(deep.status == 0 && deep.out.contains(QLatin1String("Width"))) << text(args) << text(deep.err);
  }
}

TEST_F(CliTest, UndecodableArgumentsAreRefused) {
  const tool_result bad = run_program(QStringLiteral("/bin/sh"),
                                      {"-c", "exec \"$0\" set General \"$(printf 'k\\377')\" v", CFGQ_TOOL_PATH});
  EXPECT_EQ(bad.status, 2);
  EXPECT_EQ(bad.err, "cfgq: argument 3: not valid UTF-8 (settings hold Unicode text; convert it first, e.g. with iconv)\n");
}

TEST_F(CliTest, RecoverListsSetAsideCopiesAndMergesOneBack) {
  write_profile_file("[25.1_pro]\nGeneral\\A=live\n");
  write_file(profile_file() + QStringLiteral(".large"),
             "[25.1_pro]\nGeneral\\A=old\nGeneral\\B=b\nSetup\\C=c\n[24.3_pro]\nGeneral\\D=d\n");
  // The library keeps a damaged file's copy under this name; recover reads what it can of it.
  write_file(profile_file() + QStringLiteral(".format-error"),
             cfgq_test::read_bytes(QStringLiteral(CFGQ_TEST_DATA_DIR "/damaged_line_without_equals.kreg")));
  const tool_result list = run({"recover"});
  EXPECT_EQ(list.status, 0);
  const qint64 large_size = QFileInfo(profile_file() + QStringLiteral(".large")).size();
  EXPECT_TRUE(list.out.contains(QStringLiteral("%1.large\n    %2 bytes").arg(profile_file()).arg(large_size)))
      << text(list.out);
  EXPECT_TRUE(list.out.contains(QLatin1String("main keys: 24.3_pro, 25.1_pro (running version, 3 values)")));
  EXPECT_TRUE(list.out.contains(profile_file() + QStringLiteral(".format-error\n")));
  EXPECT_TRUE(list.out.contains(QLatin1String("main keys: 25.1_pro (running version, 2 values)")));

  const tool_result merge = run({"recover", "--merge", "large"});
  EXPECT_EQ(merge.status, 0) << text(merge.err);
  EXPECT_TRUE(merge.out.contains(QLatin1String("restored: 2 values\n"))) << text(merge.out);
  EXPECT_TRUE(merge.out.contains(QLatin1String("kept the live value (already set): General/A\n")));
  EXPECT_EQ(raw_value("25.1_pro/General/A").toString() + raw_value("25.1_pro/General/B").toString() +
                raw_value("25.1_pro/Setup/C").toString(), "livebc");
  EXPECT_FALSE(raw_value("25.1_pro/General/D").isValid());
  expect_rows({{{"recover", "--merge", profile_file()}, 2, "cfgq: recover"},
               {{"recover", "--merge", "corrupt"}, 2, "cfgq: recover"},
               {{"recover", "--merge", "large", "--main-key", "23.4_pro"}, 1, "cfgq: recover"}});
}

// Escapes make the written file larger than the text: control characters, the hex digits that
// follow them, quotes, backslashes and non-ASCII text, in keys, lists and byte arrays. A merge
// stops short of the size limit, and show cuts long values short.
TEST_F(CliTest, RecoverMergeKeepsTheLiveFileWithinTheSizeLimit) {
  write_profile_file("[25.1_pro]\nGeneral\\A=live\n");
  const QString pattern = QString::fromUtf8("\x01" "abc123\"\\ é日\t,;=");
  const QByteArray bytes_pattern("\x00\x01" "9f\xff\"", 6);
  const QString large = profile_file() + QStringLiteral(".large");
  {
    QSettings copy(large, QSettings::IniFormat);
    for (int i = 0; i < 16; ++i) {
      const QString key = QStringLiteral("25.1_pro/Dialog_Control_State/k%1 é=\"%2\"").arg(i).arg(i);
      if (i % 4 == 0) copy.setValue(key, bytes_pattern.repeated(60'000));
      else if (i % 4 == 1) copy.setValue(key, QStringList{pattern.repeated(20'000), pattern.repeated(20'000)});
      else copy.setValue(key, pattern.repeated(40'000));
    }
    copy.setValue("25.1_pro/Recent_Files/too_large", QString(10'000'000, QLatin1Char('z')));
  }
  const tool_result merge = run({"recover", "--merge", "large"});
  EXPECT_EQ(merge.status, 0) << text(merge.err);
  EXPECT_TRUE(merge.out.contains(QLatin1String("would grow past 10,000,000 bytes"))) << text(merge.out);
  EXPECT_TRUE(merge.out.contains(QLatin1String("too large to store (10,000,000 or more UTF-16 code units): Recent_Files/too_large\n")));
  EXPECT_FALSE(merge.out.contains(QLatin1String("restored: 0 values"))) << text(merge.out);
  // Within the limit, and the estimate is close enough that most of the room is used.
  EXPECT_LE(QFileInfo(profile_file()).size(), 10'000'000);
  EXPECT_GT(QFileInfo(profile_file()).size(), 8'000'000);
  // Every value that came back reads back whole through the library.
  const tool_result keys = run({"keys", "DCS"});
  EXPECT_EQ(keys.status, 0);
  for (const QString& key : keys.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
    SCOPED_TRACE(text(key));
    const QString path = QStringLiteral("25.1_pro/Dialog_Control_State/") + key;
    EXPECT_EQ(raw_value(path), QSettings(large, QSettings::IniFormat).value(path));
  }
  EXPECT_EQ(run({"get", "General", "A"}).out, "live\n");
  const tool_result show = run({"show", "DCS"});
  EXPECT_LT(show.out.size(), 20'000);
  EXPECT_TRUE(show.out.contains(QLatin1String("characters; 'cfgq get' prints it whole)\n"))) << text(show.out.left(2000));
}

}  // namespace
