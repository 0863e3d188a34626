#!/usr/bin/env bash
# What only the real program shows: its streams, the log and the settings that it leaves on disk, and what others read.
. "$(dirname "$0")/lib.sh"
begin ordinary "$@"

fcp=com.apple.FinalCutPro.plist motion=com.apple.motion.plist
listed() { plist listing "$@" <"$work/out"; }

use_home anna
run --version
check "version" eval 'ran && grep -qxE "Vantory [0-9]+\.[0-9]+\.[0-9]+" "$work/out"'
check "it does not touch the home" [ -z "$(find "$home" -type f)" ]
run -backup
check "no operand: said, not logged" eval 'ended 1 && told "Vantory: Invalid number of arguments" && told "Vantory: Usage: vantory -backup NAME [KEYS]" && not grep -q "Invalid number" "$log"'

# --- Backup and restore ----------------------------------------------------------------------------------------------
put "$preferences/$fcp" fcp; put "$preferences/$motion" motion; put "$user_data/Button Bars/a.fcbar" bar
run -backup "Clean setup"
check "others can read the backup's settings" eval 'ran && [ "$(plist get "$library/Clean setup.vnt/Settings.plist" "Final Cut Pro")" = "Preferences,Button Bars" ]'
check "the log begins with its header" eval 'head -5 "$log" | paste -sd"|" | grep -qE "^Log started: [-0-9]+ [:0-9]+ \+0000\|Version: [^|]+\|Path: /[^|]*vantory\|System: OS X [^|]+, [0-9]+ CPU\(s\), [0-9]+\.[0-9][0-9] GB RAM\|Running in 64-bit mode$"'
check "the log tells each step" eval 'logged "Writing backup data to disk for $library/Clean setup.vnt" && logged "Copying $preferences/$motion to $library/Clean setup.vnt/Users/user/Library/Preferences/$motion" && logged "Writing settings file..." && logged "Unlocking backup..." && logged "Backup population complete"'
check "settings and log are the user's alone" [ "$(stat -c %a "$log" "$settings" | sort -u)" = 600 ]
run -backup " /:./odd*:name " motionPrefs
run -list
check "-list, read back: names, paths and dates" eval 'ran && [ "$(listed name | paste -sd,)" = ".odd*name,Clean setup" ] && [ "$(listed path | tail -1)" = "$library/Clean setup.vnt" ] && [ "$(listed date | tail -1)" = "$(date -r "$library/Clean setup.vnt" "+%b %-d, %Y %T")" ]'
run -restore "$library/.odd*name.vnt"; check "a star in a backup's name is no pattern" eval 'ran && logged "File copied successfully."'
put "$preferences/$fcp" changed
(cd "$library" && run -restore "Clean setup.vnt" fcpPrefs; exit "$code"); check "a relative path" holds "$preferences/$fcp" fcp
run -unlock -lock fcpPrefs
if [ "$system" = linux ]; then
  check "without the right to lock: said how many, nothing changed" eval 'ended 0 && told "Vantory: 1 file could not be processed - see the log for details." && told "Vantory: \"-unlock\" was not used." && told "Vantory: The log: $log" && [ -w "$preferences/$fcp" ]'
else
  check "an owner locks without a helper" eval 'ended 0 && told "Vantory: \"-unlock\" was not used." && [ "$(getfattr --only-values -n user.darwin.flags "$preferences/$fcp" | od -An -tu4 | tr -d " ")" = 2 ]'
  run -unlock fcpPrefs
fi
check "five logs are kept" [ "$(cd "$home/Library/Logs/Quarrywell" && echo *)" = "Vantory.task.1.log Vantory.task.2.log Vantory.task.3.log Vantory.task.4.log Vantory.task.5.log" ]

# --- Undo ------------------------------------------------------------------------------------------------------------
rm -r "$trash"
run -trash fcpPrefs,motionPrefs
run --undo
check "what was trashed comes back" eval 'ran && holds "$preferences/$fcp" fcp && holds "$preferences/$motion" motion'
run -trash fcpPrefs,motionPrefs
[ "$system" = linux ] || mv "$trashed/$fcp" "$trashed/of another name"
rm "$trashed/$motion"; put "$trashed/$motion" other
[ "$system" = macos ] || sed -i 's/^DeletionDate=.*/DeletionDate=2031-01-01T00:00:00/' "$trash/info/$motion.trashinfo"
run --undo
check "... and nothing that has its name there only" eval 'ended 0 && told "Vantory: $preferences/$motion is no longer in the Trash." && holds "$preferences/$fcp" fcp && [ ! -e "$preferences/$motion" ]'
put "$preferences/$motion" motion

