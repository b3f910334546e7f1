// Clips in files. What is loaded is written by the tool's writer, and what is saved has to equal
// what that writer makes of it, byte for byte.

#include "ravolt/RVANIM.h"

#include "tests/support/fileLimit.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"
#include "tests/support/missingFiles.h"
#include "tests/support/recorder.h"
#include "tests/support/shortReads.h"
#include "tools/writers/rvaWriter.h"

#include <bit>
#include <filesystem>
#include <random>

#include <gtest/gtest.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

const std::string loading = "\n   Loading RVA file 'clip.rva'...\n";
const std::string loaded = loading + "   Header: RVA file v1.6a\n";
const std::string corrupted = loaded + "   [!] Corrupted file clip.rva @ RVANIM::load\n";
const std::string invalidHeader =
    loading + "   [!] Invalid header in file clip.rva @ RVANIM::load\n";
const std::string saving = "\n   Saving RVA file 'saved.rva'...\n";
const std::string notWritten = saving + "   [!] Unable to write file saved.rva @ RVANIM::save\n";

// Offsets in a file.
constexpr std::size_t separatorAt = 14;
constexpr std::size_t bonesAt = 15;
constexpr std::size_t framesAt = 17;
constexpr std::size_t namesAt = 19;

Bytes bytesOf(const RvaClip &clip) {
    const RvaResult result = encodeRva(clip);
    EXPECT_EQ(result.error, "");
    return result.bytes;
}

Bytes withCounts(Bytes bytes, unsigned int bones, unsigned int frames) {
    for (const auto &[at, count] : {std::pair{bonesAt, bones}, {framesAt, frames}}) {
        bytes[at] = static_cast<unsigned char>(count);
        bytes[at + 1] = static_cast<unsigned char>(count >> 8);
    }
    return bytes;
}

// Any floats at all, also those that are no numbers.
RvaClip randomClip(std::size_t bones, std::size_t frames, unsigned int seed = 7) {
    std::mt19937 random(seed);
    const auto any = [&random] {
        return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    };
    RvaClip clip;
    for (std::size_t bone = 0; bone < bones; ++bone)
        clip.bones.push_back("bone" + std::to_string(bone) + std::string(random() % 20, '.'));
    for (std::size_t frame = 0; frame < frames; ++frame) {
        clip.frames.emplace_back();
        for (std::size_t bone = 0; bone < bones; ++bone)
            clip.frames.back().push_back(
                {{any(), any(), any()}, {any(), any(), any()}, random() % 2 == 0});
    }
    return clip;
}

// All that a clip contains.
Bytes contentsOf(const RVANIM &clip) {
    const auto *bytes = reinterpret_cast<const unsigned char *>(&clip);
    return Bytes(bytes, bytes + sizeof clip);
}

class RvaFile : public RecorderTest {
  protected:
    RvaFile() : clip(*new RVANIM) { markLog(); }
    ~RvaFile() override {
        RVANIM::cleanUp();
        RVANIM::setRVAPath(nullptr);
    }

    bool loadBytes(const Bytes &bytes) {
        writeFile("clip.rva", bytes);
        markLog();
        return clip.load("clip.rva");
    }

    // Saved, the loaded clip is the same file again.
    void expectLoads(const RvaClip &expected) {
        const Bytes bytes = bytesOf(expected);
        EXPECT_TRUE(loadBytes(bytes));
        EXPECT_TRUE(clip.save("saved.rva"));
        EXPECT_LOGGED_EXACTLY(loaded + saving);
        EXPECT_TRUE(readFile("saved.rva") == bytes);
    }

    // The file is refused with these lines, and the clip does not change.
    void expectRefused(const Bytes &bytes, const std::string &lines = corrupted) {
        const Bytes before = contentsOf(clip);
        EXPECT_FALSE(loadBytes(bytes));
        EXPECT_LOGGED_EXACTLY(lines);
        EXPECT_TRUE(before == contentsOf(clip));
    }

    RVANIM &clip; // the registry's
};

// --- Loading

