#!/usr/bin/env bash
# Notifications and task clients of the superuser's process, which speaks to the bus of the user at the console.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root"
also=("$(dirname "${1:-.}")/vantory-desktop" "$here"/../peers/*.py)
begin any "$@"
need dbus-daemon
/usr/bin/python3 -c 'import dbus, gi' 2>/dev/null || skip "Python's dbus or gi is not installed"

helper=$work/vantory-desktop
mv "$helper" "$work/real-helper"
# A stand-in that tells who it is and ends.
cat >"$work/stand-in" <<'END'
#!/bin/sh
{ id -u; id -g; id -G; grep -E '^(CapInh|CapPrm|CapEff|CapAmb)' /proc/self/status; env | LC_ALL=C sort; } >"$(dirname "$0")/who/$(id -u)"
END
chmod 755 "$work/stand-in"
install -d -m 1777 "$work/who"
use_stand_in() { rm -f "$helper" "$work"/who/*; cp "$work/stand-in" "$helper"; }
use_real() { rm -f "$helper"; cp "$work/real-helper" "$helper"; }
started() { [ -e "$work/who/$1" ]; }

# start_peer SCRIPT ARGUMENT...: what it hears goes to $work/SCRIPT.heard.
start_peer() {
  timeout 200 "${as_anna[@]}" env "XDG_RUNTIME_DIR=$runtime" "HOME=$home" /usr/bin/python3 -B "$work/$1.py" "${@:2}" </dev/null >"$work/$1.heard" 2>&1 &
  soon grep -qx ready "$work/$1.heard"
}
heard() { soon grep -qxF "$(printf '%s\t' "${@:2}" | sed 's/\t$//')" "$work/$1.heard"; }
complaint='Unable to show the notification "Backup failed"'
failed_and_logged() { ended 1 && logged "$complaint: $1" && not grep -q Exception "$log"; }

task=(-backup /: x -hotkey)  # fails at once, and says so everywhere
uid=64201  # a user that only this root folder knows
as_anna=(setpriv --reuid=$uid --regid=$uid --clear-groups)
use_home vanna
runtime=/run/user/$uid
log=/Library/Logs/Quarrywell/Vantory.task.1.log
install -d -m 700 -o $uid -g $uid "$runtime"
chown -R $uid:$uid "$home"
run_as_sudo() {
  rm -f "$log"
  timeout -k 5 60 env -i PATH=/usr/bin:/bin "ASAN_OPTIONS=${ASAN_OPTIONS:-}" HOME=/root SUDO_UID=$uid SECRET=x \
    XDG_RUNTIME_DIR="$work/run" DBUS_SESSION_BUS_ADDRESS="unix:path=$work/run/bus" "$program" "$@" >"$work/out" 2>"$work/err" </dev/null
  code=$?
}
use_stand_in
run_as_sudo "${task[@]}"
check "nothing is started for a user without a bus" eval 'failed_and_logged "There is no desktop session." && not started 0 && not started $uid'
cat >"$work/bus.conf" <<END
<busconfig><type>session</type><listen>unix:path=$runtime/bus</listen><policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
END
timeout 200 "${as_anna[@]}" dbus-daemon --config-file="$work/bus.conf" --nofork --nopidfile &
soon [ -S "$runtime/bus" ]
run_as_sudo "${task[@]}"
cat >"$work/expected" <<END
$uid
$uid
$uid
CapInh:	0000000000000000
CapPrm:	0000000000000000
CapEff:	0000000000000000
CapAmb:	0000000000000000
DBUS_SESSION_BUS_ADDRESS=unix:path=$runtime/bus
HOME=/tmp/vanna
LANG=C.UTF-8
LOGNAME=vanna
PATH=/usr/local/bin:/usr/bin:/bin
USER=vanna
XDG_RUNTIME_DIR=$runtime
END
check "the helper is the user, with a clean environment" eval 'not started 0 && grep -vE "^(PWD|OLDPWD|SHLVL|_)=" "$work/who/$uid" | diff "$work/expected" -'
use_real
start_peer notification_server body
start_peer task_client QWGearwrightClientCallback answers postErrorString
run_as_sudo "${task[@]}"
check "a notification is shown to the user" eval 'ended 1 && heard notification_server Notify Vantory 0 "Backup failed" "Invalid filename" "" 1 -1'
check "the user's task client is told" heard task_client postErrorString "Vantory: Unable to backup - invalid filename."
check "the program itself loads no desktop library" eval 'not grep -qE "libgio|libgobject|libdbus" <(ldd "$program")'
rm -f "$helper"
run_as_sudo "${task[@]}"
check "a helper that is not installed is told in the log" logged "$complaint: vantory-desktop: not installed"
chown root "$runtime"
use_stand_in
run_as_sudo "${task[@]}"
check "a runtime folder that is not the user's own is not used" eval 'failed_and_logged "There is no desktop session." && not started 0 && not started $uid'
kill $(jobs -p)
summary
