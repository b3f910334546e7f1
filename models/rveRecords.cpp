// Counts are unsigned 16 bit numbers and elements are small, so no size computed here overflows.

#include "models/rveRecords.h"

#include "foundation/bytes.h"
#include "models/rveFormat.h"

#include <algorithm>
#include <cstring>

namespace ravolt {

namespace {

using namespace rve;
static_assert(maxBones == RV_BONES);

const unsigned char *takeArray(ByteReader &reader, std::size_t count, std::size_t bytes) {
    return count ? reader.take(count * bytes) : nullptr;
}

void readGeometry(ByteReader &reader, bool obsolete, MeshRecord &mesh) {
    mesh.vertices = takeArray(reader, mesh.numberOfVertices, vectorBytes);
    mesh.vertexNormals = takeArray(reader, mesh.numberOfVertices, vectorBytes);
    if (obsolete)
        reader.skip(mesh.numberOfVertices * obsoleteVertexBytes);
    mesh.uvs = takeArray(reader, mesh.numberOfUVs, uvBytes);
    mesh.faces = takeArray(reader, mesh.numberOfFaces, faceBytes);
    mesh.faceNormals = takeArray(reader, mesh.numberOfFaces, vectorBytes);
    if (obsolete)
        reader.skip(mesh.numberOfFaces * obsoleteFaceBytes);
}

void readSkin(ByteReader &reader, MeshRecord &mesh) {
    const std::size_t weights = std::size_t{mesh.numberOfVertices} * mesh.numberOfWeights;
    mesh.boneIndices = takeArray(reader, weights, 1);
    mesh.boneWeights = takeArray(reader, weights, sizeof(float));
    mesh.numberOfBones = reader.read<std::uint16_t>();
    if (mesh.numberOfBones > maxBones) {
        reader.fail();
        return;
    }
    for (unsigned int i = 0; i < mesh.numberOfBones; ++i)
        mesh.boneName[i] = reader.readText().data();
}

// The largest of `count` numbers that need not be aligned; 0 for none.
template <class Number> Number largest(const unsigned char *bytes, std::size_t count) {
    Number maximum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Number number;
        std::memcpy(&number, bytes + i * sizeof(Number), sizeof(Number));
        maximum = std::max(maximum, number);
    }
    return maximum;
}

} // namespace

bool readMaterialRecord(ByteReader &reader, MaterialRecord &material) {
    material.name = reader.readText().data();
    material.textureName = reader.readText().data();
    material.shaderName = reader.readText().data();
    material.ambient = reader.read<Z3MVECTOR4D>();
    material.diffuse = reader.read<Z3MVECTOR4D>();
    material.specular = reader.read<Z3MVECTOR4D>();
    material.selfIllumination = reader.read<Z3MVECTOR4D>();
    material.transparency = reader.read<float>();
    material.shininess = reader.read<float>();
    return reader.ok();
}

bool readMeshRecord(ByteReader &reader, bool obsolete, MeshRecord &mesh) {
    reader.skip(rve::reservedBytes);
    mesh.name = reader.readText().data();
    mesh.position = reader.read<Z3MVECTOR3D>();
    mesh.rotation = reader.read<Z3MVECTOR3D>();
    mesh.origin = reader.read<Z3MVECTOR3D>();
    mesh.materialName = reader.readText().data();
    mesh.radius = reader.read<float>();
    mesh.minimum = reader.read<Z3MVECTOR3D>();
    mesh.maximum = reader.read<Z3MVECTOR3D>();
    mesh.hidden = reader.read<std::uint8_t>() != 0;
    mesh.numberOfVertices = reader.read<std::uint16_t>();
    mesh.numberOfUVs = reader.read<std::uint16_t>();
    mesh.numberOfFaces = reader.read<std::uint16_t>();
    mesh.numberOfChildren = reader.read<std::uint16_t>();
    mesh.numberOfWeights = reader.read<std::uint16_t>();
    readGeometry(reader, obsolete, mesh);
    if (mesh.numberOfWeights)
        readSkin(reader, mesh);
    return reader.ok();
}

bool indicesInRange(const MeshRecord &mesh) {
    if (mesh.faces) {
        const std::uint16_t vertices = mesh.numberOfUVs
                                           ? std::min(mesh.numberOfVertices, mesh.numberOfUVs)
                                           : mesh.numberOfVertices;
        if (largest<std::uint16_t>(mesh.faces, mesh.numberOfFaces * std::size_t{3}) >= vertices)
            return false;
    }
    const std::size_t weights = std::size_t{mesh.numberOfVertices} * mesh.numberOfWeights;
    return !mesh.boneIndices ||
           largest<std::uint8_t>(mesh.boneIndices, weights) < mesh.numberOfBones;
}

} // namespace ravolt
