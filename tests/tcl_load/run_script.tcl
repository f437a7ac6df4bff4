# Runs the script in CFGQ_TCL_SCRIPT with the package loaded (TCLLIBPATH names its directory).
package require ::korvel::gui_settings
eval $env(CFGQ_TCL_SCRIPT)
