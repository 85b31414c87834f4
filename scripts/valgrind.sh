#!/usr/bin/env bash
# Runs test programs under valgrind's memcheck: the central ones, without their tests of sheer size,
# or those that are named. Errors and definite leaks fail. Slow: about twenty times the usual.
#
#   scripts/valgrind.sh [BUILD]                              BUILD is build/dev unless told
#   scripts/valgrind.sh BUILD PROGRAM[:FILTER] ...           as in items_test:'Structure*.*'
#
# The programs have to be built, without sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/dev}
[[ $# -eq 0 ]] || shift
# The filters leave out what takes minutes under valgrind and goes the same ways as the rest.
programs=(
  'kxsigslot_test'
  'kxinterp_test:-*LongLists*:*PassesMuchText*'
  'KXCTLoggerTest:-*Generated*:*AFullDisk*'
  'KXCTResponderTest'
  'kxct_settings_test:NorvikLibraryInfo.*:-*FiftyThousand*:*TwoGibibytes*'
  'items_test:-*Thousand*:*GroupingByAttributesIs*:*GroupingRevisionsIs*'
  'ControllerImplTest:ControllerImplScripted.*:ControllerImplCalledBack.*:ControllerImplQuery*.*:-*WhateverAScriptReturns*'
)
[[ $# -eq 0 ]] || programs=("$@")

command -v valgrind >/dev/null || { echo "valgrind.sh: valgrind is not installed" >&2; exit 1; }
log=$(mktemp)
trap 'rm -f "$log"' EXIT

failed=0
for entry in "${programs[@]}"; do
  name=${entry%%:*}
  filter='*'
  [[ "$entry" == *:* ]] && filter=${entry#*:}
  program=$(find "$build" -type f -name "$name" -perm -u+x | head -n 1)
  [[ -n "$program" ]] || { echo "$name: not built in $build" >&2; exit 1; }
  # A new program that a test starts is not watched; what it forks is.
  if valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite \
      --errors-for-leak-kinds=definite --num-callers=30 --gen-suppressions=all \
      --suppressions=scripts/valgrind.supp \
      "$program" --gtest_brief=1 --gtest_filter="$filter" >"$log" 2>&1; then
    echo "$name: $(grep -E '^\[  PASSED' "$log")"
  else
    echo "$name: FAILED"
    cat "$log"
    failed=1
  fi
done
exit $failed
