// Bones and the skinning of a mesh, by the program in use or by the processor. A bone's matrix for
// drawing is the inverse bind matrix, times the bone's matrix in this frame, times the inverse
// matrix of the mesh; all are relative to the ancestor "HumanoidRoot", so that moving the whole
// figure deforms nothing. There are at most RV_BONES bones, and the bone indices of vertices are
// below the number of bones.

#include "ravolt/RVMESH.h"

#include "ravolt/RVSHADER.h"
#include "ravolt/zlf.h"

#include "models/loadIndex.h"

namespace {

constexpr char skeletonRoot[] = "HumanoidRoot";

} // namespace

bool RVMESH::resetBones(RVNODE *root) {
    if (!root) {
        zlfLog("   [!] Invalid params @ RVMESH::resetBones\n");
        return false;
    }
    if (!isSkinned())
        return true;

    zlfLog("   Building bones for %s... ", getName());
    for (unsigned int i = 0; i < numberOfBones; ++i) {
        bone[i].node = ravolt::LoadIndex::findNode(*root, bone[i].name);
        if (bone[i].node) {
            bone[i].matrix = bone[i].node->getFinalMatrix(skeletonRoot).inverse();
        } else {
            zlfLog("   [!] Bone %s not found @ RVMESH::recursiveLoadZVE\n", bone[i].name);
            bone[i].matrix.setIdentity();
        }
    }
    zlfLog("done\n");
    return true;
}

bool RVMESH::animate(unsigned int skeleton) {
    if (!isSkinned())
        return true;
    if (skeleton >= RV_SKELETONS || !skeletonElement) {
        zlfLog("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
        return false;
    }

    const Z3MMATRIX inverseMesh = getFinalMatrix(skeletonRoot).inverse();
    for (unsigned int i = 0; i < numberOfBones; ++i) {
        boneMatrix[i] = skeletonElement[skeleton].matrix[i] * inverseMesh;
        boneMatrix[i] = bone[i].matrix * boneMatrix[i];
    }
    if (isSkinnedByProgram())
        animateByProgram();
    else if (skinnedVertex)
        animateVertices();
    return true;
}

void RVMESH::animateByProgram() const {
    for (unsigned int i = 0; i < numberOfBones; ++i) {
        boneQuat[i] = boneMatrix[i].toQuaternionAlt();
        boneTrans[i] = boneMatrix[i].getTranslation();
    }
    RVSHADER::bindBones(numberOfBones, &boneQuat[0].x, &boneTrans[0].x, boneIndexBuffer,
                        boneWeightBuffer);
}

// Blends the matrices and transforms each vertex once, which equals the weighted sum of the vertex
// transformed by each bone and takes half the time.
void RVMESH::animateVertices() {
    const unsigned char *index = boneIndex;
    const float *weight = boneWeight;
    for (unsigned int i = 0; i < numberOfVertices; ++i) {
        float m[16] = {};
        for (unsigned int k = 0; k < numberOfWeights; ++k, ++index, ++weight)
            for (unsigned int element = 0; element < 16; ++element)
                m[element] += *weight * boneMatrix[*index].e[element];

        const Z3MVECTOR3D &v = vertex[i];
        skinnedVertex[i].x = v.x * m[0] + v.y * m[4] + v.z * m[8] + m[12];
        skinnedVertex[i].y = v.x * m[1] + v.y * m[5] + v.z * m[9] + m[13];
        skinnedVertex[i].z = v.x * m[2] + v.y * m[6] + v.z * m[10] + m[14];

        // On purpose: blended normals are not normalized.
        const Z3MVECTOR3D &n = vertexNormal[i];
        skinnedNormal[i].x = n.x * m[0] + n.y * m[4] + n.z * m[8];
        skinnedNormal[i].y = n.x * m[1] + n.y * m[5] + n.z * m[9];
        skinnedNormal[i].z = n.x * m[2] + n.y * m[6] + n.z * m[10];
    }
}
