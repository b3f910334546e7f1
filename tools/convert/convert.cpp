#include "tools/convert/convert.h"

#include "tools/convert/files.h"
#include "tools/convert/import.h"
#include "tools/convert/inventory.h"
#include "tools/convert/materials.h"
#include "tools/convert/textures.h"
#include "tools/convert/tree.h"
#include "tools/failure.h"
#include "tools/writers/rveWriter.h"

#include <cmath>
#include <set>

namespace ravolt::tool {

namespace {

namespace fs = std::filesystem;

void count(const ravolt::RveNode &node, ConvertResult &result) {
    ++result.nodes;
    result.lights += node.kind == ravolt::RveKind::light;
    if (node.kind == ravolt::RveKind::mesh && !node.mesh.faces.empty()) {
        ++result.meshes;
        result.triangles += node.mesh.faces.size();
        result.vertices += node.mesh.vertices.size();
    }
    for (const ravolt::RveNode &child : node.children)
        count(child, result);
}

ConvertResult figuresOf(const ravolt::RveScene &scene) {
    ConvertResult result;
    count(scene.root, result);
    result.materials = scene.materials.size();
    std::set<std::string> textures;
    for (const ravolt::RveMaterial &material : scene.materials)
        if (material.texture != "[none]")
            textures.insert(material.texture);
    result.textures = textures.size();
    return result;
}

fs::path outputFolder(const ConvertOptions &options) {
    const fs::path folder = options.scene.parent_path();
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder, error))
        throw Failure(folder.string(), "no such folder");
    if (fs::is_directory(options.scene, error))
        throw Failure(options.scene.string(), "is a folder; name a file");
    // The model must survive its own conversion.
    if (fs::equivalent(options.scene, options.model, error))
        throw Failure(options.scene.string(), "is the model itself; name another file");
    return folder;
}

Textures::Options textureOptions(const ConvertOptions &options, const fs::path &folder) {
    Textures::Options result;
    result.modelFolder = options.model.parent_path();
    result.outputFolder = folder;
    std::error_code error;
    if (fs::exists(options.scene, error) && !fs::is_regular_file(options.scene, error))
        result.forbidden =
            options.scene.string() + ": is no regular file, so the textures cannot stand beside it";
    result.prefix = options.prefix;
    result.largest = options.largestTexture;
    return result;
}

} // namespace

ravolt::RveScene makeScene(const ConvertOptions &options, Report &report, Progress &progress,
                           WrittenFiles &written) {
    if (!(std::isfinite(options.scale) && options.scale > 0))
        throw Failure("the scale must be a number above 0");
    const fs::path folder = outputFolder(options);
    const Model model(options.model.string(), report, progress);
    reportUnheld(model.scene(), report);

    Textures textures(model.scene(), textureOptions(options, folder), report, written);
    ravolt::RveScene scene;
    progress.step("materials and textures", 0.5, 0.75);
    const std::vector<Surface> surfaces =
        convertMaterials(model, {options.normalMaps, options.twoSided, options.prefix}, textures,
                         report, progress, scene.materials);
    progress.step("meshes", 0.75, 0.95);
    scene.root = convertTree(model, surfaces, options.scale, report, progress);
    return scene;
}

ConvertResult convertModel(const ConvertOptions &options, Report &report, Progress &progress) {
    WrittenFiles written;
    const ravolt::RveScene scene = makeScene(options, report, progress, written);
    const ConvertResult result = figuresOf(scene);
    if (result.triangles == 0)
        throw Failure(options.model.string(), "has no triangles to draw");

    progress.step("writing", 0.95, 1);
    const std::string file = options.scene.string();
    const std::string error = ravolt::writeRve(file, scene);
    if (error.rfind(file + ": ", 0) == 0)
        throw Failure(error);
    if (!error.empty())
        throw Failure(file, error);
    written.keep();
    return result;
}

} // namespace ravolt::tool
