// Every animated model of the collection: the positions of vertices and nodes in each frame of each
// clip, skinned by the processor, beside those by the file's own data at that time, evaluated by
// assimp's own means. Corner is compared with corner, face by face, in the order of the file.
// animated.tsv has the outcome, and for each clip the bound of the error with its reason.
//
// RAVOLT_ANIMATED_RENEW=FILE appends what was found, as lines of animated.tsv, to FILE.

#include "tests/tools/collection.h"
#include "tools/convert/import.h"
#include "tools/stage/sphere.h"

#include <algorithm>
#include <array>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <ravolt.h>
#include <sstream>

namespace {

using namespace tool_test;

// Corners of triangles in the world.
using Corners = std::array<Vector, 3>;

// ---- assimp's data -------------------------------------------------------------------------

aiVector3D mixed(const aiVectorKey &a, const aiVectorKey &b, float factor) {
    return a.mValue + (b.mValue - a.mValue) * factor;
}

aiQuaternion mixed(const aiQuatKey &a, const aiQuatKey &b, float factor) {
    aiQuaternion result;
    aiQuaternion::Interpolate(result, a.mValue, b.mValue, factor);
    return result;
}

// Files state rotations by a few digits, and assimp does not keep the length between close keys.
aiVector3D normalized(const aiVector3D &value) { return value; }
aiQuaternion normalized(aiQuaternion value) { return value.Normalize(); }

bool isSkinned(const aiScene &scene, const aiMesh &mesh) {
    return std::any_of(mesh.mBones, mesh.mBones + mesh.mNumBones, [&](const aiBone *bone) {
        return bone->mNumWeights > 0 && scene.mRootNode->FindNode(bone->mName);
    });
}

// The value of a channel's keys at that time; outside of them by the channel's rule.
template <class Key>
auto valueAt(const Key *keys, unsigned int number, aiAnimBehaviour before, aiAnimBehaviour after,
             double ticks) -> decltype(keys->mValue) {
    const Key &first = keys[0], &last = keys[number - 1];
    const bool early = ticks<first.mTime, late = ticks> last.mTime;
    const aiAnimBehaviour outside = early ? before : after;
    if ((early || late) && outside == aiAnimBehaviour_REPEAT && last.mTime > first.mTime) {
        while (ticks < first.mTime)
            ticks += last.mTime - first.mTime;
        while (ticks > last.mTime)
            ticks -= last.mTime - first.mTime;
    } else if ((early || late) && outside != aiAnimBehaviour_LINEAR) {
        return early ? first.mValue : last.mValue;
    }
    if (number == 1)
        return first.mValue;
    unsigned int next = 1;
    while (next + 1 < number && keys[next].mTime <= ticks)
        ++next;
    const Key &a = keys[next - 1], &b = keys[next];
    return mixed(a, b, static_cast<float>((ticks - a.mTime) / (b.mTime - a.mTime)));
}

aiMatrix4x4 localAt(const aiNodeAnim &channel, double ticks) {
    const auto at = [&](const auto *keys, unsigned int number) {
        return normalized(valueAt(keys, number, channel.mPreState, channel.mPostState, ticks));
    };
    // First the scaling, then the rotation, then the translation, as assimp's own documentation
    // says; its constructor from the three turns before it scales.
    aiMatrix4x4 scaling, translation;
    aiMatrix4x4::Scaling(at(channel.mScalingKeys, channel.mNumScalingKeys), scaling);
    aiMatrix4x4::Translation(at(channel.mPositionKeys, channel.mNumPositionKeys), translation);
    const aiQuaternion rotation = at(channel.mRotationKeys, channel.mNumRotationKeys);
    return translation * aiMatrix4x4(rotation.GetMatrix()) * scaling;
}

// A model at one time.
class Reference {
  public:
    explicit Reference(const aiScene &model) : scene(model) {}

