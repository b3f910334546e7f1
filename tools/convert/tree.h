#pragma once

// The node tree of a model as that of a scene file: names and order preserved, transforms
// decomposed, one mesh for each material of a node.

#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/convert/clips.h"
#include "tools/convert/import.h"
#include "tools/convert/materials.h"
#include "tools/convert/skeleton.h"
#include "tools/convert/skins.h"
#include "tools/writers/rveWriter.h"

#include <vector>

namespace ravolt::tool {

// The maximum that the engine draws in one frame.
constexpr std::size_t maxDrawn = 4096;

ravolt::RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces,
                            Skeleton &skeleton, Skins &skins, const Clips &clips, Report &report,
                            Progress &progress);

} // namespace ravolt::tool
