#!/usr/bin/env python3
"""Writes what is code in a document into a folder: its application (the C++ block with main), as hello.cpp
for README.md and as application.cpp for others; its CMakeLists.txt, if it has one; all C++ but main as
one file, samples.inc; and its commands (the blocks of sh) as commands.sh.

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
        sys.exit(f"the document has {len(blocks)} blocks of {language} with '{holding}', not one")
    return blocks[0]


def main():
    document = sys.argv[3] if len(sys.argv) > 3 else "README.md"
    text = (pathlib.Path(sys.argv[1]) / document).read_text()
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    if "int main(" in text:
        name = "hello.cpp" if document == "README.md" else "application.cpp"
        (folder / name).write_text(only(text, "cpp", "int main("))
    for block in blocks_of(text, "cmake"):
        if "project(" in block:
            (folder / "CMakeLists.txt").write_text(block)
    # Of an application what is before its main.
    pieces = [block.split("int main(")[0] for block in blocks_of(text, "cpp")]
    (folder / "samples.inc").write_text(re.sub("^#include.*$", "", "".join(pieces), flags=re.MULTILINE))
    (folder / "commands.sh").write_text("".join(blocks_of(text, "sh")))


if __name__ == "__main__":
    main()
