#!/bin/sh
# install.sh [FOLDER]: puts Vantory below /usr/local, or below the folder that is named, such as ~/.local.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
folder=${1:-/usr/local}
if ! mkdir -p "$folder" || [ ! -w "$folder" ]; then
  echo "install.sh: $folder cannot be written: name another, or use sudo." >&2
  exit 1
fi
folder=$(cd "$folder" && pwd)
# Not over what is there: the system ends a program whose file has changed under its signature.
umask 022
cd "$here"
find bin libexec share -type f | while IFS= read -r file; do
  mkdir -p "$folder/${file%/*}"
  rm -f "$folder/$file"
  cp "$file" "$folder/$file"
done

# Where nobody but the superuser can put another in its place: elsewhere it is not started.
if [ "$(id -u)" = 0 ]; then
  tools=/Library/PrivilegedHelperTools
  mkdir -p "$tools"
  rm -f "$tools/vantory-root-helper"
  cp libexec/vantory/vantory-root-helper "$tools"
fi

# The agent names the program where it lies now.
agent=share/vantory/com.quarrywell.vantory.daily.plist
program=$(printf '%s' "$folder/bin" | sed 's/&/\&amp;/g; s/</\&lt;/g')
while IFS= read -r line; do
  case $line in
    *@bindir@*) printf '%s\n' "${line%%@bindir@*}$program${line#*@bindir@}" ;;
    *) printf '%s\n' "$line" ;;
  esac
done <"$here/$agent" >"$folder/$agent"

echo "Vantory is $folder/bin/vantory. To see whether it works on this Mac: \"$folder/bin/vantory\" --self-check"
echo "What is to be known on macOS: $folder/share/doc/vantory/macos.md. A daily backup: $folder/$agent"
