#pragma once

#include <filesystem>

struct aiScene;

namespace ravolt::tool {

// assimp turns and scales a glTF 1 node's own place too. Puts the nodes where the file states them.
void placeGltf1Nodes(aiScene &scene, const std::filesystem::path &file);

} // namespace ravolt::tool
