# Times the gui_settings commands beside tcllib's inifile doing the same work, in one tclsh, on a
# ~1 MB settings file (each side on its own copy).
#
#   TCLLIBPATH=<build>/tcl/gui_settings tclsh bench/tcl_bench.tcl ?reads? ?writes?
#
# Prints one CSV line per measurement: name,microseconds per call.

package require Tcl 8.6
package require inifile

set reads [expr {$argc > 0 ? [lindex $argv 0] : 1000}]
set writes [expr {$argc > 1 ? [lindex $argv 1] : 1000}]

# One main key as Qt writes it: the group General with Show_tips=Yes, then keys spread over 70
# groups (every third nested) until the text reaches about a megabyte.
proc settings_text {bytes} {
    set lines [list {[25.1_pro]} {General\Show_tips=Yes}]
    set size 0
    for {set line 0} {$size < $bytes} {incr line} {
        set group [expr {$line % 70}]
        set nested [expr {$group % 3 == 0 ? "\\Nested" : ""}]
        set text [format {Section_%d%s\Key_%06d=Value text %d with a few words} \
                      $group $nested $line [expr {$line * 7919 % 100000}]]
        lappend lines $text
        incr size [expr {[string length $text] + 1}]
    }
    return "[join $lines \n]\n"
}

proc write_file {path text} {
    file mkdir [file dirname $path]
    set out [open $path w]
    puts -nonewline $out $text
    close $out
}

set root [file join [expr {[info exists env(TMPDIR)] ? $env(TMPDIR) : "/tmp"}] \
              cfgq_tcl_bench_[pid]]
set text [settings_text 1000000]
write_file [file join $root ours korvel2.kreg] $text
write_file [file join $root tcllib korvel2.kreg] $text

# The library's views use <HOME>/korvel2.kreg of version 25.1; its temporary file goes to $root.
set env(HOME) [file join $root ours]
set env(TMPDIR) $root
set env(KORVEL_VERSION) 25.1
foreach name {KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_CONFIG_ON KORVEL_DEBUG} {
    unset -nocomplain env($name)
}
package require ::korvel::gui_settings

proc per_call {script count} {
    return [lindex [uplevel 1 [list time $script $count]] 0]
}

set ini [ini::open [file join $root tcllib korvel2.kreg] r+]
set key {General\Show_tips}

# Reads: each command opens its own view; ini::value answers from the handle's parsed file.
cfgq_read_registry -key Show_tips General
ini::value $ini 25.1_pro $key
puts "tcl_read/ours/1MB,[per_call {cfgq_read_registry -key Show_tips General} $reads]"
puts "tcl_read/tcllib/1MB,[per_call {ini::value $ini 25.1_pro $key} $reads]"

# Writes: each reaches the disk before the next (the view's close; ini::commit).
set i 0
puts "tcl_write/ours/1MB,[per_call {
    cfgq_create_registry -key Show_tips -value [expr {[incr i] % 2 ? "Yes" : "No_"}] General
} $writes]"
puts "tcl_write/tcllib/1MB,[per_call {
    ini::set $ini 25.1_pro $key [expr {[incr i] % 2 ? "Yes" : "No_"}]
    ini::commit $ini
} $writes]"

ini::close $ini
file delete -force $root