    void pose(const aiAnimation *animation, double ticks) {
        moved.clear();
        places.clear();
        for (unsigned int i = 0; animation && i < animation->mNumChannels; ++i) {
            const aiNodeAnim &channel = *animation->mChannels[i];
            moved[scene.mRootNode->FindNode(channel.mNodeName)] = localAt(channel, ticks);
        }
        place(*scene.mRootNode, Affine());
    }

    // Of nodes whose names are their own. A node with a skinned mesh is ignored: its
    // name may be that of the mesh, which is with the skeleton.
    std::map<std::string, Vector> nodes() const {
        std::map<std::string, int> number;
        std::map<std::string, Vector> result;
        for (const auto &[node, affine] : places) {
            ++number[node->mName.C_Str()];
            result[node->mName.C_Str()] = affine.offset;
            for (unsigned int i = 0; i < node->mNumMeshes; ++i)
                if (isSkinned(scene, *scene.mMeshes[node->mMeshes[i]]))
                    ++number[node->mName.C_Str()];
        }
        for (const auto &[name, count] : number)
            if (count > 1 || name.empty())
                result.erase(name);
        return result;
    }

    // The rigid or the skinned triangles, node by node, within a node by material. `bones` is how
    // many of a vertex count.
    std::vector<Corners> triangles(bool skinned, std::size_t bones) const {
        std::vector<Corners> result;
        gather(*scene.mRootNode, skinned, bones, result);
        return result;
    }

    double size() const {
        Box box;
        for (const bool skinned : {false, true})
            for (const Corners &corners : triangles(skinned, 100))
                for (const Vector &place : corners)
                    if (isFinite(place))
                        box.add(place);
        return length(box.high - box.low);
    }

  private:
    void place(const aiNode &node, const Affine &parent) {
        const auto found = moved.find(&node);
        const Affine here =
            parent * affineFrom(found == moved.end() ? node.mTransformation : found->second);
        places[&node] = here;
        for (unsigned int i = 0; i < node.mNumChildren; ++i)
            place(*node.mChildren[i], here);
    }

    void gather(const aiNode &node, bool skinned, std::size_t bones,
                std::vector<Corners> &result) const {
        std::map<unsigned int, std::vector<const aiMesh *>> byMaterial;
        for (unsigned int i = 0; i < node.mNumMeshes; ++i) {
            const aiMesh &mesh = *scene.mMeshes[node.mMeshes[i]];
            if (mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE &&
                skinned == isSkinned(scene, mesh))
                byMaterial[mesh.mMaterialIndex].push_back(&mesh);
        }
        for (const auto &[material, meshes] : byMaterial)
            for (const aiMesh *mesh : meshes)
                addMesh(*mesh, node, bones, result);
        for (unsigned int i = 0; i < node.mNumChildren; ++i)
            gather(*node.mChildren[i], skinned, bones, result);
    }

    void addMesh(const aiMesh &mesh, const aiNode &node, std::size_t bones,
                 std::vector<Corners> &result) const {
        const std::vector<Vector> vertices = verticesOf(mesh, node, bones);
        const std::size_t first = result.size();
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
            const unsigned int *index = mesh.mFaces[f].mIndices;
            const auto corner = [&](int k) { return Vector(mesh.mVertices[index[k]]); };
            const Vector a = corner(1) - corner(0), b = corner(2) - corner(0);
            if (length(cross(a, b)) > 1e-9 * std::max(dot(a, a), dot(b, b))) // else not to be seen
                result.push_back({vertices[index[0]], vertices[index[1]], vertices[index[2]]});
        }
        int twoSided = 0;
        scene.mMaterials[mesh.mMaterialIndex]->Get(AI_MATKEY_TWOSIDED, twoSided);
        const std::size_t last = result.size();
        for (std::size_t i = first; twoSided && i < last; ++i)
            result.push_back(Corners(result[i]));
    }

