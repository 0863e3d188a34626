#!/usr/bin/env bash
# The README's own commands on a fresh machine, with nothing in it but the checkout and, where there is one, this
# machine's compiler cache. fresh_machine.sh CHECKOUT
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/lib.sh"
. "$here/../packages/fresh_root.sh"
is_root || skip "needs root"
need mmdebstrap apt-get unshare git
in_namespace "$@"
checkout=$(realpath "$1")
work=$(mktemp -d /var/tmp/vantory-fresh-XXXXXX)
root=$work/root
trap remove_root EXIT
trap 'exit 1' INT TERM HUP

# In the same place as here, so that the cache knows the files again.
bring_checkout() {
  mkdir -p "$root$checkout"
  (cd "$checkout" && git ls-files -z -co --exclude-standard | tar -c --null -T - --ignore-failed-read) 2>/dev/null |
    tar -x -C "$root$checkout"
}

# Whatever else the README needs is asked for by its own commands.
lend_cache() {
  local cache
  cache=$(ccache --get-config=cache_dir 2>/dev/null) || return 0
  { apt update && apt install ccache; } >/dev/null && rm -rf "$root"/var/lib/apt/lists/*
  mkdir -p "$cache" "$root/root/.cache/ccache" && mount --bind "$cache" "$root/root/.cache/ccache"
}

# Runs lines of shell in that checkout, with this shell's options for the compiler; where they fail, the end of what they
# printed is told.
there() {
  inside HOME=/root CXXFLAGS="${CXXFLAGS-}" sh -ec "cd '$checkout'; $1" </dev/null >"$work/output" 2>&1 && return
  tail -n 15 "$work/output"
  return 1
}

# The commands of a chapter of the README.
commands_of() { sed -n "/^## $1/,/^## [^$1]/s/^    //p" "$checkout/README.md"; }

all_installed() {
  local set name
  read_package_sets "$checkout"
  for set in "${!packages[@]}"; do
    for name in ${packages[$set]}; do
      inside dpkg-query -W -f '${db:Status-Status}\n' ${name//|/ } 2>/dev/null | grep -qx installed || { echo "$set: $name"; return 1; }
    done
  done
}

make_root
bring_checkout
lend_cache
echo "a fresh system after $SECONDS s"
check "./demo" there ./demo
echo "... after $SECONDS s"
check "the commands of \"Build\"" there "$(commands_of Build)"
echo "... after $SECONDS s"
check "... leave the program" [ -x "$root$checkout/build/release/vantory" ]
check "... and the window" [ -x "$root$checkout/build/release/vantory-window" ]
check "./test, as far as its list of tests" there "./test -N"
check "... which is long" [ "$(grep -c '^ *Test *#' "$work/output")" -gt 250 ]
echo "... after $SECONDS s"
check "every set can be installed" there "scripts/install-dependencies build manual test check package"
check "... whole" all_installed
echo "... after $SECONDS s"
summary
