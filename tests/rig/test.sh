#!/bin/sh
# Our Bluetooth keyboard and pointer, run as a normal user, used by real HID-over-GATT hosts: the
# kernel's and bluetoothd's, in a virtual machine. First one host, then two. See README.md.
#   tests/rig/test.sh PROBE [FOLDER FOR THE LOGS]
# BTRIG_ONLY=product or two-hosts runs one of them, BTRIG_MAIN_CONF with other settings of bluetoothd.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
probe=$1
logs=${2:-$(mktemp -d)}
failed=0

judged() {
    scenario=$1
    shift
    [ "${BTRIG_ONLY:-$scenario}" = "$scenario" ] || return 0
    out="$logs/$scenario"
    mkdir -p "$out"
    echo "== $scenario"
    if "$here/run.sh" -t "${BTRIG_TIMEOUT:-900}" -u alice -q \
        -c "${BTRIG_MAIN_CONF:-$here/main.conf}" -s "$here/scenarios/$scenario.sh" -o "$out" "$@" \
        "$probe" /tmp/probe >"$out/run.txt"; then
        python3 "$here/judge.py" "$out" "$scenario" || failed=1
    else
        tail -40 "$out/run.txt"
        failed=1
    fi
}

judged product
judged two-hosts -n 4
exit $failed
