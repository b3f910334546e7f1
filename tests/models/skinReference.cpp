// A second implementation of skinning, to compare with.

#include "tests/models/skinReference.h"

#include <cmath>

#include <GL/gl.h>

#include <gtest/gtest.h>

namespace ravolt::test {

Vector Transform::apply(const Vector &v, double scaleOfMove) const {
    Vector result{};
    for (int row = 0; row < 3; ++row) {
        result[row] = scaleOfMove * move[row];
        for (int column = 0; column < 3; ++column)
            result[row] += turn[3 * row + column] * v[column];
    }
    return result;
}

Transform Transform::after(const Transform &inner) const {
    Transform result;
    for (int column = 0; column < 3; ++column) {
        const Vector turned =
            apply({inner.turn[column], inner.turn[3 + column], inner.turn[6 + column]}, 0);
        for (int row = 0; row < 3; ++row)
            result.turn[3 * row + column] = turned[row];
    }
    result.move = apply(inner.move, 1);
    return result;
}

Transform Transform::inverse() const {
    Transform result;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            result.turn[3 * row + column] = turn[3 * column + row];
    const Vector back = result.apply(move, 0);
    result.move = {-back[0], -back[1], -back[2]};
    return result;
}

static Transform aboutAxis(int axis, double degrees) {
    const double angle = degrees * 3.14159265358979323846 / 180.0;
    const int a = (axis + 1) % 3, b = (axis + 2) % 3;
    Transform result;
    result.turn[3 * a + a] = result.turn[3 * b + b] = std::cos(angle);
    result.turn[3 * a + b] = -std::sin(angle);
    result.turn[3 * b + a] = std::sin(angle);
    return result;
}

// Translation by position plus origin, then turns about X, Y and Z.
static Transform localOf(const RVNODE &node) {
    const Z3MVECTOR3D p = node.getPosition(), o = node.getOrigin(), r = node.getRotation();
    Transform result;
    result.move = {double{p.x} + o.x, double{p.y} + o.y, double{p.z} + o.z};
    return result.after(aboutAxis(0, r.x)).after(aboutAxis(1, r.y)).after(aboutAxis(2, r.z));
}

// The transform up to and with `top`; without one, the ancestor "HumanoidRoot"; or else to the top
// of the tree.
static Transform poseOf(const RVNODE &node, const RVNODE *top = nullptr) {
    Transform result = localOf(node);
    for (const RVNODE *above = node.getParent(); above; above = above->getParent()) {
        result = localOf(*above).after(result);
        if (top ? above == top : std::string(above->getName()) == "HumanoidRoot")
            break;
    }
    return result;
}

Binding::Binding(RVNODE &root, const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        bones.push_back(root.findByNameInHierarchy(name.c_str()));
        EXPECT_NE(bones.back(), nullptr) << name;
        inverseBind.push_back(poseOf(*bones.back()).inverse());
    }
}

// The skeleton pass starts with an identity at the parent of the mesh and applies that parent.
std::vector<Transform> Binding::bonesNow(const RVMESH &mesh) const {
    const Transform inverseMesh = poseOf(mesh).inverse();
    std::vector<Transform> now;
    for (std::size_t i = 0; i < bones.size(); ++i)
        now.push_back(inverseMesh.after(poseOf(*bones[i], mesh.getParent())).after(inverseBind[i]));
    return now;
}

Influences influencesOf(const RveSkin &skin, unsigned int vertex) {
    Influences influences;
    for (std::size_t at = std::size_t{vertex} * skin.weightsPerVertex, k = 0;
         k < skin.weightsPerVertex; ++at, ++k)
        influences.emplace_back(skin.boneIndices[at], skin.boneWeights[at]);
    return influences;
}

static Vector skinned(const std::vector<Transform> &bones, const Z3MVECTOR3D &vector,
                      const Influences &influences, double scaleOfMove) {
    Vector sum{};
    for (const auto &[bone, weight] : influences) {
        const Vector moved = bones[bone].apply({vector.x, vector.y, vector.z}, scaleOfMove);
        for (int i = 0; i < 3; ++i)
            sum[i] += weight * moved[i];
    }
    return sum;
}

Vector skinnedPoint(const std::vector<Transform> &bones, const Z3MVECTOR3D &point,
                    const Influences &influences) {
    return skinned(bones, point, influences, 1);
}

Vector skinnedDirection(const std::vector<Transform> &bones, const Z3MVECTOR3D &direction,
                        const Influences &influences) {
    return skinned(bones, direction, influences, 0);
}

std::vector<Transform> bonesOfProgram(const Calls &calls) {
    const Calls quats = calls.named("glUniform4fvARB"), moves = calls.named("glUniform3fvARB");
    EXPECT_EQ(quats.size(), 1u);
    EXPECT_EQ(moves.size(), 1u);
    std::vector<Transform> all;
    if (quats.empty() || moves.empty())
        return all;
    for (std::size_t at = 2, to = 2; at + 3 < quats[0].arguments.size(); at += 4, to += 3) {
        const double *const q = &quats[0].arguments[at], *const move = &moves[0].arguments.at(to);
        const double x = q[0], y = q[1], z = q[2], w = q[3];
        all.push_back({{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w),
                        2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w),
                        2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)},
                       {move[0], move[1], move[2]}});
    }
    return all;
}

std::vector<Z3MVECTOR3D> clientArray(unsigned int pointerName, unsigned int number) {
    GLvoid *pointer = nullptr;
    glGetPointerv(pointerName, &pointer);
    if (!pointer)
        return {};
    const Z3MVECTOR3D *vectors = static_cast<const Z3MVECTOR3D *>(pointer);
    return {vectors, vectors + number};
}

} // namespace ravolt::test
