#!/usr/bin/env bash
# Installs what the build, the tests and the demo need, and only what is missing. Says nothing
# where everything is there.
#
#   scripts/setup.sh           install
#   scripts/setup.sh --list    print the package names
set -euo pipefail

packages=(
  # compilers, build and lint
  g++ cmake ninja-build ccache pkg-config clang clang-format clang-tidy
  # libraries
  libboost-dev libboost-filesystem-dev libboost-regex-dev
  gsoap libgsoap-dev tcl8.6-dev tk8.6-dev
  libsqlite3-dev libssl-dev libpugixml-dev libexpat1-dev libutf8proc-dev libzstd-dev
  libarchive-dev
  # tests, benchmarks, demo
  libgtest-dev libgmock-dev libbenchmark-dev tcl8.6 sqlite3 calculix-ccx-test zip unzip
)

if [[ "${1:-}" == "--list" ]]; then
  printf '%s\n' "${packages[@]}"
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ "$status" == "installed" ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing and only root may install them: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "setup: installing ${missing[*]}"
if ! { "${as_root[@]}" apt-get update -qq &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
         apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  tail -n 30 "$log" >&2
  echo "setup: apt-get could not install ${missing[*]}; the lines above say why" >&2
  exit 1
fi
