#!/usr/bin/env bash
# Compares the interface of a build of the library with that of the release, and fails if programs that
# were linked with the release would not run with the build: a symbol is missing, or a type has another
# layout. Additions are no failure.
#
#   scripts/abi.sh LIBRARY [BASELINE [HEADERS]]           compares
#   scripts/abi.sh --renew LIBRARY [BASELINE [HEADERS]]   makes this build the release
#
# LIBRARY has full debug information: the target `ravolt_abi`, build/dev/abi/libravolt.so. BASELINE is
# the folder with the two files of the release, cmake/abi by default: libravolt.txt, the exported symbols
# and the sizes of the public classes, and libravolt.abi.xz, what abidw prints. HEADERS is include.
set -eu
root=$(dirname "$(dirname "$(readlink -f "$0")")")
renew=
[ "${1:-}" != --renew ] || { renew=yes; shift; }
[ $# -ge 1 ] || { sed -n '2,13s/^# \{0,1\}//p' "$0"; exit 2; }
library=$1 baseline=${2:-$root/cmake/abi} headers=${3:-$root/include}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

# Instances of the standard library's templates are no part of the interface, and no functions of types that
# the headers declare within a class and do not define.
private=$(sed -nE 's/^ +(struct|class) ([A-Za-z0-9_]+);.*/\2/p' "$headers/ravolt"/*.h | sort -u |
    awk '{ printf "%s%d%s", (NR > 1 ? "|" : ""), length($0), $0 }')
for kind in function variable; do
    printf '[suppress_%s]\nsymbol_name_regexp = ^_Z[A-Z]*(St|[0-9]+[A-Za-z0-9_]+(%s)[A-Z0-9])\n' $kind "${private:-none}"
done >"$work/suppressions"

"$root/scripts/symbolsAndSizes.sh" "$library" "$headers" >"$work/libravolt.txt"
if [ -n "$renew" ]; then
    mkdir -p "$baseline"
    abidw --headers-dir "$headers" --suppressions "$work/suppressions" --exported-interfaces-only \
        --drop-private-types --no-show-locs --no-corpus-path --no-comp-dir-path --no-parameter-names \
        --no-elf-needed --no-write-default-sizes --out-file "$work/libravolt.abi" "$library"
    xz -9e --stdout "$work/libravolt.abi" >"$baseline/libravolt.abi.xz"
    cp "$work/libravolt.txt" "$baseline/"
    echo "renewed: $baseline"
    exit
fi

failed=0
comm -23 <(sort "$baseline/libravolt.txt") <(sort "$work/libravolt.txt") >"$work/missing"
if [ -s "$work/missing" ]; then
    echo "Missing or changed:"
    cat "$work/missing"
    failed=1
fi
xz --decompress --stdout "$baseline/libravolt.abi.xz" >"$work/libravolt.abi"
# Types that no public header has are opaque in the baseline, so that they are not compared.
abidiff --no-added-syms --suppressions "$work/suppressions" "$work/libravolt.abi" "$library" || failed=1
[ $failed -eq 0 ] || echo "Programs that are linked with the release would break. Restore what is missing. If the break
is on purpose, raise the major version, and with it the SONAME, and call scripts/abi.sh --renew."
exit $failed