    std::vector<Vector> verticesOf(const aiMesh &mesh, const aiNode &node,
                                   std::size_t bones) const {
        std::vector<std::vector<std::pair<double, Vector>>> influences(mesh.mNumVertices);
        std::vector<bool> lost(mesh.mNumVertices, false); // by bones that the model lacks
        for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
            const aiBone &bone = *mesh.mBones[b];
            const aiNode *by = scene.mRootNode->FindNode(bone.mName);
            if (!by) {
                for (unsigned int i = 0; i < bone.mNumWeights; ++i)
                    lost[bone.mWeights[i].mVertexId] = true;
                continue;
            }
            const Affine map = places.at(by) * affineFrom(bone.mOffsetMatrix);
            for (unsigned int i = 0; i < bone.mNumWeights; ++i) {
                const unsigned int vertex = bone.mWeights[i].mVertexId;
                if (bone.mWeights[i].mWeight > 0)
                    influences[vertex].emplace_back(bone.mWeights[i].mWeight,
                                                    map(Vector(mesh.mVertices[vertex])));
            }
        }
        std::vector<Vector> result;
        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            std::stable_sort(influences[v].begin(), influences[v].end(),
                             [](const auto &a, const auto &b) { return a.first > b.first; });
            influences[v].resize(std::min(influences[v].size(), bones));
            Vector sum;
            double weights = 0;
            for (const auto &[weight, place] : influences[v]) {
                sum = sum + place * weight;
                weights += weight;
            }
            if (weights > 0)
                result.push_back(sum * (1 / weights));
            else if (lost[v])
                result.push_back(Vector{} * std::nan("")); // its position is undefined
            else
                result.push_back(places.at(&node)(Vector(mesh.mVertices[v])));
        }
        return result;
    }

    const aiScene &scene;
    std::map<const aiNode *, aiMatrix4x4> moved;
    std::map<const aiNode *, Affine> places;
};

// ---- the engine ----------------------------------------------------------------------------

class Played {
  public:
    Played() {
        RVSETTINGS settings;
        settings.setWindowX(64);
        settings.setWindowY(64);
        settings.setShaders(false); // the processor skins
        if (!RAVOLT::init(&settings))
            throw Failure("the engine does not start");
        root = RAVOLT::load("scene.rve");
        if (!root)
            throw Failure("the scene does not load");
        gather(root);
    }
    ~Played() { RAVOLT::free(); }

    std::vector<Corners> triangles(bool isSkinned) {
        std::vector<Corners> result;
        for (RVMESH *mesh : meshes)
            if (mesh->isSkinned() == isSkinned)
                add(*mesh, isSkinned ? skinnedVertices(*mesh) : mesh->getVertexPtr(), result);
        return result;
    }

    // Without the node, nothing.
    bool place(const std::string &name, Vector &result) const {
        RVNODE *node = root->findByNameInHierarchy(name.c_str());
        if (!node)
            return false;
        const Z3MMATRIX matrix = node->getFinalMatrix(nullptr);
        result = {matrix.e[12], matrix.e[13], matrix.e[14]};
        return true;
    }

    RVNODE *root = nullptr;

  private:
    void gather(RVNODE *node) {
        if (node->getType() == RV_NODE_TYPE_MESH) {
            RVMESH *mesh = static_cast<RVMESH *>(node);
            if (mesh->getNumberOfFaces())
                meshes.push_back(mesh);
            mesh->setDisplayStatus(false);
        }
        for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
            gather(node->getChild(i));
    }

    // What the engine draws of a mesh that is alone in the frame.
    const Z3MVECTOR3D *skinnedVertices(RVMESH &mesh) {
        mesh.setDisplayStatus(true);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(nullptr);
        root->pass(true);
        RAVOLT::end3D(true);
        mesh.setDisplayStatus(false);
        void *vertices = nullptr;
        glGetPointerv(GL_VERTEX_ARRAY_POINTER, &vertices);
        if (!vertices || vertices == mesh.getVertexPtr())
            throw Failure("the mesh is not skinned");
        return static_cast<const Z3MVECTOR3D *>(vertices);
    }

