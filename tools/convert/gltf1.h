#pragma once

#include <filesystem>

struct aiScene;

namespace ravolt::tool {

// assimp rotates and scales a glTF 1 node's own translation too. Restores the stated translations.
void placeGltf1Nodes(aiScene &scene, const std::filesystem::path &file);

} // namespace ravolt::tool
