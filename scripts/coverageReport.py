#!/usr/bin/env python3
"""Prints how much of the library the tests run, by folder, and fails where a goal is missed.

    coverageReport.py COUNTS REASONS UNCOVERED
    coverageReport.py --self     checks that the report itself finds faults

COUNTS is the output of `gcovr --json`. REASONS lists lines that no test runs: a paragraph of lines that
start with "#" is a reason, and the lines below it are those that it is for, "FILE: CODE". The code is
compared without its indentation; where it is twice in a file, it is listed as often. A line of a reader
that neither runs nor has a reason is a fault, and so is a reason for a line that runs. UNCOVERED is
written: every line that does not run ("line"), and every other one with a branch that does not ("branch").
"""

import collections
import json
import math
import sys
from pathlib import Path

# The modules (FILE.cpp and FILE.h) that turn the bytes of files into records or objects.
READERS = {
    "of all files": ["foundation/bytes", "foundation/files", "foundation/text",
                     "foundation/xmlDocument"],
    "RVE": ["models/loadIndex", "models/loader/rveLoader", "models/meshLoad", "models/modelFile",
            "models/rveFile", "models/rveFormat", "models/rveRecords", "scene/nodeLoad",
            "scene/nodeRecords"],
    "RVA": ["models/rvaFile", "models/rvaFormat", "models/rvaRecord"],
    "TGA": ["resources/tga", "resources/tgaFormat"],
    "settings and other key files": ["engine/state/RVSETTINGS", "foundation/parser"],
    "kerning": ["gui/kerningFile"],
    "interfaces": ["models/interfaceFormat", "models/loader/xmlLoader"],
    "emitters": ["effects/emitterFile"],
    "terrains": ["effects/terrainConfig", "effects/terrainGeometry", "effects/terrainLoad"],
    "video": ["video/RVVIDEO", "video/decoder", "video/stream"],
}
READER_MODULES = {module for modules in READERS.values() for module in modules}

# The lowest share of branches, and of lines; None for lines that all must run or have a reason.
GOALS = {"readers": (None, 95), "library": (95, 85)}


class Counts:
    """Lines and branches, and how many of them run."""

    def __init__(self):
        self.lines = self.lines_run = self.branches = self.branches_run = self.excused = 0

    def add(self, line, excused):
        self.lines += 1
        self.lines_run += line["count"] > 0
        self.branches += len(line["branches"])
        self.branches_run += sum(branch["count"] > 0 for branch in line["branches"])
        self.excused += excused

    def reach(self, goal):
        lines, branches = goal
        missing = self.lines - self.lines_run
        good = missing == self.excused if lines is None else share(self.lines_run, self.lines) >= lines
        return good and share(self.branches_run, self.branches) >= branches


def share(part, whole):
    """In per cent."""
    return 100 * part / whole if whole else 100


def shown(part, whole):
    """Rounded down: 100 % is all."""
    return f"{math.floor(10 * share(part, whole)) / 10:>7.1f}%"


def is_reader(path):
    return path.rsplit(".", 1)[0] in READER_MODULES


def parse_reasons(text):
    """How often each (file, code) has a reason, and the lines that are wrong."""
    reasons, faults, below_reason = collections.Counter(), [], False
    for line in text.splitlines():
        if line.startswith("#") or not line.strip():
            below_reason = line.startswith("#")
            continue
        path, separator, code = line.partition(": ")
        if not below_reason or not separator:
            faults.append(f"no line of the form 'FILE: CODE' below a reason: {line}")
        reasons[path, code.strip()] += 1
    return reasons, faults


def uncovered(line):
    """What of a line does not run: "line", "branch" or None."""
    if line["count"] == 0:
        return "line"
    return "branch" if any(branch["count"] == 0 for branch in line["branches"]) else None


