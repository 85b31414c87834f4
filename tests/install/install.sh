#!/usr/bin/env bash
# install.sh BUILD CONSUMER COMPILER
set -euo pipefail
build=$1 consumer=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
check() {
  local output
  output=$("$@")
  [[ "$output" == "2020 local 1" ]] || { echo "unexpected from $1: $output"; exit 1; }
}

cmake -S "$consumer" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/consumer" -- --quiet
check "$work/consumer/consumer"

pkgconfig=$(dirname "$(find "$work/prefix" -name kxct.pc)")
read -ra flags <<<"$(PKG_CONFIG_PATH=$pkgconfig pkg-config --cflags --libs kxct)"
"$compiler" -Wall -Wextra -Wpedantic -Werror "$consumer/main.cpp" -o "$work/by-pkg-config" \
  "${flags[@]}" -Wl,-rpath,"$(dirname "$pkgconfig")"
check "$work/by-pkg-config"

test -f "$work/prefix/share/kxct/settings/default.xml"
test -f "$work/prefix/share/kxct/catalogue/engineering.xml"
echo "all as expected"
