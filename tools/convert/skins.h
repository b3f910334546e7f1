#pragma once

// Skins: which joints move each vertex of a mesh. The engine skins a mesh from the pose that its
// tree has in the file, so that pose must be the one that the skin was bound in, and the vertices
// are at the positions that the joints give them in it.

#include "tools/convert/meshes.h"
#include "tools/convert/skeleton.h"

#include <array>
#include <assimp/scene.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ravolt::tool {

class Skins {
  public:
    Skins(const aiScene &scene, const Skeleton &skeleton, Report &report);

    bool any() const;
    bool isSkinned(unsigned int mesh) const { return !skins[mesh].influences.empty(); }
    bool isBone(std::size_t joint) const { return bones[joint]; }

    // The pose of the model, but for joints that share vertices: those are as when the skin was
    // bound.
    const Pose &bindPose() const { return bind; }
    bool differsFromOwnPose() const { return changed; }

    // For each vertex of a mesh on the node `joint`: its transform into the frame of the
    // scene in that pose, and its influences. A vertex without a bone follows the node itself.
    void setVertexTransform(unsigned int mesh, std::size_t joint, VertexTransform &transform);

  private:
    // One of the bones of the mesh that move a vertex.
    struct Influence {
        std::size_t bone = noJoint;
        double weight = 0;
    };
    using BoneInfluences = std::array<Influence, bonesOfAVertex>;
    struct Skin {
        std::vector<std::size_t> joints;        // of each bone
        std::vector<Affine> toJoint;            // from the mesh's data to the frame of the joint
        std::vector<BoneInfluences> influences; // for each vertex; empty when nothing is skinned
    };
    // Two joints share vertices of a mesh, which fixes one relative to the other.
    struct JointConstraint {
        std::size_t joint = 0; // the other one
        Affine toFirst;        // from its frame to that of the first
    };

    Skin read(const aiMesh &mesh);
    static void followNeighbours(const aiMesh &mesh, const std::vector<bool> &lost,
                                 std::vector<std::vector<Influence>> &influences);
    std::vector<std::vector<JointConstraint>> jointConstraints() const;
    std::vector<std::optional<Affine>> boundTransforms() const;
    void setBindPose();
    bool fitsBindPose(const Skin &skin, const aiMesh &mesh, std::size_t vertex,
                      double tolerance) const;
    void warnOfOtherBindPoses(Report &report) const;

    const aiScene &scene;
    const Skeleton &skeleton;
    std::vector<Skin> skins;
    std::vector<bool> bones;
    Pose bind;
    bool changed = false;
    std::set<std::string> missing; // bones
    std::size_t simplified = 0;    // vertices that lost bones
};

} // namespace ravolt::tool
