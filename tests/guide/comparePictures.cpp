// comparePictures EXPECTED ACTUAL MEAN: whether the mean difference of all channels of two
// pictures, PNG or JPEG, is at most MEAN of 255. Prints it.

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#include <stb/stb_image.h>

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

} // namespace

int main(int argc, char **argv) {
    if (argc != 4)
        return 2;
    const Picture expected(argv[1]), actual(argv[2]);
    if (!expected.bytes || !actual.bytes)
        return 1;
    if (expected.width != actual.width || expected.height != actual.height) {
        std::printf("%s is %d x %d, %s is %d x %d\n", argv[1], expected.width, expected.height,
                    argv[2], actual.width, actual.height);
        return 1;
    }
    const long channels = 3L * expected.width * expected.height;
    double sum = 0;
    for (long i = 0; i < channels; ++i)
        sum += std::abs(expected.bytes.get()[i] - actual.bytes.get()[i]);
    const double mean = sum / static_cast<double>(channels);
    std::printf("%s differs by %.2f\n", argv[1], mean);
    return mean <= std::atof(argv[3]) ? 0 : 1;
}
