#!/usr/bin/env bash
# boot_copy.sh FOLDER COMMAND: boots a throw-away copy of this machine, with a real systemd and a real login service, and
# runs the command in it as root, FOLDER at /test. Prints what it printed and ends with its exit code, or with 77 and
# the reason where this machine cannot boot such a copy. Nothing that happens in there reaches the machine.
set -u
skip() { echo "skipped: $*"; exit 77; }
[ "$(id -u)" = 0 ] || skip "needs root"
for tool in systemd-nspawn unshare timeout loginctl dbus-daemon; do
  command -v "$tool" >/dev/null || skip "$tool is not installed"
done
[ -n "$(ls /lib/*/security/pam_systemd.so 2>/dev/null)" ] || skip "libpam-systemd is not installed"
if [ "${VANTORY_NAMESPACE:-}" != 1 ]; then
  VANTORY_NAMESPACE=1 unshare -m --propagation private true 2>/dev/null || skip "namespaces are not permitted here"
  exec env VANTORY_NAMESPACE=1 unshare -m --propagation private "${BASH_SOURCE[0]}" "$@"
fi

test_folder=$1 command=$2
copy=$(mktemp -d /var/tmp/vantory-boot-XXXXXX)
clean_up() { umount -l "$copy/root" "$copy" 2>/dev/null; rmdir "$copy"; }
trap clean_up EXIT
mount -t tmpfs -o mode=755 tmpfs "$copy" || skip "no file system can be mounted here"
mkdir "$copy"/{upper,work,root}
mount -t overlay overlay -o "lowerdir=/,upperdir=$copy/upper,workdir=$copy/work" "$copy/root" 2>/dev/null ||
  skip "this machine's root folder cannot be overlaid"

# Only what the test needs is started, and the copy goes down with it.
: >"$copy/root/etc/fstab"
units=$copy/root/etc/systemd/system
cat >"$units/vantory-test.target" <<UNIT
[Unit]
Requires=basic.target
Wants=systemd-logind.service dbus.service systemd-user-sessions.service vantory-test.service
After=basic.target
AllowIsolate=yes
UNIT
cat >"$units/vantory-test.service" <<UNIT
[Unit]
After=basic.target systemd-logind.service dbus.service systemd-user-sessions.service
[Service]
Type=oneshot
ExecStart=/bin/sh -c '$command >/test/output 2>&1; echo \$? >/test/code; systemctl --no-block exit'
TimeoutStartSec=100
UNIT
for unit in e2scrub_reap.service apt-daily.timer man-db.timer udisks2.service; do ln -sf /dev/null "$units/$unit"; done
timeout -s RTMIN+3 -k 10 110 systemd-nspawn --quiet --directory="$copy/root" --boot --register=no --keep-unit \
  --machine="vantory$$" --private-network --settings=no --link-journal=no --console=pipe \
  --bind="$test_folder:/test" systemd.unit=vantory-test.target </dev/null >"$test_folder/console" 2>&1
if [ ! -e "$test_folder/code" ] && [ ! -e "$test_folder/output" ]; then
  tail -5 "$test_folder/console"
  skip "the copy of this machine does not boot"
fi
cat "$test_folder/output"
exit "$(cat "$test_folder/code" 2>/dev/null || echo 1)"
