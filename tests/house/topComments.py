#!/usr/bin/env python3
"""Fails on a source of more than 40 lines without a comment about the whole file at its top, and on
one whose comment about the whole file comes after its includes. Such a comment is a block with an
empty line (or the end) after it; one that is followed by code describes that code.

    topComments.py ROOT
    topComments.py --self     checks that the check itself finds faults
"""

import re

import check

FOLDERS = ["foundation", "math", "engine", "scene", "resources", "models", "video", "effects",
           "gui", "kit", "testing", "tools", "examples", "benchmarks", "tests"]
MAX_LINES_WITHOUT = 40
AFTER_INCLUDES = re.compile(r"""\A(?:[ \t]*(?:\#[^\n]*|//[^\n]*)?\n)*   # to the last directive
                                \#[^\n]*\n\s*
                                (?://[^\n]*\n)+(?:\n|\Z)""", re.X)


def read(root):
    return {path.relative_to(root).as_posix(): path.read_text(encoding="utf-8")
            for folder in FOLDERS for path in sorted((root / folder).rglob("*.cpp"))}


def faults(files):
    for path, text in files.items():
        if AFTER_INCLUDES.search(text):
            yield f"{path}: the comment about the file comes after its includes"
        elif text.count("\n") > MAX_LINES_WITHOUT and not text.startswith("//"):
            yield f"{path}: no comment about the file at its top"


def self_test():
    include = '#include "a.h"\n\n#include <new>\n\n'
    long = "int a;\n" * MAX_LINES_WITHOUT
    good = ["// Top.\n\n" + include + "int a;\n", "// Top.\n\n" + include + long, long,
            include + "// Of a,\n// two lines.\nint a;\n",
            include + "int a;\n\n// Of the rest.\n\nint b;\n"]
    bad = [include + "// Late.\n\nint a;\n", include + long,
           include + "// Late,\n// two lines.\n\n\nint a;\n",
           "// Top.\n\n" + include + "// Late.\n", '#include "a.h"\n// Late.\n\nint a;\n']
    return (not list(faults(dict(enumerate(good)))) and
            len(list(faults(dict(enumerate(bad))))) == len(bad))


if __name__ == "__main__":
    check.run(read, faults, self_test)
