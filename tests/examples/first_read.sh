#!/usr/bin/env bash
# first_read.sh PROGRAM DATA: the first read on folders that real disks hold.
set -uo pipefail
program=$1 data=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# run NAME EXPECTED_EXIT FOLDER: runs the program on a library of that name; output in $out, $err
run() {
  "$program" "$data" "$work/home-$1" "$3" >"$work/out" 2>"$work/err"
  local exit=$?
  out=$(cat "$work/out") err=$(cat "$work/err")
  if [[ $exit -ne $2 ]]; then
    echo "FAILED: $1: exit code $exit instead of $2"; cat "$work/out" "$work/err"
    failures=$((failures + 1))
  fi
}
# expect WHAT TEXT PATTERN
expect() {
  if ! grep -qE -- "$3" <<<"$2"; then
    echo "FAILED: $1: no line like: $3"; echo "$2"
    failures=$((failures + 1))
  fi
}

mkdir -p "$work/plain/sub"
printf '*MATERIAL\n*ELASTIC\n' >"$work/plain/deck.inp"
printf 'x' >"$work/plain/sub/notes.txt"
run plain 0 "$work/plain"
expect "plain" "$out" '^folders: 2$'
expect "plain" "$out" '^contents: 2$'
expect "plain" "$out" '^read back: 2 of 2 equal$'
expect "plain" "$out" '^library: .*/libraries/Demo\.ldb$'
expect "plain" "$out" '^time: create [0-9.]+ s, open [0-9.]+ s, read [0-9.]+ s$'
expect "plain" "$out" '^  revision 1  imported by the first read  \(branch [0-9A-Z]{26}\)$'
expect "plain" "$out" '^  revision 2  described$'
expect "plain" "$out" '^classification Reviewed: 2 contents$'
expect "plain" "$out" '^  deck\.inp compared with notes\.txt$'
expect "plain" "$out" '^query class == FileContent && attrib\.filesize >= 10000: 0 hits, [0-9.]+ ms$'
expect "plain" "$out" '^query attrib\.smd_comment == described \|\| attrib\.smd_comment == classified: 2 hits, '
expect "plain" "$out" '^full text elastic mater\*: 2 hits, [0-9.]+ ms$'
expect "plain" "$out" '^retrieved: 2 of 2 identical$'
expect "plain" "$out" '^revisions: 6$'
expect "plain" "$out" '^vault: 2 distinct of 2 files, [0-9]+ bytes$'
expect "plain, last line" "$(tail -n 1 <<<"$out")" '^exchange: 2 of 2 equal$'
[[ ! -e $work/home-plain/retrieved-1 ]] || { echo "FAILED: the retrieved files stayed"; failures=1; }
expect "plain, tree" "$out" '^  deck\.inp  \[UDMDSFileDeck\]  [0-9]+ bytes$'
expect "plain, tree" "$out" '^    notes\.txt  \[.*\]  1 bytes$'

run plain 0 "$work/plain"
expect "second run" "$out" '^The library "Demo" exists; opening it$'
expect "second run" "$out" '^read back: 2 of 2 equal$'
expect "second run" "$out" '^retrieved: 2 of 2 identical$'
expect "second run" "$out" '^classification Reviewed: 2 contents$'
expect "second run" "$out" '^revisions: 7$'
expect "second run" "$out" '^vault: 2 distinct of 2 files, [0-9]+ bytes$'
expect "second run" "$out" '^exchange: 2 of 2 equal$'

USER=anna run plain 0 "$work/plain"
expect "another user" "$out" '^read back: 2 of 2 equal$'

printf '*MATERIAL\n*ELASTIC\n' >"$work/plain/new.inp"
run plain 0 "$work/plain"
expect "a new file" "$out" '^read back: 3 of 3 equal$'
expect "a new file, equal to another" "$out" '^vault: 2 distinct of 3 files, [0-9]+ bytes$'

printf 'abcd' >"$work/plain/deck.inp"
run plain 1 "$work/plain"
expect "a file that changed since" "$out" '^read back: 2 of 3 equal$'
expect "a file that changed since" "$out" '^retrieved: 2 of 3 identical$'
expect "a file that changed since" "$err" '^left out: .*/deck\.inp: the folder has a content of that name'
expect "a file that changed since" "$err" '^differs: deck\.inp .* filesize is "19" in the library and "4" in the folder$'

run missing 2 "$work/nowhere"
expect "a missing folder" "$err" '"[^"]*/nowhere" does not exist'
run file 2 "$work/plain/deck.inp"
expect "a file" "$err" 'is no folder'

mkdir "$work/empty"
run empty 0 "$work/empty"
expect "an empty folder" "$out" '^contents: 0$'
expect "an empty folder" "$out" '^read back: 0 of 0 equal$'
expect "an empty folder" "$out" '^retrieved: 0 of 0 identical$'
expect "an empty folder" "$out" '^exchange: 0 of 0 equal$'
expect "an empty folder" "$out" '^vault: 0 distinct of 0 files, 0 bytes$'

