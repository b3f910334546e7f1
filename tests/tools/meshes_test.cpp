#include "tools/convert/meshes.h"

#include "tools/convert/transforms.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace {

using namespace ravolt::tool;

// A mesh of assimp's from corner points and triangles, with normals and texture places as wanted.
std::unique_ptr<aiMesh> meshFrom(const std::vector<aiVector3D> &points,
                                 const std::vector<std::array<unsigned int, 3>> &faces,
                                 const std::vector<aiVector3D> &normals = {}) {
    auto mesh = std::make_unique<aiMesh>();
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    mesh->mNumVertices = static_cast<unsigned int>(points.size());
    mesh->mVertices = new aiVector3D[points.size()];
    std::copy(points.begin(), points.end(), mesh->mVertices);
    if (!normals.empty()) {
        mesh->mNormals = new aiVector3D[normals.size()];
        std::copy(normals.begin(), normals.end(), mesh->mNormals);
    }
    mesh->mNumFaces = static_cast<unsigned int>(faces.size());
    mesh->mFaces = new aiFace[faces.size()];
    for (std::size_t i = 0; i < faces.size(); ++i) {
        mesh->mFaces[i].mNumIndices = 3;
        mesh->mFaces[i].mIndices = new unsigned int[3]{faces[i][0], faces[i][1], faces[i][2]};
    }
    return mesh;
}

std::unique_ptr<aiMesh> triangle() {
    return meshFrom({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}},
                    {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
}

// A sheet of `side` by `side` squares facing +z.
std::unique_ptr<aiMesh> sheet(unsigned int side) {
    std::vector<aiVector3D> points;
    std::vector<std::array<unsigned int, 3>> faces;
    for (unsigned int y = 0; y <= side; ++y)
        for (unsigned int x = 0; x <= side; ++x)
            points.emplace_back(static_cast<float>(x), static_cast<float>(y), 0.0f);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const unsigned int a = y * (side + 1) + x, c = a + side + 1;
            faces.push_back({a, a + 1, c});
            faces.push_back({a + 1, c + 1, c});
        }
    return meshFrom(points, faces, std::vector<aiVector3D>(points.size(), aiVector3D(0, 0, 1)));
}

// Which way the front of a face looks.
Vector frontOf(const Geometry &geometry, std::size_t face) {
    const auto &f = geometry.faces[face];
    const auto at = [&](std::uint32_t index) {
        const Point &p = geometry.positions[index];
        return Vector{p.x, p.y, p.z};
    };
    return unit(cross(at(f[1]) - at(f[0]), at(f[2]) - at(f[0])));
}

TEST(Meshes, TakesTrianglesAsTheyAre) {
    Geometry geometry;
    EXPECT_EQ(append(geometry, *triangle(), {}).withoutArea, 0u);
    ASSERT_EQ(geometry.faces.size(), 1u);
    EXPECT_EQ(geometry.positions.size(), 3u);
    EXPECT_FALSE(geometry.hasTexCoords);
    EXPECT_NEAR(frontOf(geometry, 0).z, 1, 1e-6);
}

