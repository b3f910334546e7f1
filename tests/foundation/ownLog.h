#pragma once

// A log of the test's own, instead of the one that the library opens when it is loaded.

#include "foundation/services.h"
#include "ravolt/zlf.h"
#include "tests/foundation/systemFaults.h"
#include "tests/support/clock.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

namespace ravolt::test {

// zlfMalloc calls minus zlfFree calls.
inline int liveBlocks() {
    const MemoryFigures figures = memoryFigures();
    return static_cast<int>(figures.allocations - figures.releases);
}

// The result of a step in which allocations of so many bytes and more fail.
template <class Step> auto withoutMemory(std::size_t bytes, Step step) {
    Recorder::instance().failAllocation(bytes);
    const auto result = step();
    Recorder::instance().allocationsWork();
    return result;
}

// Resets liveBlocks() to zero.
inline void balanceBlocks() {
    while (liveBlocks() > 0)
        zlfFree(nullptr);
    while (liveBlocks() < 0)
        withoutMemory(1, [] { return zlfMalloc(1); });
}

// No log is open, and nothing is echoed.
class NoLog : public testing::Test {
  protected:
    NoLog() {
        setenv("TZ", "UTC", 1);
        tzset();
        zlfCloseLog();
        zlfSetConsoleEcho(false);
    }
    ~NoLog() override {
        systemFaults = {};
        ownClock = {};
        zlfCloseLog();
        zlfSetConsoleEcho(true);
    }
};

// "own.txt" is open, and the expectations about the log read it.
class OwnLog : public NoLog {
  protected:
    OwnLog() {
        zlfOpenLog("own.txt");
        readLogOf("own.txt");
    }
    ~OwnLog() override { readLogOf("ravolt_log.txt"); }
};

} // namespace ravolt::test
