// Converting meshes: faces, normals and texture coordinates.

#include "tools/convert/meshes.h"

#include "tests/tools/figure.h"
#include "tools/convert/transforms.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace {

using namespace ravolt::tool;
using tool_test::Faces;
using tool_test::Points;

std::unique_ptr<aiMesh> meshFrom(const Points &points, const Faces &faces,
                                 const Points &normals = {}) {
    auto mesh = std::make_unique<aiMesh>();
    tool_test::fill(*mesh, points, faces, normals);
    return mesh;
}

const Points corners = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};

std::unique_ptr<aiMesh> triangle() {
    return meshFrom(corners, {{0, 1, 2}}, Points(3, aiVector3D(0, 0, 1)));
}

// A sheet of `side` by `side` squares facing +z.
std::unique_ptr<aiMesh> sheet(unsigned int side) {
    Points points;
    Faces faces;
    for (unsigned int y = 0; y <= side; ++y)
        for (unsigned int x = 0; x <= side; ++x)
            points.emplace_back(static_cast<float>(x), static_cast<float>(y), 0.0f);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const unsigned int a = y * (side + 1) + x, c = a + side + 1;
            faces.push_back({a, a + 1, c});
            faces.push_back({a + 1, c + 1, c});
        }
    return meshFrom(points, faces, Points(points.size(), aiVector3D(0, 0, 1)));
}

// Of one mesh, with what `append` has dropped.
struct Appended : Geometry {
    explicit Appended(const aiMesh &mesh, const VertexTransform &transform = {})
        : dropped(append(*this, mesh, transform)) {}
    Dropped dropped;
};

VertexTransform transformOf(const Matrix &residual) {
    VertexTransform transform;
    transform.residual = residual;
    return transform;
}

VertexTransform twoSided() {
    VertexTransform transform;
    transform.bothSides = true;
    return transform;
}

// The direction of the front of a face.
Vector frontOf(const Geometry &geometry, std::size_t face = 0) {
    const auto &f = geometry.faces.at(face);
    const auto at = [&](std::uint32_t index) {
        const Point &p = geometry.positions[index];
        return Vector{p.x, p.y, p.z};
    };
    return unit(cross(at(f[1]) - at(f[0]), at(f[2]) - at(f[0])));
}

TEST(Meshes, HaveFrontsAndNormalsOfOneDirection) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Matrix none, mirrorX = matrixOfColumns({-1, 0, 0}, {0, 1, 0}, {0, 0, 1}),
                       mirrorZ = matrixOfColumns({1, 0, 0}, {0, 1, 0}, {0, 0, -1});
    const Points up(3, aiVector3D(0, 0, 1));
    struct Case {
        const char *what;
        Faces faces;
        Points normals;
        Matrix residual;
        double z;
    };
    const Case cases[] = {
        {"as it is", {{0, 1, 2}}, up, none, 1},
        {"mirrored along x", {{0, 1, 2}}, up, mirrorX, 1},
        {"mirrored along z", {{0, 1, 2}}, up, mirrorZ, -1},
        {"face against its normals", {{0, 2, 1}}, up, none, 1},
        {"no normals", {{0, 1, 2}}, {}, none, 1},
        {"zero normals", {{0, 1, 2}}, Points(3), none, 1},
        {"normals not finite", {{0, 1, 2}}, Points(3, aiVector3D(nan, 0, 1)), none, 1}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        const Appended geometry(*meshFrom(corners, c.faces, c.normals), transformOf(c.residual));
        EXPECT_EQ(geometry.dropped.withoutArea, 0u);
        ASSERT_EQ(geometry.faces.size(), 1u);
        ASSERT_EQ(geometry.positions.size(), 3u);
        EXPECT_FALSE(geometry.hasTexCoords);
        EXPECT_NEAR(frontOf(geometry).z, c.z, 1e-6);
        for (const Point &normal : geometry.normals)
            EXPECT_NEAR(normal.z, c.z, 1e-6);
        EXPECT_FLOAT_EQ(boundsOf(geometry).minimum.x, &c == &cases[1] ? -1.0f : 0.0f);
    }
}

