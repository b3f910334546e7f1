#pragma once

// Skinning by the processor: the arithmetic alone, on plain arrays.

class Z3MMATRIX;
class Z3MVECTOR3D;

namespace ravolt {

// A mesh in its bind pose. Each vertex has `weightsOfAVertex` indices of bones, all below the
// number of matrices, and as many weights.
struct BindPose {
    const Z3MVECTOR3D *vertex;
    const Z3MVECTOR3D *normal;
    const unsigned char *boneIndex;
    const float *boneWeight;
    unsigned int numberOfVertices;
    unsigned int weightsOfAVertex;
};

// Writes the vertices and normals of the pose that `matrix`, one for each of `numberOfBones` bones,
// makes of the bind pose. There are at most RV_BONES bones. On purpose: blended normals are not
// normalized. The results of both functions are equal; the second takes half of the instructions
// where the compiler has vector types, and is the first elsewhere.
void skinPlainly(const BindPose &pose, const Z3MMATRIX *matrix, Z3MVECTOR3D *vertex,
                 Z3MVECTOR3D *normal);
void skinVertices(const BindPose &pose, const Z3MMATRIX *matrix, unsigned int numberOfBones,
                  Z3MVECTOR3D *vertex, Z3MVECTOR3D *normal);

} // namespace ravolt
