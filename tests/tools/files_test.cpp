// Temporary folders, file names and decoded pictures.

#include "tests/tools/support.h"
#include "tools/common/temporaryFolder.h"
#include "tools/convert/images.h"
#include "tools/convert/plainName.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;

TEST(TemporaryFolder, IsRemovedWithItsContents) {
    fs::path path;
    {
        const TemporaryFolder folder;
        path = folder.path();
        writeFile(path / "inside/file", "x");
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(PlainName, HasLettersDigitsAndFewOthers) {
    for (const auto &[name, plain] : std::vector<std::pair<std::string, std::string>>{
             {"Wall-2_b.x", "Wall-2_b.x"},
             {"a b/c\\d:e", "a_b_c_d_e"},
             {"", "_"},
             {"..", "_.."},
             {std::string(300, 'x'), std::string(96, 'x')}})
        EXPECT_EQ(plainName(name), plain);
}

Image plain(unsigned int width, unsigned int height, unsigned char value) {
    return {width, height, Alphas(std::size_t(4) * width * height, value)};
}

TEST(Images, AreResizedToSquaresOfAPowerOfTwo) {
    for (const auto &[width, height, limit, side] : std::vector<std::array<unsigned int, 4>>{
             {1, 1, 4096, 1},
             {256, 256, 4096, 256},
             {257, 3, 4096, 512},
             {640, 480, 4096, 1024},
             {9000, 10, 4096, 4096},
             {9000, 10, 1000, 512}}) // the limit is rounded down
        EXPECT_EQ(textureSide(width, height, limit), side) << width << " " << limit;
}

TEST(Images, KeepTheirColorWhenResized) {
    const Image image = resized(plain(3, 5, 200), 8, 8, true);
    ASSERT_EQ(image.pixels.size(), 256u);
    for (unsigned char value : image.pixels)
        EXPECT_NEAR(value, 200, 1);
}

TEST(Images, HaveOpacityOfAMapsBrightnessOrAlpha) {
    Image image = plain(2, 2, 255);
    applyOpacity(image, {1, 1, {0, 0, 0, 255}}); // no alpha of its own: its brightness counts
    EXPECT_EQ(image.pixels[3], 0);
    applyOpacity(image, {1, 1, {255, 255, 255, 128}});
    EXPECT_NEAR(image.pixels[3], 128, 1);
    EXPECT_TRUE(isSeeThrough(image));
    EXPECT_FALSE(isSeeThrough(plain(2, 2, 255)));
}

// A picture with so many pixels of these alphas.
Image withAlphas(const std::vector<std::pair<unsigned char, unsigned int>> &alphas) {
    Image image;
    image.height = 1;
    for (const auto &[alpha, number] : alphas)
        for (unsigned int i = 0; i < number; ++i, ++image.width)
            image.pixels.insert(image.pixels.end(), {1, 2, 3, alpha});
    return image;
}

TEST(Images, ShowThePurposeOfTheirAlpha) {
    EXPECT_EQ(alphaOf(withAlphas({{255, 16}})), Alpha::opaque);
    EXPECT_EQ(alphaOf(withAlphas({{0, 16}})), Alpha::opaque); // not filled in
    EXPECT_EQ(alphaOf(withAlphas({{128, 16}})), Alpha::blended);
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
    EXPECT_EQ(image.pixels, (Alphas{1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 255, 1, 2, 3, 255}));
}

Image decodeText(const std::string &file, std::string &reason) {
    return decodeMemory(reinterpret_cast<const unsigned char *>(file.data()), file.size(), reason);
}

// Why the file is no picture.
std::string faultOf(const std::string &file) {
    std::string reason;
    EXPECT_TRUE(decodeText(file, reason).empty());
    return reason;
}

TEST(Images, StateWhyTheyAreInvalid) {
    using namespace std::string_literals;
    EXPECT_EQ(faultOf(""), "is empty");
    const std::string cut = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\x02"
                            "\0\0\0\0\0\0\0"s;
    EXPECT_EQ(faultOf(cut).rfind("is broken (", 0), 0u) << faultOf(cut);
    // Some formats of ImageMagick run other programs: a part of a signature is not enough.
    for (const char *file :
         {"no picture at all", "%!PS-AdoWEBP", "%!PSjP  \r\n\x87\n", "RIFF0000WAVE", "MM"})
        EXPECT_EQ(faultOf(file), "is in no picture format that is known here") << file;
    std::string reason;
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

// The bytes of a text of hexadecimal digits.
std::string fromDigits(const std::string &digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

const std::string jpeg2000 =
    fromDigits("ff4fff51003200000000000200000002000000000000000000000002000000020000000000000000"
               "0004070101070101070101070101ff52000c00000001000104040001ff5c00074040484850ff6400"
               "25000143726561746564206279204f70656e4a5045472076657273696f6e20322e352e30ff90000a"
               "00000000004f0001ff93c7d40409bfc7d40409d7c7d40409bfcfb40400c7da051f6814fcc08009bf"
               "09bf049fcfc00a3ed028fc0080049f09bf09cfc7da053f0028fc008009bf049f09cf80ffd9");

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
    {"J2K", jpeg2000},
    {"JP2",
     fromDigits("0000000c6a5020200d0a870a00000014667479706a703220000000006a7032200000004f6a703268"
                "000000166968647200000002000000020004070700000000000f636f6c7201000000000010000000"
                "22636465660004000000000001000100000002000200000003000300010000000000cd6a703263") +
         jpeg2000},
    {"PCX",
     fromDigits("0a050108000000000100010000000000000000000000000000000000000000000000000000000000"
                "00000000000000000000000000000000000000000000000000040200010000000000000000000000"
                "00000000000000000000000000000000000000000000000000000000000000000000000000000000"
                "0000000000000000c1ff0000c1ffc200c2ff00090009c1ff09c2ff")}};

#ifdef RAVOLT_MORE_PICTURES

TEST(Images, AreReadInFormatsOfImageMagick) {
    const Alphas pixels = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 9, 9, 9, 255};
    for (const auto &[format, file] : fourPixels) {
        std::string reason;
        const Image image = decodeText(file, reason);
        EXPECT_EQ(image.pixels, pixels) << format << ": " << reason;
        EXPECT_EQ(image.width, 2u) << format;
        for (const std::size_t length : {file.size() / 2, file.size() * 3 / 4})
            EXPECT_EQ(faultOf(file.substr(0, length)).rfind("is broken", 0), 0u) << format;
    }
    EXPECT_EQ(faultOf(sgi(2, 2, "x")), "is broken (SGI)");
    EXPECT_EQ(faultOf(sgi(60000, 1, std::string(100, 'x'))), "is broken, or too large (SGI)");
    std::string dds = fourPixels[1].second;
    dds.replace(12, 8, std::string("\0\x7d\0\0\0\x7d\0\0", 8)); // 32000 by 32000
    EXPECT_EQ(faultOf(dds), "has an impossible size");
}

#else

TEST(Images, StateThatTheirFormatIsNotReadWithoutImageMagick) {
    for (const auto &[format, file] : fourPixels)
        EXPECT_EQ(faultOf(file), "is in the format " + format + ", which this build does not read");
}

#endif

TEST(Images, AreMadeOfRawTexelsOfAModel) {
    aiTexture texture;
    texture.mWidth = texture.mHeight = 1;
    texture.pcData = new aiTexel[1]{{3, 2, 1, 4}}; // B G R A
    std::string reason;
    EXPECT_EQ(decodeEmbedded(texture, reason).pixels, (Alphas{1, 2, 3, 4}));
    texture.mWidth = texture.mHeight = 0xffffffff;
    EXPECT_TRUE(decodeEmbedded(texture, reason).empty());
    EXPECT_EQ(reason, "has an impossible size");
}

} // namespace
