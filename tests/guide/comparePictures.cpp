// comparePictures EXPECTED ACTUAL MEAN SQUARE: whether the mean difference of all channels of two
// pictures, PNG or JPEG, is at most MEAN of 255, and that of each square of 32 by 32 pixels at most
// SQUARE, so that a small part that is missing counts. Prints both.

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#include <stb/stb_image.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct Picture {
    int width = 0, height = 0;
    std::unique_ptr<stbi_uc, void (*)(void *)> bytes;

    explicit Picture(const char *file)
        : bytes(stbi_load(file, &width, &height, nullptr, 3), stbi_image_free) {
        if (!bytes)
            std::printf("%s: %s\n", file, stbi_failure_reason());
    }
};

// The mean difference within a rectangle.
double difference(const Picture &a, const Picture &b, int left, int top, int width, int height) {
    long sum = 0;
    for (int y = top; y < top + height; ++y)
        for (long i = 3L * (y * a.width + left), end = i + 3L * width; i < end; ++i)
            sum += std::abs(a.bytes.get()[i] - b.bytes.get()[i]);
    return static_cast<double>(sum) / (3.0 * width * height);
}

double largestOfSquares(const Picture &a, const Picture &b) {
    constexpr int side = 32;
    double largest = 0;
    for (int y = 0; y < a.height; y += side)
        for (int x = 0; x < a.width; x += side)
            largest = std::max(largest, difference(a, b, x, y, std::min(side, a.width - x),
                                                   std::min(side, a.height - y)));
    return largest;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 5)
        return 2;
    const Picture expected(argv[1]), actual(argv[2]);
    if (!expected.bytes || !actual.bytes)
        return 1;
    if (expected.width != actual.width || expected.height != actual.height) {
        std::printf("%s is %d x %d, %s is %d x %d\n", argv[1], expected.width, expected.height,
                    argv[2], actual.width, actual.height);
        return 1;
    }
    const double mean = difference(expected, actual, 0, 0, expected.width, expected.height);
    const double square = largestOfSquares(expected, actual);
    std::printf("%s differs by %.2f, in a square by %.2f\n", argv[1], mean, square);
    return mean <= std::atof(argv[3]) && square <= std::atof(argv[4]) ? 0 : 1;
}
