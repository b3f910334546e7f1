#!/usr/bin/env bash
# Prints what a change of internal names must not change, as sorted text: the symbols that the shared
# library exports, the texts of its log, the sizes of the public classes, and the checksums of the
# reference pictures. Print it for two commits, each built in a checkout of its own, and compare:
#
#   scripts/interface.sh [CHECKOUT [BUILD]] >after.txt
#
# CHECKOUT is this one by default, BUILD its folder build/dev; only the target `ravolt` is needed.
set -eu
scripts=$(dirname "$(readlink -f "$0")")
build=${2:+$(realpath "$2")}
cd "${1:-$(dirname "$0")/..}"
build=${build:-$PWD/build/dev}
library=$build/libravolt.so
[ -e "$library" ] || { echo "$library is missing: build the target ravolt" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

"$scripts/symbolsAndSizes.sh" "$library" include

# All literals of the sources, as those of the log pass through tables and helpers too. Adjacent ones
# are one text, so that a line wrapped anew is no change.
echo "# Texts"
python3 - >"$work/texts" <<'EOF'
import re
from pathlib import Path

TOKEN = re.compile(r"""//[^\n]*|^\s*\#\s*include[^\n]*|'(?:[^'\\\n]|\\.)+'|(?P<text>"(?:[^"\\]|\\.)*")"""
                   r"""|(?P<code>\S)""", re.M)
for folder in ("foundation", "math", "engine", "scene", "resources", "models", "video"):
    for path in Path(folder).rglob("*"):
        if path.suffix not in (".cpp", ".h", ".inc"):
            continue
        text = None
        for token in TOKEN.finditer(path.read_text() + ";"):
            if token["text"]:
                text = (text or "") + token["text"][1:-1]
            elif token["code"] and text is not None:
                print(f'"{text}"')
                text = None
EOF
sort "$work/texts"
echo "# Reference pictures"
find tests/golden -type f -exec sha256sum {} + | sort -k 2
