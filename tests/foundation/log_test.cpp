#include "tests/foundation/ownLog.h"

#include "foundation/text.h"

#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ravolt::test {
namespace {

using Log = NoLog;

const std::string dashes = "-------------------------------------------------------\n";

// 5 March 2024, 7:08:09.004 UTC
constexpr std::int64_t someTime = 1'709'622'489'004'000'000;

std::string format(const char *text, auto... arguments) {
    char buffer[512];
    formatText(buffer, text, arguments...);
    return buffer;
}

// Between CaptureStdout and the end of its life, all that goes to standard output.
std::string echoOf(auto function) {
    testing::internal::CaptureStdout();
    zlfSetConsoleEcho(true);
    function();
    zlfSetConsoleEcho(false);
    return testing::internal::GetCapturedStdout();
}

// The open files that a program started by this one would have too.
std::vector<int> inheritedFiles() {
    std::vector<int> found;
    for (int file = 0; file < 256; ++file)
        if (const int flags = fcntl(file, F_GETFD); flags >= 0 && !(flags & FD_CLOEXEC))
            found.push_back(file);
    return found;
}

TEST_F(Log, IsCompleteFromHeaderToStatistics) {
    systemFaults.realTime = someTime;
    systemFaults.memoryInUse = 5 * 1024 * 1024;
    const MemoryFigures before = memoryFigures();

    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_TRUE(zlfLog("   %d and %s\n", 7, "seven"));
    zlfFree(zlfMalloc(1000));
    void *kept = zlfMalloc(24);
    systemFaults.realTime = someTime + 61'996'000'000;
    EXPECT_TRUE(zlfCloseLog());

    const unsigned int allocations = before.allocations + 3, releases = before.releases + 2;
    const unsigned int requested = before.bytesRequested + 262144 + 1000 + 24;
    EXPECT_EQ(readText("log.txt"),
              "[Zenlor foundation 0.4 started at 5/3/2024 7:8:9.4]\n" + dashes + "\n" +
                  "   7 and seven\n"
                  "\n" +
                  dashes +
                  format("Final memory ratio: %d (%u/%u)\n",
                         static_cast<int>(allocations - releases), allocations, releases) +
                  "Max. physical memory usage: 5.00 mb (5242880 bytes)\n" +
                  format("Total allocated memory (zlfMalloc): %.2f mb (%u bytes)\n",
                         requested / 1048576.0, requested) +
                  "[Zenlor foundation 0.4 terminated at 5/3/2024 7:9:11.0]\n");
    zlfFree(kept);
}

TEST_F(Log, ABalancedProgramHasARatioOfZero) {
    balanceBlocks();
    const unsigned int allocations = memoryFigures().allocations;
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    zlfFree(zlfMalloc(10));
    zlfCloseLog();
    EXPECT_NE(readText("log.txt").find(
                  format("Final memory ratio: 0 (%u/%u)\n", allocations + 2, allocations + 2)),
              std::string::npos);
}

TEST_F(Log, ThePeakIsTheHighestFigureSinceTheOpening) {
    systemFaults.memoryInUse = 90 * 1024 * 1024; // forgotten at the opening
    zlfFree(zlfMalloc(1));
    systemFaults.memoryInUse = 2 * 1024 * 1024;
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    systemFaults.memoryInUse = 3 * 1024 * 1024 + 512 * 1024;
    zlfFree(zlfMalloc(1));
    systemFaults.memoryInUse = 1024;
    zlfFree(zlfMalloc(1));
    zlfCloseLog();
    EXPECT_NE(readText("log.txt").find("Max. physical memory usage: 3.50 mb (3670016 bytes)\n"),
              std::string::npos);
}

TEST_F(Log, AFigureThatDoesNotFitIsTheLargestThatDoes) {
    systemFaults.memoryInUse = std::uint64_t{100} << 30;
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    zlfCloseLog();
    EXPECT_NE(
        readText("log.txt").find("Max. physical memory usage: 2048.00 mb (2147483647 bytes)\n"),
        std::string::npos);
}

TEST_F(Log, WithoutAFigureOfTheSystemThePeakIsZero) {
    systemFaults.memoryUnknown = true;
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    zlfCloseLog();
    EXPECT_NE(readText("log.txt").find("Max. physical memory usage: 0.00 mb (0 bytes)\n"),
              std::string::npos);
}

TEST_F(Log, OpeningReplacesAnOldFile) {
    writeFile("log.txt", "old");
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(readText("log.txt").find("old"), std::string::npos);
}

TEST_F(Log, ASecondOpeningFailsAndLeavesTheFirstFileOpen) {
    ASSERT_TRUE(zlfOpenLog("first.txt"));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_FALSE(zlfOpenLog("second.txt"));
    EXPECT_FALSE(zlfFileExists("second.txt"));
    EXPECT_TRUE(zlfLog("still here\n"));
    EXPECT_NE(readText("first.txt").find("\nstill here\n"), std::string::npos);
    EXPECT_EQ(zlfNewId(), 2u);
}

TEST_F(Log, AnOpeningWithoutANameMakesTheTablesAlone) {
    EXPECT_TRUE(zlfOpenLog(nullptr));
    EXPECT_FALSE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
    const int live = liveBlocks();
    EXPECT_TRUE(zlfCloseLog());
    EXPECT_EQ(liveBlocks(), live - 1);
    EXPECT_EQ(zlfNewId(), 0u);
}

TEST_F(Log, AnOpeningWithoutANameInAnOpenLogFailsAndChangesNothing) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
    const std::string text = readText("log.txt");
    const int live = liveBlocks();
    EXPECT_FALSE(zlfOpenLog(nullptr));
    EXPECT_EQ(liveBlocks(), live);
    EXPECT_EQ(readText("log.txt"), text);
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewTimer(1.0f), 1);
}

