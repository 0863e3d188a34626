#!/usr/bin/env bash
# What packaging/homebrew/release makes: homebrew.sh CHECKOUT. The formula belongs to the archive just made, whose sources
# configure as the formula says. Nothing here can run Homebrew.
set -uo pipefail
checkout=$1
git -C "$checkout" rev-parse HEAD >/dev/null 2>&1 || { echo "skipped: this is no checkout of git"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL $*"; exit 1; }

"$checkout/packaging/homebrew/release" "$work/made" || fail "nothing is made"
formula=$work/made/vantory.rb
told() { sed -n "s/^  $1 \"\(.*\)\"$/\1/p" "$formula"; }
archive=$work/made/$(basename "$(told url)")
[ -f "$archive" ] || fail "the formula's address names another archive: $(told url)"
sha256sum --quiet -c <<<"$(told sha256)  $archive" || fail "the checksum is another archive's"
! grep -n '@[a-z0-9]*@' "$formula" || fail "something is not filled in"
if command -v ruby >/dev/null; then ruby -c "$formula" || fail "it is no Ruby"; fi
[ "$(grep -cE '^ *(class|def|test do)' "$formula")" = "$(grep -cE '^ *end$' "$formula")" ] || fail "its blocks do not end"

tar -xzf "$archive" -C "$work" || fail "the archive cannot be unpacked"
sources=$work/$(basename "$archive" .tar.gz)
diff <(git -C "$checkout" ls-tree -r --name-only HEAD | sort) <(cd "$sources" && find . ! -type d -printf '%P\n' | sort) ||
  fail "the archive holds something else than the commit"
mapfile -t options < <(grep -o '"-D[^"]*"' "$formula" | tr -d '"')
cmake -S "$sources" -B "$work/build" -G Ninja "${options[@]}" >"$work/log" 2>&1 || { cat "$work/log"; fail "it does not configure"; }
! grep -A9 'Manually-specified variables were not used' "$work/log" || fail "an option of the formula is unknown"
grep -q "VERSION $(basename "$sources" | cut -d- -f2) " "$sources/CMakeLists.txt" || fail "the version is another one"
echo "$(basename "$archive") and its formula are as they should be"
