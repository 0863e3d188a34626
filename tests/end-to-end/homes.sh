#!/usr/bin/env bash
# Tasks that root starts for other homes: who does them, what backups hold, and what is refused.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root"
begin any "$@"
need jq flock pkill

motion=com.apple.motion.plist
all=/tmp/srv/homes  # one level deeper than a Mac's
# The rest is of this root's own users.
vanna=$all/vanna vgreeter=$all/vgreeter
fresh() {
  local user
  rm -rf /tmp/srv
  for user in vanna vgreeter; do
    put "$all/$user/Library/Preferences/$motion" "$user's"
    touch -d '1 hour ago' "$all/$user/Library/Preferences/$motion"
    chown -R "$user:$(id -g $user)" "$all/$user"
  done
}
as_root() { timeout -k 5 60 env -i PATH=/usr/bin:/bin LANG=C.UTF-8 HOME=/root XDG_DATA_HOME=/root/data ${ASAN_OPTIONS:+ASAN_OPTIONS=$ASAN_OPTIONS} "$@" >"$work/out" 2>"$work/err"; code=$?; }
library_of() { echo "$1/Library/Application Support/Quarrywell/Vantory/Backups"; }
kept() { holds "$(library_of "$1")/$2.vnt/Users/user/Library/Preferences/$motion" "$(basename "$1")'s"; }
own() { [ -z "$(find "$1" ! -user "$(basename "$1")" -print)" ] && [ -z "$(find /root -mindepth 1)" ]; }

items=.local/share/Trash/files
[ "$system" = linux ] || items=.Trash

# --- One home --------------------------------------------------------------------------------------------------------
fresh
as_root "$program" --home $vanna -backup One
check "--home: by its owner, without the home's path in the backup" eval 'ran && kept $vanna One && own $vanna'
put $vanna/Library/Preferences/$motion newer; chown vanna $vanna/Library/Preferences/$motion
as_root "$program" --json --home $vanna/ -restore "$(library_of $vanna)/One.vnt"
check "restored to where it came from" eval 'ended 0 && holds $vanna/Library/Preferences/$motion "vanna'\''s" && holds $vanna/$items/$motion newer && own $vanna'
as_root "$program" --home $vanna --verify One
check "a question" eval 'ended 0 && grep -q sound "$work/out"'
# The owner may trace a program that is started there.
printf '#!/bin/sh\n{ ps -o tty= -p $$; pwd; } >"$HOME/seen"\n' >"$work/vantory-desktop"; chmod 755 "$work/vantory-desktop"
put $vanna/.local/share/applications/com.apple.motion.desktop "[Desktop Entry]"; chown -R vanna $vanna/.local
(cd /root && script -qec "'$program' --home $vanna -restore '$(library_of $vanna)/One.vnt'" /dev/null) </dev/null >"$work/out" 2>"$work/err"
[ "$system" = macos ] || check "what is started there has neither root's terminal nor its folder" [ "$(tr -s ' \n' ' ' <$vanna/seen)" = "? / " ]
rm "$work/vantory-desktop"
put /tmp/srv/secret secret; chmod 600 /tmp/srv/secret
rm $vanna/Library/Preferences/$motion; ln -s /tmp/srv/secret $vanna/Library/Preferences/$motion
as_root "$program" --home $vanna -backup Two
check "root's files are not the owner's to read" eval 'not grep -rqs secret $vanna/Library/Application*'
fresh
ln -s vanna $all/link; mkdir $all/lost+found; put $all/file; mkdir -m 777 $all/open; cp -a $vanna $all/open/vanna
mkdir -p $vanna/inner; chown vanna $vanna/inner; mkdir $vanna/inner/other; chown vgreeter $vanna/inner/other
mkdir $all/stranger; chown 64999 $all/stranger
for home in link lost+found file none open/vanna vanna/inner/other stranger; do
  as_root "$program" --home $all/$home -backup Three
  check "$home is nobody's home" eval 'ended 1 && [ -s "$work/err" ] && [ "$(find /tmp/srv /root -name "*.vnt")" = "" ]'
done
as_root setpriv --reuid=vanna --regid=64201 --clear-groups "$program" --home $vgreeter -backup Four
check "--home of another user's, for an ordinary user" eval 'ended 1 && said "Vantory: $vgreeter belongs to vgreeter: run this as vgreeter, or as root." && [ "$(find $all -name "*.vnt")" = "" ]'
as_root setpriv --reuid=vanna --regid=64201 --clear-groups "$program" --home $vgreeter --preview --json trash
check "nor what that would do" eval 'ended 1 && said "Vantory: $vgreeter belongs to vgreeter: run this as vgreeter, or as root."'
as_root setpriv --reuid=vanna --regid=64201 --clear-groups "$program" --homes $vgreeter --busy -backup Four
check "nor by --homes" eval 'ended 1 && grep -q "belongs to vgreeter" "$work/out" "$work/err" && [ "$(find $all -name "*.vnt")" = "" ]'
for line in "--home" "--home $vanna" "--home $vanna $vanna/x.fcp" "--home -backup X" "-backup X --home $vanna" "--home $vanna --home $vanna -list"; do
  as_root "$program" $line
  check "$line" eval 'ended 1 && [ -s "$work/err" ]'
