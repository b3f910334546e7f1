#!/usr/bin/env python3
"""Lists the `[!]` messages of the library that no test expects. The list is to be empty.

    unexpectedMessages.py ROOT [--self]

A message is expected when the fixed parts of its text stand in the string literals of one test
file, in their order and close together; what stands for a conversion (%s, %d) lies between them.
"""

import re
import sys
from pathlib import Path

FOLDERS = ["foundation", "math", "engine", "scene", "resources", "models", "effects",
           "gui", "video", "kit"]
CLOSE = 160  # characters between two parts

LITERAL = r'"((?:[^"\\\n]|\\.)*)"'
CONVERSION = r"%[-+ #0]*\d*(?:\.\d+)?(?:hh|h|ll|l|z)?[diuxXsfgcp]"


def uncommented(text):
    return re.sub(r"^\s*//[^\n]*", "", text, flags=re.M)


def joined_literals(text):
    """Literals, those that stand side by side as one."""
    run = re.compile(LITERAL + r"(?:\s*" + LITERAL + ")*")
    for match in run.finditer(uncommented(text)):
        yield "".join(re.findall(LITERAL, match.group(0))).replace('\\"', '"')


def messages(files):
    for path, text in files.items():
        for literal in joined_literals(text):
            for line in literal.split("\\n"):
                if "[!]" in line:
                    yield path, line


def parts_of(message):
    parts = re.split(CONVERSION, message.strip())
    return [part.replace("%%", "%") for part in parts if part.strip()]


def expects(test, message):
    pattern = (r".{0,%d}?" % CLOSE).join(re.escape(part) for part in parts_of(message))
    return re.search(pattern, test, re.S) is not None


def unexpected(files, tests):
    texts = ["\0".join(joined_literals(text)) for text in tests.values()]
    return [(path, line) for path, line in dict.fromkeys(messages(files))
            if not any(expects(text, line) for text in texts)]


def read(root, folders, wanted):
    files = {}
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp", ".inc") and wanted(path.name):
                files[path.relative_to(root).as_posix()] = path.read_text(encoding="utf-8")
    return files


def self_test():
    source = {"a.cpp": 'zlfLog("   [!] File %s is "\n  "bad @ A::b\\n", name);'}
    expecting = [{"t": 'EXPECT_LOGGED("   [!] File x.tga is bad @ A::b");'},
                 {"t": 'EXPECT_LOGGED("   [!] File " + name + " is bad @ A::b");'},
                 {"t": 'EXPECT_LOGGED("   [!] File x " "is bad @ A::b\\n");'}]
    others = [{"t": 'EXPECT_LOGGED("   [!] File x.tga is good @ A::b");'},
              {"t": '// "   [!] File x.tga is bad @ A::b"'}]
    return (not any(unexpected(source, test) for test in expecting) and
            all(len(unexpected(source, test)) == 1 for test in others))


def main():
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    root = Path(sys.argv[1])
    files = read(root, FOLDERS, lambda name: True)
    tests = read(root, ["tests"], lambda name: True)
    found = unexpected(files, tests)
    for path, line in found:
        print(f"{path}: no test expects {line!r}")
    total = len(set(messages(files)))
    print(f"{total} messages, {len(found)} that no test expects")
    sys.exit(1 if found or not total else 0)


if __name__ == "__main__":
    main()
