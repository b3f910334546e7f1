// Invariants after the import: the scene has a root node; every face index is below its mesh's
// number of vertices, every vertex position is finite, every bone weight belongs to a vertex, every
// material index exists; meshes consist of one kind of primitive.

#include "tools/convert/import.h"

#include "tools/common/failure.h"
#include "tools/convert/container.h"
#include "tools/convert/gltf1.h"
#include "tools/convert/smoothNormals.h"
#include "tools/convert/vertexColors.h"
#include "tools/convert/vertices.h"

#include <algorithm>
#include <assimp/IOSystem.hpp>
#include <assimp/MemoryIOWrapper.h>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

// Creases sharper than this stay sharp where the model brings no normals.
constexpr float creaseAngle = 60;

constexpr unsigned int steps =
    aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_GenUVCoords;

// Forwards assimp's progress to the progress bar.
class Handler : public Assimp::ProgressHandler {
  public:
    explicit Handler(Progress &target) : progress(target) {}

    bool Update(float) override { return true; }
    void UpdateFileRead(int done, int all) override { forward(done, all); }
    void UpdatePostProcess(int done, int all) override { forward(done, all); }

  private:
    void forward(int done, int all) {
        if (all > 0)
            progress.update(static_cast<double>(done) / all);
    }

    Progress &progress;
};

// The files of the model as they are, but for one of them.
class ReplacedFile : public Assimp::IOSystem {
  public:
    ReplacedFile(ModelFiles &source, std::string replaced, const std::string &content)
        : files(source.makeIoSystem()), path(std::move(replaced)), bytes(content) {}

    bool Exists(const char *file) const override { return files->Exists(file); }
    char getOsSeparator() const override { return files->getOsSeparator(); }
    bool ComparePaths(const char *one, const char *second) const override {
        return files->ComparePaths(one, second);
    }

    Assimp::IOStream *Open(const char *file, const char *mode) override {
        if (!file || !mode || file != path || mode[0] != 'r')
            return files->Open(file, mode);
        return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                          bytes.size());
    }
    void Close(Assimp::IOStream *stream) override { delete stream; }

  private:
    const std::unique_ptr<Assimp::IOSystem> files;
    const std::string path;
    const std::string &bytes;
};

bool isGltf(const std::filesystem::path &file) {
    std::string ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".gltf" || ending == ".glb" || ending == ".vrm";
}

// One line, without the line ends that some importers write into their reasons.
std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\r', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '.'))
        text.pop_back();
    return text.empty() ? "the reader gave no reason" : text;
}

// A file that was cut off has no other reason to fail.
std::string reasonOf(const std::string &path, const std::string &readersReason) {
    const std::string cut = cutOff(path);
    return cut.empty() ? readersReason : cut;
}

// Whether the file was read by the importer of that name.
bool isReadBy(const Assimp::Importer &importer, const char *name) {
    const int index = importer.GetPropertyInteger("importerIndex", -1);
    const aiImporterDesc *used =
        index < 0 ? nullptr : importer.GetImporterInfo(static_cast<std::size_t>(index));
    return used && std::strstr(used->mName, name);
}

