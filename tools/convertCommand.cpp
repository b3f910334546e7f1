#include "tools/commands.h"
#include "tools/guard.h"
#include "tools/scene.h"

#include <cstdio>

namespace ravolt::tool {

namespace {

void sayFigures(const std::string &scene, const ConvertResult &result) {
    std::printf("%s: %s, %s, %s, %s, %s, %s, %s, %s\n", scene.c_str(),
                counted(result.nodes, "node", "nodes").c_str(),
                counted(result.meshes, "mesh", "meshes").c_str(),
                counted(result.triangles, "triangle", "triangles").c_str(),
                counted(result.vertices, "vertex", "vertices").c_str(),
                counted(result.lights, "light", "lights").c_str(),
                counted(result.materials, "material", "materials").c_str(),
                counted(result.textures, "texture", "textures").c_str(),
                counted(result.clips, "clip", "clips").c_str());
}

} // namespace

void runConvert(const ConvertOptions &options, const Talk &talk) {
    runGuarded(options.model.string(), [&] {
        Report report;
        ConvertResult result;
        {
            Progress progress(!talk.quiet);
            result = convertModel(options, report, progress);
        }
        say(report, talk);
        if (!talk.quiet)
            sayFigures(options.scene.string(), result);
    });
}

} // namespace ravolt::tool
