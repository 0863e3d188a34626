#!/usr/bin/env bash
# The program run as the superuser: whose home it works in, who owns what it makes there, how it locks, and that links
# planted in a home lead it nowhere. /run, /Library and /Users are this script's own.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root"
begin any "$@"
need lsattr chattr

uid=64201 greeter=64202  # users that only this root folder knows
motion=com.apple.motion.plist
clean="env -i PATH=/usr/bin:/bin LANG=C.UTF-8 ASAN_OPTIONS=${ASAN_OPTIONS:-}"
# A Mac's own word is who owns the console.
[ "$system" = linux ] || clean="$clean VANTORY_TEST_CONSOLE=$uid"
as_root() { timeout -k 5 60 $clean "$@" >"$work/out" 2>"$work/err" </dev/null; code=$?; }
# fresh NAME: an empty home of that name for the user, and a log to match.
fresh() {
  use_home "$1"
  chattr -R -f -i "$home" /tmp/foreign; rm -rf "$home" /tmp/foreign; find /Library /Users -mindepth 1 -delete
  use_home "$1"
  put "$preferences/$motion" motion; put "$user_data/Button Bars/a" bar
  # So many that a second thread copies some of them, which needs the user's identity too.
  for set in 1 2 3 4 5 6 7 8 9; do put "$home/Library/Application Support/Motion/Command Sets/$set.commandset" "$set"; done
  log=/Library/Logs/Quarrywell/Vantory.task.1.log
  chown -R "$uid:$uid" "$home"
  as_anna() { setpriv --reuid=$uid --regid=$uid --clear-groups "$@"; }
}
all_owned() { [ -z "$(find "$home" ! -uid "$uid" -print)" ] && [ -z "$(find "$home" ! -gid "$uid" -print)" ]; }
backed_up() { holds "$library/$1.vnt/Users/user/Library/Preferences/$motion" motion; }
locked() { lsattr -d "$1" | cut -d' ' -f1 | grep -q i; }
locked_below() { lsattr -aR "$1" | grep -E '^[-A-Za-z]*i[-A-Za-z]* +/'; }
if [ "$system" = macos ]; then
  need getfattr pgrep
  locked() { getfattr -n user.darwin.flags "$1" >/dev/null 2>&1; }
  locked_below() { getfattr -Rn user.darwin.flags "$1" 2>/dev/null | grep flags; }
fi
untouched_home() { [ -z "$(find "$home" -newer "$work/mark")" ]; }

# --- Who is meant ----------------------------------------------------------------------------------------------------
for variable in SUDO_UID PKEXEC_UID; do
  fresh vanna
  mkdir -p /root/Library/Preferences
  plist write /root/Library/Preferences/com.quarrywell.Vantory.plist xml backupPath=/tmp/wrong
  as_root HOME=/root $variable=$uid "$program" -backup Mine
  check "$variable: that user's home, not root's settings" eval 'ended 0 && said "" && backed_up Mine && all_owned && [ ! -e /tmp/wrong ] && [ "$(count /root -newer "$work/vantory" -type f ! -name com.quarrywell.Vantory.plist)" = 0 ]'
  check "$variable: the log lies in /Library and is root's" eval '[ "$(stat -c "%u %a" "$log")" = "0 600" ] && logged "Backup population complete" && [ -z "$(find "$home/Library/Logs" -type f 2>/dev/null)" ]'
  put "$preferences/$motion" newer
  as_root HOME=/root $variable=$uid "$program" -restore "$library/Mine.vnt"
  as_root HOME=/root $variable=$uid "$program" -trash fcpButton
  check "$variable: restore and Trash" eval 'ended 0 && holds "$preferences/$motion" motion && holds "$trashed/$motion" newer && [ -d "$trashed/Button Bars" ] && [ "$(stat -c "%u %a" "$trash")" = "$uid 700" ] && all_owned'
done

