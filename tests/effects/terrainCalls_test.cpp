// The calls of a terrain and of its chunks, with a silent driver that has everything.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWATER.h"
#include "ravolt/Z3MVECTOR2D.h"
#include "tests/effects/terrainScene.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <array>
#include <cfloat>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

// --- A chunk

// The lists of six levels, each of another length, by which the recorded calls tell them.
constexpr unsigned int bodyLength = 1, sameLength = 1000, coarseLength = 2000, perLevel = 100;

// "body3 same0.2": the body of level 3, and edge 0 in variant 2 of the same level.
std::string listsOf(const Calls &calls) {
    std::string text;
    unsigned int level = 0;
    for (const Call &call : calls.named("glDrawElements")) {
        EXPECT_EQ(call, Call("glDrawElements", GL_TRIANGLE_STRIP, call.arguments[1],
                             GL_UNSIGNED_SHORT, 0));
        const auto length = static_cast<unsigned int>(call.arguments[1]);
        text += text.empty() ? "" : " ";
        if (length < sameLength) {
            level = length - bodyLength;
            text += "body" + std::to_string(level);
            continue;
        }
        EXPECT_EQ(length / perLevel % 10, level);
        text += (length < coarseLength ? "same" : "coarse") + std::to_string(length / 10 % 10) +
                "." + std::to_string(length % 10);
    }
    return text;
}

// Thresholds by which a chunk is at a level wherever the camera is.
float *levelIs(unsigned int level) {
    static std::array<std::array<float, 5>, 6> thresholds = [] {
        std::array<std::array<float, 5>, 6> made{};
        for (std::size_t each = 0; each < made.size(); ++each)
            for (std::size_t i = 0; i < 5; ++i)
                made[each][i] = i < each ? 0.0f : FLT_MAX;
        return made;
    }();
    return thresholds[level].data();
}

class TerrainChunkTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        table = std::make_unique<RVTERRAIN_INDEXTABLE>(33, 6);
        for (unsigned int level = 0; level < 6; ++level) {
            table->body[level] = list(bodyLength + level);
            for (unsigned int edge = 0; edge < 4; ++edge)
                for (unsigned int corner = 0; corner < 4; ++corner) {
                    const unsigned int number = level * perLevel + edge * 10 + corner;
                    table->edgeSame[edge][level * 4 + corner] = list(sameLength + number);
                    table->edgeCoarse[edge][level * 4 + corner] = list(coarseLength + number);
                }
        }
        std::vector<Z3MVECTOR2D> pairs(std::size_t{33} * 33);
        coords = std::make_unique<RVTERRAIN_COORDBUFFER>(pairs.data(), 33);
        camera = new RVCAMERA;
    }

    void TearDown() override {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        chunks.clear();
        coords.reset();
        table.reset();
        SilentEngineTest::TearDown();
    }

    static RVTERRAIN_INDEXBUFFER *list(unsigned int length) {
        static const std::vector<unsigned short> numbers(3000);
        return new RVTERRAIN_INDEXBUFFER(numbers.data(), length);
    }

    // From 0 to 32 along X and Z.
    RVTERRAIN_CHUNK &makeChunk(float low = 0, float high = 0) {
        RVTERRAIN_HEADER header{};
        header.chunkSize = 33;
        header.vertexScale = 1;
        header.levels = 6;
        RVTERRAIN_CHUNK_HEADER own{};
        own.minHeight = low;
        own.maxHeight = high;
        const std::vector<unsigned char> vertices(std::size_t{33} * 33 * terrainVertexSize);
        chunks.push_back(std::make_unique<RVTERRAIN_CHUNK>(header, own, vertices.data(),
                                                           table.get(), coords.get()));
        return *chunks.back();
    }

    RVTERRAIN_CHUNK &makeChunkAt(unsigned int level) {
        RVTERRAIN_CHUNK &chunk = makeChunk();
        chunk.setLodThresholds(levelIs(level));
        chunk.computeLevel(camera, true, false);
        return chunk;
    }

    static std::string drawn(RVTERRAIN_CHUNK &chunk) {
        return listsOf(callsOf([&] { chunk.render(1); }));
    }

    std::array<Z3MVECTOR4D, 6> nothing = planes({0, 0, 0, -1}), everything = planes({0, 0, 0, 1});

    static std::array<Z3MVECTOR4D, 6> planes(const Z3MVECTOR4D &all) {
        return {all, all, all, all, all, all};
    }

    std::unique_ptr<RVTERRAIN_INDEXTABLE> table;
    std::unique_ptr<RVTERRAIN_COORDBUFFER> coords;
    std::vector<std::unique_ptr<RVTERRAIN_CHUNK>> chunks;
    RVCAMERA *camera = nullptr;
};