TEST(Meshes, TurnsMirroredTrianglesRound) {
    VertexTransform transform;
    transform.residual = matrixOfColumns({-1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    Geometry geometry;
    append(geometry, *triangle(), transform);
    EXPECT_NEAR(frontOf(geometry, 0).z, 1, 1e-6);
    EXPECT_NEAR(geometry.normals[0].z, 1, 1e-6);
    EXPECT_FLOAT_EQ(geometry.positions[1].x, -1);
}

TEST(Meshes, MirrorsTheFrontWithTheDepth) {
    VertexTransform transform;
    transform.residual = matrixOfColumns({1, 0, 0}, {0, 1, 0}, {0, 0, -1});
    Geometry geometry;
    append(geometry, *triangle(), transform);
    EXPECT_NEAR(frontOf(geometry, 0).z, -1, 1e-6);
    EXPECT_NEAR(geometry.normals[0].z, -1, 1e-6);
}

TEST(Meshes, KeepsNormalsUprightUnderUnevenScale) {
    // A slope with normal (1, 0, 1); stretched fourfold along x it is (1, 0, 4).
    const auto mesh = meshFrom({{0, 0, 1}, {1, 0, 0}, {0, 1, 1}}, {{0, 1, 2}},
                               std::vector<aiVector3D>(3, aiVector3D(0.70710678f, 0, 0.70710678f)));
    VertexTransform transform;
    transform.residual = matrixOfColumns({4, 0, 0}, {0, 1, 0}, {0, 0, 1});
    Geometry geometry;
    append(geometry, *mesh, transform);
    const Point &normal = geometry.normals[0];
    EXPECT_NEAR(normal.x, 1 / std::sqrt(17.0), 1e-6);
    EXPECT_NEAR(normal.z, 4 / std::sqrt(17.0), 1e-6);
    EXPECT_NEAR(frontOf(geometry, 0).x, normal.x, 1e-6);
}

TEST(Meshes, TurnsAMeshRoundThatContradictsItsNormals) {
    const auto mesh = meshFrom({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {{0, 1, 2}},
                               std::vector<aiVector3D>(3, aiVector3D(0, 0, 1)));
    Geometry geometry;
    append(geometry, *mesh, {});
    EXPECT_NEAR(frontOf(geometry, 0).z, 1, 1e-6);
}

TEST(Meshes, MakesNormalsThatAreMissingOrBroken) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::vector<aiVector3D> &normals :
         {std::vector<aiVector3D>{}, std::vector<aiVector3D>(3, aiVector3D(0, 0, 0)),
          std::vector<aiVector3D>(3, aiVector3D(nan, 0, 1))}) {
        Geometry geometry;
        append(geometry, *meshFrom({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}, normals), {});
        for (const Point &normal : geometry.normals)
            EXPECT_NEAR(normal.z, 1, 1e-6);
    }
}

TEST(Meshes, ShowsBothSidesWhenAsked) {
    VertexTransform transform;
    transform.bothSides = true;
    Geometry geometry;
    append(geometry, *triangle(), transform);
    ASSERT_EQ(geometry.faces.size(), 2u);
    EXPECT_EQ(geometry.positions.size(), 6u);
    EXPECT_NEAR(frontOf(geometry, 1).z, -1, 1e-6);
    EXPECT_NEAR(geometry.normals[geometry.faces[1][0]].z, -1, 1e-6);
}

// A box from (0, 0, 0) to (1, 1, 1) without shared vertices, seen from outside.
std::unique_ptr<aiMesh> box(bool inward = false, std::size_t faces = 12, float side = 1) {
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    std::vector<aiVector3D> points;
    std::vector<std::array<unsigned int, 3>> triangles;
    for (const auto &quad : quads)
        for (const int half : {0, 1}) {
            const auto first = static_cast<unsigned int>(points.size());
            for (const int corner : {quad[0], quad[1 + half], quad[2 + half]})
                points.emplace_back(side * static_cast<float>(corner & 1),
                                    side * static_cast<float>(corner >> 1 & 1),
                                    side * static_cast<float>(corner >> 2));
            if (triangles.size() < faces)
                triangles.push_back(
                    {first, inward ? first + 2 : first + 1, inward ? first + 1 : first + 2});
        }
    return meshFrom(points, triangles);
}

std::size_t facesOfBothSides(const aiMesh &mesh) {
    VertexTransform transform;
    transform.bothSides = true;
    Geometry geometry;
    append(geometry, mesh, transform);
    return geometry.faces.size();
}

TEST(Meshes, DoublesNoClosedPart) {
    EXPECT_EQ(facesOfBothSides(*box()), 12u);
    EXPECT_EQ(facesOfBothSides(*box(true)), 24u);      // a room
    EXPECT_EQ(facesOfBothSides(*box(false, 11)), 22u); // a hole
    EXPECT_EQ(facesOfBothSides(*box(false, 12, 1e-3f)), 12u);
    const auto wrong = box();
    std::swap(wrong->mFaces[3].mIndices[1], wrong->mFaces[3].mIndices[2]);
    EXPECT_EQ(facesOfBothSides(*wrong), 24u); // one triangle the other way round
    const auto sheet = meshFrom({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 1}});
    EXPECT_EQ(facesOfBothSides(*sheet), 4u); // closed, but nothing inside
}

