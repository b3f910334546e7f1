// Invariants: keys are finite and in the order of their times; rotations have length 1.

#include "tools/convert/motion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace ravolt::tool {

namespace {

double dotOf(const Quaternion &a, const Quaternion &b) {
    return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
}

Quaternion sum(const Quaternion &a, double u, const Quaternion &b, double v) {
    return {a.w * u + b.w * v, a.x * u + b.x * v, a.y * u + b.y * v, a.z * u + b.z * v};
}

Quaternion quaternionFrom(const aiQuaternion &q) {
    return {q.w, q.x, q.y, q.z}; // has no conversion of its own
}

std::optional<Quaternion> unitFrom(const Quaternion &read) {
    const double size = std::sqrt(dotOf(read, read));
    if (!std::isfinite(size) || size < 1e-6)
        return std::nullopt;
    return sum(read, 1 / size, read, 0);
}

Vector interpolate(const Vector &a, const Vector &b, double factor) { return a + (b - a) * factor; }

Vector sum(const Vector &a, double u, const Vector &b, double v) { return a * u + b * v; }

Vector finished(const Vector &value) { return value; }
Quaternion finished(const Quaternion &value) { return unitFrom(value).value_or(Quaternion()); }

// The cubic curve from `a` to `b` whose tangents are those by the whole way.
template <class Value>
Value curved(const Value &a, const Value &out, const Value &b, const Value &in, double factor) {
    const double square = factor * factor, cube = square * factor;
    return finished(sum(sum(a, 2 * cube - 3 * square + 1, out, cube - 2 * square + factor), 1,
                        sum(b, 3 * square - 2 * cube, in, cube - square), 1));
}

// A time outside the keys as one that lies within, for movements that repeat.
double wrapped(double ticks, double first, double last) {
    const double length = last - first;
    if (!(length > 0))
        return first;
    const double behind = std::fmod(ticks - first, length);
    return first + (behind < 0 ? behind + length : behind);
}

// Times of keys are rounded in files.
bool isReached(double time, double ticks, double span) {
    return ticks >= time - 1e-6 * std::max(std::abs(time), span);
}

} // namespace

Quaternion interpolate(const Quaternion &a, const Quaternion &b, double factor) {
    const double cosine = std::clamp(dotOf(a, b), -1.0, 1.0);
    const double sign = cosine < 0 ? -1 : 1;
    const double angle = std::acos(std::abs(cosine));
    if (angle < 1e-9)
        return a;
    return sum(a, std::sin((1 - factor) * angle) / std::sin(angle), b,
               sign * std::sin(factor * angle) / std::sin(angle));
}

// The tangents of a key are found by its time.
template <class Value, class Get>
void Motion::addTangents(Keys<Value> &keys, const Interpolation &interpolation, const Get &get) {
    if (keys.mode != InterpolationMode::cubic)
        return;
    keys.mode = InterpolationMode::linear;
    if (interpolation.lacksTangents())
        return;
    std::map<double, Value> in, out;
    get(*interpolation.incoming, in);
    get(*interpolation.outgoing, out);
    for (Key<Value> &key : keys.list) {
        if (!in.count(key.time) || !out.count(key.time))
            return;
        const double scale = 1 / interpolation.ticksPerSecond;
        key.incoming = sum(in[key.time], scale, Value{}, 0);
        key.outgoing = sum(out[key.time], scale, Value{}, 0);
    }
    keys.mode = InterpolationMode::cubic;
}