# --- The login service's word ----------------------------------------------------------------------------------------
seat() { # CLASS UID
  mkdir -p /run/systemd/seats /run/systemd/sessions /run/systemd/system
  printf 'IS_SEAT0=1\nACTIVE=c7\nACTIVE_UID=%s\nSESSIONS=c7\n' "$2" >/run/systemd/seats/seat0
  printf 'UID=%s\nACTIVE=1\nSTATE=active\nREMOTE=0\nTYPE=wayland\nCLASS=%s\nSEAT=seat0\n' "$2" "$1" >/run/systemd/sessions/c7
}
if [ "$system" = linux ]; then
fresh vanna; as_root HOME=/tmp/vanna "$program" -backup Mine
check "HOME of somebody else's is not taken, and that is said" eval '[ ! -e "$library" ] && grep -q "^Vantory: This works in /root, .*--home \"/tmp/vanna\" before the task" "$work/err"'
as_root HOME=/tmp/gone "$program" -list
check "HOME of nobody's is told too" grep -q "^Vantory: This works in /root, although HOME is /tmp/gone, where there is no folder" "$work/err"
fresh vanna
seat user $uid
as_root HOME=/root SUDO_UID=$nobody "$program" -backup Console
check "the user at the console, whoever called sudo" eval 'ended 0 && backed_up Console && all_owned'
nobody_there() {
  fresh vgreeter; fresh vanna; sleep 0.01; touch "$work/mark"; sleep 0.01
  for task in "-backup X" "-lock -allfiles" -list; do
    as_root HOME=/tmp/vanna SUDO_UID=$uid PKEXEC_UID=$uid "$program" $task
    check "$1: $task does nothing and says why" eval 'ended 1 && printed "" && said "Vantory: Nobody is logged in at the console - nothing was done." && logged "Nobody is logged in at the console - nothing was done." && untouched_home && not test -e /tmp/vgreeter/Library/Logs'
  done
  as_root HOME=/tmp/vanna "$program" --self-check
  check "$1: nothing is found wrong either" eval 'ended 1 && printed "" && said "Vantory: Nobody is logged in at the console - nothing was done."'
}
seat greeter $greeter; nobody_there "a greeter"
printf 'IS_SEAT0=1\n' >/run/systemd/seats/seat0; nobody_there "an empty seat"
rm -rf /run/systemd
else
  fresh vanna; touch "$work/mark"; sleep 0.01
  as_root VANTORY_TEST_CONSOLE= HOME=/tmp/vanna SUDO_UID=$uid "$program" -lock -allfiles
  check "with nobody at the console nothing is done" eval 'ended 1 && printed "" && grep -q "Nobody is logged in at the console - nothing was done" "$work/err" && untouched_home'
  for question in --help --version "-trash -h"; do
    as_root VANTORY_TEST_CONSOLE= "$program" $question
    check "$question is answered all the same" eval 'ended 0 && said ""'
  done
  fresh vanna; truncate -s 20G "$user_data/Button Bars/large"; chown "$uid" "$user_data/Button Bars/large"
  as_root timeout -s TERM 0.3 "$program" -backup Ended
  check "a signal ends the user's process with the superuser's" eval '[ "$code" -ge 124 ] && [ ! -e "$library/Ended.vnt/Settings.plist" ] && not pgrep -U $uid'
fi

# --- Locking ---------------------------------------------------------------------------------------------------------
fresh vanna
run_as_sudo() { as_root HOME=/root SUDO_UID=$uid "$program" "$@"; }
if chattr +i "$work/mark" 2>/dev/null && chattr -i "$work/mark"; then
  put "$user_data/Final Cut Pro 7 Prefs.fcset" prefs
  run_as_sudo -lock
  check "-lock locks" eval 'ended 0 && said "" && locked "$preferences/$motion" && locked "$user_data/Final Cut Pro 7 Prefs.fcset" && locked "$user_data/Button Bars" && not locked "$user_data"'
  run_as_sudo -backup Locked; run_as_sudo -restore "$library/Locked.vnt"
  check "locked files can be backed up and restored, and stay locked" eval 'ended 0 && said "" && backed_up Locked && [ -e "$trashed/$motion" ] && locked "$preferences/$motion" && not locked_below "$library" && not locked_below "$trashed"'
  run_as_sudo -lock fcpPrefs; run_as_sudo -unlock
  check "-unlock unlocks" eval 'ended 0 && said "" && not locked_below "$home"'
  put /tmp/foreign/secret secret; ln /tmp/foreign/secret "$user_data/Final Cut Pro 8 Prefs.fcset"
  run_as_sudo -lock fcpPrefs
  check "nor is root's own file locked by a second name" eval 'ended 0 && told "Vantory: 1 file could not be processed - see the log for details." && not locked /tmp/foreign/secret && locked "$user_data/Final Cut Pro 7 Prefs.fcset"'
else
  echo "note: this file system has no immutable flag"
fi

