#pragma once

// The parts of the flight through the world.

#include "examples/world/land.h"

#include <cstddef>

namespace world {

// The effects of the frame.
struct Effects {
    bool perPixel = true, shadows = true, tones = false;
    float bloom = 0; // intensity; 0 for none
    float focus = 0; // units from the camera; 0 for no depth of field
};

// The camera and its target each move from one point to another. With a `comparison`, the effects
// `before` are seen on the left of the picture, and `effects` on the right.
struct Part {
    const char *name;
    const Lighting &lighting;
    float seconds;
    Point eyeFrom, eyeTo, targetFrom, targetTo;
    Effects effects;
    const char *comparison = nullptr; // what is seen on the right
    Effects before = {};
    bool panel = false; // the control panel is operated
};
extern const Part parts[];
extern const std::size_t numberOfParts;

// Where the camera and its target are; `progress` of the part is from 0 to 1.
Point eyeAt(const Part &part, float progress);
Point targetAt(const Part &part, float progress);

} // namespace world
