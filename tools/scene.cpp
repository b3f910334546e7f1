#include "tools/scene.h"

#include "tools/guard.h"

#include <cmath>
#include <cstdio>

namespace ravolt::tool {

void say(const Report &report, const Talk &talk) {
    if (talk.quiet)
        return;
    for (const std::string &line : report.warnings())
        std::fprintf(stderr, "ravolt: warning: %s\n", line.c_str());
    for (const std::string &line : report.notes())
        if (talk.verbose)
            std::fprintf(stderr, "ravolt: note: %s\n", line.c_str());
}

SceneToShow::SceneToShow(const ShowOptions &wanted, const Talk &talk) : clip(wanted.clip) {
    if (isScene(wanted.input))
        scene = wanted.input;
    else
        convert(wanted, talk);
    sceneSkins = readSkins(scene);
    clipFiles = clipsBeside(scene);
    if (isClipFile(clip))
        clip = std::filesystem::absolute(clip).string();
}

void SceneToShow::convert(const ShowOptions &wanted, const Talk &talk) {
    folder.emplace();
    ConvertOptions options;
    options.model = wanted.input;
    options.twoSided = wanted.twoSided;
    options.fps = wanted.fps;
    options.sources = wanted.sources;
    options.alpha = wanted.alpha;
    options.scene = scene = folder->path() / "scene.rve";
    runGuarded(wanted.input.string(), [&] {
        Report report;
        {
            Progress progress(!talk.quiet);
            convertModel(options, report, progress);
        }
        say(report, talk);
    });
}

} // namespace ravolt::tool
