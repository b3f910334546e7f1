"""The layers of the library, the kit and those of the content tool: the tables of which folder may include
which. The check of the includes reads them, and the diagrams in docs/architecture.md are made from
them.

    layers.py ROOT            prints the diagrams
    layers.py ROOT --write    brings docs/architecture.md up to date
"""

import re
import sys
from pathlib import Path

# From the ground: what a layer is, and its folders with the public headers whose classes they
# implement. A folder includes itself and the folders on lower layers, never a neighbour.
LAYERS = [
    ("foundation", {"foundation": ["api", "zlf", "owned", "weakPointer"]}),
    ("mathematics", {"math": ["vectorFamily", "Z3MVECTOR2D", "Z3MVECTOR3D", "Z3MVECTOR4D",
                              "Z3MPLANE", "Z3MMATRIX"]}),
    ("engine state", {"engine/state": ["RAVOLT", "RVSETTINGS", "version"]}),
    ("OpenGL state", {"engine/gl": ["RVOPENGL", "shadowMatrixStack"]}),
    ("resources", {"resources": ["RVTEXTURE", "RVMATERIAL", "RVSHADER", "RVFBO"]}),
    ("scene", {"scene": ["RVNODE", "RVCAMERA", "RVELEMENT", "RVLIGHT", "RVHELPER"]}),
    ("drawables", {"models": ["RVANIM", "RVMESH"],
                   "effects": ["RVEMITTER", "RVSKYDOME", "RVSKYDOME_VERTEX", "RVTERRAIN",
                               "RVTERRAIN_CHUNK", "RVTERRAIN_COORDBUFFER", "RVTERRAIN_HEADERS",
                               "RVTERRAIN_INDEXTABLE", "RVWATER"],
                   "gui": ["RVBOX", "RVBOXCOORD", "RVBUTTON", "RVFONT", "RVHSCROLLBAR", "RVLABEL",
                           "RVSCROLLBAR", "RVTEXTFIELD", "RVVSCROLLBAR", "RVWINDOW"],
                   "video": ["RVVIDEO"]}),
    ("render list", {"scene/list": []}),
    ("frame, loaders", {"engine/frame": [], "models/loader": []}),
    ("application", {"engine/app": []}),
]

# The kit, above the library: of it the sources include public headers only, and those of the lower layer
# nothing at all.
KIT_FILES = "kit/files"
KIT_LAYERS = [("files", {KIT_FILES: []}), ("kit", {"kit": []})]

# The recorder for tests, beside the kit: of the library its sources include public headers and the list
# of entry points.
TESTING_LAYERS = [("testing", {"testing": []})]

# The tool's own layers. Of the library and the kit its folders include public headers, of the library
# format numbers, and of the kit its lower layer; the folder that inspects files also includes the
# readers below.
TOOL_LAYERS = [
    ("writers", {"tools/writers": []}),
    ("common", {"tools/common": []}),
    ("process", {"tools/process": []}),
    ("jobs", {"tools/convert": [], "tools/font": [], "tools/inspect": [], "tools/stage": [],
              "tools/terrain": []}),
    ("commands", {"tools/commands": []}),
    ("program", {"tools": []}),
]

# The readers of files that need no OpenGL, as modules. The library ravolt_readers has them for the
# tool; they include one another and public headers of values.
READERS = ["effects/emitterFile", "effects/terrainConfig", "effects/terrainGeometry",
           "foundation/bytes", "foundation/platform", "foundation/platformLinux",
           "foundation/text", "foundation/xmlDocument", "gui/kerningFile", "models/modelFile",
           "models/rvaRecord", "models/rveFile", "models/rveRecords", "resources/tga",
           "scene/nodeRecords"]
INSPECTION = "tools/inspect"

# The layer of each folder, and the folder of each public header.
def layer_numbers(layers):
    return {folder: number for number, (_, folders) in enumerate(layers) for folder in folders}


LAYER = layer_numbers(LAYERS)
PART_LAYER = layer_numbers(KIT_LAYERS) | layer_numbers(TESTING_LAYERS)
TOOL_LAYER = layer_numbers(TOOL_LAYERS)
FOLDER_OF_HEADER = {f"ravolt/{header}.h": folder for _, folders in LAYERS
                    for folder, headers in folders.items() for header in headers}

DOCUMENT = "docs/architecture.md"
WIDTH = 100
DIAGRAMS = {"layers": LAYERS, "kit": KIT_LAYERS, "testing": TESTING_LAYERS, "layers of the tool": TOOL_LAYERS}  # by their marks in the document


def modules_in(root, folder):
    """The sources and headers of a folder, those of one name once."""
    paths = [path for path in (root / folder).iterdir()
             if path.suffix in (".cpp", ".h", ".inc", ".glsl")]
    names = sorted({path.stem for path in paths}, key=lambda name: (name.lower(), name))
    return names + ["shaders/*"] if (root / folder / "shaders").is_dir() else names


def wrapped(words, first, width):
    """The words in lines of at most `width` characters, the first one after `first`."""
    lines, line = [], first
    for word in words:
        if len(line) + 2 + len(word) > width:
            lines.append(line)
            line = " " * len(first)
        line += "  " + word
    return lines + [line]


def diagram(root, layers):
    """The layers from the top, each with its folders and what is in them."""
    width = max(len(folder) for _, folders in layers for folder in folders) + 1
    lines = []
    for number, (title, folders) in reversed([*enumerate(layers)]):
        for index, folder in enumerate(folders):
            name = f"{number}  {title}" if index == 0 else ""
            lines += wrapped(modules_in(root, folder), f"{name:18} {folder + '/':{width}}", WIDTH)
    return "\n".join(lines) + "\n"


def with_diagram(text, mark, drawn):
    return re.sub(rf"(<!-- {mark} -->\n```\n).*?(```\n)", lambda match: match[1] + drawn + match[2],
                  text, flags=re.S)


def main():
    root = Path(sys.argv[1])
    document = root / DOCUMENT
    text = document.read_text(encoding="utf-8")
    for mark, layers in DIAGRAMS.items():
        drawn = diagram(root, layers)
        text = with_diagram(text, mark, drawn)
        if "--write" not in sys.argv:
            print(drawn)
    if "--write" in sys.argv:
        document.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
