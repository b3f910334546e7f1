#include "ravolt/RAVOLT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/shortReads.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr char corrupted[] = "   [!] Corrupted file scene.rve @ RAVOLT::load";
constexpr char invalidHeader[] = "   [!] Invalid header in file scene.rve @ RAVOLT::load";
constexpr char unknownKind[] = "   [!] Unknow type @ RAVOLT::recursiveLoad";
constexpr char obsoleteFormat[] =
    "   [!] Obsolete RVE file format detected: re-export your model with 1.6a";

// Offsets in the files of the tests below.
constexpr std::size_t numberOfMaterialsAt = 15;
constexpr std::size_t rootAt = 17; // in a file without materials

// What a load could leave behind.
struct Traces {
    unsigned int nodes = RVNODE::getNumberOfNodes();
    unsigned int materials = RVMATERIAL::getNumberOfMaterials();
    unsigned int textures = RVTEXTURE::getNumberOfTextures();
    unsigned int nextId = [] {
        const unsigned int id = zlfNewId();
        releaseId(id);
        return id;
    }();
    friend bool operator==(const Traces &, const Traces &) = default;
};

class RveBadInputTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        zlfSetConsoleEcho(false);
    }
    void TearDown() override {
        zlfSetConsoleEcho(true);
        SilentEngineTest::TearDown();
    }

    // The file is refused whole, with this line alone.
    void expectRefused(const Bytes &bytes, const std::string &line) {
        const Traces before;
        const LogMark mark = logMark();
        EXPECT_EQ(loadBytes(bytes), nullptr);
        std::vector<std::string> problems = problemsSince(mark);
        if (!problems.empty() && problems[0] == obsoleteFormat)
            problems.erase(problems.begin());
        EXPECT_EQ(problems, std::vector<std::string>{line});
        EXPECT_TRUE(before == Traces());
    }

    // The file is refused whole with one of the reader's lines, or loads; nothing in between.
    // Returns whether it loaded; what it loaded is gone again.
    bool expectRefusedOrLoaded(const Bytes &bytes) {
        const Traces before;
        const LogMark mark = logMark();
        if (loadBytes(bytes)) {
            takeBack();
            return true;
        }
        const std::vector<std::string> problems = problemsSince(mark);
        EXPECT_EQ(problems.size(), 1u);
        for (const std::string &line : problems)
            EXPECT_TRUE(line == corrupted || line == invalidHeader || line == unknownKind) << line;
        EXPECT_TRUE(before == Traces());
        return false;
    }

    // Textures without a user go as well, the engine's own targets stay.
    static void takeBack() {
        RVNODE::cleanUp();
        while (RVMATERIAL *material = RVMATERIAL::getFirst()) {
            for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot)
                if (RVTEXTURE *texture = material->getTexture(slot)) {
                    material->setTexture(slot, nullptr);
                    if (texture->getReferences() < 1)
                        delete texture;
                }
            delete material;
        }
    }
};

// One of each kind of record, with a skin, of about a thousand bytes.
RveScene sampleScene() {
    RveNode skinned = squareMesh("skinned", "stone");
    skinned.mesh.skin.weightsPerVertex = 2;
    skinned.mesh.skin.boneIndices = {0, 1, 1, 0, 0, 1, 1, 0};
    skinned.mesh.skin.boneWeights = {0.5f, 0.5f, 0.5f, 0.5f, 1, 0, 1, 0};
    skinned.mesh.skin.bones = {"left", "right"};
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    RveScene scene{{materialNamed("stone"), materialNamed("glass", 0.5f)},
                   rootOver({nodeNamed("group", {skinned, light}), emptyMesh("left"),
                             emptyMesh("right"), squareMesh("plain", "glass")})};
    scene.materials[0].texture = "stone_d.tga";
    return scene;
}

void putCount(Bytes &bytes, std::size_t at, unsigned int count) {
    bytes[at] = static_cast<unsigned char>(count);
    bytes[at + 1] = static_cast<unsigned char>(count >> 8);
}