TEST(Meshes, HavePerpendicularNormalsUnderUnevenScale) {
    // A slope with normal (1, 0, 1); stretched fourfold along x it is (1, 0, 4).
    const Appended geometry(*meshFrom({{0, 0, 1}, {1, 0, 0}, {0, 1, 1}}, {{0, 1, 2}},
                                      Points(3, aiVector3D(0.70710678f, 0, 0.70710678f))),
                            transformOf(matrixOfColumns({4, 0, 0}, {0, 1, 0}, {0, 0, 1})));
    const Point &normal = geometry.normals[0];
    EXPECT_NEAR(normal.x, 1 / std::sqrt(17.0), 1e-6);
    EXPECT_NEAR(normal.z, 4 / std::sqrt(17.0), 1e-6);
    EXPECT_NEAR(frontOf(geometry).x, normal.x, 1e-6);
}

TEST(Meshes, ShowBothSidesOnRequest) {
    VertexTransform transform = twoSided();
    transform.posed.resize(3);
    transform.influences.resize(3);
    for (std::uint32_t i = 0; i < 3; ++i)
        transform.influences[i].bone[0] = i;
    const Appended rigid(*triangle(), twoSided()), skinned(*triangle(), transform);
    for (const Geometry &geometry :
         {static_cast<Geometry>(rigid), static_cast<Geometry>(skinned)}) {
        ASSERT_EQ(geometry.faces.size(), 2u);
        EXPECT_EQ(geometry.positions.size(), 6u);
        EXPECT_NEAR(frontOf(geometry, 1).z, -1, 1e-6);
        EXPECT_NEAR(geometry.normals[geometry.faces[1][0]].z, -1, 1e-6);
    }
    ASSERT_EQ(skinned.influences.size(), 6u);
    for (std::uint32_t i = 0; i < 6; ++i)
        EXPECT_EQ(skinned.influences[i].bone[0], i % 3);
}

// A box from (0, 0, 0) to (1, 1, 1) without shared vertices, seen from outside.
std::unique_ptr<aiMesh> box(bool inward = false, std::size_t faces = 12, float side = 1) {
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    Points points;
    Faces triangles;
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

TEST(Meshes, DoubleNoClosedPart) {
    const auto faces = [](const aiMesh &mesh) { return Appended(mesh, twoSided()).faces.size(); };
    EXPECT_EQ(faces(*box()), 12u);
    EXPECT_EQ(faces(*box(true)), 24u);      // a room
    EXPECT_EQ(faces(*box(false, 11)), 22u); // a hole
    EXPECT_EQ(faces(*box(false, 12, 1e-3f)), 12u);
    const auto wrong = box();
    std::swap(wrong->mFaces[3].mIndices[1], wrong->mFaces[3].mIndices[2]);
    EXPECT_EQ(faces(*wrong), 24u); // one triangle the other way round
    EXPECT_EQ(faces(*meshFrom(corners, {{0, 1, 2}, {0, 2, 1}})), 4u); // closed, without volume
}

TEST(Meshes, DoubleTheOpenPartsBesideClosedOnes) {
    Appended geometry(*triangle(), twoSided());
    append(geometry, *box(), twoSided());
    EXPECT_EQ(geometry.faces.size(), 14u);
    EXPECT_EQ(geometry.positions.size(), 42u);
    append(geometry, *box(), twoSided()); // parts are those of one mesh
    EXPECT_EQ(geometry.faces.size(), 26u);
}

TEST(Meshes, DoubleSkinsThatBonesTearOpen) {
    const auto mesh = box();
    VertexTransform transform = twoSided();
    transform.posed.resize(mesh->mNumVertices);
    transform.influences.resize(mesh->mNumVertices);
    for (VertexInfluences &influences : transform.influences)
        influences.weight[0] = 1;
    EXPECT_EQ(Appended(*mesh, transform).faces.size(), 12u);
    transform.influences[0].bone[0] = 1;
    EXPECT_EQ(Appended(*mesh, transform).faces.size(), 24u);
}

TEST(Meshes, FillTexCoordsWhereOneOfTwoMeshesHasNone) {
    const auto plain = triangle(), hasTexCoords = triangle();
    hasTexCoords->mNumUVComponents[0] = 2;
    hasTexCoords->mTextureCoords[0] = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 0.5f, 0}};
    Appended geometry(*plain);
    append(geometry, *hasTexCoords, {});
    append(geometry, *plain, {});
    ASSERT_EQ(geometry.texCoords.size(), 9u);
    EXPECT_FLOAT_EQ(geometry.texCoords[5].v, 0.5f);
    EXPECT_FLOAT_EQ(geometry.texCoords[8].v, 0.0f);
}

