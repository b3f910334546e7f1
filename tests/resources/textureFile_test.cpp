// RVTEXTURE as a reader of files and as a registry: everything that needs no OpenGL. The bytes of
// damaged files are tested with the reader itself.

#include "ravolt/RVTEXTURE.h"

#include "ravolt/zlf.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"
#include "tests/support/shortReads.h"
#include "tools/writers/tgaWriter.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace ravolt::test {

namespace {

unsigned int nextId() {
    const unsigned int id = zlfNewId();
    releaseId(id);
    return id;
}

class TextureFile : public RecorderTest {
  protected:
    TextureFile() : texture(*new RVTEXTURE) {}

    void SetUp() override {
        RVTEXTURE::setPath(nullptr);
        writeFile("good.tga", plainTga(2, 2));
        usedBefore = RVTEXTURE::getUsedMemory();
        markLog();
    }
    void TearDown() override {
        recorder.reset();
        RVTEXTURE::cleanUp();
    }

    int used() const { return RVTEXTURE::getUsedMemory() - usedBefore; }

    Bytes pixels(unsigned int depth = 3) const {
        const unsigned char *start = texture.getBitmap();
        return start ? Bytes(start, start + texture.getSizeX() * texture.getSizeY() * depth)
                     : Bytes();
    }

