// Meshes skinned by the processor and by a program, one and many in a frame, against the reference,
// with a real driver: the matrices are OpenGL's own.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/models/skinReference.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <cmath>
#include <cstdint>
#include <random>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Pixel black{0, 0, 0, 255};

enum class Way { processor, program };

void PrintTo(Way way, std::ostream *out) {
    *out << (way == Way::program ? "program" : "processor");
}

// Before a black background; flat passes show every mesh in the colour of its auxId.
class CharactersTest : public EngineTest, public testing::WithParamInterface<Way> {
  protected:
    CharactersTest() { settings.setShaders(byProgram()); }

    void SetUp() override {
        EngineTest::SetUp();
        if (byProgram()) {
            SKIP_WITHOUT_EXTENSIONS(allOf({programExtensions, vertexBufferExtensions}));
        }
        ASSERT_EQ(RVSHADER::useSkinning(), byProgram());
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    }

    void TearDown() override {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        RVLIGHT::lightingOff();
        RVSHADER::reset();
        EngineTest::TearDown();
    }

    static bool byProgram() { return GetParam() == Way::program; }

    // Pixels to a unit, ten units in front of the eye.
    static double scale() { return height / 2 / (10 * std::tan(22.5 * 3.14159265358979 / 180)); }

    // The position of a pixel's centre there.
    static float unitsX(int x) { return static_cast<float>((x + 0.5 - width / 2) / scale()); }
    static float unitsY(int y) { return static_cast<float>((height / 2 - y - 0.5) / scale()); }

    // A far light, and a frame in which the meshes under `root` find it: programs draw what has a
    // light alone, and a flat pass uses the last lit one.
    static RVNODE *light(RVNODE *root) {
        RVLIGHT *lamp = new RVLIGHT;
        lamp->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
        lamp->setDirection(0, 0, -1);
        lamp->setPosition(0, 0, 15);
        lamp->link(root);
        RVLIGHT::lightingOn();
        drawFrame(nullptr, root);
        return lamp;
    }

    static Picture drawFlat(RVNODE *root) {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
        drawFrame(nullptr, root);
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        return readFrame();
    }

