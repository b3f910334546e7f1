#pragma once

// Names with a meaning in the scenes that the converter writes.

namespace ravolt::tool {

// Bones are relative to the ancestor of this name, so that a figure can be moved as a whole.
constexpr const char *skeletonRootName = "HumanoidRoot";

// The clip that shows the model's own pose, where its skin is bound in another.
constexpr const char *poseClipName = "pose";

} // namespace ravolt::tool
