// Reads the log file of the library and compares it with what a test expects.

#include "tests/support/logReader.h"

#include "ravolt/zlf.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

namespace ravolt::test {
namespace {

std::string logName = "ravolt_log.txt";

LogMark currentMark = 0;

std::string quoted(const std::string &text) { return testing::PrintToString(text); }

} // namespace

std::string logText() { return logTextSince(0); }

LogMark logMark() {
    std::ifstream file(logName, std::ios::binary | std::ios::ate);
    return file ? static_cast<LogMark>(file.tellg()) : 0;
}

LogMark markLog() { return currentMark = logMark(); }

void readLogOf(const std::string &fileName) {
    logName = fileName;
    markLog();
}

// Reads no more than needed: a test of bad input calls this thousands of times.
std::string logTextSince(LogMark mark) {
    std::ifstream file(logName, std::ios::binary);
    if (mark <= logMark())
        file.seekg(static_cast<std::streamoff>(mark));
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> linesSince(LogMark mark) {
    std::istringstream text(logTextSince(mark));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

std::vector<std::string> problemsSince(LogMark mark) {
    std::vector<std::string> lines = linesSince(mark);
    std::erase_if(lines, [](const auto &line) { return line.find("[!]") == std::string::npos; });
    return lines;
}

testing::AssertionResult logged(const std::string &line) {
    const auto lines = linesSince(currentMark);
    if (std::find(lines.begin(), lines.end(), line) != lines.end())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << quoted(line) << " is not in the log, which has\n"
                                       << logTextSince(currentMark);
}

testing::AssertionResult loggedTimes(const std::string &line, std::size_t times) {
    const auto lines = linesSince(currentMark);
    const auto number = static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    if (number == times)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << quoted(line) << " is in the log " << number << " times, not " << times << "; it has\n"
           << logTextSince(currentMark);
}

testing::AssertionResult loggedExactly(const std::string &text) {
    const std::string found = logTextSince(currentMark);
    markLog();
    if (found == text)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "logged " << quoted(found) << "\ninstead of " << quoted(text);
}

int finalMemoryRatio() {
    static const char before[] = "Final memory ratio: ";
    zlfCloseLog();
    const std::string text = logText();
    const auto at = text.rfind(before);
    int ratio = -9999;
    if (at != std::string::npos)
        std::sscanf(text.c_str() + at + std::strlen(before), "%d", &ratio);
    zlfOpenLog(logName.c_str());
    currentMark = 0;
    return ratio;
}

} // namespace ravolt::test
