#!/usr/bin/env python3
"""Small trees that break one limit each, and look-alikes that break none."""

import unittest

from house_limits import check, functions


def findings(**files):
    """Findings on a tree; "src__base__x_h" stands for "src/base/x.h"."""
    return findings_of({name.replace("__", "/").replace("_h", ".h").replace("_cpp", ".cpp"): text
                        for name, text in files.items()})


def findings_of(texts):
    return [str(finding) for finding in check(texts)]


def function_of(lines):
    """A function whose braces are `lines` lines apart."""
    return "void f() {\n" + "    g();\n" * (lines - 2) + "}\n"


class Lengths(unittest.TestCase):
    def test_function(self):
        self.assertEqual(findings(src__base__a_cpp=function_of(70)), [])
        self.assertEqual(findings(src__base__a_cpp="\n" + function_of(71)),
                         ["src/base/a.cpp:2: f has 71 lines, more than 70"])

    def test_file(self):
        self.assertEqual(findings(src__base__a_h="int a;\n" * 500), [])
        self.assertEqual(findings(src__base__a_h="int a;\n" * 501),
                         ["src/base/a.h:501: the file has 501 lines, more than 500"])

    def test_a_table_may_be_long(self):
        for head in ["constexpr Row kRows[] = {\n", "const std::array kRows{\n",
                     "enum class Name {\n", "Name::Name() : rows_{\n"]:
            end = "} {}\n" if "rows_{" in head else "};\n"
            self.assertEqual(findings(src__base__a_cpp=head + "    1,\n" * 100 + end), [], head)

    def test_what_is_a_function(self):
        rows = [
            ("plain", "int f(int a) {\n}\n", ["f"]),
            ("const member", "int Some::f() const noexcept {\n}\n", ["Some::f"]),
            ("trailing type", "auto f() -> std::vector<int> {\n}\n", ["f"]),
            ("marked", "void f() RUNS_ON(queue_) {\n}\n", ["f"]),
            ("constructor", "A::A(int b) : b_(b), c_{2} {\n}\nint d() {\n}\n", ["A::A", "d"]),
            ("returns a struct", "struct stat f() {\n}\n", ["f"]),
            ("template", "template <class T>\nT f(T a = {}) {\n}\n", ["f"]),
            ("operator", "bool operator==(const A& a) {\n}\n", ["operator=="]),
            ("default value", "int f(int a = 1) {\n}\n", ["f"]),
            ("in a class", "class CAPABILITY(\"x\") A : public B {\n    int f() { return {}; }\n"
             "    int g() {\n    }\n};\n", ["f", "g"]),
            ("after a one-liner", "struct A { int b; };\nint f() {\n}\n", ["f"]),
            ("lambda in a variable", "const auto f = [&](int a) {\n};\n", ["f"]),
            ("inner blocks", "int f() {\n    if (a) {\n    }\n    for (;;) {\n    }\n}\n", ["f"]),
            ("test", "TEST_F(Fixture, Does) {\n}\n", ["Fixture.Does"]),
            ("C linkage", "extern \"C\" {\nint f() {\n}\n}\n", ["f"]),
            ("braces in literals", "char a = '{';\nauto b = R\"({{)\";  // {\nint f() {\n}\n", ["f"]),
            ("digit separators", "int a = 1'000;\nint f() {\n    return 2'000;\n}\n", ["f"]),
            ("macro", "#define A { \\\n    {\nint f() {\n}\n", ["f"]),
        ]
        for name, text, expected in rows:
            with self.subTest(name):
                self.assertEqual([found[2] for found in functions(text)], expected)


