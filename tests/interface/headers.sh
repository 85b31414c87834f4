#!/usr/bin/env bash
# headers.sh BUILD GXX CLANGXX
#
# Installs the headers as a consumer gets them and compiles each by itself, with the flags that
# pkg-config tells a consumer and every warning worth having.
set -euo pipefail
export LC_ALL=C
build=$1 gxx=$2 clangxx=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" --component development >/dev/null
pkgconfig=$(dirname "$(find "$work/prefix" -name kxct.pc)")
flags=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --cflags kxct)
common="-std=c++20 -fsyntax-only -Werror $flags"

export gxx_run="$gxx $common -Wall -Wextra -Wpedantic -Wshadow -Wundef -Wformat=2
  -Wnon-virtual-dtor -Woverloaded-virtual -Wsuggest-override -Wextra-semi -Wredundant-decls
  -Wold-style-cast -Wuseless-cast -Wcast-qual -Wcast-align -Wconversion -Wsign-conversion
  -Wdouble-promotion -Wduplicated-cond -Wduplicated-branches -Wlogical-op
  -Wzero-as-null-pointer-constant"

# Left out of clang's everything: older standards, layout and vague linkage, which are no faults;
# names such as _GetStructure and constants made at load, which the interface demands.
strict="-Weverything -Wno-c++98-compat -Wno-c++98-compat-pedantic -Wno-padded -Wno-weak-vtables
  -Wno-reserved-identifier -Wno-global-constructors -Wno-exit-time-destructors"

# Both compilers read the same standard library, so g++ alone proves that a header includes what it
# needs of it; clang, here for its warnings, gets that part ready made.
printf '#include <%s>\n' cstddef cstdint exception functional list map memory set stdexcept string \
  string_view unordered_map unordered_set utility variant vector >"$work/standard.hpp"
"$clangxx" -std=c++20 -x c++-header "$work/standard.hpp" -o "$work/standard.pch"
export clangxx_run="$clangxx $common $strict -include-pch $work/standard.pch"

check() {
  # The list of flags is split into words.
  # shellcheck disable=SC2086
  echo "#include <$2>" | $1 -x c++ - || { echo "<$2> does not stand alone"; return 1; }
}
export -f check

cd "$work/prefix/include"
mapfile -t headers < <(find . -name '*.h' -printf '%P\n' | sort)
# Else nothing was proved.
[[ ${#headers[@]} -ge 80 ]] || { echo "only ${#headers[@]} headers were installed"; exit 1; }

# What stands first in another header is compiled alone with that one.
mapfile -t first < <(grep -hm 1 '^#include' "${headers[@]}" | sed -E 's/#include <(.*)>/\1/' | sort -u)
mapfile -t outermost < <(comm -23 <(printf '%s\n' "${headers[@]}") <(printf '%s\n' "${first[@]}"))
printf '%s\n' "${outermost[@]}" | xargs -P 2 -I{} bash -c 'check "$gxx_run" {}'
printf '%s\n' "${headers[@]}" | xargs -P 2 -I{} bash -c 'check "$clangxx_run" {}'
echo "${#headers[@]} headers stand alone"
