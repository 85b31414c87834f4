# tclsh host.tcl PATH_OF_KXHOST DEFAULT_SETTINGS FOLDER
#
# Two attributes that no library knows, an answer to questions and an ear for changes, in a plain
# tclsh with the example host of examples/host.
lassign $argv module defaults folder
load $module Kxhost

# One procedure serves one attribute. The volume, in cubic metres, is kept here ...
proc volume {verb item args} {
    global volumes
    switch $verb {
        get         { return [expr {[info exists volumes($item)] ? $volumes($item) : 0}] }
        set         { set volumes($item) [lindex $args 0]; return 1 }
        editable    { return 1 }
        description { return [expr {[lindex $args 0] eq "displayname" ? "Volume" : ""}] }
    }
    return 0
}

# ... and the mass, in kilograms, comes from volume and material. It stands before the attribute
# "mass" that parts have in the library.
proc mass {verb item args} {
    set density {steel 7850 aluminium 2700 cast\ iron 7200}
    switch $verb {
        get {
            set material [host get $item material]
            if {![dict exists $density $material]} {
                return "no density of \"$material\""
            }
            return [format %.2f [expr {[dict get $density $material] * [host get $item volume]}]]
        }
        editable    { return 0 }
        description { return [expr {[lindex $args 0] eq "displayname" ? "Computed mass" : ""}] }
    }
    return 0
}

# Answers every question with its last option.
proc answer {verb question options args} {
    puts "$question $options"
    return [expr {[llength $options] - 1}]
}

proc changed {item} {
    puts "changed: [host get $item displayname]"
}

puts "open: [host open $defaults $folder]"
set housing [host create UDMPart housing]
host set $housing material "cast iron"

puts "registered: [host script volume volume] [host script mass mass], again: [host script mass x]"
host hear changed
puts "set the volume: [host set $housing volume 0.0125]"
puts "set the mass: [host set $housing mass 1]"
puts "mass of [host get $housing displayname]: [host get $housing mass] kg"
puts "shown as: [host describe $housing mass displayname]"
puts "attributes from scripts: [lrange [host attributes $housing] end-1 end]"
host set $housing material wood
puts "mass now: [host get $housing mass]"

host responder answer
puts "answer: [host ask "Replace it?" No Yes "Yes to all"]"
puts "next answer, without a question: [host ask "Replace that too?" No Yes]"

host close
puts "after closing: [catch {host get $housing mass} message] $message"
