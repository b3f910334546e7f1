// Adds and checks the options that `view` and `shot` share.

#include "tools/commands/showOptions.h"

#include "tools/common/failure.h"
#include "tools/common/ranges.h"
#include "tools/convert/clips.h"
#include "tools/stage/stage.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace ravolt::tool {

void addShow(CLI::App &app, ShowOptions &to) {
    app.add_option("SCENE", to.input, "A scene file, or a model, which is converted first")
        ->required();
    app.add_option("--size", to.sizeText,
                   "Size of the picture in pixels, WIDTHxHEIGHT, each up to 8192")
        ->capture_default_str();
    std::string rigs = "Lights:";
    for (int i = 0; i < 5; ++i)
        rigs += (i ? ", " : " ") + std::to_string(i) + " " + Stage::rigName(i);
    app.add_option("--rig", to.rig, rigs)->capture_default_str();
    app.add_option("--yaw", to.yaw,
                   "Degrees round the scene (30, or before what faces away from there)");
    app.add_option("--pitch", to.pitch, "Degrees above it, -89 to 89 (20)");
    app.add_option("--zoom", to.zoom, "1 shows the whole scene, 2 half of it; from 0.05 to 50")
        ->capture_default_str();
    app.add_flag("--wireframe", to.wireframe, "Show lines only, without bloom and depth of field");
    app.add_flag("--two-sided", to.twoSided,
                 "Show a model's surfaces from behind too; no effect on a scene file");
    addAlpha(app, to.alpha);
    addSources(app, to.sources);
    app.add_flag("--normals", to.normals, "Show normals, one unit long");
    app.add_flag("--boxes", to.boxes, "Show bounding boxes");
    app.add_option("--clip", to.clip,
                   "Show this clip: the CLIP of a file SCENE.CLIP.rva beside the scene, that "
                   "of an animation of the model, or any RVA file");
    app.add_option("--fps", to.fps,
                   "Frames of a model's clips in a second, 0.1 to 1000; a clip has at most 1024")
        ->capture_default_str();
    addEffects(app, to.effects);
    addLimits(app, to.limits);
    addVerbosity(app, to.verbosity);
}

void check(const CLI::App &app, const ShowOptions &options) {
    requireName("SCENE", options.input);
    if (app.count("--clip"))
        requireName("--clip", options.clip);
    requireWithin("--rig", options.rig, 0, 4);
    requireWithin("--yaw", options.yaw.value_or(0), -36000, 36000);
    requireWithin("--pitch", options.pitch.value_or(0), -89, 89);
    requireWithin("--zoom", options.zoom, 0.05, 50);
    requireWithin("--fps", options.fps, minFps, maxFps);
    check(options.effects);
}

WindowSize sizeFrom(const std::string &text) {
    WindowSize size;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &size.width, &size.height, &rest) != 2 ||
        size.width < 1 || size.height < 1 || size.width > 8192 || size.height > 8192)
        throw WrongOptions("--size " + text + ": expected WIDTHxHEIGHT, each from 1 to 8192");
    return size;
}

} // namespace ravolt::tool
