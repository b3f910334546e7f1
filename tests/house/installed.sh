#!/bin/sh
# installed.sh BUILD SOURCE COMPILER: installs what BUILD holds into a place of its own, and builds
# and runs an application against it, and those of the README and of the guide's first page as they
# say, through the CMake package and through pkg-config.
build=$1 source=$2 application=$2/tests/house/installed compiler=$3
prefix=$PWD/prefix

fail() {
    echo "$*"
    exit 1
}

# The application ran: it left a log without a problem and without a leak.
check() {
    grep -F '[!]' ravolt_log.txt | grep -vE 'No VRam detected|not supported|not found' &&
        fail "$1: problems in its log"
    grep -q '^Final memory ratio: 0 ' ravolt_log.txt || fail "$1: it leaks"
    rm ravolt_log.txt
}

cmake --install "$build" --prefix "$prefix" >install.log 2>&1 || fail "$(cat install.log)"

# The documents with their pictures, so that their links are right, and all that a public header names.
diff -r "$source/docs" "$prefix/share/doc/ravolt" || fail "these documents are not installed"
for document in $(grep -hoE '[a-z]+\.md' "$prefix"/include/ravolt/*.h "$prefix"/include/ravolt/kit/*.h \
    "$prefix"/include/ravolt/testing/*.h | sort -u); do
    [ -f "$prefix/share/doc/ravolt/$document" ] || fail "a header names $document, which is not installed"
done
python3 "$source/tests/house/documents.py" --links "$prefix/share/doc/ravolt" ||
    fail "documents name others that are not installed"

# The default font, where the build has made one.
for file in "$build"/share/ravolt/*; do
    [ ! -e "$file" ] || cmp "$file" "$prefix/share/ravolt/$(basename "$file")" ||
        fail "$file is not installed"
done

cmake -S "$application" -B package "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_CXX_COMPILER=$compiler" \
    >package.log 2>&1 && cmake --build package >>package.log 2>&1 || fail "$(cat package.log)"
./package/application || fail "the application of the CMake package ends with $?"
check "CMake package"
./package/kit || fail "the kit of the CMake package ends with $?"
check "CMake package, kit"

# The tests of an application need no display and no GPU.
testing=$source/examples/testing
radar() {
    env -u SDL_VIDEODRIVER -u DISPLAY "$1" >radar.txt || fail "$1 ends with $?: $(cat radar.txt)"
    [ "$(grep -c '^passed' radar.txt)" -eq 4 ] || fail "$1 does not pass its four tests: $(cat radar.txt)"
}
cmake -S "$testing" -B testing "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_CXX_COMPILER=$compiler" \
    >testing.log 2>&1 && cmake --build testing >>testing.log 2>&1 || fail "$(cat testing.log)"
radar ./testing/radar_test

# The README's application looks for a scene that is not here, and so ends at once.
checkHello() {
    grep -q 'file not found @ RAVOLT::load' ravolt_log.txt || fail "$1: nothing was loaded"
    grep -q '^Final memory ratio: 0 ' ravolt_log.txt || fail "$1: it leaks"
    rm ravolt_log.txt
}

# The first application of the guide is built as the guide says.
python3 "$source/tests/house/readme.py" "$source" first docs/guide/firstWindow.md || fail "the guide has no application"
mv first/application.cpp first/first.cpp
cmake -S first -B firstPackage "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_CXX_COMPILER=$compiler" \
    >first.log 2>&1 && cmake --build firstPackage >>first.log 2>&1 || fail "$(cat first.log)"
[ -x firstPackage/first ] || fail "guide, CMake: no program"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name ravolt.pc)")
export PKG_CONFIG_PATH
libraries=$(pkg-config --variable=libdir ravolt) || fail "pkg-config does not know ravolt"
# No other package is needed for an application, that of the decoder least of all.
PKG_CONFIG_LIBDIR=$PKG_CONFIG_PATH pkg-config --cflags --libs ravolt >/dev/null ||
    fail "pkg-config asks for other packages"
# The application needs nothing newer than C++11.
"$compiler" -std=c++11 "$application/main.cpp" -o application \
    $(pkg-config --cflags --libs ravolt) "-Wl,-rpath,$libraries" || fail "pkg-config: it does not build"
./application || fail "the application of pkg-config ends with $?"
check "pkg-config"
"$compiler" -std=c++17 "$application/kit.cpp" -o kit \
    $(pkg-config --cflags --libs ravolt-kit) "-Wl,-rpath,$libraries" || fail "pkg-config: the kit does not build"
./kit || fail "the kit of pkg-config ends with $?"
check "pkg-config, kit"
# The engine's own calls are recorded wherever OpenGL is in the command.
"$compiler" -std=c++17 "$testing/radar_test.cpp" -lGL -o radar \
    $(pkg-config --cflags --libs ravolt-testing) "-Wl,-rpath,$libraries" || fail "pkg-config: no test builds"
radar ./radar

folder=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt") # lib, or lib/x86_64-linux-gnu
[ "$PKG_CONFIG_PATH" = "$prefix/$folder/pkgconfig" ] || fail "README: not the folder of ravolt.pc"
python3 "$source/tests/house/readme.py" "$source" hello || fail "the README has no application"
command=$(sed -n 's/^g++ \(.*hello.cpp .*\)$/\1/p' "$source/README.md")
[ -n "$command" ] || fail "the README has no command for g++"
(cd hello && eval "\"$compiler\" $command") || fail "README: it does not build"
./hello/hello || fail "README: ends with $?"
checkHello "README"
command=$(sed -n 's/^g++ \(.*first.cpp .*\) \\$/\1/p' "$source/docs/guide/firstWindow.md")
[ -n "$command" ] || fail "the guide has no command for g++"
(cd first && eval "\"$compiler\" $command") || fail "guide, pkg-config: it does not build"

objdump=$(command -v objdump) || exit 0
library=$(find "$prefix" -name 'libravolt.so' | head -n 1)
"$objdump" -p "$library" | grep -q 'SONAME *libravolt.so.1$' || fail "the library has no version"
"$objdump" -T "$library" | grep -q ' _ZN6ravolt' && fail "the library exports its inside"
exit 0
