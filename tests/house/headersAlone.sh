#!/bin/sh
# headersAlone.sh COMPILER STANDARD FOLDER: every header below FOLDER compiles alone, as the first
# thing of a program in the given standard, without a warning.
compiler=$1 standard=$2 folder=$3
failed=0 number=0
for header in $(cd "$folder" && find . -name '*.h' | sort); do
    number=$((number + 1))
    echo "#include \"$header\"" >alone.cpp
    echo "#include \"$header\" // and twice" >>alone.cpp
    "$compiler" "-std=$standard" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I$folder" alone.cpp ||
        { echo "$header does not compile alone as $standard"; failed=1; }
done
echo "$number headers as $standard"
[ "$number" -gt 0 ] && [ $failed -eq 0 ]
