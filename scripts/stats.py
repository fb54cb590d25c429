#!/usr/bin/env python3
"""Lines of code and of tests, room by room, and the tests' share of both.

A line counts when something is left of it without comments and white space. Tests are what lies
below tests/; benchmarks and fuzz targets stand by themselves and count as neither.
"""

import re
import sys
from collections import Counter
from pathlib import Path

from house_limits import read_tree, room_of

COMMENT_OR_LITERAL = re.compile(
    r'\bR"(?P<tag>[^()\s\\]{0,16})\(.*?\)(?P=tag)"'
    r'|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'"
    r"|(?P<comment>//[^\n]*|/\*.*?\*/)",
    re.S,
)


def code_lines(text):
    bare = COMMENT_OR_LITERAL.sub(
        lambda m: re.sub(r"[^\n]", "", m.group()) if m.group("comment") else m.group(), text)
    return sum(1 for line in bare.splitlines() if line.strip())


def place_of(name):
    """("src", room), ("tests", room), or ("bench" or "fuzz", none); none for other files."""
    top, _, rest = name.partition("/")
    if top in ("src", "tests"):
        return top, room_of(rest) or rest.split("/")[0]
    return (top, None) if top in ("bench", "fuzz") else None


def count(texts):
    lines = Counter()
    for name, text in texts.items():
        place = place_of(name)
        if place and name.endswith((".h", ".cpp")):
            lines[place] += code_lines(text)
    return lines


def share(tests, code):
    return f"{100 * tests / (tests + code):5.1f} %" if tests + code else "    -  "


def main():
    lines = count(read_tree(str(Path(__file__).resolve().parent.parent)))
    rooms = sorted({room for top, room in lines if top in ("src", "tests")})
    print(f"{'room':<18}{'code':>8}{'tests':>8}{'share':>9}")
    for room in rooms:
        code, tests = lines["src", room], lines["tests", room]
        print(f"{room:<18}{code:>8}{tests:>8}{share(tests, code):>9}")
    code = sum(lines["src", room] for room in rooms)
    tests = sum(lines["tests", room] for room in rooms)
    print(f"{'together':<18}{code:>8}{tests:>8}{share(tests, code):>9}")
    print(f"besides: {lines['bench', None]} lines of benchmarks, {lines['fuzz', None]} of fuzz targets")
    return 0


if __name__ == "__main__":
    sys.exit(main())
