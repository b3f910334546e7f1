#pragma once

// Faults of assimp that the converter corrects, each with the releases for which it does so. All of
// them were seen in, and the corrections tested with, release 5.2.5. If the correction would break
// the result of a release without the fault, it is limited to the releases in which the fault was
// seen: if a later one has it too, the test of the correction fails, and the last release of its
// row needs to be raised. The other corrections have no effect on a correct result and apply to all
// releases.

namespace ravolt::tool {

enum class AssimpFault {
    gltf1LocalTransforms,   // the local transform of a glTF 1 node is rotated and scaled as well
    gltf2TextureTransforms, // stated about the texture's centre, with the offset of another centre
    gltf2EqualNames,        // glTF 2 nodes of the same name are confused
    gltf2SharedMeshes,      // a glTF 2 mesh has the skin of one of its nodes alone
    gltf2Interpolation      // all keys of a glTF 2 animation are interpolated linearly
};

struct AssimpRelease {
    unsigned int major;
    unsigned int minor;
};

bool hasFault(AssimpFault fault, AssimpRelease release);
bool hasFault(AssimpFault fault); // in the release that runs

} // namespace ravolt::tool
