#!/usr/bin/env bash
# Builds the preset `coverage`, runs the tests that need no X server, and prints how much of the
# library they run: lines and branches, file by file and in all.
#
#   scripts/coverage.sh [number of jobs]
#   scripts/coverage.sh --help
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh

case "${1:-}" in
--help | -h)
    sed -n '2,6s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
jobs=${1:-$(nproc)}
build=build/coverage

install_packages "${test_packages[@]}" gcovr
export LIBGL_ALWAYS_SOFTWARE=1

mkdir -p "$build"
cmake --preset coverage -DRAVOLT_TOOLS=OFF -DRAVOLT_EXAMPLES=OFF >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; fail "cmake failed; delete $build and try again"; }
cmake --build "$build" --parallel "$jobs" || fail "building failed; the first error stands above"
find "$build" -name '*.gcda' -delete # what earlier runs counted
ctest --test-dir "$build" -L 'unit|trace|offscreen' -j "$jobs" --output-on-failure \
    --no-tests=error || failed=1

folders=()
for folder in foundation math engine scene resources models effects gui video; do
    folders+=(--filter "$folder/")
done
gcovr --root . --object-directory "$build" "${folders[@]}" "$build" >"$build/lines.txt"
# Branches without those of exceptions, which stand at every call.
gcovr --root . --object-directory "$build" "${folders[@]}" --exclude-throw-branches --branches \
    "$build" >"$build/branches.txt"
cat "$build/branches.txt"
echo "Lines, then branches (by file in $build/lines.txt and $build/branches.txt):"
tail -qn 2 "$build/lines.txt" "$build/branches.txt" | grep TOTAL
exit "${failed:-0}"
