// What a load makes of the two files of a terrain, with a silent driver that has everything: each
// element's effects, each message, what is uploaded, and what is deleted again.

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWATER.h"
#include "ravolt/zlf.h"
#include "tests/effects/terrainScene.h"
#include "tests/support/engineFixture.h"

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

using namespace ravolt::test;

namespace {

const std::string failedLoad = "   [!] Error loading config @ RVTERRAIN::load\n";
const std::string missingTexture = "   [!] Unable to open file gone.tga @ RVTEXTURE::loadTGA\n";

// OpenGL's names of buffers and frame buffers that were made and not deleted.
std::multiset<std::string> notDeleted(const Calls &calls) {
    std::multiset<std::string> live;
    for (const Call &call : calls)
        for (const std::string kind : {"BuffersARB", "FramebuffersEXT", "RenderbuffersEXT"})
            if (call.name == "glGen" + kind)
                live.insert(kind + " " + std::to_string(call.arguments.back()));
            else if (call.name == "glDelete" + kind)
                live.erase(kind + " " + std::to_string(call.arguments.back()));
    return live;
}

class TerrainLoadTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        writeTerrainTextures();
        TerrainFile().write();
        markLog();
    }

    bool load(const std::string &elements) {
        writeTerrainConfig(elements);
        terrain = new RVTERRAIN;
        return terrain->load("land.xml");
    }

    // Deletes the terrain, its sky and its water.
    void release() {
        delete terrain;
        terrain = nullptr;
        RVNODE::cleanUp();
        RVMATERIAL::cleanUp();
    }

    // All but the first ones.
    static void deleteTextures(unsigned int first) {
        RVTEXTURE *texture = RVTEXTURE::getFirst();
        for (unsigned int number = 0; texture; ++number) {
            RVTEXTURE *const next = texture->getNext();
            if (number >= first)
                delete texture;
            texture = next;
        }
    }

    RVTERRAIN *terrain = nullptr;
};

