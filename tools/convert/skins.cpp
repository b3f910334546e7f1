// For a joint j with the residual r and a mesh with the offset matrix o for it, r * o transforms
// the data of the mesh into the frame that the engine moves. In the file's pose all joints of a
// vertex must agree on its position, which constrains the joints that share vertices relative to
// each other: world(a) * r_a * o_a = world(b) * r_b * o_b.

#include "tools/convert/skins.h"

#include "tools/common/rotation.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace ravolt::tool {

namespace {

// Position and rotation alone.
Affine inverseOfRigid(const Affine &rigid) {
    const Matrix back = transposed(rigid.linear);
    return {back, back * rigid.offset * -1.0};
}

void addWeighted(Affine &sum, const Affine &map, double weight) {
    for (unsigned int i = 0; i < 3; ++i)
        for (unsigned int j = 0; j < 3; ++j)
            sum.linear[i][j] += map.linear[i][j] * weight;
    sum.offset = sum.offset + map.offset * weight;
}

} // namespace

Skins::Skins(const aiScene &model, const Skeleton &joints, Report &report)
    : scene(model), skeleton(joints), bones(joints.joints().size(), false) {
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        skins.push_back(read(*scene.mMeshes[i]));
    for (std::size_t i = 0; i < skeleton.joints().size(); ++i) {
        const aiNode &node = *skeleton.joints()[i].node;
        for (unsigned int k = 0; k < node.mNumMeshes; ++k) {
            const Skin &skin = skins[node.mMeshes[k]];
            for (const BoneInfluences &influences : skin.influences)
                for (const Influence &influence : influences)
                    if (influence.weight > 0)
                        bones[influence.bone == noJoint ? i : skin.joints[influence.bone]] = true;
        }
    }
    setBindPose();
    warnOfOtherBindPoses(report);
    if (!missing.empty())
        report.warn(counted(missing.size(), "bone", "bones") + " that no node is left out");
    if (simplified)
        report.warn(counted(simplified, "vertex", "vertices") + " held by more than " +
                    std::to_string(bonesOfAVertex) + " bones: the strongest kept");
}

bool Skins::any() const {
    return std::any_of(skins.begin(), skins.end(),
                       [](const Skin &skin) { return !skin.influences.empty(); });
}

// Vertices whose bones are all missing get the influences of their neighbours.
void Skins::followNeighbours(const aiMesh &mesh, const std::vector<bool> &lost,
                             std::vector<std::vector<Influence>> &influences) {
    for (bool again = true; again;) {
        again = false;
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f)
            for (unsigned int i = 0; i < mesh.mFaces[f].mNumIndices; ++i)
                for (unsigned int k = 0; k < mesh.mFaces[f].mNumIndices; ++k) {
                    const unsigned int to = mesh.mFaces[f].mIndices[i];
                    const unsigned int from = mesh.mFaces[f].mIndices[k];
                    if (lost[to] && influences[to].empty() && !influences[from].empty()) {
                        influences[to] = influences[from];
                        again = true;
                    }
                }
    }
}

Skins::Skin Skins::read(const aiMesh &mesh) {
    if (mesh.mNumBones == 0)
        return {};
    Skin skin;
    std::vector<std::vector<Influence>> all(mesh.mNumVertices);
    std::vector<bool> lost(mesh.mNumVertices, false); // by bones that the model does not have
    bool any = false;
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        const aiBone &bone = *mesh.mBones[b];
        const std::size_t joint = skeleton.find(bone.mName.C_Str());
        const Affine offset = affineFrom(bone.mOffsetMatrix);
        skin.joints.push_back(joint);
        skin.toJoint.push_back(offset);
        if (joint == noJoint || !isFinite(offset)) {
            missing.insert(bone.mName.C_Str());
            for (unsigned int i = 0; i < bone.mNumWeights; ++i)
                lost[bone.mWeights[i].mVertexId] = true;
            continue;
        }
        skin.toJoint[b] = Affine{skeleton.ownPose().placement[joint].residual, {}} * offset;
        for (unsigned int i = 0; i < bone.mNumWeights; ++i)
            if (bone.mWeights[i].mWeight > 0) {
                all[bone.mWeights[i].mVertexId].push_back({b, bone.mWeights[i].mWeight});
                any = true;
            }
    }
    if (!any)
        return {};
    followNeighbours(mesh, lost, all);
    for (std::vector<Influence> &candidates : all) {
        std::stable_sort(
            candidates.begin(), candidates.end(),
            [](const Influence &a, const Influence &b) { return a.weight > b.weight; });
        simplified += candidates.size() > bonesOfAVertex;
        if (candidates.empty())
            candidates.push_back({noJoint, 1});
        BoneInfluences influences;
        double sum = 0;
        for (std::size_t k = 0; k < std::min(candidates.size(), influences.size()); ++k)
            sum += candidates[k].weight;
        for (std::size_t k = 0; k < std::min(candidates.size(), influences.size()); ++k)
            influences[k] = {candidates[k].bone, candidates[k].weight / sum};
        skin.influences.push_back(influences);
    }
    return skin;
}

