// Reading the log since a mark, and reopening it.

#include "tests/support/logReader.h"

#include "ravolt/zlf.h"

#include <cstring>

using namespace ravolt::test;

namespace {

TEST(logReader, ReadsWhatWasLoggedSinceTheMark) {
    zlfLog("before\n");
    markLog();
    EXPECT_NOTHING_LOGGED();
    zlfLog("   [!] one (%d)\n", 1);
    zlfLog("two\nthree");
    EXPECT_EQ(linesSince(0).back(), "three");
    EXPECT_LOGGED("   [!] one (1)");
    EXPECT_LOGGED("three");
    EXPECT_NOT_LOGGED("before");
    EXPECT_FALSE(logged("[!] one (1)")) << "a part of a line";
    EXPECT_LOGGED_TIMES(1, "two");
    EXPECT_FALSE(loggedTimes("two", 2));
    EXPECT_LOGGED_EXACTLY("   [!] one (1)\ntwo\nthree");
    EXPECT_EQ(problemsSince(0), std::vector<std::string>{"   [!] one (1)"});
}

TEST(logReader, AnExactExpectationMovesTheMarkToTheEnd) {
    markLog();
    zlfLog("one\n");
    EXPECT_LOGGED_EXACTLY("one\n");
    EXPECT_NOTHING_LOGGED();
    zlfLog("two\n");
    EXPECT_FALSE(loggedExactly("one\n"));
    zlfLog("three\n");
    EXPECT_LOGGED_EXACTLY("three\n");
}

TEST(logReader, FinalMemoryRatioReopensTheLog) {
    zlfLog("old\n");
    const int before = finalMemoryRatio();
    EXPECT_EQ(logText().find("old"), std::string::npos);
    void *block = zlfMalloc(8);
    EXPECT_EQ(finalMemoryRatio(), before + 1);
    zlfFree(block);
    EXPECT_EQ(finalMemoryRatio(), before);
    EXPECT_TRUE(zlfLog("new\n"));
    EXPECT_LOGGED("new");
}

} // namespace
