#pragma once

// Random numbers of the village's parts, the same in each run.

#include "tools/terrain/noise.h"

namespace village {

using ravolt::tool::terrain::Dice;

inline float between(Dice &dice, float low, float high) { return low + (high - low) * dice.roll(); }

} // namespace village
