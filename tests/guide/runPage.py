#!/usr/bin/env python3
"""Runs what a page of the guide says, in this folder, and compares the pictures that it makes with those of the page.

    runPage.py SOURCES PAGE TOOL COMPARE CODE FRAMES [APPLICATION]

The page's commands (CODE/commands.sh) run first, with `ravolt` in the path, and then its application for so many
frames, if it has one. A picture of the page comes from the file of the same name that these have made;
the application's is that of the page's name. It fails on an exit status, on a problem in the log, on a leak, on
a picture that is missing or differs, and on one of more than 60 KB. RAVOLT_RENEW_PICTURES=1 writes the
pictures instead of comparing them: look at each one.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

# JPEG itself changes these pictures by 0.6 to 2.8. Without its shadow a picture changes by 3.5.
MEAN = 3
# In a square of 32 by 32 pixels JPEG changes them by at most 4.4; small animals that are missing do by 28.
SQUARE = 8
LARGEST = 60000  # bytes
EXCUSED = ("No VRam detected", "normal map not found")
# A driver that reports less than it has (scripts/drivers.sh): the engine logs what it goes without, and the page has
# the picture of a complete one.
LIMITED = "MESA_EXTENSION_MAX_YEAR" in os.environ
if LIMITED:
    EXCUSED += ("@ RVOPENGL::init", "Shaders required but not supported on this hardware @ RVSHADER::init",
                "No chunks or no vertex buffers @ RVTERRAIN::render")
if os.environ.get("GALLIUM_DRIVER") == "softpipe":
    EXCUSED += ("Unsupported multisampling",)


def log_faults():
    log = Path("ravolt_log.txt").read_text(errors="replace")
    for line in log.splitlines():
        if "[!]" in line and not any(text in line for text in EXCUSED):
            yield "in the log: " + line.strip()
    if "\nFinal memory ratio: 0 " not in log:
        yield "it leaks"


def application_faults(program, frames, picture):
    environment = dict(os.environ, GUIDE_FRAMES=frames, GUIDE_PICTURE=picture)
    result = subprocess.run([program], env=environment, stdout=subprocess.DEVNULL)
    # One with a program of its own ends where the driver has no programs.
    if result.returncode and not (LIMITED and result.returncode == 1):
        yield f"the application ends with {result.returncode}"
    yield from log_faults()


def made_picture(name):
    """The picture that a command or the application has written."""
    return next((path for path in (Path(name + ".png"),) if path.exists()), None)


def picture_faults(page, compare):
    for link in re.findall(r"!\[[^]]*\]\(([^)]+/guide/[^)]+)\)", page.read_text()):
        expected = page.parent / link
        made = made_picture(expected.stem)
        if LIMITED:
            print(f"{link} is not compared: the driver has no extensions after a year")
            continue
        if not made:
            yield f"nothing has made {link}"
            continue
        if os.environ.get("RAVOLT_RENEW_PICTURES"):
            subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-i", made, "-q:v", "5", expected], check=True)
        result = subprocess.run([compare, expected, made, str(MEAN), str(SQUARE)], capture_output=True, text=True)
        print(result.stdout, end="")
        if result.returncode:
            yield f"{made} is not {link}: {result.stdout.strip()}"
        if expected.stat().st_size > LARGEST:
            yield f"{link} has {expected.stat().st_size} bytes"


def main():
    sources, page, tool, compare, code, frames = sys.argv[1:7]
    page = Path(sources) / page
    environment = dict(os.environ, PATH=f"{Path(tool).parent}:{os.environ['PATH']}")
    commands = subprocess.run(["bash", "-e", Path(code) / "commands.sh"], env=environment)
    faults = [f"the commands end with {commands.returncode}"] if commands.returncode else []
    if not faults and len(sys.argv) > 7:
        faults += application_faults(sys.argv[7], frames, page.stem + ".png")
    if not faults:
        faults += picture_faults(page, compare)
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
