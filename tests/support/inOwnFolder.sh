#!/bin/sh
# Runs a program in a fresh folder, which goes away when it succeeds. Reports and pictures that a
# failing test leaves there stay, and the folder is named.
program=$(realpath "$1")
shift
folder=$(mktemp -d "${TMPDIR:-/tmp}/ravolt-test-XXXXXX") || exit 1
cd "$folder" || exit 1
"$program" "$@"
status=$?
if [ $status -eq 0 ]; then
    rm -rf "$folder"
else
    echo "left in $folder:" $(ls "$folder") >&2
fi
exit $status
