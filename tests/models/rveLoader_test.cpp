// Scene files: trees, materials, textures and their names, and what remains of a load that fails.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"
#include "tests/support/missingFiles.h"
#include "tools/writers/tgaWriter.h"

#include <ctime>
#include <filesystem>
#include <set>

using namespace ravolt;
using namespace ravolt::test;

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

void writePicture(const fs::path &path) {
    const unsigned char pixels[4 * 3] = {};
    TgaPicture picture;
    picture.width = picture.height = 2;
    picture.pixels = pixels;
    if (path.has_parent_path())
        fs::create_directories(path.parent_path());
    ASSERT_TRUE(writeTga(path.string(), picture));
}

class RveLoaderTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        // The tests of one process share a folder.
        for (const char *picture : {"wall_d.tga", "wall_n.tga", "_n.tga"})
            fs::remove(picture);
    }

    void TearDown() override {
        RAVOLT::confineFilesOff();
        zlfSetConsoleEcho(true);
        RAVOLT::setRVEPath(nullptr);
        RVTEXTURE::setPath(nullptr);
        SilentEngineTest::TearDown();
    }
};

RveMaterial texturedMaterial(const std::string &name, const std::string &texture) {
    RveMaterial material = materialNamed(name);
    material.texture = texture;
    return material;
}

RveScene sceneWith(const RveMaterial &material) { return {{material}, rootOver({})}; }

// Loads a scene of a new material with this texture.
const RVMATERIAL &loadMaterial(const std::string &texture) {
    static unsigned int number = 0;
    const std::string name = "material " + std::to_string(number++);
    loadScene(sceneWith(texturedMaterial(name, texture)));
    const RVMATERIAL *material = RVMATERIAL::findByName(name.c_str());
    EXPECT_NE(material, nullptr);
    return *material;
}

// "unread" for a texture that still has its default name.
std::string textureName(const RVMATERIAL &material, unsigned int slot) {
    RVTEXTURE *texture = material.getTexture(slot);
    const std::string name = texture ? texture->getFilename() : "none";
    return name.starts_with("[texture ") ? "unread" : name;
}

// One of each kind, three levels deep, with a skin.
RveScene fullScene() {
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    light.position = {1, 2, 3};
    light.light = {RveLightType::spot, {0, -1, 0.5f}, 30.0f, {1.0f, 0.5f, 0.25f}};
    RveNode square = placed(squareMesh("square", "stone"), {1, 2, 3}, {10, 20, 30});
    square.origin = {-1, -2, -3};
    square.mesh.hidden = true;
    square.mesh.skin = {1, {0, 1, 1, 0}, {1, 0.5f, 0.25f, 1}, {"first bone", "second bone"}};
    RveNode group = placed(nodeNamed("group", {square, light}), {4, 5, 6});
    group.auxId = 0x12345678;
    group.origin = {7, 8, 9};
    RveMaterial stone = materialNamed("stone");
    stone.ambient = {0.1f, 0.2f, 0.3f, 0.4f};
    stone.diffuse = {0.5f, 0.6f, 0.7f, 0.8f};
    stone.specular = {0.9f, 0.8f, 0.7f, 0.6f};
    stone.selfIllumination = {0.4f, 0.3f, 0.2f, 0.1f};
    stone.shininess = 32.0f;
    return {{stone},
            rootOver({group,
                      emptyMesh("first bone", {0, 1, 0}, {emptyMesh("second bone", {0, 2, 0})})})};
}

