#pragma once

// Heights that a survey did not find.

#include "tools/terrain/heights.h"

#include <vector>

namespace ravolt::tool::terrain {

// Replaces each value that is not `known`, of which there is one at least, by the mean of the next
// known ones in its row and its column, near ones counting more.
void fillVoids(Heights &heights, std::vector<bool> known);

} // namespace ravolt::tool::terrain
