#!/usr/bin/env bash
# Makes the packages anew. make.sh BUILD
set -eu
rm -f "$1"/*.deb
cmake --build "$1"
cmake --build "$1" --target package
ls -l "$1"/*.deb
