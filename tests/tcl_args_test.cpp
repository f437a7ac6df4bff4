// The gui_settings package's tables: option lookups with abbreviations, argument names, the name
// table, registration and what happens at exit.
#include <cstdlib>
#include <string>
#include <vector>

#include <tcl.h>

#include "atcl.h"
#include "cfgq_tcl_args_auto.h"
#include "test_support.h"

namespace {

using cfgq_test::EnvGuard;

struct command_lookup {
  cfgq_tcl_command command;
  std::vector<CFGQ_AUTO_ARGUMENT_ENUM> accepted;  // the names the command takes exactly
};

const std::vector<command_lookup> all_commands = {
    {CFGQ_TCL_GET_VALUE,
     {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
    {CFGQ_TCL_CREATE_REGISTRY,
     {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP,
      CFGQ_AUTO_ARGUMENT_KEY, CFGQ_AUTO_ARGUMENT_VALUE}},
    {CFGQ_TCL_READ_REGISTRY,
     {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP,
      CFGQ_AUTO_ARGUMENT_KEY}},
    {CFGQ_TCL_GET_ALL_KEYS,
     {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
    {CFGQ_TCL_CLEAR_REGISTRY,
     {CFGQ_AUTO_ARGUMENT_H, CFGQ_AUTO_ARGUMENT_HELP, CFGQ_AUTO_ARGUMENT_LONG_HELP}},
};

CFGQ_AUTO_ARGUMENT_ENUM lookup(cfgq_tcl_command command, const char* name) {
  return cfgq_tcl_name_to_id(command, name);
}

// What a command's lookup must answer for `text`, worked out from the naming rule rather than
// from the package's tables: an accepted name is itself; a proper prefix of exactly one accepted
// name is that name; everything else is unknown (0).
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

TEST(TclArgsLookupTest, EveryNameAndPrefixFollowsTheAbbreviationRule) {
  for (const command_lookup& command : all_commands) {
    for (const char* name : {"h", "help", "long_help", "key", "type", "value"}) {
      // Every prefix, the name itself, and longer texts.
      std::vector<std::string> texts;
      for (std::size_t length = 1; length <= std::string(name).size(); ++length) {
        texts.push_back(std::string(name).substr(0, length));
      }
      for (const char* tail : {"x", "_", " "}) texts.push_back(name + std::string(tail));
      for (const std::string& text : texts) {
        SCOPED_TRACE(std::string(cfgq_tcl_command_name(command.command)) + " " + text);
        EXPECT_EQ(lookup(command.command, text.c_str()), expected_id(command, text));
      }
    }
    EXPECT_EQ(lookup(command.command, ""), CFGQ_AUTO_ARGUMENT_EMPTY);
    EXPECT_EQ(lookup(command.command, nullptr), CFGQ_AUTO_ARGUMENT_EMPTY);
    EXPECT_EQ(lookup(command.command, "Help"), CFGQ_AUTO_ARGUMENT_NONE);
    EXPECT_EQ(lookup(command.command, "-help"), CFGQ_AUTO_ARGUMENT_NONE);
  }
  // A few rows spelled out, so that the rule above can't drift unnoticed.
  EXPECT_EQ(lookup(CFGQ_TCL_CREATE_REGISTRY, "type"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(lookup(CFGQ_TCL_READ_REGISTRY, "h"), CFGQ_AUTO_ARGUMENT_H);
  EXPECT_EQ(lookup(CFGQ_TCL_CREATE_REGISTRY, "valu"), CFGQ_AUTO_ARGUMENT_VALUE);
  EXPECT_EQ(lookup(CFGQ_TCL_READ_REGISTRY, "v"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(lookup(CFGQ_TCL_GET_VALUE, "k"), CFGQ_AUTO_ARGUMENT_NONE);
  EXPECT_EQ(lookup(CFGQ_TCL_CLEAR_REGISTRY, "long_hel"), CFGQ_AUTO_ARGUMENT_LONG_HELP);
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

TEST_F(TclPackageTest, LinkedInPackageIsTheStaticPackage) {
  EXPECT_FALSE(atcl_is_dynamically_loading());
  EXPECT_EQ(eval("load {} Gui_settings; info commands cfgq_get_all_keys"), "cfgq_get_all_keys");
  cfgq_gui_settings_unregister_tcl();
}

class TclArgsDeathTest : public ::testing::Test {};

TEST_F(TclArgsDeathTest, MisuseIsAnInternalError) {
  for (int id : {0, 7, -1, 8}) {
    SCOPED_TRACE(id);
    EXPECT_DEATH(cfgq_auto_argument_name(static_cast<CFGQ_AUTO_ARGUMENT_ENUM>(id)),
                 "The calling function has passed an illegal CFGQ_AUTO_ARGUMENT_ENUM\n"
                 "Module: CFGQ\nFile: gcl/cfgq/cfgq_tcl_args_auto.cpp");
  }
  const char* line[] = {"cfgq_get_all_keys", "General"};
  bool done = false;
  EXPECT_DEATH(cfgq_tcl_process_args(CFGQ_TCL_GET_ALL_KEYS, nullptr, &done, 2, line),
               "args != 0\nModule: CFGQ\nFile: gcl/cfgq/cfgq_tcl_args_auto.cpp");
  atcl_set_interpreter(nullptr);
  const char* no_interpreter =
      "A Tcl interpreter must exist before registering ::korvel::gui_settings!";
  EXPECT_DEATH(cfgq_gui_settings_register_tcl(), no_interpreter);
  EXPECT_DEATH(cfgq_gui_settings_unregister_tcl(), no_interpreter);
}

TEST_F(TclArgsDeathTest, PackageIsUnregisteredAtExitOnlyInQtProcesses) {
  atcl_set_interpreter(nullptr);
  {
    // Not a Qt process: exit leaves the package alone, so no interpreter is needed.
    EnvGuard qt("KORVEL_QT_PROCESS", std::nullopt);
    EXPECT_EXIT(std::exit(0), ::testing::ExitedWithCode(0), "");
  }
  EnvGuard qt("KORVEL_QT_PROCESS", "1");
  // A Qt process unregisters at exit, which needs the interpreter it no longer has.
  EXPECT_DEATH(std::exit(0),
               "A Tcl interpreter must exist before registering ::korvel::gui_settings!");
  // With an interpreter, unregistration names the module and entry points.
  EnvGuard debug("KORVEL_DEBUG", "ATCL");
  EXPECT_EXIT(
      {
        Tcl_FindExecutable(nullptr);
        atcl_set_interpreter(Tcl_CreateInterp());
        cfgq_gui_settings_register_tcl();
        std::exit(0);
      },
      ::testing::ExitedWithCode(0),
      "begin setup of ::korvel::gui_settings 1\\.0 \\(unregistering\\) module gcl_cfgq "
      "entry points cfgq_gui_settings\n.*unregister ::korvel::gui_settings");
}

}  // namespace
