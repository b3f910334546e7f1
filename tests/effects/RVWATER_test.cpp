// The calls of a water, with a silent driver that has everything.

#include "ravolt/RVWATER.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/resources/programNames.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

#include <map>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

constexpr char nothingDrawn[] = "   [!] No material: textures are not loaded @ RVWATER::render\n";
const std::string missingFile = "   [!] Unable to open file gone.tga @ RVTEXTURE::loadTGA\n"
                                "   [!] Invalid params @ RVWATER::loadTexture\n";

class WaterTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        writeFile("bump.tga", plainTga(4, 4));
        writeFile("dudv.tga", plainTga(4, 4));
    }

    void TearDown() override {
        RAVOLT::shadowingOff();
        SilentEngineTest::TearDown();
    }

    // A water with its textures, uploaded.
    RVWATER *makeWater(int repeat = 4) {
        RVWATER *water = new RVWATER;
        water->init(30, 20);
        EXPECT_TRUE(water->loadTextures("bump.tga", "dudv.tga", repeat));
        EXPECT_TRUE(water->render(nullptr));
        start();
        return water;
    }

    // The state in which a frame begins.
    static void start() {
        RVSHADER::reset();
        RVMATERIAL::reset();
        RVLIGHT::lightingOff();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    }

    static RVMATERIAL *lastMaterial() {
        RVMATERIAL *material = RVMATERIAL::getFirst();
        while (material->getNext())
            material = material->getNext();
        return material;
    }

    static Calls render(RVWATER *water, void *data = nullptr) {
        return callsOf([&] { EXPECT_TRUE(water->render(data)); });
    }
};

