#pragma once

// The position of a skinned vertex, computed by the tests themselves in double precision, from the
// definition and by the arithmetic of the programs.

#include "tests/models/modelScenes.h"
#include "tests/support/expectNear.h"
#include "tests/support/recorder.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {

using Vector = std::array<double, 3>;

struct Transform {
    std::array<double, 9> turn{1, 0, 0, 0, 1, 0, 0, 0, 1}; // rows
    Vector move{0, 0, 0};

    Vector apply(const Vector &v, double scaleOfMove) const;
    Transform after(const Transform &inner) const; // first `inner`, then this
    Transform inverse() const;                     // for rotations and moves
};

// The bones of a mesh by their names under a root, and their current pose, in which the mesh is
// taken to be bound.
struct Binding {
    std::vector<const RVNODE *> bones;
    std::vector<Transform> inverseBind;

    Binding() = default;
    Binding(RVNODE &root, const std::vector<std::string> &names);

    // From the bind pose to the current one, in the space of the mesh.
    std::vector<Transform> bonesNow(const RVMESH &mesh) const;
};

// Numbers of bones and their weights.
using Influences = std::vector<std::pair<unsigned int, double>>;
Influences influencesOf(const RveSkin &skin, unsigned int vertex);

Vector skinnedPoint(const std::vector<Transform> &bones, const Z3MVECTOR3D &point,
                    const Influences &influences);
Vector skinnedDirection(const std::vector<Transform> &bones, const Z3MVECTOR3D &direction,
                        const Influences &influences);

// The bones that a program was passed: from the only upload among these calls; another number of
// uploads fails the test.
std::vector<Transform> bonesOfProgram(const Calls &calls);

// The vertices that OpenGL's client array points to.
std::vector<Z3MVECTOR3D> clientArray(unsigned int pointerName, unsigned int number);

} // namespace ravolt::test