TEST_F(TerrainChunkTest, LevelIsTheFirstThresholdAboveTheSquaredDistance) {
    float thresholds[] = {100, 400, 900, 1600, 2500, 3600, 4900};
    const struct {
        unsigned char levels;
        Z3MVECTOR3D eye; // as seen from the centre of the chunk
        unsigned int level;
    } cases[] = {{6, {0, 0, 0}, 0},     {6, {9.99f, 0, 0}, 0},
                 {6, {10, 0, 0}, 1},    {6, {0, -10, 0}, 1},
                 {6, {0, 8, -6}, 1},    {6, {0, 0, 19.99f}, 1},
                 {6, {0, 20, 0}, 2},    {6, {29.99f, 0, 0}, 2},
                 {6, {-30, 0, 0}, 3},   {6, {0, 0, 39.99f}, 3},
                 {6, {0, 0, 40}, 4},    {6, {49.99f, 0, 0}, 4},
                 {6, {50, 0, 0}, 5},    {6, {1e30f, 0, 0}, 5},
                 {8, {1e30f, 0, 0}, 5}, // on purpose: the levels after the sixth are never chosen
                 {3, {1e30f, 0, 0}, 2}, {2, {10, 0, 0}, 1},
                 {1, {10, 0, 0}, 0}};
    RVTERRAIN_CHUNK &chunk = makeChunk(-4, 8);
    chunk.setLodThresholds(thresholds);
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << int(c.levels) << " levels, " << c.eye.length());
        table->levels = c.levels;
        camera->setPosition(chunk.getCenter() + c.eye);
        chunk.computeLevel(camera, true, false);
        EXPECT_EQ(chunk.getLevel(), c.level);
        chunk.computeLevel(camera, false, false);
        EXPECT_EQ(chunk.getLevel(), 0u);
    }
    table->levels = 6;
    camera->render(nullptr); // what counts without a camera
    chunk.computeLevel(nullptr, true, false);
    EXPECT_EQ(chunk.getLevel(), 1u);
    chunk.setFrustumPlanes(nothing.data());
    chunk.computeLevel(camera, true, false);
    EXPECT_FALSE(chunk.isVisible());
    EXPECT_EQ(chunk.getLevel(), 0u);
    RVTERRAIN_CHUNK &without = makeChunk();
    without.computeLevel(camera, true, false);
    EXPECT_EQ(without.getLevel(), 0u);
}

TEST_F(TerrainChunkTest, IsOutsideWhenAllCornersAreNotInsideOfOnePlane) {
    const struct {
        Z3MVECTOR4D plane;
        bool upright, inverted;
    } cases[] = {{{1, 0, 0, -31.5f}, true, true},  {{1, 0, 0, -32}, false, false},
                 {{-1, 0, 0, 0.5f}, true, true},   {{-1, 0, 0, 0}, false, false},
                 {{0, 0, 1, -31.5f}, true, true},  {{0, 0, 1, -32}, false, false},
                 {{0, 0, -1, 0.5f}, true, true},   {{0, 0, -1, 0}, false, false},
                 {{0, 1, 0, -2.5f}, true, false},  {{0, 1, 0, -1.5f}, true, true},
                 {{0, -1, 0, -2.5f}, false, true}, {{0, -1, 0, -1.5f}, true, true},
                 {{1, 1, 1, -66.5f}, true, false}};
    RVTERRAIN_CHUNK &chunk = makeChunk(-2, 3);
    for (const auto &c : cases)
        for (std::size_t number = 0; number < 6; ++number) {
            SCOPED_TRACE(testing::Message() << c.plane.x << " " << c.plane.y << " " << c.plane.z
                                            << " " << c.plane.w << ", plane " << number);
            std::array<Z3MVECTOR4D, 6> view = everything;
            view[number] = c.plane;
            chunk.setFrustumPlanes(view.data());
            EXPECT_EQ(chunk.isInFrustum(false), c.upright);
            EXPECT_EQ(chunk.isInFrustum(true), c.inverted);
            chunk.computeLevel(camera, true, true);
            EXPECT_EQ(chunk.isVisible(), c.inverted);
        }
}

TEST_F(TerrainChunkTest, SurfaceHidesChunksOfTheOtherWorld) {
    const struct {
        std::string name;
        float low, high;
    } kinds[] = {{"submerged", -5, -1}, {"emerged", 1, 5}, {"crossing", -5, 5},
                 {"flat", 0, 0},        {"below", -5, 0},  {"above", 0, 5}};
    const struct {
        float height;
        std::string hidden, hiddenInRefraction;
    } cases[] = {{50, "submerged ", "emerged "},
                 {1.01f, "submerged ", "emerged "},
                 {1, "", "emerged "},
                 {0.99f, "", "submerged emerged "},
                 {0, "", "submerged emerged "},
                 {-0.99f, "", "submerged emerged "},
                 {-1, "", "submerged "},
                 {-1.01f, "emerged ", "submerged "},
                 {-50, "emerged ", "submerged "}};
    for (const auto &c : cases) {
        camera->setPosition(0, c.height, 0);
        std::string hidden, hiddenInRefraction;
        for (const auto &kind : kinds) {
            RVTERRAIN_CHUNK &chunk = makeChunk(kind.low, kind.high);
            chunk.cullSurface(camera);
            hidden += chunk.isVisible() ? "" : kind.name + " ";
            chunk.computeLevel(camera, false, false);
            chunk.cullSurfaceInverse(camera);
            hiddenInRefraction += chunk.isVisible() ? "" : kind.name + " ";
            chunk.setFrustumPlanes(nothing.data());
            chunk.computeLevel(camera, false, false);
            chunk.cullSurface(camera);
            chunk.cullSurfaceInverse(camera);
            EXPECT_FALSE(chunk.isVisible());
        }
        EXPECT_EQ(hidden, c.hidden) << c.height;
        EXPECT_EQ(hiddenInRefraction, c.hiddenInRefraction) << c.height;
    }
}

