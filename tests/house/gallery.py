#!/usr/bin/env python3
"""Fails when docs/gallery.md lacks a picture: of a reference picture or of a part of the demo, or when it
shows fewer than 60 different ones, or one that is large.

    gallery.py ROOT
"""

import pathlib
import re
import sys

FEWEST, LARGEST = 60, 60 * 1024


def main():
    root = pathlib.Path(sys.argv[1])
    page = (root / "docs/gallery.md").read_text()
    shown = set(re.findall(r"!\[[^]]+\]\(pictures/gallery/([^)]+)\.jpg\)", page))
    faults = []
    if len(shown) < FEWEST:
        faults.append(f"{len(shown)} pictures are fewer than {FEWEST}")
    parts = re.findall(r'^ *\{"(\d+) ', (root / "examples/world/parts.cpp").read_text(), re.MULTILINE)
    wanted = {f"world_{number}" for number in parts}
    wanted |= {path.stem for path in (root / "tests/golden").glob("*.png")}
    if not parts:
        faults.append("the demo has no parts")
    faults += [f"{name} is not shown" for name in sorted(wanted - shown)]
    contents = {}
    for name in sorted(shown):
        path = root / f"docs/pictures/gallery/{name}.jpg"
        data = path.read_bytes() if path.exists() else b""
        if not data or len(data) > LARGEST:
            faults.append(f"{path} has {len(data)} bytes, not 1 to {LARGEST}")
        if data and data in contents:
            faults.append(f"{name} is the same picture as {contents[data]}")
        contents[data] = name
    print("\n".join(faults) or f"{len(shown)} pictures")
    sys.exit(1 if faults else 0)


main()
