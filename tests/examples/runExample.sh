#!/bin/sh
# runExample.sh CONVERTER MODEL EXAMPLE: runs an example for some frames in this folder. It fails on
# the example's exit status, on a problem in its log, on a leak in the log's closing statistics, and
# when it leaves no picture. MODEL, unless empty, is converted to the scene that the example shows.
set -eu
converter=$1 model=$2 example=$3

scene=
if [ -n "$model" ]; then
    "$converter" convert "$model" -o scene.rve
    scene=./scene.rve
fi
"$example" --frames 5 --picture picture.png $scene >output.txt || {
    cat output.txt
    echo "FAILED: exit status"
    exit 1
}

# What stands there without a fault: a machine without a graphics card, a model without normal maps.
problems=$(grep -F '[!]' ravolt_log.txt | grep -vF -e 'No VRam detected' -e 'normal map not found' || true)
if [ -n "$problems" ]; then
    echo "FAILED: problems in the log:"
    echo "$problems"
    exit 1
fi
if ! grep -q '^Final memory ratio: 0 ' ravolt_log.txt; then
    echo "FAILED: memory ratio:"
    grep 'Final memory ratio' ravolt_log.txt || echo "(the log was not closed)"
    exit 1
fi
if ! [ -s picture.png ]; then
    echo "FAILED: no picture"
    exit 1
fi
