#!/usr/bin/env bash
# What the program trashes, another program finds in the Trash and puts back.
. "$(dirname "$0")/lib.sh"
begin any "$@"
need trash-list trash-restore

use_home anna
install -d -m 700 "$work/run"
plist_file=$preferences/com.apple.motion.plist
sets="$home/Library/Application Support/Motion/Command Sets"
odd="$sets/100% & #1.commandset" umlaut="$sets/Größe.commandset"
put "$plist_file" first; put "$odd" odd; put "$umlaut" umlaut; put "$user_data/Button Bars/inside" bar
! is_root || chown -R "$nobody" "$home" "$work/run"

run -trash motionPrefs
as_user sh -c 'echo second >"$1"' _ "$plist_file"
run -trash motionPrefs,motionKeyLayout,fcpButton
as_user trash-list >"$work/listed"
check "trash-list names both files of one name, with today's date" [ "$(grep -cF "$(date +%F)" "$work/listed")" -ge 2 ]
put_back() { as_user sh -c 'cd "$1" && echo 0 | trash-restore "$2"' _ "$(dirname "$1")" "$1" >/dev/null 2>&1; }
# Which of the two comes first is the reader's affair.
put_back "$plist_file"; as_user mv "$plist_file" "$home/one"; put_back "$plist_file"
check "both of one name can be put back" [ "$(cat "$home/one" "$plist_file" | LC_ALL=C sort | paste -sd,)" = first,second ]
put_back "$odd"; check "a file with an odd name" holds "$odd" odd
put_back "$umlaut"; check "a name with umlauts" holds "$umlaut" umlaut
put_back "$user_data/Button Bars"; check "a folder" holds "$user_data/Button Bars/inside" bar

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
