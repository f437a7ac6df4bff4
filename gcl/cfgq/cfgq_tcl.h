// The commands of the Tcl package gui_settings: what each does once its line is parsed. Each body
// opens its own settings view and destroys it before returning. User errors set a message
// starting "ERROR: " and return TCL_ERROR.
// May use: cfgq, cfgq_tcl_args_auto.
#pragma once

#include <tcl.h>

#include "atcl.h"
#include "cfgq_tcl_args_auto.h"

// A command's body: runs on the arguments its line was parsed into.
using cfgq_tcl_body = int(Tcl_Interp* interp, const ATCL_ARGS& args);

// Runs `command` on its line: parses argv through the command's argument processor and, unless
// that fails or printed help, runs `body`. Returns the processor's status when it is not TCL_OK,
// else the body's. No C++ exception leaves it: one becomes the command's error.
int cfgq_tcl_run(cfgq_tcl_command command, cfgq_tcl_body* body, Tcl_Interp* interp, int argc,
                 const char* argv[]);

// gui_settings::get_value NAME
//   Writes the background colour ("background_color") or the system font in display form
//   ("system_font", e.g. italic bold 10pt "Courier New") to the interpreter's standard output.
//   Result: not set. An unknown name, an absent setting or a font text without the stored form
//   is an error.
cfgq_tcl_body cfgq_get_value_body;

// cfgq_create_registry ?-key KEY? ?-value VALUE? SECTION
//   Stores VALUE (the empty text when not given) as text under KEY in SECTION of the running
//   version. Result: not set. An empty section or key is an error and writes nothing.
cfgq_tcl_body cfgq_create_registry_body;

// cfgq_read_registry ?-key KEY? SECTION
//   Result: the text of KEY among SECTION's own keys, or the empty text when there is none.
cfgq_tcl_body cfgq_read_registry_body;

// cfgq_get_all_keys SECTION
//   Result: a list of every key at or below SECTION, subgroups' keys as "group/key" paths.
cfgq_tcl_body cfgq_get_all_keys_body;

// cfgq_clear_registry SECTION
//   Removes every value at or below SECTION; nothing outside it changes. Result: not set.
cfgq_tcl_body cfgq_clear_registry_body;
