#!/usr/bin/env bash
# Every numbered row of docs/data-model.md has a test whose name bears its number, and every row of
# the life of entities and of the notifications one with a second session in the process and one
# with another process.
#
#   rows.sh DATA-MODEL TEST-PROGRAM
set -euo pipefail

rows=$(sed -n 's/^| *\([A-Z][0-9][0-9]*\) *|.*/\1/p' "$1")
twice=$(sort <<<"$rows" | uniq -d)
# "Suite.", then its tests, indented.
names=$("$2" --gtest_list_tests | sed -n 's/^  \([^ ]*\).*/\1/p')
# A number stands between "_", "/" and the ends of a name; "And" may come before it.
tokens() {
  sed 's/^/_/; s/$/_/; s/[_/]\(And\)\{0,1\}/__/g' | grep -oE '_[A-Z][0-9]+_' | tr -d _ | sort -u
}

missing=$(comm -23 <(sort -u <<<"$rows") <(tokens <<<"$names"))
# N12 is told to a session alone. N14 and N20 are of one and of two processes by what they say, N17
# to N19 are about the slots of one.
between=$(grep -E '^[SN]' <<<"$rows" | grep -vxE 'N(12|14|17|18|19|20)' | sort -u)
for other in InAnotherSession InAnotherProcess; do
  lacking=$(comm -23 <(echo "$between") <(grep "_$other\$" <<<"$names" | tokens))
  missing+=${lacking:+$'\n'$(sed "s/\$/ $other/" <<<"$lacking")}
done

count=$(wc -l <<<"$rows")
if [[ $count -lt 100 ]]; then
  echo "only $count rows were found in $1" >&2
  exit 1
fi
if [[ -n "$twice" || -n "${missing//$'\n'/}" ]]; then
  printf 'numbers given twice: %s\nrows without a test:\n%s\n' "$twice" "$missing" >&2
  exit 1
fi
echo "$count rows have their tests"
