// Normals for models without any, compared with those of assimp's own step in every bit.

#include "tools/convert/smoothNormals.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using ravolt::tool::smoothNormals;

constexpr unsigned int steps = aiProcess_Triangulate | aiProcess_SortByPType;

void read(Assimp::Importer &importer, const std::string &text, unsigned int flags, float angle) {
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, angle);
    ASSERT_NE(importer.ReadFileFromMemory(text.data(), text.size(), flags, "obj"), nullptr)
        << importer.GetErrorString();
}

void expectTheNormalsOfAssimp(const std::string &text, float angle = 60) {
    Assimp::Importer theirs, ours;
    read(theirs, text, steps | aiProcess_GenSmoothNormals, angle);
    read(ours, text, steps, angle);
    const aiScene &expected = *theirs.GetScene();
    ASSERT_EQ(ours.GetScene()->mNumMeshes, expected.mNumMeshes);
    for (unsigned int i = 0; i < expected.mNumMeshes; ++i) {
        aiMesh &mesh = *ours.GetScene()->mMeshes[i];
        smoothNormals(mesh, angle);
        ASSERT_EQ(mesh.mNumVertices, expected.mMeshes[i]->mNumVertices);
        ASSERT_EQ(!mesh.mNormals, !expected.mMeshes[i]->mNormals);
        if (mesh.mNormals) {
            EXPECT_EQ(std::memcmp(mesh.mNormals, expected.mMeshes[i]->mNormals,
                                  mesh.mNumVertices * sizeof(aiVector3D)),
                      0);
        }
    }
}

std::string vertex(float x, float y, float z) {
    return "v " + std::to_string(x) + ' ' + std::to_string(y) + ' ' + std::to_string(z) + '\n';
}

// Triangles between random points in a cube, many of them hardly apart.
std::string randomTriangles(unsigned int seed, float jitter) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> offset(-jitter, jitter);
    std::uniform_int_distribution<int> grid(0, 5), index(1, 600);
    std::string text;
    for (int i = 0; i < 600; ++i)
        text += vertex(static_cast<float>(grid(random)) + offset(random),
                       static_cast<float>(grid(random)) + offset(random),
                       static_cast<float>(grid(random)) - 2 + offset(random));
    for (int i = 0; i < 3000; ++i)
        text += "f " + std::to_string(index(random)) + ' ' + std::to_string(index(random)) + ' ' +
                std::to_string(index(random)) + '\n';
    return text;
}

TEST(SmoothNormals, AreThoseOfAssimp) {
    for (unsigned int seed = 0; seed < 4; ++seed) // the radius is about 0.0009
        for (const float jitter : {0.0f, 0.0003f, 0.0005f, 0.001f})
            for (const float angle : {0.0f, 60.0f, 140.0f}) {
                SCOPED_TRACE(testing::Message() << seed << ' ' << jitter << ' ' << angle);
                expectTheNormalsOfAssimp(randomTriangles(seed, jitter), angle);
            }
}

TEST(SmoothNormals, AreThoseOfAssimpOnASlope) {
    std::string text;
    constexpr int side = 40;
    for (int y = 0; y <= side; ++y)
        for (int x = 0; x <= side; ++x)
            text += vertex(static_cast<float>(x), static_cast<float>(x * y % 7) * 0.3f,
                           static_cast<float>(-y));
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const int a = y * (side + 1) + x + 1, b = a + side + 1;
            text += "f " + std::to_string(a) + ' ' + std::to_string(a + 1) + ' ' +
                    std::to_string(b + 1) + ' ' + std::to_string(b) + '\n';
        }
    expectTheNormalsOfAssimp(text);
}

TEST(SmoothNormals, AreThoseOfAssimpForWhatHasNoSize) {
    const std::string points = vertex(0, 0, 0) + vertex(1, 0, 0) + vertex(0, 1, 0);
    expectTheNormalsOfAssimp(points + "f 1 2 3\n");
    expectTheNormalsOfAssimp(points + "f 1 2 2\nf 1 1 1\nf 1 2 3\nl 1 2\np 3\n");
    expectTheNormalsOfAssimp(vertex(2, 2, 2) + "f 1 1 1\n"); // no size at all
}

TEST(SmoothNormals, AreZeroForAMeshOfInfiniteSize) {
    Assimp::Importer importer;
    read(importer, "v -3e38 0 0\nv 3e38 0 0\nv 0 3e38 0\nf 1 2 3\n", steps, 60);
    aiMesh &mesh = *importer.GetScene()->mMeshes[0];
    smoothNormals(mesh, 60);
    EXPECT_EQ(mesh.mNormals[0], aiVector3D());
}

TEST(SmoothNormals, OfTheModelItselfAreNotChanged) {
    Assimp::Importer importer;
    read(importer,
         vertex(0, 0, 0) + vertex(1, 0, 0) + vertex(0, 1, 0) + "vn 0 1 0\nf 1//1 2//1 3//1\n",
         steps, 60);
    aiMesh &mesh = *importer.GetScene()->mMeshes[0];
    smoothNormals(mesh, 60);
    EXPECT_EQ(mesh.mNormals[0], aiVector3D(0, 1, 0));
}

} // namespace
