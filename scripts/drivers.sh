#!/usr/bin/env bash
# The tests with a real window and OpenGL context, on other drivers than the one that ./test.sh uses: Mesa's softpipe,
# and a driver that reports the extensions of a year and of those before it alone. A test that needs an extension which
# the driver lacks is skipped, with the reason; any failure fails. Prints how many passed and were skipped.
#
#   scripts/drivers.sh [CONDITION ...] [-- OPTION ...]    all conditions, options for ctest
#   scripts/drivers.sh --help
#
# The conditions are softpipe and these years, each the first with an extension that the engine detects:
#   1997  none                    2001  and shadow maps and occlusion queries
#   1998  multitexturing alone    2002  and programs
#   1999  and anisotropic filters 2003  and vertex buffers, textures of any size
# 2004, with float textures, has all of them: render targets need these.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh

conditions=()
while [ $# -gt 0 ]; do
    case $1 in
    --help | -h)
        sed -n '2,13s/^# \{0,1\}//p' "$0"
        exit 0
        ;;
    --)
        shift
        break
        ;;
    softpipe | [12][0-9][0-9][0-9]) conditions+=("$1") ;;
    *) fail "unknown condition $1; see scripts/drivers.sh --help" ;;
    esac
    shift
done
[ ${#conditions[@]} -gt 0 ] || conditions=(softpipe 1997 1998 1999 2001 2002 2003)

install_packages "${test_packages[@]}"
start_display
configure_and_build dev >build/drivers-build.log 2>&1 || { cat build/drivers-build.log; fail "the build failed"; }
export LIBGL_ALWAYS_SOFTWARE=1

# number_of RESULT FILE: the tests with that result, in the output of ctest.
number_of() { grep -cE "($1) +[0-9.]+ sec\$" "$2"; }

# run_condition CONDITION [OPTION ...]: the tests with the label `context`, but those of the packages and the house,
# which are about files, that of the tool's failing allocations, and those that run twice to miss the engine's caches.
run_condition() {
    local condition=$1 log=build/drivers-$1.log setting=MESA_EXTENSION_MAX_YEAR=$1
    shift
    [ "$condition" != softpipe ] || setting=GALLIUM_DRIVER=softpipe
    env "$setting" ctest --test-dir build/dev -L context -E 'cachesMiss|toolsWithoutMemory|\.(packages|house)(\.|$)' -j "$(nproc)" \
        --output-on-failure --no-tests=error "$@" >"$log" 2>&1
    local status=$?
    echo "$condition: $(number_of Passed "$log") passed, $(number_of '\*\*\*Skipped' "$log") skipped," \
        "$(number_of '\*\*\*(Failed|Timeout|Not Run|Exception.*)' "$log") failed"
    [ $status -eq 0 ] || sed -n '/The following tests FAILED/,$p' "$log"
    return $status
}

echo "$(date -u +%F), $(nproc) processors"
failed=0
for condition in "${conditions[@]}"; do
    run_condition "$condition" "$@" || failed=1
done
[ $failed -eq 0 ] || fail "there are failures: see build/drivers-*.log"
echo "drivers: ${#conditions[@]} conditions, no failure"
