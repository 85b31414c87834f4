#!/usr/bin/env bash
# Checks the form of the code: clang-format over every source file; with --tidy also clang-tidy over
# the files of the dev build.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t files < <(git ls-files '*.cpp' '*.h')
mapfile -t files < <(printf '%s\n' "${files[@]}" | grep -v '\.gsoap\.h$')
clang-format --dry-run --Werror "${files[@]}"

if [[ "${1:-}" == "--tidy" ]]; then
  shift
  cmake --preset dev >/dev/null
  cmake --build --preset dev -- --quiet
  if [[ $# -eq 0 ]]; then
    mapfile -t sources < <(git ls-files '*.cpp' | grep -vE '(^|/)(tests|fuzz|bench)/')
  else
    sources=("$@")
  fi
  # clang-tidy reads gcc's precompiled headers not at all: it gets the flags without them.
  database=$(mktemp -d)
  trap 'rm -rf "$database"' EXIT
  sed -E 's/ -Winvalid-pch//g; s/ -include [^ ]*cmake_pch\.hxx//g' \
    build/dev/compile_commands.json >"$database/compile_commands.json"
  printf '%s\n' "${sources[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p "$database"
fi
