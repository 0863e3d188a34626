#!/usr/bin/env bash
# The same for locking, by an ordinary user with the lock helper: `fault_loop_lock.sh PROGRAM EVERY DRIVER`.
. "$(dirname "$0")/lib.sh"
[ "$(id -u)" = 0 ] || skip "needs root, to install the helper"
also=("${3:-}")
begin any "$@"
need strace setcap lsattr
setcap cap_linux_immutable=ep "$work/vantory-lock-helper" || skip "no capabilities can be given here"
lsattr -d /tmp >/dev/null 2>&1 || skip "the file system of the scratch folder knows no locks"
exec /usr/bin/python3 "$(dirname "${BASH_SOURCE[0]}")/fault_loop.py" "$program" "$work/services_driver" --every "$2" lock
