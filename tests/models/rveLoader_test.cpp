#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/models/goneFile.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tools/writers/tgaWriter.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <set>

#include <unistd.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

class RveLoaderTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        // The tests of one process share a folder.
        for (const char *picture : {"wall_d.tga", "wall_n.tga", "_n.tga"})
            std::filesystem::remove(picture);
    }

    void TearDown() override {
        zlfSetConsoleEcho(true);
        RAVOLT::setRVEPath(nullptr);
        RVTEXTURE::setPath(nullptr);
        SilentEngineTest::TearDown();
    }
};

void expectVector(const Z3MVECTOR3D &actual, const RveVector &expected) {
    EXPECT_EQ(actual.x, expected[0]);
    EXPECT_EQ(actual.y, expected[1]);
    EXPECT_EQ(actual.z, expected[2]);
}

void expectColor(const Z3MVECTOR4D &actual, const RveColor &expected) {
    EXPECT_EQ(actual.x, expected[0]);
    EXPECT_EQ(actual.y, expected[1]);
    EXPECT_EQ(actual.z, expected[2]);
    EXPECT_EQ(actual.w, expected[3]);
}

void writePicture(const std::string &path) {
    const unsigned char pixels[4 * 3] = {};
    TgaPicture picture;
    picture.width = picture.height = 2;
    picture.pixels = pixels;
    ASSERT_TRUE(writeTga(path, picture));
}

RveMaterial texturedMaterial(const std::string &name, const std::string &texture) {
    RveMaterial material = materialNamed(name);
    material.texture = texture;
    return material;
}

RveScene sceneWith(const RveMaterial &material) { return {{material}, rootOver({})}; }

RveNode lightNode() {
    RveNode node = nodeNamed("lamp");
    node.kind = RveKind::light;
    node.position = {1, 2, 3};
    node.light.type = RveLightType::spot;
    node.light.direction = {0, -1, 0.5f};
    node.light.cutOff = 30.0f;
    node.light.color = {1.0f, 0.5f, 0.25f};
    return node;
}

// One of each kind, three levels deep, with a skin.
RveScene fullScene() {
    RveNode square = squareMesh("square", "stone");
    square.position = {1, 2, 3};
    square.rotation = {10, 20, 30};
    square.origin = {-1, -2, -3};
    square.mesh.hidden = true;
    square.mesh.skin.weightsPerVertex = 1;
    square.mesh.skin.boneIndices = {0, 1, 1, 0};
    square.mesh.skin.boneWeights = {1, 0.5f, 0.25f, 1};
    square.mesh.skin.bones = {"first bone", "second bone"};
    RveNode group = nodeNamed("group", {square, lightNode()});
    group.auxId = 0x12345678;
    group.position = {4, 5, 6};
    group.origin = {7, 8, 9};
    RveScene scene{{materialNamed("stone")},
                   rootOver({group, emptyMesh("first bone", {0, 1, 0},
                                              {emptyMesh("second bone", {0, 2, 0})})})};
    scene.materials[0].ambient = {0.1f, 0.2f, 0.3f, 0.4f};
    scene.materials[0].diffuse = {0.5f, 0.6f, 0.7f, 0.8f};
    scene.materials[0].specular = {0.9f, 0.8f, 0.7f, 0.6f};
    scene.materials[0].selfIllumination = {0.4f, 0.3f, 0.2f, 0.1f};
    scene.materials[0].shininess = 32.0f;
    return scene;
}