TEST_F(RvaFile, EverythingIsLoadedAndSaved) {
    for (const auto &[bones, frames] :
         {std::pair{0u, 0u}, {3u, 0u}, {0u, 4u}, {1u, 1u}, {5u, 9u}, {2u, 1024u}, {128u, 1024u}}) {
        SCOPED_TRACE(testing::Message() << bones << ", " << frames);
        expectLoads(randomClip(bones, frames, bones + frames));
        EXPECT_EQ(clip.getNumberOfBones(), bones);
        EXPECT_EQ(clip.getNumberOfFrames(), frames);
    }
    EXPECT_STREQ(clip.getFilename(), "clip.rva");
    EXPECT_EQ(RVANIM::findByFilename("clip.rva"), &clip);
    EXPECT_FALSE(clip.getTranslating());
}

TEST_F(RvaFile, SeparatorAndBytesAfterTheEndAreIgnoredAndAnyNumberBut0MakesAKey) {
    Bytes bytes = bytesOf(randomClip(1, 1));
    for (const unsigned char set : {0, 1, 2, 26, 128, 255}) {
        bytes[separatorAt] = bytes.back() = set;
        EXPECT_TRUE(loadBytes(bytes + Bytes(1000, 255)));
        EXPECT_EQ(clip.getKeyframe(0, 0)->set, set != 0);
    }
}

TEST_F(RvaFile, WhatTheFileDoesNotHaveDoesNotChange) {
    clip.setNumberOfBones(3);
    clip.setNumberOfFrames(5);
    clip.setTranslating(true);
    clip.setBoneName(2, "tail");
    clip.setFrame(1, 2, 1, 1, 1);
    clip.setFrame(4, 0, 4, 4, 4);
    expectLoads(randomClip(2, 3));
    EXPECT_STREQ(clip.getBoneName(2), "tail");
    EXPECT_EQ(clip.getFrameRotation(1, 2).x, 1);
    EXPECT_EQ(clip.getFrameRotation(4, 0).x, 4);
    EXPECT_TRUE(clip.getTranslating());
}

TEST_F(RvaFile, PathIsPutInFrontOfTheNameAndIsNoPartOfIt) {
    std::filesystem::create_directory("moves");
    ASSERT_EQ(writeRva("moves/walk.rva", randomClip(1, 1)), "");
    EXPECT_FALSE(clip.load("walk.rva"));
    RVANIM::setRVAPath("moves/");
    for (int round = 0; round < 2; ++round) {
        markLog();
        EXPECT_TRUE(clip.load(round ? clip.getFilename() : "walk.rva"));
        EXPECT_LOGGED("   Loading RVA file 'moves/walk.rva'...");
        EXPECT_STREQ(clip.getFilename(), "walk.rva");
    }
}

TEST_F(RvaFile, LongFileNamesAreCutInTheClip) {
    const std::string name = std::string(150, '/') + std::string(150, 'n') + ".rva";
    RVANIM::setRVAPath(".");
    ASSERT_EQ(writeRva("." + name, randomClip(1, 1)), "");
    EXPECT_TRUE(clip.load(name.c_str()));
    EXPECT_EQ(clip.getFilename(), name.substr(0, 255));
}

TEST_F(RvaFile, NamesOf255CharactersLoadAndLongerOnesAreRefused) {
    RvaClip wanted = randomClip(3, 1);
    wanted.bones[1] = std::string(255, 'n');
    Bytes bytes = bytesOf(wanted);
    EXPECT_TRUE(loadBytes(bytes));
    for (unsigned int bone = 0; bone < 3; ++bone)
        EXPECT_EQ(clip.getBoneName(bone), wanted.bones[bone]);
    bytes.insert(bytes.begin() + namesAt + static_cast<long>(wanted.bones[0].size()) + 1, 'n');
    expectRefused(bytes);
    bytes.resize(namesAt);
    bytes.insert(bytes.end(), 100000, 'n'); // a name that never ends
    expectRefused(bytes);
}

TEST_F(RvaFile, FileCutOffAnywhereIsRefusedAndChangesNothing) {
    ASSERT_TRUE(loadBytes(bytesOf(randomClip(4, 6, 99))));
    clip.setTranslating(true);
    const Bytes whole = bytesOf(randomClip(3, 4));
    for (std::size_t size = 0; size < whole.size() && !HasFailure(); ++size) {
        SCOPED_TRACE(size);
        expectRefused(Bytes(whole.begin(), whole.begin() + static_cast<long>(size)),
                      size < separatorAt ? invalidHeader : corrupted);
    }
    EXPECT_TRUE(loadBytes(whole));
}

