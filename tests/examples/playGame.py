#!/usr/bin/env python3
"""Plays the game with the keys and the pointer of an X server.

    playGame.py TOOL GAME SOURCES MANAGER

Makes the game's files in this folder with the content tool, takes a screenshot, clicks on the truck,
whose name is then in the panel, walks until the truck is where the ground was, fills the screen and
returns to the window with Alt and Enter, and ends the game with Escape. MANAGER is
tests/examples/windowManager.cpp, which reports whether a window covers the whole screen.
"""

import os
import queue
import subprocess
import sys
import threading
import time
import zlib
from pathlib import Path

tool, game, sources, manager = sys.argv[1], sys.argv[2], Path(sys.argv[3]), sys.argv[4]
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

PATIENCE = 90  # seconds, on a machine with much else to do
PICTURE = Path("game.png")
SCREEN = "1024x768"  # larger than the window
TRUCK, SKY, BESIDE = (250, 240), (600, 120), (60, 270)
PANEL = (14, 230), (50, 110)  # columns and rows of its text
HARMLESS = ("No VRam detected", "normal map not found")
# A driver without some extensions (scripts/drivers.sh): the engine says what it goes without.
if "MESA_EXTENSION_MAX_YEAR" in os.environ:
    HARMLESS += ("@ RVOPENGL::init", "Shaders required but not supported on this hardware @ RVSHADER::init",
                 "No chunks or no vertex buffers @ RVTERRAIN::render")


def rows_of(png):
    """The rows of a picture of three bytes a pixel."""
    position, packed = 8, b""
    while position < len(png):
        length = int.from_bytes(png[position:position + 4], "big")
        if png[position + 4:position + 8] == b"IDAT":
            packed += png[position + 8:position + 8 + length]
        position += 12 + length
    data, stride = zlib.decompress(packed), 3 * int.from_bytes(png[16:20], "big")
    above, rows = bytes(stride), []
    for start in range(0, len(data), stride + 1):
        kind, row = data[start], bytearray(data[start + 1:start + 1 + stride])
        for i in range(stride):
            left, up, corner = (row[i - 3], above[i], above[i - 3]) if i > 2 else (0, above[i], 0)
            guess = left + up - corner
            row[i] = (row[i] + (0, left, up, (left + up) // 2,
                                min(left, up, corner, key=lambda near: abs(guess - near)))[kind]) % 256
        rows.append(row)
        above = row
    return rows


def letters(png):
    """Bright pixels in the panel, behind which the land is dark."""
    (left, right), (top, bottom) = PANEL
    return sum(min(row[3 * x:3 * x + 3]) > 200
               for row in rows_of(png)[top:bottom] for x in range(left, right))


def alike(png, other):
    """Whether hardly a pixel differs; at rest the animal still moves by parts of one."""
    pairs = [pair for rows in zip(rows_of(png), rows_of(other)) for pair in zip(*rows)]
    return sum(abs(a - b) > 8 for a, b in pairs) < len(pairs) / 1000


def read_lines(stream, start, found):
    """Puts the rest of each line that begins with `start` into the queue `found`."""
    for line in stream:
        if line.startswith(start):
            found.put(line.removeprefix(start).strip())


class Game:
    def __init__(self, screen):
        self.screen = screen
        managing = subprocess.Popen([manager], env=screen.environment, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        managing.stdout.readline()  # it manages, until the server ends
        self.process = subprocess.Popen([game], env=screen.environment, text=True,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.clicked, self.covered = queue.Queue(), queue.Queue()
        for stream, start, found in ((self.process.stderr, "clicked: ", self.clicked),
                                     (managing.stdout, "", self.covered)):
            threading.Thread(target=read_lines, args=(stream, start, found), daemon=True).start()
        screen.send("mousemove", 320, 240)

    def picture(self):
        """A screenshot, by the key P; after the first one, of the present frame."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            self.screen.send("key", "p")
            for _ in range(20):
                time.sleep(0.1)
                if PICTURE.exists():
                    data = PICTURE.read_bytes()
                    PICTURE.unlink()
                    return data
        sys.exit("no screenshot was saved")

    def still(self):
        """The picture once nothing in it moves."""
        end = time.monotonic() + PATIENCE
        before, after = None, self.picture()
        while before != after:
            if time.monotonic() > end:
                sys.exit("the picture does not come to rest")
            before, after = after, self.picture()
        return after

    def toggle_full_screen(self, expected):
        """Until the manager reports it."""
        self.screen.send("key", "alt+Return")
        try:
            found = self.covered.get(timeout=PATIENCE)
        except queue.Empty:
            found = "the state before"
        if found != expected:
            sys.exit(f"Alt and Enter lead to {found}, not to {expected}")

    def click(self, point):
        self.screen.send("mousemove", *point)
        self.screen.send("click", 1)
        try:
            return self.clicked.get(timeout=PATIENCE)
        except queue.Empty:
            return "nothing"


def play(running, screen):
    before = running.picture()
    if letters(before):
        sys.exit("the panel has a text before the first click")
    for point, expected in ((SKY, "The sky"), (BESIDE, "The ground"), (TRUCK, "The truck")):
        found = running.click(point)
        if found != expected:
            sys.exit(f"a click at {point} names {found}, not {expected}")
    if letters(running.picture()) < 50:
        sys.exit("the panel does not name what was clicked")
    for _ in range(12):
        screen.send("keydown", "w")
        time.sleep(0.5)
        screen.send("keyup", "w")
        if running.click(BESIDE) == "The truck":
            break
    else:
        sys.exit("the key w does not walk to the truck")
    window = running.still()  # textures, buffers and programs are in all of it
    for state in ("full", "window"):
        running.toggle_full_screen(state)
        if not alike(running.still(), window):
            sys.exit(f"the picture differs after the switch to {state}")
    screen.send("key", "Escape")
    if running.process.wait(PATIENCE) != 0:
        sys.exit("the game has failed")
    log = Path("ravolt_log.txt").read_text(errors="replace")
    faults = [line for line in log.splitlines()
              if "[!]" in line and not any(text in line for text in HARMLESS)]
    if faults or "Final memory ratio: 0 " not in log:
        sys.exit(f"the log has {len(faults)} faults, as {faults[:5]}, or states a leak")


subprocess.run([sources / "scripts/makeGame.sh", tool, "64"], check=True)
run_on_screen(Game, lambda played: play(played, played.screen), SCREEN)
