#!/usr/bin/env bash
# Real editors in a fresh system, with the packages installed: each is set up, spoilt, trashed and restored as its user
# would do it. run.sh FOLDER-OF-PACKAGES [EDITOR...]
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
. "$here/../packages/fresh_root.sh"
is_root || skip "needs root"
need mmdebstrap apt-get unshare
in_namespace "$@"
editors=$here/../real-applications
folder=$(realpath "$1")
shift
[ $# -gt 0 ] || set -- $(cd "$editors" && grep -l '^PACKAGES' -- *.py | sed 's/\.py$//')
work=$(mktemp -d /var/tmp/vantory-editors-XXXXXX)
root=$work/root
trap remove_root EXIT
trap 'exit 1' INT TERM HUP

packages_of() { sed -n "s/^PACKAGES = '\(.*\)'/\1/p" "$editors/$1.py"; }

install_packages() {
  mkdir "$root/packages"
  cp "$folder"/*.deb "$root/packages"
  apt update && apt install xvfb xfwm4 xdotool imagemagick dbus gvfs libglib2.0-bin libgtk-3-bin at-spi2-core python3-pyatspi procps \
    qt6-qpa-plugins $(cd "$root" && printf '/%s\n' packages/*.deb) $(for editor; do packages_of "$editor"; done)
}

# A home of its own for each.
try() {
  local editor=$1 verdict what
  inside useradd -m -s /bin/sh "$editor"
  install -d -m 700 -o "$(inside id -u "$editor")" "$root/run/$editor"
  inside runuser -u "$editor" -- env HOME="/home/$editor" XDG_RUNTIME_DIR="/run/$editor" PATH=/usr/local/bin:/usr/bin:/bin \
    timeout 400 dbus-run-session -- python3 /editors/loop.py "$editor" >"$work/out" 2>"$work/err" </dev/null
  code=$?
  check "$editor: gone through to the end" ended 0
  while read -r verdict what; do check "$editor: $what" [ "$verdict" = yes ]; done < <(grep -E '^(yes|no) ' "$work/out")
}

make_root
install_packages "$@" >"$work/log" 2>&1 || { tail -n 5 "$work/log"; skip "the packages cannot be installed here"; }
cp -r "$editors" "$root/editors"
mkdir -p -m 1777 "$root/tmp/.X11-unix"
for editor; do try "$editor"; done
summary