TEST_F(TerrainChunkTest, EdgesAreChosenByTheCoarserNeighbours) {
    const struct {
        std::string coarser, lists;
    } cases[] = {{"", "same0.0 same1.0 same2.0 same3.0"},
                 {"0", "coarse0.0 same1.0 same2.1 same3.1"},
                 {"1", "same0.0 coarse1.0 same2.2 same3.2"},
                 {"01", "coarse0.0 coarse1.0 same2.3 same3.3"},
                 {"2", "same0.2 same1.2 coarse2.0 same3.0"},
                 {"02", "coarse0.2 same1.2 coarse2.1 same3.1"},
                 {"12", "same0.2 coarse1.2 coarse2.2 same3.2"},
                 {"012", "coarse0.2 coarse1.2 coarse2.3 same3.3"},
                 {"3", "same0.1 same1.1 same2.0 coarse3.0"},
                 {"03", "coarse0.1 same1.1 same2.1 coarse3.1"},
                 {"13", "same0.1 coarse1.1 same2.2 coarse3.2"},
                 {"013", "coarse0.1 coarse1.1 same2.3 coarse3.3"},
                 {"23", "same0.3 same1.3 coarse2.0 coarse3.0"},
                 {"023", "coarse0.3 same1.3 coarse2.1 coarse3.1"},
                 {"123", "same0.3 coarse1.3 coarse2.2 coarse3.2"},
                 {"0123", "coarse0.3 coarse1.3 coarse2.3 coarse3.3"}};
    for (const unsigned int level : {0u, 2u, 4u}) {
        RVTERRAIN_CHUNK &chunk = makeChunkAt(level), &same = makeChunkAt(level),
                        &coarser = makeChunkAt(level + 1);
        for (const auto &c : cases) {
            for (unsigned int side = 0; side < 4; ++side)
                chunk.setNeighbour(side, c.coarser.find(std::to_string(side)) == std::string::npos
                                             ? &same
                                             : &coarser);
            EXPECT_EQ(drawn(chunk), "body" + std::to_string(level) + " " + c.lists)
                << "coarser: " << c.coarser;
        }
    }
}

TEST_F(TerrainChunkTest, OnlyVisibleCoarserNeighboursCount) {
    const std::string fine = " same0.0 same1.0 same2.0 same3.0";
    RVTERRAIN_CHUNK &chunk = makeChunkAt(1), &finer = makeChunkAt(0), &hidden = makeChunkAt(5);
    EXPECT_EQ(drawn(chunk), "body1" + fine); // without neighbours
    for (unsigned int side = 0; side < 4; ++side)
        chunk.setNeighbour(side, &finer);
    EXPECT_EQ(drawn(chunk), "body1" + fine);
    for (unsigned int side = 0; side < 4; ++side)
        chunk.setNeighbour(side, &hidden);
    EXPECT_NE(drawn(chunk), "body1" + fine);
    hidden.setFrustumPlanes(nothing.data());
    hidden.computeLevel(camera, true, false);
    EXPECT_EQ(drawn(chunk), "body1" + fine);
    EXPECT_EQ(drawn(hidden), "");
    chunk.setNeighbour(4, &chunk); // none of the sides
}

// A chunk that the water hides has its level, and does not count.
TEST_F(TerrainChunkTest, NeighbourUnderWaterDoesNotCount) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(1), &submerged = makeChunk(-5, -1);
    chunk.setNeighbour(0, &submerged);
    submerged.setLodThresholds(levelIs(3));
    submerged.computeLevel(camera, true, false);
    EXPECT_EQ(drawn(chunk), "body1 coarse0.0 same1.0 same2.1 same3.1");
    camera->setPosition(0, 2, 0);
    submerged.cullSurface(camera);
    EXPECT_EQ(submerged.getLevel(), 3u);
    EXPECT_EQ(drawn(chunk), "body1 same0.0 same1.0 same2.0 same3.0");
}

TEST_F(TerrainChunkTest, CoarsestLevelIsItsBodyAlone) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(5), &fine = makeChunkAt(0);
    chunk.setNeighbour(0, &fine);
    EXPECT_EQ(drawn(chunk), "body5");
}

TEST_F(TerrainChunkTest, EmptyListsAreNotDrawn) {
    delete table->body[0];
    table->body[0] = list(0);
    delete table->edgeSame[2][0];
    table->edgeSame[2][0] = nullptr;
    EXPECT_EQ(drawn(makeChunkAt(0)), "same0.0 same1.0 same3.0");
}

TEST_F(TerrainChunkTest, ArraysAreThoseOfTheVertexWithoutAnIndexPointer) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(5);
    const Calls calls = callsOf([&] { chunk.render(1); });
    const Calls binds = calls.named("glBindBufferARB");
    ASSERT_EQ(binds.size(), 3u);
    const double vertices = binds[0].arguments[1], list = binds[2].arguments[1];
    EXPECT_EQ(calls.without({"glColor4f", "glDisableClientState"}),
              (Calls{{"glBindBufferARB", GL_ARRAY_BUFFER_ARB, vertices},
                     {"glVertexPointer", 3, GL_FLOAT, 36, 0},
                     {"glNormalPointer", GL_FLOAT, 36, 12},
                     {"glColorPointer", 3, GL_FLOAT, 36, 24},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, coords->getBuffer()},
                     {"glTexCoordPointer", 2, GL_FLOAT, 0, 0},
                     {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, list},
                     {"glDrawElements", GL_TRIANGLE_STRIP, bodyLength + 5, GL_UNSIGNED_SHORT, 0}}))
        << calls.text();
    EXPECT_TRUE(calls.contains(Call("glColor4f", 1, 1, 1, 1)));
}

