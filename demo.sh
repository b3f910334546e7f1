#!/usr/bin/env bash
# Installs what is needed, builds, and flies over an island that `ravolt terrain` makes: its mountains
# and its shore, a paved place with a truck and a character that walks round it, a camp fire, below the
# water, and by night, with shadows, bloom and depth of field, and with a control panel.
#
#   ./demo.sh            in a window; without a display it leaves pictures in demo-pictures/
#   ./demo.sh --pictures pictures, with a display too
#   ./demo.sh --help
set -uo pipefail
self=$(readlink -f "$0")
cd "$(dirname "$self")" || exit 1
source scripts/common.sh

models=/usr/share/assimp/models
frames=27 # three for each part
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
configure_and_build release -- ravolt_tool ravolt_default_font example_island

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
cp media/panel.xml "$build"/share/ravolt/font.* "$stage" || fail "the control panel could not be made"
echo "Making the island"
(cd "$stage" && "$build/bin/ravolt" terrain --island 7 -o island) || fail "the island could not be made"
show=("$build/bin/island" island/terrain.xml ./stage.rve ./truck.rve ./wisent.rve
    ./wisent.Wuson_Walk.rva ./panel.xml)

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
rm -rf "../../$pictures"
mkdir -p "../../$pictures"
LD_LIBRARY_PATH=$compatible SDL_VIDEODRIVER=offscreen LIBGL_ALWAYS_SOFTWARE=1 \
    "${show[@]}" --frames "$frames" --picture "../../$pictures/%s.png" >/dev/null ||
    fail "the demo ended badly; the engine's log is $stage/ravolt_log.txt"
echo "The pictures, named for the parts, are in $pictures:"
ls "../../$pictures"
grep '^Final memory ratio' ravolt_log.txt
