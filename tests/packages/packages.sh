#!/bin/sh
# packages.sh BUILD COMPILER FRAMES: packs what BUILD holds, and checks the packages: two runs write the same
# bytes, lintian finds no fault, examples/game.cpp builds against the unpacked packages through CMake and
# through pkg-config and runs for some frames with files that the packages' program makes, and installing
# the packages and purging them leaves nothing.
build=$1 compiler=$2 frames=$3
scripts=$(dirname "$0")
sources=$(cd "$scripts/../.." && pwd)
game=$sources/examples/game.cpp

fail() {
    echo "$*"
    exit 1
}

# Packs into a folder.
pack() {
    (cd "$build" && cpack -B "$1") >pack.log 2>&1 || fail "$(cat pack.log)"
}
pack "$PWD/packages"
pack "$PWD/again"
number=0
for package in packages/*.deb; do
    cmp "$package" "again/$(basename "$package")" || fail "$package is not reproducible"
    number=$((number + 1))
done
[ $number -eq 3 ] || fail "$number packages instead of 3"

# What lintian does not compare: the version is that of the changelog, the program needs this library,
# and the linker's cache is brought up to date by the trigger, not by scripts.
mkdir root
for package in packages/*.deb; do
    dpkg-deb -x "$package" root
    changelog=root/usr/share/doc/$(dpkg-deb -f "$package" Package)/changelog.Debian.gz
    version=$(gzip -dc "$changelog" | sed -n '1s/.*(\(.*\)).*/\1/p')
    [ "$(dpkg-deb -f "$package" Version)" = "$version" ] || fail "$package is not version $version"
done
for package in libravolt-dev ravolt-tools; do
    dpkg-deb -f packages/${package}_*.deb Depends | grep -q "libravolt1 (= $version)" ||
        fail "$package does not depend on its library"
done
dpkg-deb -f packages/libravolt1_*.deb Depends | grep -q 'libsdl1.2debian' ||
    fail "the library does not depend on SDL"
dpkg-deb -I packages/libravolt1_*.deb triggers | grep -q '^activate-noawait ldconfig$' ||
    fail "no trigger for ldconfig"
dpkg-deb -I packages/libravolt1_*.deb shlibs | grep -q '^libravolt 1 libravolt1 ' || fail "no shlibs"
dpkg-deb -I packages/libravolt1_*.deb postinst >/dev/null 2>&1 && fail "a script runs"

# The guide is installed with its pictures; the longer texts are compressed.
documents=root/usr/share/doc/libravolt-dev
[ -f "$documents/pictures/guide/world.jpg" ] || fail "no picture of the guide is installed"
gzip -dc "$documents/kit.md.gz" | cmp - "$sources/docs/kit.md" || fail "the page of the kit is not installed"
[ "$(ls $documents/guide | wc -l)" -eq "$(ls "$sources/docs/guide" | wc -l)" ] || fail "pages of the guide are missing"
[ -z "$(find $documents -name '*.md' -size +4095c)" ] || fail "long texts are not compressed"
[ -f root/usr/share/doc/ravolt/additions.md.gz ] || fail "the folder that the headers name is missing"

lintian --allow-root --fail-on error,warning packages/*.deb || fail "lintian finds faults"

libraries=$(dirname "$(find "$PWD/root" -name 'libravolt.so.1')")
python3 "$sources/tests/house/hardening.py" root/usr/include "$libraries/libravolt.so.1" root/usr/bin/ravolt ||
    fail "a file is not protected"
[ "$(basename "$libraries")" != lib ] || fail "the library is in no folder of its architecture"
runInstalled() {
    LD_LIBRARY_PATH=$libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} timeout -s KILL 120 "$@"
}

objdump -p root/usr/bin/ravolt | grep -E 'R(UN)?PATH' && fail "the program has a path of libraries"
runInstalled "$sources/scripts/makeGame.sh" root/usr/bin/ravolt 64 >tool.txt 2>&1 || fail "$(cat tool.txt)"

# The program leaves a log without a problem and without a leak.
play() {
    runInstalled "$1" "$frames" >output.txt 2>&1 || fail "$1 ends with $?: $(cat output.txt)"
    grep -F '[!]' ravolt_log.txt | grep -vF -e 'No VRam detected' -e 'normal map not found' &&
        fail "$1: problems in its log"
    grep -q '^Final memory ratio: 0 ' ravolt_log.txt || fail "$1 leaks"
    rm ravolt_log.txt
}
cmake -S "$scripts/game" -B cmake "-DGAME=$game" "-DCMAKE_PREFIX_PATH=$PWD/root/usr" \
    "-DCMAKE_CXX_COMPILER=$compiler" >cmake.log 2>&1 && cmake --build cmake >>cmake.log 2>&1 ||
    fail "$(cat cmake.log)"
play ./cmake/game

PKG_CONFIG_PATH=$libraries/pkgconfig
export PKG_CONFIG_PATH
"$compiler" -std=c++17 "$game" -o game $(pkg-config --cflags --libs ravolt-kit sdl) ||
    fail "pkg-config: the game does not build"
play ./game

# dpkg itself, in an empty root with a database of its own.
mkdir -p empty database/info database/updates
: >database/status
fakeroot=
[ "$(id -u)" -eq 0 ] || fakeroot=fakeroot
dpkgInRoot() {
    PATH=$PATH:/usr/sbin:/sbin $fakeroot dpkg "--root=$PWD/empty" "--admindir=$PWD/database" \
        --log=dpkg.log --force-depends --no-triggers "$@" >>dpkg.txt 2>&1 || fail "$(cat dpkg.txt)"
}
dpkgInRoot --install packages/*.deb
[ -x empty/usr/bin/ravolt ] || fail "nothing was installed"
dpkgInRoot --purge libravolt1 libravolt-dev ravolt-tools
remaining=$(find empty -mindepth 1)
[ -z "$remaining" ] || fail "remains after the purge: $remaining"
