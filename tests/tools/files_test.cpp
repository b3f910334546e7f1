#include "tests/tools/support.h"
#include "tools/common/temporaryFolder.h"
#include "tools/convert/images.h"
#include "tools/convert/plainName.h"

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

// An SGI file, rows from the bottom up, a plane for each channel.
std::string sgi(unsigned int width, unsigned int height, const std::string &planes) {
    const auto word = [](unsigned int value) {
        return std::string{static_cast<char>(value >> 8 & 255), static_cast<char>(value & 255)};
    };
    std::string file = "\x01\xda" + std::string(1, '\0') + "\x01" + word(3) + word(width) +
                       word(height) + word(3) + std::string(4, '\0') + std::string("\0\0\0\xff", 4);
    file.resize(512, '\0');
    return file + planes;
}

Image decodeText(const std::string &file, std::string &reason) {
    return decodeMemory(reinterpret_cast<const unsigned char *>(file.data()), file.size(), reason);
}

// The bytes of a text of hexadecimal digits.
std::string fromDigits(const std::string &digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

// Two by two pixels: red and green above blue and a dark grey.
const std::vector<std::pair<std::string, std::string>> fourPixels = {
    {"SGI", sgi(2, 2, {0, 9, '\xff', 0, 0, 9, 0, '\xff', '\xff', 9, 0, 0})},
    {"DDS",
     fromDigits("444453207c0000000f1000000200000002000000080000000000000001000000494d4147454d4147"
                "49434b00000000000000000000000000000000000000000000000000000000000000000020000000"
                "4100000000000000200000000000ff0000ff0000ff000000000000ff001000000000000000000000"
                "00000000000000000000ffff00ff00ffff0000ff090909ff")},
    {"TIFF",
     fromDigits("49492a0018000000ff0000ff00ff00ff0000ffff090909ff10000001030001000000020000000101"
                "030001000000020000000201030004000000de000000030103000100000001000000060103000100"
                "0000020000000a010300010000000100000011010400010000000800000012010300010000000100"
                "00001501030001000000040000001601030001000000020000001701040001000000100000001c01"
                "030001000000010000002901030002000000000001003e01050002000000160100003f0105000600"
                "0000e600000052010300010000000200000000000000080008000800080085eb510000008000c3f5"
                "a80000000002cdcc4c0000000001cdcc4c0000008000cdcc4c00000000028fc2f50000000010371a"
                "a000000000022b870a0000002000")},
    {"WEBP",
     fromDigits("5249464632000000574542505650384c250000002f014000001f20242088fe0f7643489090fdff57"
                "210141f47fb0f90f7c725470038688fe8700")},
    {"JP2",
     fromDigits("0000000c6a5020200d0a870a00000014667479706a703220000000006a7032200000004f6a703268"
                "000000166968647200000002000000020004070700000000000f636f6c7201000000000010000000"
                "22636465660004000000000001000100000002000200000003000300010000000000cd6a703263ff"
                "4fff5100320000000000020000000200000000000000000000000200000002000000000000000000"
                "04070101070101070101070101ff52000c00000001000104040001ff5c00074040484850ff640025"
                "000143726561746564206279204f70656e4a5045472076657273696f6e20322e352e30ff90000a00"
                "000000004f0001ff93c7d40409bfc7d40409d7c7d40409bfcfb40400c7da051f6814fcc08009bf09"
                "bf049fcfc00a3ed028fc0080049f09bf09cfc7da053f0028fc008009bf049f09cf80ffd9")},
    {"J2K",
     fromDigits("ff4fff51003200000000000200000002000000000000000000000002000000020000000000000000"
                "0004070101070101070101070101ff52000c00000001000104040001ff5c00074040484850ff6400"
                "25000143726561746564206279204f70656e4a5045472076657273696f6e20322e352e30ff90000a"
                "00000000004f0001ff93c7d40409bfc7d40409d7c7d40409bfcfb40400c7da051f6814fcc08009bf"
                "09bf049fcfc00a3ed028fc0080049f09bf09cfc7da053f0028fc008009bf049f09cf80ffd9")},
    {"PCX",
     fromDigits("0a050108000000000100010000000000000000000000000000000000000000000000000000000000"
                "00000000000000000000000000000000000000000000000000040200010000000000000000000000"
                "00000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "0000000000000000c1ff0000c1ffc200c2ff00090009c1ff09c2ff")}};

#ifdef RAVOLT_MORE_PICTURES

TEST(Images, AreReadInFormatsOfImageMagick) {
    const std::vector<unsigned char> pixels = {255, 0, 0,   255, 0, 255, 0, 255,
                                               0,   0, 255, 255, 9, 9,   9, 255};
    for (const auto &[format, file] : fourPixels) {
        std::string reason;
        const Image image = decodeText(file, reason);
        EXPECT_EQ(image.pixels, pixels) << format << ": " << reason;
        EXPECT_EQ(image.width, 2u) << format;
        for (const std::size_t length : {file.size() / 2, file.size() * 3 / 4}) {
            EXPECT_TRUE(decodeText(file.substr(0, length), reason).empty()) << format;
            EXPECT_EQ(reason.rfind("is broken", 0), 0u) << format << ": " << reason;
        }
    }
}

TEST(Images, AreNotReadWhereTheyAreCutOffOrTooLarge) {
    std::string reason;
    EXPECT_TRUE(decodeText(sgi(2, 2, "x"), reason).empty());
    EXPECT_EQ(reason, "is broken (SGI)");
    std::string dds = fourPixels[1].second;
    dds.replace(12, 8, std::string("\0\x7d\0\0\0\x7d\0\0", 8)); // 32000 by 32000
    EXPECT_TRUE(decodeText(dds, reason).empty());
    EXPECT_EQ(reason, "has an impossible size");
    EXPECT_TRUE(decodeText(sgi(60000, 1, std::string(100, 'x')), reason).empty());
    EXPECT_EQ(reason, "is broken, or too large (SGI)");
}

#else

TEST(Images, SayThatTheirFormatIsNotReadWithoutImageMagick) {
    for (const auto &[format, file] : fourPixels) {
        std::string reason;
        EXPECT_TRUE(decodeText(file, reason).empty());
        EXPECT_EQ(reason, "is in the format " + format + ", which this build does not read");
    }
}

#endif

// Some of its formats run other programs.
TEST(Images, AreOfNoFormatOfImageMagickByAPartOfTheirSignature) {
    for (const char *file : {"%!PS-AdoWEBP", "%!PSjP  \r\n\x87\n", "RIFF0000WAVE", "MM"}) {
        std::string reason;
        EXPECT_TRUE(decodeText(file, reason).empty());
        EXPECT_EQ(reason, "is in no picture format that is known here") << file;
    }
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