bool isFinite(const aiVector3D &v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isDrawable(const aiMesh &mesh, const aiFace &face) {
    return std::all_of(face.mIndices, face.mIndices + face.mNumIndices, [&](unsigned int index) {
        return index < mesh.mNumVertices && isFinite(mesh.mVertices[index]);
    });
}

// Some readers state more items than they created. After this no pointer needs another check.
template <class T> void dropNull(T **items, unsigned int &number) {
    T **const end = items ? std::remove(items, items + number, nullptr) : items;
    number = static_cast<unsigned int>(end - items);
}

// Items that are referred to by number.
template <class T> void replaceNull(T **items, unsigned int &number) {
    if (!items)
        number = 0;
    for (unsigned int i = 0; i < number; ++i)
        if (!items[i])
            items[i] = new T;
}

void dropNullInNode(aiNode &node) {
    dropNull(node.mChildren, node.mNumChildren);
    if (!node.mMeshes)
        node.mNumMeshes = 0;
    for (unsigned int i = 0; i < node.mNumChildren; ++i)
        dropNullInNode(*node.mChildren[i]);
}

void dropNullInMesh(aiMesh &mesh) {
    if (!mesh.mFaces)
        mesh.mNumFaces = 0;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        if (!mesh.mFaces[i].mIndices)
            mesh.mFaces[i].mNumIndices = 0;
    dropNull(mesh.mBones, mesh.mNumBones);
    for (unsigned int i = 0; i < mesh.mNumBones; ++i)
        if (!mesh.mBones[i]->mWeights)
            mesh.mBones[i]->mNumWeights = 0;
    dropNull(mesh.mAnimMeshes, mesh.mNumAnimMeshes);
}

void dropNullInAnimation(aiAnimation &animation) {
    dropNull(animation.mChannels, animation.mNumChannels);
    dropNull(animation.mMeshChannels, animation.mNumMeshChannels);
    dropNull(animation.mMorphMeshChannels, animation.mNumMorphMeshChannels);
    for (unsigned int i = 0; i < animation.mNumChannels; ++i) {
        aiNodeAnim &channel = *animation.mChannels[i];
        if (!channel.mPositionKeys)
            channel.mNumPositionKeys = 0;
        if (!channel.mRotationKeys)
            channel.mNumRotationKeys = 0;
        if (!channel.mScalingKeys)
            channel.mNumScalingKeys = 0;
    }
}

void dropNullPointers(aiScene &scene) {
    replaceNull(scene.mMeshes, scene.mNumMeshes);
    replaceNull(scene.mMaterials, scene.mNumMaterials);
    replaceNull(scene.mTextures, scene.mNumTextures);
    dropNull(scene.mAnimations, scene.mNumAnimations);
    dropNull(scene.mLights, scene.mNumLights);
    dropNull(scene.mCameras, scene.mNumCameras);
    dropNullInNode(*scene.mRootNode);
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        dropNullInMesh(*scene.mMeshes[i]);
    for (unsigned int i = 0; i < scene.mNumAnimations; ++i)
        dropNullInAnimation(*scene.mAnimations[i]);
}

// Returns how many faces were dropped. Faces swap their index arrays, so that none is leaked or
// freed twice.
std::size_t dropBadFaces(aiMesh &mesh) {
    if (!mesh.mVertices)
        mesh.mNumVertices = 0;
    unsigned int kept = 0;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        if (isDrawable(mesh, mesh.mFaces[i])) {
            std::swap(mesh.mFaces[kept].mIndices, mesh.mFaces[i].mIndices);
            std::swap(mesh.mFaces[kept].mNumIndices, mesh.mFaces[i].mNumIndices);
            ++kept;
        }
    const std::size_t dropped = mesh.mNumFaces - kept;
    mesh.mNumFaces = kept;
    return dropped;
}

std::size_t dropBadWeights(aiMesh &mesh) {
    std::size_t dropped = 0;
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        aiBone &bone = *mesh.mBones[b];
        const auto end = std::remove_if(
            bone.mWeights, bone.mWeights + bone.mNumWeights, [&](const aiVertexWeight &weight) {
                return weight.mVertexId >= mesh.mNumVertices || !std::isfinite(weight.mWeight);
            });
        dropped += static_cast<std::size_t>(bone.mWeights + bone.mNumWeights - end);
        bone.mNumWeights = static_cast<unsigned int>(end - bone.mWeights);
    }
    return dropped;
}

// Vertices that no face uses any more must not affect what assimp computes of all vertices.
void zeroBadVertices(aiMesh &mesh) {
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
        if (!isFinite(mesh.mVertices[i]))
            mesh.mVertices[i] = aiVector3D();
}

std::size_t zeroBadTexCoords(aiMesh &mesh) {
    std::size_t zeroed = 0;
    for (aiVector3D *channel : mesh.mTextureCoords)
        for (unsigned int i = 0; channel && i < mesh.mNumVertices; ++i)
            if (!isFinite(channel[i])) {
                channel[i] = aiVector3D();
                ++zeroed;
            }
    return zeroed;
}

// Removes references of nodes to meshes that do not exist.
void dropBadReferences(aiNode &node, unsigned int numberOfMeshes) {
    const auto end = std::remove_if(node.mMeshes, node.mMeshes + node.mNumMeshes,
                                    [=](unsigned int index) { return index >= numberOfMeshes; });
    node.mNumMeshes = static_cast<unsigned int>(end - node.mMeshes);
    for (unsigned int i = 0; i < node.mNumChildren; ++i)
        dropBadReferences(*node.mChildren[i], numberOfMeshes);
}

// Whether any mesh has a face.
bool hasFaces(const aiScene &scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                       [](const aiMesh *mesh) { return mesh->mNumFaces > 0; });
}

} // namespace

