// Damaged and extreme scene files: each one is refused whole, with one line, or loads.

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
#include <functional>
#include <iterator>

using namespace ravolt;
using namespace ravolt::test;

namespace {

using Lines = std::vector<std::string>;

constexpr char corrupted[] = "   [!] Corrupted file scene.rve @ RAVOLT::load";
constexpr char invalidHeader[] = "   [!] Invalid header in file scene.rve @ RAVOLT::load";
constexpr char unknownKind[] = "   [!] Unknow type @ RAVOLT::recursiveLoad";
constexpr char obsoleteFormat[] =
    "   [!] Obsolete RVE file format detected: re-export your model with 1.6a";

// Offsets in the files of the tests below.
constexpr std::size_t numberOfMaterialsAt = 15;
constexpr std::size_t rootAt = 17; // in a file without materials

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

    // The problems of a load that is refused and changes nothing; none if it succeeds.
    static Lines problemsOf(const Bytes &bytes) {
        const LoadTraces before;
        const LogMark mark = logMark();
        if (loadBytes(bytes))
            return {};
        Lines problems = problemsSince(mark);
        EXPECT_FALSE(problems.empty());
        EXPECT_TRUE(before == LoadTraces());
        std::erase(problems, obsoleteFormat);
        return problems;
    }

    static void expectRefused(const Bytes &bytes, const std::string &line = corrupted) {
        EXPECT_EQ(problemsOf(bytes), Lines{line});
    }

    static void expectLoaded(const Bytes &bytes) {
        EXPECT_EQ(problemsOf(bytes), Lines{});
        unload();
    }

