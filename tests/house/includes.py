#!/usr/bin/env python3
"""Reads the #include lines of the library and fails on an arrow to a higher floor, on a circle, on a
public header that includes more than it may, and on a source that the picture of the floors in
docs/architecture.md does not show, or shows on another floor.

    includes.py ROOT            checks the sources under ROOT
    includes.py ROOT --self     checks that the check itself finds each kind of fault
"""

import re
import sys
from pathlib import Path

# The floors, from the ground. A source stands on the floor of what it needs; a header of a class on
# that of the class. A folder with a slash at its end stands for all of its files; a name without an
# ending for the source and the header of that name.
FLOORS = {
    0: ["foundation/", "math/",
        "ravolt/api", "ravolt/zlf", "ravolt/vectorFamily", "ravolt/Z3MVECTOR2D",
        "ravolt/Z3MVECTOR3D", "ravolt/Z3MVECTOR4D", "ravolt/Z3MPLANE", "ravolt/Z3MMATRIX"],
    1: ["ravolt/RAVOLT", "ravolt/RVSETTINGS", "ravolt/RVOPENGL", "ravolt/shadowMatrixStack",
        "engine/RAVOLT", "engine/RVSETTINGS", "engine/RVOPENGL", "engine/shadowMatrixStack",
        "engine/banner", "engine/glEntryPoints", "engine/screenQuad", "engine/stateCache"],
    2: ["resources/", "ravolt/RVTEXTURE", "ravolt/RVMATERIAL", "ravolt/RVSHADER", "ravolt/RVFBO"],
    3: ["scene/RVNODE", "scene/RVCAMERA", "scene/RVELEMENT", "scene/RVLIGHT", "scene/RVHELPER",
        "scene/localTransform", "scene/nodeClass", "scene/nodeRecords", "scene/nodeTree",
        "scene/entryOrder",
        "ravolt/RVNODE", "ravolt/RVCAMERA", "ravolt/RVELEMENT", "ravolt/RVLIGHT",
        "ravolt/RVHELPER"],
    4: ["ravolt/RVANIM", "ravolt/RVMESH", "ravolt/RVVIDEO",
        "models/RVANIM", "models/RVMESH", "models/skinning", "models/meshLoad", "models/loadIndex",
        "models/modelFile", "models/rvaFile", "models/rveRecords", "video/"],
    5: ["scene/pass", "scene/sort"],
    6: ["engine/frame", "engine/effects", "engine/shadows", "engine/select", "models/rveLoader"],
    7: ["engine/lifecycle", "engine/loadHook", "engine/window", "engine/windowSystem",
        "engine/splash", "engine/splashPicture", "engine/glStart",
        "engine/renderTargets"],
}

FOLDERS = ["foundation", "math", "engine", "scene", "resources", "models", "video",
           "include/ravolt"]

# What a public header may include: headers by value, and nothing of SDL or of the inside.
LEAVES = re.compile(r"^ravolt/(api|vectorFamily|Z3M\w+)\.h$")
OPENGL_HEADERS = {"ravolt/RVOPENGL.h": {"GL/gl.h", "GL/glext.h"}}

