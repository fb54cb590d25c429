# Four controllers (-n 4): a second host connects while the first one is in use.
# btvirt forwards data under the SENDER's connection handle, so both ends must have the same number:
# a dummy link between hci2 and hci3 uses up hci2's first handle, then hci2 and hci0 agree.
mark() { echo "MARK $*" >> /tmp/evdev.log; say "$*"; }
p() { timeout 20 sh -c 'echo "$1" > /tmp/probe' p "$*" || say "nobody takes: $*"; sleep 1; }
hciconfig hci3 up; hciconfig hci3 leadv 0; hcitool -i hci2 lecc 00:AA:01:03:00:03; hcitool -i hci2 con
# Our own advertisement rests while a phone is connected; another program's lets a second one in.
mark one;    p "report 1 00 00 04 00 00 00 00 00"
mark second; python3 $G/advertise.py hci0 & sleep 3; host hci2 pair 60 00:AA:01:00:00:00; sleep 5
mark after;  p "report 1 00 00 05 00 00 00 00 00"; p "report 1 00 00 00 00 00 00 00 00"; sleep 3
mark end
