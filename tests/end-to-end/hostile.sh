#!/usr/bin/env bash
# Backups and settings from elsewhere: answered within seconds, and nothing is written outside the home.
. "$(dirname "$0")/lib.sh"
begin ordinary "$@"
need mkfifo

use_home anna
motion=com.apple.motion.plist
put "$preferences/$motion" live; put "$user_data/Button Bars/a" live
put "$homes"outside/secret secret
outside=${homes}outside
manifest "$outside" >"$work/outside"
plist_in() { mkdir -p "$1" && /usr/bin/python3 -c 'import plistlib, sys; plistlib.dump(eval(sys.argv[2]), open(sys.argv[1] + "/Settings.plist", "wb"))' "$1" "$2"; }
all_items='{"Motion": ["Preferences", "Keyboard Layouts"], "Final Cut Pro": ["Preferences", "Button Bars", "Plugins"], "Avid Media Composer": ["Preferences"]}'
inside() { local folder=$library/$1.vnt; mkdir -p "$folder/Users/user/Library/Preferences/Final Cut Pro User Data"; echo "$folder"; }
safe() { [ "$code" -le 1 ] && manifest "$outside" | diff "$work/outside" - && not grep -q Sanitizer "$work/err"; }
live_is_kept() { holds "$preferences/$motion" live && holds "$user_data/Button Bars/a" live; }
# restores NAME WHAT: a restore ends within ten seconds, touches nothing outside and keeps the live files.
restores() { limit=10 run -restore "$library/$1.vnt"; check "-restore: $2" eval 'safe && live_is_kept'; }

# --- Links, FIFOs and names inside a backup --------------------------------------------------------------------------
b=$(inside Links); plist_in "$b" "$all_items"
ln -s "$outside/secret" "$b/Users/user/Library/Preferences/$motion"
ln -s "$outside" "$b/Users/user/Library/Preferences/Final Cut Pro User Data/Button Bars"
restores Links "a link for an item's file"
mkdir -p "$work/away/Library/Preferences"; echo secret >"$work/away/Library/Preferences/$motion"
b=$(inside Folders); plist_in "$b" "$all_items"; rm -r "$b/Users/user"; ln -s "$work/away" "$b/Users/user"
restores Folders "a link for a folder"
b=$(inside Fifo); plist_in "$b" "$all_items"; mkfifo "$b/Users/user/Library/Preferences/$motion" "$b/Users/user/Library/Preferences/Final Cut Pro User Data/Button Bars"
restores Fifo "FIFOs"
b=$(inside Settings); mkfifo "$b/Settings.plist"; restores Settings "Settings.plist is a FIFO"
b=$(inside Nested); plist_in "$b" "$all_items"; bars="$b/Users/user/Library/Preferences/Final Cut Pro User Data/Button Bars"
mkdir -p "$bars"; ln -s "$outside" "$bars/to outside"; ln -s ../../../../../../outside/secret "$bars/up"; mkfifo "$bars/fifo"; put "$bars/good" good
limit=10 run -restore "$library/Nested.vnt"
check "links inside a folder stay links, what is good is restored" eval 'safe && [ -L "$user_data/Button Bars/to outside" ] && holds "$user_data/Button Bars/good" good && [ ! -e "$user_data/Button Bars/fifo" ]'
rm -r "$user_data/Button Bars"; put "$user_data/Button Bars/a" live

# --- Settings.plist --------------------------------------------------------------------------------------------------
# What the reader of property lists refuses has tests of its own; here it must not cost the task its time or its files.
repeat() { /usr/bin/python3 -c 'import sys; print(sys.argv[1] * int(sys.argv[2]), end="")' "$@"; }
settings_of() { put "$library/$1.vnt/Users/user/Library/Preferences/$motion" "$1"; printf '%s' "$2" >"$library/$1.vnt/Settings.plist"; }
settings_of cut '<?xml version="1.0"?><plist version="1.0"><dict><key>Motion</key><arr'
settings_of deep "$(repeat "(" 10000)$(repeat ")" 10000)"
settings_of types '{ Motion = 7; Color = { Preferences = 1; }; "Final Cut Pro" = (x, (Preferences)); projects = x; projectPath = (1); }'
for name in cut deep types; do
  restores "$name" "settings that are $name"
done
settings_of many "{ Motion = ($(repeat "Preferences," 1000000)); }"
limit=10 run -restore "$library/many.vnt"
check "settings: a million entries" eval 'safe && grep -qxE "live|many" "$preferences/$motion"'
limit=15 run -list
check "-list answers with all of these in the library" eval 'ended 0 && [ "$(plist listing path <"$work/out" | wc -l)" = "$(count "$library" -mindepth 1 -maxdepth 1 -type d -name "*.vnt")" ]'
printf 'x' >"$library/file.vnt"; ln -s nowhere "$library/dangling.vnt"; mkfifo "$library/fifo.vnt"; ln -s . "$library/self.vnt"; mkdir "$library/"$'bad\xff.VNT' "$library/.vnt"
limit=15 run -list
check "-list with a file, a FIFO, links and bytes that are no UTF-8" eval 'safe && plist listing path <"$work/out" | LC_ALL=C grep -q "$(printf "bad\377.VNT")" && not grep -qE "fifo.vnt|file.vnt|dangling" "$work/out"'

# --- Settings of the program and of the maker ------------------------------------------------------------------------
for kind in cut deep many; do
  cp "$library/$kind.vnt/Settings.plist" "$settings"; cp "$settings" "$preferences/com.quarrywell.global.plist"
  limit=10 run -backup Mine motionPrefs
  check "the program's own settings are $kind" eval 'safe && [ -e "$library/Mine.vnt/Settings.plist" ]'
done
rm -f "$preferences/com.quarrywell.global.plist" "$settings"; mkfifo "$settings" "$preferences/com.quarrywell.global.plist"
limit=10 run -backup Mine motionPrefs
check "they are FIFOs" eval 'safe && [ -e "$library/Mine.vnt/Settings.plist" ]'
rm -f "$settings" "$preferences/com.quarrywell.global.plist"
check "no temporary files are left" no_leftovers
summary
