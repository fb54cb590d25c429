#!/bin/sh
# Prints the table of how right and how fast frames are read, beside Tesseract on the whole frame,
# and what that makes of looks and taps:
#   scripts/bench-text.sh FOLDER [OPTION...]
# TANDREL_SCREENS may name a folder of real screenshots with an index.json of their lines.
set -eu
folder=$1
shift
export OMP_THREAD_LIMIT=1
"$folder/text_table" "$@"
echo
"$folder/look_and_tap"
