#include "foundation/text.h"

#include <string>

#include <gtest/gtest.h>

namespace ravolt {
namespace {

TEST(Text, IsCopiedUpToTheSizeOfItsTarget) {
    char target[5] = {'#', '#', '#', '#', '#'};
    copyText(target, "abc");
    EXPECT_STREQ(target, "abc");
    EXPECT_EQ(target[4], '#');
    copyText(target, "abcd");
    EXPECT_STREQ(target, "abcd");
    copyText(target, "abcdefgh");
    EXPECT_STREQ(target, "abcd");
    copyText(target, 1, "abc");
    EXPECT_STREQ(target, "");
}

TEST(Text, NullIsAnEmptyText) {
    char target[5] = "abcd";
    copyText(target, nullptr);
    EXPECT_STREQ(target, "");
}

TEST(Text, ASourceLongerThanTheTargetNeedsNoTerminator) {
    const char source[4] = {'a', 'b', 'c', 'd'};
    char target[3];
    copyText(target, source);
    EXPECT_STREQ(target, "ab");
}

TEST(Text, IsFormattedUpToTheSizeOfItsTarget) {
    char target[6];
    formatText(target, "%d-%s", 12, "x");
    EXPECT_STREQ(target, "12-x");
    formatText(target, "%d-%s", 12, "xyz");
    EXPECT_STREQ(target, "12-xy");
}

TEST(Text, MayBeCopiedWithinItsOwnBuffer) {
    char target[8] = "abcdef";
    copyText(target, target + 2);
    EXPECT_STREQ(target, "cdef");
}

std::string applied(const char *stored) {
    std::string result(std::string(stored).size() + 1, 'x');
    applyFormat(result.data(), stored);
    return result.c_str();
}

TEST(Text, AStoredFormatLosesOneOfTwoPercentSigns) {
    EXPECT_EQ(applied(""), "");
    EXPECT_EQ(applied("plain"), "plain");
    EXPECT_EQ(applied("%%"), "%");
    EXPECT_EQ(applied("%%%%"), "%%");
    EXPECT_EQ(applied("%%%"), "%%");
    EXPECT_EQ(applied("100%"), "100%");
    EXPECT_EQ(applied("%s %d %n %%s"), "%s %d %n %s");
}

} // namespace
} // namespace ravolt