TEST_F(TerrainLoadTest, NewTerrainIsEmpty) {
    terrain = new RVTERRAIN;
    EXPECT_EQ(terrain->getType(), RV_NODE_TYPE_TERRAIN);
    EXPECT_EQ(terrain->getName(), "[node " + std::to_string(terrain->getId()) + "]");
    EXPECT_STREQ(terrain->getTypeName(), "terrain");
    EXPECT_EQ(terrain->getSkydome(), nullptr);
    EXPECT_EQ(terrain->getNumberOfChunks(), 0u);
    EXPECT_EQ(terrain->getChunk(0), nullptr);
    EXPECT_FALSE(RVTERRAIN::isRestoringTarget());
    terrain->setWaterSpeed(1);
    terrain->setSkySpeed(1);
    EXPECT_FALSE(terrain->load(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTERRAIN::loadConfig\n" + failedLoad);
    EXPECT_FALSE(terrain->load("gone.xml"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTERRAIN::loadConfig\n" + failedLoad);
}

// --- The configuration

struct Configuration {
    const char *what;
    std::string elements;
    std::string problem; // none for a load that succeeds
};

std::string times(unsigned int number, const std::string &text) {
    return number == 0 ? "" : text + times(number - 1, text);
}

const std::string repeat = "<REPEAT>1</REPEAT>",
                  normal = "<TEXTURE32_NORMAL_GLOSS>n1.tga</TEXTURE32_NORMAL_GLOSS>",
                  diffuse = "<TEXTURE32_DIFFUSE_HEIGHT>d1.tga</TEXTURE32_DIFFUSE_HEIGHT>";
const std::string tooFewLayers = "   [!] not enought argument @ XML::TERRAIN.\n";

const std::vector<Configuration> configurations = {
    {"nothing", "", ""},
    {"everything", geometryXml + layersXml() + waterXml + skyXml + lodXml({"1", "2"}), ""},
    {"unknown elements", "<OTHER><SPEED/></OTHER>" + geometryXml, ""},
    {"unknown children",
     geometryXml + layersXml("<X/>") +
         "<SKY><X/></SKY><LOD><X/><LEVEL>1</LEVEL><LEVEL>2</LEVEL>"
         "</LOD>",
     ""},

    {"GEOMETRY without text", "<GEOMETRY/>", "   [!] Invalid params @ XML::GEOMETRY\n"},
    {"GEOMETRY of no file", "<GEOMETRY>gone.geo</GEOMETRY>",
     "   [!] Invalid params @ RVTERRAIN_MANAGER::loadGeometry\n"},
    {"GEOMETRY of a folder", "<GEOMETRY>.</GEOMETRY>",
     "   [!] Invalid params @ RVTERRAIN_MANAGER::loadGeometry\n"},
    {"a second GEOMETRY", geometryXml + geometryXml,
     "   [!] A second geometry land.geo @ RVTERRAIN_MANAGER::loadGeometry\n"},

    {"TERRAIN before GEOMETRY", layersXml() + geometryXml, ""},
    {"TERRAIN alone", layersXml(), ""},
    {"layers in groups",
     element("TERRAIN", times(4, normal) + times(4, repeat) + times(4, diffuse)), ""},
    {"layers in another order",
     element("TERRAIN", times(2, repeat + normal) + times(4, diffuse) + times(2, normal + repeat)),
     ""},
    {"SHADER_TYPE without text", layersXml("<SHADER_TYPE/>"),
     "   [!] Invalid params @ XML::TERRAIN.SHADER_TYPE\n"},
    {"REPEAT without text", element("TERRAIN", "<REPEAT/>"),
     "   [!] Invalid params @ XML::TERRAIN.REPEAT\n"},
    {"NORMAL_GLOSS without text", element("TERRAIN", "<TEXTURE32_NORMAL_GLOSS/>"),
     "   [!] Invalid params @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n"},
    {"DIFFUSE_HEIGHT without text", element("TERRAIN", "<TEXTURE32_DIFFUSE_HEIGHT/>"),
     "   [!] Invalid params @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n"},
    {"a fifth REPEAT", layersXml(repeat + "<SHADER_TYPE/>"),
     "   [!] Too many repeat member @ XML::TERRAIN.REPEAT\n"},
    {"a fifth NORMAL_GLOSS", layersXml(normal),
     "   [!] Too many normal member @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n"},
    {"a fifth DIFFUSE_HEIGHT", layersXml(diffuse),
     "   [!] Too many diffuse member @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n"},
    {"no layers", "<TERRAIN/>", tooFewLayers},
    {"three REPEAT", element("TERRAIN", times(3, repeat) + times(4, normal + diffuse)),
     tooFewLayers},
    {"three NORMAL_GLOSS", element("TERRAIN", times(3, normal) + times(4, repeat + diffuse)),
     tooFewLayers},
    {"three DIFFUSE_HEIGHT", element("TERRAIN", times(3, diffuse) + times(4, repeat + normal)),
     tooFewLayers},
    {"a texture that is missing",
     geometryXml + element("TERRAIN", times(4, repeat + normal) + times(3, diffuse) +
                                          element("TEXTURE32_DIFFUSE_HEIGHT", "gone.tga")),
     ""},

    {"WATER before GEOMETRY", waterXml + geometryXml,
     "   [!] GEOMETRY must come first @ XML::WATER\n"},
    {"WATER twice", geometryXml + waterXml + waterXml, ""},
    {"WATER's SPEED without text", geometryXml + "<WATER><SPEED/></WATER>",
     "   [!] Invalid params @ XML::WATER.SPEED\n"},
    {"WATER's REPEAT without text", geometryXml + "<WATER><REPEAT/></WATER>",
     "   [!] Invalid params @ XML::WATER.REPEAT\n"},
    {"DUDV without text", geometryXml + "<WATER><TEXTURE24_DUDV/></WATER>",
     "   [!] Invalid params @ XML::WATER.TEXTURE24_DUDV\n"},
    {"WATER's NORMAL without text", geometryXml + "<WATER><TEXTURE24_NORMAL/></WATER>",
     "   [!] Invalid params @ XML::WATER.TEXTURE24_NORMAL\n"},
    {"WATER without textures", geometryXml + "<WATER/>",
     "   [!] Invalid params @ RVWATER::loadTextures\n"},
    {"WATER with missing textures",
     geometryXml + "<WATER><TEXTURE24_DUDV>dudv.tga</TEXTURE24_DUDV>"
                   "<TEXTURE24_NORMAL>gone.tga</TEXTURE24_NORMAL></WATER>",
     missingTexture + "   [!] Invalid params @ RVWATER::loadTexture\n"},

    {"SKY before GEOMETRY", skyXml + geometryXml, "   [!] GEOMETRY must come first @ XML::SKY\n"},
    {"SKY twice", geometryXml + skyXml + skyXml, ""},
    {"SKY without children", geometryXml + "<SKY/>", ""},
    {"SKY's SPEED without text", geometryXml + "<SKY><SPEED/></SKY>",
     "   [!] Invalid params @ XML::SKY.SPEED\n"},
    {"SKY's DIFFUSE without text", geometryXml + "<SKY><TEXTURE24_DIFFUSE/></SKY>",
     "   [!] Invalid params @ XML::SKY.TEXTURE24_DIFFUSE\n"},
    {"SKY with a missing texture",
     geometryXml + "<SKY><TEXTURE24_DIFFUSE>gone.tga</TEXTURE24_DIFFUSE></SKY>",
     missingTexture + "   [!] Invalid params @ RVSKYDOME::loadTexture\n"},

    {"LOD before GEOMETRY", lodXml({"1", "2"}) + geometryXml,
     "   [!] GEOMETRY must come first @ XML::LOD\n"},
    {"LOD twice", geometryXml + lodXml({"1", "2"}) + lodXml({"3", "4"}, "NO"), ""},
    {"ENABLE without text", geometryXml + lodXml({"1", "2"}, ""),
     "   [!] Invalid params @ XML::LOD.ENABLE\n"},
    {"LEVEL without text", geometryXml + lodXml({"1", ""}),
     "   [!] Invalid params @ XML::LOD.LEVEL\n"},
    {"a LEVEL too many", geometryXml + lodXml({"1", "2", "3"}),
     "   [!] Too many lod level @ XML::LOD.LEVEL\n"},
    {"a LEVEL too few", geometryXml + lodXml({"1"}),
     "   [!] Not enought lod level @ XML::LOD.LEVEL\n"},
    {"LOD without children", geometryXml + "<LOD/>",
     "   [!] Not enought lod level @ XML::LOD.LEVEL\n"},
};

TEST_F(TerrainLoadTest, ConfigurationsLoadOrAreRefusedWithOneLineAndLeakNothing) {
    const std::string missingInTwoChunks =
        times(2, missingTexture + "   [!] Invalid params @ RVTERRAIN_CHUNK::loadTexture\n");
    for (const Configuration &c : configurations) {
        SCOPED_TRACE(c.what);
        recorder.start();
        EXPECT_EQ(load(c.elements), c.problem.empty());
        if (c.what == std::string("a texture that is missing"))
            EXPECT_LOGGED_EXACTLY(missingInTwoChunks);
        else
            EXPECT_LOGGED_EXACTLY(c.problem.empty() ? "" : c.problem + failedLoad);
        EXPECT_EQ(terrain->getNumberOfChunks() > 0, terrain->getSkydome() != nullptr);
        EXPECT_EQ(terrain->render(nullptr), terrain->getNumberOfChunks() > 0);
        release();
        EXPECT_EQ(notDeleted(recorder.stop()), std::multiset<std::string>{});
        markLog();
    }
}

TEST_F(TerrainLoadTest, ThreeLevelsOfSixAreTooFew) {
    TerrainFile({.side = 33, .levels = 6}).write();
    EXPECT_FALSE(load(geometryXml + lodXml({"1", "2", "3"})));
    EXPECT_LOGGED_EXACTLY("   [!] Not enought lod level @ XML::LOD.LEVEL\n" + failedLoad);
}

TEST_F(TerrainLoadTest, NamesOfAnyLengthDoNoHarm) {
    const std::string longName(3000000, 'x');
    for (const char *parent : {"GEOMETRY", "SKY", "WATER", "TERRAIN"}) {
        SCOPED_TRACE(parent);
        const std::string child = parent == std::string("SKY")     ? "TEXTURE24_DIFFUSE"
                                  : parent == std::string("WATER") ? "TEXTURE24_NORMAL"
                                                                   : "TEXTURE32_DIFFUSE_HEIGHT";
        EXPECT_FALSE(load(geometryXml + element(parent, parent == std::string("GEOMETRY")
                                                            ? longName
                                                            : element(child, longName))));
        release();
    }
    // As one of four textures the chunks do without a material.
    EXPECT_TRUE(
        load(geometryXml + element("TERRAIN", times(4, repeat + normal) + times(3, diffuse) +
                                                  element("TEXTURE32_DIFFUSE_HEIGHT", longName))));
    EXPECT_EQ(terrain->getChunk(0)->getMaterial(), nullptr);
}

// --- The geometry

TEST_F(TerrainLoadTest, CorruptedGeometryIsRefusedBeforeAnythingIsMade) {
    const TerrainFile whole;
    TerrainFile index, neighbour;
    index.set(index.list(0), std::uint16_t{25});
    neighbour.set(neighbour.chunk(1) + neighboursAt, std::uint16_t{3});
    const struct {
        TerrainFile file;
        const char *problem;
    } cases[] = {{TerrainFile().cut(0), "shorter than its header"},
                 {TerrainFile().cut(whole.bytes.size() - 1), "shorter than its header says"},
                 {TerrainFile().set(levelsAt, '\0'), "a size or the levels are 0"},
                 {TerrainFile({.columns = 1}), "an odd number of chunks"},
                 {index, "an index beyond the vertices"},
                 {neighbour, "a neighbour beyond the chunks"}};
    for (const auto &c : cases) {
        c.file.write();
        const Calls calls = callsOf([&] { EXPECT_FALSE(load(geometryXml)); });
        EXPECT_LOGGED_EXACTLY("   [!] Corrupted file land.geo: " + std::string(c.problem) +
                              " @ RVTERRAIN_MANAGER::loadGeometry\n" + failedLoad);
        EXPECT_TRUE(calls.empty()) << calls.text();
        EXPECT_EQ(terrain->getNumberOfChunks(), 0u);
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 1u);
        release();
        markLog();
    }
}

TEST_F(TerrainLoadTest, SecondLoadOfATerrainKeepsTheFirst) {
    ASSERT_TRUE(load(geometryXml + layersXml() + skyXml));
    const RVTERRAIN_CHUNK *chunk = terrain->getChunk(0);
    EXPECT_FALSE(terrain->load("land.xml"));
    EXPECT_LOGGED_EXACTLY("   [!] A second geometry land.geo @ RVTERRAIN_MANAGER::loadGeometry\n" +
                          failedLoad);
    EXPECT_EQ(terrain->getChunk(0), chunk);
    EXPECT_TRUE(terrain->render(nullptr));
}

using Upload = std::tuple<double, double, double>; // target, bytes, usage

std::vector<Upload> uploadsOf(const Calls &calls) {
    std::vector<Upload> uploads;
    for (const Call &call : calls.named("glBufferDataARB"))
        uploads.emplace_back(call.arguments[0], call.arguments[1], call.arguments.back());
    return uploads;
}

void expectBuffersUnbound(const Calls &calls) {
    std::map<double, double> bound;
    for (const Call &call : calls.named("glBindBufferARB"))
        bound[call.arguments[0]] = call.arguments[1];
    EXPECT_EQ(bound[GL_ARRAY_BUFFER_ARB], 0);
    EXPECT_EQ(bound[GL_ELEMENT_ARRAY_BUFFER_ARB], 0);
}

TEST_F(TerrainLoadTest, ListsCoordinatesAndVerticesAreUploadedInTheOrderOfTheFile) {
    const TerrainFile file({.side = 9, .columns = 2, .rows = 2, .levels = 4});
    file.write();
    const Calls calls = callsOf([&] { ASSERT_TRUE(load(geometryXml)); });
    std::vector<Upload> expected;
    const auto add = [&](double target, std::size_t bytes) {
        expected.emplace_back(target, static_cast<double>(bytes), GL_STATIC_DRAW_ARB);
    };
    for (const auto &list : file.lists)
        add(GL_ELEMENT_ARRAY_BUFFER_ARB, 2 * list.size());
    add(GL_ARRAY_BUFFER_ARB, std::size_t{9} * 9 * 8);
    for (int chunk = 0; chunk < 4; ++chunk)
        add(GL_ARRAY_BUFFER_ARB, std::size_t{9} * 9 * 36);
    std::vector<Upload> uploads = uploadsOf(calls);
    ASSERT_EQ(uploads.size(), expected.size() + 2); // and the sky's two
    uploads.resize(expected.size());
    EXPECT_EQ(uploads, expected);
    expectBuffersUnbound(calls);
}

// The water's first extent is that along Z, and it gets that along X.
TEST_F(TerrainLoadTest, WaterHasTheSizesOfTheHeaderCrossed) {
    TerrainFile({.columns = 4, .rows = 1, .scale = 2}).write();
    const Calls calls = callsOf([&] { ASSERT_TRUE(load(geometryXml)); });
    EXPECT_TRUE(calls.contains(Call("glVertex3f", 5 * 2, 0, 17 * 2))) << calls.text();
}

TEST_F(TerrainLoadTest, ChunksHaveTheirBoundsAndNeighbours) {
    TerrainFile(
        {.columns = 2,
         .rows = 2,
         .scale = 0.5f,
         .height = [](unsigned int x, unsigned int z) { return float(x) - 2.0f * float(z); }})
        .write();
    ASSERT_TRUE(load(geometryXml));
    ASSERT_EQ(terrain->getNumberOfChunks(), 4u);
    EXPECT_EQ(terrain->getChunk(4), nullptr);
    const struct {
        Z3MVECTOR3D low, high, center;
        int neighbours[4];
    } expected[] = {{{0, -8, 0}, {2, 4, 2}, {1, -2, 1}, {-1, 2, -1, 1}},
                    {{2, -4, 0}, {4, 8, 2}, {3, 2, 1}, {-1, 3, 0, -1}},
                    {{0, -16, 2}, {2, -4, 4}, {1, -10, 3}, {0, -1, -1, 3}},
                    {{2, -12, 2}, {4, 0, 4}, {3, -6, 3}, {1, -1, 2, -1}}};
    for (unsigned int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const RVTERRAIN_CHUNK *chunk = terrain->getChunk(i);
        EXPECT_TRUE(chunk->getMinimum() == expected[i].low);
        EXPECT_TRUE(chunk->getMaximum() == expected[i].high);
        EXPECT_TRUE(chunk->getCenter() == expected[i].center);
        EXPECT_TRUE(chunk->isVisible());
        EXPECT_EQ(chunk->getLevel(), 0u);
        for (unsigned int side = 0; side < 4; ++side) {
            const int neighbour = expected[i].neighbours[side];
            EXPECT_EQ(chunk->getNeighbour(side),
                      neighbour < 0 ? nullptr
                                    : terrain->getChunk(static_cast<unsigned int>(neighbour)));
        }
        EXPECT_EQ(chunk->getNeighbour(4), nullptr);
    }
}

void (*realGenBuffers)(GLsizei, GLuint *) = nullptr;

// The file is large enough not to be in the stream's buffer.
TEST_F(TerrainLoadTest, GeometryThatIsCutMeanwhileLeavesNoBufferBoundOrUndeleted) {
    const TerrainFile file({.side = 65, .levels = 1});
    file.write();
    realGenBuffers = RVOPENGL::glGenBuffersARB;
    RVOPENGL::glGenBuffersARB = [](GLsizei number, GLuint *names) {
        std::filesystem::resize_file("land.geo", 100);
        realGenBuffers(number, names);
    };
    recorder.start();
    EXPECT_FALSE(load(geometryXml));
    RVOPENGL::glGenBuffersARB = realGenBuffers;
    EXPECT_LOGGED_EXACTLY("   [!] Corrupted file land.geo: it has become shorter @ "
                          "RVTERRAIN_MANAGER::loadGeometry\n" +
                          failedLoad);
    expectBuffersUnbound(recorder.calls());
    EXPECT_EQ(terrain->getSkydome(), nullptr);
    terrain->render(nullptr);
    release();
    EXPECT_EQ(notDeleted(recorder.stop()), std::multiset<std::string>{});
}

TEST_F(TerrainLoadTest, WithoutVertexBuffersTheTerrainLoadsAndDrawsNothing) {
    for (const char *name : {"glGenBuffersARB", "glBindBufferARB", "glBufferDataARB"}) {
        SCOPED_TRACE(name);
        recorder.reset();
        recorder.silent();
        recorder.nullEntryPoint(name);
        ASSERT_TRUE(restart());
        markLog();
        EXPECT_TRUE(load(geometryXml + layersXml() + lodXml({"1", "2"})));
        EXPECT_EQ(terrain->getNumberOfChunks(), 2u);
        EXPECT_FALSE(callsOf([&] { terrain->render(nullptr); }).contains("glDrawElements"));
    }
}

// --- Textures

TEST_F(TerrainLoadTest, ChunksShareTheTexturesInTheirSlots) {
    auto *early = new RVTEXTURE;
    ASSERT_TRUE(early->load("d1.tga"));
    early->setFilter(false, false, true);
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    ASSERT_TRUE(load(geometryXml + layersXml()));
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 7);
    const std::map<unsigned int, std::string> files = {{0, "d1.tga"}, {2, "d2.tga"}, {3, "d3.tga"},
                                                       {4, "d4.tga"}, {5, "n1.tga"}, {6, "n2.tga"},
                                                       {7, "n3.tga"}, {8, "n4.tga"}};
    const RVMATERIAL *materials[] = {terrain->getChunk(0)->getMaterial(),
                                     terrain->getChunk(1)->getMaterial()};
    ASSERT_TRUE(materials[0] && materials[1]);
    EXPECT_NE(materials[0], materials[1]);
    for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot) {
        SCOPED_TRACE(slot);
        RVTEXTURE *texture = materials[0]->getTexture(slot);
        EXPECT_EQ(materials[1]->getTexture(slot), texture);
        ASSERT_EQ(texture != nullptr, files.count(slot) == 1);
        if (!texture)
            continue;
        EXPECT_EQ(texture->getFilename(), files.at(slot));
        EXPECT_EQ(texture == early, slot == 0);
        EXPECT_EQ(texture->isTrilinear(), slot != 0);
        EXPECT_EQ(texture->isMipmapped(), slot != 0);
        EXPECT_EQ(texture->isClamped(), slot == 0);
    }
    EXPECT_EQ(materials[0]->getShader(), nullptr);
}

TEST_F(TerrainLoadTest, OneFileMayBeAllEightTextures) {
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    const std::string sameNormal = element("TEXTURE32_NORMAL_GLOSS", "d1.tga");
    ASSERT_TRUE(load(geometryXml + element("TERRAIN", times(4, repeat + sameNormal + diffuse))));
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 1);
}

