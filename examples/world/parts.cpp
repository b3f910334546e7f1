// The camera's path, the light and the effects of each part.

#include "examples/world/parts.h"

namespace world {

namespace {

Point at(float x, float y, float z) { return square + Point(x, y, z); }

constexpr Effects clear = {true, true, false, 0.25f, 0};
constexpr Effects dark = {true, true, false, 0.35f, 0};
constexpr Effects plain = {true, true, false, 0, 0};

Effects focused(float distance) { return {true, true, false, 0.25f, distance}; }

} // namespace

const Part parts[] = {
    {"1 The island", atSea, 9, {14, 62, 6}, {74, 30, 34}, {240, 30, 230}, {196, 22, 180}, clear},
    {"2 The shore", atSea, 8, {60, 9, 50}, {96, 5, 62}, {190, 14, 150}, at(0, 5, 10), clear},
    {"3 The village", day, 10, at(-16, 9, -24), at(-6, 3.4f, -12.5f), at(0, 2, 4),
     at(0.5f, 2.4f, 3), clear},
    {"4 Walk and run", day, 8, at(-6.5f, 1.4f, -7), at(-1.5f, 1.2f, -8.5f), at(-1.6f, 0.8f, -1),
     at(-1.2f, 0.9f, -1), clear},
    {"5 The camp fire", day, 6, fire + Point(-4, 1.6f, -5), fire + Point(-1, 2.0f, -6.5f),
     fire + Point(0, 1.2f, 0), fire + Point(0, 1.8f, 2), focused(6.6f)},
    {"6 The control panel",
     day,
     8,
     at(-4.5f, 2.2f, -3.5f),
     at(-3.0f, 2.2f, -3.0f),
     at(8, 2.2f, 1.6f),
     at(8, 2.4f, 2.0f),
     focused(9),
     nullptr,
     {},
     true},
    {"7 Shadows",
     day,
     5,
     at(9.0f, 4.6f, -7.6f),
     at(8.6f, 4.6f, -8),
     at(-1.8f, 0.6f, 3.2f),
     at(-1.8f, 0.6f, 3.2f),
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
     {60, 2.2f, 30},
     {96, 1.2f, 52},
     {230, 22, 190},
     {220, 18, 180},
     clear},
    {"10 Under water",
     underWater,
     7,
     {92, -3, 40},
     {104, -5, 60},
     {190, -6, 110},
     {190, -3, 120},
     plain},
    {"11 Night", night, 9, {70, 14, 40}, at(-24, 9, -24), {220, 30, 180}, at(2, 5, 8), dark},
    {"12 Per-pixel lighting",
     night,
     5,
     at(-9.5f, 4.6f, -12),
     at(-9, 4.6f, -12.4f),
     at(-1.5f, 0.6f, 2),
     at(-1.5f, 0.6f, 2),
     plain,
     "lighting by pixels",
     {false, false, false, 0, 0}},
    {"13 Bloom",
     night,
     5,
     at(-2, 2.2f, -5),
     at(-1.5f, 2.2f, -5),
     at(2.4f, 2.6f, 8),
     at(2.4f, 2.6f, 8),
     {true, true, false, 0.6f, 0},
     "bloom",
     plain},
    {"14 Tone mapping",
     night,
     5,
     at(-1.5f, 2.2f, -5),
     at(-1, 2.2f, -5),
     at(2.4f, 2.6f, 8),
     at(2.4f, 2.6f, 8),
     {true, true, true, 0.6f, 0},
     "tone mapping",
     {true, true, false, 0.6f, 0}},
    {"15 The fire by night", night, 7, fire + Point(-5, 1.8f, -5), fire + Point(-2.4f, 1.5f, -6.5f),
     fire + Point(0, 1.4f, 1), fire + Point(0, 1.9f, 3), dark},
    {"16 The village by night", night, 10, at(-11, 3.0f, -9), at(-5.5f, 3.0f, -11), at(0, 2, 2),
     at(0.5f, 2.6f, 3), dark},
};
const std::size_t numberOfParts = sizeof parts / sizeof *parts;

} // namespace world
