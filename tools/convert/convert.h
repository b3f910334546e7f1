#pragma once

// Conversion of a model, in any format that assimp reads, to a scene file with its textures and its
// clips.

#include "kit/files/fileTransaction.h"
#include "tools/common/inputFiles.h"
#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/convert/clips.h"
#include "tools/convert/modelFiles.h"
#include "tools/convert/textures.h"
#include "tools/writers/rveWriter.h"

#include <filesystem>
#include <string>

namespace ravolt::tool {

struct ConvertOptions {
    std::filesystem::path model;
    std::filesystem::path scene; // the file to write; textures and clips are written beside it
    SourceOptions sources;
    bool normalMaps = false;            // also write NAME_n.tga
    bool twoSided = false;              // every surface can be seen from behind
    AlphaUse alpha = AlphaUse::picture; // of textures where the model does not state it
    unsigned int largestTexture = 4096;
    double scale = 1;   // of all lengths
    bool zUp = false;   // the model's Z axis is up, not its Y axis
    double fps = 30;    // frames of a clip in a second
    std::string prefix; // of the names of materials and textures
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
    std::size_t clips = 0;
};

struct Converted {
    ravolt::RveScene scene;
    std::vector<Clip> clips;
};

// The file of a clip: SCENE.NAME.rva beside SCENE.rve.
std::filesystem::path clipFile(const std::filesystem::path &scene, const std::string &clip);

// Converts a model, with its textures staged in `files`. The files that it reads are added to
// `inputs`.
// Throws Failure.
Converted makeScene(const ConvertOptions &options, Report &report, Progress &progress,
                    FileTransaction &files, InputFiles &inputs);

// Converts a model, with all files staged in `files`. Throws Failure, with one line, if it cannot
// be converted or written, or would replace one of its own inputs.
ConvertResult stageModel(const ConvertOptions &options, Report &report, Progress &progress,
                         FileTransaction &files, InputFiles &inputs);

// Converts a model and writes all files. Throws Failure; then all files are unchanged.
ConvertResult convertModel(const ConvertOptions &options, Report &report, Progress &progress);

} // namespace ravolt::tool
