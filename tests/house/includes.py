#!/usr/bin/env python3
"""Reads the #include lines of the library, of the kit, of the library for tests and of the content tool
and fails on a folder that includes a neighbour or a higher layer, on a cycle of sources, on a public
header that includes more than it may, on a source of the others that includes internal headers of the
library, on a header of the kit or for tests that includes SDL's, on a folder without a layer, and on a diagram in docs/architecture.md that is not the one of the table.

    includes.py ROOT            checks the sources under ROOT
    includes.py ROOT --self     checks that the check itself finds each kind of fault
"""

import re
import sys
from pathlib import Path

from layers import (DIAGRAMS, DOCUMENT, FOLDER_OF_HEADER, INSPECTION, KIT_FILES, LAYER, PART_LAYER,
                    READERS, TOOL_LAYER, diagram, with_diagram)

TOP_FOLDERS = sorted({folder.split("/")[0] for folder in LAYER} | {"include/ravolt"})

# What a public header may include: headers by value, and nothing of SDL or of the inside.
LEAVES = re.compile(r"^ravolt/(api|owned|vectorFamily|weakPointer|Z3M\w+|RV\w+_VERTEX|RV\w+_HEADERS|RVBOXCOORD)\.h$")
OPENGL_HEADERS = {"ravolt/RVOPENGL.h": {"GL/gl.h", "GL/glext.h"}}

# Headers that the build makes, and that include nothing.
MADE = {"resources/shaderSources.h"}

# The libraries beside the engine's, and what each one includes except public headers.
PARTS = {"kit": {"kit/files/pngWriter.h"}, "testing": {"engine/gl/glEntryPoints.inc"}}

# What these libraries include of the engine's, and the tool of the engine's and of the kit.
FOR_PARTS = re.compile(r"^ravolt(/\w+)?\.h$")
FOR_TOOLS = re.compile(rf"^(ravolt/(kit/)?\w+\.h|{KIT_FILES}/\w+\.h|(models|resources)/\w+Format\.h)$")
FOR_INSPECTION = {f"{reader}.h" for reader in READERS} | {"engine/state/settingsKeys.inc"}

# What the readers of files include besides each other: nothing that needs OpenGL.
FOR_READERS = re.compile(r"^(models|resources)/\w+Format\.h$"
                         r"|^ravolt/(zlf|Z3M\w+|RVMESH|RVTERRAIN_HEADERS)\.h$")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def folder_of(path):
    """The folder of the table in which a file stands, or whose class a public header declares."""
    if path.startswith("ravolt/"):
        return FOLDER_OF_HEADER.get(path)
    folder = path.rpartition("/")[0]
    return folder if folder in LAYER else None


def is_of(part, name):
    return name == f"ravolt/{part}.h" or name.startswith((f"{part}/", f"ravolt/{part}/"))


def read(root):
    """All files of the library: the name by which they are included, and their text."""
    files = {}
    for folder in TOP_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            name = path.relative_to(root).as_posix().removeprefix("include/")
            if path.suffix in (".h", ".cpp", ".inc") and not any(
                    is_of(part, name) for part in PARTS):
                files[name] = path.read_text(encoding="utf-8")
    return files


def folder_of_part(path):
    """A public header is of the folder of its library."""
    parts = path.removeprefix("ravolt/").removesuffix(".h").split("/")
    return "/".join(parts[:-1]) or parts[0]


def read_part(root, part):
    paths = [root / f"include/ravolt/{part}.h", *sorted((root / f"include/ravolt/{part}").rglob("*.h")),
             *sorted((root / part).rglob("*.*"))]
    return {path.relative_to(root).as_posix().removeprefix("include/"): path.read_text(encoding="utf-8")
            for path in paths if path.suffix in (".h", ".cpp", ".inc")}


def read_tools(root):
    return {path.relative_to(root).as_posix(): path.read_text(encoding="utf-8")
            for path in sorted((root / "tools").rglob("*")) if path.suffix in (".h", ".cpp", ".inc")}


def includes_of(text):
    return [(kind == '"', name) for kind, name in INCLUDE.findall(text)]


def module_of(path):
    """A source and the header that it is named as are one; a class's header is in include/ravolt."""
    return path.rsplit("/", 1)[-1].split(".")[0]


