#!/usr/bin/env python3
"""The house's limits, checked on the text of the tree; part of the tests.

    scripts/house_limits.py [ROOT]

Prints one line per finding, "file:line: what", and exits with 1 if there is any.
"""

import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

import local_names

LONGEST_FUNCTION = 70  # lines from the one with its opening brace to the closing one
LONGEST_TEST = 70
LONGEST_FILE = 500

# A room includes itself, rooms on lower floors, and what ALSO names.
FLOORS = {
    "base": 0,
    "platform": 1,
    "image": 1,
    "http": 2,
    "reading": 2,
    "platform/linux": 2,
    "platform/virtual": 2,
    "hid": 3,
    "screen": 3,
    "devices": 4,
    "payments": 4,
    "aiconnect": 4,
    "engine": 5,
    "app": 6,
    "helper": 6,
}
ALSO = {"platform/linux": {"reading"}}
# What these may include is listed, whatever the floors say.
ONLY = {"helper": {"base", "http", "helper"}}
BACKENDS = {"platform/linux", "platform/virtual"}
# Who may include the backends: the wiring, and programs that are not part of the product.
SEES_BACKENDS = {"app"}

# Headers that only some folders may see: (pattern, folders, name).
GUARDED_HEADERS = [
    (re.compile(r"^(Q[A-Z]\w*|Qt\w+/.*)$"), ("src/app/", "tests/app/"), "Qt"),
    (
        re.compile(
            r"^(sdbus-c\+\+/.*|systemd/.*|dbus/.*|libudev\.h|canberra\.h|X11/.*|xcb/.*"
            r"|linux/videodev2\.h|libv4l.*|tesseract/.*|leptonica/.*)$"
        ),
        ("src/platform/linux/", "tests/platform/linux/", "bench/linux/", "bench/reading/",
         "tests/app/"),
        "D-Bus, udev, sound, X11, V4L2 and Tesseract",
    ),
]

# Words that have no place in the product's text: (pattern, what to do instead).
FORBIDDEN_WORDS = [
    (re.compile(r"\b(TO" r"DO|FIX" r"ME|XX" r"X|HA" r"CK)\b"), "finish it or leave it out"),
    (re.compile(r"\bthe\s+specifi" r"cation\b|\bspe" r"c\b", re.I), "say why, not where from"),
    (re.compile(r"\bPa" r"rts?\s+\d+\.\d"), "say why, not where from"),
    (re.compile(r"\biss" r"ue\s+#?\d", re.I), "say why, not where from"),
    (re.compile(r"(?<![\w.$}])/(wo" r"rk|ro" r"ot)/"), "no path of one machine"),
]
TEXT_FILES = {".h", ".cpp", ".md", ".py", ".sh", ".txt", ".cmake", ".1", ".json", ".yml", ""}

MODES = "src/app/modes.cpp"
MANUAL = "packaging/tandrel-app.1"

# Where a header in quotes is looked for; the product's own lie below the first alone. Outside the
# product it may also lie beside the file.
INCLUDE_ROOTS = ("src", "tests", "bench", "fuzz")

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:<([^>\n]+)>|"([^"\n]+)")', re.M)


@dataclass(frozen=True)
class Finding:
    file: str
    line: int
    text: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.text}"


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def blank_literals(text):
    """The text with comments, strings and characters turned to blanks; line ends stay."""
    pattern = re.compile(
        r'(?P<raw>\b(?:u8|u|U|L)?R"(?P<tag>[^()\s\\]{0,16})\(.*?\)(?P=tag)")'
        r"|//(?:\\\n|[^\n])*"
        r"|/\*.*?\*/"
        r'|"(?:\\.|[^"\\\n])*"'
        r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'",
        re.S,
    )
    return pattern.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)


def blank_directives(text):
    return re.sub(r"^[ \t]*#(?:\\\n|[^\n])*", lambda m: re.sub(r"[^\n]", " ", m.group()), text,
                  flags=re.M)


# What may stand between the parameters of a function and its body.
QUALIFIERS = r"(\s|\b(const|noexcept|override|final|mutable|try)\b|&|->[\w:<>,\s*&()]+)*$"
FUNCTION_HEAD = re.compile(r"\)" + QUALIFIERS)
LAMBDA_HEAD = re.compile(r"\]\s*(\([^()]*\))?" + QUALIFIERS)
CONSTRUCTOR_LIST = re.compile(r"\)\s*(noexcept\s*)?:(?!:)")
SCOPE_HEAD = re.compile(r"\b(namespace|class|struct|union|enum)\b|\bextern\s*$")


