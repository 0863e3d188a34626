#!/usr/bin/env bash
# The order in which the real program asks the disk for what must not get lost: durability.sh PROGRAM DRIVER
. "$(dirname "$0")/lib.sh"
also=("${2:-}") driver=$(basename "${2:-}")
begin ordinary "$@"
need strace
strace -o "$work/trace" true 2>/dev/null || skip "tracing is not permitted here"

# The leak check of a sanitized build cannot work while strace holds the process.
trace() {
  as_user env ASAN_OPTIONS=detect_leaks=0 strace -f -y -o "$work/trace" \
    -e trace=openat,write,fsync,fdatasync,syncfs,linkat,renameat,renameat2 "$@" >"$work/out" 2>"$work/err"
  code=$?
}
# in_order PATTERN...: each matches a call after that of the one before.
in_order() {
  local line=0 found pattern
  for pattern; do
    found=$(tail -n +$((line + 1)) "$work/trace" | grep -nEm1 -- "$pattern" | cut -d: -f1)
    [ -n "$found" ] || { echo "there is none after line $line: $pattern"; return 1; }
    line=$((line + found))
  done
}
named() { echo "(linkat|renameat2?)\(.*$1\".*= 0"; }

use_home anna
motion=com.apple.motion.plist
put "$preferences/$motion"
! is_root || chown -R "$nobody" "$home"
trace "$program" -backup Clean
check "a backup is on disk before it is called complete" eval 'ran && in_order "$(named Settings.plist)" "syncfs.*= 0$"'
trace "$program" -trash motionPrefs
[ "$system" = macos ] || check "the note lies in the Trash before the file does" eval 'ran && in_order "write\(.*/info/$motion" "rename.*/files>, \"$motion\".*= 0"'
trace "$program" -restore "$library/Clean.vnt"
check "what was restored is on disk too" eval 'ran && in_order "$(named "$motion")" "syncfs.*= 0$"'
# A Mac's disk has no files without a name, and is asked for the file's order only.
unnamed="fsync\(.*/Preferences/#.*= 0"; [ "$system" = linux ] || unnamed="fdatasync\(.*/Preferences/\.vantory-.*= 0"
trace "$work/$driver" set defaultBackup Clean.vnt
check "a setting is on disk before it replaces the one before, and then for good" eval \
  'ended 0 && in_order "$unnamed" "$(named com.quarrywell.Vantory.plist)" "fsync\(.*/Preferences>\) *= 0"'
summary
