#!/usr/bin/env python3
"""makeStage.py FOLDER: makes the stage of the demo, in metres: stage.obj, stage.mtl and its textures.

A round floor of paving stones amid grass, four street lamps, a screen for a video, and two skies. The
floor is coarse on purpose, so that lighting by corners and lighting by pixels are told apart.
"""
import math
import random
import struct
import sys
import zlib


def write_png(file, width, height, pixel):
    """`pixel(x, y)` gives red, green and blue from 0 to 1, rows from the top down."""
    rows = bytearray()
    for y in range(height):
        rows.append(0)
        for x in range(width):
            rows += bytes(max(0, min(255, round(255 * value))) for value in pixel(x, y))

    def chunk(kind, data):
        sum_ = zlib.crc32(kind + data)
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", sum_)

    with open(file, "wb") as stream:
        stream.write(b"\x89PNG\r\n\x1a\n")
        stream.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        stream.write(chunk(b"IDAT", zlib.compress(bytes(rows), 9)))
        stream.write(chunk(b"IEND", b""))


def noise(seed, columns, rows):
    """Smooth noise from 0 to 1 that repeats after 1 in both directions."""
    dice = random.Random(seed)
    grid = [[dice.random() for _ in range(columns)] for _ in range(rows)]

    def at(u, v):
        x, y = u * columns, v * rows
        left, top = math.floor(x), math.floor(y)
        s, t = x - left, y - top
        s, t = s * s * (3 - 2 * s), t * t * (3 - 2 * t)

        def corner(i, j):
            return grid[(top + j) % rows][(left + i) % columns]

        upper = corner(0, 0) * (1 - s) + corner(1, 0) * s
        lower = corner(0, 1) * (1 - s) + corner(1, 1) * s
        return upper * (1 - t) + lower * t

    return at


def octaves(seed, columns, rows, number):
    layers = [noise(seed + i, columns << i, rows << i) for i in range(number)]
    whole = 2 - 2 ** (1 - number)
    return lambda u, v: sum(layer(u, v) / 2**i for i, layer in enumerate(layers)) / whole


def make_paving(file, size=512, courses=8, stones=4):
    grain, dirt = octaves(1, 64, 64, 2), octaves(5, 6, 6, 3)
    dice = random.Random(2)
    tones = [[dice.uniform(0.78, 1.0) for _ in range(stones)] for _ in range(courses)]

    def pixel(x, y):
        u, v = x / size, y / size
        course = int(v * courses)
        along = (u * stones + 0.5 * (course % 2)) % stones
        stone = int(along)
        edge = min(along - stone, stone + 1 - along) / stones
        edge = min(edge, abs(v * courses - course), abs(course + 1 - v * courses))
        down = min(v * courses - course, course + 1 - v * courses) / courses
        joint = min(1, min(edge, down) * size / 3.5)
        value = tones[course][stone] * (0.72 + 0.3 * grain(u, v)) * (0.8 + 0.3 * dirt(u, v))
        value *= 0.42 + 0.58 * joint
        return 0.66 * value, 0.63 * value, 0.59 * value

    write_png(file, size, size, pixel)


def make_grass(file, size=256):
    blades, patches = octaves(11, 96, 48, 2), octaves(15, 5, 5, 3)

    def pixel(x, y):
        u, v = x / size, y / size
        value = (0.35 + 0.75 * blades(u, v)) * (0.65 + 0.55 * patches(u, v))
        return 0.30 * value, 0.44 * value, 0.15 * value

    write_png(file, size, size, pixel)


def make_sky(file, horizon, zenith, cloud, cover, stars, width=512, height=256):
    """The upper edge is the zenith, the lower one the horizon."""
    clouds = octaves(21, 6, 5, 5)
    dice = random.Random(31)
    lit = {(dice.randrange(width), int(height * dice.random() ** 0.8)): dice.uniform(0.25, 0.9)
           for _ in range(stars)}

    def pixel(x, y):
        up = 1 - y / (height - 1)
        part = up ** 0.6
        color = [h + (z - h) * part for h, z in zip(horizon, zenith)]
        thick = max(0, clouds(x / width, up ** 0.7) - cover) / (1 - cover)
        thick = min(1, 1.6 * thick) * min(1, 8 * up) * (1 - up) ** 0.5
        star = lit.get((x, y), 0) * part
        return [c + (k - c) * thick + star for c, k in zip(color, cloud)]

    write_png(file, width, height, pixel)


