#!/bin/sh
# The names of our C++ files, each ended by a zero byte; what git ignores is left out.
set -eu
cd "$(dirname "$0")/.."
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp'
