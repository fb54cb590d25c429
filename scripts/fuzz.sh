#!/bin/sh
# Runs the fuzz targets of a build, each for some seconds from its corpus in the tree:
#   scripts/fuzz.sh FOLDER SECONDS [TARGET]
# New finds go to a scratch folder, so the tree stays as it is. An input that fails a target is kept
# in FOLDER/findings/ and ends the run with an error.
set -eu
folder=$1
seconds=$2
only=${3:-}
cd "$(dirname "$0")/.."

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$folder/findings"

failed=0
found=0
for source in fuzz/*/*_fuzz.cpp; do
    target=$(basename "$source" .cpp)
    [ -z "$only" ] || [ "$target" = "$only" ] || continue
    found=1
    corpus="$(dirname "$source")/corpus/$target"
    mkdir -p "$scratch/$target"
    set -- "$scratch/$target"
    [ ! -d "$corpus" ] || set -- "$@" "$corpus"
    log="$scratch/$target.log"
    status=0
    "$folder/bin/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$folder/findings/$target-" "$@" \
        >"$log" 2>&1 </dev/null || status=$?
    if [ "$status" -ne 0 ]; then
        failed=1
        tail -n 60 "$log"
        echo "$target: FAILED; the input is in $folder/findings/"
        continue
    fi
    edges=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    printf '%-28s cov: %6s edges   %10s runs in %s s\n' "$target" "${edges:-?}" "${runs:-?}" "$seconds"
done
[ "$found" -eq 1 ] || { echo "there is no fuzz target ${only}" >&2; exit 1; }
exit "$failed"
