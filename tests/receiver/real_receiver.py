#!/usr/bin/env python3
"""The AirPlay receiver of Debian, started by Tandrel, as iPhones on the network would see it.

    tests/receiver/real_receiver.py build/bin/tandrel-app

Everything runs in a network, process and mount namespace of its own, with a message bus and an
avahi-daemon of its own, so nothing is announced on the real network. A step whose programs are
missing is skipped aloud; the exit status is 0 unless a step failed.
"""

import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request
from pathlib import Path

NAME = "desk-of-the-test"  # this computer's, inside
INSIDE = "TANDREL_INSIDE_NAMESPACE"
PATIENCE_SECONDS = 60
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>system</type><listen>unix:path=/run/dbus/system_bus_socket</listen>
<policy context="default"><allow user="*"/><allow own="*"/><allow eavesdrop="true"/>
<allow send_destination="*" eavesdrop="true"/></policy>
</busconfig>"""


class Failed(Exception):
    pass


def lacks(*programs):
    """Says which program is missing, if any."""
    missing = [program for program in programs if not shutil.which(program)]
    if missing:
        print("- skipped:", ", ".join(missing), "is not installed")
    return bool(missing)


def await_value(what, find):
    """The first true value of `find`, asked for again and again."""
    end = time.monotonic() + PATIENCE_SECONDS
    while time.monotonic() < end:
        value = find()
        if value:
            return value
        time.sleep(0.1)
    raise Failed(f"waited {PATIENCE_SECONDS} s for {what}")


class Tool:
    """`tandrel-app airplay-serve --receive` while it runs."""

    def __init__(self, app, home, receiver=None):
        variables = {
            "PATH": os.environ["PATH"],
            "HOME": str(home),
            "LANG": "C.UTF-8",
        }
        if receiver:
            variables["TANDREL_AIRPLAY_RECEIVER"] = str(receiver)
        self.child = subprocess.Popen(
            [app, "airplay-serve", "--receive", "--port", "0"],
            env=variables,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        said = ""
        while " on 127.0.0.1:" not in said:
            line = self.child.stderr.readline()
            if not line:
                raise Failed("airplay-serve did not start: " + said)
            said += line
        self.url = "http://127.0.0.1:" + said.split(" on 127.0.0.1:")[1].split()[0]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.get("/quit")
        self.child.communicate(timeout=PATIENCE_SECONDS)

    def get(self, target):
        with urllib.request.urlopen(self.url + target, timeout=PATIENCE_SECONDS) as reply:
            return reply.read()

    def receiver(self):
        return json.loads(self.get("/status"))["receiver"]


def announced(service):
    """The lines of avahi-browse about our receiver."""
    found = subprocess.run(
        ["avahi-browse", "-rptk", service], capture_output=True, text=True, check=False
    ).stdout
    return [line for line in found.splitlines() if line.startswith("=") and NAME in line]


def runs(program):
    return any(
        (Path("/proc") / pid / "comm").read_text().strip() == program
        for pid in filter(str.isdigit, os.listdir("/proc"))
        if (Path("/proc") / pid / "comm").exists()
    )


def without_avahi(app, home):
    """Nobody to announce it: the sentence says what to install."""
    if lacks("uxplay"):
        return
    with Tool(app, home) as tool:
        error = await_value("the reason", lambda: tool.receiver().get("error"))
        if "sudo apt install avahi-daemon" not in error:
            raise Failed(error)
        print("✓ without avahi-daemon:", error)


def with_avahi(app, home):
    """Phones find it while Tandrel runs, and no longer."""
    if lacks("uxplay", "dbus-daemon", "avahi-daemon", "avahi-browse"):
        return
    bus = home / "bus.conf"
    bus.write_text(BUS)
    os.makedirs("/run/dbus", exist_ok=True)
    subprocess.run(["dbus-daemon", "--config-file", bus, "--fork"], check=True)
    subprocess.run(["avahi-daemon", "--no-drop-root", "--no-chroot", "--daemonize"], check=True)
    with Tool(app, home) as tool:
        await_value("the receiver to wait", lambda: tool.receiver()["state"] == "waiting")
        for service in ("_airplay._tcp", "_raop._tcp"):
            lines = await_value(service, lambda service=service: announced(service))
            host, address, port = lines[0].split(";")[6:9]
            print(f"✓ {service}: {NAME} at {host} {address} port {port}")
        reply = json.loads(tool.get("/status"))
        if not reply["error"].endswith("Screen Mirroring › " + NAME):
            raise Failed(reply["error"])
        print("✓ /status:", json.dumps(reply["receiver"]), reply["error"])
    await_value("the end of the announcement", lambda: not announced("_airplay._tcp"))
    if runs("uxplay"):
        raise Failed("the receiver still runs")
    print("✓ stopped and no longer announced")


def real_frames(app, home):
    """GStreamer's own framing, odd sides included: every pixel is the colour that was drawn."""
    if lacks("gst-launch-1.0"):
        return
    for width, height in ((498, 1080), (499, 1081), (1206, 2622)):
        receiver = home / "receiver"
        receiver.write_text(
            "#!/bin/sh\nexec gst-launch-1.0 -q videotestsrc is-live=true pattern=solid-color"
            " foreground-color=0xff2060c0 ! video/x-raw,format=I420,framerate=30/1,"
            f"width={width},height={height} ! gdppay ! fdsink fd=3\n"
        )
        receiver.chmod(0o755)
        with Tool(app, home, receiver) as tool:
            await_value("frames", lambda: tool.receiver()["state"] == "mirroring")
            picture = home / "frame.png"
            picture.write_bytes(tool.get("/frame.png"))
        pixels = subprocess.run(
            ["gst-launch-1.0", "-q", "filesrc", f"location={picture}", "!", "pngdec", "!"]
            + ["videoconvert", "!", "video/x-raw,format=RGBx", "!", "fdsink"],
            capture_output=True,
            check=True,
        ).stdout
        if len(pixels) != 4 * width * height:
            raise Failed(f"{len(pixels)} bytes of pixels for {width} x {height}")
        off = max(
            abs(value - wanted)
            for channel, wanted in enumerate((0x20, 0x60, 0xC0))
            for value in set(pixels[channel::4])
        )
        # libyuv takes BT.709's blue a little weaker than it is.
        if off > 8:
            raise Failed(f"a pixel of {width} x {height} is {off} levels off")
        print(f"✓ GStreamer's frames of {width} x {height}: every pixel is the one drawn")


