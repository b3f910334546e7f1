#pragma once

// Faults of assimp that the converter corrects in what assimp returns, each only for the releases
// in which it was seen: the correction would break the result of a release without the fault. If a
// later release has the fault too, the test of the correction fails: raise the last release of its
// row then.

namespace ravolt::tool {

enum class AssimpFault {
    gltf1LocalTransforms,  // the local transform of a glTF 1 node is rotated and scaled as well
    gltf2TextureTransforms // stated about the texture's centre, with the offset of another centre
};

struct AssimpRelease {
    unsigned int major;
    unsigned int minor;
};

bool hasFault(AssimpFault fault, AssimpRelease release);
bool hasFault(AssimpFault fault); // in the release that runs

} // namespace ravolt::tool
