#pragma once

// What bones make of a vertex, computed by the tests themselves: transforms of columns in double
// precision, written from the definition, and the arithmetic of the programs.

#include "tests/models/modelScenes.h"
#include "tests/support/expectNear.h"
#include "tests/support/recorder.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {

using Vector = std::array<double, 3>;

void add(Vector &sum, double weight, const Vector &vector);
Vector asDouble(const Z3MVECTOR3D &vector);

struct Transform {
    std::array<double, 9> turn{1, 0, 0, 0, 1, 0, 0, 0, 1}; // rows
    Vector move{0, 0, 0};

    Vector direction(const Vector &v) const;
    Vector point(const Vector &v) const;
    Transform after(const Transform &inner) const; // first `inner`, then this
    Transform inverse() const;                     // for rotations and moves
};

// Translation by position plus origin, then turns about X, Y and Z.
Transform localOf(const RVNODE &node);
// The transform up to the top of the tree, or up to and with the ancestor "HumanoidRoot".
Transform finalOf(const RVNODE &node);
// The transform up to and with `top`.
Transform poseOf(const RVNODE &node, const RVNODE *top);

// The bones of a mesh by their names under a root, and the pose that they stand in now, in which
// the mesh is taken to be bound.
struct Binding {
    std::vector<const RVNODE *> bones;
    std::vector<Transform> inverseBind;

    Binding() = default;
    Binding(RVNODE &root, const std::vector<std::string> &names);

    // From the bind pose to where the bones stand now, in the space of the mesh.
    std::vector<Transform> bonesNow(const RVMESH &mesh) const;
};

// Numbers of bones and their weights.
using Influences = std::vector<std::pair<unsigned int, double>>;
Influences influencesOf(const RveSkin &skin, unsigned int vertex);

Vector bentPoint(const std::vector<Transform> &bones, const Z3MVECTOR3D &point,
                 const Influences &influences);
Vector bentDirection(const std::vector<Transform> &bones, const Z3MVECTOR3D &direction,
                     const Influences &influences);

// What a program was told of the bones, and its own arithmetic.
struct ProgramBones {
    std::vector<double> quat, trans;

    // From the only telling among these calls; another number fails the test.
    explicit ProgramBones(const Calls &calls);
    Vector bent(const Z3MVECTOR3D &vertex, const Influences &influences) const;
    Vector bentNormal(const Z3MVECTOR3D &normal, const Influences &influences) const;

  private:
    std::vector<Transform> transforms() const;
};

// The vertices that OpenGL's client array points to.
std::vector<Z3MVECTOR3D> clientArray(unsigned int pointerName, unsigned int number);

} // namespace ravolt::test