class Model:
    """An OBJ file that is written as it grows."""

    def __init__(self, stream):
        self.stream = stream
        self.count = {"v": 0, "vt": 0, "vn": 0}

    def put(self, kind, *numbers):
        self.stream.write(kind + "".join(f" {round(n, 4) + 0.0:g}" for n in numbers) + "\n")
        self.count[kind] += 1
        return self.count[kind]

    def begin(self, name, material):
        self.stream.write(f"o {name}\nusemtl {material}\n")

    def face(self, corners):
        self.stream.write("f " + " ".join(
            "/".join(str(index) if index else "" for index in corner) for corner in corners) + "\n")

    def grid(self, rows, closed, flip=False):
        """Faces between rows of corners; each row goes round when `closed`."""
        for one, two in zip(rows, rows[1:]):
            for i in range(len(one) - (0 if closed else 1)):
                j = (i + 1) % len(one)
                quad = [one[i], two[i], two[j], one[j]]
                quad = [c for k, c in enumerate(quad) if c not in quad[:k]]
                self.face(quad[::-1] if flip else quad)

    def disc(self, name, material, radii, sectors, tile):
        """Level rings about the origin, seen from above; a tile of the texture is so many metres."""
        self.begin(name, material)
        normal = self.put("vn", 0, 1, 0)
        rows = []
        for radius in radii:
            row = []
            for i in range(sectors if radius else 1):
                angle = 2 * math.pi * i / sectors
                x, z = radius * math.sin(angle), radius * math.cos(angle)
                row.append((self.put("v", x, 0, z), self.put("vt", x / tile, -z / tile), normal))
            rows.append(row if radius else row * sectors)
        self.grid(rows, True)

    def box(self, name, material, middle, size, angle=0):
        self.begin(name, material)
        right = (math.cos(angle), 0, -math.sin(angle))
        axes = (right, (0, 1, 0), (math.sin(angle), 0, math.cos(angle)))

        def point(signs):
            return [m + sum(s * half / 2 * axis[k] for s, half, axis in zip(signs, size, axes))
                    for k, m in enumerate(middle)]

        for axis in range(3):
            for sign in (-1, 1):
                normal = self.put("vn", *(sign * n for n in axes[axis]))
                a, b = [k for k in range(3) if k != axis]
                corners = []
                for s, t in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                    signs = [0, 0, 0]
                    signs[axis], signs[a], signs[b] = sign, s, t
                    corners.append((self.put("v", *point(signs)), 0, normal))
                self.face(corners if (sign > 0) == (axis != 1) else corners[::-1])

    def post(self, name, x, z, height=2.5, radius=0.07, sides=12):
        self.begin(name, "post")
        angles = [2 * math.pi * i / sides for i in range(sides)]
        normals = [self.put("vn", math.sin(a), 0, math.cos(a)) for a in angles]
        rows = [[(self.put("v", x + radius * math.sin(a), y, z + radius * math.cos(a)), 0, n)
                 for a, n in zip(angles, normals)] for y in (height, 0)]
        self.grid(rows, True)

    def ball(self, name, material, middle, radius, rings=14, sectors=24):
        self.begin(name, material)
        rows = []
        for ring in range(rings + 1):
            down = math.pi * ring / rings
            row = []
            for i in range(sectors if 0 < ring < rings else 1):
                angle = 2 * math.pi * i / sectors
                n = (math.sin(down) * math.sin(angle), math.cos(down),
                     math.sin(down) * math.cos(angle))
                row.append((self.put("v", *(m + radius * k for m, k in zip(middle, n))), 0,
                            self.put("vn", *n)))
            rows.append(row if 0 < ring < rings else row * sectors)
        self.grid(rows, True)

    def dome(self, name, material, radius, rings=10, sectors=32):
        """Seen from within."""
        self.begin(name, material)
        rows = []
        for ring in range(rings + 1):
            up = math.pi / 2 * (1 - ring / rings)
            row = []
            for i in range(sectors + 1):
                angle = 2 * math.pi * i / sectors
                out = radius * math.cos(up)
                row.append((self.put("v", out * math.sin(angle), radius * math.sin(up) - 0.02 * radius,
                                     out * math.cos(angle)),
                            self.put("vt", 2 * i / sectors, 0.01 + 0.98 * up / (math.pi / 2)),
                            0))
            rows.append(row)
        self.grid(rows, False, flip=True)


