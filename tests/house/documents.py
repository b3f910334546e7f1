#!/usr/bin/env python3
"""Compiles the C++ blocks of the documents, those with the kit or for tests as C++17, and finds links to files
that are not there and pages of the guide that are long or have no picture.

documents.py SOURCE COMPILER
documents.py --links FOLDER     finds such links alone, in all documents of a folder
"""
import pathlib
import re
import subprocess
import sys


def blocks(text):
    return re.findall(r"^```cpp\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def links(text):
    """Those outside of code, whose lambdas look like links."""
    text = re.sub(r"^```.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL)
    return [link for link in re.findall(r"\]\(([^)#]+)\)", text) if "://" not in link]


def compiles(code, source, compiler):
    flags = subprocess.run(["pkg-config", "--cflags", "sdl"], capture_output=True, text=True, check=True)
    standard = "c++17" if re.search("ravolt/(kit|testing)", code) else "c++11"
    command = [compiler, f"-std={standard}", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-x", "c++",
               f"-I{source / 'include'}", *flags.stdout.split(), "-"]
    result = subprocess.run(command, input=code, capture_output=True, text=True)
    print(result.stderr, end="")
    return result.returncode == 0


LONGEST = 155 # lines of a page of the guide


def page_faults(page):
    text = page.read_text()
    if text.count("\n") > LONGEST:
        yield f"{page.name}: {text.count(chr(10))} lines, more than {LONGEST}"
    if "](../pictures/guide/" not in text:
        yield f"{page.name}: no picture"


def dead_links(document):
    for link in links(document.read_text()):
        if not (document.parent / link).exists():
            yield f"{document.name}: no such file: {link}"


def main():
    if sys.argv[1] == "--links":
        faults = [fault for document in pathlib.Path(sys.argv[2]).rglob("*.md") for fault in dead_links(document)]
        print("\n".join(faults))
        return 1 if faults else 0
    source, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
    faults, compiled = 0, 0
    for document in [*source.glob("*.md"), *source.glob("docs/*.md"), *source.glob("docs/guide/*.md")]:
        text = document.read_text()
        for number, code in enumerate(blocks(text), 1):
            compiled += 1
            if not compiles(code, source, compiler):
                print(f"{document.name}: C++ block {number} does not compile")
                faults += 1
        for fault in [*dead_links(document), *(page_faults(document) if document.parent == source / "docs/guide" else [])]:
            print(fault)
            faults += 1
    if not compiled:
        print("no C++ block was found")
    return 1 if faults or not compiled else 0


if __name__ == "__main__":
    sys.exit(main())
