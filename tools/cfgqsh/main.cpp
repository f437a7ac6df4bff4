// cfgqsh: a Tcl shell with the gui_settings package loaded, as the suite's own shell has it.
//   cfgqsh                      interactive
//   cfgqsh script.tcl args...   runs the script with $argv set to args
#include <tcl.h>
#ifdef _WIN32
#include <windows.h>
#include <shellapi.h>
#endif

#include "atcl.h"

// The package's load entry, exported by libcfgq (`load libcfgq.so Gui_settings`).
extern "C" int Gui_settings_Init(Tcl_Interp* interp);

namespace {

// Called by Tcl_Main once the interpreter exists, before the script or the prompt.
int init_shell(Tcl_Interp* interp) {
  if (Tcl_Init(interp) != TCL_OK) return TCL_ERROR;
  atcl_set_interpreter(interp);
  // libcfgq registered the static package Gui_settings when it was loaded; should another
  // load entry have taken its place, the package is initialised directly.
  if (Tcl_EvalEx(interp, "load {} Gui_settings", -1, TCL_EVAL_GLOBAL) != TCL_OK) {
    Tcl_ResetResult(interp);
    if (Gui_settings_Init(interp) != TCL_OK) return TCL_ERROR;
  }
  return TCL_OK;
}

}  // namespace

#ifdef _WIN32
// Tcl for Windows takes the arguments as UTF-16, as the system hands them over. Tcl_Main ends
// the process itself, so the system's copy of them is never given back.
int main() {
  int argc = 0;
  wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc);
  if (argv == nullptr) return 1;
  Tcl_Main(argc, argv, init_shell);
  return 0;
}
#else
int main(int argc, char** argv) {
  Tcl_Main(argc, argv, init_shell);
  return 0;  // Tcl_Main exits the process itself
}
#endif
