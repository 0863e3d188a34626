#!/usr/bin/env bash
# The self-check: what it tells of good disks, of those that lack something and of broken ones, and that it leaves nothing.
. "$(dirname "$0")/lib.sh"
also=("$(dirname "$1")/vantory-desktop")
begin any "$@"
is_root || skip "disks of its own need root"

use_home anna
chown -R "$nobody" "$home"
# What a Mac's desktop answers; on Linux nobody asks it.
put "$work/tools/usr/bin/osascript" '#!/bin/sh
[ "$5" != type ] || echo public.plain-text'
chmod -R a+rx "$work/tools"
# On a Mac the superuser's process works as the user at the console only.
drop=()
[ "$system" = linux ] || drop=(setpriv "--reuid=$nobody" "--regid=$nobody" --clear-groups)
self_check() { timeout -k 5 60 "${drop[@]}" $(clean_environment) HOME="$home" VANTORY_TEST_TOOLS="$work/tools" "$program" --self-check "$@" </dev/null; }
check_in() { # FOLDER [OPTION...]
  self_check "$@" >"$work/out" 2>"$work/err"
  code=$?
}
finds() { grep -qE -- "^.* $1 +$2( |\$)" "$work/out"; }
all_held() { not grep "NOT HELD" "$work/out" && ended 0 && said ""; }
empty() { [ -z "$(find "$1" -mindepth 1 -print -quit)" ]; }
disk() { # NAME KIND [OPTION...]: a file system of its own
  mkdir -p "$work/$1"
  mount -t "$2" "${@:3}" "$2" "$work/$1" || skip "a $2 cannot be mounted here"
  chmod 1777 "$work/$1"
  where=$work/$1
}

# Lists of this system's kind are not a Mac's.
[ "$system" = linux ] || mount --bind /dev/null /usr/bin/setfacl
mkdir -m 1777 "$work/plain"
find "$home" >"$work/before"
check_in "$work/plain"
check "on a good disk all holds that can be tried" eval 'all_held && grep -qE "^[0-9]{2} held, 0 not held, " "$work/out"'
check "nothing is left, and the home untouched" eval 'empty "$work/plain" && find "$home" | diff "$work/before" -'
check_in "$work/plain" --json
check "the same in JSON" eval 'ended 0 && /usr/bin/python3 -c "import json,sys; a=json.load(open(sys.argv[1])); assert a[\"allHeld\"] and len(a[\"checks\"]) > 40 and a[\"fileSystem\"]" "$work/out"'
check_in "$work/plain" "$work"; check "not in two folders" eval 'ended 1 && grep -q "one folder" "$work/err" && empty "$work/plain"'

# --- Disks that lack something ---------------------------------------------------------------------------------------
disk bare ramfs
check_in "$where"
check "what a disk has no room for was not tried" eval 'all_held && finds "keeps attributes" "not tried" && finds "never takes another.s place" held && empty "$where"'
disk full tmpfs -o size=64k
head -c 64k /dev/zero >"$where/filler"
check_in "$where"
check "a full disk keeps no promise" eval 'ended 1 && finds "replaces a file whole, and on disk" "NOT HELD" && grep -q "No space left" "$work/out" && rm "$where/filler" && empty "$where"'
mount -o remount,ro "$where"
check_in "$where"; check "a read-only disk can be told nothing of" eval 'ended 1 && grep -q "NOT HELD .*Read-only file system" "$work/out"'
for folder in "$work/missing" "$program" --bogus ""; do
  check_in "$folder"; check "no folder: '$folder'" eval 'ended 1 && grep -q "There is no folder" "$work/err" && [ ! -s "$work/out" ]'
done

# --- Several at once -------------------------------------------------------------------------------------------------
runs=()
for run in 1 2 3 4 5 6 7 8; do self_check "$work/plain" >"$work/run$run" 2>&1 & runs+=($!); done
check "none takes another's folder" eval 'for run in "${runs[@]}"; do wait "$run" || { grep -h "NOT HELD" "$work"/run*; false; } || break; done && empty "$work/plain"'

# --- Runs that were killed -------------------------------------------------------------------------------------------
for pause in 0.01 0.03 0.06; do timeout -s KILL "$pause" "${drop[@]}" "$program" --self-check "$work/plain" >/dev/null 2>&1; done 2>/dev/null
left="$work/plain/vantory-self-check-left" used="$work/plain/vantory-self-check-used"
mkdir -p "$left/0/folder" "$used"; echo text >"$left/0/folder/locked"
if [ "$system" = macos ]; then chown -R "$nobody" "$left" "$used"; else chattr +i "$left/0/folder/locked"; fi
flock "$used" sleep 60 & holder=$!
soon not flock -n "$used" true
check_in "$work/plain"
check "what they left is cleared, locked or not; what is in use stays" eval 'all_held && [ "$(ls -A "$work/plain")" = vantory-self-check-used ]'
kill "$holder"
summary