    static void add(RVMESH &mesh, const Z3MVECTOR3D *vertices, std::vector<Corners> &result) {
        const Z3MMATRIX matrix = mesh.getFinalMatrix(nullptr);
        const float *m = matrix.e;
        const auto world = [&](unsigned short index) {
            const Z3MVECTOR3D &v = vertices[index];
            return Vector{m[0] * v.x + m[4] * v.y + m[8] * v.z + m[12],
                          m[1] * v.x + m[5] * v.y + m[9] * v.z + m[13],
                          m[2] * v.x + m[6] * v.y + m[10] * v.z + m[14]};
        };
        for (unsigned int i = 0; i < mesh.getNumberOfFaces(); ++i) {
            const unsigned short *v = mesh.getFacePtr()[i].vertex;
            result.push_back({world(v[0]), world(v[1]), world(v[2])});
        }
    }

    std::vector<RVMESH *> meshes;
};

// ---- side by side --------------------------------------------------------------------------

double distance(const Vector &shown, const Vector &stated) {
    return isFinite(stated) ? length(shown - stated) : 0;
}

// The largest distance between corners; triangles may be turned round.
double difference(const std::vector<Corners> &shown, const std::vector<Corners> &stated) {
    if (shown.size() != stated.size())
        return 1e300;
    double largest = 0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const Corners &a = shown[i], &b = stated[i];
        const double same = std::max(distance(a[1], b[1]), distance(a[2], b[2]));
        const double turned = std::max(distance(a[1], b[2]), distance(a[2], b[1]));
        largest = std::max({largest, distance(a[0], b[0]), std::min(same, turned)});
    }
    return largest;
}

struct Errors {
    double vertices = 0; // with the four strongest bones
    double allBones = 0;
    double nodes = 0;
};

// At that time of the animation; NULL for the model as it is loaded.
Errors compare(Played &played, const aiScene &scene, const aiAnimation *animation, double ticks) {
    Reference reference(scene);
    reference.pose(animation, ticks);
    Errors errors;
    for (const bool isSkinned : {false, true}) {
        const std::vector<Corners> shown = played.triangles(isSkinned);
        errors.vertices =
            std::max(errors.vertices, difference(shown, reference.triangles(isSkinned, 4)));
        errors.allBones =
            std::max(errors.allBones, difference(shown, reference.triangles(isSkinned, 100)));
    }
    for (const auto &[name, stated] : reference.nodes()) {
        Vector shown;
        if (played.place(name, shown))
            errors.nodes = std::max(errors.nodes, length(shown - stated));
    }
    const double size = reference.size();
    return {errors.vertices / size, errors.allBones / size, errors.nodes / size};
}

// The last time that a clip shows.
double lastTick(const aiAnimation &animation) {
    double last = 0;
    bool continues = false;
    for (unsigned int i = 0; i < animation.mNumChannels; ++i) {
        const aiNodeAnim &channel = *animation.mChannels[i];
        const auto take = [&](const auto *keys, unsigned int number) {
            last = number ? std::max(last, keys[number - 1].mTime) : last;
        };
        take(channel.mPositionKeys, channel.mNumPositionKeys);
        take(channel.mRotationKeys, channel.mNumRotationKeys);
        take(channel.mScalingKeys, channel.mNumScalingKeys);
        continues = continues || channel.mPostState >= aiAnimBehaviour_LINEAR;
    }
    return continues ? animation.mDuration : last;
}

constexpr double framesPerSecond = 30;

Errors play(const aiScene &scene, const Clip &clip, Played &played) {
    RVANIM anim;
    if (!anim.load(clipFile("scene.rve", clip.name).c_str()))
        throw Failure("the clip does not load");
    anim.setTranslating(true);
    const aiAnimation *animation = clip.animation < 0 ? nullptr : scene.mAnimations[clip.animation];
    const double tps =
        animation && animation->mTicksPerSecond > 0 ? animation->mTicksPerSecond : 25;
    Errors largest;
    for (unsigned int frame = 0; frame < anim.getNumberOfFrames(); ++frame) {
        EXPECT_TRUE(anim.apply(frame, played.root));
        const double ticks =
            animation ? std::min(frame / framesPerSecond * tps, lastTick(*animation)) : 0;
        const Errors errors = compare(played, scene, animation, ticks);
        largest = {std::max(largest.vertices, errors.vertices),
                   std::max(largest.allBones, errors.allBones),
                   std::max(largest.nodes, errors.nodes)};
    }
    return largest;
}

