// The writer of PNG files, which allocates all its memory by realloc, where there is none.

#include "testing/simulatedFailure.h"
#include "tools/stage/picture.h"

#include <gtest/gtest.h>
#include <new>

namespace {

ravolt::test::SimulatedFailure failure;

}

extern "C" {

void *__real_realloc(void *block, std::size_t bytes);

void *__wrap_realloc(void *block, std::size_t bytes) {
    return failure.occurs() ? nullptr : __real_realloc(block, bytes);
}
}

namespace {

using namespace ravolt::tool;

TEST(Png, ThrowsWhereverThereIsNoMemory) {
    std::vector<unsigned char> pixels;
    for (int i = 0; i < 64 * 48 * 3; ++i)
        pixels.push_back(static_cast<unsigned char>(i * 7919 >> 5));
    Picture picture;
    ASSERT_TRUE(picture.setPixels(64, 48, pixels));
    const std::vector<unsigned char> whole = encodePng(picture);
    unsigned int failures = 0;
    for (bool failed = true; failed && failures < 10000; failures += failed) {
        failure = {failures, 1};
        try {
            EXPECT_EQ(encodePng(picture), whole);
            failed = false;
        } catch (const std::bad_alloc &) {
        }
    }
    failure = {};
    EXPECT_GT(failures, 10u);
    EXPECT_LT(failures, 10000u);
}

} // namespace
