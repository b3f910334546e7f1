#!/bin/sh
# headersAlone.sh COMPILER STANDARD FOLDER PART: every header of the engine, of the kit or of testing, as PART says,
# below FOLDER compiles alone, as the first thing of a program in the given standard, without a warning.
compiler=$1 standard=$2 folder=$3 part=$4
failed=0 number=0
headersOf() {
    case $1 in
    kit | testing) find "ravolt/$1.h" "ravolt/$1" -name '*.h' ;;
    engine) find . -name '*.h' ! -path './ravolt/kit*' ! -path './ravolt/testing*' ;;
    esac
}
for header in $(cd "$folder" && headersOf "$part" | sort); do
    number=$((number + 1))
    echo "#include \"$header\"" >alone.cpp
    echo "#include \"$header\" // and twice" >>alone.cpp
    "$compiler" "-std=$standard" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I$folder" alone.cpp ||
        { echo "$header does not compile alone as $standard"; failed=1; }
done
echo "$number headers as $standard"
[ "$number" -gt 0 ] && [ $failed -eq 0 ]
