#!/usr/bin/env bash
# The commands and paths that the docs show. docs.sh PROGRAM CHECKOUT
. "$(dirname "$0")/lib.sh"
checkout=${2:-$(cd "$here/../.." && pwd)}
docs=(README.md CONTRIBUTING.md docs/architecture.md docs/backup-format.md docs/linux.md)
if [ -z "${VANTORY_WORK:-}" ]; then
  # What is named as `this/one` or `this/one.cpp` lies in the checkout; capitals stand for something.
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  for doc in "${docs[@]}"; do
    for path in $(grep -oE '`(\./)?(\.ci|[a-z-]+)/[A-Za-z_./-]*`' "$checkout/$doc" | tr -d '`' | grep -vE '[A-Z]{4}|^(usr|build|share)/' | sort -u); do
      check "$doc: $path" [ -e "$checkout/$path" ]
    done
  done
  named() { (cd "$checkout" && grep -ohE -- "$1" "${docs[@]}") | sed -E "s/$2//" | tr ' ' '\n' | sort -u; }
  for preset in $(named '--preset [a-z]+' '.* '); do check "preset $preset" grep -q "\"name\": \"$preset\"" "$checkout/CMakePresets.json"; done
  read_package_sets "$checkout"
  for set in $(named 'install-dependencies( [a-z]+)+' '[^ ]* '); do check "packages $set" [ -n "${packages[$set]:-}" ]; done
  for tests in $(named '--gtest_filter=.[A-Za-z]+' '.*[^A-Za-z]'); do check "tests $tests" grep -rqE "TEST(_F)?\($tests," "$checkout/tests"; done
  for key in $(sed -n '/^## Settings/,/^## Sch/s/^| `\([A-Za-z]*\)`.*/\1/p' "$checkout/docs/linux.md"); do
    check "docs/linux.md: $key" grep -rqF "\"$key\"" "$checkout"/{platform,services,backups,settings,tasks}
  done
  declared() { (cd "$checkout" && grep -qF "$2" "$1"); }
  for kind in $(grep -oE '\{"[a-z]+", "com\.' "$checkout/catalog/ProjectKinds.h" | cut -d '"' -f 2); do
    check "README.md: .$kind" declared README.md "\`.$kind\`"
    check "packaging/desktop-files.cmake: $kind" declared packaging/desktop-files.cmake "icon($kind "
    check "the shared MIME database: $kind" declared resources/mime/com.quarrywell.Vantory.xml "\"*.$kind\""
    check "the desktop entry: $kind" declared resources/com.quarrywell.Vantory.desktop "x-vantory-$kind;"
    check "the software centre: $kind" declared resources/com.quarrywell.Vantory.metainfo.xml "x-vantory-$kind<"
  done
  also=("$checkout"/{README,CONTRIBUTING,docs/backup-format,docs/linux}.md)
  [ "$failed" = 0 ] || summary
  rm -rf "$work"
fi
begin ordinary "$@"
need jq getfattr xxh128sum

use_home anna
name="Clean setup"
put "$preferences/com.apple.motion.plist"
snapping() { plist write "$preferences/com.apple.FinalCutPro.plist" xml "Snapping=$1"; }
snapping on
run -backup "$name"
plist write "$settings" xml "defaultBackup=$name.vnt"

# Whether a command that reads what the program printed succeeds, and has something to say.
answers() { eval "$1" <"$work/out" >"$work/answer" && [ -s "$work/answer" ]; }
# Lines such as `    vantory -trash fcpPrefs   what it does`, with PATH for a backup's.
while IFS= read -r line; do
  words=$(sed -E 's/^ +vantory //; s/  +.*//; s|\bPATH\b|"$library/$name.vnt"|' <<<"$line")
  [[ $words != *,\ vantory* ]] || words=${words%%, vantory*}
  reader=${words#* | } words=${words%% | *}
  [[ $words != --compare* ]] || snapping off
  eval "run $words"
  check "vantory $words" ended 0
  [ "$reader" = "$words" ] || check "... | $reader" answers "$reader"
done < <(grep -E '^    vantory -' "$here/README.md")

blocks_of() { awk '/^```sh$/ { on = 1; next } /^```$/ { if (on) printf "%c", 0; on = 0 } on' "$here/$1"; }
run -restore "$library/$name.vnt"
sed -n '/^```xml$/,/^```$/{/^```/!p}' "$here/linux.md" >"$settings"
run -restoredefault
check "settings as an administrator writes them" eval '[ -s "$settings" ] && said "Vantory: Unable to restore backup - no default backup set."'
block=0
while IFS= read -r -d '' script; do
  block=$((block + 1))
  check "the commands for a backup by hand ($block)" as_user sh -ec "cd '$library/$name.vnt'; $script"
done < <(blocks_of backup-format.md)
check "there are such commands" [ "$block" = 4 ]
script=$(blocks_of backup-format.md | tr '\0' '\n' | grep xxh128sum)
told_by_hand() { [ "$(as_user sh -c "cd '$library/$name.vnt' && $script" 2>&1)" = "$1" ]; }
check "a backup that is sound by hand" told_by_hand ""
as_user sh -ec "cd '$library/$name.vnt/Users/user/Library/Preferences'; printf X >>com.apple.FinalCutPro.plist; touch added"
check "one that is not" told_by_hand "damaged: ./Users/user/Library/Preferences/com.apple.FinalCutPro.plist
files are missing, or were added"
check "a backup that is packed by hand is whole" tar -tzf "$home/$name.tar.gz" "$name.vnt/Settings.plist"

# A contributor's first run, from the build folder and in a home of its own.
use_home scratch
mkdir -p "$work/checkout/build" && ln -s "$work" "$work/checkout/build/debug"
script=$(blocks_of CONTRIBUTING.md | tr '\0' '\n' | grep scratch | sed "s|/tmp/scratch|$home|g")
first_run() { as_user sh -ec "cd '$work/checkout'; $script" | grep "Backup population complete"; }
check "a contributor's first run, and its log" first_run
summary
