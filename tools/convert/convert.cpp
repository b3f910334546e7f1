// The steps of a conversion, from the options to the committed files.

#include "tools/convert/convert.h"

#include "tools/common/failure.h"
#include "tools/convert/import.h"
#include "tools/convert/inventory.h"
#include "tools/convert/materials.h"
#include "tools/convert/textures.h"
#include "tools/convert/tree.h"
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

void checkTarget(const ConvertOptions &options) {
    const fs::path folder = options.scene.parent_path();
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder, error))
        throw Failure(folder.string(), "no such folder");
    if (fs::is_directory(options.scene, error))
        throw Failure(options.scene.string(), "is a folder; name a file");
    // The model must survive its own conversion.
    if (fs::equivalent(options.scene, options.model, error))
        throw Failure(options.scene.string(), "is the model itself; name another file");
}

Textures::Options textureOptions(const ConvertOptions &options) {
    Textures::Options result;
    result.scene = options.scene;
    std::error_code error;
    if (fs::exists(options.scene, error) && !fs::is_regular_file(options.scene, error))
        result.forbidden =
            options.scene.string() + ": is no regular file, so the textures cannot stand beside it";
    result.prefix = options.prefix;
    result.maxSide = options.largestTexture;
    return result;
}

void stage(FileTransaction &files, const fs::path &file, const ravolt::WrittenBytes &written) {
    if (!written.ok())
        throw Failure(file.string(), written.error);
    const std::string error = files.stage(file.string(), written.bytes);
    if (!error.empty())
        throw Failure(error);
}

// From the model's axes and lengths to those of the scene, whose Y axis is up.
Matrix sceneAxes(const ConvertOptions &options) {
    const Matrix axes = options.zUp ? matrixOfColumns({1, 0, 0}, {0, 0, -1}, {0, 1, 0}) : Matrix();
    return axes * options.scale;
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
                    FileTransaction &files, InputFiles &inputs) {
    if (!(std::isfinite(options.scale) && options.scale > 0))
        throw Failure("the scale must be a number above 0");
    checkTarget(options);
    ModelFiles sources(options.model, options.sources, report);
    const Model model(options.model.string(), sources, report, progress, options.largestTexture);
    reportUnsupported(model.scene(), report);

    Textures textures(model.scene(), sources, textureOptions(options), report, files, inputs);
    if (inputs.contains(options.scene))
        throw Failure(options.scene.string(), "is read by this conversion; name another file");
    Converted made;
    progress.step("materials and textures", 0.5, 0.75);
    const std::vector<Surface> surfaces = convertMaterials(
        model, {options.normalMaps, options.twoSided, options.alpha, options.prefix}, textures,
        report, progress, made.scene.materials);
    progress.step("bones and clips", 0.75, 0.85);
    const bool withBones = hasBones(model.scene());
    Skeleton skeleton(model.scene(), sceneAxes(options), withBones ? 2 : 1, report);
    Skins skins(model.scene(), skeleton, report);
    const Clips clips(model.scene(), model.interpolations(), skeleton, skins, options.fps, report);
    made.clips = clips.all();
    progress.step("meshes", 0.85, 0.95);
    made.scene.root = convertTree(model, surfaces, skeleton, skins, clips, report, progress);
    return made;
}

namespace {

// A clip that would take the place of an input is given another name.
fs::path freeClipFile(const fs::path &scene, const std::string &clip, const InputFiles &inputs,
                      Report &report) {
    std::string name = clip;
    for (int number = 2; inputs.contains(clipFile(scene, name)); ++number)
        name = clip + "_" + std::to_string(number);
    if (name != clip)
        report.warn("clip '" + clip + "' is written to '" +
                    clipFile(scene, name).filename().string() + "', as the model reads '" +
                    clipFile(scene, clip).filename().string() + "'");
    return clipFile(scene, name);
}

} // namespace

ConvertResult stageModel(const ConvertOptions &options, Report &report, Progress &progress,
                         FileTransaction &files, InputFiles &inputs) {
    const Converted made = makeScene(options, report, progress, files, inputs);
    const ConvertResult result = figuresOf(made);
    if (result.triangles == 0)
        throw Failure(options.model.string(), "has no triangles to draw");

    progress.step("writing", 0.95, 1);
    std::error_code none;
    if (!made.clips.empty() && fs::exists(options.scene, none) &&
        !fs::is_regular_file(options.scene, none))
        throw Failure(options.scene.string(),
                      "is no regular file, so the clips cannot stand beside it");
    for (const Clip &clip : made.clips)
        stage(files, freeClipFile(options.scene, clip.name, inputs, report),
              ravolt::encodeRva(clip.frames));
    stage(files, options.scene, ravolt::encodeRve(made.scene));
    return result;
}

ConvertResult convertModel(const ConvertOptions &options, Report &report, Progress &progress) {
    FileTransaction files;
    InputFiles inputs;
    const ConvertResult result = stageModel(options, report, progress, files, inputs);
    const std::string error = files.commit();
    if (!error.empty())
        throw Failure(error);
    return result;
}

} // namespace ravolt::tool
