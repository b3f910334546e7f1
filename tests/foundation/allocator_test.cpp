#include "foundation/platform.h"
#include "tests/foundation/ownLog.h"

#include <cstring>

namespace ravolt::test {
namespace {

TEST(Allocator, CountsCallsAndBytes) {
    const MemoryFigures before = memoryFigures();
    void *block = zlfMalloc(100);
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, 100);
    EXPECT_EQ(memoryFigures().allocations, before.allocations + 1);
    EXPECT_EQ(memoryFigures().releases, before.releases);
    EXPECT_EQ(memoryFigures().bytesRequested, before.bytesRequested + 100);
    zlfFree(block);
    EXPECT_EQ(memoryFigures().allocations, before.allocations + 1);
    EXPECT_EQ(memoryFigures().releases, before.releases + 1);
    EXPECT_EQ(memoryFigures().bytesRequested, before.bytesRequested + 100);
}

TEST(Allocator, CountsTheReleaseOfNull) {
    const MemoryFigures before = memoryFigures();
    zlfFree(nullptr);
    EXPECT_EQ(memoryFigures().releases, before.releases + 1);
    zlfFree(zlfMalloc(0));
    EXPECT_EQ(memoryFigures().allocations, before.allocations + 1);
    EXPECT_EQ(memoryFigures().releases, before.releases + 2);
}

TEST(Allocator, GivesNullWithoutMemoryButCountsTheCall) {
    const MemoryFigures before = memoryFigures();
    systemFaults.failMallocOf = 12345;
    EXPECT_EQ(zlfMalloc(12345), nullptr);
    systemFaults = {};
    EXPECT_EQ(memoryFigures().allocations, before.allocations + 1);
    EXPECT_EQ(memoryFigures().bytesRequested, before.bytesRequested + 12345);
}

TEST(Allocator, StillCountsAfterTheLogHasClosed) {
    zlfCloseLog();
    const MemoryFigures before = memoryFigures();
    zlfFree(zlfMalloc(10));
    EXPECT_EQ(memoryFigures().allocations, before.allocations + 1);
    EXPECT_EQ(memoryFigures().releases, before.releases + 1);
}

TEST(Allocator, MemoryThatTheSystemMerelyCachesIsNotInUse) {
    systemFaults.memoryInUse = 3 << 20;
    EXPECT_EQ(platform::physicalMemoryInUse(), 3u << 20);
    systemFaults.memoryUnknown = true;
    EXPECT_EQ(platform::physicalMemoryInUse(), 0u);
    systemFaults = {};
    EXPECT_GT(platform::physicalMemoryInUse(), 0u);
}

TEST(Allocator, RaisesThePeakAndNeverLowersIt) {
    const std::uint32_t high = 2'000'000'000 / 1024 * 1024;
    systemFaults.memoryInUse = high;
    zlfFree(zlfMalloc(1));
    EXPECT_GE(memoryFigures().peakPhysical, high);
    restartPeak();
    EXPECT_EQ(memoryFigures().peakPhysical, high);
    systemFaults.memoryInUse = 1024;
    zlfFree(zlfMalloc(1));
    EXPECT_EQ(memoryFigures().peakPhysical, high);
    restartPeak();
    EXPECT_EQ(memoryFigures().peakPhysical, 1024u);
    systemFaults = {};
}

} // namespace
} // namespace ravolt::test
