#pragma once

// An emitter of particles on a stage.

#include "tools/stage/sphere.h"

class RVEMITTER;

namespace ravolt::tool {

class Stage;

// Around most of what the emitter draws in its full state; the lowest point is that of the
// particles' centres, so that a fire stands on the ground.
Sphere sphereAround(RVEMITTER &emitter);

// Seconds until every particle of the emitter is one of a second life.
double fullAfter(const RVEMITTER &emitter);

// Moves particles on by so many seconds, in steps of a frame, and stops them there: frames that
// are drawn afterwards show them as they are.
void moveParticles(Stage &stage, double seconds);

} // namespace ravolt::tool
