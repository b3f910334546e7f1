#!/usr/bin/env python3
"""Compares docs/troubleshooting.md with the `[!]` messages of the library.

    troubleshooting.py ROOT [--self]

Every message stands in one row of the page, every row belongs to a message and has a cause and a
cure, and every member of the library that the page names exists in the public headers. Words in
capitals stand for what a conversion prints.
"""

import re
import sys
from pathlib import Path

import unexpectedMessages as sources

PLACEHOLDER = r"(?:FILE|NAME|NUMBER|REASON|METHOD|PROPERTY)"


def pattern_of(message):
    """What a row for this message looks like; paths and names in a row are one word."""
    text = message.replace("[!]", "").strip()
    parts = [re.escape(part) for part in re.split(f"(?:{sources.CONVERSION})+", text)]
    return re.compile(PLACEHOLDER.join(parts))


def rows_of(page):
    for line in page.splitlines():
        match = re.match(r"\| `([^`]+)` \| (.*) \| (.*) \|$", line)
        if match:
            yield match.groups()


def faults(messages, page, headers):
    rows = list(rows_of(page))
    patterns = {message: pattern_of(message) for message in messages}
    for message, pattern in patterns.items():
        number = sum(1 for text, _, _ in rows if pattern.fullmatch(text))
        if number != 1:
            yield f"{number} rows for {message!r}"
    for text, cause, cure in rows:
        if not any(pattern.fullmatch(text) for pattern in patterns.values()):
            yield f"no message like {text!r}"
        if not cause.strip() or not cure.strip():
            yield f"no cause or no cure for {text!r}"
    words = set(re.findall(r"\w+", headers))
    prose = re.sub(r"^\| `[^`]+`", "", page, flags=re.M)
    for name in re.findall(r"`((?:RV\w+|RAVOLT)::\w+|RV_\w+|set[A-Z]\w+|get[A-Z]\w+)", prose):
        if not all(part in words for part in name.split("::")):
            yield f"the headers have no {name}"


def self_test():
    page = "| `File FILE is bad @ A::b` | a cause | call `RVA::b` |\n"
    good = ["   [!] File %s%s is bad @ A::b"]
    header = "class RVA { void b(); };"
    return (not list(faults(good, page, header)) and
            list(faults(good + ["   [!] Other @ A::b"], page, header)) and
            list(faults([], page, header)) and
            list(faults(good, page.replace("a cause", ""), header)) and
            list(faults(good, page, header.replace("b", "c"))) and
            list(faults(good, page + page, header)))


def main():
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    root = Path(sys.argv[1])
    files = sources.read(root, sources.FOLDERS, lambda name: True)
    messages = list(dict.fromkeys(line for _, line in sources.messages(files)))
    page = (root / "docs" / "troubleshooting.md").read_text(encoding="utf-8")
    headers = "".join(path.read_text(encoding="utf-8") for path in (root / "include").rglob("*.h"))
    found = list(faults(messages, page, headers))
    print("\n".join(found))
    print(f"{len(messages)} messages, {len(found)} faults of the page")
    sys.exit(1 if found or not messages else 0)


if __name__ == "__main__":
    main()
