#pragma once

// Characters: one figure of five limbs, 2,000 vertices and 30 bones, as a scene of many and as the
// plain arrays that a hand-written loop skins.

#include "benchScene.h"

#include <array>
#include <vector>

class RVMESH;

namespace bench {

constexpr int numberOfCharacters = 50, bonesOfCharacter = 30, weightsOfVertex = 4;
constexpr float characterDistance = 24.0f; // from the camera

// A figure in its bind pose.
struct Figure {
    Shape shape;
    std::vector<unsigned char> boneIndices; // four a vertex
    std::vector<float> boneWeights;
    struct Bone {
        int parent; // -1 for none; parents come first
        float offset[3], rotation[3];
    };
    std::array<Bone, bonesOfCharacter> bones;
};
Figure makeFigure();

Scene makeCharacterScene();

// The skinned meshes of the scene, in the order of its pass.
std::vector<RVMESH *> skinnedMeshes(const Scene &scene);

// The position of character `number` in eye space, and its light: a directional one.
std::array<float, 3> characterPlace(int number);
void setCharacterLight();

// The hand-written loop: matrices in OpenGL's order in plain arrays.
using Matrix = float[16];

struct Posed {
    Matrix bones[bonesOfCharacter];
    float quaternions[bonesOfCharacter * 4], translations[bonesOfCharacter * 3];
    std::vector<float> positions, normals;
};

class HandFigure {
  public:
    HandFigure();

    const Figure figure;

    // Where the bones are, from their angles.
    void pose(Matrix *boneMatrices) const;
    // The matrices for vertices: from the bind pose to this pose, in the space of the mesh.
    void combine(const Matrix *boneMatrices, const Matrix &mesh, Posed &posed) const;
    void toQuaternions(Posed &posed) const;
    void skin(Posed &posed) const;

  private:
    Matrix inverseBind[bonesOfCharacter];
};

} // namespace bench
