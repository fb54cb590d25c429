#!/bin/sh
# Draws the pictures of docs/pictures anew, from the programs in a build folder:
#   scripts/make-pictures.sh [BUILD]
# The panel and the phone are pictures of the running application on a display of its own; the other
# windows are drawn by --render-steps.
set -eu
cd "$(dirname "$0")/.."
build=${1:-build}
pictures=docs/pictures
scratch=$(mktemp -d)
app=
server=
finish() {
    [ -z "$app" ] || kill "$app" 2>/dev/null || true
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf "$scratch"
}
trap finish EXIT

# Waits until a file has a line.
await_line() {
    timeout 20 sh -c 'until grep -q "$1" "$2"; do sleep 0.1; done' wait "$1" "$2"
}

mkfifo "$scratch/number"
Xvfb -displayfd 3 -screen 0 1280x1000x24 -nolisten tcp 3>"$scratch/number" 2>/dev/null &
server=$!
read -r number <"$scratch/number"

env -i PATH="$PATH" HOME="$scratch" DISPLAY=":$number" LANG=C.UTF-8 TANDREL_VIRTUAL_PHONE=1 \
    TANDREL_ENGINE_PORT=0 TANDREL_AIRPLAY_PORT=0 "$build/bin/tandrel-app" >"$scratch/said" 2>&1 &
app=$!
await_line 'Ctrl-C ends it' "$scratch/said"
api=$(sed -n 's/^.*The API listens on \([^,]*\),.*$/\1/p' "$scratch/said")

tap() {
    curl -sf -X POST "$api/tap" -d "{\"x\":$1,\"y\":$2,\"fraction\":true}" >/dev/null
    curl -sf "$api/settle" >/dev/null
}
timeout 20 sh -c 'until curl -sf "$1/devices" | grep -q "\"bluetooth\":true"; do sleep 0.1; done' \
    wait "$api"
curl -sf -o "$pictures/virtual-phone.png" "$api/screenshot?maxEdge=652"
tap 0.15 0.13 # Shop
tap 0.5 0.2   # Canvas tote bag
curl -s -X POST "$api/tap" -d '{"x":0.5,"y":0.59,"fraction":true}' >/dev/null & # its price
timeout 20 sh -c 'until "$@" 2>/dev/null; do sleep 0.1; done' wait "$build/bin/window_picture" \
    ":$number" "Tandrel: approve a payment" "$pictures/approval-panel.png"
sleep 1.5 # it takes answers only after its first second
"$build/bin/window_picture" ":$number" "Tandrel: approve a payment" "$pictures/approval-panel.png"

"$build/bin/tandrel-app" --render-steps "$scratch/light"
"$build/bin/tandrel-app" --render-steps "$scratch/dark" --dark
for name in setup-2-screen-done setup-5-apps-done menu-ready approvals; do
    cp "$scratch/light/$name.png" "$pictures/$name.png"
done
cp "$scratch/dark/setup-6-test-done.png" "$pictures/setup-6-test-dark.png"