TEST(Meshes, DropWhatIsNotVisible) {
    const auto expect = [](const char *what, const Points &points, const Faces &faces, double scale,
                           const Dropped &dropped, std::size_t remaining, std::size_t positions) {
        SCOPED_TRACE(what);
        const Appended geometry(*meshFrom(points, faces), transformOf(Matrix() * scale));
        EXPECT_EQ(geometry.dropped.tooFar, dropped.tooFar);
        EXPECT_EQ(geometry.dropped.withoutArea, dropped.withoutArea);
        EXPECT_EQ(geometry.faces.size(), remaining);
        EXPECT_EQ(geometry.positions.size(), positions);
        EXPECT_TRUE(std::isfinite(boundsOf(geometry).radius));
    };
    expect("a vertex without a triangle", {{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{1, 2, 3}},
           1, {0, 0}, 1, 3);
    expect("beyond a float", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1e30f, 0, 0}},
           {{0, 1, 2}, {0, 3, 2}}, 1e20, {1, 0}, 1, 4);
    expect("lines", {{0, 0, 0}, {1, 2, 3}, {-1, -2, -3}, {1, 0, 0}},
           {{0, 1, 2}, {0, 3, 3}, {0, 3, 1}}, 1, {0, 2}, 1, 4);
    expect("not what is small or thin",
           {{0, 0, 0}, {1e-20f, 0, 0}, {0, 1e-20f, 0}, {1, 0, 0}, {0, 1e-6f, 0}},
           {{0, 1, 2}, {0, 3, 4}}, 1, {0, 0}, 2, 5);
}

TEST(Meshes, HaveTheirRadiusAroundTheNodesOrigin) {
    const Bounds bounds =
        boundsOf(Appended(*meshFrom({{3, 4, 0}, {3, 0, 0}, {2, 0, 0}}, {{0, 1, 2}})));
    EXPECT_FLOAT_EQ(bounds.radius, 5);
    EXPECT_FLOAT_EQ(bounds.minimum.x, 2);
    EXPECT_FLOAT_EQ(bounds.maximum.y, 4);
}

TEST(Meshes, AreSplitAboveTheLimitAlone) {
    const Appended geometry(*sheet(2)); // 9 vertices, 8 faces
    EXPECT_EQ(split(geometry, 9).size(), 1u);
    EXPECT_GT(split(geometry, 8).size(), 1u);
    EXPECT_GT(split(geometry, 7).size(), 1u);
}

TEST(Meshes, AreSplitIntoPiecesWithinTheLimit) {
    const Appended geometry(*sheet(20));
    for (std::size_t limit : {3u, 4u, 10u, 1000u}) {
        std::size_t total = 0;
        for (const Geometry &piece : split(geometry, limit)) {
            EXPECT_LE(piece.positions.size(), limit);
            EXPECT_LE(piece.faces.size(), limit);
            EXPECT_FALSE(piece.empty());
            EXPECT_EQ(piece.normals.size(), piece.positions.size());
            // Each triangle of the whole comes once, in order and at its position.
            for (std::size_t i = 0; i < piece.faces.size(); ++i, ++total)
                for (std::size_t corner = 0; corner < 3; ++corner) {
                    const Point &here = piece.positions[piece.faces[i][corner]];
                    const Point &there = geometry.positions[geometry.faces[total][corner]];
                    ASSERT_FLOAT_EQ(here.x, there.x);
                    ASSERT_FLOAT_EQ(here.y, there.y);
                }
        }
        EXPECT_EQ(total, geometry.faces.size());
    }
}

TEST(Meshes, AreSplitIntoFewPieces) {
    const std::vector<Geometry> pieces = split(Appended(*sheet(400)));
    for (const Geometry &piece : pieces) {
        EXPECT_LE(piece.positions.size(), meshLimit);
        EXPECT_LE(piece.faces.size(), meshLimit);
    }
    EXPECT_LE(pieces.size(), 320000 / meshLimit + 2);
}

// Each triangle of a row has a bone of its own, and a share of a common one.
TEST(Meshes, AreSplitByBones) {
    Geometry geometry;
    for (std::uint32_t i = 0; i < 250; ++i) {
        for (int corner = 0; corner < 3; ++corner) {
            geometry.positions.push_back({static_cast<float>(i), static_cast<float>(corner), 0});
            geometry.normals.push_back({0, 0, 1});
            geometry.influences.push_back({{i, 1000, 0, 0}, {0.75f, 0.25f, 0, 0}});
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

} // namespace
