#pragma once

// Movements of a model as functions of time, from the keys that its file states. Times are those of
// the model, in ticks.

#include "tools/common/algebra.h"

#include <assimp/anim.h>
#include <optional>
#include <vector>

namespace ravolt::tool {

using Quaternion = aiQuaterniont<double>;

// The shorter way round, and beyond its ends for factors outside of 0 to 1.
Quaternion between(const Quaternion &a, const Quaternion &b, double factor);

enum class Between { linear, step, cubic };

// How a movement goes on from one key to the next.
struct Interpolation {
    Between positions = Between::linear, rotations = Between::linear, scalings = Between::linear;
    // What cubic ones have beside the channel: keys whose values are the tangents into its keys,
    // and out of them, by the second. Not owned; without them the movement is linear.
    const aiNodeAnim *incoming = nullptr, *outgoing = nullptr;
    double ticksPerSecond = 1;

    bool lacksTangents() const {
        return (!incoming || !outgoing) &&
               (positions == Between::cubic || rotations == Between::cubic ||
                scalings == Between::cubic);
    }
};

// One node's movement.
class Motion {
  public:
    explicit Motion(const aiNodeAnim &channel, const Interpolation &interpolation = {});

    // The node's transform at that time; what the channel does not state is taken from `own`, the
    // one that the node has without it.
    Affine at(double ticks, const aiMatrix4x4 &own) const;

    // Where the movement starts: a key that is alone says no time. Infinite when all are.
    double firstKey() const;
    double lastKey() const;
    // Whether it goes on after its last key.
    bool goesOn() const {
        return after == aiAnimBehaviour_LINEAR || after == aiAnimBehaviour_REPEAT;
    }

  private:
    template <class Value> struct Key {
        double time;
        Value value;
        Value incoming = {}, outgoing = {}; // tangents by the tick
    };
    template <class Value> struct Keys {
        std::vector<Key<Value>> list;
        Between between = Between::linear;
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
