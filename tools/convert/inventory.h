#pragma once

// What a model has that a scene file cannot hold: one line for each kind of thing.

#include "tools/common/report.h"

#include <assimp/scene.h>

namespace ravolt::tool {

void reportUnsupported(const aiScene &scene, Report &report);

} // namespace ravolt::tool
