// What terrains look like, under the effects too, and what they leave to what is drawn after them.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/effects/litScene.h"
#include "tests/effects/sceneryPictures.h"
#include "tests/effects/terrainScene.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <cmath>
#include <set>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Tolerance inTarget{
    .maximum = 24, .mean = 0.2, .reason = "a target has its rows and its samples otherwise"};

// A lake of 20 units around (32, 0, 32) with hills around it.
float lake(unsigned int x, unsigned int z) {
    const float dx = static_cast<float>(x) - 8, dz = static_cast<float>(z) - 8;
    return (dx * dx + dz * dz) * 0.25f - 6;
}

class TerrainDrawingTest : public LitSceneTest {
  protected:
    TerrainDrawingTest() {
        settings.setFBOSizeX(width);
        settings.setFBOSizeY(height);
    }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        recorder.stopClock();
        writeTerrainTextures();
        writeBoard("sky.tga", 32, 16);
        writeBoard("d1.tga", 16, 4);
        makeScene();
    }

    void TearDown() override {
        RVTERRAIN::restoreTargetOff();
        resetEffects();
        RVFBO::unbind();
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        EngineTest::TearDown();
    }

    // Four chunks of 32 by 32 units.
    void makeScene(const std::string &elements = geometryXml + layersXml() + waterXml + skyXml +
                                                 lodXml({"1000", "2500", "9000"}),
                   float (*heightAt)(unsigned int, unsigned int) = lake) {
        makeLitRoot({32, 22, 78}, -22, {20, 60, 10});
        light->setAmbient(0.1f, 0.1f, 0.1f, 1);
        light->setSpecular(0.5f, 0.5f, 0.5f, 1);
        const TerrainFile file(
            {.side = 9, .columns = 2, .rows = 2, .levels = 4, .scale = 4, .height = heightAt});
        terrain = loadTerrain(file, elements);
        terrain->link(root);
    }

    bool startAgain() {
        const bool started = restart();
        recorder.stopClock();
        return started;
    }

    static void withoutPrograms() {
        for (RVMATERIAL *each = RVMATERIAL::getFirst(); each; each = each->getNext())
            each->setShader(nullptr);
    }

    RVTERRAIN *terrain = nullptr;
};

TEST_F(TerrainDrawingTest, LakeMirrorsTheLandAndTheSky) {
    ASSERT_TRUE(RVSHADER::useTerrain());
    EXPECT_PICTURE(draw(), "terrain_program", edges);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TerrainDrawingTest, LandAndSkyAreSeenFromBelowTheSurface) {
    camera->setPosition(32, -3, 40);
    camera->setRotation(15, 0, 0);
    EXPECT_PICTURE(draw(), "terrain_below", edges);
}

TEST_F(TerrainDrawingTest, FixedFunctionsDrawTheLandWithoutItsProgram) {
    withoutPrograms();
    const Picture fixed = draw();
    EXPECT_PICTURE(fixed, "terrain_fixed", edges);
    delete RVSHADER::terrainComplex;
    EXPECT_LE(differenceOf(draw(), fixed).maximum, 0);
}

TEST_F(TerrainDrawingTest, DeactivatedProgramIsNotUsed) {
    const Picture before = draw();
    RVSHADER::terrainComplex->forceDeactivation();
    EXPECT_GT(differenceOf(draw(), before).mean, 1.0);
}

TEST_F(TerrainDrawingTest, ChunkWithoutAMaterialIsWhite) {
    delete terrain->getChunk(3)->getMaterial(); // the nearest one on the right
    light->unlink();
    camera->setPosition(48, 100, 48);
    camera->setRotation(-90, 0, 0);
    EXPECT_PIXEL(draw().at(width / 2 + 20, height / 2 + 20), (Pixel{255, 255, 255}), 0);
}

// What is not there is left out, and the rest drawn.
TEST_F(TerrainDrawingTest, MissingElementsLeaveTheRest) {
    for (const char *elements : {"", "terrain", "water", "sky", "terrain sky", "water sky"}) {
        SCOPED_TRACE(elements);
        const auto has = [&](const char *name) {
            return std::string(elements).find(name) != std::string::npos;
        };
        ASSERT_TRUE(startAgain());
        makeScene(geometryXml + (has("terrain") ? layersXml() : "") +
                  (has("water") ? waterXml : "") + (has("sky") ? skyXml : ""));
        const Picture picture = draw();
        EXPECT_GT(picture.pixelsUnlike(background), 3000u);
        EXPECT_EQ(picture.at(2, 2) == background, !has("sky"));
        expectNoGlErrors();
    }
}

