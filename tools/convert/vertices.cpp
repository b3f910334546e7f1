// Rearranges the arrays of a mesh by lists of vertex indices.

#include "tools/convert/vertices.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

using Indices = std::vector<unsigned int>;

// Element i of the result is element from[i] of the array.
template <class T> void select(T *&array, const Indices &from) {
    if (!array)
        return;
    T *result = new T[from.size()];
    for (std::size_t i = 0; i < from.size(); ++i)
        result[i] = array[from[i]];
    delete[] array;
    array = result;
}

void selectVertices(aiMesh &mesh, const Indices &from) {
    select(mesh.mVertices, from);
    select(mesh.mNormals, from);
    select(mesh.mTangents, from);
    select(mesh.mBitangents, from);
    for (aiVector3D *&channel : mesh.mTextureCoords)
        select(channel, from);
    for (aiColor4D *&channel : mesh.mColors)
        select(channel, from);
    mesh.mNumVertices = static_cast<unsigned int>(from.size());
}

// `copies` has the new vertices of each old one.
void moveWeights(aiMesh &mesh, const std::vector<Indices> &copies) {
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        aiBone &bone = *mesh.mBones[b];
        std::vector<aiVertexWeight> weights;
        for (unsigned int i = 0; i < bone.mNumWeights; ++i)
            for (unsigned int copy : copies[bone.mWeights[i].mVertexId])
                weights.emplace_back(copy, bone.mWeights[i].mWeight);
        delete[] bone.mWeights;
        bone.mNumWeights = static_cast<unsigned int>(weights.size());
        bone.mWeights = new aiVertexWeight[weights.size()];
        std::copy(weights.begin(), weights.end(), bone.mWeights);
    }
}

using Weights = std::vector<std::pair<unsigned int, float>>; // a bone of the mesh and its weight

std::vector<Weights> weightsOf(const aiMesh &mesh) {
    std::vector<Weights> all(mesh.mNumBones ? mesh.mNumVertices : 0);
    for (unsigned int b = 0; b < mesh.mNumBones; ++b)
        for (unsigned int i = 0; i < mesh.mBones[b]->mNumWeights; ++i) {
            const aiVertexWeight &weight = mesh.mBones[b]->mWeights[i];
            all[weight.mVertexId].emplace_back(b, weight.mWeight);
        }
    return all;
}

// Normals and texture coordinates that differ by less are equal: exporters compute them for each
// corner again.
float rounded(float value) { return std::floor(value * 0x1p16f + 0.5f); }

// Compares the vertices of a mesh.
class Vertices {
  public:
    explicit Vertices(const aiMesh &all) : mesh(all), weights(weightsOf(all)) {}

    std::size_t hash(unsigned int vertex) const {
        std::size_t result = 0;
        eachNumber([&](const auto &number) {
            result = result * 1000003 + std::hash<float>()(number(vertex));
        });
        return result; // weights differ at the seams of a skin only
    }

    bool areEqual(unsigned int a, unsigned int b) const {
        bool equal = weights.empty() || weights[a] == weights[b];
        eachNumber([&](const auto &number) { equal = equal && number(a) == number(b); });
        return equal;
    }

  private:
    // Calls `visit` with functions from vertices to numbers.
    template <class Visit> void eachNumber(const Visit &visit) const {
        for (float aiVector3D::*part : {&aiVector3D::x, &aiVector3D::y, &aiVector3D::z}) {
            visit([&](unsigned int vertex) { return mesh.mVertices[vertex].*part; });
            if (mesh.mNormals)
                visit([&](unsigned int vertex) { return rounded(mesh.mNormals[vertex].*part); });
            for (const aiVector3D *channel : mesh.mTextureCoords)
                if (channel)
                    visit([&](unsigned int vertex) { return rounded(channel[vertex].*part); });
        }
    }

    const aiMesh &mesh;
    std::vector<Weights> weights;
};

std::size_t cornersOf(const aiMesh &mesh) {
    std::size_t corners = 0;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        corners += mesh.mFaces[i].mNumIndices;
    return corners;
}

} // namespace

void unweld(aiMesh &mesh) {
    const std::size_t corners = cornersOf(mesh);
    constexpr std::size_t maxCorners = 1u << 28; // a larger mesh remains smooth
    if (mesh.mNormals || mesh.mNumAnimMeshes || corners == mesh.mNumVertices ||
        corners > maxCorners)
        return;
    separateCorners(mesh);
}

void separateCorners(aiMesh &mesh) {
    Indices from;
    from.reserve(cornersOf(mesh));
    std::vector<Indices> copies(mesh.mNumBones ? mesh.mNumVertices : 0);
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        for (unsigned int k = 0; k < mesh.mFaces[i].mNumIndices; ++k) {
            unsigned int &index = mesh.mFaces[i].mIndices[k];
            const unsigned int own = static_cast<unsigned int>(from.size());
            from.push_back(index);
            if (!copies.empty())
                copies[index].push_back(own);
            index = own;
        }
    selectVertices(mesh, from);
    moveWeights(mesh, copies);
}

void weldVertices(aiMesh &mesh) {
    const Vertices vertices(mesh);
    const auto hash = [&](unsigned int vertex) { return vertices.hash(vertex); };
    const auto equal = [&](unsigned int a, unsigned int b) { return vertices.areEqual(a, b); };
    std::unordered_map<unsigned int, unsigned int, decltype(hash), decltype(equal)> known(
        mesh.mNumVertices, hash, equal);
    Indices kept, newIndex;
    std::vector<Indices> copies(mesh.mNumBones ? mesh.mNumVertices : 0);
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
        const auto own = static_cast<unsigned int>(kept.size());
        const auto [found, isNew] = known.try_emplace(i, own);
        newIndex.push_back(found->second);
        if (!isNew)
            continue;
        kept.push_back(i);
        if (!copies.empty())
            copies[i] = {own};
    }
    if (kept.size() == mesh.mNumVertices)
        return;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        for (unsigned int k = 0; k < mesh.mFaces[i].mNumIndices; ++k)
            mesh.mFaces[i].mIndices[k] = newIndex[mesh.mFaces[i].mIndices[k]];
    selectVertices(mesh, kept);
    moveWeights(mesh, copies);
}

} // namespace ravolt::tool
