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

} // namespace
} // namespace ravolt
