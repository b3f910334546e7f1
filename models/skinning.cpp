// Bones and the skinning of a mesh, by the program in use or by the processor. A bone's matrix for
// drawing is the inverse bind matrix, times the bone's matrix in this frame, times the inverse
// matrix of the mesh; all are relative to the ancestor "HumanoidRoot", so that moving the whole
// figure deforms nothing. There are at most RV_BONES bones, and the bone indices of vertices are
// below the number of bones.

#include "ravolt/RVMESH.h"

#include "ravolt/RVSHADER.h"
#include "ravolt/zlf.h"

#include "models/loadIndex.h"
#include "models/skinBlend.h"

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

void RVMESH::animateVertices() {
    const ravolt::BindPose pose = {vertex,     vertexNormal,     boneIndex,
                                   boneWeight, numberOfVertices, numberOfWeights};
    ravolt::skinVertices(pose, boneMatrix, numberOfBones, skinnedVertex, skinnedNormal);
}
