// The blended matrix of a vertex transforms it once, which equals the weighted sum of the vertex
// transformed by each bone and takes half the time.
//
// Invariant: both ways make the same sums and products in the same order.

#include "models/skinBlend.h"

#include "ravolt/RVMESH.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"

#include <algorithm>
#include <cstring>

namespace ravolt {

void skinPlainly(const BindPose &pose, const Z3MMATRIX *matrix, Z3MVECTOR3D *vertex,
                 Z3MVECTOR3D *normal) {
    const unsigned char *index = pose.boneIndex;
    const float *weight = pose.boneWeight;
    for (unsigned int i = 0; i < pose.numberOfVertices; ++i) {
        float m[16] = {};
        for (unsigned int k = 0; k < pose.weightsOfAVertex; ++k, ++index, ++weight)
            for (unsigned int element = 0; element < 16; ++element)
                m[element] += *weight * matrix[*index].e[element];

        const Z3MVECTOR3D &v = pose.vertex[i];
        vertex[i].x = v.x * m[0] + v.y * m[4] + v.z * m[8] + m[12];
        vertex[i].y = v.x * m[1] + v.y * m[5] + v.z * m[9] + m[13];
        vertex[i].z = v.x * m[2] + v.y * m[6] + v.z * m[10] + m[14];

        const Z3MVECTOR3D &n = pose.normal[i];
        normal[i].x = n.x * m[0] + n.y * m[4] + n.z * m[8];
        normal[i].y = n.x * m[1] + n.y * m[5] + n.z * m[9];
        normal[i].z = n.x * m[2] + n.y * m[6] + n.z * m[10];
    }
}

#ifndef __GNUC__

void skinVertices(const BindPose &pose, const Z3MMATRIX *matrix, unsigned int, Z3MVECTOR3D *vertex,
                  Z3MVECTOR3D *normal) {
    skinPlainly(pose, matrix, vertex, normal);
}

#else

namespace {

// Four floats of a vector register; the compiler does without one where the processor has none.
using Float4 = float __attribute__((vector_size(16)));

struct Columns {
    Float4 column[4];
};

Columns columnsOf(const Z3MMATRIX &matrix) {
    Columns columns;
    static_assert(sizeof columns == sizeof matrix.e);
    std::memcpy(&columns, matrix.e, sizeof columns);
    return columns;
}

// The first product is not added to zero: for sums other than -0 that changes nothing.
inline Columns blend(const Columns *bone, const unsigned char *index, const float *weight,
                     unsigned int weights) {
    Columns sum = {};
    for (unsigned int k = 0; k < weights; ++k) {
        const Columns &each = bone[index[k]];
        for (unsigned int column = 0; column < 4; ++column)
            sum.column[column] += weight[k] * each.column[column];
    }
    return sum;
}

inline Columns blendFour(const Columns *bone, const unsigned char *index, const float *weight) {
    const Columns &a = bone[index[0]], &b = bone[index[1]], &c = bone[index[2]],
                  &d = bone[index[3]];
    Columns sum;
    for (unsigned int column = 0; column < 4; ++column)
        sum.column[column] = weight[0] * a.column[column] + weight[1] * b.column[column] +
                             weight[2] * c.column[column] + weight[3] * d.column[column];
    return sum;
}

// The unused fourth float is written into the next vector, which is written after this one.
inline void store(Z3MVECTOR3D &vector, const Float4 &value) {
    std::memcpy(static_cast<void *>(&vector), &value, sizeof value);
}

inline void storeLast(Z3MVECTOR3D &vector, const Float4 &value) {
    std::memcpy(static_cast<void *>(&vector), &value, sizeof vector);
}

// From `first` to before `end`. The compiler would load each pointer again after each store, were
// it not a local one.
template <class Blend, class Store>
void skinRange(const BindPose &pose, unsigned int first, unsigned int end, const Blend &blendOf,
               const Store &storeTo, Z3MVECTOR3D *vertex, Z3MVECTOR3D *normal) {
    const unsigned int weights = pose.weightsOfAVertex;
    const unsigned char *index = pose.boneIndex + std::size_t{first} * weights;
    const float *weight = pose.boneWeight + std::size_t{first} * weights;
    const Z3MVECTOR3D *const vertices = pose.vertex, *const normals = pose.normal;
    for (std::size_t i = first; i < end; ++i, index += weights, weight += weights) {
        const Columns m = blendOf(index, weight, weights);
        const Z3MVECTOR3D &v = vertices[i], &n = normals[i];
        storeTo(vertex[i], v.x * m.column[0] + v.y * m.column[1] + v.z * m.column[2] + m.column[3]);
        storeTo(normal[i], n.x * m.column[0] + n.y * m.column[1] + n.z * m.column[2]);
    }
}

template <class Blend>
void skinAll(const BindPose &pose, const Blend &blendOf, Z3MVECTOR3D *vertex, Z3MVECTOR3D *normal) {
    const unsigned int last = pose.numberOfVertices - 1;
    skinRange(pose, 0, last, blendOf, store, vertex, normal);
    skinRange(pose, last, last + 1, blendOf, storeLast, vertex, normal);
}

} // namespace

void skinVertices(const BindPose &pose, const Z3MMATRIX *matrix, unsigned int numberOfBones,
                  Z3MVECTOR3D *vertex, Z3MVECTOR3D *normal) {
    if (pose.numberOfVertices == 0)
        return;
    Columns bone[RV_BONES];
    std::transform(matrix, matrix + numberOfBones, bone, columnsOf);
    const auto blendAny = [&bone](const unsigned char *index, const float *weight,
                                  unsigned int weights) {
        return blend(bone, index, weight, weights);
    };
    const auto blendOfFour = [&bone](const unsigned char *index, const float *weight,
                                     unsigned int) { return blendFour(bone, index, weight); };
    if (pose.weightsOfAVertex == 4)
        skinAll(pose, blendOfFour, vertex, normal);
    else
        skinAll(pose, blendAny, vertex, normal);
}

#endif

} // namespace ravolt
