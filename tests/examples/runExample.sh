#!/bin/sh
# runExample.sh CONVERTER EXAMPLE FRAMES PICTURES [MODEL...]: runs an example for some frames in this
# folder, with the scenes that are converted from the models. It fails on the example's exit status,
# on a problem in its log, on a leak in the log's closing statistics, and when it does not leave as
# many pictures as it should.
set -eu
converter=$1 example=$2 frames=$3 pictures=$4
shift 4

scenes=
for model in "$@"; do
    scene=./$(basename "${model%.*}").rve
    "$converter" convert "$model" -o "$scene"
    scenes="$scenes $scene"
done
name=picture.png
[ "$pictures" -eq 1 ] || name=picture_%s.png
rm -f picture*.png
"$example" --frames "$frames" --picture "$name" $scenes >output.txt || {
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
found=$(find . -name 'picture*.png' -size +0 | wc -l)
if [ "$found" -ne "$pictures" ]; then
    echo "FAILED: $found pictures instead of $pictures"
    exit 1
fi