LAMPS = ((-1.7, 5), (4.6, -1.8), (-4.6, -5), (1.4, -8.5))
SCREEN = (-4.5, 2.65, -2.7)  # its middle
TURN = 0.4887  # radians

MATERIALS = """# Materials of the demo's stage. An emission above 1 glows with bloom.
newmtl floor
Ka 1 1 1
Kd 1 1 1
Ks 0 0 0
map_Kd paving.png

newmtl grass
Ka 1 1 1
Kd 1 1 1
Ks 0 0 0
map_Kd grass.png

newmtl post
Ka 0.1 0.11 0.12
Kd 0.1 0.11 0.12
Ks 0.25 0.25 0.25
Ns 20
illum 2

newmtl bulb
Ka 0 0 0
Kd 0 0 0
Ks 0 0 0
Ke 1.2 1.17 1.1

# Dark until a video shines on it.
newmtl screen
Ka 0 0 0
Kd 0 0 0
Ks 0 0 0

# Drawn without light.
newmtl sky_day
map_Kd sky_day.png

newmtl sky_night
map_Kd sky_night.png
"""


def make_model(file):
    with open(file, "w", encoding="ascii") as stream:
        stream.write("# The stage of the demo, made by scripts/makeStage.py.\nmtllib stage.mtl\n")
        model = Model(stream)
        model.disc("floor", "floor", [0, 2.4, 4.8, 7.2, 9.6, 12], 30, 4)
        model.disc("grass", "grass", [12, 16, 24, 40, 70, 110], 30, 5)
        for i, (x, z) in enumerate(LAMPS, 1):
            model.post(f"post{i}", x, z)
            model.ball(f"bulb{i}", "bulb", (x, 2.66, z), 0.2)
        right = (math.cos(TURN), -math.sin(TURN))
        front = (math.sin(TURN), math.cos(TURN))
        x, y, z = SCREEN
        for i, side in enumerate((-1.6, 1.6), 1):
            place = (x + side * right[0] - 0.12 * front[0], 0.5, z + side * right[1] - 0.12 * front[1])
            model.box(f"leg{i}", "post", place, (0.18, 1.0, 0.12), TURN)
        model.box("frame", "post", (x - 0.1 * front[0], y, z - 0.1 * front[1]), (4.64, 3.54, 0.18), TURN)
        model.begin("screen", "screen")
        normal = model.put("vn", front[0], 0, front[1])
        corners = []
        for across, up, u, v in ((-2.2, -1.65, 0.001, 0.9355), (2.2, -1.65, 0.624, 0.9355),
                                 (2.2, 1.65, 0.624, 0.002), (-2.2, 1.65, 0.001, 0.002)):
            place = (x + across * right[0], y + up, z + across * right[1])
            corners.append((model.put("v", *place), model.put("vt", u, v), normal))
        model.face(corners)
        model.dome("sky_day", "sky_day", 100)
        model.dome("sky_night", "sky_night", 100)


def main():
    folder = sys.argv[1]
    make_model(f"{folder}/stage.obj")
    with open(f"{folder}/stage.mtl", "w", encoding="ascii") as stream:
        stream.write(MATERIALS)
    make_paving(f"{folder}/paving.png")
    make_grass(f"{folder}/grass.png")
    make_sky(f"{folder}/sky_day.png", (0.72, 0.84, 0.94), (0.22, 0.44, 0.78), (0.97, 0.97, 0.98), 0.5, 0)
    make_sky(f"{folder}/sky_night.png", (0.13, 0.15, 0.24), (0.015, 0.02, 0.06), (0.16, 0.17, 0.24),
             0.5, 260)


if __name__ == "__main__":
    main()
