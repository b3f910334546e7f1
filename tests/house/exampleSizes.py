#!/usr/bin/env python3
"""Fails on an example of the kit of more than 60 lines, on a class of the kit without an example in the
table of docs/kit.md, on an example there that no test runs, and on a game of more than 150 lines.

    exampleSizes.py ROOT
    exampleSizes.py --self     checks that the check itself finds faults
"""

import re

import check

PAGE, TESTS, GAME = "docs/kit.md", "tests/examples/CMakeLists.txt", "examples/game.cpp"
MAX_LINES, MAX_LINES_OF_GAME = 60, 150
ROW = re.compile(r"^\| (?P<classes>`\w+`.*?) \| (?P<about>.*) \|(?: `(?P<file>\w+\.cpp)`)? \|$", re.M)
NOT_CODE = re.compile(r'//[^\n]*|"[^"\n]*"|#include[^\n]*')


def read(root):
    paths = [root / PAGE, root / TESTS, *sorted((root / "examples").glob("*.cpp")),
             *sorted((root / "include/ravolt/kit").glob("*.h"))]
    return {path.relative_to(root).as_posix(): path.read_text(encoding="utf-8") for path in paths}


def uses(text, name):
    """Whether code has the class, or an object of it with its name."""
    return re.search(rf"\b({name}|{name[0].lower()}{name[1:]})\b", NOT_CODE.sub("", text))


def example_faults(files, path, classes):
    text = files.get(path)
    if text is None:
        yield f"{PAGE}: there is no {path}"
        return
    if text.count("\n") > MAX_LINES:
        yield f"{path}: {text.count(chr(10))} lines are more than {MAX_LINES}"
    if f"ravolt_example_test({path[9:-4]} " not in files[TESTS]:
        yield f"{path}: no test runs it"
    for name in classes:
        if not uses(text, name):
            yield f"{path}: is the example of {name} and does not use it"


def faults(files):
    shown = set()
    for row in ROW.finditer(files[PAGE]):
        classes = re.findall(r"`(\w+)`", row["classes"])
        if row["file"]:
            path = "examples/" + row["file"]
            yield from example_faults(files, path, classes)
            named = re.findall(r"`(\w+)`", row["about"])
            shown |= {*classes, *(name for name in named if uses(files.get(path, ""), name))}
    for path in files:
        header = re.fullmatch(r"include/ravolt/kit/(\w+)\.h", path)
        name = header and header[1][0].upper() + header[1][1:]
        if header and name not in shown:
            yield f"{PAGE}: {name} has no example"
    if files[GAME].count("\n") > MAX_LINES_OF_GAME:
        yield f"{GAME}: {files[GAME].count(chr(10))} lines are more than {MAX_LINES_OF_GAME}"


def self_test():
    files = {PAGE: "| `Cup` | of `Tea` | `cup.cpp` |\n", TESTS: "ravolt_example_test(cup 5 1)\n",
             "include/ravolt/kit/cup.h": "", "include/ravolt/kit/tea.h": "", GAME: 150 * "\n",
             "examples/cup.cpp": "// A cup.\nkit::Cup cup;\nkit::Tea tea;\n" + 57 * "\n"}
    worse = {"examples/cup.cpp": (files["examples/cup.cpp"] + "\n", "// Cup\nTea tea;\n", "Cup cup;\n"),
             "include/ravolt/kit/pot.h": ("",), GAME: (151 * "\n",), TESTS: ("",),
             PAGE: ("| `Cup` | of `Tea` | |\n", "| `Cup` | of `Tea` | `cap.cpp` |\n", "")}
    return (not list(faults(files)) and
            all(list(faults({**files, path: text})) for path in worse for text in worse[path]))


if __name__ == "__main__":
    check.run(read, faults, self_test)
