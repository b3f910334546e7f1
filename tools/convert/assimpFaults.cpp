// The table of assimp's faults and the releases for which they are corrected.

#include "tools/convert/assimpFaults.h"

#include <assimp/version.h>

#include <tuple>

namespace ravolt::tool {

namespace {

struct Row {
    AssimpFault fault;
    AssimpRelease first;
    AssimpRelease last;
};

constexpr AssimpRelease oldest = {0, 0};
constexpr AssimpRelease newest = {~0u, ~0u};

constexpr Row rows[] = {
    {AssimpFault::gltf1LocalTransforms, {5, 2}, {5, 2}},
    {AssimpFault::gltf2TextureTransforms, {5, 2}, {5, 2}},
    {AssimpFault::gltf2EqualNames, oldest, newest},
    {AssimpFault::gltf2SharedMeshes, oldest, newest},
    {AssimpFault::gltf2Interpolation, oldest, newest},
};

bool isUpTo(AssimpRelease release, AssimpRelease limit) {
    return std::tie(release.major, release.minor) <= std::tie(limit.major, limit.minor);
}

} // namespace

bool hasFault(AssimpFault fault, AssimpRelease release) {
    for (const Row &row : rows)
        if (row.fault == fault)
            return isUpTo(row.first, release) && isUpTo(release, row.last);
    return false;
}

bool hasFault(AssimpFault fault) {
    return hasFault(fault, {aiGetVersionMajor(), aiGetVersionMinor()});
}

} // namespace ravolt::tool
