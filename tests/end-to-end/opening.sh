#!/usr/bin/env bash
# Projects and backups opened by the one command, alone and while the window is open, on a desktop of their own.
# Usage: opening.sh PROGRAM
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
built=$(dirname "${1:-.}")
also=("$built"/vantory-{window,desktop,activation} "$built/com.quarrywell.Vantory.service"
  "$(dirname "${BASH_SOURCE[0]}")/../../resources/com.quarrywell.Vantory.desktop")
begin ordinary "$@"
need Xvfb xdotool dbus-run-session dbus-update-activation-environment gapplication update-desktop-database

# The bus looks for what it may start when it begins.
services=$work/run/dbus-1/services
mkdir -p -m 700 "$work/run" && mkdir -p "$services"
sed "s|^Exec=.*|Exec=$work/vantory-activation $work/vantory-window|" "$work/com.quarrywell.Vantory.service" \
  >"$services/com.quarrywell.Vantory.service"
on_a_display opening

log=$home/Library/Logs/Quarrywell/Vantory.1.log
cd "$home"
live=$preferences/com.apple.FinalCutPro.plist
backup="$library/For the film.vnt"
start() { "$program" "$@" >"$work/out" 2>"$work/err"; code=$?; }
copies() { pgrep -c -u "$(id -u)" -x vantory-window; }
# open NAME...: the window, in the background, until it has shown what it holds.
open() { rm -f "$log"; "$program" "$@" 2>"$work/err" & window=$!; soon logged "Switched to Trash pane"; }
shown() { xdotool search --onlyvisible --name '^Vantory$'; }
press() { sleep 0.5; xdotool windowfocus --sync "$(shown | tail -n 1)" key "$1"; }
entry() {
  printf '[Desktop Entry]\nType=Application\nName=%s\nExec=%s\n%s\n' "$1" "$2" "${3:-}" >"$home/.local/share/applications/$1.desktop"
}

# An editing application that notes what it is given, and a reader of plain texts.
mkdir -p "$home/.local/share/applications" "$home/.config"
printf '#!/bin/sh\nprintf "%%s\\n" "$@" >>"%s"\n' "$home/given" >"$home/editor"
chmod 755 "$home/editor"
entry com.apple.FinalCutPro "$home/editor %f"
entry com.example.Reader "$home/editor read %f" "MimeType=text/plain;"
update-desktop-database "$home/.local/share/applications"
given() { soon grep -qxF -- "$1" "$home/given"; }

put "$live" "as it should be"
start -backup "For the film"
/usr/bin/python3 - "$backup/Settings.plist" "$home/film.fcp" <<'END'
import plistlib, sys
with open(sys.argv[1], 'rb') as file: settings = plistlib.load(file)
settings['projects'] = [sys.argv[2]]
with open(sys.argv[1], 'wb') as file: plistlib.dump(settings, file)
END
put "$live" "spoilt"
touch film.fcp "Other Film.FCP" film.motn notes.txt
cp -a "$backup" "$home/From elsewhere.vnt"

# --- Without a window ------------------------------------------------------------------------------------------------

start film.fcp & started=$!
seen=no
while kill -0 $started 2>/dev/null; do shown >/dev/null && seen=yes; sleep 0.1; done
wait $started
check "a project by a relative path goes to its application" given "$home/film.fcp"
check "... with the preferences of the linked backup" holds "$live" "as it should be"
check "... and no window" [ $seen = no ]
check "... and the log tells it" eval 'logged "User opened file $home/film.fcp" && logged "App was opened by project file - hiding..." && logged "Opening project $home/film.fcp with application"'
check "... no schedule is set up, no default written" eval '[ ! -e "$home/Library/LaunchAgents" ] && [ -z "$(plist get "$settings" periodicAutosave)" ]'
check "... and the end is recorded" eval '[ "$(plist get "$settings" exit)" != "" ] && [[ ! "$(plist get "$settings" exit)" < "$(plist get "$settings" launch)" ]]'
rm -f "$log"
start film.motn
check "without its application a project is left, and the log says why" eval 'ended 0 && logged "Unable to open $home/film.motn - the application com.apple.motion is not installed"'
start notes.txt
check "another file goes to the application for it" eval 'ended 0 && given "$home/notes.txt" && logged "Error - unknown file: $home/notes.txt"'

# --- With a window ---------------------------------------------------------------------------------------------------

open missing.fcp
check "a file that is not there is told, and the window opens" eval 'grep -q "There is no file $home/missing.fcp" "$work/err" && soon shown'
soon [ -d "$library/nobody.vnt" ]
start
check "a second start ends at once" ended 0
traces() { plist get "$settings" launch; plist get "$settings" exit; count "${log%/*}" -name "Vantory.*.log"; }
before=$(traces)
rm -f "$home/given"
start notes.txt
check "a file for another application goes there past the window, which keeps its log and its record" \
  eval 'ended 0 && given "$home/notes.txt" && logged "Error - unknown file: $home/notes.txt" && [ "$(traces)" = "$before" ]'
put "$live" "spoilt"
start "file://$home/From%20elsewhere.vnt"
check "a second start hands its backup over" eval 'ended 0 && soon logged "User opened file $home/From elsewhere.vnt"'
check "... there is one window" [ "$(copies)" = 1 ]
press Return
check "... which asks, and imports" soon holds "$live" "as it should be"
check "... into the library" [ -f "$library/From elsewhere.vnt/Settings.plist" ]
press Return
kill -9 $window
wait $window 2>/dev/null
check "a killed window leaves nothing in the way" eval 'open && soon shown && [ "$(copies)" = 1 ]'
rm -f "$home/given"
start "$home/Other Film.FCP"
check "a project given to the window goes to its application" eval 'ended 0 && given "$home/Other Film.FCP"'
wait $window
code=$?
check "... and the window ends in order" eval 'ended 0 && logged "App selections saved"'
trap '' HUP
for i in 1 2 3 4; do "$program" 2>/dev/null & done
trap - HUP
check "of four starts at once one window opens" eval 'soon shown; sleep 1; [ "$(copies)" = 1 ]'
pkill -HUP -u "$(id -u)" -x vantory-window
sleep 0.5
check "... which outlives its terminal where that is wished" [ "$(copies)" = 1 ]
pkill -TERM -u "$(id -u)" -x vantory-window
check "the end of the session ends the window in order" eval 'soon not pgrep -u "$(id -u)" -x vantory-window && logged "App selections saved"'

# --- By the name on the bus ------------------------------------------------------------------------------------------

cp "$work/com.quarrywell.Vantory.desktop" "$home/.local/share/applications"
dbus-update-activation-environment DISPLAY
rm -f "$home/given" "$log"
check "a desktop opens a project by the bus" eval 'gapplication launch com.quarrywell.Vantory "$home/Other Film.FCP" && given "$home/Other Film.FCP"'
check "... without a window" soon not pgrep -u "$(id -u)" -x vantory-window
rm -f "$log"
check "... and the window" eval 'gapplication launch com.quarrywell.Vantory && soon logged "Switched to Trash pane" && soon shown'
check "... of which there is one" eval 'gapplication launch com.quarrywell.Vantory && soon not pgrep -u "$(id -u)" -f vantory-activation && sleep 0.5 && [ "$(copies)" = 1 ]'
check "an action that it does not have is refused" not gapplication action com.quarrywell.Vantory fly
pkill -TERM -u "$(id -u)" -x vantory-window
summary
