#!/usr/bin/env bash
# What lies in the packages, as Debian's own tools judge it. files.sh FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
need dpkg-deb lintian hardening-check objdump desktop-file-validate appstreamcli systemd-analyze xmllint
folder=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for package in "$folder"/*.deb; do dpkg-deb -x "$package" "$work/root"; done
usr=$work/root/usr

no_errors() { lintian --allow-root --fail-on error "$@"; }
check "lintian finds no error" no_errors "$folder"/*.deb
lintian --allow-root "$folder"/*.deb

# "fortified" looks for calls that a small helper may not have.
mapfile -t programs < <(find "$usr/bin" "$usr/libexec/vantory" -type f)
check "there are programs" [ "${#programs[@]}" -ge 5 ]
check "all are protected as Debian's own" hardening-check --nofortify --nocfprotection "${programs[@]}"
check "... and calls of the C library are, where there are such" hardening-check --nocfprotection "$usr/bin/vantory"
jumps_protected() {
  local program
  for program in "${programs[@]}"; do objdump -d "$program" | grep -q endbr64 || { echo "$program"; return 1; }; done
}
[ "$(uname -m)" != x86_64 ] || check "... and jumps" jumps_protected
check "none names the folder that it was built in" not grep -lF "$(realpath "$folder")" "${programs[@]}"

for file in man/man1/vantory.1.gz bash-completion/completions/vantory zsh/vendor-completions/_vantory \
  fish/vendor_completions.d/vantory.fish vantory/QWKeys.plist "vantory/Vantory User Manual.pdf" \
  icons/hicolor/{48x48/apps/com.quarrywell.Vantory.png,scalable/apps/com.quarrywell.Vantory.svg}; do
  check "${file##*/}" [ -s "$usr/share/$file" ]
done

check "definitions of applications" eval '[ "$(ls "$usr"/share/vantory/catalogs/*.plist | wc -l)" -ge 19 ]'

for entry in "$usr"/share/applications/*.desktop; do check "${entry##*/}" desktop-file-validate "$entry"; done
for info in "$usr"/share/metainfo/*.xml; do check "${info##*/}" appstreamcli validate --no-net "$info"; done
started_by_bus() {
  local service program
  service=$(echo "$usr"/share/dbus-1/services/*.service)
  [ "$(sed -n 's/^Name=//p' "$service")" = "$(basename "$service" .service)" ] || return 1
  grep -q '^DBusActivatable=true$' "$usr/share/applications/$(basename "$service" .service).desktop" || return 1
  for program in $(sed -n 's/^Exec=//p' "$service"); do [ -x "$usr/${program#/usr/}" ] || { echo "$program"; return 1; }; done
}
check "what the session bus starts is there, under the desktop entry's name" started_by_bus
check "the polkit policy" xmllint --noout --nonet "$usr"/share/polkit-1/actions/com.quarrywell.vantory.policy
types_agree() {
  local type
  for type in $(sed -n 's/^MimeType=//p' "$usr"/share/applications/*.desktop | tr ';' ' '); do
    grep -q "\"$type\"" "$usr"/share/mime/packages/*.xml && grep -q "<mediatype>$type<" "$usr"/share/metainfo/*.xml &&
      [ -s "$usr/share/icons/hicolor/scalable/mimetypes/${type//\//-}.svg" ] || { echo "$type"; return 1; }
  done
}
check "each project type is declared, has an icon, and is told to software centers" types_agree

# The service manager wants to see the program that a unit starts.
mkdir -m 700 "$work/units" "$work/run"
cp "$usr"/lib/systemd/user/* "$work/units"
sed -i "s|/usr/bin/vantory|$usr/bin/vantory|" "$work"/units/*.service
units_are_valid() { XDG_RUNTIME_DIR=$work/run systemd-analyze --user verify "$work"/units/* && [ ! -s "$work/check" ]; }
check "the user's units" units_are_valid
summary
