// The calls of a water. The silent driver has every extension.

#include "ravolt/RVWATER.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/effects/sceneryCalls.h"
#include "tests/support/callNames.h"

#include <array>
#include <map>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

constexpr char nothingDrawn[] = "   [!] No material: textures are not loaded @ RVWATER::render\n";

// OpenGL's names of the reflection's frame buffer and render buffer, then the refraction's.
std::array<unsigned int, 4> buffersOf(RVWATER *water) {
    std::array<unsigned int, 4> names{7, 7, 7, 7};
    water->getReflectionBuffer(names[0], names[1]);
    water->getRefractionBuffer(names[2], names[3]);
    return names;
}

bool load(RVWATER *water, const char *bump = "bump.tga", const char *dudv = "dudv.tga") {
    return water->loadTextures(bump, dudv, 4);
}

Calls bindCalls(unsigned int fbo, const RVTEXTURE *image, unsigned int renderBuffer) {
    return {{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, fbo},
            {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
             GL_TEXTURE_2D, image->getGLId(), 0},
            {"glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, renderBuffer},
            {"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, 64, 64},
            {"glFramebufferRenderbufferEXT", GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
             GL_RENDERBUFFER_EXT, renderBuffer}};
}

class WaterTest : public SceneryCalls {
  protected:
    void SetUp() override {
        SceneryCalls::SetUp();
        for (const char *name : {"bump.tga", "dudv.tga"})
            writeFile(name, plainTga(4, 4));
        water = new RVWATER;
    }

    void TearDown() override {
        RAVOLT::shadowingOff();
        SceneryCalls::TearDown();
    }

    // Loads the textures and uploads them.
    void makeReady(RVWATER *made, int repeat = 4) {
        made->init(30, 20);
        EXPECT_TRUE(made->loadTextures("bump.tga", "dudv.tga", repeat));
        EXPECT_TRUE(made->render(nullptr));
        startFrame();
    }

    static RVMATERIAL *lastMaterial() {
        RVMATERIAL *material = RVMATERIAL::getFirst();
        while (material->getNext())
            material = material->getNext();
        return material;
    }
    static RVTEXTURE *lastTexture(unsigned int slot) { return lastMaterial()->getTexture(slot); }

    static Calls render(RVNODE *rendered) {
        return callsOf([&] { EXPECT_TRUE(rendered->render(nullptr)); });
    }
    // Without the clock.
    static Calls surfaceCalls(RVNODE *rendered) { return render(rendered).without({"glColor3f"}); }

    RVWATER *water = nullptr;
};

class ReadyWaterTest : public WaterTest {
  protected:
    void SetUp() override {
        WaterTest::SetUp();
        makeReady(water);
    }
};

TEST_F(WaterTest, NewWaterHasItsNameAndTypeAndNoFrameBuffers) {
    EXPECT_EQ(water->getType(), RV_NODE_TYPE_WATER);
    EXPECT_EQ(water->getName(), "[water " + std::to_string(water->getId()) + "]");
    EXPECT_STREQ(water->getTypeName(), "water");
    EXPECT_EQ(buffersOf(water), (std::array<unsigned int, 4>{}));
}

// --- The surface

Calls surface(double list, double sizeZ, double sizeX) {
    return {{"glNewList", list, GL_COMPILE},
            {"glBegin", GL_QUADS},
            {"glMultiTexCoord2fARB", GL_TEXTURE0, 0, 0},
            {"glVertex3f", 0, 0, 0},
            {"glMultiTexCoord2fARB", GL_TEXTURE0, 0, 1},
            {"glVertex3f", 0, 0, sizeZ},
            {"glMultiTexCoord2fARB", GL_TEXTURE0, 1, 1},
            {"glVertex3f", sizeX, 0, sizeZ},
            {"glMultiTexCoord2fARB", GL_TEXTURE0, 1, 0},
            {"glVertex3f", sizeX, 0, 0},
            {"glEnd"},
            {"glEndList"}};
}

TEST_F(WaterTest, InitCompilesTheSameListAnewWithTheExtentAlongZFirst) {
    const Calls calls = callsOf([&] { water->init(30, 20); });
    const double list = calls.named("glNewList")[0].arguments[0];
    EXPECT_NE(list, 0);
    EXPECT_EQ(calls.without({"glGenLists"}), surface(list, 30, 20));
    EXPECT_EQ(callsOf([&] { water->init(5, 6); }), surface(list, 5, 6));
    EXPECT_EQ(callsOf([&] { delete water; }), (Calls{{"glDeleteLists", list, 1}}));
}

TEST_F(WaterTest, WithoutADisplayListInitCompilesNothing) {
    recorder.failCalls("glGenLists", 0, 1);
    EXPECT_EQ(callsOf([&] { water->init(30, 20); }), (Calls{{"glGenLists", 1}}));
    EXPECT_TRUE(callsOf([&] { water->init(30, 20); }).contains("glNewList"));
}

TEST_F(WaterTest, WaterOfDefaultSizeSpans1024By1024) {
    ASSERT_TRUE(load(water));
    const Calls calls = render(water);
    const double list = calls.named("glNewList")[0].arguments[0];
    EXPECT_TRUE(calls.haveInOrder(surface(list, 1024, 1024)));
    EXPECT_TRUE(calls.contains(Call("glCallList", list)));
    EXPECT_FALSE(render(water).contains("glNewList")); // once
}

TEST_F(WaterTest, WithoutMultitexturingTheCornersHaveTheSameCoordinates) {
    const auto saved = RVOPENGL::glMultiTexCoord2fARB;
    RVOPENGL::glMultiTexCoord2fARB = nullptr;
    const Calls calls = callsOf([&] { water->init(30, 20); }).named("glTexCoord2f");
    RVOPENGL::glMultiTexCoord2fARB = saved;
    EXPECT_EQ(calls, (Calls{{"glTexCoord2f", 0, 0},
                            {"glTexCoord2f", 0, 1},
                            {"glTexCoord2f", 1, 1},
                            {"glTexCoord2f", 1, 0}}));
}

// --- loadTextures

TEST_F(WaterTest, BadNamesAreRefused) {
    const std::string invalid = "   [!] Invalid params @ RVWATER::loadTextures\n",
                      missing = "   [!] Unable to open file gone.tga @ RVTEXTURE::loadTGA\n"
                                "   [!] Invalid params @ RVWATER::loadTexture\n"; // another method
    const struct {
        const char *bump, *dudv;
        std::string lines;
    } cases[] = {{nullptr, "bump.tga", invalid},
                 {"bump.tga", nullptr, invalid},
                 {"gone.tga", "dudv.tga", missing},
                 {"bump.tga", "gone.tga", missing}};
    for (const auto &c : cases) {
        EXPECT_FALSE(load(water, c.bump, c.dudv));
        EXPECT_LOGGED_EXACTLY(c.lines);
        EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
        // Both files are tried, but none where a name is NULL.
        EXPECT_EQ(RVTEXTURE::findByFilename("dudv.tga") != nullptr, c.lines == missing);
    }
    EXPECT_FALSE(water->render(nullptr));
}

TEST_F(ReadyWaterTest, FailedLoadDoesNotChangeTheDrawnWater) {
    const Calls before = surfaceCalls(water);
    startFrame();
    EXPECT_FALSE(load(water, "gone.tga"));
    EXPECT_EQ(surfaceCalls(water), before);
}

TEST_F(ReadyWaterTest, MaterialHasTheMapsAndTheImagesInItsSlots) {
    EXPECT_NE(lastTexture(0), lastTexture(2));
    for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot) {
        SCOPED_TRACE(slot);
        const RVTEXTURE *texture = lastTexture(slot);
        const bool image = slot == 0 || slot == 2, map = slot == 3 || slot == 4;
        ASSERT_EQ(texture != nullptr, image || map);
        if (!texture)
            continue;
        EXPECT_TRUE(texture->isTrilinear());
        EXPECT_EQ(texture->isMipmapped(), map);
        EXPECT_EQ(texture->isClamped(), image);
        EXPECT_EQ(texture->getSizeX(), image ? 64u : 4u);
        EXPECT_EQ(texture->getSizeY(), image ? 64u : 4u);
    }
    EXPECT_EQ(lastTexture(3), RVTEXTURE::findByFilename("bump.tga"));
    EXPECT_EQ(lastTexture(4), RVTEXTURE::findByFilename("dudv.tga"));
}

TEST_F(WaterTest, FrameBuffersAreMadeOneAfterTheOtherAndUnbound) {
    const Calls calls =
        callsOf([&] { ASSERT_TRUE(load(water)); })
            .named({"glBindFramebufferEXT", "glFramebufferTexture2DEXT", "glBindRenderbufferEXT",
                    "glRenderbufferStorageEXT", "glFramebufferRenderbufferEXT"});
    const auto names = buffersOf(water);
    for (const unsigned int name : names)
        EXPECT_NE(name, 0u);
    std::vector<Call> expected;
    for (const Calls &part : {bindCalls(names[0], lastTexture(0), names[1]),
                              bindCalls(names[2], lastTexture(2), names[3]),
                              Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0},
                                    {"glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, 0}}})
        expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(calls, Calls(expected));
}

TEST_F(WaterTest, TheWindowIsTheCurrentTargetAfterLoading) {
    RVFBO *target = RVOPENGL::getFbo(0);
    target->render(nullptr);
    ASSERT_TRUE(load(water));
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_TRUE(callsOf([&] {
                    target->render(nullptr);
                }).contains(Call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId())));
    RVFBO::unbind();
}

TEST_F(ReadyWaterTest, SecondLoadReusesTheMapsAndMakesNewImagesAndANewMaterial) {
    const auto names = buffersOf(water);
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    RVMATERIAL *first = RVMATERIAL::getFirst();
    const Calls calls = callsOf([&] { EXPECT_TRUE(load(water)); });
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 2);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 2u);
    for (unsigned int slot : {0u, 2u, 3u, 4u})
        EXPECT_EQ(lastTexture(slot) == first->getTexture(slot), slot > 2) << slot;
    // The old frame buffers would be lost.
    EXPECT_TRUE(calls.contains(Call("glDeleteFramebuffersEXT", 1, names[0])));
    EXPECT_TRUE(calls.contains(Call("glDeleteRenderbuffersEXT", 1, names[1])));
    EXPECT_EQ(calls.count("glDeleteFramebuffersEXT"), 2u);
    EXPECT_EQ(calls.count("glDeleteRenderbuffersEXT"), 2u);
}