TEST_F(TerrainLoadTest, SecondLayersReplaceTheFirstUnlessAFileIsMissing) {
    ASSERT_TRUE(load(geometryXml + layersXml()));
    const RVMATERIAL *first = terrain->getChunk(0)->getMaterial();
    const std::string other = element("TERRAIN", times(4, repeat + normal + diffuse)),
                      missing =
                          element("TERRAIN", times(4, repeat + normal) + times(3, diffuse) +
                                                 element("TEXTURE32_DIFFUSE_HEIGHT", "gone.tga"));
    release();
    ASSERT_TRUE(load(geometryXml + layersXml() + other));
    EXPECT_STREQ(terrain->getChunk(0)->getMaterial()->getTexture(2)->getFilename(), "d1.tga");
    release();
    ASSERT_TRUE(load(geometryXml + layersXml() + missing));
    first = terrain->getChunk(0)->getMaterial();
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->getTexture(2)->getFilename(), "d2.tga");
}

class TerrainProgramTest : public TerrainLoadTest {
  protected:
    TerrainProgramTest() { settings.setShaders(true); }
};

TEST_F(TerrainProgramTest, ProgramIsTheComplexOneWhateverTheFlag) {
    for (const char *type : {"COMPLEX", "SIMPLE", "complex"}) {
        ASSERT_TRUE(load(geometryXml + layersXml(element("SHADER_TYPE", type))));
        ASSERT_TRUE(RVSHADER::useTerrain());
        EXPECT_EQ(terrain->getChunk(1)->getMaterial()->getShader(), RVSHADER::terrainComplex);
        release();
    }
}

