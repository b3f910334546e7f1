#pragma once

// Conversion of a model, in any format that assimp reads, to a scene file with its textures.

#include "tools/convert/files.h"
#include "tools/progress.h"
#include "tools/report.h"
#include "tools/writers/rveWriter.h"

#include <filesystem>
#include <string>

namespace ravolt::tool {

struct ConvertOptions {
    std::filesystem::path model;
    std::filesystem::path scene; // the file to write; textures go beside it
    bool normalMaps = false;     // also write NAME_n.tga
    bool twoSided = false;       // every surface can be seen from behind
    unsigned int largestTexture = 4096;
    double scale = 1;   // of all lengths
    std::string prefix; // put in front of the names of materials and textures
};

// Figures of a scene, for a closing line.
struct ConvertResult {
    std::size_t nodes = 0;
    std::size_t meshes = 0; // with triangles
    std::size_t triangles = 0;
    std::size_t vertices = 0;
    std::size_t lights = 0;
    std::size_t materials = 0;
    std::size_t textures = 0;
};

// The scene of a model, with its textures already written beside the scene file to be; they are
// noted in `written`. Throws Failure.
ravolt::RveScene makeScene(const ConvertOptions &options, Report &report, Progress &progress,
                           WrittenFiles &written);

// The whole. Throws Failure, with one line, when there is no scene to be made or it cannot be
// written; nothing is left behind then.
ConvertResult convertModel(const ConvertOptions &options, Report &report, Progress &progress);

} // namespace ravolt::tool
