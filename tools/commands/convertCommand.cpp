// The command `convert`: its options, the files of its models, and the message about its result.

#include "tools/commands/command.h"
#include "tools/commands/fileJob.h"
#include "tools/commands/options.h"
#include "tools/common/failure.h"
#include "tools/common/ranges.h"
#include "tools/convert/clips.h"
#include "tools/process/logRedirect.h"
#include "tools/process/processes.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

namespace ravolt::tool {

namespace fs = std::filesystem;

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

struct ConvertCommandOptions : ConvertOptions { // for each model
    std::vector<fs::path> models;
    fs::path output; // empty, a folder or the scene file
    std::string up = "y";
    std::size_t jobs = 1;
    Limits limits;
    Verbosity verbosity;
};

void addOptions(CLI::App &app, ConvertCommandOptions &to) {
    app.add_option("MODEL", to.models,
                   "Any model that assimp reads: glTF, FBX, OBJ, ...; several are converted one by "
                   "one, and those that fail leave the others alone")
        ->required();
    app.add_option("-o,--output", to.output,
                   "The scene file, or a folder for it; textures and clips (SCENE.CLIP.rva) go "
                   "beside it. Without it NAME.rve in the current folder, where the model is "
                   "NAME with any extension; a file of the model is never replaced");
    app.add_option("-j,--jobs", to.jobs, "Models that are converted at the same time")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    addSources(app, to.sources);
    app.add_flag("--normal-maps", to.normalMaps, "Write normal maps too, as NAME_n.tga");
    addAlpha(app, to.alpha);
    app.add_flag("--two-sided", to.twoSided, "Make every surface visible from behind too");
    app.add_option("--max-texture", to.largestTexture, "Longest side of a texture in pixels")
        ->check(CLI::Range(1u, 4096u))
        ->capture_default_str();
    app.add_option("--scale", to.scale, "Factor for all lengths")->capture_default_str();
    app.add_option("--up", to.up, "The axis of the model that is up: y, or z of CAD and many games")
        ->check(CLI::IsMember({"y", "z"}))
        ->capture_default_str();
    app.add_option("--fps", to.fps,
                   "Frames of a clip in a second, 0.1 to 1000; a clip has at most 1024")
        ->capture_default_str();
    app.add_option("--prefix", to.prefix,
                   "Put in front of the names of materials and textures; the engine shares "
                   "materials of the same name between scenes");
    addLimits(app, to.limits);
    addVerbosity(app, to.verbosity);
}

void check(const CLI::App &app, const ConvertCommandOptions &options) {
    for (const fs::path &model : options.models)
        requireName("MODEL", model);
    if (app.count("--output"))
        requireName("--output", options.output);
    if (options.output == standardOutput)
        throw WrongOptions("--output -: a scene has files beside it, so it cannot go to standard "
                           "output; name a file");
    requireWithin("--scale", options.scale, 1e-30, 1e30);
    requireWithin("--fps", options.fps, minFps, maxFps);
}

fs::path sceneOf(const ConvertCommandOptions &options, const fs::path &model) {
    std::error_code error;
    if (options.output.empty() || fs::is_directory(options.output, error))
        return options.output / (model.stem().string() + ".rve");
    if (options.models.size() > 1)
        throw WrongOptions("--output " + options.output.string() +
                           ": several models need a folder that exists");
    return options.output;
}

// The options of each model. None of them may replace another one or its scene.
std::vector<ConvertOptions> jobsOf(const ConvertCommandOptions &options) {
    std::vector<ConvertOptions> jobs;
    std::map<fs::path, fs::path> models; // by their scenes
    for (const fs::path &model : options.models) {
        ConvertOptions job = options;
        job.model = model;
        job.scene = sceneOf(options, model);
        job.zUp = options.up == "z";
        const auto [other, isNew] =
            models.try_emplace(fs::absolute(job.scene).lexically_normal(), model);
        if (!isNew)
            throw WrongOptions(other->second.string() + " and " + model.string() +
                               ": both would be written to " + job.scene.string());
        jobs.push_back(job);
    }
    if (jobs.size() == 1)
        return jobs; // which the conversion checks
    for (const ConvertOptions &job : jobs)
        for (const fs::path &model : options.models)
            if (std::error_code error; fs::equivalent(job.scene, model, error))
                throw WrongOptions(job.model.string() + ": would be written to " +
                                   job.scene.string() + ", which is a model");
    return jobs;
}

void convert(const ConvertCommandOptions &options, const ConvertOptions &job,
             const std::function<void()> &beforeCommit = {}) {
    writeFiles(
        job.model.string(), options.limits, options.verbosity,
        [&](GuardedJob &guarded, Report &report) {
            Progress progress(!options.verbosity.quiet);
            return figuresText(job.scene.string(),
                               stageModel(job, report, progress, guarded.files, guarded.inputs));
        },
        beforeCommit);
}

// Each in a process of its own. Files are committed in the order of the models, so that the result
// is the same with any number of jobs.
void convertAll(const ConvertCommandOptions &options, const std::vector<ConvertOptions> &jobs) {
    LogRedirect::clear(); // no engine, so nothing to log
    const std::size_t failed = runInProcesses(
        jobs.size(), options.jobs, [&](std::size_t index, const std::function<void()> &awaitTurn) {
            setMessagePrefix(jobs[index].model.string() + ": ");
            convert(options, jobs[index], awaitTurn);
            return 0;
        });
    if (failed)
        throw Failure(std::to_string(failed) + " of " + std::to_string(jobs.size()) +
                      " models not converted");
}

} // namespace

std::function<void()> addConvert(CLI::App &app) {
    const auto options = std::make_shared<ConvertCommandOptions>();
    addOptions(app, *options);
    return [options, &app] {
        check(app, *options);
        const std::vector<ConvertOptions> jobs = jobsOf(*options);
        if (jobs.size() == 1)
            convert(*options, jobs.front());
        else
            convertAll(*options, jobs);
    };
}

} // namespace ravolt::tool
