#!/usr/bin/env python3
"""Untrusted models: `ravolt convert` opens and writes nothing outside of the folders that it may use.

    untrustedModels.py RAVOLT SHIM

In a folder `far` beside that of the models are files of all kinds. Models in text formats name them, by every
kind of path, as materials, textures, buffers and other models. What each conversion opens is listed by the
preloaded SHIM (openedFiles.cpp). No path may lead into `far`, and everything that is changed is in the folder
of the output or in that for temporary files. With --follow the same names are opened, so that the test
would see it.
"""
import base64
import json
import os
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

# One of each, which the models below name with their ending.
FAR = {
    "secret.mtl": "newmtl a\nKd 1 0 0\n",
    "secret.png": base64.b64decode(
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg=="),
    "secret.bin": struct.pack("<9f", 0, 0, 0, 1, 0, 0, 0, 1, 0),
    "secret.obj": "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n",
    "secret.lwo": "FORM",
    "secret.MD5ANIM": "MD5Version 10\n",
}

TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nusemtl a\nf 1/1 2/2 3/3\n"


def obj_library(name):
    return {"m.obj": f"mtllib {name}\n{TRIANGLE}"}


def obj_texture(name):
    return {"m.obj": f"mtllib m.mtl\n{TRIANGLE}", "m.mtl": f"newmtl a\nKd 1 1 1\nmap_Kd {name}\nbump {name}\n"}


def gltf(buffer, image):
    return {"m.gltf": json.dumps({
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "material": 0}]}],
        "materials": [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}],
        "textures": [{"source": 0}], "images": [{"uri": image}],
        "buffers": [{"uri": buffer, "byteLength": 36}], "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]}]}), "own.bin": FAR["secret.bin"]}


def collada(name):
    return {"m.dae": f"""<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset/>
<library_images><image id="i"><init_from>{name}</init_from></image></library_images>
<library_effects><effect id="e"><profile_COMMON>
<newparam sid="s"><surface type="2D"><init_from>i</init_from></surface></newparam>
<newparam sid="t"><sampler2D><source>s</source></sampler2D></newparam>
<technique sid="c"><lambert><diffuse><texture texture="t" texcoord="u"/></diffuse></lambert></technique>
</profile_COMMON></effect></library_effects>
<library_materials><material id="m"><instance_effect url="#e"/></material></library_materials>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
<technique_common><accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source><vertices id="v">
<input semantic="POSITION" source="#p"/></vertices><triangles count="1" material="m">
<input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="n"><node><instance_geometry url="#g"><bind_material><technique_common>
<instance_material symbol="m" target="#m"/></technique_common></bind_material></instance_geometry></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#n"/></scene></COLLADA>"""}


def direct_x(name):
    escaped = name.replace("\\", "\\\\")
    return {"m.x": f"""xof 0303txt 0032
Mesh m {{ 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3;0,1,2;;
MeshMaterialList {{ 1; 1; 0;; Material {{ 1;1;1;1;; 1; 1;1;1;; 0;0;0;;
TextureFilename {{ "{escaped}"; }} }} }}
MeshTextureCoords {{ 3; 0;0;, 1;0;, 0;1;; }} }}
"""}


