// Rearranges the arrays of a mesh by lists of vertex indices.

#include "tools/convert/vertices.h"

#include "tools/common/firstEqual.h"

#include <algorithm>
#include <cmath>
#include <iterator>
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
        std::size_t result = 0; // weights differ at the seams of a skin only
        const aiVector3D &position = mesh.mVertices[vertex];
        for (const float number : {position.x, position.y, position.z})
            result = mixed(result, number);
        eachRounded([&](const aiVector3D *array) {
            const aiVector3D &item = array[vertex];
            for (const float number : {item.x, item.y, item.z})
                result = mixed(result, rounded(number));
            return true;
        });
        return result;
    }

    bool areEqual(unsigned int a, unsigned int b) const {
        return mesh.mVertices[a] == mesh.mVertices[b] && eachRounded([=](const aiVector3D *array) {
                   return rounded(array[a].x) == rounded(array[b].x) &&
                          rounded(array[a].y) == rounded(array[b].y) &&
                          rounded(array[a].z) == rounded(array[b].z);
               }) &&
               (weights.empty() || weights[a] == weights[b]);
    }

  private:
    // Calls `visit` with normals and texture coordinates until it returns false; whether it did
    // not.
    template <class Visit> bool eachRounded(const Visit &visit) const {
        return (!mesh.mNormals || visit(mesh.mNormals)) &&
               std::all_of(std::begin(mesh.mTextureCoords), std::end(mesh.mTextureCoords),
                           [&](const aiVector3D *array) { return !array || visit(array); });
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
    FirstEqual known([&](unsigned int vertex) { return vertices.hash(vertex); },
                     [&](unsigned int a, unsigned int b) { return vertices.areEqual(a, b); });
    Indices kept, newIndex(mesh.mNumVertices);
    std::vector<Indices> copies(mesh.mNumBones ? mesh.mNumVertices : 0);
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
        const unsigned int first = known.of(i);
        if (first != i) {
            newIndex[i] = newIndex[first];
            continue;
        }
        const auto own = static_cast<unsigned int>(kept.size());
        newIndex[i] = own;
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
