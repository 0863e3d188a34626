#!/usr/bin/env bash
# Makes the packages anew. make.sh BUILD
set -eu
earlier=$1/vantory_0.1-1_amd64.deb
: >"$earlier"
cmake --build "$1"
cmake --build "$1" --target package
ls -l "$1"/*.deb
[ ! -e "$earlier" ] || { echo "The packages of an earlier version still lie beside these."; exit 1; }
