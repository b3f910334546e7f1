#!/usr/bin/env bash
# Installs what is needed, builds, and flies over an island that `ravolt terrain` makes: its shore, its
# village with animals that walk and run, a camp fire, a screen with a video and a control panel, below
# the water, and by night; shadows, depth of field, per-pixel lighting, bloom and tone mapping are each
# shown beside the same picture without. It ends by itself after one and a half minutes.
#
#   ./demo.sh            in a window; without a display it leaves pictures in demo-pictures/
#   ./demo.sh --pictures pictures, with a display too
#   ./demo.sh --help
set -uo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")" || exit 1
source scripts/common.sh

frames=16 # one for each part
pictures=demo-pictures

[ $# -le 1 ] || fail "takes one option at most; see ./demo.sh --help"
window=${DISPLAY:+yes}
case "${1:-}" in
"") ;;
--pictures) window= ;;
--help | -h)
    sed -n '2,/^[^#]/{/^#/s/^# \{0,1\}//p}' "$self"
    exit 0
    ;;
*) fail "unknown option $1; see ./demo.sh --help" ;;
esac

install_packages "${demo_packages[@]}"
echo "Building"
configure_and_build demo -- ravolt_tool ravolt_default_font example_island example_village

build=$PWD/build/demo
stage=$build/world
mkdir -p "$stage"
echo "Making the world"
(cd "$stage" && ../../../scripts/makeWorld.sh "$build/bin/ravolt" "$build/bin/makeVillage") ||
    fail "the world could not be made"
show=("$build/bin/island")

cd "$stage" || exit 1 # the engine's log lands here
if [ -n "$window" ]; then
    echo "Flying over the island; Escape or closing the window ends the demo"
    "${show[@]}" >/dev/null ||
        fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
    exit 0
fi

# Without a display: SDL 1.2's interface on SDL 2, whose offscreen driver needs no X server.
compatible=/usr/lib/$(g++ -print-multiarch)/sdl12-compat
echo "Drawing a picture of each part of the flight without a display"
rm -rf "../../../$pictures"
mkdir -p "../../../$pictures"
LD_LIBRARY_PATH=$compatible SDL_VIDEODRIVER=offscreen LIBGL_ALWAYS_SOFTWARE=1 \
    "${show[@]}" --frames "$frames" --picture "../../../$pictures/%s.png" >/dev/null ||
    fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
echo "The pictures, named for the parts, are in $pictures:"
ls "../../../$pictures"
grep '^Final memory ratio' ravolt_log.txt
