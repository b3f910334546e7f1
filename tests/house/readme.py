#!/usr/bin/env python3
"""Writes the application of README.md, its CMakeLists.txt, and its other pieces of C++ as one file,
samples.inc, into a folder; of another document its pieces of C++ alone.

readme.py SOURCE FOLDER [DOCUMENT]
"""
import pathlib
import re
import sys


def blocks_of(text, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def only(text, language, holding=""):
    """The one block of a language that holds a text; others are pieces of code."""
    blocks = [block for block in blocks_of(text, language) if holding in block]
    if len(blocks) != 1:
        sys.exit(f"README.md has {len(blocks)} blocks of {language} with '{holding}', not one")
    return blocks[0]


def main():
    document = sys.argv[3] if len(sys.argv) > 3 else "README.md"
    text = (pathlib.Path(sys.argv[1]) / document).read_text()
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    if document == "README.md":
        (folder / "hello.cpp").write_text(only(text, "cpp", "int main("))
        (folder / "CMakeLists.txt").write_text(only(text, "cmake"))
    pieces = [block for block in blocks_of(text, "cpp") if "int main(" not in block]
    (folder / "samples.inc").write_text(re.sub("^#include.*$", "", "".join(pieces), flags=re.MULTILINE))


if __name__ == "__main__":
    main()