// Where `text` with its terminator stands.
std::size_t find(const Bytes &bytes, const std::string &text) {
    const auto at =
        std::search(bytes.begin(), bytes.end(), text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_NE(at, bytes.end()) << text;
    return static_cast<std::size_t>(at - bytes.begin());
}

// Where the five counts of the mesh start, whose material is "[none]".
std::size_t countsOf(const Bytes &bytes, const std::string &name) {
    return find(bytes, name) + name.size() + 1 + 9 * 4 + sizeof("[none]") + 4 + 6 * 4 + 1;
}

enum Count { vertices = 0, uvs = 2, faces = 4, children = 6, weights = 8 };

Bytes headerWith(unsigned int numberOfMaterials) {
    const char magic[] = "RVE file v1.6a";
    Bytes bytes(magic, magic + sizeof(magic));
    bytes.resize(rootAt);
    putCount(bytes, numberOfMaterialsAt, numberOfMaterials);
    return bytes;
}

// A chain of plain nodes without names, written by hand: the writer refuses deep ones.
Bytes chainOf(unsigned int levels) {
    Bytes bytes = headerWith(0);
    for (unsigned int level = 1; level <= levels; ++level) {
        bytes.insert(bytes.end(), 1 + 4 + 1 + 6 * 4, 0);
        bytes.push_back(level < levels);
        bytes.push_back(0);
    }
    return bytes;
}

TEST_F(RveBadInputTest, FileCutOffAnywhereIsRefused) {
    for (RveVersion version : {RveVersion::v16a, RveVersion::v15a}) {
        const Bytes whole = bytesOf(sampleScene(), version);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            SCOPED_TRACE(size);
            expectRefused(Bytes(whole.begin(), whole.begin() + static_cast<long>(size)),
                          size < 14 ? invalidHeader : corrupted);
            if (HasFailure())
                return;
        }
        ASSERT_NE(loadBytes(whole), nullptr);
        takeBack();
    }
}

TEST_F(RveBadInputTest, ByteSetToExtremesIsRefusedOrLoadsWhole) {
    const Bytes whole = bytesOf(sampleScene());
    unsigned int loaded = 0, refused = 0;
    for (std::size_t at = 0; at < std::min<std::size_t>(whole.size(), 4096); ++at)
        for (unsigned char value : {0, 1, 127, 128, 255}) {
            SCOPED_TRACE(testing::Message() << "byte " << at << " = " << int{value});
            Bytes bytes = whole;
            bytes[at] = value;
            ++(expectRefusedOrLoaded(bytes) ? loaded : refused);
            if (HasFailure())
                return;
        }
    EXPECT_GT(loaded, 1000u);
    EXPECT_GT(refused, 100u);
}

TEST_F(RveBadInputTest, MeshCountsBeyondTheFileAreRefused) {
    RveScene scene{{}, rootOver({squareMesh("square")})};
    const Bytes whole = bytesOf(scene);
    const std::size_t counts = countsOf(whole, "square");
    ASSERT_EQ(whole[counts], 4);
    for (Count count : {vertices, uvs, faces, children, weights})
        for (unsigned int value : {0x7fffu, 0x8000u, 0xffffu}) {
            SCOPED_TRACE(testing::Message() << "count " << count << " = " << value);
            Bytes bytes = whole;
            putCount(bytes, counts + count, value);
            expectRefused(bytes, corrupted);
        }
}

TEST_F(RveBadInputTest, LargestCountsLoadWhenTheFileHasThem) {
    RveNode mesh = emptyMesh("large");
    mesh.mesh.vertices.assign(65535, {1, 2, 3});
    mesh.mesh.normals.assign(65535, {0, 0, 1});
    mesh.mesh.uvs.assign(65535, {0.5f, 0.25f});
    mesh.mesh.faces.assign(65535, {65534, 0, 65533});
    mesh.mesh.faceNormals.assign(65535, {0, 1, 0});
    loadScene({mesh});
    const RVMESH *large = meshNamed("large");
    EXPECT_EQ(large->getNumberOfVertices(), 65535u);
    EXPECT_EQ(large->getVertexPtr()[65534].z, 3.0f);
    EXPECT_EQ(large->getUVPtr()[65534].x, 0.5f);
    EXPECT_EQ(large->getFacePtr()[65534].vertex[0], 65534);
    EXPECT_EQ(large->getFaceNormalPtr()[65534].y, 1.0f);
}

TEST_F(RveBadInputTest, ChildCountsBeyondTheFileAreRefused) {
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    for (const RveNode &leaf : {nodeNamed("arm"), light}) {
        Bytes bytes = bytesOf({{}, rootOver({leaf})});
        putCount(bytes, bytes.size() - 2, 1);
        expectRefused(bytes, corrupted);
        putCount(bytes, bytes.size() - 2, 0xffff);
        expectRefused(bytes, corrupted);
    }
}

