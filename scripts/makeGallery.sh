#!/bin/sh
# makeGallery.sh BUILD: renews the pictures of docs/gallery.md in docs/pictures/gallery/: the reference
# pictures of the tests, those of the examples as their tests draw them, and those of the demo. Look at
# what has changed before it is committed. Needs a display, or SDL's offscreen driver, and ffmpeg.
set -eu
sources=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)/bin
gallery=$sources/docs/pictures/gallery
models=/usr/share/assimp/models
truck=$models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf wisent=$models/X/Testwuson.X
stage=$sources/media/stage.obj

small() { # PICTURE NAME
    ffmpeg -v error -y -i "$1" -vf 'scale=min(300\,iw):-2:flags=area' -q:v 4 "$gallery/$2.jpg"
}
example() { # NAME FRAMES PICTURES [FILE ...]: as in tests/examples/CMakeLists.txt
    name=$1 frames=$2 pictures=$3
    shift 3
    mkdir -p "$work/$name"
    (cd "$work/$name" && "$sources/tests/examples/runExample.sh" "$build/ravolt" "$build/$name" \
        "$frames" "$pictures" "$@" >/dev/null)
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$gallery"
for picture in "$sources"/tests/golden/*.png; do
    small "$picture" "$(basename "$picture" .png)"
done
for name in boxes frames; do
    example "$name" 5 1
    small "$work/$name/picture.png" "example_$name"
done
for name in turntable picking poster; do
    example "$name" 5 1 "$truck"
    small "$work/$name/picture.png" "example_$name"
done
example clips 45 45 "$stage" "$wisent" Testwuson.Wuson_Walk.rva Testwuson.Wuson_Run.rva
small "$work/clips/picture_030.png" example_clips
example video 45 45 "$stage" video.m2v
small "$work/video/picture_030.png" example_video
example effects 18 9 "$truck" "$stage" "$wisent" Testwuson.Wuson_Walk.rva video.m2v
for picture in "$work"/effects/picture_*.png; do
    small "$picture" "effects_$(basename "$picture" .png | cut -d_ -f2)"
done
mkdir "$work/world"
cd "$work/world"
"$sources/scripts/makeWorld.sh" "$build/ravolt" "$build/makeVillage"
"$build/island" --frames 16 --picture picture_%s.png >/dev/null 2>&1
for picture in picture_*.png; do
    small "$picture" "world_$(echo "$picture" | cut -d_ -f2)"
done
