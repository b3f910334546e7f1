// Saving, loading and comparing pictures.

#include "tests/support/pictures.h"

#include <cstdlib>
#include <filesystem>

using namespace ravolt::test;

namespace {

Picture plain(int width, int height, Pixel pixel) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.set(x, y, pixel);
    return picture;
}

TEST(pictures, SavedAndLoadedPngsAreEqual) {
    Picture picture = plain(5, 3, {10, 20, 30});
    picture.set(4, 0, {255, 0, 7, 255});
    ASSERT_TRUE(savePicture(picture, "one.png"));
    const Picture back = loadPicture("one.png");
    EXPECT_EQ(back.width, 5);
    EXPECT_EQ(back.height, 3);
    EXPECT_EQ(back.bytes, picture.bytes);
    EXPECT_TRUE(loadPicture("missing.png").empty());
}

TEST(pictures, DifferenceIsTheLargestAndTheMeanOfTheColours) {
    const Picture a = plain(2, 2, {100, 100, 100, 255});
    Picture b = a;
    b.set(1, 1, {100, 88, 100, 0}); // alpha does not count
    const Difference difference = differenceOf(a, b);
    EXPECT_TRUE(difference.sameSize);
    EXPECT_EQ(difference.maximum, 12);
    EXPECT_DOUBLE_EQ(difference.mean, 1.0);
    EXPECT_FALSE(differenceOf(a, plain(2, 3, {})).sameSize);
}

TEST(pictures, AFailureWritesThreePictures) {
    if (const char *renew = std::getenv("RAVOLT_RENEW_PICTURES"); renew && *renew)
        unsetenv("RAVOLT_RENEW_PICTURES");
    const Picture expected = loadPicture(RAVOLT_SOURCE "/tests/golden/support_example.png");
    ASSERT_FALSE(expected.empty());
    EXPECT_TRUE(matchesPicture(expected, "support_example", {}));

    Picture other = expected;
    other.set(0, 0, {1, 2, 3});
    EXPECT_FALSE(matchesPicture(other, "support_example", {}));
    for (const char *kind : {"actual", "expected", "difference"})
        EXPECT_TRUE(std::filesystem::exists("support_example." + std::string(kind) + ".png"));
    EXPECT_FALSE(matchesPicture(other, "support_example", {.maximum = 255, .mean = 255}))
        << "a tolerance without its reason";
    EXPECT_TRUE(matchesPicture(other, "support_example", {255, 255, "everything is right"}));
    EXPECT_FALSE(matchesPicture(other, "no such picture", {255, 255, "everything is right"}));
}

TEST(pictures, AnotherRasterizerDrawsOtherPixelsButTheSameObjects) {
    const Picture expected = loadPicture(RAVOLT_SOURCE "/tests/golden/support_example.png");
    Picture onePixel = expected, allPixels = expected;
    onePixel.set(3, 3, {255, 255, 255});
    for (int x = 0; x < expected.width; ++x)
        for (int y = 0; y < expected.height; ++y) {
            Pixel changed = expected.at(x, y);
            changed.green = static_cast<unsigned char>(changed.green ^ 16);
            allPixels.set(x, y, changed);
        }
    setenv("GALLIUM_DRIVER", "softpipe", 1);
    EXPECT_TRUE(matchesPicture(onePixel, "support_example", {}));
    EXPECT_FALSE(matchesPicture(allPixels, "support_example", {}));
    unsetenv("GALLIUM_DRIVER");
    EXPECT_FALSE(matchesPicture(onePixel, "support_example", {}));
}

TEST(pictures, PixelsUnlikeTheBackgroundAreCounted) {
    Picture picture = plain(4, 4, {50, 50, 50});
    picture.set(0, 0, {52, 50, 50});
    picture.set(1, 0, {53, 50, 50});
    EXPECT_EQ(picture.pixelsUnlike({50, 50, 50}), 1u);
    EXPECT_EQ(picture.pixelsUnlike({50, 50, 50}, 0), 2u);
}

} // namespace
