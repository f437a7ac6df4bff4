# One of the writers of two_writers.tcl: COUNT cfgq_create_registry calls on the section
# Load_test, each value naming its writer and its number.
#   tclsh writer.tcl NAME COUNT
package require ::korvel::gui_settings
lassign $argv name count
for {set i 0} {$i < $count} {incr i} {
    cfgq_create_registry -key ${name}_$i -value $name:$i Load_test
}
