#!/usr/bin/env bash
# What the program trashes, other programs find in the Trash and put back: gio (the desktop's own) and trash-cli.
. "$(dirname "$0")/lib.sh"
begin any "$@"
need gio dbus-run-session trash-list trash-restore

use_home anna
install -d -m 700 "$work/run"
plist_file=$preferences/com.apple.motion.plist
sets="$home/Library/Application Support/Motion/Command Sets"
odd="$sets/100% & #1.commandset" umlaut="$sets/Größe.commandset"
put "$plist_file" first; put "$odd" odd; put "$umlaut" umlaut; put "$user_data/Button Bars/inside" bar
! is_root || chown -R "$nobody" "$home" "$work/run"
# The desktop's Trash answers on a session bus only, and slowly the first time.
gio_trash() { as_user dbus-run-session -- env GVFS_DISABLE_FUSE=1 sh -c 'for i in 1 2 3 4 5 6 7 8; do gio trash --list >/dev/null 2>&1 && break; sleep 0.5; done; gio trash "$@"' _ "$@" 2>/dev/null; }
gio_restore() { gio_trash --restore "$(gio_trash --list | grep -aF "$1" | head -1 | cut -f1)"; }

run -trash motionPrefs
as_user sh -c 'echo second >"$1"' _ "$plist_file"
run -trash motionPrefs,motionKeyLayout,fcpButton
gio_trash --list >"$work/listed"
if [ -s "$work/listed" ]; then
  check "gio lists each with its old place" eval 'grep -qF "$odd" "$work/listed" && grep -qF "$user_data/Button Bars" "$work/listed"'
  check "gio lists both files of one name" [ "$(grep -cF "$plist_file" "$work/listed")" = 2 ]
  gio_restore "$odd"
  check "gio puts a file with an odd name back" holds "$odd" odd
  gio_restore "$user_data/Button Bars"
  check "gio puts a folder back" holds "$user_data/Button Bars/inside" bar
else
  echo "note: the desktop's Trash does not answer here; gio's checks are left out"
fi

as_user trash-list >"$work/listed"
check "trash-list names both files of one name, with today's date" [ "$(grep -cF "$(date +%F)" "$work/listed")" -ge 2 ]
# Which of the two comes first is the reader's affair.
as_user sh -c 'cd "$1" && echo 0 | trash-restore >/dev/null 2>&1' _ "$preferences"
check "trash-restore puts one back" grep -qxE "first|second" "$plist_file"
as_user mv "$plist_file" "$home/one"
as_user sh -c 'cd "$1" && echo 0 | trash-restore >/dev/null 2>&1' _ "$preferences"
check "and the other" [ "$(cat "$home/one" "$plist_file" | LC_ALL=C sort | paste -sd,)" = first,second ]
as_user sh -c 'cd "$1" && echo 0 | trash-restore "$2"' _ "$sets" "$umlaut" >/dev/null 2>&1  # gio would write the umlauts as escapes
check "trash-restore puts a name with umlauts back" holds "$umlaut" umlaut

# --- A file of another file system -----------------------------------------------------------------------------------
if is_root; then
  volume=$user_data
  mount -t tmpfs -o "mode=700,uid=$nobody" tmpfs "$volume"
  as_user sh -c 'mkdir "$1/Button Bars"; echo bar >"$1/Button Bars/far"; echo cache >"$1/Final Cut Pro Obj Cache.fcmch"' _ "$volume"
  run -trash fcpButton,fcpPrefs
  check "a file of another file system goes to the Trash there" eval 'ran && holds "$volume/.Trash-$nobody/files/Button Bars/far" bar && holds "$volume/.Trash-$nobody/info/Button Bars.trashinfo" "$(printf "[Trash Info]\nPath=Button%%20Bars\nDeletionDate=%s" "$(sed -n s/DeletionDate=//p "$volume/.Trash-$nobody/info/Button Bars.trashinfo")")"'
  as_user trash-list >"$work/listed"
  check "trash-list finds it" grep -qF "$volume/Button Bars" "$work/listed"
  as_user sh -c 'cd "$1" && echo 0 | trash-restore && echo 0 | trash-restore' _ "$volume" >/dev/null 2>&1
  check "trash-restore puts both back" eval 'holds "$volume/Button Bars/far" bar && holds "$volume/Final Cut Pro Obj Cache.fcmch" cache'
  rm -r "$volume/.Trash-$nobody"
  ln -s /tmp/elsewhere "$volume/.Trash-$nobody"; mkdir -m 777 /tmp/elsewhere
  run -trash fcpButton
  check "a Trash that is a trap is refused, the item stays" eval 'ended 0 && not said "" && [ -d "$volume/Button Bars" ] && [ -z "$(ls -A /tmp/elsewhere)" ]'
else
  echo "note: another file system needs root"
fi
summary
