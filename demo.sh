#!/usr/bin/env bash
# Sets up, builds, and keeps a folder of real files as a managed tree.
#
#   ./demo.sh [FOLDER]
#
# Without FOLDER it takes the finite element decks of the package calculix-ccx-test. The library
# goes to build/demo, or to the folder that KXCT_DEMO_DIR names; a second run opens it again.
set -euo pipefail
project=$(cd "$(dirname "$0")" && pwd)
folder=${1-}
if [[ $# -eq 0 ]]; then
  folder=/usr/share/doc/calculix-ccx-test/examples
fi

"$project/scripts/setup.sh"
(
  cd "$project"
  cmake --preset release >/dev/null
  cmake --build --preset release --target first_read -- --quiet
)
exec "$project/build/release/bin/first_read" \
  "$project/data" "${KXCT_DEMO_DIR:-$project/build/demo}" "$folder"
