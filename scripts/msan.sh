#!/usr/bin/env bash
# The memory sanitizer over the readers, which finds reads of memory that nothing has written: every target of the
# fuzzer, in front of the simulated driver, with the inputs of fuzz/corpus. The engine is compiled with it, and so are
# TinyXML and libmpeg2, from Debian's sources, and the templates of the standard library. No function of SDL and OpenGL
# is called.
#
#   scripts/msan.sh [TARGET ...]     all targets without any
#   scripts/msan.sh --help
#
# RAVOLT_FUZZ_CORPUS names a folder with further inputs, TARGET/*, as scripts/fuzz.sh keeps them.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh
root=$PWD

case "${1:-}" in
--help | -h)
    sed -n '2,10s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
mapfile -t targets < <(sed -n 's/^RV_FUZZ_TARGET(\(.*\))$/\1/p' fuzz/targets.inc)
require_known "${targets[*]}" "$@"
[ $# -eq 0 ] || targets=("$@")

libraries=$root/build/msan-libraries
instrumented=(-fsanitize=memory -fsanitize-memory-track-origins -fno-omit-frame-pointer -g1 -O1 -w)

# The sources of Debian's packages, by lists of their own: those of the system may name no sources.
fetch_sources() {
    local lists=$libraries/lists keyring=/usr/share/keyrings/debian-archive-keyring.gpg release
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    mkdir -p "$lists/partial"
    echo "deb-src [signed-by=$keyring] http://deb.debian.org/debian $release main" >"$libraries/sources.list"
    local options=(-qq -o Dir::Etc::sourcelist="$libraries/sources.list" -o Dir::Etc::sourceparts=-
        -o Dir::State::lists="$lists")
    apt-get "${options[@]}" update && apt-get "${options[@]}" source tinyxml &&
        apt-get "${options[@]}" source --tar-only mpeg2dec && tar -xzf mpeg2dec_*.orig.tar.gz
}

# write_pkg_config NAME LIBRARY VERSION HEADERS
write_pkg_config() {
    printf 'Name: %s\nDescription: with the memory sanitizer\nVersion: %s\nLibs: -L%s -l%s\nCflags: -I%s\n' \
        "$1" "$3" "$libraries" "$2" "$4" >"$libraries/$1.pc"
}

# Of libmpeg2 the parts in C alone: the sanitizer does not see what assembler writes.
build_libraries() {
    fetch_sources || return 1
    local xml mpeg source objects=()
    xml=$(echo "$libraries"/tinyxml-*/) mpeg=$(echo "$libraries"/libmpeg2-*/)
    for source in tinyxml tinyxmlparser tinyxmlerror tinystr; do
        clang++ "${instrumented[@]}" -isystem "$root/fuzz/msan" -DTIXML_USE_STL -c "$xml/$source.cpp" \
            -o "$source.o" || return 1
        objects+=("$source.o")
    done
    ar rcs libtinyxml.a "${objects[@]}" && write_pkg_config tinyxml tinyxml 2.6.2 /usr/include || return 1
    objects=()
    : >"$mpeg/include/config.h"
    for source in alloc header decode slice motion_comp idct cpu_accel cpu_state convert/rgb convert/uyvy; do
        clang "${instrumented[@]}" -I"$mpeg/include" -I"$mpeg/libmpeg2" -c "$mpeg/libmpeg2/$source.c" \
            -o "$(basename "$source").o" || return 1
        objects+=("$(basename "$source").o")
    done
    ar rcs libmpeg2.a "${objects[@]}"
    local name
    for name in libmpeg2 libmpeg2convert; do
        write_pkg_config "$name" mpeg2 0.5.1 /usr/include/mpeg2dec
    done
    touch complete
}

install_packages "${demo_packages[@]}" ccache clang dpkg-dev
mkdir -p "$libraries"
if [ ! -e "$libraries/complete" ]; then
    (cd "$libraries" && build_libraries) >"$libraries/build.log" 2>&1 ||
        { cat "$libraries/build.log"; fail "building TinyXML and libmpeg2 failed"; }
fi
configure_and_build msan -- ravolt_fuzz_replay >build/msan-build.log 2>&1 ||
    { cat build/msan-build.log; fail "building the replay failed"; }
program=$root/build/msan/fuzz/ravolt_fuzz_replay

# replay TARGET FOLDER
replay() {
    tests/support/inOwnFolder.sh "$program" "$1" "$2" >build/msan.log 2>&1 ||
        { tail -n 60 build/msan.log; return 1; }
    echo "$1: $(tail -n 1 build/msan.log) of $2"
}

failed=0
for target in "${targets[@]}"; do
    replay "$target" "$root/fuzz/corpus/$target" || failed=1
    further=${RAVOLT_FUZZ_CORPUS:+$RAVOLT_FUZZ_CORPUS/$target}
    [ -z "$further" ] || [ ! -d "$further" ] || replay "$target" "$(realpath "$further")" || failed=1
done
[ $failed -eq 0 ] || fail "there are findings: see above"
echo "msan: ${#targets[@]} targets, no finding"
