// Texts in buffers of a fixed size.

#include "foundation/text.h"

#include <string>

#include <gtest/gtest.h>

namespace ravolt {
namespace {

TEST(Text, IsCopiedUpToTheSizeOfItsTarget) {
    const char unterminated[] = {'a', 'b', 'c', 'd', 'e'};
    const std::pair<const char *, const char *> rows[] = {{"abc", "abc"},
                                                          {"abcd", "abcd"},
                                                          {"abcdefgh", "abcd"},
                                                          {unterminated, "abcd"},
                                                          {nullptr, ""}};
    for (const auto &[source, expected] : rows) {
        char target[5] = {'#', '#', '#', '#', '#'};
        copyText(target, source);
        EXPECT_STREQ(target, expected);
        EXPECT_EQ(target[4], expected[0] && expected[3] ? '\0' : '#');
    }
    char target[8] = "abcdef";
    copyText(target, target + 2);
    EXPECT_STREQ(target, "cdef") << "within its own buffer";
    copyText(target, 1, "abc");
    EXPECT_STREQ(target, "");
}

TEST(Text, IsFormattedUpToTheSizeOfItsTarget) {
    char target[6];
    formatText(target, "%d-%s", 12, "x");
    EXPECT_STREQ(target, "12-x");
    formatText(target, "%d-%s", 12, "xyz");
    EXPECT_STREQ(target, "12-xy");
}

[[gnu::format(printf, 3, 4)]] int formatWith(char *target, std::size_t size, const char *format,
                                             ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatArguments(target, size, format, arguments);
    va_end(arguments);
    return length;
}

TEST(Text, OfArgumentsReportsItsWholeLength) {
    char target[6] = "#####";
    EXPECT_EQ(formatWith(target, sizeof target, "%d-%s", 12, "x"), 4);
    EXPECT_STREQ(target, "12-x");
    EXPECT_EQ(formatWith(target, sizeof target, "%d-%s", 12, "xyz"), 6);
    EXPECT_STREQ(target, "12-xy");
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_LT(formatWith(target, sizeof target, "ab%ls", unencodable), 0);
    EXPECT_STREQ(target, "");
}

std::string applied(const char *stored) {
    std::string result(std::string(stored).size() + 1, 'x');
    applyFormat(result.data(), stored);
    return result.c_str();
}

TEST(Text, AStoredFormatLosesOneOfTwoPercentSigns) {
    const std::pair<const char *, const char *> rows[] = {{"", ""},
                                                          {"plain", "plain"},
                                                          {"%%", "%"},
                                                          {"%%%%", "%%"},
                                                          {"%%%", "%%"},
                                                          {"100%", "100%"},
                                                          {"%s %d %n %%s", "%s %d %n %s"}};
    for (const auto &[stored, expected] : rows)
        EXPECT_EQ(applied(stored), expected);
}

TEST(Text, NamesStayBelowTheirPathWithoutRootsDrivesAndStepsUp) {
    for (const char *name :
         {"", "a", "a/b\\c", "a//b", "...", "..a", "a..", "a/.../b", ".", "./a", "ab:c", ":", "a/"})
        EXPECT_TRUE(staysBelowPath(name)) << name;
    for (const char *name : {"/", "/a", "\\a", "c:", "c:a", "c:\\a", "::", "..", "../a", "..\\a",
                             "a/..", "a/../b", "a\\..\\b"})
        EXPECT_FALSE(staysBelowPath(name)) << name;
}

} // namespace
} // namespace ravolt
