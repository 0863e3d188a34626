#!/usr/bin/env bash
# Builds the same source once more, in another folder and under other circumstances, and expects the same packages.
# reproducible.sh FOLDER CHECKOUT
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
need git cmake
folder=$1 checkout=$2
date=$(git -C "$checkout" log -1 --format=%ct 2>/dev/null) || skip "this is no checkout: the date of the commit is not known"
work=$(mktemp -d /var/tmp/vantory-packages-XXXXXX)
trap 'chmod -R u+rwX "$work"; rm -rf "$work"' EXIT
source="$work/another place"
mkdir "$source"
(cd "$checkout" && git ls-files -z -co --exclude-standard | tar -c --null -T - --ignore-failed-read) 2>/dev/null | tar -x -C "$source"

build_anew() {
  cd "$source" && umask 077 && export CCACHE_DISABLE=1 SOURCE_DATE_EPOCH="$date" TZ=Pacific/Auckland LC_ALL=C &&
    cmake --preset package -B ../output && cmake --build ../output && cmake --build ../output --target package
}
(build_anew) >"$work/log" 2>&1 || { tail -n 40 "$work/log"; exit 1; }
for package in "$folder"/*.deb; do
  sha256sum "$package" "$work/output/${package##*/}"
  check "${package##*/} is the same again" cmp "$package" "$work/output/${package##*/}"
done
summary
