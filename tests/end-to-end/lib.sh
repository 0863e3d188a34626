# shellcheck shell=bash
# What the end-to-end scripts share. Each is `NAME.sh PROGRAM`: it prints PASS and FAIL lines and "N passed, N failed",
# and ends with 0, with 1, or with 77 and the reason when this machine lacks something. Everything happens in scratch
# homes of the form /tmp/NAME, with nothing of the caller's environment.
set -u
umask 022
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
passed=0 failed=0
nobody=$(id -u nobody 2>/dev/null || echo 65534)
also=()  # files that begin() puts beside the program
system=${VANTORY_SYSTEM:-linux}  # or "macos", whose calls are emulated

skip() { echo "skipped: $*"; exit 77; }
need() { local tool; for tool; do command -v "$tool" >/dev/null || skip "$tool is not installed"; done; }

# begin ordinary|any PROGRAM [ARGUMENT...]: sets `work` (scratch folder), `homes` (what a home's path begins with) and `program`.
# Started by root, the script runs again in a root of its own, where "ordinary" becomes the user nobody and "any" stays
# root. Where namespaces are not to be had, "ordinary" makes do without.
begin() {
  [ -x "${2:-}" ] || { echo "usage: $0 PROGRAM"; exit 2; }
  if [ -n "${VANTORY_WORK:-}" ]; then
    work=$VANTORY_WORK homes=$VANTORY_HOMES program=$work/vantory
    pass_over_foreign_leaks
    return
  fi
  [ "$(basename "$2")" != vantory_on_darwin ] || system=macos
  need setpriv timeout chattr /usr/bin/python3
  work=$(mktemp -d /tmp/vantory-e2e-XXXXXX)
  homes=$work-
  trap clean_up EXIT
  trap 'exit 1' INT TERM HUP
  chmod 755 "$work"
  mkdir -p "$work/tmp/work"
  cp "$2" "$work/tmp/work/vantory"
  cp "$(dirname "$2")/vantory-lock-helper" "$work/tmp/work/"  # without its capability, until a script installs it
  cp -R "$here"/*.sh "$here"/*.py "$here/../faults/fault_loop.py" "${also[@]}" "$work/tmp/work/"
  if [ "$(id -u)" != 0 ]; then
    work=$work/tmp/work program=$work/vantory
    pass_over_foreign_leaks
    return
  fi
  local identity=()
  [ "$1" = any ] || identity=(setpriv "--reuid=$nobody" "--regid=$nobody" --clear-groups)
  [ "$1" = any ] || chown -R "$nobody" "$work/tmp"
  if unshare -mpf --propagation private mount -t proc proc "$work/tmp" 2>/dev/null; then
    timeout -k 10 290 "$here/private_root.sh" "$work" "${identity[@]}" $(clean_environment) \
      VANTORY_WORK=/tmp/work VANTORY_HOMES=/tmp/ VANTORY_SYSTEM=$system bash "/tmp/work/$(basename "$0")" /tmp/work/vantory "${@:3}"
  elif [ "$1" = any ]; then
    skip "namespaces are not permitted here"
  else
    timeout -k 10 290 "${identity[@]}" $(clean_environment) VANTORY_WORK="$work/tmp/work" VANTORY_HOMES="$homes" VANTORY_SYSTEM=$system \
      bash "$work/tmp/work/$(basename "$0")" "$work/tmp/work/vantory" "${@:3}"
  fi
  exit $?
}

# A window that hands its files over may end while another thread still reads the fonts.
pass_over_foreign_leaks() {
  echo leak:libfontconfig >"$work/leaks"
  export LSAN_OPTIONS="suppressions=$work/leaks:print_suppressions=0"
}

clean_environment() { echo "env -i PATH=/usr/bin:/bin:/usr/sbin:/sbin LANG=C.UTF-8 ${ASAN_OPTIONS:+ASAN_OPTIONS=$ASAN_OPTIONS}"; }

clean_up() {
  local top=${homes%-}
  [ "$(id -u)" != 0 ] || chattr -R -f -i "${top:?}"* 2>/dev/null
  chmod -R u+rwX "${top:?}"* 2>/dev/null
  rm -rf --one-file-system "${top:?}"*
}

is_root() { [ "$(id -u)" = 0 ]; }

# documented FILE COMMAND: the command of a document of the checkout, so that a test runs what readers are told.
documented() { grep -qF -- "\`$2\`" "$here/../../$1" && echo "${2#sudo }" || { echo false; return 1; }; }

# Sets `packages`, the sets of scripts/install-dependencies in a checkout, by their names.
read_package_sets() { eval "$(sed -n '/^declare -A packages/,/^)/{s/-A/-gA/;p}' "$1/scripts/install-dependencies")"; }

# Makes the scratch home NAME the present one and names its folders.
use_home() {
  home=$homes$1
  preferences=$home/Library/Preferences
  user_data="$preferences/Final Cut Pro User Data"
  library="$home/Library/Application Support/Quarrywell/Vantory/Backups"
  log=$home/Library/Logs/Quarrywell/Vantory.task.1.log
  settings=$preferences/com.quarrywell.Vantory.plist
  trash=$home/.local/share/Trash trashed=$home/.local/share/Trash/files
  [ "$system" = linux ] || trash=$home/.Trash trashed=$home/.Trash
  mkdir -p "$preferences"
}

# put FILE [TEXT]
put() { mkdir -p "$(dirname "$1")" && printf '%s\n' "${2-$1}" >"$1"; }

# As an ordinary user; root becomes nobody for it.
as_user() {
  local drop=()
  ! is_root || drop=(setpriv "--reuid=$nobody" "--regid=$nobody" --clear-groups)
  timeout -k 5 "${limit:-60}" "${drop[@]}" $(clean_environment) HOME="$home" XDG_RUNTIME_DIR="$work/run" "$@" </dev/null
}

# Runs the program as an ordinary user. Then `code` is its exit code, $work/out and $work/err what it printed.
run() { as_user "$program" "$@" >"$work/out" 2>"$work/err"; code=$?; }

# on_a_display NAME: begins the script anew on a bus and a display of its own, in the scratch home NAME. At the end the
# process `window`, if there is one, is ended too.
on_a_display() {
  use_home "$1"
  if [ -z "${ON_A_DISPLAY:-}" ]; then
    mkdir -p -m 1777 /tmp/.X11-unix
    mkdir -p -m 700 "$work/run"
    limit=250 as_user env ON_A_DISPLAY=1 VANTORY_WORK="$work" VANTORY_HOMES="$homes" dbus-run-session -- bash "$0" "$program"
    exit
  fi
  Xvfb -displayfd 1 -noreset -screen 0 1024x768x24 -nolisten tcp >"$work/display" 2>"$work/xvfb" &
  server=$!
  trap 'kill $server ${window:-} 2>/dev/null' EXIT
  soon [ -s "$work/display" ] || skip "no X server can be started here: $(tail -n 1 "$work/xvfb")"
  DISPLAY=:$(cat "$work/display")
  export DISPLAY
}

# check WHAT COMMAND...: passes when the command succeeds.
check() {
  local what=$1
  shift
  if "$@" >"$work/check" 2>&1; then
    passed=$((passed + 1))
    echo "PASS $what"
  else
    failed=$((failed + 1))
    echo "FAIL $what [$*]"
    head -n 15 "$work/check" "$work/out" "$work/err" 2>/dev/null | sed "s/^/     /; \$a\\     exit code ${code:-none}"
  fi
}

summary() { echo "$passed passed, $failed failed"; [ "$failed" = 0 ]; exit; }

# soon COMMAND...: whether it succeeds within fifteen seconds.
soon() { local i; for ((i = 0; i < 150; ++i)); do "$@" >/dev/null 2>&1 && return; sleep 0.1; done; return 1; }
not() { ! "$@"; }
ended() { [ "$code" = "$1" ]; }
printed() { [ "$(cat "$work/out")" = "$1" ]; }
said() { [ "$(cat "$work/err")" = "$1" ]; }
# Whether one of the lines on standard error is this one.
told() { grep -qxF -- "$1" "$work/err"; }
ran() { ended 0 && said ""; }
# Whether the log has an entry of exactly this text.
logged() { sed 's/^[^+]*+0000 - //' "$log" | grep -qxF -- "$1"; }
holds() { [ "$(cat "$1")" = "$2" ]; }
count() { find "$@" -printf x 2>/dev/null | wc -c; }
no_leftovers() { [ -z "$(find "$home" -name '.vantory-*' -print)" ]; }
manifest() { /usr/bin/python3 "$here/manifest.py" "$1"; }
plist() { /usr/bin/python3 "$here/plist.py" "$@"; }
