#!/usr/bin/env python3
"""Drives the widgets of a real application with the pointer and the keys of an X server.

    driveInput.py PROGRAM

PROGRAM is tests/gui/inputClient.cpp. It runs on a screen of its own (Xvfb), so that no other window
and no other pointer are in the way. xdotool sends events; after each one the test waits, not longer
than TIMEOUT, for the line with which the program reports it.
"""

import os
import queue
import subprocess
import sys
import threading
import time

TIMEOUT = 20  # seconds
TITLE = "Ravolt input test"


class Screen:
    """A server without a window manager."""

    def __init__(self, size="640x480"):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", size + "x24", "-noreset",
             "-nolisten", "tcp"],
            pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as lines:
            number = lines.readline().strip()
        if not number:
            sys.exit("Xvfb did not start")
        self.environment = dict(os.environ, DISPLAY=":" + number)

    def xdotool(self, *arguments):
        result = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment,
                                timeout=TIMEOUT, capture_output=True, text=True, check=False)
        return result.returncode, result.stdout

    def send(self, *arguments):
        """For commands that fail only on a wrong window or without the server."""
        code, _ = self.xdotool(*arguments)
        if code:
            sys.exit(f"xdotool {' '.join(map(str, arguments))} failed with {code}")

    def stop(self):
        self.server.terminate()
        self.server.wait(TIMEOUT)


def run_on_screen(start, operate, size="640x480"):
    """Calls `operate` with what `start` makes on a screen of its own: an object whose `process` is a
    program. Returns its result. Neither the program nor the screen is left behind."""
    screen, running = Screen(size), None
    try:
        running = start(screen)
        return operate(running)
    finally:
        if running and running.process.poll() is None:
            running.process.kill()
            running.process.wait()
        screen.stop()


class Application:
    def __init__(self, program, screen):
        self.screen = screen
        self.process = subprocess.Popen([program], env=screen.environment, text=True,
                                        stdout=subprocess.PIPE)
        self.lines = queue.Queue()
        self.state = {}
        threading.Thread(target=self._read, daemon=True).start()
        # Not before: with SDL 1.2 the splash has a window of its own, with the same title.
        self.expect("the first frame", clicks="0")
        self.window = self._find_window()

    def _read(self):
        for line in self.process.stdout:
            if "\t" in line:  # the library's log is echoed until the program switches that off
                self.lines.put(line)
        self.lines.put(None)

    def _find_window(self):
        end = time.monotonic() + TIMEOUT
        while time.monotonic() < end:
            code, found = self.screen.xdotool("search", "--name", TITLE)
            if code == 0 and found.split():
                return found.split()[0]
            time.sleep(0.1)
        sys.exit("the window did not open")

    def expect(self, what, **wanted):
        """Waits for a report in which all of `wanted` have their values."""
        end = time.monotonic() + TIMEOUT
        while any(self.state.get(name) != value for name, value in wanted.items()):
            try:
                line = self.lines.get(timeout=max(0.01, end - time.monotonic()))
            except queue.Empty:
                sys.exit(f"{what}: expected {wanted}, the last report was {self.state}")
            if line is None:
                sys.exit(f"{what}: the program has ended, its last report was {self.state}")
            self.state = dict(field.split("=", 1) for field in line.rstrip("\n").split("\t"))
        print(f"{what}: {wanted}")

    def move(self, x, y):
        self.screen.send("mousemove", "--window", self.window, x, y)
        self.expect("pointer moved", pointer=f"{x},{y}")

    def press(self):
        self.screen.send("mousedown", 1)
        self.expect("button pressed", left="1")

    def release(self):
        self.screen.send("mouseup", 1)
        self.expect("button released", left="0")

    def click(self, x, y):
        self.move(x, y)
        self.press()
        self.release()

    def drag(self, start, end):
        self.move(*start)
        self.press()
        self.move(*end)
        self.release()

    def key(self, *names):
        self.screen.send("key", *names)


def use_widgets(application):
    application.click(60, 30)
    application.expect("a click on the button", clicks="1")

    application.click(180, 30)
    application.key("H", "i")
    application.expect("keys in the field", field="Hi")
    application.key("BackSpace")
    application.expect("a backspace", field="H")

    application.drag((84, 90), (114, 100))
    application.expect("the dragged window", window="50,110", minimized="0")

    application.drag((172, 126), (172, 220))
    application.expect("the scroll bar at its end", value="1", window="50,110")

    application.click(114, 100)
    application.expect("the minimized window", minimized="1", caption="[+] Log")
    application.expect("in the end", clicks="1", field="H", window="50,110", value="1")


def operate(application):
    application.move(300, 230)
    use_widgets(application)
    application.key("Escape")
    if application.process.wait(TIMEOUT) != 0:
        sys.exit("the program has failed")


if __name__ == "__main__":
    run_on_screen(lambda screen: Application(sys.argv[1], screen), operate)
