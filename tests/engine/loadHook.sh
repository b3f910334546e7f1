#!/bin/sh
# Runs a program that never starts the engine and compares its log with what loading and unloading
# the library write. What differs from run to run (times, memory of the machine) is masked.
if ! "$1" > echo.txt; then
    echo "the program failed"
    exit 1
fi
mask() {
    sed -E -e 's|at [0-9/]+ [0-9:.]+\]$|at TIME]|' -e 's|usage: .*|usage: MEMORY|' "$1"
}
cat > expected.txt <<'LOG'
[Zenlor foundation 0.4 started at TIME]
-------------------------------------------------------

   Log file for Ravolt 3D Graphics Engine for PC v1.6.6a (debug)
   Log completed

-------------------------------------------------------
Final memory ratio: 0 (1/1)
Max. physical memory usage: MEMORY
Total allocated memory (zlfMalloc): 0.25 mb (262144 bytes)
[Zenlor foundation 0.4 terminated at TIME]
LOG
mask ravolt_log.txt | diff expected.txt - && mask echo.txt | diff expected.txt -