def layer_faults(files):
    for path, text in files.items():
        own = folder_of(path)
        if own is None:
            yield f"{path}: is in no layer; give its folder one in tests/house/layers.py"
            continue
        for ours, name in includes_of(text):
            if not ours or name in MADE:
                continue
            other = folder_of(name)
            if name not in files:
                yield f"{path}: includes {name}, which is not there"
            elif other and other != own and LAYER[other] >= LAYER[own]:
                yield f"{path} (layer {LAYER[own]}) includes {name} (layer {LAYER[other]})"


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


def tool_faults(files):
    for path, text in files.items():
        own = path.rpartition("/")[0]
        if own not in TOOL_LAYER:
            yield f"{path}: is in no layer; give its folder one in tests/house/layers.py"
            continue
        for ours, name in includes_of(text):
            other = name.rpartition("/")[0]
            if not ours or FOR_TOOLS.match(name) or (own == INSPECTION and name in FOR_INSPECTION):
                continue
            if name not in files:
                yield f"{path}: includes {name}, which is no header of the tool"
            elif other != own and TOOL_LAYER.get(other, -1) >= TOOL_LAYER[own]:
                yield f"{path} (layer {TOOL_LAYER[own]}) includes {name} (layer {TOOL_LAYER[other]})"
    yield from cycle_faults(files, lambda path: path.rpartition(".")[0])


def part_faults(part, files):
    for path, text in files.items():
        if folder_of_part(path) not in PART_LAYER:
            yield f"{path}: is in no layer; give its folder one in tests/house/layers.py"
            continue
        for ours, name in includes_of(text):
            if name.startswith("SDL") and path.startswith("ravolt/"):
                yield f"{path}: a header of the {part} library does not include {name}"
            own, other = folder_of_part(path), folder_of_part(name)
            if not ours or name in PARTS[part]:
                continue
            if FOR_PARTS.match(name) and not is_of(part, name) and own != KIT_FILES:
                continue
            if name not in files:
                yield f"{path}: includes {name}, which is no header of the {part} library"
            elif other != own and PART_LAYER[other] >= PART_LAYER[own]:
                yield f"{path} (layer {PART_LAYER[own]}) includes {name} (layer {PART_LAYER[other]})"
    yield from cycle_faults(files, module_of)


def reader_faults(files):
    for path, text in files.items():
        if path.rpartition(".")[0] not in READERS:
            continue
        for ours, name in includes_of(text):
            if ours and name.rpartition(".")[0] not in READERS and not FOR_READERS.match(name):
                yield f"{path}: a reader without OpenGL includes {name}"
            if not ours and name.split("/")[0] in ("GL", "SDL"):
                yield f"{path}: a reader without OpenGL includes {name}"


def cycle_faults(files, module_of):
    arrows = {}
    for path, text in files.items():
        targets = arrows.setdefault(module_of(path), set())
        targets |= {module_of(name) for ours, name in includes_of(text) if ours and name in files}
        targets.discard(module_of(path))
    done, trail = set(), []

    def walk(module):
        if module in trail:
            yield "cycle: " + " -> ".join(trail[trail.index(module):] + [module])
        elif module not in done:
            trail.append(module)
            for target in sorted(arrows.get(module, ())):
                yield from walk(target)
            trail.pop()
            done.add(module)

    for module in sorted(arrows):
        yield from walk(module)


def diagram_faults(text, mark, drawn):
    if with_diagram(text, mark, drawn) != text or drawn not in text:
        yield f"{DOCUMENT}: the diagram is not that of the table; tests/house/layers.py . --write"


def faults(files):
    return [*layer_faults(files), *header_faults(files), *reader_faults(files),
            *cycle_faults(files, module_of)]