TEST_F(WaterTest, NewWaterHasItsNameAndTypeAndNoFrameBuffers) {
    RVWATER *water = new RVWATER;
    EXPECT_EQ(water->getType(), RV_NODE_TYPE_WATER);
    EXPECT_EQ(water->getName(), "[water " + std::to_string(water->getId()) + "]");
    EXPECT_STREQ(water->getTypeName(), "water");
    unsigned int fbo = 7, renderBuffer = 7;
    water->getReflectionBuffer(fbo, renderBuffer);
    EXPECT_EQ(fbo + renderBuffer, 0u);
    fbo = renderBuffer = 7;
    water->getRefractionBuffer(fbo, renderBuffer);
    EXPECT_EQ(fbo + renderBuffer, 0u);
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

TEST_F(WaterTest, InitTakesTheExtentAlongZFirstAndCompilesFourCorners) {
    RVWATER *water = new RVWATER;
    const Calls calls = callsOf([&] { water->init(30, 20); });
    ASSERT_TRUE(calls.contains("glNewList"));
    const double list = calls.named("glNewList")[0].arguments[0];
    EXPECT_NE(list, 0);
    EXPECT_EQ(calls.without({"glGenLists"}), surface(list, 30, 20));
}

TEST_F(WaterTest, SecondInitCompilesTheSameListAnew) {
    RVWATER *water = new RVWATER;
    const Calls first = callsOf([&] { water->init(30, 20); });
    const double list = first.named("glNewList")[0].arguments[0];
    EXPECT_EQ(callsOf([&] { water->init(5, 6); }), surface(list, 5, 6));
    EXPECT_EQ(callsOf([&] { delete water; }), (Calls{{"glDeleteLists", list, 1}}));
}

TEST_F(WaterTest, WaterOfDefaultSizeSpans1024By1024) {
    RVWATER *water = new RVWATER;
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    const Calls calls = render(water);
    ASSERT_TRUE(calls.contains("glNewList"));
    const double list = calls.named("glNewList")[0].arguments[0];
    EXPECT_TRUE(calls.haveInOrder(surface(list, 1024, 1024)));
    EXPECT_TRUE(calls.contains(Call("glCallList", list)));
    EXPECT_FALSE(render(water).contains("glNewList")); // once
}

TEST_F(WaterTest, WithoutMultitexturingTheCornersHaveTheirCoordinatesAllTheSame) {
    const auto saved = RVOPENGL::glMultiTexCoord2fARB;
    RVOPENGL::glMultiTexCoord2fARB = nullptr;
    RVWATER *water = new RVWATER;
    const Calls calls = callsOf([&] { water->init(30, 20); }).named("glTexCoord2f");
    RVOPENGL::glMultiTexCoord2fARB = saved;
    EXPECT_EQ(calls, (Calls{{"glTexCoord2f", 0, 0},
                            {"glTexCoord2f", 0, 1},
                            {"glTexCoord2f", 1, 1},
                            {"glTexCoord2f", 1, 0}}));
}

// --- loadTextures

TEST_F(WaterTest, NoNameIsRefusedWithoutATrace) {
    RVWATER *water = new RVWATER;
    markLog();
    EXPECT_FALSE(water->loadTextures(nullptr, "x", 4));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVWATER::loadTextures\n");
    EXPECT_FALSE(water->loadTextures("x", nullptr, 4));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVWATER::loadTextures\n");
    EXPECT_EQ(RVTEXTURE::findByFilename("x"), nullptr);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
}

TEST_F(WaterTest, MissingFileIsLoggedUnderAnotherNameOnce) {
    RVWATER *water = new RVWATER;
    markLog();
    EXPECT_FALSE(water->loadTextures("gone.tga", "dudv.tga", 4));
    EXPECT_LOGGED_EXACTLY(missingFile);
    EXPECT_NE(RVTEXTURE::findByFilename("dudv.tga"), nullptr); // both are tried
    EXPECT_FALSE(water->loadTextures("bump.tga", "gone.tga", 4));
    EXPECT_LOGGED_EXACTLY(missingFile);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
    EXPECT_FALSE(water->render(nullptr));
}

TEST_F(WaterTest, FailedLoadKeepsTheWaterThatIsDrawn) {
    RVWATER *water = makeWater();
    const Calls before = render(water).without({"glColor3f"});
    start();
    EXPECT_FALSE(water->loadTextures("gone.tga", "dudv.tga", 4));
    EXPECT_EQ(render(water).without({"glColor3f"}), before);
}

TEST_F(WaterTest, MaterialHasTheMapsAndTheImagesInItsSlots) {
    makeWater();
    const RVMATERIAL *material = RVMATERIAL::getFirst();
    const RVTEXTURE *reflection = material->getTexture(0), *refraction = material->getTexture(2);
    ASSERT_NE(reflection, nullptr);
    ASSERT_NE(refraction, nullptr);
    EXPECT_NE(reflection, refraction);
    for (const RVTEXTURE *image : {reflection, refraction}) {
        EXPECT_EQ(image->getSizeX(), 64u);
        EXPECT_EQ(image->getSizeY(), 64u);
        EXPECT_TRUE(image->isTrilinear());
        EXPECT_FALSE(image->isMipmapped());
        EXPECT_TRUE(image->isClamped());
    }
    EXPECT_EQ(material->getTexture(1), nullptr);
    EXPECT_EQ(material->getTexture(3), RVTEXTURE::findByFilename("bump.tga"));
    EXPECT_EQ(material->getTexture(4), RVTEXTURE::findByFilename("dudv.tga"));
    for (unsigned int slot = 5; slot < RV_TEXTURE_UNITS; ++slot)
        EXPECT_EQ(material->getTexture(slot), nullptr);
    for (unsigned int slot : {3u, 4u}) { // the defaults of a texture
        EXPECT_TRUE(material->getTexture(slot)->isMipmapped());
        EXPECT_FALSE(material->getTexture(slot)->isClamped());
    }
}

TEST_F(WaterTest, FrameBuffersAreMadeOneAfterTheOtherAndUnbound) {
    RVWATER *water = new RVWATER;
    const Calls calls =
        callsOf([&] { ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4)); })
            .named({"glBindFramebufferEXT", "glFramebufferTexture2DEXT", "glBindRenderbufferEXT",
                    "glRenderbufferStorageEXT", "glFramebufferRenderbufferEXT"});
    Calls expected;
    std::vector<Call> list;
    unsigned int fbo = 0, renderBuffer = 0;
    const auto add = [&](unsigned int slot) {
        const unsigned int image = lastMaterial()->getTexture(slot)->getGLId();
        list.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, fbo});
        list.push_back({"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                        GL_TEXTURE_2D, image, 0});
        list.push_back({"glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, renderBuffer});
        list.push_back(
            {"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, 64, 64});
        list.push_back({"glFramebufferRenderbufferEXT", GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT,
                        GL_RENDERBUFFER_EXT, renderBuffer});
    };
    water->getReflectionBuffer(fbo, renderBuffer);
    EXPECT_NE(fbo * renderBuffer, 0u);
    add(0);
    water->getRefractionBuffer(fbo, renderBuffer);
    EXPECT_NE(fbo * renderBuffer, 0u);
    add(2);
    list.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0});
    list.push_back({"glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, 0});
    EXPECT_EQ(calls, Calls(list));
}

TEST_F(WaterTest, RenderTargetsKnowThatTheWindowIsBoundAfterwards) {
    RVOPENGL::getFbo(0)->render(nullptr);
    RVWATER *water = new RVWATER;
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_TRUE(callsOf([] { RVOPENGL::getFbo(0)->render(nullptr); })
                    .contains(Call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT,
                                   RVOPENGL::getFbo(0)->getGLId())));
    RVFBO::unbind();
}

TEST_F(WaterTest, SecondLoadReusesTheMapsAndMakesNewImagesAndANewMaterial) {
    RVWATER *water = makeWater();
    unsigned int fbo = 0, renderBuffer = 0;
    water->getReflectionBuffer(fbo, renderBuffer);
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    RVMATERIAL *first = RVMATERIAL::getFirst();
    const Calls calls =
        callsOf([&] { EXPECT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 9)); });
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 2);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 2u);
    EXPECT_EQ(lastMaterial()->getTexture(3), first->getTexture(3));
    EXPECT_EQ(lastMaterial()->getTexture(4), first->getTexture(4));
    EXPECT_NE(lastMaterial()->getTexture(0), first->getTexture(0));
    // The old frame buffers would be lost.
    EXPECT_TRUE(calls.contains(Call("glDeleteFramebuffersEXT", 1, fbo)));
    EXPECT_TRUE(calls.contains(Call("glDeleteRenderbuffersEXT", 1, renderBuffer)));
    EXPECT_EQ(calls.count("glDeleteFramebuffersEXT"), 2u);
    EXPECT_EQ(calls.count("glDeleteRenderbuffersEXT"), 2u);
}

