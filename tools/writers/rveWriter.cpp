#include "tools/writers/rveWriter.h"

#include "models/rveFormat.h"

#include <algorithm>
#include <cmath>

namespace ravolt {

namespace {

RveVector difference(const RveVector &a, const RveVector &b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

RveVector cross(const RveVector &a, const RveVector &b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

class Writer : private ByteWriter {
  public:
    explicit Writer(RveVersion formatVersion) : version(formatVersion) {}

    RveResult write(const RveScene &scene) {
        put((version == RveVersion::v16a ? rve::magic : rve::obsoleteMagic).data(),
            rve::headerBytes);
        putCount("the scene", scene.materials.size(), rveMaterials, "materials");
        for (const RveMaterial &material : scene.materials)
            putMaterial(material);
        putNode(scene.root, 1);
        return take();
    }

  private:
    void putMaterial(const RveMaterial &material) {
        const std::string where = "material '" + material.name + "'";
        putText(where, material.name);
        putText(where, material.texture);
        putText(where, material.shader);
        for (const RveColor *color :
             {&material.ambient, &material.diffuse, &material.specular, &material.selfIllumination})
            putFloats(*color);
        putFloat(material.transparency);
        putFloat(material.shininess);
    }

    void putNode(const RveNode &node, std::size_t depth) {
        const std::string where = "node '" + node.name + "'";
        if (depth > rveDepth) {
            fail(where, "a tree deeper than " + std::to_string(rveDepth) + " nodes");
            return;
        }
        putByte(static_cast<std::uint8_t>(node.kind));
        switch (node.kind) {
        case RveKind::node:
            putPlainNode(where, node);
            break;
        case RveKind::light:
            putLight(where, node);
            break;
        case RveKind::mesh:
            putMesh(where, node);
            break;
        default:
            fail(where, "an unknown kind");
        }
        for (const RveNode &child : node.children)
            if (ok())
                putNode(child, depth + 1);
    }

    void putChildren(const std::string &where, const RveNode &node) {
        putCount(where, node.children.size(), rveChildren, "children");
    }

    void putPlainNode(const std::string &where, const RveNode &node) {
        put(&node.auxId, sizeof(node.auxId));
        putText(where, node.name);
        putFloats(node.position);
        putFloats(node.origin);
        putChildren(where, node);
    }

    void putLight(const std::string &where, const RveNode &node) {
        putZeros(rve::reservedBytes);
        putByte(static_cast<std::uint8_t>(node.light.type));
        putText(where, node.name);
        putFloats(node.position);
        putFloats(node.light.direction);
        putFloat(node.light.cutOff);
        putFloats(node.light.color);
        putChildren(where, node);
    }

    void putMesh(const std::string &where, const RveNode &node) {
        const RveMesh &mesh = node.mesh;
        checkMesh(where, mesh);
        putZeros(rve::reservedBytes);
        putText(where, node.name);
        putFloats(node.position);
        putFloats(node.rotation);
        putFloats(node.origin);
        putText(where, mesh.material);
        putFloat(mesh.radius);
        putFloats(mesh.minimum);
        putFloats(mesh.maximum);
        putByte(mesh.hidden);
        putCount(where, mesh.vertices.size(), rveVertices, "vertices");
        putCount(where, mesh.uvs.size(), rveVertices, "texture coordinates");
        putCount(where, mesh.faces.size(), rveVertices, "faces");
        putChildren(where, node);
        putCount(where, mesh.skin.weightsPerVertex, rveWeights, "weights of a vertex");
        if (!ok())
            return;
        putGeometry(mesh);
        if (mesh.skin.weightsPerVertex)
            putSkin(where, mesh.skin);
    }

    void putGeometry(const RveMesh &mesh) {
        const bool obsolete = version == RveVersion::v15a;
        putArray(mesh.vertices);
        putArray(mesh.normals);
        if (obsolete)
            putZeros(mesh.vertices.size() * rve::obsoleteVertexBytes);
        putArray(mesh.uvs);
        putArray(mesh.faces);
        if (mesh.faceNormals.empty())
            putComputedFaceNormals(mesh);
        else
            putArray(mesh.faceNormals);
        if (obsolete)
            putZeros(mesh.faces.size() * rve::obsoleteFaceBytes);
    }

    void putComputedFaceNormals(const RveMesh &mesh) {
        for (const auto &face : mesh.faces) {
            const RveVector &corner = mesh.vertices[face[0]];
            RveVector normal = cross(difference(mesh.vertices[face[1]], corner),
                                     difference(mesh.vertices[face[2]], corner));
            const float length = std::hypot(normal[0], normal[1], normal[2]);
            for (float &component : normal)
                component /= length > 0.0f ? length : 1.0f;
            putFloats(normal);
        }
    }

    void putSkin(const std::string &where, const RveSkin &skin) {
        putArray(skin.boneIndices);
        putArray(skin.boneWeights);
        putCount(where, skin.bones.size(), rveBones, "bones");
        for (const std::string &bone : skin.bones)
            putText(where, bone);
    }

    // What must agree within a mesh.
    void checkMesh(const std::string &where, const RveMesh &mesh) {
        const std::size_t vertices = mesh.vertices.size();
        if (mesh.normals.size() != vertices)
            fail(where, "normals must be as many as vertices");
        if (!mesh.faceNormals.empty() && mesh.faceNormals.size() != mesh.faces.size())
            fail(where, "face normals must be as many as faces, or none");
        const std::size_t corners =
            mesh.uvs.empty() ? vertices : std::min(vertices, mesh.uvs.size());
        for (const auto &face : mesh.faces)
            if (*std::max_element(face.begin(), face.end()) >= corners)
                fail(where, "a face names a vertex that has no position or texture coordinate");
        if (mesh.skin.weightsPerVertex)
            checkSkin(where, mesh.skin, vertices);
    }

    void checkSkin(const std::string &where, const RveSkin &skin, std::size_t vertices) {
        const std::size_t weights = vertices * skin.weightsPerVertex;
        if (skin.boneIndices.size() != weights || skin.boneWeights.size() != weights)
            fail(where, "bone numbers and weights must be as many as vertices times weights");
        for (std::uint8_t index : skin.boneIndices)
            if (index >= skin.bones.size())
                fail(where, "a vertex names a bone that the mesh does not have");
    }

    RveVersion version;
};

} // namespace

RveResult encodeRve(const RveScene &scene, RveVersion version) {
    return Writer(version).write(scene);
}

std::string writeRve(const std::string &path, const RveScene &scene, RveVersion version) {
    return writeFile(path, encodeRve(scene, version));
}

} // namespace ravolt