TEST(Meshes, DoublesTheOpenPartsBesideClosedOnes) {
    VertexTransform transform;
    transform.bothSides = true;
    Geometry geometry;
    append(geometry, *triangle(), transform);
    append(geometry, *box(), transform);
    EXPECT_EQ(geometry.faces.size(), 14u);
    EXPECT_EQ(geometry.positions.size(), 42u);
    append(geometry, *box(), transform); // parts are those of one mesh
    EXPECT_EQ(geometry.faces.size(), 26u);
}

TEST(Meshes, DoublesSkinsThatBonesTearOpen) {
    const auto mesh = box();
    VertexTransform transform;
    transform.posed.resize(mesh->mNumVertices);
    transform.influences.resize(mesh->mNumVertices);
    for (VertexInfluences &influences : transform.influences)
        influences.weight[0] = 1;
    transform.bothSides = true;
    Geometry whole, torn;
    append(whole, *mesh, transform);
    EXPECT_EQ(whole.faces.size(), 12u);
    transform.influences[0].bone[0] = 1;
    append(torn, *mesh, transform);
    EXPECT_EQ(torn.faces.size(), 24u);
}

TEST(Meshes, FillsTexCoordsWhereOneOfTwoMeshesHasNone) {
    const auto plain = triangle(), hasTexCoords = triangle();
    hasTexCoords->mNumUVComponents[0] = 2;
    hasTexCoords->mTextureCoords[0] =
        new aiVector3D[3]{aiVector3D(0, 0, 0), aiVector3D(1, 0, 0), aiVector3D(0, 0.5f, 0)};
    Geometry geometry;
    append(geometry, *plain, {});
    append(geometry, *hasTexCoords, {});
    append(geometry, *plain, {});
    ASSERT_EQ(geometry.texCoords.size(), 9u);
    EXPECT_FLOAT_EQ(geometry.texCoords[5].v, 0.5f);
    EXPECT_FLOAT_EQ(geometry.texCoords[8].v, 0.0f);
}

TEST(Meshes, LeavesOutVerticesWithoutATriangle) {
    const auto mesh = meshFrom({{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{1, 2, 3}});
    Geometry geometry;
    append(geometry, *mesh, {});
    EXPECT_EQ(geometry.positions.size(), 3u);
    EXPECT_FLOAT_EQ(boundsOf(geometry).maximum.x, 1);
}

TEST(Meshes, DropsTrianglesBeyondWhatAFloatHolds) {
    const auto mesh =
        meshFrom({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1e30f, 0, 0}}, {{0, 1, 2}, {0, 3, 2}});
    VertexTransform transform;
    transform.residual = Matrix() * 1e20;
    Geometry geometry;
    EXPECT_EQ(append(geometry, *mesh, transform).tooFar, 1u);
    EXPECT_EQ(geometry.faces.size(), 1u);
    EXPECT_TRUE(std::isfinite(boundsOf(geometry).radius));
}

TEST(Meshes, LeavesOutTrianglesWithoutArea) {
    const auto mesh = meshFrom({{0, 0, 0}, {1, 2, 3}, {-1, -2, -3}, {1, 0, 0}},
                               {{0, 1, 2}, {0, 3, 3}, {0, 3, 1}});
    Geometry geometry;
    EXPECT_EQ(append(geometry, *mesh, {}).withoutArea, 2u);
    EXPECT_EQ(geometry.faces.size(), 1u);
}

TEST(Meshes, KeepsTrianglesThatAreSmallOrThin) {
    const auto mesh =
        meshFrom({{0, 0, 0}, {1e-20f, 0, 0}, {0, 1e-20f, 0}, {1, 0, 0}, {0, 1e-6f, 0}},
                 {{0, 1, 2}, {0, 3, 4}});
    Geometry geometry;
    EXPECT_EQ(append(geometry, *mesh, {}).withoutArea, 0u);
    EXPECT_EQ(geometry.faces.size(), 2u);
}

TEST(Meshes, StaysWholeAtTheLimit) {
    Geometry geometry;
    append(geometry, *sheet(2), {}); // 9 vertices, 8 faces
    EXPECT_EQ(split(geometry, 9).size(), 1u);
    EXPECT_GT(split(geometry, 8).size(), 1u);
    EXPECT_GT(split(geometry, 7).size(), 1u);
}

