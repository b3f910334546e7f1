#!/usr/bin/env python3
"""Measures the power of the tests: changes one place of the library (scripts/mutations.py), compiles and
links it, and runs the tests until one fails.

A mutant is killed when a test fails, crashes or exceeds its time, twice in a row; it survives when all
pass; it is equivalent when the compiler makes the same code of it, and invalid when it does not compile.

  scripts/mutants.py                      goes on until 300 mutants are judged
  scripts/mutants.py --count 20           until there are 20
  scripts/mutants.py --minutes 30         stops after that time
  scripts/mutants.py --again survived     judges those once more, after tests were added
  scripts/mutants.py --summary            prints the figures and the survivors

What is committed is measured: in a checkout and a build of its own, build/mutants/source. Results are
kept in build/mutants/results.csv, a line for each mutant, and the next run goes on from them; copy that
file to go on elsewhere. A survivor that no test can kill is listed with its reason in
scripts/mutants-equivalent.txt: the file, the text of its line, the change and the reason, separated by
tabs.

The tests run in parts, one for each source of each program: those alone that call the changed function
(scripts/reachedFunctions.py), and first those that probably kill soon, by the name of their source, their
folder, what they killed before and their time. Tests that open windows do so on a virtual screen. Not run
are the tests of tools, examples and installed packages, those of the house, the same pictures with other
caches or without X, and parts that fail or take longer than 40 seconds without a change. A survivor has
passed as many parts as its time suffices for (--survivor-seconds); the results say how many of how many.

The first run builds the tests and measures each part, which takes some minutes.
"""

import argparse
import contextlib
import csv
import json
import math
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time
from dataclasses import dataclass
from pathlib import Path

import mutations
from reachedFunctions import ReachedFunctions

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build/mutants"
SOURCE = WORK / "source"
BUILD = SOURCE / "build/dev"  # laid out as that of the preset, so that ccache knows the objects
RESULTS, BASELINE = WORK / "results.csv", WORK / "baseline.json"
EQUIVALENT = ROOT / "scripts/mutants-equivalent.txt"
MEMORY = Path("/dev/shm")  # files of the tests cost less time there
SCRATCH = (MEMORY if os.access(MEMORY, os.W_OK) else WORK) / f"mutants-{os.getpid()}"
TRAPS = ["-fsanitize=bounds", "-fsanitize-undefined-trap-on-error"]  # the tests run with sanitizers, too
COLUMNS = ["file", "line", "text", "change", "result", "killer", "parts", "seconds"]
CLASSIC = {"LIBGL_ALWAYS_SOFTWARE": "1", "SDL_VIDEODRIVER": "x11"}
UNUSED = ["tests/faults/callers_test"]  # its table takes a minute to compile after each change of a header
MAX_PART_SECONDS, MAX_SECONDS_TOGETHER = 40, 3  # of a part; of a test that shares its process
MAX_MEMORY, MAX_FILE = 8 << 30, 3 << 30  # bytes of a test process


def require(what, command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"mutants.py: {what} failed:\n{done.stdout[-3000:]}{done.stderr[-3000:]}")
    return done.stdout


def prepare():
    """Brings the checkout to the current commit and configures its build."""
    WORK.mkdir(parents=True, exist_ok=True)
    head = require("git", ["git", "-C", str(ROOT), "rev-parse", "HEAD"]).strip()
    if SOURCE.exists():
        require("git", ["git", "-C", str(SOURCE), "checkout", "-f", "--detach", head])
    else:
        require("git", ["git", "-C", str(ROOT), "worktree", "add", "--force", "--detach", str(SOURCE), head])
    linker = "-Wl,--strip-debug" + (" -fuse-ld=lld" if shutil.which("ld.lld") else "")
    require("cmake", ["cmake", "--preset", "dev", "-DRAVOLT_TOOLS=OFF", "-DRAVOLT_EXAMPLES=OFF",
                      f"-DCMAKE_EXE_LINKER_FLAGS={linker}",
                      "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"], cwd=SOURCE)


def build(programs):
    print("Building the tests", flush=True)
    require("the build", ["ninja", "-C", str(BUILD), "-j", str(os.cpu_count()), *programs])


class Screen:
    """A virtual screen; each worker has its own, since some tests look at the whole screen."""

    def __init__(self):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24",
                                        "-noreset", "-nolisten", "tcp"], pass_fds=[writer],
                                       stderr=subprocess.DEVNULL)
        os.close(writer)
        self.display = ":" + os.read(reader, 16).decode().strip()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.kill()
        self.server.wait()

    def environment(self, folder):
        return dict(os.environ, **CLASSIC, DISPLAY=self.display, TMPDIR=str(folder))