TEST_F(RvaFile, CountsAboveTheStorageOrBeyondTheFileAreRefused) {
    Bytes large = bytesOf(randomClip(128, 0));
    large.insert(large.end(), 1025 * 128 * 25, 0); // enough for the smallest of them
    for (const unsigned int bones : {129u, 256u, 0x7fffu, 0x8000u, 0xffffu})
        expectRefused(withCounts(large, bones, 1));
    for (const unsigned int frames : {1025u, 0x7fffu, 0x8000u, 0xffffu})
        for (const unsigned int bones : {128u, 0u}) // none: no entries at all
            expectRefused(withCounts(large, bones, frames));
    const Bytes bytes = bytesOf(randomClip(3, 4));
    for (const unsigned int count : {5u, 127u, 128u}) {
        expectRefused(withCounts(bytes, count, 4));
        expectRefused(withCounts(bytes, 3, count));
    }
}

TEST_F(RvaFile, ByteSetToExtremesIsRefusedOrLoadsWhole) {
    const Bytes whole = bytesOf(randomClip(2, 2));
    unsigned int good = 0, refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const unsigned char value : {0, 1, 128, 255}) {
            SCOPED_TRACE(testing::Message() << "byte " << at << " = " << int{value});
            Bytes bytes = whole;
            bytes[at] = value;
            const Bytes before = contentsOf(clip);
            const bool loads = loadBytes(bytes);
            EXPECT_LOGGED_EXACTLY(loads ? loaded : at < separatorAt ? invalidHeader : corrupted);
            EXPECT_TRUE(loads || before == contentsOf(clip));
            ++(loads ? good : refused);
            if (HasFailure())
                return;
        }
    EXPECT_GT(good, 400u);
    EXPECT_GT(refused, 60u);
}

TEST_F(RvaFile, ForeignFilesHaveAnInvalidHeader) {
    Bytes older = bytesOf(randomClip(1, 1));
    older[12] = '5'; // there is no older format
    for (const Bytes &bytes : {Bytes(), Bytes(5000, 'R'), older})
        expectRefused(bytes, invalidHeader);
}

TEST_F(RvaFile, NamesWithoutAFileAreRefused) {
    expectNamesWithoutAFileAreRefused(
        {"   [!] Invalid params or file not found @ RVANIM::load\n",
         "   [!] Out of memory for file %s @ RVANIM::load\n",
         [this](const char *name) { return clip.load(name); }, RVANIM::setRVAPath,
         "\n   Loading RVA file 'folder/missing'...\n"
         "   [!] Unable to open file folder/missing @ RVANIM::load\n"});
}

