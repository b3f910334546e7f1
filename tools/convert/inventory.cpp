// Counts the contents of a model that a scene file cannot store.

#include "tools/convert/inventory.h"

#include <algorithm>

namespace ravolt::tool {

namespace {

template <class Test> std::size_t countMeshes(const aiScene &scene, Test test) {
    return static_cast<std::size_t>(std::count_if(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                                                  [&](const aiMesh *mesh) { return test(*mesh); }));
}

void reportMeshes(const aiScene &scene, const char *what, bool (*test)(const aiMesh &),
                  Report &report) {
    if (const std::size_t number = countMeshes(scene, test))
        report.warn(std::string(what) + " of " + counted(number, "mesh", "meshes") + " left out");
}

// Lines or points, which are in meshes of their own.
std::size_t countPrimitives(const aiScene &scene, unsigned int kind) {
    std::size_t number = 0;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        if (scene.mMeshes[i]->mPrimitiveTypes == kind)
            number += scene.mMeshes[i]->mNumFaces;
    return number;
}

} // namespace

void reportUnsupported(const aiScene &scene, Report &report) {
    reportMeshes(
        scene, "morph targets", [](const aiMesh &mesh) { return mesh.mNumAnimMeshes > 0; }, report);
    reportMeshes(
        scene, "further sets of texture coordinates",
        [](const aiMesh &mesh) { return mesh.GetNumUVChannels() > 1; }, report);
    if (const std::size_t lines = countPrimitives(scene, aiPrimitiveType_LINE))
        report.warn(counted(lines, "line", "lines") + " left out: only triangles are drawn");
    if (const std::size_t points = countPrimitives(scene, aiPrimitiveType_POINT))
        report.warn(counted(points, "point", "points") + " left out: only triangles are drawn");
    if (scene.mNumCameras)
        report.warn(counted(scene.mNumCameras, "camera", "cameras") + " left out");
}

} // namespace ravolt::tool