void expectFullScene(RVNODE *root) {
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->getName(), "[root]");
    EXPECT_EQ(root->getType(), RV_NODE_TYPE_MESH);
    EXPECT_TRUE(root->isRoot());
    ASSERT_EQ(root->getNumberOfChildren(), 2u);

    RVNODE *group = root->getChild(0);
    EXPECT_STREQ(group->getName(), "group");
    EXPECT_EQ(group->getType(), RV_NODE_TYPE_NODE);
    EXPECT_EQ(group->getAuxId(), 0x12345678u);
    EXPECT_EQ(group->getParent(), root);
    expectVector(group->getPosition(), {4, 5, 6});
    expectVector(group->getOrigin(), {7, 8, 9});
    ASSERT_EQ(group->getNumberOfChildren(), 2u);

    RVMESH *square = static_cast<RVMESH *>(group->getChild(0));
    EXPECT_STREQ(square->getName(), "square");
    EXPECT_EQ(square->getParent(), group);
    expectVector(square->getPosition(), {1, 2, 3});
    expectVector(square->getRotation(), {10, 20, 30});
    expectVector(square->getOrigin(), {-1, -2, -3});
    EXPECT_EQ(square->getRadius(), 1.5f);
    expectVector(square->getMinimum(), {-1, -1, 0});
    expectVector(square->getMaximum(), {1, 1, 0});
    EXPECT_TRUE(square->isHidden());
    EXPECT_TRUE(square->isSkinned());
    EXPECT_EQ(square->getNumberOfBones(), 2);
    ASSERT_EQ(square->getNumberOfVertices(), 4u);
    ASSERT_EQ(square->getNumberOfUVs(), 4u);
    ASSERT_EQ(square->getNumberOfFaces(), 2u);
    expectVector(square->getVertexPtr()[2], {1, 1, 0});
    expectVector(square->getVertexNormalPtr()[3], {0, 0, 1});
    EXPECT_EQ(square->getUVPtr()[1].x, 1.0f);
    EXPECT_EQ(square->getFacePtr()[1].vertex[1], 2);
    expectVector(square->getFaceNormalPtr()[1], {0, 0, 1});
    EXPECT_EQ(square->getMaterial(), RVMATERIAL::findByName("stone"));

    RVLIGHT *light = static_cast<RVLIGHT *>(group->getChild(1));
    EXPECT_STREQ(light->getName(), "lamp");
    EXPECT_EQ(light->getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_SPOT);
    expectVector(light->getPosition(), {1, 2, 3});
    expectVector(light->getTarget(), {1, 1, 3.5f});
    expectVector(light->getDirection(), {0, -1, 0.5f});
    EXPECT_EQ(light->getCutOff(), 30.0f);
    expectColor(light->getAmbient(), {1.0f / 5.0f, 0.5f / 5.0f, 0.25f / 5.0f, 1.0f});
    expectColor(light->getDiffuse(), {1.0f, 0.5f, 0.25f, 1.0f});
    expectColor(light->getSpecular(), {1.0f / 10.0f, 0.5f / 10.0f, 0.25f / 10.0f, 1.0f});

    EXPECT_STREQ(root->getChild(1)->getName(), "first bone");
    EXPECT_STREQ(root->getChild(1)->getChild(0)->getName(), "second bone");
}

TEST_F(RveLoaderTest, TreeMaterialsAndGeometryComeFromTheFile) {
    expectFullScene(loadScene(fullScene()));
    RVMATERIAL *stone = RVMATERIAL::findByName("stone");
    ASSERT_NE(stone, nullptr);
    expectColor(stone->getAmbient(), {0.1f, 0.2f, 0.3f, 0.4f});
    expectColor(stone->getDiffuse(), {0.5f, 0.6f, 0.7f, 0.8f});
    expectColor(stone->getSpecular(), {0.9f, 0.8f, 0.7f, 0.6f});
    expectColor(stone->getEmission(), {0.4f, 0.3f, 0.2f, 0.1f});
    EXPECT_EQ(stone->getTransparency(), 1.0f);
    EXPECT_EQ(stone->getShininess(), 32.0f);
    EXPECT_EQ(stone->getShader(), nullptr);
    EXPECT_EQ(stone->getReferences(), 1);
    EXPECT_TRUE(stone->isSkinned());
}

