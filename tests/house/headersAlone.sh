#!/bin/sh
# headersAlone.sh COMPILER STANDARD FOLDER PART: every header of the engine or of the kit, as PART says,
# below FOLDER compiles alone, as the first thing of a program in the given standard, without a warning.
compiler=$1 standard=$2 folder=$3 part=$4
failed=0 number=0
headersOf() {
    case $1 in
    kit) find ravolt/kit.h ravolt/kit -name '*.h' ;;
    engine) find . -name '*.h' ! -path './ravolt/kit.h' ! -path './ravolt/kit/*' ;;
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
