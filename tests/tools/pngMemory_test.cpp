// The writer of PNG files, which takes all its memory by realloc, where there is none.

#include "tools/stage/picture.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {

int callsUntilFailure = 0; // 0: none fails

} // namespace

extern "C" {

void *__real_realloc(void *block, std::size_t bytes);

void *__wrap_realloc(void *block, std::size_t bytes) {
    if (callsUntilFailure > 0 && --callsUntilFailure == 0)
        return nullptr;
    return __real_realloc(block, bytes);
}
}

namespace {

using namespace ravolt::tool;

TEST(Png, ThrowsWhereverThereIsNoMemory) {
    Picture picture;
    picture.width = 64;
    picture.height = 48;
    for (int i = 0; i < 64 * 48 * 3; ++i)
        picture.pixels.push_back(static_cast<unsigned char>(i * 7919 >> 5));
    const std::vector<unsigned char> whole = encodePng(picture);
    int failures = 0;
    for (int number = 1; number < 10000; ++number) {
        callsUntilFailure = number;
        try {
            EXPECT_EQ(encodePng(picture), whole);
            break;
        } catch (const std::bad_alloc &) {
            ++failures;
        }
    }
    callsUntilFailure = 0;
    EXPECT_GT(failures, 10);
}

} // namespace
