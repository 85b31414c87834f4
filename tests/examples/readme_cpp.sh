#!/usr/bin/env bash
# readme_cpp.sh PROGRAM SETTINGS
set -euo pipefail
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
output=$(HOME=$home "$1" "$2" "$home")
[[ "$output" == "/Decks/Main span/self weight: self weight and snow" ]] || {
  echo "unexpected: $output"
  exit 1
}