TEST_F(Log, ASecondOpeningWithoutANameFailsAndKeepsTheTables) {
    ASSERT_TRUE(zlfOpenLog(nullptr));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
    const int live = liveBlocks();
    EXPECT_FALSE(zlfOpenLog(nullptr));
    EXPECT_EQ(liveBlocks(), live);
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewTimer(1.0f), 1);
    zlfCloseLog();
    EXPECT_TRUE(zlfOpenLog(nullptr));
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Log, AFileAfterAnOpeningWithoutANameKeepsTheTables) {
    systemFaults.realTime = someTime;
    const int atFirst = liveBlocks();
    ASSERT_TRUE(zlfOpenLog(nullptr));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
    EXPECT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(readText("log.txt"),
              "[Zenlor foundation 0.4 started at 5/3/2024 7:8:9.4]\n" + dashes + "\n");
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewTimer(1.0f), 1);
    zlfCloseLog();
    EXPECT_EQ(liveBlocks(), atFirst);
}

TEST_F(Log, AFileThatFailsAfterAnOpeningWithoutANameKeepsTheTables) {
    ASSERT_TRUE(zlfOpenLog(nullptr));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_FALSE(zlfOpenLog("no such folder/log.txt"));
    EXPECT_EQ(zlfNewId(), 2u);
}

TEST_F(Log, AFileThatCannotBeWrittenLeavesNoTables) {
    EXPECT_FALSE(zlfOpenLog("no such folder/log.txt"));
    EXPECT_FALSE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 0u);
}

TEST_F(Log, ASymbolicLinkIsNotFollowed) {
    writeFile("precious.txt", "text");
    std::filesystem::create_symlink("precious.txt", "link.txt");
    std::filesystem::create_symlink("not there.txt", "dangling.txt");
    EXPECT_FALSE(zlfOpenLog("link.txt"));
    EXPECT_EQ(readText("precious.txt"), "text");
    EXPECT_FALSE(zlfOpenLog("dangling.txt"));
    EXPECT_FALSE(zlfFileExists("not there.txt"));
    EXPECT_FALSE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 0u);
}

TEST_F(Log, AFileWithASecondNameKeepsItsTextThere) {
    writeFile("precious.txt", "text");
    std::remove("log.txt");
    std::filesystem::create_hard_link("precious.txt", "log.txt");
    EXPECT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_TRUE(zlfLog("here\n"));
    EXPECT_EQ(readText("precious.txt"), "text");
    EXPECT_TRUE(readText("log.txt").ends_with("here\n"));
}

TEST_F(Log, AFifoIsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo("fifo.txt", 0600), 0);
    EXPECT_FALSE(zlfOpenLog("fifo.txt"));
    const int reader = open("fifo.txt", O_RDONLY | O_NONBLOCK);
    EXPECT_FALSE(zlfOpenLog("fifo.txt")) << "with a reader at its other end";
    char byte;
    EXPECT_EQ(read(reader, &byte, 1), 0) << "nothing was written";
    close(reader);
    EXPECT_FALSE(zlfOpenLog(".")) << "a folder";
}

TEST_F(Log, ADeviceCanBeWrittenTo) {
    EXPECT_TRUE(zlfOpenLog("/dev/null"));
    EXPECT_TRUE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Log, IsNoFileOfTheProgramsThatTheProcessStarts) {
    const std::vector<int> before = inheritedFiles();
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(inheritedFiles(), before);
}

