#!/usr/bin/env python3
"""Who may call which function of OpenGL or of a library behind the engine: reads the calls of the
library's sources and fails on one that stands outside of its owner and is no listed exception. The
owner says so at the top of its source. The tests' recorder has every OpenGL function that is called.

    ownership.py ROOT [--self]
"""

import re

import check

# What: the calls, as a pattern over `name(first argument`. Owners: the sources of the class.
# Exceptions: a source and why. Says: what the comment at the top of the first owner names.
ROWS = [
    {"what": r"gl(Enable|Disable)\(GL_(BLEND|CULL_FACE|SCISSOR_TEST)\b",
     "owners": ["engine/gl/RVOPENGL.cpp"], "says": ["only", "blending", "culling"],
     "exceptions": {
         ("engine/frame/frame.cpp", "GL_CULL_FACE"): "wireframe and the 2D block go around the cache",
         ("engine/frame/shadows.cpp", "GL_CULL_FACE"): "the shadow map takes back faces whatever is set",
         ("effects/RVEMITTER.cpp", "GL_CULL_FACE"): "particles are seen from both sides",
         ("engine/frame/select.cpp", "GL_SCISSOR_TEST"): "picking cuts out one pixel by itself"}},
    {"what": r"gl(Enable|Disable)ClientState\(GL_(VERTEX|INDEX|NORMAL|COLOR|TEXTURE_COORD)_ARRAY\b",
     "owners": ["engine/gl/RVOPENGL.cpp"], "says": ["only", "client arrays"],
     "exceptions": {
         ("models/RVMESH.cpp", "GL_TEXTURE_COORD_ARRAY"):
             "the coordinates of the second unit, which have no cached switch",
         ("effects/RVEMITTER.cpp", "GL_TEXTURE_COORD_ARRAY"):
             "sizes and spins travel on the second unit"}},
    {"what": r"glLightModelf\(GL_LIGHT_MODEL_TWO_SIDE\b",
     "owners": ["engine/gl/RVOPENGL.cpp"], "says": ["only", "two-sided"], "exceptions": {}},
    {"what": r"gl(Enable|Disable)\((GL_LIGHTING|GL_LIGHT\d|light)\b|glLightfv?\(",
     "owners": ["scene/RVLIGHT.cpp"], "says": ["only", "GL_LIGHTING", "lights"],
     "exceptions": {("engine/app/openGL.cpp", "glLightf"): "the base state of a new context"}},
    {"what": r"gl(Enable|Disable)\(GL_TEXTURE_2D\b|glBindTexture\("
             r"|glActiveTextureARB[(>]|\bselectUnit\(",
     "owners": ["resources/RVTEXTURE.cpp", "resources/textureUpload.cpp"],
     "says": ["only", "glBindTexture", "GL_TEXTURE_2D"],
     "exceptions": {
         ("effects/RVEMITTER.cpp", "selectUnit"):
             "both selectors move to the second unit and back",
         ("engine/gl/bindings.h", ""): "the one call, for the owners",
         ("engine/frame/shadows.cpp", ""): "the shadow map is bound on a unit that stays off",
         ("effects/litShadowMap.cpp", ""): "a shadow map for frames without one, on the same unit",
         ("engine/app/splash.cpp", ""): "drawn before the engine knows the driver"}},
    {"what": r"gl(Gen|Delete|Prioritize)Textures\(|glTex(Sub)?Image2D\(|glTexParameter[if]\(",
     "owners": ["resources/RVTEXTURE.cpp", "resources/textureUpload.cpp",
                "resources/textureMemory.cpp"],
     "says": ["only", "glGenTextures", "glDeleteTextures"],
     "exceptions": {
         ("effects/litShadowMap.cpp", ""): "one texel that is no texture of the registry",
         ("resources/blur.cpp", "glTexParameteri"): "one level is left out while it is drawn into",
         ("engine/app/splash.cpp", ""): "drawn before the engine knows the driver"}},
    {"what": r"glMaterialfv?\(",
     "owners": ["resources/RVMATERIAL.cpp"], "says": ["only", "glMaterial"],
     "exceptions": {("scene/RVHELPER.cpp", ""): "debug shapes are lit and have no material"}},
    {"what": r"gl(UseProgramObject|LinkProgram|CompileShader|ShaderSource|Uniform\w+?"
             r"|(Attach|Detach|Delete)Object|Get(Uniform|Attrib)Location|VertexAttribPointer"
             r"|(Enable|Disable)VertexAttribArray)ARB[(>]",
     "owners": ["resources/RVSHADER.cpp", "resources/shaderParameters.cpp"],
     "says": ["only", "programs"], "exceptions": {
         ("effects/RVWATER.cpp", "glUniform1iARB"): "the tiling, a parameter of the two programs alone",
         ("effects/RVTERRAIN_CHUNK.cpp", ""): "the parameters of the one program alone"}},
    {"what": r"gl(Gen|Delete)BuffersARB[(>]|glBufferDataARB[(>]",
     "owners": ["engine/gl/bindings.h"], "says": ["only", "vertex buffers"],
     "exceptions": {}},
    {"what": r"glReadPixels\(", "owners": ["engine/frame/select.cpp"], "says": [],
     "exceptions": {("resources/blur.cpp", ""): "the mean luminance is one pixel of a target"}},
    {"what": r"glClear\(", "owners": ["engine/frame/frame.cpp"], "says": [],
     "exceptions": {
         ("engine/frame/effects.cpp", ""): "the depth pass clears its targets",
         ("engine/frame/shadows.cpp", ""): "the shadow map is cleared",
         ("resources/blur.cpp", ""): "the luminance target is cleared",
         ("effects/RVTERRAIN.cpp", ""): "the images of the water are cleared",
         ("engine/app/splash.cpp", ""): "drawn before the first frame"}},
    {"what": r"\bmpeg2\w*\(", "owners": ["video/decoder.cpp"], "says": ["only", "libmpeg2"],
     "exceptions": {}},
]

