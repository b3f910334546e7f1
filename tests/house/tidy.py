#!/usr/bin/env python3
"""Runs clang-tidy over the sources of the library and of the kit as .clang-tidy says: the house's style of names and some
checks for bugs. A source that passed is not checked again until it changes, or a header that it
includes, its compile command, the settings or the program: a stamp in the build folder says so.

    tidy.py ROOT BUILD
    tidy.py ROOT BUILD --analyzer   clang's analyzer over all sources of the build; takes many minutes
    tidy.py --self          checks that the check finds faults, and that it finds them again
"""

import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

RELEASE = 14
# The sources are compiled for other targets as well.
LIBRARIES = ("ravolt_objects.dir/", "ravolt_kit_core.dir/", "ravolt_kit_files.dir/")
# clang's own warnings are on, except where it does not see what a loop or a format is for.
OPTIONS = ["--quiet", "--warnings-as-errors=*", "--extra-arg=-Wno-for-loop-analysis",
           "--extra-arg=-Wno-format-zero-length"]
ANALYZER = "--checks=-*,clang-analyzer-*"
# The examples are read first, and hardly one deletes the engine's objects: their constructors register
# them, which the analyzer does not see, and RAVOLT::free deletes them. Tests find leaks of examples.
ANALYZER_OF_EXAMPLES = ANALYZER + ",-clang-analyzer-cplusplus.NewDeleteLeaks"


def find_program():
    for name in (f"clang-tidy-{RELEASE}", "clang-tidy"):
        if shutil.which(name):
            version = subprocess.run([name, "--version"], capture_output=True, text=True).stdout
            if f"version {RELEASE}." in version:
                return name
    sys.exit(f"clang-tidy {RELEASE} is missing: apt-get install clang-tidy-{RELEASE}")


def included(path, folders, files):
    """Adds to `files` the file and, transitively, what it includes in quotes or from `folders`."""
    if path in files:
        return
    files[path] = path.read_bytes()
    for name in re.findall(rb'^\s*#\s*include\s*["<]([^">]+)', files[path], re.M):
        for folder in [path.parent] + folders:
            candidate = folder / name.decode()
            if candidate.is_file():
                included(candidate, folders, files)
                break


def key(entry, settings, options):
    files = {}
    folders = [Path(folder) for folder in re.findall(r"-I(\S+)", entry["command"])]
    included(Path(entry["file"]), folders, files)
    digest = hashlib.sha256(repr((entry, settings, options, RELEASE)).encode())
    for path, text in sorted(files.items()):
        digest.update(repr((str(path), text)).encode())
    return digest.hexdigest()


def checked_by(entry, root, analyzer):
    """The options for the checks of a source; without any those of .clang-tidy."""
    if not analyzer:
        return OPTIONS
    is_example = (root / "examples") in Path(entry["file"]).parents
    return OPTIONS + [ANALYZER_OF_EXAMPLES if is_example else ANALYZER]


def check(entry, program, root, stamps, settings, options):
    """Returns what clang-tidy reports, nothing if the source passes."""
    stamp = stamps / key(entry, settings, options)
    if stamp.exists():
        return None
    result = subprocess.run(
        [program, "-p", stamps, f"--config-file={root / '.clang-tidy'}", *options, entry["file"]],
        capture_output=True, text=True)
    if result.returncode == 0:
        stamp.touch()
        return ""
    return result.stdout + result.stderr


def run(root, build, analyzer=False):
    program = find_program()
    database = json.loads((build / "compile_commands.json").read_text())
    entries = [entry for entry in database
               if analyzer or any(library in entry["command"] for library in LIBRARIES)]
    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    (stamps / "compile_commands.json").write_text(json.dumps(entries))
    settings = (root / ".clang-tidy").read_text()
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        reports = list(pool.map(
            lambda entry: check(entry, program, root, stamps, settings,
                                checked_by(entry, root, analyzer)), entries))
    faults = [report for report in reports if report]
    print("\n".join(faults))
    print(f"{len(entries)} sources, {reports.count(None)} unchanged, {len(faults)} with faults")
    return len(entries) > 0, len(faults), reports.count(None)


def self_test(settings):
    root = Path.cwd()
    shutil.copy(settings, root / ".clang-tidy")

    def result(source, header="#pragma once\n"):
        (root / "source.cpp").write_text('#include "source.h"\n' + source)
        (root / "source.h").write_text(header)
        command = f"c++ -Wall -Werror -I{root} -o {LIBRARIES[0]}source.o -c source.cpp"
        (root / "compile_commands.json").write_text(json.dumps(
            [{"directory": str(root), "command": command, "file": str(root / "source.cpp")}]))
        return run(root, root)[1:]

    good = "namespace inside {\nint countWords(int firstWord) { return firstWord; }\n}\n"
    return (result(good) == (0, 0) and result(good) == (0, 1) and
            result(good, "#pragma once\n\n") == (0, 0) and
            result("int count_words() { return 0; }\n") == (1, 0) and
            result("int count_words() { return 0; }\n") == (1, 0) and
            result("int countWords(int FirstWord) { return FirstWord; }\n") == (1, 0) and
            result("struct word_list {\n    int first;\n};\n") == (1, 0) and
            result("#include <missing>\n") == (1, 0))


def main():
    if "--self" in sys.argv:
        settings = Path(__file__).resolve().parents[2] / ".clang-tidy"
        sys.exit(0 if self_test(settings) else "the check does not find what it should")
    root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    readable, faults, _ = run(root, build, "--analyzer" in sys.argv)
    sys.exit(0 if readable and not faults else 1)


if __name__ == "__main__":
    main()
