#!/usr/bin/env bash
# The window under a window manager that is sparing with the keyboard, worked by keys alone.
# Usage: keyboard.sh PROGRAM
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
also=("$(dirname "${1:-.}")"/vantory-{window,desktop})
begin ordinary "$@"
need Xvfb xdotool dbus-run-session xfwm4
/usr/bin/python3 -c 'from gi.repository import Gio' 2>/dev/null || skip "python3-gi is not installed"
on_a_display keyboard
xfwm4 >"$work/manager" 2>&1 &
manager=$!
trap 'kill $server $manager ${application:-} ${window:-} 2>/dev/null' EXIT
log=$home/Library/Logs/Quarrywell/Vantory.1.log
put "$preferences/com.apple.soundtrackpro.plist"
/usr/bin/python3 -c "
from gi.repository import Gio, GLib
Gio.bus_own_name(Gio.BusType.SESSION, 'com.apple.soundtrackpro', 0, None, lambda *_: print('ready', flush=True), None)
GLib.MainLoop().run()" >"$work/application" &
application=$!
soon grep -q ready "$work/application"

windows() { xdotool search --onlyvisible --name "${1:-^Vantory$}"; }
main_is_active() { [ "$(xdotool getactivewindow)" = "$main" ]; }

"$program" >"$work/out" 2>"$work/err" &
window=$!
soon logged "Switched to Trash pane"
soon windows
main=$(windows)
soon main_is_active
xdotool key ctrl+shift+t
soon logged "Soundtrack Pro is running - asking the user what to do..."
check "the question over the progress sheet has the keyboard" soon eval '[ "$(windows | wc -l)" = 3 ] && not main_is_active'
xdotool key Return
check "... so that a key answers it" soon logged "User chose to close and relaunch app."
check "... and gives the keyboard back to the sheet" soon eval '[ "$(windows | wc -l)" = 2 ] && not main_is_active'
xdotool key Escape
kill $application
check "... which a key cancels" soon logged "User cancelled trash task"
soon main_is_active

xdotool key ctrl+comma
soon windows "^Preferences$"
soon not main_is_active
sleep 0.5
xdotool key alt+f ctrl+a
xdotool type "no path"
xdotool key Return
soon eval '[ "$(windows | wc -l)" = 2 ]'
xdotool key Return
check "a question over the settings gives the keyboard back to them" soon eval '[ "$(xdotool getactivewindow)" = "$(windows "^Preferences$")" ]'
sleep 1  # for all that the window manager has to say
xdotool key alt+f ctrl+a
xdotool type "$home/typed"
xdotool windowactivate --sync "$main" key ctrl+q
check "a folder that is being typed counts when the program quits" soon eval '[ "$(plist get "$settings" backupPath)" = "$home/typed" ]'
soon eval 'xdotool key Escape; not kill -0 $window'  # the backups stay where they are
check "... and it ends with 0" wait $window
summary
