#!/bin/sh
# How well the payment guard tells payments from harmless taps:
#   scripts/guard-report.sh PROGRAM
# Prints one report on the cases that the rules were tuned with, one on those that were held back,
# and one on real screenshots where TANDREL_SCREENS names a folder of them with an index.json.
set -eu
program=$1
cases=share/tandrel/guard/cases

echo "== cases that the rules were tuned with"
"$program" --guard-report "$cases"/*.json
echo
echo "== cases that were held back"
"$program" --guard-report "$cases"/held_back/*.json
echo
if [ -z "${TANDREL_SCREENS:-}" ]; then
    echo "== real screenshots: skipped, TANDREL_SCREENS is not set"
    exit 0
fi
list=$(mktemp)
trap 'rm -f "$list"' EXIT
python3 scripts/screenshot_cases.py "$TANDREL_SCREENS" >"$list"
echo "== real screenshots in $TANDREL_SCREENS"
"$program" --guard-report "$list"
