#include "tools/commands.h"
#include "tools/scene.h"

#include <cstdio>

namespace ravolt::tool {

void runConvert(const ConvertOptions &options, const Talk &talk) {
    Report report;
    ConvertResult result;
    {
        Progress progress(!talk.quiet);
        result = convertModel(options, report, progress);
    }
    say(report, talk);
    if (talk.quiet)
        return;
    std::printf("%s: %s, %s, %s, %s, %s, %s, %s\n", options.scene.c_str(),
                counted(result.nodes, "node", "nodes").c_str(),
                counted(result.meshes, "mesh", "meshes").c_str(),
                counted(result.triangles, "triangle", "triangles").c_str(),
                counted(result.vertices, "vertex", "vertices").c_str(),
                counted(result.lights, "light", "lights").c_str(),
                counted(result.materials, "material", "materials").c_str(),
                counted(result.textures, "texture", "textures").c_str());
}

} // namespace ravolt::tool