// Without a material it is white, whatever the lights are.
TEST_F(TerrainChunkTest, LightingIsOffForAPlainChunkAloneAndAfterwardsAsBefore) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(5);
    RVLIGHT::lightingOn();
    const Calls calls = callsOf([&] { chunk.render(1); });
    EXPECT_TRUE(calls.haveInOrder(
        {{"glDisable", GL_LIGHTING},
         {"glDrawElements", GL_TRIANGLE_STRIP, bodyLength + 5, GL_UNSIGNED_SHORT, 0},
         {"glEnable", GL_LIGHTING}}))
        << calls.text();
    EXPECT_TRUE(RVLIGHT::getLighting());
    RVLIGHT::lightingOff();
    EXPECT_FALSE(callsOf([&] { chunk.render(1); }).contains(Call("glEnable", GL_LIGHTING)));
}

TEST_F(TerrainChunkTest, WithoutMemoryForAMaterialItsTexturesAreNotLoaded) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(5);
    writeFile("grass.tga", plainTga(4, 4));
    const auto load = [&chunk] {
        return chunk.loadTexture("grass.tga", "grass.tga", 1, "grass.tga", "grass.tga", 1,
                                 "grass.tga", "grass.tga", 1, "grass.tga", "grass.tga", 1, true);
    };
    EXPECT_TRUE(load());
    markLog();
    recorder.failAllocation(sizeof(RVMATERIAL), 0, 1);
    EXPECT_FALSE(load());
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTERRAIN_CHUNK::loadTexture\n");
    EXPECT_TRUE(load());
}

TEST_F(TerrainChunkTest, BoundsOfTheLargestNumbersAreExact) {
    RVTERRAIN_HEADER header{};
    header.chunkSize = 65535;
    header.vertexScale = 0.5f;
    RVTERRAIN_CHUNK_HEADER own{};
    own.gridX = own.gridY = 65535;
    const RVTERRAIN_CHUNK chunk(header, own, nullptr, table.get(), coords.get());
    EXPECT_EQ(chunk.getMinimum().x, 65535.0f * 65534 / 2);
    EXPECT_EQ(chunk.getMaximum().z, 65536.0f * 65534 / 2);
}

class TerrainChunkProgramTest : public TerrainChunkTest {
  protected:
    TerrainChunkProgramTest() { settings.setShaders(true); }
};

TEST_F(TerrainChunkProgramTest, DepthProfileWritesTheDepthsIntoAlphaAlone) {
    RVTERRAIN_CHUNK &chunk = makeChunkAt(5);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_ZPASS);
    const RVSHADER &program = *RVSHADER::passthroughZPass;
    RVSHADER::disable();
    const Call use = callsOf([&] { RVSHADER::passthroughZPass->render(nullptr); })[0];
    RVSHADER::disable();
    const Calls calls = callsOf([&] { chunk.render(1); });
    EXPECT_TRUE(calls.haveInOrder(
        {use,
         {"glUniform1fARB", program.getParam(14), RVOPENGL::getNearPlane()},
         {"glUniform1fARB", program.getParam(15), RVOPENGL::getFarPlane()},
         {"glColorMask", 0, 0, 0, 1},
         {"glDrawElements", GL_TRIANGLE_STRIP, bodyLength + 5, GL_UNSIGNED_SHORT, 0},
         {"glColorMask", 1, 1, 1, 1}}))
        << calls.text();
    delete RVSHADER::passthroughZPass;
    EXPECT_EQ(callsOf([&] { chunk.render(1); }).named("glColorMask"),
              (Calls{{"glColorMask", 0, 0, 0, 1}, {"glColorMask", 1, 1, 1, 1}}));
    chunk.setFrustumPlanes(nothing.data());
    chunk.computeLevel(camera, false, false);
    EXPECT_TRUE(callsOf([&] { chunk.render(1); }).empty());
}

// --- A terrain

class TerrainCallsTest : public SilentEngineTest {
  protected:
    TerrainCallsTest() { settings.setShaders(true); }

    void SetUp() override {
        SilentEngineTest::SetUp();
        writeTerrainTextures();
        camera = new RVCAMERA;
    }

    void TearDown() override {
        RVTERRAIN::restoreTargetOff();
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        RVOPENGL::cullingOn();
        RVFBO::unbind();
        SilentEngineTest::TearDown();
    }

    // Two chunks of 32 by 32 in a row along X, seen from the middle of their +Z side.
    void make(const std::string &elements = geometryXml + layersXml() + waterXml + skyXml) {
        const TerrainFile file({.side = 33, .levels = 6, .height = [](auto x, auto) {
                                    return x % 32 < 16 ? -5.0f : 5.0f;
                                }});
        const Calls calls = callsOf([&] { terrain = loadTerrain(file, elements); });
        for (const Call &call : calls.named("glGenBuffersARB"))
            buffers.push_back(call.arguments.back());
        if (const RVWATER *water = findWater()) {
            unsigned int fbo = 0, renderbuffer = 0;
            water->getReflectionBuffer(fbo, renderbuffer);
            nameOf[fbo] = nameOf[renderbuffer] = "reflection";
            water->getRefractionBuffer(fbo, renderbuffer);
            nameOf[fbo] = nameOf[renderbuffer] = "refraction";
        }
        for (int i = 0; i < 14; ++i)
            nameOf[RVOPENGL::getFbo(i)->getGLId()] = "target" + std::to_string(i);
        nameOf[0] = "window";
    }

