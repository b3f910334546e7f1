#!/usr/bin/env bash
# Installs what is needed, builds, and shows a real model that was converted to the engine's scene
# format, under a spot light on a stage, with one effect after the other: per-pixel lighting, soft
# shadows, bloom, tone mapping, depth of field that pulls its focus, and all of them together.
#
#   ./demo.sh            in a window; without a display it leaves pictures in demo-pictures/
#   ./demo.sh --pictures pictures, with a display too
#   ./demo.sh --help
set -uo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")" || exit 1
source scripts/common.sh

model=/usr/share/assimp/models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf
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
echo "Converting $model"
"$build/bin/ravolt" convert "$model" -o "$stage/truck.rve" &&
    "$build/bin/ravolt" convert media/stage.obj --prefix stage_ -o "$stage/stage.rve" ||
    fail "the model or its stage could not be converted"

cd "$stage" || exit 1 # the engine's log lands here
if [ -n "$window" ]; then
    echo "Showing the model; Escape or closing the window ends the demo"
    "$build/bin/effects" ./truck.rve ./stage.rve >/dev/null ||
        fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
    exit 0
fi

# Without a display: SDL 1.2's interface on SDL 2, whose offscreen driver needs no X server.
compatible=/usr/lib/$(g++ -print-multiarch)/sdl12-compat
echo "Drawing a picture of each effect without a display"
rm -rf "../../$pictures"
mkdir -p "../../$pictures"
LD_LIBRARY_PATH=$compatible SDL_VIDEODRIVER=offscreen LIBGL_ALWAYS_SOFTWARE=1 \
    "$build/bin/effects" --frames "$frames" --picture "../../$pictures/%s.png" \
    ./truck.rve ./stage.rve >/dev/null ||
    fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
echo "The pictures, named for the effects, are in $pictures:"
ls "../../$pictures"
grep '^Final memory ratio' ravolt_log.txt
