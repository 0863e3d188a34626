#!/usr/bin/env bash
# "cmake --install" as those use it who make packages, and where the superuser's rights are missing. install.sh BUILD
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"

fakeroot=$(command -v fakeroot || true)
DESTDIR="$work/staged" $fakeroot cmake --install "$build" >"$work/out" 2>"$work/err"
code=$?
check "into a staging folder, under ${fakeroot:-the present user}" ran
for file in bin/vantory libexec/vantory/vantory-lock-helper share/doc/vantory/copyright share/doc/vantory/catalogs.md \
  share/polkit-1/actions/com.quarrywell.vantory.policy; do
  check "... $file" [ -e "$work/staged/usr/$file" ]
done

helpers=$work/prefix/libexec/vantory
mkdir -p "$helpers"
cp "$work/staged/usr/libexec/vantory/vantory-lock-helper" "$helpers"
cp "$here/../../packaging/install-rights.cmake" "$work"
home=$work
as_user cmake -DCMAKE_INSTALL_PREFIX="$work/prefix" -Dbuilt_for="$work/prefix" -Dhelper_folder=libexec/vantory -Dpolicy=/dev/null \
  -Dpolkit_actions="$work/actions" -P "$work/install-rights.cmake" >"$work/out" 2>"$work/err"
code=$?
check "without the superuser's rights it is no error" ran
check "... and it says what takes them" grep -qF "setcap cap_linux_immutable=ep $helpers" "$work/out"
check "... and what is missing" grep -qF "$work/actions" "$work/out"

# Elsewhere than it was built for.
homes=$work/
use_home anna
put "$preferences/com.apple.motion.plist"
! is_root || chown -R "$nobody" "$home"
cmake --install "$build" --prefix "$work/elsewhere" >"$work/out" 2>"$work/err"
code=$?
check "another prefix" ran
check "... is not left" eval 'grep -q "was built for" "$work/out" && ! grep -E "^-- (Installing|Up-to-date): " "$work/out" | grep -qvF "$work/elsewhere/"'
printf '#!/bin/sh\ntouch "%s"\n' "$home/asked" >"$work/elsewhere/libexec/vantory/vantory-lock-helper"
as_user "$work/elsewhere/bin/vantory" -lock motionPrefs >"$work/out" 2>"$work/err"
check "... and holds what its programs look for" [ -e "$home/asked" ]
check "... and the session bus starts them there" grep -qxF \
  "Exec=$work/elsewhere/libexec/vantory/vantory-activation $work/elsewhere/bin/vantory-window" \
  "$work/elsewhere/share/dbus-1/services/com.quarrywell.Vantory.service"
summary
