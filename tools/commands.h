#pragma once

// The three jobs of the tool, each with its options. All of them throw Failure, with one line, when
// they cannot be done.

#include "tools/convert/convert.h"
#include "tools/effectOptions.h"
#include "tools/stage/engine.h"
#include "tools/stage/stage.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ravolt::tool {

// How much is said on standard error: with `quiet` nothing but failures, with `verbose` also notes
// and the engine's log.
struct Talk {
    bool quiet = false;
    bool verbose = false;
};

void runConvert(const ConvertOptions &options, const Talk &talk);

struct ShowOptions {
    std::filesystem::path input; // a scene, or a model
    WindowSize size;
    int rig = 0;
    std::optional<double> yaw, pitch; // degrees; without them the stage's own
    double zoom = 1;                  // a factor
    bool wireframe = false;
    bool twoSided = false; // of a model
    bool normals = false;
    bool boxes = false;
    EffectOptions effects;
};

struct ShotOptions : ShowOptions {
    std::filesystem::path output;
    int frames = 1; // above 1: a turn round the scene, OUT_000.png and so on
};

void runShot(const ShotOptions &options, const Talk &talk);

struct ViewOptions : ShowOptions {
    bool spin = false;  // turns by itself
    double seconds = 0; // ends by itself after that time; 0: when the window is closed
};

void runView(const ViewOptions &options, const Talk &talk);

// The keys of the viewer, for the help.
std::string viewKeys();

} // namespace ravolt::tool
