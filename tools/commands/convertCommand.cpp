// The command `convert`: its options, and the message about its result.

#include "tools/commands/command.h"
#include "tools/commands/fileJob.h"
#include "tools/commands/options.h"
#include "tools/common/failure.h"
#include "tools/common/ranges.h"
#include "tools/convert/clips.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

namespace ravolt::tool {

namespace {

std::string figuresText(const std::string &scene, const ConvertResult &result) {
    return scene + ": " + counted(result.nodes, "node", "nodes") + ", " +
           counted(result.meshes, "mesh", "meshes") + ", " +
           counted(result.triangles, "triangle", "triangles") + ", " +
           counted(result.vertices, "vertex", "vertices") + ", " +
           counted(result.lights, "light", "lights") + ", " +
           counted(result.materials, "material", "materials") + ", " +
           counted(result.textures, "texture", "textures") + ", " +
           counted(result.clips, "clip", "clips");
}

struct Options : ConvertOptions {
    Limits limits;
    Verbosity verbosity;
};

void addOptions(CLI::App &app, Options &to) {
    app.add_option("MODEL", to.model, "Any model that assimp reads: glTF, FBX, OBJ, ...")
        ->required();
    app.add_option("-o,--output", to.scene,
                   "The scene file; textures and clips (SCENE.CLIP.rva) go beside it")
        ->required();
    addSources(app, to.sources);
    app.add_flag("--normal-maps", to.normalMaps, "Write normal maps too, as NAME_n.tga");
    addAlpha(app, to.alpha);
    app.add_flag("--two-sided", to.twoSided, "Make every surface visible from behind too");
    app.add_option("--max-texture", to.largestTexture, "Longest side of a texture in pixels")
        ->check(CLI::Range(1u, 4096u))
        ->capture_default_str();
    app.add_option("--scale", to.scale, "Factor for all lengths")->capture_default_str();
    app.add_option("--fps", to.fps,
                   "Frames of a clip in a second, 0.1 to 1000; a clip has at most 1024")
        ->capture_default_str();
    app.add_option("--prefix", to.prefix,
                   "Put in front of the names of materials and textures; the engine shares "
                   "materials of the same name between scenes");
    addLimits(app, to.limits);
    addVerbosity(app, to.verbosity);
}

void check(const ConvertOptions &options) {
    requireName("MODEL", options.model);
    requireName("--output", options.scene);
    if (options.scene == standardOutput)
        throw WrongOptions("--output -: a scene has files beside it, so it cannot go to standard "
                           "output; name a file");
    requireWithin("--scale", options.scale, 1e-30, 1e30);
    requireWithin("--fps", options.fps, minFps, maxFps);
}

void convert(const Options &options) {
    writeFiles(options.model.string(), options.limits, options.verbosity,
               [&](GuardedJob &job, Report &report) {
                   Progress progress(!options.verbosity.quiet);
                   return figuresText(options.scene.string(),
                                      stageModel(options, report, progress, job.files, job.inputs));
               });
}

} // namespace

std::function<void()> addConvert(CLI::App &app) {
    const auto options = std::make_shared<Options>();
    addOptions(app, *options);
    return [options] {
        check(*options);
        convert(*options);
    };
}

} // namespace ravolt::tool
