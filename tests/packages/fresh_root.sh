# shellcheck shell=bash
# A fresh system of the distribution that this machine is, for scripts of lib.sh that set `work` and `root`.

# Begins the script anew among mounts and processes of its own, where that is permitted.
in_namespace() {
  [ "${VANTORY_NAMESPACE:-}" != 1 ] || return 0
  unshare -mpf --propagation private true 2>/dev/null || skip "namespaces are not permitted here"
  exec env VANTORY_NAMESPACE=1 unshare -mpf --kill-child --mount-proc --propagation private "$0" "$@"
}

# What Debian calls essential, and apt, from where this machine gets its own packages.
make_root() {
  local distribution
  distribution=$(. /etc/os-release && echo "${ID^}")
  apt-get indextargets --format 'deb $(REPO_URI) $(CODENAME) $(COMPONENT)' 'Identifier: Packages' \
    "Origin: $distribution" >"$work/sources"
  [ -s "$work/sources" ] || skip "apt has no sources of $distribution here"
  apt-config dump Acquire | grep -E '^Acquire::(Check|http)' >"$work/apt.conf"
  mmdebstrap --variant=apt --dpkgopt=force-unsafe-io --aptopt="$work/apt.conf" "" "$root" "$work/sources" >"$work/log" 2>&1 ||
    { tail -n 5 "$work/log"; skip "no fresh system can be made: no network, or no archive in reach"; }
  mount --bind "$root" "$root"
  mount -t proc proc "$root/proc"
  mount --rbind /dev "$root/dev"
  mount --rbind /sys "$root/sys"
  mount -t tmpfs tmpfs "$root/run"
  cp -L /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null
  printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
  chmod 755 "$root/usr/sbin/policy-rc.d"
}

# Nothing that might still be mounted from elsewhere is deleted.
# A demo that failed may leave a locked file.
remove_root() {
  chattr -R -f -i "$root"/{home,tmp} 2>/dev/null
  umount -lR "$root" 2>/dev/null
  grep -qF " $work/" /proc/self/mounts || rm -rf --one-file-system "$work"
}

inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
apt() { inside apt-get -qy --no-install-recommends "$@" </dev/null; }
