#!/usr/bin/env bash
# Kills the program, or fails a system call, at every so-many-th step of each task: `fault_loop.sh PROGRAM EVERY DRIVER [TASK...]`.
# To try every step takes hours; fault_loop.py does that.
. "$(dirname "$0")/lib.sh"
also=("${3:-}")
begin ordinary "$@"
need strace
strace -o "$work/trace" true 2>/dev/null || skip "tracing is not permitted here"
exec /usr/bin/python3 "$(dirname "${BASH_SOURCE[0]}")/fault_loop.py" "$program" "$work/$(basename "$3")" --every "$2" "${@:4}"
