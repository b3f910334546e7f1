#!/usr/bin/env python3
"""The commands of the tool while the n-th allocation of the process fails, once or from then on.

    toolsWithoutMemory.py RAVOLT SHIM [STEP]

Each command runs on a small input, with the preloaded SHIM (failingMalloc.cpp), for every STEP-th n (127 by
default) until a run passes without a failure. A run may succeed, or fail with exit code 1 and lines
that begin with "ravolt: "; never by a signal or without a word. What it writes is complete or not there, what
was there is complete, and nothing is left among the temporary files after a single failure.
"""
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

MODEL = "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n"
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"

COMMANDS = [
    ["info", "--json", "scene.rve"],
    ["check", "scene.rve"],
    ["convert", "m.obj", "-o", "out/m.rve"],
    ["terrain", "--island", "1", "--size", "65", "-o", "out/island"],
    ["font", FONT, "-o", "out/font.tga"],
]


class Runs:
    def __init__(self, ravolt, shim, folder):
        self.ravolt, self.shim, self.folder = ravolt, shim, folder
        self.temporary = folder / "temporary"
        self.temporary.mkdir()
        (folder / "m.obj").write_text(MODEL)
        (folder / "m.mtl").write_text("newmtl a\nKd 1 0 0\n")
        self.faults, self.number = [], 0

    def run(self, command, **variables):
        shutil.rmtree(self.folder / "out", ignore_errors=True)
        (self.folder / "out").mkdir()
        environment = dict(os.environ, TMPDIR=str(self.temporary), LD_PRELOAD=str(self.shim),
                           **{name: str(value) for name, value in variables.items()})
        return subprocess.run([self.ravolt, *command], env=environment, cwd=self.folder, capture_output=True,
                              text=True, errors="replace", stdin=subprocess.DEVNULL, timeout=120)

    def contents(self):
        out = self.folder / "out"
        return {str(file.relative_to(out)): file.read_bytes() for file in sorted(out.rglob("*")) if file.is_file()}

    def count(self, command):
        counted = self.folder / "count"
        result = self.run(command, RAVOLT_COUNT_MALLOC=counted)
        if result.returncode:
            sys.exit(f"{command} fails in any case: {result.stderr}")
        return int(counted.read_text())

    def check(self, command, first, times, complete):
        result = self.run(command, RAVOLT_FAIL_MALLOC=first, RAVOLT_FAIL_TIMES=times)
        self.number += 1
        where = f"{command[0]}, allocation {first}, {'once' if times == 1 else 'from then on'}: "
        lines = result.stderr.splitlines()
        if result.returncode not in (0, 1):
            self.faults.append(f"{where}exit code {result.returncode}: {result.stderr[:300]!r}")
        elif result.returncode == 1 and not any(line.startswith("ravolt: ") for line in lines):
            self.faults.append(f"{where}no line: {result.stderr[:300]!r}")
        for name, content in self.contents().items():
            if complete.get(name) != content and result.returncode:
                self.faults.append(f"{where}{name} is incomplete")
        left = list(self.temporary.iterdir())
        if left and times == 1:
            self.faults.append(f"{where}{left[0].name} is left")
        for path in left:
            shutil.rmtree(path, ignore_errors=True)


def main():
    ravolt, shim, step = sys.argv[1], sys.argv[2], int(sys.argv[3]) if len(sys.argv) > 3 else 127
    with tempfile.TemporaryDirectory() as name:
        runs = Runs(ravolt, shim, Path(os.path.realpath(name)))
        made = runs.run(["convert", "m.obj", "-o", "scene.rve"])
        if made.returncode:
            sys.exit(made.stderr)
        for command in COMMANDS:
            total = runs.count(command)
            complete = runs.contents()
            for first in range(1, total + 1, step):
                for times in (1, 10 ** 9):
                    runs.check(command, first, times, complete)
    for fault in runs.faults[:40]:
        print(fault)
    print(f"{runs.number} runs, {len(runs.faults)} faults")
    return 1 if runs.faults else 0


if __name__ == "__main__":
    sys.exit(main())
