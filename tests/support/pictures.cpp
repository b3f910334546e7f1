// Loads, saves and compares pictures.

#include "tests/support/pictures.h"

#include "kit/files/pngWriter.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#include <stb/stb_image.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <ostream>

namespace ravolt::test {
namespace {

std::string goldenPath(const std::string &name) { return RAVOLT_GOLDEN "/" + name + ".png"; }

bool updatesReferences() {
    const char *value = std::getenv("RAVOLT_RENEW_PICTURES");
    return value && *value && std::string(value) != "0";
}

int channelDifference(const Picture &a, const Picture &b, std::size_t index) {
    return std::abs(int(a.bytes[index]) - int(b.bytes[index]));
}

// A PNG viewer is to show what was compared: colours without alpha.
Picture opaque(Picture picture) {
    for (std::size_t index = 3; index < picture.bytes.size(); index += 4)
        picture.bytes[index] = 255;
    return picture;
}

// The differences, scaled by eight to be visible.
Picture differencePicture(const Picture &a, const Picture &b) {
    Picture shown(a.width, a.height);
    for (std::size_t index = 0; index < shown.bytes.size(); ++index)
        shown.bytes[index] =
            index % 4 == 3
                ? 255
                : static_cast<unsigned char>(std::min(255, 8 * channelDifference(a, b, index)));
    return shown;
}

// The references are pictures of Mesa's llvmpipe. Another rasterizer, which scripts/drivers.sh
// chooses by this variable, draws lines and edges of other pixels and rounds differently in
// filters. What remains the same are the means of squares: softpipe's differ by up to 9.5, an
// object that is missing changes them by more than 20.
constexpr int squareSide = 16;
constexpr double squareTolerance = 12;

bool isOtherRasterizer() {
    const char *name = std::getenv("GALLIUM_DRIVER");
    return name && std::string(name) != "llvmpipe";
}

// Of one channel in one square, which may be cut by the border.
double meanOfSquare(const Picture &a, const Picture &b, int left, int top, std::size_t channel) {
    const int right = std::min(left + squareSide, a.width),
              bottom = std::min(top + squareSide, a.height);
    int sum = 0;
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x) {
            const std::size_t index = static_cast<std::size_t>(y * a.width + x) * 4 + channel;
            sum += int(a.bytes[index]) - int(b.bytes[index]);
        }
    return static_cast<double>(sum) / ((right - left) * (bottom - top));
}

double differenceOfSquares(const Picture &a, const Picture &b) {
    double largest = 0;
    for (int top = 0; top < a.height; top += squareSide)
        for (int left = 0; left < a.width; left += squareSide)
            for (std::size_t channel = 0; channel < 3; ++channel)
                largest = std::max(largest, std::abs(meanOfSquare(a, b, left, top, channel)));
    return largest;
}

testing::AssertionResult failed(const Picture &actual, const Picture &expected,
                                const std::string &name) {
    savePicture(opaque(actual), name + ".actual.png");
    if (expected.empty())
        return testing::AssertionFailure()
               << "no picture " << goldenPath(name) << "; RAVOLT_RENEW_PICTURES=1 makes it from "
               << name << ".actual.png: ";
    savePicture(expected, name + ".expected.png");
    if (differenceOf(actual, expected).sameSize)
        savePicture(differencePicture(actual, expected), name + ".difference.png");
    return testing::AssertionFailure() << name << " looks different (see " << name
                                       << ".actual.png, .expected.png, .difference.png): ";
}

} // namespace

void PrintTo(const Pixel &pixel, std::ostream *out) {
    *out << "(" << int(pixel.red) << ", " << int(pixel.green) << ", " << int(pixel.blue) << ", "
         << int(pixel.alpha) << ")";
}

Picture::Picture(int sizeX, int sizeY)
    : width(sizeX), height(sizeY),
      bytes(static_cast<std::size_t>(sizeX) * static_cast<std::size_t>(sizeY) * 4) {}

Pixel Picture::at(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) {
        ADD_FAILURE() << "pixel " << x << ", " << y << " is outside of a picture of " << width
                      << " by " << height;
        return {};
    }
    const unsigned char *pixel = &bytes[static_cast<std::size_t>((y * width + x) * 4)];
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

void Picture::set(int x, int y, Pixel pixel) {
    const unsigned char channels[4] = {pixel.red, pixel.green, pixel.blue, pixel.alpha};
    std::copy_n(channels, 4, bytes.begin() + (y * width + x) * 4);
}

std::size_t Picture::pixelsUnlike(Pixel background, int tolerance) const {
    std::size_t number = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            number += !pixelNear(at(x, y), background, tolerance);
    return number;
}

Picture loadPicture(const std::string &path) {
    Picture picture;
    const std::unique_ptr<stbi_uc, void (*)(void *)> data(
        stbi_load(path.c_str(), &picture.width, &picture.height, nullptr, 4), stbi_image_free);
    if (!data)
        return {};
    picture.bytes.assign(data.get(), data.get() + 4 * picture.width * picture.height);
    return picture;
}

bool savePicture(const Picture &picture, const std::string &path) {
    return !picture.empty() &&
           writePng(path, {picture.width, picture.height, 4, true, picture.bytes.data()}).empty();
}

Difference differenceOf(const Picture &a, const Picture &b) {
    Difference difference;
    difference.sameSize = a.width == b.width && a.height == b.height && !a.empty();
    if (!difference.sameSize)
        return difference;
    double sum = 0;
    for (std::size_t index = 0; index < a.bytes.size(); ++index) {
        const int channel = index % 4 == 3 ? 0 : channelDifference(a, b, index);
        difference.maximum = std::max(difference.maximum, channel);
        sum += channel;
    }
    difference.mean = sum / (3.0 * static_cast<double>(a.bytes.size()) / 4.0);
    return difference;
}

testing::AssertionResult matchesPicture(const Picture &actual, const std::string &name,
                                        const Tolerance &tolerance) {
    if ((tolerance.maximum > 0 || tolerance.mean > 0) && !*tolerance.reason)
        return testing::AssertionFailure() << name << ": a tolerance needs its reason";
    if (updatesReferences())
        return savePicture(opaque(actual), goldenPath(name))
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "can not write " << goldenPath(name);
    const Picture expected = loadPicture(goldenPath(name));
    const Difference difference = differenceOf(actual, expected);
    if (!difference.sameSize)
        return failed(actual, expected, name)
               << "drawn is " << actual.width << " by " << actual.height << ", expected "
               << expected.width << " by " << expected.height;
    if (isOtherRasterizer()) {
        const double squares = differenceOfSquares(actual, expected);
        if (squares <= squareTolerance)
            return testing::AssertionSuccess();
        return failed(actual, expected, name)
               << "the means of squares differ by " << squares << " of " << squareTolerance;
    }
    if (difference.maximum > tolerance.maximum || difference.mean > tolerance.mean)
        return failed(actual, expected, name)
               << "largest difference " << difference.maximum << " of " << tolerance.maximum
               << ", mean " << difference.mean << " of " << tolerance.mean;
    return testing::AssertionSuccess();
}

testing::AssertionResult pixelNear(Pixel actual, Pixel expected, int tolerance) {
    const auto apart = [=](unsigned char a, unsigned char b) {
        return std::abs(a - b) > tolerance;
    };
    if (!apart(actual.red, expected.red) && !apart(actual.green, expected.green) &&
        !apart(actual.blue, expected.blue))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(actual) << " is not within "
                                       << tolerance << " of " << testing::PrintToString(expected);
}

} // namespace ravolt::test
