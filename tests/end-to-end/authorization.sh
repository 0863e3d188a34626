#!/usr/bin/env bash
# authorization.sh DRIVER HELPER POLICY: an ordinary user's process gains administrator rights for its files, with a
# real system bus, polkitd and set-user-id pkexec. They, the helper and the policy are only this script's.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root, to run a system bus and polkitd of its own"
also=("${@:2:2}")
begin any "$1"
need dbus-daemon pkexec
polkitd=/usr/lib/polkit-1/polkitd
[ -x "$polkitd" ] || polkitd=/usr/libexec/polkitd
[ -x "$polkitd" ] || skip "polkitd is not installed"

uid=64201 action=com.quarrywell.vantory.system.privilege.admin
helper=$(sed -n 's|.*exec.path">\(.*\)</annotate>.*|\1|p' "$work/com.quarrywell.vantory.policy")

# --- The machine -----------------------------------------------------------------------------------------------------
place=$helper
until [ -d "$place" ]; do place=$(dirname "$place"); done
[ "$place" != /usr ] || skip "there is no folder below /usr that leads to $helper"
mount -t tmpfs -o mode=755 tmpfs "$place"
mkdir -p "$(dirname "$helper")"; install -m 755 "$work/vantory-root-helper" "$helper"
mkdir "$work/actions"; cp /usr/share/polkit-1/actions/org.freedesktop.policykit.policy "$work"/*.policy "$work/actions/"
mount --bind "$work/actions" /usr/share/polkit-1/actions
mkdir "$work/rules"; mount --bind "$work/rules" /etc/polkit-1/rules.d
cat >"$work/rules/10-test.rules" <<EOF
polkit.addAdminRule(function(action, subject) { return ["unix-user:vanna"]; });
polkit.addRule(function(action, subject) {
  if (action.id == "$action") return { yes: polkit.Result.YES, no: polkit.Result.NO }[polkit.spawn(["/bin/cat", "/tmp/answer"])];
});
EOF
chmod -R a+rX "$work/rules" "$work/actions"
rule() { printf %s "$1" >/tmp/answer; chmod 644 /tmp/answer; }  # yes, no, or ask the person
rule yes

mkdir -p /run/dbus; ln -s /run /var/run
dbus-daemon --system --nofork --nopidfile >"$work/bus" 2>&1 &
bus=$!
soon test -S /run/dbus/system_bus_socket || skip "no system bus can be started here: $(cat "$work/bus")"
"$polkitd" --no-debug >"$work/polkitd" 2>&1 &
polkit=$!
soon pkaction --action-id "$action" || skip "polkitd cannot be started here: $(cat "$work/polkitd")"

as_anna() { setpriv --reuid=$uid --regid=$uid --clear-groups $(clean_environment) HOME=/tmp/vanna "$@"; }
# drive OPERATION [OPERAND...] [-- OPERATION ...]: one process of anna's. Its answers are put together in `answers`.
script() { local word; for word; do if [ "$word" = -- ]; then echo; else printf '%s\t' "$word"; fi; done | sed 's/\t$//'; echo; }
drive() { answers=$(script "$@" | timeout 60 setpriv --reuid=$uid --regid=$uid --clear-groups $(clean_environment) HOME=/tmp/vanna "$program" 2>"$work/err" | tr -d '\n'); }
answered() { [ "$answers" = "$1" ]; }
helpers() { grep -lsz "^$helper" /proc/[0-9]*/cmdline | wc -l; }
no_helper_runs() { soon eval '[ "$(helpers)" = 0 ]'; }

# A home in which the folder "theirs" is root's.
fresh() {
  use_home vanna
  chattr -R -f -i "$home" /tmp/foreign /Library /Users; rm -rf "$home" /tmp/foreign; find /Library /Users -mindepth 1 -delete
  use_home vanna
  theirs=$home/theirs
  put "$home/own" own; chown -R "$uid:$uid" "$home"
  put "$theirs/a" a; put "$theirs/b" b
  put /tmp/foreign/secret secret; chmod 700 /tmp/foreign
}
owned() { [ "$(stat -c %u "$1")" = "$uid" ]; }

