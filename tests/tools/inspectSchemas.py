#!/usr/bin/env python3
"""Validates what `ravolt info --json` and `ravolt check --json` print against the schemas in docs/, for
a file of each kind, for damaged files and for files with warnings.

    inspectSchemas.py SOURCE RAVOLT
"""

import json
import subprocess
import sys
from pathlib import Path

import jsonschema

CUBE = "\n".join(["v 0 0 0", "v 1 0 0", "v 0 1 0", "vt 0 0", "vt 1 0", "vt 0 1", "vn 0 0 1",
                  "f 1/1/1 2/2/1 3/3/1"])
VIDEO = bytes([0, 0, 1, 0xB3, 0x16, 0x01, 0x20, 0x13, 0xFF, 0xFF, 0xE0, 0xA0])
# One bone in one frame.
CLIP = b"RVA file v1.6a\x1a\x01\x00\x01\x00bone\0" + bytes(25)


def run(tool, *arguments):
    return subprocess.run([tool, *map(str, arguments)], capture_output=True, text=True)


def make_files(tool):
    """One file of each kind, by its kind."""
    Path("model.obj").write_text(CUBE)
    Path("clip.rva").write_bytes(CLIP)
    Path("video.m1v").write_bytes(VIDEO)
    Path("settings.txt").write_text('RAVOLT_windowX=800\nRAVOLT_title="T"\nRAVOLT_nothing=1\n')
    Path("kerning.txt").write_text("RAVOLT_kerning_a=-1\n")
    Path("panel.xml").write_text("<root><font><name value='f'/></font><window><size width='1' height='2'/>"
                                 "<box><color r='1' g='0' b='0' a='x'/></box></window></root>")
    assert run(tool, "convert", "model.obj", "-o", "scene.rve", "-q").returncode == 0
    assert run(tool, "terrain", "--island", "20", "--size", "129", "-o", "island", "-q").returncode == 0
    return {"model": "model.obj", "scene": "scene.rve", "clip": "clip.rva", "texture": "island/grass_d.tga",
            "settings": "settings.txt", "kerning": "kerning.txt", "interface": "panel.xml",
            "emitter": "island/fire.xml", "terrain": "island/terrain.xml",
            "geometry": "island/terrain.geo", "video": "video.m1v"}


def main():
    docs, tool = Path(sys.argv[1]) / "docs", sys.argv[2]
    info_schema, check_schema = (json.loads((docs / f"ravolt-{name}.schema.json").read_text())
                                 for name in ("info", "check"))
    files = make_files(tool)
    kinds = info_schema["properties"]["kind"]["enum"]
    assert sorted(files) == sorted(kinds), "the schema has other kinds"
    for kind, file in files.items():
        info = json.loads(run(tool, "info", "--json", file).stdout)
        assert info["kind"] == kind, info["kind"]
        jsonschema.validate(info, info_schema)
    Path("cut.rve").write_bytes(Path("scene.rve").read_bytes()[:50])
    Path("broken.xml").write_text("<root>")
    native = [file for kind, file in files.items() if kind != "model"]
    result = run(tool, "check", "--json", *native, "cut.rve", "broken.xml", "none.rve")
    assert result.returncode == 1, result.stderr
    checked = json.loads(result.stdout)
    jsonschema.validate(checked, check_schema)
    assert [file["accepted"] for file in checked["files"]] == [True] * len(native) + [False] * 3
    assert any("line" in finding for file in checked["files"] for finding in file["findings"])
    # The schemas can fail.
    for schema, wrong in ((info_schema, dict(info, kind="picture")), (info_schema, dict(info, more=1)),
                          (check_schema, {"files": [{"file": "a"}]})):
        try:
            jsonschema.validate(wrong, schema)
        except jsonschema.ValidationError:
            continue
        sys.exit(f"{wrong} is valid")


if __name__ == "__main__":
    main()