    // A frame of these trees, whose meshes called "skin" agree with the reference.
    void expectFrame(const std::vector<RVNODE *> &passed, const std::vector<RVNODE *> &figures,
                     const RveSkin &skin, const std::vector<Binding> &bindings) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(nullptr);
        for (RVNODE *root : passed)
            root->pass();
        for (unsigned int at = 0; at < figures.size(); ++at)
            expectSkinned(skinUnder(*figures[at]), at, skin, bindings[at]);
        RAVOLT::end3D(true);
    }

    static RVMESH &skinUnder(RVNODE &root) {
        return static_cast<RVMESH &>(*root.findByNameInHierarchy("skin"));
    }

  private:
    // The mesh whose skeleton has this number in the cache.
    void expectSkinned(RVMESH &mesh, unsigned int skeleton, const RveSkin &skin,
                       const Binding &binding) {
        RVELEMENT entry;
        entry.setParam1(skeleton);
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
        const Calls calls = callsOf([&] { EXPECT_TRUE(mesh.render(&entry)); });
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        const unsigned int vertices = mesh.getNumberOfVertices();
        std::vector<Transform> program;
        std::vector<Z3MVECTOR3D> points, normals;
        if (byProgram()) {
            program = bonesOfProgram(calls);
            ASSERT_EQ(program.size(), skin.bones.size());
        } else {
            points = clientArray(GL_VERTEX_ARRAY_POINTER, vertices);
            normals = clientArray(GL_NORMAL_ARRAY_POINTER, vertices);
            ASSERT_EQ(points.size(), vertices);
            ASSERT_EQ(normals.size(), vertices);
        }
        const std::vector<Transform> bones = binding.bonesNow(mesh);
        for (unsigned int v = 0; v < vertices; ++v) {
            SCOPED_TRACE(v);
            const Influences influences = influencesOf(skin, v);
            const Z3MVECTOR3D &vertex = mesh.getVertexPtr()[v];
            const Vector wanted = skinnedPoint(bones, vertex, influences);
            if (byProgram()) {
                expectNear(skinnedPoint(program, vertex, influences), wanted, 2e-4);
                continue;
            }
            expectNear(points[v], wanted, 1e-4);
            // On purpose: they are not normalized again.
            expectNear(normals[v],
                       skinnedDirection(bones, mesh.getVertexNormalPtr()[v], influences), 1e-5);
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, CharactersTest, testing::Values(Way::processor, Way::program),
                         testing::PrintToStringParamName());

// A square of this size that follows one bone with all of its weights.
RveNode squareOn(const std::string &bone, const std::string &name, float half,
                 unsigned int weights = 4, const std::string &material = "[none]") {
    RveNode square = squareMesh(name, material, half);
    square.mesh.skin = skinOf({bone}, weights);
    return square;
}

RveNode squareAt(RveNode square, float y) {
    for (RveVector &vertex : square.mesh.vertices)
        vertex[1] += y;
    return square;
}

// --- Poses and clips

RveNode joint(const std::string &name, RveVector position, RveVector rotation,
              std::vector<RveNode> children = {}) {
    RveNode node = placed(emptyMesh(name, position, std::move(children)), position, rotation);
    node.origin = {0.25f, -0.5f, 0.125f};
    return node;
}

// Five bones beside a mesh of random triangles that they skin.
class Character {
  public:
    explicit Character(unsigned int weightsPerVertex = 4) {
        std::mt19937 random(4711);
        std::uniform_real_distribution<float> coordinate(-2.0f, 2.0f), weight(0.1f, 1.0f);
        mesh.mesh.skin = {weightsPerVertex, {}, {}, {"hips", "spine", "head", "arm", "leg"}};
        for (std::uint16_t v = 0; v < 60; ++v) {
            mesh.mesh.vertices.push_back(
                {coordinate(random), coordinate(random), coordinate(random)});
            const float x = coordinate(random), y = coordinate(random);
            const float length = std::hypot(x, y, 0.5f);
            mesh.mesh.normals.push_back({x / length, y / length, 0.5f / length});
            std::vector<float> weights(weightsPerVertex);
            float sum = 0;
            for (float &each : weights)
                sum += each = weight(random);
            for (const float each : weights) {
                mesh.mesh.skin.boneIndices.push_back(static_cast<std::uint8_t>(random() % 5));
                mesh.mesh.skin.boneWeights.push_back(each / sum);
            }
            if (v % 3 == 2)
                mesh.mesh.faces.push_back(
                    {static_cast<std::uint16_t>(v - 2), static_cast<std::uint16_t>(v - 1), v});
        }
    }

    // The bones and the mesh under a node of this name.
    RveNode node(const std::string &name) const {
        RveNode figure = nodeNamed(name, {joint("hips", {0, 1, 0}, {5, 10, 15},
                                                {joint("spine", {0, 1, 0.5f}, {20, 0, -10},
                                                       {joint("head", {0, 1.5f, 0}, {0, 45, 0}),
                                                        joint("arm", {1, 0.5f, 0}, {0, 0, -60})}),
                                                 joint("leg", {-0.5f, -1, 0}, {-30, 5, 0})}),
                                          mesh});
        figure.position = {3, -2, 1};
        figure.origin = {0.5f, 0.5f, 0.5f};
        return figure;
    }
    const RveSkin &skin() const { return mesh.mesh.skin; }

  private:
    RveNode mesh = placed(emptyMesh("skin"), {0.5f, 1.0f, -0.25f}, {15, -25, 40});
};

// Without a HumanoidRoot the top of the tree is used instead.
TEST_P(CharactersTest, MovedBonesSkinTheMeshAsTheReferenceDoes) {
    for (const unsigned int weights : {4u, 1u, 2u, 3u, 6u})
        for (const char *name : {"HumanoidRoot", "figure"}) {
            if (byProgram() && weights != 4)
                continue;
            SCOPED_TRACE(testing::Message() << weights << " weights under " << name);
            const Character character(weights);
            RVNODE *root = loadScene({nodeNamed("crowd", {character.node(name)})});
            const auto expectPose = [&](const Binding &binding) {
                expectFrame({root}, {root}, character.skin(), {binding});
            };
            const Binding binding(*root, character.skin().bones);
            RVNODE::findByName("crowd")->setPosition(10, 20, 30);
            const Z3MVECTOR3D before = skinUnder(*root).getVertexPtr()[7];
            expectPose(binding);
            meshNamed("hips")->rotate(0, 30, 0);
            meshNamed("hips")->move(0.2f, 0.1f, -0.3f);
            meshNamed("spine")->rotate(-15, 0, 25);
            meshNamed("head")->rotate(10, -80, 5);
            meshNamed("arm")->rotate(45, 45, 45);
            meshNamed("leg")->rotate(60, 0, 0);
            expectPose(binding);
            EXPECT_TRUE(skinUnder(*root).getVertexPtr()[7] == before);
            EXPECT_TRUE(skinUnder(*root).resetBones(root)); // binds it in this pose
            expectPose(Binding(*root, character.skin().bones));
            RVNODE::cleanUp();
        }
}

// Random turns and moves of the mesh's bones.
RVANIM &randomClip(const RVMESH *mesh, unsigned int seed, bool translating) {
    RVANIM &clip = *new RVANIM;
    EXPECT_TRUE(clip.acquireStructure(mesh));
    clip.setNumberOfFrames(20);
    clip.setTranslating(translating);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> degrees(-90.0f, 90.0f), move(-0.5f, 0.5f);
    for (unsigned int frame = 0; frame < 20; ++frame)
        for (unsigned int bone = 0; bone < clip.getNumberOfBones(); ++bone) {
            clip.setFrame(frame, bone, degrees(random), degrees(random), degrees(random));
            clip.getKeyframe(frame, bone)->translation.set(move(random), move(random), 1);
        }
    return clip;
}

TEST_P(CharactersTest, TwoOfTheSameBoneNamesPlayTheirOwnClips) {
    const Character character;
    const RveScene file{{}, rootOver({character.node("HumanoidRoot")})};
    const std::vector<RVNODE *> roots{loadScene(file), loadScene(file)};
    const std::vector<Binding> bindings{{*roots[0], character.skin().bones},
                                        {*roots[1], character.skin().bones}};
    const RVANIM &walk = randomClip(&skinUnder(*roots[0]), 1, false);
    const RVANIM &jump = randomClip(&skinUnder(*roots[1]), 2, true);
    roots[1]->setPosition(5, -3, -20);
    roots[1]->setRotation(0, 75, 0);
    for (unsigned int frame = 0; frame < 3; ++frame) {
        SCOPED_TRACE(frame);
        EXPECT_TRUE(walk.apply(5 * frame, roots[0]));
        EXPECT_TRUE(jump.apply(19 - 7 * frame, roots[1]));
        expectFrame(roots, roots, character.skin(), bindings);
    }
}

// Bones are searched under the root of the file, where those of the first character are found;
// the bones of the second one must be reset with its own root.
TEST_P(CharactersTest, SecondCharacterOfAFileRequiresAResetOfItsBones) {
    const Character character;
    RVNODE *const root =
        loadScene({character.node("first"), placed(character.node("second"), {4, 0, 0})});
    const std::vector<RVNODE *> own{RVNODE::findByName("first"), RVNODE::findByName("second")};
    const std::vector<Binding> bindings{{*own[0], character.skin().bones},
                                        {*own[1], character.skin().bones}};
    EXPECT_TRUE(skinUnder(*own[1]).resetBones(own[1]));
    const RVANIM &clip = randomClip(&skinUnder(*root), 3, true);
    EXPECT_TRUE(clip.apply(2, own[0]));
    EXPECT_TRUE(clip.apply(17, own[1]));
    expectFrame({root}, own, character.skin(), bindings);
}

// Each pass records the current transform and bones. The whole figure is moved by a node above
// HumanoidRoot: the transform of the mesh itself, up to that node, is read when it is drawn.
TEST_P(CharactersTest, OneTreeIsDrawnInThePoseAndPositionOfEachOfItsPasses) {
    RVNODE *root =
        loadScene({nodeNamed("HumanoidRoot", {emptyMesh("arm"), squareOn("arm", "skin", 0.5f)})});
    const int x[] = {20, 64, 108}, y[] = {20, 70, 48};
    RVNODE *lamp = light(root);
    lamp->unlink();
    // The first frame finds each entry its light.
    for (const RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FULL, RV_OPENGL_PROFILE_FLAT}) {
        RVOPENGL::setProfile(profile);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(nullptr);
        lamp->pass();
        for (unsigned int pass = 0; pass < 3; ++pass) {
            skinUnder(*root).setAuxId(0xffu << 8 * pass); // red, green, blue
            meshNamed("arm")->setPosition(unitsX(x[pass]), 0, 0);
            root->setPosition(0, unitsY(y[pass]), -10);
            root->pass();
        }
        RAVOLT::end3D(true);
    }
    const Picture picture = readFrame();
    const Pixel colors[] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};
    for (unsigned int pass = 0; pass < 3; ++pass)
        EXPECT_PIXEL(picture.at(x[pass], y[pass]), colors[pass], 1);
    EXPECT_NEAR(static_cast<double>(picture.pixelsUnlike(black)), 3 * scale() * scale(), 60);
}

