#pragma once

// Reads a model file by assimp and cleans the result, so that the rest of the conversion can
// trust every index and every number: triangles with vertices that do not exist or that lie
// nowhere are dropped, and so are weights of such vertices. Everything dropped is reported.

#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/convert/assimpFaults.h"
#include "tools/convert/gltf2.h"
#include "tools/convert/images.h"
#include "tools/convert/modelFiles.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool {

class Model {
  public:
    // Throws Failure, with one line, when the file cannot be read or has nothing to draw.
    // Further files of the model are read through `files`. Textures that are made of vertex colours
    // have sides of at most `textureLimit` pixels.
    Model(const std::string &path, ModelFiles &files, Report &report, Progress &progress,
          unsigned int textureLimit = maxTextureSide);

    const aiScene &scene() const { return *current; }

    // glTF 2 states its colours in linear light; all other formats as they are shown.
    bool hasLinearColors() const { return linearColors; }
    // How the movements go on between their keys, where it is not by straight lines.
    const Interpolations &interpolations() const { return ways; }
    // Whether the cones of spot lights are stated as half angles.
    bool hasHalfCones() const { return linearColors; }
    // Whether the transforms of textures are still to be applied to the texture coordinates.
    bool hasTextureTransforms() const {
        return linearColors && hasFault(AssimpFault::gltf2TextureTransforms);
    }
    // Whether the format defines the meaning of a texture's alpha.
    bool saysAlpha() const { return alphaSaid; }

  private:
    void readFile(const std::string &path, ModelFiles &files, Report &report);

    std::optional<Gltf2File> gltf2;
    Interpolations ways;
    Assimp::Importer importer;
    const aiScene *current = nullptr;
    bool linearColors = false;
    bool alphaSaid = false;
};

// Whether some reader of models takes files of such a name, in any letter case.
bool isModelName(const std::filesystem::path &file);

// Drops what cannot be drawn; see above. For the import, and for its tests.
void cleanScene(aiScene &scene, Report &report);

} // namespace ravolt::tool
