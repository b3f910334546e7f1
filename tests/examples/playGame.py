#!/usr/bin/env python3
"""Plays the game with the keys and the pointer of an X server.

    playGame.py TOOL GAME SOURCES

Makes the game's files in this folder with the content tool, takes a screenshot, clicks on the truck,
whose name is then in the panel, walks until the truck is where the ground was, switches to the full
screen and back, and ends the game with Escape.
"""

import queue
import shutil
import subprocess
import sys
import threading
import time
import zlib
from pathlib import Path

tool, game, sources = sys.argv[1], sys.argv[2], Path(sys.argv[3])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

MODELS = Path("/usr/share/assimp/models")
PATIENCE = 90  # seconds, on a machine with much else to do
PICTURE = Path("game.png")
TRUCK, SKY, BESIDE = (250, 240), (600, 120), (60, 270)
PANEL = (14, 230), (50, 110)  # columns and rows of its text
HARMLESS = ("No VRam detected", "normal map not found")


def make_files():
    for model, name in ((MODELS / "glTF/CesiumMilkTruck/CesiumMilkTruck.gltf", "truck"),
                        (MODELS / "X/Testwuson.X", "wisent")):
        subprocess.run([tool, "convert", model, "--prefix", name + "_", "-q", "-o", name + ".rve"],
                       check=True)
    subprocess.run([tool, "terrain", "--island", "7", "--texture-size", "64", "-q", "-o", "island"],
                   check=True)
    shutil.copy(sources / "media/game.xml", ".")
    for font in (Path(tool).parent.parent / "share/ravolt").glob("font.*"):
        shutil.copy(font, ".")


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


class Game:
    def __init__(self, screen):
        self.screen = screen
        self.process = subprocess.Popen([game], env=screen.environment, text=True,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.clicked = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()
        screen.send("mousemove", 320, 240)

    def _read(self):
        for line in self.process.stderr:
            if line.startswith("clicked: "):
                self.clicked.put(line.removeprefix("clicked: ").strip())

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
    screen.send("key", "alt+Return")
    full = running.picture()
    screen.send("key", "alt+Return")
    if full[16:24] != before[16:24] or running.picture()[16:24] != before[16:24]:
        sys.exit("the picture has another size after a switch of the full screen")
    screen.send("key", "Escape")
    if running.process.wait(PATIENCE) != 0:
        sys.exit("the game has failed")
    log = Path("ravolt_log.txt").read_text(errors="replace")
    faults = [line for line in log.splitlines()
              if "[!]" in line and not any(text in line for text in HARMLESS)]
    if faults or "Final memory ratio: 0 " not in log:
        sys.exit(f"the log has {len(faults)} faults, as {faults[:5]}, or states a leak")


make_files()
run_on_screen(Game, lambda played: play(played, played.screen))
