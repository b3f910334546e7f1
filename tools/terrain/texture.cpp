// Pixels and normals of computed textures.

#include "tools/terrain/texture.h"

#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool::terrain {

namespace {

unsigned char byteOf(float value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255));
}

} // namespace

Color mixed(const Color &from, const Color &to, float share) {
    Color result;
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = from[i] + (to[i] - from[i]) * share;
    return result;
}

float smoothStep(float from, float to, float value) {
    const float x = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return x * x * (3 - 2 * x);
}

Texture::Texture(unsigned int sidePixels, unsigned int channelCount)
    : side(sidePixels), channels(channelCount), pixels(std::size_t(side) * side * channels, 255) {}

float Texture::coordinate(unsigned int pixel) const {
    return (static_cast<float>(pixel) + 0.5f) / static_cast<float>(side);
}

void Texture::set(unsigned int x, unsigned int y, const Color &color) {
    unsigned char *pixel = &pixels[(std::size_t(y) * side + x) * channels];
    std::transform(color.begin(), color.end(), pixel, byteOf);
}

void Texture::setAlpha(unsigned int x, unsigned int y, float alpha) {
    pixels[(std::size_t(y) * side + x) * channels + 3] = byteOf(alpha);
}

const unsigned char *Texture::at(unsigned int x, unsigned int y) const {
    return &pixels[(std::size_t(y) * side + x) * channels];
}

std::vector<unsigned char> Texture::tga() const {
    TgaPicture picture;
    picture.width = picture.height = side;
    picture.channels = channels;
    picture.pixels = pixels.data();
    return encodeTga(picture);
}

std::array<float, 2> TiledField::slope(unsigned int x, unsigned int y) const {
    const float scale = static_cast<float>(side) / 2;
    return {(at(x + 1, y) - at(x + side - 1, y)) * scale,
            (at(x, y + 1) - at(x, y + side - 1)) * scale};
}

void TiledField::normalize() {
    const auto [lowest, highest] = std::minmax_element(numbers.begin(), numbers.end());
    const float from = *lowest, range = std::max(*highest - *lowest, 1e-6f);
    for (float &number : numbers)
        number = (number - from) / range;
}

Color packed(const std::array<float, 3> &direction) {
    const float length = std::hypot(direction[0], direction[1], direction[2]);
    Color color;
    for (std::size_t i = 0; i < color.size(); ++i)
        color[i] = 0.5f + 0.5f * direction[i] / length;
    return color;
}

} // namespace ravolt::tool::terrain
