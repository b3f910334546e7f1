// The reader of TGA files, and the writer that the tools and tests have.

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
    EXPECT_EQ(inspectTga(file.data(), file.size(), image), TgaResult::ok);
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

TEST(Tga, DecodesPixelsAndPackets) {
    const struct {
        const char *name;
        Bytes file, pixels;
    } rows[] = {
        {"24 bits swap blue and red",
         tgaHeader(plainType, 2, 1, 24) + Bytes{1, 2, 3, 4, 5, 6},
         {3, 2, 1, 6, 5, 4}},
        {"32 bits keep their alpha",
         tgaHeader(plainType, 2, 1, 32) + Bytes{1, 2, 3, 9, 4, 5, 6, 8},
         {3, 2, 1, 9, 6, 5, 4, 8}},
        {"whole rows of packets are reversed",
         tgaHeader(packedType, 2, 2, 32, 40) +
             Bytes{0x81, 1, 2, 3, 4, 0x01, 5, 6, 7, 8, 9, 10, 11, 12},
         {7, 6, 5, 8, 11, 10, 9, 12, 3, 2, 1, 4, 3, 2, 1, 4}},
        {"packet byte 128 is one repeated pixel",
         tgaHeader(packedType, 2, 1, 24) + Bytes{128, 1, 2, 3, 128, 4, 5, 6},
         {3, 2, 1, 6, 5, 4}},
        {"packet byte 255 is 128 repeated pixels",
         tgaHeader(packedType, 16, 8, 24) + Bytes{255, 1, 2, 3}, repeated(128, {3, 2, 1})},
        {"bytes after plain pixels are ignored",
         tgaHeader(plainType, 1, 1, 24) + Bytes{1, 2, 3} + Bytes(26, 'x'),
         {3, 2, 1}},
        {"bytes after packets are ignored",
         tgaHeader(packedType, 1, 1, 24) + Bytes{0, 1, 2, 3} + Bytes(26, 'x'),
         {3, 2, 1}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(decoded(row.file), row.pixels) << row.name;
}

TEST(Tga, ReversesRowsOfDescriptorsFrom16On) {
    const Bytes rows = {1, 1, 1, 2, 2, 2, 3, 3, 3};
    const Bytes reversed = {3, 3, 3, 2, 2, 2, 1, 1, 1};
    for (const unsigned int descriptor : {0, 1, 8, 15})
        EXPECT_EQ(decoded(tgaHeader(plainType, 1, 3, 24, descriptor) + rows), rows) << descriptor;
    for (const unsigned int descriptor : {16, 32, 40, 47, 128, 255})
        EXPECT_EQ(decoded(tgaHeader(plainType, 1, 3, 24, descriptor) + rows), reversed)
            << descriptor;
}

TEST(Tga, PacketByte127Is128LiteralPixels) {
    const Bytes pixels = pattern(128 * 3);
    Bytes swapped = pixels;
    for (std::size_t i = 0; i < swapped.size(); i += 3)
        std::swap(swapped[i], swapped[i + 2]);
    EXPECT_EQ(decoded(tgaHeader(packedType, 128, 1, 24) + Bytes{127} + pixels), swapped);
}

TEST(Tga, RunsEndWithTheImageAndTheFile) {
    const struct {
        const char *name;
        unsigned int width, bits;
        Bytes packets;
        TgaResult result;
    } rows[] = {
        {"up to the end", 3, 24, {0x82, 1, 2, 3}, TgaResult::ok},
        {"run past the image", 3, 24, {0x83, 1, 2, 3}, TgaResult::corrupted},
        {"literals past the image", 1, 24, {1, 1, 2, 3, 4, 5, 6}, TgaResult::corrupted},
        {"literals past the file", 2, 24, {1, 1, 2, 3, 4, 5}, TgaResult::corrupted},
        {"run past the file", 2, 32, {0x81, 1, 2, 3}, TgaResult::corrupted},
        {"a packet too few", 2, 24, {0x80, 1, 2, 3}, TgaResult::corrupted},
    };
    for (const auto &row : rows)
        EXPECT_EQ(inspected(tgaHeader(packedType, row.width, 1, row.bits) + row.packets),
                  row.result)
            << row.name;
}

TEST(Tga, ProblemsHaveTheirOffset) {
    const auto problemOf = [](const Bytes &file) {
        TgaImage image;
        FileProblem problem{1, "unset"};
        inspectTga(file.data(), file.size(), image, &problem);
        return std::to_string(problem.offset) + ": " + (problem.reason ? problem.reason : "none");
    };
    const Bytes header = tgaHeader(packedType, 2, 1, 24);
    EXPECT_EQ(problemOf(header + Bytes{0x81, 1, 2, 3}), "0: none");
    EXPECT_EQ(problemOf(header + Bytes{0x80, 1, 2, 3}), "22: it ends early");
    EXPECT_EQ(problemOf(header + Bytes{0x80, 1, 2, 3, 0x81, 1, 2, 3}),
              "22: a packet that is longer than the rest of the image");
    EXPECT_EQ(problemOf(tgaHeader(plainType, 2, 1, 8)),
              "12: neither 24 nor 32 bits a pixel, or a side of 0 or more than 4096 pixels");
}

TEST(Tga, SizesReachFrom1To4096) {
    for (const unsigned int bad : {0u, 4097u, 65535u}) {
        EXPECT_EQ(inspected(tgaHeader(plainType, bad, 1, 24) + Bytes(64)),
                  TgaResult::unsupportedDepthOrSizes);
        EXPECT_EQ(inspected(tgaHeader(plainType, 1, bad, 24) + Bytes(64)),
                  TgaResult::unsupportedDepthOrSizes);
    }
    EXPECT_EQ(inspected(tgaHeader(plainType, 4096, 1, 24) + Bytes(4096 * 3)), TgaResult::ok);
    EXPECT_EQ(inspected(tgaHeader(plainType, 1, 4096, 32) + Bytes(4096 * 4)), TgaResult::ok);
}

TEST(Tga, OnlyDepthsOf24And32BitsAreSupported) {
    for (const unsigned int bits : {0, 1, 8, 15, 16, 23, 25, 33, 255})
        EXPECT_EQ(inspected(tgaHeader(plainType, 1, 1, bits) + Bytes(64)),
                  TgaResult::unsupportedDepthOrSizes)
            << bits;
}

TEST(Tga, AnyOtherHeaderIsOfAnUnsupportedKindEvenWithoutABody) {
    for (std::size_t position = 0; position < 12; ++position) {
        Bytes file = tgaHeader(plainType, 40, 30, 24);
        file[position] = 9;
        TgaImage image;
        EXPECT_EQ(inspectTga(file.data(), file.size(), image), TgaResult::ok) << position;
        EXPECT_EQ(image.kind, TgaKind::unsupported) << position;
        EXPECT_EQ(image.width, 40u);
        EXPECT_EQ(image.height, 30u);
        EXPECT_EQ(image.depth, 3u);
    }
}

struct Sample {
    TgaEncoding encoding;
    unsigned int channels;

    // Runs and literals, some longer than a packet.
    Bytes pixels(unsigned int width, unsigned int height) const {
        Bytes all = pattern(std::size_t(width) * height * channels);
        for (std::size_t i = all.size() / 4; i < all.size() / 2; ++i)
            all[i] = all[i % channels];
        return all;
    }
    Bytes file(const Bytes &from, unsigned int width, unsigned int height, bool topRowFirst) const {
        return encodeTga({width, height, channels, topRowFirst, from.data()}, encoding);
    }
};

template <class Action> void forEachSample(Action action) {
    for (const TgaEncoding encoding : {TgaEncoding::uncompressed, TgaEncoding::runLength})
        for (const unsigned int channels : {3u, 4u}) {
            SCOPED_TRACE(testing::Message() << (encoding == TgaEncoding::runLength) << channels);
            action(Sample{encoding, channels});
        }
}

TEST(Tga, WriterAndReaderAgree) {
    forEachSample([](const Sample &sample) {
        for (const unsigned int width : {1u, 2u, 3u, 127u, 128u, 129u, 300u})
            for (const unsigned int height : {1u, 2u, 5u}) {
                const Bytes wanted = sample.pixels(width, height);
                EXPECT_EQ(decoded(sample.file(wanted, width, height, false)), wanted) << width;

                Bytes upsideDown;
                const auto row = static_cast<long>(wanted.size() / height);
                for (auto end = wanted.end(); end != wanted.begin(); end -= row)
                    upsideDown.insert(upsideDown.end(), end - row, end);
                EXPECT_EQ(decoded(sample.file(upsideDown, width, height, true)), wanted) << width;
            }
    });
}

TEST(Tga, CutAtAnyByteIsCorrupted) {
    forEachSample([](const Sample &sample) {
        const Bytes whole = sample.file(sample.pixels(16, 12), 16, 12, false);
        ASSERT_EQ(inspected(whole), TgaResult::ok);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const ExactCopy cut(whole.data(), size);
            TgaImage image;
            EXPECT_EQ(inspectTga(cut.bytes, size, image), TgaResult::corrupted) << size;
        }
    });
}

TEST(Tga, AnyByteChangedIsReadOrRefusedInsideTheBuffers) {
    forEachSample([](const Sample &sample) {
        const Bytes whole = sample.file(sample.pixels(40, 30), 40, 30, false);
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
    });
}

TEST(TgaWriter, EndsPacketsWithTheRowAndLiteralsBeforeARun) {
    const Bytes plain = {1, 2, 3, 4, 5, 6}, equal = repeated(6, {1, 2, 3, 4}),
                mixed = {1, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3};
    EXPECT_EQ(encodeTga({1, 2, 3, true, plain.data()}),
              tgaHeader(plainType, 1, 2, 24, 32) + (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(encodeTga({3, 2, 4, false, equal.data()}, TgaEncoding::runLength),
              tgaHeader(packedType, 3, 2, 32, 8) + repeated(2, {0x82, 3, 2, 1, 4}));
    EXPECT_EQ(encodeTga({4, 1, 3, false, mixed.data()}, TgaEncoding::runLength),
              tgaHeader(packedType, 4, 1, 24) + (Bytes{1, 1, 1, 1, 2, 2, 2, 0x81, 3, 3, 3}));
}

TEST(TgaWriter, ReturnsWhetherTheFileIsWritten) {
    const Bytes pixels = {1, 2, 3};
    EXPECT_FALSE(writeTga("no/such/folder.tga", {1, 1, 3, false, pixels.data()}));
    EXPECT_TRUE(writeTga("good.tga", {1, 1, 3, false, pixels.data()}));
    EXPECT_EQ(readFile("good.tga"), tgaHeader(plainType, 1, 1, 24) + (Bytes{3, 2, 1}));
}

TEST(TgaWriter, AFailedWriteLeavesNoPartAndNeitherAnOldFileNorADeviceIsRemoved) {
    const Bytes pixels(32 * 32 * 3);
    const TgaPicture picture{32, 32, 3, false, pixels.data()};
    {
        const FileLimit limit(RLIMIT_FSIZE, 1000);
        EXPECT_FALSE(writeTga("part.tga", picture));
    }
    EXPECT_FALSE(std::filesystem::exists("part.tga"));
    ASSERT_TRUE(writeTga("part.tga", picture));
    {
        const FileLimit limit(RLIMIT_NOFILE, 0);
        EXPECT_FALSE(writeTga("part.tga", picture));
    }
    EXPECT_EQ(std::filesystem::file_size("part.tga"), tgaHeaderSize + pixels.size());

    std::filesystem::remove("full");
    std::filesystem::create_symlink("/dev/full", "full");
    EXPECT_FALSE(writeTga("full", picture));
    EXPECT_TRUE(std::filesystem::is_symlink("full"));
}

} // namespace

} // namespace ravolt
