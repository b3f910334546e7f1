#!/usr/bin/env python3
"""Operates an interface in the viewer with the pointer of an X server.

    operateViewer.py TOOL SOURCES

Presses buttons of each kind; each event is a line of the viewer and the title of its window.
"""

import queue
import subprocess
import sys
import threading
import time
from pathlib import Path

tool, sources = sys.argv[1], Path(sys.argv[2])
sys.path.insert(0, str(sources / "tests/gui"))
from driveInput import run_on_screen, TIMEOUT  # noqa: E402

STEP = 0.2  # seconds between two inputs, if nothing reports the first one
INTERFACE = """<root>
<button><name value="save"/><position x="20" y="20"/><size width="60" height="20"/></button>
<window><position x="20" y="80"/><size width="120" height="60"/>
<button><name value="sound"/><kind value="switch"/><position x="10" y="10"/></button>
</window>
<button><name value="scroll"/><kind value="inverted"/><position x="200" y="20"/></button>
</root>
"""
SAVE, SOUND, SCROLL = (50, 30), (60, 110), (230, 50)


class Viewer:
    def __init__(self, screen):
        self.screen = screen
        self.process = subprocess.Popen([tool, "view", "gui.xml", "--size", "320x240"],
                                        env=screen.environment, stdout=subprocess.PIPE, text=True)
        self.lines = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def on_window(self, command, arguments):
        """What xdotool prints; None without a window. With SDL 1.2 the splash has one of its own,
        which is destroyed when the viewer has started, so it is searched for each time."""
        found = self.screen.xdotool("search", "--name", "^ravolt - gui.xml")[1].split()
        code, text = self.screen.xdotool(command, *arguments(found[-1])) if found else (1, "")
        return None if code else text.strip()

    def click(self, point):
        if self.on_window("mousemove", lambda window: ("--window", window, *point)) is None:
            return False
        for action in ("mousedown", "mouseup"):
            time.sleep(STEP)
            self.screen.send(action, 1)
        return True

    def event(self, name, seconds):
        """The number of the widget, once a line reports it."""
        end = time.monotonic() + seconds
        while True:
            try:
                line = self.lines.get(timeout=max(0.01, end - time.monotonic()))
            except queue.Empty:
                return None
            if line is None:
                sys.exit("the viewer has ended")
            words = line.split()
            if len(words) == 3 and words[0] == "event" and words[2] == name:
                return words[1].rstrip(":")

    def expect_event(self, point, name):
        end = time.monotonic() + TIMEOUT
        number = None
        while number is None:
            if time.monotonic() > end:
                sys.exit(f"no event of {name}")
            time.sleep(STEP)
            if self.click(point):
                number = self.event(name, TIMEOUT / 10)
        self.expect_title(f"ravolt - gui.xml - event {number}: {name}")

    def expect_title(self, wanted):
        end = time.monotonic() + TIMEOUT
        title = None
        while title != wanted:
            if time.monotonic() > end:
                sys.exit(f"the title is {title}, not {wanted}")
            title = self.on_window("getwindowname", lambda window: (window,))
        print(title)


def operate(viewer):
    viewer.expect_event(SAVE, "save")
    viewer.expect_event(SOUND, "sound")
    viewer.expect_event(SCROLL, "scroll")
    viewer.expect_event(SAVE, "save")
    viewer.screen.send("key", "Escape")
    if viewer.process.wait(TIMEOUT) != 0:
        sys.exit("the viewer has failed")


Path("gui.xml").write_text(INTERFACE)
run_on_screen(Viewer, operate)
