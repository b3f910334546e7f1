#include "tools/commands.h"
#include "tools/guard.h"
#include "tools/scene.h"

#include <cstdio>

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

} // namespace

void runConvert(const ConvertOptions &options, const Limits &limits, const Verbosity &verbosity) {
    GuardedJob done;
    runGuarded(
        options.model.string(), limits,
        [&](GuardedJob &job) {
            Report report;
            ConvertResult result;
            {
                Progress progress(!verbosity.quiet);
                result = stageModel(options, report, progress, job.files, job.inputs);
            }
            say(report, verbosity);
            job.closingWords = figuresText(options.scene.string(), result);
        },
        done);
    if (!verbosity.quiet)
        std::printf("%s\n", done.closingWords.c_str());
}

} // namespace ravolt::tool