def ply(name):
    return {"m.ply": f"ply\nformat ascii 1.0\ncomment TextureFile {name}\nelement vertex 3\nproperty float x\n"
                     "property float y\nproperty float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                     "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"}


def lightwave_scene(name):
    return {"m.lws": f"LWSC\n3\n\nLoadObjectLayer 1 {name}\nShowObject 7 3\n"}


def irrlicht(name):
    return {"m.irr": f"""<?xml version="1.0"?><irr_scene><node type="mesh"><attributes>
<string name="Name" value="a"/><string name="Mesh" value="{name}"/></attributes></node></irr_scene>"""}


# What a model names, by the file of FAR.
MODELS = [
    ("secret.mtl", obj_library),
    ("secret.png", obj_texture),
    ("secret.bin", lambda name: gltf(name, "none.png")),
    ("secret.png", lambda name: gltf("own.bin", name)),
    ("secret.png", collada),
    ("secret.png", direct_x),
    ("secret.png", ply),
    ("secret.lwo", lightwave_scene),
    ("secret.obj", irrlicht),
]


def paths(far, secret):
    absolute = f"{far}/{secret}"
    return [f"../far/{secret}", absolute, f"./../far/{secret}", f"a/../../far/{secret}", f"..\\far\\{secret}",
            f"file://{absolute}", f"file:../far/{secret}", f"%2e%2e/far/{secret}", f"..%2Ffar%2F{secret}",
            f"link/{secret}", f"link.{secret.split('.')[1]}", f"/proc/self/cwd/../far/{secret}",
            "../" * 20 + absolute[1:], f"{secret}/../../far/{secret}", f"\t../far/{secret}", f" ../far/{secret}"]


def convert(ravolt, shim, folder, model, options):
    """The files that a conversion has opened and those that it has changed, as their real paths."""
    listed = folder / "opened.txt"
    listed.unlink(missing_ok=True)
    temporary = folder / "temporary"
    temporary.mkdir(exist_ok=True)
    environment = dict(os.environ, LD_PRELOAD=str(shim), RAVOLT_OPENED=str(listed), TMPDIR=str(temporary))
    result = subprocess.run([ravolt, "convert", *options, str(model), "-o", str(folder / "out/m.rve")],
                            env=environment, cwd=folder, capture_output=True, text=True, errors="replace",
                            stdin=subprocess.DEVNULL, timeout=120)
    if result.returncode not in (0, 1):
        sys.exit(f"{model}: exit code {result.returncode}\n{result.stderr}")
    lines = listed.read_text(errors="surrogateescape").splitlines() if listed.exists() else []
    opened = {(line[0], os.path.realpath(line[2:])) for line in lines if line[1:3] == " /"}
    if not opened:
        sys.exit("nothing was recorded: the shim does not work")
    return opened


def main():
    ravolt, shim = sys.argv[1:3]
    faults, conversions, followed = [], 0, 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(os.path.realpath(name))
        far = folder / "far"
        for path in ("far", "out"):
            (folder / path).mkdir()
        for secret, content in FAR.items():
            (far / secret).write_bytes(content if isinstance(content, bytes) else content.encode())
        for number, (secret, make) in enumerate(MODELS):
            for index, path in enumerate(paths(far, secret)):
                home = folder / f"model{number}-{index}"
                home.mkdir()
                (home / "link").symlink_to(far)
                (home / f"link.{secret.split('.')[1]}").symlink_to(far / secret)
                files = make(path)
                for file, content in files.items():
                    (home / file).write_bytes(content if isinstance(content, bytes) else content.encode())
                model = home / next(iter(files))
                opened = convert(ravolt, shim, folder, model, [])
                conversions += 1
                for kind, file in sorted(opened):
                    if file.startswith(f"{far}/"):
                        faults.append(f"{model.name} naming {path!r}: {kind} {file}")
                    may_change = (f"{folder}/out", f"{folder}/temporary", "/dev/", "/proc/", "/tmp/.X", str(home))
                    if kind == "w" and not file.startswith(may_change):
                        faults.append(f"{model.name} naming {path!r}: changes {file}")
                    if kind == "w" and file.startswith(str(home)):
                        faults.append(f"{model.name} naming {path!r}: changes {file} beside the model")
                if index == 0:
                    opened = convert(ravolt, shim, folder, model, ["--follow"])
                    followed += any(file == f"{far}/{secret}" for _, file in opened)
        for secret, content in FAR.items():
            if (far / secret).read_bytes() != (content if isinstance(content, bytes) else content.encode()):
                faults.append(f"{secret} was changed")
    for fault in faults:
        print(fault)
    print(f"{conversions} conversions, {len(faults)} faults; {followed} of {len(MODELS)} models open the file "
          "with --follow")
    return 1 if faults or followed < len(MODELS) - 1 else 0


if __name__ == "__main__":
    sys.exit(main())
