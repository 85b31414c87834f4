# tclsh readme.tcl PATH_OF_LIBKXCT
load [lindex $argv 0] Kxct
puts "kxct is loaded into Tcl [info patchlevel]"
