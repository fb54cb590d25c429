#!/bin/sh
# Makes a build folder ready for ninja, if it is not yet:
#   scripts/configure.sh FOLDER [cmake options]
# Ninja itself runs cmake again when a CMake file or the set of sources changes.
set -eu
cd "$(dirname "$0")/.."
folder=$1
shift

options="$folder/options.txt"
if [ -f "$folder/build.ninja" ] && [ "$(cat "$options" 2>/dev/null)" = "$*" ]; then exit 0; fi
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release "$@"
echo "$*" >"$options"
