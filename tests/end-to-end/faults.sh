#!/usr/bin/env bash
# Full disks, missing rights and odd surroundings: live files stay whole, the message and the exit code are right, and
# no temporary files are left.
. "$(dirname "$0")/lib.sh"
begin any "$@"

motion=com.apple.motion.plist
cache="Final Cut Pro Obj Cache.fcmch"
give() { ! is_root || chown -Rh "$nobody" "$@"; }
fill_home() {
  use_home "$1"
  put "$preferences/$motion" motion
  mkdir -p "$user_data"; head -c 600k /dev/urandom >"$user_data/$cache"
  for i in 1 2 3 4 5 6; do put "$user_data/Button Bars/$i" "bar $i"; done
  give "$home"
  live >"$work/live"
}
live() { manifest "$user_data/Button Bars"; sha256sum "$preferences/$motion" "$user_data/$cache"; }
live_is_whole() { live | diff "$work/live" -; }
told() { [ -s "$work/err" ] && { [ ! -s "$log" ] || not grep -q 'Exception' "$log"; }; }
incomplete() { [ ! -e "$library/$1.vnt/Settings.plist" ] || told; }
unharmed() { live_is_whole && no_leftovers && not grep -qE "Sanitizer|terminate|runtime error" "$work/err"; }
fill_volume() { as_user sh -c 'cat /dev/zero >"$1/filler"' _ "$home" 2>/dev/null; as_user truncate -s "-${1:-0}" "$home/filler"; }

# --- Volumes ---------------------------------------------------------------------------------------------------------
volume_home() { # OPTIONS: a home on a small volume of its own
  ! mountpoint -q "${homes}small" || umount -l "${homes}small"
  mkdir -p "${homes}small"
  mount -t tmpfs -o "mode=755,uid=$nobody,$1" tmpfs "${homes}small"
  fill_home small
}
if is_root; then
  volume_home size=1500k
  run -backup Old motionPrefs
  fill_volume 300k
  run -backup New
  check "no space in the middle of a backup" eval 'ended 0 && told && incomplete New && unharmed && grep -q "No space left on device" "$log"'
  run -backup Old
  check "the old backup of the name is in the Trash or in place" eval '[ -e "$library/Old.vnt/Users/user/Library/Preferences/$motion" ] || [ -e "$trashed/Old.vnt/Settings.plist" ]'

  volume_home size=2000k
  run -backup All
  fill_volume 300k
  run -restore "$library/All.vnt"
  check "no space in the middle of a restore: that file stays in place" eval 'ended 0 && told && unharmed && grep -q "No space left on device" "$log"'

  fill_home anna
  mkdir -p /Volumes/readonly; mount -t tmpfs -o "mode=777,size=4m" tmpfs /Volumes/readonly; as_user mkdir /Volumes/readonly/library
  as_user /usr/bin/python3 "$here/plist.py" write "$settings" xml backupPath=/Volumes/readonly/library
  run -backup Kept motionPrefs; first=$(stat -c %i /Volumes/readonly/library/Kept.vnt)
  run -backup Kept motionPrefs
  disk_trash=/Volumes/readonly/.Trash-$nobody/files; [ "$system" = linux ] || disk_trash=/Volumes/readonly/.Trashes/$nobody
  check "a replaced backup lies in the Trash of its own disk" eval 'ran && [ "$(stat -c %i "$disk_trash/Kept.vnt")" = "$first" ] && [ ! -e "$trashed/Kept.vnt" ]'
  [ "$system" = linux ] || mv "$disk_trash/Kept.vnt" "$disk_trash/of another name"
  run --undo
  check "... and is put back from there" eval 'ran && [ "$(stat -c %i /Volumes/readonly/library/Kept.vnt)" = "$first" ] && [ "$(count "$disk_trash" -mindepth 1 -maxdepth 1 -name "Kept*")" = 1 ]'
  run -backup All; as_user sh -c 'cat /dev/zero >/Volumes/readonly/filler' 2>/dev/null
  run -backup Full
  check "a full library is what is named as full" eval 'grep -q "^Vantory: /Volumes/readonly/library/.*: No space left" "$work/err" && not grep -q "^Vantory: $home.*: No space" "$work/err"'
  rm /Volumes/readonly/filler; mount -o remount,ro /Volumes/readonly
  run --update All
  check "one cause is told once" eval 'grep -q "Read-only file system" "$work/err" && [ "$(sort "$work/err" | uniq -d)" = "" ]'
  run -backup Kept
  check "a read-only library: the old backup stays" eval 'ended 0 && grep -qx "Vantory: Error writing backup file" "$work/err" && [ -e /Volumes/readonly/library/Kept.vnt/Settings.plist ] && unharmed'
  run -restore /Volumes/readonly/library/Kept.vnt; check "and restored from" eval 'ended 0 && said "" && unharmed'
  umount /Volumes/readonly; rmdir /Volumes/readonly
  run -backup Gone
  check "a library on a volume that is gone" eval 'ended 0 && grep -qx "Vantory: Error writing backup file" "$work/err" && [ ! -e /Volumes/readonly ] && unharmed'
