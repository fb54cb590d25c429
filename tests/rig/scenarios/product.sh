# What `make test-bluetooth` judges: the probe's commands, each after a marker in the events.
mark() { echo "MARK $*" >> /tmp/evdev.log; say "$*"; }
# Without a reader the pipe would hold up everything.
p() { timeout 20 sh -c 'echo "$1" > /tmp/probe' p "$*" || say "nobody takes: $*"; }
# Until two seconds bring no further event: a slow machine delivers late.
quiet() {
    n=0; before=
    while [ $n -lt 60 ]; do
        now=$(wc -l < /tmp/evdev.log); [ "$now" = "$before" ] && return
        before=$now; n=$((n+1)); sleep 2
    done
}
done_with() { wait_for 90 grep -q "$1: done" /tmp/program.log; quiet; }
power() { dbus-send --system --print-reply --dest=org.bluez /org/bluez/$1 org.freedesktop.DBus.Properties.Set string:org.bluez.Adapter1 string:Powered variant:boolean:$2 > /dev/null; }
opened() { [ "$(grep -c OPEN /tmp/evdev.log)" -gt "$1" ]; }
# Now and then the host's bluetoothd connects without making the input devices anew.
back() {
    before=$(grep -c OPEN /tmp/evdev.log)
    for try in 1 2 3; do
        host hci1 connect 20
        wait_for 15 opened "$before" && { sleep 3; return; }
        say "connected $try times without input devices"
        host hci1 disconnect 10
    done
}

mark kinds
p report 1 02 00 04 00 00 00 00 00; p report 1 00 00 00 00 00 00 00 00
p report 2 01 00 40 ff 7f; p report 2 00 00 40 ff 7f
p report 3 01 05 fb 01; p report 3 00 00 00 00
p report 4 e9 00; p report 4 00 00; quiet
mark typing;   p "type Hello, World!"; done_with "type Hello, World!"
mark tap;      p "tap 0.5 0.5"; done_with "tap 0.5 0.5"
mark drag;     p "drag 300"; done_with "drag 300"
mark rate33;   p "burst 100 33"; done_with "burst 100 33"
mark rate200;  p "burst 200 200"; done_with "burst 200 200"
mark reconnect; power hci1 false; sleep 3; p "type x"; sleep 3; power hci1 true; sleep 2; back; p "type y"; quiet
mark adapter;  power hci0 false; sleep 2; power hci0 true; sleep 3; back; p "type z"; quiet
mark daemon;   kill $bluetoothd_pid; sleep 2; start_bluetoothd; sleep 6; back; p "type w"; quiet
mark kill;     p "report 1 00 00 06 00 00 00 00 00"; quiet; kill -9 $(pidof hid_probe); sleep 3; quiet
mark again;    start_program; sleep 5; back; p "type v"; quiet
mark term;     p "report 1 00 00 05 00 00 00 00 00"; quiet; kill -TERM $program_pid; sleep 2
mark end