TEST_F(RveBadInputTest, MaterialCountBeyondTheFileIsRefused) {
    Bytes bytes = bytesOf(sampleScene());
    for (unsigned int value : {0x7fffu, 0xffffu}) {
        putCount(bytes, numberOfMaterialsAt, value);
        expectRefused(bytes, corrupted);
    }
}

TEST_F(RveBadInputTest, FaceIndexMustLieBelowTheVertices) {
    RveNode square = squareMesh("square");
    square.mesh.uvs.clear();
    for (std::uint16_t index : {4, 255, 65535}) {
        SCOPED_TRACE(index);
        Bytes bytes = bytesOf({{}, rootOver({square})});
        const std::size_t facesAt = countsOf(bytes, "square") + 10 + 4 * 24;
        putCount(bytes, facesAt + 5 * 2, 3);
        ASSERT_NE(loadBytes(bytes), nullptr);
        takeBack();
        putCount(bytes, facesAt + 5 * 2, index);
        expectRefused(bytes, corrupted);
    }
}

TEST_F(RveBadInputTest, FaceIndexMustLieBelowTheTextureCoordinatesToo) {
    Bytes bytes = bytesOf({{}, rootOver({squareMesh("square")})});
    const std::size_t counts = countsOf(bytes, "square");
    putCount(bytes, counts + uvs, 3);
    const auto lastUv = bytes.begin() + static_cast<long>(counts + 10 + 4 * 24 + 3 * 8);
    bytes.erase(lastUv, lastUv + 8);
    expectRefused(bytes, corrupted);
}

TEST_F(RveBadInputTest, FacesWithoutVerticesAreRefused) {
    Bytes bytes = bytesOf({{}, rootOver({emptyMesh("empty")})});
    putCount(bytes, countsOf(bytes, "empty") + faces, 1);
    bytes.insert(bytes.end(), 18, 0);
    expectRefused(bytes, corrupted);
}

class SkinnedBadInputTest : public RveBadInputTest {
  protected:
    void SetUp() override {
        RveBadInputTest::SetUp();
        square = squareMesh("square");
        square.mesh.skin.weightsPerVertex = 1;
        square.mesh.skin.boneIndices.assign(4, 0);
        square.mesh.skin.boneWeights.assign(4, 1.0f);
        square.mesh.skin.bones = {"bone"};
    }

    // The file of the mesh, and where its skin starts.
    Bytes file() {
        const Bytes bytes = bytesOf({{}, rootOver({square})});
        skinAt = countsOf(bytes, "square") + 10 + 4 * 24 + 4 * 8 + 2 * 18;
        return bytes;
    }

    RveNode square;
    std::size_t skinAt = 0;
};

TEST_F(SkinnedBadInputTest, BoneIndexMustLieBelowTheBones) {
    const Bytes whole = file();
    ASSERT_NE(loadBytes(whole), nullptr);
    takeBack();
    for (unsigned char index : {1, 99, 255})
        for (std::size_t vertex : {0, 3}) {
            Bytes bytes = whole;
            bytes[skinAt + vertex] = index;
            expectRefused(bytes, corrupted);
        }
}

TEST_F(SkinnedBadInputTest, AHundredBonesLoadAndMoreAreRefused) {
    square.mesh.skin.bones.assign(100, "bone");
    Bytes bytes = file();
    ASSERT_NE(loadBytes(bytes), nullptr);
    EXPECT_EQ(meshNamed("square")->getNumberOfBones(), 100);
    takeBack();

    const std::size_t bonesAt = skinAt + 4 + 4 * 4;
    putCount(bytes, bonesAt, 101);
    bytes.insert(bytes.end(), {'b', 'o', 'n', 'e', 0});
    expectRefused(bytes, corrupted);
    putCount(bytes, bonesAt, 0xffff);
    expectRefused(bytes, corrupted);
}

TEST_F(SkinnedBadInputTest, WeightsWithoutBonesAreRefused) {
    Bytes bytes = file();
    putCount(bytes, skinAt + 4 + 4 * 4, 0);
    expectRefused(bytes, corrupted);
}

TEST_F(SkinnedBadInputTest, LongBoneNameIsRefused) {
    square.mesh.skin.bones = {std::string(255, 'b')};
    Bytes bytes = file();
    ASSERT_NE(loadBytes(bytes), nullptr);
    takeBack();
    bytes.insert(bytes.end() - 1, 'b');
    expectRefused(bytes, corrupted);
}

