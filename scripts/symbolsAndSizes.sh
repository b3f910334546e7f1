#!/usr/bin/env bash
# Prints the symbols that a shared library exports, without those of the standard library and of types
# that the headers declare within a class and do not define, and the sizes of the public classes, as
# sorted text.
#
#   scripts/symbolsAndSizes.sh LIBRARY HEADERS
set -eu
library=$1 headers=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

private=$(sed -nE 's/^ +(struct|class) ([A-Za-z0-9_]+);.*/\2/p' "$headers/ravolt"/*.h | sort -u | paste -sd '|')
echo "# Exported symbols"
nm --dynamic --defined-only --demangle --format=posix "$library" >"$work/symbols"
sed -E 's/ ([A-Za-z]) [0-9a-f]+( [0-9a-f]*)?$/ \1/' "$work/symbols" | grep -vE "^([a-z ]+ )?(std::|[A-Za-z0-9_]+::(${private:-none})(::| ))" | sort

echo "# Sizes of the public classes"
{
    echo '#include <cstdio>'
    echo '#include <ravolt.h>'
    echo 'int main() {'
    grep -hE '^(class|struct) ' "$headers/ravolt"/*.h |
        sed -nE 's/^(class|struct) (RV_API )?([A-Za-z0-9_]+)( :[^;]*)? \{$/\3/p' | sort |
        sed 's/.*/    std::printf("%s %zu %zu\\n", "&", sizeof(&), alignof(&));/'
    echo '}'
} >"$work/sizes.cpp"
c++ -std=c++11 "-I$headers" "$work/sizes.cpp" -o "$work/sizes" # no symbol of the library is needed
"$work/sizes"
