#!/usr/bin/env bash
# Runs test programs under valgrind's memcheck: the central ones, without their tests of sheer size;
# or all of them, with the Tcl tests and the inputs that fuzzing collected; or those that are named.
# Errors and definite leaks fail. Slow: about thirty times the usual, so all takes more than an hour.
#
#   scripts/valgrind.sh [BUILD]                              BUILD is build/dev unless told
#   scripts/valgrind.sh --all [BUILD]
#   scripts/valgrind.sh BUILD PROGRAM[:FILTER] ...           as in items_test:'Structure*.*'
#
# The programs have to be built, without sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."

# What is left out of the programs, a colon before each pattern: it takes from many minutes to hours
# under valgrind, and goes the same ways as the rest.
declare -A without=(
  # Texts, lists and documents of sheer size.
  [kxinterp_test]=':*LongLists*:*PassesMuchText*'
  [KXCTLoggerTest]=':*Generated*:*AFullDisk*'
  [kxct_binding_test]=':*HostileBulk*'
  [kxct_settings_test]=':*FiftyThousand*:*TwoGibibytes*'
  [items_test]=':*Thousand*:*GroupingByAttributesIs*:*GroupingRevisionsIs*'
  [ControllerImplTest]=':*WhateverAScriptReturns*'
  # A hundred thousand generated queries.
  [kxudmrt_query_test]=':*Differential*'
  # Sequences of random steps, compared with a model after each; imports that begin anew for each
  # call to the machine that fails, and for each byte of an archive.
  [kxudmrt_profile_test]=':*Random*:*BulkImportWithFaults*:*FilesWithFaults*:*HostileImport*'
  [kxudmrt_archive_test]=':Codes/ArchiveFaultTest*'
  # Hundreds of processes that are killed, and what begins anew for each call that fails;
  # files and lists of sheer size.
  [kxudmrt_vault_test]=':OnceAndForGood/*:CrashTest*:*Beyond4GiB*:*MemoryDoesNotGrow*'
  [SystemTest]=':KilledProcess*'
)
# Nothing but killed processes and calls that fail.
left_out='kxudmrt_faults_test'

build=build/dev
all=false
if [[ "${1:-}" == "--all" ]]; then
  all=true
  shift
fi
[[ $# -eq 0 ]] || { build=$1; shift; }

command -v valgrind >/dev/null || { echo "valgrind.sh: valgrind is not installed" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# A new program that a test starts is not watched; what it forks is.
memcheck=(valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite
  --errors-for-leak-kinds=definite --num-callers=30 --gen-suppressions=all
  --suppressions="$PWD/scripts/valgrind.supp")

# check NAME COMMAND...: the command watches itself
check() {
  local name=$1
  shift
  if "$@" >"$work/log" 2>&1; then
    echo "$name: $(grep -E '^\[  PASSED' "$work/log" || echo passed)"
  else
    echo "$name: FAILED"
    cat "$work/log"
    failed=1
  fi
}

# check_tests NAME FILTER: a GoogleTest program
check_tests() {
  local program
  program=$(find "$build" -type f -name "$1" -perm -u+x | head -n 1)
  [[ -n "$program" ]] || { echo "$1: not built in $build" >&2; exit 1; }
  check "$1" "${memcheck[@]}" "$program" --gtest_brief=1 --gtest_filter="$2"
}

# What is no GoogleTest program.
check_others() {
  local name
  for name in tests/frwk/load.tcl examples/readme/readme.tcl; do
    check "$name" "${memcheck[@]}" tclsh "$name" "$build/libkxct.so"
  done
  # The scripts of these tests start what they are given: the same, watched.
  for name in tclsh "$build/bin/readme_example"; do
    printf '#!/bin/sh\nexec %s "$@"\n' "${memcheck[*]@Q} ${name@Q}" >"$work/${name##*/}"
    chmod +x "$work/${name##*/}"
  done
  check examples/host.tcl tests/examples/host.sh "$work/tclsh" examples/host.tcl \
    "$build/bin/kxhost.so" data/settings/default.xml
  check readme_example tests/examples/readme_cpp.sh "$work/readme_example" data/settings/default.xml
  for name in fuzz/corpus/*; do
    check "$name" "${memcheck[@]}" "$build/fuzz/replay_${name##*/}" "$name"
  done
}

if $all; then
  # Each program that ctest runs has a file that names it.
  while read -r name; do
    [[ "$name" != "$left_out" ]] || { echo "$name: left out"; continue; }
    check_tests "$name" "-${without[$name]:-}"
  done < <(find "$build" -name '*_suites.cmake' -printf '%f\n' | sed 's/_suites\.cmake$//' | sort)
  check_others
elif [[ $# -gt 0 ]]; then
  for entry in "$@"; do
    filter='*'
    [[ "$entry" == *:* ]] && filter=${entry#*:}
    check_tests "${entry%%:*}" "$filter"
  done
else
  for name in kxsigslot_test kxinterp_test KXCTLoggerTest KXCTResponderTest items_test; do
    check_tests "$name" "-${without[$name]:-}"
  done
  check_tests kxct_settings_test "NorvikLibraryInfo.*:-${without[kxct_settings_test]}"
  check_tests ControllerImplTest "ControllerImplScripted.*:ControllerImplCalledBack.*:\
ControllerImplQuery*.*:-${without[ControllerImplTest]}"
fi
exit $failed
