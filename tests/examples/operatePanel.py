#!/usr/bin/env python3
"""Operates the control panel of the demo with the pointer and the keys of an X server.

    operatePanel.py TOOL ISLAND SOURCES

Makes the demo's files in this folder with the content tool, starts the demo small and coarse, types into
its text field, presses its button, which saves a picture of that name, moves the panel, minimizes it and
maximizes it again, and ends the demo with Escape.
"""

import subprocess
import sys
import time
from pathlib import Path

tool, island, sources = sys.argv[1], sys.argv[2], Path(sys.argv[3])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

PATIENCE = 60  # seconds, on a machine with much else to do
FRAME = 1.5  # seconds in which at least two frames are drawn; longer where a click has no effect
FIELD, SAVE, TITLE_BAR = (60, 145), (200, 145), (60, 22)
STEP = (-30, -10)  # by which the panel is moved, in a window of 240 by 150


class Demo:
    def __init__(self, screen):
        self.screen = screen
        self.frame = FRAME
        self.process = subprocess.Popen(
            [island, "--draft"],
            env=screen.environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.process.stderr.readline()  # names the first part: the window is there
        found = screen.xdotool("search", "--name", "Ravolt")[1].split()
        if not found:
            sys.exit("the window did not open")
        self.window = found[-1]

    def send(self, *arguments):
        self.screen.send(*arguments)
        time.sleep(self.frame)

    def move(self, point):
        self.send("mousemove", "--window", self.window, *point)

    def click(self, point):
        self.drag(point, point)

    def drag(self, start, end):
        self.move(start)
        self.send("mousedown", 1)
        if end != start:
            self.move(end)
        self.send("mouseup", 1)

    def save(self, picture, button):
        """The picture that the button saves."""
        end = time.monotonic() + PATIENCE
        self.click(button)
        while not picture.exists():
            if time.monotonic() > end:
                sys.exit(f"{picture} was not saved; there are {sorted(Path('.').glob('*.png'))}")
            self.frame *= 1.5
            self.click(button)
        time.sleep(self.frame)  # it is written
        data = picture.read_bytes()
        picture.unlink()
        return data

    def minimize(self, title_bar, picture, button):
        """Until the button, which is hidden then, saves no picture."""
        end = time.monotonic() + PATIENCE
        self.click(title_bar)
        self.click(button)
        while picture.exists():
            if time.monotonic() > end:
                sys.exit("the button of the minimized panel has saved a picture")
            picture.unlink()
            self.frame *= 1.5
            self.click(title_bar)
            self.click(button)


def operate(demo):
    demo.click(FIELD)
    demo.send("key", "BackSpace")
    demo.send("key", "s")  # one key a frame
    picture = Path("islans.png")
    if not demo.save(picture, SAVE).startswith(b"\x89PNG"):
        sys.exit("it is no picture")
    moved = [(x + STEP[0], y + STEP[1]) for x, y in (TITLE_BAR, SAVE)]
    demo.drag(TITLE_BAR, moved[0])
    demo.save(picture, moved[1])
    demo.minimize(moved[0], picture, moved[1])
    demo.click(moved[0])
    demo.save(picture, moved[1])
    demo.screen.send("key", "Escape")
    if demo.process.wait(PATIENCE) != 0:
        sys.exit("the demo has failed")


subprocess.run([sources / "scripts/makeWorld.sh", tool, Path(tool).parent / "makeVillage", "64"],
               check=True)
run_on_screen(Demo, operate)
