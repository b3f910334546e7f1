#pragma once

// The textures of a model as TGA files beside the scene: NAME_d.tga for the colours and,
// on request, NAME_n.tga for its normal map, which the engine finds by that suffix.

#include "kit/files/fileTransaction.h"
#include "tools/common/inputFiles.h"
#include "tools/common/report.h"
#include "tools/convert/images.h"
#include "tools/convert/modelFiles.h"

#include <assimp/scene.h>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <tuple>

namespace ravolt::tool {

// What decides the meaning of an alpha channel.
enum class AlphaUse {
    stated,  // the opacity of the texture set decides
    picture, // the pixels decide
    opaque,
    cutout,
    blended,
};

// The textures of one surface, by the model's own paths; empty if missing.
struct TextureSet {
    std::string color;
    std::string opacity; // a map of its own, or `color` again when that picture's alpha counts
    std::string normals;
    AlphaUse alpha = AlphaUse::stated;
    unsigned char cut = 0; // with `stated`: pixels of a lower alpha are holes, all others solid

    auto operator<=>(const TextureSet &) const = default;
};

// The file made of a texture set.
struct TextureFile {
    std::string name; // empty if it is not stated, not found or broken
    bool seeThrough = false;
};

class Textures {
  public:
    struct Options {
        std::filesystem::path scene; // textures are written beside it
        // Why no file may be written there; empty when they may.
        std::string forbidden;
        std::string prefix;
        unsigned int maxSide = maxTextureSide;
    };

    // All pictures that the model names, and all files that its reader opened, are added to
    // `inputs`; no output has the name of an input.
    Textures(const aiScene &model, ModelFiles &sources, const Options &settings, Report &lines,
             FileTransaction &transaction, InputFiles &inputs);

    // Each texture set is staged once. Missing or broken pictures are reported and skipped; throws
    // Failure only if a file cannot be written.
    TextureFile file(const TextureSet &textureSet);

  private:
    void addInputs();
    Image read(const std::string &path);
    Image readFile(const std::string &path, std::string &reason);
    Image fitted(Image image, const std::string &path, bool sRgb);
    std::string overwrittenInput(const std::string &name) const;
    std::string freeName(const std::string &path);
    void applyAlphaUse(Image &image, const TextureSet &textureSet);
    void write(const std::string &name, const Image &image, bool withAlpha);
    TextureFile make(const TextureSet &textureSet);

    const aiScene &scene;
    ModelFiles &sources;
    Options options;
    Report &report;
    FileTransaction &files;
    InputFiles &inputs;
    std::map<TextureSet, TextureFile> made;
    std::set<std::string> names;
};

} // namespace ravolt::tool