TEST_F(WaterTest, OneFileMayBeBothMaps) {
    RVWATER *water = new RVWATER;
    ASSERT_TRUE(water->loadTextures("bump.tga", "bump.tga", 4));
    EXPECT_EQ(lastMaterial()->getTexture(3), lastMaterial()->getTexture(4));
}

TEST_F(WaterTest, WithoutFrameBufferObjectsTheMaterialHasTheMapsAlone) {
    for (const char *name :
         {"glGenFramebuffersEXT", "glBindFramebufferEXT", "glFramebufferRenderbufferEXT",
          "glGenRenderbuffersEXT", "glBindRenderbufferEXT", "glRenderbufferStorageEXT",
          "glFramebufferTexture2DEXT"}) {
        SCOPED_TRACE(name);
        recorder.reset();
        recorder.silent();
        recorder.nullEntryPoint(name);
        ASSERT_TRUE(restart());
        RVWATER *water = new RVWATER;
        const unsigned int textures = RVTEXTURE::getNumberOfTextures();
        EXPECT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 4); // two of them empty
        unsigned int fbo = 7, renderBuffer = 7;
        water->getReflectionBuffer(fbo, renderBuffer);
        EXPECT_EQ(fbo + renderBuffer, 0u);
        EXPECT_EQ(lastMaterial()->getTexture(0), nullptr);
        EXPECT_EQ(lastMaterial()->getTexture(2), nullptr);
        EXPECT_NE(lastMaterial()->getTexture(3), nullptr);
        EXPECT_TRUE(water->render(nullptr));
    }
}

TEST_F(WaterTest, ImpossibleSizeLeavesTheWaterWithoutImages) {
    settings.setWaterSize(5000);
    ASSERT_TRUE(restart());
    RVWATER *water = new RVWATER;
    markLog();
    EXPECT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::create\n");
    EXPECT_EQ(lastMaterial()->getTexture(0), nullptr);
    EXPECT_TRUE(water->render(nullptr));
}

TEST_F(WaterTest, MemoryThatRunsOutIsAFailedLoad) {
    RVWATER *water = new RVWATER;
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    recorder.failAllocation(1, 0, 1); // the material
    markLog();
    EXPECT_FALSE(water->loadTextures("bump.tga", "dudv.tga", 4));
    recorder.allocationsWork();
    EXPECT_LOGGED("   [!] Invalid params @ RVWATER::loadTexture");
    EXPECT_TRUE(water->render(nullptr));
}

