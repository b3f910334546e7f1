// In double precision: the inverse of a projection with a far plane loses many digits.

#include "kit/view.h"

#include <cmath>
#include <utility>

namespace ravolt::kit {

double length(const Point &a) { return std::sqrt(dot(a, a)); }

Transform Transform::from(const float *elements) {
    Transform result;
    for (int i = 0; i < 16; ++i)
        result.e[i] = static_cast<double>(elements[i]);
    return result;
}

// Gauss and Jordan, with the largest pivot of each column.
bool Transform::invert() {
    double rows[4][8] = {};
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column)
            rows[row][column] = e[4 * column + row];
        rows[row][4 + row] = 1;
    }
    for (int pivot = 0; pivot < 4; ++pivot) {
        int largest = pivot;
        for (int row = pivot + 1; row < 4; ++row)
            if (std::fabs(rows[row][pivot]) > std::fabs(rows[largest][pivot]))
                largest = row;
        std::swap(rows[pivot], rows[largest]);
        const double divisor = rows[pivot][pivot];
        if (!(std::fabs(divisor) > 1e-300))
            return false;
        for (double &number : rows[pivot])
            number /= divisor;
        for (int row = 0; row < 4; ++row) {
            const double factor = rows[row][pivot];
            for (int column = 0; row != pivot && column < 8; ++column)
                rows[row][column] -= factor * rows[pivot][column];
        }
    }
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            e[4 * column + row] = rows[row][4 + column];
    return true;
}

Point Transform::apply(const Point &p) const {
    const double w = e[3] * p.x + e[7] * p.y + e[11] * p.z + e[15];
    return {(e[0] * p.x + e[4] * p.y + e[8] * p.z + e[12]) / w,
            (e[1] * p.x + e[5] * p.y + e[9] * p.z + e[13]) / w,
            (e[2] * p.x + e[6] * p.y + e[10] * p.z + e[14]) / w};
}

Transform operator*(const Transform &first, const Transform &second) {
    Transform result = {};
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row)
            for (int i = 0; i < 4; ++i)
                result.e[4 * column + row] += first.e[4 * column + i] * second.e[4 * i + row];
    return result;
}

double intersect(const Point (&face)[3], const Point &origin, const Point &direction) {
    const Point a = face[1] - face[0], b = face[2] - face[0];
    const Point across = cross(direction, b);
    const double determinant = dot(a, across);
    if (determinant == 0)
        return -1;
    const Point from = origin - face[0];
    const double u = dot(from, across) / determinant;
    const Point over = cross(from, a);
    const double v = dot(direction, over) / determinant;
    constexpr double edge = 1e-6; // lines through an edge hit one of its faces at least
    if (u < -edge || v < -edge || u + v > 1 + edge)
        return -1;
    return dot(b, over) / determinant;
}

} // namespace ravolt::kit
