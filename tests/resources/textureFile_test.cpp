// RVTEXTURE as a reader of files and as a registry: all that needs no OpenGL.

#include "ravolt/RVTEXTURE.h"

#include "ravolt/zlf.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"
#include "tests/support/shortReads.h"
#include "tools/writers/tgaWriter.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace ravolt::test {

namespace {

unsigned int nextId() {
    const unsigned int id = zlfNewId();
    releaseId(id);
    return id;
}

Bytes bitmapOf(const RVTEXTURE &texture, unsigned int depth) {
    const unsigned char *start = texture.getBitmap();
    return Bytes(start, start + std::size_t(texture.getSizeX()) * texture.getSizeY() * depth);
}

class TextureFile : public RecorderTest {
  protected:
    TextureFile() : texture(*new RVTEXTURE) {}

    void SetUp() override {
        RVTEXTURE::setPath(nullptr);
        usedBefore = RVTEXTURE::getUsedMemory();
        markLog();
    }
    void TearDown() override {
        recorder.reset();
        RVTEXTURE::cleanUp();
        zlfSetConsoleEcho(true);
    }

    int used() const { return RVTEXTURE::getUsedMemory() - usedBefore; }

    RVTEXTURE &texture; // the registry's
    int usedBefore = 0;
};

TEST_F(TextureFile, NewTextureHasItsDefaults) {
    EXPECT_EQ(texture.getFilename(), "[texture " + std::to_string(texture.getId()) + "]");
    EXPECT_NE(texture.getId(), 0u);
    EXPECT_EQ(texture.getTimeStamp(), 0);
    EXPECT_EQ(texture.getReferences(), 0);
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(texture.getSizeX(), 0u);
    EXPECT_EQ(texture.getSizeY(), 0u);
    EXPECT_EQ(texture.getGLId(), 0u);
    EXPECT_FALSE(texture.isLoaded());
    EXPECT_TRUE(texture.isTrilinear());
    EXPECT_TRUE(texture.isMipmapped());
    EXPECT_FALSE(texture.isClamped());
    EXPECT_EQ(texture.getNext(), nullptr);
    EXPECT_EQ(texture.getPrevious(), nullptr);
}

TEST_F(TextureFile, SettersKeepWhatTheyAreGiven) {
    EXPECT_TRUE(texture.setFilter(false, false, true));
    EXPECT_FALSE(texture.isTrilinear());
    EXPECT_FALSE(texture.isMipmapped());
    EXPECT_TRUE(texture.isClamped());
    texture.setCubeType(7);
    texture.decReferences();
    EXPECT_EQ(texture.getReferences(), -1);
    texture.incReferences();
    texture.incReferences();
    EXPECT_EQ(texture.getReferences(), 1);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureFile, LoadKeepsPixelsSizesAndName) {
    writeFile("two.tga", tgaHeader(plainType, 1, 2, 24) + Bytes{3, 2, 1, 6, 5, 4});
    EXPECT_TRUE(texture.load("two.tga"));
    EXPECT_STREQ(texture.getFilename(), "two.tga");
    EXPECT_EQ(texture.getSizeX(), 1u);
    EXPECT_EQ(texture.getSizeY(), 2u);
    EXPECT_EQ(bitmapOf(texture, 3), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_FALSE(texture.isLoaded());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureFile, FilesOfBothKindsAndBothOriginsLoad) {
    const Bytes pixels = pattern(5 * 4 * 4);
    for (const TgaEncoding encoding : {TgaEncoding::uncompressed, TgaEncoding::runLength})
        for (const unsigned int channels : {3u, 4u})
            for (const bool top : {false, true}) {
                ASSERT_TRUE(writeTga("any.tga", {5, 4, channels, top, pixels.data()}, encoding));
                ASSERT_TRUE(texture.load("any.tga"));
                const Bytes loaded = bitmapOf(texture, channels);
                const std::size_t row = 5 * channels;
                for (std::size_t y = 0; y < 4; ++y)
                    EXPECT_TRUE(
                        std::equal(loaded.begin() + static_cast<long>(y * row),
                                   loaded.begin() + static_cast<long>((y + 1) * row),
                                   pixels.begin() + static_cast<long>((top ? 3 - y : y) * row)))
                        << channels << top << y;
            }
}

TEST_F(TextureFile, PathStandsBeforeTheNameAndNotInIt) {
    mkdir("path", 0777);
    writeFile("path/x1.tga", plainTga(1, 1));
    RVTEXTURE::setPath("path/x");
    EXPECT_STREQ(RVTEXTURE::getPath(), "path/x");
    EXPECT_TRUE(texture.load("1.tga"));
    EXPECT_STREQ(texture.getFilename(), "1.tga");
    RVTEXTURE::setPath(nullptr);
    EXPECT_STREQ(RVTEXTURE::getPath(), "");
}

TEST_F(TextureFile, OverlongNameIsCut) {
    const std::string name = std::string(150, '.') + "/" + std::string(150, 'n');
    mkdir(std::string(150, '.').c_str(), 0777);
    writeFile(name, plainTga(1, 1));
    EXPECT_TRUE(texture.load(name.c_str()));
    EXPECT_EQ(texture.getFilename(), name.substr(0, 255));
    EXPECT_EQ(RVTEXTURE::findById(texture.getId())->getId(), texture.getId());
}

TEST_F(TextureFile, LoadOfADynamicTextureChangesNothing) {
    writeFile("[dynamic]", plainTga(1, 1));
    const std::string name = texture.getFilename();
    EXPECT_TRUE(texture.load("[dynamic]"));
    EXPECT_EQ(texture.getFilename(), name);
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(used(), 0);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureFile, WhatIsNoFileIsReported) {
    EXPECT_FALSE(texture.load(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE@loadTGA\n");
    mkdir("folder", 0777);
    EXPECT_FALSE(texture.load("folder"));
    EXPECT_LOGGED_EXACTLY("   [!] Unable to open file folder @ RVTEXTURE::loadTGA\n");
    RVTEXTURE::setPath("no/");
    EXPECT_FALSE(texture.load("where.tga"));
    EXPECT_LOGGED_EXACTLY("   [!] Unable to open file no/where.tga @ RVTEXTURE::loadTGA\n");
}

TEST_F(TextureFile, FailedLoadKeepsNameAndPixels) {
    writeFile("good.tga", plainTga(2, 2));
    writeFile("cut.tga", Bytes(17));
    writeFile("file.tga", plainTga(32, 32));
    ASSERT_TRUE(texture.load("good.tga"));
    EXPECT_FALSE(texture.load("none.tga"));
    EXPECT_FALSE(texture.load("cut.tga"));
    markLog();
    {
        const ShortReads shortReads;
        EXPECT_FALSE(texture.load("file.tga"));
    }
    EXPECT_LOGGED_EXACTLY("   [!] File corrupted file.tga @ RVTEXTURE::loadTGA\n");
    recorder.failAllocation(32 * 32 * 3);
    EXPECT_FALSE(texture.load("file.tga"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for file.tga @ RVTEXTURE::loadTGA\n");
    EXPECT_STREQ(texture.getFilename(), "good.tga");
    EXPECT_EQ(bitmapOf(texture, 3), repeated(4, {10, 20, 30}));
    EXPECT_EQ(used(), 16);
    EXPECT_TRUE(texture.load("file.tga"));
}

struct BadFile {
    const char *name;
    Bytes bytes;
    const char *line;
    friend void PrintTo(const BadFile &row, std::ostream *out) { *out << row.name; }
};

class BadTextureFile : public TextureFile, public testing::WithParamInterface<BadFile> {};

TEST_P(BadTextureFile, IsRefusedWithOneLineAndNothingChanges) {
    writeFile("bad.tga", GetParam().bytes);
    const std::string name = texture.getFilename();
    const unsigned int id = nextId();
    EXPECT_FALSE(texture.load("bad.tga"));
    EXPECT_LOGGED_EXACTLY(GetParam().line);
    EXPECT_EQ(texture.getFilename(), name);
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(texture.getSizeX(), 0u);
    EXPECT_EQ(used(), 0);
    EXPECT_EQ(nextId(), id);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
}

constexpr char unsupportedSizes[] =
    "   [!] Unsupported depth or sizes for bad.tga @ RVTEXTURE::loadTGA\n";
constexpr char corrupted[] = "   [!] File corrupted bad.tga @ RVTEXTURE::loadTGA\n";

INSTANTIATE_TEST_SUITE_P(
    Table, BadTextureFile,
    testing::Values(
        BadFile{"width4097", tgaHeader(plainType, 4097, 1, 24) + Bytes(4097 * 3), unsupportedSizes},
        BadFile{"height4097", tgaHeader(plainType, 1, 4097, 24) + Bytes(4097 * 3),
                unsupportedSizes},
        BadFile{"width0", tgaHeader(plainType, 0, 1, 24) + Bytes(64), unsupportedSizes},
        BadFile{"height0", tgaHeader(plainType, 1, 0, 24) + Bytes(64), unsupportedSizes},
        BadFile{"bits16", tgaHeader(plainType, 4, 4, 16) + Bytes(32), unsupportedSizes},
        BadFile{"bits8", tgaHeader(plainType, 4, 4, 8) + Bytes(16), unsupportedSizes},
        BadFile{"empty", {}, corrupted}, BadFile{"halfAHeader", Bytes(9), corrupted},
        BadFile{"noPixels", tgaHeader(plainType, 4, 4, 24), corrupted},
        BadFile{"noPackets", tgaHeader(packedType, 4, 4, 24), corrupted},
        BadFile{"cutPixels", tgaHeader(plainType, 2, 2, 32) + Bytes(15), corrupted},
        BadFile{"packetPastImage", tgaHeader(packedType, 2, 2, 24) + Bytes{0x84, 1, 2, 3},
                corrupted},
        BadFile{"packetPastFile", tgaHeader(packedType, 2, 2, 24) + Bytes{3, 1, 2, 3}, corrupted}),
    [](const testing::TestParamInfo<BadFile> &instance) { return instance.param.name; });

TEST_F(TextureFile, LargestSizePasses) {
    writeFile("large.tga",
              tgaHeader(packedType, 4096, 4096, 24) + repeated(4096 * 32, {255, 3, 2, 1}));
    EXPECT_TRUE(texture.load("large.tga"));
    EXPECT_EQ(texture.getSizeX(), 4096u);
    EXPECT_EQ(texture.getSizeY(), 4096u);
    const unsigned char *last = texture.getBitmap() + (std::size_t(4096) * 4096 - 1) * 3;
    EXPECT_EQ((Bytes{1, 2, 3}), Bytes(last, last + 3));
    EXPECT_EQ(used(), 4096 * 4096 * 4);
}

TEST_F(TextureFile, NoMemoryForThePixelsIsReportedAndTheFormerOnesAreGone) {
    writeFile("good.tga", plainTga(1, 1));
    writeFile("packed.tga", tgaHeader(packedType, 64, 64, 24) + repeated(32, {255, 1, 2, 3}));
    ASSERT_TRUE(texture.load("good.tga"));
    ASSERT_EQ(used(), 4);
    recorder.failAllocation(64 * 64 * 3);
    EXPECT_FALSE(texture.load("packed.tga"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for packed.tga @ RVTEXTURE::loadTGA\n");
    EXPECT_STREQ(texture.getFilename(), "good.tga");
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(used(), 0);
}

TEST_F(TextureFile, OtherHeaderIsReportedAndCountsAsLoadedInBlack) {
    writeFile("other.tga", tgaHeader(3, 30, 20, 24) + Bytes(30 * 20 * 3));
    EXPECT_TRUE(texture.load("other.tga"));
    EXPECT_LOGGED_EXACTLY("   [!] Unsupported file header for other.tga @ RVTEXTURE::loadTGA\n");
    EXPECT_STREQ(texture.getFilename(), "other.tga");
    EXPECT_EQ(texture.getSizeX(), 30u);
    EXPECT_EQ(texture.getSizeY(), 20u);
    EXPECT_EQ(used(), 30 * 20 * 4);
    ASSERT_NE(texture.getBitmap(), nullptr);
    EXPECT_EQ(bitmapOf(texture, 3), Bytes(30 * 20 * 3));

    EXPECT_TRUE(texture.unload(true));
    EXPECT_LOGGED_EXACTLY("   other.tga unloaded\n");
    EXPECT_EQ(used(), 0);
}

TEST_F(TextureFile, OtherHeaderOf32BitsIsBlackInAllChannels) {
    writeFile("other.tga", tgaHeader(3, 5, 4, 32) + Bytes(5 * 4 * 4, 255));
    EXPECT_TRUE(texture.load("other.tga"));
    ASSERT_NE(texture.getBitmap(), nullptr);
    EXPECT_EQ(bitmapOf(texture, 4), Bytes(5 * 4 * 4));
}

TEST_F(TextureFile, OtherHeaderOverEarlierPixelsReplacesThem) {
    writeFile("good.tga", plainTga(4, 4));
    Bytes identifier = tgaHeader(plainType, 2, 2, 24);
    identifier[0] = 5;
    writeFile("identifier.tga", identifier);
    ASSERT_TRUE(texture.load("good.tga"));
    ASSERT_EQ(used(), 64);
    EXPECT_TRUE(texture.load("identifier.tga")); // an image identifier field
    EXPECT_EQ(used(), 16);
    ASSERT_NE(texture.getBitmap(), nullptr);
    EXPECT_EQ(bitmapOf(texture, 3), Bytes(2 * 2 * 3));
    EXPECT_TRUE(texture.load("good.tga"));
    EXPECT_EQ(used(), 64);
    EXPECT_EQ(bitmapOf(texture, 3), repeated(16, {10, 20, 30}));
}

TEST_F(TextureFile, EveryPixelCountsFourBytes) {
    const Bytes pixels = pattern(6 * 5 * 4);
    for (const unsigned int channels : {3u, 4u}) {
        ASSERT_TRUE(writeTga("count.tga", {6, 5, channels, false, pixels.data()}));
        ASSERT_TRUE(texture.load("count.tga"));
        EXPECT_EQ(used(), 6 * 5 * 4);
    }
    EXPECT_TRUE(texture.unload(true));
    EXPECT_EQ(used(), 0);
    EXPECT_EQ(texture.getBitmap(), nullptr);
}

TEST_F(TextureFile, UnloadSaysWhetherItFreedSomething) {
    writeFile("some.tga", plainTga(1, 1));
    ASSERT_TRUE(texture.load("some.tga"));
    EXPECT_FALSE(texture.unload(false));
    EXPECT_NE(texture.getBitmap(), nullptr);
    EXPECT_NOTHING_LOGGED();
    EXPECT_TRUE(texture.unload(true));
    EXPECT_LOGGED_EXACTLY("   some.tga unloaded\n");
    EXPECT_FALSE(texture.unload(true));
    EXPECT_NOTHING_LOGGED();
}

class TextureBadInput : public TextureFile {
  protected:
    // Loads "bad.tga", into a texture that may have pixels of the load before.
    void load(std::size_t position) {
        const LogMark mark = logMark();
        const bool loaded = texture.load("bad.tga");
        const std::vector<std::string> problems = problemsSince(mark);
        const bool otherKind =
            problems == std::vector<std::string>{
                            "   [!] Unsupported file header for bad.tga @ RVTEXTURE::loadTGA"};
        EXPECT_EQ(problems.empty() || otherKind, loaded) << position;
        EXPECT_LE(problems.size(), 1u) << position;
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
        EXPECT_EQ(nextId(), id) << position;
    }

    void SetUp() override {
        TextureFile::SetUp();
        zlfSetConsoleEcho(false);
        id = nextId();
    }

    const unsigned int sizeX = 40, sizeY = 30;
    unsigned int id = 0;
};

TEST_F(TextureBadInput, FileCutAtAnyByteIsRefused) {
    const Bytes pixels = pattern(sizeX * sizeY * 4);
    for (const TgaEncoding encoding : {TgaEncoding::uncompressed, TgaEncoding::runLength}) {
        const Bytes whole = encodeTga({sizeX, sizeY, 4, true, pixels.data()}, encoding);
        writeFile("bad.tga", whole);
        for (std::size_t size = whole.size(); size-- > 0;) {
            std::filesystem::resize_file("bad.tga", size);
            load(size);
            ASSERT_EQ(texture.getBitmap(), nullptr) << size;
        }
    }
}

TEST_F(TextureBadInput, AnyByteChangedLoadsOrIsRefused) {
    Bytes pixels = pattern(sizeX * sizeY * 3);
    std::fill(pixels.begin() + 300, pixels.begin() + 1800, static_cast<unsigned char>(77));
    for (const TgaEncoding encoding : {TgaEncoding::uncompressed, TgaEncoding::runLength}) {
        const Bytes whole = encodeTga({sizeX, sizeY, 3, false, pixels.data()}, encoding);
        writeFile("bad.tga", whole);
        // In place: to empty a file and fill it again takes a disk its time.
        std::fstream file("bad.tga", std::ios::in | std::ios::out | std::ios::binary);
        const auto put = [&](std::size_t position, unsigned char value) {
            file.seekp(static_cast<std::streamoff>(position)).put(static_cast<char>(value)).flush();
        };
        for (std::size_t position = 0; position < whole.size() && position < 4096; ++position) {
            for (const unsigned char value : {0, 1, 127, 128, 255}) {
                put(position, value);
                load(position);
            }
            put(position, whole[position]);
        }
        ASSERT_TRUE(file.good());
        EXPECT_TRUE(texture.load("bad.tga"));
        EXPECT_EQ(bitmapOf(texture, 3), pixels);
    }
}

TEST_F(TextureFile, CleanUpUnloadsPixelsWithALine) {
    writeFile("pixels.tga", plainTga(2, 1));
    ASSERT_TRUE(texture.load("pixels.tga"));
    EXPECT_TRUE(RVTEXTURE::cleanUp());
    EXPECT_LOGGED_EXACTLY("   pixels.tga unloaded\n   1 texture(s) released\n");
    EXPECT_EQ(used(), 0);
}

} // namespace

} // namespace ravolt::test
