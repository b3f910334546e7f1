#!/bin/sh
# abiFindsBreaks.sh SCRIPT COMPILER: the comparison of interfaces (scripts/abi.sh) accepts a library with
# additions and rejects those that programs of the release cannot run with.
script=$1 compiler=$2

fail() {
    echo "$*"
    exit 1
}

# build NAME [EDIT]: a library whose header is edited by sed.
build() {
    mkdir -p "$1/ravolt"
    echo '#include "ravolt/RVTHING.h"' >"$1/ravolt.h"
    sed "${2:-}" >"$1/ravolt/RVTHING.h" <<'END'
#pragma once
class __attribute__((visibility("default"))) RVTHING {
  public:
    virtual ~RVTHING();
    virtual bool render(void *data);
    int getSize() const;
    float getWeight() const;
  private:
    int size = 0;
};
END
    {
        echo '#include "ravolt.h"'
        echo 'RVTHING::~RVTHING() {}'
        echo 'bool RVTHING::render(void *) { return true; }'
        grep -q getSize "$1/ravolt/RVTHING.h" && echo 'int RVTHING::getSize() const { return size; }'
        grep -q getName "$1/ravolt/RVTHING.h" && echo 'const char *RVTHING::getName() const { return ""; }'
        grep -q update "$1/ravolt/RVTHING.h" && echo 'void RVTHING::update() {}'
        grep -q 'double getWeight' "$1/ravolt/RVTHING.h" && echo 'double RVTHING::getWeight() const { return 1; }'
        grep -q 'float getWeight' "$1/ravolt/RVTHING.h" && echo 'float RVTHING::getWeight() const { return 1; }'
    } >"$1/thing.cpp"
    "$compiler" -std=c++17 -O0 -g -shared -fPIC -fvisibility=hidden -Wl,-soname,libravolt.so.1 \
        "-I$1" "$1/thing.cpp" -o "$1/libravolt.so" || fail "$1 does not build"
}

build release
"$script" --renew release/libravolt.so baseline release || fail "the release cannot be described"

accepts() {
    build "$1" "$2"
    "$script" "$1/libravolt.so" baseline "$1" >"$1/output.txt" 2>&1 || fail "$1 is rejected: $(cat "$1/output.txt")"
}
rejects() {
    build "$1" "$2"
    "$script" "$1/libravolt.so" baseline "$1" >"$1/output.txt" 2>&1 && fail "$1 is accepted"
    grep -q 'would break' "$1/output.txt" || fail "$1 fails otherwise: $(cat "$1/output.txt")"
}
accepts same
accepts newMember 's/int getSize/const char *getName() const; &/'
rejects lostMember '/getSize/d'
rejects newField 's/int size/int length = 0; &/'
rejects newVirtual 's/virtual bool/virtual void update(); &/'
rejects otherResult 's/float getWeight/double getWeight/'
exit 0
