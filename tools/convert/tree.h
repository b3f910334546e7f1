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

// Levels of nodes in a scene. The engine walks it on OpenGL's matrix stack, of which 32 levels are
// certain, and the view needs some of its own.
constexpr int deepestLevel = 28;

// What the engine draws in one frame at most.
constexpr std::size_t drawnAtOnce = 4096;

// `scale` is applied to all lengths.
ravolt::RveNode convertTree(const Model &model, const std::vector<Surface> &surfaces, double scale,
                            Report &report, Progress &progress);

} // namespace ravolt::tool