// --- Tables

// 257 characters in cells of seven by six pixels: one more than there are in the cache, which
// is not visible.
TEST_P(CharactersTest, TheCacheHas256SkeletonsAndTheLastCharacterIsNotVisible) {
    std::vector<RveNode> characters;
    for (unsigned int number = 0; number < 257; ++number) {
        const std::string bone = "bone " + std::to_string(number);
        characters.push_back(
            nodeNamed("HumanoidRoot", {emptyMesh(bone), squareOn(bone, "skin", 0.2f)}));
    }
    RVNODE *root = loadScene(characters);
    root->setPosition(0, 0, -10);
    const auto cell = [](unsigned int number) {
        return std::pair{static_cast<int>(7 * (number % 17) + 5),
                         static_cast<int>(6 * (number / 17) + 3)};
    };
    for (unsigned int number = 0; number < 257; ++number) {
        const auto [x, y] = cell(number);
        meshNamed("bone " + std::to_string(number))->setPosition(unitsX(x), unitsY(y), 0);
    }
    light(root);
    for (int frame = 0; frame < 2; ++frame) {
        const LogMark mark = markLog();
        recorder.start();
        const Picture picture = drawFlat(root);
        const Calls calls = recorder.stop();
        EXPECT_EQ(calls.count("glDrawElements"), 256u);
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(),
                  2 * 257u + 2); // bones, skins, root, light
        EXPECT_EQ(calls.count("glUniform4fvARB"), byProgram() ? 256u : 0u);
        EXPECT_EQ(problemsSince(mark),
                  (std::vector<std::string>{
                      "   [!] Skeleton cache full @ RVELEMENT::pass",
                      "   [!] Animation not computed (cache full) @ RVMESH::animate"}));
        for (unsigned int number = 0; number < 257; ++number) {
            const auto [x, y] = cell(number);
            EXPECT_EQ(pixelNear(picture.at(x, y), black, 0), number == 256) << number;
            EXPECT_PIXEL(picture.at(x - 3, y), black, 0); // between two cells
        }
    }
}

