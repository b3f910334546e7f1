#!/usr/bin/env python3
"""Reads the site of the documents in headless Chromium.

    site.py SITE        the folder that the target `docs` has built
    site.py --self

Every link leads to a file of the site and, with a fragment, to a place in it; every picture is there.
In the browser no page has an error on the console, a picture that does not load, or, in a window of
360 pixels, text beyond its edge; each page can be read without scripts; and the search finds a word.
"""

import functools
import html.parser
import http.server
import json
import os
import queue
import signal
import subprocess
import sys
import tempfile
import threading
import urllib.parse
from pathlib import Path

PHONE = 360  # pixels
EXPECTED = ("search scripts loaded", "Lunr index built")  # on the console
TIME = 120  # seconds for all pages
SEARCHED = ("troubleshooting", "occlusion")

# Loads the pages one after the other into a frame of a telephone's width and reports what it sees.
CHECK = """<!doctype html><title>check</title><body><script>
const pages = PAGES, search = SEARCH, faults = [];
let read = 0;
function look(page, frame) {
    const root = frame.contentDocument.documentElement;
    if (root.scrollWidth > PHONE + 1)
        faults.push(page + ": " + root.scrollWidth + " pixels wide on a telephone");
    for (const image of frame.contentDocument.images)
        if (!image.naturalWidth)
            faults.push(page + ": picture " + image.src + " does not load");
    if (frame.contentDocument.body.innerText.trim().length < 40)
        faults.push(page + ": no text");
    ++read;
}
function load(page, ready) {
    return new Promise(done => {
        const frame = document.createElement("iframe");
        frame.width = PHONE;
        frame.height = 640;
        frame.onload = () => {
            frame.contentWindow.onerror = (message) => faults.push(page + ": " + message);
            const wait = (left) => {
                if (ready(frame) || !left) {
                    look(page, frame);
                    frame.remove();
                    done(left > 0);
                } else
                    setTimeout(wait, 50, left - 1);
            };
            wait(100);
        };
        frame.src = page;
        document.body.append(frame);
    });
}
(async () => {
    for (const page of pages)
        await load(page, () => true);
    const found = frame => frame.contentDocument.body.innerText.toLowerCase().includes(search[0]) &&
        [...frame.contentDocument.querySelectorAll("#mkdocs-search-results a")].length > 0;
    if (!await load("/search.html?q=" + search[1], found))
        faults.push("the search does not find " + search[1]);
    fetch("/report", {method: "POST", body: JSON.stringify({read: read, faults: faults})});
})();
</script>"""


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.links, self.names, self.text = [], set(), ""
        self.silent = 0
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.names.update(attributes[key] for key in ("id", "name") if attributes.get(key))
        for key in ("href", "src"):
            if attributes.get(key):
                self.links.append(attributes[key])
        self.silent += tag in ("script", "style")

    def handle_endtag(self, tag):
        self.silent -= tag in ("script", "style")

    def handle_data(self, data):
        if not self.silent:
            self.text += data


def link_faults(site):
    pages = {path: Page(path.read_text(encoding="utf-8", errors="replace"))
             for path in site.rglob("*.html")}
    for path, page in pages.items():
        name = path.relative_to(site).as_posix()
        if "reference" not in path.relative_to(site).parts and len(page.text.split()) < 10:
            yield f"{name}: no text without scripts"
        generated = "reference" in path.relative_to(site).parts # whose fragments are not ours
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            target = site / parts.path.lstrip("/") if parts.path.startswith("/") else path.parent / parts.path
            target = (target if parts.path else path).resolve()
            if target.is_dir():
                target /= "index.html"
            fragment = urllib.parse.unquote(parts.fragment)
            if not target.exists():
                yield f"{name}: no such file: {link}"
            elif fragment and not generated and target in pages and fragment not in pages[target].names:
                yield f"{name}: no such place: {link}"


class Handler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments):
        pass

    def do_GET(self):
        if self.path != "/check":
            super().do_GET()
            return
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.end_headers()
        self.wfile.write(self.server.check.encode())

    def do_POST(self):
        self.server.report.put(self.rfile.read(int(self.headers["Content-Length"])))
        self.send_response(204)
        self.end_headers()


def guide_pages(site):
    return ["/" + path.relative_to(site).as_posix() for path in sorted(site.rglob("*.html"))
            if "reference" not in path.parts and path.name not in ("404.html", "search.html")]


def browser_faults(site):
    pages = guide_pages(site) + ["/reference/index.html"]
    server = http.server.ThreadingHTTPServer(
        ("127.0.0.1", 0), functools.partial(Handler, directory=str(site)))
    server.check = CHECK.replace("PAGES", json.dumps(pages)).replace("SEARCH", json.dumps(SEARCHED))
    server.check = server.check.replace("PHONE", str(PHONE))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    server.report = queue.Queue()
    with tempfile.TemporaryDirectory() as profile, tempfile.TemporaryFile("w+") as console:
        browser = subprocess.Popen(
            ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--no-first-run", "--remote-debugging-port=0", "--enable-logging=stderr",
             f"--user-data-dir={profile}", f"http://127.0.0.1:{server.server_port}/check"],
            stdout=subprocess.DEVNULL, stderr=console, start_new_session=True)
        try:
            seen = json.loads(server.report.get(timeout=TIME))
        except queue.Empty:
            seen = {"read": 0, "faults": ["the browser has not finished"]}
        os.killpg(browser.pid, signal.SIGKILL)
        browser.wait()
        server.shutdown()
        console.seek(0)
        yield from (f"console: {line.strip()}" for line in console
                    if "CONSOLE" in line and not any(text in line for text in EXPECTED))
    if seen["read"] != len(pages) + 1:
        yield f"{seen['read']} of {len(pages) + 1} pages were read"
    yield from seen["faults"]


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        site = Path(folder).resolve()
        words = "some words that fill the page so that it counts as text "
        good = f'<h1 id="top">{words}</h1><a href="b.html#top">b</a>'
        (site / "a.html").write_text(good)
        (site / "b.html").write_text(good)
        if list(link_faults(site)):
            return False
        for damaged in (good.replace("b.html", "c.html"), good.replace("#top", "#end"),
                        "<script>" + words + "</script>"):
            (site / "a.html").write_text(damaged)
            if len(list(link_faults(site))) != 1:
                return False
        (site / "a.html").write_text(good)
        for folder, faults in (("guide", 1), ("reference", 0)):
            (site / folder).mkdir()
            (site / folder / "c.html").write_text("<script>" + words + "</script>")
            if len(list(link_faults(site))) != faults:
                return False
            (site / folder / "c.html").unlink()
    return True


def main():
    if "--self" in sys.argv:
        sys.exit(0 if self_test() else "the check does not find what it should")
    site = Path(sys.argv[1]).resolve()
    faults = [*link_faults(site), *browser_faults(site)]
    print("\n".join(faults))
    number = len(list(site.rglob("*.html")))
    print(f"{number} pages, {len(faults)} faults")
    sys.exit(1 if faults or not number else 0)


if __name__ == "__main__":
    main()