def analyse(files, code_of, reasons):
    """Counts by row, the list of what does not run, and the faults. `files` are those of gcovr."""
    rows, listed, faults, left = collections.defaultdict(Counts), [], [], reasons.copy()
    for file in sorted(files, key=lambda entry: entry["file"]):
        path = file["file"]
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            code = code_of(path, line["line_number"])
            kind = uncovered(line)
            excused = kind == "line" and left[path, code] > 0
            left[path, code] -= excused
            names = [path.rsplit("/", 1)[0], "library"] + ["readers"] * is_reader(path)
            for name in names:
                rows[name].add(line, excused)
            if kind:
                listed.append(f"{path}:{line['line_number']}: {kind}: {code}")
            if kind == "line" and not excused and is_reader(path):
                faults.append(f"{path}:{line['line_number']}: does not run, and has no reason: {code}")
    faults += [f"{path}: has a reason, but runs or is gone: {code}"
               for (path, code), number in left.items() for _ in range(number)]
    return rows, listed, faults


def print_table(rows):
    print(f"{'':<18}{'lines':>8}{'run':>8}{'':>8}{'branches':>10}{'run':>8}{'':>8}{'reasons':>9}")
    order = sorted(name for name in rows if name not in GOALS) + [name for name in GOALS if name in rows]
    for name in order:
        row = rows[name]
        print(f"{name:<18}{row.lines:>8}{row.lines_run:>8}{shown(row.lines_run, row.lines)}"
              f"{row.branches:>10}{row.branches_run:>8}{shown(row.branches_run, row.branches)}"
              f"{row.excused:>9}")


def print_goals(rows):
    """Whether all are reached."""
    reached = True
    for name, goal in GOALS.items():
        lines = "every line runs or has a reason" if goal[0] is None else f"{goal[0]} % of lines"
        good = rows[name].reach(goal)
        print(f"goal of the {name}, {lines}, {goal[1]} % of branches: {'reached' if good else 'MISSED'}")
        reached = reached and good
    return reached


def report(counts, reasons_file, uncovered_file):
    sources = {}

    def code_of(path, number):
        if path not in sources:
            sources[path] = Path(path).read_text(encoding="utf-8").splitlines()
        return sources[path][number - 1].strip()

    files = json.loads(Path(counts).read_text(encoding="utf-8"))["files"]
    reasons, faults = parse_reasons(Path(reasons_file).read_text(encoding="utf-8"))
    rows, listed, found = analyse(files, code_of, reasons)
    faults += found
    Path(uncovered_file).write_text("\n".join(listed) + "\n", encoding="utf-8")
    print_table(rows)
    print("".join(fault + "\n" for fault in faults), end="")
    return print_goals(rows) and not faults


# --- The self test


def line_of(number, count, *branches):
    return {"line_number": number, "count": count,
            "branches": [{"count": branch} for branch in branches]}


def self_test():
    def found(files, reasons):
        rows, listed, faults = analyse(
            [{"file": path, "lines": lines} for path, lines in files.items()],
            lambda path, number: f"code {number};", parse_reasons(reasons)[0])
        return rows, listed, faults

    reader, other = "resources/tga.cpp", "scene/RVNODE.cpp"
    comment = line_of(3, 0) | {"gcovr/noncode": True}
    files = {reader: [line_of(1, 1, 3, 0), line_of(2, 0), comment], other: [line_of(1, 0), line_of(2, 4)]}
    rows, listed, faults = found(files, "")
    if (len(listed), len(faults), sorted(rows)) != (3, 1, ["library", "readers", "resources", "scene"]):
        return False
    if (rows["library"].lines_run, rows["readers"].branches_run) != (2, 1):
        return False
    excused = f"# Why.\n{reader}: code 2;\n"
    rows, _, faults = found(files, excused)
    if faults or not rows["readers"].reach((None, 50)) or rows["readers"].reach((None, 51)):
        return False
    if rows["library"].reach((51, 0)) or not rows["library"].reach((50, 50)):
        return False
    twice = found(files, excused + f"{reader}: code 2;\n")[2]
    runs = found(files, excused + f"{other}: code 2;\n")[2]
    without_reason = parse_reasons(f"# Why.\n\n{reader}: code 2;\n")[1]
    return len(twice) == len(runs) == len(without_reason) == 1 and uncovered(line_of(1, 2, 1, 1)) is None


if __name__ == "__main__":
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the report does not find what it should")
    sys.exit(0 if report(*sys.argv[1:4]) else 1)
