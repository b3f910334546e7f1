#!/bin/sh
# makeWorld.sh TOOL VILLAGE [SIDE]: makes the files of the demo's world in this folder: the island, the
# village, the models and their clips, fonts and the video. TOOL is the program `ravolt`, VILLAGE the
# program makeVillage beside it, and SIDE the pixels of a side of the island's textures (512), twice those
# of the village's.
set -eu
tool=$1 village=$2 side=${3:-512}
sources=$(dirname "$0")/..
models=/usr/share/assimp/models

convert() { # MODEL NAME [option ...]: with materials of its own, which scenes otherwise share by names
    from=$1 name=$2
    shift 2
    "$tool" convert "$from" --prefix "${name}_" -q "$@" -o "$name.rve"
}
# Beside all the rest, as it takes about half of the time.
"$tool" terrain --island 7 --texture-size "$side" --high 300 --steep 46 -q -o island &
terrain=$!
trap 'kill "$terrain" 2>/dev/null || true' EXIT
mkdir -p village
"$village" village $((side / 2))
for scene in village nature fish; do
    convert "village/$scene.obj" "$scene"
done
convert "$models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf" truck
convert "$models/MS3D/jeep1.ms3d" jeep --scale 0.21
convert "$models/Collada/duck.dae" duck --scale 1
convert "$models/OBJ/spider.obj" spider --scale 0.007
convert "$models/X/Testwuson.X" wisent
cp "$sources/media/panel.xml" "$sources/media/video.m2v" "$(dirname "$tool")"/../share/ravolt/font.* .
"$tool" font "${RAVOLT_TITLE_FONT:-/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf}" -q \
    --cell 32x32 --shadow 2 -o title.tga

# The engine looks for a normal map beside each texture, and logs a line where it finds none.
for texture in *_d.tga; do
    printf '\000\000\002\000\000\000\000\000\000\000\000\000\001\000\001\000\030\000\377\200\200' \
        >"${texture%_d.tga}_n.tga"
done

wait "$terrain"
trap - EXIT