done

# --- Many homes ------------------------------------------------------------------------------------------------------
row() { awk -v home="$1" '$1 == home' "$work/out" | grep -qE -- "$2"; }
fresh; ln -s vanna $all/link; mkdir $all/lost+found $all/stranger; chown 64999 $all/stranger; put $all/file
# What a link leads to counts as well, but for what others write.
setpriv --reuid=vgreeter --regid=64202 --clear-groups sh -c "mkdir $vgreeter/dotfiles; touch $vgreeter/dotfiles/dock; ln -s ../../dotfiles/dock $vgreeter/Library/Preferences/com.apple.dock.plist"
put $all/fresh; ln -s ../fresh $vanna/fresh; chown -h vanna:64201 $vanna/fresh
as_root "$program" --homes "$all/*" --jobs 2 -backup One
check "--homes: one line for each, whatever becomes of the others" eval 'ended 3 && said "" && kept $vanna One && own $vanna && [ "$(wc -l <"$work/out")" = 6 ] &&
  row $vanna "vanna +1 +0 +0 *$" && row $vgreeter "vgreeter +- +- +- +Somebody works there: .*dock.plist was" && row $all/link "is a link" && row $all/lost+found superuser && row $all/stranger "Nobody knows user 64999"'
# What the catalog names elsewhere counts too.
put "$vanna/Documents/Adobe/Premiere Pro/5/Layouts/mine.xml"; chown -R vanna:64201 $vanna
as_root "$program" --homes $vanna -trash
check "somebody works where an application keeps its preferences: nothing was begun" eval 'ended 1 && row $vanna "vanna .*mine.xml was.*--busy" && [ -e $vanna/Library/Preferences/$motion ]'
rm -r $vanna/Documents
as_root "$program" --homes "$all/v*" --preview trash
check "a preview passes over whom the task would" eval 'ended 3 && row $vanna "vanna +- +- +- *$" && row $vgreeter "Somebody works there"'
as_root setpriv --reuid=vanna --regid=64201 --clear-groups "$program" --homes $vanna -backup a/b
check "for an ordinary user; what is remarked upon a success is told" eval 'ended 0 && row $vanna "vanna +1 +0 +0 +.*ab"'
as_root "$program" --homes "$all/v*" $all/lost+found --busy -backup Two
check "--busy" eval 'ended 0 && kept $vanna Two && kept $vgreeter Two && own $vgreeter'
for name in Two Two.vnt; do
  for user in vanna vgreeter; do put $all/$user/Library/Preferences/$motion newer; chown $user $all/$user/Library/Preferences/$motion; done
  as_root "$program" --homes $vanna $vgreeter --busy -restore $name
  check "$name is the backup of each one's own library" eval 'ended 0 && holds $vanna/Library/Preferences/$motion "vanna'\''s" && holds $vgreeter/Library/Preferences/$motion "vgreeter'\''s"'