# --- Planted links ---------------------------------------------------------------------------------------------------
# plant FOLDER: the folder in the home becomes a link, the user's own, to a folder of root's that has the same files.
plant() {
  local folder=$1
  mkdir -m "$mode" /tmp/foreign
  rm -rf "${folder:?}"
  as_anna mkdir -p "$(dirname "$folder")"
  as_anna ln -s /tmp/foreign "$folder"
  put "/tmp/foreign/$motion" secret; put "/tmp/foreign/Final Cut Pro User Data/Button Bars/a" secret
  put "/tmp/foreign/Mine.vnt/Settings.plist" secret; put /tmp/foreign/Vantory.task.1.log secret
  mkdir -p /tmp/foreign/files /tmp/foreign/info
  find /tmp/foreign -exec stat -c '%n %a %u:%g %Y %Z %s' {} + | sort >"$work/foreign"
}
foreign_is_as_it_was() {
  find /tmp/foreign -exec stat -c '%n %a %u:%g %Y %Z %s' {} + | sort | diff "$work/foreign" - && not locked_below /tmp/foreign
}
every_task() {
  local task
  for task in "-trash -allfiles" "-backup Mine" -autobackup "-restore $saved" -lock -unlock -list -restoredefault; do
    run_as_sudo $task
    [ "$code" -le 1 ] && foreign_is_as_it_was || { echo "$task, exit code $code"; return 1; }
  done
}
saved=/tmp/saved.vnt  # outside the home, readable for all
fresh vanna; run_as_sudo -backup Mine; rm -rf "$saved"; cp -a "$library/Mine.vnt" "$saved"
for mode in 700 755; do
  fresh vanna; plant "$preferences"; check "$mode: Preferences is a link to a folder of root's" every_task
  fresh vanna; plant "$library"; check "$mode: the library is a link to a folder of root's" every_task
  fresh vanna; plant "$trash"; check "$mode: the Trash is a link to a folder of root's" every_task
  fresh vanna; plant "$home/Library"; check "$mode: Library is a link to a folder of root's" every_task
  fresh vanna; plant "$home/planted"; rm "$preferences/$motion"; as_anna ln -s "/tmp/foreign/$motion" "$preferences/$motion"
  check "$mode: a preference file is a link to one of root's" every_task
  fresh vanna; plant "$home/planted"; as_anna ln -s "/tmp/foreign/$motion" "$settings"
  check "$mode: the settings are a link to a file of root's" every_task
  fresh vanna; plant "$home/planted"; as_anna mkdir -p "$library/Planted.vnt/Users/user/Library"
  as_anna ln -s /tmp/foreign "$library/Planted.vnt/Users/user/Library/Preferences"
  as_anna sh -c 'sed "" "$1/Settings.plist" >"$2/Settings.plist"' _ "$saved" "$library/Planted.vnt"
  run_as_sudo -restore "$library/Planted.vnt"
  check "$mode: a link inside a backup gives nothing away" eval 'holds "$preferences/$motion" motion && foreign_is_as_it_was && not grep -rqs secret "$home/Library/Preferences" "$trash"'
done

fresh vanna; mkdir -m 777 /tmp/foreign; as_anna mkdir -p "$(dirname "$trash")"; as_anna ln -s /tmp/foreign "$trash"
run_as_sudo -trash
check "nothing is begun in a Trash of another's that a link leads to" eval '[ "$(count /tmp/foreign -mindepth 1)" = 0 ] && [ -e "$preferences/$motion" ]'
rm -rf /tmp/foreign

fresh vanna
# Were it read, the file would be the user's desktop, which is never trashed.
put /tmp/foreign/dirs "XDG_DESKTOP_DIR=\"\$HOME/Library/Preferences/$motion\""
chmod 600 /tmp/foreign/dirs; chown 0 "$preferences"; as_anna mkdir "$home/.config"; as_anna ln -s /tmp/foreign/dirs "$home/.config/user-dirs.dirs"
run_as_sudo -trash motionPrefs
check "root reads no desktop settings that the user may not" eval 'ran && not test -e "$preferences/$motion"'
fresh vanna; run_as_sudo -backup Mine
put /tmp/foreign/com.apple.motion.desktop; chmod 700 /tmp/foreign; as_anna mkdir -p "$home/.local/share"; as_anna ln -s /tmp/foreign "$home/.local/share/applications"
run_as_sudo -restore "$library/Mine.vnt"
check "nor looks for applications there" eval 'ran && ! grep -q "Unable to tell whether" "$log"'
summary
