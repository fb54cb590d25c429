#!/bin/sh
# Tries the helper with clients that others wrote, against a virtual iPhone: the official inspector's
# command line, and the official TypeScript clients in both generations of the protocol.
#
#   TANDREL_APP_BIN=build/bin/tandrel-app TANDREL_BIN=build/bin/tandrel tests/clients/run.sh
#
# The clients come from npm into a scratch folder, with a newer Node where the machine's is too old
# for them (npm's own package "node"). TANDREL_CLIENTS_FOLDER keeps that folder for the next time.
# Exit status: 0 all passed, 77 skipped because npm cannot be reached, else failed.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
app=$(readlink -f "${TANDREL_APP_BIN:?the application, tandrel-app}")
helper=$(readlink -f "${TANDREL_BIN:?the helper, tandrel}")
oldest_node=22.19

skip() {
    echo "SKIPPED: $1" >&2
    exit 77
}

scratch=$(mktemp -d)
app_pid=
cleanup() {
    if [ -n "$app_pid" ]; then kill "$app_pid" 2>/dev/null && wait "$app_pid" 2>/dev/null; fi
    rm -rf "$scratch"
}
trap cleanup EXIT
trap 'exit 1' INT TERM

command -v npm >/dev/null || skip "there is no npm on this machine"
npm ping --fetch-timeout=15000 --fetch-retries=1 >/dev/null 2>&1 ||
    skip "npm's registry cannot be reached"

modules=${TANDREL_CLIENTS_FOLDER:-$scratch/clients}
mkdir -p "$modules"
cp "$here/package.json" "$here"/*.mjs "$modules/"
(cd "$modules" && npm install --no-audit --no-fund --loglevel=error)

new_enough() {
    [ "$(printf '%s\n' "$oldest_node" "$("$1" --version | tr -d v)" | sort -V | head -n 1)" = "$oldest_node" ]
}
node=$(command -v node)
if ! new_enough "$node"; then
    mkdir -p "$modules/node"
    echo '{"private": true}' >"$modules/node/package.json"
    (cd "$modules/node" && npm install --no-audit --no-fund --loglevel=error node@22)
    PATH=$modules/node/node_modules/node/bin:$PATH
    node=$(command -v node)
    new_enough "$node" || { echo "npm's node is $("$node" --version)" >&2; exit 1; }
fi
echo "node $("$node" --version), npm $(npm --version)"

# The application on ports of its own and with a home of its own.
export HOME="$scratch/home"
mkdir -p "$HOME"
unset XDG_STATE_HOME XDG_CONFIG_HOME XDG_DATA_HOME TANDREL_ENGINE_URL
TANDREL_ENGINE_PORT=$("$node" "$modules/free_port.mjs")
TANDREL_AIRPLAY_PORT=$("$node" "$modules/free_port.mjs")
export TANDREL_ENGINE_PORT TANDREL_AIRPLAY_PORT
# Nobody sits at it, so that a question to the owner stays unanswered until its time is over.
QT_QPA_PLATFORM=offscreen TANDREL_VIRTUAL_PHONE=1 TANDREL_GUARD_TIMEOUT=10 "$app" >"$scratch/app.log" 2>&1 &
app_pid=$!
"$node" "$modules/await_engine.mjs" || { cat "$scratch/app.log" >&2; exit 1; }

# From here on the helper finds the engine by itself, as when an app starts it with HOME and PATH.
unset TANDREL_ENGINE_PORT
cd "$modules"
TANDREL_BIN=$helper
export TANDREL_BIN
failed=0
for client in inspector.mjs typescript_1.mjs typescript_2_handshake.mjs typescript_2_stateless.mjs; do
    echo "== $client"
    "$node" "$client" || failed=1
done
[ "$failed" = 0 ] || { echo "== the application's log"; tail -n 40 "$scratch/app.log"; } >&2
exit "$failed"
