#pragma once

// Reads the log that the library writes into the folder where the program runs. Needs no context.
//
//     markLog();
//     EXPECT_FALSE(settings.load(nullptr));
//     EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSETTINGS::load\n");
//     EXPECT_TRUE(settings.load("settings.txt"));
//     EXPECT_NOTHING_LOGGED();

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

// A position in the log: its length in bytes at that time.
using LogMark = std::size_t;

LogMark logMark();
// Everything since `mark`. A log that has been reopened since is read from its start.
std::string logTextSince(LogMark mark);
std::string logText();
// The lines without their line ends. Text after the last line end is a line too.
std::vector<std::string> linesSince(LogMark mark);
// Those of them that report a problem: they contain "[!]".
std::vector<std::string> problemsSince(LogMark mark);

// The mark from which the expectations below read: set by the engine's fixtures before each test
// body, and by this call.
LogMark markLog();
// Reads this log from now on, with the mark at its end.
void readLogOf(const std::string &fileName);

// The log since the mark contains the line (without its line end); exactly `times` times.
testing::AssertionResult logged(const std::string &line);
testing::AssertionResult loggedTimes(const std::string &line, std::size_t times);
// The log since the mark is this text, byte for byte, line ends included. The mark moves to its
// end, where the next expectation starts.
testing::AssertionResult loggedExactly(const std::string &text);

// Closes the log, reads "Final memory ratio: N" in it, and reopens it empty with the same name.
// Requires that no object of the engine is alive: closing resets the identifiers. -9999 if the line
// is missing.
int finalMemoryRatio();

} // namespace ravolt::test

#define EXPECT_LOGGED(line) EXPECT_TRUE(ravolt::test::logged(line))
#define ASSERT_LOGGED(line) ASSERT_TRUE(ravolt::test::logged(line))
#define EXPECT_LOGGED_TIMES(times, line) EXPECT_TRUE(ravolt::test::loggedTimes(line, times))
#define EXPECT_NOT_LOGGED(line) EXPECT_TRUE(ravolt::test::loggedTimes(line, 0))
#define EXPECT_LOGGED_EXACTLY(text) EXPECT_TRUE(ravolt::test::loggedExactly(text))
#define EXPECT_NOTHING_LOGGED() EXPECT_TRUE(ravolt::test::loggedExactly(""))