// Each of a hundred squares on its own bone, the last one's number being 99.
TEST_P(CharactersTest, AHundredBonesSkinOneMesh) {
    RveNode mesh = emptyMesh("skin");
    RveSkin &skin = mesh.mesh.skin;
    skin.weightsPerVertex = 4;
    const RveMesh square = squareMesh("part", "[none]", 0.2f).mesh;
    std::vector<RveNode> nodes;
    for (unsigned int bone = 0; bone < RV_BONES; ++bone) {
        skin.bones.push_back("bone " + std::to_string(bone));
        nodes.push_back(emptyMesh(skin.bones.back(), {0.01f * static_cast<float>(bone), 0, 0}));
        for (const auto &face : square.faces) {
            const auto v = [&](int k) { return static_cast<std::uint16_t>(4 * bone + face[k]); };
            mesh.mesh.faces.push_back({v(0), v(1), v(2)});
        }
        for (const RveVector &vertex : square.vertices) {
            mesh.mesh.vertices.push_back(vertex);
            mesh.mesh.normals.push_back({0, 0, 1});
            skin.boneIndices.insert(skin.boneIndices.end(), 4, static_cast<std::uint8_t>(bone));
            skin.boneWeights.insert(skin.boneWeights.end(), {0.5f, 0.25f, 0.125f, 0.125f});
        }
    }
    nodes.push_back(mesh);
    RVNODE *root = loadScene({nodeNamed("HumanoidRoot", nodes)});
    EXPECT_EQ(meshNamed("skin")->getNumberOfBones(), 100);
    const Binding binding(*root, skin.bones);
    root->setPosition(0, 0, -10);
    RVNODE::findByName("HumanoidRoot")->setPosition(0.125f, 0, 0);
    const auto cellX = [](unsigned int bone) { return static_cast<int>(12 * (bone % 10) + 8); };
    const auto cellY = [](unsigned int bone) { return static_cast<int>(9 * (bone / 10) + 5); };
    for (unsigned int bone = 0; bone < RV_BONES; ++bone) {
        // Relative to the bind pose and to the position of the figure.
        const float x = unitsX(cellX(bone)) + 0.01f * static_cast<float>(bone) - 0.125f;
        meshNamed(skin.bones[bone])->setPosition(x, unitsY(cellY(bone)), 0);
    }
    light(root);
    const Picture picture = drawFlat(root);
    for (unsigned int bone = 0; bone < RV_BONES; ++bone) {
        EXPECT_FALSE(pixelNear(picture.at(cellX(bone), cellY(bone)), black, 0)) << bone;
        EXPECT_PIXEL(picture.at(cellX(bone) - 5, cellY(bone)), black, 0);
        meshNamed(skin.bones[bone])->setRotation(3.0f * static_cast<float>(bone), 20, -40);
    }
    expectFrame({root}, {root}, skin, {binding});
}

