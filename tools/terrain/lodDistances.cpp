#include "tools/terrain/lodDistances.h"

namespace ravolt::tool::terrain {

namespace {

constexpr double suitable = 1.5;        // in ways between two centres
constexpr double roundingSpare = 1.002; // the engine computes in floats

} // namespace

LodDistances lodDistances(double centerDistance, double detail) {
    LodDistances distances;
    double next = detail > 0 ? detail : suitable * centerDistance;
    for (double &distance : distances) {
        distance = next;
        next += roundingSpare * centerDistance;
    }
    return distances;
}

} // namespace ravolt::tool::terrain
