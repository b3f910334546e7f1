// The vertices and indices of domes, and the class as far as it needs no context.

#include "effects/domeGeometry.h"

#include "ravolt/RVSKYDOME.h"
#include "tests/support/expectNear.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

struct DomeCase {
    float radius, latitudeStep, longitudeStep;
    std::size_t rows, columns; // of vertices
};

// Steps that divide their circles.
constexpr DomeCase domes[] = {{921.6f, 15, 15, 7, 25},
                              {300, 30, 45, 4, 9},
                              {1, 10, 20, 10, 19},
                              {0.5f, 90, 120, 2, 4},
                              {64, 1, 1, 91, 361}};

DomeGeometry make(const DomeCase &dome) {
    return makeDome(dome.radius, dome.latitudeStep, dome.longitudeStep);
}

double radians(double degrees) { return degrees / 180 * 3.14159265358979; }

// The counts of the smallest steps fit in 16 bits.
TEST(domeGeometry, VerticesLieOnASunkenHalfSphereWithTheTextureAround) {
    for (const DomeCase &each : domes) {
        const DomeGeometry dome = make(each);
        ASSERT_EQ(dome.vertices.size(), each.rows * each.columns);
        for (std::size_t row = 0; row < each.rows; ++row)
            for (std::size_t column = 0; column < each.columns; ++column) {
                const double latitude = static_cast<double>(row) * each.latitudeStep;
                const double longitude = static_cast<double>(column) * each.longitudeStep;
                const double phi = radians(latitude), theta = radians(longitude), r = each.radius;
                const auto &[position, texCoord] = dome.vertices[row * each.columns + column];
                const double expected[] = {std::sin(phi) * r * std::cos(theta),
                                           std::cos(phi) * r - r / 3,
                                           std::sin(phi) * r * std::sin(theta)};
                expectNear(static_cast<const float *>(&position.x), expected, r * 1e-6);
                EXPECT_NEAR(texCoord.x, 1 - longitude / 360, 1e-6);
                EXPECT_NEAR(texCoord.y, 1 - latitude / 90, 1e-6);
            }
    }
}

TEST(domeGeometry, OneStripZigzagsThroughAllRowsButTheLast) {
    for (const DomeCase &each : domes) {
        const DomeGeometry dome = make(each);
        ASSERT_EQ(dome.indices.size(), (each.rows - 1) * each.columns * 2);
        for (std::size_t n = 0; n < (each.rows - 1) * each.columns; ++n) {
            EXPECT_EQ(dome.indices[2 * n], n);
            EXPECT_EQ(dome.indices[2 * n + 1], n + each.columns);
        }
    }
}

TEST(domeGeometry, ZenithIsOnePointAndTheSeamHasBothEndsOfTheTexture) {
    const DomeGeometry dome = makeDome(300, 15, 15);
    for (std::size_t column = 0; column < 25; ++column) {
        EXPECT_TRUE(dome.vertices[column].position == Z3MVECTOR3D(0, 200, 0));
        EXPECT_EQ(dome.vertices[column].texCoord.y, 1);
    }
    for (std::size_t row = 0; row < 7; ++row) {
        const RVSKYDOME_VERTEX &first = dome.vertices[row * 25],
                               &last = dome.vertices[row * 25 + 24];
        EXPECT_EQ(first.texCoord.x, 1);
        EXPECT_EQ(last.texCoord.x, 0);
        EXPECT_EQ(first.texCoord.y, last.texCoord.y);
    }
}

TEST(domeGeometry, OnlyWholeDegreesOfAStepCount) {
    const DomeGeometry dome = makeDome(300, 15.9f, 45.5f), whole = makeDome(300, 15, 45);
    EXPECT_EQ(dome.vertices.size(), whole.vertices.size());
    EXPECT_EQ(dome.indices, whole.indices);
    EXPECT_TRUE(dome.vertices.back().position == whole.vertices.back().position);
}

// On purpose: the counts are rounded from a fraction of a row.
TEST(domeGeometry, StepsThatDivideNothingStayWithinTheVertices) {
    const DomeGeometry dome = makeDome(300, 7, 50);
    EXPECT_EQ(dome.vertices.size(), 113u); // of 8.2 times 13.857
    EXPECT_EQ(dome.indices.size(), 210u);  // of 8.2 times 12.857 times 2
    const unsigned short rows = 12, columns = 8;
    for (const unsigned short index : dome.indices)
        EXPECT_LT(index, (rows + 1) * columns);
    EXPECT_EQ(std::count(dome.indices.begin() + rows * columns * 2, dome.indices.end(),
                         dome.indices[rows * columns * 2 - 1]),
              18); // draws nothing
}

TEST(domeGeometry, WithoutAWholeRowTheStripIsTheFirstVertexAlone) {
    const DomeGeometry point = makeDome(300, 180, 3600), ring = makeDome(300, 100, 30);
    EXPECT_EQ(point.vertices.size(), 1u);
    EXPECT_EQ(point.indices, std::vector<unsigned short>(1));
    EXPECT_EQ(ring.vertices.size(), 24u); // of 13 times 1.9
    EXPECT_EQ(ring.indices, std::vector<unsigned short>(23));
}

TEST(domeGeometry, StepsBelowADegreeMakeNothing) {
    EXPECT_TRUE(makeDome(300, 0.5f, 15).vertices.empty());
    EXPECT_TRUE(makeDome(300, 15, 0).indices.empty());
    EXPECT_TRUE(makeDome(300, -15, 15).vertices.empty());
}

TEST(domeGeometry, VertexTakesItsPositionAndTextureCoordinates) {
    RVSKYDOME_VERTEX vertex;
    EXPECT_TRUE(vertex.position == Z3MVECTOR3D(0, 0, 0));
    vertex.setPosition(1, 2, 3);
    vertex.setTexCoord(0.25f, 0.75f);
    const RVSKYDOME_VERTEX copy(vertex);
    EXPECT_TRUE(copy.position == Z3MVECTOR3D(1, 2, 3));
    EXPECT_EQ(copy.texCoord.x, 0.25f);
    EXPECT_EQ(copy.texCoord.y, 0.75f);
}

TEST(domeGeometry, SkyWithoutAContextHasItsNameAndType) {
    const RVSKYDOME *sky = new RVSKYDOME;
    EXPECT_EQ(sky->getType(), RV_NODE_TYPE_SKYDOME);
    EXPECT_EQ(sky->getName(), "[skydome " + std::to_string(sky->getId()) + "]");
    EXPECT_STREQ(sky->getTypeName(), "skydome");
    delete sky;
}

} // namespace
