#include "tests/support/shortReads.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace ravolt::test {
bool ShortReads::active = false;
}

extern "C" {

std::size_t __real_fread(void *target, std::size_t size, std::size_t count, std::FILE *file);

std::size_t __wrap_fread(void *target, std::size_t size, std::size_t count, std::FILE *file) {
    const std::size_t missing = ravolt::test::ShortReads::active ? 1 : 0;
    return __real_fread(target, size, std::max(count, missing) - missing, file);
}
}