done
# Of what all users share each has their own.
avid="/Users/Shared/AvidMediaComposer/Avid Users"
for user in vanna vgreeter; do put "$avid/$user/$user.ave"; chown -R $user "$avid/$user"; done
chmod -R a+rwX /Users/Shared
as_root "$program" --homes $vanna $vgreeter --busy -backup Shared avidPrefs
check "nobody's home gets what is another's in a shared folder" eval 'ended 0 && [ -e "$(library_of $vanna)/Shared.vnt$avid/vanna/vanna.ave" ] && [ ! -e "$(library_of $vanna)/Shared.vnt$avid/vgreeter/vgreeter.ave" ]'
as_root "$program" --homes $vanna --busy --preview trash avidPrefs
check "nor is it touched there" eval 'grep -q "vanna/vanna.ave" "$work/out" && not grep -q "vgreeter.ave" "$work/out"'
chown vgreeter "$avid/vanna/vanna.ave"
as_root "$program" --home $vanna -restore "$(library_of $vanna)/Shared.vnt"
check "nor replaced" eval 'grep -q "vanna.ave belongs to another user" "$work/err" && [ -z "$(find $vanna -name vanna.ave -path "*Trash*")" ]'
rm -r /Users/Shared/*
as_root "$program" --homes $vanna $vgreeter --busy --json -trash
check "--json: an object a line" eval 'ended 0 && [ "$(jq -sc "map([.home, .owner, .done, .report.task]) | sort" "$work/out")" = "[[\"$vanna\",\"vanna\",1,\"trash\"],[\"$vgreeter\",\"vgreeter\",1,\"trash\"]]" ]'
put $vanna/Library/Preferences/com.apple.color.plist own; chown vanna $vanna/Library/Preferences/*
as_root "$program" --home $vanna -trash color
printf '%s\r\n' $vanna '' $vgreeter/ $vanna >"$work/list"
as_root "$program" --homes - --busy --undo <"$work/list"
check "--homes -: undone by lines of standard input, but for what a user did since" eval 'ended 0 && [ ! -e $vanna/Library/Preferences/com.apple.color.plist ] && [ "$(wc -l <"$work/out")" = 3 ] && kept $vanna/../vanna Two && [ -e $vanna/Library/Preferences/$motion ] && [ -e $vgreeter/Library/Preferences/$motion ]'
as_root "$program" --homes $vanna $vgreeter --verify Two
check "a question to each, busy or not" eval 'ended 0 && [ "$(grep -c "sound" "$work/out")" = 2 ]'
put "$(library_of $vanna)/Two.vnt/Users/user/Library/Preferences/$motion" spoilt
as_root "$program" --homes $vanna --verify
check "whose backups are damaged" eval 'ended 3 && row $vanna "1 of 4 backups is damaged: Two[.]$"'
rm $vanna/Library/Preferences/$motion
as_root "$program" --homes $vanna $vgreeter --busy -backup Three motionPrefs
check "nothing there in one of them is no fault" eval 'ended 0 && row $vanna "There was nothing"'
as_root "$program" --homes $vanna $vgreeter --busy -backup Two motionPref
check "nothing anywhere is; a key that is mistyped leaves the earlier backup alone" eval 'ended 4 && kept $vgreeter Two && row $vgreeter "motionPref"'
for line in "--homes -backup X" "--homes $vanna" "--homes $vanna x" "--homes $all/*/sub -list" "--homes $all/none* -list" "--homes $vanna --home $vanna -list" "--jobs 2 -list" "--homes $vanna --jobs 0 -list" "--homes $vanna --list-items --print0" "--homes $vanna --print0 --list-items"; do
  set -f; as_root "$program" $line; set +f
  check "$line" eval 'ended 1 && [ -s "$work/err" ] && printed ""'
done

as_root "$program" --homes "$all/*" --busy -backup --json
check "what is wrong with the line is said once" eval 'ended 1 && [ "$(wc -l <"$work/err")" = 1 ] && grep -q "[-]-json goes before the task" "$work/err" && [ ! -e "$(library_of $vanna)/--json.vnt" ]'
as_root "$program" --homes $vanna --json --version
[ "$system" = macos ] || check "what is the same everywhere is asked of none" eval 'ended 0 && grep -q "^Vantory [0-9]" "$work/out"'

# A backup waits a little for whoever holds the library: time to end its process, or the whole run.
hold() { fresh; mkdir -p "$(library_of $vanna)"; chown -R vanna:64201 $vanna; flock "$(library_of $vanna)" sleep 1.5 & holder=$!; soon not flock -n "$(library_of $vanna)" true; }
hold; as_root "$program" --homes $vanna $vgreeter --jobs 2 -backup One & run=$!
soon pgrep -u vanna; pkill -KILL -u vanna; wait $run; wait $holder
check "a process that is killed leaves the rest right" eval 'row $vanna "ended before the task, by signal 9" && kept $vgreeter One && own $vgreeter && [ ! -e "$(library_of $vanna)/One.vnt" ]'
hold; as_root "$program" --homes $vanna $vgreeter --jobs 1 -backup One & run=$!
soon pgrep -u vanna; pkill -INT -o -u root vantory; wait $run; wait $holder
check "an interrupt lets the home in hand be finished" eval 'kept $vanna One && row $vgreeter "Not begun" && told "Vantory: Ended early: 1 of 2 homes were not begun." && [ ! -e "$(library_of $vgreeter)" ]'

# --- Planted links ---------------------------------------------------------------------------------------------------
plant() { rm -rf "${1:?}"; mkdir -p "$(dirname "$1")"; ln -s "$2" "$1"; chown -hR vanna:64201 $vanna; }
support="Library/Application Support"
for planted in Library Library/Preferences "$support" "$support/Quarrywell" "$support/Quarrywell/Vantory/Backups" Library/Logs ${items%/files} "Library/Preferences/$motion"; do
  fresh; chmod 755 $vgreeter; manifest $vgreeter >"$work/before"
  plant "$vanna/$planted" "$vgreeter/$planted"
  for task in "-backup One" -autobackup -trash "-lock -allfiles" --undo "--prune 0"; do as_root "$program" --homes $vanna --busy $task; done
  check "$planted is a link to another's" eval 'manifest $vgreeter | diff "$work/before" - && own $vgreeter && [ -z "$(find $vanna ! -user vanna)" ]'
done
summary
