#include "resources/tga.h"

#include "tests/resources/tgaFiles.h"
#include "tests/support/fileLimit.h"
#include "tools/writers/tgaWriter.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace ravolt {

namespace {

using namespace test;

// The pixels of a file that must be good, or nothing.
Bytes decoded(const Bytes &file) {
    TgaImage image;
    EXPECT_EQ(TgaResult::ok, inspectTga(file.data(), file.size(), image));
    if (image.kind == TgaKind::unsupported)
        return {};
    Bytes pixels(image.bytes());
    decodeTga(image, pixels.data());
    return pixels;
}

TgaResult inspected(const Bytes &file) {
    TgaImage image;
    return inspectTga(file.data(), file.size(), image);
}

// A block of exactly this size, so that the sanitizer sees a step over its end.
struct ExactCopy {
    explicit ExactCopy(const unsigned char *from, std::size_t size)
        : bytes(new unsigned char[size]) {
        std::copy(from, from + size, bytes);
    }
    ~ExactCopy() { delete[] bytes; }
    ExactCopy(const ExactCopy &) = delete;
    ExactCopy &operator=(const ExactCopy &) = delete;
    unsigned char *bytes;
};

TEST(Tga, SwapsBlueAndRedOf24Bits) {
    EXPECT_EQ((Bytes{3, 2, 1, 6, 5, 4}),
              decoded(tgaHeader(plainType, 2, 1, 24) + Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(Tga, SwapsBlueAndRedOf32BitsAndKeepsAlpha) {
    EXPECT_EQ((Bytes{3, 2, 1, 9, 6, 5, 4, 8}),
              decoded(tgaHeader(plainType, 2, 1, 32) + Bytes{1, 2, 3, 9, 4, 5, 6, 8}));
}

TEST(Tga, KeepsRowsOfDescriptorsBelow16AndReversesTheOthers) {
    const Bytes rows = {1, 1, 1, 2, 2, 2, 3, 3, 3};
    const Bytes reversed = {3, 3, 3, 2, 2, 2, 1, 1, 1};
    for (const unsigned int descriptor : {0, 1, 8, 15})
        EXPECT_EQ(rows, decoded(tgaHeader(plainType, 1, 3, 24, descriptor) + rows)) << descriptor;
    for (const unsigned int descriptor : {16, 32, 40, 47, 128, 255})
        EXPECT_EQ(reversed, decoded(tgaHeader(plainType, 1, 3, 24, descriptor) + rows))
            << descriptor;
}

TEST(Tga, ReversesWholeRowsOfRunLengthFilesToo) {
    const Bytes file = tgaHeader(packedType, 2, 2, 32, 40) +
                       Bytes{0x81, 1, 2, 3, 4, 0x01, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_EQ((Bytes{7, 6, 5, 8, 11, 10, 9, 12, 3, 2, 1, 4, 3, 2, 1, 4}), decoded(file));
}

TEST(Tga, PacketByte127Is128LiteralPixels) {
    const Bytes pixels = pattern(128 * 3);
    Bytes swapped = pixels;
    for (std::size_t i = 0; i < swapped.size(); i += 3)
        std::swap(swapped[i], swapped[i + 2]);
    EXPECT_EQ(swapped, decoded(tgaHeader(packedType, 128, 1, 24) + Bytes{127} + pixels));
}

TEST(Tga, PacketByte128IsOneRepeatedPixel) {
    EXPECT_EQ((Bytes{3, 2, 1, 6, 5, 4}),
              decoded(tgaHeader(packedType, 2, 1, 24) + Bytes{128, 1, 2, 3, 128, 4, 5, 6}));
}

TEST(Tga, PacketByte255Is128RepeatedPixels) {
    EXPECT_EQ(repeated(128, {3, 2, 1}),
              decoded(tgaHeader(packedType, 16, 8, 24) + Bytes{255, 1, 2, 3}));
}

TEST(Tga, BytesBehindTheImageAreLeftAlone) {
    EXPECT_EQ((Bytes{3, 2, 1}),
              decoded(tgaHeader(plainType, 1, 1, 24) + Bytes{1, 2, 3} + Bytes(26, 'x')));
    EXPECT_EQ((Bytes{3, 2, 1}),
              decoded(tgaHeader(packedType, 1, 1, 24) + Bytes{0, 1, 2, 3} + Bytes(26, 'x')));
}

TEST(Tga, RunPastTheEndOfTheImageIsCorrupted) {
    EXPECT_EQ(TgaResult::corrupted,
              inspected(tgaHeader(packedType, 3, 1, 24) + Bytes{0x83, 1, 2, 3}));
    EXPECT_EQ(TgaResult::corrupted,
              inspected(tgaHeader(packedType, 1, 1, 24) + Bytes{1, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(TgaResult::ok, inspected(tgaHeader(packedType, 3, 1, 24) + Bytes{0x82, 1, 2, 3}));
}

TEST(Tga, RunPastTheEndOfTheFileIsCorrupted) {
    EXPECT_EQ(TgaResult::corrupted,
              inspected(tgaHeader(packedType, 2, 1, 24) + Bytes{1, 1, 2, 3, 4, 5}));
    EXPECT_EQ(TgaResult::corrupted,
              inspected(tgaHeader(packedType, 2, 1, 32) + Bytes{0x81, 1, 2, 3}));
    EXPECT_EQ(TgaResult::corrupted,
              inspected(tgaHeader(packedType, 2, 1, 24) + Bytes{0x80, 1, 2, 3}));
}

TEST(Tga, SizesReachFrom1To4096) {
    for (const unsigned int bad : {0u, 4097u, 65535u}) {
        EXPECT_EQ(TgaResult::unsupportedDepthOrSizes,
                  inspected(tgaHeader(plainType, bad, 1, 24) + Bytes(64)));
        EXPECT_EQ(TgaResult::unsupportedDepthOrSizes,
                  inspected(tgaHeader(plainType, 1, bad, 24) + Bytes(64)));
    }
    EXPECT_EQ(TgaResult::ok, inspected(tgaHeader(plainType, 4096, 1, 24) + Bytes(4096 * 3)));
    EXPECT_EQ(TgaResult::ok, inspected(tgaHeader(plainType, 1, 4096, 32) + Bytes(4096 * 4)));
}

TEST(Tga, OnlyDepthsOf24And32BitsAreSupported) {
    for (const unsigned int bits : {0, 1, 8, 15, 16, 23, 25, 33, 255})
        EXPECT_EQ(TgaResult::unsupportedDepthOrSizes,
                  inspected(tgaHeader(plainType, 1, 1, bits) + Bytes(64)))
            << bits;
}

TEST(Tga, AnyOtherStartIsOfAnUnsupportedKindWhateverItsBody) {
    for (std::size_t position = 0; position < 12; ++position) {
        Bytes file = tgaHeader(plainType, 40, 30, 24);
        file[position] = 9;
        TgaImage image;
        EXPECT_EQ(TgaResult::ok, inspectTga(file.data(), file.size(), image)) << position;
        EXPECT_EQ(TgaKind::unsupported, image.kind) << position;
        EXPECT_EQ(40u, image.width);
        EXPECT_EQ(30u, image.height);
        EXPECT_EQ(3u, image.depth);
    }
}

TEST(Tga, NoHeaderIsCorrupted) {
    const Bytes header = tgaHeader(plainType, 1, 1, 24);
    for (std::size_t size = 0; size < header.size(); ++size) {
        const ExactCopy cut(header.data(), size);
        TgaImage image;
        EXPECT_EQ(TgaResult::corrupted, inspectTga(cut.bytes, size, image)) << size;
    }
}

struct Sample {
    const char *name;
    TgaEncoding encoding;
    unsigned int channels;
    friend void PrintTo(const Sample &row, std::ostream *out) { *out << row.name; }
};

class TgaSamples : public testing::TestWithParam<Sample> {
  protected:
    // Runs and literals, some longer than a packet.
    Bytes pixels(unsigned int width, unsigned int height) const {
        Bytes all = pattern(std::size_t(width) * height * GetParam().channels);
        for (std::size_t i = all.size() / 4; i < all.size() / 2; ++i)
            all[i] = all[i % GetParam().channels];
        return all;
    }
    Bytes file(const Bytes &from, unsigned int width, unsigned int height, bool topRowFirst) const {
        return encodeTga({width, height, GetParam().channels, topRowFirst, from.data()},
                         GetParam().encoding);
    }
};

TEST_P(TgaSamples, WriterAndReaderAgree) {
    for (const unsigned int width : {1u, 2u, 3u, 127u, 128u, 129u, 300u})
        for (const unsigned int height : {1u, 2u, 5u}) {
            const Bytes wanted = pixels(width, height);
            EXPECT_EQ(wanted, decoded(file(wanted, width, height, false))) << width;

            Bytes upsideDown;
            const std::size_t row = wanted.size() / height;
            for (std::size_t y = height; y-- > 0;)
                upsideDown.insert(upsideDown.end(), wanted.begin() + static_cast<long>(y * row),
                                  wanted.begin() + static_cast<long>((y + 1) * row));
            EXPECT_EQ(wanted, decoded(file(upsideDown, width, height, true))) << width;
        }
}

TEST_P(TgaSamples, CutAtAnyByteIsCorrupted) {
    const Bytes whole = file(pixels(16, 12), 16, 12, false);
    ASSERT_EQ(TgaResult::ok, inspected(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const ExactCopy cut(whole.data(), size);
        TgaImage image;
        EXPECT_EQ(TgaResult::corrupted, inspectTga(cut.bytes, size, image)) << size;
    }
}

TEST_P(TgaSamples, AnyByteChangedIsReadOrRefusedInsideTheBuffers) {
    const Bytes whole = file(pixels(40, 30), 40, 30, false);
    for (std::size_t position = 0; position < whole.size() && position < 4096; ++position)
        for (const unsigned char value : {0, 1, 127, 128, 255}) {
            const ExactCopy changed(whole.data(), whole.size());
            changed.bytes[position] = value;
            TgaImage image;
            if (inspectTga(changed.bytes, whole.size(), image) != TgaResult::ok ||
                image.kind == TgaKind::unsupported)
                continue;
            ASSERT_LE(image.bytes(), std::size_t(4096) * 4096 * 4);
            Bytes target(image.bytes());
            decodeTga(image, target.data());
        }
}

INSTANTIATE_TEST_SUITE_P(Kinds, TgaSamples,
                         testing::Values(Sample{"plain24", TgaEncoding::uncompressed, 3},
                                         Sample{"plain32", TgaEncoding::uncompressed, 4},
                                         Sample{"packed24", TgaEncoding::runLength, 3},
                                         Sample{"packed32", TgaEncoding::runLength, 4}),
                         [](const testing::TestParamInfo<Sample> &instance) {
                             return instance.param.name;
                         });

TEST(TgaWriter, MakesPlainBytes) {
    const Bytes pixels = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(tgaHeader(plainType, 1, 2, 24, 32) + (Bytes{3, 2, 1, 6, 5, 4}),
              encodeTga({1, 2, 3, true, pixels.data()}));
}

TEST(TgaWriter, MakesPacketsThatEndWithTheRow) {
    const Bytes pixels = repeated(6, {1, 2, 3, 4});
    EXPECT_EQ(tgaHeader(packedType, 3, 2, 32, 8) + repeated(2, {0x82, 3, 2, 1, 4}),
              encodeTga({3, 2, 4, false, pixels.data()}, TgaEncoding::runLength));
}

TEST(TgaWriter, LiteralsEndBeforeARun) {
    const Bytes pixels = {1, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3};
    EXPECT_EQ(tgaHeader(packedType, 4, 1, 24) + (Bytes{1, 1, 1, 1, 2, 2, 2, 0x81, 3, 3, 3}),
              encodeTga({4, 1, 3, false, pixels.data()}, TgaEncoding::runLength));
}

TEST(TgaWriter, SaysWhenTheFileCannotBeWritten) {
    const Bytes pixels = {1, 2, 3};
    EXPECT_FALSE(writeTga("no/such/folder.tga", {1, 1, 3, false, pixels.data()}));
    EXPECT_TRUE(writeTga("good.tga", {1, 1, 3, false, pixels.data()}));
    EXPECT_EQ(tgaHeader(plainType, 1, 1, 24) + (Bytes{3, 2, 1}), readFile("good.tga"));
}

TEST(TgaWriter, LeavesNoPartOfAFile) {
    const Bytes pixels(32 * 32 * 3);
    const TgaPicture picture{32, 32, 3, false, pixels.data()};
    {
        const FileLimit limit(RLIMIT_FSIZE, 1000);
        EXPECT_FALSE(writeTga("part.tga", picture));
    }
    EXPECT_FALSE(std::filesystem::exists("part.tga"));
    EXPECT_TRUE(writeTga("part.tga", picture));
}

TEST(TgaWriter, LeavesAFileThatItCannotOpenAndADevice) {
    const Bytes pixels(32 * 32 * 3);
    const TgaPicture picture{32, 32, 3, false, pixels.data()};
    ASSERT_TRUE(writeTga("old.tga", picture));
    {
        const FileLimit limit(RLIMIT_NOFILE, 0);
        EXPECT_FALSE(writeTga("old.tga", picture));
    }
    EXPECT_EQ(std::filesystem::file_size("old.tga"), tgaHeaderSize + pixels.size());

    std::filesystem::remove("full");
    std::filesystem::create_symlink("/dev/full", "full");
    EXPECT_FALSE(writeTga("full", picture));
    EXPECT_TRUE(std::filesystem::is_symlink("full"));
}

} // namespace

} // namespace ravolt
