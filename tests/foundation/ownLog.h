#pragma once

// A log of the test's own, in place of the one that the library opens as it is loaded.

#include "foundation/services.h"
#include "ravolt/zlf.h"
#include "tests/foundation/systemFaults.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace ravolt::test {

inline std::string readFile(const std::string &name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::string &name, const std::string &bytes) {
    std::remove(name.c_str()); // some file systems are slow to overwrite
    std::ofstream(name, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
}

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

// "own.txt" is open.
class OwnLog : public NoLog {
  protected:
    OwnLog() {
        zlfOpenLog("own.txt");
        start = readFile("own.txt").size();
    }

    // What was logged since the start of the test, or since the last call.
    std::string logged() {
        const std::string text = readFile("own.txt").substr(start);
        start += text.size();
        return text;
    }

  private:
    std::size_t start;
};

} // namespace ravolt::test
