// The pieces of code in docs/kit.md, run.

#include <ravolt.h>
#include <ravolt/kit.h>

#include <gtest/gtest.h>

namespace {

#include "samples.inc"

TEST(KitDocument, ALampFades) {
    ravolt::kit::SmoothedValue brightness(0, 4);
    const float first = fade(brightness, true, 0.1f);
    EXPECT_GT(first, 0);
    EXPECT_GT(fade(brightness, true, 0.1f), first);
    EXPECT_LT(fade(brightness, true, 0.1f), 1);
    EXPECT_LT(fade(brightness, false, 1), first);
}

} // namespace
