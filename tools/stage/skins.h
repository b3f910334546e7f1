#pragma once

// The skins of a scene file, which the engine does not expose: the bones of each of their vertices.

#include "tools/common/algebra.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

struct SceneSkin {
    std::size_t node = 0; // its index in the scene in depth-first order; the root is 0
    std::size_t weightsPerVertex = 0;
    std::vector<Vector> vertices; // or some of them, evenly over the mesh
    std::vector<std::uint8_t> boneIndices;
    std::vector<float> boneWeights;
    std::vector<std::string> bones;
};

// Of a scene file (RVE); nothing of a broken one. All skins together have some thousand
// vertices at most, so that they can be followed through many frames.
std::vector<SceneSkin> readSkins(const std::filesystem::path &scene);

} // namespace ravolt::tool