TEST_F(RveLoaderTest, ObsoleteFormatGivesTheSameTree) {
    expectFullScene(loadScene(fullScene(), RveVersion::v15a));
    EXPECT_LOGGED("   [!] Obsolete RVE file format detected: re-export your model with 1.6a");
    EXPECT_LOGGED("   Header: RVE file v1.5a");
}

TEST_F(RveLoaderTest, CurrentFormatAfterAnObsoleteOneIsReadAsCurrent) {
    loadScene(fullScene(), RveVersion::v15a);
    RVNODE::cleanUp();
    expectFullScene(loadScene(fullScene()));
}

TEST_F(RveLoaderTest, LogTellsTheLoadLineByLine) {
    RVNODE *root = loadScene(RveScene{{materialNamed("stone")}, rootOver({nodeNamed("arm")})});
    char tree[256];
    std::snprintf(tree, sizeof(tree),
                  "   Tree for [root]:\n   + [root] [id: %u]\n     + arm [id: %u]\n\n",
                  root->getId(), root->getChild(0)->getId());
    EXPECT_LOGGED_EXACTLY(std::string("\n   Loading RVE file 'scene.rve'...\n"
                                      "   Header: RVE file v1.6a\n"
                                      "   File .RVE loaded (2 nodes)\n") +
                          tree);
}

TEST_F(RveLoaderTest, NoMaterialsIsAWarning) {
    EXPECT_NE(loadScene({squareMesh("square")}), nullptr);
    EXPECT_LOGGED("   [!] Warning: no material found in file scene.rve");
    EXPECT_LOGGED("   [!] no material assigned to mesh 'square'");
    EXPECT_EQ(meshNamed("square")->getMaterial(), nullptr);
}

TEST_F(RveLoaderTest, RootWithoutMaterialDrawsNoWarning) {
    const LogMark mark = logMark();
    loadScene(RveScene{{materialNamed("stone")}, rootOver({})});
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{});
}

TEST_F(RveLoaderTest, UnknownMaterialIsNamed) {
    loadScene({squareMesh("square", "marble")});
    EXPECT_LOGGED("   [!] material 'marble' not found for mesh 'square'");
}

TEST_F(RveLoaderTest, EmptyMaterialNameDrawsNoWarning) {
    const LogMark mark = logMark();
    loadScene(RveScene{{materialNamed("stone")}, rootOver({squareMesh("square", "")})});
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{});
}

TEST_F(RveLoaderTest, MaterialCalledNoneIsUsedAndStillWarnedOf) {
    loadScene(RveScene{{materialNamed("[none]")}, rootOver({squareMesh("square", "[none]")})});
    EXPECT_LOGGED("   [!] no material assigned to mesh 'square'");
    EXPECT_EQ(meshNamed("square")->getMaterial(), RVMATERIAL::findByName("[none]"));
}

TEST_F(RveLoaderTest, SecondLoadSharesMaterialsByNameAndMakesASecondTree) {
    RVNODE *first = loadScene(fullScene());
    RVMATERIAL *stone = RVMATERIAL::findByName("stone");
    stone->setShininess(5.0f);
    RVNODE *second = loadScene(fullScene());
    EXPECT_NE(first, second);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 12u);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
    EXPECT_EQ(stone->getReferences(), 2);
    EXPECT_EQ(stone->getShininess(), 5.0f);
}

TEST_F(RveLoaderTest, BonesOfASecondTreeAreItsOwn) {
    RveScene scene = fullScene();
    loadScene(scene);
    const LogMark mark = logMark();
    scene.root.children.pop_back(); // the first tree's bones do not serve the second
    loadScene(scene);
    EXPECT_EQ(problemsSince(mark),
              (std::vector<std::string>{"   Building bones for square...    [!] Bone first bone "
                                        "not found @ RVMESH::recursiveLoadZVE",
                                        "   [!] Bone second bone not found @ "
                                        "RVMESH::recursiveLoadZVE"}));
    EXPECT_LOGGED("done");
}

