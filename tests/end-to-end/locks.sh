#!/usr/bin/env bash
# Locking by an ordinary user, with the lock helper installed and without it, on a file system that knows the flag.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root, to mount a file system and install the helper"
need setcap lsattr mkfs.ext4
helper=$(dirname "${2:-$1}")/vantory-lock-helper
[ -n "${VANTORY_WORK:-}" ] || [ -x "$helper" ] || skip "there is no $helper"
begin any "$@"

nobody=64201  # whose home the helper finds in the password database
use_home vanna
truncate -s 512M "$work/disk" && mkfs.ext4 -q -F "$work/disk" && mount -o loop "$work/disk" "$home" || skip "no file system can be mounted here"
use_home vanna
mkdir "$home/bin"
cp "$program" "$work/vantory-lock-helper" "$home/bin/"
program=$home/bin/vantory helper=$home/bin/vantory-lock-helper
install_helper() { setcap cap_linux_immutable=ep "$helper" || skip "no capabilities can be given here"; }
take_helper_away() { setcap -r "$helper"; }

motion=com.apple.motion.plist
fcp="$user_data/Final Cut Pro 7 Prefs.fcset"
sets="$home/Library/Application Support/Motion/Command Sets"
fill_home() {
  chattr -R -f -i "$home"; rm -rf "$home/Library" "$home/.local"
  put "$preferences/$motion" motion; put "$fcp" prefs; put "$user_data/Button Bars/a" bar
  for i in $(seq 250); do put "$sets/$i.commandset"; done
  give
}
give() { chown "$nobody" "$home"; chown -Rh "$nobody:$nobody" "$home/Library"; }
locked() { lsattr -d "$1" | cut -d' ' -f1 | grep -q i; }
locked_below() { lsattr -aR "$1" 2>/dev/null | grep -E '^[-A-Za-z]*i[-A-Za-z]* +/'; }
counted() { grep -c "$1" "$log"; }

# --- With the helper -------------------------------------------------------------------------------------------------
install_helper
fill_home
run -lock
check "-lock locks files, and folders themselves" eval 'ran && locked "$preferences/$motion" && locked "$fcp" && locked "$user_data/Button Bars" && not locked "$user_data/Button Bars/a" && [ "$(locked_below "$sets" | wc -l)" = 250 ] && not locked "$sets"'
check "the user cannot change them now" not as_user sh -c 'echo changed >"$1"' _ "$preferences/$motion"
run -backup Locked
check "a copy of a locked file is not locked" eval 'ran && holds "$library/Locked.vnt/Users/user/Library/Preferences/$motion" motion && not locked_below "$library"'
run -restore "$library/Locked.vnt"
check "locked files and folders can be restored, and stay locked" eval 'ran && holds "$preferences/$motion" motion && [ -e "$trash/files/$motion" ] && [ -e "$trash/files/Button Bars/a" ] && not locked_below "$trash" && [ "$(locked_below "$home/Library" | wc -l)" = 254 ]'
run --undo
check "and so they do when that is taken back" eval 'ran && [ "$(count "$trash/files" -name "*motion*")" = 1 ] && [ "$(locked_below "$home/Library" | wc -l)" = 254 ]'
for again in 1 2; do
  run --receipts
  run --undo "$(sed -n '2s/ .*//p' "$work/out")"
  check "nor is a lock lost by taking that back, $again" eval 'ran && [ "$(locked_below "$home/Library" | wc -l)" = 254 ]'
done
run -unlock; run -lock motionPrefs; run -trash motionPrefs
check "and trashed" eval 'ran && [ ! -e "$preferences/$motion" ] && [ "$(count "$trash/files" -name "*motion*")" = 2 ] && not locked_below "$home"'
chattr +d "$fcp"; run -lock; run -unlock
check "-unlock unlocks, and other flags stay" eval 'ran && not locked_below "$home" && lsattr "$fcp" | cut -d" " -f1 | grep -q d'

mv "$preferences" "$home/Library/dotfiles"; ln -s dotfiles "$preferences"; give
run -lock
check "the way may lead over the user's own links" eval 'ran && locked "$fcp" && locked "$user_data/Button Bars"'

