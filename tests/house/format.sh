#!/bin/sh
# format.sh ROOT: every C++ file below ROOT is formatted as .clang-format says, by the release of
# clang-format that the house uses; another one wraps some lines in another way.
# format.sh --self: the check finds a badly formatted file.
release=14

check() {
    find "$1" -mindepth 1 \( -name '.*' -o -path "$1/build" \) -prune -o \
        -type f \( -name '*.cpp' -o -name '*.h' \) -print0 >files
    echo "$(tr -cd '\0' <files | wc -c) files"
    [ -s files ] && xargs -0 -P "$(nproc)" -n 20 "$program" --dry-run -Werror --style=file <files
}

for program in "clang-format-$release" clang-format ''; do
    "${program:-false}" --version 2>/dev/null | grep -q "version $release\." && break
done
if [ -z "$program" ]; then
    echo "clang-format $release is missing: apt-get install clang-format-$release"
    exit 1
fi

if [ "$1" = --self ]; then
    mkdir good bad
    echo 'int main() { return 0; }' >good/main.cpp
    echo 'int  main( ) {return 0;}' >bad/main.h
    check good && ! check bad 2>/dev/null && ! check missing 2>/dev/null
    exit
fi
check "$1"