std::string text(double number) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.1e", number);
    return buffer;
}

struct Outcome {
    std::string what; // "CLIP<tab>FRAMES", or what else became of the model
    Errors errors;
};

// The file as assimp reads it. Polygons are divided into triangles, which preserves all corners and
// their order.
const aiScene &asStated(Assimp::Importer &importer, const fs::path &file) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    const aiScene *scene =
        importer.ReadFile(file.string(), aiProcess_Triangulate | aiProcess_SortByPType);
    if (!scene)
        throw Failure(file.string(), importer.GetErrorString());
    return *scene;
}

std::vector<Outcome> outcomesOf(const std::string &model) {
    const ConvertOptions options = optionsOf(collection / model);
    try {
        const std::vector<Clip> clips = make(options).clips;
        writeScene(options);
        Assimp::Importer importer;
        const aiScene &source = asStated(importer, options.model);
        Played played;
        std::vector<Outcome> outcomes;
        for (const Clip &clip : clips)
            outcomes.push_back({clip.name + "\t" + std::to_string(clip.frames.frames.size()),
                                play(source, clip, played)});
        if (outcomes.empty())
            outcomes.push_back({"no clip\t0", compare(played, source, nullptr, 0)});
        return outcomes;
    } catch (const Failure &) {
        return {{"refused\t0", {}}};
    }
}

bool isAnimated(const std::string &model) {
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    const aiScene *scene = importer.ReadFile((collection / model).string(), 0);
    return scene && (scene->mNumAnimations > 0 ||
                     std::any_of(scene->mMeshes, scene->mMeshes + scene->mNumMeshes,
                                 [](const aiMesh *mesh) { return mesh->mNumBones > 0; }));
}

class Animated : public CollectionTest {};

TEST_P(Animated, MovesAsTheModelStates) {
    std::map<std::string, std::string> expected = rowsOf(RAVOLT_ANIMATED_TABLE, GetParam(), 3);
    std::ofstream renewed = renewedRows("RAVOLT_ANIMATED_RENEW");
    for (const std::string &model : modelsIn(GetParam()))
        for (const Outcome &outcome :
             isAnimated(model) ? outcomesOf(model) : std::vector<Outcome>()) {
            const auto &[vertices, allBones, nodes] = outcome.errors;
            const std::string line = model + "\t" + outcome.what;
            renewed << line << "\t" << text(vertices) << "\t" << text(allBones) << "\t"
                    << text(nodes) << "\t1e-5\t1e-5\t1e-5\tsingle precision\n";
            // The errors when the table was written, and the bounds.
            double found[3], bounds[3] = {-1, -1, -1};
            std::istringstream columns(expected[line]);
            columns >> found[0] >> found[1] >> found[2] >> bounds[0] >> bounds[1] >> bounds[2];
            EXPECT_TRUE(columns.good()) << "not in the table: " << line;
            EXPECT_LE(vertices, bounds[0]) << line;
            EXPECT_LE(allBones, bounds[1]) << line;
            EXPECT_LE(nodes, bounds[2]) << line;
            expected.erase(line);
        }
    for (const auto &[line, row] : expected)
        ADD_FAILURE() << line << " is not there";
}

INSTANTIATE_TEST_SUITE_P(Models, Animated,
                         ::testing::Values("3DS", "ASE", "BVH", "CSM", "Collada", "FBX", "LWS",
                                           "MD5", "MDL", "SMD", "X", "glTF2"),
                         nameOf);

} // namespace
