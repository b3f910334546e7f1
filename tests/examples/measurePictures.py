#!/usr/bin/env python3
"""Measures the brightness of the demo's pictures, and fails where one is too dark or too bright.

    measurePictures.py FOLDER

Reads FOLDER/picture_*.png, whose names are those of the parts. The mean luminance is to be 0.25 to 0.65
by day and 0.08 to 0.35 by night, and less than 5 percent of the pixels at either end.
"""

import struct
import sys
import zlib
from pathlib import Path

DAY, NIGHT = (0.25, 0.65), (0.08, 0.35)
FIRST_BY_NIGHT = 11  # number of the part
ENDS, SHARE = (2, 253), 0.05  # levels of 255, and the share of pixels beyond them


def rows_of(data):
    """Rows of bytes from a PNG file of 8 bits a channel, red, green and blue."""
    width, height, depth, kind = struct.unpack(">IIBB", data[16:26])
    if (depth, kind) != (8, 2):
        sys.exit("a picture is not of red, green and blue, 8 bits each")
    packed, place = b"", 8
    while place < len(data):
        (length,) = struct.unpack(">I", data[place:place + 4])
        if data[place + 4:place + 8] == b"IDAT":
            packed += data[place + 8:place + 8 + length]
        place += length + 12
    raw = zlib.decompress(packed)
    above = bytearray(3 * width)
    for y in range(height):
        start = y * (3 * width + 1)
        row = bytearray(raw[start + 1:start + 1 + 3 * width])
        unfilter(row, above, raw[start])
        yield row
        above = row


def unfilter(row, above, filter_type):
    for i in range(len(row) if filter_type else 0):
        left, up = row[i - 3] if i >= 3 else 0, above[i]
        corner = above[i - 3] if i >= 3 else 0
        nearest = min((left, up, corner), key=lambda value: abs(left + up - corner - value))
        row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[filter_type]) & 255


def measure(picture):
    """Mean luminance, 0 to 1, and the shares of pixels at the dark and at the bright end."""
    total = pixels = dark = bright = 0
    for row in rows_of(picture.read_bytes()):
        for red, green, blue in zip(row[0::3], row[1::3], row[2::3]):
            level = 0.2126 * red + 0.7152 * green + 0.0722 * blue
            total += level
            pixels += 1
            dark += level <= ENDS[0]
            bright += level >= ENDS[1]
    return total / pixels / 255, dark / pixels, bright / pixels


def main():
    pictures = sorted(Path(sys.argv[1]).glob("picture_*.png"),
                      key=lambda path: int(path.stem.split("_")[1]))
    failed = not pictures
    for picture in pictures:
        low, high = NIGHT if int(picture.stem.split("_")[1]) >= FIRST_BY_NIGHT else DAY
        mean, dark, bright = measure(picture)
        right = low <= mean <= high and dark < SHARE and bright < SHARE
        failed = failed or not right
        print(f"{picture.stem[8:]:28} mean {mean:.3f} ({low} to {high})  dark {dark:6.1%}  "
              f"bright {bright:6.1%}{'' if right else '  FAILED'}")
    sys.exit(1 if failed else 0)


main()
