#pragma once

// The node tree of a model as that of a scene file: names and order kept, transforms taken apart,
// one mesh for each material of a node.

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

// What the engine draws in one frame at most.
constexpr std::size_t drawnAtOnce = 4096;

ravolt::RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces,
                            Skeleton &skeleton, Skins &skins, const Clips &clips, Report &report,
                            Progress &progress);

} // namespace ravolt::tool
