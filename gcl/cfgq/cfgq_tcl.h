// The command procedures of the Tcl package gui_settings. Each parses its line through its
// argument processor, opens its own settings view and destroys it before returning. User errors
// set a message starting "ERROR: " and return TCL_ERROR; no C++ exception leaves a procedure.
#pragma once

#include <tcl.h>

// gui_settings::get_value NAME
//   Writes the background colour ("background_color") or the system font in display form
//   ("system_font", e.g. italic bold 10pt "Courier New") to the interpreter's standard output.
//   Result: not set. An unknown name, an absent setting or a font text without the stored form
//   is an error.
int cfgq_gui_settings_get_value_cmd(ClientData client_data, Tcl_Interp* interp, int argc,
                                    const char* argv[]);

// cfgq_create_registry ?-key KEY? ?-value VALUE? SECTION
//   Stores VALUE (the empty text when not given) as text under KEY in SECTION of the running
//   version. Result: not set. An empty section or key is an error and writes nothing.
int cfgq_create_registry_cmd(ClientData client_data, Tcl_Interp* interp, int argc,
                             const char* argv[]);

// cfgq_read_registry ?-key KEY? SECTION
//   Result: the text of KEY among SECTION's own keys, or the empty text when there is none.
int cfgq_read_registry_cmd(ClientData client_data, Tcl_Interp* interp, int argc,
                           const char* argv[]);

// cfgq_get_all_keys SECTION
//   Result: a list of every key at or below SECTION, subgroups' keys as "group/key" paths.
int cfgq_get_all_keys_cmd(ClientData client_data, Tcl_Interp* interp, int argc,
                          const char* argv[]);

// cfgq_clear_registry SECTION
//   Removes every value at or below SECTION; nothing outside it changes. Result: not set.
int cfgq_clear_registry_cmd(ClientData client_data, Tcl_Interp* interp, int argc,
                            const char* argv[]);
