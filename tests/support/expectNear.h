#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>

#include <gtest/gtest.h>

namespace ravolt::test {

// Each number within `tolerance` of the one that is expected in its place: vectors, matrices and
// arrays alike, and {1, 2, 3} as what is expected.
template <class Actual, class Expected = std::initializer_list<double>>
void expectNear(const Actual &actual, const Expected &expected, double tolerance = 1e-5) {
    auto wanted = std::begin(expected);
    for (std::size_t index = 0; index < std::size(expected); ++index, ++wanted)
        EXPECT_NEAR(actual[index], *wanted, tolerance) << "element " << index;
}

} // namespace ravolt::test
