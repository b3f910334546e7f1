#pragma once

#include "ravolt/RVSKYDOME_VERTEX.h"

#include <vector>

namespace ravolt {

// A half sphere of rows from the zenith to the rim, as one strip of triangles through all rows.
struct DomeGeometry {
    std::vector<RVSKYDOME_VERTEX> vertices;
    std::vector<unsigned short> indices;
};

// Steps in degrees, truncated to whole degrees; the result is empty for steps below 1. Throws
// std::bad_alloc.
DomeGeometry makeDome(float radius, float latitudeStep, float longitudeStep);

} // namespace ravolt
