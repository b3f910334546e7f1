#pragma once

// Faults of assimp that the converter corrects in what assimp returns, each only for the releases
// in which it was seen: a release without the fault would be corrected twice. Where a later release
// still has it, the test of its correction fails there, and the last release of its row moves up.

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
