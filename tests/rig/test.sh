#!/bin/sh
# Our Bluetooth keyboard and pointer, run as a normal user, used by a real HID-over-GATT host: the
# kernel's and bluetoothd's, in a virtual machine. See README.md.
#   tests/rig/test.sh PROBE [FOLDER FOR THE LOGS]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
probe=$1
out=${2:-$(mktemp -d)}
"$here/run.sh" -t "${BTRIG_TIMEOUT:-900}" -u alice -c "$here/main.conf" \
    -s "$here/scenarios/product.sh" -o "$out" \
    "$probe" /tmp/probe >"$out/run.txt" || { tail -40 "$out/run.txt"; exit 1; }
python3 "$here/judge.py" "$out"