// A bare ground of -6 has water everywhere, below the horizon.
TEST_F(TerrainDrawingTest, SkyIsSeenInTheReflection) {
    for (const float eye : {0.5f, 2.0f, 50.0f}) {
        Picture pictures[2];
        for (const bool green : {false, true}) {
            ASSERT_TRUE(startAgain());
            writeFile("sky.tga", green ? plainTga(4, 4, 20, 220, 20) : plainTga(4, 4, 220, 20, 20));
            makeScene(geometryXml + layersXml() + waterXml + skyXml,
                      [](unsigned int, unsigned int) { return -6.0f; });
            camera->setPosition(32, eye, eye > 10 ? 140.0f : 60.0f);
            camera->setRotation(-15, 0, 0);
            pictures[green] = draw();
        }
        const int y = height * 2 / 3;
        for (const int x : {width / 2, width / 2 - 12, width / 2 + 12}) {
            SCOPED_TRACE(testing::Message() << eye << " high, column " << x);
            const Pixel red = pictures[0].at(x, y), green = pictures[1].at(x, y);
            EXPECT_GT(red.red, green.red + 15);
            EXPECT_GT(green.green, red.green + 15);
        }
    }
}

// --- Levels of detail

TEST_F(TerrainDrawingTest, NoGapOpensBetweenLevels) {
    ASSERT_TRUE(startAgain());
    std::vector<std::string> levels; // 17 units apart, more than two centres are
    for (int level = 0; level < 5; ++level)
        levels.push_back(std::to_string((41 + 17 * level) * (41 + 17 * level)));
    const auto bumps = [](unsigned int x, unsigned int z) {
        return 1.5f * std::sin(float(x) * 0.7f) * std::cos(float(z) * 0.5f);
    };
    const TerrainFile file(
        {.side = 33, .columns = 10, .rows = 8, .levels = 6, .scale = 0.5f, .height = bumps});
    terrain = loadTerrain(file, geometryXml + layersXml() + lodXml(levels));
    camera = new RVCAMERA;
    camera->setRotation(-90, 0, 0);
    RVOPENGL::setBackgroundColor(1, 0, 1, 1);
    std::set<unsigned int> seen;
    for (int step = 0; step < 12; ++step) {
        SCOPED_TRACE(step);
        const float eye = 38.0f + 6.0f * static_cast<float>(step);
        // Not above a diagonal of the grid, whose pixels' centres it would pass through exactly:
        // Mesa's softpipe draws some of these for neither of the two triangles.
        camera->setPosition(80.3f + static_cast<float>(step), eye, 64 - static_cast<float>(step));
        drawFrame(camera, terrain);
        EXPECT_EQ(readFrame().pixelsUnlike({255, 0, 255}), std::size_t(width * height));
        for (unsigned int i = 0; i < terrain->getNumberOfChunks(); ++i)
            if (terrain->getChunk(i)->isVisible())
                seen.insert(terrain->getChunk(i)->getLevel());
    }
    EXPECT_EQ(seen, (std::set<unsigned int>{0, 1, 2, 3, 4, 5}));
}

// --- Before and after other things

struct Neighbourhood {
    const char *what;
    bool programs, lit, after2D, afterEmitter;
};

constexpr Neighbourhood neighbourhoods[] = {
    {"unlit", true, false, false, false},
    {"lit", true, true, false, false},
    {"unlit after 2D", true, false, true, false},
    {"lit after 2D", true, true, true, false},
    {"unlit after an emitter", true, false, false, true},
    {"lit after an emitter", true, true, false, true},
    {"unlit, fixed functions", false, false, false, false},
    {"lit, fixed functions", false, true, false, false},
    {"unlit after all, fixed functions", false, false, true, true},
    {"lit after all, fixed functions", false, true, true, true}};