TEST_F(Log, WithoutMemoryForTheIdentifiersItStillOpens) {
    systemFaults.failMallocOf = 0x40000;
    EXPECT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(zlfNewId(), 0u);
    EXPECT_NE(readText("log.txt").find("zlfNewId: ID table not initialized\n"), std::string::npos);
    zlfCloseLog();
}

TEST_F(Log, IsQuietlyFalseWhenClosed) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    zlfCloseLog();
    const std::string text = readText("log.txt");
    EXPECT_EQ(echoOf([] { EXPECT_FALSE(zlfLog("late\n")); }), "");
    EXPECT_EQ(readText("log.txt"), text);
    EXPECT_TRUE(zlfCloseLog());
}

TEST_F(Log, CanBeOpenedAgain) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    zlfCloseLog();
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_TRUE(zlfLog("again\n"));
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Log, WritesEachTextAtOnce) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::size_t header = readText("log.txt").size();
    zlfLog("part");
    EXPECT_EQ(readText("log.txt").substr(header), "part");
    zlfLog(" of a line  \n");
    EXPECT_EQ(readText("log.txt").substr(header), "part of a line  \n");
}

TEST_F(Log, CutsATextAt1023Bytes) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::size_t header = readText("log.txt").size();
    for (const std::size_t length : {1022, 1023, 1024, 5000}) {
        const std::size_t before = readText("log.txt").size();
        EXPECT_TRUE(zlfLog("%s", std::string(length, 'x').c_str()));
        EXPECT_EQ(readText("log.txt").size() - before, std::min<std::size_t>(length, 1023));
    }
    EXPECT_EQ(readText("log.txt").find_first_not_of('x', header), std::string::npos);
}

TEST_F(Log, TakesNoFormatAsNoText) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::string text = readText("log.txt");
    const char *volatile none = nullptr;
    EXPECT_FALSE(zlfLog(none, 1));
    EXPECT_EQ(readText("log.txt"), text);
}

TEST_F(Log, IsEchoedToTheConsoleUnlessSwitchedOff) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(echoOf([] { zlfLog("   %s\n", "echo"); }), "   echo\n");
    testing::internal::CaptureStdout();
    zlfLog("silence\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Log, TheConsoleReadsTheTextASecondTime) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::size_t header = readText("log.txt").size();
    EXPECT_EQ(echoOf([] { zlfLog("%s\n", "100%% of %s, %n and 5%"); }), "100% of %s, %n and 5%\n");
    EXPECT_EQ(readText("log.txt").substr(header), "100%% of %s, %n and 5%\n");
}

TEST_F(Log, AnErrorIsThreeRecords) {
    systemFaults.realTime = someTime;
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::size_t header = readText("log.txt").size();
    EXPECT_FALSE(zlfLogError("place", "detail", "bad %d", 7));
    EXPECT_EQ(readText("log.txt").substr(header), "Time:  7:8:9.4\n"
                                                  "From:  place - Error (detail)\n"
                                                  "Error: bad 7\n\n");
}

TEST_F(Log, AnErrorWithoutADetailHasNoParentheses) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    for (const char *detail : {static_cast<const char *>(nullptr), ""}) {
        const std::size_t before = readText("log.txt").size();
        EXPECT_FALSE(zlfLogError("place", detail, "bad"));
        EXPECT_NE(readText("log.txt").find("From:  place - Error\n", before), std::string::npos);
    }
    EXPECT_FALSE(zlfLogError(nullptr, nullptr, "bad"));
    EXPECT_NE(readText("log.txt").find("From:   - Error\n"), std::string::npos);
}

TEST_F(Log, AnErrorIsCutAtItsBuffers) {
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    const std::string from(100, 'f'), text(300, 't');
    zlfLogError(from.c_str(), "detail", "%s", text.c_str());
    const std::string log = readText("log.txt");
    EXPECT_NE(log.find("From:  " + from.substr(0, 79) + "\n"), std::string::npos);
    EXPECT_NE(log.find("Error: " + text.substr(0, 255) + "\n\n"), std::string::npos);
}

TEST_F(Log, AnErrorGoesToTheConsoleAlsoWithoutALog) {
    EXPECT_EQ(echoOf([] { zlfLogError("place", "detail", "bad %d%%", 7); }),
              "ERROR\n   from: place - Error (detail)\n   text: bad 7%\n");
    testing::internal::CaptureStdout();
    zlfLogError("place", "", "bad");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
} // namespace ravolt::test