void expectFullScene(RVNODE *root) {
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->getName(), "[root]");
    EXPECT_EQ(root->getType(), RV_NODE_TYPE_MESH);
    EXPECT_TRUE(root->isRoot());
    ASSERT_EQ(root->getNumberOfChildren(), 2u);
    EXPECT_STREQ(root->getChild(1)->getName(), "first bone");
    EXPECT_STREQ(root->getChild(1)->getChild(0)->getName(), "second bone");

    RVNODE *group = root->getChild(0);
    EXPECT_STREQ(group->getName(), "group");
    EXPECT_EQ(group->getType(), RV_NODE_TYPE_NODE);
    EXPECT_EQ(group->getAuxId(), 0x12345678u);
    EXPECT_EQ(group->getParent(), root);
    expectNear(group->getPosition(), {4, 5, 6}, 0);
    expectNear(group->getOrigin(), {7, 8, 9}, 0);
    ASSERT_EQ(group->getNumberOfChildren(), 2u);

    RVMESH *square = static_cast<RVMESH *>(group->getChild(0));
    EXPECT_STREQ(square->getName(), "square");
    EXPECT_EQ(square->getParent(), group);
    expectNear(square->getPosition(), {1, 2, 3}, 0);
    expectNear(square->getRotation(), {10, 20, 30}, 0);
    expectNear(square->getOrigin(), {-1, -2, -3}, 0);
    EXPECT_EQ(square->getRadius(), 1.5f);
    expectNear(square->getMinimum(), {-1, -1, 0}, 0);
    expectNear(square->getMaximum(), {1, 1, 0}, 0);
    EXPECT_TRUE(square->isHidden());
    EXPECT_TRUE(square->isSkinned());
    EXPECT_EQ(square->getNumberOfBones(), 2);
    ASSERT_EQ(square->getNumberOfVertices(), 4u);
    ASSERT_EQ(square->getNumberOfUVs(), 4u);
    ASSERT_EQ(square->getNumberOfFaces(), 2u);
    expectNear(square->getVertexPtr()[2], {1, 1, 0}, 0);
    expectNear(square->getVertexNormalPtr()[3], {0, 0, 1}, 0);
    EXPECT_EQ(square->getUVPtr()[1].x, 1.0f);
    EXPECT_EQ(square->getFacePtr()[1].vertex[1], 2);
    expectNear(square->getFaceNormalPtr()[1], {0, 0, 1}, 0);
    EXPECT_EQ(square->getMaterial(), RVMATERIAL::findByName("stone"));

    RVLIGHT *light = static_cast<RVLIGHT *>(group->getChild(1));
    EXPECT_STREQ(light->getName(), "lamp");
    EXPECT_EQ(light->getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_SPOT);
    expectNear(light->getPosition(), {1, 2, 3}, 0);
    expectNear(light->getTarget(), {1, 1, 3.5f}, 0);
    expectNear(light->getDirection(), {0, -1, 0.5f}, 0);
    EXPECT_EQ(light->getCutOff(), 30.0f);
    expectNear(light->getAmbient(), {1.0f / 5.0f, 0.5f / 5.0f, 0.25f / 5.0f, 1.0f}, 0);
    expectNear(light->getDiffuse(), {1.0f, 0.5f, 0.25f, 1.0f}, 0);
    expectNear(light->getSpecular(), {1.0f / 10.0f, 0.5f / 10.0f, 0.25f / 10.0f, 1.0f}, 0);
}

TEST_F(RveLoaderTest, TreeMaterialsAndGeometryComeFromTheFile) {
    expectFullScene(loadScene(fullScene()));
    RVMATERIAL *stone = RVMATERIAL::findByName("stone");
    ASSERT_NE(stone, nullptr);
    expectNear(stone->getAmbient(), {0.1f, 0.2f, 0.3f, 0.4f}, 0);
    expectNear(stone->getDiffuse(), {0.5f, 0.6f, 0.7f, 0.8f}, 0);
    expectNear(stone->getSpecular(), {0.9f, 0.8f, 0.7f, 0.6f}, 0);
    expectNear(stone->getEmission(), {0.4f, 0.3f, 0.2f, 0.1f}, 0);
    EXPECT_EQ(stone->getTransparency(), 1.0f);
    EXPECT_EQ(stone->getShininess(), 32.0f);
    EXPECT_EQ(stone->getShader(), nullptr);
    EXPECT_EQ(stone->getReferences(), 1);
    EXPECT_TRUE(stone->isSkinned());
}

TEST_F(RveLoaderTest, ObsoleteFormatGivesTheSameTreeAndDoesNotAffectTheNextLoad) {
    expectFullScene(loadScene(fullScene(), RveVersion::v15a));
    EXPECT_LOGGED("   [!] Obsolete RVE file format detected: re-export your model with 1.6a");
    EXPECT_LOGGED("   Header: RVE file v1.5a");
    RVNODE::cleanUp();
    expectFullScene(loadScene(fullScene()));
}

