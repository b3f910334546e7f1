#!/bin/bash
# Draws every clip of the animated models of assimp's test collection at its start, its middle and
# its end, and puts the pictures together on sheets, to be looked at.
#
#     scripts/clip-sheet.sh RAVOLT FOLDER
#
# RAVOLT is the program; FOLDER gets sheet_1.png and so on, and sheets.txt, which lists the rows.
set -euo pipefail
tool=$(realpath "$1")
folder=$(realpath -m "$2")
table=$(dirname "$(realpath "$0")")/../tests/tools/animated.tsv
models=/usr/share/assimp/models
rows=8

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$folder"
: > "$folder/sheets.txt"
clip=0
while IFS=$'\t' read -r model name frames _; do
    [[ $model == \#* || $frames == 0 ]] && continue
    printf 'sheet %d row %d: %s, %s, frames 0, %d, %d\n' $((clip / rows + 1)) $((clip % rows + 1)) \
        "$model" "$name" $(((frames - 1) / 2)) $((frames - 1)) >> "$folder/sheets.txt"
    part=0
    for frame in 0 $(((frames - 1) / 2)) $((frames - 1)); do
        "$tool" shot -q --size 240x180 --two-sided --clip "$name" --frame "$frame" \
            -o "$work/$(printf '%04d' $((3 * clip + part))).png" "$models/$model"
        part=$((part + 1))
    done
    clip=$((clip + 1))
done < "$table"
ffmpeg -v error -y -i "$work/%04d.png" -vf "tile=3x$rows:padding=2" "$folder/sheet_%d.png"