@dataclass
class Part:
    """Tests of a program that one source has."""

    program: str  # relative to the build
    source: str
    tests: list
    seconds: float = 0  # of a run without a change; so is the time of the processor
    processor: float = MAX_PART_SECONDS
    passes: bool = True
    calls: tuple = ()  # symbols of functions of the library

    def name(self):
        return f"{self.program.removeprefix('tests/')}:{self.source}" + (
            f":{self.tests[0]}" if len(self.tests) == 1 else "")

    def usable(self):
        return self.passes and self.processor <= MAX_PART_SECONDS

    def command(self, program):
        limits = [f"--cpu={math.ceil(3 + 4 * self.processor)}", f"--as={MAX_MEMORY}",
                  f"--fsize={MAX_FILE}", "--core=0"]
        return ["prlimit", *limits, str(program), "--gtest_brief=1", "--gtest_fail_fast",
                "--gtest_filter=" + ":".join(self.tests)]

    def run(self, program, screen, folder, *options):
        """Whether it passes, in a fresh folder."""
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        process = subprocess.Popen([*self.command(program), *options], cwd=folder, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env=screen.environment(folder), process_group=0)
        try:
            return process.wait(30 + 10 * (self.seconds or MAX_PART_SECONDS)) == 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False


def link_commands():
    """How each test program that has the library's objects is linked, by its path in the build."""
    found = {}
    targets = require("ninja", ["ninja", "-C", str(BUILD), "-t", "targets", "all"])
    for name in re.findall(r"^(tests/\S+): CXX_EXECUTABLE_LINKER", targets, re.M):
        commands = require("ninja", ["ninja", "-C", str(BUILD), "-t", "commands", "-s", name])
        link = commands.strip().split("\n")[-1]
        if "CMakeFiles/ravolt_objects.dir/" in link and "gtest_main" in link and name not in UNUSED:
            found[name] = link
    return found


def parts_of(program):
    listing = SCRATCH / "listing"
    shutil.rmtree(listing, ignore_errors=True)
    listing.mkdir(parents=True)
    require(program, [str(BUILD / program), "--gtest_list_tests", "--gtest_output=json:list.json"],
            cwd=listing)
    tests = {}
    for suite in json.loads((listing / "list.json").read_text())["testsuites"]:
        for test in suite["testsuite"]:
            name = f"{suite['name']}.{test['name']}"
            if "WithoutX11" not in name and "DISABLED_" not in name:
                tests.setdefault(Path(test["file"]).name, []).append(name)
    return [Part(program, source, names) for source, names in tests.items()]


def measure(part, screen, folder):
    """Runs it without a change, the second time within its own limits."""
    before, begin = resource.getrusage(resource.RUSAGE_CHILDREN), time.time()
    part.passes = part.run(BUILD / part.program, screen, folder)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    part.seconds = round(time.time() - begin, 2)
    part.processor = round(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, 2)
    if part.passes and part.processor <= MAX_PART_SECONDS:
        part.passes = part.run(BUILD / part.program, screen, folder)


