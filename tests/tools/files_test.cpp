#include "tests/tools/support.h"
#include "tools/convert/files.h"
#include "tools/convert/images.h"

#include <gtest/gtest.h>

namespace {

using namespace tool_test;

TEST(TemporaryFolder, GoesAwayWithItsContents) {
    fs::path path;
    {
        const TemporaryFolder folder;
        path = folder.path();
        writeFile(path / "inside/file", "x");
        EXPECT_TRUE(fs::exists(path));
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(PlainName, KeepsLettersAndReplacesTheRest) {
    EXPECT_EQ(plainName("Wall-2_b.x"), "Wall-2_b.x");
    EXPECT_EQ(plainName("a b/c\\d:e"), "a_b_c_d_e");
    EXPECT_EQ(plainName(""), "_");
    EXPECT_EQ(plainName(".."), "_..");
    EXPECT_EQ(plainName(std::string(300, 'x')).size(), 96u);
}

Image plain(unsigned int width, unsigned int height, unsigned char value) {
    Image image;
    image.width = width;
    image.height = height;
    image.pixels.assign(std::size_t(4) * width * height, value);
    return image;
}

TEST(Images, BecomeSquaresOfAPowerOfTwo) {
    EXPECT_EQ(textureSide(1, 1, 4096), 1u);
    EXPECT_EQ(textureSide(256, 256, 4096), 256u);
    EXPECT_EQ(textureSide(257, 3, 4096), 512u);
    EXPECT_EQ(textureSide(640, 480, 4096), 1024u);
    EXPECT_EQ(textureSide(9000, 10, 4096), 4096u);
    EXPECT_EQ(textureSide(9000, 10, 1000), 512u); // the limit is rounded down
}

TEST(Images, KeepTheirColorWhenResized) {
    const Image image = resized(plain(3, 5, 200), 8, 8, true);
    ASSERT_EQ(image.pixels.size(), 256u);
    for (unsigned char value : image.pixels)
        EXPECT_NEAR(value, 200, 1);
}

TEST(Images, TakeOpacityFromAMapsBrightnessOrAlpha) {
    Image image = plain(2, 2, 255);
    Image dark = plain(1, 1, 0);
    dark.pixels[3] = 255; // no alpha of its own: its brightness counts
    applyOpacity(image, dark);
    EXPECT_EQ(image.pixels[3], 0);

    Image half = plain(1, 1, 255);
    half.pixels[3] = 128;
    applyOpacity(image, half);
    EXPECT_NEAR(image.pixels[3], 128, 1);
    EXPECT_TRUE(isSeeThrough(image));
    EXPECT_FALSE(isSeeThrough(plain(2, 2, 255)));
}

// A picture whose pixels have these alphas, `many` of each.
Image withAlphas(const std::vector<std::pair<int, unsigned int>> &alphas) {
    Image image;
    image.height = 1;
    for (const auto &[alpha, many] : alphas)
        for (unsigned int i = 0; i < many; ++i, ++image.width)
            image.pixels.insert(image.pixels.end(), {1, 2, 3, static_cast<unsigned char>(alpha)});
    return image;
}

TEST(Images, ShowWhatTheirAlphaIsFor) {
    EXPECT_EQ(alphaOf(plain(4, 4, 255)), Alpha::opaque);
    EXPECT_EQ(alphaOf(plain(4, 4, 0)), Alpha::opaque); // nobody filled it in
    EXPECT_EQ(alphaOf(plain(4, 4, 128)), Alpha::blended);
    EXPECT_EQ(alphaOf(withAlphas({{247, 996}, {0, 4}})), Alpha::opaque);
    EXPECT_EQ(alphaOf(withAlphas({{247, 995}, {8, 5}})), Alpha::cutout);
    EXPECT_EQ(alphaOf(withAlphas({{246, 995}, {8, 5}})), Alpha::blended);
    EXPECT_EQ(alphaOf(withAlphas({{255, 700}, {128, 200}, {0, 100}})), Alpha::cutout);
    EXPECT_EQ(alphaOf(withAlphas({{255, 699}, {128, 201}, {0, 100}})), Alpha::blended);
    EXPECT_EQ(alphaOf(withAlphas({{255, 950}, {128, 50}})), Alpha::blended); // no hole
    EXPECT_EQ(alphaOf(withAlphas({{0, 996}, {255, 4}})), Alpha::opaque);
}

TEST(Images, AreCutOutAtAThreshold) {
    Image image = withAlphas({{0, 1}, {127, 1}, {128, 1}, {255, 1}});
    cutOut(image, 128);
    EXPECT_EQ(image.pixels,
              (std::vector<unsigned char>{1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 255, 1, 2, 3, 255}));
}

TEST(Images, SayWhatIsWrongWithThem) {
    std::string reason;
    EXPECT_TRUE(decodeMemory(nullptr, 0, reason).empty());
    EXPECT_EQ(reason, "is empty");
    const unsigned char junk[] = "no picture at all";
    EXPECT_TRUE(decodeMemory(junk, sizeof junk, reason).empty());
    EXPECT_EQ(reason, "is in no picture format that is known here");
    const std::string cut = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\x02"
                                        "\0\0\0\0\0\0\0",
                                        33);
    EXPECT_TRUE(
        decodeMemory(reinterpret_cast<const unsigned char *>(cut.data()), cut.size(), reason)
            .empty());
    EXPECT_EQ(reason.rfind("is broken (", 0), 0u) << reason;
    EXPECT_TRUE(decodeFile("no/such/file", reason).empty());
}

TEST(Images, ReadRawTexelsOfAModel) {
    aiTexture texture;
    texture.mWidth = 1;
    texture.mHeight = 1;
    texture.pcData = new aiTexel[1];
    texture.pcData[0].r = 1;
    texture.pcData[0].g = 2;
    texture.pcData[0].b = 3;
    texture.pcData[0].a = 4;
    std::string reason;
    const Image image = decodeEmbedded(texture, reason);
    EXPECT_EQ(image.pixels, (std::vector<unsigned char>{1, 2, 3, 4}));

    texture.mWidth = 0xffffffff;
    texture.mHeight = 0xffffffff;
    EXPECT_TRUE(decodeEmbedded(texture, reason).empty());
    EXPECT_EQ(reason, "has an impossible size");
}

} // namespace
