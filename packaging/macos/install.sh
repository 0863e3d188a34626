#!/bin/sh
# install.sh [FOLDER]: puts Vantory below /usr/local, or below the folder that is named, such as ~/.local.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
folder=${1:-/usr/local}
if ! mkdir -p "$folder" || [ ! -w "$folder" ]; then
  echo "install.sh: $folder cannot be written: name another, or use sudo." >&2
  exit 1
fi
# Not over what is there: the system ends a program whose file has changed under its signature.
(cd "$here" && tar -cf - bin libexec share) | tar -C "$folder" -xUof -
echo "Vantory is $folder/bin/vantory. What is to be known on macOS: $folder/share/doc/vantory/macos.md"
