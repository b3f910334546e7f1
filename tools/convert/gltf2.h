#pragma once

// What of a glTF 2 file gets lost in assimp, which knows nodes by their names alone, gives a mesh
// one skin, and takes the values of keys without the way from one to the next. The file is read
// before it, and what assimp reads instead says the same in a form that it keeps.

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
    // Anything else than a glTF 2 file with such things has no replacement. Warns of a file that is
    // too large for one.
    Gltf2File(const std::filesystem::path &file, Report &report);

    // What assimp is to read in place of the file; empty when the file itself.
    const std::string &replacement() const { return bytes; }
    // How many nodes have another name there.
    std::size_t renamedNodes() const { return renamed; }

    // Takes what the replacement has beside the model out of the scene that assimp made of it. It
    // belongs to this object, and the interpolations point into it.
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