    void look(float y, float turn = 0) {
        camera->setPosition(32, y, 70);
        camera->setRotation(0, turn, 0);
        glLoadIdentity();
        camera->render(nullptr);
    }

    Calls render(void *data = nullptr) {
        return callsOf([&] { EXPECT_TRUE(terrain->render(data)); });
    }

    // The steps of a rendering by single words, those of several lists or chunks as one.
    std::string stepsOf(const Calls &calls) {
        std::string text, last;
        float inv = 0;
        for (const Call &call : calls) {
            if (call.name == "glUniform1fARB")
                inv = static_cast<float>(call.arguments[1]);
            const std::string word = wordOf(call, inv);
            if (!word.empty() && (word != last || word == "push"))
                text += (text.empty() ? "" : " ") + word;
            if (!word.empty())
                last = word;
        }
        return text;
    }

    std::string wordOf(const Call &call, float inv) {
        const auto argument = [&](std::size_t index) { return call.arguments.at(index); };
        const std::string &name = call.name;
        if (name == "glViewport")
            return std::to_string(int(argument(2))) + "x" + std::to_string(int(argument(3)));
        if (name == "glEnable" || name == "glDisable") {
            const std::string off = name == "glEnable" ? "" : "un";
            return argument(0) == GL_CLIP_PLANE0 ? off + "clip"
                   : argument(0) == GL_CULL_FACE ? off + "cull"
                                                 : "";
        }
        if (name == "glClipPlane")
            return call == Call("glClipPlane", GL_CLIP_PLANE0, 0, -1, 0, 0)  ? "below"
                   : call == Call("glClipPlane", GL_CLIP_PLANE0, 0, 1, 0, 0) ? "above"
                                                                             : "?";
        if (name == "glBindFramebufferEXT")
            return nameOf[argument(1)];
        if (name == "glBindRenderbufferEXT")
            return "~" + nameOf[argument(1)];
        if (name == "glClear")
            return argument(0) == (GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT) ? "clear" : "?";
        if (name == "glCullFace")
            return argument(0) == GL_FRONT ? "front" : "back";
        if (name == "glDrawElements")
            return argument(1) == 300 ? "sky" : inv == 1 ? "land" : inv == -1 ? "inverted" : "?";
        if (call == Call("glTranslatef", 0, 2, 0))
            return "lift";
        const std::map<std::string, std::string> words = {{"glPushMatrix", "push"},
                                                          {"glPopMatrix", "pop"},
                                                          {"glScalef", "mirror"},
                                                          {"glCallList", "water"}};
        const auto found = words.find(name);
        return found == words.end() ? "" : found->second;
    }

    // The lists that a chunk has drawn last, by their numbers in the file.
    std::vector<std::size_t> listsOf(const Calls &calls) {
        std::vector<std::size_t> numbers;
        double bound = 0;
        for (const Call &call : calls) {
            if (call.name == "glBindBufferARB" && call.arguments[0] == GL_ELEMENT_ARRAY_BUFFER_ARB)
                bound = call.arguments[1];
            if (call.name != "glDrawElements" || call.arguments[1] == 300)
                continue;
            const auto found = std::find(buffers.begin(), buffers.end(), bound);
            numbers.push_back(static_cast<std::size_t>(found - buffers.begin()));
        }
        return numbers;
    }

    RVCAMERA *camera = nullptr;
    RVTERRAIN *terrain = nullptr;
    std::map<double, std::string> nameOf;
    std::vector<double> buffers; // in the order of their creation
};

const std::string reflection = "64x64 clip below ~reflection reflection clear front push mirror "
                               "sky pop inverted back ",
                  dryReflection = "64x64 clip above ~reflection reflection clear front inverted "
                                  "back ",
                  refraction = "~refraction refraction clear land ",
                  skyRefraction = "~refraction refraction clear push sky pop land ",
                  window = "128x96 window ~window ",
                  screen = "push sky pop push lift land pop uncull unclip water unclip cull";

TEST_F(TerrainCallsTest, HeightOfTheEyeDecidesOnPlanesAndSky) {
    make();
    const struct {
        float height;
        std::string steps;
    } cases[] = {{10, reflection + refraction + window + "above " + screen},
                 {1, reflection + refraction + window + "above " + screen},
                 {0.99f, reflection + refraction + window + "unclip " + screen},
                 {0.5f, reflection + refraction + window + "unclip " + screen},
                 {0, reflection + skyRefraction + window + "unclip " + screen},
                 {-0.5f, dryReflection + skyRefraction + window + "unclip " + screen},
                 {-1, dryReflection + skyRefraction + window + "below " + screen},
                 {-10, dryReflection + skyRefraction + window + "below " + screen}};
    for (const auto &c : cases) {
        look(c.height);
        EXPECT_EQ(stepsOf(render()), c.steps) << c.height;
    }
}

TEST_F(TerrainCallsTest, IndexPointerIsNeverSet) {
    make();
    look(2);
    EXPECT_FALSE(render().contains("glIndexPointer"));
}

TEST_F(TerrainCallsTest, FlatProfileEndsWithTheCullingOfBackFaces) {
    make();
    look(2);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(stepsOf(render()), reflection + refraction + window +
                                     "above push sky pop push lift land back pop uncull unclip "
                                     "water unclip cull");
}

