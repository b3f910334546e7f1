// The counting allocator.

#include "foundation/platform.h"
#include "tests/foundation/ownLog.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace ravolt::test {
namespace {

// The figures have changed by so much since `before`.
void expectCounted(const MemoryFigures &before, unsigned int allocations, unsigned int releases,
                   unsigned int bytes) {
    EXPECT_EQ(memoryFigures().allocations, before.allocations + allocations);
    EXPECT_EQ(memoryFigures().releases, before.releases + releases);
    EXPECT_EQ(memoryFigures().bytesRequested, before.bytesRequested + bytes);
}

TEST(Allocator, CountsCallsAndBytes) {
    const MemoryFigures before = memoryFigures();
    void *block = zlfMalloc(100);
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, 100);
    expectCounted(before, 1, 0, 100);
    zlfFree(block);
    expectCounted(before, 1, 1, 100);
    zlfFree(nullptr);
    expectCounted(before, 1, 2, 100);
    zlfFree(zlfMalloc(0));
    expectCounted(before, 2, 3, 100);
    EXPECT_EQ(withoutMemory(12345, [] { return zlfMalloc(12345); }), nullptr);
    expectCounted(before, 3, 3, 100 + 12345);
    zlfCloseLog();
    const MemoryFigures closed = memoryFigures();
    zlfFree(zlfMalloc(10));
    expectCounted(closed, 1, 1, 10);
}

TEST(Allocator, CachedMemoryOfTheSystemIsNotInUse) {
    systemFaults.memoryInUse = 3 << 20;
    EXPECT_EQ(platform::physicalMemoryInUse(), 3u << 20);
    systemFaults.memoryUnknown = true;
    EXPECT_EQ(platform::physicalMemoryInUse(), 0u);
    systemFaults = {};
    EXPECT_GT(platform::physicalMemoryInUse(), 0u);
}

TEST(Allocator, ImpossibleFiguresOfTheSystemCountAsNone) {
    for (const char *text :
         {"", "MemTotal: 100 kB\n", "MemAvailable: 50 kB\n",
          "MemTotal: 100 kB\nMemAvailable: 0 kB\n", "MemTotal: 100 kB\nMemAvailable: 101 kB\n"}) {
        systemFaults.memoryFigures = text;
        EXPECT_EQ(platform::physicalMemoryInUse(), 0u) << text;
    }
    systemFaults.memoryFigures = "MemTotal: 100 kB\nMemAvailable: 40 kB\n";
    EXPECT_EQ(platform::physicalMemoryInUse(), 60u * 1024);
    systemFaults = {};
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

// --- Cleared memory

// From every side of a page to every side of a page, where the system takes pages back and where
// not.
TEST(ClearedMemory, IsZeroAndNothingElse) {
    constexpr std::size_t page = 4096, all = 5 * page;
    std::vector<unsigned char> bytes(all + page);
    unsigned char *const start =
        bytes.data() + (page - reinterpret_cast<std::uintptr_t>(bytes.data()) % page) % page;
    for (const bool refused : {false, true})
        for (const std::size_t begin : {std::size_t{0}, std::size_t{1}, page - 1, page, page + 7})
            for (const std::size_t end :
                 {page + 8, 2 * page - 1, 2 * page, 3 * page + 1, all - 1}) {
                SCOPED_TRACE(testing::Message() << begin << " to " << end << ", " << refused);
                std::memset(start, 0xAA, all);
                systemFaults.adviceRefused = refused;
                platform::clear(start + begin, end - begin);
                systemFaults = {};
                EXPECT_EQ(std::count(start, start + all, 0xAA), all - (end - begin));
                EXPECT_EQ(std::count(start + begin, start + end, 0), end - begin);
            }
}

} // namespace
} // namespace ravolt::test