RECORDED = ["testing/coreFunctions.inc", "engine/gl/glEntryPoints.inc"]
FOLDERS = ["foundation", "math", "engine", "scene", "resources", "models", "effects",
           "gui", "video"]


def read(root):
    files = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                files[path.relative_to(root).as_posix()] = path.read_text(encoding="utf-8")
    for path in RECORDED:
        files[path] = (root / path).read_text(encoding="utf-8")
    return files


def head_comment(text):
    """The comment at the top, or behind the includes when it stands there."""
    lines = []
    for line in text.splitlines():
        if line.startswith("//"):
            lines.append(line[2:].strip())
        elif lines or (line and not line.startswith("#")):
            break
    return " ".join(lines)


def without_comments(text):
    return re.sub(r"//[^\n]*", "", text)


def unrecorded(files):
    recorded = {"glGetString", "glGetError"}
    for path in RECORDED:
        recorded.update(re.findall(r"\bgl[A-Z]\w+", files.get(path, "")))
    for path, text in files.items():
        for name in re.findall(r"\bgl(?!Wrapper|Id\b)[A-Z]\w+(?=\()", without_comments(text)):
            if name not in recorded:
                yield f"{path}: {name} is missing in {RECORDED[0]}"


def faults(files):
    used = set()
    if RECORDED[0] in files:
        yield from unrecorded(files)
    for path, text in files.items():
        for row in ROWS:
            for match in re.finditer(row["what"], without_comments(text)):
                if path in row["owners"]:
                    continue
                call = match.group(0)
                excuse = [key for key in row["exceptions"] if key[0] == path and key[1] in call]
                used.update(excuse)
                if not excuse:
                    yield f"{path}: {call}...) belongs to {row['owners'][0]}"
    for row in ROWS:
        owner = row["owners"][0]
        for word in row["says"] if owner in files else ():
            if word.lower() not in head_comment(files[owner]).lower():
                yield f"{owner}: the comment at its top does not say what only it may do ({word})"
        for key in row["exceptions"]:
            if key[0] in files and key not in used:
                yield f"{key[0]}: its exception for {key[1] or row['what']} is not needed"


def self_test():
    top = "// Only here may blending, culling, two-sided lighting and the client arrays be switched.\n"
    good = {"engine/gl/RVOPENGL.cpp": top + "glEnable(GL_BLEND);",
            "engine/other.cpp": "glEnable(GL_DEPTH_TEST); // not glEnable(GL_BLEND)"}
    bad = [{**good, "engine/other.cpp": "glDisable(GL_CULL_FACE);"},
           {**good, "engine/other.cpp": "glLightfv(light, 0, 0);"},
           {**good, "engine/frame/frame.cpp": ""}]
    bad.append({**good, "engine/other.cpp": "", RECORDED[0]: "glDisable"})
    silent = {"engine/gl/RVOPENGL.cpp": "// Nothing.\n"}
    return (not list(faults(good)) and all(len(list(faults(files))) == 1 for files in bad) and
            list(faults(silent)))


if __name__ == "__main__":
    check.run(read, faults, self_test)