// --- Weights

// Six squares above each other, with 0 to 5 weights a vertex, whose bone moves to the right.
// The programs take four weights a vertex: with another number of them they draw the bind pose.
TEST_P(CharactersTest, SquaresOfAnyNumberOfWeightsAreDrawnWhereTheyShould) {
    std::vector<RveNode> nodes = {emptyMesh("bone")};
    const auto row = [](unsigned int weights) { return static_cast<int>(14 * weights + 12); };
    for (unsigned int weights = 0; weights < 6; ++weights) {
        const std::string name = "square " + std::to_string(weights);
        nodes.push_back(squareAt(squareOn("bone", name, 0.4f, weights), unitsY(row(weights))));
    }
    RVNODE *root = loadScene({nodeNamed("HumanoidRoot", nodes)});
    root->setPosition(0, 0, -10);
    meshNamed("bone")->setPosition(unitsX(100) - unitsX(64), 0, 0);
    light(root);
    for (int frame = 0; frame < 2; ++frame) {
        const Picture picture = drawFlat(root);
        for (unsigned int weights = 0; weights < 6; ++weights) {
            SCOPED_TRACE(weights);
            const bool moved = byProgram() ? weights == 4 : weights != 0;
            EXPECT_EQ(pixelNear(picture.at(64, row(weights)), black, 0), moved);
            EXPECT_EQ(pixelNear(picture.at(100, row(weights)), black, 0), !moved);
        }
    }
}

