#pragma once

// What the engine does not tell of the skins of a scene: which bones move each of their vertices.

#include "tools/common/algebra.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

struct SceneSkin {
    std::size_t node =
        0; // its place in the scene, the root is 0, and children follow their parents
    std::size_t weightsPerVertex = 0;
    std::vector<Vector> vertices; // or some of them, evenly over the mesh
    std::vector<std::uint8_t> boneIndices;
    std::vector<float> boneWeights;
    std::vector<std::string> bones;
};

// Of a scene file (RVE); nothing of one that is broken. All skins together have some thousand
// vertices at most, so that they can be followed through many frames.
std::vector<SceneSkin> readSkins(const std::filesystem::path &scene);

} // namespace ravolt::tool
