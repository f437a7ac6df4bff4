# Runs every *.test file of this directory, each in its own tclsh, and exits non-zero when a
# test fails or a file ends in an error: runAllTests only reports, so CTest would stay green.
#   TCLLIBPATH=<build>/tcl/gui_settings KORVEL_VERSION=25.1 tclsh all.tcl ?-tmpdir DIR? ...
package require tcltest 2.5
namespace import ::tcltest::*
configure -testdir [file dirname [file normalize [info script]]] {*}$argv
exit [expr {[runAllTests] ? 1 : 0}]
