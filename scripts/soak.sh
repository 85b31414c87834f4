#!/usr/bin/env bash
# Runs the tests that generate what they do again and again, each time with other seeds, until the
# time is over or one fails; that one has printed its seed, with which KXCT_TEST_SEED repeats it.
#
#   scripts/soak.sh [MINUTES] [PRESET]     thirty minutes of dev, if not told otherwise
#
# The preset must be built.
set -euo pipefail
cd "$(dirname "$0")/.."

minutes=${1:-30}
preset=${2:-dev}
generated='Random|Generated|Differential|Model$|KillTest|KilledProcess|CrashTest|HostileText|FollowedItems'
log=build/$preset/soak.log
export KXCT_TEST_SEED=new

rounds=0
end=$((SECONDS + minutes * 60))
while ((SECONDS < end)); do
  if ! ctest --preset "$preset" -R "$generated" --output-on-failure >"$log" 2>&1; then
    cat "$log"
    echo "soak: round $((rounds + 1)) failed" >&2
    exit 1
  fi
  rounds=$((rounds + 1))
done
echo "soak: $rounds rounds of $(grep -c 'Passed' "$log") suites, no failure"
