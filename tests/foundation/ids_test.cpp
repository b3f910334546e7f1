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

TEST_F(Ids, AreTheLowestFreeOnesWhateverComesAndGoes) {
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
    EXPECT_EQ(zlfNewId(), 0u);
    EXPECT_LOGGED_EXACTLY("zlfNewId: all ID are used\n");
    EXPECT_EQ(zlfNewId(), 0u);
    EXPECT_LOGGED_EXACTLY("zlfNewId: all ID are used\n");
    releaseId(65535);
    EXPECT_EQ(zlfNewId(), 65535u);
    releaseId(40000);
    EXPECT_EQ(zlfNewId(), 40000u);
    EXPECT_EQ(zlfNewId(), 0u);
}

TEST_F(Ids, RefuseAReleaseOutsideTheirRange) {
    releaseId(0);
    EXPECT_LOGGED_EXACTLY("releaseId: invalid params (0)\n");
    releaseId(65536);
    EXPECT_LOGGED_EXACTLY("releaseId: invalid params (65536)\n");
    releaseId(0xFFFFFFFFu);
    EXPECT_LOGGED_EXACTLY("releaseId: invalid params (-1)\n");
}

TEST_F(Ids, ReportASecondReleaseWithoutALineEnd) {
    releaseId(zlfNewId());
    releaseId(1);
    EXPECT_LOGGED_EXACTLY("releaseId: ID already released (1)");
    releaseId(65535);
    EXPECT_LOGGED_EXACTLY("releaseId: ID already released (65535)");
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Ids, AreAllFreeInANewLog) {
    zlfNewId();
    zlfNewId();
    zlfCloseLog();
    ASSERT_TRUE(zlfOpenLog("own.txt"));
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Ids, AreNotGivenWithoutALogAndAReleaseIsSafe) {
    zlfNewId();
    zlfCloseLog();
    EXPECT_EQ(zlfNewId(), 0u);
    releaseId(1);
    releaseId(0);
    releaseId(70000);
}

} // namespace
} // namespace ravolt::test
