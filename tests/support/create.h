#pragma once

#include "testing/recorderState.h"

#include <new>

namespace ravolt::test {

// A new object in memory that is the application's, and is there in tests without memory, too; what
// the constructor allocates is the library's.
template <class T> T *create() {
    void *memory;
    {
        const ScopedUnrecorded application;
        memory = ::operator new(sizeof(T));
    }
    return new (memory) T;
}

} // namespace ravolt::test
