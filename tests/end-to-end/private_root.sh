#!/usr/bin/env bash
# private_root.sh WORK COMMAND...: runs the command as root among mounts, processes and a root folder of its own: the
# system's programs read-only, /tmp from WORK/tmp, and /run, /Library, /Users, /var and the rest empty. Nothing that
# the command does there reaches the machine's own folders.
set -euo pipefail
work=$1
if [ "${VANTORY_NAMESPACE:-}" != 1 ]; then
  exec env VANTORY_NAMESPACE=1 unshare -mpf --kill-child --propagation private "${BASH_SOURCE[0]}" "$@"
fi
shift
root=$work/root
mkdir -p "$root"
mount -t tmpfs -o mode=755 tmpfs "$root"
mkdir -p "$root"/{tmp,run,proc,dev,etc,usr,root,home,var/tmp,Library,Users}
for name in /bin /sbin /lib*; do
  if [ -L "$name" ]; then ln -s "$(readlink "$name")" "$root$name"; else mkdir "$root$name"; fi
done
for name in /usr /etc /bin /sbin /lib*; do
  [ ! -L "$name" ] || continue
  mount --bind "$name" "$root$name"
  mount -o remount,bind,ro "$root$name" 2>/dev/null || true
done
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
chmod 1777 "$work/tmp"
mount --bind "$work/tmp" "$root/tmp"
# Users that the machine does not have.
{ cat /etc/passwd; echo "vanna:x:64201:64201::/tmp/vanna:/bin/sh"; echo "vgreeter:x:64202:64202::/tmp/vgreeter:/bin/sh"; } >"$work/passwd"
mount --bind "$work/passwd" "$root/etc/passwd"
cd "$root"
exec chroot "$root" "$@"
