// The gui_settings package's tables: option lookups with abbreviations, argument names, the
// chained name tables, the command objects, registration and what happens at exit.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <tcl.h>

#include "atcl.h"
#include "cfgq_tcl_args_auto.h"
#include "qtl.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;

using lookup_function = CFGQ_AUTO_ARGUMENT_ENUM (*)(const char*);

struct command_lookup {
  const char* command;
  lookup_function lookup;
  std::vector<CFGQ_AUTO_ARGUMENT_ENUM> accepted;  // the names the command takes exactly
};

const std::vector<command_lookup>& all_commands() {
  static const std::vector<command_lookup> commands = {
      {"gui_settings::get_value", cfgq_gui_settings_get_value_name_to_id,
       {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
      {"cfgq_create_registry", cfgq_create_registry_name_to_id,
       {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP,
        CFGQ_AUTO_ARGUMENT_KEY, CFGQ_AUTO_ARGUMENT_VALUE}},
      {"cfgq_read_registry", cfgq_read_registry_name_to_id,
       {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP,
        CFGQ_AUTO_ARGUMENT_KEY}},
      {"cfgq_get_all_keys", cfgq_get_all_keys_name_to_id,
       {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
      {"cfgq_clear_registry", cfgq_clear_registry_name_to_id,
       {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
  };
  return commands;
}

const std::vector<std::string> all_names = {"h", "help", "long_help", "key", "type", "value"};

// What a command's lookup must answer for `text`, worked out from the naming rule rather than
// from the package's tables: an accepted name is itself; a proper prefix of exactly one accepted
// name is that name; everything else is unknown.
CFGQ_AUTO_ARGUMENT_ENUM expected_id(const command_lookup& command, const std::string& text) {
  CFGQ_AUTO_ARGUMENT_ENUM match = CFGQ_AUTO_ARGUMENT_NONE;
  int matches = 0;
  for (CFGQ_AUTO_ARGUMENT_ENUM id : command.accepted) {
    const std::string name = CFGQ_AUTO_ARGUMENT_NAMES[id];
    if (name == text) return id;
    if (name.compare(0, text.size(), text) == 0) {
      match = id;
      ++matches;
    }
  }
  return matches == 1 ? match : CFGQ_AUTO_ARGUMENT_NONE;
}

TEST(TclArgsLookupTest, ExactNamesAreAcceptedOnlyByCommandsThatTakeThem) {
  for (const command_lookup& command : all_commands()) {
    for (const std::string& name : all_names) {
      SCOPED_TRACE(std::string(command.command) + " " + name);
      EXPECT_EQ(command.lookup(name.c_str()), expected_id(command, name));
    }
  }
  // The positional's name is never an option, and "h" is its own name, not a prefix of "help".
  EXPECT_EQ(cfgq_create_registry_name_to_id("type"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(cfgq_gui_settings_get_value_name_to_id("key"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(cfgq_read_registry_name_to_id("value"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(cfgq_read_registry_name_to_id("h"), CFGQ_AUTO_ARGUMENT_H);
}

TEST(TclArgsLookupTest, EveryPrefixOfEveryNameFollowsTheAbbreviationRule) {
  for (const command_lookup& command : all_commands()) {
    for (const std::string& name : all_names) {
      for (std::size_t length = 1; length < name.size(); ++length) {
        const std::string prefix = name.substr(0, length);
        SCOPED_TRACE(std::string(command.command) + " " + prefix);
        EXPECT_EQ(command.lookup(prefix.c_str()), expected_id(command, prefix));
      }
    }
  }
  // A few rows spelled out, so that the rule above can't drift unnoticed.
  EXPECT_EQ(cfgq_create_registry_name_to_id("k"), CFGQ_AUTO_ARGUMENT_KEY);
  EXPECT_EQ(cfgq_create_registry_name_to_id("valu"), CFGQ_AUTO_ARGUMENT_VALUE);
  EXPECT_EQ(cfgq_read_registry_name_to_id("v"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(cfgq_gui_settings_get_value_name_to_id("k"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(cfgq_clear_registry_name_to_id("long_hel"), CFGQ_AUTO_ARGUMENT_LONG_HELP);
  EXPECT_EQ(cfgq_get_all_keys_name_to_id("he"), CFGQ_AUTO_ARGUMENT_HELP);
}

TEST(TclArgsLookupTest, EmptyAndMissingNamesGiveSevenAndLongerNamesGiveZero) {
  for (const command_lookup& command : all_commands()) {
    SCOPED_TRACE(command.command);
    EXPECT_EQ(command.lookup(""), CFGQ_AUTO_ARGUMENT_EMPTY);
    EXPECT_EQ(command.lookup(nullptr), CFGQ_AUTO_ARGUMENT_EMPTY);
    for (CFGQ_AUTO_ARGUMENT_ENUM id : command.accepted) {
      for (const char* tail : {"x", "_", "-", " "}) {
        const std::string longer = std::string(CFGQ_AUTO_ARGUMENT_NAMES[id]) + tail;
        SCOPED_TRACE(longer);
        EXPECT_EQ(command.lookup(longer.c_str()), CFGQ_AUTO_ARGUMENT_NONE);
      }
    }
    EXPECT_EQ(command.lookup("Help"), CFGQ_AUTO_ARGUMENT_NONE);
    EXPECT_EQ(command.lookup("-help"), CFGQ_AUTO_ARGUMENT_NONE);
  }
}

// ---- Name tables -----------------------------------------------------------------------------

TEST(TclNameTableTest, HashesMatchTheFormulaWorkedByHand) {
  // "h": 0 ^ (0 + 0 + 104).
  EXPECT_EQ(CFGQ_NAME_TABLE::hash("h"), 104u);
  // "he": 104 ^ (3328 + 26 + 101) = 104 ^ 3455.
  EXPECT_EQ(CFGQ_NAME_TABLE::hash("he"), 3351u);
  // "key": 107; 107 ^ (3424 + 26 + 101) = 3508; 3508 ^ (112256 + 877 + 121) = 112594.
  EXPECT_EQ(CFGQ_NAME_TABLE::hash("key"), 112594u);
  // A byte above 0x7f counts as negative: 0 + 0 + (-1) wraps to 2^32 - 1.
  EXPECT_EQ(CFGQ_NAME_TABLE::hash("\xff"), 4294967295u);
  EXPECT_EQ(CFGQ_NAME_TABLE::hash(""), 0u);
}

TEST(TclNameTableTest, NewEntriesGoToTheHeadOfTheirChain) {
  CFGQ_NAME_TABLE table;
  ASSERT_EQ(table.bucket_count(), 61u);
  // "key", "ep" and "go" all hash to bucket 49 of 61.
  for (const char* name : {"key", "ep", "go"}) ASSERT_EQ(CFGQ_NAME_TABLE::hash(name) % 61, 49u);
  table.insert("key", 4);
  table.insert("ep", 1);
  table.insert("go", 2);

  std::vector<std::string> chain;
  const CFGQ_NAME_TABLE::ENTRY* previous = nullptr;
  for (const CFGQ_NAME_TABLE::ENTRY* entry = table.chain(49); entry; entry = entry->next) {
    EXPECT_EQ(entry->prev, previous);
    chain.emplace_back(entry->name);
    previous = entry;
  }
  EXPECT_EQ(chain, (std::vector<std::string>{"go", "ep", "key"}));
  EXPECT_EQ(table.size(), 3u);
  ASSERT_NE(table.find("ep"), nullptr);
  EXPECT_EQ(table.find("ep")->id, 1);
  EXPECT_EQ(table.find("iu"), nullptr);  // same bucket, not in the table
}

TEST(TclNameTableTest, InsertingAnExistingNameReplacesItsIdentifier) {
  CFGQ_NAME_TABLE table;
  table.insert("key", 4);
  // A different pointer to equal text is the same name: names compare by content.
  const std::string same_text = "key";
  table.insert(same_text.c_str(), 9);
  EXPECT_EQ(table.size(), 1u);
  ASSERT_NE(table.find("key"), nullptr);
  EXPECT_EQ(table.find("key")->id, 9);
  EXPECT_EQ(table.chain(49)->next, nullptr);
}

TEST(TclNameTableTest, ReserveGrowsOnlyBeyondFiveQuartersOfTheBuckets) {
  CFGQ_NAME_TABLE table;
  table.reserve(0);
  table.reserve(48);  // 5 * 12 = 60 fits in 61
  EXPECT_EQ(table.bucket_count(), 61u);
  table.reserve(51);  // 5 * 12 = 60: the quotient is rounded down
  EXPECT_EQ(table.bucket_count(), 61u);
  table.insert("key", 4);
  table.insert("ep", 1);
  table.reserve(52);  // 5 * 13 = 65 > 61
  EXPECT_EQ(table.bucket_count(), qtl_hash_50_percent_increase_size(65));
  EXPECT_GT(table.bucket_count(), 61u);
  // Every entry was rehashed into the new array.
  for (const char* name : {"key", "ep"}) {
    SCOPED_TRACE(name);
    const std::uint32_t bucket = CFGQ_NAME_TABLE::hash(name) % table.bucket_count();
    bool in_chain = false;
    for (auto* entry = table.chain(bucket); entry; entry = entry->next) {
      in_chain = in_chain || std::strcmp(entry->name, name) == 0;
    }
    EXPECT_TRUE(in_chain);
    EXPECT_NE(table.find(name), nullptr);
  }
}

TEST(TclNameTableTest, InsertingGrowsTheTableWhenTheEntryCountAsksForMore) {
  CFGQ_NAME_TABLE table;
  std::vector<std::string> names;
  for (int i = 0; i < 60; ++i) names.push_back("name" + std::to_string(i));
  for (int i = 0; i < 51; ++i) table.insert(names[i].c_str(), i);
  EXPECT_EQ(table.bucket_count(), 61u);
  table.insert(names[51].c_str(), 51);  // 52 entries: 5 * 13 = 65 buckets wanted
  EXPECT_EQ(table.bucket_count(), qtl_hash_50_percent_increase_size(65));
  for (int i = 52; i < 60; ++i) table.insert(names[i].c_str(), i);
  for (int i = 0; i < 60; ++i) {
    SCOPED_TRACE(names[i]);
    ASSERT_NE(table.find(names[i].c_str()), nullptr);
    EXPECT_EQ(table.find(names[i].c_str())->id, i);
  }
  EXPECT_EQ(table.size(), 60u);
}

// ---- Argument processors and command objects -------------------------------------------------

TEST(TclArgsProcessorTest, SecondInvocationReusesTheCommandObject) {
  const char* first[] = {"cfgq_read_registry", "-k", "Show_tips", "General"};
  ATCL_ARGS args;
  bool done = true;
  ASSERT_EQ(cfgq_read_registry_process_args(&args, &done, 4, first), TCL_OK);
  EXPECT_FALSE(done);
  EXPECT_STREQ(args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_KEY), "Show_tips");
  EXPECT_STREQ(args.get_one_arg_pos_option(0), "General");
  const ATCL_CMD* made = cfgq_auto_command_object(2);
  ASSERT_NE(made, nullptr);
  EXPECT_STREQ(made->definition().command_name, "cfgq_read_registry");
  const int live = ATCL_CMD::live_count();

  const char* second[] = {"cfgq_read_registry", "Setup", "-key", "Language"};
  ATCL_ARGS more_args;
  ASSERT_EQ(cfgq_read_registry_process_args(&more_args, &done, 4, second), TCL_OK);
  EXPECT_EQ(cfgq_auto_command_object(2), made);
  EXPECT_EQ(ATCL_CMD::live_count(), live);
  EXPECT_STREQ(more_args.get_one_arg_pos_option(0), "Setup");
  EXPECT_EQ(more_args.get_one_arg_pos_option(1), nullptr);
  EXPECT_EQ(more_args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_VALUE), nullptr);
}

TEST(TclArgsProcessorTest, EachCommandHasItsOwnObject) {
  const char* line[] = {"any", "Section"};
  ATCL_ARGS args;
  bool done = false;
  ASSERT_EQ(cfgq_get_all_keys_process_args(&args, &done, 2, line), TCL_OK);
  ASSERT_EQ(cfgq_clear_registry_process_args(&args, &done, 2, line), TCL_OK);
  ASSERT_NE(cfgq_auto_command_object(3), nullptr);
  EXPECT_NE(cfgq_auto_command_object(3), cfgq_auto_command_object(4));
  EXPECT_STREQ(cfgq_auto_command_object(4)->definition().command_name, "cfgq_clear_registry");
  EXPECT_EQ(cfgq_auto_command_object(5), nullptr);
}

// In a child process: makes a command object, then exits through the static destructors.
void exit_after_making_a_command_object() {
  // Registered before the command objects exist, so it runs after they are released.
  std::atexit([] {
    if (ATCL_CMD::live_count() != 0) _exit(3);
  });
  const char* line[] = {"cfgq_clear_registry", "General"};
  ATCL_ARGS args;
  bool done = false;
  if (cfgq_clear_registry_process_args(&args, &done, 2, line) != TCL_OK) _exit(4);
  if (ATCL_CMD::live_count() == 0) _exit(5);
  std::exit(0);
}

TEST(TclArgsProcessorTest, CommandObjectsAreReleasedAtExit) {
  EXPECT_EXIT(exit_after_making_a_command_object(), ::testing::ExitedWithCode(0), "");
}

// ---- Registration ----------------------------------------------------------------------------

// A Tcl interpreter handed to the Tcl command library, deleted at the end of the test.
class TclPackageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Tcl_FindExecutable(nullptr);
    m_interp = Tcl_CreateInterp();
    atcl_set_interpreter(m_interp);
  }
  void TearDown() override {
    if (m_interp) Tcl_DeleteInterp(m_interp);
  }

  std::string eval(const char* script) {
    Tcl_Eval(m_interp, script);
    return Tcl_GetStringResult(m_interp);
  }

  Tcl_Interp* m_interp = nullptr;
};

TEST_F(TclPackageTest, InitReturnsOkWhenProvidingFails) {
  eval("package provide ::korvel::gui_settings 2.0");
  EXPECT_EQ(Gui_settings_Init(nullptr), TCL_OK);
  EXPECT_EQ(eval("package present ::korvel::gui_settings"), "2.0");
  EXPECT_EQ(eval("info commands cfgq_read_registry"), "cfgq_read_registry");
  cfgq_gui_settings_unregister_tcl();
}

TEST_F(TclPackageTest, TheLibraryForgetsADeletedInterpreter) {
  ASSERT_EQ(atcl_get_interpreter(), m_interp);
  Tcl_DeleteInterp(m_interp);
  m_interp = nullptr;
  EXPECT_EQ(atcl_get_interpreter(), nullptr);
}

TEST_F(TclPackageTest, DeletingALaterInterpreterHandsBackTheEarlierOne) {
  // As when a child interpreter loads the package and is deleted: the first one still exists.
  Tcl_Interp* const later = Tcl_CreateInterp();
  atcl_set_interpreter(later);
  Tcl_DeleteInterp(later);
  EXPECT_EQ(atcl_get_interpreter(), m_interp);
  atcl_set_interpreter(nullptr);
  Tcl_DeleteInterp(m_interp);
  m_interp = nullptr;
  EXPECT_EQ(atcl_get_interpreter(), nullptr);
}

TEST_F(TclPackageTest, ProcessIsNotLoadingPackagesDynamically) {
  // Linked in, not loaded by Tcl: the package registered itself as the static package.
  EXPECT_FALSE(atcl_is_dynamically_loading());
  EXPECT_EQ(eval("load {} Gui_settings; info commands cfgq_get_all_keys"), "cfgq_get_all_keys");
  cfgq_gui_settings_unregister_tcl();
}

class TclArgsDeathTest : public ::testing::Test {};

TEST_F(TclArgsDeathTest, IdentifiersOutsideOneToSixAreInternalErrors) {
  for (int id : {0, 7, -1, 8}) {
    SCOPED_TRACE(id);
    EXPECT_DEATH(cfgq_auto_argument_name(static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(id)),
                 "The calling function has passed an illegal CFGQ_AUTO_ARGUMENT_ENUM"
                 ".*CFGQ.*gcl/cfgq/cfgq_tcl_args_auto.cpp");
  }
}

TEST_F(TclArgsDeathTest, NullArgumentHolderIsAnInternalError) {
  const char* line[] = {"cfgq_get_all_keys", "General"};
  bool done = false;
  EXPECT_DEATH(cfgq_get_all_keys_process_args(nullptr, &done, 2, line),
               "args != 0.*CFGQ.*gcl/cfgq/cfgq_tcl_args_auto.cpp");
}

TEST_F(TclArgsDeathTest, RegistrationWithoutInterpreterFailsAfterTheSetup) {
  atcl_set_interpreter(nullptr);
  // The stand-in traces each setup call on channel ATCL: all three come before the report.
  EnvGuard debug("KORVEL_DEBUG", "ATCL");
  EXPECT_DEATH(cfgq_gui_settings_register_tcl(),
               "begin setup of ::korvel::gui_settings.*register callbacks of "
               "::korvel::gui_settings.*end setup of ::korvel::gui_settings.*"
               "A Tcl interpreter must exist before registering ::korvel::gui_settings!");
}

TEST_F(TclArgsDeathTest, UnregistrationWithoutInterpreterIsAnInternalError) {
  atcl_set_interpreter(nullptr);
  EXPECT_DEATH(cfgq_gui_settings_unregister_tcl(),
               "A Tcl interpreter must exist before registering ::korvel::gui_settings!");
}

TEST_F(TclArgsDeathTest, PackageIsUnregisteredAtExitOnlyInQtProcesses) {
  atcl_set_interpreter(nullptr);
  {
    // Not a Qt process: exit leaves the package alone, so no interpreter is needed.
    EnvGuard qt("KORVEL_QT_PROCESS", std::nullopt);
    EXPECT_EXIT(std::exit(0), ::testing::ExitedWithCode(0), "");
  }
  {
    // A Qt process unregisters at exit, which needs the interpreter it no longer has.
    EnvGuard qt("KORVEL_QT_PROCESS", "1");
    EXPECT_DEATH(std::exit(0),
                 "A Tcl interpreter must exist before registering ::korvel::gui_settings!");
  }
}

// In a child process: registers the package in a new interpreter, then exits.
void exit_with_the_package_registered() {
  Tcl_FindExecutable(nullptr);
  atcl_set_interpreter(Tcl_CreateInterp());
  cfgq_gui_settings_register_tcl();
  std::exit(0);
}

TEST_F(TclArgsDeathTest, QtProcessRemovesTheCommandsAtExit) {
  EnvGuard qt("KORVEL_QT_PROCESS", "1");
  EnvGuard debug("KORVEL_DEBUG", "ATCL");
  // Registration names no module or entry points; unregistration names both.
  EXPECT_EXIT(exit_with_the_package_registered(), ::testing::ExitedWithCode(0),
              "begin setup of ::korvel::gui_settings 1\\.0 \\(registering\\)\n.*"
              "begin setup of ::korvel::gui_settings 1\\.0 \\(unregistering\\) module gcl_cfgq "
              "entry points cfgq_gui_settings\n.*unregister ::korvel::gui_settings");
}

}  // namespace
