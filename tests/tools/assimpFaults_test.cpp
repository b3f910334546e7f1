#include "tools/convert/assimpFaults.h"

#include <gtest/gtest.h>

namespace {

using namespace ravolt::tool;

TEST(AssimpFaultsTest, WithUnsafeCorrectionsAreLimitedToTheReleasesInWhichTheyWereSeen) {
    for (AssimpFault fault :
         {AssimpFault::gltf1LocalTransforms, AssimpFault::gltf2TextureTransforms}) {
        EXPECT_FALSE(hasFault(fault, {4, 9}));
        EXPECT_FALSE(hasFault(fault, {5, 1}));
        EXPECT_TRUE(hasFault(fault, {5, 2}));
        EXPECT_FALSE(hasFault(fault, {5, 3}));
        EXPECT_FALSE(hasFault(fault, {6, 2}));
    }
}

TEST(AssimpFaultsTest, WithSafeCorrectionsAreCorrectedInAllReleases) {
    for (AssimpFault fault : {AssimpFault::gltf2EqualNames, AssimpFault::gltf2SharedMeshes,
                              AssimpFault::gltf2Interpolation})
        for (const AssimpRelease release : {AssimpRelease{4, 9}, {5, 2}, {5, 3}, {6, 0}})
            EXPECT_TRUE(hasFault(fault, release)) << release.major << "." << release.minor;
}

} // namespace
