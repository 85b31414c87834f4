#!/usr/bin/env bash
# symbols.sh LIBKXCT
#
# Compares what libkxct exports with what its interface consists of. Weak symbols don't count: they
# are instances of templates of the standard library and of Boost, which can't be hidden.
set -euo pipefail
export LC_ALL=C
library=$1

functions=(CreateFactory Kxct_Init Kxct_SafeInit Kxct_SetUIBrowserManager
  KXCT_CreateLogger KXCT_CreateResponder)
classes=(
  KXCTFramework FactoryImpl KXCTException Utils
    UDMDBCtrl UDMSessionSlot DBCtrlCache
  ItemImpl ContentItem ContentGroupItem NoRevItem GhostItem ViewItem HistoryItem HistoryCategoryItem
  ItemManager DefaultItemManager HistoryItemManager Cache
  ControllerImpl MasterDBManagerImpl
  Settings SettingsImpl PASettings PASettingsImpl NorvikLibraryInfo NorvikLibraryInfoImpl
)
# Free functions beside the classes.
beside=(kxct::ThrowKXCTException 'kxct::operator<')
# Of the interface, and not there yet. What appears moves up.
later=(
  kxct::UIClient kxct::UIHistoryClient kxct::BrCtrl kxct::BrDataCtrl kxct::BrFilter
)

# Each symbol without its arguments, and members as their class.
exported=$(nm -D --defined-only -C "$library" | awk '$2 ~ /^[TDBR]$/' |
  sed -E 's/^[0-9a-f]+ . //; s/\(.*//; s/^(kxct::[A-Za-z_0-9]+)::.*/\1/' | sort -u)
expected=$(printf '%s\n' "${functions[@]}" "${classes[@]/#/kxct::}" "${beside[@]}" | sort -u)

failed=0
complain() {
  [[ -z "$2" ]] && return
  echo "$1:"
  while IFS= read -r name; do echo "  $name"; done <<<"$2"
  failed=1
}
appeared=$(comm -12 <(echo "$exported") <(printf '%s\n' "${later[@]}" | sort))
complain "exported now; move it from 'later' to its list" "$appeared"
complain "of the interface and not exported" "$(comm -13 <(echo "$exported") <(echo "$expected"))"
complain "exported and not of the interface" \
  "$(comm -23 <(echo "$exported") <(printf '%s\n' "$expected" "$appeared" | sort -u))"
[[ $failed -eq 0 ]] && echo "as expected; to come: ${later[*]}"
exit $failed
