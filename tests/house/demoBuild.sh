#!/bin/sh
# demoBuild.sh SOURCE COMPILER: the tool builds as ./demo.sh builds it, its sources in groups, without
# a warning: two sources of one group must not give one name to two things.
source=$1 compiler=$2

cmake --preset demo -S "$source" -B "$PWD/build" -DRAVOLT_STRICT=ON "-DCMAKE_CXX_COMPILER=$compiler" \
    >configure.log 2>&1 || {
    cat configure.log
    exit 1
}
cmake --build build --target ravolt_tool >build.log 2>&1 || {
    grep -A 4 'error' build.log
    exit 1
}
./build/bin/ravolt --version
