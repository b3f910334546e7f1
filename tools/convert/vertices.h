#pragma once

// Vertices of a mesh as it was read: unwelds and welds them.

#include <assimp/mesh.h>

namespace ravolt::tool {

// Else it is a point or a line.
inline bool isTriangle(const aiFace &face) { return face.mNumIndices == 3; }

// Gives each corner of each face a vertex of its own where normals are still to be made: only so
// can creases stay sharp.
void unweld(aiMesh &mesh);

// Gives each corner of each face a vertex of its own.
void separateCorners(aiMesh &mesh);

// Joins the vertices that are equal in everything that a scene has of them: position, normal,
// texture coordinates, and the bones with their weights. Two parts of a skin that touch each other
// may move apart, so a vertex of one is never that of the other. Faces stay in their order.
void weldVertices(aiMesh &mesh);

} // namespace ravolt::tool
