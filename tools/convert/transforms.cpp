// Invariant: for every node, the product of the rigid transforms from the root down to it, times
// its residual, is the product of the model's own matrices.

#include "tools/convert/transforms.h"

#include "tools/common/rotation.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool {

namespace {

// The orthogonal factor of a matrix that is far from singular, by Newton's iteration towards the
// nearest orthogonal matrix.
Matrix orthogonalFactor(Matrix m) {
    for (int turn = 0; turn < 100; ++turn) {
        const Matrix inverseTranspose = transposed(Matrix(m).Inverse());
        double change = 0;
        for (unsigned int i = 0; i < 3; ++i)
            for (unsigned int j = 0; j < 3; ++j) {
                const double next = (m[i][j] + inverseTranspose[i][j]) / 2;
                change = std::max(change, std::abs(next - m[i][j]));
                m[i][j] = next;
            }
        if (change < 1e-15)
            break;
    }
    return m;
}

// A rotation for a singular matrix: its columns give the axes that have a direction, the others are
// chosen.
Matrix rotationOfFlat(const Matrix &m) {
    unsigned int longest = 0;
    for (unsigned int i = 1; i < 3; ++i)
        if (length(columnOf(m, i)) > length(columnOf(m, longest)))
            longest = i;
    const unsigned int second = (longest + 1) % 3, third = (longest + 2) % 3;
    const Vector first = unit(columnOf(m, longest), {1, 0, 0});
    const auto beside = [&](const Vector &v) { return v - first * dot(first, v); };
    const Vector a = beside(columnOf(m, second)), b = beside(columnOf(m, third));
    const Vector chosen = std::abs(first.x) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    // The second axis is that of its own column, or follows from the third one's if that is longer.
    const Vector next =
        length(a) >= length(b) ? unit(a, unit(cross(first, chosen))) : cross(unit(b), first);
    Vector axes[3];
    axes[longest] = first;
    axes[second] = next;
    axes[third] = cross(first, next);
    return matrixOfColumns(axes[0], axes[1], axes[2]);
}

// The rotation nearest to a matrix. The residual of a mirroring one mirrors along X.
Matrix rotationOf(const Matrix &m) {
    const double size = largestEntry(m);
    if (size == 0)
        return Matrix();
    const Matrix normed = m * (1 / size);
    if (std::abs(normed.Determinant()) < 1e-9)
        return rotationOfFlat(normed);
    Matrix rotation = orthogonalFactor(normed);
    if (rotation.Determinant() < 0)
        for (unsigned int i = 0; i < 3; ++i)
            rotation[i][0] = -rotation[i][0];
    return rotation;
}

double asFloat(double value) { return static_cast<double>(static_cast<float>(value)); }

Vector asFloat(const Vector &v) { return {asFloat(v.x), asFloat(v.y), asFloat(v.z)}; }

// Rounds an angle that is round but for the precision of the model.
double tidy(double degrees) {
    const double rounded = std::round(degrees * 1000) / 1000;
    const double result = std::abs(degrees - rounded) < 2e-5 ? rounded : degrees;
    return result == 0 ? 0.0 : result; // no negative zero
}

double nearestTurn(double degrees, double near) {
    return degrees + 360 * std::round((near - degrees) / 360);
}

Vector nearestTurns(const Vector &degrees, const Vector &near) {
    return {nearestTurn(degrees.x, near.x), nearestTurn(degrees.y, near.y),
            nearestTurn(degrees.z, near.z)};
}

// At +90 degrees the sum of the outer angles counts, at -90 their difference.
Vector withThirdAngle(const Vector &locked, double z) {
    const double change = z - locked.z;
    return {locked.y > 0 ? locked.x - change : locked.x + change, locked.y, z};
}

} // namespace

Placement decompose(const Affine &local, const Matrix &parentResidual) {
    const Matrix whole = parentResidual * local.linear;
    const Vector exact = degreesFromRotation(rotationOf(whole));
    Placement result;
    result.position = asFloat(parentResidual * local.offset);
    result.degrees = asFloat(Vector{tidy(exact.x), tidy(exact.y), tidy(exact.z)});
    result.residual = transposed(rotationFromDegrees(result.degrees)) * whole;
    return result;
}

Placement turnedNear(const Placement &placement, const Vector &near) {
    constexpr double lockedWithin = 1e-4; // degrees; single precision does not determine the rest
    Vector degrees = placement.degrees;
    const Vector first = degreesFromRotation(rotationFromDegrees(degrees)); // |y| at most 90
    if (90 - std::abs(first.y) < lockedWithin)
        degrees = withThirdAngle(first, near.z);
    const Vector one = nearestTurns(degrees, near);
    const Vector other = nearestTurns({degrees.x + 180, 180 - degrees.y, degrees.z + 180}, near);
    const Vector best = length(one - near) <= length(other - near) ? one : other;
    if (length(best - placement.degrees) < 1e-9)
        return placement;
    Placement result = placement;
    result.degrees = asFloat(best);
    const Matrix was = rotationFromDegrees(placement.degrees);
    result.residual = transposed(rotationFromDegrees(result.degrees)) * (was * placement.residual);
    return result;
}

} // namespace ravolt::tool
