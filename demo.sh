#!/usr/bin/env bash
# Installs what is needed, builds, and shows a real model that was converted to the engine's scene
# format, lit and textured, turning on a table.
#
#   ./demo.sh            in a window; without a display it leaves pictures in demo-pictures/
#   ./demo.sh --pictures pictures, with a display too
#   ./demo.sh --help
set -uo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")" || exit 1
source scripts/common.sh

model=/usr/share/assimp/models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf
frames=36
pictures=demo-pictures

[ $# -le 1 ] || fail "takes one option at most; see ./demo.sh --help"
window=${DISPLAY:+yes}
case "${1:-}" in
"") ;;
--pictures) window= ;;
--help | -h)
    sed -n '2,7s/^# \{0,1\}//p' "$self"
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
"$build/bin/ravolt" convert "$model" -o "$stage/truck.rve" ||
    fail "the model could not be converted"

cd "$stage" || exit 1 # the engine's log lands here
if [ -n "$window" ]; then
    echo "Showing the model; Escape or closing the window ends the demo"
    "$build/bin/turntable" ./truck.rve >/dev/null ||
        fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
    exit 0
fi

# Without a display: SDL 1.2's interface on SDL 2, whose offscreen driver needs no X server.
compatible=/usr/lib/$(g++ -print-multiarch)/sdl12-compat
echo "No display: drawing $frames pictures"
rm -rf "../../$pictures"
mkdir -p "../../$pictures"
LD_LIBRARY_PATH=$compatible SDL_VIDEODRIVER=offscreen LIBGL_ALWAYS_SOFTWARE=1 \
    "$build/bin/turntable" --frames "$frames" --picture "../../$pictures/truck_%03d.png" \
    ./truck.rve >/dev/null ||
    fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
echo "The pictures are $pictures/truck_000.png to truck_$(printf %03d $((frames - 1))).png"
grep '^Final memory ratio' ravolt_log.txt