std::vector<std::vector<Skins::JointConstraint>> Skins::jointConstraints() const {
    std::vector<std::vector<JointConstraint>> result(bones.size());
    for (const Skin &skin : skins) {
        std::set<std::pair<std::size_t, std::size_t>> pairs; // of bones of this mesh
        for (const BoneInfluences &influences : skin.influences)
            for (std::size_t k = 1; k < influences.size() && influences[k].weight > 0; ++k)
                pairs.emplace(influences[0].bone, influences[k].bone);
        for (const auto &[a, b] : pairs) {
            Affine back;
            if (skin.joints[a] == skin.joints[b])
                continue;
            if (invert(skin.toJoint[b], back))
                result[skin.joints[a]].push_back({skin.joints[b], skin.toJoint[a] * back});
            if (invert(skin.toJoint[a], back))
                result[skin.joints[b]].push_back({skin.joints[a], skin.toJoint[b] * back});
        }
    }
    return result;
}

// The transforms of the joints that share vertices, group by group. The first joint of a group
// has that of the model's own pose.
std::vector<std::optional<Affine>> Skins::boundTransforms() const {
    const std::vector<std::vector<JointConstraint>> constraints = jointConstraints();
    std::vector<std::optional<Affine>> transforms(bones.size());
    for (std::size_t first = 0; first < bones.size(); ++first) {
        if (constraints[first].empty() || transforms[first])
            continue;
        transforms[first] = skeleton.ownPose().world[first];
        std::vector<std::size_t> group = {first};
        for (std::size_t next = 0; next < group.size(); ++next)
            for (const JointConstraint &constraint : constraints[group[next]])
                if (!transforms[constraint.joint]) {
                    const Affine whole = *transforms[group[next]] * constraint.toFirst;
                    const Placement rigid = decompose(whole, Matrix());
                    transforms[constraint.joint] = {rotationFromDegrees(rigid.degrees),
                                                    rigid.position};
                    group.push_back(constraint.joint);
                }
    }
    return transforms;
}

void Skins::setBindPose() {
    const Pose &own = skeleton.ownPose();
    const std::vector<std::optional<Affine>> bound = boundTransforms();
    const double tolerance = 1e-5, distance = poseExtent(own) * 1e-5;
    bind = own;
    for (std::size_t i = 0; i < bones.size(); ++i) {
        const std::size_t parent = skeleton.joints()[i].parent;
        const Affine above = parent == noJoint ? Affine() : bind.world[parent];
        Placement &at = bind.placement[i];
        const Affine usual = above * Affine{rotationFromDegrees(at.degrees), at.position};
        bind.world[i] = usual;
        if (!bound[i])
            continue;
        const Affine &wanted = *bound[i];
        if (largestDifference(usual.linear, wanted.linear) < tolerance &&
            length(usual.offset - wanted.offset) <= distance)
            continue;
        changed = true;
        const Placement local =
            turnedNear(decompose(inverseOfRigid(above) * wanted, Matrix()), at.degrees);
        at.degrees = local.degrees;
        at.position = local.position;
        bind.world[i] = above * Affine{rotationFromDegrees(at.degrees), at.position};
    }
}

// Whether all joints of a vertex agree on its position.
bool Skins::fitsBindPose(const Skin &skin, const aiMesh &mesh, std::size_t vertex,
                         double tolerance) const {
    const Vector position = mesh.mVertices[vertex];
    const auto placed = [&](const Influence &influence) {
        return (bind.world[skin.joints[influence.bone]] * skin.toJoint[influence.bone])(position);
    };
    const BoneInfluences &influences = skin.influences[vertex];
    for (std::size_t k = 1; k < influences.size() && influences[k].weight > 0; ++k)
        if (length(placed(influences[k]) - placed(influences[0])) > tolerance)
            return false;
    return true;
}

// A scene has one pose in which all its skins are bound.
void Skins::warnOfOtherBindPoses(Report &report) const {
    const double tolerance = poseExtent(bind) * 1e-3;
    std::size_t vertices = 0;
    for (std::size_t i = 0; i < skins.size(); ++i)
        for (std::size_t vertex = 0; vertex < skins[i].influences.size(); ++vertex)
            vertices += !fitsBindPose(skins[i], *scene.mMeshes[i], vertex, tolerance);
    if (vertices)
        report.warn("skins bound in different poses on one skeleton, a scene has one pose: " +
                    counted(vertices, "vertex", "vertices") +
                    " of several bones moved only about as the model says");
}

void Skins::setVertexTransform(unsigned int mesh, std::size_t joint, VertexTransform &transform) {
    const Skin &skin = skins[mesh];
    const Affine own = bind.world[joint] * Affine{bind.placement[joint].residual, {}};
    for (const BoneInfluences &influences : skin.influences) {
        Affine map{Matrix() * 0, {}};
        VertexInfluences joints;
        for (std::size_t k = 0; k < influences.size() && influences[k].weight > 0; ++k) {
            const bool free = influences[k].bone == noJoint;
            const std::size_t by = free ? joint : skin.joints[influences[k].bone];
            addWeighted(map, free ? own : bind.world[by] * skin.toJoint[influences[k].bone],
                        influences[k].weight);
            joints.bone[k] = static_cast<std::uint32_t>(by);
            joints.weight[k] = static_cast<float>(influences[k].weight);
        }
        transform.posed.push_back(map);
        transform.influences.push_back(joints);
    }
}

} // namespace ravolt::tool
