// The two ways of skinning by the processor, on arrays of any size and number of weights.

#include "models/skinBlend.h"

#include "ravolt/RVMESH.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

const Z3MVECTOR3D untouched(1234, 5678, 9012);

struct Pose {
    std::vector<Z3MVECTOR3D> vertex, normal;
    std::vector<unsigned char> boneIndex;
    std::vector<float> boneWeight;
    std::vector<Z3MMATRIX> matrix;
    unsigned int weights;

    Pose(unsigned int vertices, unsigned int weightsOfAVertex, unsigned int bones)
        : weights(weightsOfAVertex) {
        std::mt19937 random(vertices * 100 + weights);
        const auto number = [&random] { return static_cast<float>(random() % 20001) / 1e4f - 1; };
        for (unsigned int i = 0; i < vertices; ++i) {
            vertex.emplace_back(number(), number(), number());
            normal.emplace_back(number(), number(), number());
        }
        for (unsigned int i = 0; i < vertices * weights; ++i) {
            boneIndex.push_back(static_cast<unsigned char>(random() % bones));
            boneWeight.push_back(number());
        }
        matrix.resize(bones);
        for (Z3MMATRIX &each : matrix)
            for (float &element : each.e)
                element = number();
    }

    ravolt::BindPose pose() const {
        return {vertex.data(),
                normal.data(),
                boneIndex.data(),
                boneWeight.data(),
                static_cast<unsigned int>(vertex.size()),
                weights};
    }
};

// The skinned vertices, then the normals, each with one vector more than there are.
struct Skinned {
    std::vector<Z3MVECTOR3D> vertex, normal;

    explicit Skinned(std::size_t vertices)
        : vertex(vertices + 1, untouched), normal(vertices + 1, untouched) {}
};

class SkinBlendTest : public testing::TestWithParam<unsigned int> {};

INSTANTIATE_TEST_SUITE_P(Weights, SkinBlendTest, testing::Values(1u, 2u, 3u, 4u, 5u, 8u));

TEST_P(SkinBlendTest, BothWaysGiveEqualVertices) {
    for (const unsigned int vertices : {0u, 1u, 2u, 3u, 500u}) {
        const Pose pose(vertices, GetParam(), 100);
        Skinned plain(vertices), other(vertices);
        ravolt::skinPlainly(pose.pose(), pose.matrix.data(), plain.vertex.data(),
                            plain.normal.data());
        ravolt::skinVertices(pose.pose(), pose.matrix.data(), 100, other.vertex.data(),
                             other.normal.data());
        EXPECT_EQ(plain.vertex, other.vertex) << vertices;
        EXPECT_EQ(plain.normal, other.normal) << vertices;
        EXPECT_EQ(other.vertex.back(), untouched);
        EXPECT_EQ(other.normal.back(), untouched);
    }
}

// A quarter turn about Z with a translation, and none: in equal parts.
TEST(SkinBlend, WeightsBlendTheBones) {
    Z3MMATRIX turned(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1);
    const Z3MMATRIX matrix[] = {Z3MMATRIX(), turned};
    const Z3MVECTOR3D vertex[] = {{1, 2, 3}, {1, 2, 3}}, normal[] = {{0, 1, 0}, {0, 1, 0}};
    const unsigned char index[] = {0, 1, 1, 0};
    const float weight[] = {0.5f, 0.5f, 1, 0};
    Z3MVECTOR3D skinned[2], skinnedNormal[2];
    ravolt::skinVertices({vertex, normal, index, weight, 2, 2}, matrix, 2, skinned, skinnedNormal);
    EXPECT_EQ(skinned[0], Z3MVECTOR3D(4.5f, 11.5f, 18));
    EXPECT_EQ(skinned[1], Z3MVECTOR3D(8, 21, 33));
    EXPECT_EQ(skinnedNormal[0], Z3MVECTOR3D(-0.5f, 0.5f, 0)) << "not normalized";
    EXPECT_EQ(skinnedNormal[1], Z3MVECTOR3D(-1, 0, 0));
}

} // namespace
