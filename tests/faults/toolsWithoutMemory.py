#!/usr/bin/env python3
"""The commands of the tool while the n-th allocation of the process fails, once or from then on.

    toolsWithoutMemory.py RAVOLT SHIM files|window [STEP]

Each command runs on a small input, with the preloaded SHIM (failingMalloc.cpp), for every STEP-th n (127 by
default) until a run passes without a failure. A run may succeed, or fail with exit code 1 and lines
that begin with "ravolt: "; never by a signal or without a word. What it writes is complete or not there, what
was there is complete, and nothing is left among the temporary files after a single failure.

With `files` these are the commands that read and write files, and the allocations of all libraries fail. With
`window` they are `shot` and `view`, without a display. The driver, SDL and the X libraries allocate most of
their memory and do not all survive its end, so that only allocations of the tool, the engine and the XML
library fail: those that are requested by the code of these files, or by the C and C++ libraries that it calls.
The engine's fail once more by themselves, with a smaller step. Where a picture lacks something a line says so.
"""
import glob
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

MODEL = "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n"
SMOKE = '<?xml version="1.0"?><emitter><nbOfParticles value="40"/></emitter>'
INTERFACE = """<root><font><name value="f"/><texture value="font.tga"/><kerning value="font.txt"/></font>
<window><title value="title"/><size width="60" height="40"/><usefont ref="f"/><write value="text"/>
<button><title value="caption"/><usefont ref="f"/></button></window></root>"""
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"

FILES = [
    ["info", "--json", "scene.rve"],
    ["check", "scene.rve"],
    ["convert", "m.obj", "-o", "out/m.rve"],
    ["terrain", "--island", "1", "--size", "65", "-o", "island"],
    ["font", FONT, "-o", "out/font.tga"],
]

INTERFACE_PICTURE = ["--size", "64x48", "--anisotropy", "1", "-o", "out/picture.png"]
PICTURE = [*INTERFACE_PICTURE, "--samples", "1"]
VIEW = ["--size", "64x48", "--anisotropy", "1", "--seconds", "0.001"]

WINDOW = [
    ["shot", "scene.rve", *PICTURE],
    ["shot", "scene.rve", "--shadows", "--bloom", "--tone-mapping", *PICTURE],
    ["shot", "island/terrain.xml", *PICTURE],
    ["shot", "interface.xml", *INTERFACE_PICTURE],
    ["shot", "smoke.xml", *PICTURE],
    ["view", "scene.rve", *VIEW],
    ["view", "interface.xml", *VIEW],
]

ENGINE = "libravolt"
OURS = "ravolt:libravolt:libtinyxml"


def withoutDisplay():
    return {"DISPLAY": "", "SDL_VIDEODRIVER": "offscreen", "LIBGL_ALWAYS_SOFTWARE": "1",
            "LD_LIBRARY_PATH": ":".join(glob.glob("/usr/lib/*/sdl12-compat"))}


class Runs:
    def __init__(self, ravolt, shim, folder):
        self.ravolt, self.shim, self.folder, self.environment = ravolt, shim, folder, {}
        self.temporary = folder / "temporary"
        self.temporary.mkdir()
        (folder / "m.obj").write_text(MODEL)
        (folder / "m.mtl").write_text("newmtl a\nKd 1 0 0\nmap_Kd wall.tga\n")
        (folder / "wall.tga").write_bytes(bytes([0, 0, 2] + 9 * [0] + [2, 0, 2, 0, 24, 0]) + bytes(range(80, 92)))
        (folder / "smoke.xml").write_text(SMOKE)
        (folder / "interface.xml").write_text(INTERFACE)
        self.faults, self.number = [], 0

    def run(self, command, **variables):
        shutil.rmtree(self.folder / "out", ignore_errors=True)
        (self.folder / "out").mkdir()
        environment = dict(os.environ, TMPDIR=str(self.temporary), LD_PRELOAD=str(self.shim), **self.environment,
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
            elif complete.get(name) != content and not lines:
                self.faults.append(f"{where}{name} is another one, without a word")
        left = list(self.temporary.iterdir())
        if left and times == 1:
            self.faults.append(f"{where}{left[0].name} is left")
        for path in left:
            shutil.rmtree(path, ignore_errors=True)


    def prepare(self, *command):
        made = self.run(command)
        if made.returncode:
            sys.exit(made.stderr)
        for file in (self.folder / "out").iterdir():
            shutil.move(str(file), str(self.folder / file.name))


    def failEach(self, command, step):
        total = self.count(command)
        complete = self.contents()
        for first in range(1, total + 1, step):
            for times in (1, 10 ** 9):
                self.check(command, first, times, complete)


def failInWindows(runs, step):
    runs.environment = withoutDisplay()
    runs.prepare("terrain", "--island", "1", "--size", "65", "-o", "island")
    runs.prepare("font", FONT, "-o", "out/font.tga")
    for modules, modulesStep in ((OURS, 5 * step), (ENGINE, step // 2)):
        runs.environment["RAVOLT_FAIL_IN"] = modules
        for command in WINDOW:
            runs.failEach(command, max(modulesStep, 1))


def main():
    ravolt, shim, kind = sys.argv[1:4]
    step = int(sys.argv[4]) if len(sys.argv) > 4 else 127
    with tempfile.TemporaryDirectory() as name:
        runs = Runs(ravolt, shim, Path(os.path.realpath(name)))
        runs.prepare("convert", "m.obj", "-o", "out/scene.rve")
        if kind == "window":
            failInWindows(runs, step)
        else:
            for command in FILES:
                runs.failEach(command, step)
    for fault in runs.faults[:40]:
        print(fault)
    print(f"{runs.number} runs, {len(runs.faults)} faults")
    return 1 if runs.faults else 0


if __name__ == "__main__":
    sys.exit(main())
