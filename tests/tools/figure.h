#pragma once

// Models for tests of skins and clips, made without a file.

#include <algorithm>
#include <array>
#include <assimp/scene.h>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tool_test {

template <class T> void moveInto(const std::vector<T *> &from, T **&to, unsigned int &number) {
    number = static_cast<unsigned int>(from.size());
    to = from.empty() ? nullptr : new T *[from.size()]; // assimp keeps none of nothing
    std::copy(from.begin(), from.end(), to);
}

class FigureMesh {
  public:
    aiMesh *mesh = new aiMesh;

    // `offset` leads from the mesh to the joint where the skin was bound.
    void bone(const std::string &joint, const aiVector3D &offset,
              const std::vector<std::pair<unsigned int, float>> &weights) {
        aiBone *bone = new aiBone;
        bone->mName.Set(joint);
        aiMatrix4x4::Translation(offset, bone->mOffsetMatrix);
        bone->mNumWeights = static_cast<unsigned int>(weights.size());
        bone->mWeights = new aiVertexWeight[weights.size()];
        for (std::size_t i = 0; i < weights.size(); ++i)
            bone->mWeights[i] = aiVertexWeight(weights[i].first, weights[i].second);
        bones.push_back(bone);
    }

    void finish() { moveInto(bones, mesh->mBones, mesh->mNumBones); }

  private:
    std::vector<aiBone *> bones;
};

class FigureClip {
  public:
    FigureClip(const std::string &name, double ticksPerSecond, double duration) {
        clip->mName.Set(name);
        clip->mTicksPerSecond = ticksPerSecond;
        clip->mDuration = duration;
    }

    aiAnimation *clip = new aiAnimation;

    aiNodeAnim &channel(const std::string &node) {
        channels.push_back(new aiNodeAnim);
        channels.back()->mNodeName.Set(node);
        return *channels.back();
    }

    aiNodeAnim &move(const std::string &node, const std::vector<aiVectorKey> &keys) {
        aiNodeAnim &made = channel(node);
        made.mNumPositionKeys = static_cast<unsigned int>(keys.size());
        made.mPositionKeys = new aiVectorKey[keys.size()];
        std::copy(keys.begin(), keys.end(), made.mPositionKeys);
        return made;
    }

    aiNodeAnim &turn(const std::string &node, const std::vector<aiQuatKey> &keys) {
        aiNodeAnim &made = channel(node);
        made.mNumRotationKeys = static_cast<unsigned int>(keys.size());
        made.mRotationKeys = new aiQuatKey[keys.size()];
        std::copy(keys.begin(), keys.end(), made.mRotationKeys);
        return made;
    }

    aiNodeAnim &scale(const std::string &node, const std::vector<aiVectorKey> &keys) {
        aiNodeAnim &made = channel(node);
        made.mNumScalingKeys = static_cast<unsigned int>(keys.size());
        made.mScalingKeys = new aiVectorKey[keys.size()];
        std::copy(keys.begin(), keys.end(), made.mScalingKeys);
        return made;
    }

    void finish() { moveInto(channels, clip->mChannels, clip->mNumChannels); }

  private:
    std::vector<aiNodeAnim *> channels;
};

class Figure {
  public:
    Figure() { scene.mRootNode = new aiNode("model"); }

    // NULL for the root.
    aiNode *node(const std::string &name, aiNode *parent, const aiVector3D &place) {
        aiNode *made = new aiNode(name);
        aiMatrix4x4::Translation(place, made->mTransformation);
        (parent ? parent : scene.mRootNode)->addChildren(1, &made);
        return made;
    }

    // With corners (0, 0, 0), (1, 0, 0) and (0, 1, 0).
    FigureMesh *triangle(aiNode *node) {
        meshes.emplace_back();
        aiMesh *mesh = meshes.back().mesh;
        mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
        mesh->mNumVertices = 3;
        mesh->mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        mesh->mNumFaces = 1;
        mesh->mFaces = new aiFace[1];
        mesh->mFaces[0].mNumIndices = 3;
        mesh->mFaces[0].mIndices = new unsigned int[3]{0, 1, 2};
        node->mNumMeshes = 1;
        node->mMeshes = new unsigned int[1]{static_cast<unsigned int>(meshes.size() - 1)};
        return &meshes.back();
    }

    FigureClip *clip(const std::string &name, double ticksPerSecond, double duration) {
        clips.emplace_back(name, ticksPerSecond, duration);
        return &clips.back();
    }

    // Once, when all is there.
    const aiScene &finish() {
        std::vector<aiMesh *> madeMeshes;
        for (FigureMesh &mesh : meshes) {
            mesh.finish();
            madeMeshes.push_back(mesh.mesh);
        }
        moveInto(madeMeshes, scene.mMeshes, scene.mNumMeshes);
        std::vector<aiAnimation *> madeClips;
        for (FigureClip &clip : clips) {
            clip.finish();
            madeClips.push_back(clip.clip);
        }
        moveInto(madeClips, scene.mAnimations, scene.mNumAnimations);
        return scene;
    }

  private:
    aiScene scene;
    std::list<FigureMesh> meshes;
    std::list<FigureClip> clips;
};

} // namespace tool_test
