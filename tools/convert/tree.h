#pragma once

// The node tree of a model as that of a scene file: names and order kept, transforms taken apart,
// one mesh for each material of a node.

#include "tools/convert/import.h"
#include "tools/convert/materials.h"
#include "tools/progress.h"
#include "tools/report.h"
#include "tools/writers/rveWriter.h"

#include <vector>

namespace ravolt::tool {

// Levels of nodes in a scene. The format and the engine's drawing go deeper, but
// RVNODE::getFinalMatrix, by which a scene is framed and its nodes are placed in the world, knows
// 63 ancestors; the pieces of a node and its lights stand one level below it.
constexpr int deepestLevel = 60;

// What the engine draws in one frame at most.
constexpr std::size_t drawnAtOnce = 4096;

// `scale` is applied to all lengths.
ravolt::RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces, double scale,
                            Report &report, Progress &progress);

} // namespace ravolt::tool