else
  echo "note: volumes of their own need root"
fi

# --- Things in the way -----------------------------------------------------------------------------------------------
rm -rf "${homes}anna"; fill_home anna
put "$library/X.vnt" "a file"; give "$home"
run -backup X; check "a file for a backup goes to the Trash" eval 'ran && holds "$trashed/X.vnt" "a file" && [ -d "$library/X.vnt" ] && unharmed'
rm -rf "$trash"; put "$trash" "a file"; give "$home"
run -trash -allfiles; check "a file for the Trash: nothing is trashed, and said so" eval 'ended 0 && told && unharmed'
run -backup X; check "nor is a backup written over" eval 'ended 0 && told && [ -e "$library/X.vnt/Settings.plist" ]'
run -restore "$library/X.vnt"; check "nor a live file" eval 'ended 0 && told && unharmed'
rm "$trash"; chmod 500 "$user_data"
run -trash fcpButton; check "a folder without write permission: left, and said so" eval 'ended 0 && told && unharmed'
chmod 700 "$user_data"
chmod 000 "$user_data/$cache"
run -backup Unreadable; check "an unreadable file is named, the others are copied" eval 'ended 0 && grep -qx "Vantory: 1 file could not be processed - see the log for details." "$work/err" && [ -e "$library/Unreadable.vnt/Users/user/Library/Preferences/$motion" ] && grep -q "Permission denied" "$log"'
chmod 600 "$user_data/$cache"
chmod 000 "$library"
run -list; check "a library that cannot be read is told of" eval 'ended 0 && grep -qF "The backups in $library cannot be read: " "$work/err" && told "Vantory: 1 folder could not be processed - see the log for details." && grep -qF "cannot be read: " "$log"'
run --list-backups --json; check "... and is no empty list" ended 1
chmod 700 "$library"; chmod 000 "$settings"
run -list; check "and so are settings" grep -qF "Unable to read the settings: " "$work/err"
chmod 600 "$settings"
chmod 000 "$library/../Receipts"
run -backup Unnoted motionPrefs; check "where no receipt can be written a task says so, and is done" eval 'ended 0 && grep -q "Receipts" "$work/err" && [ -d "$library/Unnoted.vnt" ]'
run --undo; check "... and undo says why it knows of none" eval 'ended 1 && grep -qF "The receipts cannot be read. " "$work/err"'
chmod 700 "$library/../Receipts"

# --- Descriptors, environment ----------------------------------------------------------------------------------------
for closed in ">&-" "<&- >&- 2>&-"; do
  as_user bash -c "exec $closed; exec \"\$@\"" _ "$program" -backup Closed; code=$?
  check "a backup with $closed" eval '[ "$code" = 0 ] && manifest "$library/Closed.vnt/Users/user/Library/Preferences/Final Cut Pro User Data/Button Bars" | diff <(manifest "$user_data/Button Bars") - && plist get "$library/Closed.vnt/Settings.plist" Motion && plist get "$settings" launch && not grep -q "Invalid" "$library/Closed.vnt/Settings.plist" && unharmed'
done
as_user bash -c '"$@" >/dev/full' _ "$program" -list 2>"$work/err"; code=$?
check "-list to a full device ends with 1 and says so" eval 'ended 1 && grep -q "could not be written" "$work/err"'
as_user bash -c 'exec > >(:); wait $!; "$@"' _ "$program" -list 2>"$work/err"; code=$?
check "... and to a reader that has gone says nothing" eval 'ended 1 && [ ! -s "$work/err" ]'
rm -rf "$preferences/com.quarrywell.Vantory.plist" "$home/Library/Logs" "$trash"
as_user bash -c 'umask 000; exec "$@"' _ "$program" -backup Masked
as_user bash -c 'umask 000; exec "$@"' _ "$program" -trash motionPrefs
check "umask 000: settings, log, Trash and backup are private" [ "$(stat -c %a "$settings" "$log" "$trash" "$trashed" "$library/Masked.vnt" "$library/Masked.vnt/Users" | sort -u | paste -sd,)" = 600,700 ]
cd "$work" || exit 1
for value in relative "" /nonexistent/home; do
  put "$preferences/$motion" motion; give "$home"
  as_user env "HOME=$value" "$program" -trash -allfiles >"$work/out" 2>"$work/err"; code=$?
  check "HOME='$value': nothing happens here" eval '[ "$code" -le 1 ] && holds "$preferences/$motion" motion && [ ! -e "$work/relative" ] && [ ! -e "$work/Library" ]'
done
check "no temporary files are left" no_leftovers
summary
