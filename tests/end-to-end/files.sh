#!/usr/bin/env bash
# Files of every kind and name survive a backup and a restore, to the byte, the nanosecond and the last attribute.
. "$(dirname "$0")/lib.sh"
begin ordinary "$@"
need setfacl setfattr truncate mkfifo

use_home anna
bars="$user_data/Button Bars"
sets="$home/Library/Application Support/Motion/Command Sets"
backup=$library/All.vnt
copied=$backup/Users/user/Library/Preferences
long() { printf "%0$((255 - ${#1}))d%s" 0 "$1"; }
odd_names=("two words" $'u\xcc\x88' $'\xc3\xbc' "100%" "%@%n%s%d" $'a\nb' $'tab\there' "-dash" "--help" "*" "a?b[c]" $'bad\xff\xfebytes' $'\xf0\x9f\x8e\xac' '$(id)' '"q"' "\\" " lead" "trail ")

# --- What is backed up -----------------------------------------------------------------------------------------------
mkdir -p "$bars" "$sets"
for name in "${odd_names[@]}"; do
  printf '%s' "$name" >"$bars/$name"
  printf '%s' "$name" >"$sets/$name.commandset"
done
printf long >"$sets/$(long .commandset)"
mkdir -p "$bars/sub/$(long .d)/three/four" "$bars/empty folder"
: >"$bars/empty"
: >"$preferences/com.apple.color.plist"
printf ro >"$bars/read only"; chmod 400 "$bars/read only"
printf twice >"$bars/one"; ln "$bars/one" "$bars/two"
ln -s one "$bars/to file"; ln -s sub "$bars/to folder"; ln -s nowhere "$bars/dangling"; ln -s /etc/passwd "$bars/absolute"
mkfifo "$bars/pipe"
setfattr -n user.note -v "kept" "$bars/one" || echo "note: no user attributes on this file system"
if [ "$system" = macos ]; then
  for name in "two words" "empty folder"; do setfattr -n user.darwin.list -v "anna reads" "$bars/$name"; done
else
  setfacl -m u:1:rw "$bars/two words" 2>/dev/null && setfacl -m u:1:rwx,d:u:1:rx "$bars/empty folder" || echo "note: no ACLs on this file system"
fi
truncate -s 3G "$preferences/com.apple.dvdstudiopro.plist"; printf end >>"$preferences/com.apple.dvdstudiopro.plist"
head -c 300M /dev/urandom >"$user_data/Final Cut Pro Obj Cache.fcmch"
touch -d "1970-01-01 00:00:01.000000001 UTC" "$bars/empty"
touch -d "2038-02-01 03:14:08.999999999 UTC" "$bars/one"
touch -d "2001-02-03 04:05:06.123456789 UTC" "$bars/sub" "$preferences/com.apple.color.plist"
ln -s com.apple.color.plist "$preferences/com.apple.motion.plist"
mkfifo "$preferences/com.apple.LiveType.plist"
for folder in "$bars" "$sets"; do manifest "$folder"; done >"$work/before"
sum=$(sha256sum <"$user_data/Final Cut Pro Obj Cache.fcmch")

# --- Backup ----------------------------------------------------------------------------------------------------------
limit=60 run -backup All
check "backup of everything, and what is left out is said" eval 'ended 0 && told "Vantory: $preferences/com.apple.LiveType.plist is neither a file nor a folder and was left out." && told "Vantory: $preferences/com.apple.motion.plist is a symbolic link to com.apple.color.plist and was left out."'
for folder in "$copied/Final Cut Pro User Data/Button Bars" "$backup/Users/user/Library/Application Support/Motion/Command Sets"; do manifest "$folder"; done >"$work/copied"
# The folder that a pattern's files lie in is made anew; only what it holds is a copy.
of_copies() { grep -av "^b'\.' 0o40" "$1"; }
same_tree() { diff <(of_copies "$work/before") <(of_copies "$1"); }
check "names, types, modes, times, attributes, ACLs, links" same_tree "$work/copied"
check "the 3 GB sparse file keeps its length and its holes" eval '[ "$(stat -c %s "$copied/com.apple.dvdstudiopro.plist")" = 3221225475 ] && [ "$(stat -c %b "$copied/com.apple.dvdstudiopro.plist")" -lt 2000 ]'
check "the 300 MB file" [ "$(sha256sum <"$copied/Final Cut Pro User Data/Final Cut Pro Obj Cache.fcmch")" = "$sum" ]
check "FIFOs are left out, in a folder and as an item's own file; the log says so" eval '[ ! -e "$copied/com.apple.LiveType.plist" ] && [ ! -e "$copied/Final Cut Pro User Data/Button Bars/pipe" ] && logged "$preferences/com.apple.LiveType.plist is neither a file nor a folder and was left out." && grep -q "Button Bars/pipe" "$log"'
check "links as an item's own file are passed over" eval '[ ! -L "$copied/com.apple.motion.plist" ] && [ ! -e "$copied/com.apple.motion.plist" ]'
check "every log line is text on one line" eval 'not grep -avE "^(2[-0-9]{9} [:0-9]{8} \+0000 - |Log started|Version|Path|System|Running)" "$log"'

