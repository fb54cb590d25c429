#!/usr/bin/env python3
"""Judges a run of scenarios/product.sh or two-hosts.sh from the logs that run.sh kept.

usage: judge.py FOLDER [product|two-hosts]

Prints a line for each check, with the raw reports or figures behind it; exits with 1 if one failed.
"""

import re
import sys
from pathlib import Path

RELEASED = {"01 00 00 00 00 00 00 00 00", "02 00 00 00 00 00", "03 00 00 00 00", "04 00 00"}
KINDS = ["01 02 00 04 00 00 00 00 00", "01 00 00 00 00 00 00 00 00", "02 01 00 40 ff 7f",
         "02 00 00 40 ff 7f", "03 01 05 fb 01", "03 00 00 00 00", "04 e9 00", "04 00 00"]
SHIFTED = dict(zip("1234567890", "!@#$%^&*()"))
PLAIN = {0x28: "\n", 0x2C: " ", 0x36: ",", 0x37: "."}


def sections(folder):
    """The raw reports [(seconds, bytes as text)] and the device's end between two marks."""
    found, name = {}, ""
    for line in (folder / "evdev.log").read_text().splitlines():
        if line.startswith("MARK "):
            name = line[5:]
            continue
        words = line.split(maxsplit=3)
        if len(words) < 3:
            continue
        if words[1] == "RAW":
            found.setdefault(name, []).append((float(words[0]), words[3]))
        elif words[1] == "CLOSE":
            found.setdefault(name, []).append((float(words[0]), "closed"))
    return found


def typed(reports):
    text, before = "", set()
    for _, report in reports:
        if not report.startswith("01 "):
            continue
        values = [int(word, 16) for word in report.split()[1:]]
        keys = {key for key in values[2:] if key}
        for key in keys - before:
            if 4 <= key <= 29:
                letter = chr(ord("a") + key - 4)
            elif 30 <= key <= 39:
                letter = "1234567890"[key - 30]
            else:
                letter = PLAIN.get(key, "?")
            if values[0] & 0x22:
                letter = SHIFTED.get(letter, letter.upper())
            text += letter
        before = keys
    return text


def positions(reports):
    """The x of each report of the absolute pointer."""
    words = [report.split() for _, report in reports if report.startswith("02 ")]
    return [int(word[2], 16) | int(word[3], 16) << 8 for word in words]


def seen_times(folder, name):
    """When the kernel's input events had the x of the absolute pointer, between two marks."""
    times, now = {}, ""
    for line in (folder / "evdev.log").read_text().splitlines():
        if line.startswith("MARK "):
            now = line[5:]
        event = re.match(r" *([\d.]+) event\d+ ABS ABS_X (\d+)$", line)
        if now == name and event:
            times.setdefault(int(event[2]), float(event[1]))
    return times


def sent_times(folder, command):
    times = {}
    for line in (folder / "program.log").read_text().splitlines():
        found = re.match(r"SENT (.*) (\d+) ([\d.]+)$", line)
        if found and found[1] == command:
            times[int(found[2])] = float(found[3])
    return times


def burst(folder, reports, name, count, rate):
    arrived = seen_times(folder, name)
    in_order = positions(reports) == list(range(1, count + 1))
    sent = sent_times(folder, f"burst {count} {rate}")
    late = sorted(1000 * (arrived[i] - sent[i]) for i in sent if i in arrived)
    if not late:
        return in_order, "none arrived"
    span = max(arrived.values()) - min(arrived.values())
    return in_order, (f"{len(late)} of {count} in {span:.1f} s; ms from send to the input event: median "
                      f"{late[len(late) // 2]:.1f}, p99 {late[int(len(late) * 0.99)]:.1f}")


def checks(folder):
    found = sections(folder)
    part = lambda name: found.get(name, [])
    texts = lambda name: [report for _, report in part(name)]
    yield "all four kinds of report", texts("kinds") == KINDS, " | ".join(texts("kinds"))
    yield "typing", typed(part("typing")) == "Hello, World!", repr(typed(part("typing")))
    kinds = [report[:5] for report in texts("tap")]
    yield "a tap's move, button down, button up", (
        "03 01" in kinds and "02 00" in kinds[:kinds.index("03 01")]
        and "03 00" in kinds[kinds.index("03 01"):]), " | ".join(texts("tap"))
    xs = positions(part("drag"))
    yield "a drag of 300 points, in order", len(xs) >= 300 and xs == sorted(xs), f"{len(xs)} points"
    yield "33 a second", *burst(folder, part("rate33"), "rate33", 100, 33)
    yield "200 a second: paced, none lost", *burst(folder, part("rate200"), "rate200", 200, 200)
    for name, letter in (("reconnect", "y"), ("adapter", "z"), ("daemon", "w"), ("again", "v")):
        came = [report for report in texts(name) if report != "closed"]
        keys = [report for report in came if report not in RELEASED]
        yield f"{name}: nothing stale, then the key", (
            typed(part(name)) == letter and len(keys) == 1), " | ".join(came)
    for name, key, how in (("kill", "06", "killed"), ("term", "05", "ended")):
        ends = texts(name)
        down = f"01 00 00 {key} 00 00 00 00 00"
        yield f"{how} with a key down: released or gone", down in ends and any(
            report in RELEASED or report == "closed" for report in ends[ends.index(down):]), (
            " | ".join(ends[:6]))


def two_hosts(folder):
    """What each host's raw device got: the first has a key down when the second comes."""
    got, mark = {}, ""
    for line in (folder / "evdev.log").read_text().splitlines():
        words = line.split(maxsplit=3)
        if line.startswith("MARK "):
            mark = line[5:]
        elif words[1] == "RAW":
            got.setdefault(words[2], []).append((mark, words[3]))
    first = got.pop("hidraw0", [])
    held = ("one", "01 00 00 04 00 00 00 00 00")
    later = first[first.index(held) + 1:] if held in first else []
    let_go = [report for _, report in later if report.startswith("01 ")]
    yield "the first host has the key", held in first, " | ".join(report for _, report in first)
    yield "and gets it released before anything else", let_go[:1] == ["01" + 8 * " 00"], (
        " | ".join(let_go))
    others = [report for reports in got.values() for _, report in reports]
    yield "no key reaches another host", not set(others) - RELEASED, " | ".join(others)


def main():
    failures = 0
    judge = two_hosts if sys.argv[2:] == ["two-hosts"] else checks
    for name, good, figures in judge(Path(sys.argv[1])):
        failures += not good
        print(f"{'ok  ' if good else 'FAIL'} {name}: {figures}")
    sys.exit(failures > 0)


main()
