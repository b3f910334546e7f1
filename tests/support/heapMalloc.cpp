// Apart from the other functions of the heap, so that a test program may bring its own malloc.

#include "tests/support/heap.h"

extern "C" {

void *__real_malloc(std::size_t bytes);

void *__wrap_malloc(std::size_t bytes) {
    if (!ravolt::test::heap.refuses(bytes))
        return __real_malloc(bytes);
    ++ravolt::test::heap.refusedBlocks;
    return nullptr;
}
}