TEST(Meshes, SplitsIntoPiecesWithinTheLimit) {
    for (std::size_t limit : {3u, 4u, 10u, 1000u}) {
        Geometry geometry;
        append(geometry, *sheet(20), {});
        const std::size_t faces = geometry.faces.size();
        const std::vector<Geometry> pieces = split(geometry, limit);
        std::size_t total = 0;
        for (const Geometry &piece : pieces) {
            EXPECT_LE(piece.positions.size(), limit);
            EXPECT_LE(piece.faces.size(), limit);
            EXPECT_FALSE(piece.empty());
            EXPECT_EQ(piece.normals.size(), piece.positions.size());
            // Each triangle of the whole comes once, in order and in its place.
            for (std::size_t i = 0; i < piece.faces.size(); ++i, ++total)
                for (std::size_t corner = 0; corner < 3; ++corner) {
                    const Point &here = piece.positions[piece.faces[i][corner]];
                    const Point &there = geometry.positions[geometry.faces[total][corner]];
                    ASSERT_FLOAT_EQ(here.x, there.x);
                    ASSERT_FLOAT_EQ(here.y, there.y);
                }
        }
        EXPECT_EQ(total, faces);
    }
}

TEST(Meshes, SplitsAMillionTrianglesIntoFewPieces) {
    Geometry geometry;
    append(geometry, *sheet(700), {});
    ASSERT_EQ(geometry.faces.size(), 980000u);
    const std::vector<Geometry> pieces = split(std::move(geometry));
    for (const Geometry &piece : pieces) {
        EXPECT_LE(piece.positions.size(), meshLimit);
        EXPECT_LE(piece.faces.size(), meshLimit);
    }
    EXPECT_LE(pieces.size(), 15u + 1u);
}

TEST(Meshes, MeasuresTheRadiusFromTheNodesOwnPlace) {
    Geometry geometry;
    append(geometry, *meshFrom({{3, 4, 0}, {3, 0, 0}, {2, 0, 0}}, {{0, 1, 2}}), {});
    const Bounds bounds = boundsOf(geometry);
    EXPECT_FLOAT_EQ(bounds.radius, 5);
    EXPECT_FLOAT_EQ(bounds.minimum.x, 2);
    EXPECT_FLOAT_EQ(bounds.maximum.y, 4);
}

// Each square of a row has a bone of its own, and a share of a common one.
TEST(Meshes, SplitsByBones) {
    Geometry geometry;
    for (std::uint32_t i = 0; i < 250; ++i) {
        for (int corner = 0; corner < 3; ++corner) {
            geometry.positions.push_back({static_cast<float>(i), static_cast<float>(corner), 0});
            geometry.normals.push_back({0, 0, 1});
            VertexInfluences influences;
            influences.bone = {i, 1000, 0, 0};
            influences.weight = {0.75f, 0.25f, 0, 0};
            geometry.influences.push_back(influences);
        }
        geometry.faces.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    EXPECT_EQ(bonesOf(geometry).size(), 251u);
    std::size_t faces = 0;
    const std::vector<Geometry> pieces = split(geometry);
    EXPECT_EQ(pieces.size(), 3u);
    for (const Geometry &piece : pieces) {
        EXPECT_LE(bonesOf(piece).size(), 100u);
        ASSERT_EQ(piece.influences.size(), piece.positions.size());
        for (std::size_t i = 0; i < piece.positions.size(); ++i)
            EXPECT_EQ(piece.positions[i].x, static_cast<float>(piece.influences[i].bone[0]));
        faces += piece.faces.size();
    }
    EXPECT_EQ(faces, 250u);
}

TEST(Meshes, KeepsTheInfluencesOfBothSides) {
    const auto mesh = triangle();
    VertexTransform transform;
    transform.posed.resize(3);
    transform.influences.resize(3);
    for (std::uint32_t i = 0; i < 3; ++i)
        transform.influences[i].bone[0] = i;
    transform.bothSides = true;
    Geometry geometry;
    append(geometry, *mesh, transform);
    ASSERT_EQ(geometry.influences.size(), 6u);
    for (std::uint32_t i = 0; i < 6; ++i)
        EXPECT_EQ(geometry.influences[i].bone[0], i % 3);
}

} // namespace
