#pragma once

// Pictures: compares what a test has drawn with a reference picture.
//
//     EXPECT_PICTURE(readFrame(), "RVMESH_texturedCube",
//                    Tolerance{.maximum = 8, .mean = 0.2, .reason = "edges between drivers"});
//
// The reference pictures are tests/golden/NAME.png. A failure writes NAME.actual.png,
// NAME.expected.png and NAME.difference.png into the folder where the test runs, which is not
// deleted then.
// RAVOLT_RENEW_PICTURES=1 writes the pictures instead of comparing them: look at each one.

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

struct Pixel {
    unsigned char red = 0, green = 0, blue = 0, alpha = 255;
    friend bool operator==(const Pixel &, const Pixel &) = default;
    friend void PrintTo(const Pixel &pixel, std::ostream *out);
};

// Rows from the top, four bytes a pixel: red, green, blue, alpha.
struct Picture {
    int width = 0, height = 0;
    std::vector<unsigned char> bytes;

    Picture() = default;
    Picture(int width, int height);
    Pixel at(int x, int y) const; // from the top left; outside fails the test
    void set(int x, int y, Pixel pixel);
    bool empty() const { return bytes.empty(); }
    // Number of pixels whose colour differs from `background` by more than `tolerance` in a
    // channel; alpha is ignored.
    std::size_t pixelsUnlike(Pixel background, int tolerance = 2) const;
};

// Returns an empty picture when the file is no readable PNG.
Picture loadPicture(const std::string &path);
bool savePicture(const Picture &picture, const std::string &path);

struct Tolerance {
    int maximum = 0;         // largest difference of any channel of any pixel, 0 to 255
    double mean = 0.0;       // mean difference over all channels
    const char *reason = ""; // why it is not exact; must be given with any other value
};

// Largest and mean difference of red, green and blue; alpha is ignored. Sizes must agree.
struct Difference {
    bool sameSize = false;
    int maximum = 0;
    double mean = 0.0;
};
Difference differenceOf(const Picture &a, const Picture &b);

testing::AssertionResult matchesPicture(const Picture &actual, const std::string &name,
                                        const Tolerance &tolerance);

// Red, green and blue of a pixel within `tolerance` of the expected one.
testing::AssertionResult pixelNear(Pixel actual, Pixel expected, int tolerance);

} // namespace ravolt::test

#define EXPECT_PICTURE(...) EXPECT_TRUE(ravolt::test::matchesPicture(__VA_ARGS__))
#define EXPECT_PIXEL(...) EXPECT_TRUE(ravolt::test::pixelNear(__VA_ARGS__))