// --- The destructor

Calls deletions(RVWATER *water) {
    return callsOf([&] { delete water; })
        .named({"glDeleteFramebuffersEXT", "glDeleteRenderbuffersEXT", "glDeleteLists"});
}

TEST_F(WaterTest, DestructorDeletesItsFourBuffersAndItsListAndLeavesTheRest) {
    RVWATER *water = makeWater();
    unsigned int names[4] = {};
    water->getReflectionBuffer(names[0], names[1]);
    water->getRefractionBuffer(names[2], names[3]);
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
    unsigned int fbo = 0, renderBuffer = 0;
    RVWATER *water = new RVWATER;
    recorder.refuse("glGenFramebuffersEXT", 1, 1); // that of the refraction
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    water->getRefractionBuffer(fbo, renderBuffer);
    ASSERT_EQ(fbo, 0u);
    Calls calls = deletions(water);
    EXPECT_EQ(calls.count("glDeleteFramebuffersEXT"), 2u); // the second one of the name 0
    EXPECT_EQ(calls.named("glDeleteRenderbuffersEXT"),
              (Calls{{"glDeleteRenderbuffersEXT", 1, renderBuffer}}));

    water = new RVWATER;
    recorder.refuse("glGenRenderbuffersEXT", 0, 1); // that of the reflection
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    water->getReflectionBuffer(fbo, renderBuffer);
    ASSERT_EQ(renderBuffer, 0u);
    calls = deletions(water);
    EXPECT_EQ(calls.named("glDeleteFramebuffersEXT"), (Calls{{"glDeleteFramebuffersEXT", 1, fbo}}));
    EXPECT_EQ(calls.count("glDeleteRenderbuffersEXT"), 2u); // the first one of the name 0
}

TEST_F(WaterTest, CopyDrawsTheOriginalsSurfaceAndDeletesNothing) {
    RVWATER *water = makeWater();
    const Calls original = render(water).without({"glColor3f"});
    start();
    {
        RVWATER copy(*water);
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_WATER);
        EXPECT_EQ(render(&copy).without({"glColor3f"}), original);
        recorder.start();
    }
    EXPECT_TRUE(recorder.stop().named({"glDeleteFramebuffersEXT", "glDeleteLists"}).empty());
}

TEST_F(WaterTest, AssignedWaterDeletesItsOwnBuffers) {
    RVWATER *water = makeWater(), *other = makeWater();
    unsigned int own = 0, others = 0, renderBuffer = 0;
    water->getReflectionBuffer(own, renderBuffer);
    other->getReflectionBuffer(others, renderBuffer);
    *water = *other;
    unsigned int shown = 0;
    water->getReflectionBuffer(shown, renderBuffer);
    EXPECT_EQ(shown, others);
    const Calls calls = deletions(water);
    EXPECT_TRUE(calls.contains(Call("glDeleteFramebuffersEXT", 1, own)));
    EXPECT_FALSE(calls.contains(Call("glDeleteFramebuffersEXT", 1, others)));
}

// --- render

TEST_F(WaterTest, WithoutTexturesNothingIsDrawnAndSaidOnce) {
    RVWATER *water = new RVWATER;
    water->init(30, 20);
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(water->render(nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY(nothingDrawn);
    EXPECT_FALSE(water->render(nullptr));
    EXPECT_NOTHING_LOGGED();
    ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 4));
    EXPECT_TRUE(water->render(nullptr));
    delete lastMaterial();
    markLog();
    EXPECT_FALSE(water->render(nullptr));
    EXPECT_LOGGED_EXACTLY(nothingDrawn);
}

TEST_F(WaterTest, ClockIsTheRedOfTheSurfaceAndOfNothingElse) {
    recorder.stopClock();
    RVWATER *water = makeWater();
    water->setSpeed(1);
    const Call first = render(water).named("glColor3f")[0];
    drawFrame(nullptr, nullptr); // a frame of no length counts as a second
    const double factor = RAVOLT::getFPSfactor();
    ASSERT_GT(factor, 0);
    const Calls calls = render(water);
    const double red = first.arguments[0] + factor;
    const double list = calls.named("glCallList")[0].arguments[0];
    EXPECT_TRUE(calls.haveInOrder({{"glPushAttrib", GL_CURRENT_BIT},
                                   {"glColor3f", red, 0, 0},
                                   {"glCallList", list},
                                   {"glPopAttrib"}}))
        << calls.text();
    EXPECT_EQ(calls.back(), Call("glPopAttrib"));
}

