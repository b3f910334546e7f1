#!/usr/bin/env bash
# Valgrind's memory checker over programs of all kinds, and over the readers with the inputs of fuzz/corpus. Fails on
# an error, and on memory that nothing refers to at the end, unless tests/support/valgrind.supp states the reason: that
# has the libraries below ours alone. Programs with a real driver draw with Mesa's softpipe, without a display.
#
#   scripts/valgrind.sh [NAME ...]     programs, or targets of the fuzzer; all without any
#   scripts/valgrind.sh --help
#
# The programs are: soak, starts, convert, info, check, terrain, frames, turntable, character.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh
root=$PWD

programs=(soak starts convert info check terrain frames turntable character)
mapfile -t targets < <(sed -n 's/^RV_FUZZ_TARGET(\(.*\))$/\1/p' fuzz/targets.inc)
case "${1:-}" in
--help | -h)
    sed -n '2,9s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
'') names=("${programs[@]}" "${targets[@]}") ;;
*) names=("$@") ;;
esac
require_known "${programs[*]} ${targets[*]}" "${names[@]}"

install_packages "${test_packages[@]}" valgrind
mkdir -p build
configure_and_build dev -- ravolt_soak ravolt_tool ravolt_fuzz_replay example_frames example_turntable \
    example_character >build/valgrind-build.log 2>&1 ||
    { cat build/valgrind-build.log; fail "building the programs failed"; }

bin=$root/build/dev/bin
models=/usr/share/assimp/models
folder=$(mktemp -d) || fail "no folder for temporary files"
trap 'rm -rf "$folder"' EXIT
compat=/usr/lib/$(cc -print-multiarch)/sdl12-compat
export LD_LIBRARY_PATH=$compat SDL_VIDEODRIVER=offscreen DISPLAY='' LIBGL_ALWAYS_SOFTWARE=1
export GALLIUM_DRIVER=softpipe DRAW_USE_LLVM=0 # no code that is compiled at run time
cd "$folder" || exit 1

# The scenes that the programs read, made without Valgrind.
"$bin/ravolt" convert "$models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf" -q -o truck.rve &&
    "$bin/ravolt" convert "$root/media/stage.obj" -q -o stage.rve &&
    "$bin/ravolt" convert "$models/X/Testwuson.X" --prefix Testwuson_ -q -o Testwuson.rve ||
    fail "the scenes were not made"

# The command of a program. The soak program also fails by times and memory, which are Valgrind's here.
command_of() {
    case $1 in
    soak) command=("$root/build/dev/tests/faults/ravolt_soak" frames 20 silent) ;;
    starts) command=("$root/build/dev/tests/faults/ravolt_soak" starts 20 silent) ;;
    convert) command=("$bin/ravolt" convert "$models/X/Testwuson.X" -q -o made.rve) ;;
    info) command=("$bin/ravolt" info Testwuson.rve) ;;
    check) command=("$bin/ravolt" check Testwuson.rve "$root/media/panel.xml") ;;
    terrain) command=("$bin/ravolt" terrain --island 7 --texture-size 64 --size 65 -q -o island) ;;
    frames) command=("$bin/frames" --draft --frames 2) ;;
    turntable) command=("$bin/turntable" --draft --frames 2 truck.rve) ;;
    character)
        command=("$bin/character" --draft --frames 2 stage.rve Testwuson.rve Testwuson.Wuson_Walk.rva)
        ;;
    *)
        [ -d "$root/fuzz/corpus/$1" ] || fail "unknown program $1; see scripts/valgrind.sh --help"
        command=("$root/build/dev/fuzz/ravolt_fuzz_replay" "$1" "$root/fuzz/corpus/$1")
        ;;
    esac
}

# total_of EXPRESSION FILE ...: the sum of the numbers that it captures, one in each file; or nothing.
total_of() {
    local expression=$1 number total=0
    shift
    local file
    for file in "$@"; do
        number=$(sed -n "s/.*$expression.*/\1/p" "$file" | tr -d ,)
        [ -n "$number" ] || { grep -q 'no leaks are possible' "$file" && number=0; } || return
        total=$((total + number))
    done
    echo "$total"
}

# check_program NAME: prints a row. Fails after a finding, and where Valgrind has not seen the end of a process. Some
# programs consist of several.
check_program() {
    local command errors lost status
    command_of "$1"
    valgrind --tool=memcheck --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
        --track-origins=yes --num-callers=30 --suppressions="$root/tests/support/valgrind.supp" \
        --log-file="$1.%p.log" "${command[@]}" >"$1.out" 2>&1
    status=$?
    errors=$(total_of 'ERROR SUMMARY: \([0-9,]*\) errors' "$1".*.log)
    lost=$(total_of 'definitely lost: \([0-9,]*\) bytes' "$1".*.log)
    echo "| $1 | ${errors:-unknown} | ${lost:-unknown} | $status |"
    [ "$errors" = 0 ] && [ "$lost" = 0 ] && [ $status -le 1 ] && return 0
    cat "$1.out" "$1".*.log
    return 1
}

echo "$(date -u +%F), $(valgrind --version)"
echo '| Program | Errors | Bytes definitely lost | Exit status |'
echo '|---|---|---|---|'
failed=0
for name in "${names[@]}"; do
    check_program "$name" || failed=1
done
[ $failed -eq 0 ] || fail "there are findings: see above"
echo "valgrind: ${#names[@]} programs and targets, no finding"
