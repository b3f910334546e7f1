#pragma once

// A small valid terrain.

#include "fuzz/targets.h"

#include <string>

namespace ravolt::fuzz {

// A geometry of 2 by 1 chunks of 5 by 5 vertices, in two levels of detail.
Bytes smallTerrain();

// A configuration with everything for a geometry of two levels.
std::string smallTerrainConfig(const std::string &geometry);

} // namespace ravolt::fuzz