TEST_F(WaterTest, SpeedScalesTheClockAndIsSmallByDefault) {
    recorder.stopClock();
    RVWATER *water = makeWater();
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

TEST_F(WaterTest, ActivatesTheLightsOfItsEntryAndThenLoadsItsMatrix) {
    RVWATER *water = makeWater();
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
    start();
    EXPECT_FALSE(render(water).contains("glLoadMatrixf"));
}

TEST_F(WaterTest, ImageThatWasThrownOutComesBackInItsFrameBuffer) {
    RVWATER *water = makeWater();
    unsigned int fbo = 0, renderBuffer = 0;
    water->getReflectionBuffer(fbo, renderBuffer);
    RVTEXTURE *image = RVMATERIAL::getFirst()->getTexture(0);
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

// --- Programs

class WaterProgramTest : public WaterTest {
  protected:
    WaterProgramTest() { settings.setShaders(true); }

    void SetUp() override {
        WaterTest::SetUp();
        nameOf = programNames();
        water = makeWater(9);
    }

    std::vector<std::string> programs(const Calls &calls) {
        std::vector<std::string> names;
        for (const Call &call : calls.named("glUseProgramObjectARB"))
            names.push_back(nameOf[call.arguments[0]]);
        return names;
    }

    using Names = std::vector<std::string>;
    std::map<double, std::string> nameOf;
    RVWATER *water = nullptr;
};

TEST_F(WaterProgramTest, PlainProgramHasTheTiling) {
    EXPECT_EQ(RVMATERIAL::getFirst()->getShader(), RVSHADER::water);
    const Calls calls = render(water);
    EXPECT_EQ(programs(calls), Names{"waterShader"});
    EXPECT_TRUE(calls.contains(Call("glUniform1iARB", RVSHADER::water->getParam(20), 9)));
    EXPECT_FALSE(calls.contains("glUniform1fARB"));
}

TEST_F(WaterProgramTest, ShadowedProgramHasTheTilingAndTheSizeOfTheMap) {
    RAVOLT::shadowingOn();
    const Calls calls = render(water);
    const RVSHADER &program = *RVSHADER::waterS;
    EXPECT_EQ(programs(calls), Names{"waterShaderS"});
    EXPECT_TRUE(calls.contains(Call("glUniform1fARB", program.getParam(2), 64)));
    EXPECT_TRUE(calls.contains(Call("glUniform1fARB", program.getParam(3), 64)));
    EXPECT_TRUE(calls.contains(Call("glUniform1iARB", program.getParam(20), 9)));
    EXPECT_TRUE(calls.contains(Call("glUniform1iARB", program.getParam(1), 1)));
}

TEST_F(WaterProgramTest, ProgramIsChosenAgainInEachFrame) {
    const auto drawn = [&] {
        start();
        return programs(render(water));
    };
    EXPECT_EQ(drawn(), Names{"waterShader"});
    RAVOLT::shadowingOn();
    EXPECT_EQ(drawn(), Names{"waterShaderS"});
    RAVOLT::shadowingOff();
    EXPECT_EQ(drawn(), Names{"waterShader"});
}

// What is bound on unit 1 when the surface is drawn.
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

TEST_F(WaterProgramTest, WithoutACasterItReadsAMapOfItsOwnThatLetsAllLightThrough) {
    RAVOLT::shadowingOn();
    drawFrame(nullptr, nullptr);
    start();
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    Calls calls = render(water);
    EXPECT_TRUE(calls.contains("glTexImage2D"));
    const double map = boundOnUnit1(calls);
    EXPECT_GT(map, 0);
    EXPECT_NE(map, RVOPENGL::getFbo(2)->getTexture()->getGLId());
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    start();
    calls = render(water);
    EXPECT_FALSE(calls.contains("glTexImage2D")); // made once
    EXPECT_EQ(boundOnUnit1(calls), map);
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
    Calls calls = render(water);
    EXPECT_FALSE(calls.contains(Call("glUniform1iARB", RVSHADER::water->getParam(20), 9)));
    delete RVSHADER::water;
    start();
    calls = render(water);
    EXPECT_EQ(programs(calls), Names{});
    EXPECT_TRUE(calls.contains("glCallList"));
}

} // namespace
