// The log as HTML, in a program of its own: a process that has opened one HTML log writes every
// later log as HTML too.

#include "tests/foundation/ownLog.h"

namespace ravolt::test {
namespace {

constexpr std::int64_t someTime = 1'709'622'489'004'000'000; // 5 March 2024, 7:08:09.004 UTC

const std::string rule = "<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\">";
const std::string header =
    "<H4>[Zenlor foundation 0.4 started at 5/3/2024 7:8:9.4]<BR>\n" + rule + "<BR>\n<BR>\n</H4>";

class HtmlLog : public NoLog {
  protected:
    HtmlLog() { systemFaults.realTime = someTime; }

    // What the log makes of a text.
    std::string translated(const std::string &text) {
        EXPECT_TRUE(zlfOpenLog("log.html"));
        const std::size_t before = readText("log.html").size();
        zlfLog("%s", text.c_str());
        std::string result = readText("log.html").substr(before);
        zlfCloseLog();
        return result;
    }
};

TEST_F(HtmlLog, IsCompleteFromHeaderToStatistics) {
    systemFaults.memoryInUse = 1536 * 1024;
    const MemoryFigures before = memoryFigures();
    ASSERT_TRUE(zlfOpenLog("log.html"));
    EXPECT_TRUE(zlfLog("   text\n"));
    zlfCloseLog();

    char statistics[512];
    const unsigned int requested = before.bytesRequested + 262144;
    std::snprintf(statistics, sizeof statistics,
                  "Final memory ratio: %d (%u/%u)<BR>\n"
                  "Max. physical memory usage: 1.50 mb (1572864 bytes)<BR>\n"
                  "Total allocated memory (zlfMalloc): %.2f mb (%u bytes)<BR>\n",
                  static_cast<int>(before.allocations - before.releases), before.allocations + 1,
                  before.releases + 1, requested / 1048576.0, requested);
    EXPECT_EQ(readText("log.html"),
              "<HTML><BODY>" + header + "&nbsp&nbsp text<BR>\n<H4><BR>\n" + rule + statistics +
                  "[Zenlor foundation 0.4 terminated at 5/3/2024 7:8:9.4]<BR>\n"
                  "</H4></BODY></HTML>");
}

TEST_F(HtmlLog, ANameWithTheEndingInItsMiddleCounts) {
    ASSERT_TRUE(zlfOpenLog("log.html.txt"));
    EXPECT_EQ(readText("log.html.txt"), "<HTML><BODY>" + header);
}

// The last blank of a run is one in HTML too.
TEST_F(HtmlLog, BlanksAndLineFeedsAreTranslatedAndCutAtAWholePiece) {
    const std::string feeds(204, '\n');
    std::string lines;
    for (int i = 0; i < 204; ++i) // 204 times 5 bytes are 1020
        lines += "<BR>\n";
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {" ", " "},
        {"a b", "a b"},
        {"  ", "&nbsp "},
        {"   ", "&nbsp&nbsp "},
        {"a    b  \n c", "a&nbsp&nbsp&nbsp b&nbsp <BR>\n c"},
        {"<B>&\t\r\n\n", "<B>&\t\r<BR>\n<BR>\n"},
        {std::string(1000, '\n'), lines},
        {feeds + "abc", lines + "abc"},
        {feeds + "abcd", lines + "abc"},
        {feeds + "ab\nc", lines + "ab"}};
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(translated(text), expected);
}

// The text of the second line would fit.
TEST_F(HtmlLog, TheLimitIsThatOfTheFilesSize) {
    ASSERT_TRUE(zlfOpenLog("log.html"));
    const std::string before = readText("log.html"), line = "&nbsp 23<BR>\n";
    const std::size_t limit = before.size() + 2 * line.size() - 1;
    zlfSetLogLimit(limit);
    EXPECT_TRUE(zlfLog("  23\n"));
    EXPECT_FALSE(zlfLog("  23\n"));
    EXPECT_EQ(readText("log.html"), before + line + "&nbsp&nbsp [!] Log limit of " +
                                        std::to_string(limit) +
                                        " bytes reached, the rest is left out<BR>\n");
    zlfSetLogLimit(0);
}

TEST_F(HtmlLog, TheConsoleGetsThePlainText) {
    ASSERT_TRUE(zlfOpenLog("log.html"));
    testing::internal::CaptureStdout();
    zlfSetConsoleEcho(true);
    zlfLog("   text\n");
    zlfSetConsoleEcho(false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "   text\n");
}

TEST_F(HtmlLog, AnErrorIsInBoldLetters) {
    ASSERT_TRUE(zlfOpenLog("log.html"));
    const std::size_t before = readText("log.html").size();
    EXPECT_FALSE(zlfLogError("place", "detail", "bad %d", 7));
    EXPECT_EQ(readText("log.html").substr(before), "Time:&nbsp <B>7:8:9.4</B><BR>\n"
                                                   "From:&nbsp <B>place - Error (detail)</B><BR>\n"
                                                   "Error: <B>bad 7</B><BR>\n<BR>\n");
}

TEST_F(HtmlLog, ALaterTextLogIsHtmlWithoutItsOpening) {
    ASSERT_TRUE(zlfOpenLog("log.html"));
    zlfCloseLog();
    ASSERT_TRUE(zlfOpenLog("log.txt"));
    EXPECT_EQ(readText("log.txt"), header);
    zlfCloseLog();
    EXPECT_TRUE(readText("log.txt").ends_with("</H4></BODY></HTML>"));
}

} // namespace
} // namespace ravolt::test