TEST_F(RveLoaderTest, BytesAfterTheRootAndTheTerminatorOfTheMagicAreIgnored) {
    Bytes bytes = bytesOf(fullScene());
    bytes.insert(bytes.end(), 1000, 0xff);
    bytes[14] = 'x';
    expectFullScene(loadBytes(bytes));
}

TEST_F(RveLoaderTest, LoadIsLoggedLineByLine) {
    RVNODE *root = loadScene(RveScene{{materialNamed("stone")}, rootOver({nodeNamed("arm")})});
    EXPECT_LOGGED_EXACTLY("\n   Loading RVE file 'scene.rve'...\n"
                          "   Header: RVE file v1.6a\n"
                          "   File .RVE loaded (2 nodes)\n"
                          "   Tree for [root]:\n   + [root] [id: " +
                          std::to_string(root->getId()) + "]\n     + arm [id: " +
                          std::to_string(root->getChild(0)->getId()) + "]\n\n");
}

// --- Materials

TEST_F(RveLoaderTest, MeshesFindTheirMaterialsByName) {
    const std::string noMaterials = "   [!] Warning: no material found in file scene.rve";
    const std::string notAssigned = "   [!] no material assigned to mesh 'square'";
    const std::string longName(255, 'n');
    const struct {
        const char *what;
        std::vector<RveMaterial> materials;
        std::string ofMesh, found;
        Lines problems;
    } rows[] = {
        {"no materials", {}, "[none]", "", {noMaterials, notAssigned}},
        {"an unknown one",
         {},
         "marble",
         "",
         {noMaterials, "   [!] material 'marble' not found for mesh 'square'"}},
        {"an empty name", {materialNamed("stone")}, "", "", {}},
        {"the longest name", {materialNamed(longName)}, longName, longName, {}},
        {"one called none", {materialNamed("[none]")}, "[none]", "[none]", {notAssigned}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const LogMark mark = logMark();
        loadScene(RveScene{row.materials, rootOver({squareMesh("square", row.ofMesh)})});
        EXPECT_EQ(problemsSince(mark), row.problems);
        EXPECT_EQ(meshNamed("square")->getMaterial(),
                  row.found.empty() ? nullptr : RVMATERIAL::findByName(row.found.c_str()));
        RVNODE::cleanUp();
    }
    const LogMark mark = logMark();
    loadScene(sceneWith(materialNamed("stone"))); // the root may have none
    EXPECT_EQ(problemsSince(mark), Lines{});
}

TEST_F(RveLoaderTest, SecondLoadSharesMaterialsByNameAndMakesASecondTree) {
    RVNODE *first = loadScene(fullScene());
    RVMATERIAL *stone = RVMATERIAL::findByName("stone");
    stone->setShininess(5.0f);
    EXPECT_NE(first, loadScene(fullScene()));
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 12u);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
    EXPECT_EQ(stone->getReferences(), 2);
    EXPECT_EQ(stone->getShininess(), 5.0f);
}

TEST_F(RveLoaderTest, OldestOfSeveralMaterialsOfOneNameIsUsed) {
    loadScene({{materialNamed("glass"), materialNamed("glass", 0.5f)}, rootOver({})});
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
    EXPECT_EQ(RVMATERIAL::findByName("glass")->getTransparency(), 1.0f);

    RVMATERIAL *oldest = new RVMATERIAL, *second = new RVMATERIAL;
    for (RVMATERIAL *material : {oldest, second})
        material->setName("stone");
    loadScene(RveScene{{materialNamed("stone"), materialNamed("new")},
                       rootOver({squareMesh("a", "stone"), squareMesh("b", "new")})});
    EXPECT_EQ(meshNamed("a")->getMaterial(), oldest);
    EXPECT_EQ(meshNamed("b")->getMaterial(), RVMATERIAL::findByName("new"));
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 4u);
}

// --- Bones