def self_test():
    """Each kind of fault is found in a library of two files; without a fault none is."""
    good = {"ravolt/zlf.h": '#include "ravolt/api.h"', "ravolt/api.h": "",
            "engine/frame/frame.cpp": '#include "ravolt/zlf.h"\n#include <vector>'}
    bad = [
        {"foundation/ids.cpp": '#include "ravolt/RVNODE.h"', "ravolt/RVNODE.h": ""},
        {"models/RVMESH.cpp": '#include "video/stream.h"', "video/stream.h": ""},
        {"scene/RVNODE.cpp": '#include "scene/localTransform.h"', "ravolt/RVNODE.h": "",
         "scene/localTransform.h": "", "scene/localTransform.cpp": '#include "ravolt/RVNODE.h"'},
        {"ravolt/RVNODE.h": '#include "ravolt/zlf.h"', "ravolt/zlf.h": ""},
        {"ravolt/RVNODE.h": "#include <SDL/SDL.h>"},
        {"engine/unknown.cpp": ""},
        {"foundation/ids.cpp": '#include "foundation/missing.h"'},
        {"models/rveFile.cpp": '#include "ravolt/RVTEXTURE.h"', "ravolt/RVTEXTURE.h": ""},
        {"resources/tga.cpp": "#include <GL/gl.h>"},
    ]
    tools = {"tools/writers/a.h": "", "tools/convert/a.h": '#include "models/rveFormat.h"',
             "tools/inspect/a.cpp": '#include "models/rveFile.h"\n#include "kit/files/a.h"',
             "tools/convert/a.cpp": '#include "tools/convert/a.h"\n#include "tools/writers/a.h"'}
    bad_tools = [
        {"tools/writers/b.cpp": '#include "tools/convert/a.h"'},
        {"tools/stage/b.cpp": '#include "tools/convert/a.h"'},
        {"tools/stage/b.cpp": '#include "scene/renderList.h"'},
        {"tools/stage/b.cpp": '#include "models/rveFile.h"'},
        {"tools/stage/b.cpp": '#include "kit/surface.h"'},
        {"tools/inspect/b.cpp": '#include "scene/renderList.h"'},
        {"tools/convert/a.h": '#include "tools/convert/b.h"',
         "tools/convert/b.h": '#include "tools/convert/a.h"'},
        {"tools/unknown/b.cpp": ""},
    ]
    kit = {"ravolt/kit.h": '#include "ravolt/kit/a.h"', "kit/b.h": "", "kit/files/a.h": "",
           "ravolt/kit/a.h": '#include "ravolt/RVNODE.h"\n#include <string>',
           "kit/a.cpp": '#include "ravolt/kit/a.h"\n#include "kit/files/a.h"\n#include <SDL.h>'}
    bad_kit = [
        {"kit/c.cpp": '#include "tools/writers/byteWriter.h"'},
        {"kit/files/c.cpp": '#include "kit/b.h"'},
        {"kit/files/c.cpp": '#include "ravolt/zlf.h"'},
        {"kit/unknown/c.cpp": ""},
        {"kit/c.cpp": '#include "scene/renderList.h"'},
        {"ravolt/kit/c.h": "#include <SDL/SDL.h>"},
        {"ravolt/kit/a.h": '#include "ravolt/kit/c.h"', "ravolt/kit/c.h": '#include "ravolt/kit/a.h"'},
    ]
    document = "<!-- layers -->\n```\n1  scene\n```\n"
    return (faults(good) == [] and all(len(faults(files)) == 1 for files in bad)
            and not [*tool_faults(tools)]
            and all(len([*tool_faults(tools | files)]) == 1 for files in bad_tools)
            and not [*part_faults("kit", kit)]
            and all(len([*part_faults("kit", kit | files)]) == 1 for files in bad_kit)
            and not [*diagram_faults(document, "layers", "1  scene\n")]
            and len([*diagram_faults(document, "layers", "1  models\n")]) == 1
            and len([*diagram_faults("no diagram", "layers", "1  scene\n")]) == 1)


def main():
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    root = Path(sys.argv[1])
    files, tools = read(root), read_tools(root)
    parts = {part: read_part(root, part) for part in PARTS}
    document = (root / DOCUMENT).read_text(encoding="utf-8")
    found = faults(files) + [*tool_faults(tools)]
    for part, part_files in parts.items():
        found += part_faults(part, part_files)
    for mark, layers in DIAGRAMS.items():
        found += diagram_faults(document, mark, diagram(root, layers))
    for fault in found:
        print(fault)
    everything = [files, tools, *parts.values()]
    print(f"{sum(map(len, everything))} files, {len(found)} faults")
    sys.exit(1 if found or not all(everything) else 0)


if __name__ == "__main__":
    main()
