// The pictures of the demo's parts in this folder, as runExample.sh has drawn them: their
// brightness, and how they compare with the reference pictures, which are half as large.

#include "tests/support/pictures.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>

namespace {

using namespace ravolt::test;

constexpr int firstByNight = 11;               // number of the part
constexpr double darkest = 2, brightest = 253; // levels of the ends
constexpr double shareOfAnEnd = 0.05;

struct Range {
    double low, high;
};
constexpr Range day = {0.25, 0.65}, night = {0.08, 0.35}; // of the mean luminance, 0 to 1

std::map<int, Picture> loadPictures() {
    std::map<int, Picture> pictures;
    for (const auto &file : std::filesystem::directory_iterator(".")) {
        const std::string name = file.path().filename().string(), prefix = "picture_";
        if (name.starts_with(prefix) && file.path().extension() == ".png")
            pictures[std::stoi(name.substr(prefix.size()))] = loadPicture(name);
    }
    return pictures;
}

struct Brightness {
    double mean = 0;             // luminance, 0 to 1
    double dark = 0, bright = 0; // shares of the pixels
};

Brightness brightnessOf(const Picture &picture) {
    Brightness sum;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const Pixel pixel = picture.at(x, y);
            const double level = 0.2126 * pixel.red + 0.7152 * pixel.green + 0.0722 * pixel.blue;
            sum.mean += level / 255;
            sum.dark += level <= darkest;
            sum.bright += level >= brightest;
        }
    const double pixels = double(picture.width) * picture.height;
    return {sum.mean / pixels, sum.dark / pixels, sum.bright / pixels};
}

// Each pixel is the mean of four.
Picture halved(const Picture &picture) {
    Picture half(picture.width / 2, picture.height / 2);
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x) {
            int red = 0, green = 0, blue = 0;
            for (int corner = 0; corner < 4; ++corner) {
                const Pixel pixel = picture.at(2 * x + corner % 2, 2 * y + corner / 2);
                red += pixel.red, green += pixel.green, blue += pixel.blue;
            }
            const auto mean = [](int of4) { return static_cast<unsigned char>((of4 + 2) / 4); };
            half.set(x, y, {mean(red), mean(green), mean(blue), 255});
        }
    return half;
}

TEST(WorldPictures, AreNeitherTooDarkNorTooBright) {
    const std::map<int, Picture> pictures = loadPictures();
    ASSERT_FALSE(pictures.empty());
    for (const auto &[number, picture] : pictures) {
        SCOPED_TRACE("part " + std::to_string(number));
        const Brightness brightness = brightnessOf(picture);
        const Range &allowed = number >= firstByNight ? night : day;
        std::printf("part %2d: mean %.3f, dark %4.1f %%, bright %4.1f %%\n", number,
                    brightness.mean, 100 * brightness.dark, 100 * brightness.bright);
        EXPECT_GE(brightness.mean, allowed.low);
        EXPECT_LE(brightness.mean, allowed.high);
        EXPECT_LT(brightness.dark, shareOfAnEnd);
        EXPECT_LT(brightness.bright, shareOfAnEnd);
    }
}

TEST(WorldPictures, LookLikeTheReferencePictures) {
    for (const auto &[number, picture] : loadPictures())
        EXPECT_PICTURE(
            halved(picture), "world_" + std::to_string(number),
            Tolerance{.maximum = 32, .mean = 0.3, .reason = "edges and particles between drivers"});
}

} // namespace