def divided(part, screen, folder):
    """The part, or several where tests need a process of their own or are slow."""
    report = folder / "report.json"
    part.run(BUILD / part.program, screen, folder, f"--gtest_output=json:{report}", "--gtest_fail_fast=0")
    alone = []
    if report.exists():
        for suite in json.loads(report.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                if "failures" in test or float(test["time"].rstrip("s")) > MAX_SECONDS_TOGETHER:
                    alone.append(f"{test['classname']}.{test['name']}")
    together = [test for test in part.tests if test not in alone]
    return [Part(part.program, part.source, tests) for tests in [together] + [[test] for test in alone] if tests]


def measured(program, reached, screen):
    folder = SCRATCH / "measured"
    parts = [part for whole in parts_of(program) for part in divided(whole, screen, folder)]
    for part in parts:
        measure(part, screen, folder)
        part.calls = reached.called_by(part, screen, folder) if part.usable() else []
    return parts


def measured_parts(programs, reached):
    """The parts of all programs, from the last run where the program is the same."""
    known = json.loads(BASELINE.read_text()) if BASELINE.exists() else {}
    with Screen() as screen:
        for name in programs:
            built = (BUILD / name).stat().st_mtime
            if known.get(name, {}).get("built") != built:
                print(f"Measuring {name}", flush=True)
                known[name] = {"built": built, "parts": [vars(part) for part in measured(name, reached, screen)]}
                BASELINE.write_text(json.dumps(known, indent=1))
    parts = [Part(**part) for name in programs for part in known[name]["parts"]]
    for part in parts:
        if not part.usable():
            print(f"not used: {part.name()}, {part.processor} s{'' if part.passes else ', fails'}", flush=True)
    return [part for part in parts if part.usable()]


def plain_name(file):
    """RVMESH.cpp and RVMESH_test.cpp are both mesh."""
    return Path(file).stem.removesuffix("_test").removeprefix("RV").lower()


def expected_cost(part, file, kills):
    """Seconds by the estimated chance that it kills a mutant of the file."""
    chance = 1 + 3 * (part.program.split("/")[1] == file.split("/")[0])
    shared = os.path.commonprefix([plain_name(part.source), plain_name(file)])
    if len(shared) >= 4:
        chance *= 8 if shared == plain_name(file) else 2
    return (part.processor + 0.1) / (chance + 5 * kills.get(part.name(), 0))


class Library:
    """How the library's sources are compiled, and the tests linked with other objects of it."""

    def __init__(self):
        self.root, self.build = SOURCE, BUILD
        self.links = link_commands()
        self.compiles = {}
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            target = command[command.index("-o") + 1]
            file = Path(entry["file"]).relative_to(SOURCE).as_posix()
            if target.startswith("CMakeFiles/ravolt_objects.dir/") and file.split("/")[0] in mutations.FOLDERS:
                self.compiles[file] = (command, target)

    def run_compiler(self, file, changed, target, *options):
        """Whether `changed` compiles as that file."""
        command, usual = self.compiles[file]
        replaced = {usual: str(target), str(SOURCE / file): str(changed)}
        command = [replaced.get(word, word) for word in command
                   if word != "-Werror" and not word.endswith("ccache")]
        command += ["-w", "-iquote", str((SOURCE / file).parent), *options]
        return subprocess.run(command, cwd=BUILD, capture_output=True).returncode == 0

    def compile(self, file, text, target):
        changed = target.parent / Path(file).name
        changed.write_text(text, encoding="utf-8")
        return self.run_compiler(file, changed, target, "-g0", *TRAPS)

    def link(self, program, file, changed, target):
        command = self.links[program].replace(f" {self.compiles[file][1]} ", f" {changed} ", 1)
        command = re.sub(rf"-o {re.escape(program)}(?= )", f"-o {target}", command)
        return subprocess.run(command, shell=True, cwd=BUILD, capture_output=True).returncode == 0


class Unlinkable(Exception):
    """As a mutant is that lacks a function."""


class Judge:
    """Judges mutants in a folder of its own; there is one in each thread."""

    def __init__(self, library, parts, reached, survivor_seconds, screen, number):
        self.library, self.parts, self.reached = library, parts, reached
        self.survivor_seconds, self.screen = survivor_seconds, screen
        self.folder = SCRATCH / str(number)
        self.object = self.folder / "mutant.o"

    def fails(self, part, mutation):
        program = self.folder / part.program.replace("/", "-")
        if not program.exists():
            if not self.library.link(part.program, mutation.file, self.object, program):
                raise Unlinkable
        return not part.run(program, self.screen, self.folder / "run")

    def same_code(self, mutation, source):
        original = self.folder / "original.o"
        return (self.library.compile(mutation.file, source, original)
                and original.read_bytes() == self.object.read_bytes())

    def sorted_parts(self, mutation, kills):
        """Those that call the changed function; first those that probably kill soon."""
        functions = self.reached.at(mutation.file, mutation.line)
        parts = [part for part in self.parts if not functions.isdisjoint(part.calls)]
        return sorted(parts, key=lambda part: expected_cost(part, mutation.file, kills))

    def judge(self, mutation, kills):
        """The result, the part that killed it, and the number of parts that ran and could have run."""
        source = (SOURCE / mutation.file).read_text(encoding="utf-8")
        if not self.library.compile(mutation.file, mutation.applied(source), self.object):
            return "invalid", "", 0
        begin, number = time.time(), 0
        parts = self.sorted_parts(mutation, kills)
        for number, part in enumerate(parts, 1):
            if self.fails(part, mutation) and self.fails(part, mutation):
                return "killed", part.name(), number
            if number == 5 and self.same_code(mutation, source):
                return "equivalent", "", number
            if time.time() > begin + self.survivor_seconds:
                break
        same = number < 5 and self.same_code(mutation, source)
        return "equivalent" if same else "survived", "", f"{number} of {len(parts)}"

    def row(self, mutation, kills):
        begin = time.time()
        self.folder.mkdir(parents=True, exist_ok=True)
        try:
            result, killer, parts = self.judge(mutation, kills)
        except Unlinkable:
            result, killer, parts = "invalid", "", 0
        finally:
            shutil.rmtree(self.folder, ignore_errors=True)
        values = [mutation.file, mutation.line, mutation.text, mutation.change, result, killer, parts,
                  round(time.time() - begin)]
        return dict(zip(COLUMNS, map(str, values)))


def key_of(row):
    return (row["file"], row["text"], row["change"])


class Results:
    """The judged mutants, by file, text and change."""

    def __init__(self):
        self.rows, self.lock = {}, threading.Lock()
        if RESULTS.exists():
            with RESULTS.open(newline="", encoding="utf-8") as file:
                self.rows = {key_of(row): row for row in csv.DictReader(file)}

    def add(self, row):
        with self.lock:
            self.rows[key_of(row)] = row
            written = RESULTS.with_suffix(".new")
            with written.open("w", newline="", encoding="utf-8") as file:
                writer = csv.DictWriter(file, COLUMNS)
                writer.writeheader()
                writer.writerows(self.rows.values())
            written.replace(RESULTS)
        print(f"{row['result']} in {row['seconds']} s: {row['file']}:{row['line']}: {row['change']}: "
              f"{row['text']} {'by ' + row['killer'] if row['killer'] else ''}", flush=True)

    def named(self, result):
        return [row for row in self.rows.values() if row["result"] == result]

    def judged(self):
        return len(self.rows) - len(self.named("invalid"))

    def kills_in(self, folder):
        """How many mutants of a folder each part has killed."""
        count = {}
        for row in list(self.rows.values()):
            if row["killer"] and row["file"].startswith(folder + "/"):
                count[row["killer"]] = count.get(row["killer"], 0) + 1
        return count


def listed_equivalents():
    """Reasons, by file, text and change."""
    if not EQUIVALENT.exists():
        return {}
    lines = EQUIVALENT.read_text(encoding="utf-8").splitlines()
    rows = [line.split("\t") for line in lines if line and not line.startswith("#")]
    return {tuple(row[:3]): row[3] for row in rows}


def print_summary(results):
    reasons = listed_equivalents()
    killed, survived = results.named("killed"), results.named("survived")
    listed = [row for row in survived if key_of(row) in reasons]
    missing = [row for row in survived if key_of(row) not in reasons]
    share = 100 * len(killed) / max(1, len(killed) + len(missing))
    print(f"{results.judged()} mutants: {len(killed)} killed, {len(missing)} survived, {len(listed)} "
          f"listed as equivalent, {len(results.named('equivalent'))} the same code; "
          f"{share:.1f} % of those that a test can kill are killed")
    for row in missing:
        print(f"survived {row['parts']} parts: {row['file']}:{row['line']}: {row['change']}: {row['text']}")


def waiting(arguments, results, library):
    """The mutations that are to be judged, in their order. Survivors that are listed as equivalent stay so."""
    listed = listed_equivalents()
    for mutation in mutations.drawn(SOURCE, arguments.seed):
        if mutation.file not in library.compiles:
            continue
        if arguments.again:
            known = results.rows.get(mutation.key(), {}).get("result")
            if known == arguments.again and mutation.key() not in listed:
                yield mutation
        elif mutation.key() not in results.rows:
            if results.judged() >= arguments.count:
                return
            yield mutation


def judge_all(arguments, results):
    library = Library()
    build(library.links)
    reached = ReachedFunctions(library, WORK / "instrumented")
    reached.build()
    parts = measured_parts(library.links, reached)
    print(f"{len(parts)} parts of {len(library.links)} programs, "
          f"{sum(part.processor for part in parts):.0f} s of the processor without a change", flush=True)
    end = time.time() + 60 * arguments.minutes
    queue, lock = waiting(arguments, results, library), threading.Lock()

    def work(number):
        judge = Judge(library, parts, reached, arguments.survivor_seconds, screens[number], number)
        while time.time() < end:
            with lock:
                mutation = next(queue, None)
            if mutation is None:
                return
            results.add(judge.row(mutation, results.kills_in(mutation.file.split("/")[0])))

    with contextlib.ExitStack() as stack:
        screens = [stack.enter_context(Screen()) for _ in range(arguments.jobs)]
        threads = [threading.Thread(target=work, args=(number,), daemon=True) for number in range(arguments.jobs)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300, help="mutants in all (default 300)")
    parser.add_argument("--minutes", type=float, default=1e6, help="starts no other mutant after that time")
    parser.add_argument("--seed", type=int, default=1, help="another order of the places (default 1)")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at a time (default 1)")
    parser.add_argument("--survivor-seconds", type=float, default=180,
                        help="the time for the tests of one mutant (default 180)")
    parser.add_argument("--again", choices=["survived", "killed", "equivalent", "invalid"])
    parser.add_argument("--summary", action="store_true")
    arguments = parser.parse_args()
    results = Results()
    if not arguments.summary:
        signal.signal(signal.SIGTERM, lambda *_: sys.exit("mutants.py: terminated"))
        prepare()
        try:
            judge_all(arguments, results)
        finally:
            shutil.rmtree(SCRATCH, ignore_errors=True)
    print_summary(results)


if __name__ == "__main__":
    main()
