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
        reader.fail("more than 100 bones");
        return;
    }
    for (unsigned int i = 0; i < mesh.numberOfBones; ++i)
        mesh.boneName[i] = reader.readText().data();
}

template <class Number> Number numberAt(const unsigned char *bytes, std::size_t index) {
    Number number; // which need not be aligned in the file
    std::memcpy(&number, bytes + index * sizeof(Number), sizeof(Number));
    return number;
}

// The largest of `count` numbers; 0 for none.
template <class Number> Number largest(const unsigned char *bytes, std::size_t count) {
    Number maximum = 0;
    for (std::size_t i = 0; i < count; ++i)
        maximum = std::max(maximum, numberAt<Number>(bytes, i));
    return maximum;
}

// Most files have good indices, so that the first bad one is searched only where there is one.
template <class Number>
bool checkBelow(unsigned int limit, const unsigned char *bytes, std::size_t count,
                const char *problem, ByteReader &reader) {
    if (count == 0 || largest<Number>(bytes, count) < limit)
        return true;
    std::size_t bad = 0;
    while (numberAt<Number>(bytes, bad) < limit)
        ++bad;
    reader.fail(problem, bytes + bad * sizeof(Number));
    return false;
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

bool checkIndices(const MeshRecord &mesh, ByteReader &reader) {
    const std::uint16_t vertices = mesh.numberOfUVs
                                       ? std::min(mesh.numberOfVertices, mesh.numberOfUVs)
                                       : mesh.numberOfVertices;
    const std::size_t weights = std::size_t{mesh.numberOfVertices} * mesh.numberOfWeights;
    return checkBelow<std::uint16_t>(vertices, mesh.faces, mesh.numberOfFaces * std::size_t{3},
                                     "a face's index beyond the vertices", reader) &&
           checkBelow<std::uint8_t>(mesh.numberOfBones, mesh.boneIndices, weights,
                                    "a bone's number beyond the bones", reader);
}

} // namespace ravolt
