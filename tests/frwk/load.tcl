# Loads the library into a plain tclsh, as a host without code of its own does.
#
#   tclsh load.tcl <path of libkxct.so>
lassign $argv library
load $library
set loaded [lsearch -inline -index 0 [info loaded] $library]
if {[lindex $loaded 1] ne "Kxct"} {
    puts stderr "loaded as '$loaded'"
    exit 1
}
# Once more into a second interpreter, and into a safe one through the other entry.
interp create second
load $library Kxct second
interp create -safe guarded
load $library Kxct guarded