TEST_F(RveLoaderTest, BonesOfASecondTreeAreItsOwn) {
    RveScene scene = fullScene();
    loadScene(scene);
    const LogMark mark = logMark();
    scene.root.children.pop_back(); // those of the first tree are not used
    loadScene(scene);
    EXPECT_EQ(problemsSince(mark),
              (Lines{"   Building bones for square...    [!] Bone first bone not found @ "
                     "RVMESH::recursiveLoadZVE",
                     "   [!] Bone second bone not found @ RVMESH::recursiveLoadZVE"}));
    EXPECT_LOGGED("done");
}

// As a walk from the root finds it: depth first, parents before children.
TEST_F(RveLoaderTest, FirstOfTwoNodesOfOneNameIsTheBone) {
    RVNODE *root = loadScene({nodeNamed("arm", {emptyMesh("bone", {0, 0, 3})}),
                              skinnedSquare("square", {"bone"}), emptyMesh("bone", {0, 0, 5})});
    root->getChild(0)->getChild(0)->setPosition(5, 0, 3);
    RVMESH::showNormals();
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    RVMESH::hideNormals();
    EXPECT_TRUE(calls.contains(Call{"glVertex3f", 4, -1, 0}));
}

// Nearly all of the time is spent in finding each name.
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

// --- Textures

TEST_F(RveLoaderTest, TextureAndNormalMapFillTheFirstTwoSlots) {
    const auto unopened = [](const std::string &name) {
        return "   [!] Unable to open file " + name + " @ RVTEXTURE::loadTGA";
    };
    const auto noNormalMap = [](const std::string &name) {
        return "   [!] normal map not found for " + name;
    };
    const std::string longName(255, 't');
    const struct {
        Lines files;
        std::string texture, slot0, slot1;
        Lines problems;
    } rows[] = {
        {{"wall_d.tga", "wall_n.tga"}, "wall_d.tga", "wall_d.tga", "wall_n.tga", {}},
        {{"a_d.tga"}, "a_d.tga", "a_d.tga", "none", {noNormalMap("a_d.tga")}},
        {{"_n.tga"}, "[none]", "none", "none", {}},
        // A file that cannot be read is used all the same.
        {{}, "gone_d.tga", "unread", "none", {unopened("gone_d.tga"), noNormalMap("gone_d.tga")}},
        {{}, "", "unread", "none", {unopened(""), noNormalMap("")}},
        {{}, longName, "unread", "none", {unopened(longName), noNormalMap(longName)}},
        // A short name is cut to the suffix alone.
        {{"_n.tga"}, "x", "unread", "_n.tga", {unopened("x")}},
        {{"_n.tga"}, "a.tga", "unread", "_n.tga", {unopened("a.tga")}},
        {{"_n.tga"}, "sixsix", "unread", "_n.tga", {unopened("sixsix")}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.texture);
        for (const std::string &file : row.files)
            writePicture(file);
        const LogMark mark = markLog();
        const RVMATERIAL &material = loadMaterial(row.texture);
        EXPECT_EQ(textureName(material, 0), row.slot0);
        EXPECT_EQ(textureName(material, 1), row.slot1);
        EXPECT_EQ(problemsSince(mark), row.problems);
        EXPECT_LOGGED_TIMES(row.slot1 == "none" ? 0 : 1, "   normal map: " + row.slot1);
        for (const std::string &file : row.files)
            fs::remove(file);
    }
}

TEST_F(RveLoaderTest, TexturesAreSharedByFileName) {
    writePicture("wall_d.tga");
    writePicture("wall_n.tga");
    const unsigned int before = RVTEXTURE::getNumberOfTextures();
    RVTEXTURE *texture = loadMaterial("wall_d.tga").getTexture(0);
    EXPECT_EQ(texture->getReferences(), 1);
    EXPECT_EQ(texture, loadMaterial("wall_d.tga").getTexture(0));
    EXPECT_EQ(texture->getReferences(), 2);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before + 2);
}

