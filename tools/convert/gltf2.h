#pragma once

// Preserves what assimp loses of a glTF 2 file (see AssimpFault): it finds nodes by their names
// alone, gives a mesh one skin, and ignores the interpolation between keys. This reads the file
// before assimp does, and assimp then reads an equivalent replacement in a form that it preserves.

#include "tools/common/report.h"
#include "tools/convert/motion.h"

#include <assimp/scene.h>
#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::tool {

// By the number of the animation and the name of the node.
using Interpolations = std::map<std::pair<std::size_t, std::string>, Interpolation>;

class Gltf2File {
  public:
    // Only a glTF 2 file with such contents has a replacement. Warns of a file that is too large or
    // invalid.
    Gltf2File(const std::filesystem::path &file, Report &report);

    // What assimp reads instead of the file; empty if it reads the file itself.
    const std::string &replacement() const { return bytes; }
    // How many nodes have another name there.
    std::size_t renamedNodes() const { return renamed; }

    // Moves the additional animations of the replacement out of assimp's scene into this object;
    // the interpolations point into them.
    Interpolations takeInterpolations(aiScene &scene);
    // As above, for a scene of the file itself: without the tangents of cubic ones.
    const Interpolations &plainInterpolations() const { return interpolations; }

  private:
    std::string bytes;
    std::size_t renamed = 0;
    std::size_t animations = 0; // of the file itself
    // Of those, which have tangents; they come as two more animations each, in this order.
    std::vector<std::size_t> curved;
    Interpolations interpolations;
    std::vector<std::unique_ptr<aiAnimation>> tangents;
};

} // namespace ravolt::tool