mkdir -p "$work/odd/a'b \"c\"" "$work/odd/日本語" "$work/odd/عربي"
touch "$work/odd/a'b \"c\"/x'y\"z.inp" "$work/odd/日本語/模型.inp" "$work/odd/عربي/نموذج.inp" \
  "$work/odd/"$'line\nbreak.txt' "$work/odd/"$'bad\xff\xfe.txt' "$work/odd/%s%n.txt" \
  "$work/odd/'; drop table entity; --" "$work/odd/back\\slash.txt" "$work/odd/*?[x].txt"
ln -s . "$work/odd/loop"
ln -s ../odd "$work/odd/日本語/loop"
ln -s nowhere "$work/odd/broken"
ln -s "back\\slash.txt" "$work/odd/link to a file.txt"
mkfifo "$work/odd/pipe"
run odd 0 "$work/odd"
expect "odd names" "$out" '^folders: 4$'
expect "odd names" "$out" '^contents: 7$'
expect "odd names" "$out" '^read back: 7 of 7 equal$'
expect "odd names" "$out" '^retrieved: 7 of 7 identical$'
expect "odd names" "$out" '^exchange: 7 of 7 equal$'
expect "a line end in a name" "$err" '^left out: .*/odd/line\\x0Abreak\.txt: .*control character'
expect "a name in no encoding" "$err" '^left out: .*/odd/bad\\xFF\\xFE\.txt: .*UTF-8'
expect "a backslash in a name" "$err" '^left out: .*/odd/back.*slash\.txt: .*separator'
expect "odd names, tree" "$out" '模型\.inp  \[UDMDSFileDeck\]'
expect "a loop" "$err" '^left out: .*/odd/loop: it is a symbolic link to a folder that it lies in'
expect "a broken link" "$err" '^left out: .*/odd/broken: it can.t be read: No such file'
expect "a pipe" "$err" '^left out: .*/odd/pipe: it is a device, pipe or socket'

run '[X]' 2 "$work/plain"
expect "brackets in the place of the library" "$err" 'settings take "~" and "\[NAME\]"'

(ulimit -f 600; trap '' XFSZ; mkdir "$work/full" && cd "$work/full" && for i in $(seq 1 1500); do : >"f$i.inp"; done
  "$program" "$data" "$work/home-full" "$work/full" >"$work/out" 2>"$work/err")
expect "a full disk" "$(cat "$work/out")" '^read back: (0 of 0|1000 of 1000) equal$'
expect "a full disk" "$(cat "$work/err")" '^the import ended early: .*library .*'

mkdir -p "$work/closed/in" && touch "$work/closed/open.txt" "$work/closed/in/x.txt"
chmod 000 "$work/closed/in"
if [[ $(id -u) -eq 0 ]]; then
  # Root reads everything: be somebody else.
  chmod 755 "$work" && mkdir "$work/nobody" && chown nobody "$work/nobody" "$work/closed" "$work/closed/in"
  setpriv --reuid=nobody --clear-groups "$program" "$data" "$work/nobody/home" "$work/closed" \
    >"$work/out" 2>"$work/err"
  out=$(cat "$work/out") err=$(cat "$work/err")
else
  run closed 0 "$work/closed"
fi
chmod 700 "$work/closed/in"
expect "an unreadable folder" "$err" '^left out: .*/closed/in: it can.t be listed: Permission denied'
expect "an unreadable folder" "$out" '^read back: 1 of 1 equal$'

mkdir "$work/many"
(cd "$work/many" && for i in $(seq 1 2500); do : >"f$i.inp"; done)
run many 0 "$work/many"
expect "many files" "$out" '^read back: 2500 of 2500 equal$'
expect "many files, tree is cut" "$out" '^\.\.\. and 2461 more$'

# Ctrl-C at any moment: the next run opens the library and goes on. Of many files it meets the
# import more often than not, of few ones what comes behind it.
mkdir "$work/few"
(cd "$work/few" && for i in $(seq 1 8); do : >"f$i.inp"; done)
for delay in $(seq 0.02 0.02 0.3); do
  rm -rf "$work/home-few"
  timeout --signal=INT "$delay" "$program" "$data" "$work/home-few" "$work/few" >/dev/null 2>&1
  run few 0 "$work/few"
  expect "few files, after Ctrl-C at $delay s" "$out" '^exchange: 8 of 8 equal$'
done
for delay in 0.02 0.05 0.1 0.15 0.2; do
  timeout --signal=INT "$delay" "$program" "$data" "$work/home-cut" "$work/many" >/dev/null 2>&1
done
run cut 0 "$work/many"
expect "after Ctrl-C" "$out" '^read back: 2500 of 2500 equal$'

[[ $failures -eq 0 ]] && echo "all as expected"
exit $((failures > 0))
