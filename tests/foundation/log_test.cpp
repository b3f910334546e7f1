// The log as text: opening, statistics, texts, errors and the console.

#include "tests/foundation/ownLog.h"

#include "foundation/text.h"

#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ravolt::test {
namespace {

const std::string dashes = "-------------------------------------------------------\n";

// 5 March 2024, 7:08:09.004 UTC
constexpr std::int64_t someTime = 1'709'622'489'004'000'000;
const std::string started = "[Zenlor foundation 0.4 started at 5/3/2024 7:8:9.4]\n" + dashes + "\n";

std::string format(const char *text, auto... arguments) {
    char buffer[512];
    formatText(buffer, text, arguments...);
    return buffer;
}

// What a step writes to standard output while the log is echoed, or not.
std::string outputOf(auto step, bool echo = true) {
    testing::internal::CaptureStdout();
    zlfSetConsoleEcho(echo);
    step();
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

class Log : public NoLog {
  protected:
    // Opens log.txt; `text` and `added` read what is written.
    void open() {
        systemFaults.realTime = someTime;
        ASSERT_TRUE(zlfOpenLog("log.txt"));
        read = readText("log.txt").size();
    }
    static std::string text() { return readText("log.txt"); }
    std::string added() {
        const std::string all = text(), result = all.substr(read);
        read = all.size();
        return result;
    }
    static bool contains(const std::string &part) { return text().find(part) != part.npos; }

    std::size_t read = 0;
};

TEST_F(Log, IsCompleteFromHeaderToStatistics) {
    systemFaults.memoryInUse = 5 * 1024 * 1024;
    const MemoryFigures before = memoryFigures();
    open();
    EXPECT_TRUE(zlfLog("   %d and %s\n", 7, "seven"));
    zlfFree(zlfMalloc(1000));
    void *block = zlfMalloc(24);
    systemFaults.realTime = someTime + 61'996'000'000;
    EXPECT_TRUE(zlfCloseLog());

    const unsigned int allocations = before.allocations + 3, releases = before.releases + 2;
    const unsigned int requested = before.bytesRequested + 262144 + 1000 + 24;
    EXPECT_EQ(text(), started + "   7 and seven\n\n" + dashes +
                          format("Final memory ratio: %d (%u/%u)\n",
                                 static_cast<int>(allocations - releases), allocations, releases) +
                          "Max. physical memory usage: 5.00 mb (5242880 bytes)\n" +
                          format("Total allocated memory (zlfMalloc): %.2f mb (%u bytes)\n",
                                 requested / 1048576.0, requested) +
                          "[Zenlor foundation 0.4 terminated at 5/3/2024 7:9:11.0]\n");
    zlfFree(block);
}

TEST_F(Log, ABalancedProgramHasARatioOfZero) {
    balanceBlocks();
    const unsigned int allocations = memoryFigures().allocations;
    open();
    zlfFree(zlfMalloc(10));
    zlfCloseLog();
    EXPECT_TRUE(
        contains(format("Final memory ratio: 0 (%u/%u)\n", allocations + 2, allocations + 2)));
}

TEST_F(Log, ThePeakIsTheHighestFigureSinceTheOpening) {
    const struct {
        std::vector<std::uint64_t> inUse; // before the opening, at it and after it; none: unknown
        const char *peak;
    } rows[] = {{{90 << 20, 2 << 20, (3 << 20) + (512 << 10), 1024}, "3.50 mb (3670016 bytes)"},
                {{0, std::uint64_t{100} << 30}, "2048.00 mb (2147483647 bytes)"},
                {{}, "0.00 mb (0 bytes)"}};
    for (const auto &row : rows) {
        systemFaults = {};
        systemFaults.memoryUnknown = row.inUse.empty();
        for (std::size_t step = 0; step < std::max<std::size_t>(row.inUse.size(), 2); ++step) {
            if (!row.inUse.empty())
                systemFaults.memoryInUse = row.inUse[step];
            if (step == 1)
                open();
            else
                zlfFree(zlfMalloc(1));
        }
        zlfCloseLog();
        EXPECT_TRUE(contains("Max. physical memory usage: " + std::string(row.peak) + "\n"))
            << text();
    }
}

TEST_F(Log, OpeningReplacesAnOldFile) {
    writeFile("log.txt", "old");
    open();
    EXPECT_EQ(text(), started);
    EXPECT_EQ(zlfNewId(), 1u);
    zlfCloseLog();
    open();
    EXPECT_TRUE(zlfLog("again\n"));
    EXPECT_EQ(text(), started + "again\n");
    EXPECT_EQ(zlfNewId(), 1u);
}

// The next opening fails, with any name and without one: the tables and the file are unchanged.
TEST_F(Log, ASecondOpeningFails) {
    const std::pair<const char *, const char *> rows[] = {{"log.txt", nullptr},
                                                          {"log.txt", "second.txt"},
                                                          {nullptr, nullptr},
                                                          {nullptr, "no such folder/log.txt"}};
    systemFaults.realTime = someTime;
    for (const auto &[first, second] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::pair(first, second)));
        std::remove("log.txt");
        ASSERT_TRUE(zlfOpenLog(first));
        EXPECT_EQ(zlfNewId(), 1u);
        EXPECT_EQ(zlfNewTimer(1.0f), 0);
        const int live = liveBlocks();
        EXPECT_FALSE(zlfOpenLog(second));
        EXPECT_EQ(liveBlocks(), live);
        EXPECT_FALSE(zlfFileExists("second.txt"));
        EXPECT_EQ(zlfLog("still here\n"), first != nullptr);
        EXPECT_EQ(text(), first ? started + "still here\n" : "");
        EXPECT_EQ(zlfNewId(), 2u);
        EXPECT_EQ(zlfNewTimer(1.0f), 1);
        EXPECT_TRUE(zlfCloseLog());
        EXPECT_EQ(liveBlocks(), live - 1);
        EXPECT_EQ(zlfNewId(), 0u);
    }
}