TEST_F(WaterTest, OneFileMayBeBothMaps) {
    ASSERT_TRUE(load(water, "bump.tga", "bump.tga"));
    EXPECT_EQ(lastTexture(3), lastTexture(4));
}

TEST_F(WaterTest, WithoutFrameBufferObjectsTheMaterialHasTheMapsAlone) {
    for (const char *name :
         {"glGenFramebuffersEXT", "glBindFramebufferEXT", "glFramebufferRenderbufferEXT",
          "glGenRenderbuffersEXT", "glBindRenderbufferEXT", "glRenderbufferStorageEXT",
          "glFramebufferTexture2DEXT"}) {
        SCOPED_TRACE(name);
        restartWithout(name);
        water = new RVWATER;
        const unsigned int textures = RVTEXTURE::getNumberOfTextures();
        EXPECT_TRUE(load(water));
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 4); // two of them empty
        EXPECT_EQ(buffersOf(water), (std::array<unsigned int, 4>{}));
        EXPECT_EQ(lastTexture(0), nullptr);
        EXPECT_EQ(lastTexture(2), nullptr);
        EXPECT_NE(lastTexture(3), nullptr);
        EXPECT_TRUE(water->render(nullptr));
    }
}

TEST_F(WaterTest, ImpossibleSizeMakesNoImages) {
    settings.setWaterSize(5000);
    ASSERT_TRUE(restart());
    water = new RVWATER;
    markLog();
    EXPECT_TRUE(load(water));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::create\n");
    EXPECT_EQ(lastTexture(0), nullptr);
    EXPECT_TRUE(water->render(nullptr));
}

