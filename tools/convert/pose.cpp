#include "tools/convert/pose.h"

#include <algorithm>

namespace ravolt::tool {

namespace {

void gather(const aiNode &node, const Affine &parent, NodePlaces &places) {
    const Affine local = affineFrom(node.mTransformation);
    const Affine here = isFinite(local) ? parent * local : parent;
    places.emplace(node.mName.C_Str(), here);
    for (unsigned int i = 0; i < node.mNumChildren; ++i)
        gather(*node.mChildren[i], here, places);
}

void addWeighted(Affine &sum, const Affine &map, double weight) {
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            sum.linear.row[i][j] += map.linear.row[i][j] * weight;
    sum.offset = sum.offset + map.offset * weight;
}

} // namespace

NodePlaces placesOfNodes(const aiScene &scene, const Affine &outermost) {
    NodePlaces places;
    gather(*scene.mRootNode, outermost, places);
    return places;
}

std::vector<Affine> poseOf(const aiMesh &mesh, const NodePlaces &places, const Affine &otherwise) {
    if (mesh.mNumBones == 0)
        return {};
    const Affine nothing{Matrix() * 0, {}};
    std::vector<Affine> sums(mesh.mNumVertices, nothing);
    std::vector<double> weights(mesh.mNumVertices, 0);
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        const aiBone &bone = *mesh.mBones[b];
        const auto place = places.find(bone.mName.C_Str());
        if (place == places.end())
            continue;
        const Affine map = place->second * affineFrom(bone.mOffsetMatrix);
        if (!isFinite(map))
            return {};
        for (unsigned int i = 0; i < bone.mNumWeights; ++i) {
            const aiVertexWeight &weight = bone.mWeights[i];
            addWeighted(sums[weight.mVertexId], map, weight.mWeight);
            weights[weight.mVertexId] += weight.mWeight;
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i)
        if (weights[i] > 1e-6)
            sums[i] = {sums[i].linear * (1 / weights[i]), sums[i].offset * (1 / weights[i])};
        else
            sums[i] = otherwise;
    return std::all_of(sums.begin(), sums.end(), [](const Affine &map) { return isFinite(map); })
               ? sums
               : std::vector<Affine>();
}

} // namespace ravolt::tool