def kind_of_brace(head):
    """What a brace opens, from the text since the last statement: one of the words returned."""
    if CONSTRUCTOR_LIST.search(head):
        # `: a_{1}` is followed by its name, the body by the last value.
        return "member value" if re.search(r"[\w>]\s*$", head) else "function"
    if "=" in head and LAMBDA_HEAD.search(head):
        return "function"
    if "=" not in re.sub(r"operator\s*[=!<>]*=|<[^<>()]*>|\([^()]*\)", "", head) and (
            FUNCTION_HEAD.search(head)):
        return "function"
    return "scope" if SCOPE_HEAD.search(head) and "=" not in head else "data"


def functions(text):
    """(first line, last line, name) of each body of a function, or of a lambda in a variable, that
    lies in no other body."""
    code = blank_directives(blank_literals(text))
    open_braces = []
    head_start = 0
    body = None  # (where it begins, head, how many braces are open around it)
    for token in re.finditer(r"[{};]", code):
        position, sign = token.start(), token.group()
        in_scope = all(kind == "scope" for kind in open_braces)
        if sign == "{":
            head = code[head_start:position]
            kind = kind_of_brace(head) if in_scope else "inside"
            if kind == "function":
                body = (position, head, len(open_braces))
            if kind == "scope":
                head_start = token.end()
            open_braces.append(kind)
        elif sign == "}" and open_braces:
            kind = open_braces.pop()
            if body and len(open_braces) == body[2]:
                yield line_of(code, body[0]), line_of(code, position), name_of(body[1])
                body = None
            if kind in ("scope", "function"):
                head_start = token.end()
        elif in_scope:
            head_start = token.end()


def name_of(head):
    test = re.search(r"\bTEST\w*\(\s*(\w+)\s*,\s*(\w+)", head)
    if test:
        return f"{test.group(1)}.{test.group(2)}"
    variable = re.search(r"(\w+)\s*=\s*\[", head)
    function = re.search(r"([~\w:]*operator\s*[^\s\w(]+|[~\w:]+)\s*\(", head)
    found = variable or function
    return found.group(1) if found else "this body"


def check_lengths(name, text):
    lines = text.count("\n") + (0 if text.endswith("\n") or not text else 1)
    if lines > LONGEST_FILE:
        yield Finding(name, LONGEST_FILE + 1, f"the file has {lines} lines, more than {LONGEST_FILE}")
    for first, last, what in functions(text):
        length = last - first + 1
        longest = LONGEST_TEST if name.startswith("tests/") else LONGEST_FUNCTION
        if length > longest:
            yield Finding(name, first, f"{what} has {length} lines, more than {longest}")


def room_of(path):
    """The room of a path such as "platform/linux/signals.h"; none for a file that lies in no room."""
    parts = path.split("/")
    if "/".join(parts[:2]) in FLOORS and len(parts) > 2:
        return "/".join(parts[:2])
    return parts[0] if len(parts) > 1 and parts[0] in FLOORS else None


def may_include(room, other):
    if room == other:
        return True
    if room in ONLY:
        return other in ONLY[room]
    if other in BACKENDS and room not in SEES_BACKENDS:
        return False
    return FLOORS[other] < FLOORS[room] or other in ALSO.get(room, ())


def includes(text):
    """(line, header, whether it stands in quotes) of each include."""
    code = re.sub(r"//[^\n]*|/\*.*?\*/", lambda m: re.sub(r"[^\n]", " ", m.group()), text,
                  flags=re.S)
    for found in INCLUDE.finditer(code):
        yield line_of(code, found.start()), found.group(1) or found.group(2), bool(found.group(2))


