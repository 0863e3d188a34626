#!/usr/bin/env bash
# Several processes at once leave the library, the Trash and the settings whole.
. "$(dirname "$0")/lib.sh"
begin ordinary "$@"

use_home anna
motion=$preferences/com.apple.motion.plist
quiet() { as_user "$program" "$@" >/dev/null 2>&1; }

# --- Fifty trashes of one name ---------------------------------------------------------------------------------------
# Each has a home of its own, but all share one Trash, to which the homes' are links.
mkdir -p "${homes}shared/Trash"
trashers=50
for i in $(seq $trashers); do
  use_home "h$i"
  put "$preferences/com.apple.motion.plist" "number $i"
  mkdir -p "$(dirname "$trash")"; ln -s "${homes}shared/Trash" "$trash"
done
for i in $(seq $trashers); do use_home "h$i"; quiet -trash motionPrefs & done
wait
can=${homes}shared/Trash${trashed#"$trash"}
check "fifty trashes of one name: fifty entries" eval '[ "$(count "$can" -type f)" = $trashers ]'
notes_match() { local i; for i in "$can"/*; do grep -qx "Path=${homes}h$(sed 's/number //' "$i")/Library/Preferences/com.apple.motion.plist" "${homes}shared/Trash/info/$(basename "$i").trashinfo" || return 1; done; }
[ "$system" = macos ] || check "each with a note that names its own place" eval '[ "$(count "${homes}shared/Trash/info" -name "*.trashinfo")" = $trashers ] && notes_match'

# --- Two backups of one name -----------------------------------------------------------------------------------------
use_home anna
for i in $(seq 200); do put "$user_data/Button Bars/$((i % 7))/$i" "bar $i"; done
put "$motion" motion
manifest "$user_data/Button Bars" >"$work/bars"
whole() { [ -e "$1/Settings.plist" ] && manifest "$1/Users/user/Library/Preferences/Final Cut Pro User Data/Button Bars" | diff "$work/bars" -; }
for round in 1 2 3; do quiet -backup Same & quiet -backup Same & quiet -backup Same & quiet -backup Same & wait; done
check "backups of one name: the library holds a whole one" whole "$library/Same.vnt"
all_whole() { local backup; for backup in "$trashed"/Same*.vnt; do whole "$backup" || return 1; done; }
check "those that it replaced lie whole in the Trash" all_whole
check "nothing else lies in the library" [ "$(ls -A "$library" | paste -sd,)" = Same.vnt ]

# --- Lists and restores meanwhile ------------------------------------------------------------------------------------
for i in $(seq 10); do quiet -backup "B$i" fcpButton; done &
odd_lists=0
for i in $(seq 20); do run -list; { ended 0 && plist listing name <"$work/out" >/dev/null; } || odd_lists=$((odd_lists + 1)); done
wait
check "-list answers while backups are written" [ $odd_lists = 0 ]
run -list
check "all of them are there afterwards" [ "$(plist listing name <"$work/out" | wc -l)" = 11 ]
for i in 1 2 3 4; do quiet -restore "$library/Same.vnt" & quiet -trash -allfiles & done
wait
quiet -restore "$library/Same.vnt"
check "restores and trashes at once: all is in place again" eval 'manifest "$user_data/Button Bars" | diff "$work/bars" - && holds "$motion" motion'

# --- Settings --------------------------------------------------------------------------------------------------------
plist write "$settings" xml foreign=kept maxAutoBackups=3
for i in $(seq 30); do as_user "$program" -list 2>&1 >/dev/null & done >"$work/told"
wait
check "thirty tasks at once are silent" [ ! -s "$work/told" ]
check "thirty writers keep the settings whole" eval '[ "$(plist get "$settings" foreign)" = kept ] && [ "$(plist get "$settings" maxAutoBackups)" = 3 ] && [ -n "$(plist get "$settings" launch)" ] && [ "$(count "$preferences" -name "*damaged*")" = 0 ]'
check "no temporary files are left" no_leftovers
summary