// The first skinned mesh makes its material a skinned one. Rigid meshes with that material are
// lit and do not move, whatever bones were passed before them.
TEST_P(CharactersTest, RigidMeshesShareAMaterialWithSkinnedOnes) {
    std::vector<RveNode> nodes = {emptyMesh("bone 0"), emptyMesh("bone 1")};
    const auto row = [](unsigned int number) { return static_cast<int>(18 * number + 12); };
    for (unsigned int number = 0; number < 5; ++number) {
        const std::string name = "square " + std::to_string(number);
        RveNode square = squareOn("bone 0", name, 0.5f, number % 2 ? 4 : 0, "paint");
        if (number % 2)
            square.mesh.skin.bones.push_back("bone 1");
        nodes.push_back(squareAt(square, unitsY(row(number))));
    }
    RveMaterial paint = materialNamed("paint");
    paint.ambient = {0, 0, 0, 1};
    paint.diffuse = {0, 1, 0, 1};
    RVNODE *root = loadScene(RveScene{{paint}, rootOver({nodeNamed("HumanoidRoot", nodes)})});
    ASSERT_TRUE(RVMATERIAL::findByName("paint")->isSkinned());
    root->setPosition(0, 0, -10);
    for (const char *bone : {"bone 0", "bone 1"})
        meshNamed(bone)->setPosition(unitsX(100) - unitsX(64), 0, 0);
    light(root);
    for (int frame = 0; frame < 3; ++frame) {
        SCOPED_TRACE(frame);
        drawFrame(nullptr, root);
        const Picture picture = readFrame();
        for (unsigned int number = 0; number < 5; ++number) {
            SCOPED_TRACE(number);
            const int wanted = number % 2 ? 100 : 64;
            EXPECT_GT(picture.at(wanted, row(number)).green, 100);
            EXPECT_PIXEL(picture.at(164 - wanted, row(number)), black, 0);
        }
        EXPECT_TRUE(RVMATERIAL::findByName("paint")->isSkinned());
    }
}

// --- Bones and the cache

class SkinningTest : public EngineTest {};

TEST_F(SkinningTest, MissingBonesAreNamedAndTheMeshIsDrawnWithoutThem) {
    RVNODE *root = loadScene({skinnedSquare("square", {"ghost"})});
    EXPECT_LOGGED("   Building bones for square...    [!] Bone ghost not found @ "
                  "RVMESH::recursiveLoadZVE");
    EXPECT_LOGGED("done");
    markLog();
    drawFrame(nullptr, root);
    EXPECT_NOTHING_LOGGED();
    loadScene({skinnedSquare("square", {"square"})});
    EXPECT_LOGGED("   Building bones for square... done");
}

TEST_F(SkinningTest, RigidMeshHasNoBonesToReset) {
    RVMESH *mesh = new RVMESH;
    EXPECT_TRUE(mesh->resetBones(mesh));
    EXPECT_TRUE(mesh->animate(256));
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(mesh->resetBones(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMESH::resetBones\n");
}

TEST_F(SkinningTest, SkeletonBeyondTheCacheOrWithoutTheEngineIsRefused) {
    loadScene({skinnedSquare("skin", {"skin"}, 4)});
    const auto expectRefused = [](unsigned int skeleton) {
        markLog();
        EXPECT_FALSE(meshNamed("skin")->animate(skeleton)) << skeleton;
        EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    };
    EXPECT_TRUE(meshNamed("skin")->animate(255));
    expectRefused(256);
    expectRefused(~0u);
    RVELEMENT entry;
    entry.setParam1(256);
    EXPECT_FALSE(meshNamed("skin")->render(&entry));
    EXPECT_TRUE(RVMESH::free());
    expectRefused(0);
    EXPECT_TRUE(RVMESH::init());
    EXPECT_TRUE(RVMESH::init());
}

} // namespace
