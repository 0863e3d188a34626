#!/usr/bin/env bash
# The packages on a fresh system: installed, used by an ordinary user, upgraded, removed, purged. clean_root.sh FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
. "$here/../packages/fresh_root.sh"
is_root || skip "needs root"
need mmdebstrap apt-get dpkg-deb unshare setpriv lsattr getcap Xvfb xdotool
in_namespace "$@"
folder=$1
work=$(mktemp -d /var/tmp/vantory-packages-XXXXXX)
root=$work/root
clean_up() {
  chattr -R -f -i "$root/home" 2>/dev/null
  remove_root
}
trap clean_up EXIT

# --- The system ------------------------------------------------------------------------------------------------------

# With a home of the usual kind, and no right but an ordinary user's.
anna() {
  inside setpriv --reuid=anna --regid=anna --init-groups env -C /home/anna HOME=/home/anna DISPLAY="${display:-}" \
    timeout -k 5 60 "$@" </dev/null >"$work/out" 2>"$work/err"
  code=$?
}
installed() { inside dpkg-query -W -f '${Status} ${Version}' "$1" | grep -qxF "install ok installed $2"; }
libraries_found() { not grep -q "not found" <(inside sh -c 'ldd /usr/bin/vantory* /usr/libexec/vantory/*' 2>&1); }
helper_may_lock() { getcap "$root/usr/libexec/vantory/vantory-lock-helper" | grep -q 'cap_linux_immutable=ep$'; }
is_locked() { [[ "$(lsattr -d "$1")" == ????i* ]]; }

# bring VERSION: the packages as a later build of that version would name them.
bring() {
  local package name unpacked=$work/unpacked
  for package in "$folder"/*.deb; do
    name=$(dpkg-deb -f "$package" Package)
    rm -rf "$unpacked"
    dpkg-deb -R "$package" "$unpacked"
    sed -i -E "s/^Version: .*/Version: $1/; s/vantory \(= [^)]*\)/vantory (= $1)/" "$unpacked/DEBIAN/control"
    dpkg-deb --root-owner-group -Znone -b "$unpacked" "$root/tmp/$name.deb" >/dev/null
  done
}

make_root
check "the system is there" apt update
inside useradd -m -s /bin/sh anna
home=$root/home/anna
motion=Library/Preferences/com.apple.motion.plist
put "$home/$motion" "years of settings"
inside chown -R anna: /home/anna

# --- The command line ------------------------------------------------------------------------------------------------

bring 1.0-1
check "vantory is installed" apt install /tmp/vantory.deb
check "... without Qt" eval '! inside dpkg-query -W "*qt[56]*" 2>/dev/null | grep .'
check "... with all libraries" libraries_found
check "... and the right to lock" helper_may_lock
anna vantory -backup Clean
check "backs up" ran
anna vantory -list
check "lists" eval 'ran && grep -q Clean "$work/out"'
put "$home/$motion" "spoilt"
inside chown anna: "/home/anna/$motion"
anna vantory -restore "/home/anna/Library/Application Support/Quarrywell/Vantory/Backups/Clean.vnt"
check "restores" eval 'ran && holds "$home/$motion" "years of settings"'
anna vantory -lock motionPrefs
check "locks, as an ordinary user" is_locked "$home/$motion"
anna vantory -unlock motionPrefs
check "unlocks" not is_locked "$home/$motion"
anna vantory
check "says that there is no window" eval 'ended 1 && grep -q "No window is installed" "$work/err"'
check "vantory-catalogs is installed" apt install /tmp/vantory-catalogs.deb
anna vantory --list-items
check "... and its applications known" eval 'ran && grep -q "^kdenlivePrefs .*" "$work/out" && [ ! -s "$work/err" ]'
inside env HOME=/root vantory --list-items >"$work/out" 2>"$work/err"
check "... and trusted by root" grep -q "^kdenlivePrefs " "$work/out"

# A file system that holds no capabilities.
helpers=$root/usr/libexec/vantory
mount -t ramfs ramfs "$helpers" && cp "$root/usr/bin/vantory" "$helpers/vantory-lock-helper"
inside /var/lib/dpkg/info/vantory.postinst configure >"$work/out" 2>"$work/err"
code=$?
check "a helper without its right is no error, but said" eval 'ended 0 && grep -q "could not be given its capability" "$work/err"'
umount "$helpers"

# --- The window ------------------------------------------------------------------------------------------------------

check "what a desktop has" apt install shared-mime-info desktop-file-utils
check "vantory-gui is installed" apt install /tmp/vantory-gui.deb
check "... with all libraries" libraries_found
check "... its project files are known" [ -s "$root/usr/share/mime/application/x-vantory-fcp.xml" ]
check "... and opened with it" grep -q x-vantory-fcp=com.quarrywell.Vantory.desktop "$root/usr/share/applications/mimeinfo.cache"

# On a display of this machine, so that the packages' own dependencies must do.
open_window() {
  mkdir -p "$root/tmp/.X11-unix" && mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix" &&
    DISPLAY=$display timeout 60 xdotool search --sync --onlyvisible --name '^Vantory'
}
mkdir -p -m 1777 /tmp/.X11-unix
mkfifo "$work/display"
Xvfb -displayfd 3 -noreset -screen 0 1280x800x24 3>"$work/display" >/dev/null 2>&1 &
server=$!
display=:$(timeout 30 head -n 1 "$work/display")
anna vantory &
check "the window opens" open_window
[ -z "${PICTURE:-}" ] || DISPLAY=$display import -window root "$PICTURE"
kill "$server"
wait
display=

# --- Upgrade ---------------------------------------------------------------------------------------------------------

inside groupadd editors
lend() { inside $(documented README.md "sudo dpkg-statoverride --update --add root editors 0750 /usr/libexec/vantory/vantory-lock-helper") && inside $(documented README.md "sudo dpkg-reconfigure vantory"); }
lent() { [ "$(inside stat -c %a:%G /usr/libexec/vantory/vantory-lock-helper)" = 750:editors ] && helper_may_lock; }
check "the right to lock is lent to a group" eval 'lend && lent'
before=$(manifest "$home")
bring 1.1-1
check "all are upgraded" apt install /tmp/vantory.deb /tmp/vantory-gui.deb /tmp/vantory-catalogs.deb
check "... vantory" installed vantory 1.1-1
check "... vantory-gui" installed vantory-gui 1.1-1
check "... with the right to lock, for those whom the administrator chose" lent
inside dpkg-statoverride --remove /usr/libexec/vantory/vantory-lock-helper

# --- Removal ---------------------------------------------------------------------------------------------------------

check "the service manager is there" apt install systemd
check "the daily backup is switched on for all users" inside $(documented README.md "sudo systemctl --global enable vantory-autobackup.timer")
check "... from the next login" [ -L "$root/etc/systemd/user/timers.target.wants/vantory-autobackup.timer" ]
check "both are removed" inside $(documented README.md "sudo apt remove vantory vantory-gui") -qy
check "... the programs" [ ! -e "$root/usr/bin/vantory" ]
check "... what desktops knew of them" not grep -rqi vantory "$root/usr/share/mime" "$root/usr/share/applications"
check "both are purged" apt purge vantory vantory-gui
rm -f "$root"/tmp/vantory*.deb
check "... and nothing of them is left" eval 'left=$(cd "$root" && find etc usr var opt root tmp -xdev -iname "*vantory*" -print); echo "$left"; [ -z "$left" ]'
check "a user's backups and settings are untouched" [ "$(manifest "$home")" = "$before" ]
summary
