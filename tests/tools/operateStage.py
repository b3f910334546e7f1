#!/usr/bin/env python3
"""Operates a model in the viewer with the pointer and the keys of an X server.

    operateStage.py TOOL SOURCES

The key p saves what is shown, to see what dragging, the wheel and other keys have changed.
"""

import subprocess
import sys
import time
from pathlib import Path

tool, sources = sys.argv[1], Path(sys.argv[2])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

PATIENCE = 30  # seconds, on a machine with much else to do
STEP = 0.3  # in which at least one frame is drawn
MIDDLE, BESIDE = (160, 120), (220, 120)
MODEL = """v -1 -1 -1\nv 2 -1 -1\nv 0 1 -1\nv 0 0 2\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n"""


class Viewer:
    def __init__(self, screen):
        self.screen = screen
        self.process = subprocess.Popen([tool, "view", "model.obj", "--size", "320x240"],
                                        env=screen.environment, stdout=subprocess.DEVNULL)
        self.pictures = 0
        self.until("the window", lambda: self.window() is not None)
        time.sleep(1)  # with SDL 1.2 the splash has a window of its own
        self.point(MIDDLE)

    def window(self):
        found = self.screen.xdotool("search", "--name", "^ravolt - model.obj")[1].split()
        return found[-1] if found else None

    def point(self, place):
        self.screen.xdotool("mousemove", "--window", self.window() or 0, *place)
        time.sleep(STEP)

    def until(self, what, condition):
        end = time.monotonic() + PATIENCE
        while not condition():
            if self.process.poll() is not None or time.monotonic() > end:
                sys.exit(f"{what}: not seen")
            time.sleep(0.05)

    def send(self, *arguments):
        self.screen.send(*arguments)
        time.sleep(STEP)

    def picture(self):
        """What is shown. The key is repeated, as a new window may lose the first one."""
        self.pictures += 1
        file = Path(f"model_{self.pictures:03}.png")
        end = time.monotonic() + PATIENCE
        while not file.exists():
            if time.monotonic() > end:
                sys.exit(f"{file} was not saved")
            self.send("key", "p")
        self.pictures = len(list(Path(".").glob("model_*.png")))
        return file.read_bytes()


def expect(what, holds):
    print(what)
    if not holds:
        sys.exit(f"not so: {what}")


def operate(viewer):
    first = viewer.picture()
    viewer.point(BESIDE)
    expect("a motion changes nothing", viewer.picture() == first)
    viewer.send("mousedown", 1)
    viewer.point(MIDDLE)
    viewer.send("mouseup", 1)
    dragged = viewer.picture()
    expect("a drag turns the model", dragged != first)
    viewer.point(BESIDE)
    expect("a motion after it changes nothing", viewer.picture() == dragged)
    viewer.send("click", 4)
    nearer = viewer.picture()
    expect("the wheel zooms", nearer != dragged)
    viewer.send("click", 5)
    expect("and zooms back", viewer.picture() == dragged)
    viewer.send("key", "Left")
    expect("a key turns", viewer.picture() != dragged)
    viewer.send("key", "r")
    expect("another one resets the view", viewer.picture() == first)
    viewer.send("key", "q")
    viewer.until("the end", lambda: viewer.process.poll() is not None)
    expect("it ends without a failure", viewer.process.returncode == 0)


Path("model.obj").write_text(MODEL, encoding="utf-8")
run_on_screen(Viewer, operate)
