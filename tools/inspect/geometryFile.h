#pragma once

// The geometry of a terrain, with the facts that its configuration is checked against.

#include "effects/terrainGeometry.h"
#include "tools/inspect/inspection.h"

#include <filesystem>
#include <string>

namespace ravolt::tool::inspect {

struct GeometryFile {
    TerrainGeometry geometry;
    std::string problem; // none for a good file; its offset is the geometry's
    std::vector<Finding> warnings;

    // The largest distance between the centres of two neighbours.
    double centerDistance() const;
    Json description() const;
};

GeometryFile readGeometryFile(const std::filesystem::path &file);

} // namespace ravolt::tool::inspect
