#!/usr/bin/env bash
# What a Mac's user installs by: the archive's script, with stand-ins for the programs.
. "$(dirname "$0")/lib.sh"
source=$(cd "$here/../.." && pwd)
also=("$source/packaging")
begin ordinary "$@"

packaging=$work/packaging/macos archive=$work/archive
agent=share/vantory/com.quarrywell.vantory.daily.plist
put "$archive/bin/vantory" "#!/bin/sh"
put "$archive/libexec/vantory/vantory-due" "#!/bin/sh"
chmod +x "$archive/bin/vantory" "$archive/libexec/vantory/vantory-due"
mkdir -p "$archive/share/vantory" && cp "$packaging/com.quarrywell.vantory.daily.plist.in" "$archive/$agent"
cp "$packaging/install.sh" "$archive"
install_to() { (cd "$work" && sh "$archive/install.sh" "$@") >"$work/out" 2>"$work/err"; code=$?; }
starts() { /usr/bin/python3 -c 'import plistlib,sys; a=plistlib.load(open(sys.argv[1],"rb")); assert a["ProgramArguments"][0] == sys.argv[2], a' "$1/$agent" "$1/bin/vantory"; }

odd="a \"b\" & <c>"
for time in first second; do
  install_to "$odd"
  check "the $time installation puts all in its place" eval 'ended 0 && [ -x "$work/$odd/bin/vantory" ] && [ -x "$work/$odd/libexec/vantory/vantory-due" ] && grep -qF "$work/$odd/bin/vantory" "$work/out"'
  check "the agent starts the program where it lies" starts "$work/$odd"
done
mkdir -m 555 "$work/others"
is_root || { install_to "$work/others"; check "a folder that cannot be written is told" eval 'ended 1 && grep -q "name another" "$work/err" && [ -z "$(ls "$work/others")" ]'; }
summary
