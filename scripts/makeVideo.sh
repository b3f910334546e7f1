#!/bin/sh
# makeVideo.sh TOOL SCENE VIDEO [FRAMES]: makes a video of a scene that turns once, drawn by the program
# `ravolt`: MPEG-2 video with B pictures, 320 by 240 pixels, 25 frames a second, 125 in all.
set -eu
tool=$1 scene=$2 video=$3 frames=${4:-125}
pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT

"$tool" shot "$scene" -o "$pictures/turn.png" --quiet --size 320x240 --frames "$frames" \
    --pitch 15 --zoom 1.3
ffmpeg -v error -y -framerate 25 -i "$pictures/turn_%03d.png" -an -c:v mpeg2video -bf 2 -g 12 -q:v 3 \
    -f mpeg2video "$pictures/video.m2v"
printf '\000\000\001\267' >>"$pictures/video.m2v" # the end code, which ffmpeg omits
mv "$pictures/video.m2v" "$video"
