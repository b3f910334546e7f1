#!/usr/bin/env python3
"""Instructions of a frame: in the library, in the program itself, and in all.

    instructions.py COUNTED_FRAMES SCENE...

counts one frame of each scene of the program countedFrames with callgrind. Each scene is drawn once
without callgrind first, so that the driver has its compiled code on disk. The driver draws in the
calling thread.
"""

import os
import re
import subprocess
import sys
import tempfile

LINE = re.compile(r"^\s*([\d,]+)\s*(?:\([\d.]+%\))?\s+(.*)$")


def instructions(program, scene, folder):
    out = os.path.join(folder, "callgrind.out")
    subprocess.run(["valgrind", "--tool=callgrind", "--instr-atstart=no",
                    "--callgrind-out-file=" + out, program, scene, "1"],
                   cwd=folder, check=True, capture_output=True)
    listing = subprocess.run(["callgrind_annotate", "--threshold=100", "--auto=no", out],
                             check=True, capture_output=True, text=True).stdout
    library = own = whole = 0
    for line in listing.splitlines():
        found = LINE.match(line)
        if not found:
            continue
        count = int(found.group(1).replace(",", ""))
        if "PROGRAM TOTALS" in line:
            whole = count
        elif "/libravolt.so" in found.group(2):
            library += count
        elif "/countedFrames" in found.group(2):
            own += count
    return library, own, whole


def main():
    program, scenes = os.path.abspath(sys.argv[1]), sys.argv[2:]
    os.environ["LP_NUM_THREADS"] = "0"
    print("| Scene | In the library, a frame | In the program | In all |\n|---|---:|---:|---:|",
          flush=True)
    with tempfile.TemporaryDirectory() as folder:
        for scene in scenes:
            subprocess.run([program, scene, "1"], cwd=folder, check=True, capture_output=True)
            library, own, whole = instructions(program, scene, folder)
            print(f"| {scene} | {library:,} | {own:,} | {whole:,} |", flush=True)


if __name__ == "__main__":
    main()