TEST_F(RveLoaderTest, FirstOfTwoMaterialsOfOneNameStands) {
    RveScene scene{{materialNamed("stone"), materialNamed("stone", 0.5f)}, rootOver({})};
    loadScene(scene);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
    EXPECT_EQ(RVMATERIAL::findByName("stone")->getTransparency(), 1.0f);
}

TEST_F(RveLoaderTest, OldestOfTwoKnownMaterialsOfOneNameServesTheMeshes) {
    RVMATERIAL *oldest = new RVMATERIAL;
    RVMATERIAL *second = new RVMATERIAL;
    for (RVMATERIAL *material : {oldest, second})
        material->setName("stone");
    loadScene(RveScene{{materialNamed("stone"), materialNamed("new")},
                       rootOver({squareMesh("a", "stone"), squareMesh("b", "new")})});
    EXPECT_EQ(meshNamed("a")->getMaterial(), oldest);
    EXPECT_EQ(meshNamed("b")->getMaterial(), RVMATERIAL::findByName("new"));
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 3u);
}

// As a walk from the root finds it: depth first, parents before children.
TEST_F(RveLoaderTest, FirstOfTwoNodesOfOneNameIsTheBone) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"bone"}};
    RVNODE *root = loadScene(
        {nodeNamed("arm", {emptyMesh("bone", {0, 0, 3})}), square, emptyMesh("bone", {0, 0, 5})});
    root->getChild(0)->getChild(0)->setPosition(5, 0, 3);
    RVMESH::showNormals();
    recorder.start();
    drawFrame(nullptr, root);
    RVMESH::hideNormals();
    EXPECT_TRUE(recorder.stop().contains(Call{"glVertex3f", 4, -1, 0}));
}

// What takes time is to find each name; the rest of such a load is done in a blink.
TEST_F(RveLoaderTest, LargeFileLoadsInLinearTime) {
    constexpr unsigned int number = 30000;
    RveScene scene{{}, rootOver({})};
    zlfSetConsoleEcho(false);
    for (unsigned int i = 0; i < number; ++i) {
        scene.materials.push_back(materialNamed("material " + std::to_string(i)));
        scene.root.children.push_back(emptyMesh("mesh " + std::to_string(i), {0, 0, 0}));
        scene.root.children.back().mesh.material = scene.materials.back().name;
    }
    for (unsigned int i = 0; i < 300; ++i) {
        RveNode skin = emptyMesh("skin");
        skin.mesh.skin.weightsPerVertex = 1;
        for (unsigned int bone = 1; bone <= rveBones; ++bone)
            skin.mesh.skin.bones.push_back("mesh " + std::to_string(number - bone));
        scene.root.children.push_back(skin);
    }
    writeFile("scene.rve", bytesOf(scene));
    const std::clock_t begin = std::clock();
    EXPECT_NE(RAVOLT::load("scene.rve"), nullptr);
    EXPECT_LT(double(std::clock() - begin) / CLOCKS_PER_SEC, 3.0);
}

TEST_F(RveLoaderTest, TextureAndNormalMapFillTheFirstTwoSlots) {
    writePicture("wall_d.tga");
    writePicture("wall_n.tga");
    loadScene(sceneWith(texturedMaterial("wall", "wall_d.tga")));
    RVMATERIAL *wall = RVMATERIAL::findByName("wall");
    ASSERT_NE(wall->getTexture(0), nullptr);
    EXPECT_STREQ(wall->getTexture(0)->getFilename(), "wall_d.tga");
    EXPECT_EQ(wall->getTexture(0)->getReferences(), 1);
    ASSERT_NE(wall->getTexture(1), nullptr);
    EXPECT_STREQ(wall->getTexture(1)->getFilename(), "wall_n.tga");
    EXPECT_LOGGED("   normal map: wall_n.tga");
}

