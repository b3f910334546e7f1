#!/bin/sh
# Runs a program in a fresh folder, which is deleted when it succeeds. After a failure the folder with
# its reports and pictures remains, and its path is printed.
program=$(realpath "$1")
shift
folder=$(mktemp -d "${TMPDIR:-/tmp}/ravolt-test-XXXXXX") || exit 1
cd "$folder" || exit 1
case " $* " in
*" --gtest_list_tests "*)
    # The log echoes to the same output: print only suites and tests.
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
