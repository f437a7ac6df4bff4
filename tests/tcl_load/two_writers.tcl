# Two tclsh processes, each making COUNT cfgq_create_registry calls on the same section at once;
# then every value of both must be in the settings file.
#   TCLLIBPATH=<build>/tcl/gui_settings tclsh two_writers.tcl ?COUNT?
# Prints one line of figures and exits 1 when a value is missing.
set count [expr {$argc > 0 ? [lindex $argv 0] : 500}]
set writers {A B}

# A private HOME shared by the writers and this check: <HOME>/korvel2.kreg under 25.1_pro.
set tmp [expr {[info exists env(TMPDIR)] && $env(TMPDIR) ne "" ? $env(TMPDIR) : "/tmp"}]
set home [file join $tmp cfgq-tcl-load-[pid]]
file delete -force $home
file mkdir $home
set env(HOME) $home
set env(KORVEL_VERSION) 25.1
foreach name {KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_CONFIG_ON KORVEL_DEBUG} {
    unset -nocomplain env($name)
}

set here [file dirname [file normalize [info script]]]
set started [clock milliseconds]
set pipes {}
foreach name $writers {
    lappend pipes [open |[list [info nameofexecutable] [file join $here writer.tcl] $name $count \
                              2>@stderr] r]
}
set failed 0
foreach pipe $pipes {
    # close waits for the writer and raises an error when it failed.
    if {[catch {close $pipe} message]} {
        puts stderr "tcl load: a writer failed: $message"
        set failed 1
    }
}
set seconds [expr {([clock milliseconds] - $started) / 1000.0}]

# Read back through the package in this process, whose first view comes after both writers.
package require ::korvel::gui_settings
set lost 0
foreach name $writers {
    for {set i 0} {$i < $count} {incr i} {
        if {[cfgq_read_registry -key ${name}_$i Load_test] ne "$name:$i"} { incr lost }
    }
}
set keys [llength [cfgq_get_all_keys Load_test]]
puts "tcl load: [llength $writers] processes x $count writes in $seconds s, values lost $lost,\
      keys in the section $keys"
file delete -force $home
exit [expr {$failed || $lost != 0 || $keys != [llength $writers] * $count}]