TEST_F(TerrainCallsTest, WithoutWaterItsImagesAreLeftOut) {
    make(geometryXml + layersXml() + skyXml);
    look(0);
    EXPECT_EQ(stepsOf(render()),
              window + "unclip push sky pop push lift land pop uncull unclip cull");
    delete terrain->getSkydome();
    EXPECT_EQ(stepsOf(render()), window + "unclip push lift land pop uncull unclip cull");
}

TEST_F(TerrainCallsTest, WaterHidesTheSubmergedLandOnlyWhenItIsDrawn) {
    const TerrainFile file({.side = 33, .height = [](auto, auto) { return -5.0f; }});
    look(10);
    for (const bool wet : {true, false}) {
        terrain = loadTerrain(file, geometryXml + layersXml() + (wet ? waterXml : ""));
        terrain->render(nullptr);
        EXPECT_EQ(terrain->getChunk(0)->isVisible(), !wet);
        delete terrain;
    }
}

TEST_F(TerrainCallsTest, RefractionShowsNoLandAboveTheWater) {
    const TerrainFile file({.side = 33, .height = [](auto, auto) { return 5.0f; }});
    terrain = loadTerrain(file, geometryXml + layersXml() + waterXml);
    look(10);
    const std::string steps = stepsOf(render());
    const std::size_t screenOnly = steps.find("lift land");
    ASSERT_NE(screenOnly, std::string::npos) << steps;
    EXPECT_EQ(steps.find("land"), screenOnly + 5) << steps;
}

TEST_F(TerrainCallsTest, WaterThatIsLoadedAnewGetsItsImages) {
    make();
    look(2);
    render();
    ASSERT_TRUE(findWater()->loadTextures("bump.tga", "dudv.tga", 2));
    unsigned int fbo = 0, renderbuffer = 0;
    findWater()->getReflectionBuffer(fbo, renderbuffer);
    EXPECT_TRUE(render().contains(Call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, fbo)));
}

TEST_F(TerrainCallsTest, WithoutATextureTheSkyIsNotDrawn) {
    make(geometryXml + layersXml() + waterXml);
    look(2);
    EXPECT_EQ(stepsOf(render()),
              "64x64 clip below ~reflection reflection clear front push mirror "
              "pop inverted back " +
                  refraction + window +
                  "above push pop push lift land pop uncull unclip water unclip cull");
}

TEST_F(TerrainCallsTest, UniformsAreTheMirrorAndTheRepeats) {
    make();
    look(2);
    const RVSHADER &program = *RVSHADER::terrainComplex;
    const Calls calls = render();
    for (int layer = 0; layer < 4; ++layer)
        EXPECT_TRUE(calls.contains(
            Call("glUniform1iARB", program.getParam(3u + unsigned(layer)), layer + 1)));
    // Two chunks, three passes; the first is mirrored.
    EXPECT_EQ(calls.count(Call("glUniform1fARB", program.getParam(2), -1)), 2u);
    EXPECT_EQ(calls.count(Call("glUniform1fARB", program.getParam(2), 1)), 4u);
}

TEST_F(TerrainCallsTest, WithoutLevelsOfDetailAllChunksHaveTheFinestWithPlainEdges) {
    const std::vector<std::size_t> finest = {0, 5, 6, 7, 8, 0, 5, 6, 7, 8}, coarsest = {165, 165};
    const std::vector<std::string> near = {"1", "2", "3", "4", "5"};
    const struct {
        std::string lod;
        const std::vector<std::size_t> &lists;
    } cases[] = {{"", finest}, {lodXml(near, "NO"), finest}, {lodXml(near), coarsest}};
    for (const auto &c : cases) {
        buffers.clear();
        make(geometryXml + layersXml() + c.lod);
        look(0);
        EXPECT_EQ(listsOf(render()), c.lists) << c.lod;
        delete terrain;
    }
}

// With six levels at most, of which the last is drawn as its body alone.
TEST_F(TerrainCallsTest, AnyNumberOfLevelsIsDrawn) {
    for (const unsigned int levels : {1u, 2u, 5u, 6u, 7u, 20u}) {
        SCOPED_TRACE(levels);
        const TerrainFile file({.side = 129, .levels = levels, .scale = 0.25f});
        const Calls calls = callsOf([&] {
            terrain = loadTerrain(file, geometryXml + layersXml() +
                                            lodXml(std::vector<std::string>(levels - 1, "0")));
        });
        buffers.clear();
        for (const Call &call : calls.named("glGenBuffersARB"))
            buffers.push_back(call.arguments.back());
        look(2);
        const std::size_t body = TerrainFile::listsPerLevel * (std::min(levels, 6u) - 1);
        const std::vector<std::size_t> lists = listsOf(render());
        ASSERT_FALSE(lists.empty());
        EXPECT_EQ(lists[0], body);
        EXPECT_EQ(lists.size(), levels <= 6 ? 2u : 10u);
        EXPECT_EQ(terrain->getChunk(1)->getLevel(), std::min(levels, 6u) - 1);
        delete terrain;
    }
}