# Headers that the build makes, and that include nothing.
MADE = {"resources/shaderSources.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def key(path):
    """The name by which a file is included, without its ending."""
    return re.sub(r"\.\w+$", "", path)


def floor_of(path):
    for floor, names in FLOORS.items():
        for name in names:
            if key(path) == name or (name.endswith("/") and path.startswith(name)):
                return floor
    return None


def read(root):
    """All files of the library: the name by which they are included, and their text."""
    files = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp", ".inc"):
                name = path.relative_to(root).as_posix().removeprefix("include/")
                files[name] = path.read_text(encoding="utf-8")
    return files


def includes_of(text):
    return [(kind == '"', name) for kind, name in INCLUDE.findall(text)]


def module_of(path):
    """A source and the header that it is named as are one; a class's header is in include/ravolt."""
    return path.rsplit("/", 1)[-1].split(".")[0]


def floor_faults(files):
    for path, text in files.items():
        own = floor_of(path)
        if own is None:
            yield f"{path}: stands on no floor; give it one in tests/house/includes.py"
            continue
        for ours, name in includes_of(text):
            if ours and name not in files and name not in MADE:
                yield f"{path}: includes {name}, which is not there"
            elif ours and (floor_of(name) or 0) > own:
                yield f"{path} (floor {own}) includes {name} (floor {floor_of(name)})"


def header_faults(files):
    for path, text in files.items():
        if not path.startswith("ravolt/"):
            continue
        for ours, name in includes_of(text):
            base = re.search(r"class RV_API \w+ : public (\w+)", text)
            if ours and not LEAVES.match(name) and not (base and name == f"ravolt/{base[1]}.h"):
                yield f"{path}: a public header includes values and its base class, not {name}"
            if not ours and "/" in name and name not in OPENGL_HEADERS.get(path, set()):
                yield f"{path}: a public header does not include {name}"


def circle_faults(files):
    arrows = {}
    for path, text in files.items():
        targets = arrows.setdefault(module_of(path), set())
        targets |= {module_of(name) for ours, name in includes_of(text) if ours and name in files}
        targets.discard(module_of(path))
    done, trail = set(), []

    def walk(module):
        if module in trail:
            yield "circle: " + " -> ".join(trail[trail.index(module):] + [module])
        elif module not in done:
            trail.append(module)
            for target in sorted(arrows.get(module, ())):
                yield from walk(target)
            trail.pop()
            done.add(module)

    for module in sorted(arrows):
        yield from walk(module)


def picture_of(text):
    """Floor by floor the words that the picture has there; a line without a number goes on."""
    floors, floor = {}, None
    block = re.search(r"^```\n(7 .*?)^```", text, re.M | re.S)
    for line in block[1].splitlines() if block else ():
        if line[:1].isdigit():
            floor = int(line[0])
        floors.setdefault(floor, set()).update(re.findall(r"\w+", line))
    return floors


def picture_faults(files, picture):
    for path in files:
        folder = path.split("/")[0]
        shown = folder if floor_of(path) == 0 else module_of(path)
        if folder != "ravolt" and shown not in picture.get(floor_of(path), set()):
            yield f"{path}: docs/architecture.md does not show it on floor {floor_of(path)}"


def faults(files):
    return [*floor_faults(files), *header_faults(files), *circle_faults(files)]


def self_test():
    """Each kind of fault, in a library of two files, is found; without a fault none is."""
    good = {"ravolt/zlf.h": '#include "ravolt/api.h"', "ravolt/api.h": "",
            "engine/frame.cpp": '#include "ravolt/zlf.h"\n#include <vector>'}
    bad = [
        {"foundation/text.cpp": '#include "ravolt/RVNODE.h"', "ravolt/RVNODE.h": ""},
        {"scene/RVNODE.cpp": '#include "scene/localTransform.h"', "ravolt/RVNODE.h": "",
         "scene/localTransform.h": "", "scene/localTransform.cpp": '#include "ravolt/RVNODE.h"'},
        {"ravolt/RVNODE.h": '#include "ravolt/zlf.h"', "ravolt/zlf.h": ""},
        {"ravolt/RVNODE.h": "#include <SDL/SDL.h>"},
        {"scene/unknown.cpp": ""},
        {"foundation/text.cpp": '#include "foundation/missing.h"'},
    ]
    picture = picture_of("```\n7  front door  engine/window\n6  frame  engine/frame\n"
                         "              select\n0  ground  math/*\n```\n")
    shown = {"engine/frame.cpp": "", "engine/select.cpp": "", "math/Z3MMATRIX.cpp": ""}
    hidden = [{"engine/effects.cpp": ""}, {"foundation/log.cpp": ""}, {"engine/lifecycle.cpp": ""}]
    return (faults(good) == [] and all(len(faults(files)) == 1 for files in bad)
            and [*picture_faults(shown, picture)] == []
            and all(len([*picture_faults(files, picture)]) == 1 for files in hidden))


def main():
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    root = Path(sys.argv[1])
    files = read(root)
    picture = picture_of((root / "docs/architecture.md").read_text(encoding="utf-8"))
    found = faults(files) + [*picture_faults(files, picture)]
    for fault in found:
        print(fault)
    print(f"{len(files)} files, {len(found)} faults")
    sys.exit(1 if found or not files else 0)


if __name__ == "__main__":
    main()