# --- Questions -------------------------------------------------------------------------------------------------------
odd=$user_data/$'Final Cut Pro \xff\n"\\\x01 Prefs.fcset'
put "$odd"
answers() { odd=$odd /usr/bin/python3 -c '
import base64, json, os, sys
answer = json.loads(sys.stdin.buffer.read().decode("utf-8", "strict"))
text = lambda value: base64.b64decode(value["base64"]) if isinstance(value, dict) else os.fsencode(value)
odd = os.environb[b"odd"]
sys.exit(not eval(sys.argv[1]))' "$1" <"$work/out"; }
before=$(manifest "$home")
run --list-items --json
check "--list-items in JSON, with a name that is no UTF-8" eval 'ran && answers "odd in map(text, answer[\"applications\"][0][\"items\"][0][\"files\"])"'
run --list-backups --json
check "--list-backups in JSON" eval 'ran && answers "[(b[\"name\"], b[\"automatic\"], len(b[\"items\"]), b[\"size\"] > 0) for b in answer[\"backups\"]] == [(\".odd*name\", False, 1, True), (\"Clean setup\", False, 3, True)]"'
for task in autobackup restoredefault list trash lock unlock "backup New" "restore $library/.odd*name.vnt"; do
  run --preview ${task%% *} ${task#"${task%% *}"}
  [ "$task" != restoredefault ] || [ "$code" = 1 ] || code=unexpected
done
run --preview trash fcpPrefs --json
check "--preview in JSON" eval 'ran && answers "[text(c[\"path\"]) for c in answer[\"changes\"]] == [b\"$preferences/$fcp\", odd]"'
check "no question touches anything" [ "$(manifest "$home")" = "$before" ]
rm "$odd"

# --- In a terminal ---------------------------------------------------------------------------------------------------
# While another process holds the library, a backup waits for two seconds.
in_terminal() { # TERM COLUMNS
  flock "$library" sleep 3 &
  as_user env "TERM=$1" /usr/bin/python3 "$here/terminal.py" "$2" "$program" -backup Late >"$work/out" 2>"$work/err"
  code=$?
  wait
}
drew() { [ "$(tr -d "\r" <"$work/err")" = "$1" ]; }
busy=$'Vantory: Error writing backup file\n'"Vantory: $library: another process is working here"
busy+=$'\n'"Vantory: The log: $log"
line=$'\e[KWaiting for another process i\e[K'
in_terminal xterm 30
check "a terminal shows what takes long, in one line that is gone at the end" eval 'ended 0 && printed "" && drew "$line$busy"'
in_terminal dumb 30
check "a dumb one does not" eval 'ended 0 && drew "$busy"'
as_user env TERM=dumb /usr/bin/python3 "$here/terminal.py" 80 "$program" -backup Told fcpPrefs >"$work/out" 2>"$work/err"
check "a person is told what was done" drew "Backed up 1 file of 1 item. Undo: vantory --undo"
# A lock helper that does not answer; where there is none, locking takes no time.
mv "$work/vantory-lock-helper" "$work/helper"
printf '#!/bin/sh\nsleep 2\n' >"$work/vantory-lock-helper"; chmod 755 "$work/vantory-lock-helper"
as_user env TERM=xterm /usr/bin/python3 "$here/terminal.py" 80 "$program" -lock fcpPrefs >"$work/out" 2>"$work/err"
[ "$system" = macos ] || check "locking is shown too" grep -q $'\e\\[KLocking '"$fcp" "$work/err"
mv "$work/helper" "$work/vantory-lock-helper"
in_terminal xterm interrupt
check "an interrupt takes the line away" grep -qE $'Backups(\\^C)?\r\e\\[K(\\^C)?$' "$work/err"

# --- Settings --------------------------------------------------------------------------------------------------------
plist write "$settings" binary "defaultBackup=Clean setup.vnt" "somebody else=kept" number=7
put "$preferences/$fcp" changed
run -restoredefault
check "-restoredefault, from settings in binary form" eval 'ran && holds "$preferences/$fcp" fcp'
check "settings it does not know stay" eval '[ "$(plist get "$settings" "somebody else")" = kept ] && [ "$(plist get "$settings" number)" = 7 ] && [ -n "$(plist get "$settings" launch)" ]'
printf '<?xml version="1.0"?><plist><dict><key>a</key>' >"$settings"
run -list
check "damaged settings are set aside and told of" eval 'ended 0 && said "Vantory: The settings in $settings are damaged and are not used." && [ "$(count "$preferences" -name "com.quarrywell.Vantory.plist.damaged-*")" = 1 ] && grep -q "were damaged and now lie at" "$log" && [ -n "$(plist get "$settings" launch)" ]'
plist write "$preferences/com.quarrywell.global.plist" xml disable-logging=true; rm "$log"
run -trash nokey
check "logging switched off" eval 'ended 0 && told "Vantory: Logging is disabled" && not grep -q "The log:" "$work/err" && [ ! -e "$log" ]'
check "no temporary files are left" no_leftovers
summary