fill_home
put "$home/Library/mine" mine; give; rm "$preferences/$motion"; ln -s "$home/Library/mine" "$preferences/$motion"
for i in 30 180; do chown 0 "$sets/$i.commandset"; done
ln "$fcp" "$home/other"; run -lock fcpPrefs
check "by two names, with why and what helps" eval 'ended 0 && told "Vantory: $fcp: it has another name elsewhere (a hard link)" && told "Vantory: Remove that, which find -samefile finds. An administrator can do it with chattr." && not locked "$fcp"'
run -lock motionPrefs,motionKeyLayout
check "a link as the file itself, and somebody else's files: left, and said" eval 'ended 0 && told "Vantory: $preferences/$motion is a symbolic link to $home/Library/mine and was left out." && told "Vantory: 2 files could not be processed - see the log for details." && told "Vantory: $sets/30.commandset: it belongs to root" && not locked "$home/Library/mine" && not locked "$sets/30.commandset" && not locked "$sets/180.commandset" && [ "$(locked_below "$sets" | wc -l)" = 248 ]'
check "each failure stands below its file in the log" eval '[ "$(counted "Unable to lock")" = 3 ] && for file in "$preferences/$motion" "$sets/30.commandset" "$sets/180.commandset"; do grep -F -A1 "Locking file $file" "$log" | grep -qF "Unable to lock $file: " || exit 1; done'
check "and every file once" [ "$(grep -o "Locking file .*" "$log" | sort -u | wc -l) $(counted "Locking file")" = "252 252" ]

# --- The helper, asked by a stranger ---------------------------------------------------------------------------------
# ask lock|unlock PATH...: prints the errno for each.
ask() { as_user /usr/bin/python3 -c '
import socket, subprocess, sys
own, other = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
subprocess.Popen([sys.argv[1]], stdin=other)
own.send("\0".join(sys.argv[2:]).encode() + b"\0")
print(own.recv(999).decode().replace("\0", " "), end="")' "$helper" "$@"; }
answers() { [ "$(ask "${@:2}")" = "$1" ]; }
fill_home
mkdir "$work/disk2" /Users/Shared; mount --bind "$home" "$work/disk2"
put "$home/roots/mine"; put "$home/roots/shared/mine"; put "$home/roots/shared/own/mine"; chmod 1777 "$home/roots/shared"
mount --bind "$home/roots/shared" /Users/Shared
mkdir -m 1777 "$home/drop"; put "$home/drop/mine"; put "$home/single"; put "$home/second"; ln "$home/second" "$home/third"
chown "$nobody" "$home/roots/mine" "$home/drop/mine" "$home/single" "$home/second" /Users/Shared/mine /Users/Shared/own{,/mine}
chattr +i "$home/roots/mine"
check "locks below the home and the shared folders" answers "0 0 " lock "$home/single" /Users/Shared/own/mine
check "an administrator's flag elsewhere stays" eval 'answers "18 " unlock "$work/disk2/roots/mine" && locked "$home/roots/mine"'
check "nothing in folders that others write to, nor by one of two names" eval 'answers "87 87 31 " lock "$home/drop/mine" /Users/Shared/mine "$home/third" && not locked "$home/drop/mine" && not locked /Users/Shared/mine && not locked "$home/second"'
umount /Users/Shared "$work/disk2"; chattr -R -f -i "$home"; rm -rf "$home/roots" "$home/drop"

# --- Without ---------------------------------------------------------------------------------------------------------
fill_home
run -lock motionPrefs; run -backup Kept motionPrefs
take_helper_away
one_failed="Vantory: 1 file could not be processed - see the log for details."
for without in "lacks its capability" "is not installed"; do
  run -lock motionKeyLayout
  check "the helper $without: nothing is locked, and each file is said" eval 'ended 0 && told "Vantory: 250 files could not be processed - see the log for details." && told "Vantory: ... and 240 more." && grep -q "^Vantory: Locking needs the lock helper" "$work/err" && [ "$(counted "Unable to lock")" = 250 ] && not locked_below "$sets"'
  run -unlock motionPrefs
  check "nor unlocked" eval 'ended 0 && told "$one_failed" && [ "$(counted "Unable to unlock")" = 1 ] && locked "$preferences/$motion"'
  run -trash motionPrefs
  check "a locked file is not trashed, and said" eval 'ended 0 && told "$one_failed" && holds "$preferences/$motion" motion && locked "$preferences/$motion" && [ "$(count "$trash/files" -mindepth 1)" = 0 ]'
  run -restore "$library/Kept.vnt"
  check "nor written over" eval 'ended 0 && [ -s "$work/err" ] && holds "$preferences/$motion" motion && locked "$preferences/$motion"'
  rm -f "$helper"
done
check "no temporary files are left" no_leftovers
chattr -R -f -i "$home"
umount "$home"
summary
