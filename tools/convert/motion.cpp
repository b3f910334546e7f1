// Invariants: keys are finite and in the order of their times; rotations have length 1.

#include "tools/convert/motion.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ravolt::tool {

namespace {

double dotOf(const Quaternion &a, const Quaternion &b) {
    return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
}

Quaternion sum(const Quaternion &a, double u, const Quaternion &b, double v) {
    return {a.w * u + b.w * v, a.x * u + b.x * v, a.y * u + b.y * v, a.z * u + b.z * v};
}

std::optional<Quaternion> unitFrom(const aiQuaternion &q) {
    const Quaternion read{q.w, q.x, q.y, q.z};
    const double size = std::sqrt(dotOf(read, read));
    if (!std::isfinite(size) || size < 1e-6)
        return std::nullopt;
    return sum(read, 1 / size, read, 0);
}

Vector between(const Vector &a, const Vector &b, double factor) { return a + (b - a) * factor; }

// A time outside the keys as one that lies within, for movements that repeat.
double wrapped(double ticks, double first, double last) {
    const double length = last - first;
    if (!(length > 0))
        return first;
    const double behind = std::fmod(ticks - first, length);
    return first + (behind < 0 ? behind + length : behind);
}

} // namespace

Matrix matrixFrom(const Quaternion &q) {
    return {{{{1 - 2 * (q.y * q.y + q.z * q.z), 2 * (q.x * q.y - q.w * q.z),
               2 * (q.x * q.z + q.w * q.y)},
              {2 * (q.x * q.y + q.w * q.z), 1 - 2 * (q.x * q.x + q.z * q.z),
               2 * (q.y * q.z - q.w * q.x)},
              {2 * (q.x * q.z - q.w * q.y), 2 * (q.y * q.z + q.w * q.x),
               1 - 2 * (q.x * q.x + q.y * q.y)}}}};
}

Quaternion between(const Quaternion &a, const Quaternion &b, double factor) {
    const double cosine = std::clamp(dotOf(a, b), -1.0, 1.0);
    const double sign = cosine < 0 ? -1 : 1;
    const double angle = std::acos(std::abs(cosine));
    if (angle < 1e-9)
        return a;
    return sum(a, std::sin((1 - factor) * angle) / std::sin(angle), b,
               sign * std::sin(factor * angle) / std::sin(angle));
}

Motion::Motion(const aiNodeAnim &channel) : before(channel.mPreState), after(channel.mPostState) {
    const auto takeVectors = [](const aiVectorKey *from, unsigned int number, Keys<Vector> &keys) {
        for (unsigned int i = 0; i < number; ++i)
            if (const Vector value = vectorFrom(from[i].mValue);
                std::isfinite(from[i].mTime) && isFinite(value))
                keys.push_back({from[i].mTime, value});
    };
    takeVectors(channel.mPositionKeys, channel.mNumPositionKeys, positions);
    takeVectors(channel.mScalingKeys, channel.mNumScalingKeys, scalings);
    for (unsigned int i = 0; i < channel.mNumRotationKeys; ++i)
        if (const auto value = unitFrom(channel.mRotationKeys[i].mValue);
            value && std::isfinite(channel.mRotationKeys[i].mTime))
            rotations.push_back({channel.mRotationKeys[i].mTime, *value});
    const auto earlier = [](const auto &a, const auto &b) { return a.time < b.time; };
    std::stable_sort(positions.begin(), positions.end(), earlier);
    std::stable_sort(scalings.begin(), scalings.end(), earlier);
    std::stable_sort(rotations.begin(), rotations.end(), earlier);
}

template <class Visit> void Motion::eachTrack(const Visit &visit) const {
    visit(positions);
    visit(scalings);
    visit(rotations);
}

double Motion::firstKey() const {
    double first = std::numeric_limits<double>::infinity();
    eachTrack([&](const auto &keys) {
        if (keys.size() > 1)
            first = std::min(first, keys.front().time);
    });
    return first;
}

double Motion::lastKey() const {
    double last = 0;
    eachTrack([&](const auto &keys) {
        if (!keys.empty())
            last = std::max(last, keys.back().time);
    });
    return last;
}

template <class Value>
std::optional<Value> Motion::valueAt(const Keys<Value> &keys, double ticks) const {
    if (keys.empty())
        return std::nullopt;
    const bool early = ticks<keys.front().time, late = ticks> keys.back().time;
    const aiAnimBehaviour outside = early ? before : after;
    if (early || late) {
        if (outside == aiAnimBehaviour_REPEAT)
            ticks = wrapped(ticks, keys.front().time, keys.back().time);
        else if (outside != aiAnimBehaviour_LINEAR)
            return early ? keys.front().value : keys.back().value;
    }
    if (keys.size() == 1)
        return keys.front().value;
    const auto above =
        std::upper_bound(keys.begin() + 1, keys.end() - 1, ticks,
                         [](double t, const Key<Value> &key) { return t < key.time; });
    const auto below = above - 1;
    const double span = above->time - below->time;
    if (!(span > 0))
        return above->value;
    return between(below->value, above->value, (ticks - below->time) / span);
}

Affine Motion::at(double ticks, const aiMatrix4x4 &own) const {
    aiVector3D ownScaling, ownPosition;
    aiQuaternion ownRotation;
    own.Decompose(ownScaling, ownRotation, ownPosition);
    const Quaternion otherwise = unitFrom(ownRotation).value_or(Quaternion());
    const Matrix rotation = matrixFrom(valueAt(rotations, ticks).value_or(otherwise));
    const Vector scaling = valueAt(scalings, ticks).value_or(vectorFrom(ownScaling));
    const Affine result{
        rotation * matrixOfColumns({scaling.x, 0, 0}, {0, scaling.y, 0}, {0, 0, scaling.z}),
        valueAt(positions, ticks).value_or(vectorFrom(ownPosition))};
    return isFinite(result) ? result : Affine();
}

} // namespace ravolt::tool
