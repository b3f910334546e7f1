// Finds the scene file to show, or converts a model into one in a temporary folder.

#include "tools/commands/scene.h"

#include "tools/common/message.h"
#include "tools/process/guard.h"

namespace ravolt::tool {

void say(const Report &report, const Verbosity &verbosity) {
    for (const std::string &line : report.warnings())
        warn(line, verbosity);
    for (const std::string &line : report.notes())
        note(line, verbosity);
}

SceneToShow::SceneToShow(const ShowOptions &wanted, const Verbosity &verbosity)
    : clip(wanted.clip) {
    if (wanted.content == Content::model)
        convert(wanted, verbosity);
    else
        inputFiles.add(scene = wanted.input);
    if (wanted.content == Content::emitter)
        return; // it has neither skins nor clips
    sceneSkins = readSkins(scene);
    clipFiles = clipsBeside(scene);
    if (isClipFile(clip))
        clip = std::filesystem::absolute(clip).string();
}

void SceneToShow::convert(const ShowOptions &wanted, const Verbosity &verbosity) {
    folder.emplace();
    ConvertOptions options;
    options.model = wanted.input;
    options.twoSided = wanted.twoSided;
    options.fps = wanted.fps;
    options.sources = wanted.sources;
    options.alpha = wanted.alpha;
    options.scene = scene = folder->path() / "scene.rve";
    GuardedJob done;
    runGuarded(
        wanted.input.string(), wanted.limits,
        [&](GuardedJob &job) {
            Report report;
            {
                Progress progress(!verbosity.quiet);
                stageModel(options, report, progress, job.files, job.inputs);
            }
            say(report, verbosity);
        },
        done);
    inputFiles.add(done.inputs);
}

} // namespace ravolt::tool
