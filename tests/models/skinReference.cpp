#include "tests/models/skinReference.h"

#include <cmath>

#include <GL/gl.h>

#include <gtest/gtest.h>

namespace ravolt::test {

void add(Vector &sum, double weight, const Vector &vector) {
    for (int i = 0; i < 3; ++i)
        sum[i] += weight * vector[i];
}

Vector asDouble(const Z3MVECTOR3D &vector) { return {vector.x, vector.y, vector.z}; }

Vector Transform::direction(const Vector &v) const {
    Vector result{};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            result[row] += turn[3 * row + column] * v[column];
    return result;
}

Vector Transform::point(const Vector &v) const {
    Vector result = direction(v);
    for (int row = 0; row < 3; ++row)
        result[row] += move[row];
    return result;
}

Transform Transform::after(const Transform &inner) const {
    Transform result;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            double &sum = result.turn[3 * row + column] = 0;
            for (int k = 0; k < 3; ++k)
                sum += turn[3 * row + k] * inner.turn[3 * k + column];
        }
    result.move = point(inner.move);
    return result;
}

Transform Transform::inverse() const {
    Transform result;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            result.turn[3 * row + column] = turn[3 * column + row];
    const Vector back = result.direction(move);
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

Transform localOf(const RVNODE &node) {
    const Z3MVECTOR3D p = node.getPosition(), o = node.getOrigin(), r = node.getRotation();
    Transform result;
    result.move = {double{p.x} + o.x, double{p.y} + o.y, double{p.z} + o.z};
    return result.after(aboutAxis(0, r.x)).after(aboutAxis(1, r.y)).after(aboutAxis(2, r.z));
}

Transform finalOf(const RVNODE &node) {
    Transform result = localOf(node);
    for (const RVNODE *above = node.getParent(); above; above = above->getParent()) {
        result = localOf(*above).after(result);
        if (std::string(above->getName()) == "HumanoidRoot")
            break;
    }
    return result;
}

Transform poseOf(const RVNODE &node, const RVNODE *top) {
    Transform result = localOf(node);
    for (const RVNODE *above = node.getParent(); above; above = above->getParent()) {
        result = localOf(*above).after(result);
        if (above == top)
            break;
    }
    return result;
}

Binding::Binding(RVNODE &root, const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        const RVNODE *bone = root.findByNameInHierarchy(name.c_str());
        EXPECT_NE(bone, nullptr) << name;
        bones.push_back(bone);
        inverseBind.push_back(finalOf(*bone).inverse());
    }
}

// The skeleton pass starts with an identity at the parent of the mesh and applies that parent.
std::vector<Transform> Binding::bonesNow(const RVMESH &mesh) const {
    const Transform inverseMesh = finalOf(mesh).inverse();
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

Vector bentPoint(const std::vector<Transform> &bones, const Z3MVECTOR3D &point,
                 const Influences &influences) {
    Vector sum{};
    for (const auto &[bone, weight] : influences)
        add(sum, weight, bones[bone].point(asDouble(point)));
    return sum;
}

Vector bentDirection(const std::vector<Transform> &bones, const Z3MVECTOR3D &direction,
                     const Influences &influences) {
    Vector sum{};
    for (const auto &[bone, weight] : influences)
        add(sum, weight, bones[bone].direction(asDouble(direction)));
    return sum;
}

ProgramBones::ProgramBones(const Calls &calls) {
    const Calls quats = calls.named("glUniform4fvARB"), moves = calls.named("glUniform3fvARB");
    EXPECT_EQ(quats.size(), 1u);
    EXPECT_EQ(moves.size(), 1u);
    if (quats.size() && moves.size()) {
        quat.assign(quats[0].arguments.begin() + 2, quats[0].arguments.end());
        trans.assign(moves[0].arguments.begin() + 2, moves[0].arguments.end());
    }
}

std::vector<Transform> ProgramBones::transforms() const {
    std::vector<Transform> all;
    for (std::size_t bone = 0; bone < quat.size() / 4; ++bone) {
        const double *const q = &quat[4 * bone], *const move = &trans.at(3 * bone);
        const double x = q[0], y = q[1], z = q[2], w = q[3];
        all.push_back({{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w),
                        2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w),
                        2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)},
                       {move[0], move[1], move[2]}});
    }
    return all;
}

Vector ProgramBones::bent(const Z3MVECTOR3D &vertex, const Influences &influences) const {
    return bentPoint(transforms(), vertex, influences);
}

Vector ProgramBones::bentNormal(const Z3MVECTOR3D &normal, const Influences &influences) const {
    return bentDirection(transforms(), normal, influences);
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