TEST_F(Log, AFileAfterAnOpeningWithoutANameHasItsTables) {
    const int before = liveBlocks();
    ASSERT_TRUE(zlfOpenLog(nullptr));
    EXPECT_EQ(zlfNewId(), 1u);
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
    open();
    EXPECT_EQ(text(), started);
    EXPECT_EQ(zlfNewId(), 2u);
    EXPECT_EQ(zlfNewTimer(1.0f), 1);
    zlfCloseLog();
    EXPECT_EQ(liveBlocks(), before);
}

// No text of another file is lost, and there are no tables then.
TEST_F(Log, FilesThatAreNotItsOwnAreRefused) {
    writeFile("precious.txt", "text");
    std::filesystem::create_symlink("precious.txt", "link.txt");
    std::filesystem::create_symlink("not there.txt", "dangling.txt");
    ASSERT_EQ(mkfifo("fifo.txt", 0600), 0);
    const int reader = ::open("fifo.txt", O_RDONLY | O_NONBLOCK);
    for (const char *name : {"link.txt", "dangling.txt", "fifo.txt", "no such folder/log.txt", "."})
        EXPECT_FALSE(zlfOpenLog(name)) << name;
    char byte;
    EXPECT_EQ(::read(reader, &byte, 1), 0) << "nothing was written";
    close(reader);
    EXPECT_FALSE(zlfOpenLog("fifo.txt")) << "without a reader at its other end";
    EXPECT_EQ(readText("precious.txt"), "text");
    EXPECT_FALSE(zlfFileExists("not there.txt"));
    EXPECT_FALSE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 0u);

    std::remove("log.txt");
    std::filesystem::create_hard_link("precious.txt", "log.txt");
    systemFaults.failUnlink = true;
    EXPECT_FALSE(zlfOpenLog("log.txt")) << "the name stays that of the file";
    systemFaults = {};
    EXPECT_EQ(readText("precious.txt"), "text");
    open();
    EXPECT_TRUE(zlfLog("here\n"));
    EXPECT_EQ(readText("precious.txt"), "text") << "a second name of the file";
    EXPECT_TRUE(text().ends_with("here\n"));
}

TEST_F(Log, ADeviceCanBeWrittenTo) {
    EXPECT_TRUE(zlfOpenLog("/dev/null"));
    EXPECT_TRUE(zlfLog("nowhere\n"));
    EXPECT_EQ(zlfNewId(), 1u);
}

TEST_F(Log, IsNotInheritedByStartedPrograms) {
    const std::vector<int> before = inheritedFiles();
    open();
    EXPECT_EQ(inheritedFiles(), before);
}

TEST_F(Log, WithoutMemoryForTheIdentifiersItStillOpens) {
    ASSERT_TRUE(withoutMemory(0x40000, [] { return zlfOpenLog("log.txt"); }));
    EXPECT_EQ(zlfNewId(), 0u);
    EXPECT_TRUE(text().ends_with("\nzlfNewId: ID table not initialized\n"));
}

TEST_F(Log, IsFalseWithoutAMessageWhenClosed) {
    open();
    zlfCloseLog();
    const std::string before = text();
    EXPECT_EQ(outputOf([] { EXPECT_FALSE(zlfLog("late\n")); }), "");
    EXPECT_EQ(text(), before);
    EXPECT_TRUE(zlfCloseLog());
}

TEST_F(Log, WritesEachTextAtOnce) {
    open();
    zlfLog("part");
    EXPECT_EQ(added(), "part");
    zlfLog(" of a line  \n");
    EXPECT_EQ(added(), " of a line  \n");
    const char *volatile none = nullptr;
    EXPECT_FALSE(zlfLog(none, 1)) << "no format is no text";
    EXPECT_EQ(added(), "");
    for (const std::size_t length : {1022, 1023, 1024, 5000}) {
        EXPECT_TRUE(zlfLog("%s", std::string(length, 'x').c_str()));
        EXPECT_EQ(added(), std::string(std::min<std::size_t>(length, 1023), 'x'));
    }
}

