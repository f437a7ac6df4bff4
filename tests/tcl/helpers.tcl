# Shared by the gui_settings test files: the package, a fresh HOME per test, stdout capture and
# an independent reader of the settings file.
package require tcltest 2.5
namespace import -force ::tcltest::*
package require ::korvel::gui_settings

# The settings go to <HOME>/korvel2.kreg under the main key 25.1_pro: no isolated run, no
# 64-bit split. The version is read once per process, so it is fixed for the whole file.
foreach name {KORVEL_REGTEST QT_QPA_PLATFORM PBUILD_BUILD KORVEL_CONFIG_ON KORVEL_DEBUG} {
    unset -nocomplain ::env($name)
}
if {![info exists ::env(KORVEL_VERSION)] || $::env(KORVEL_VERSION) ne "25.1"} {
    error "the gui_settings tests expect KORVEL_VERSION=25.1"
}

# The variable naming the user's profile directory: USERPROFILE on Windows.
variable ::home_variable [expr {$::tcl_platform(platform) eq "windows" ? "USERPROFILE" : "HOME"}]

# A new, empty HOME for each test: a new name every time, so no state kept for an earlier
# test's file can be mistaken for this one's.
variable ::home_serial 0
variable ::saved_home ""
proc use_fresh_home {} {
    set ::saved_home [expr {[info exists ::env($::home_variable)] ? $::env($::home_variable) : ""}]
    set ::env($::home_variable) [makeDirectory home[incr ::home_serial]]
}
proc restore_home {} {
    removeDirectory home$::home_serial
    set ::env($::home_variable) $::saved_home
}

# A tcltest case on a fresh HOME: use_fresh_home runs before the case's own -setup script and
# restore_home after its own -cleanup script; the scripts run in the caller's scope, as with test.
proc settingsTest {name description args} {
    set options [dict merge {-setup {} -cleanup {}} $args]
    dict set options -setup "use_fresh_home\n[dict get $options -setup]"
    dict set options -cleanup "[dict get $options -cleanup]\nrestore_home"
    uplevel 1 [list test $name $description {*}$options]
}

# The cfgq command-line tool of the same build, which works through the library's own
# section views: CFGQ_TOOL names it.
testConstraint cfgqTool [expr {[info exists ::env(CFGQ_TOOL)] && [file executable $::env(CFGQ_TOOL)]}]
proc cfgq_tool {args} { exec $::env(CFGQ_TOOL) {*}$args }

proc settings_file {} { file join $::env($::home_variable) korvel2.kreg }

# Writes a settings file by hand, as another program of the suite would leave it.
proc write_settings_file {text} {
    set channel [open [settings_file] w]
    puts -nonewline $channel $text
    close $channel
}

# The value stored at `path` ("25.1_pro/General/Show_tips") read straight from the file, whether
# the file writes a nested group as a section ([25.1_pro/General]) or as a key prefix
# (General\Show_tips under [25.1_pro]); "<absent>" when there is none.
proc file_value {path} {
    if {![file exists [settings_file]]} { return <absent> }
    set channel [open [settings_file] r]
    fconfigure $channel -encoding utf-8
    set lines [split [read $channel] \n]
    close $channel
    set section ""
    set found <absent>
    foreach line $lines {
        if {[regexp {^\[(.*)\]\s*$} $line -> section]} { continue }
        if {![regexp {^([^=]*?)\s*=\s?(.*)$} $line -> key value]} { continue }
        set full [string map {\\ /} [expr {$section eq "" ? $key : "$section/$key"}]]
        if {[regexp {^"(.*)"$} $value -> inner]} { set value $inner }
        if {$full eq $path} { set found $value }
    }
    return $found
}

# Runs `script` in the caller's scope with the interpreter's stdout captured.
# Returns {code result output}.
namespace eval capture {
    variable text ""
    proc initialize {handle mode} { return {initialize finalize write} }
    proc finalize {handle} {}
    proc write {handle data} {
        variable text
        append text $data
        return ""
    }
    namespace export initialize finalize write
    namespace ensemble create
}
proc output_of {script} {
    set ::capture::text ""
    # The bytes as written, line ends too: Windows' stdout would turn each \n into \r\n.
    set saved [chan configure stdout]
    chan configure stdout -encoding utf-8 -translation lf
    chan push stdout ::capture
    set code [catch {uplevel 1 $script} result]
    chan pop stdout
    chan configure stdout -encoding [dict get $saved -encoding] \
        -translation [dict get $saved -translation]
    return [list $code $result [encoding convertfrom utf-8 $::capture::text]]
}
