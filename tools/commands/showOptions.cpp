// Adds and checks the options that `view` and `shot` share.

#include "tools/commands/showOptions.h"

#include "tools/common/failure.h"
#include "tools/common/ranges.h"
#include "tools/convert/clips.h"
#include "tools/stage/stage.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <set>

namespace ravolt::tool {

namespace {

// X,Y,Z
std::optional<Vector> pointFrom(const std::string &text) {
    Vector point;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf,%lf%c", &point.x, &point.y, &point.z, &rest) != 3 ||
        !isFinite(point) || length(point) > 1e9)
        return {};
    return point;
}

void addPoint(CLI::App &app, const char *name, std::optional<Vector> &to, const char *what) {
    app.add_option_function<std::string>(
           name,
           [&to, name](const std::string &text) {
               to = pointFrom(text);
               if (!to)
                   throw WrongOptions(std::string(name) + " " + text +
                                      ": expected X,Y,Z, three numbers");
           },
           what)
        ->type_name("X,Y,Z");
}

// Whether an option has a meaning for what is shown. Those that only models have are without an
// effect on scenes.
bool concerns(const std::string &option, Content content) {
    static const std::set<std::string> ofModels = {
        "--two-sided", "--alpha",   "--textures", "--follow", "--max-memory",
        "--max-time",  "--normals", "--clip",     "--frame",  "--fps"};
    static const std::set<std::string> ofInterfaces = {
        "--size", "--output", "--sdl", "--anisotropy", "--seconds", "--frames", "--start-number"};
    static const std::set<std::string> notOfTerrains = {
        "--rig",        "--per-pixel", "--spot",       "--shadows",
        "--floor",      "--spot-yaw",  "--spot-pitch", "--spot-distance",
        "--spot-angle", "--spot-fade", "--shadow-map"};
    const bool general = option == "--quiet" || option == "--verbose" || option == "SCENE";
    if (option == "--eye" || option == "--target")
        return content == Content::terrain;
    if (option == "--warm-up" || option == "--seed")
        return content == Content::emitter;
    switch (content) {
    case Content::emitter:
        return !ofModels.contains(option) && option != "--boxes";
    case Content::terrain:
        return !ofModels.contains(option) && !notOfTerrains.contains(option);
    case Content::interface:
        return general || ofInterfaces.contains(option);
    default:
        return true;
    }
}

} // namespace

void addShow(CLI::App &app, ShowOptions &to) {
    app.add_option(
           "SCENE", to.input,
           "A scene file, a terrain, an emitter or an interface (XML), or a model, which is "
           "converted first")
        ->required();
    app.add_option(
           "--size", to.sizeText,
           "Size of the picture in pixels, WIDTHxHEIGHT, each up to 8192; an interface has one "
           "that fits")
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
    addPoint(app, "--eye", to.eye, "From where a terrain is seen");
    addPoint(app, "--target", to.target, "The point of a terrain that is looked at (its middle)");
    app.add_option("--anisotropy", to.anisotropy,
                   "Largest anisotropy of textures, 1 to 16 (that of the driver, 1 with a "
                   "software driver)")
        ->check(CLI::Range(1, 16));
    app.add_flag("--normals", to.normals, "Show normals, one unit long");
    app.add_flag("--boxes", to.boxes, "Show bounding boxes, and those of a terrain's chunks");
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

Content contentFor(const CLI::App &app, ShowOptions &options) {
    const Content content = contentOf(options.input);
    for (const CLI::Option *option : app.get_options())
        if (const std::string name = option->get_name();
            option->count() > 0 && !concerns(name, content))
            throw WrongOptions(name + ": has no meaning for " + nameOf(content) + ", which " +
                               options.input.string() + " is");
    options.sizeIsGiven = app.count("--size") > 0;
    options.content = content;
    addFloorOfEmitters(options);
    return content;
}

void addFloorOfEmitters(ShowOptions &options) {
    if (options.content == Content::emitter)
        options.effects.on[static_cast<std::size_t>(Effect::floor)] = true;
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