TEST_F(RveLoaderTest, TexturesAreSharedByFileName) {
    writePicture("wall_d.tga");
    writePicture("wall_n.tga");
    RveScene scene = sceneWith(texturedMaterial("wall", "wall_d.tga"));
    scene.materials.push_back(texturedMaterial("other wall", "wall_d.tga"));
    const unsigned int before = RVTEXTURE::getNumberOfTextures();
    loadScene(scene);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before + 2);
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getTexture(0),
              RVMATERIAL::findByName("other wall")->getTexture(0));
    EXPECT_EQ(RVTEXTURE::findByFilename("wall_d.tga")->getReferences(), 2);
}

TEST_F(RveLoaderTest, MissingNormalMapIsReported) {
    writePicture("wall_d.tga");
    loadScene(sceneWith(texturedMaterial("wall", "wall_d.tga")));
    EXPECT_LOGGED("   [!] normal map not found for wall_d.tga");
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getTexture(1), nullptr);
}

TEST_F(RveLoaderTest, NormalMapIsLookedForWithoutTheTexturePath) {
    std::filesystem::create_directory("pictures");
    writePicture("pictures/wall_d.tga");
    writePicture("pictures/wall_n.tga");
    RVTEXTURE::setPath("pictures/");
    loadScene(sceneWith(texturedMaterial("wall", "wall_d.tga")));
    EXPECT_LOGGED("   [!] normal map not found for wall_d.tga");

    writePicture("wall_n.tga");
    loadScene(sceneWith(texturedMaterial("second wall", "wall_d.tga")));
    EXPECT_LOGGED("   normal map: wall_n.tga");
    EXPECT_STREQ(RVMATERIAL::findByName("second wall")->getTexture(1)->getFilename(), "wall_n.tga");
}

TEST_F(RveLoaderTest, NoTextureMeansNoLookForANormalMap) {
    writePicture("_n.tga");
    loadScene(sceneWith(materialNamed("bare")));
    EXPECT_EQ(RVMATERIAL::findByName("bare")->getTexture(0), nullptr);
    EXPECT_NOT_LOGGED("   normal map: _n.tga");
    EXPECT_NOT_LOGGED("   [!] normal map not found for [none]");
}

TEST_F(RveLoaderTest, TextureThatCannotBeReadIsUsedAllTheSame) {
    const unsigned int before = RVTEXTURE::getNumberOfTextures();
    loadScene(sceneWith(texturedMaterial("wall", "missing_d.tga")));
    EXPECT_NE(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before + 1);
    EXPECT_LOGGED("   [!] Unable to open file missing_d.tga @ RVTEXTURE::loadTGA");
}

TEST_F(RveLoaderTest, ShortTextureNameIsCutToTheSuffixAlone) {
    writePicture("_n.tga");
    for (const char *name : {"x", "a.tga", "sixsix"}) {
        loadScene(sceneWith(texturedMaterial(name, name)));
        EXPECT_STREQ(RVMATERIAL::findByName(name)->getTexture(1)->getFilename(), "_n.tga");
    }
    EXPECT_LOGGED_TIMES(3, "   normal map: _n.tga");
}

// --- Names that leave their path

// A texture beside the folder of the textures, and its normal map.
struct OutsideFiles {
    OutsideFiles() {
        std::filesystem::create_directory("inside");
        writePicture("outside_d.tga");
        writePicture("inside/wall_d.tga");
        RVTEXTURE::setPath("inside/");
    }
    ~OutsideFiles() { RAVOLT::confineFilesOff(); }
};

TEST_F(RveLoaderTest, NamesMayLeaveThePathOfTheTexturesUnlessFilesAreConfined) {
    const OutsideFiles files;
    EXPECT_FALSE(RAVOLT::isConfiningFiles());
    loadScene(sceneWith(texturedMaterial("wall", "../outside_d.tga")));
    const RVTEXTURE *texture = RVMATERIAL::findByName("wall")->getTexture(0);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->getSizeX(), 2u) << "its file was read";
    EXPECT_NOT_LOGGED("   [!] File name ../outside_d.tga leaves its path: refused @ RAVOLT::load");
}