Motion::Motion(const aiNodeAnim &channel, const Interpolation &interpolation)
    : before(channel.mPreState), after(channel.mPostState) {
    positions.mode = interpolation.positions;
    rotations.mode = interpolation.rotations;
    scalings.mode = interpolation.scalings;
    const auto takeVectors = [](const aiVectorKey *from, unsigned int number, Keys<Vector> &keys) {
        for (unsigned int i = 0; i < number; ++i)
            if (const Vector value = from[i].mValue;
                std::isfinite(from[i].mTime) && isFinite(value))
                keys.list.push_back({from[i].mTime, value});
    };
    takeVectors(channel.mPositionKeys, channel.mNumPositionKeys, positions);
    takeVectors(channel.mScalingKeys, channel.mNumScalingKeys, scalings);
    for (unsigned int i = 0; i < channel.mNumRotationKeys; ++i)
        if (const auto value = unitFrom(quaternionFrom(channel.mRotationKeys[i].mValue));
            value && std::isfinite(channel.mRotationKeys[i].mTime))
            rotations.list.push_back({channel.mRotationKeys[i].mTime, *value});
    const auto earlier = [](const auto &a, const auto &b) { return a.time < b.time; };
    std::stable_sort(positions.list.begin(), positions.list.end(), earlier);
    std::stable_sort(scalings.list.begin(), scalings.list.end(), earlier);
    std::stable_sort(rotations.list.begin(), rotations.list.end(), earlier);

    using Vectors = std::map<double, Vector>;
    addTangents(positions, interpolation, [](const aiNodeAnim &from, Vectors &to) {
        for (unsigned int i = 0; i < from.mNumPositionKeys; ++i)
            to[from.mPositionKeys[i].mTime] = from.mPositionKeys[i].mValue;
    });
    addTangents(scalings, interpolation, [](const aiNodeAnim &from, Vectors &to) {
        for (unsigned int i = 0; i < from.mNumScalingKeys; ++i)
            to[from.mScalingKeys[i].mTime] = from.mScalingKeys[i].mValue;
    });
    addTangents(
        rotations, interpolation, [](const aiNodeAnim &from, std::map<double, Quaternion> &to) {
            for (unsigned int i = 0; i < from.mNumRotationKeys; ++i)
                to[from.mRotationKeys[i].mTime] = quaternionFrom(from.mRotationKeys[i].mValue);
        });
}

template <class Visit> void Motion::eachTrack(const Visit &visit) const {
    visit(positions);
    visit(scalings);
    visit(rotations);
}

double Motion::firstKey() const {
    double first = std::numeric_limits<double>::infinity();
    eachTrack([&](const auto &keys) {
        if (keys.list.size() > 1)
            first = std::min(first, keys.list.front().time);
    });
    return first;
}

double Motion::lastKey() const {
    double last = 0;
    eachTrack([&](const auto &keys) {
        if (!keys.list.empty())
            last = std::max(last, keys.list.back().time);
    });
    return last;
}

template <class Value>
std::optional<Value> Motion::valueAt(const Keys<Value> &track, double ticks) const {
    const std::vector<Key<Value>> &keys = track.list;
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
    const double factor = (ticks - below->time) / span;
    switch (track.mode) {
    case InterpolationMode::step:
        return isReached(above->time, ticks, span) ? above->value : below->value;
    case InterpolationMode::cubic:
        return curved(below->value, sum(below->outgoing, span, Value{}, 0), above->value,
                      sum(above->incoming, span, Value{}, 0), factor);
    case InterpolationMode::linear:
        break;
    }
    return interpolate(below->value, above->value, factor);
}

Affine Motion::at(double ticks, const aiMatrix4x4 &own) const {
    aiVector3D ownScaling, ownPosition;
    aiQuaternion ownRotation;
    own.Decompose(ownScaling, ownRotation, ownPosition);
    const Quaternion otherwise = unitFrom(quaternionFrom(ownRotation)).value_or(Quaternion());
    const Matrix rotation = valueAt(rotations, ticks).value_or(otherwise).GetMatrix();
    const Vector scaling = valueAt(scalings, ticks).value_or(ownScaling);
    const Affine result{
        rotation * matrixOfColumns({scaling.x, 0, 0}, {0, scaling.y, 0}, {0, 0, scaling.z}),
        valueAt(positions, ticks).value_or(ownPosition)};
    return isFinite(result) ? result : Affine();
}

} // namespace ravolt::tool
