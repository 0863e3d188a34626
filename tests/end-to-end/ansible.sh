#!/usr/bin/env bash
# The Ansible role on two roots with homes, one after the other's report: a second run changes nothing, and a task in all
# homes gives one table.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root"
also=("$here/../../packaging/ansible")
need ansible-playbook
begin any "$@"

# Two roots with units, catalogs and homes of their own. Programs, and what Ansible sends, are those of this one.
for host in one two; do
  root=/tmp/$host
  mkdir -p "$root"/{usr,etc/systemd/{system,user},proc,dev,tmp,root,home} && cp -a /etc/{passwd,group,nsswitch.conf,ld.so.cache,os-release} "$root/etc/"
  for name in bin sbin lib lib64; do [ ! -L /$name ] || cp -a /$name "$root/"; done
  for name in usr dev tmp; do mount --rbind /$name "$root/$name"; done
  mount -t proc proc "$root/proc"
  for user in vanna vgreeter; do
    put "$root/home/$user/Library/Preferences/com.apple.motion.plist" "$user's on $host"
    touch -d '1 hour ago' "$root/home/$user/Library/Preferences/com.apple.motion.plist"
    chown -R "$user:$(id -g $user)" "$root/home/$user"
  done
  printf '#!/bin/sh\nexec chroot %s /usr/bin/python3 "$@"\n' "$root" >"/tmp/python-$host"
  chmod 755 "/tmp/python-$host"
done
cat >/tmp/hosts <<HOSTS
[vantory]
one ansible_python_interpreter=/tmp/python-one
two ansible_python_interpreter=/tmp/python-two
[vantory:vars]
ansible_connection=local
ansible_remote_tmp=/tmp/ansible
HOSTS
put /tmp/Editor.plist '{ format = 1; name = Editor; identifier = org.example.editor; items = ( { key = editorPrefs; name = Preferences; files = ("~/.editor_qt/*.settings"); } ); }'
put /tmp/Bad.plist '{}'
cat >/tmp/variables.json <<VARIABLES
{"vantory_packages": [], "vantory_catalogs": ["/tmp/Editor.plist"], "vantory_homes": ["/home/*"],
 "vantory_program": "$program", "vantory_table": "/tmp/vantory.csv"}
VARIABLES
play() { # play PLAYBOOK [OPTION...]
  timeout -k 5 120 env HOME=/root ANSIBLE_NOCOLOR=1 ANSIBLE_LOCALHOST_WARNING=0 ansible-playbook -i /tmp/hosts \
    "$work/ansible/$1" -e @/tmp/variables.json "${@:2}" >"$work/out" 2>"$work/err" </dev/null
  code=$?
}
changed() { [ "$(grep -oE 'changed=[0-9]+' "$work/out" | sort -u)" = "changed=$1" ]; }
rows() { tail -n +2 /tmp/vantory.csv | grep -cE -- "$1"; }

play setup.yml --check
check "a check changes nothing" eval 'ended 0 && [ ! -e /tmp/one/etc/vantory ] && [ -z "$(find /tmp/two/etc/systemd ! -type d)" ]'
play setup.yml
service=/etc/systemd/system/vantory-homes.service
check "units and catalog files on both" eval 'ended 0 && changed 5 && [ -e /tmp/one/etc/vantory/catalogs/Editor.plist ] && [ -L /tmp/two/etc/systemd/system/timers.target.wants/vantory-homes.timer ]'
run_unit() {
  local what line
  for what in Start StopPost; do line=$(sed -n "s/^Exec$what=//p" /tmp/two$service | grep .) && chroot /tmp/two sh -c "$line" || return; done
}
check "a unit that does what it says" eval 'run_unit && [ -n "$(find /tmp/two/home/vanna -name "Auto Backup*.vnt")" ]'
play setup.yml
check "a second run changes nothing" eval 'ended 0 && changed 0'
play setup.yml -e '{"vantory_catalogs": ["/tmp/Bad.plist"]}'
check "a catalog file that would be left out is not brought" eval 'ended 2 && grep -q "It says no format" "$work/out" && [ ! -e /tmp/one/etc/vantory/catalogs/Bad.plist ]'
play setup.yml -e 'vantory_homes=/home/*'
check "a text is not taken for a list of its letters" eval 'ended 2 && grep -qF \"/home/\*\" /tmp/two$service'
play setup.yml -e vantory_daily_backup=no
check "switched off by a word, as the command line gives it" eval 'ended 0 && [ ! -L /tmp/two/etc/systemd/system/timers.target.wants/vantory-homes.timer ]'
play run.yml --check -e '{"vantory_task": ["-trash"]}'
check "a check asks for a preview" eval 'ended 0 && changed 0 && [ -e /tmp/one/home/vanna/Library/Preferences/com.apple.motion.plist ] && [ "$(rows "^\"(one|two)\",\"/home/v(anna|greeter)\",\"v(anna|greeter)\",\"0\",\"1\"")" = 4 ]'
play run.yml -e '{"vantory_task": ["-backup", "Before, \"now\""]}'
check "a task in all homes of both, in one table" eval 'ended 0 && changed 1 && [ "$(rows "\"0\",\"1\",\"0\",\"0\",\"\"$")" = 4 ] && [ -e "/tmp/two/home/vgreeter/Library/Application Support/Quarrywell/Vantory/Backups/Before, \"now\".vnt" ]'
mkdir /tmp/two/home/stranger; chown 64999 /tmp/two/home/stranger
play run.yml -e '{"vantory_task": ["--verify"]}'
check "what fails on one host is told, and the other's is there" eval 'ended 2 && grep -q "Nobody knows user 64999" "$work/out" && [ "$(rows "^\"one\".*\"0\",")" = 2 ] && [ "$(rows stranger)" = 1 ]'
summary
