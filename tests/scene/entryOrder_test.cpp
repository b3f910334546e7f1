// The sort of the render list.

#include "scene/entryOrder.h"

#include "ravolt/RVELEMENT.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <random>
#include <vector>

using ravolt::orderedBits;

namespace {

using Limits = std::numeric_limits<float>;

std::uint64_t keyOf(const RVELEMENT &entry) { return entry.getParam1(); }

TEST(EntryOrder, OrderedBitsGrowWithTheNumber) {
    const float rising[] = {-Limits::infinity(), -Limits::max(), -1.5f,         -1.0f,
                            -Limits::min(),      -1e-40f,        0.0f,          1e-40f,
                            Limits::min(),       1.0f,           Limits::max(), Limits::infinity(),
                            Limits::quiet_NaN()};
    for (std::size_t index = 1; index < std::size(rising); ++index)
        EXPECT_LT(orderedBits(rising[index - 1]), orderedBits(rising[index])) << rising[index];
}

TEST(EntryOrder, EqualFloatsHaveEqualBits) {
    EXPECT_EQ(orderedBits(0.0f), orderedBits(-0.0f));
    EXPECT_EQ(orderedBits(Limits::quiet_NaN()), orderedBits(-Limits::quiet_NaN()));
    EXPECT_EQ(orderedBits(Limits::quiet_NaN()),
              orderedBits(std::bit_cast<float>(std::uint32_t{0xffc12345})));
}

TEST(EntryOrder, SortsStablyByKey) {
    std::mt19937 random(1);
    std::vector<RVELEMENT> storage(ravolt::maxRenderListEntries);
    std::vector<RVELEMENT *> entries;
    for (RVELEMENT &entry : storage) {
        entry.setParam1(static_cast<unsigned int>(random() % 50));
        entries.push_back(&entry);
    }
    std::vector<RVELEMENT *> expected = entries;
    std::stable_sort(expected.begin(), expected.end(),
                     [](RVELEMENT *a, RVELEMENT *b) { return keyOf(*a) < keyOf(*b); });
    ravolt::orderEntries(entries.data(), ravolt::maxRenderListEntries, keyOf);
    EXPECT_EQ(entries, expected);
}

TEST(EntryOrder, SortsOnlyTheFirstOnes) {
    RVELEMENT a, b, c;
    a.setParam1(2);
    b.setParam1(1);
    std::vector<RVELEMENT *> entries = {&a, &b, &c};
    for (const unsigned int count : {2u, 0u}) {
        ravolt::orderEntries(entries.data(), count, keyOf);
        EXPECT_EQ(entries, (std::vector<RVELEMENT *>{&b, &a, &c}));
    }
}

} // namespace
