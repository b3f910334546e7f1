#pragma once

// Geometry: meshes of a model, transformed into the space of their node, merged by material and
// cut into pieces within the limits of the scene format.

#include "tools/convert/algebra.h"

#include <array>
#include <assimp/mesh.h>
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

// An affine map of texture coordinates, row by row.
struct TextureTransform {
    double uu = 1, uv = 0, u = 0;
    double vu = 0, vv = 1, v = 0;

    TexCoord operator()(double x, double y) const {
        return {static_cast<float>(uu * x + uv * y + u), static_cast<float>(vu * x + vv * y + v)};
    }
};

// How the vertices of one mesh go into the space of their node in the scene.
struct VertexTransform {
    Matrix residual;                          // for all vertices of a rigid mesh
    std::vector<Affine> posed;                // for each vertex of a skinned mesh; else empty
    std::vector<VertexInfluences> influences; // as many
    unsigned int channel = 0;                 // which set of texture coordinates
    TextureTransform texture;                 // applied to them
    bool bothSides = false; // each triangle a second time, seen from behind, but for those
                            // of closed parts
};

// Triangles that append leaves out, as they would not be seen.
struct Dropped {
    std::size_t tooFar = 0;      // beyond what a float holds
    std::size_t withoutArea = 0; // lines and points
};

// Adds the triangles of `mesh`; skinned and rigid ones do not go together. Mirroring turns the
// triangles round, so that their front stays the front; a mesh whose triangles contradict its
// normals nearly everywhere is turned round as well. Normals that are missing or broken follow from
// the triangles. Vertices without a triangle are left out.
Dropped append(Geometry &geometry, const aiMesh &mesh, const VertexTransform &transform);

// Cuts into pieces of at most `limit` vertices, `limit` faces and `maxBones` bones each, in the
// order of the faces.
std::vector<Geometry> split(Geometry geometry, std::size_t limit = meshLimit,
                            std::size_t maxBones = bonesOfAMesh);

// The bones of a geometry, in the order of their numbers.
std::vector<std::uint32_t> bonesOf(const Geometry &geometry);

// The box around the vertices, and the distance of the farthest from the node's own place.
struct Bounds {
    Point minimum, maximum;
    float radius = 0;
};
Bounds boundsOf(const Geometry &geometry);

} // namespace ravolt::tool
