#pragma once

// Makes scene files (RVE) that the engine reads, from a plain description: materials and one tree
// of plain nodes, lights and meshes. Nothing of the engine is needed. What a file cannot store, or
// the engine would refuse, is an error that names the object and its limit.

#include "models/rveFormat.h"
#include "tools/writers/byteWriter.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace ravolt {

using RveVector = std::array<float, 3>;
using RveColor = std::array<float, 4>;

// Limits of the format and of its reader.
constexpr std::size_t rveTextLength = writtenTextLength; // characters of any name
constexpr std::size_t rveMaterials = 65535;
constexpr std::size_t rveChildren = 65535;      // of one node
constexpr std::size_t rveVertices = 65535;      // also texture coordinates and faces, of one mesh
constexpr std::size_t rveWeights = 65535;       // of one vertex
constexpr std::size_t rveBones = rve::maxBones; // of one mesh
constexpr std::size_t rveDepth = rve::maxTreeDepth; // nodes from the root to the deepest one

enum class RveVersion { v15a, v16a };

struct RveMaterial {
    std::string name;
    std::string texture = rve::noName; // file name; its normal map has "_n.tga" for the last six
    std::string shader = rve::noName;
    RveColor ambient = {0.2f, 0.2f, 0.2f, 1.0f};
    RveColor diffuse = {0.6f, 0.6f, 0.6f, 1.0f};
    RveColor specular = {0.2f, 0.2f, 0.2f, 1.0f};
    RveColor selfIllumination = {0.0f, 0.0f, 0.0f, 1.0f};
    float transparency = 1.0f; // 1 is opaque
    float shininess = 0.0f;
};

enum class RveLightType : std::uint8_t { omni, directional, spot };

struct RveLight {
    RveLightType type = RveLightType::omni;
    RveVector direction = {0.0f, 0.0f, 0.0f};
    float cutOff = 180.0f; // degrees
    RveVector color = {1.0f, 1.0f, 1.0f};
};

// Skins a mesh: `weightsPerVertex` pairs of a bone's number and its weight for each vertex, and the
// names of the nodes that are the bones.
struct RveSkin {
    unsigned int weightsPerVertex = 0; // 0: the mesh is rigid
    std::vector<std::uint8_t> boneIndices;
    std::vector<float> boneWeights;
    std::vector<std::string> bones;
};

struct RveMesh {
    std::string material = rve::noName;
    float radius = 0.0f;
    RveVector minimum = {0.0f, 0.0f, 0.0f};
    RveVector maximum = {0.0f, 0.0f, 0.0f};
    bool hidden = false;
    std::vector<RveVector> vertices;
    std::vector<RveVector> normals;        // one a vertex
    std::vector<std::array<float, 2>> uvs; // none, or one a vertex
    std::vector<std::array<std::uint16_t, 3>> faces;
    std::vector<RveVector> faceNormals; // one a face; none are computed from the vertices
    RveSkin skin;
};

enum class RveKind : std::uint8_t {
    node = rve::kindNode,
    light = rve::kindLight,
    mesh = rve::kindMesh
};

struct RveNode {
    RveKind kind = RveKind::node;
    std::string name;
    std::uint32_t auxId = 0; // plain nodes alone
    RveVector position = {0.0f, 0.0f, 0.0f};
    RveVector rotation = {0.0f, 0.0f, 0.0f}; // degrees; meshes alone
    RveVector origin = {0.0f, 0.0f, 0.0f};   // plain nodes and meshes
    RveLight light;
    RveMesh mesh;
    std::vector<RveNode> children;
};

// The engine expects the root to be a mesh named "[root]", but takes any.
struct RveScene {
    std::vector<RveMaterial> materials;
    RveNode root;
};

using RveResult = WrittenBytes;

RveResult encodeRve(const RveScene &scene, RveVersion version = RveVersion::v16a);

// Returns the error, or an empty text. A file that cannot be written completely is unchanged.
std::string writeRve(const std::string &path, const RveScene &scene,
                     RveVersion version = RveVersion::v16a);

} // namespace ravolt
