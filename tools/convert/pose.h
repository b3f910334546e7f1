#pragma once

// The pose that bones hold a mesh in. The scene keeps meshes rigid, so they are written as the
// skeleton of the model stands.

#include "tools/convert/algebra.h"

#include <assimp/scene.h>
#include <map>
#include <string>
#include <vector>

namespace ravolt::tool {

// The place of each node of a model, by name, in the frame of the scene.
using NodePlaces = std::map<std::string, Affine>;

NodePlaces placesOfNodes(const aiScene &scene, const Affine &outermost);

// For each vertex of `mesh` the map that carries it from the model's data to where the bones hold
// it in the frame of the scene. A vertex without a bone goes by `otherwise`. Empty for a mesh
// without bones, or whose bones make no sense.
std::vector<Affine> poseOf(const aiMesh &mesh, const NodePlaces &places, const Affine &otherwise);

} // namespace ravolt::tool
