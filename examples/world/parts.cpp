// The camera's path, the light and the effects of each part.

#include "examples/world/parts.h"

#include <cmath>

namespace world {

namespace {

// The camera starts and stops smoothly.
float eased(float progress) { return 0.5f - 0.5f * std::cos(3.1415927f * progress); }

Point at(float x, float y, float z) { return square + Point(x, y, z); }

constexpr Effects clear = {true, true, false, 0.25f, 0};
constexpr Effects dark = {true, true, false, 0.35f, 0};
constexpr Effects plain = {true, true, false, 0, 0};

Effects focused(float distance) { return {true, true, false, 0.25f, distance}; }

} // namespace

const Part parts[] = {
    {"1 The island", atSea, 7, {14, 50, 6}, {62, 26, 26}, {240, 30, 230}, {190, 20, 172}, clear},
    {"2 The shore", atSea, 6, {86, 9, 38}, {108, 4.5f, 55}, {170, 12, 130}, at(-4, 5, 4), clear},
    {"3 The village", day, 8, at(-16, 9, -24), at(-5.6f, 3.6f, -13.5f), at(-1, 2, 4),
     at(0.5f, 2.4f, 3), clear},
    {"4 Walk and run", day, 7, at(-6.5f, 1.5f, -10.5f), at(-3.6f, 1.4f, -12.2f),
     at(-1.0f, 1.4f, -0.6f), at(-1.5f, 1.5f, -0.6f), clear},
    {"5 The camp fire", day, 6, fire + Point(-4, 1.9f, -4.6f), fire + Point(-1, 2.2f, -5.8f),
     fire + Point(0, 1.4f, 0), fire + Point(0, 1.9f, 2), focused(6.2f)},
    {"6 The control panel",
     day,
     7,
     at(-5.5f, 2.4f, -4.5f),
     at(-4.2f, 2.4f, -4.2f),
     at(6.6f, 2.5f, 2.6f),
     at(6.6f, 2.6f, 3.0f),
     focused(11),
     nullptr,
     {},
     true},
    {"7 Shadows",
     day,
     5,
     at(-2.4f, 5.0f, -11.6f),
     at(-1.6f, 5.0f, -11.8f),
     at(1.6f, 0.6f, 2.0f),
     at(1.6f, 0.6f, 2.0f),
     plain,
     "soft shadows",
     {true, false, false, 0, 0}},
    {"8 Depth of field",
     day,
     5,
     at(-9.7f, 1.9f, -9.4f),
     at(-9.4f, 1.9f, -9.6f),
     at(-2, 1.8f, -2.9f),
     at(-2, 1.8f, -2.9f),
     {true, true, false, 0, 4.9f},
     "depth of field",
     plain},
    {"9 At the surface",
     atSea,
     5,
     {84, 2.2f, 78},
     {100, 1.2f, 86},
     {220, 20, 160},
     {205, 17, 158},
     clear},
    {"10 Under water",
     underWater,
     6,
     {84, -5, 44},
     {91, -6.6f, 50},
     {103, -7.4f, 66},
     {103, -7.6f, 64},
     plain},
    {"11 Night", night, 6, {80, 14, 56}, at(-24, 9, -24), {210, 26, 170}, at(2, 5, 8), dark},
    {"12 Per-pixel lighting",
     night,
     4.5f,
     at(-9.5f, 4.6f, -12),
     at(-9, 4.6f, -12.4f),
     at(-1.5f, 0.6f, 2),
     at(-1.5f, 0.6f, 2),
     {true, false, false, 0, 0},
     "per-pixel lighting",
     {false, false, false, 0, 0}},
    {"13 Bloom",
     night,
     4.5f,
     at(-5.8f, 2.4f, -8.6f),
     at(-5.2f, 2.4f, -8.8f),
     at(0.4f, 2.6f, 8),
     at(0.4f, 2.6f, 8),
     {true, true, false, 0.6f, 0},
     "bloom",
     plain},
    {"14 Tone mapping",
     night,
     4.5f,
     at(-5.2f, 2.4f, -8.8f),
     at(-4.6f, 2.4f, -9.0f),
     at(0.4f, 2.6f, 8),
     at(0.4f, 2.6f, 8),
     {true, true, true, 0.6f, 0},
     "tone mapping",
     {true, true, false, 0.6f, 0}},
    {"15 The fire by night", night, 5.5f, fire + Point(-5, 1.8f, -5),
     fire + Point(-2.4f, 1.5f, -6.5f), fire + Point(0, 1.4f, 1), fire + Point(0, 1.9f, 3), dark},
    {"16 The village by night", night, 6, at(-12, 3.2f, -10), at(-8.0f, 3.2f, -13), at(0, 2, 2),
     at(0.5f, 2.6f, 3), dark},
};
const std::size_t numberOfParts = sizeof parts / sizeof *parts;

Point eyeAt(const Part &part, float progress) {
    return mix(part.eyeFrom, part.eyeTo, eased(progress));
}

Point targetAt(const Part &part, float progress) {
    return mix(part.targetFrom, part.targetTo, eased(progress));
}

} // namespace world
