#include "tools/convert/convert.h"

#include "tools/convert/files.h"
#include "tools/convert/import.h"
#include "tools/convert/inventory.h"
#include "tools/convert/materials.h"
#include "tools/convert/textures.h"
#include "tools/convert/tree.h"
#include "tools/failure.h"
#include "tools/writers/rveWriter.h"

#include <algorithm>
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

ConvertResult figuresOf(const Converted &made) {
    const ravolt::RveScene &scene = made.scene;
    ConvertResult result;
    result.clips = made.clips.size();
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
    result.outputFolder = folder;
    std::error_code error;
    if (fs::exists(options.scene, error) && !fs::is_regular_file(options.scene, error))
        result.forbidden =
            options.scene.string() + ": is no regular file, so the textures cannot stand beside it";
    result.prefix = options.prefix;
    result.largest = options.largestTexture;
    return result;
}

// Passes a writer's complaint on.
void throwIfAny(const std::string &error, const fs::path &file) {
    if (error.rfind(file.string() + ": ", 0) == 0)
        throw Failure(error);
    if (!error.empty())
        throw Failure(file.string(), error);
}

// Whether a skeleton's root will be needed: with it the tree is a level deeper.
bool hasBones(const aiScene &scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                       [](const aiMesh *mesh) { return mesh->mNumBones > 0; });
}

} // namespace

fs::path clipFile(const fs::path &scene, const std::string &clip) {
    return scene.parent_path() / (scene.stem().string() + "." + clip + ".rva");
}

Converted makeScene(const ConvertOptions &options, Report &report, Progress &progress,
                    WrittenFiles &written) {
    if (!(std::isfinite(options.scale) && options.scale > 0))
        throw Failure("the scale must be a number above 0");
    const fs::path folder = outputFolder(options);
    ModelFiles files(options.model, options.sources, report);
    const Model model(options.model.string(), files, report, progress);
    reportUnheld(model.scene(), report);

    Textures textures(model.scene(), files, textureOptions(options, folder), report, written);
    Converted made;
    progress.step("materials and textures", 0.5, 0.75);
    const std::vector<Surface> surfaces = convertMaterials(
        model, {options.normalMaps, options.twoSided, options.alpha, options.prefix}, textures,
        report, progress, made.scene.materials);
    progress.step("bones and clips", 0.75, 0.85);
    const bool withBones = hasBones(model.scene());
    Skeleton skeleton(model.scene(), options.scale, withBones ? 2 : 1, report);
    Skins skins(model.scene(), skeleton, report);
    const Clips clips(model.scene(), model.interpolations(), skeleton, skins, options.fps, report);
    made.clips = clips.all();
    progress.step("meshes", 0.85, 0.95);
    made.scene.root = convertTree(model, surfaces, skeleton, skins, clips, report, progress);
    return made;
}

ConvertResult convertModel(const ConvertOptions &options, Report &report, Progress &progress) {
    WrittenFiles written;
    const Converted made = makeScene(options, report, progress, written);
    const ConvertResult result = figuresOf(made);
    if (result.triangles == 0)
        throw Failure(options.model.string(), "has no triangles to draw");

    progress.step("writing", 0.95, 1);
    std::error_code none;
    if (!made.clips.empty() && fs::exists(options.scene, none) &&
        !fs::is_regular_file(options.scene, none))
        throw Failure(options.scene.string(),
                      "is no regular file, so the clips cannot stand beside it");
    for (const Clip &clip : made.clips) {
        const fs::path file = clipFile(options.scene, clip.name);
        throwIfAny(ravolt::writeRva(file.string(), clip.frames), file);
        written.add(file);
    }
    throwIfAny(ravolt::writeRve(options.scene.string(), made.scene), options.scene);
    written.keep();
    return result;
}

} // namespace ravolt::tool
