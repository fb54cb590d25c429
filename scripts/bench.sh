#!/bin/sh
# Runs the benchmark programs of a folder, or the one named:
#   scripts/bench.sh FOLDER [ROOM]
set -eu
folder=$1
room=${2:-}

found=0
for program in "$folder"/bench_${room:-*}; do
    [ -x "$program" ] || continue
    found=1
    echo "== ${program##*/}"
    "$program" --benchmark_counters_tabular=true
done
[ "$found" -eq 1 ] || { echo "there is no benchmark ${room:+bench_$room }in $folder" >&2; exit 1; }
