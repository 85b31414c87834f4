#!/usr/bin/env bash
# Sets up, builds and runs all tests.
#
#   ./test.sh [PRESET] [CTEST ARGUMENTS...]
#
# PRESET is dev (the default), asan, tsan or coverage; docs/architecture.md tells what each is.
set -euo pipefail
cd "$(dirname "$0")"

preset=dev
case "${1:-}" in
  dev | asan | tsan | coverage) preset=$1; shift ;;
esac

scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -- -k 0
ctest --preset "$preset" "$@"

# A test of ctest is a suite of many.
log=build/$preset/Testing/Temporary/LastTest.log
sed -n 's/^\[  PASSED  \] \([0-9]*\) test.*/\1/p' "$log" |
  awk '{ tests += $1 } END { print tests + 0, "tests in", NR, "suites passed" }'
