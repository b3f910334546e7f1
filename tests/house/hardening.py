#!/usr/bin/env python3
"""Fails on a library or a program that lacks a protection against errors in memory, and on a library
that exports what no public header declares.

    hardening.py HEADERS LIBRARY [PROGRAM...]
    hardening.py --self COMPILER     checks that the check itself finds faults

Protected is a file whose tables of addresses are read-only before the first call (full RELRO: all symbols
are bound at the start), whose stack is not executable, and whose code has a stack protector and calls the
functions of the C library that know the sizes of buffers. A program is position-independent as well.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

# As printed by nm: what the linker adds to a table, and the first name of what it is for.
TABLE = re.compile(r"^(vtable|VTT|typeinfo|typeinfo name|guard variable|(non-)?virtual thunk) (for|to) ")
FIRST_NAME = re.compile(r"^\w+")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env={"PATH": "/usr/bin:/bin", "LC_ALL": "C"}).stdout


def segment(headers, name):
    """The flags of a segment, as `RW `; None if the file has none."""
    found = re.search(rf"^ +{name}( +0x\w+){{5}} (...) ", headers, re.M)
    return found and found.group(2)


def protection_faults(path, is_program):
    headers, dynamic = run("readelf", "-lW", path), run("readelf", "-dW", path)
    imported = run("nm", "--dynamic", "--undefined-only", "--without-symbol-versions", path).split()
    if segment(headers, "GNU_RELRO") is None:
        yield "no table of addresses becomes read-only (relro)"
    if not re.search(r"\((FLAGS|FLAGS_1)\) .*\b(BIND_)?NOW\b", dynamic):
        yield "symbols are bound at their first use (now)"
    if "E" in (segment(headers, "GNU_STACK") or "E"):
        yield "the stack is executable (noexecstack)"
    if "(TEXTREL)" in dynamic:
        yield "the code is changed when it is loaded"
    if "__stack_chk_fail" not in imported:
        yield "no function has a stack protector (-fstack-protector-strong)"
    if not any(re.fullmatch(r"__(?!stack)\w+_chk", name) for name in imported):
        yield "no function checks the size of a buffer (_FORTIFY_SOURCE)"
    if is_program and not re.search(r"\(FLAGS_1\) .*\bPIE\b", dynamic):
        yield "the program is not position-independent (pie)"


def export_faults(path, declared):
    exported = run("nm", "--dynamic", "--defined-only", "--demangle", "--format=posix", path)
    for line in exported.splitlines():
        symbol = re.sub(r" [A-Za-z]( [0-9a-f]*){0,2}$", "", line)
        name = FIRST_NAME.match(TABLE.sub("", symbol))
        if not name or name.group() not in declared or symbol.startswith("std::"):
            yield f"exports {symbol}, which no public header declares"


def names_of(headers):
    text = "".join(path.read_text(encoding="utf-8") for path in Path(headers).glob("ravolt/*.h"))
    return set(re.findall(r"\w+", re.sub(r"//[^\n]*", "", text)))


def faults(headers, library, programs):
    declared = names_of(headers)
    for path in [library, *programs]:
        for fault in protection_faults(path, path != library):
            yield f"{path}: {fault}"
    for fault in export_faults(library, declared):
        yield f"{library}: {fault}"


SOURCE = """#include <cstdio>
#include <cstring>
#define API __attribute__((visibility("default")))
class API RVTHING { public: virtual ~RVTHING(); void name(const char *text); char text[8]; };
RVTHING::~RVTHING() {}
void RVTHING::name(const char *from) { char a[8]; std::strcpy(a, from); std::memcpy(text, a, 8); }
#ifdef INSIDE
namespace inside { API int number() { return 1; } }
extern "C" API int _number() { return 1; }
#endif
#ifdef PROGRAM
int main(int, char **argv) { RVTHING thing; thing.name(argv[0]); return std::puts(thing.text); }
#endif
"""
GOOD = ["-O1", "-fPIC", "-fvisibility=hidden", "-fstack-protector-strong", "-U_FORTIFY_SOURCE",
        "-D_FORTIFY_SOURCE=2", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack"]
LIBRARY, PROGRAM = ["-shared"], ["-DPROGRAM", "-pie"]
# Options that replace good ones, and a word of the fault that they make.
BAD = [(LIBRARY, "-Wl,-z,relro", "-Wl,-z,norelro", "(relro)"),
       (LIBRARY, "-Wl,-z,now", "-Wl,-z,lazy", "(now)"),
       (LIBRARY, "-Wl,-z,noexecstack", "-Wl,-z,execstack", "(noexecstack)"),
       (LIBRARY, "-fstack-protector-strong", "-fno-stack-protector", "stack protector"),
       (LIBRARY, "-D_FORTIFY_SOURCE=2", "-O1", "(_FORTIFY_SOURCE)"),
       (LIBRARY, "-O1", "-O1 -DINSIDE", "exports inside::number"),
       (LIBRARY, "-O1", "-O1 -DINSIDE", "exports _number"),
       (PROGRAM, "-pie", "-no-pie", "(pie)")]


def self_test(compiler):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "ravolt").mkdir()
        (folder / "ravolt/RVTHING.h").write_text("class RVTHING; // inside\n", encoding="utf-8")
        (folder / "thing.cpp").write_text(SOURCE, encoding="utf-8")

        def faults_with(kind, good, bad):
            flags = [bad if flag == good else flag for flag in GOOD + kind]
            run(compiler, *" ".join(flags).split(), folder / "thing.cpp", "-o", folder / "built")
            found = protection_faults(folder / "built", kind == PROGRAM)
            exports = export_faults(folder / "built", names_of(folder)) if kind == LIBRARY else []
            return [*found, *exports]

        for kind in (LIBRARY, PROGRAM):
            if faults_with(kind, None, None):
                return f"faults of a good file: {faults_with(kind, None, None)}"
        for kind, good, bad, text in BAD:
            found = faults_with(kind, good, bad)
            if not any(text in fault for fault in found):
                return f"{bad}: {text} is not found, but {found}"
    return None


def main():
    if sys.argv[1] == "--self":
        sys.exit(self_test(sys.argv[2]))
    found = list(faults(sys.argv[1], sys.argv[2], sys.argv[3:]))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