def set_up_network():
    def ip(*words):
        subprocess.run(["ip", *words], check=True)

    ip("link", "set", "lo", "up")
    ip("link", "add", "tandrel0", "type", "veth", "peer", "name", "tandrel1")
    ip("address", "add", "10.77.0.1/24", "dev", "tandrel0")
    ip("link", "set", "tandrel0", "up")
    ip("link", "set", "tandrel1", "up")
    socket.sethostname(NAME)
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/run"], check=True)


def inside(app):
    set_up_network()
    with tempfile.TemporaryDirectory(prefix="tandrel-receiver-") as folder:
        for step in (without_avahi, with_avahi, real_frames):
            step(app, Path(folder))


def outside(app):
    if lacks("unshare", "ip"):
        return 0
    command = ["unshare", "--net", "--mount", "--uts", "--pid", "--fork", "--kill-child"]
    command += ["--mount-proc"]
    if os.geteuid() != 0:
        command += ["--user", "--map-root-user"]
    if subprocess.run([*command, "true"], check=False, stderr=subprocess.DEVNULL).returncode != 0:
        print("- skipped: this computer grants no namespaces; try as root")
        return 0
    command += [sys.executable, os.path.abspath(__file__), app]
    return subprocess.run(command, env={**os.environ, INSIDE: "1"}, check=False).returncode


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    app = os.path.abspath(sys.argv[1])
    if INSIDE not in os.environ:
        sys.exit(outside(app))
    try:
        inside(app)
    except Failed as failure:
        sys.exit(f"✗ {failure}")


if __name__ == "__main__":
    main()