    // Textures without a user are deleted as well, the engine's own targets are not.
    static void unload() {
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

RveNode lamp() {
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    return light;
}

// One of each kind of record, with a skin, of about a thousand bytes.
RveScene sampleScene() {
    RveNode skinned = squareMesh("skinned", "stone");
    skinned.mesh.skin = {
        2, {0, 1, 1, 0, 0, 1, 1, 0}, {0.5f, 0.5f, 0.5f, 0.5f, 1, 0, 1, 0}, {"left", "right"}};
    RveScene scene{{materialNamed("stone"), materialNamed("glass", 0.5f)},
                   rootOver({nodeNamed("group", {skinned, lamp()}), emptyMesh("left"),
                             emptyMesh("right"), squareMesh("plain", "glass")})};
    scene.materials[0].texture = "stone_d.tga";
    return scene;
}

Bytes fileOf(const RveNode &node) { return bytesOf({{}, rootOver({node})}); }

void putCount(Bytes &bytes, std::size_t at, unsigned int count) {
    bytes[at] = static_cast<unsigned char>(count);
    bytes[at + 1] = static_cast<unsigned char>(count >> 8);
}

Bytes withCount(Bytes bytes, std::size_t at, unsigned int count) {
    putCount(bytes, at, count);
    return bytes;
}

// Where `text` with its terminator is.
std::size_t find(const Bytes &bytes, const std::string &text) {
    const auto at =
        std::search(bytes.begin(), bytes.end(), text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_NE(at, bytes.end()) << text;
    return static_cast<std::size_t>(at - bytes.begin());
}

// Where the five counts of the mesh start, whose material is "[none]", and where its arrays do.
std::size_t countsOf(const Bytes &bytes, const std::string &name) {
    return find(bytes, name) + name.size() + 1 + 9 * 4 + sizeof("[none]") + 4 + 6 * 4 + 1;
}
std::size_t arraysOf(const Bytes &bytes, const std::string &name) {
    return countsOf(bytes, name) + 10;
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
        for (std::size_t size = 0; size < whole.size() && !HasFailure(); ++size) {
            SCOPED_TRACE(size);
            expectRefused(Bytes(whole.begin(), whole.begin() + static_cast<long>(size)),
                          size < 14 ? invalidHeader : corrupted);
        }
        ASSERT_NE(loadBytes(whole), nullptr);
        unload();
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
            const Lines problems = problemsOf(bytes);
            if (problems.empty())
                unload();
            else
                EXPECT_TRUE(problems == Lines{corrupted} || problems == Lines{invalidHeader} ||
                            problems == Lines{unknownKind})
                    << problems.back();
            ++(problems.empty() ? loaded : refused);
            if (HasFailure())
                return;
        }
    EXPECT_GT(loaded, 1000u);
    EXPECT_GT(refused, 100u);
}

// --- Counts and indices

TEST_F(RveBadInputTest, CountsBeyondTheFileAreRefused) {
    const Bytes square = fileOf(squareMesh("square")), arm = fileOf(nodeNamed("arm")),
                light = fileOf(lamp()), sample = bytesOf(sampleScene());
    const std::size_t counts = countsOf(square, "square");
    ASSERT_EQ(square[counts], 4);
    const struct {
        const char *what;
        const Bytes &file;
        std::size_t at;
    } rows[] = {
        {"vertices", square, counts + vertices},
        {"texture coordinates", square, counts + uvs},
        {"faces", square, counts + faces},
        {"children of a mesh", square, counts + children},
        {"weights", square, counts + weights},
        {"children of a node", arm, arm.size() - 2},
        {"children of a light", light, light.size() - 2},
        {"materials", sample, numberOfMaterialsAt},
    };
    for (const auto &[what, file, at] : rows)
        for (const unsigned int value : {0x7fffu, 0x8000u, 0xffffu}) {
            SCOPED_TRACE(testing::Message() << what << " = " << value);
            expectRefused(withCount(file, at, value));
        }
    expectRefused(withCount(arm, arm.size() - 2, 1));
    expectRefused(withCount(light, light.size() - 2, 1));
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

TEST_F(RveBadInputTest, FaceIndexMustBeBelowTheVerticesAndTheTextureCoordinates) {
    RveNode square = squareMesh("square");
    square.mesh.uvs.clear();
    const Bytes whole = fileOf(square);
    const std::size_t lastIndexAt = arraysOf(whole, "square") + 4 * 24 + 5 * 2;
    expectLoaded(withCount(whole, lastIndexAt, 3));
    for (const unsigned int index : {4u, 255u, 65535u})
        expectRefused(withCount(whole, lastIndexAt, index));

    Bytes bytes = fileOf(squareMesh("square")); // with one texture coordinate less
    putCount(bytes, countsOf(bytes, "square") + uvs, 3);
    const auto lastUv =
        bytes.begin() + static_cast<long>(arraysOf(bytes, "square") + 4 * 24 + 3 * 8);
    bytes.erase(lastUv, lastUv + 8);
    expectRefused(bytes);

    bytes = fileOf(emptyMesh("empty")); // without vertices
    putCount(bytes, countsOf(bytes, "empty") + faces, 1);
    bytes.insert(bytes.end(), 18, 0);
    expectRefused(bytes);
}

// --- Skins

TEST_F(RveBadInputTest, SkinMustNameItsOwnBonesAndAtMostAHundred) {
    const auto skinOfFile = [](const Bytes &bytes) {
        return arraysOf(bytes, "square") + 4 * 24 + 4 * 8 + 2 * 18;
    };
    const Bytes whole = fileOf(skinnedSquare("square", {"bone"}));
    const std::size_t skinAt = skinOfFile(whole), bonesAt = skinAt + 4 + 4 * 4;
    expectLoaded(whole);
    for (const unsigned char index : {1, 99, 255})
        for (const std::size_t vertex : {0, 3}) {
            Bytes bytes = whole;
            bytes[skinAt + vertex] = index;
            expectRefused(bytes);
        }
    expectRefused(withCount(whole, bonesAt, 0));

    Bytes hundred = fileOf(skinnedSquare("square", std::vector<std::string>(100, "bone")));
    ASSERT_NE(loadBytes(hundred), nullptr);
    EXPECT_EQ(meshNamed("square")->getNumberOfBones(), 100);
    unload();
    hundred.insert(hundred.end(), {'b', 'o', 'n', 'e', 0});
    expectRefused(withCount(hundred, bonesAt, 101));
    expectRefused(withCount(hundred, bonesAt, 0xffff));

    Bytes longName = fileOf(skinnedSquare("square", {std::string(255, 'b')}));
    expectLoaded(longName);
    longName.insert(longName.end() - 1, 'b');
    expectRefused(longName);
}

TEST_F(RveBadInputTest, SkinOfAMeshWithoutVerticesLoads) {
    RveNode empty = emptyMesh("empty");
    empty.mesh.skin = {4, {}, {}, {"bone"}};
    loadScene({empty});
    EXPECT_TRUE(meshNamed("empty")->isSkinned());
    EXPECT_TRUE(meshNamed("empty")->animate(0));
}

// --- Kinds, names, headers

TEST_F(RveBadInputTest, UnknownKindsAreRefused) {
    const Bytes whole = fileOf(nodeNamed("arm"));
    const std::size_t childAt = find(whole, "arm") - 4 - 1;
    for (std::size_t at : {rootAt, childAt})
        for (unsigned char kind : {3, 4, 127, 128, 255}) {
            Bytes bytes = whole;
            bytes[at] = kind;
            expectRefused(bytes, unknownKind);
        }
}

TEST_F(RveBadInputTest, LongNamesAreRefusedWhereverTheyAre) {
    for (const char *name : {"stone", "stone_d.tga", "lamp", "group", "skinned", "glass"}) {
        SCOPED_TRACE(name);
        Bytes bytes = bytesOf(sampleScene());
        bytes.insert(bytes.begin() + static_cast<long>(find(bytes, name)), 256 - std::strlen(name),
                     'x');
        expectRefused(bytes);
    }
    for (const std::size_t length : {100u, 100100u}) { // without an end
        Bytes bytes = headerWith(0);
        bytes.insert(bytes.end(), 1 + 4, 0);
        bytes.insert(bytes.end(), length, 'x');
        expectRefused(bytes);
    }
}

TEST_F(RveBadInputTest, ForeignFilesHaveAnInvalidHeader) {
    const char other[] = "RVE file v1.7a";
    for (const Bytes &bytes :
         {Bytes(), Bytes{'R'}, Bytes(5000, 'R'), Bytes(other, std::end(other))})
        expectRefused(bytes, invalidHeader);
}

TEST_F(RveBadInputTest, FileThatCannotBeReadWholeIsCorrupted) {
    const Bytes bytes = bytesOf({{materialNamed("stone")}, rootOver({nodeNamed("arm")})});
    {
        const ShortReads shortReads;
        expectRefused(bytes);
    }
    expectLoaded(bytes);
}

// --- Trees

TEST_F(RveBadInputTest, TreeOfTheMaximumDepthLoadsAndADeeperOneIsRefused) {
    ASSERT_NE(loadBytes(chainOf(1024)), nullptr);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 1024u);
    unload();
    expectRefused(chainOf(1025));
    expectRefused(chainOf(100000));
}

TEST_F(RveBadInputTest, WideTreeLoads) {
    RVNODE *root = loadScene(std::vector<RveNode>(20000, nodeNamed("leaf")));
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
    RveNode light = lamp();
    light.light.type = static_cast<RveLightType>(200);
    drawFrame(nullptr, loadScene({light}));
    EXPECT_LOGGED("   [!] Consistency broken: unknow type for lamp @ RVLIGHT::render");
}

} // namespace
