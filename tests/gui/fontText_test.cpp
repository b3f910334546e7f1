// Texts of fonts that are measured and broken into lines, against results worked out by hand.

#include "ravolt/RVFONT.h"
#include "tests/support/logReader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace ravolt::test;

namespace {

// Cells of 10 by 12 pixels; all characters advance 10 pixels but these.
class FontText : public testing::Test {
  protected:
    FontText() {
        font.setCharSizeX(10);
        font.setCharSizeY(12);
        font.setKerning('i', 6);
        font.setKerning('W', -2);
        font.setKerning('k', 15);
        font.setKerning(0x7f, 3);
        markLog();
    }

    RVFONT font;
};

TEST_F(FontText, IsMeasuredWithoutItsTags) {
    const struct {
        const char *text;
        int width;
    } cases[] = {{"", 0},           {"a", 10},
                 {"ii", 8},         {"aW", 22},
                 {"k", -5},         {"ka", 5},
                 {"a b", 30},       {"a\nb", 30},
                 {"^c8000a", 10},   {"^C8000a", 10},
                 {"^y0050a", 10},   {"^Y0050a", 10},
                 {"^x0050a", 60},   {"^X0050a", 60},
                 {"^x-003a", 7},    {"^x-020", -20},
                 {"^x 7a.b", 17}, // as for atoi
                 {"^xabcd", 0},     {"^x9999^x0001", 10000},
                 {"^b", 20},        {"^ ^", 20}, // the second one is truncated
                 {"^^x0050", 60},   {"a^", 10},
                 {"a^x", 10},       {"a^x1", 10},
                 {"a^x12", 10},     {"a^x123", 10},
                 {"a^x1234", 1244}, {"a^c800", 10},
                 {"a^Y123", 10},    {"\x01\x1f\x80\xff", 40},
                 {"\x7f", 7}};
    for (const auto &c : cases)
        EXPECT_EQ(font.stringLength(c.text), static_cast<unsigned int>(c.width)) << c.text;
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(font.stringLength(nullptr), 0u);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::stringLength\n");
}

TEST_F(FontText, IsBrokenIntoLines) {
    const struct {
        const char *what, *source;
        unsigned int maxWidth;
        const char *expected;
        int height;
    } cases[] = {
        {"empty", "", 100, "", 0},
        {"exactly as wide", "abc", 30, "abc", 0},
        {"a pixel too wide", "abc", 29, "ab\nc", 12},
        {"at the blank", "ab cd", 40, "ab\ncd", 12},
        {"at several blanks", "a b c d", 30, "a\nb\nc\nd", 36},
        {"before the blank", "abc d", 30, "abc\n d", 12},
        {"the second overflow of a word writes the first break again", "abcdef", 20, "ab\ncde\nf",
         36},
        {"with the position of the blank before", "a bcdefgh", 30, "a\nbc\ndefg\nh", 48},
        {"no room at all", "ab", 0, "\nab", 24},
        {"its own line break", "a\nb", 100, "a\nb", 12},
        {"a line after it starts a cell to the right", "a\nbc", 30, "a\nbc", 12},
        {"and overflows at its line break", "a\nbc", 29, "a\nbc", 24},
        {"which is used once", "\nabc", 25, "\nab\nc", 36},
        {"a line break is never too wide", "a\n\n\nb", 20, "a\n\n\nb", 36},
        {"narrow characters", "iii", 12, "iii", 0},
        {"a pixel too narrow for them", "iii", 11, "ii\ni", 12},
        {"an advance to the left counts as a large one", "k", 100, "\nk", 12},
        {"a colour", "^c8000ab", 20, "^c8000ab", 0},
        {"a colour in the other case", "^C8000abc", 20, "^C8000ab\nc", 12},
        {"a break before a tag", "a ^c8000bc", 30, "a\n^c8000bc", 12},
        {"in X", "^x0015ab", 30, "^x0015a\nb", 12},
        {"in X, the other case", "^X0010ab", 30, "^X0010ab", 0},
        {"to the left", "^x-010ab", 10, "^x-010ab", 0},
        {"left of the line", "^x-015a", 100, "^x-015\na", 12},
        {"in Y", "^y0030ab", 100, "^y0030ab", 30},
        {"upwards", "^Y-005abc", 20, "^Y-005ab\nc", 7},
        {"two tags", "^x0010^x0010a", 30, "^x0010^x0010a", 0},
        {"two tags, a pixel too wide", "^x0010^x0010a", 29, "^x0010^x0010\na", 12},
        {"a tag at the end is text", "ab^c8000", 80, "ab^c8000", 0},
        {"and is broken", "ab^c8000", 70, "ab^c800\n0", 12},
        {"of two the last one", "^x0010^x0010", 69, "^x0010^x001\n0", 12},
        {"in Y at the end", "^y0030", 60, "^y0030", 0},
        {"truncated", "^c80", 39, "^c8\n0", 12},
        {"only its mark", "ab^", 29, "ab\n^", 12},
        {"no letter of a tag", "^q0000ab", 70, "^q0000a\nb", 12},
        {"low and high bytes never break", "\x01\x1f\x80\xff", 5, "\x01\x1f\x80\xff", 0},
        {"but advance",
         "\x80"
         "a",
         15, "\x80\na", 12},
        {"the cursor's glyph", "a\x7f", 17, "a\x7f", 0},
        {"and a pixel too wide", "a\x7f", 16, "a\n\x7f", 12},
    };
    for (const auto &c : cases)
        for (const unsigned int maxHeight : {0u, 65000u}) { // ignored
            SCOPED_TRACE(c.what);
            char broken[64] = "before";
            EXPECT_EQ(font.format(c.source, broken, c.maxWidth, maxHeight), c.height);
            EXPECT_STREQ(broken, c.expected);
        }
    EXPECT_NOTHING_LOGGED();
    char broken[] = "before";
    EXPECT_EQ(font.format(nullptr, broken, 100, 100), 0);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::format\n");
    EXPECT_EQ(font.format("abc", nullptr, 100, 100), 0);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::format\n");
    EXPECT_STREQ(broken, "before");
}

std::string withoutBlanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

TEST_F(FontText, OfAnyWidthIsWhole) {
    const std::string source = "Lorem ipsum ^c8000dolor sit^x0004 amet,\nconsectetur adipiscing";
    for (unsigned int maxWidth = 0; maxWidth < 700; maxWidth += 7) {
        char broken[200];
        EXPECT_GE(font.format(source.c_str(), broken, maxWidth, 0), 12) << maxWidth;
        EXPECT_EQ(withoutBlanks(broken), withoutBlanks(source)) << maxWidth;
        EXPECT_GE(std::strlen(broken), source.size()) << maxWidth;
    }
}

TEST_F(FontText, IsCutAtTheSizeOfItsDestination) {
    const struct {
        const char *what, *source;
        std::size_t size;
        const char *expected;
        int height;
        const char *log;
    } cases[] = {
        {"fits", "abcd", 5, "abcd", 0, ""},
        {"a byte too long", "abcd", 4, "abc", 0,
         "   [!] Text is cut at 3 bytes @ RVFONT::format\n"},
        {"no byte", "abcd", 1, "", 0, "   [!] Text is cut at 0 bytes @ RVFONT::format\n"},
        {"the added break has no room", "abcdef", 5, "abcd", 0,
         "   [!] Text is cut at 4 bytes @ RVFONT::format\n"},
        {"the character after it has none", "abcdef", 6, "abcd\n", 12,
         "   [!] Text is cut at 5 bytes @ RVFONT::format\n"},
        {"tags are not divided", "ab^c8000c", 8, "ab", 0,
         "   [!] Text is cut at 2 bytes @ RVFONT::format\n"},
        {"no destination", "abcd", 0, "before", 0, "   [!] Invalid params @ RVFONT::format\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        char broken[64] = "before";
        EXPECT_EQ(font.formatInto(c.source, broken, c.size, 40), c.height);
        EXPECT_STREQ(broken, c.expected);
        EXPECT_LOGGED_EXACTLY(c.log);
    }
}

// Sums of coordinates wrap around and never fail.
TEST_F(FontText, HasAnyCellSize) {
    char broken[64];
    for (const unsigned int size : {0u, 1u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        font.setCharSizeX(size);
        font.setCharSizeY(size);
        EXPECT_EQ(font.stringLength("iW"), 2 * size - 4) << size;
        font.format("a b\n\n\n^y9999^x9999i", broken, 0, 0);
        EXPECT_EQ(withoutBlanks(broken), "ab^y9999^x9999i") << size;
    }
}

} // namespace