// --- Speeds

TEST_F(TerrainLoadTest, SpeedsReachTheWaterAlsoWhenTheElementFailsLater) {
    recorder.stopClock();
    const auto redAt = [&](float speed) { // of the water's clock
        if (speed >= 0)
            terrain->setWaterSpeed(speed);
        drawFrame(nullptr, nullptr);
        const Calls calls = callsOf([&] { findWater()->render(nullptr); });
        return calls.named("glColor3f")[0].arguments[0];
    };
    EXPECT_FALSE(load(geometryXml + waterXml + "<WATER><SPEED>1e3</SPEED><SPEED/></WATER>"));
    EXPECT_GT(redAt(-1), 0.1);
    EXPECT_EQ(redAt(0), 0);
    EXPECT_GT(redAt(1000), 0.1);
    terrain->setSkySpeed(2);
}

// --- Ends of lives

TEST_F(TerrainLoadTest, DestructorDeletesItsBuffersAndNoNode) {
    recorder.start();
    ASSERT_TRUE(load(geometryXml + layersXml() + waterXml + skyXml + lodXml({"1", "2"})));
    const unsigned int materials = RVMATERIAL::getNumberOfMaterials(),
                       nodes = RVNODE::getNumberOfNodes();
    delete terrain;
    EXPECT_EQ(notDeleted(recorder.stop()).size(), 2u + 4); // the sky's and the water's
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes - 1);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), materials);
    EXPECT_TRUE(findWater()->render(nullptr));
}

