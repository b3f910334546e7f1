#!/bin/sh
# Runs a program that never starts the engine and compares its log with what loading and unloading
# the library write around the lines given. What differs from run to run (times, memory of the
# machine) is masked.
program=$1
shift
if ! "$program" > echo.txt; then
    echo "the program failed"
    exit 1
fi
mask() {
    sed -E -e 's|at [0-9/]+ [0-9:.]+\]$|at TIME]|' -e 's|usage: .*|usage: MEMORY|' "$1"
}
{
    cat <<'LOG'
[Zenlor foundation 0.4 started at TIME]
-------------------------------------------------------

   Log file for Ravolt 3D Graphics Engine for PC v1.6.6a (debug)
LOG
    for line in "$@"; do
        echo "$line"
    done
    cat <<'LOG'
   Log completed

-------------------------------------------------------
Final memory ratio: 0 (1/1)
Max. physical memory usage: MEMORY
Total allocated memory (zlfMalloc): 0.25 mb (262144 bytes)
[Zenlor foundation 0.4 terminated at TIME]
LOG
} > expected.txt
mask ravolt_log.txt | diff expected.txt - && mask echo.txt | diff expected.txt -
