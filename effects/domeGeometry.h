#pragma once

#include "ravolt/RVSKYDOME_VERTEX.h"

#include <vector>

namespace ravolt {

// A half sphere of rows from the zenith to the rim, as one strip of triangles through all rows.
struct DomeGeometry {
    std::vector<RVSKYDOME_VERTEX> vertices;
    std::vector<unsigned short> indices;
};

// Steps in degrees, of which whole degrees count, at least 1; empty for smaller ones. Throws
// std::bad_alloc.
DomeGeometry makeDome(float radius, float latitudeStep, float longitudeStep);

} // namespace ravolt
