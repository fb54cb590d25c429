"""Names in anonymous namespaces. Files of a room are compiled a few at a time, joined, so that what
two of them name alike in the same namespace would meet."""

import re
from collections import defaultdict

PATTERNS = [
    re.compile(r"^(?:struct|class|union|enum(?: class)?) (?:\w+\([^()]*\) )?(\w+)[^;()]*\{", re.M),
    re.compile(r"^(?:(?:constexpr|const|static|inline|thread_local|std::atomic<\w+>)\b[^;={(]*?)"
               r"\b(\w+)(?:\[[^\]\n]*\])*(?: = |\{|;)", re.M),
]
# With its parameters' types and names, since functions of one name may be several.
FUNCTION = re.compile(r"^(?!TEST|INSTANTIATE|using |return )[\w:&*<>, ]*?(?<![\w:])([\w:~]+\([^()]*\))"
                      r"(?: const| noexcept)*\s*\{", re.M)
# Two may say the same.
ALIAS = re.compile(r"^using (\w+ = [^;]*);", re.M)
NAMESPACE = re.compile(r"^namespace(?: ([\w:]+))? \{$|^\}  // namespace(?: ([\w:]+))?$", re.M)


def anonymous_parts(code):
    """(enclosing namespace, text, where it begins) of each anonymous namespace."""
    around, begin = [], None
    for found in NAMESPACE.finditer(code):
        opens = found.group().startswith("namespace")
        if opens and found.group(1):
            around.append(found.group(1))
        elif opens:
            begin = found.end()
        elif found.group(2):
            around = around[:-1]
        elif begin is not None:
            yield "::".join(around), code[begin:found.start()], begin
            begin = None


def local_names(code):
    """(name, what it is, line) of what a file names for itself. `code` is without literals, and has
    comments only where they end a namespace."""
    for around, part, begin in anonymous_parts(code):
        for pattern in [*PATTERNS, FUNCTION, ALIAS]:
            for found in pattern.finditer(part):
                whole = re.sub(r"\s+", " ", found.group(1))
                name, _, meaning = whole.partition(" = ")
                line = code.count("\n", 0, begin + found.start(1)) + 1
                yield (around, name), meaning, line


def twins(codes):
    """(file, line, name, other file) of each name that another file of the same folder has too."""
    seen = defaultdict(dict)
    for file, code in sorted(codes.items()):
        names = seen[file.rsplit("/", 1)[0]]
        for name, meaning, line in local_names(code):
            other, same = names.setdefault(name, (file, meaning))
            if other != file and not (meaning and meaning == same):
                yield file, line, name[1], other
