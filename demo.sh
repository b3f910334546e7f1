#!/usr/bin/env bash
# Installs what is needed, builds, and shows real models that were converted to the engine's formats,
# on a stage by day and by night: a character walks round a truck, and beside them a video of the truck,
# which the engine itself has drawn, plays on a screen. Meanwhile comes one effect after the other:
# per-pixel lighting, soft shadows, bloom, tone mapping, depth of field that pulls its focus, and all
# of them together.
#
#   ./demo.sh            in a window; without a display it leaves pictures in demo-pictures/
#   ./demo.sh --pictures pictures, with a display too
#   ./demo.sh --help
set -uo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")" || exit 1
source scripts/common.sh

models=/usr/share/assimp/models
frames=54 # six for each part
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

install_packages
echo "Building"
configure_and_build release

build=$PWD/build/release
stage=$PWD/build/demo
mkdir -p "$stage"
convert() { # MODEL NAME: with materials of its own, which scenes otherwise share by their names
    echo "Converting $1"
    "$build/bin/ravolt" convert "$1" --prefix "$2_" -o "$stage/$2.rve" ||
        fail "$1 could not be converted"
}
convert "$models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf" truck
convert "$models/X/Testwuson.X" wisent
convert media/stage.obj stage
if [ ! "$stage/truck.m2v" -nt "$build/bin/ravolt" ]; then
    echo "Making a video of the truck"
    scripts/makeVideo.sh "$build/bin/ravolt" "$stage/truck.rve" "$stage/truck.m2v" ||
        fail "the video could not be made"
fi
show=("$build/bin/effects" ./truck.rve ./stage.rve ./wisent.rve ./wisent.Wuson_Walk.rva ./truck.m2v)

cd "$stage" || exit 1 # the engine's log lands here
if [ -n "$window" ]; then
    echo "Showing the stage; Escape or closing the window ends the demo"
    "${show[@]}" >/dev/null ||
        fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
    exit 0
fi

# Without a display: SDL 1.2's interface on SDL 2, whose offscreen driver needs no X server.
compatible=/usr/lib/$(g++ -print-multiarch)/sdl12-compat
echo "Drawing a picture of each effect without a display"
rm -rf "../../$pictures"
mkdir -p "../../$pictures"
LD_LIBRARY_PATH=$compatible SDL_VIDEODRIVER=offscreen LIBGL_ALWAYS_SOFTWARE=1 \
    "${show[@]}" --frames "$frames" --picture "../../$pictures/%s.png" >/dev/null ||
    fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
echo "The pictures, named for the effects, are in $pictures:"
ls "../../$pictures"
grep '^Final memory ratio' ravolt_log.txt
