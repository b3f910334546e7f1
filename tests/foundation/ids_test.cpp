// Identifiers of the objects.

#include "tests/foundation/ownLog.h"

#include <random>
#include <set>

namespace ravolt::test {
namespace {

using Ids = OwnLog;

TEST_F(Ids, StartAtOneAndTheLowestFreeOneComesFirst) {
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewId(), 3u);
    releaseId(1);
    EXPECT_EQ(zlfNewId(), 1u);
    releaseId(3);
    releaseId(2);
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewId(), 3u);
    EXPECT_EQ(zlfNewId(), 4u);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Ids, AreTheLowestFreeOnesWhateverIsReleased) {
    std::mt19937 random(1);
    std::set<unsigned int> taken;
    for (int step = 0; step < 20000; ++step) {
        if (random() % 5 < 3) {
            unsigned int lowest = 1;
            while (taken.count(lowest))
                ++lowest;
            ASSERT_EQ(zlfNewId(), lowest);
            taken.insert(lowest);
            if (taken.size() > 300)
                for (unsigned int id = 1; id <= 300; ++id)
                    if (taken.erase(id))
                        releaseId(id);
        } else if (!taken.empty()) {
            const auto one = std::next(taken.begin(), static_cast<long>(random() % taken.size()));
            releaseId(*one);
            taken.erase(one);
        }
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Ids, RunOutAfter65535) {
    for (unsigned int id = 1; id <= 65535; ++id)
        ASSERT_EQ(zlfNewId(), id);
    EXPECT_NOTHING_LOGGED();
    for (const unsigned int released : {65535u, 40000u}) {
        EXPECT_EQ(zlfNewId(), 0u);
        EXPECT_LOGGED_EXACTLY("zlfNewId: all ID are used\n");
        releaseId(released);
        EXPECT_EQ(zlfNewId(), released);
    }
    EXPECT_EQ(zlfNewId(), 0u);
}

// A second release is logged without the end of the line.
TEST_F(Ids, RefuseAnInvalidRelease) {
    releaseId(zlfNewId());
    const std::pair<unsigned int, const char *> rows[] = {
        {0, "releaseId: invalid params (0)\n"},
        {65536, "releaseId: invalid params (65536)\n"},
        {0xFFFFFFFFu, "releaseId: invalid params (-1)\n"},
        {1, "releaseId: ID already released (1)"},
        {65535, "releaseId: ID already released (65535)"}};
    for (const auto &[id, message] : rows) {
        releaseId(id);
        EXPECT_LOGGED_EXACTLY(message);
    }
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Ids, AreZeroWithoutALogAndAllFreeInANewOne) {
    zlfNewId();
    zlfNewId();
    zlfCloseLog();
    EXPECT_EQ(zlfNewId(), 0u);
    for (const unsigned int id : {1u, 0u, 70000u})
        releaseId(id);
    ASSERT_TRUE(zlfOpenLog("own.txt"));
    EXPECT_EQ(zlfNewId(), 1u);
}

} // namespace
} // namespace ravolt::test
