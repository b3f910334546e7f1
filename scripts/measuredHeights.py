#!/usr/bin/python3
"""measuredHeights.py MAP.png: makes a map for `ravolt terrain` of measured heights, 403 by 344 values in
metres around Jacksboro, Tennessee, which Debian's python3-matplotlib brings.

The system's own Python runs it, since the packages are its. For files of one's own see GDAL.
"""
import pathlib
import struct
import sys
import zlib

try:
    import matplotlib
    import numpy
except ImportError as error:
    sys.exit(f"{error}; install python3-matplotlib and run this with /usr/bin/python3")


def write_png(file, values):
    """Grey, 16 bits; the lowest value is 0 and the highest 65535."""
    low, high = values.min(), values.max()
    scaled = numpy.rint((values - low) / (high - low) * 65535).astype(">u2")
    rows = b"".join(b"\0" + row.tobytes() for row in scaled)

    def chunk(kind, data):
        sum_ = zlib.crc32(kind + data)
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", sum_)

    depth, width = values.shape
    with open(file, "wb") as stream:
        stream.write(b"\x89PNG\r\n\x1a\n")
        stream.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, depth, 16, 0, 0, 0, 0)))
        stream.write(chunk(b"IDAT", zlib.compress(rows, 9)))
        stream.write(chunk(b"IEND", b""))


if len(sys.argv) != 2:
    sys.exit(__doc__.splitlines()[0])
folder = pathlib.Path(matplotlib.get_data_path()) / "sample_data"
with numpy.load(folder / "jacksboro_fault_dem.npz") as source:
    heights = source["elevation"].astype(float)
write_png(sys.argv[1], heights)
print(f"{sys.argv[1]}: {heights.shape[1]} x {heights.shape[0]} values, "
      f"{heights.min():g} to {heights.max():g} m")
