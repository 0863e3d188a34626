#!/usr/bin/env bash
# Scheduled backups under a real systemd, and who is at the console by a real login service: in a throw-away copy of this
# machine that is booted for it.
. "$(dirname "$0")/lib.sh"
if [ ! -e /test/inside ]; then
  folder=$(mktemp -d /tmp/vantory-e2e-XXXXXX)
  trap 'rm -rf "$folder"' EXIT
  chmod 755 "$folder"
  # The name of this folder must survive the way through unit files.
  mkdir "$folder/a %h \$HOME \${x}"
  cp "$1" "$(dirname "$1")"/{vantory-due,services_driver} "$folder/a %h \$HOME \${x}/"
  cp "$here"/*.sh "$here"/*.py "$here"/../../packaging/systemd/* "$folder/"
  touch "$folder/inside"
  "$here/boot_copy.sh" "$folder" "bash /test/schedule.sh"
  exit $?
fi

programs='/test/a %h $HOME ${x}' program="$programs/vantory" work=/test driver="$programs/services_driver"
label=com.quarrywell.VantoryAutoSave
newcomer() { useradd -m -d "/home/$1" -s /bin/bash "$1" && id -u "$1"; }
anna=$(newcomer vanna)
newcomer vgreeter >/dev/null
# login USER CLASS: a session on seat0, by way of PAM, that lasts until logout USER.
login() {
  systemd-run -q --unit="session-of-$1" -p PAMName=login -p User="$1" -p WorkingDirectory=/ -E XDG_SEAT=seat0 \
    -E XDG_SESSION_TYPE=x11 -E XDG_SESSION_CLASS="$2" sleep infinity
  soon session_of "$1"
  loginctl activate "$(session_of "$1")"
  soon at_seat "$1"
}
session_of() { loginctl list-sessions --no-legend | awk -v user="$1" '$3 == user { print $1; found = 1 } END { exit !found }'; }
at_seat() { [ "$(loginctl show-seat seat0 -p ActiveSession --value)" = "$(session_of "$1")" ]; }
logout() { systemctl stop "session-of-$1"; soon not session_of "$1"; }
as_root() { timeout 60 $(clean_environment) "$@" >"$work/out" 2>"$work/err" </dev/null; code=$?; }
as_anna() { runuser -u vanna -- $(clean_environment) HOME=/home/vanna XDG_RUNTIME_DIR="/run/user/$anna" "$@"; }
user_systemctl() { as_anna systemctl --user "$@"; }
homes=/home/
use_home vanna
put "$preferences/com.apple.motion.plist" motion; chown -R vanna: /home/vanna

# --- Who is at the console -------------------------------------------------------------------------------------------
nobody_there() {
  touch "$work/mark"
  as_root "$program" -backup Console
  check "$1: nothing is touched, and it is said" eval 'ended 1 && said "Vantory: Nobody is logged in at the console - nothing was done." && untouched'
}
untouched() { [ -z "$(find /home/v* /root/Library -newer "$work/mark" -type f 2>/dev/null | tee /dev/stderr)" ]; }
nobody_there "nobody is logged in"
login vgreeter greeter
nobody_there "a greeter"
logout vgreeter
login vanna user
as_root "$program" -backup Console
check "the user at the seat" eval 'ended 0 && [ -d "$library/Console.vnt" ] && [ -z "$(find /home/vanna ! -user vanna)" ] && [ -z "$(find /root -name "*.vnt")" ]'

# --- A timer that fires ----------------------------------------------------------------------------------------------
units=$home/.config/systemd/user stamp=$home/.local/state/$label.lastrun manager_stamp=$home/.local/share/systemd/timers/stamp-$label.timer
backups() { find "$library/Autosaves" -maxdepth 1 -name "Auto Backup *.vnt" 2>/dev/null | wc -l; }
schedule() { as_anna "$driver" start-job "$label" "$1" "$program" Vantory -autobackup; }
stamp_age() { echo $(($(date +%s) - $(stat -c %Y "$stamp"))); }
set_back() { touch -d "$1 seconds ago" "$stamp" "$manager_stamp"; rm -f "$stamp.tries"; }
schedule 3
check "the first run is not at once" [ "$(backups)" = 0 ]
check "the timer is enabled" [ "$(user_systemctl is-enabled "$label.timer") $(user_systemctl is-active "$label.timer")" = "enabled active" ]
check "systemd finds no fault with the units" eval '[ -z "$(as_anna systemd-analyze --user verify "$units/$label.timer" "$units/$label.service" 2>&1)" ]'
# Meanwhile: a job that always fails, and whose arguments are hard to write down.
odd='a  "b" \c $HOME ${x} %n '\''d'\'' ; é'
as_anna "$driver" start-job com.example.Fails 2 /bin/sh Vantory -c 'cp /proc/$$/cmdline ~/seen; echo >>~/tries; exit 1' "$odd"
complete() { [ -n "$(find "$library/Autosaves" -maxdepth 2 -name Settings.plist 2>/dev/null)" ]; }  # written last
check "a backup appears" eval 'soon complete && holds "$(find "$library/Autosaves" -name com.apple.motion.plist | head -1)" motion'
check "and another, one interval later" eval 'soon eval "[ \"\$(backups)\" -ge 2 ]"'
check "a run that fails is tried again soon" eval 'soon eval "[ \"\$(wc -l <\"$home/tries\")\" -ge 2 ]" && [ "$(stat -c %Y "$home/.local/state/com.example.Fails.lastrun")" -lt "$(stat -c %Y "$home/seen")" ]'
check "arguments arrive as they are" eval '[ "$(tr "\0" "|" <"$home/seen")" = "Vantory|-c|cp /proc/\$\$/cmdline ~/seen; echo >>~/tries; exit 1|$odd|" ]'
as_anna "$driver" remove-job com.example.Fails

# --- Reloading -------------------------------------------------------------------------------------------------------
schedule 3600
check "a changed interval begins anew" eval '[ "$(stamp_age)" -lt 20 ]'
sleep 1
count=$(backups)
set_back 600; schedule 3600
check "the same interval goes on" eval '[ "$(stamp_age)" -ge 600 ] && [ "$(stamp_age)" -lt 660 ]'
as_root env XDG_CONFIG_HOME=/root/settings SUDO_UID=7 "$driver" start-job "$label" 3600 "$program" Vantory -autobackup
check "the superuser loads it for the user at the console, whatever the environment says" eval 'ended 0 && [ "$(stamp_age)" -ge 600 ] && [ "$(user_systemctl is-active "$label.timer")" = active ] && [ -z "$(find /home/vanna ! -user vanna)" ] && [ ! -e /root/.config/systemd ] && [ ! -e /root/settings ]'
check "no run comes of it" [ "$(backups)" = "$count" ]

# --- A missed run ----------------------------------------------------------------------------------------------------
restart() { systemctl stop "user@$anna"; "$@"; systemctl start "user@$anna"; soon user_systemctl is-active "$label.timer"; }
restart set_back 172800
check "a missed run is made up for" eval 'soon eval "[ \"\$(backups)\" = $((count + 1)) ]" && soon eval "[ \"\$(stamp_age)\" -lt 20 ]"'
check "a load that fails keeps the schedule" restart schedule 3600
restart touch -d "2 days ago" "$manager_stamp"
sleep 2
check "once" [ "$(backups)" = $((count + 1)) ]
set_back 172800; chmod 500 "$library/Autosaves"; user_systemctl start "$label.service"
check "a backup that failed is due again, though its exit code is 0" eval '[ "$(user_systemctl show -P Result "$label.service")" = success ] && [ "$(stamp_age)" -ge 172800 ]'
chmod 700 "$library/Autosaves"; user_systemctl start "$label.service"
check "until it succeeds" eval '[ "$(stamp_age)" -lt 20 ]'
set_back 172800; mv "$program" "$program.gone"
check "a removed program is no failure" eval 'user_systemctl start "$label.service" && [ "$(user_systemctl show -P ConditionResult "$label.service")" = no ]'
mv "$program.gone" "$program"; set_back 0

# The windowed program may be started, and so load the job anew, just while a missed run is made up for.
slow() { as_anna "$driver" start-job com.example.Slow 3600 /bin/sh Vantory -c 'echo >>~/runs; sleep 2; touch -c "$VANTORY_SCHEDULE_STAMP"'; }
slow_stamp=$home/.local/state/com.example.Slow.lastrun
slow; touch -d "2 hours ago" "$slow_stamp"
user_systemctl start --no-block com.example.Slow.service; soon test -e "$home/runs"
slow
running() { [ "$(user_systemctl is-active com.example.Slow.service)" = activating ]; }
stamped_after_run() { soon not running && [ "$(stat -c %Y "$slow_stamp")" -gt "$(stat -c %Y "$home/runs")" ]; }
check "loading anew does not disturb a run" eval 'running && stamped_after_run && user_systemctl start com.example.Slow.service && [ "$(wc -l <"$home/runs")" = 1 ]'
as_anna "$driver" remove-job com.example.Slow

# --- Removing --------------------------------------------------------------------------------------------------------
as_anna "$driver" remove-job "$label"
check "nothing is left of the job" eval '[ -z "$(find /home/vanna -name "*$label*" -o -name "*.target.wants" -o -name "*com.example.Fails*")" ] && [ -z "$(user_systemctl list-units --all --no-legend "*$label*" "*Fails*")" ] && [ -z "$(user_systemctl list-unit-files --no-legend "*$label*")" ]'

# --- For all users of the machine ------------------------------------------------------------------------------------
ln -s "$program" /usr/local/bin/vantory
sed 's|@CMAKE_INSTALL_FULL_BINDIR@|/usr/local/bin|' /test/vantory-autobackup.service.in >/etc/systemd/user/vantory-autobackup.service
cp /test/vantory-autobackup.timer /etc/systemd/user/
systemctl --global enable vantory-autobackup.timer 2>/dev/null
systemctl restart "user@$anna"
check "the administrator's timer waits for its day at the next login" eval 'soon user_systemctl is-active vantory-autobackup.timer'
count=$(backups)
user_systemctl start vantory-autobackup.service
check "it backs up" [ "$(backups)" = $((count + 1)) ]
mkdir -p "$units" && touch "$units/$label.timer"
user_systemctl start vantory-autobackup.service
check "but not for those who have a schedule of their own" eval '[ "$(backups)" = $((count + 1)) ] && [ "$(user_systemctl show -P ConditionResult vantory-autobackup.service)" = no ]'
rm "$units/$label.timer"
systemctl stop "user@$anna"
schedule 3600
log=$home/Library/Logs/Quarrywell/Driver.1.log
check "without a service manager: one line, and the job's file" eval '[ -e "$home/Library/LaunchAgents/$label.plist" ] && [ "$(grep -c "Unable to" "$log")" = 1 ] && grep -q "Unable to load the job $label: " "$log" && [ -z "$(find "$home/.config" "$home/.local" -name "*$label*")" ]'
logout vanna
nobody_there "everybody has logged out"
summary
