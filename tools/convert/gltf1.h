#pragma once

#include <filesystem>

struct aiScene;

namespace ravolt::tool {

// The correction of AssimpFault::gltf1LocalTransforms: restores the translations that the file
// states.
void restoreGltf1Translations(aiScene &scene, const std::filesystem::path &file);

} // namespace ravolt::tool
