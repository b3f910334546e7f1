#pragma once

// A log of the test's own, in place of the one that the library opens as it is loaded.

#include "foundation/services.h"
#include "ravolt/zlf.h"
#include "tests/foundation/systemFaults.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"

#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

namespace ravolt::test {

// zlfMalloc calls minus zlfFree calls.
inline int liveBlocks() {
    const MemoryFigures figures = memoryFigures();
    return static_cast<int>(figures.allocations - figures.releases);
}

// Makes liveBlocks() zero, whatever other tests have left.
inline void balanceBlocks() {
    while (liveBlocks() > 0)
        zlfFree(nullptr);
    systemFaults.failMallocOf = 1;
    while (liveBlocks() < 0)
        zlfMalloc(1);
    systemFaults.failMallocOf.reset();
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
        zlfCloseLog();
        zlfSetConsoleEcho(true);
    }
};

// "own.txt" is open, and what the expectations about the log read.
class OwnLog : public NoLog {
  protected:
    OwnLog() {
        zlfOpenLog("own.txt");
        readLogOf("own.txt");
    }
    ~OwnLog() override { readLogOf("ravolt_log.txt"); }
};

} // namespace ravolt::test