// The chunk on the left is nearer to the eye, and fits its edge to the other one.
TEST_F(TerrainCallsTest, ChunkFitsItsEdgeToACoarserNeighbour) {
    make(geometryXml + layersXml() + lodXml({"1600", "4000", "9e9", "9e9", "9e9"}));
    camera->setPosition(16, 0, 50); // 34 from one centre, some 46 from the other
    camera->setRotation(0, 0, 0);
    camera->render(nullptr);
    const std::size_t next = TerrainFile::listsPerLevel;
    // Edge 3 coarse, edges 0 and 1 in variant 1; the body of level 1 and its plain edges.
    EXPECT_EQ(listsOf(render()), (std::vector<std::size_t>{0, 13, 14, 7, 4, next, next + 5,
                                                           next + 6, next + 7, next + 8}));
}

TEST_F(TerrainCallsTest, PlanesAreThoseOfTheViewAndStayWhenTheProjectionAloneChanges) {
    make();
    const auto visible = [&] {
        terrain->render(nullptr);
        return std::string(terrain->getChunk(0)->isVisible() ? "left " : "") +
               (terrain->getChunk(1)->isVisible() ? "right" : "");
    };
    const auto project = [](double left, double right) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glFrustum(left, right, -1, 1, 1, 1000);
        glMatrixMode(GL_MODELVIEW);
    };
    look(0);
    project(-1, 1);
    EXPECT_EQ(visible(), "left right");
    const struct {
        float turn; // to the left
        const char *chunks;
    } cases[] = {{80, "left "}, {-80, "right"}, {180, ""}, {0, "left right"}};
    for (const auto &c : cases) {
        look(0, c.turn);
        EXPECT_EQ(visible(), c.chunks) << c.turn;
    }
    project(0.3, 0.31);
    EXPECT_EQ(visible(), "left right");
    look(0, 0.01f);
    EXPECT_EQ(visible(), "right");
    project(-1, 1);
    EXPECT_EQ(visible(), "right");
    look(0, 0);
    EXPECT_EQ(visible(), "left right");
}

// Near and far, above and below.
TEST_F(TerrainCallsTest, PlanesBoundTheViewOnAllSides) {
    make();
    const struct {
        const char *what;
        double bottom, top, zNear, zFar;
        bool seen;
    } cases[] = {{"all", -1, 1, 1, 1000, true},
                 {"before the land", -1, 1, 1, 37, false},
                 {"to the land", -1, 1, 1, 39, true},
                 {"beyond the land", -1, 1, 71, 1000, false},
                 {"from the land on", -1, 1, 69, 1000, true},
                 {"above the land", 0.2, 1, 1, 1000, false},
                 {"below the land", -1, -0.2, 1, 1000, false}};
    for (const auto &c : cases) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        const double wide = c.zNear, tall = c.zNear;
        glFrustum(-wide, wide, c.bottom * tall, c.top * tall, c.zNear, c.zFar);
        glMatrixMode(GL_MODELVIEW);
        look(0, 1); // so that each case has another modelview than the last
        terrain->render(nullptr);
        look(0);
        terrain->render(nullptr);
        EXPECT_EQ(terrain->getChunk(0)->isVisible(), c.seen) << c.what;
    }
}

TEST_F(TerrainCallsTest, ActivatesTheLightsOfItsEntryAndThenLoadsItsMatrix) {
    make();
    auto *root = new RVNODE;
    auto *light = new RVLIGHT;
    light->link(root);
    terrain->link(root);
    terrain->setPosition(1, 2, 3);
    RVLIGHT::lightingOn();
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    EXPECT_TRUE(
        calls.haveInOrder({{"glEnable", GL_LIGHT0},
                           {"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1},
                           {"glDisable", GL_LIGHTING},
                           {"glViewport", 0, 0, 64, 64}}))
        << calls.text();
    look(2);
    const Calls alone = render();
    EXPECT_FALSE(alone.contains("glLoadMatrixf"));
    EXPECT_FALSE(alone.contains(Call("glEnable", GL_LIGHT0)));
}

TEST_F(TerrainCallsTest, StateAfterwardsIsThatOfNoTerrain) {
    make();
    look(2);
    for (const bool culled : {true, false}) {
        culled ? RVOPENGL::cullingOn() : RVOPENGL::cullingOff();
        RVLIGHT::lightingOff();
        const Calls calls = render();
        EXPECT_EQ(RVOPENGL::isCulled(), culled);
        EXPECT_EQ(glIsEnabled(GL_CULL_FACE), culled);
        for (const GLenum off : {GL_CLIP_PLANE0, GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY,
                                 GL_INDEX_ARRAY, GL_TEXTURE_COORD_ARRAY})
            EXPECT_FALSE(glIsEnabled(off)) << off;
        EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
        EXPECT_EQ(calls.count("glPushMatrix"), calls.count("glPopMatrix"));
        std::map<double, double> bound;
        for (const Call &call : calls.named("glBindBufferARB"))
            bound[call.arguments[0]] = call.arguments[1];
        EXPECT_EQ(bound, (std::map<double, double>{{GL_ARRAY_BUFFER_ARB, 0},
                                                   {GL_ELEMENT_ARRAY_BUFFER_ARB, 0}}));
        EXPECT_EQ(calls.named("glUseProgramObjectARB").back().arguments[0], 0);
        EXPECT_EQ(viewportNow(), (std::array<int, 4>{0, 0, 128, 96}));
    }
}

// Its own material, too, which was the last one applied.
TEST_F(TerrainCallsTest, MaterialsAreAppliedAnewInTheSecondRenderingOfAFrame) {
    make(geometryXml + layersXml());
    look(0, 30); // one chunk alone is seen
    const Calls first = render(), second = render();
    EXPECT_EQ(second.named("glUseProgramObjectARB"), first.named("glUseProgramObjectARB"));
    EXPECT_EQ(second.count("glBindTexture"), 8u);
}

// Emitters and the 2D block switch culling off without its switch.
TEST_F(TerrainCallsTest, FacesAreCulledAlsoAfterAnEmitter) {
    make();
    look(2);
    glDisable(GL_CULL_FACE);
    ASSERT_TRUE(RVOPENGL::isCulled());
    bool culled = false;
    for (const Call &call : render()) {
        if (call == Call("glEnable", GL_CULL_FACE))
            culled = true;
        if (call.name == "glDrawElements") {
            EXPECT_TRUE(culled);
            break;
        }
    }
}

TEST_F(TerrainCallsTest, WithoutChunksNothingIsDrawnAndLoggedOnce) {
    terrain = new RVTERRAIN;
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(terrain->render(nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] No chunks or no vertex buffers @ RVTERRAIN::render\n");
    EXPECT_FALSE(terrain->render(nullptr));
    EXPECT_NOTHING_LOGGED();
}

// --- Targets

TEST_F(TerrainCallsTest, WindowIsBoundAfterwardsByDefault) {
    make();
    look(2);
    RVOPENGL::getFbo(4)->render(nullptr);
    const std::string size =
        std::to_string(viewportNow()[2]) + "x" + std::to_string(viewportNow()[3]);
    EXPECT_EQ(stepsOf(render()),
              reflection + refraction + size + " window ~window above " + screen);
    EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), 0);
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(4));
}