class Includes(unittest.TestCase):
    TREE = {f"src/{room}/x.h": "" for room in
            ["base", "platform", "image", "http", "reading", "platform/linux", "platform/virtual",
             "hid", "screen", "devices", "payments", "engine", "app", "helper"]}

    def includes(self, file, *headers):
        text = "".join(f'#include "{header}"\n' for header in headers)
        return findings_of({**self.TREE, file: text})

    def test_down_and_inside(self):
        for file, header in [("src/hid/a.cpp", "hid/x.h"), ("src/hid/a.cpp", "platform/x.h"),
                             ("src/engine/a.cpp", "payments/x.h"),
                             ("src/platform/linux/a.cpp", "platform/x.h"),
                             ("src/platform/linux/a.cpp", "reading/x.h"),
                             ("src/app/a.cpp", "platform/linux/x.h"),
                             ("src/helper/a.cpp", "http/x.h"),
                             ("tests/engine/a.cpp", "platform/virtual/x.h")]:
            self.assertEqual(self.includes(file, header), [], f"{file} {header}")

    def test_up_sideways_and_to_the_backends(self):
        for file, header, said in [
                ("src/hid/a.cpp", "engine/x.h", "hid may not include engine"),
                ("src/hid/a.cpp", "screen/x.h", "hid may not include screen"),
                ("src/base/a.cpp", "platform/x.h", "base may not include platform"),
                ("src/platform/a.cpp", "platform/linux/x.h",
                 "platform may not include platform/linux"),
                ("src/engine/a.cpp", "platform/virtual/x.h",
                 "engine may not include platform/virtual"),
                ("src/reading/a.cpp", "platform/linux/x.h",
                 "reading may not include platform/linux"),
                ("src/platform/virtual/a.cpp", "reading/x.h",
                 "platform/virtual may not include reading"),
                ("src/helper/a.cpp", "engine/x.h", "helper may not include engine"),
                ("src/app/a.cpp", "helper/x.h", "app may not include helper")]:
            self.assertEqual(self.includes(file, header), [f"{file}:1: {said}: {header}"])

    def test_a_comment_is_no_include(self):
        tree = {**self.TREE, "src/hid/a.cpp": '// #include "engine/x.h"\n/*\n#include "app/x.h"\n*/\n'}
        self.assertEqual(findings_of(tree), [])

    def test_missing_and_outside(self):
        self.assertEqual(self.includes("src/hid/a.cpp", "../base/x.h"),
                         ["src/hid/a.cpp:1: there is no ../base/x.h below src"])
        beside = {"tests/hid/t.h": "", "src/hid/x.h": ""}
        self.assertEqual(findings_of({**beside, "src/hid/a.cpp": '#include "hid/t.h"\n'}),
                         ["src/hid/a.cpp:1: there is no hid/t.h below src"])
        self.assertEqual(findings_of({**beside, "src/hid/a.cpp": '#include "x.h"\n'}),
                         ["src/hid/a.cpp:1: there is no x.h below src"])
        self.assertEqual(findings_of({**beside, "tests/hid/a.cpp": '#include "t.h"\n'}), [])
        self.assertEqual(findings_of({**beside, "bench/hid/a.cpp": '#include "hid/t.h"\n'}), [])
        self.assertEqual(findings_of({**beside, "bench/hid/a.cpp": '#include "t.h"\n'}),
                         ["bench/hid/a.cpp:1: there is no t.h below src, tests, bench, fuzz"])
        self.assertEqual(findings_of({"src/other/a.h": ""}),
                         ["src/other/a.h:1: lies in no room that the table of floors knows"])

    def test_headers_of_the_system(self):
        for header, home, guest in [("QWidget", "src/app/a.cpp", "src/engine/a.cpp"),
                                    ("QtCore/QTimer", "tests/app/a.cpp", "tests/engine/a.cpp"),
                                    ("sdbus-c++/sdbus-c++.h", "src/platform/linux/a.h",
                                     "src/app/a.h"),
                                    ("tesseract/baseapi.h", "src/platform/linux/a.cpp",
                                     "src/reading/a.cpp"),
                                    ("linux/videodev2.h", "src/platform/linux/a.cpp",
                                     "src/screen/a.cpp")]:
            text = f"#include <{header}>\n"
            self.assertEqual(findings_of({home: text}), [])
            self.assertEqual(len(findings_of({guest: text})), 1, f"{guest} {header}")

    def test_rings(self):
        tree = {"src/base/a.h": '#include "base/b.h"\n', "src/base/b.h": '#include "base/c.h"\n',
                "src/base/c.h": '#include "base/a.h"\n', "src/base/d.h": '#include "base/a.h"\n'}
        self.assertEqual(findings_of(tree),
                         ["src/base/a.h:1: includes itself: src/base/a.h -> src/base/b.h -> "
                          "src/base/c.h -> src/base/a.h"])


