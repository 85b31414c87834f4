#!/usr/bin/env bash
# Builds the release preset, runs every benchmark beside its floor and prints a table:
# operation, size, floor, ours, ratio, budget.
#
#   scripts/bench.sh                 all of it, nine interleaved repetitions, about ten minutes
#   scripts/bench.sh -r 3            three repetitions
#   scripts/bench.sh -f 'attribute'  only operations that match the regular expression
#   scripts/bench.sh -b DIR          build directory (default: build/release)
#   scripts/bench.sh -m              as Markdown, to be pasted into a document
#
# Ratios are those of the medians. Times are processor time of the process, user and system, so
# that other programs on the machine do not count; of files that are imported and of rows named so
# they are those of the clock.
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions=9
filter=.
build=build/release
markdown=0
while getopts r:f:b:m option; do
  case $option in
    r) repetitions=$OPTARG ;;
    f) filter=$OPTARG ;;
    b) build=$OPTARG ;;
    m) markdown=1 ;;
    *) exit 2 ;;
  esac
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if ! { cmake --preset release -B "$build" &&
       cmake --build "$build" --target kxct_bench kxct_bench_memory kxct_bench_query_text; } >"$work/build" 2>&1; then
  tail -n 30 "$work/build" >&2
  echo "bench: the build failed" >&2
  exit 1
fi

# --- The stamp ---

compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' "$build/CMakeCache.txt")
commit=$(git rev-parse --short HEAD)
git diff --quiet HEAD -- . || commit="$commit with changes"
memory=$(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)
processor=$(lscpu | sed -n 's/^Model name: *//p' | head -n 1)
echo "Commit $commit, $("$compiler" --version | head -n 1), release, $(date -u +%F);"
echo "$processor, $(nproc) processors, $memory, $(uname -sr)."
echo

# Rows of a table, cells separated by tabs, the first one the head.
print_table() {
  awk -F '\t' -v markdown="$markdown" '
  {
    for (i = 1; i <= NF; i++) {
      cell[NR, i] = $i
      if (length($i) > width[i]) width[i] = length($i)
    }
  }
  function rule(i, line) {
    line = "|---|"
    for (i = 2; i <= NF; i++) line = line "---:|"
    return line
  }
  function row(number, i, line) {
    line = markdown ? "| " : ""
    for (i = 1; i <= NF; i++) {
      if (markdown) line = line cell[number, i] (i < NF ? " | " : " |")
      else line = line sprintf(i == 1 ? "%-" width[i] "s" : "  %" width[i] "s", cell[number, i])
    }
    return line
  }
  END {
    for (number = 1; number <= NR; number++) {
      print row(number)
      if (markdown && number == 1) print rule()
    }
  }'
}

# --- Times ---

# Each operation in a process of its own: what one does to the heap is nothing to the next.
operations=("item from the cache" "item by UID" "children, first time" "children, again" "structure"
            "attribute edit" "check-out and publish" "check-out of a parent" "history"
            "bulk creation, alone" "bulk creation, owned"
            "query" "query, prefix and definition" "children that meet a query"
            "full text, a word" "full text, all words" "full text, a phrase"
            "import of files" "import of a large file" "export"
            "import of an archive" "import of an archive, clock" "open a library")
for operation in "${operations[@]}"; do
  [[ $filter == . || $operation =~ $filter ]] || continue
  "$build/bin/kxct_bench" --benchmark_filter="^$operation/" --benchmark_format=csv \
    --benchmark_repetitions="$repetitions" --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true --benchmark_min_time=0.2 \
    >>"$work/times" 2>"$work/log" || {
    cat "$work/log" >&2
    exit 1
  }
done

awk -F, '
function budget_of(operation) {
  if (operation == "item from the cache") return "1.5"
  if (operation == "item by UID") return "2"
  if (operation == "children, first time") return "2"
  if (operation == "children, again") return "1.5"
  if (operation == "structure") return "2"
  if (operation == "attribute edit") return "1.3"
  if (operation ~ /^check-out/) return "1.5"
  if (operation ~ /^query/) return "1.5"
  if (operation == "children that meet a query") return "1.5"
  if (operation ~ /^full text/) return "1.5"
  if (operation ~ /^bulk creation/) return "2"
  if (operation ~ /^import of files/) return "2"
  if (operation == "import of a large file") return "1.25"
  if (operation == "export" || operation ~ /^import of an archive/) return "1.5"
  return "-"
}
function size_of(key, piece) {
  split(key, piece, "|")
  return piece[2] + 0
}
function text_of(nanoseconds) {
  if (nanoseconds < 1000) return sprintf("%.0f ns", nanoseconds)
  if (nanoseconds < 1000000) return sprintf("%.2f us", nanoseconds / 1000)
  return sprintf("%.1f ms", nanoseconds / 1000000)
}
BEGIN {
  scale["ns"] = 1; scale["us"] = 1000; scale["ms"] = 1000000; scale["s"] = 1000000000
  OFS = "\t"
  print "operation", "size", "floor", "ours", "ratio", "budget"
}
# The name is quoted and may hold commas: it is taken off from the left.
match($0, /^"[^"]*_median"/) {
  name = substr($0, 2, RLENGTH - 2)
  rest = substr($0, RLENGTH + 2)
  split(rest, field, ",")
  sub(/_median$/, "", name)
  sub(/\/iterations:1/, "", name)
  # Told by the benchmark itself, in the place of the real time.
  told = sub(/\/manual_time/, "", name)
  split(name, part, "/")
  key = part[1] "|" part[3]
  # What waits for the disk is told by the clock, and so is what another program does.
  time = field[told || name ~ /real_time/ ? 2 : 3] * scale[field[4]]
  # Rounds of many are told per item.
  if (field[6] != "") time = 1000000000 / field[6]
  if (part[2] == "ours") {
    ours[key] = time
    next
  }
  floor[key] = time
  # Operations as they come, each with its smaller size first.
  at = ++count
  for (; at > 1 && index(order[at - 1], part[1] "|") == 1 && size_of(order[at - 1]) > part[3]; at--)
    order[at] = order[at - 1]
  order[at] = key
}
END {
  for (i = 1; i <= count; i++) {
    key = order[i]
    if (!(key in ours)) continue
    split(key, part, "|")
    print part[1], part[2], text_of(floor[key]), text_of(ours[key]),
      sprintf("%.2f", ours[key] / floor[key]), budget_of(part[1])
  }
}' "$work/times" | print_table

# --- Text of a query ---

if [[ $filter == . || "text of a query" =~ $filter ]]; then
  echo
  "$build/bin/kxct_bench_query_text" | awk -F, '
  BEGIN {
    OFS = "\t"
    print "text of a query, parsed and compiled", "time", "budget"
  }
  NR > 1 { print "of " $1 " terms", sprintf("%.2f us", $2), "20 us" }' | print_table
fi

# --- Memory ---

if [[ $filter == . || "memory per cached item" =~ $filter ]]; then
  echo
  "$build/bin/kxct_bench_memory" | awk -F, '
  BEGIN {
    OFS = "\t"
    print "memory of a cached item with its handle", "bytes", "packed attributes", "without",
      "budget"
  }
  NR > 1 { print "of " $1 " items", $2, $3, $4, 400 }' | print_table
fi
