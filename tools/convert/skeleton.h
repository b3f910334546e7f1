#pragma once

// The nodes of a model in one list, as the scene will have them: under unique names,
// each below its parent in the scene, with a position and a rotation.

#include "tools/common/algebra.h"
#include "tools/common/report.h"
#include "tools/convert/transforms.h"

#include <assimp/scene.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::tool {

// Levels of nodes in a scene. The format and the engine's drawing go deeper, but
// RVNODE::getFinalMatrix, by which the camera is set and world transforms are found, follows
// 63 ancestors; the pieces of a node and its lights are one level below it.
constexpr int maxLevel = 60;

constexpr std::size_t noJoint = static_cast<std::size_t>(-1);

struct Joint {
    const aiNode *node = nullptr;
    std::string name;
    std::size_t parent = noJoint;        // in the scene; noJoint for the top
    std::size_t parentInModel = noJoint; // another one below the deepest level
    int level = 0;
};

// The transforms of all nodes at one time. `world` is without their residuals.
struct Pose {
    std::vector<Placement> placement;
    std::vector<Affine> world;
};

// The size of a figure, by the positions of its joints.
double poseExtent(const Pose &pose);

class Skeleton {
  public:
    // `axes` turns and scales the whole model; `firstLevel` is that of its root in the scene.
    Skeleton(const aiScene &scene, const Matrix &axes, int firstLevel, Report &report);

    // Parents come before their children, in the order of the model.
    const std::vector<Joint> &joints() const { return list; }

    // The first node of that name in the model; noJoint if there is none.
    std::size_t find(const char *nameInModel) const;

    // A name that nothing else of the scene has; `more` raises the limit of its length.
    std::string freeName(const std::string &preferred, std::size_t more = 0);

    // The model's own transforms, each relative to its parent in the model.
    const std::vector<Affine> &ownLocals() const { return locals; }
    const Pose &ownPose() const { return own; }

    // With angles as near as can be to those of `before`.
    Pose poseOf(const std::vector<Affine> &localTransforms, const Pose &before) const;

    const Affine &top() const { return outermost; }

  private:
    void gather(const aiNode &node, std::size_t parent, std::size_t parentInModel, int level);
    Affine finiteLocal(const aiNode &node);
    bool isInOwnPose(std::size_t index, const std::vector<Affine> &localTransforms,
                     const Pose &made) const;
    Pose pose(const std::vector<Affine> &localTransforms, const Pose *before) const;

    const aiScene &scene;
    Report &report;
    Affine outermost;
    std::vector<Joint> list;
    std::map<std::string, std::size_t> byName;
    std::set<std::string> names;
    std::map<std::string, int> numbers; // the last suffix of a name that is not unique
    std::vector<Affine> locals;
    Pose own;
    std::size_t shortenedNames = 0, renamed = 0;
    bool flattened = false;
};

} // namespace ravolt::tool
