#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: those of the `dev` build in both settings
# (classic SDL 1.2 on a virtual screen, SDL 1.2 over SDL 2 without one), then those of the build
# with the address and undefined-behaviour sanitizers.
#
#   ./test.sh
#   ./test.sh --all       also the long ones: each allocation of the tool's commands, long runs of the
#                         engine, coverage, fuzzing (RAVOLT_FUZZ_SECONDS a target, 60 by default),
#                         other drivers, Valgrind, the memory sanitizer, static analysis
#   ./test.sh --help
set -uo pipefail
cd "$(dirname "$0")" || exit 1
source scripts/common.sh

long=
case "${1:-}" in
"") ;;
--all) long=yes ;;
--help | -h)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
*) fail "unknown option $1; see ./test.sh --help" ;;
esac

# The pictures are those of the software driver, also where there is a graphics card.
export LIBGL_ALWAYS_SOFTWARE=1
# Leaks and errors of the libraries behind ours, each with its reason.
export LSAN_OPTIONS="suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0"
# The leak checker follows thread-local storage that a driver's thread may give back meanwhile, and
# crashes then; without that interception it does not.
export ASAN_OPTIONS="detect_leaks=1:detect_stack_use_after_return=1:intercept_tls_get_addr=0"
export UBSAN_OPTIONS="print_stacktrace=1"

summary=()
failures=0

# run_tests PRESET [option of ctest ...]
run_tests() {
    local preset=$1 log="build/$1/ctest.log"
    shift
    echo
    echo "Tests of build/$preset"
    if ! ctest --test-dir "build/$preset" --output-on-failure --no-tests=error -j "$(nproc)" \
        "$@" 2>&1 | tee "$log"; then
        failures=$((failures + 1))
    fi
    summary+=("$preset: $(grep -E 'tests passed' "$log" || echo 'no summary: the runner failed')")
    summary+=("$preset: $(grep -E '^Total Test time' "$log")")
}

install_packages "${test_packages[@]}"
start_display
configure_and_build dev
run_tests dev
configure_and_build asan -DRAVOLT_TOOLS=OFF -DRAVOLT_EXAMPLES=OFF
run_tests asan -L 'unit|trace|offscreen'

# run_long NAME COMMAND ...: a test that takes long, with its output in build/NAME.log.
run_long() {
    local name=$1 log="build/$1.log"
    shift
    echo
    echo "Long test: $name"
    if ! "$@" 2>&1 | tee "$log"; then
        failures=$((failures + 1))
    fi
    summary+=("$name: $(tail -n 1 "$log")")
}
if [ -n "$long" ]; then
    run_long soak scripts/soak.sh "${RAVOLT_SOAK_FRAMES:-1000000}"
    for kind in files window; do
        run_long "toolsWithoutMemory-$kind" python3 tests/faults/toolsWithoutMemory.py \
            "$PWD/build/dev/bin/ravolt" \
            "$PWD/build/dev/tests/faults/libravolt_toolsWithoutMemory_shim.so" "$kind" 7
    done
    run_long coverage scripts/coverage.sh
    run_long fuzz scripts/fuzz.sh "${RAVOLT_FUZZ_SECONDS:-60}"
    run_long drivers scripts/drivers.sh
    run_long valgrind scripts/valgrind.sh
    run_long msan scripts/msan.sh
    run_long analyse scripts/analyse.sh
fi

echo
printf '%s\n' "${summary[@]}"
if [ "$failures" -ne 0 ]; then
    fail "tests failed: they are named above with their output. Again, alone:
  ctest --test-dir build/dev --rerun-failed --output-on-failure   (needs DISPLAY)
A picture that looks different lies, with the expected one and the difference, in the folder that
the test's output names."
fi
