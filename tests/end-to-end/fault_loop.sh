#!/usr/bin/env bash
# Kills the program, or fails a system call, at every so-many-th step of each task: `fault_loop.sh PROGRAM EVERY`. To
# try every step takes minutes.
. "$(dirname "$0")/lib.sh"
begin ordinary "$@"
need strace
strace -o "$work/trace" true 2>/dev/null || skip "tracing is not permitted here"
exec /usr/bin/python3 "$(dirname "${BASH_SOURCE[0]}")/fault_loop.py" "$program" --every "${2:-20}"
