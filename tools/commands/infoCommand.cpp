// The command `info`: what a file holds. A model is converted in a temporary folder, as `view`
// does.

#include "tools/commands/command.h"
#include "tools/commands/inspectOptions.h"
#include "tools/commands/options.h"
#include "tools/common/failure.h"
#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/common/temporaryFolder.h"
#include "tools/convert/convert.h"
#include "tools/inspect/names.h"
#include "tools/inspect/text.h"
#include "tools/process/guard.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

namespace ravolt::tool {

namespace {

using namespace inspect;

namespace fs = std::filesystem;

struct InfoCommandOptions : InspectOptions {
    fs::path file;
    SourceOptions sources; // of a model
    Limits limits;         // of its conversion
};

void requireGood(const Inspection &inspection) {
    if (const Finding *error = inspection.firstError())
        throw Failure(textOf(inspection.file, *error));
}

Json goodInfo(const fs::path &file, const InspectionOptions &options) {
    const Inspection inspection = inspectFile(file, options);
    requireGood(inspection);
    return infoOf(inspection);
}

bool isModel(const InfoCommandOptions &options) {
    return !options.inspection.kind && fs::is_regular_file(options.file) &&
           !knownKindOf(options.file);
}

void convert(const InfoCommandOptions &options, const fs::path &scene) {
    ConvertOptions conversion;
    conversion.model = options.file;
    conversion.scene = scene;
    conversion.sources = options.sources;
    GuardedJob done;
    runGuarded(
        options.file.string(), options.limits,
        [&](GuardedJob &job) {
            Report ignored; // `convert` says it
            Progress progress(false);
            stageModel(conversion, ignored, progress, job.files, job.inputs);
        },
        done);
}

// The clips beside a scene, by name.
Json clipsOf(const fs::path &scene) {
    Json clips = Json::array();
    for (const auto &entry : fs::directory_iterator(scene.parent_path())) {
        if (entry.path().extension() != ".rva")
            continue;
        const Json clip = goodInfo(entry.path(), {FileKind::clip, {}})["content"];
        const std::string name = entry.path().stem().extension().string();
        clips.push_back({{"name", utf8(name.substr(std::min<std::size_t>(name.size(), 1)))},
                         {"bones", clip["bones"]},
                         {"frames", clip["frames"]}});
    }
    std::sort(clips.begin(), clips.end(),
              [](const Json &a, const Json &b) { return a["name"] < b["name"]; });
    return clips;
}

// The scene that `convert` would write.
Json modelInfo(const InfoCommandOptions &options) {
    const TemporaryFolder folder;
    const fs::path scene = folder.path() / "scene.rve";
    convert(options, scene);
    Json info = goodInfo(scene, {FileKind::scene, {}});
    info["file"] = utf8(options.file.string());
    info["kind"] = "model";
    info["bytes"] = fs::file_size(options.file);
    info["content"]["clips"] = clipsOf(scene);
    return info;
}

void addOptions(CLI::App &app, InfoCommandOptions &to) {
    app.add_option("FILE", to.file,
                   "A model, scene, clip, texture, terrain, geometry, interface, emitter, kerning "
                   "file, settings file or video")
        ->required();
    addInspect(app, to);
    addSources(app, to.sources);
    addLimits(app, to.limits);
}

void printInfo(const InfoCommandOptions &options) {
    startInspecting();
    const Json info =
        isModel(options) ? modelInfo(options) : goodInfo(options.file, options.inspection);
    if (options.json)
        printJson(info);
    else
        std::fputs(textOf(info).c_str(), stdout);
}

} // namespace

std::function<void()> addInfo(CLI::App &app) { return addCommand(app, addOptions, printInfo); }

} // namespace ravolt::tool