TEST_F(ReadyWaterTest, LoadWithoutMemoryFails) {
    recorder.failAllocation(1, 0, 1); // the material
    markLog();
    EXPECT_FALSE(load(water));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVWATER::loadTextures\n");
    EXPECT_TRUE(water->render(nullptr));
    for (const unsigned int image : {1u, 2u}) { // after the material
        recorder.failAllocation(1, image, 1);
        markLog();
        EXPECT_TRUE(load(water));
        recorder.allocationsWork();
        EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVWATER::createTexture\n");
        EXPECT_EQ(lastTexture(0), nullptr);
        EXPECT_TRUE(water->render(nullptr));
    }
}

// --- The destructor

Calls deletions(RVWATER *water) {
    return callsOf([&] { delete water; })
        .named({"glDeleteFramebuffersEXT", "glDeleteRenderbuffersEXT", "glDeleteLists"});
}

TEST_F(ReadyWaterTest, DestructorDeletesItsBuffersAndListOnly) {
    const auto names = buffersOf(water);
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    const Calls calls = deletions(water);
    EXPECT_EQ(calls.without({"glDeleteLists"}), (Calls{{"glDeleteFramebuffersEXT", 1, names[0]},
                                                       {"glDeleteRenderbuffersEXT", 1, names[1]},
                                                       {"glDeleteFramebuffersEXT", 1, names[2]},
                                                       {"glDeleteRenderbuffersEXT", 1, names[3]}}));
    EXPECT_EQ(calls.count("glDeleteLists"), 1u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
}

// On purpose: the tests of the two in the middle are crossed.
TEST_F(WaterTest, DestructorTestsTheOtherNameOfTheTwoInTheMiddle) {
    const struct {
        const char *generate;
        unsigned int after, missing, other;
        const char *twice, *once;
    } cases[] = {{"glGenFramebuffersEXT", 1, 2, 3, "glDeleteFramebuffersEXT",
                  "glDeleteRenderbuffersEXT"}, // that of the refraction
                 {"glGenRenderbuffersEXT", 0, 1, 0, "glDeleteRenderbuffersEXT",
                  "glDeleteFramebuffersEXT"}}; // that of the reflection
    for (const auto &c : cases) {
        water = new RVWATER;
        recorder.failCalls(c.generate, c.after, 1);
        ASSERT_TRUE(load(water));
        const auto names = buffersOf(water);
        ASSERT_EQ(names[c.missing], 0u);
        const Calls calls = deletions(water);
        EXPECT_EQ(calls.count(c.twice), 2u) << "one of them of the name 0";
        EXPECT_EQ(calls.named(c.once), (Calls{{c.once, 1, names[c.other]}}));
    }
}

TEST_F(ReadyWaterTest, CopyDrawsTheOriginalsSurfaceAndDeletesNothing) {
    const Calls original = surfaceCalls(water);
    startFrame();
    {
        RVWATER copy(*water);
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_WATER);
        EXPECT_EQ(surfaceCalls(&copy), original);
        recorder.start();
    }
    EXPECT_TRUE(recorder.stop().named({"glDeleteFramebuffersEXT", "glDeleteLists"}).empty());
}