# --- Restore ---------------------------------------------------------------------------------------------------------
put "$home/foreign" foreign
rm -rf "$bars" "$sets"/* "$preferences/com.apple.LiveType.plist"
rm "$preferences/com.apple.color.plist"; ln -s "$home/foreign" "$preferences/com.apple.color.plist"  # a link in the way
put "$bars/new bar" new
limit=60 run -restore "$backup"
check "restore of everything" eval 'ended 0 && told "Vantory: $preferences/com.apple.color.plist is a symbolic link to $home/foreign: a file of its own takes its place."'
for folder in "$bars" "$sets"; do manifest "$folder"; done >"$work/after"
check "names, types, modes, times, attributes, ACLs, links are back" same_tree "$work/after"
check "what was replaced lies in the Trash" holds "$trashed/Button Bars/new bar" new
check "a link in the way is trashed, never written through" eval '[ -L "$trashed/com.apple.color.plist" ] && [ -f "$preferences/com.apple.color.plist" ] && [ ! -s "$preferences/com.apple.color.plist" ] && holds "$home/foreign" foreign'
check "the times of a plain file" [ "$(stat -c %y "$preferences/com.apple.color.plist" | cut -c1-29)" = "$(TZ=UTC date -d '2001-02-03 04:05:06.123456789 UTC' '+%F %T.%N')" ]

# --- Trash -----------------------------------------------------------------------------------------------------------
run -trash -allfiles
check "all of it can be trashed" eval 'ran && [ ! -e "$bars" ] && [ "$(count "$sets" -mindepth 1)" = 0 ]'
[ "$system" = macos ] || check "each with its note, also names of 255 bytes" eval '[ "$(count "$trash/info" -name "*.trashinfo")" = "$(count "$trashed" -mindepth 1 -maxdepth 1)" ] && [ "$(count "$trashed" -maxdepth 1 -name "000*.commandset")" -ge 1 ]'
check "a folder in the Trash is whole" eval 'manifest "$(ls -tcd "$trashed/Button Bars"* | head -1)" >"$work/trashed" && diff <(of_copies "$work/trashed") <(manifest "$copied/Final Cut Pro User Data/Button Bars" | of_copies -)'
check "links are trashed as links" [ -L "$trashed/com.apple.motion.plist" ]

# --- Kinds that change -----------------------------------------------------------------------------------------------
use_home kinds
mkdir -p "$preferences/com.apple.motion.plist"; put "$preferences/com.apple.motion.plist/inside" x
put "$user_data/Button Bars" "a file for a folder"
run -backup Kinds
rm -r "$preferences/com.apple.motion.plist" "$user_data/Button Bars"
put "$preferences/com.apple.motion.plist" file; put "$user_data/Button Bars/a" folder
run -restore "$library/Kinds.vnt"
check "a folder for a file and the reverse" eval 'ran && [ -e "$preferences/com.apple.motion.plist/inside" ] && holds "$user_data/Button Bars" "a file for a folder" && holds "$trashed/com.apple.motion.plist" file && holds "$trashed/Button Bars/a" folder'
deep=$user_data/Plugins
mkdir -p "$deep" && (cd "$deep" && for i in $(seq 200); do mkdir "folder with a longer name" && cd "folder with a longer name" || exit; done; echo deepest >file)
run -backup Deep fcpPlugins
check "a folder whose paths are longer than 4096 bytes can be backed up" ran
rm -rf "$deep"; run -restore "$library/Deep.vnt"
chmod 500 "$deep"
check "and restored" eval 'ran && [ "$(count "$deep" -name file)" = 1 ]'
run -trash -allfiles
check "and can be trashed, though nobody may write in it" eval 'ran && [ ! -e "$deep" ] && [ "$(stat -c %a "$trashed/Plugins")" = 500 ] && [ "$(count "$trashed" -name file)" = 1 ]'
check "no temporary files are left" no_leftovers
summary