# --- Granted ---------------------------------------------------------------------------------------------------------
check "polkit knows the action" eval 'pkaction --verbose --action-id "$action" | grep -q "implicit active: *auth_admin_keep"'
fresh
drive copy "$home/own" "$theirs/copy" -- trash "$theirs/a" -- move "$theirs/b" "$home/moved" -- mkdir "$theirs/x/y" -- authorized
check "copy, trash, move and mkdir are repeated as root" eval 'answered 11111 && holds "$theirs/copy" own && owned "$theirs/copy" && holds "$trash/files/a" a && grep -qx "Path=$theirs/a" "$trash/info/a.trashinfo" && holds "$home/moved" b && owned "$theirs/x/y"'
check "the helper ends with its caller" no_helper_runs
drive touch "$theirs/copy" -- copy "$home/moved" "$theirs/copy" -- remove "$theirs" -- remove "$theirs/x"
check "touch, copy over a file, remove a tree" eval 'answered 1111 && not test -e "$theirs"'
fresh
if chattr +i "$theirs/a" 2>/dev/null; then
  drive unlock "$theirs/a" -- lock "$home/own" -- lock "$home/Library/Preferences"
  check "locks of files, never of the standard folders" eval 'answered 110 && not chattr +i "$theirs/none" && lsattr "$home/own" | cut -d" " -f1 | grep -q i && not eval "lsattr -d \"\$preferences\" | cut -d\" \" -f1 | grep -q i"'
fi
fresh; rm -rf "$home/.local"; mkdir -m 755 "$home/.local"
drive trash "$theirs/a"
check "a Trash that the user cannot make" eval 'answered 1 && holds "$trash/files/a" a && owned "$trash/info" && [ "$(stat -c %a "$trash")" = 700 ]'
chown 0 "$trash/info"; drive trash "$theirs/b"
check "a Trash whose notes are another's" eval 'answered 1 && holds "$trash/files/b" b && owned "$trash/info/b.trashinfo" && grep -qx "Path=$theirs/b" "$trash/info/b.trashinfo"'
fresh
drive require 1
check "the machine-wide setting" eval 'answered 1 && [ "$(stat -c "%u %a" /Library/Preferences/com.quarrywell.Vantory.plist)" = "0 644" ] && grep -q "<key>requireAdminPassword</key><integer>1</integer>" /Library/Preferences/com.quarrywell.Vantory.plist'
as_anna flock -x /Library/Preferences sleep 30 &
soon not as_anna flock -n /Library/Preferences true; drive require 0
check "... also while a user holds the folder" eval 'answered 1 && grep -q "<integer>0</integer>" /Library/Preferences/com.quarrywell.Vantory.plist'
put "$home/job" job; chown "$uid:$uid" "$home/job"; job=/Library/LaunchDaemons/com.quarrywell.Test.plist
drive tool /bin/mkdir -p /Library/LaunchDaemons -- tool /bin/mv -f "$home/job" "$job" -- tool /usr/sbin/chown root:wheel "$job" -- tool /bin/chmod 644 "$job"
check "a job of the machine's" eval 'answered 1111 && holds "$job" job && [ "$(stat -c "%u %a" "$job")" = "0 644" ] && not test -e "$home/job"'

# --- Not abused ------------------------------------------------------------------------------------------------------
fresh; put /Users/Shared/x; put /tmp/public; mkdir /Library/LaunchDaemons; as_anna ln -s /tmp/foreign "$home/trap"; ln -s ../../tmp/foreign "$theirs/link"; mv "$theirs/link" "$home/link"
drive remove "$home/trap/secret" -- copy "$home/own" "$home/trap/secret" -- copy "$home/trap/secret" "$home/got" -- move "$home/link/secret" "$home/got" -- remove /tmp/foreign/secret -- remove "$home/../foreign/secret" -- tool /bin/rm -Rdf "$preferences" -- tool /bin/rm -Rdf /Users/Shared -- tool /bin/mv -f /Users/Shared "$home/got" -- tool /bin/chmod 644 /tmp/foreign/secret -- tool /bin/mv -f /tmp/public "$job" -- tool /bin/sh -c true
check "no planted link, no foreign folder, no standard folder, no other tool" eval 'answered 000000000000 && not test -e "$job" && holds /tmp/foreign/secret secret && [ "$(stat -c %a /tmp/foreign/secret)" = 644 ] && not test -e "$home/got" && [ -d "$preferences" ] && [ -e /Users/Shared/x ]'
fresh
as_anna mkdir "$home/way"
as_anna /usr/bin/python3 -c '
import os, sys
os.chdir(sys.argv[1])
while os.getppid() != 1:
    os.rename("way", "real"); os.symlink("/tmp/foreign", "way"); os.unlink("way"); os.rename("real", "way")
    if not os.path.exists("swapping"): os.mkdir("swapping")
