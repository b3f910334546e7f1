#!/usr/bin/env python3
"""Walks and flies over a terrain in the viewer, with the keys of an X server.

    walkOnTerrain.py TOOL SOURCES

The terrain is a slope of grass that rises along X, under a blue sky, so that pictures of the window show
how high the eye is: the row of the skyline is compared with that in a picture of `shot` from the point
where the eye must be, and below the ground no grass is visible. Ends with SKIPPED on a driver without
vertex buffers, where the engine draws no terrain.
"""

import os
import struct
import subprocess
import sys
import time
from pathlib import Path

tool, sources = sys.argv[1], Path(sys.argv[2])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

PATIENCE = 60  # seconds, on a machine with much else to do
WIDTH, HEIGHT = 160, 120
VERTICES, STEP, RISE = 129, 500, 40  # units between two vertices: 1
EYE_ABOVE_GROUND = 2 + 1.7  # the engine draws the land 2 units higher
START = 70  # X of the eye, which looks up the slope
SIZE = f"{WIDTH}x{HEIGHT}"
SKIPPED = 77
NO_BUFFERS = "GL_ARB_vertex_buffer_object not found @ RVOPENGL::init"
# A driver without some extensions (scripts/drivers.sh): the engine says what it goes without.
HARMLESS = "@ RVOPENGL::init" if "MESA_EXTENSION_MAX_YEAR" in os.environ else None


def make_terrain():
    row = struct.pack(f"<{VERTICES}H", *(i * STEP for i in range(VERTICES)))
    Path("slope.raw").write_bytes(row * VERTICES)
    subprocess.run(
        [tool, "terrain", "slope.raw", "--raw-size", f"{VERTICES}x{VERTICES}", "--exact",
         "--height", str(RISE), "--sea-level", "-1000", "--shore", "-100", "--high", "1000",
         "--texture-size", "64", "-q", "-o", "slope"], check=True)


def ground(x):
    return (x * STEP + 1000) * RISE / ((VERTICES - 1) * STEP)  # above the water