TEST_F(RvaFile, FileThatCannotBeReadWholeIsRefused) {
    const Bytes bytes = bytesOf(randomClip(20, 20));
    {
        const ShortReads shortReads;
        expectRefused(bytes, loading + "   [!] Corrupted file clip.rva @ RVANIM::load\n");
    }
    const Bytes before = contentsOf(clip);
    writeFile("clip.rva", bytes);
    markLog();
    recorder.failAllocation(bytes.size());
    EXPECT_FALSE(clip.load("clip.rva"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY(loading + "   [!] Out of memory for file clip.rva @ RVANIM::load\n");
    EXPECT_TRUE(before == contentsOf(clip));
    EXPECT_TRUE(clip.load("clip.rva"));
}

// --- Saving

TEST_F(RvaFile, ClipMadeBySettersIsSaved) {
    clip.setNumberOfBones(2);
    clip.setNumberOfFrames(3);
    clip.setBoneName(0, "hips");
    clip.setBoneName(1, "arm");
    clip.setFrame(0, 0, 0, 0, 0);
    clip.setFrame(3, 0, 30, 60, 90);
    clip.createKeyframes(0, 3);
    clip.getKeyframe(2, 1)->translation.set(1, 2, 3);
    EXPECT_TRUE(clip.save("saved.rva"));

    RvaClip wanted{{"hips", "arm"}, {3, std::vector<RvaEntry>(2)}};
    wanted.frames[0][0].set = true;
    wanted.frames[1][0].rotation = {10, 20, 30};
    wanted.frames[2][0].rotation = {20, 40, 60};
    wanted.frames[2][1].translation = {1, 2, 3};
    EXPECT_EQ(readFile("saved.rva"), bytesOf(wanted));
}

TEST_F(RvaFile, SaveReplacesTheFileOfThatNameAloneAndDoesNotStoreTheName) {
    writeFile("saved.rva", Bytes(10000, 'x'));
    RVANIM::setRVAPath("no such folder/");
    const std::string name = clip.getFilename();
    EXPECT_TRUE(clip.save("saved.rva"));
    EXPECT_EQ(readFile("saved.rva"), bytesOf(randomClip(0, 0)));
    EXPECT_EQ(clip.getFilename(), name);
}

TEST_F(RvaFile, NameOf255CharactersIsCutByOneInTheFile) {
    for (const std::size_t length : {253u, 254u, 255u}) {
        clip.setNumberOfBones(2);
        clip.setBoneName(0, std::string(length, 'n').c_str());
        clip.setBoneName(1, "next");
        ASSERT_TRUE(clip.save("saved.rva"));
        const std::size_t saved = std::min<std::size_t>(length, 254);
        EXPECT_EQ(readFile("saved.rva"), bytesOf({{std::string(saved, 'n'), "next"}, {}}));
        EXPECT_EQ(clip.getBoneName(0), std::string(length, 'n'));
    }
}

TEST_F(RvaFile, SaveRefusesNoNameAFileThatCannotBeOpenedAndCountsBeyondTheStorage) {
    EXPECT_FALSE(clip.save(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::save\n");
    EXPECT_FALSE(clip.save("no such folder/clip.rva"));
    EXPECT_LOGGED_EXACTLY("\n   Saving RVA file 'no such folder/clip.rva'...\n"
                          "   [!] Unable to open file no such folder/clip.rva @ RVANIM::save\n");
    writeFile("saved.rva", {'o', 'l', 'd'});
    for (const auto &[bones, frames] : {std::pair{129u, 0u}, {0u, 1025u}, {65535u, 65535u}}) {
        clip.setNumberOfBones(bones);
        clip.setNumberOfFrames(frames);
        EXPECT_FALSE(clip.save("saved.rva"));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVANIM::save\n");
    }
    EXPECT_EQ(readFile("saved.rva"), (Bytes{'o', 'l', 'd'}));
}

// The log grows under the same limit, so the clip has to be larger than it.
TEST_F(RvaFile, FullDiskIsDetectedWhereverItEnds) {
    const Bytes whole = bytesOf(randomClip(128, 128));
    ASSERT_TRUE(loadBytes(whole));
    constexpr std::size_t minimum = 300000;
    ASSERT_LT(logMark(), minimum - 50000);
    std::vector<std::size_t> rooms = {whole.size() - 1, whole.size() - 24, whole.size() - 4097};
    for (std::size_t room = minimum; room < whole.size(); room += 10007)
        rooms.push_back(room);
    for (const std::size_t room : rooms) {
        markLog();
        {
            const FileLimit limit(RLIMIT_FSIZE, room);
            EXPECT_FALSE(clip.save("saved.rva")) << room;
        }
        EXPECT_LOGGED_EXACTLY(notWritten);
        EXPECT_EQ(readFile("saved.rva"),
                  Bytes(whole.begin(), whole.begin() + static_cast<long>(room)));
    }
    const FileLimit limit(RLIMIT_FSIZE, whole.size());
    EXPECT_TRUE(clip.save("saved.rva"));
}

TEST_F(RvaFile, FullDeviceIsDetectedInSmallClipsAndLargeOnes) {
    std::filesystem::remove("saved.rva");
    std::filesystem::create_symlink("/dev/full", "saved.rva");
    for (const std::size_t frames : {1u, 1000u}) {
        ASSERT_TRUE(loadBytes(bytesOf(randomClip(3, frames))));
        markLog();
        EXPECT_FALSE(clip.save("saved.rva"));
        EXPECT_LOGGED_EXACTLY(notWritten);
    }
    EXPECT_TRUE(std::filesystem::is_symlink("saved.rva"));
    std::filesystem::remove("saved.rva");
}

// --- The writer of the tool

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
