#pragma once

// Records of a scene file as plain views of its bytes: texts and arrays are not copied, so the
// file's block must outlive the record. Arrays are not aligned; copy them with memcpy. Records of
// plain nodes and lights are in scene/nodeRecords.h.

#include "ravolt/RVMESH.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"

#include <cstdint>

namespace ravolt {

class ByteReader;

struct MaterialRecord {
    const char *name = "";
    const char *textureName = "";
    const char *shaderName = "";
    Z3MVECTOR4D ambient;
    Z3MVECTOR4D diffuse;
    Z3MVECTOR4D specular;
    Z3MVECTOR4D selfIllumination;
    float transparency = 0;
    float shininess = 0;
};

// An array that is not in the file is NULL.
struct MeshRecord {
    const char *name = "";
    Z3MVECTOR3D position;
    Z3MVECTOR3D rotation;
    Z3MVECTOR3D origin;
    const char *materialName = "";
    float radius = 0;
    Z3MVECTOR3D minimum;
    Z3MVECTOR3D maximum;
    bool hidden = false;
    std::uint16_t numberOfVertices = 0;
    std::uint16_t numberOfUVs = 0;
    std::uint16_t numberOfFaces = 0;
    std::uint16_t numberOfChildren = 0;
    std::uint16_t numberOfWeights = 0;
    const unsigned char *vertices = nullptr;
    const unsigned char *vertexNormals = nullptr;
    const unsigned char *uvs = nullptr;
    const unsigned char *faces = nullptr;
    const unsigned char *faceNormals = nullptr;
    const unsigned char *boneIndices = nullptr;
    const unsigned char *boneWeights = nullptr;
    std::uint16_t numberOfBones = 0;
    const char *boneName[RV_BONES] = {};
};

// Each reads one record and returns whether it is complete, with texts of at most 255 characters
// and tables within their limits; otherwise the reader has failed. `obsolete` means format 1.5a.
bool readMaterialRecord(ByteReader &reader, MaterialRecord &record);
bool readMeshRecord(ByteReader &reader, bool obsolete, MeshRecord &record);

// Whether all indices of a mesh are within their tables: vertices of faces below the number of
// vertices (and of texture coordinates if there are any), bones below the number of bones.
// Otherwise the reader of the record has failed at the first index that is not.
bool checkIndices(const MeshRecord &record, ByteReader &reader);

} // namespace ravolt
