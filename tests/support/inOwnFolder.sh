#!/bin/sh
# Runs a program in a fresh folder, which goes away when it succeeds. Reports and pictures that a
# failing test leaves there stay, and the folder is named.
program=$(realpath "$1")
shift
folder=$(mktemp -d "${TMPDIR:-/tmp}/ravolt-test-XXXXXX") || exit 1
cd "$folder" || exit 1
case " $* " in
*" --gtest_list_tests "*)
    # The log echoes to the same output: only suites and tests may pass.
    "$program" "$@" >list
    status=$?
    grep -E '^[A-Za-z0-9_/]+\.|^  [^ ]' list
    ;;
*)
    "$program" "$@"
    status=$?
    ;;
esac
if [ $status -eq 0 ]; then
    rm -rf "$folder"
else
    echo "left in $folder:" $(ls "$folder") >&2
fi
exit $status
