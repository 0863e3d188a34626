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
  also=("$checkout/README.md" "$checkout/docs/backup-format.md")
  [ "$failed" = 0 ] || summary
  rm -rf "$work"
fi
begin ordinary "$@"
need jq

use_home anna
name="Clean setup"
for file in com.apple.FinalCutPro.plist com.apple.motion.plist; do put "$preferences/$file"; done
run -backup "$name"
plist write "$settings" xml "defaultBackup=$name.vnt"

# Whether a command that reads what the program printed succeeds, and has something to say.
answers() { eval "$1" <"$work/out" >"$work/answer" && [ -s "$work/answer" ]; }
# Lines such as `    vantory -trash fcpPrefs   what it does`, with PATH for a backup's.
while IFS= read -r line; do
  words=$(sed -E 's/^ +vantory //; s/  +.*//; s|\bPATH\b|"$library/$name.vnt"|' <<<"$line")
  [[ $words != *,\ vantory* ]] || words=${words%%, vantory*}
  reader=${words#* | } words=${words%% | *}
  eval "run $words"
  check "vantory $words" ended 0
  [ "$reader" = "$words" ] || check "... | $reader" answers "$reader"
done < <(grep -E '^    vantory -' "$here/README.md")

run -restore "$library/$name.vnt"
block=0
while IFS= read -r -d '' script; do
  block=$((block + 1))
  check "the commands for a backup by hand ($block)" as_user sh -ec "cd '$library/$name.vnt'; $script"
done < <(awk '/^```sh$/ { on = 1; next } /^```$/ { if (on) printf "%c", 0; on = 0 } on' "$here/backup-format.md")
check "there are such commands" [ "$block" = 3 ]
check "a backup that is packed by hand is whole" tar -tzf "$home/$name.tar.gz" "$name.vnt/Settings.plist"
summary
