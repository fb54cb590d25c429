#!/bin/sh
# Collects the texts of the windows from the sources into every catalogue of translations/:
#   scripts/translations.sh [--check]
# With --check it changes nothing and fails if translations/tandrel.ts is not what it would write.
# A new language begins as a copy of that file, such as tandrel_de.ts, with language="de_DE".
set -eu
cd "$(dirname "$0")/.."
PATH=$PATH:/usr/lib/qt6/bin
all=translations/tandrel.ts

collect() {
    lupdate -silent -I src -no-obsolete -locations none -tr-function-alias translate+=ownerText \
        src/app -ts "$@"
}

if [ "${1:-}" = --check ]; then
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    cp "$all" "$folder/"
    collect "$folder/tandrel.ts"
    diff -u "$all" "$folder/tandrel.ts" || { echo "run \`make translations\`" >&2; exit 1; }
else
    collect translations/*.ts
fi
