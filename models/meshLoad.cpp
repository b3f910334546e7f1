// Loading of a mesh: its arrays are copied from the body in the scene file with one memcpy each,
// then uploaded. Everything that is allocated is entered in `owned` at once, so that an incomplete
// mesh releases it. The caller has checked the indices.

#include "ravolt/RVMESH.h"

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/zlf.h"

#include "engine/gl/bindings.h"
#include "foundation/bytes.h"
#include "foundation/text.h"
#include "models/loadIndex.h"
#include "models/meshBuffers.h"
#include "models/rveRecords.h"
#include "scene/nodeInternals.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

using ravolt::MeshRecord;

namespace {

// Indices in `owned.block`.
enum Block : unsigned int {
    blockGeometry,
    blockBoneIndex,
    blockBoneWeight,
    blockBoneIndexFloat,
    blockBone,
    blockSkinnedVertex,
    blockSkinnedNormal
};

// Indices in `owned.buffer`.
enum Buffer : unsigned int { bufferBoneIndex, bufferBoneWeight };

// zlfMalloc; the block is entered in `owned` too.
template <class T> bool allocate(T *&array, void *&owned, std::size_t bytes) {
    owned = zlfMalloc(bytes);
    array = static_cast<T *>(owned);
    return array != nullptr;
}

constexpr std::size_t alignUp(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

// Copies an array to `offset` of the block; NULL when the file has none.
template <class T>
T *copyArray(unsigned char *block, std::size_t offset, const unsigned char *source,
             std::size_t count) {
    if (!source)
        return nullptr;
    std::memcpy(block + offset, source, count * sizeof(T));
    return reinterpret_cast<T *>(block + offset);
}

void assignMaterial(RVMESH &mesh, const char *materialName) {
    const bool isRootMesh = std::strcmp(mesh.getName(), "[root]") == 0;
    RVMATERIAL *found = ravolt::LoadIndex::findMaterial(materialName);
    if (std::strcmp(materialName, "[none]") == 0 && !isRootMesh)
        zlfLog("   [!] no material assigned to mesh '%s'\n", mesh.getName());
    else if (!found && !isRootMesh && *materialName)
        zlfLog("   [!] material '%s' not found for mesh '%s'\n", materialName, mesh.getName());
    mesh.setMaterial(found);
}

} // namespace

RVMESH::~RVMESH() {
    ravolt::MeshBuffers::release(owned->pool);
    for (const unsigned int buffer : owned->buffer)
        ravolt::deleteBuffer(buffer);
    for (void *block : owned->block)
        if (block)
            zlfFree(block);
}

RVNODE *RVMESH::load(const char *buffer, long *cursor, bool obsolete) {
    ravolt::ByteReader reader(buffer, std::numeric_limits<std::ptrdiff_t>::max(),
                              static_cast<std::size_t>(*cursor));
    MeshRecord record;
    if (!ravolt::readMeshRecord(reader, obsolete, record)) {
        zlfLog("   [!] Corrupted mesh @ RVMESH::load\n");
        return nullptr;
    }
    *cursor = static_cast<long>(reader.position());

    std::unique_ptr<RVMESH> mesh(new (std::nothrow) RVMESH);
    if (!mesh) {
        zlfLog("   [!] Consistency error: mesh == NULL @ RVMESH::load\n");
        return nullptr;
    }
    mesh->copyProperties(record);
    assignMaterial(*mesh, record.materialName);
    if (!mesh->copyGeometry(record) || !mesh->copySkin(record) ||
        !ravolt::NodeInternals::reserveChildren(*mesh, record.numberOfChildren)) {
        zlfLog("   [!] Out of memory @ RVMESH::recursiveLoadZVE\n");
        return nullptr;
    }
    if (!ravolt::MeshBuffers::isDeferred())
        ravolt::MeshBuffers::create(*mesh);
    return mesh.release();
}

void RVMESH::copyProperties(const MeshRecord &record) {
    setName(record.name);
    setPosition(record.position);
    setRotation(record.rotation);
    setOrigin(record.origin);
    radius = record.radius;
    minimum = record.minimum;
    maximum = record.maximum;
    hidden = record.hidden;
}

bool RVMESH::copyGeometry(const MeshRecord &record) {
    numberOfVertices = record.numberOfVertices;
    numberOfUVs = record.numberOfUVs;
    numberOfFaces = record.numberOfFaces;

    const std::size_t normals = numberOfVertices * sizeof(Z3MVECTOR3D);
    const std::size_t uvs = 2 * normals;
    const std::size_t faces = uvs + numberOfUVs * sizeof(Z3MVECTOR2D);
    // The block has six spare bytes a face. After an odd number of faces two of them align the face
    // normals.
    const std::size_t faceNormals =
        alignUp(faces + numberOfFaces * sizeof(RVFACE), alignof(Z3MVECTOR3D));
    void *(&block)[7] = owned->block;
    if (!allocate(geometry, block[blockGeometry],
                  numberOfVertices * 24ul + numberOfUVs * 8ul + numberOfFaces * (18ul + 6ul)))
        return false;

    vertex = copyArray<Z3MVECTOR3D>(geometry, 0, record.vertices, numberOfVertices);
    vertexNormal =
        copyArray<Z3MVECTOR3D>(geometry, normals, record.vertexNormals, numberOfVertices);
    uv = copyArray<Z3MVECTOR2D>(geometry, uvs, record.uvs, numberOfUVs);
    face = copyArray<RVFACE>(geometry, faces, record.faces, numberOfFaces);
    faceNormal = copyArray<Z3MVECTOR3D>(geometry, faceNormals, record.faceNormals, numberOfFaces);
    return true;
}

bool RVMESH::copySkin(const MeshRecord &record) {
    if (!record.numberOfWeights)
        return true;
    numberOfWeights = record.numberOfWeights;
    const std::size_t weights = std::size_t{numberOfVertices} * numberOfWeights;
    const std::size_t vectors = numberOfVertices * sizeof(Z3MVECTOR3D);
    void *(&block)[7] = owned->block;
    if (!allocate(boneIndex, block[blockBoneIndex], weights) ||
        !allocate(boneWeight, block[blockBoneWeight], weights * sizeof(float)) ||
        !allocate(boneIndexFloat, block[blockBoneIndexFloat], weights * sizeof(float)) ||
        !allocate(bone, block[blockBone], record.numberOfBones * sizeof(RVBONE)))
        return false;
    // On purpose: with useSkinning also a mesh whose weights no program supports has no arrays.
    if (!RVSHADER::useSkinning() && (!allocate(skinnedVertex, block[blockSkinnedVertex], vectors) ||
                                     !allocate(skinnedNormal, block[blockSkinnedNormal], vectors)))
        return false;

    if (weights) {
        std::memcpy(boneIndex, record.boneIndices, weights);
        std::memcpy(boneWeight, record.boneWeights, weights * sizeof(float));
    }
    if (weights && skinnedVertex) {
        std::memcpy(static_cast<void *>(skinnedVertex), record.vertices, vectors);
        std::memcpy(static_cast<void *>(skinnedNormal), record.vertexNormals, vectors);
    }
    for (std::size_t i = 0; i < weights; ++i)
        boneIndexFloat[i] = boneIndex[i];

    numberOfBones = record.numberOfBones;
    for (unsigned int i = 0; i < numberOfBones; ++i)
        ravolt::copyText((new (&bone[i]) RVBONE)->name, record.boneName[i]);
    if (material.get())
        material.get()->setSkinning(true);
    return true;
}

void RVMESH::createSkinBuffers() {
    const std::size_t weights = std::size_t{numberOfVertices} * numberOfWeights * sizeof(float);
    unsigned int *const buffer = owned->buffer;
    boneIndexBuffer = buffer[bufferBoneIndex] =
        ravolt::createBuffer(GL_ARRAY_BUFFER_ARB, boneIndexFloat, weights);
    boneWeightBuffer = buffer[bufferBoneWeight] =
        ravolt::createBuffer(GL_ARRAY_BUFFER_ARB, boneWeight, weights);
}
