#pragma once

// Triangles over shared vertices, in the ranges of one mesh of a scene file or beyond them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ravolt::tool {

// The maximum of vertices, and of faces, of one mesh of a scene file.
constexpr std::size_t meshLimit = 65535;

// The engine's limits of bones for a vertex and for a mesh.
constexpr std::size_t bonesOfAVertex = 4;
constexpr std::size_t bonesOfAMesh = 100;

// The bones that move a vertex, by numbers whose meaning the caller defines; those with a weight
// of 0 are unused.
struct VertexInfluences {
    std::array<std::uint32_t, bonesOfAVertex> bone = {};
    std::array<float, bonesOfAVertex> weight = {};
};

struct Point {
    float x = 0, y = 0, z = 0;
};

struct TexCoord {
    float u = 0, v = 0;
};

// Triangles over shared vertices.
struct Geometry {
    std::vector<Point> positions;
    std::vector<Point> normals;
    bool hasTexCoords = false;                // whether it has texture coordinates
    std::vector<TexCoord> texCoords;          // one a vertex if it has any, else none
    std::vector<VertexInfluences> influences; // of a skinned mesh one a vertex, else none
    std::vector<std::array<std::uint32_t, 3>> faces;

    bool empty() const { return faces.empty(); }
};

} // namespace ravolt::tool
