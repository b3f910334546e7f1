#pragma once

// Data of assimp's, made without a file.

#include <algorithm>
#include <assimp/scene.h>
#include <string>
#include <vector>

namespace tool_test {

// assimp has no array for nothing.
template <class T> void copyInto(const std::vector<T> &from, T *&to, unsigned int &number) {
    number = static_cast<unsigned int>(from.size());
    to = from.empty() ? nullptr : new T[from.size()];
    std::copy(from.begin(), from.end(), to);
}

template <class T> void append(T *item, T **&list, unsigned int &number) {
    std::vector<T *> all(list, list + number);
    all.push_back(item);
    delete[] list;
    copyInto(all, list, number);
}

using Points = std::vector<aiVector3D>;
using Faces = std::vector<std::vector<unsigned int>>;

inline void fill(aiMesh &mesh, const Points &points, const Faces &faces,
                 const Points &normals = {}) {
    unsigned int ignored = 0;
    mesh.mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    copyInto(points, mesh.mVertices, mesh.mNumVertices);
    copyInto(normals, mesh.mNormals, ignored);
    mesh.mNumFaces = static_cast<unsigned int>(faces.size());
    mesh.mFaces = new aiFace[faces.size()];
    for (std::size_t i = 0; i < faces.size(); ++i)
        copyInto(faces[i], mesh.mFaces[i].mIndices, mesh.mFaces[i].mNumIndices);
}

// `offset` leads from the mesh to the joint where the skin was bound.
inline aiBone &addBone(aiMesh &mesh, const std::string &joint, const aiVector3D &offset,
                       const std::vector<aiVertexWeight> &weights) {
    aiBone *bone = new aiBone;
    bone->mName.Set(joint);
    aiMatrix4x4::Translation(offset, bone->mOffsetMatrix);
    copyInto(weights, bone->mWeights, bone->mNumWeights);
    append(bone, mesh.mBones, mesh.mNumBones);
    return *bone;
}

class FigureClip {
  public:
    explicit FigureClip(aiAnimation &animation) : clip(animation) {}

    aiNodeAnim &move(const std::string &node, const std::vector<aiVectorKey> &keys) {
        aiNodeAnim &made = channel(node);
        copyInto(keys, made.mPositionKeys, made.mNumPositionKeys);
        return made;
    }
    aiNodeAnim &turn(const std::string &node, const std::vector<aiQuatKey> &keys) {
        aiNodeAnim &made = channel(node);
        copyInto(keys, made.mRotationKeys, made.mNumRotationKeys);
        return made;
    }
    aiNodeAnim &scale(const std::string &node, const std::vector<aiVectorKey> &keys) {
        aiNodeAnim &made = channel(node);
        copyInto(keys, made.mScalingKeys, made.mNumScalingKeys);
        return made;
    }

  private:
    aiNodeAnim &channel(const std::string &node) {
        aiNodeAnim *made = new aiNodeAnim;
        made->mNodeName.Set(node);
        append(made, clip.mChannels, clip.mNumChannels);
        return *made;
    }

    aiAnimation &clip;
};

// A model for tests of skins and clips.
class Figure {
  public:
    Figure() { scene.mRootNode = new aiNode("model"); }

    // NULL for the root.
    aiNode *node(const std::string &name, aiNode *parent = nullptr,
                 const aiVector3D &position = {}) {
        aiNode *made = new aiNode(name);
        aiMatrix4x4::Translation(position, made->mTransformation);
        (parent ? parent : scene.mRootNode)->addChildren(1, &made);
        return made;
    }

    // With corners (0, 0, 0), (1, 0, 0) and (0, 1, 0).
    aiMesh &triangle(aiNode *node) {
        aiMesh *mesh = new aiMesh;
        fill(*mesh, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
        node->mNumMeshes = 1;
        node->mMeshes = new unsigned int[1]{scene.mNumMeshes};
        append(mesh, scene.mMeshes, scene.mNumMeshes);
        return *mesh;
    }

    FigureClip clip(const std::string &name, double ticksPerSecond, double duration) {
        aiAnimation *made = new aiAnimation;
        made->mName.Set(name);
        made->mTicksPerSecond = ticksPerSecond;
        made->mDuration = duration;
        append(made, scene.mAnimations, scene.mNumAnimations);
        return FigureClip(*made);
    }

    aiScene scene;
};

} // namespace tool_test
