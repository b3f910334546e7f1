#!/usr/bin/env python3
"""Fails on names that the field's own terms have replaced, so that they do not come back: in sources,
scripts, documents and names of files. Only words that have no other use here are listed.

    words.py ROOT
    words.py --self     checks that the check itself finds faults
"""

import re

import check

# The replaced words, and what is written instead. A name is compared by its parts: takeInForce is
# take_in_force, so "in_force" finds it, and the plain words "in force" of a sentence are no name.
WORDS = {
    r"furnish(es|ed|ing)?": "attach, prepare",
    r"climb(s|ed|ing)?": "detect",
    r"rungs?": "capability",
    r"take_in_force": "apply, record",
    r"hand_out": "apply, return",
    r"ask_for": "request",
    r"dissolve[sd]?": "unlink",
    r"talk": "verbosity",
    r"strangers?": "missing, unknown",
    r"holdings": "owned storage",
    r"is_stiff": "cannotSkin",
    r"films?": "video",
    r"hindrances?": "unsupportedReason",
    r"pull_in": "collapse",
    r"quiet_start": "log redirection",
    r"let_pass": "advanceClock",
    r"lied_to|(driver|sdl)_lies": "override, simulate",
    r"forgiv(e|es|en|ing)": "suppress",
    r"drain_known": "expect",
    r"told_[a-z]+": "fake, logged",
    r"in_silence": "silent",
    r"make_room": "reserve",
    r"largest_render_list": "maxRenderListEntries",
}
FIRST_WORDS = {  # of a name with more than one part
    r"most|deepest": "max",
    r"least": "min",
}
PATTERNS = [(re.compile(rf"(^|_)({word})(_|$)"), instead) for word, instead in WORDS.items()]
PATTERNS += [(re.compile(rf"^({word})_"), instead) for word, instead in FIRST_WORDS.items()]

ENDINGS = {".h", ".cpp", ".inc", ".glsl", ".cmake", ".in", ".txt", ".sh", ".py", ".md", ".json"}
# This list, and the licences of others.
EXEMPT = ("tests/house/words.py", "cmake/debian/copyright.in")


def read(root):
    files = {}
    for path in sorted(root.rglob("*")):
        name = path.relative_to(root).as_posix()
        if name.startswith(("build/", ".")) or name in EXEMPT or not path.is_file():
            continue
        files[name] = path.read_text(encoding="utf-8") if path.suffix in ENDINGS else ""
    return files


def parts(name):
    """firstName, FirstName and first_name are all first_name."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


def faults(files):
    known = {}
    for path, text in files.items():
        for number, line in enumerate([path] + text.splitlines()):
            for name in re.findall(r"[A-Za-z]\w*", line):
                if name not in known:
                    known[name] = [instead for pattern, instead in PATTERNS
                                   if pattern.search(parts(name))]
                for instead in known[name]:
                    yield f"{path}:{number}: {name}: write {instead}"


def self_test():
    good = {"engine/a.cpp": "// In force, at least two, most of them. A dissolving filmstrip.\n"
                            "int maxBones, atLeast, TALKATIVE, stringer;\n",
            "tests/golden/a.png": ""}
    bad = ["int mostBones;", "void takeInForce();", "bool IsStiff;", "// The rungs of it.",
           "TEST(Video, AFilmLoads)", "ask_for_context", "HTTPTalk", "leastOf", "clock.letPass(1);",
           "TEST(Recorder, DriverLies)", "struct RecorderInSilence", "forgiveUnits",
           "std::string toldError;", "makeRoom"]
    return (not list(faults(good)) and list(faults({"tools/makeFilm.sh": ""})) and
            all(len(list(faults({**good, "engine/b.h": text}))) == 1 for text in bad))


if __name__ == "__main__":
    check.run(read, faults, self_test)
