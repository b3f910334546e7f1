#!/usr/bin/env bash
# Runs the engine for a long time with everything on, and fails where memory, objects, identifiers or the
# time of a frame grow, or a picture differs under pressure on the video memory. Prints the figures that
# docs/reliability.md lists.
#
#   scripts/soak.sh [FRAMES]     frames with the simulated driver, a million by default
#   scripts/soak.sh --help
#
# A tenth of them runs with Mesa's software driver, without a display; with textures that exceed the video
# memory it is a thousandth.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh

case "${1:-}" in
--help | -h)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
*[!0-9]*) fail "needs a number of frames; see scripts/soak.sh --help" ;;
esac
frames=${1:-1000000}
mesa=$((frames / 10 > 300 ? frames / 10 : 300))
reloading=$((frames / 1000 > 300 ? frames / 1000 : 300))

install_packages "${test_packages[@]}"
configure_and_build dev -- ravolt_soak >build/soak-build.log 2>&1 ||
    { cat build/soak-build.log; fail "building the soak program failed"; }
program=$PWD/build/dev/tests/faults/ravolt_soak
compat=/usr/lib/$(cc -print-multiarch)/sdl12-compat

failed=0
# soak JOB N [silent], in a folder of its own.
soak() {
    tests/support/inOwnFolder.sh "$program" "$@" | grep -vE '^(\[Zenlor|-----|   Log file|$)'
    [ "${PIPESTATUS[0]}" -eq 0 ] || failed=1
}

echo "$(date -u +%F), $(nproc) processors"
soak frames "$frames" silent
soak starts 1000 silent
soak births 70000 silent
soak scenes 10000 silent
export LD_LIBRARY_PATH=$compat SDL_VIDEODRIVER=offscreen DISPLAY='' LIBGL_ALWAYS_SOFTWARE=1
soak frames "$mesa"
soak collector "$reloading"
[ $failed -eq 0 ] || fail "there are faults: see above"