TEST_F(ReadyWaterTest, AssignedWaterDeletesItsOwnBuffers) {
    RVWATER *other = new RVWATER;
    makeReady(other);
    const auto own = buffersOf(water), others = buffersOf(other);
    *water = *other;
    EXPECT_EQ(buffersOf(water), others);
    const Calls calls = deletions(water);
    EXPECT_TRUE(calls.contains(Call("glDeleteFramebuffersEXT", 1, own[0])));
    EXPECT_FALSE(calls.contains(Call("glDeleteFramebuffersEXT", 1, others[0])));
}

// --- render

TEST_F(WaterTest, WithoutTexturesNothingIsDrawnAndLoggedOnce) {
    water->init(30, 20);
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(water->render(nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY(nothingDrawn);
    EXPECT_FALSE(water->render(nullptr));
    EXPECT_NOTHING_LOGGED();
    ASSERT_TRUE(load(water));
    EXPECT_TRUE(water->render(nullptr));
    delete lastMaterial();
    markLog();
    EXPECT_FALSE(water->render(nullptr));
    EXPECT_LOGGED_EXACTLY(nothingDrawn);
}

TEST_F(ReadyWaterTest, ClockIsTheRedOfTheSurfaceAndOfNothingElse) {
    recorder.stopClock();
    water->setSpeed(1);
    const Call first = render(water).named("glColor3f")[0];
    drawFrame(nullptr, nullptr); // a frame of no length counts as a second
    const double factor = RAVOLT::getFPSfactor();
    ASSERT_GT(factor, 0);
    const Calls calls = render(water);
    EXPECT_TRUE(calls.haveInOrder({{"glPushAttrib", GL_CURRENT_BIT},
                                   {"glColor3f", first.arguments[0] + factor, 0, 0},
                                   {"glCallList", calls.named("glCallList")[0].arguments[0]},
                                   {"glPopAttrib"}}))
        << calls.text();
    EXPECT_EQ(calls.back(), Call("glPopAttrib"));
}

TEST_F(ReadyWaterTest, SpeedScalesTheClockAndIsSmallByDefault) {
    recorder.stopClock();
    drawFrame(nullptr, nullptr);
    const double factor = RAVOLT::getFPSfactor();
    const auto red = [&] { return render(water).named("glColor3f")[0].arguments[0]; };
    const double before = red();
    EXPECT_NEAR(red() - before, 0.005 * factor, 1e-6);
    water->setSpeed(0);
    EXPECT_EQ(red(), 0);
    water->setSpeed(0.005f); // the clock ran on meanwhile
    EXPECT_NEAR(red() - before, 3 * 0.005 * factor, 1e-6);
}

TEST_F(ReadyWaterTest, ActivatesTheLightsOfItsEntryAndThenLoadsItsMatrix) {
    RVNODE *root = new RVNODE;
    RVLIGHT *light = new RVLIGHT;
    light->link(root);
    water->link(root);
    water->setPosition(1, 2, 3);
    RVLIGHT::lightingOn();
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    EXPECT_TRUE(
        calls.haveInOrder({{"glEnable", GL_LIGHT0},
                           {"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1},
                           {"glPushAttrib", GL_CURRENT_BIT}}))
        << calls.text();
    startFrame();
    EXPECT_FALSE(render(water).contains("glLoadMatrixf"));
}

// They may have been drawn for the frame already.
TEST_F(ReadyWaterTest, TheCollectorDoesNotEvictTheImages) {
    const RVWATER copy(*water);
    RVTEXTURE *const dynamic = new RVTEXTURE;
    dynamic->incReferences();
    ASSERT_TRUE(dynamic->create(4, 4, RV_TEXTURE_RGB) && dynamic->update());
    const unsigned int names[] = {lastTexture(0)->getGLId(), lastTexture(2)->getGLId()};
    ASSERT_TRUE(RVTEXTURE::garbageCollect(0));
    EXPECT_EQ(lastTexture(0)->getGLId(), names[0]);
    EXPECT_EQ(lastTexture(2)->getGLId(), names[1]);
    EXPECT_FALSE(dynamic->isLoaded());
    EXPECT_FALSE(lastTexture(3)->isLoaded());
    EXPECT_FALSE(lastTexture(4)->isLoaded());
    EXPECT_TRUE(lastTexture(0)->unload(true)) << "by the application";
}

TEST_F(ReadyWaterTest, UnloadedImageIsAttachedToItsFrameBufferAgain) {
    const unsigned int fbo = buffersOf(water)[0];
    RVTEXTURE *image = lastTexture(0);
    ASSERT_TRUE(image->unload(true));
    RVOPENGL::getFbo(0)->render(nullptr);
    markLog();
    const Calls calls = render(water);
    EXPECT_NOTHING_LOGGED();
    EXPECT_NE(image->getGLId(), 0u);
    EXPECT_TRUE(calls.haveInOrder(
        {{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, fbo},
         {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D,
          image->getGLId(), 0},
         {"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, RVOPENGL::getFbo(0)->getGLId()}}))
        << calls.text();
    RVFBO::unbind();
    EXPECT_FALSE(render(water).contains("glBindFramebufferEXT"));
}

// OpenGL may have given an image that was uploaded again the name that it had before.
TEST_F(ReadyWaterTest, ImagesAreAttachedAgainAfterAnyTextureWasUnloaded) {
    RVTEXTURE *const other = new RVTEXTURE;
    ASSERT_TRUE(other->create(4, 4, RV_TEXTURE_RGB) && other->update());
    render(water); // for the upload
    EXPECT_EQ(render(water).count("glFramebufferTexture2DEXT"), 0u);
    EXPECT_TRUE(other->unload(true));
    EXPECT_EQ(render(water).named("glFramebufferTexture2DEXT"),
              (Calls{{"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                      GL_TEXTURE_2D, lastTexture(0)->getGLId(), 0},
                     {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                      GL_TEXTURE_2D, lastTexture(2)->getGLId(), 0}}));
    EXPECT_EQ(render(water).count("glFramebufferTexture2DEXT"), 0u);
}

// --- Programs

class WaterProgramTest : public WaterTest {
  protected:
    WaterProgramTest() { settings.setShaders(true); }

    void SetUp() override {
        WaterTest::SetUp();
        nameOf = programNames();
        makeReady(water, 9);
    }

    std::string programs(const Calls &calls) {
        std::string names;
        for (const Call &call : calls.named("glUseProgramObjectARB"))
            names += nameOf[call.arguments[0]];
        return names;
    }

    std::map<double, std::string> nameOf;
};

TEST_F(WaterProgramTest, EachFrameChoosesTheProgramAndSetsItsValues) {
    EXPECT_EQ(lastMaterial()->getShader(), RVSHADER::water);
    for (const bool shadowed : {false, true, false}) {
        (shadowed ? RAVOLT::shadowingOn : RAVOLT::shadowingOff)();
        startFrame();
        const Calls calls = render(water);
        const RVSHADER &program = shadowed ? *RVSHADER::waterS : *RVSHADER::water;
        EXPECT_EQ(programs(calls), shadowed ? "waterShaderS" : "waterShader");
        EXPECT_TRUE(calls.contains(Call("glUniform1iARB", program.getParam(20), 9))); // tiling
        EXPECT_EQ(calls.contains("glUniform1fARB"), shadowed);
        if (!shadowed)
            continue;
        EXPECT_TRUE(calls.contains(Call("glUniform1fARB", program.getParam(2), 64)));
        EXPECT_TRUE(calls.contains(Call("glUniform1fARB", program.getParam(3), 64)));
        EXPECT_TRUE(calls.contains(Call("glUniform1iARB", program.getParam(1), 1)));
    }
}

// The texture bound on unit 1 when the surface is drawn.
double boundOnUnit1(const Calls &calls) {
    double bound = -1, unit = GL_TEXTURE0;
    for (const Call &call : calls) {
        if (call.name == "glActiveTextureARB")
            unit = call.arguments[0];
        else if (call.name == "glBindTexture" && unit == GL_TEXTURE1)
            bound = call.arguments[1];
        else if (call.name == "glCallList")
            break;
    }
    return bound;
}

TEST_F(WaterProgramTest, ReadsTheFramesShadowMapWhereALightCastsShadows) {
    RAVOLT::shadowingOn();
    RVNODE *root = new RVNODE;
    RVLIGHT *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->castShadows(true);
    light->setDirection(Z3MVECTOR3D(1, -1, 0));
    light->link(root);
    water->link(root);
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    EXPECT_EQ(boundOnUnit1(calls), RVOPENGL::getFbo(2)->getTexture()->getGLId());
    EXPECT_EQ(boundOnUnit1(render(water)), RVOPENGL::getFbo(2)->getTexture()->getGLId());
}

TEST_F(WaterProgramTest, WithoutACasterItReadsAFullyLitMapOfItsOwn) {
    RAVOLT::shadowingOn();
    drawFrame(nullptr, nullptr);
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    double map = 0;
    for (const bool made : {true, false}) { // once
        startFrame();
        const Calls calls = render(water);
        EXPECT_EQ(calls.contains("glTexImage2D"), made);
        if (made)
            map = boundOnUnit1(calls);
        EXPECT_EQ(boundOnUnit1(calls), map);
    }
    EXPECT_GT(map, 0);
    EXPECT_NE(map, RVOPENGL::getFbo(2)->getTexture()->getGLId());
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    EXPECT_TRUE(callsOf([&] { delete water; }).contains(Call("glDeleteTextures", 1, map)));
}

TEST_F(WaterProgramTest, TextureOfUnit1IsBoundAnewAfterTheWater) {
    RVTEXTURE *texture = RVTEXTURE::findByFilename("bump.tga");
    unsigned int unit = 1;
    RAVOLT::shadowingOn();
    texture->render(&unit);
    render(water);
    EXPECT_TRUE(callsOf([&] { texture->render(&unit); }).contains("glBindTexture"));
}

TEST_F(WaterProgramTest, DeletedOrDeactivatedProgramIsNotUsed) {
    RVSHADER::water->forceDeactivation();
    EXPECT_FALSE(render(water).contains(Call("glUniform1iARB", RVSHADER::water->getParam(20), 9)));
    delete RVSHADER::water;
    startFrame();
    const Calls calls = render(water);
    EXPECT_EQ(programs(calls), "");
    EXPECT_TRUE(calls.contains("glCallList"));
}

} // namespace
