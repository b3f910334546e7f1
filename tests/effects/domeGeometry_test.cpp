// The vertices and indices of domes, and the class as far as it needs no context.

#include "effects/domeGeometry.h"

#include "ravolt/RVSKYDOME.h"
#include "tests/support/expectNear.h"

#include <algorithm>
#include <cmath>
#include <string>

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

TEST(domeGeometry, CountsOfTheDefaultSteps) {
    const DomeGeometry dome = makeDome(900, 15, 15);
    EXPECT_EQ(dome.vertices.size(), 175u);
    EXPECT_EQ(dome.indices.size(), 300u);
}

TEST(domeGeometry, CountsOfTheSmallestStepsFitInto16Bits) {
    const DomeGeometry dome = makeDome(900, 1, 1);
    EXPECT_EQ(dome.vertices.size(), 361u * 91);
    EXPECT_EQ(dome.indices.size(), 361u * 90 * 2);
}

TEST(domeGeometry, VerticesLieOnASunkenHalfSphere) {
    for (const DomeCase &each : domes) {
        const DomeGeometry dome = make(each);
        ASSERT_EQ(dome.vertices.size(), each.rows * each.columns);
        for (std::size_t row = 0; row < each.rows; ++row)
            for (std::size_t column = 0; column < each.columns; ++column) {
                const double phi = radians(static_cast<double>(row) * each.latitudeStep);
                const double theta = radians(static_cast<double>(column) * each.longitudeStep);
                const double r = each.radius;
                const Z3MVECTOR3D &place = dome.vertices[row * each.columns + column].position;
                const double expected[] = {std::sin(phi) * r * std::cos(theta),
                                           std::cos(phi) * r - r / 3,
                                           std::sin(phi) * r * std::sin(theta)};
                expectNear(static_cast<const float *>(&place.x), expected, r * 1e-6);
            }
    }
}

TEST(domeGeometry, TextureRunsOnceAroundAndFromTheRimToTheZenith) {
    for (const DomeCase &each : domes) {
        const DomeGeometry dome = make(each);
        for (std::size_t row = 0; row < each.rows; ++row)
            for (std::size_t column = 0; column < each.columns; ++column) {
                const Z3MVECTOR2D &coord = dome.vertices[row * each.columns + column].texCoord;
                EXPECT_NEAR(coord.x, 1 - static_cast<float>(column) * each.longitudeStep / 360,
                            1e-6);
                EXPECT_NEAR(coord.y, 1 - static_cast<float>(row) * each.latitudeStep / 90, 1e-6);
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

TEST(domeGeometry, ZenithIsOnePointWithTheSeamOfTheTexture) {
    const DomeGeometry dome = makeDome(300, 15, 15);
    for (std::size_t column = 0; column < 25; ++column) {
        const RVSKYDOME_VERTEX &vertex = dome.vertices[column];
        EXPECT_TRUE(vertex.position == Z3MVECTOR3D(0, 200, 0));
        EXPECT_EQ(vertex.texCoord.y, 1);
    }
}

TEST(domeGeometry, LastVertexOfARowRepeatsTheFirstWithTheOtherEndOfTheTexture) {
    const DomeGeometry dome = makeDome(300, 15, 15);
    for (std::size_t row = 0; row < 7; ++row) {
        const RVSKYDOME_VERTEX &first = dome.vertices[row * 25],
                               &last = dome.vertices[row * 25 + 24];
        expectNear(static_cast<const float *>(&last.position.x),
                   {first.position.x, first.position.y, first.position.z}, 1e-3);
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
