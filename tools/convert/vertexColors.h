#pragma once

// Colours of vertices, which the meshes of a scene do not have: where a mesh has no texture they
// are converted to the colour of its material, or a texture.

#include "tools/common/report.h"

#include <assimp/scene.h>

namespace ravolt::tool {

struct VertexColorOptions {
    bool linear = false;             // stated in linear light, and multiplied with the material's
    unsigned int largestSide = 4096; // of a texture
};

// For a scene of triangles, before equal vertices are joined: those of a baked mesh are separate
// afterwards. Reports what is dropped.
void bakeVertexColors(aiScene &scene, const VertexColorOptions &options, Report &report);

} // namespace ravolt::tool