TEST_F(RveLoaderTest, ConfinedFilesGoWithoutATextureOutsideAndItsNormalMap) {
    const OutsideFiles files;
    std::filesystem::create_directory("deep");
    writePicture("deep/outside_n.tga");
    RAVOLT::confineFilesOn();
    EXPECT_TRUE(RAVOLT::isConfiningFiles());
    const std::string absolute = std::filesystem::absolute("outside_d.tga").string();
    unsigned int number = 0;
    for (const std::string &name :
         {std::string("../outside_d.tga"), absolute, std::string("a/../../outside_d.tga"),
          std::string(".."), std::string("a/.."), std::string("..\\outside_d.tga"),
          std::string("\\outside_d.tga"), std::string("C:outside_d.tga"),
          std::string("deep/../deep/outside_d.tga")}) {
        const std::string material = "material " + std::to_string(number++);
        const unsigned int before = RVTEXTURE::getNumberOfTextures();
        markLog();
        loadScene(sceneWith(texturedMaterial(material, name)));
        const RVMATERIAL *made = RVMATERIAL::findByName(material.c_str());
        ASSERT_NE(made, nullptr) << name;
        EXPECT_EQ(made->getTexture(0), nullptr) << name;
        EXPECT_EQ(made->getTexture(1), nullptr) << name;
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before) << name;
        EXPECT_LOGGED_TIMES(1, "   [!] File name " + name +
                                   " leaves its path: refused @ RAVOLT::load");
        EXPECT_NOT_LOGGED("   normal map: deep/../deep/outside_n.tga");
    }
}

TEST_F(RveLoaderTest, ConfinedFilesGoWithoutATextureOutsideThatIsThereAlready) {
    const OutsideFiles files;
    (new RVTEXTURE)->load("../outside_d.tga");
    RAVOLT::confineFilesOn();
    loadScene(sceneWith(texturedMaterial("wall", "../outside_d.tga")));
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
}

TEST_F(RveLoaderTest, ConfinedFilesHaveTheNamesThatStayBelowThePath) {
    const OutsideFiles files;
    std::filesystem::create_directory("inside/..a");
    writePicture("inside/..a/b..tga");
    std::filesystem::create_directory("inside/...");
    writePicture("inside/.../wall_d.tga");
    RAVOLT::confineFilesOn();
    unsigned int number = 0;
    for (const char *name :
         {"wall_d.tga", "./wall_d.tga", "..a/b..tga", ".../wall_d.tga", "..a//b..tga"}) {
        const std::string material = "material " + std::to_string(number++);
        loadScene(sceneWith(texturedMaterial(material, name)));
        const RVTEXTURE *texture = RVMATERIAL::findByName(material.c_str())->getTexture(0);
        ASSERT_NE(texture, nullptr) << name;
        EXPECT_EQ(texture->getSizeX(), 2u) << name;
    }
}

TEST_F(RveLoaderTest, ConfinedFilesGoWithoutAProgramOutside) {
    const OutsideFiles files;
    RveScene scene = sceneWith(materialNamed("wall"));
    scene.materials[0].shader = "../glow";
    RAVOLT::confineFilesOn();
    const unsigned int before = RVSHADER::getNumberOfShaders();
    loadScene(scene);
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), before);
    EXPECT_LOGGED_TIMES(1, "   [!] File name ../glow leaves its path: refused @ RAVOLT::load");

    scene.materials[0].name = "second wall";
    RAVOLT::confineFilesOff();
    loadScene(scene);
    EXPECT_NE(RVMATERIAL::findByName("second wall")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), before + 1);
}

