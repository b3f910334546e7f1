"""What scripts/mutants.py changes: draws the places of the library in the order of a seed.

A mutation is an operator or a constant that is replaced, a call that is dropped, or two neighbouring
calls that are swapped. The same seed and the same sources give the same order, and a mutation keeps its
rank when other lines change. Headers, GLSL and texts of the log are not changed.
"""

import hashlib
import re
from dataclasses import dataclass
from pathlib import Path

FOLDERS = ["foundation", "math", "engine", "resources", "scene", "models", "effects", "gui", "video"]
OPERATORS = {
    " < ": [" <= ", " >= "], " > ": [" >= ", " <= "], " <= ": [" < "], " >= ": [" > "],
    " == ": [" != "], " != ": [" == "], " && ": [" || "], " || ": [" && "],
    " + ": [" - "], " - ": [" + "], " * ": [" / "], " / ": [" * "],
    " += ": [" -= "], " -= ": [" += "], "++": ["--"],
    "true": ["false"], "false": ["true"],
}
OPERATOR = re.compile(r"(?<=[\w)\]]) (?:<=|>=|==|!=|&&|\|\||\+=|-=|[<>+*/-]) (?=[\w(!&*-])"
                      r"|\+\+|\btrue\b|\bfalse\b")
WHOLE = re.compile(r"(?<![\w.\"'])(\d+)(?![\w.\"'xX])")
REAL = re.compile(r"(?<![\w.])(\d+\.\d+)(?=f?\b)")
CALL = re.compile(r"^( +)((?:[\w:]+(?:->|\.|::))*\w+\([^;{}]*\);)$")
KEYWORD = re.compile(r"(?:return|if|for|while|switch|static_assert)\b")
UNTOUCHED = re.compile(r"\bzlfLog|\bstatic_assert|^\s*#|^\s*(?:template|namespace|using|class|struct)\b")
BLANKED = re.compile(r'//[^\n]*|/\*.*?\*/|R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'', re.S)


@dataclass
class Mutation:
    """The characters from `start` to `end` of a file, which `new` replaces."""

    file: str
    line: int
    text: str  # of the line
    start: int
    end: int
    new: str
    change: str  # in words; numbered where the file has the same line and change before

    def key(self):
        return (self.file, self.text, self.change)

    def applied(self, source):
        return source[: self.start] + self.new + source[self.end :]


def replaced_parts(code):
    """Start, end, new text and description of each operator and constant of a line."""
    for match in OPERATOR.finditer(code):
        for new in OPERATORS[match[0]]:
            yield match.start(), match.end(), new, f"{match[0].strip()} -> {new.strip()}"
    for pattern, kind in ((WHOLE, int), (REAL, float)):
        for match in pattern.finditer(code):
            new = str(kind(match[1]) + 1)
            yield match.start(), match.end(), new, f"{match[1]} -> {new}"


def call_of(code):
    """The match of a line that is one call and nothing else."""
    match = CALL.match(code)
    return match if match and not KEYWORD.match(match[2]) else None


def changed_calls(line, code, next_line, next_code):
    """The call of a line dropped, and swapped with the call of the next line."""
    here, below = call_of(code), call_of(next_code)
    if here:
        yield here.start(2), here.end(), ";", "call dropped"
    if here and below and here[1] == below[1] and line != next_line:
        yield 0, len(line) + 1 + len(next_line), next_line + "\n" + line, "swapped with the next line"


def mutations_of(file, source):
    lines = source.split("\n") + [""]
    code = BLANKED.sub(lambda match: re.sub(r"[^\n]", "~", match[0]), source).split("\n") + [""]
    begin, seen = 0, {}
    for index in range(len(lines) - 1):
        line = lines[index]
        if not UNTOUCHED.search(code[index]):
            found = list(replaced_parts(code[index]))
            found += changed_calls(line, code[index], lines[index + 1], code[index + 1])
            for start, end, new, change in found:
                mutation = Mutation(file, index + 1, line.strip(), begin + start, begin + end, new, change)
                count = seen[mutation.key()] = seen.get(mutation.key(), 0) + 1
                mutation.change += f" ({count})" if count > 1 else ""
                yield mutation
        begin += len(line) + 1


def drawn(root, seed):
    """All mutations of the library below `root`, in the order of the seed."""
    found = []
    for folder in FOLDERS:
        for path in sorted((Path(root) / folder).rglob("*.cpp")):
            found += mutations_of(path.relative_to(root).as_posix(), path.read_text(encoding="utf-8"))
    return sorted(found, key=lambda each: hashlib.sha256(f"{seed} {each.key()}".encode()).digest())
