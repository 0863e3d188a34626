#!/usr/bin/env bash
# Runs PROGRAM on a display and a session bus of their own, and has window_driver.py work it. Prints its verdicts.
set -u
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ]; then exec dbus-run-session -- "${BASH_SOURCE[0]}"; fi

Xvfb -displayfd 1 -noreset -screen 0 1024x768x24 -nolisten tcp >"$WORK/display" 2>"$WORK/xvfb" &
server=$! window=
trap 'kill $window $server 2>/dev/null' EXIT
for ((i = 0; i < 100; ++i)); do [ -s "$WORK/display" ] && break; sleep 0.1; done
[ -s "$WORK/display" ] || { echo "no X server can be started here: $(tail -n 1 "$WORK/xvfb")"; exit 77; }
DISPLAY=:$(cat "$WORK/display")
export DISPLAY QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

# A first window, which crashes when it has made the first backup.
"$PROGRAM" &
window=$!
library="$HOME/Library/Application Support/Quarrywell/Vantory/Backups"
for ((i = 0; i < 100; ++i)); do [ -n "$(find "$library" -name Settings.plist 2>/dev/null)" ] && break; sleep 0.1; done
kill -SEGV "$window"
wait "$window" 2>/dev/null

"$PROGRAM" &
window=$!
timeout 60 /usr/bin/python3 "$here/window_driver.py" || exit 1
for ((i = 0; i < 100; ++i)); do kill -0 "$window" 2>/dev/null || break; sleep 0.1; done
kill -0 "$window" 2>/dev/null && echo "no the program ends when asked to" && exit 1
wait "$window" && echo "yes the program ends with 0 when asked to"
