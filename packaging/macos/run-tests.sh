#!/bin/sh
# Runs the tests that lie beside it, in scratch folders below /tmp, and prints one table; what failed follows it.
set -u
here=$(cd "$(dirname "$0")" && pwd)
log=$(mktemp "${TMPDIR:-/tmp}/vantory-tests-XXXXXX") || exit 1
trap 'rm -f "$log" "$log.all"' EXIT
failed=0

# How many tests the log says that of.
told() { sed -n "s/^\[ *$1 *\] \([0-9][0-9]*\) test.*/\1/p" "$log" | tail -1; }

echo "Vantory's tests on $(sw_vers -productVersion 2>/dev/null || uname -s), $(uname -m)"
printf '%-16s %8s %8s %8s\n' TESTS PASSED FAILED SKIPPED
for tests in "$here"/*_tests; do
  "$tests" --gtest_color=no >"$log" 2>&1
  code=$?
  passed=$(told PASSED) wrong=$(told FAILED) skipped=$(told SKIPPED)
  printf '%-16s %8s %8s %8s' "$(basename "$tests")" "${passed:-0}" "${wrong:-0}" "${skipped:-0}"
  [ "$code" = 0 ] || failed=1
  if [ "$code" != 0 ] && [ -z "$wrong" ]; then printf '  ended with %s' "$code"; fi
  echo
  [ "$code" = 0 ] || { echo; echo "$(basename "$tests"):"; grep -Ev '^\[ *(OK|RUN|-*) *\]' "$log" | tail -200; } >>"$log.all"
done
[ "$failed" = 0 ] || cat "$log.all"
echo "Please send this to https://www.quarrywell.com/support/bug/"
exit "$failed"
