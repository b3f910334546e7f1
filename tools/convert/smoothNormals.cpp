// The sum of normals depends on the order of the corners, which is that of assimp's own search.

#include "tools/convert/smoothNormals.h"

#include <assimp/SpatialSort.h>
#include <assimp/mesh.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace ravolt::tool {

namespace {

constexpr unsigned int none = std::numeric_limits<unsigned int>::max();

struct Box {
    aiVector3D low{1e10f, 1e10f, 1e10f}, high{-1e10f, -1e10f, -1e10f};
};

Box boxOf(const aiMesh &mesh) {
    Box box;
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
        for (unsigned int axis = 0; axis < 3; ++axis) {
            box.low[axis] = std::min(box.low[axis], mesh.mVertices[i][axis]);
            box.high[axis] = std::max(box.high[axis], mesh.mVertices[i][axis]);
        }
    return box;
}

// Positions nearer to each other than this count as one.
float epsilonOf(const Box &box) { return (box.high - box.low).Length() * 1e-4f; }

// The corners near a position. Assimp's search, whose order it has, compares those whose distances
// from a plane differ by less than the radius.
class NearbyCorners : Assimp::SpatialSort {
  public:
    NearbyCorners(const aiMesh &mesh, const Box &box, float searchRadius)
        : SpatialSort(mesh.mVertices, mesh.mNumVertices, sizeof(aiVector3D)), low(box.low),
          radius(searchRadius), cellSize(2.01 * searchRadius),
          first(std::bit_ceil(std::size_t(mesh.mNumVertices) + 1), none),
          next(mesh.mNumVertices, none) {
        for (unsigned int rank = mesh.mNumVertices; rank-- > 0;) { // the lowest rank comes first
            const aiVector3D &position = mPositions[rank].mPosition;
            unsigned int &head =
                first[slotOf(cellOf(position, 0), cellOf(position, 1), cellOf(position, 2))];
            next[rank] = head;
            head = rank;
        }
    }

    // Their indices, in the order of assimp's search.
    void find(const aiVector3D &position, std::vector<unsigned int> &found) {
        ranks.clear();
        std::int64_t cells[3][2];
        for (unsigned int axis = 0; axis < 3; ++axis)
            for (unsigned int side = 0; side < 2; ++side)
                cells[axis][side] = cellOf(position, axis, side ? radius : -radius);
        visited.clear();
        for (const std::int64_t x : cells[0])
            for (const std::int64_t y : cells[1])
                for (const std::int64_t z : cells[2])
                    addFrom(slotOf(x, y, z), position);
        std::sort(ranks.begin(), ranks.end());
        found.clear();
        for (const unsigned int rank : ranks)
            found.push_back(mPositions[rank].mIndex);
    }

  private:
    std::int64_t cellOf(const aiVector3D &position, unsigned int axis, double offset = 0) const {
        const double way = double(position[axis]) - double(low[axis]) + 1.001 * offset;
        return static_cast<std::int64_t>(std::floor(way / cellSize));
    }

    std::size_t slotOf(std::int64_t x, std::int64_t y, std::int64_t z) const {
        const auto hash = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u ^
                          static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu ^
                          static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u;
        return (hash ^ hash >> 29) & (first.size() - 1);
    }

    void addFrom(std::size_t slot, const aiVector3D &position) {
        if (std::find(visited.begin(), visited.end(), slot) != visited.end())
            return;
        visited.push_back(slot);
        const ai_real distance = CalculateDistance(position);
        const ai_real minimum = distance - radius, maximum = distance + radius;
        for (unsigned int rank = first[slot]; rank != none; rank = next[rank]) {
            const auto &entry = mPositions[rank];
            if (entry.mDistance >= minimum && entry.mDistance < maximum &&
                (entry.mPosition - position).SquareLength() < radius * radius)
                ranks.push_back(rank);
        }
    }

    const aiVector3D low;
    const ai_real radius;
    const double cellSize;
    std::vector<unsigned int> first; // of each slot of a hash table of cells, a rank
    std::vector<unsigned int> next;  // in the same slot
    std::vector<unsigned int> ranks;
    std::vector<std::size_t> visited;
};

// Those of the faces, for each of their corners; no number for corners of lines and points.
std::vector<aiVector3D> faceNormals(const aiMesh &mesh) {
    std::vector<aiVector3D> normals(mesh.mNumVertices);
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace &face = mesh.mFaces[i];
        aiVector3D normal(std::numeric_limits<ai_real>::quiet_NaN());
        if (face.mNumIndices >= 3) {
            const aiVector3D &a = mesh.mVertices[face.mIndices[0]];
            const aiVector3D &b = mesh.mVertices[face.mIndices[1]];
            const aiVector3D &c = mesh.mVertices[face.mIndices[face.mNumIndices - 1]];
            normal = ((b - a) ^ (c - a)).NormalizeSafe();
        }
        for (unsigned int corner = 0; corner < face.mNumIndices; ++corner)
            normals[face.mIndices[corner]] = normal;
    }
    return normals;
}

aiVector3D sumOf(const std::vector<aiVector3D> &normals, const std::vector<unsigned int> &nearby,
                 unsigned int corner, ai_real limit) {
    aiVector3D sum;
    for (const unsigned int other : nearby) {
        const aiVector3D &normal = normals[other];
        if (!std::isnan(normal.x) && (other == corner || normal * normals[corner] >= limit))
            sum += normal;
    }
    return sum.NormalizeSafe();
}

} // namespace

void smoothNormals(aiMesh &mesh, float creaseAngle) {
    constexpr unsigned int surfaces = aiPrimitiveType_TRIANGLE | aiPrimitiveType_POLYGON;
    if (mesh.mNormals || !(mesh.mPrimitiveTypes & surfaces))
        return;
    const std::vector<aiVector3D> normals = faceNormals(mesh);
    const ai_real limit = std::cos(AI_DEG_TO_RAD(creaseAngle));
    const Box box = boxOf(mesh);
    mesh.mNormals = new aiVector3D[mesh.mNumVertices];
    const float radius = epsilonOf(box);
    // No position is nearer than that to any, or the size of the mesh is no number.
    if (!(radius * radius > 0) || !std::isfinite(radius))
        return;
    NearbyCorners corners(mesh, box, radius);
    std::vector<bool> done(mesh.mNumVertices);
    std::vector<unsigned int> nearby;
    for (unsigned int corner = 0; corner < mesh.mNumVertices; ++corner) {
        if (done[corner])
            continue;
        corners.find(mesh.mVertices[corner], nearby);
        for (const unsigned int same : nearby) {
            if (mesh.mVertices[same] != mesh.mVertices[corner])
                continue;
            mesh.mNormals[same] = sumOf(normals, nearby, same, limit);
            done[same] = true;
        }
    }
}

} // namespace ravolt::tool
