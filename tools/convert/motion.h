#pragma once

// Animations of nodes as functions of time, from the keys of the model. Times are in ticks.

#include "tools/common/algebra.h"

#include <assimp/anim.h>
#include <optional>
#include <vector>

namespace ravolt::tool {

using Quaternion = aiQuaterniont<double>;

// Spherical interpolation the shorter way; extrapolates for factors outside of 0 to 1. assimp's own
// is linear for small angles.
Quaternion interpolate(const Quaternion &a, const Quaternion &b, double factor);

enum class InterpolationMode { linear, step, cubic };

// The interpolation from one key to the next.
struct Interpolation {
    InterpolationMode positions = InterpolationMode::linear, rotations = InterpolationMode::linear,
                      scalings = InterpolationMode::linear;
    // Of cubic ones: channels whose values are the tangents into the keys and out of them, per
    // second. Not owned; without them the interpolation is linear.
    const aiNodeAnim *incoming = nullptr, *outgoing = nullptr;
    double ticksPerSecond = 1;

    bool lacksTangents() const {
        return (!incoming || !outgoing) &&
               (positions == InterpolationMode::cubic || rotations == InterpolationMode::cubic ||
                scalings == InterpolationMode::cubic);
    }
};

// The animation of one node.
class Motion {
  public:
    explicit Motion(const aiNodeAnim &channel, const Interpolation &interpolation = {});

    // The node's transform at that time; what the channel does not animate is taken from `own`, the
    // node's transform without it.
    Affine at(double ticks, const aiMatrix4x4 &own) const;

    // The time of the first key of a track with several keys; infinite if no track has several.
    double firstKey() const;
    double lastKey() const;
    // Whether it continues after its last key.
    bool continuesAfterEnd() const {
        return after == aiAnimBehaviour_LINEAR || after == aiAnimBehaviour_REPEAT;
    }

  private:
    template <class Value> struct Key {
        double time;
        Value value;
        Value incoming = {}, outgoing = {}; // tangents per tick
    };
    template <class Value> struct Keys {
        std::vector<Key<Value>> list;
        InterpolationMode mode = InterpolationMode::linear;
    };

    template <class Visit> void eachTrack(const Visit &visit) const;
    template <class Value>
    std::optional<Value> valueAt(const Keys<Value> &keys, double ticks) const;

    template <class Value, class Get>
    static void addTangents(Keys<Value> &keys, const Interpolation &interpolation, const Get &get);

    aiAnimBehaviour before, after;
    Keys<Vector> positions, scalings;
    Keys<Quaternion> rotations;
};

} // namespace ravolt::tool