class TerrainAmongOthersTest : public TerrainDrawingTest {
  protected:
    void before(const Neighbourhood &n) {
        RAVOLT::swap();
        if (n.after2D)
            drawFrame2D(nullptr);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        if (n.afterEmitter) {
            glPushMatrix();
            RVELEMENT entry;
            emitter->render(&entry);
            glPopMatrix();
        }
    }

    // Cubes with and without a texture, in a frame in which a terrain was drawn before, or not.
    Picture drawCubes(const Neighbourhood &n, bool withTerrain) {
        before(n);
        if (withTerrain) {
            EXPECT_TRUE(terrain->render(nullptr));
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        n.lit ? RVLIGHT::lightingOn() : RVLIGHT::lightingOff();
        cubes->pass(true);
        RAVOLT::end3D(true);
        return readFrame();
    }

    void make(const Neighbourhood &n) {
        ASSERT_TRUE(startAgain());
        makeScene();
        if (!n.programs)
            withoutPrograms();
        emitter = new RVEMITTER;
        emitter->setNumberOfParticles(4);
        RveMaterial textured = coloured("board", {1, 1, 1, 1});
        textured.texture = "sky.tga";
        cubes =
            loadScene({{textured, coloured("plain", {0.9f, 0.6f, 0.1f, 1})},
                       rootOver({placed(cubeMesh("left", "board"), {30, 2, 66}, {20, 30, 0}),
                                 placed(cubeMesh("right", "plain"), {34, 2, 66}, {20, 30, 0})})});
        camera->setPosition(32, 4, 76);
        camera->setRotation(-10, 0, 0);
        light->unlink();
        if (n.lit) {
            light->setPosition(30, 10, 90);
            light->link(cubes);
        }
    }

    RVEMITTER *emitter = nullptr;
    RVNODE *cubes = nullptr;
};

TEST_F(TerrainAmongOthersTest, MeshAfterATerrainLooksLikeWithoutIt) {
    for (const Neighbourhood &n : neighbourhoods) {
        SCOPED_TRACE(n.what);
        make(n);
        Neighbourhood alone = n; // an emitter disables culling, a terrain restores its switch
        alone.afterEmitter = false;
        drawCubes(alone, false); // uploads the textures
        const Picture without = drawCubes(alone, false), with = drawCubes(n, true);
        EXPECT_GT(without.pixelsUnlike(background), 500u);
        EXPECT_EQ(differenceOf(with, without).maximum, 0);
        EXPECT_EQ(differenceOf(drawCubes(alone, false), without).maximum, 0);
    }
}

// Shadows are drawn from the map on unit 1, in a list that has the terrain too.
TEST_F(TerrainAmongOthersTest, ShadowsOfMeshesAreThoseWithoutATerrain) {
    make(neighbourhoods[0]);
    auto *spot = new RVLIGHT;
    spot->setLightType(RV_LIGHT_TYPE_SPOT);
    spot->castShadows(true);
    spot->setPosition(26, 8, 72);
    spot->setDirection(Z3MVECTOR3D(0.5f, -0.5f, -0.5f));
    spot->setCutOff(40);
    spot->setShadowNearPlane(1);
    spot->setShadowFarPlane(40);
    spot->link(cubes);
    RAVOLT::shadowingOn();
    const auto drawn = [&] {
        RAVOLT::swap();
        drawFrame(camera, cubes);
        return readFrame();
    };
    drawn();
    const Picture without = drawn();
    cubes->link(root); // after the terrain
    RAVOLT::swap();
    drawFrame(camera, root);
    const Picture with = readFrame();
    EXPECT_GT(without.pixelsUnlike(background), 500u);
    EXPECT_GT(differenceOf(with, without).mean, 1.0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (without.at(x, y) == background)
                continue;
            ASSERT_EQ(with.at(x, y), without.at(x, y)) << x << ", " << y;
        }
}

TEST_F(TerrainAmongOthersTest, TerrainLooksTheSameAfterOtherThings) {
    for (const bool programs : {true, false}) {
        Picture first;
        for (const Neighbourhood &n : neighbourhoods) {
            if (n.programs != programs || n.lit)
                continue;
            SCOPED_TRACE(n.what);
            make(n);
            before(n);
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            EXPECT_TRUE(terrain->render(nullptr));
            RAVOLT::end3D(true);
            if (first.empty())
                first = readFrame();
            EXPECT_EQ(differenceOf(readFrame(), first).maximum, 0);
        }
    }
}

TEST_F(TerrainDrawingTest, TextureUnitsAreOffAfterwards) {
    for (const bool programs : {true, false}) {
        if (!programs)
            withoutPrograms();
        draw();
        GLint units = 0;
        glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
        for (GLint unit = 0; unit < units; ++unit) {
            RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + static_cast<GLenum>(unit));
            EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D)) << unit;
        }
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    }
}

