// Builds the list of nodes, their unique names and their poses.

#include "tools/convert/skeleton.h"

#include "tools/common/rotation.h"
#include "tools/common/sceneNames.h"
#include "tools/writers/rveWriter.h"

#include <algorithm>

namespace ravolt::tool {

namespace {

// The format's texts end at a zero and are at most 255 bytes long.
std::string nameInModel(const aiScene &scene, const aiNode &node) {
    std::string name = node.mName.C_Str();
    if (name.empty() && node.mNumMeshes > 0)
        name = scene.mMeshes[node.mMeshes[0]]->mName.C_Str();
    return name.empty() ? "node" : name;
}

} // namespace

double poseExtent(const Pose &pose) {
    double extent = 0;
    for (const Affine &world : pose.world)
        extent = std::max(extent, length(world.offset - pose.world[0].offset));
    return extent;
}

Skeleton::Skeleton(const aiScene &model, const Matrix &axes, int firstLevel, Report &lines)
    : scene(model), report(lines), outermost{axes, {}}, names({"[root]", skeletonRootName}) {
    gather(*scene.mRootNode, noJoint, noJoint, firstLevel);
    own = pose(locals, nullptr);
    if (shortenedNames)
        report.warn(counted(shortenedNames, "name", "names") +
                    " of nodes cut: a name has at most 255 characters");
    if (renamed)
        report.note(counted(renamed, "node", "nodes") +
                    " renamed: bones and clips find nodes by names, which must differ");
    if (flattened)
        report.warn("nodes below level " + std::to_string(maxLevel) +
                    " moved up to it: the engine tells places in the world down to there");
}

std::string Skeleton::freeName(const std::string &preferred, std::size_t more) {
    constexpr std::size_t suffixLength = 12;
    const std::size_t longest = ravolt::rveTextLength - suffixLength + more;
    const std::string plain = preferred.substr(0, longest);
    std::string name = plain;
    while (!names.insert(name).second)
        name = plain + "_" + std::to_string(++numbers.try_emplace(plain, 1).first->second);
    return name;
}

Affine Skeleton::finiteLocal(const aiNode &node) {
    const Affine local = affineFrom(node.mTransformation);
    if (isFinite(local))
        return local;
    report.warn("node '" + nameInModel(scene, node) +
                "': its transform has no finite values and is left out");
    return Affine();
}

void Skeleton::gather(const aiNode &node, std::size_t parent, std::size_t parentInModel,
                      int level) {
    const std::size_t here = list.size();
    const std::string preferred = nameInModel(scene, node);
    const std::string name = freeName(preferred);
    if (name.rfind(preferred, 0) != 0)
        ++shortenedNames;
    else if (name != preferred)
        ++renamed;
    list.push_back({&node, name, parent, parentInModel, level});
    locals.push_back(finiteLocal(node));
    byName.emplace(node.mName.C_Str(), here); // the first one counts

    const bool deep = level >= maxLevel && node.mNumChildren > 0;
    flattened |= deep;
    for (unsigned int i = 0; i < node.mNumChildren; ++i)
        if (deep)
            gather(*node.mChildren[i], parent, here, level);
        else
            gather(*node.mChildren[i], here, here, level + 1);
}

std::size_t Skeleton::find(const char *name) const {
    const auto found = byName.find(name);
    return found == byName.end() ? noJoint : found->second;
}

Pose Skeleton::poseOf(const std::vector<Affine> &localTransforms, const Pose &before) const {
    return pose(localTransforms, &before);
}

// Whether a joint has the transform of the model's own pose, which is computed already.
bool Skeleton::isInOwnPose(std::size_t index, const std::vector<Affine> &localTransforms,
                           const Pose &made) const {
    const Joint &joint = list[index];
    return !own.placement.empty() && joint.parent == joint.parentInModel &&
           localTransforms[index] == locals[index] &&
           (joint.parent == noJoint ||
            made.placement[joint.parent].residual == own.placement[joint.parent].residual);
}

Pose Skeleton::pose(const std::vector<Affine> &localTransforms, const Pose *before) const {
    Pose made;
    std::vector<Affine> relative; // to the parent in the scene
    for (std::size_t i = 0; i < list.size(); ++i) {
        const Joint &joint = list[i];
        const bool moved = joint.parent != joint.parentInModel;
        const bool isTop = joint.parent == noJoint;
        relative.push_back(moved ? relative[joint.parentInModel] * localTransforms[i]
                                 : localTransforms[i]);
        Placement at = isInOwnPose(i, localTransforms, made)
                           ? own.placement[i]
                           : decompose(relative[i], isTop ? outermost.linear
                                                          : made.placement[joint.parent].residual);
        if (before)
            at = turnedNear(at, before->placement[i].degrees);
        const Affine local{rotationFromDegrees(at.degrees), at.position};
        made.placement.push_back(at);
        made.world.push_back(isTop ? local : made.world[joint.parent] * local);
    }
    return made;
}

} // namespace ravolt::tool
