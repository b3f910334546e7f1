#!/usr/bin/env bash
# Static analysis of the library, the kit, the recorder, the tools, the examples and the fuzz targets: cppcheck
# (warnings, performance, portability), and clang's analyzer by clang-tidy. Any finding fails. What is none is listed
# with its reason: for cppcheck in tests/house/cppcheck.supp, for clang at its line or in tests/house/tidy.py.
#
#   scripts/analyse.sh [cppcheck | clang]     both without
#   scripts/analyse.sh --help
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh

case "${1:-}" in
--help | -h)
    sed -n '2,7s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
'') analyses=(cppcheck clang) ;;
cppcheck | clang) analyses=("$1") ;;
*) fail "unknown analysis $1; see scripts/analyse.sh --help" ;;
esac

folders=(foundation math engine resources scene models effects gui video kit testing tools examples fuzz)
build=build/analyse

# Reports print nothing where there is no finding.
analyse_by_cppcheck() {
    mkdir -p "$build/cppcheck"
    cppcheck --enable=warning,performance,portability --inline-suppr --std=c++20 --language=c++ --library=opengl \
        --library=sdl --suppressions-list=tests/house/cppcheck.supp --suppress=missingInclude -I include -I . \
        --cppcheck-build-dir="$build/cppcheck" --error-exitcode=1 --quiet -j "$(nproc)" \
        --template='{file}:{line}: {message} [{id}]' "${folders[@]}"
}

# Without the tests each source is in the compile database once. A source that passed is not analysed again until it
# changes, or a header that it includes.
analyse_by_clang() {
    mkdir -p "$build"
    cmake --preset dev -B "$build" -DRAVOLT_TESTS=OFF -DRAVOLT_FUZZ=OFF >"$build/configure.log" 2>&1 ||
        { cat "$build/configure.log"; return 1; }
    cmake --build "$build" --target ravolt_embed_shaders >/dev/null || return 1
    python3 tests/house/tidy.py . "$build" --analyzer
}

install_packages "${demo_packages[@]}" ccache cppcheck clang-tidy-14

failed=0
for analysis in "${analyses[@]}"; do
    if "analyse_by_$analysis"; then
        echo "$analysis: no finding"
    else
        echo "$analysis: there are findings"
        failed=1
    fi
done
[ $failed -eq 0 ] || fail "mend them, or state the reason why they are none"
echo "analyse: no finding of ${analyses[*]}"
