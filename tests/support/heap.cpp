// The wrapped functions of the heap, which fail where a test has set it.

#include "tests/support/heap.h"

#include <new>

namespace ravolt::test {
constinit Heap heap;
}

using ravolt::test::heap;

extern "C" {

void *__real_malloc(std::size_t bytes);
void *__real_calloc(std::size_t number, std::size_t bytes);
void *__real_realloc(void *block, std::size_t bytes);
void *__real__Znwm(std::size_t bytes);
void *__real__Znam(std::size_t bytes);
void *__real__ZnwmRKSt9nothrow_t(std::size_t bytes, const std::nothrow_t &);
void *__real__ZnamRKSt9nothrow_t(std::size_t bytes, const std::nothrow_t &);

void *__wrap_malloc(std::size_t bytes) {
    if (!heap.fails(bytes))
        return __real_malloc(bytes);
    ++heap.failedMallocs;
    return nullptr;
}

void *__wrap_calloc(std::size_t number, std::size_t bytes) {
    return heap.fails(number * bytes) ? nullptr : __real_calloc(number, bytes);
}

void *__wrap_realloc(void *block, std::size_t bytes) {
    return heap.fails(bytes) ? nullptr : __real_realloc(block, bytes);
}

void *__wrap__Znwm(std::size_t bytes) {
    if (heap.fails(bytes))
        throw std::bad_alloc();
    return __real__Znwm(bytes);
}

void *__wrap__Znam(std::size_t bytes) {
    if (heap.fails(bytes))
        throw std::bad_alloc();
    return __real__Znam(bytes);
}

void *__wrap__ZnwmRKSt9nothrow_t(std::size_t bytes, const std::nothrow_t &tag) {
    return heap.fails(bytes) ? nullptr : __real__ZnwmRKSt9nothrow_t(bytes, tag);
}

void *__wrap__ZnamRKSt9nothrow_t(std::size_t bytes, const std::nothrow_t &tag) {
    return heap.fails(bytes) ? nullptr : __real__ZnamRKSt9nothrow_t(bytes, tag);
}
}
