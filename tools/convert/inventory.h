#pragma once

// Reports what a model has and a scene file cannot store: one line for each kind.

#include "tools/common/report.h"

#include <assimp/scene.h>

namespace ravolt::tool {

void reportUnsupported(const aiScene &scene, Report &report);

} // namespace ravolt::tool