class LocalNames(unittest.TestCase):
    def local(self, *texts, cmake="", around="tandrel", others=None):
        files = {f"src/base/{file}.cpp": f"namespace {around} {{\nnamespace {{\n{text}\n"
                 f"}}  // namespace\n}}  // namespace {around}\n" for file, text in zip("ab", texts)}
        return findings_of({**files, "src/base/CMakeLists.txt": cmake, **(others or {})})

    def test_twins(self):
        for name, text in [("kWidth", "constexpr int kWidth = 3;"), ("kRows", "const Row kRows[] = {"),
                           ("kLimit", "constexpr std::chrono::seconds kLimit{1};"),
                           ("Case", "struct Case {\n    int a;\n};"), ("State", "enum class State {"),
                           ("wide(int a)", "std::string wide(int a) {\n}")]:
            self.assertEqual(self.local(text, text),
                             [f"src/base/b.cpp:3: {name} is also in src/base/a.cpp; "
                              "files of a room are compiled joined"])

    def test_what_does_not_meet(self):
        text = "constexpr int kWidth = 3;"
        self.assertEqual(self.local("int f(int a) {\n}", "int f(long a) {\n}"), [])
        self.assertEqual(self.local("using A = std::string;", "using A = std::string;"), [])
        self.assertEqual(self.local(text, "int f() {\n    constexpr int kWidth = 3;\n}"), [])
        self.assertEqual(self.local(text, text, cmake="set_source_files_properties(b.cpp X)"), [])
        elsewhere = {"src/hid/c.cpp": f"namespace tandrel {{\nnamespace {{\n{text}\n}}  // namespace\n"}
        self.assertEqual(self.local(text, others=elsewhere), [])


class Words(unittest.TestCase):
    def test_words_without_a_place(self):
        for text in ["// TO" "DO: later", "as the specifi" "cation says", "see Pa" "rt 1.2",
                     "fixes iss" "ue 12", "the spe" "c wants", "/wo" "rk/main", "in /ro" "ot/x"]:
            self.assertEqual(len(findings_of({"docs/a.md": text + "\n"})), 1, text)

    def test_look_alikes(self):
        for text in ["the XDG Base Directory Specification", "a special part of 1.2 pixels",
                     "the issue is small", "timespec now", "a/work/b", "TODOS_x",
                     "https://example.org/root/a"]:
            self.assertEqual(findings_of({"docs/a.md": text + "\n"}), [], text)


class Manual(unittest.TestCase):
    TREE = {"src/app/modes.cpp": '    {"--version", "", "print it", printVersion},\n',
            "src/engine/a.cpp": 'const auto a = environment("TANDREL_PORT");\n'}

    def test_all_there(self):
        manual = ".B \\-\\-version\n.B TANDREL_PORT\n"
        self.assertEqual(findings_of({**self.TREE, "packaging/tandrel-app.1": manual}), [])

    def test_missing(self):
        manual = ".B \\-\\-version-of\n.B TANDREL_PORTS\n"
        self.assertEqual(findings_of({**self.TREE, "packaging/tandrel-app.1": manual}),
                         ["src/app/modes.cpp:1: packaging/tandrel-app.1 lacks --version",
                          "src/engine/a.cpp:1: packaging/tandrel-app.1 lacks TANDREL_PORT"])


if __name__ == "__main__":
    unittest.main()
