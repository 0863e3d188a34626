#!/usr/bin/env bash
# The user manual holds its pictures, every task of the program and every file that it tells of.
# Usage: manual.sh PROGRAM
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
manual=$(dirname "${1:-.}")/"Vantory User Manual.pdf"
[ -n "${VANTORY_WORK:-}" ] || [ -f "$manual" ] || skip "the user manual was not built"
also=("$manual")
begin ordinary "$@"
need pdftotext pdfimages
manual=$work/"Vantory User Manual.pdf"

text=$(pdftotext -layout "$manual" -)
says() { grep -qF -- "$1" <<<"$text"; }
check "it has pictures" [ "$(pdfimages -list "$manual" | grep -c ' image ')" -ge 5 ]
check "its pages have their numbers in the contents" eval '[ "$(grep -cE "\.{10} *[0-9]+$" <<<"$text")" -ge 15 ]'
check "it is that of this version" says "Version $("$program" --version | cut -d" " -f2)"
for option in $("$program" --help | grep -oE '^  -[a-z]{2,}'); do check "it tells of $option" says "vantory $option"; done
for option in $("$program" --help | grep -oE '^  --[a-z0-9-]+'); do check "it tells of $option" says "$option"; done
for name in Vantory.1.log Vantory.task.1.log "Vantory Logs.zip" com.quarrywell.Vantory.plist; do
  check "it tells of $name" says "$name"
done
summary
