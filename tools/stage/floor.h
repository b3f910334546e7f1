#pragma once

// A round floor under a scene.

#include "tools/stage/sphere.h"

class RVNODE;

namespace ravolt::tool {

constexpr double floorRadii = 4; // the floor's radius in those of the scene

// Needs the running engine, which owns the floor. Throws Failure when it cannot be made.
RVNODE *makeFloor(const Sphere &scene);

} // namespace ravolt::tool