' "$home" &
swapper=$! race=()
for i in $(seq 300); do race+=(-- tool /bin/cp -f -p -R "$home/own" "$home/way/secret" -- tool /bin/rm -Rdf "$home/way/secret" -- tool /usr/bin/touch -c "$home/way/secret"); done
soon test -e "$home/swapping"
touch "$work/mark"; sleep 0.1
# Until both have had their turn amid the other: a busy machine may let one of them wait for as long as a round takes.
for i in $(seq 10); do drive "${race[@]:1}"; [[ $answers == *1*0*1* ]] && break; done
kill "$swapper" 2>/dev/null; wait "$swapper" 2>/dev/null
check "a folder that turns into a link and back, 900 times" eval '[[ $answers == *1*0*1* ]] && [ ${#answers} = 900 ] && holds /tmp/foreign/secret secret && [ "$(count /tmp/foreign -mindepth 1)" = 1 ] && [ -z "$(find /tmp/foreign -newer "$work/mark")" ]'
as_anna bash -c 'pkexec --disable-internal-agent "$1"; exit' _ "$helper" </dev/null >"$work/out" 2>"$work/err"; code=$?
check "the helper serves nobody whom it cannot see" ended 77

# --- The conversation ------------------------------------------------------------------------------------------------
fresh
coproc held { exec setpriv --reuid=$uid --regid=$uid --clear-groups $(clean_environment) HOME=/tmp/vanna "$program" 2>/dev/null; }
holder=$held_PID
ask() { script "$@" >&"${held[1]}"; read -r -t 20 answers <&"${held[0]}"; }
ask start
check "the right is held by one helper, root's" eval 'answered 1 && [ "$(helpers)" = 1 ] && [ -n "$(pgrep -u 0 -f "^$helper")" ]'
ask end; check "giving the right up ends the helper" no_helper_runs
ask remove "$theirs/a"; check "the right is asked for anew" eval 'answered 1 && [ "$(helpers)" = 1 ]'
kill -9 "$(pgrep -u 0 -f "^$helper")"
ask remove "$theirs/b"; check "a helper that has died fails its request at once" eval 'answered 0 && holds "$theirs/b" b'
ask authorized; check "and takes the right with it" answered 0
ask remove "$theirs/b"; check "which the next operation asks for again" eval 'answered 1 && [ "$(helpers)" = 1 ]'
kill -9 "$holder"; wait "$holder" 2>/dev/null
check "a caller that is killed takes the helper with it" no_helper_runs
# hand_on stays|ends: the process that was authorized gives the conversation to another one, which asks for a removal
# while that stays, and for nothing when it has ended.
hand_on() { as_anna HELPER="$helper" /usr/bin/python3 - "$theirs/a" "$1" <<'EOF' >/dev/null 2>"$work/err"
import os, socket, subprocess, sys
own, other = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
subprocess.Popen(["pkexec", "--disable-internal-agent", os.environ["HELPER"]], stdin=other)
other.close()
assert own.recv(99) == b"ready\0"
child = os.fork()
if child:
    if sys.argv[2] == "stays": os.waitpid(child, 0)
    os._exit(0)
own.settimeout(20)
if sys.argv[2] == "stays": own.send(f"/bin/rm\0-Rdf\0{sys.argv[1]}\0".encode())
sys.exit(own.recv(99))
EOF
}
for starter in stays ends; do
  fresh
  check "the helper serves the process that started it only, which $starter" eval 'hand_on $starter; no_helper_runs && holds "$theirs/a" a'
done

# --- Refused ---------------------------------------------------------------------------------------------------------
fresh; rule no
check "a rule says no: nothing is done" eval 'drive remove "$theirs/a" -- remove "$theirs/b" && answered 00 && holds "$theirs/a" a'
rule ask
check "no agent: the same" eval 'drive remove "$theirs/a" -- remove "$theirs/b" && answered 00 && holds "$theirs/a" a'
rule yes
check "without a window nobody is asked" eval 'drive window 0 -- remove "$theirs/a" -- authorized && answered 100 && not grep -q "Unable to authorize" "$work/err" && no_helper_runs'
chmod 775 "$helper"; drive remove "$theirs/a"; check "a helper that others may write is never started" answered 0
chmod 755 "$helper"; chown "$uid" "$(dirname "$helper")"; drive remove "$theirs/a"; check "nor one in a user's folder" answered 0
chown 0 "$(dirname "$helper")"; mv "$helper" "$helper-gone"
check "no helper: refused at once" eval 'drive remove "$theirs/a" && answered 0 && holds "$theirs/a" a'
mv "$helper-gone" "$helper"

install -m 4755 "$program" /tmp/lent; program=/tmp/lent; rule no
check "rights of a starter's are not adopted, which is told" eval 'drive authorized && answered 0 && grep -q "Unable to adopt the rights that were handed down" "$work/err"'
program=$work/vantory

kill "$polkit" "$bus"; wait "$polkit" "$bus"
check "nobody to ask: refused" eval 'drive remove "$theirs/a" && answered 0 && holds "$theirs/a" a'
summary
