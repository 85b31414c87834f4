#!/usr/bin/env bash
# host.sh TCLSH SCRIPT MODULE SETTINGS: the host example, and what it prints.
set -euo pipefail
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
HOME=$home "$1" "$2" "$3" "$4" "$home" >"$home/out" 2>"$home/err" || {
  echo "exit code $?"
  cat "$home/out" "$home/err"
  exit 1
}
cat >"$home/expected" <<'END'
open: true
registered: true true, again: false
changed: housing
set the volume: true
changed: housing
set the mass: false
mass of housing: 90.00 kg
shown as: Computed mass
attributes from scripts: mass volume
changed: housing
mass now: no density of "wood"
Replace it? No Yes {Yes to all}
answer: Yes to all
next answer, without a question: Yes
after closing: 1 no library is open
END
diff "$home/expected" "$home/out" && [[ ! -s "$home/err" ]]