def decoded(arguments):
    """The picture as rows of (red, green, blue), or nothing."""
    data = subprocess.run(["ffmpeg", "-loglevel", "error", *arguments, "-frames:v", "1",
                           "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                          capture_output=True, check=False).stdout
    if len(data) != 3 * WIDTH * HEIGHT:
        return None
    pixels = list(zip(data[::3], data[1::3], data[2::3]))
    return [pixels[start:start + WIDTH] for start in range(0, len(pixels), WIDTH)]


def is_grass(pixel):
    return pixel[1] > pixel[2]


def skyline(picture):
    """The row of the highest grass in the middle."""
    rows = [row for row in range(HEIGHT) if is_grass(picture[row][WIDTH // 2])]
    return rows[0] if rows else HEIGHT


def grass_below(picture):
    """The part of the lower third that is grass."""
    pixels = [pixel for row in picture[2 * HEIGHT // 3:] for pixel in row]
    return sum(map(is_grass, pixels)) / len(pixels)


def changed(picture, other):
    """The part of the land's pixels that differ; boxes tint them only faintly."""
    pairs = [pair for row in range(HEIGHT // 3, HEIGHT) for pair in zip(picture[row], other[row])]
    return sum(max(abs(a - b) for a, b in zip(*pair)) > 5 for pair in pairs) / len(pairs)


def view_from(height):
    return ["--eye", f"{START},{height},64", "--target", f"{START + 10},{height},64",
            "--size", SIZE, "--anisotropy", "1"]


class Viewer:
    def __init__(self, screen):
        self.screen = screen
        with open("output", "w", encoding="utf-8") as output:
            self.process = subprocess.Popen(
                [tool, "view", "slope/terrain.xml", "--verbose", *view_from(45)],
                env=screen.environment, stdout=output, stderr=subprocess.STDOUT)
        # With SDL 1.2 the splash has a window of its own, with the same title: not before a frame.
        self.until("a frame of the terrain", lambda: 0.05 < grass_below(self.picture()))
        # Without a window manager the keys go to the window below the pointer.
        self.screen.send("mousemove", "--window", self.window(), WIDTH // 2, HEIGHT // 2)

    def window(self):
        found = self.screen.xdotool("search", "--name", "ravolt - terrain.xml")[1].split()
        return found[-1] if found else None

    def picture(self):
        """Of the window; rows without grass while there is none."""
        window = self.window()
        code, place = self.screen.xdotool("getwindowgeometry", "--shell", window or 0)
        values = dict(line.split("=", 1) for line in place.split())
        taken = None if code else decoded(
            ["-f", "x11grab", "-draw_mouse", "0", "-video_size", SIZE, "-i",
             f"{self.screen.environment['DISPLAY']}+{values['X']},{values['Y']}"])
        return taken or [[(0, 0, 0)] * WIDTH] * HEIGHT

    def until(self, what, condition):
        """Waits for `condition`."""
        end = time.monotonic() + PATIENCE
        while not condition():
            if self.process.poll() is not None:
                sys.exit(f"{what}: the viewer has ended with {self.process.returncode}")
            if time.monotonic() > end:
                sys.exit(f"{what}: not seen")
        print(what)

    def printed(self, line):
        return Path("output").read_text(encoding="utf-8").count(line)

    def press(self, key, line):
        """Until the line that names the result is printed once more."""
        before = self.printed(line)
        self.screen.send("key", key)
        self.until(f"{key}: {line}", lambda: self.printed(line) > before)

    def move(self, key, what, condition):
        """By short steps until `condition`."""
        def moved():
            self.screen.send("keydown", key)
            time.sleep(0.3)
            self.screen.send("keyup", key)
            return condition()
        self.until(what, moved)

    def stays(self, what, condition):
        """For some frames, whichever are drawn."""
        for _ in range(5):
            picture = self.picture()
            if not condition(picture):
                sys.exit(f"{what}: skyline at {skyline(picture)}, grass {grass_below(picture)}")
        print(what)

    def toggle(self, key, what):
        """Changes the picture, and the same key again changes it back."""
        plain = self.picture()
        self.screen.send("key", key)
        self.until(what, lambda: changed(plain, self.picture()) > 0.02)
        self.screen.send("key", key)
        self.until(f"{what} no more", lambda: changed(plain, self.picture()) < 0.002)


def expected_skyline():
    subprocess.run([tool, "shot", "slope/terrain.xml", "--no-smooth", "-q", "-o", "expected.png",
                    *view_from(ground(START) + EYE_ABOVE_GROUND)], check=True)
    return skyline(decoded(["-i", "expected.png"]))


def walk(viewer):
    viewer.press("g", "walking")
    row = expected_skyline()
    viewer.until(f"the eye is above the ground, skyline at {row}",
                 lambda: abs(skyline(viewer.picture()) - row) <= 1)
    viewer.toggle("t", "triangles")
    viewer.toggle("b", "chunks")
    if viewer.printed("chunks: ") != 1:
        sys.exit("the numbers of chunks are not printed once")
    # Nearer to the upper end of the slope less of it is above the eye.
    viewer.move("w", "steps forward", lambda: row + 4 <= skyline(viewer.picture()) < HEIGHT)
    viewer.stays("above the ground after the steps", lambda picture: grass_below(picture) > 0.95)
    viewer.screen.send("keydown", "c")
    viewer.stays("above the ground, though sinking", lambda picture: grass_below(picture) > 0.95)
    viewer.screen.send("keyup", "c")


def fly(viewer):
    viewer.press("g", "flying")
    viewer.move("c", "below the ground", lambda: grass_below(viewer.picture()) < 0.05)
    viewer.press("g", "walking")
    viewer.until("above the ground again", lambda: grass_below(viewer.picture()) > 0.95)


def leave(viewer):
    viewer.screen.send("key", "Escape")
    if viewer.process.wait(PATIENCE) != 0:
        sys.exit("the viewer has failed")
    output = Path("output").read_text(encoding="utf-8")
    faults = [line for line in output.splitlines()
              if "[!]" in line and not (HARMLESS and HARMLESS in line)]
    if "Shutdown complete" not in output or faults:
        sys.exit(output)


def operate(viewer):
    walk(viewer)
    fly(viewer)
    leave(viewer)


def has_buffers():
    return NO_BUFFERS not in subprocess.run(
        [tool, "shot", "slope/terrain.xml", "--verbose", "-o", "probe.png", *view_from(45)],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=True).stdout


make_terrain()
if HARMLESS and not has_buffers():
    print("skipped: the driver lacks GL_ARB_vertex_buffer_object")
    sys.exit(SKIPPED)
run_on_screen(Viewer, operate)