TEST_F(TerrainDrawingTest, NextFrameLooksTheSame) {
    const Picture first = draw();
    for (int again = 0; again < 2; ++again) {
        drawFrame2D(nullptr);
        EXPECT_EQ(differenceOf(draw(), first).maximum, 0);
    }
}

// --- Targets

Picture pictureOfTarget(int index) {
    RVOPENGL::getFbo(index)->render(nullptr);
    return readFrame();
}

TEST_F(TerrainDrawingTest, BloomOfNoIntensityShowsThePlainPictureOnlyWithTheTargetRestored) {
    const Picture plain = draw();
    RAVOLT::bloomingOn();
    RAVOLT::setBloomingIntensity(0);
    EXPECT_GT(differenceOf(draw(), plain).mean, 10.0); // the land is in the window alone
    RVTERRAIN::restoreTargetOn();
    const Difference bloom = differenceOf(draw(), plain);
    EXPECT_LE(bloom.maximum, inTarget.maximum);
    EXPECT_LE(bloom.mean, inTarget.mean);
}

TEST_F(TerrainDrawingTest, DepthOfFieldHasTheLandsDepths) {
    const Picture plain = draw();
    constexpr int x = 20, y = 70; // the hill at the near shore
    float depth = 1;
    glReadPixels(x, height - 1 - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    ASSERT_LT(depth, 1.0f);
    const float zNear = RVOPENGL::getNearPlane(), zFar = RVOPENGL::getFarPlane(),
                distance = 2 * zFar * zNear / (zFar + zNear - (2 * depth - 1) * (zFar - zNear));

    RVTERRAIN::restoreTargetOn();
    RAVOLT::DOFOn();
    RAVOLT::setDOFRange(0); // nothing is blurred
    const Difference sharp = differenceOf(draw(), plain);
    EXPECT_LE(sharp.maximum, inTarget.maximum);
    EXPECT_LE(sharp.mean, inTarget.mean);

    RVOPENGL::getFbo(1)->render(nullptr);
    float coded[4] = {};
    glReadPixels(x, height - 1 - y, 1, 1, GL_RGBA, GL_FLOAT, coded);
    RVFBO::unbind();
    EXPECT_NEAR(coded[3], (distance + zNear) / zFar, 0.002);

    RAVOLT::setDOFRange(1000);
    RAVOLT::setDOFFocus(0); // all is blurred
    EXPECT_GT(differenceOf(draw(), plain).mean, 0.5);
}

// SDL 1.2's interface on SDL 2 draws such a window into an object of its own.
TEST_F(TerrainDrawingTest, AMultisampledWindowIsTheTargetThatIsRestored) {
    settings.setMultisampling(4);
    ASSERT_TRUE(startAgain());
    makeScene();
    const Picture plain = draw();
    RVTERRAIN::restoreTargetOn();
    EXPECT_EQ(differenceOf(draw(), plain).mean, 0.0);
}

TEST_F(TerrainDrawingTest, ForcedTargetGetsTheWholePicture) {
    const Picture plain = draw();
    settings.setForceFBO(true);
    ASSERT_TRUE(startAgain());
    makeScene();
    for (const bool restoring : {false, true}) {
        restoring ? RVTERRAIN::restoreTargetOn() : RVTERRAIN::restoreTargetOff();
        drawFrame(camera, root);
        EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
        const Difference forced = differenceOf(pictureOfTarget(0), plain);
        EXPECT_LE(forced.maximum, inTarget.maximum) << restoring;
        EXPECT_LE(forced.mean, inTarget.mean);
    }
}

} // namespace
