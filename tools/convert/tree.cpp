// Each node of the model becomes one node of the scene:
// - without triangles: a plain node, or a hidden mesh when it is turned, as plain nodes of the
//   format have no rotation;
// - with triangles of one material: a mesh;
// - with more: such a node with a child mesh for each material, and for each piece of a mesh that
//   is above the format's limit.
// Scale, shear and mirroring travel down the tree as the rest of each node's matrix and end in
// vertices and positions.

#include "tools/convert/tree.h"

#include "tools/convert/lights.h"
#include "tools/convert/meshes.h"
#include "tools/convert/pose.h"
#include "tools/convert/transforms.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace ravolt::tool {

namespace {

using ravolt::RveKind;
using ravolt::RveNode;

ravolt::RveVector floats(const Vector &v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

// One mesh of the scene to be: some triangles of one material.
struct Part {
    std::string material;
    Geometry geometry;
};

ravolt::RveMesh meshFrom(Part part) {
    const Bounds bounds = boundsOf(part.geometry);
    ravolt::RveMesh mesh;
    mesh.material = part.material;
    mesh.radius = bounds.radius;
    mesh.minimum = {bounds.minimum.x, bounds.minimum.y, bounds.minimum.z};
    mesh.maximum = {bounds.maximum.x, bounds.maximum.y, bounds.maximum.z};
    for (const Point &p : part.geometry.positions)
        mesh.vertices.push_back({p.x, p.y, p.z});
    for (const Point &n : part.geometry.normals)
        mesh.normals.push_back({n.x, n.y, n.z});
    for (const TexturePlace &place : part.geometry.texturePlaces)
        mesh.uvs.push_back({place.u, place.v});
    for (const auto &[a, b, c] : part.geometry.faces)
        mesh.faces.push_back({static_cast<std::uint16_t>(a), static_cast<std::uint16_t>(b),
                              static_cast<std::uint16_t>(c)});
    return mesh;
}

// The frame of one node while its subtree is built.
struct Frame {
    Affine local;      // of the model, relative to the parent in the scene
    Matrix parentRest; // see place()
    Affine parent;     // where the parent in the scene stands, position and rotation alone
    int level = 0;
};

class TreeBuilder {
  public:
    TreeBuilder(const Model &source, const std::vector<Surface> &materials, double factor,
                Report &lines, Progress &bar)
        : scene(source.scene()), surfaces(materials), lights(source, lines), report(lines),
          progress(bar), outermost{Matrix() * factor, {}}, places(placesOfNodes(scene, outermost)) {
    }

    RveNode build();

  private:
    // The node with its subtree. Below the deepest level it comes without its children, which
    // follow it in the list.
    std::vector<RveNode> nodes(const aiNode &node, const Frame &frame);

    std::vector<Part> partsOf(const aiNode &node, const Matrix &rest, const Affine &rigid);
    void fill(RveNode &target, std::vector<Part> parts);
    void addLights(RveNode &target, const aiNode &node, const Placement &placement);
    std::string nameOf(const aiNode &node);
    Affine localOf(const aiNode &node);
    void checkTotals();

    const aiScene &scene;
    const std::vector<Surface> &surfaces;
    Lights lights;
    Report &report;
    Progress &progress;
    Affine outermost;
    NodePlaces places;
    std::size_t drawn = 0, made = 0, meshesDone = 0, shortenedNames = 0;
    Dropped dropped;
    bool flattened = false;
};

// The format's texts end at a zero and are at most 255 bytes long.
std::string TreeBuilder::nameOf(const aiNode &node) {
    std::string name = node.mName.C_Str();
    if (name.empty() && node.mNumMeshes > 0)
        name = scene.mMeshes[node.mMeshes[0]]->mName.C_Str();
    if (name.empty())
        name = "node";
    constexpr std::size_t roomForNumber = 12;
    if (name.size() > ravolt::rveTextLength - roomForNumber) {
        name.resize(ravolt::rveTextLength - roomForNumber);
        ++shortenedNames;
    }
    return name;
}

Affine TreeBuilder::localOf(const aiNode &node) {
    const Affine local = affineFrom(node.mTransformation);
    if (isFinite(local))
        return local;
    report.warn("node '" + nameOf(node) + "': its transform has no finite values and is left out");
    return Affine();
}

std::vector<Part> TreeBuilder::partsOf(const aiNode &node, const Matrix &rest,
                                       const Affine &rigid) {
    Affine toNode;
    invert(rigid, toNode);
    std::map<unsigned int, Geometry> byMaterial;
    for (unsigned int i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[node.mMeshes[i]];
        progress.update(static_cast<double>(meshesDone++) / std::max(1u, scene.mNumMeshes));
        if (!(mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE))
            continue;
        const Surface &surface = surfaces[mesh.mMaterialIndex];
        Carrying carrying;
        carrying.rest = rest;
        carrying.posed = poseOf(mesh, places, rigid * Affine{rest, {}});
        for (Affine &map : carrying.posed)
            map = toNode * map;
        // Some exporters number the sets from 1.
        carrying.channel = mesh.mTextureCoords[surface.channel] ? surface.channel : 0;
        carrying.texture = surface.texture;
        carrying.bothSides = surface.bothSides;
        const Dropped lost = append(byMaterial[mesh.mMaterialIndex], mesh, carrying);
        dropped.tooFar += lost.tooFar;
        dropped.withoutArea += lost.withoutArea;
    }

    std::vector<Part> parts;
    for (auto &[material, geometry] : byMaterial) {
        if (geometry.empty())
            continue;
        std::vector<Geometry> pieces = split(std::move(geometry));
        if (pieces.size() > 1)
            report.note("node '" + nameOf(node) + "': mesh split into " +
                        std::to_string(pieces.size()) + ", one holds at most " +
                        std::to_string(meshLimit) + " vertices or faces");
        for (Geometry &piece : pieces)
            parts.push_back({surfaces[material].name, std::move(piece)});
    }
    return parts;
}

void TreeBuilder::fill(RveNode &target, std::vector<Part> parts) {
    drawn += parts.size();
    if (parts.size() == 1) {
        target.kind = RveKind::mesh;
        target.mesh = meshFrom(std::move(parts[0]));
        return;
    }
    const bool turned = target.rotation != ravolt::RveVector{0, 0, 0};
    target.kind = turned ? RveKind::mesh : RveKind::node;
    target.mesh.hidden = true;
    target.mesh.material = ""; // "[none]" would be worth a complaint of the engine
    for (std::size_t i = 0; i < parts.size(); ++i) {
        RveNode child;
        child.kind = RveKind::mesh;
        child.name = target.name + "_" + std::to_string(i + 1);
        child.mesh = meshFrom(std::move(parts[i]));
        target.children.push_back(std::move(child));
        ++made;
    }
}

// A node that is nothing but a light becomes the light; others get it as a child.
void TreeBuilder::addLights(RveNode &target, const aiNode &node, const Placement &placement) {
    const std::vector<const aiLight *> own = lights.of(node.mName.C_Str());
    drawn += own.size();
    if (own.size() == 1 && node.mNumMeshes == 0 && node.mNumChildren == 0) {
        const Affine rigid{rotationFromDegrees(placement.degrees), placement.position};
        target = lights.convert(*own[0], rigid * Affine{placement.rest, {}});
        return;
    }
    for (const aiLight *light : own) {
        RveNode child = lights.convert(*light, {placement.rest, {}});
        child.name = target.name + "_light";
        target.children.push_back(std::move(child));
        ++made;
    }
}

std::vector<RveNode> TreeBuilder::nodes(const aiNode &node, const Frame &frame) {
    const Placement placement = place(frame.local, frame.parentRest);
    const Affine rigid =
        frame.parent * Affine{rotationFromDegrees(placement.degrees), placement.position};
    std::vector<RveNode> result(1);
    result[0].name = nameOf(node);
    result[0].position = floats(placement.position);
    result[0].rotation = floats(placement.degrees);
    fill(result[0], partsOf(node, placement.rest, rigid));
    addLights(result[0], node, placement);
    ++made;

    const bool deep = frame.level >= deepestLevel && node.mNumChildren > 0;
    flattened |= deep;
    for (unsigned int i = 0; i < node.mNumChildren; ++i) {
        const Affine local = localOf(*node.mChildren[i]);
        const Frame inner =
            deep ? Frame{frame.local * local, frame.parentRest, frame.parent, frame.level}
                 : Frame{local, placement.rest, rigid, frame.level + 1};
        std::vector<RveNode> below = nodes(*node.mChildren[i], inner);
        std::vector<RveNode> &home = deep ? result : result[0].children;
        std::move(below.begin(), below.end(), std::back_inserter(home));
    }
    return result;
}

void TreeBuilder::checkTotals() {
    if (dropped.tooFar)
        report.warn(counted(dropped.tooFar, "face", "faces") +
                    " dropped: too far away for single precision");
    if (dropped.withoutArea)
        report.note(counted(dropped.withoutArea, "face", "faces") + " without area left out");
    if (shortenedNames)
        report.warn(counted(shortenedNames, "name", "names") +
                    " of nodes cut: a name has at most 255 characters");
    if (flattened)
        report.warn("nodes below level " + std::to_string(deepestLevel) +
                    " moved up to it: the engine tells places in the world down to there");
    if (drawn > drawnAtOnce)
        report.warn(std::to_string(drawn) + " meshes and lights: the engine draws at most " +
                    std::to_string(drawnAtOnce) + " in a frame");
    constexpr std::size_t identities = 65535;
    if (made > identities)
        report.warn(std::to_string(made) + " nodes: the engine can tell " +
                    std::to_string(identities) + " objects apart");
}

RveNode TreeBuilder::build() {
    RveNode root;
    root.kind = RveKind::mesh;
    root.name = "[root]";
    root.mesh.hidden = true;
    Frame frame;
    frame.local = localOf(*scene.mRootNode);
    frame.parentRest = outermost.linear;
    frame.level = 1;
    root.children = nodes(*scene.mRootNode, frame);
    checkTotals();
    return root;
}

} // namespace

RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces, double scale,
                    Report &report, Progress &progress) {
    return TreeBuilder(model, surfaces, scale, report, progress).build();
}

} // namespace ravolt::tool