TEST_F(RveLoaderTest, NormalMapIsSearchedWithoutTheTexturePath) {
    writePicture("pictures/wall_d.tga");
    writePicture("pictures/wall_n.tga");
    RVTEXTURE::setPath("pictures/");
    EXPECT_EQ(textureName(loadMaterial("wall_d.tga"), 1), "none");
    EXPECT_LOGGED("   [!] normal map not found for wall_d.tga");
    writePicture("wall_n.tga");
    EXPECT_EQ(textureName(loadMaterial("wall_d.tga"), 1), "wall_n.tga");
    EXPECT_LOGGED("   normal map: wall_n.tga");
}

TEST_F(RveLoaderTest, TexturesOfAKnownMaterialAreLoadedButNotUsed) {
    loadScene(sceneWith(materialNamed("wall")));
    writePicture("wall_d.tga");
    loadScene(sceneWith(texturedMaterial("wall", "wall_d.tga")));
    EXPECT_NE(RVTEXTURE::findByFilename("wall_d.tga"), nullptr);
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
}

// --- Names that leave their path

class RveConfinementTest : public RveLoaderTest {
  protected:
    void SetUp() override {
        RveLoaderTest::SetUp();
        writePicture("outside_d.tga");
        writePicture("inside/wall_d.tga");
        RVTEXTURE::setPath("inside/");
    }

    static std::string refused(const std::string &name) {
        return "   [!] File name " + name + " leaves its path: refused @ RAVOLT::load";
    }
};

TEST_F(RveConfinementTest, OnlyConfinedNamesMustStayBelowThePath) {
    writePicture("inside/..a/b..tga");
    writePicture("inside/.../wall_d.tga");
    writePicture("deep/outside_n.tga");
    EXPECT_FALSE(RAVOLT::isConfiningFiles());
    const RVTEXTURE *unconfined = loadMaterial("../outside_d.tga").getTexture(0);
    ASSERT_NE(unconfined, nullptr);
    EXPECT_EQ(unconfined->getSizeX(), 2u) << "its file was read";
    EXPECT_NOT_LOGGED(refused("../outside_d.tga"));

    RAVOLT::confineFilesOn();
    EXPECT_TRUE(RAVOLT::isConfiningFiles());
    const struct {
        std::string name;
        bool stays;
    } rows[] = {
        {"wall_d.tga", true},
        {"./wall_d.tga", true},
        {"..a/b..tga", true},
        {".../wall_d.tga", true},
        {"..a//b..tga", true},
        {"../outside_d.tga", false}, // registered above
        {"../other_d.tga", false},
        {fs::absolute("outside_d.tga").string(), false},
        {"a/../../outside_d.tga", false},
        {"..", false},
        {"a/..", false},
        {"..\\outside_d.tga", false},
        {"\\outside_d.tga", false},
        {"C:outside_d.tga", false},
        {"deep/../deep/outside_d.tga", false}, // with a normal map
    };
    for (const auto &[name, stays] : rows) {
        SCOPED_TRACE(name);
        const unsigned int before = RVTEXTURE::getNumberOfTextures();
        markLog();
        const RVMATERIAL &material = loadMaterial(name);
        const RVTEXTURE *texture = material.getTexture(0);
        EXPECT_EQ(texture != nullptr, stays);
        EXPECT_EQ(texture ? texture->getSizeX() : 0, stays ? 2u : 0u);
        EXPECT_EQ(material.getTexture(1), nullptr);
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), before + stays);
        EXPECT_LOGGED_TIMES(stays ? 0 : 1, refused(name));
        EXPECT_NOT_LOGGED("   normal map: deep/../deep/outside_n.tga");
    }
}

TEST_F(RveConfinementTest, ProgramsAreConfinedAndTheNameOfTheSceneIsNot) {
    RveScene scene = sceneWith(texturedMaterial("wall", "wall_d.tga"));
    scene.materials[0].shader = "../glow";
    RAVOLT::setRVEPath("inside/");
    RAVOLT::confineFilesOn();
    const unsigned int before = RVSHADER::getNumberOfShaders();
    writeFile("scene.rve", bytesOf(scene));
    EXPECT_NE(RAVOLT::load("../scene.rve"), nullptr);
    EXPECT_LOGGED("   Loading RVE file 'inside/../scene.rve'...");
    EXPECT_NE(RVMATERIAL::findByName("wall")->getTexture(0), nullptr);
    EXPECT_EQ(RVMATERIAL::findByName("wall")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), before);
    EXPECT_LOGGED_TIMES(1, refused("../glow"));

    scene.materials[0].name = "second wall";
    writeFile("scene.rve", bytesOf(scene));
    RAVOLT::confineFilesOff();
    EXPECT_NE(RAVOLT::load("../scene.rve"), nullptr);
    EXPECT_NE(RVMATERIAL::findByName("second wall")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), before + 1);
}

