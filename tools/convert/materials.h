#pragma once

// Materials of a model as those of a scene file.

#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/convert/import.h"
#include "tools/convert/meshes.h"
#include "tools/convert/textures.h"
#include "tools/writers/rveWriter.h"

#include <string>
#include <vector>

namespace ravolt::tool {

// What the meshes of a material need of it.
struct Surface {
    bool used = false;
    std::string name;         // unique in the scene
    unsigned int channel = 0; // set of texture coordinates
    TextureTransform texture; // applied to them
    bool bothSides = false;   // two-sided and opaque: the engine itself draws both sides of
                              // transparent surfaces
};

struct MaterialOptions {
    bool normalMaps = false;
    bool twoSided = false;
    AlphaUse alpha = AlphaUse::picture; // of formats that do not state it
    std::string prefix;
};

// Converts the materials that some mesh uses into `out`; one Surface for each material of the
// model, in its order.
std::vector<Surface> convertMaterials(const Model &model, const MaterialOptions &options,
                                      Textures &textures, Report &report, Progress &progress,
                                      std::vector<ravolt::RveMaterial> &out);

} // namespace ravolt::tool
