#!/usr/bin/env bash
# The window on a display of its own: opened by the one command, worked by keys and by what assistive technologies use.
# Usage: window.sh PROGRAM
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
also=("$(dirname "${1:-.}")/vantory-window")
begin ordinary "$@"
need Xvfb xdotool dbus-run-session
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || skip "python3-pyatspi is not installed"
on_a_display window

# --- Without a display -----------------------------------------------------------------------------------------------

use_home without
run
check "no display: exit 1" ended 1
check "... and one line that says so" eval '[ "$(wc -l <"$work/err")" = 1 ] && grep -q "there is no display" "$work/err"'
run --version
check "--version needs no display" ran
DISPLAY=:4711 as_user env DISPLAY=:4711 "$program" >"$work/out" 2>"$work/err"
code=$?
check "a display that nobody serves: exit 1" ended 1
check "... and one line" eval '[ "$(wc -l <"$work/err")" = 1 ]'

# --- With one --------------------------------------------------------------------------------------------------------

use_home window
log=$home/Library/Logs/Quarrywell/Vantory.1.log
motion=$preferences/com.apple.motion.plist
put "$motion"
put "$preferences/com.apple.FinalCutPro.plist"
put "$user_data/Button Bars/Colour.fcbtn"

# A first window, which crashes when it has made the first backup.
"$program" &
window=$!
soon eval '[ -n "$(find "$library" -name Settings.plist)" ]'
kill -SEGV "$window"
wait "$window" 2>/dev/null
put "$home/film.motn"
"$program" "$home/film.motn"  # shows no window to tell of the crash

QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$program" &
window=$!
timeout 60 /usr/bin/python3 "$here/window_driver.py" >"$work/out" 2>"$work/err"
code=$?
check "the window was driven to its end" ended 0
while read -r verdict what; do check "$what" [ "$verdict" = yes ]; done < <(grep -E '^(yes|no) ' "$work/out")
check "the program ends with 0 when asked to" eval 'soon not kill -0 $window && wait $window'
check "the ticked application's preferences went to the Trash" eval '[ ! -e "$motion" ] && [ -e "$trash/files/com.apple.motion.plist" ]'
check "the others stayed" [ -e "$preferences/com.apple.FinalCutPro.plist" ]
check "a safety backup was made first" eval '[ -n "$(find "$library/Autosaves" -name "com.apple.motion.plist")" ]'
check "a first backup bears the user's name" [ -d "$library/nobody.vnt" ]
check "the backup of the dialog is in the library" [ -f "$library/Typed name.vnt/Settings.plist" ]
for pane in Backup Lock Restore Trash; do check "the log tells of the $pane pane" logged "Switched to $pane pane"; done
check "the schedule starts the program that the user started" \
  eval '[ "$(plist get "$home/Library/LaunchAgents/com.quarrywell.VantoryAutoSave.plist" Program)" = "$program" ]'
check "the ticks are remembered" eval 'plist get "$settings" selectedPrefs | grep -q motionPrefs'
check "nothing half-made is left" no_leftovers
summary
