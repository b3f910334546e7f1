// Encodes materials and nodes as records of the scene format.

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
        writeBytes((version == RveVersion::v16a ? rve::magic : rve::obsoleteMagic).data(),
                   rve::headerBytes);
        writeCount("the scene", scene.materials.size(), rveMaterials, "materials");
        for (const RveMaterial &material : scene.materials)
            writeMaterial(material);
        writeNode(scene.root, 1);
        return take();
    }

  private:
    void writeMaterial(const RveMaterial &material) {
        const std::string where = "material '" + material.name + "'";
        writeText(where, material.name);
        writeText(where, material.texture);
        writeText(where, material.shader);
        for (const RveColor *color :
             {&material.ambient, &material.diffuse, &material.specular, &material.selfIllumination})
            writeFloats(*color);
        writeFloat(material.transparency);
        writeFloat(material.shininess);
    }

    void writeNode(const RveNode &node, std::size_t depth) {
        const std::string where = "node '" + node.name + "'";
        if (depth > rveDepth) {
            fail(where, "a tree deeper than " + std::to_string(rveDepth) + " nodes");
            return;
        }
        writeByte(static_cast<std::uint8_t>(node.kind));
        switch (node.kind) {
        case RveKind::node:
            writePlainNode(where, node);
            break;
        case RveKind::light:
            writeLight(where, node);
            break;
        case RveKind::mesh:
            writeMesh(where, node);
            break;
        default:
            fail(where, "an unknown kind");
        }
        for (const RveNode &child : node.children)
            if (ok())
                writeNode(child, depth + 1);
    }

    void writeChildren(const std::string &where, const RveNode &node) {
        writeCount(where, node.children.size(), rveChildren, "children");
    }

    void writePlainNode(const std::string &where, const RveNode &node) {
        writeBytes(&node.auxId, sizeof(node.auxId));
        writeText(where, node.name);
        writeFloats(node.position);
        writeFloats(node.origin);
        writeChildren(where, node);
    }

    void writeLight(const std::string &where, const RveNode &node) {
        writeZeros(rve::reservedBytes);
        writeByte(static_cast<std::uint8_t>(node.light.type));
        writeText(where, node.name);
        writeFloats(node.position);
        writeFloats(node.light.direction);
        writeFloat(node.light.cutOff);
        writeFloats(node.light.color);
        writeChildren(where, node);
    }

    void writeMesh(const std::string &where, const RveNode &node) {
        const RveMesh &mesh = node.mesh;
        checkMesh(where, mesh);
        writeZeros(rve::reservedBytes);
        writeText(where, node.name);
        writeFloats(node.position);
        writeFloats(node.rotation);
        writeFloats(node.origin);
        writeText(where, mesh.material);
        writeFloat(mesh.radius);
        writeFloats(mesh.minimum);
        writeFloats(mesh.maximum);
        writeByte(mesh.hidden);
        writeCount(where, mesh.vertices.size(), rveVertices, "vertices");
        writeCount(where, mesh.uvs.size(), rveVertices, "texture coordinates");
        writeCount(where, mesh.faces.size(), rveVertices, "faces");
        writeChildren(where, node);
        writeCount(where, mesh.skin.weightsPerVertex, rveWeights, "weights of a vertex");
        if (!ok())
            return;
        writeGeometry(mesh);
        if (mesh.skin.weightsPerVertex)
            writeSkin(where, mesh.skin);
    }

    void writeGeometry(const RveMesh &mesh) {
        const bool obsolete = version == RveVersion::v15a;
        writeArray(mesh.vertices);
        writeArray(mesh.normals);
        if (obsolete)
            writeZeros(mesh.vertices.size() * rve::obsoleteVertexBytes);
        writeArray(mesh.uvs);
        writeArray(mesh.faces);
        if (mesh.faceNormals.empty())
            writeComputedFaceNormals(mesh);
        else
            writeArray(mesh.faceNormals);
        if (obsolete)
            writeZeros(mesh.faces.size() * rve::obsoleteFaceBytes);
    }

    void writeComputedFaceNormals(const RveMesh &mesh) {
        for (const auto &face : mesh.faces) {
            const RveVector &corner = mesh.vertices[face[0]];
            RveVector normal = cross(difference(mesh.vertices[face[1]], corner),
                                     difference(mesh.vertices[face[2]], corner));
            const float length = std::hypot(normal[0], normal[1], normal[2]);
            for (float &component : normal)
                component /= length > 0.0f ? length : 1.0f;
            writeFloats(normal);
        }
    }

    void writeSkin(const std::string &where, const RveSkin &skin) {
        writeArray(skin.boneIndices);
        writeArray(skin.boneWeights);
        writeCount(where, skin.bones.size(), rveBones, "bones");
        for (const std::string &bone : skin.bones)
            writeText(where, bone);
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