TEST_F(TerrainCallsTest, TargetOnEntryIsRestoredOnRequest) {
    make();
    look(2);
    RVTERRAIN::restoreTargetOn();
    EXPECT_TRUE(RVTERRAIN::isRestoringTarget());
    const GLuint own = 77; // a frame buffer that RVFBO does not know
    for (RVFBO *target : {RVOPENGL::getFbo(4), static_cast<RVFBO *>(nullptr)})
        for (const GLuint bound : {target ? target->getGLId() : 0u, own}) {
            RVFBO::unbind();
            if (target)
                target->render(nullptr);
            RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, bound);
            glViewport(1, 2, 30, 40);
            const Calls calls = render();
            EXPECT_EQ(RVFBO::getCurrent(), target);
            EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), static_cast<int>(bound));
            EXPECT_EQ(viewportNow(), (std::array<int, 4>{1, 2, 30, 40}));
            // Bound before the screen's pass.
            Calls last = calls.named({"glBindFramebufferEXT", "glTranslatef"});
            EXPECT_TRUE(calls.haveInOrder(
                {{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, bound}, {"glTranslatef", 0, 2, 0}}));
            EXPECT_EQ(last.named("glBindFramebufferEXT").back().arguments[1], bound);
        }
}

TEST_F(TerrainCallsTest, ADeletedTargetOnEntryCountsAsTheWindow) {
    make();
    look(2);
    RVTERRAIN::restoreTargetOn();
    auto *target = new RVFBO;
    target->render(nullptr);
    delete target;
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0); // as OpenGL does by the deletion
    ASSERT_EQ(RVFBO::getCurrent(), target);
    render();
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), 0);
}

class ForcedTargetTest : public TerrainCallsTest {
  protected:
    ForcedTargetTest() { settings.setForceFBO(true); }
};

TEST_F(ForcedTargetTest, ForcedTargetIsUnboundAndBoundAgain) {
    make();
    look(2);
    RVOPENGL::getFbo(0)->render(nullptr);
    const std::string inTarget = "64x48 window ~window target0 64x48 above " + screen;
    EXPECT_EQ(stepsOf(render()), "window " + reflection + refraction + inTarget);
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    RVFBO::unbind(); // the window's viewport is still that of the target
    EXPECT_EQ(stepsOf(render()), reflection + refraction + inTarget);
    RVTERRAIN::restoreTargetOn();
    for (RVFBO *target : {static_cast<RVFBO *>(nullptr), RVOPENGL::getFbo(4)}) {
        RVFBO::unbind();
        if (target)
            target->render(nullptr);
        render();
        EXPECT_EQ(RVFBO::getCurrent(), target);
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT),
                  static_cast<int>(target ? target->getGLId() : 0));
    }
}

TEST_F(TerrainCallsTest, WithoutFrameBufferObjectsTheImagesAreLeftOut) {
    recorder.reset();
    recorder.silent();
    recorder.nullEntryPoint("glBindFramebufferEXT");
    ASSERT_TRUE(restart());
    camera = new RVCAMERA;
    nameOf[0] = "window";
    for (const bool restoring : {false, true}) {
        restoring ? RVTERRAIN::restoreTargetOn() : RVTERRAIN::restoreTargetOff();
        terrain = loadTerrain(TerrainFile(), geometryXml + layersXml() + waterXml + skyXml);
        const std::string entry = restoring ? "~window 128x96 " : "128x96 ~window ";
        const std::pair<float, std::string> planes[] = {
            {1, "above "}, {0.99f, "unclip "}, {-0.99f, "unclip "}, {-1, "below "}};
        for (const auto &[eye, plane] : planes) {
            look(eye);
            EXPECT_EQ(stepsOf(render()), "clip " + entry + plane + screen) << eye;
        }
        delete terrain;
    }
}

} // namespace
