#pragma once

// The whole job of `ravolt terrain`: heights in, a folder with all that the engine loads out.

#include "kit/files/fileTransaction.h"
#include "tools/common/inputFiles.h"
#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/terrain/gridSize.h"
#include "tools/terrain/ground.h"
#include "tools/terrain/heightFiles.h"
#include "tools/terrain/island.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool::terrain {

// Lengths are in units of the world. What is not given follows from the heights.
struct TerrainOptions {
    std::filesystem::path input;        // empty for an island
    std::optional<unsigned int> island; // its seed
    HeightFileOptions file;
    std::filesystem::path folder;
    std::optional<std::string> geometryPath; // before the geometry's name in the configuration

    bool exact = false; // the values are the vertices
    unsigned int chunkSize = chunkSizes[0];
    unsigned int maxSide = 1025; // vertices along the longer side, unless exact

    double spacing = 1;                        // between two values of the input
    std::optional<double> height, heightScale; // of all, or of one step of the values
    std::optional<double> seaLevel;            // a value of the input
    double steep = 38;                         // degrees
    std::optional<double> high, shore;
    std::optional<double> detail;

    bool textures = true;
    unsigned int textureSize = 512; // pixels a side of a layer
};

struct TerrainResult {
    GridSize size;
    double spacing = 1;             // units between two vertices
    double lowest = 0, highest = 0; // above the water
    std::array<double, numberOfLayers> shares{};
    std::size_t files = 0;
    std::optional<Island::Square> square; // of an island
};

// Writes the files of the folder, which exists, to `files`. Throws Failure.
TerrainResult stageTerrain(const TerrainOptions &options, Report &report, Progress &progress,
                           FileTransaction &files);

} // namespace ravolt::tool::terrain
