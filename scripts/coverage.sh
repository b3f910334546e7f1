#!/usr/bin/env bash
# Builds the preset `coverage`, runs the tests of the library, and prints how many of its lines and
# branches they run: a row for each folder, one for the readers of files, and one for the library. Exits
# with 1 where a goal is missed, or a line of a reader neither runs nor has a reason in
# scripts/coverage-uncovered.txt.
#
#   scripts/coverage.sh [number of jobs]
#   scripts/coverage.sh --report    the table again, after single tests of build/coverage
#   scripts/coverage.sh --help
#
# What does not run is listed in build/coverage/uncovered.txt. Only tests of the library that compare
# results count: not those that let every call or allocation fail in turn (callers_test, withoutMemory_test),
# the long runs, the replay of the fuzzers' inputs, nor tests of the kit, the tools and the examples. Branches
# that the compiler adds for exceptions, or to lines without code, are no branches here.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh

build=build/coverage
folders=(foundation math engine scene resources models effects gui video)
tests=("${folders[@]}" pictures)

# make_report: the table, from what has run since the counts were deleted.
make_report() {
    local filters=("${folders[@]/#/--filter=}")
    filters=("${filters[@]/%//}")
    gcovr --root . --object-directory "$build" --exclude-throw-branches --exclude-unreachable-branches \
        "${filters[@]}" --filter='include/ravolt/[^/]*$' --json="$build/counts.json" \
        "$build/CMakeFiles/ravolt_objects.dir" "$build/tests/foundation" "$build/tests/math" >"$build/gcovr.log" 2>&1 ||
        { cat "$build/gcovr.log"; fail "gcovr failed"; }
    python3 scripts/coverageReport.py "$build/counts.json" scripts/coverage-uncovered.txt \
        "$build/uncovered.txt"
}

case "${1:-}" in
--help | -h)
    sed -n '2,15s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
--report)
    make_report
    exit
    ;;
*[!0-9]*) fail "unknown option $1; see scripts/coverage.sh --help" ;;
esac
jobs=${1:-$(nproc)}

install_packages "${test_packages[@]}" gcovr
export LIBGL_ALWAYS_SOFTWARE=1
start_display

# run_tests FOLDER [option of ctest ...]: a test that fails makes the script fail, too.
run_tests() {
    ctest --test-dir "$build/tests/$1" -j "$jobs" --output-on-failure --no-tests=error "${@:2}" ||
        failed=1
}

failed=0
targets=("${tests[@]/#/tests/}")
configure_and_build coverage -DRAVOLT_TOOLS=OFF -DRAVOLT_EXAMPLES=OFF -- "${targets[@]/%//all}" files_test
find "$build" -name '*.gcda' -delete # what earlier runs counted
for folder in "${tests[@]}"; do
    run_tests "$folder" -L 'unit|trace|offscreen' -E '^WithoutMemory'
done
run_tests engine -R 'classic.*OnX11'
run_tests faults -R 'ReaderTest|ConfinedFilesTest'
make_report || failed=1
exit "$failed"