    // Sizes and main memory of four bytes a pixel, and the pixels.
    void expectImage(unsigned int sizeX, unsigned int sizeY, const Bytes &expected) const {
        EXPECT_EQ(texture.getSizeX(), sizeX);
        EXPECT_EQ(texture.getSizeY(), sizeY);
        EXPECT_EQ(used(), static_cast<int>(sizeX * sizeY * 4));
        EXPECT_EQ(pixels(static_cast<unsigned int>(expected.size()) / (sizeX * sizeY)), expected);
    }

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

TEST_F(TextureFile, SettersStore) {
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

TEST_F(TextureFile, LoadStoresPixelsSizesAndName) {
    const struct {
        Bytes file, pixels;
    } cases[] = {
        {tgaHeader(plainType, 1, 2, 24) + Bytes{3, 2, 1, 6, 5, 4}, {1, 2, 3, 4, 5, 6}},
        {tgaHeader(packedType, 1, 2, 32, 32) + Bytes{1, 3, 2, 1, 9, 6, 5, 4, 8},
         {4, 5, 6, 8, 1, 2, 3, 9}}, // top row first
    };
    for (const auto &c : cases) {
        writeFile("two.tga", c.file);
        EXPECT_TRUE(texture.load("two.tga"));
        EXPECT_STREQ(texture.getFilename(), "two.tga");
        expectImage(1, 2, c.pixels);
        EXPECT_FALSE(texture.isLoaded());
        EXPECT_NOTHING_LOGGED();
    }
}

TEST_F(TextureFile, PathPrecedesTheNameAndIsNotPartOfIt) {
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

TEST_F(TextureFile, RefusedFilesAreLoggedAndChangeNothing) {
    const std::string sizes =
                          "   [!] Unsupported depth or sizes for bad.tga @ RVTEXTURE::loadTGA\n",
                      corrupted = "   [!] File corrupted bad.tga @ RVTEXTURE::loadTGA\n";
    const struct {
        const char *what;
        Bytes bytes;
        std::string line;
    } cases[] = {
        {"width 4097", tgaHeader(plainType, 4097, 1, 24) + Bytes(4097 * 3), sizes},
        {"height 4097", tgaHeader(plainType, 1, 4097, 24) + Bytes(4097 * 3), sizes},
        {"width 0", tgaHeader(plainType, 0, 1, 24) + Bytes(64), sizes},
        {"height 0", tgaHeader(plainType, 1, 0, 24) + Bytes(64), sizes},
        {"16 bits", tgaHeader(plainType, 4, 4, 16) + Bytes(32), sizes},
        {"8 bits", tgaHeader(plainType, 4, 4, 8) + Bytes(16), sizes},
        {"empty", {}, corrupted},
        {"half a header", Bytes(9), corrupted},
        {"no pixels", tgaHeader(plainType, 4, 4, 24), corrupted},
        {"no packets", tgaHeader(packedType, 4, 4, 24), corrupted},
        {"cut pixels", tgaHeader(plainType, 2, 2, 32) + Bytes(15), corrupted},
        {"packet past the image", tgaHeader(packedType, 2, 2, 24) + Bytes{0x84, 1, 2, 3},
         corrupted},
        {"packet past the file", tgaHeader(packedType, 2, 2, 24) + Bytes{3, 1, 2, 3}, corrupted},
    };
    ASSERT_TRUE(texture.load("good.tga"));
    const unsigned int id = nextId();
    const auto expectRefused = [&](const char *name, const std::string &line) {
        EXPECT_FALSE(texture.load(name));
        EXPECT_LOGGED_EXACTLY(line);
        EXPECT_STREQ(texture.getFilename(), "good.tga");
        expectImage(2, 2, repeated(4, {10, 20, 30}));
        EXPECT_EQ(nextId(), id);
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        writeFile("bad.tga", c.bytes);
        expectRefused("bad.tga", c.line);
    }
    expectRefused(nullptr, "   [!] Invalid params @ RVTEXTURE@loadTGA\n");
    mkdir("folder", 0777);
    expectRefused("folder", "   [!] Unable to open file folder @ RVTEXTURE::loadTGA\n");
    RVTEXTURE::setPath("no/");
    expectRefused("where.tga", "   [!] Unable to open file no/where.tga @ RVTEXTURE::loadTGA\n");
    RVTEXTURE::setPath(nullptr);

    writeFile("bad.tga", plainTga(32, 32));
    {
        const ShortReads shortReads;
        expectRefused("bad.tga", corrupted);
    }
    recorder.failAllocation(32 * 32 * 3); // the file's bytes
    expectRefused("bad.tga", "   [!] Out of memory for bad.tga @ RVTEXTURE::loadTGA\n");
    recorder.allocationsWork();
    EXPECT_TRUE(texture.load("bad.tga"));
}

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

TEST_F(TextureFile, WithoutMemoryForThePixelsTheFormerOnesAreDeleted) {
    writeFile("packed.tga", tgaHeader(packedType, 64, 64, 24) + repeated(32, {255, 1, 2, 3}));
    ASSERT_TRUE(texture.load("good.tga"));
    recorder.failAllocation(64 * 64 * 3);
    EXPECT_FALSE(texture.load("packed.tga"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for packed.tga @ RVTEXTURE::loadTGA\n");
    EXPECT_STREQ(texture.getFilename(), "good.tga");
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(used(), 0);
}

TEST_F(TextureFile, OtherHeadersAreLoggedAndLoadedAsBlack) {
    Bytes withIdentifier = tgaHeader(plainType, 2, 2, 24); // an image identifier field
    withIdentifier[0] = 5;
    const struct {
        Bytes file;
        unsigned int sizeX, sizeY, depth;
    } cases[] = {{tgaHeader(3, 30, 20, 24) + Bytes(30 * 20 * 3, 255), 30, 20, 3},
                 {tgaHeader(3, 5, 4, 32) + Bytes(5 * 4 * 4, 255), 5, 4, 4},
                 {withIdentifier, 2, 2, 3}};
    for (const auto &c : cases) {
        ASSERT_TRUE(texture.load("good.tga")); // replaced
        writeFile("other.tga", c.file);
        EXPECT_TRUE(texture.load("other.tga"));
        EXPECT_LOGGED_EXACTLY(
            "   [!] Unsupported file header for other.tga @ RVTEXTURE::loadTGA\n");
        EXPECT_STREQ(texture.getFilename(), "other.tga");
        expectImage(c.sizeX, c.sizeY, Bytes(c.sizeX * c.sizeY * c.depth));
    }
}

TEST_F(TextureFile, UnloadReturnsWhetherItFreedSomething) {
    ASSERT_TRUE(texture.load("good.tga"));
    EXPECT_FALSE(texture.unload(false));
    EXPECT_NE(texture.getBitmap(), nullptr);
    EXPECT_NOTHING_LOGGED();
    EXPECT_TRUE(texture.unload(true));
    EXPECT_LOGGED_EXACTLY("   good.tga unloaded\n");
    EXPECT_EQ(texture.getBitmap(), nullptr);
    EXPECT_EQ(used(), 0);
    EXPECT_FALSE(texture.unload(true));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureFile, CleanUpUnloadsPixelsWithALine) {
    ASSERT_TRUE(texture.load("good.tga"));
    EXPECT_TRUE(RVTEXTURE::cleanUp());
    EXPECT_LOGGED_EXACTLY("   good.tga unloaded\n   1 texture(s) released\n");
    EXPECT_EQ(used(), 0);
}

} // namespace

} // namespace ravolt::test