// --- Files

TEST_F(RveLoaderTest, NamesWithoutAFileAreRefused) {
    const LoadTraces before;
    expectNamesWithoutAFileAreRefused(
        {"   [!] Invalid params or file not found @ RAVOLT::load\n",
         "   [!] Out of memory for file %s @ RAVOLT::load\n",
         [](const char *name) { return RAVOLT::load(name) != nullptr; }, RAVOLT::setRVEPath,
         "\n   Loading RVE file 'folder/missing'...\n"
         "   [!] Unable to open file folder/missing @ RAVOLT::load\n"});
    EXPECT_TRUE(before == LoadTraces());
}

TEST_F(RveLoaderTest, NamesWithXmlAnywhereAreThoseOfInterfaces) {
    for (const char *name : {"scene.xml", "scene.xml.rve", "SCENE.XML"}) {
        writeFile(name, bytesOf({{}, rootOver({})}));
        EXPECT_EQ(RAVOLT::load(name), nullptr) << name;
        EXPECT_LOGGED("   [!] Unable to open file " + std::string(name) + " @ RAVOLT::loadXML");
    }
    writeFile("scene.Xml", bytesOf({{}, rootOver({})}));
    EXPECT_NE(RAVOLT::load("scene.Xml"), nullptr);
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

// Each allocation in turn fails; then everything is as before, and one line has the reason.
TEST_F(RveLoaderTest, LoadWithoutMemoryChangesNothing) {
    writePicture("wall_d.tga");
    writePicture("wall_n.tga");
    RveScene scene = fullScene();
    scene.materials.push_back(texturedMaterial("wall", "wall_d.tga"));
    scene.materials.back().shader = "own"; // a program without files
    writeFile("scene.rve", bytesOf(scene));
    const LoadTraces before;
    const unsigned int programs = RVSHADER::getNumberOfShaders();

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
        ASSERT_TRUE(before == LoadTraces());
        ASSERT_EQ(RVSHADER::getNumberOfShaders(), programs);
        ASSERT_LT(after, 1000u);
    }
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), programs + 1);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 6u);
    EXPECT_EQ(lastLines, memoryLines);

    // A block that was refused counts as live for good; real leaks are found by the sanitizer.
    RAVOLT::free();
    for (int left = finalMemoryRatio(); left > 0; --left)
        zlfFree(nullptr);
    ASSERT_TRUE(restart());
}

// The reader of a mesh body alone cannot know where its bytes end, but it checks its own tables.
TEST_F(RveLoaderTest, MeshBodyWithATextOrTableTooLargeIsRefused) {
    long cursor = 0;
    const auto load = [&cursor](const Bytes &body) {
        return RVMESH::load(reinterpret_cast<const char *>(body.data()), &cursor, false);
    };
    Bytes body(1000, 0);
    std::fill_n(body.begin() + 4, 300, 'x');
    EXPECT_EQ(load(body), nullptr);

    body.assign(1000, 0);
    const std::size_t weightsAt = 4 + 1 + 9 * 4 + 1 + 4 + 6 * 4 + 1 + 4 * 2;
    body[weightsAt] = 1;
    body[weightsAt + 2] = 101; // bones
    EXPECT_EQ(load(body), nullptr);
    EXPECT_EQ(cursor, 0);
    EXPECT_LOGGED_EXACTLY("   [!] Corrupted mesh @ RVMESH::load\n"
                          "   [!] Corrupted mesh @ RVMESH::load\n");

    body[weightsAt + 2] = 100;
    EXPECT_NE(load(body), nullptr);
    EXPECT_EQ(cursor, static_cast<long>(weightsAt + 4 + 100));
}

} // namespace
