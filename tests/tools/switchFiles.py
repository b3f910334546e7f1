#!/usr/bin/env python3
"""Goes through files in the viewer with the keys of an X server, and drops files on its window.

    switchFiles.py TOOL SOURCES DRAG

DRAG is tests/tools/dragFiles.cpp. The title names the file that is shown. The pictures of the key p
show that the text on the screen is not in them, and the pictures of the server that it is on the
screen. At the end the engine's log says how much it releases: as much as if only the last file had
been shown.
"""

import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

tool, sources, drag = sys.argv[1], Path(sys.argv[2]), sys.argv[3]
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen  # noqa: E402

PATIENCE = 60  # seconds, on a machine with much else to do
SIZE = (320, 240)
MODEL = "v -1 -1 -1\nv 2 -1 -1\nv 0 1 -1\nv 0 0 2\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n"
INTERFACE = '<root><button><name value="save"/><position x="20" y="20"/></button></root>\n'
EMITTER = '<emitter><max_particles value="5"/></emitter>\n'


def make_files():
    folder = Path("files")
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "other folder").mkdir(parents=True)
    for name in ("a.obj", "b.obj", "other folder/100% \u00e4.obj", "other folder/second.obj"):
        (folder / name).write_text(MODEL, encoding="utf-8")
    (folder / "c_broken.obj").write_text("nothing\n", encoding="utf-8")
    (folder / "d_fire.xml").write_text(EMITTER, encoding="utf-8")
    (folder / "e_gui.xml").write_text(INTERFACE, encoding="utf-8")
    (folder / ".hidden.obj").write_text(MODEL, encoding="utf-8")
    (folder / "readme.txt").write_text("no model\n", encoding="utf-8")
    subprocess.run([tool, "convert", folder / "a.obj", "-q", "-o", folder / "f.rve"], check=True)
    return folder.resolve()


class Viewer:
    def __init__(self, screen, file):
        self.screen = screen
        with open("output", "w", encoding="utf-8") as output:
            self.process = subprocess.Popen(
                [tool, "view", file, "--size", "%dx%d" % SIZE, "--anisotropy", "1", "--verbose"],
                env=screen.environment, stdout=output, stderr=subprocess.STDOUT)
        self.expect_title(Path(file).name)
        time.sleep(1)  # with SDL 1.2 the splash has a window of its own
        self.screen.send("mousemove", "--window", self.window(), SIZE[0] // 2, SIZE[1] // 2)

    def window(self):
        found = self.screen.xdotool("search", "--name", "^ravolt - ")[1].split()
        return found[-1] if found else None

    def title(self):
        window = self.window()
        return self.screen.xdotool("getwindowname", window)[1].strip() if window else None

    def until(self, what, condition):
        end = time.monotonic() + PATIENCE
        while not condition():
            if self.process.poll() is not None or time.monotonic() > end:
                sys.exit(f"{what}: not seen; {self.title()}")
            time.sleep(0.05)
        print(what)

    def expect_title(self, file):
        start = "ravolt - " + file
        self.until(start, lambda: (self.title() or "").split(" - no ")[0].split(" - floor")[0]
                   == start)

    def press(self, key, file):
        self.screen.send("key", key)
        self.expect_title(file)

    def shown(self):
        """The pixels of the window."""
        return subprocess.run(
            ["ffmpeg", "-loglevel", "error", "-f", "x11grab", "-draw_mouse", "0", "-video_size",
             "%dx%d" % SIZE, "-i", self.screen.environment["DISPLAY"] + "+0,0", "-frames:v", "1",
             "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
            env=self.screen.environment, capture_output=True, check=False).stdout

    def saved(self, file):
        self.screen.send("key", "p")
        self.until(file, lambda: Path(file).exists() and Path(file).stat().st_size > 0)
        time.sleep(0.2)
        return Path(file).read_bytes()

    def drop(self, uris, file, kind="", answers=("status 1\nfinished 1\n",)):
        result = subprocess.run([drag, "ravolt - ", uris, kind], env=self.screen.environment,
                                timeout=PATIENCE, capture_output=True, text=True, check=False)
        if result.stdout not in answers:
            sys.exit(f"{uris}: {result.stdout}")
        self.expect_title(file)

    def quit(self):
        """The numbers of released objects in the engine's log, at its end."""
        self.screen.send("key", "Escape")
        if self.process.wait(PATIENCE) != 0:
            sys.exit("the viewer has failed")
        output = Path("output").read_text(encoding="utf-8")
        if "Shutdown complete" not in output:
            sys.exit(output)
        end = output[output.rindex("Ravolt is shutting down"):]
        return re.findall(r"\d+ .*released.*", end)


def go_through_files(viewer):
    names = ["b.obj", "c_broken.obj", "d_fire.xml", "e_gui.xml", "f.rve", "a.obj"]
    for name in 4 * names:
        viewer.press("Next", name)
    for name in reversed(["a.obj"] + names[:-1]):
        viewer.press("Prior", name)
    if "c_broken.obj: " not in Path("output").read_text(encoding="utf-8"):
        sys.exit("the broken file is not named")


def show_text(viewer):
    for stale in Path(".").glob("a_0*.png"):
        stale.unlink()
    plain, picture = viewer.shown(), viewer.saved("a_001.png")
    for number, key in enumerate(("F1", "h", "F3", "i")):
        with_text = key in ("F1", "F3")
        viewer.screen.send("key", key)
        viewer.until(f"{key}: text {with_text}", lambda: (viewer.shown() != plain) == with_text)
        if viewer.saved(f"a_{number + 2:03}.png") != picture:
            sys.exit("text is in a picture")


def drop_files(viewer, folder):
    viewer.drop((folder / "b.obj").as_uri() + "\r\n", "b.obj")
    viewer.press("Next", "c_broken.obj")  # of its folder
    strange = folder / "other folder/100% \u00e4.obj"
    viewer.drop(f"{strange.as_uri()}\r\n{(folder / 'f.rve').as_uri()}\r\n", strange.name, "many")
    viewer.press("Next", "f.rve")  # of the list
    viewer.press("Next", strange.name)
    # SDL 2 accepts text as well.
    viewer.drop("only text", strange.name, "none", ("status 0\n", "status 1\nfinished 1\n"))
    viewer.press("Next", "f.rve")  # still of the list
    viewer.drop((folder / "missing.obj").as_uri(), "missing.obj")
    viewer.drop((folder / "other folder").as_uri(), strange.name)
    viewer.press("Next", "second.obj")
    viewer.drop((folder / "a.obj").as_uri(), "a.obj")


def use_all(viewer):
    go_through_files(viewer)
    show_text(viewer)
    drop_files(viewer, files)


def releases(use):
    """The numbers of released objects at the end of a viewer, after `use` of it."""
    def operate(viewer):
        use(viewer)
        return viewer.quit()
    return run_on_screen(lambda screen: Viewer(screen, files / "a.obj"), operate)


files = make_files()
one, many = releases(lambda viewer: None), releases(use_all)
print(one)
if not one or one != many:
    sys.exit(f"of one file {one}, of many {many}")
