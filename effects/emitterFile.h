#pragma once

// Reader of emitter files: returns the elements as values, in their order. The emitter applies them
// in that order.

#include "foundation/xmlDocument.h"

#include <string>
#include <vector>

namespace ravolt {

enum class EmitterKey {
    type,
    texture,
    nbOfParticles,
    maxEnergy,
    maxVelocity,
    maxAngle,
    emitterSize,
    radius,
    maxParticleSize,
    maxSpin,
    spinning,
    center,
    gravity,
    rotation,
    upVector,
    colorStart,
    colorEnd,
    blendingSrc,
    blendingDst
};

// What an element has: attributes of these names, or `value` alone.
enum class EmitterAttributes { integer, real, text, xy, xyz };

struct EmitterElement {
    EmitterKey key;
    const char *name = "";
    EmitterAttributes attributes = EmitterAttributes::integer;
    int integer = 0;                    // those that the table in emitterFile.cpp calls integer
    float x = 0.0f, y = 0.0f, z = 0.0f; // `x` also for a single real value
    std::string text = {};
    int line = 0, column = 0; // in the file
};

// What a reading has left out, or why it has failed.
struct EmitterRemarks {
    struct Skipped {
        std::string name;
        bool known; // it lacks an attribute; the others have no meaning
        int line, column;
    };
    std::vector<Skipped> skipped;
    XmlProblem problem;
};

// Unknown elements, and those that lack an attribute, are left out. False, with nothing logged,
// when the file cannot be read, is no XML or has no element `emitter`.
bool readEmitterFile(const char *path, std::vector<EmitterElement> &elements,
                     EmitterRemarks *remarks = nullptr);

} // namespace ravolt