void cleanScene(aiScene &scene, Report &report) {
    dropNullPointers(scene);
    std::size_t faces = 0, weights = 0, texCoords = 0;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i) {
        aiMesh &mesh = *scene.mMeshes[i];
        faces += dropBadFaces(mesh);
        weights += dropBadWeights(mesh);
        texCoords += zeroBadTexCoords(mesh);
        zeroBadVertices(mesh);
        unweld(mesh);
        if (mesh.mMaterialIndex >= scene.mNumMaterials)
            mesh.mMaterialIndex = 0;
    }
    dropBadReferences(*scene.mRootNode, scene.mNumMeshes);
    if (faces)
        report.warn(counted(faces, "face", "faces") +
                    " dropped: vertices that do not exist or have no finite position");
    if (weights)
        report.warn(counted(weights, "bone weight", "bone weights") + " of no vertex dropped");
    if (texCoords)
        report.warn(counted(texCoords, "texture coordinate", "texture coordinates") +
                    " without a finite value set to zero");
}

// assimp reads the replacement of the file; if it refuses that, the original file.
void Model::readFile(const std::string &path, ModelFiles &files, Report &report) {
    if (isGltf(path))
        gltf2.emplace(files.part(path), report);
    if (gltf2 && !gltf2->replacement().empty()) {
        importer.SetIOHandler(new ReplacedFile(files, path, gltf2->replacement()));
        const bool good = importer.ReadFile(path, 0);
        importer.SetIOHandler(files.makeIoSystem());
        if (good) {
            ways = gltf2->takeInterpolations(const_cast<aiScene &>(*importer.GetScene()));
            if (const std::size_t renamed = gltf2->renamedNodes())
                report.note(counted(renamed, "node", "nodes") +
                            " renamed: bones and clips find nodes by names, which must differ");
            return;
        }
    }
    if (!importer.ReadFile(path, 0))
        throw Failure(path, reasonOf(path, oneLine(importer.GetErrorString())));
    if (gltf2)
        ways = gltf2->plainInterpolations();
}

Model::Model(const std::string &path, ModelFiles &files, Report &report, Progress &progress,
             unsigned int textureLimit) {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw Failure(path, "no such file");
    if (std::filesystem::is_directory(path, error))
        throw Failure(path, "is a folder, not a model");
    if (!std::filesystem::is_regular_file(path, error))
        throw Failure(path, "is no regular file");
    if (std::filesystem::is_empty(path, error))
        throw Failure(path, "is empty");
    if (isGlb(path))
        if (const std::string reason = cutOff(path); !reason.empty())
            throw Failure(path, reason);

    importer.SetIOHandler(files.makeIoSystem()); // the importer deletes each one
    Handler handler(progress);
    importer.SetProgressHandler(&handler);
    // The importer deletes its handler unless it is reset.
    struct Release {
        Assimp::Importer &importer;
        ~Release() { importer.SetProgressHandler(nullptr); }
    } release{importer};

    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);

    progress.step("reading " + std::filesystem::path(path).filename().string(), 0, 0.35);
    readFile(path, files, report);
    // The scene belongs to the importer, which returns it as constant; before the steps run
    // nothing else reads it.
    aiScene &read = const_cast<aiScene &>(*importer.GetScene());
    if (!read.mRootNode)
        throw Failure(path, "has no nodes");
    cleanScene(read, report);
    if (isReadBy(importer, "glTF Importer") && hasFault(AssimpFault::gltf1LocalTransforms))
        restoreGltf1Translations(read, files.part(path));
    if (!hasFaces(read))
        throw Failure(path, reasonOf(path, "has no triangles to draw"));

    progress.step("preparing", 0.35, 0.5);
    linearColors = isReadBy(importer, "glTF2");
    for (const char *format :
         {"glTF", "Autodesk FBX", "Collada", "LightWave", "X3D", "3D Manufacturing"})
        alphaSaid = alphaSaid || isReadBy(importer, format);
    // With the fault, assimp's own step would rotate a glTF 2 texture about another centre than
    // assimp states: the transforms are applied to the coordinates of each material instead.
    current = importer.ApplyPostProcessing(
        hasTextureTransforms() ? steps : steps | aiProcess_TransformUVCoords);
    if (!current)
        throw Failure(path, oneLine(importer.GetErrorString()));
    for (unsigned int i = 0; i < read.mNumMeshes; ++i)
        smoothNormals(*read.mMeshes[i], creaseAngle);
    bakeVertexColors(read, {linearColors, textureLimit}, report);
    // In every release: assimp's own step would precede the baking, which may separate equal
    // vertices. Release 5.2.5 also joins vertices that different bones move.
    for (unsigned int i = 0; i < current->mNumMeshes; ++i)
        weldVertices(*current->mMeshes[i]);
}

bool isModelName(const std::filesystem::path &file) {
    static const Assimp::Importer importer;
    const std::string ending = file.extension().string();
    return !ending.empty() && importer.IsExtensionSupported(ending.c_str());
}

} // namespace ravolt::tool
