#pragma once

// A square picture of numbers from 0 to 1 that is computed pixel by pixel.

#include <array>
#include <cstddef>
#include <numbers>
#include <vector>

namespace ravolt::tool::terrain {

constexpr float pi = std::numbers::pi_v<float>;

using Color = std::array<float, 3>;

Color mixed(const Color &from, const Color &to, float share);

// 0 below `from`, 1 above `to`, smooth in between.
float smoothStep(float from, float to, float value);

// Row 0 is at V = 0 of a texture that is read in the order of its rows.
class Texture {
  public:
    Texture(unsigned int sidePixels, unsigned int channelCount);

    unsigned int size() const { return side; }
    // The middle of a pixel, 0 to 1.
    float coordinate(unsigned int pixel) const;

    void set(unsigned int x, unsigned int y, const Color &color);
    void setAlpha(unsigned int x, unsigned int y, float alpha);
    const unsigned char *at(unsigned int x, unsigned int y) const;

    std::vector<unsigned char> tga() const;

  private:
    unsigned int side, channels;
    std::vector<unsigned char> pixels;
};

// A grid of numbers that wraps around.
class TiledField {
  public:
    // `value(u, v)` for each point of the grid, u and v from 0 to 1.
    template <class Value> TiledField(unsigned int count, Value value) : side(count) {
        numbers.reserve(std::size_t(side) * side);
        for (unsigned int y = 0; y < side; ++y)
            for (unsigned int x = 0; x < side; ++x)
                numbers.push_back(value((static_cast<float>(x) + 0.5f) / static_cast<float>(side),
                                        (static_cast<float>(y) + 0.5f) / static_cast<float>(side)));
    }

    float at(unsigned int x, unsigned int y) const {
        return numbers[std::size_t(y % side) * side + x % side];
    }

    // The change per side along U and along V.
    std::array<float, 2> slope(unsigned int x, unsigned int y) const;

    // Brings all numbers to 0 to 1.
    void normalize();

  private:
    unsigned int side;
    std::vector<float> numbers;
};

// Packs a direction into a colour, as normal maps have it.
Color packed(const std::array<float, 3> &direction);

} // namespace ravolt::tool::terrain
