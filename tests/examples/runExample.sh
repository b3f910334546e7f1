#!/bin/sh
# runExample.sh CONVERTER EXAMPLE FRAMES PICTURES [FILE...]: runs an example for some frames in this
# folder. A FILE is a model, which is converted; a clip (.rva), which a conversion before it has made;
# a video (.m2v), which is made of the first scene; a terrain (.terrain), which is an island;
# an interface (.xml), the geometry (.geo) of the terrain, or the demo's world (.world), whose files are
# made in this folder, and whose labelled pictures are larger. With 0 frames the example, which is to
# end by itself, prints its rate on the standard error. It fails on the example's exit status, on a
# problem in its log, on a leak in the log's closing statistics, when it does not leave as many
# pictures as it should or the last two thirds of many show the same, and on the exit status of the
# program CHECK, if there is one, which looks at what is in the folder.
set -eu
scripts=$(dirname "$0")/../../scripts
converter=$1 example=$2 frames=$3 pictures=$4
shift 4

files= size=--draft labelled=
for file in "$@"; do
    case $file in
    *.rva) made=./$file ;;
    *.geo) made=$file ;; # of the terrain before it
    *.m2v)
        made=./$file
        "$scripts/makeVideo.sh" "$converter" "${files%% *}" "$made" 25
        ;;
    *.xml) # an interface, which uses the default font
        made=./$(basename "$file")
        cp "$file" "$(dirname "$converter")"/../share/ravolt/font.* .
        ;;
    *.terrain)
        name=${file%.*}
        made=$name/terrain.xml
        "$converter" terrain --island 7 --texture-size 64 -q -o "$name"
        ;;
    *.world)
        "$scripts/makeWorld.sh" "$converter" "$(dirname "$converter")/makeVillage" 256
        [ "$frames" -eq 0 ] || size="--width 480"
        labelled=yes
        continue
        ;;
    *)
        name=$(basename "${file%.*}")
        made=./$name.rve
        "$converter" convert "$file" --prefix "${name}_" -o "$made"
        ;;
    esac
    files="${files:+$files }$made"
done
name=picture.png
[ "$pictures" -eq 1 ] || name=picture_%s.png       # those that the example labels
[ "$pictures" -ne "$frames" ] || [ "$labelled" ] || name=picture_%d.png # all
rm -f picture*.png
"$example" $size --frames "$frames" --picture "$name" $files >output.txt 2>errors.txt || {
    cat output.txt errors.txt
    echo "FAILED: exit status"
    exit 1
}
if [ "$frames" -eq 0 ] && ! grep -q '^[0-9.]* frames/s$' errors.txt; then
    cat errors.txt
    echo "FAILED: no rate on the standard error"
    exit 1
fi

# What is logged without a fault, except in the demo: a machine without a graphics card, a model without
# normal maps.
set --
[ "$labelled" ] || set -- -e 'No VRam detected' -e 'normal map not found'
[ -z "${EXCUSED:-}" ] || set -- "$@" -e "$EXCUSED"
# A driver without some extensions (scripts/drivers.sh): the engine says what it goes without.
[ -z "${MESA_EXTENSION_MAX_YEAR:-}" ] || set -- "$@" -e '@ RVOPENGL::init' \
    -e 'Shaders required but not supported on this hardware @ RVSHADER::init' \
    -e 'No chunks or no vertex buffers @ RVTERRAIN::render'
problems=$(grep -F '[!]' ravolt_log.txt | grep -vF -f /dev/null "$@" || true)
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
# Without vertex buffers there is no terrain to move over.
if [ "$name" = picture_%d.png ] && ! grep -qF 'or no vertex buffers @ RVTERRAIN::render' ravolt_log.txt &&
    cmp -s "picture_$(printf %03d $((frames / 3))).png" "picture_$(printf %03d $((frames - 1))).png"; then
    echo "FAILED: nothing moves"
    exit 1
fi
# What it expects is drawn by a driver with all extensions.
if [ "${CHECK:-}" ] && [ -z "${MESA_EXTENSION_MAX_YEAR:-}" ] && ! "$CHECK" >check.txt; then
    cat check.txt
    echo "FAILED: the pictures are not as they should be"
    exit 1
fi