def check_includes(name, text, known):
    in_product = name.startswith("src/")
    room = room_of(name[len("src/"):]) if in_product else None
    if in_product and room is None:
        yield Finding(name, 1, "lies in no room that the table of floors knows")
        return
    for line, header, quoted in includes(text):
        for pattern, folders, what in GUARDED_HEADERS:
            if pattern.match(header) and not name.startswith(folders):
                yield Finding(name, line, f"only {', '.join(folders)} may see {what}: {header}")
        if not quoted:
            continue
        if not in_product:
            folders = name.split("/")[:-1]
            above = ["/".join(folders[:n]) for n in range(len(folders), 1, -1)]
            if not any(f"{top}/{header}" in known for top in above + list(INCLUDE_ROOTS)):
                yield Finding(name, line, f"there is no {header} below {', '.join(INCLUDE_ROOTS)}")
            continue
        other = room_of(header)
        if f"src/{header}" not in known:
            yield Finding(name, line, f"there is no {header} below src")
        elif other is not None and not may_include(room, other):
            yield Finding(name, line, f"{room} may not include {other}: {header}")


def check_cycles(texts):
    """Headers of the product that include each other in a ring."""
    graph = {
        name: [f"src/{header}" for _, header, quoted in includes(text)
               if quoted and f"src/{header}" in texts]
        for name, text in texts.items() if name.startswith("src/")
    }
    done, reported = set(), set()

    def visit(name, road):
        if name in road:
            ring = road[road.index(name):]
            if frozenset(ring) not in reported:
                reported.add(frozenset(ring))
                yield Finding(name, 1, "includes itself: " + " -> ".join([*ring, name]))
            return
        if name in done:
            return
        for other in graph.get(name, ()):
            yield from visit(other, [*road, name])
        done.add(name)

    for name in sorted(graph):
        yield from visit(name, [])


def check_local_names(texts):
    """What two files of a room name alike, each for itself."""
    codes = {}
    for name, text in texts.items():
        folder, _, file = name.rpartition("/")
        # What a room's CMakeLists.txt names has options of its own and is compiled by itself.
        by_itself = re.search(rf"\b{re.escape(file)}\b", texts.get(f"{folder}/CMakeLists.txt", ""))
        if not name.endswith(".cpp") or not name.startswith(("src/", "tests/")) or by_itself:
            continue
        code = blank_literals(text)
        # The comments that say what namespace ends are kept.
        lines = [line if line.startswith("}  // namespace") else blank
                 for line, blank in zip(text.split("\n"), code.split("\n"))]
        codes[name] = "\n".join(lines)
    for file, line, name, other in local_names.twins(codes):
        yield Finding(file, line, f"{name} is also in {other}; files of a room are compiled joined")


def check_words(name, text):
    for pattern, advice in FORBIDDEN_WORDS:
        for found in pattern.finditer(text):
            yield Finding(name, line_of(text, found.start()), f'"{found.group()}": {advice}')


def check_manual(texts):
    """Every option of the mode table and every variable that is read has its place in the manual."""
    manual = texts.get(MANUAL, "").replace("\\", "")
    for name, text in sorted(texts.items()):
        if not name.startswith("src/"):
            continue
        names = re.findall(r'\benvironment\("(TANDREL_\w+)"\)', text)
        if name == MODES:
            names += re.findall(r'^\s*\{"(--[\w-]+)"', text, re.M)
        for word in names:
            if re.search(rf"(?<![\w-]){word}(?![\w-])", manual) is None:
                yield Finding(name, line_of(text, text.index(word)), f"{MANUAL} lacks {word}")


def check(texts):
    """All findings on a tree given as {path: text}."""
    findings = []
    known = set(texts)
    for name, text in sorted(texts.items()):
        findings += check_words(name, text)
        if name.endswith((".h", ".cpp")):
            findings += check_lengths(name, text)
            findings += check_includes(name, text, known)
    return (findings + list(check_cycles(texts)) + list(check_local_names(texts)) +
            list(check_manual(texts)))


def read_tree(root):
    names = subprocess.run(
        ["git", "-C", root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True, text=True).stdout.split("\0")
    texts = {}
    for name in filter(None, names):
        path = Path(root, name)
        if path.suffix in TEXT_FILES and path.is_file() and not path.is_symlink():
            try:
                texts[name] = path.read_text(encoding="utf-8")
            except UnicodeDecodeError:
                continue  # data, such as a fuzzer's corpus
    return texts


def main(arguments):
    root = arguments[0] if arguments else str(Path(__file__).resolve().parent.parent)
    findings = check(read_tree(root))
    for finding in findings:
        print(finding)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
