#pragma once

// Images of the engine's targets in floats, and what the blur's programs make of such images.

#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace ravolt::test {

// Rows from the lowest, four floats a pixel.
struct Image {
    int width, height;
    std::vector<float> values = std::vector<float>(static_cast<std::size_t>(width * height * 4));

    float &at(int x, int y, int channel) {
        return values[static_cast<std::size_t>((y * width + x) * 4 + channel)];
    }
    double clamped(int x, int y, int channel) const {
        x = std::clamp(x, 0, width - 1);
        y = std::clamp(y, 0, height - 1);
        return values[static_cast<std::size_t>((y * width + x) * 4 + channel)];
    }
    // As a bilinear filter reads it; (u, v) from 0 to 1.
    double sample(double u, double v, int channel) const {
        const double x = u * width - 0.5, y = v * height - 0.5;
        const int left = static_cast<int>(std::floor(x)), low = static_cast<int>(std::floor(y));
        const auto across = [&](int row) {
            return std::lerp(clamped(left, row, channel), clamped(left + 1, row, channel),
                             x - left);
        };
        return std::lerp(across(low), across(low + 1), y - low);
    }
};

template <class Action> void forEachValue(const Image &image, Action action) {
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                action(x, y, channel);
}

// On unit 0, which need not be the active one when the texture is bound already.
inline void bind(RVFBO *target) {
    RVTEXTURE::texturingOn(0);
    target->getTexture()->render(nullptr);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
}

inline Image imageOf(int index) {
    RVFBO *target = RVOPENGL::getFbo(index);
    Image image{target->getSizeX(), target->getSizeY()};
    bind(target);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, image.values.data());
    return image;
}

// Five taps of a fifth each along one axis, in steps of the target's pixels.
inline double taps(const Image &source, const Image &target, int x, int y, bool alongX,
                   int channel) {
    double sum = 0;
    for (int tap = -2; tap <= 2; ++tap) {
        const double u = (x + 0.5 + (alongX ? tap : 0)) / target.width;
        const double v = (y + 0.5 + (alongX ? 0 : tap)) / target.height;
        sum += 0.2 * source.sample(u, v, channel);
    }
    return sum;
}

} // namespace ravolt::test
