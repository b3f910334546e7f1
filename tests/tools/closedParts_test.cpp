// Closed parts of a geometry, and the table that joins their vertices.

#include "tools/convert/closedParts.h"

#include "tools/common/firstEqual.h"

#include <gtest/gtest.h>

namespace {

using namespace ravolt::tool;
using Flags = std::vector<bool>;

// With outward faces; the first two corners are below the other two.
void addTetrahedron(Geometry &geometry, float shift) {
    const auto first = static_cast<std::uint32_t>(geometry.positions.size());
    for (const Point &corner :
         {Point{0, 0, 0}, Point{0, 0, 1}, Point{1 + shift, 1, 0}, Point{1 + shift, 2, 0}})
        geometry.positions.push_back(corner);
    for (const auto &[a, b, c] : {std::array{0u, 1u, 3u}, std::array{1u, 0u, 2u},
                                  std::array{0u, 3u, 2u}, std::array{1u, 2u, 3u}})
        geometry.faces.push_back({first + a, first + b, first + c});
}

TEST(ClosedParts, AreClosedOutward) {
    Geometry geometry;
    addTetrahedron(geometry, 0);
    EXPECT_EQ(closedOutward(geometry, 0), Flags(4, true));
    for (auto &face : geometry.faces)
        std::swap(face[0], face[1]);
    EXPECT_EQ(closedOutward(geometry, 0), Flags(4, false)) << "inward";
}

TEST(ClosedParts, AreOpenWithoutAFace) {
    Geometry geometry;
    addTetrahedron(geometry, 0);
    geometry.faces.pop_back();
    EXPECT_EQ(closedOutward(geometry, 0), Flags(3, false));
}

TEST(ClosedParts, AreOpenWhereFourTrianglesHaveAnEdge) {
    Geometry geometry;
    addTetrahedron(geometry, 0);
    addTetrahedron(geometry, 5);
    EXPECT_EQ(closedOutward(geometry, 0), Flags(8, false));
    EXPECT_EQ(closedOutward(geometry, 4), Flags(4, true)) << "without the faces before";
}

// Each face has vertices of its own.
TEST(ClosedParts, HaveVerticesOfOnePositionThatTheSameBonesMove) {
    Geometry joined, separate;
    addTetrahedron(joined, 0);
    for (const auto &face : joined.faces) {
        for (const std::uint32_t corner : face)
            separate.positions.push_back(joined.positions[corner]);
        const auto end = static_cast<std::uint32_t>(separate.positions.size());
        separate.faces.push_back({end - 3, end - 2, end - 1});
    }
    separate.positions[0].x = -separate.positions[0].x; // a negative zero is equal to zero
    EXPECT_EQ(closedOutward(separate, 0), Flags(4, true));
    separate.influences.resize(12, {{1, 2}, {0.5f, 0.5f}});
    EXPECT_EQ(closedOutward(separate, 0), Flags(4, true));
    separate.influences[0].weight = {0.25f, 0.75f};
    EXPECT_EQ(closedOutward(separate, 0), Flags(4, false)) << "another weight";
    separate.influences[0] = {{2, 1}, {0.5f, 0.5f}};
    EXPECT_EQ(closedOutward(separate, 0), Flags(4, false)) << "another bone";
}

TEST(FirstEqual, FindsTheFirstOfManyEqualItems) {
    constexpr std::uint32_t different = 2500;
    for (const std::size_t hashes : {std::size_t(7), std::size_t(different)}) {
        FirstEqual known(
            [=](std::uint32_t item) { return item % different % hashes; },
            [](std::uint32_t a, std::uint32_t b) { return a % different == b % different; });
        for (std::uint32_t item = 0; item < 3 * different; ++item)
            ASSERT_EQ(known.of(item), item % different) << hashes << " hashes";
    }
}

TEST(FirstEqual, HashesZerosEqually) {
    EXPECT_EQ(mixed(1, 0.0f), mixed(1, -0.0f));
    EXPECT_NE(mixed(1, 0.0f), mixed(1, 1.0f));
}

} // namespace
