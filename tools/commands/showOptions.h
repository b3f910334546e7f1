#pragma once

// The options that `view` and `shot` have in common.

#include "tools/commands/effectOptions.h"
#include "tools/commands/options.h"
#include "tools/common/algebra.h"
#include "tools/stage/content.h"
#include "tools/stage/engine.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool {

struct ShowOptions {
    std::filesystem::path input;
    Content content = Content::model; // of the input, once it is known
    WindowSize size;
    std::string sizeText = "960x640"; // before it is parsed
    bool sizeIsGiven = false;
    std::optional<int> anisotropy;
    std::optional<Vector> eye, target; // of a terrain
    unsigned int seed = 1;             // of an emitter
    int rig = 0;
    std::optional<double> yaw, pitch; // degrees; without them the stage's own
    double zoom = 1;                  // a factor
    bool wireframe = false;
    bool twoSided = false;              // of a model
    SourceOptions sources;              // likewise
    AlphaUse alpha = AlphaUse::picture; // of textures of a model that does not state it
    bool normals = false;
    bool boxes = false;
    EffectOptions effects;
    Limits limits;    // of a model's conversion
    std::string clip; // a name, or an RVA file; empty for none
    double fps = 30;  // frames of clips in a second
    Verbosity verbosity;
};

void addShow(CLI::App &app, ShowOptions &to);

// Throws WrongOptions for what is out of range.
void check(const CLI::App &app, const ShowOptions &options);

// What the input is. Throws WrongOptions for an option that has no meaning for it, and Failure for
// a file that cannot be read.
Content contentFor(const CLI::App &app, ShowOptions &options);

// Particles in the air alone would show no place, so an emitter has a floor.
void addFloorOfEmitters(ShowOptions &options);

// Reads --size.
WindowSize sizeFrom(const std::string &text);

} // namespace ravolt::tool
