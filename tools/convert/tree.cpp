// Each node of the model becomes one node of the scene:
// - without triangles: a plain node, or a hidden mesh when it is turned, as plain nodes of the
//   format have no rotation, or when it is a bone, as the engine's bones are meshes;
// - with triangles of one material: a mesh;
// - with more: such a node with a child mesh for each material, and for each piece of a mesh that
//   is above the format's limit.
// With skins all of them are below a node "HumanoidRoot". The skinned meshes are its children,
// without a transform: the engine skins them in the frame of that node, wherever their own nodes
// are. Scale, shear and mirroring are passed down the tree as the residual of each node's matrix
// and applied to vertices and positions.

#include "tools/convert/tree.h"

#include "tools/common/rotation.h"
#include "tools/common/sceneNames.h"
#include "tools/convert/lights.h"
#include "tools/convert/meshes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace ravolt::tool {

namespace {

using ravolt::RveKind;
using ravolt::RveNode;

// The maximum length of the suffixes of names, such as the number of a piece.
constexpr std::size_t suffixLength = 12;

// One mesh of the scene: triangles of one material.
struct MeshPart {
    std::string material;
    Geometry geometry;
};

ravolt::RveSkin skinFrom(const Geometry &geometry, const Skeleton &skeleton) {
    ravolt::RveSkin skin;
    skin.weightsPerVertex = bonesOfAVertex;
    const std::vector<std::uint32_t> bones = bonesOf(geometry);
    for (std::uint32_t joint : bones)
        skin.bones.push_back(skeleton.joints()[joint].name);
    for (const VertexInfluences &influences : geometry.influences)
        for (std::size_t k = 0; k < bonesOfAVertex; ++k) {
            const bool isUsed = influences.weight[k] > 0;
            const auto found = std::lower_bound(bones.begin(), bones.end(), influences.bone[k]);
            skin.boneIndices.push_back(isUsed ? static_cast<std::uint8_t>(found - bones.begin())
                                              : std::uint8_t{0});
            skin.boneWeights.push_back(influences.weight[k]);
        }
    return skin;
}

ravolt::RveMesh meshFrom(MeshPart part, const Skeleton &skeleton) {
    const Bounds bounds = boundsOf(part.geometry);
    ravolt::RveMesh mesh;
    if (!part.geometry.influences.empty())
        mesh.skin = skinFrom(part.geometry, skeleton);
    mesh.material = part.material;
    mesh.radius = bounds.radius;
    mesh.minimum = {bounds.minimum.x, bounds.minimum.y, bounds.minimum.z};
    mesh.maximum = {bounds.maximum.x, bounds.maximum.y, bounds.maximum.z};
    mesh.vertices.reserve(part.geometry.positions.size());
    for (const Point &p : part.geometry.positions)
        mesh.vertices.push_back({p.x, p.y, p.z});
    mesh.normals.reserve(part.geometry.normals.size());
    for (const Point &n : part.geometry.normals)
        mesh.normals.push_back({n.x, n.y, n.z});
    mesh.uvs.reserve(part.geometry.texCoords.size());
    for (const TexCoord &texCoord : part.geometry.texCoords)
        mesh.uvs.push_back({texCoord.u, texCoord.v});
    mesh.faces.reserve(part.geometry.faces.size());
    for (const auto &[a, b, c] : part.geometry.faces)
        mesh.faces.push_back({static_cast<std::uint16_t>(a), static_cast<std::uint16_t>(b),
                              static_cast<std::uint16_t>(c)});
    return mesh;
}

class TreeBuilder {
  public:
    TreeBuilder(const Model &source, const std::vector<Surface> &materials, Skeleton &joints,
                Skins &allSkins, const Clips &allClips, Report &lines, Progress &bar)
        : scene(source.scene()), surfaces(materials), skeleton(joints), skins(allSkins),
          clips(allClips), lights(source, lines), report(lines), progress(bar) {}

    RveNode build();

  private:
    struct Parts {
        std::vector<MeshPart> rigid, skinned;
    };

    void addNode(std::size_t joint, RveNode &target);
    Parts partsOf(std::size_t joint);
    void addPieces(std::size_t joint, const std::string &material, Geometry geometry,
                   std::vector<MeshPart> &parts);
    RveNode meshNode(const std::string &name, MeshPart part);
    void fill(RveNode &target, std::vector<MeshPart> parts, bool bone);
    void addSkinned(const std::string &name, std::vector<MeshPart> parts);
    void addLights(RveNode &target, std::size_t joint);
    bool isStatic(std::size_t joint) const;
    bool isNothingButSkin(std::size_t joint, const Parts &parts) const;
    void checkTotals();

