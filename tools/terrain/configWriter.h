#pragma once

// The configuration file of a terrain. See docs/formats.md.

#include "tools/terrain/ground.h"
#include "tools/terrain/lodDistances.h"

#include <array>
#include <string>

namespace ravolt::tool::terrain {

struct TerrainConfig {
    std::string geometry; // as the application names it where it runs
    struct Layer {
        std::string diffuse, normal; // files below the path of the textures
        unsigned int repeat = 1;     // over a chunk
    };
    std::array<Layer, numberOfLayers> layers;
    std::string waterNormal, waterDudv, sky;
    unsigned int waterRepeat = 1; // over the whole water
    double waterSpeed = 0;
    LodDistances lod{}; // not squared
};

std::string configText(const TerrainConfig &config);

} // namespace ravolt::tool::terrain
