// What the writer of clips writes and refuses.

#include "tools/writers/rvaWriter.h"

#include "tests/support/fileLimit.h"

#include <filesystem>

#include <gtest/gtest.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

RvaClip clipOf(std::size_t bones, std::size_t frames) {
    return {std::vector<std::string>(bones, "bone"),
            std::vector<std::vector<RvaEntry>>(frames, std::vector<RvaEntry>(bones))};
}

std::string errorOf(const RvaClip &clip) {
    const RvaResult result = encodeRva(clip);
    EXPECT_EQ(result.ok(), !result.bytes.empty());
    return result.error;
}

TEST(RvaWriter, BytesAreThoseOfTheFormat) {
    RvaClip clip = clipOf(1, 1);
    clip.frames[0][0] = {{1.0f, -2.0f, 0.5f}, {0.0f, 3.0f, 0.25f}, true};
    const unsigned char expected[] = {
        'R',  'V', 'A',  ' ',  'f', 'i', 'l',  'e',  ' ', 'v', '1',  '.',  '6', 'a', // magic
        0x1a,                                                                        // separator
        1,    0,   1,    0,                                                          // counts
        'b',  'o', 'n',  'e',  0,                                                    //
        0,    0,   0x80, 0x3f, 0,   0,   0,    0xc0, 0,   0,   0,    0x3f,           // rotation
        0,    0,   0,    0,    0,   0,   0x40, 0x40, 0,   0,   0x80, 0x3e,           // translation
        1};
    EXPECT_EQ(encodeRva(clip).bytes,
              std::vector<unsigned char>(std::begin(expected), std::end(expected)));
}

TEST(RvaWriter, LargestClipIsNoError) {
    EXPECT_EQ(errorOf(clipOf(0, 0)), "");
    const RvaResult largest = encodeRva(clipOf(rvaBones, rvaFrames));
    EXPECT_EQ(largest.error, "");
    EXPECT_EQ(largest.bytes.size(), 19 + 128 * 5 + 128 * 1024 * 25u);
}

TEST(RvaWriter, WhatTheReaderRefusesIsAnError) {
    const auto named = [](const std::string &name) { return RvaClip{{name}, {}}; };
    const std::string longName(256, 'n'), zero("a\0b", 3);
    RvaClip incomplete = clipOf(2, 3);
    incomplete.frames[1].pop_back();
    const std::pair<RvaClip, std::string> rows[] = {
        {clipOf(129, 1), "the clip: 129 bones, at most 128"},
        {clipOf(1, 1025), "the clip: 1025 frames, at most 1024"},
        {clipOf(1, 70000), "the clip: 70000 frames, at most 1024"},
        {named(longName.substr(1)), ""},
        {named(longName), "bone '" + longName + "': a text of 256 characters, at most 255"},
        {named(zero), "bone '" + zero + "': a text with a zero byte in it"},
        {incomplete, "frame 1: entries must be as many as bones"},
    };
    for (const auto &[clip, error] : rows)
        EXPECT_EQ(errorOf(clip), error);
}

TEST(RvaWriter, FileThatCannotBeWrittenIsAnErrorAndIsRemoved) {
    const RvaClip clip = clipOf(2, 2);
    EXPECT_EQ(writeRva("no such folder/clip.rva", clip),
              "no such folder/clip.rva: cannot be written");
    {
        const FileLimit limit(RLIMIT_FSIZE, 30);
        EXPECT_EQ(writeRva("part.rva", clip), "part.rva: cannot be written");
    }
    EXPECT_FALSE(std::filesystem::exists("part.rva"));
    EXPECT_EQ(writeRva("part.rva", clipOf(129, 1)), "the clip: 129 bones, at most 128");
    EXPECT_FALSE(std::filesystem::exists("part.rva"));
    EXPECT_EQ(writeRva("part.rva", clip), "");
    EXPECT_EQ(std::filesystem::file_size("part.rva"), encodeRva(clip).bytes.size());
}

} // namespace
