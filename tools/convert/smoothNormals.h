#pragma once

struct aiMesh;

namespace ravolt::tool {

// Normals for a mesh without any, as assimp's step aiProcess_GenSmoothNormals computes them, bit
// for bit: the normals of all faces at a position, except beyond an angle, which is in degrees.
// That step compares each corner with all in a slice through the mesh, which takes minutes for
// millions of triangles; here it is a few cells of a grid. The mesh has finite positions.
void smoothNormals(aiMesh &mesh, float creaseAngle);

} // namespace ravolt::tool
