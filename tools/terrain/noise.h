#pragma once

// Smooth noise with features of the size of 1, from about -1 to 1.

#include <cstdint>

namespace ravolt::tool::terrain {

float noise(float x, float y, int seed);

// In three dimensions.
float noise(float x, float y, float z, int seed);

// Sums of noise, each octave half as strong and half as large as the one before; -1 to 1 about.
float fractalNoise(float x, float y, int octaves, int seed);
float fractalNoise(float x, float y, float z, int octaves, int seed);

// The same over a square from 0 to 1 that repeats without a seam: `period` features a side in the
// first octave, a power of two; at most 256 in the last one.
float tiledNoise(float u, float v, int period, int octaves, int seed);

// Sharp crests, 0 to 1.
float ridgedNoise(float x, float y, int octaves, int seed);

// Random numbers, 0 to 1, that are the same on every machine.
class Dice {
  public:
    explicit Dice(std::uint32_t seed) : state(seed * 747796405u + 2891336453u) {}
    float roll();

  private:
    std::uint32_t state;
};

} // namespace ravolt::tool::terrain
