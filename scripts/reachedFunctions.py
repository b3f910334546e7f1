"""Which functions of the library a part of the tests calls, for scripts/mutants.py: a mutant in one of them
can be killed by these parts alone.

The library's sources are compiled once more, with a call at the entry of each function, and each test
program is linked with them. A place between two functions (a table, say) belongs to all functions of its
source.
"""

import json
import os
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Counts nothing by itself, and allocates nothing: tests replace the functions of the heap.
RUNTIME = r"""
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

extern char __executable_start;
static unsigned char called[1 << 24]; // by the distance from the start of the program

void __cyg_profile_func_enter(void *function, void *site) {
    const unsigned long offset = (unsigned long)((char *)function - &__executable_start);
    (void)site;
    if (offset < sizeof called)
        called[offset] = 1;
}

void __cyg_profile_func_exit(void *function, void *site) { (void)function, (void)site; }

__attribute__((destructor)) static void writeCalled(void) {
    const char *name = getenv("RAVOLT_CALLED");
    const int file = name ? open(name, O_WRONLY | O_CREAT | O_APPEND, 0600) : -1;
    for (unsigned int offset = 0; file >= 0 && offset < sizeof called; ++offset)
        if (called[offset] && write(file, &offset, sizeof offset) < 0)
            return;
}
"""


def symbols(path, *options):
    """Lines of nm, divided."""
    listed = subprocess.run(["nm", "--defined-only", *options, str(path)], capture_output=True, text=True)
    return [line.split() for line in listed.stdout.splitlines()]


class ReachedFunctions:
    def __init__(self, library, folder):
        self.library, self.folder = library, folder
        folder.mkdir(parents=True, exist_ok=True)
        self.functions = {}  # of each source: line and symbol
        self.runtime = folder / "runtime.o"

    def build(self):
        source = self.folder / "runtime.c"
        source.write_text(RUNTIME)
        subprocess.run(["cc", "-O1", "-fPIC", "-c", str(source), "-o", str(self.runtime)], check=True)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            for file, found in zip(self.library.compiles, pool.map(self.functions_of, self.library.compiles)):
                self.functions[file] = found

    def object_of(self, file):
        return self.folder / (file.replace("/", "-") + ".o")

    def functions_of(self, file):
        command, target = self.library.compiles[file]
        compiled, usual = self.object_of(file), self.library.build / target
        if not compiled.exists() or compiled.stat().st_mtime < usual.stat().st_mtime:
            self.library.run_compiler(file, self.library.root / file, compiled, "-g1", "-finstrument-functions",
                                      "-finstrument-functions-exclude-file-list=/usr/include")
        listed = compiled.with_suffix(".json")
        if not listed.exists() or listed.stat().st_mtime < compiled.stat().st_mtime:
            rows = [row for row in symbols(compiled, "--line-numbers")
                    if len(row) == 4 and row[1] in "tTwW"]
            divided = [(row[2], *row[3].rpartition(":")[::2]) for row in rows]
            found = [(int(line), symbol) for symbol, source, line in divided if source.endswith("/" + file)]
            listed.write_text(json.dumps(sorted(found)))
        return [tuple(row) for row in json.loads(listed.read_text())]

    def link(self, program, target):
        command = self.library.links[program]
        for file, (_, usual) in self.library.compiles.items():
            command = command.replace(f" {usual} ", f" {self.object_of(file)} ", 1)
        command = re.sub(rf"-o {re.escape(program)}(?= )", f"{self.runtime} -o {target}", command)
        subprocess.run(command, shell=True, cwd=self.library.build, check=True, capture_output=True)

    def called_by(self, part, screen, folder):
        """The symbols of the library's functions that a part calls."""
        program, called = self.folder / "program", self.folder / "called"
        self.link(part.program, program)
        called.unlink(missing_ok=True)
        os.environ["RAVOLT_CALLED"] = str(called)
        part.run(program, screen, folder)
        del os.environ["RAVOLT_CALLED"]
        offsets = memoryview(called.read_bytes()).cast("I") if called.exists() else []
        names = {int(row[0], 16): row[2] for row in symbols(program) if len(row) == 3}
        start = next((address for address, name in names.items() if name == "__executable_start"), 0)
        own = {symbol for functions in self.functions.values() for _, symbol in functions}
        return sorted({names.get(start + offset, "") for offset in offsets} & own)

    def at(self, file, line):
        """The symbols of the functions that may have that line (of a function and its lambdas), or of all
        in the source. nm reports some functions of headers at the line of an #include."""
        text = (self.library.root / file).read_text(encoding="utf-8").split("\n")
        ends = [number for number, each in enumerate(text, 1) if each.startswith("}") and number < line]
        last = ends[-1] if ends else 0
        found = {symbol for start, symbol in self.functions[file]
                 if start == line or last < start < line and not text[start - 1].endswith("}")
                 and not text[start - 1].startswith("#")}
        return found or {symbol for _, symbol in self.functions[file]}