TEST_F(SkinnedBadInputTest, SkinOfAMeshWithoutVerticesLoads) {
    RveNode empty = emptyMesh("empty");
    empty.mesh.skin.weightsPerVertex = 4;
    empty.mesh.skin.bones = {"bone"};
    loadScene({empty});
    EXPECT_TRUE(meshNamed("empty")->isSkinned());
    EXPECT_TRUE(meshNamed("empty")->animate(0));
}

TEST_F(RveBadInputTest, UnknownKindsAreRefused) {
    const Bytes whole = bytesOf({{}, rootOver({nodeNamed("arm")})});
    const std::size_t childAt = find(whole, "arm") - 4 - 1;
    for (std::size_t at : {rootAt, childAt})
        for (unsigned char kind : {3, 4, 127, 128, 255}) {
            Bytes bytes = whole;
            bytes[at] = kind;
            expectRefused(bytes, unknownKind);
        }
}

TEST_F(RveBadInputTest, LongNamesAreRefusedWhereverTheyStand) {
    RveScene scene = sampleScene();
    const char *const names[] = {"stone", "stone_d.tga", "lamp", "group", "skinned", "glass"};
    for (const char *name : names) {
        SCOPED_TRACE(name);
        Bytes bytes = bytesOf(scene);
        bytes.insert(bytes.begin() + static_cast<long>(find(bytes, name)), 256 - std::strlen(name),
                     'x');
        expectRefused(bytes, corrupted);
    }
}

TEST_F(RveBadInputTest, NameThatNeverEndsIsRefused) {
    Bytes bytes = headerWith(0);
    bytes.insert(bytes.end(), 1 + 4, 0);
    bytes.insert(bytes.end(), 100, 'x');
    expectRefused(bytes, corrupted);
    bytes.insert(bytes.end(), 100000, 'x');
    expectRefused(bytes, corrupted);
}

TEST_F(RveBadInputTest, ForeignFilesHaveAnInvalidHeader) {
    expectRefused({}, invalidHeader);
    expectRefused({'R'}, invalidHeader);
    expectRefused(Bytes(5000, 'R'), invalidHeader);
    const char other[] = "RVE file v1.7a";
    expectRefused(Bytes(other, other + sizeof(other)), invalidHeader);
}

TEST_F(RveBadInputTest, FileThatCannotBeReadWholeIsCorrupted) {
    const Bytes bytes = bytesOf({{materialNamed("stone")}, rootOver({nodeNamed("arm")})});
    const LogMark mark = logMark();
    {
        const ShortReads shortReads;
        EXPECT_EQ(loadBytes(bytes), nullptr);
    }
    EXPECT_EQ(problemsSince(mark), std::vector<std::string>{corrupted});
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
    EXPECT_NE(loadBytes(bytes), nullptr);
}

TEST_F(RveBadInputTest, FolderIsNoFile) {
    const Traces before;
    std::filesystem::create_directory("folder.rve");
    EXPECT_EQ(RAVOLT::load("folder.rve"), nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params or file not found @ RAVOLT::load\n");
    EXPECT_TRUE(before == Traces());
}

TEST_F(RveBadInputTest, TreeOfTheGreatestDepthLoadsAndADeeperOneIsRefused) {
    RVNODE *root = loadBytes(chainOf(1024));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 1024u);
    takeBack();
    expectRefused(chainOf(1025), corrupted);
    expectRefused(chainOf(100000), corrupted);
}

TEST_F(RveBadInputTest, WideTreeLoads) {
    std::vector<RveNode> leaves(20000, nodeNamed("leaf"));
    RVNODE *root = loadScene(std::move(leaves));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->getNumberOfChildren(), 20000u);
    EXPECT_EQ(root->getChild(19999)->getParent(), root);
}

TEST_F(RveBadInputTest, TreeOfAHundredLevelsIsDrawn) {
    RveNode chain = squareMesh("deepest");
    for (int level = 0; level < 99; ++level) {
        RveNode above = squareMesh("level");
        above.children = {chain};
        chain = above;
    }
    RVNODE *root = loadScene({chain});
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, root); }).count("glDrawElements"), 100u);
}

TEST_F(RveBadInputTest, UnknownTypeOfLightLoads) {
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    light.light.type = static_cast<RveLightType>(200);
    RVNODE *root = loadScene({light});
    ASSERT_NE(root, nullptr);
    drawFrame(nullptr, root);
    EXPECT_LOGGED("   [!] Consistency broken: unknow type for lamp @ RVLIGHT::render");
}

} // namespace