TEST_F(Log, IsEchoedToTheConsoleUnlessSwitchedOff) {
    open();
    EXPECT_EQ(outputOf([] { zlfLog("   %s\n", "echo"); }), "   echo\n");
    EXPECT_EQ(outputOf([] { zlfLog("silence\n"); }, false), "");
    added();
    // On purpose: the console formats the text a second time.
    EXPECT_EQ(outputOf([] { zlfLog("%s\n", "100%% of %s, %n and 5%"); }),
              "100% of %s, %n and 5%\n");
    EXPECT_EQ(added(), "100%% of %s, %n and 5%\n");
}

TEST_F(Log, AnErrorIsThreeRecords) {
    open();
    EXPECT_FALSE(zlfLogError("place", "detail", "bad %d", 7));
    EXPECT_EQ(added(), "Time:  7:8:9.4\nFrom:  place - Error (detail)\nError: bad 7\n\n");
    const std::string from(100, 'f'), text(300, 't');
    const struct {
        const char *from, *detail, *line;
    } rows[] = {{"place", nullptr, "From:  place - Error\n"},
                {"place", "", "From:  place - Error\n"},
                {nullptr, nullptr, "From:   - Error\n"}};
    for (const auto &row : rows) {
        EXPECT_FALSE(zlfLogError(row.from, row.detail, "bad"));
        EXPECT_NE(added().find(row.line), std::string::npos) << row.line;
    }
    zlfLogError(from.c_str(), "detail", "%s", text.c_str());
    EXPECT_EQ(added(), "Time:  7:8:9.4\nFrom:  " + from.substr(0, 79) +
                           "\nError: " + text.substr(0, 255) + "\n\n")
        << "cut at its buffers";
}

TEST_F(Log, AnErrorIsWrittenToTheConsoleAlsoWithoutALog) {
    EXPECT_EQ(outputOf([] { zlfLogError("place", "detail", "bad %d%%", 7); }),
              "ERROR\n   from: place - Error (detail)\n   text: bad 7%\n");
    EXPECT_EQ(outputOf([] { zlfLogError("place", "", "bad"); }, false), "");
}

TEST_F(Log, HasALineForAFileWithoutMemoryForItsStream) {
    writeFile("there", "text");
    open();
    systemFaults.failStream = true;
    EXPECT_FALSE(zlfFileExists("there"));
    EXPECT_FALSE(zlfFileExists("missing"));
    systemFaults = {};
    EXPECT_EQ(added(), "   [!] Out of memory for file there\n");
    EXPECT_TRUE(zlfFileExists("there"));
}

class LimitedLog : public Log {
  protected:
    ~LimitedLog() override { zlfSetLogLimit(0); }
    static std::string reached(std::size_t bytes) {
        return "   [!] Log limit of " + std::to_string(bytes) +
               " bytes reached, the rest is left out\n";
    }
};

TEST_F(LimitedLog, EndsWithOneLineAndTheStatistics) {
    open();
    const std::size_t limit = read + 10;
    zlfSetLogLimit(limit);
    EXPECT_TRUE(zlfLog("12345678\n"));
    EXPECT_FALSE(zlfLog("1\n"));
    EXPECT_FALSE(zlfLog("\n")) << "though it would fit";
    EXPECT_EQ(added(), "12345678\n" + reached(limit));
    zlfCloseLog();
    EXPECT_EQ(added().rfind("\n" + dashes + "Final memory ratio: ", 0), 0u);
    open();
    EXPECT_TRUE(zlfLog("another\n")) << "is counted anew";
    EXPECT_EQ(added(), "another\n");
}

TEST_F(LimitedLog, TheLineStartsAtALineAndTheRestIsNotPrinted) {
    open();
    const std::size_t limit = read + 5;
    zlfSetLogLimit(limit);
    EXPECT_EQ(outputOf([] {
                  zlfLog("1234");
                  zlfLog("56\n");
                  zlfLog("7\n");
              }),
              "1234\n" + reached(limit));
    EXPECT_EQ(added(), "1234\n" + reached(limit));
}

TEST_F(LimitedLog, AnotherLimitAppliesAtOnce) {
    open();
    zlfSetLogLimit(1);
    EXPECT_FALSE(zlfLog("a\n"));
    EXPECT_EQ(added(), reached(1));
    zlfSetLogLimit(0);
    EXPECT_TRUE(zlfLog("a\n"));
    EXPECT_EQ(added(), "a\n");
}

TEST_F(Log, GrowsWithoutALimit) {
    open();
    for (int line = 0; line < 3000; ++line)
        EXPECT_TRUE(zlfLog("%s\n", std::string(500, 'x').c_str()));
    EXPECT_EQ(added().size(), 3000u * 501);
}

TEST_F(Log, AFullDiskCostsTheLogAlone) {
    ASSERT_TRUE(zlfOpenLog("/dev/full"));
    for (int line = 0; line < 100; ++line)
        EXPECT_TRUE(zlfLog("%s\n", std::string(500, 'x').c_str()));
    EXPECT_EQ(zlfNewId(), 1u);
    releaseId(1);
    EXPECT_TRUE(zlfCloseLog());
}

} // namespace
} // namespace ravolt::test
