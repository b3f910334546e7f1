#!/bin/sh
# Loads the library where its log would have to be something else than a file of its own: the
# program runs all the same, without a log, and what stands there stays as it was.
program=$1
mustBeQuiet() {
    if ! timeout 20 "$program" > echo.txt; then
        echo "$1: the program failed"
        exit 1
    fi
    if grep . echo.txt; then
        echo "$1: something was logged"
        exit 1
    fi
}

echo precious > precious.txt
ln -s precious.txt ravolt_log.txt
mustBeQuiet "a symbolic link"
if [ "$(cat precious.txt)" != precious ]; then
    echo "the library wrote through the symbolic link"
    exit 1
fi

rm ravolt_log.txt
mkfifo ravolt_log.txt
mustBeQuiet "a FIFO"
