#!/bin/sh
# makeGame.sh TOOL [SIDE]: makes the files of examples/game.cpp in this folder: the models and their clips,
# the island, the interface and its font. TOOL is the program `ravolt`, and SIDE the pixels of a side of
# the island's textures (512).
set -eu
tool=$1 side=${2:-512}
sources=$(dirname "$0")/..
models=/usr/share/assimp/models

convert() { # MODEL NAME: with materials of its own, which scenes otherwise share by names
    "$tool" convert "$1" --prefix "${2}_" -q -o "$2.rve"
}
convert "$models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf" truck
convert "$models/X/Testwuson.X" wisent
"$tool" terrain --island 7 --texture-size "$side" -q -o island
cp "$sources/media/game.xml" "$(dirname "$tool")"/../share/ravolt/font.* .
