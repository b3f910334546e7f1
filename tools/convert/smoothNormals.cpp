// The sum of normals depends on the order of the corners, which is that of assimp's own search.

#include "tools/convert/smoothNormals.h"

#include <assimp/SpatialSort.h>
#include <assimp/mesh.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

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

// Corners in the order of assimp's search, and where they are along its axis.
class SortedCorners : Assimp::SpatialSort {
  public:
    explicit SortedCorners(const aiMesh &mesh)
        : SpatialSort(mesh.mVertices, mesh.mNumVertices, sizeof(aiVector3D)) {}

    unsigned int indexOf(unsigned int rank) const { return mPositions[rank].mIndex; }
    ai_real distanceOf(unsigned int rank) const { return mPositions[rank].mDistance; }
    ai_real distanceOf(const aiVector3D &position) const { return CalculateDistance(position); }
    void release() { decltype(mPositions)().swap(mPositions); } // all but the axis
};

// The corners near a position, by a hash table of the cells of a grid. Assimp's search compares
// those whose distances along its axis differ by less than the radius.
class NearbyCorners {
  public:
    NearbyCorners(const aiMesh &all, const Box &box, float searchRadius)
        : mesh(all), low(box.low), radius(searchRadius), cellSize(4.02 * searchRadius), sorted(all),
          ends(std::bit_ceil(std::size_t(all.mNumVertices) / 4 + 1)) {
        for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
            ++ends[slotOf(mesh.mVertices[i])];
        unsigned int sum = 0;
        for (unsigned int &end : ends)
            sum += std::exchange(end, sum);
        entries.resize(mesh.mNumVertices);
        for (unsigned int rank = 0; rank < mesh.mNumVertices; ++rank) {
            const unsigned int index = sorted.indexOf(rank);
            entries[ends[slotOf(mesh.mVertices[index])]++] = {rank, index, sorted.distanceOf(rank)};
        }
        sorted.release();
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
        for (const auto &[rank, index] : ranks)
            found.push_back(index);
    }

  private:
    struct Entry {
        unsigned int rank, index;
        ai_real distance;
    };

    std::int64_t cellOf(const aiVector3D &position, unsigned int axis, double offset = 0) const {
        const double way = double(position[axis]) - double(low[axis]) + 1.001 * offset;
        return static_cast<std::int64_t>(std::floor(way / cellSize));
    }

    std::size_t slotOf(const aiVector3D &position) const {
        return slotOf(cellOf(position, 0), cellOf(position, 1), cellOf(position, 2));
    }

    // Neighbours along X are neighbours in memory.
    std::size_t slotOf(std::int64_t x, std::int64_t y, std::int64_t z) const {
        const auto row = static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu ^
                         static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u;
        return (static_cast<std::uint64_t>(x) + (row ^ row >> 29)) & (ends.size() - 1);
    }

    void addFrom(std::size_t slot, const aiVector3D &position) {
        if (std::find(visited.begin(), visited.end(), slot) != visited.end())
            return;
        visited.push_back(slot);
        const ai_real distance = sorted.distanceOf(position);
        const ai_real minimum = distance - radius, maximum = distance + radius;
        for (unsigned int i = slot ? ends[slot - 1] : 0; i < ends[slot]; ++i) {
            const Entry &entry = entries[i];
            if (entry.distance >= minimum && entry.distance < maximum &&
                (mesh.mVertices[entry.index] - position).SquareLength() < radius * radius)
                ranks.emplace_back(entry.rank, entry.index);
        }
    }

    const aiMesh &mesh;
    const aiVector3D low;
    const ai_real radius;
    const double cellSize;
    SortedCorners sorted;
    std::vector<unsigned int> ends; // in `entries`, of each slot of the hash table
    std::vector<Entry> entries;     // those of a slot in the order of their ranks
    std::vector<std::pair<unsigned int, unsigned int>> ranks; // with the indices
    std::vector<std::size_t> visited;
};

// Those of the faces, by their corners; no number for corners of lines and points.
class FaceNormals {
  public:
    explicit FaceNormals(const aiMesh &mesh)
        : normals(mesh.mNumFaces + std::size_t(1)), faces(mesh.mNumVertices, mesh.mNumFaces) {
        for (unsigned int i = 0; i < mesh.mNumFaces; ++i) {
            const aiFace &face = mesh.mFaces[i];
            normals[i] = normalOf(mesh, face);
            for (unsigned int corner = 0; corner < face.mNumIndices; ++corner)
                faces[face.mIndices[corner]] = i;
        }
    }

    const aiVector3D &operator[](unsigned int corner) const { return normals[faces[corner]]; }

  private:
    static aiVector3D normalOf(const aiMesh &mesh, const aiFace &face) {
        if (face.mNumIndices < 3)
            return aiVector3D(std::numeric_limits<ai_real>::quiet_NaN());
        const aiVector3D &a = mesh.mVertices[face.mIndices[0]];
        const aiVector3D &b = mesh.mVertices[face.mIndices[1]];
        const aiVector3D &c = mesh.mVertices[face.mIndices[face.mNumIndices - 1]];
        return ((b - a) ^ (c - a)).NormalizeSafe();
    }

    std::vector<aiVector3D> normals; // the last one is that of corners without a face
    std::vector<unsigned int> faces;
};

aiVector3D sumOf(const FaceNormals &normals, const std::vector<unsigned int> &nearby,
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
    const ai_real limit = std::cos(AI_DEG_TO_RAD(creaseAngle));
    const Box box = boxOf(mesh);
    const float radius = epsilonOf(box);
    // No position is nearer than that to any, or the size of the mesh is no number.
    if (!(radius * radius > 0) || !std::isfinite(radius)) {
        mesh.mNormals = new aiVector3D[mesh.mNumVertices];
        return;
    }
    NearbyCorners corners(mesh, box, radius); // first, as its constructor needs the most memory
    const FaceNormals normals(mesh);
    mesh.mNormals = new aiVector3D[mesh.mNumVertices];
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
