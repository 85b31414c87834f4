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
exec ctest --preset "$preset" "$@"
