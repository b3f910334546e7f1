#!/usr/bin/env python3
"""Prepares a public header for Doxygen: plain comments become documentation.

    filter.py HEADER     prints the header

In the headers a block of `//` lines describes the declarations below it, up to the next empty line
or comment; a comment at the end of a line adds to its declaration. Doxygen wants a marked comment for
each declaration, and one for the file if it shall show functions and enumerations outside of classes.
"""

import re
import sys
from pathlib import Path

PLAIN = re.compile(r"^\s*//( ?)(.*)$")
TRAILING = re.compile(r"^(.*?[;,{\w)])\s*// ?(.*)$")
NOT_DECLARED = re.compile(r"^\s*(#(?!define)|public:|protected:|private:|\}|extern \"C\"|namespace )")
SCOPE = re.compile(r"^\s*(template <.*> ?)?(typedef )?(class|struct|enum|union)\b[^;]*\{")
SEVERAL = re.compile(r"^(\s*)([\w:<> ]+?) (\**\w+(?:\[\w+\])?(?:, \**\w+(?:\[\w+\])?)+);$")

STANDARD = [
    (re.compile(r"^\s*(explicit )?\w+\(const \w+ &\w*\)( = default| : |;|\s*\{)"), "Copies; see the class."),
    (re.compile(r"^\s*\w+ &operator=\(const"), "Copies; see the class."),
    (re.compile(r"^\s*(virtual )?~\w+\("), "Releases what the object owns."),
    (re.compile(r"^\s*\w+\(\)( :|;|\s*\{)"), "With the defaults that are stated below."),
]


class Filter:
    def __init__(self):
        self.out = []
        self.comment = []       # the block in effect
        self.in_comment = False # the last line was one of the block
        self.depth = 0          # of braces and parentheses within the current declaration
        self.open = False       # the current declaration goes on
        self.top_open = False
        self.top = []           # the first comment of the file: of its first class

    def line(self, text):
        plain = PLAIN.match(text)
        if self.open:
            self.advance(text)
            self.out.append(text)
        elif plain:
            if not self.in_comment:
                self.comment = []
            self.comment.append(plain.group(2))
            self.in_comment = True
            if not self.top or self.top_open:
                self.top.append(plain.group(2))
                self.top_open = True
        else:
            self.in_comment = False
            self.top_open = False
            self.declaration(text)

    def declaration(self, text):
        if not text.strip():
            self.comment = []
        elif not NOT_DECLARED.match(text) and not text.lstrip().startswith("friend"):
            text = self.document(text)
            if SCOPE.match(text) and "};" not in text:
                self.comment = []   # what is inside has comments of its own
            else:
                self.advance(text)
        self.out.append(text)

    def document(self, text):
        trailing = TRAILING.match(text)
        is_class = re.match(r"\s*(template <.*> ?)?(class|struct)\b", text) and SCOPE.match(text)
        words = list(self.comment) or (self.top if is_class else standard(text))
        if is_class:
            self.top = [""]
        if trailing:
            text, words = trailing.group(1), words + ["", trailing.group(2)]
        several = SEVERAL.match(text)
        names = several.group(3).split(", ") if several else [None]
        for number, name in enumerate(names):
            if words:
                self.out.append("/** " + "\n * ".join(escape(word) for word in words) + " */")
            if name:
                text = f"{several.group(1)}{several.group(2)} {name};"
                if number + 1 < len(names):
                    self.out.append(text)
        return text

    def advance(self, text):
        if text.startswith("#"):
            return
        code = re.sub(r'"(?:[^"\\]|\\.)*"|//.*', "", text)
        self.depth += sum(code.count(c) for c in "{(") - sum(code.count(c) for c in "})")
        self.open = self.depth > 0 or not code.rstrip().endswith((";", "}", ","))


def standard(text):
    """What all classes have, where a header says nothing more."""
    for pattern, words in STANDARD:
        if pattern.match(text):
            return [words]
    return []


def escape(text):
    text = re.sub(r"([\\@<>&#])", r"\\\1", text)
    return re.sub(r"`([^`]*)`", lambda match: f"<tt>{match.group(1)}</tt>", text)


def main():
    filtered = Filter()
    for text in Path(sys.argv[1]).read_text(encoding="utf-8").splitlines():
        filtered.line(text)
    print("\n".join(["/** \\file */", *filtered.out]))


if __name__ == "__main__":
    main()