TEST_F(RveLoaderTest, TheApplicationsOwnNameIsNotConfined) {
    const OutsideFiles files;
    writeFile("scene.rve", bytesOf(sceneWith(texturedMaterial("wall", "wall_d.tga"))));
    RAVOLT::setRVEPath("inside/");
    RAVOLT::confineFilesOn();
    EXPECT_NE(RAVOLT::load("../scene.rve"), nullptr);
    EXPECT_NE(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
}

// --- Files

TEST_F(RveLoaderTest, EmptyTextureNameIsATextureThatCannotBeRead) {
    loadScene(sceneWith(texturedMaterial("wall", "")));
    EXPECT_NE(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
    EXPECT_LOGGED("   [!] normal map not found for ");
}

TEST_F(RveLoaderTest, TexturesOfAKnownMaterialAreLoadedAllTheSame) {
    loadScene(sceneWith(materialNamed("wall")));
    writePicture("wall_d.tga");
    loadScene(sceneWith(texturedMaterial("wall", "wall_d.tga")));
    EXPECT_NE(RVTEXTURE::findByFilename("wall_d.tga"), nullptr);
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
}

TEST_F(RveLoaderTest, PathIsPutInFrontOfTheName) {
    std::filesystem::create_directory("models");
    writeFile("models/box.rve", bytesOf({{}, rootOver({})}));
    RAVOLT::setRVEPath("models/");
    EXPECT_NE(RAVOLT::load("box.rve"), nullptr);
    EXPECT_LOGGED("   Loading RVE file 'models/box.rve'...");
    EXPECT_EQ(RAVOLT::load("models/box.rve"), nullptr);
}

TEST_F(RveLoaderTest, NullAndMissingFilesAreReported) {
    EXPECT_EQ(RAVOLT::load(nullptr), nullptr);
    EXPECT_EQ(RAVOLT::load("nowhere.rve"), nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params or file not found @ RAVOLT::load\n"
                          "   [!] Invalid params or file not found @ RAVOLT::load\n");
}

TEST_F(RveLoaderTest, NamesWithXmlAnywhereHaveNoReaderYet) {
    for (const char *name : {"scene.xml", "scene.xml.rve", "SCENE.XML"}) {
        writeFile(name, bytesOf({{}, rootOver({})}));
        EXPECT_EQ(RAVOLT::load(name), nullptr) << name;
        EXPECT_LOGGED_EXACTLY("   [!] No reader for XML scenes @ RAVOLT::load\n");
    }
    writeFile("scene.Xml", bytesOf({{}, rootOver({})}));
    EXPECT_NE(RAVOLT::load("scene.Xml"), nullptr);
}

TEST_F(RveLoaderTest, BytesBehindTheRootAreIgnored) {
    Bytes bytes = bytesOf(fullScene());
    bytes.insert(bytes.end(), 1000, 0xff);
    expectFullScene(loadBytes(bytes));
}

TEST_F(RveLoaderTest, TerminatorOfTheMagicIsNotLookedAt) {
    Bytes bytes = bytesOf(fullScene());
    bytes[14] = 'x';
    expectFullScene(loadBytes(bytes));
}

TEST_F(RveLoaderTest, NamesOfTheGreatestLengthAreKept) {
    const std::string longest(255, 'n');
    const std::string longTexture(255, 't');
    RveScene scene{{texturedMaterial(longest, longTexture)}, rootOver({})};
    scene.materials[0].shader = longest;
    scene.root.children = {squareMesh(longest, longest)};
    loadScene(scene);
    EXPECT_EQ(meshNamed(longest)->getMaterial(), RVMATERIAL::findByName(longest.c_str()));
    EXPECT_LOGGED("   [!] normal map not found for " + longTexture);
}

// --- Readers and memory

// The last line of a load that ran out of memory.
const std::set<std::string> memoryLines = {
    "   [!] Out of memory for file scene.rve @ RAVOLT::load",
    "   [!] Out of memory @ RVMESH::recursiveLoadZVE",
    "   [!] Consistency error: mesh == NULL @ RVMESH::load",
    "   [!] Consistency error: node == NULL @ RVNODE::load",
    "   [!] Consistency error: light == NULL @ RVLIGHT::load",
};

// Each allocation in turn gives out; afterwards all is as before, and one line says why.
TEST_F(RveLoaderTest, LoadWithoutMemoryLeavesNothing) {
    writePicture("wall_d.tga");
    writePicture("wall_n.tga");
    RveScene scene = fullScene();
    scene.materials.push_back(texturedMaterial("wall", "wall_d.tga"));
    writeFile("scene.rve", bytesOf(scene));
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    const unsigned int firstId = zlfNewId();
    releaseId(firstId);

    std::set<std::string> lastLines;
    for (unsigned int after = 0;; ++after) {
        const LogMark mark = logMark();
        recorder.failAllocation(1, after);
        RVNODE *root = RAVOLT::load("scene.rve");
        recorder.allocationsWork();
        if (root)
            break;
        SCOPED_TRACE(after);
        lastLines.insert(problemsSince(mark).back());
        ASSERT_EQ(RVNODE::getNumberOfNodes(), 0u);
        ASSERT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
        ASSERT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
        const unsigned int nextId = zlfNewId();
        releaseId(nextId);
        ASSERT_EQ(nextId, firstId);
        ASSERT_LT(after, 1000u);
    }
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 6u);
    EXPECT_EQ(lastLines, memoryLines);

    // A block that was refused counts as live for good; real leaks are the sanitizer's to find.
    RAVOLT::free();
    for (int left = finalMemoryRatio(); left > 0; --left)
        zlfFree(nullptr);
    ASSERT_TRUE(restart());
}

TEST_F(RveLoaderTest, NoNameNeedsNoMemory) {
    RAVOLT::setRVEPath(std::string(250, 'p').c_str());
    recorder.failAllocation(200, 0, 1);
    EXPECT_EQ(RAVOLT::load(nullptr), nullptr);
    recorder.allocationsWork();
    RAVOLT::setRVEPath(nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params or file not found @ RAVOLT::load\n");
}

TEST_F(RveLoaderTest, PipeIsNoFile) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string name = "/dev/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(RAVOLT::load(name.c_str()), nullptr);
    EXPECT_LOGGED("   [!] Invalid params or file not found @ RAVOLT::load");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(RveLoaderTest, FileThatGoesBeforeItIsOpenedIsNamed) {
    everyFileExists = true;
    EXPECT_EQ(RAVOLT::load("gone.rve"), nullptr);
    everyFileExists = false;
    EXPECT_LOGGED("   [!] Unable to open file gone.rve @ RAVOLT::load");
}

// The reader of a mesh body alone cannot know where its bytes end, but it keeps its own tables.
TEST_F(RveLoaderTest, MeshBodyWithATextOrTableTooLargeIsRefused) {
    Bytes body(4, 0);
    body.insert(body.end(), 300, 'x');
    body.resize(1000);
    long cursor = 0;
    EXPECT_EQ(RVMESH::load(reinterpret_cast<const char *>(body.data()), &cursor, false), nullptr);

    body.assign(1000, 0);
    const std::size_t weightsAt = 4 + 1 + 9 * 4 + 1 + 4 + 6 * 4 + 1 + 4 * 2;
    body[weightsAt] = 1;
    body[weightsAt + 2] = 101; // bones
    EXPECT_EQ(RVMESH::load(reinterpret_cast<const char *>(body.data()), &cursor, false), nullptr);
    EXPECT_EQ(cursor, 0);
    EXPECT_LOGGED_EXACTLY("   [!] Corrupted mesh @ RVMESH::load\n"
                          "   [!] Corrupted mesh @ RVMESH::load\n");

    body[weightsAt + 2] = 100;
    EXPECT_NE(RVMESH::load(reinterpret_cast<const char *>(body.data()), &cursor, false), nullptr);
    EXPECT_EQ(cursor, static_cast<long>(weightsAt + 4 + 100));
}

} // namespace
