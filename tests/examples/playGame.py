#!/usr/bin/env python3
"""Plays the game with the keys and the pointer of an X server.

    playGame.py TOOL GAME SOURCES

Makes the game's files in this folder with the content tool, takes a screenshot, clicks on the truck,
walks, switches to the full screen and back, and ends the game with Escape.
"""

import queue
import shutil
import subprocess
import sys
import threading
import time
from pathlib import Path

tool, game, sources = sys.argv[1], sys.argv[2], Path(sys.argv[3])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import Screen  # noqa: E402

MODELS = Path("/usr/share/assimp/models")
PATIENCE = 90  # seconds, on a machine with much else to do
PICTURE = Path("game.png")
TRUCK, SKY = (250, 240), (600, 120)
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
    for point, expected in ((SKY, "The sky"), (TRUCK, "The truck")):
        found = running.click(point)
        if found != expected:
            sys.exit(f"a click at {point} names {found}, not {expected}")
    named = running.picture()
    if named == before:
        sys.exit("the panel does not name what was clicked")
    screen.send("keydown", "w")
    time.sleep(3)
    screen.send("keyup", "w")
    time.sleep(1)
    if running.picture() == named:
        sys.exit("the key w does not walk")
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
        sys.exit(f"the log has faults: {faults}, or states a leak")


make_files()
display = Screen()
played = None
try:
    played = Game(display)
    play(played, display)
finally:
    if played and played.process.poll() is None:
        played.process.kill()
        played.process.wait()
    display.stop()