TEST_F(TerrainLoadTest, SkyAndWaterMayBeDeletedFirst) {
    ASSERT_TRUE(load(geometryXml + layersXml() + waterXml + skyXml));
    ASSERT_TRUE(terrain->render(nullptr));
    delete findWater();
    EXPECT_TRUE(terrain->render(nullptr));
    delete terrain->getSkydome();
    EXPECT_EQ(terrain->getSkydome(), nullptr);
    EXPECT_TRUE(terrain->render(nullptr));
    terrain->setWaterSpeed(1);
    terrain->setSkySpeed(1);
    RVMATERIAL::cleanUp();
    EXPECT_TRUE(terrain->render(nullptr));
    EXPECT_EQ(terrain->getChunk(0)->getMaterial(), nullptr);
}

// Each allocation fails alone, and every eleventh with all after it.
TEST_F(TerrainLoadTest, LoadWithoutMemoryLeaksNothing) {
    TerrainFile({.side = 3, .levels = 1}).write();
    writeTerrainConfig(geometryXml + layersXml() + waterXml + skyXml + lodXml({}));
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    std::set<std::string> problems;
    const auto loadWithout = [&](unsigned int after, unsigned int failures) {
        const LogMark mark = logMark();
        auto made = std::make_unique<RVTERRAIN>();
        const unsigned long before = recorder.allocations();
        recorder.failAllocation(1, after, failures);
        const bool loaded = made->load("land.xml");
        recorder.allocationsWork();
        const unsigned long allocations = recorder.allocations() - before;
        if (!loaded)
            problems.insert(problemsSince(mark).back());
        expectBuffersUnbound(recorder.calls());
        terrain = made.release();
        terrain->render(nullptr);
        release();
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
        deleteTextures(textures);
        return allocations;
    };
    recorder.start();
    const unsigned long allocations = loadWithout(0, 0);
    EXPECT_EQ(problems, std::set<std::string>{});
    for (const unsigned int failures : {1u, ~0u})
        for (unsigned int after = 0; after < allocations; after += failures == 1 ? 1 : 11) {
            SCOPED_TRACE(after);
            recorder.start();
            loadWithout(after, failures);
            ASSERT_EQ(notDeleted(recorder.stop()), std::multiset<std::string>{});
        }
    EXPECT_EQ(problems, (std::set<std::string>{"   [!] Out of memory @ RVTERRAIN::load",
                                               "   [!] Error loading config @ RVTERRAIN::load"}));
    RAVOLT::free();
    for (int left = finalMemoryRatio(); left > 0; --left) // a refused block counts as live
        zlfFree(nullptr);
    ASSERT_TRUE(restart());
}

} // namespace