    const aiScene &scene;
    const std::vector<Surface> &surfaces;
    Skeleton &skeleton;
    Skins &skins;
    const Clips &clips;
    ModelLights lights;
    Report &report;
    Progress &progress;
    std::vector<std::vector<std::size_t>> children; // of each joint in the scene
    std::vector<RveNode> skinned;                   // below the skeleton's root
    std::size_t drawn = 0, made = 0, meshesDone = 0;
    Dropped dropped;
};

bool TreeBuilder::isStatic(std::size_t joint) const {
    return !skins.isBone(joint) && !clips.moves(joint);
}

TreeBuilder::Parts TreeBuilder::partsOf(std::size_t joint) {
    const aiNode &node = *skeleton.joints()[joint].node;
    std::map<unsigned int, Geometry> rigid, skinnedOnes; // by material
    for (unsigned int i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[node.mMeshes[i]];
        progress.update(static_cast<double>(meshesDone++) / std::max(1u, scene.mNumMeshes));
        if (!(mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE))
            continue;
        const Surface &surface = surfaces[mesh.mMaterialIndex];
        const bool isSkinned = skins.isSkinned(node.mMeshes[i]);
        VertexTransform transform;
        transform.residual = skeleton.ownPose().placement[joint].residual;
        if (isSkinned)
            skins.setVertexTransform(node.mMeshes[i], joint, transform);
        // Some exporters number the sets from 1.
        transform.channel = mesh.mTextureCoords[surface.channel] ? surface.channel : 0;
        transform.texture = surface.texture;
        transform.bothSides = surface.bothSides;
        const Dropped lost =
            append((isSkinned ? skinnedOnes : rigid)[mesh.mMaterialIndex], mesh, transform);
        dropped.tooFar += lost.tooFar;
        dropped.withoutArea += lost.withoutArea;
    }
    Parts parts;
    for (auto &[material, geometry] : rigid)
        addPieces(joint, surfaces[material].name, std::move(geometry), parts.rigid);
    for (auto &[material, geometry] : skinnedOnes)
        addPieces(joint, surfaces[material].name, std::move(geometry), parts.skinned);
    return parts;
}

void TreeBuilder::addPieces(std::size_t joint, const std::string &material, Geometry geometry,
                            std::vector<MeshPart> &parts) {
    if (geometry.empty())
        return;
    const std::string where = "node '" + skeleton.joints()[joint].name + "': ";
    const std::size_t bones = bonesOf(geometry).size();
    std::vector<Geometry> pieces = split(std::move(geometry));
    if (pieces.size() > 1 && bones > bonesOfAMesh)
        report.note(where + "mesh of " + std::to_string(bones) + " bones split into " +
                    std::to_string(pieces.size()) + ", one holds at most " +
                    std::to_string(bonesOfAMesh));
    else if (pieces.size() > 1)
        report.note(where + "mesh split into " + std::to_string(pieces.size()) +
                    ", one holds at most " + std::to_string(meshLimit) + " vertices or faces");
    for (Geometry &piece : pieces)
        parts.push_back({material, std::move(piece)});
}

RveNode TreeBuilder::meshNode(const std::string &name, MeshPart part) {
    RveNode node;
    node.kind = RveKind::mesh;
    node.name = name;
    node.mesh = meshFrom(std::move(part), skeleton);
    ++made;
    return node;
}

void TreeBuilder::fill(RveNode &target, std::vector<MeshPart> parts, bool bone) {
    drawn += parts.size();
    if (parts.size() == 1) {
        target.kind = RveKind::mesh;
        target.mesh = meshFrom(std::move(parts[0]), skeleton);
        return;
    }
    const bool turned = target.rotation != ravolt::RveVector{0, 0, 0};
    target.kind = turned || bone ? RveKind::mesh : RveKind::node;
    target.mesh.hidden = true;
    target.mesh.material = ""; // the engine would log an error for "[none]"
    for (std::size_t i = 0; i < parts.size(); ++i)
        target.children.push_back(
            meshNode(skeleton.freeName(target.name + "_" + std::to_string(i + 1), suffixLength),
                     std::move(parts[i])));
}

void TreeBuilder::addSkinned(const std::string &name, std::vector<MeshPart> parts) {
    drawn += parts.size();
    for (std::size_t i = 0; i < parts.size(); ++i)
        skinned.push_back(meshNode(
            i == 0 ? name : skeleton.freeName(name + "_" + std::to_string(i + 1), suffixLength),
            std::move(parts[i])));
}

// A node with nothing but a light is replaced by the light; others get it as a child.
void TreeBuilder::addLights(RveNode &target, std::size_t joint) {
    const Placement &placement = skins.bindPose().placement[joint];
    const aiNode &node = *skeleton.joints()[joint].node;
    const std::vector<const aiLight *> own = lights.of(node.mName.C_Str());
    drawn += own.size();
    if (own.size() == 1 && node.mNumMeshes == 0 && node.mNumChildren == 0 && isStatic(joint)) {
        const Affine rigid{rotationFromDegrees(placement.degrees), placement.position};
        const std::string name = target.name;
        target = lights.convert(*own[0], rigid * Affine{placement.residual, {}});
        target.name = name;
        return;
    }
    for (const aiLight *light : own) {
        RveNode child = lights.convert(*light, {placement.residual, {}});
        child.name = skeleton.freeName(target.name + "_light", suffixLength);
        target.children.push_back(std::move(child));
        ++made;
    }
}

// Such a node is replaced by its mesh, which gets its name.
bool TreeBuilder::isNothingButSkin(std::size_t joint, const Parts &parts) const {
    return !parts.skinned.empty() && parts.rigid.empty() && children[joint].empty() &&
           isStatic(joint) && lights.of(skeleton.joints()[joint].node->mName.C_Str()).empty();
}

// Adds the node with its subtree below `target`.
void TreeBuilder::addNode(std::size_t joint, RveNode &target) {
    Parts parts = partsOf(joint);
    if (isNothingButSkin(joint, parts)) {
        addSkinned(skeleton.joints()[joint].name, std::move(parts.skinned));
        return;
    }
    const Placement &placement = skins.bindPose().placement[joint];
    RveNode result;
    result.name = skeleton.joints()[joint].name;
    result.position = floatsOf(placement.position);
    result.rotation = floatsOf(placement.degrees);
    fill(result, std::move(parts.rigid), skins.isBone(joint));
    if (!parts.skinned.empty())
        addSkinned(skeleton.freeName(result.name + "_skin", suffixLength),
                   std::move(parts.skinned));
    addLights(result, joint);
    ++made;
    for (std::size_t child : children[joint])
        addNode(child, result);
    target.children.push_back(std::move(result));
}

void TreeBuilder::checkTotals() {
    if (dropped.tooFar)
        report.warn(counted(dropped.tooFar, "face", "faces") +
                    " dropped: too far away for single precision");
    if (dropped.withoutArea)
        report.note(counted(dropped.withoutArea, "face", "faces") + " without area left out");
    if (drawn > maxDrawn)
        report.warn(std::to_string(drawn) + " meshes and lights: the engine draws at most " +
                    std::to_string(maxDrawn) + " in a frame");
    constexpr std::size_t maxSkinned = 256;
    if (skinned.size() > maxSkinned)
        report.warn(std::to_string(skinned.size()) +
                    " meshes with bones: the engine draws at most " + std::to_string(maxSkinned) +
                    " in a frame");
    constexpr std::size_t maxIds = 65535;
    if (made > maxIds)
        report.warn(std::to_string(made) + " nodes: the engine can tell " + std::to_string(maxIds) +
                    " objects apart");
}

RveNode TreeBuilder::build() {
    const std::vector<Joint> &joints = skeleton.joints();
    children.resize(joints.size());
    std::vector<std::size_t> tops;
    for (std::size_t i = 0; i < joints.size(); ++i)
        (joints[i].parent == noJoint ? tops : children[joints[i].parent]).push_back(i);

    RveNode root;
    root.kind = RveKind::mesh;
    root.name = "[root]";
    root.mesh.hidden = true;
    for (std::size_t top : tops)
        addNode(top, root);
    if (skins.any()) {
        RveNode figure;
        figure.name = skeletonRootName;
        figure.children = std::exchange(root.children, {});
        std::move(skinned.begin(), skinned.end(), std::back_inserter(figure.children));
        root.children.push_back(std::move(figure));
    }
    checkTotals();
    return root;
}

} // namespace

RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces, Skeleton &skeleton,
                    Skins &skins, const Clips &clips, Report &report, Progress &progress) {
    return TreeBuilder(model, surfaces, skeleton, skins, clips, report, progress).build();
}

} // namespace ravolt::tool
