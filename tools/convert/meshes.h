#pragma once

// Geometry: meshes of a model, transformed into the space of their node, merged by material and
// cut into pieces within the limits of the scene format.

#include "tools/common/algebra.h"
#include "tools/convert/geometry.h"

#include <array>
#include <assimp/mesh.h>
#include <cstdint>
#include <vector>

namespace ravolt::tool {

// An affine map of texture coordinates, row by row.
struct TextureTransform {
    double uu = 1, uv = 0, u = 0;
    double vu = 0, vv = 1, v = 0;

    TexCoord operator()(double x, double y) const {
        return {static_cast<float>(uu * x + uv * y + u), static_cast<float>(vu * x + vv * y + v)};
    }
};

// How the vertices of one mesh are transformed into the space of their node in the scene.
struct VertexTransform {
    Matrix residual;                          // for all vertices of a rigid mesh
    std::vector<Affine> posed;                // for each vertex of a skinned mesh; else empty
    std::vector<VertexInfluences> influences; // as many
    unsigned int channel = 0;                 // which set of texture coordinates
    TextureTransform texture;                 // applied to them
    bool bothSides = false; // adds the back of each triangle, except of closed parts
};

// Numbers of triangles that append drops, as they would be invisible.
struct Dropped {
    std::size_t tooFar = 0;      // beyond the range of a float
    std::size_t withoutArea = 0; // lines and points
};

// Adds the triangles of `mesh`; skinned and rigid ones do not go together. A mirroring
// transform reverses the triangles, so that their front remains the front; a mesh whose triangles
// contradict its normals nearly everywhere is reversed as well. Missing or broken normals are
// computed from the triangles. Vertices without a triangle are dropped.
Dropped append(Geometry &geometry, const aiMesh &mesh, const VertexTransform &transform);

// Cuts into pieces of at most `limit` vertices, `limit` faces and `maxBones` bones each, in the
// order of the faces.
std::vector<Geometry> split(Geometry geometry, std::size_t limit = meshLimit,
                            std::size_t maxBones = bonesOfAMesh);

// The bones of a geometry, in the order of their numbers.
std::vector<std::uint32_t> bonesOf(const Geometry &geometry);

// The box around the vertices, and the maximum distance of a vertex from the node's origin.
struct Bounds {
    Point minimum, maximum;
    float radius = 0;
};
Bounds boundsOf(const Geometry &geometry);

} // namespace ravolt::tool
