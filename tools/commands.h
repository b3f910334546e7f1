#pragma once

// The three jobs of the tool, each with its options. All of them throw Failure, with one line, when
// they cannot be done.

#include "tools/convert/convert.h"
#include "tools/effectOptions.h"
#include "tools/guard.h"
#include "tools/stage/engine.h"
#include "tools/stage/stage.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool {

// How much is said on standard error: with `quiet` nothing but failures, with `verbose` also notes
// and the engine's log.
struct Verbosity {
    bool quiet = false;
    bool verbose = false;
};

void runConvert(const ConvertOptions &options, const Limits &limits, const Verbosity &verbosity);

struct ShowOptions {
    std::filesystem::path input; // a scene, or a model
    WindowSize size;
    int rig = 0;
    std::optional<double> yaw, pitch; // degrees; without them the stage's own
    double zoom = 1;                  // a factor
    bool wireframe = false;
    bool twoSided = false;              // of a model
    SourceOptions sources;              // likewise
    AlphaUse alpha = AlphaUse::picture; // of textures of a model that does not say
    bool normals = false;
    bool boxes = false;
    EffectOptions effects;
    Limits limits;    // of a model's conversion
    std::string clip; // a name, or an RVA file; empty for none
    double fps = 30;  // frames of clips in a second
};

struct ShotOptions : ShowOptions {
    std::filesystem::path output; // "-" for standard output
    bool smooth = true;           // drawn twice as large
    int frame = 0;                // of the clip
    std::string frames = "1"; // a number above 1: a turn round the scene; FIRST..LAST: of the clip
};

constexpr const char *standardOutput = "-";

void runShot(const ShotOptions &options, const Verbosity &verbosity);

struct ViewOptions : ShowOptions {
    bool spin = false;  // turns by itself
    double seconds = 0; // ends by itself after that time; 0: when the window is closed
};

void runView(const ViewOptions &options, const Verbosity &verbosity);

// Throws WrongOptions when the frames that `shot` is to draw make no sense.
void checkFrames(const ShotOptions &options);

// The keys of the viewer, for the help.
std::string viewKeys();

} // namespace ravolt::tool
