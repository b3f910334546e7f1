// The pictures of water, and its objects as OpenGL reports them.

#include "ravolt/RVWATER.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/effects/litScene.h"
#include "tests/effects/sceneryPictures.h"
#include "tests/support/expectNear.h"
#include "tests/support/glObjects.h"
#include "tests/support/realDriver.h"

using namespace ravolt::test;

namespace {

// Directions in the range of colours, gently around the one that points up.
void writeNormals(const std::string &fileName, unsigned int side) {
    Bytes file = tgaHeader(plainType, side, side, 24);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            file.push_back(240); // blue
            file.push_back(static_cast<unsigned char>(y < side / 2 ? 112 : 144));
            file.push_back(static_cast<unsigned char>(x < side / 2 ? 104 : 152));
        }
    writeFile(fileName, file);
}

// A sheet that is seen by the shadow map alone: half of the water's width, above it.
class Blocker : public RVNODE {
  public:
    Blocker() { type = RV_NODE_TYPE_CUSTOM; }

    bool render(void *element) override {
        if (RVOPENGL::getProfile() != RV_OPENGL_PROFILE_FLAT)
            return true;
        RVSHADER::disable();
        glLoadMatrixf(static_cast<RVELEMENT *>(element)->getMatrix()->e);
        constexpr float corner[4][2] = {{0, -10}, {0, 10}, {20, 10}, {20, -10}};
        glBegin(GL_QUADS);
        for (int i = 0; i < 4; ++i) // from below, since the map is drawn from back faces
            glVertex3f(corner[3 - i][0], 3, corner[3 - i][1]);
        for (const auto &point : corner)
            glVertex3f(point[0], 3, point[1]);
        glEnd();
        return true;
    }
};

class WaterDrawingTest : public LitSceneTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        recorder.stopClock();
        writeNormals("bump.tga", 16);
        writeBoard("dudv.tga", 16, 4);
        makeScene();
    }

    void TearDown() override {
        RAVOLT::shadowingOff();
        EngineTest::TearDown();
    }

    // 12 units along Z and 20 along X, centred below the camera, under a spot light.
    void makeScene() {
        makeLitRoot({0, 6, 14}, -25, {0, 15, 0});
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setDirection(Z3MVECTOR3D(0.05f, -1, 0));
        light->setCutOff(60);
        light->setAmbient(0.1f, 0.1f, 0.1f, 1);
        light->setSpecular(1, 1, 1, 1);
        water = new RVWATER;
        water->init(12, 20);
        water->setPosition(-10, 0, -6);
        ASSERT_TRUE(water->loadTextures("bump.tga", "dudv.tga", 3));
        water->setSpeed(0);
        water->link(root);
        fillImages();
    }

    // As a terrain draws them: the reflection red with a bright left half, the refraction blue
    // with a bright lower half.
    void fillImages() {
        unsigned int fbo = 0, renderBuffer = 0;
        water->getReflectionBuffer(fbo, renderBuffer);
        fill(fbo, 1, 0.4f, 0.1f, 32, 64);
        water->getRefractionBuffer(fbo, renderBuffer);
        fill(fbo, 0, 0.3f, 1, 64, 32);
    }

    static void fill(unsigned int fbo, float red, float green, float blue, int brightWidth,
                     int brightHeight) {
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbo);
        glClearColor(red / 2, green / 2, blue / 2, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, brightWidth, brightHeight);
        glClearColor(red, green, blue, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_SCISSOR_TEST);
        glClearColor(0.2f, 0.2f, 0.6f, 1);
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    }

    RVWATER *water = nullptr;
};

// A pixel of the water.
constexpr int waterX = 64, waterY = 56;

TEST_F(WaterDrawingTest, MixesReflectionAndRefractionAlsoShadowedWithoutACaster) {
    ASSERT_TRUE(RVSHADER::useWater());
    const Picture plain = draw();
    EXPECT_PICTURE(plain, "water_program", edges);
    RAVOLT::shadowingOn();
    const Picture shadowed = draw();
    EXPECT_LOGGED("   [!] Invalid shadow pass: no shadow casters detected @ RAVOLT::end3D");
    EXPECT_LE(differenceOf(shadowed, plain).maximum, 2);
}

TEST_F(WaterDrawingTest, ShadowMapOfACasterDarkensTheWaterAsAWhole) {
    light->castShadows(true);
    RAVOLT::shadowingOn();
    const Picture lit = draw();
    RVNODE *blocker = new Blocker;
    blocker->link(root);
    const Picture shadowed = draw();
    EXPECT_PICTURE(shadowed, "water_shadowed", edges);
    EXPECT_EQ(shadowed.at(waterX - 25, waterY), lit.at(waterX - 25, waterY));
    EXPECT_PIXEL(shadowed.at(waterX + 25, waterY), (Pixel{0, 0, 0, 255}), 2); // ambient light, too
}

TEST_F(WaterDrawingTest, WithoutProgramsTheFixedFunctionsDrawIt) {
    settings.setShaders(false);
    ASSERT_TRUE(restart());
    makeScene();
    RVMATERIAL::getFirst()->setShader(nullptr);
    EXPECT_GT(draw().pixelsUnlike(background), 2000u);
}

TEST_F(WaterDrawingTest, SpansItsSizesFromItsOrigin) {
    light->unlink(); // whose shape is drawn, too
    camera->setRotation(-90, 0, 0);
    camera->setPosition(0, 20, 0);
    const Picture above = draw();
    // 20 units away half the height of the picture is 20 x tan(22.5 degrees) units.
    const double pixelsOfAUnit = height / 2 / (20 * 0.41421356);
    int columns = 0, rows = 0;
    for (int x = 0; x < width; ++x)
        columns += above.at(x, height / 2) != background;
    for (int y = 0; y < height; ++y)
        rows += above.at(width / 2, y) != background;
    EXPECT_NEAR(columns, 20 * pixelsOfAUnit, 1.5);
    EXPECT_NEAR(rows, 12 * pixelsOfAUnit, 1.5);
}

// The clock soon is above 1, the maximum of a colour.
TEST_F(WaterDrawingTest, MovesWithItsSpeedAloneAndBeyondAClockOfOne) {
    Picture last = draw();
    recorder.advanceClock(0.5);
    EXPECT_EQ(differenceOf(draw(), last).maximum, 0);
    water->setSpeed(0.37f);
    for (int frame = 0; frame < 6; ++frame) {
        recorder.advanceClock(1);
        const Picture now = draw();
        EXPECT_GT(differenceOf(now, last).mean, 0.5) << frame;
        last = now;
    }
}

TEST_F(WaterDrawingTest, ClockDoesNotChangeTheCurrentColour) {
    water->setSpeed(1);
    drawFrame(camera, root);
    glColor4f(0.25f, 0.5f, 0.75f, 1);
    water->render(nullptr);
    float color[4] = {};
    glGetFloatv(GL_CURRENT_COLOR, color);
    expectNear(color, {0.25, 0.5, 0.75, 1}, 0);
}

TEST_F(WaterDrawingTest, UserClipPlanesCutTheWater) {
    light->unlink();
    const Picture whole = draw();
    for (const bool shadowed : {false, true}) {
        if (shadowed)
            RAVOLT::shadowingOn();
        const Picture cut = drawCut([this] { return draw(); });
        EXPECT_NE(cut.at(waterX - 10, waterY), background);
        EXPECT_EQ(cut.at(waterX + 10, waterY), background);
        EXPECT_NE(whole.at(waterX + 10, waterY), background);
    }
}

TEST_F(WaterDrawingTest, NextFramesAreTheSame) {
    expectSameFrames([this] { return draw(); });
}

// --- The objects

TEST_F(WaterDrawingTest, FrameBuffersAreCompleteWithAnImageAndADepthBuffer) {
    unsigned int fbo[2] = {}, renderBuffer[2] = {};
    water->getReflectionBuffer(fbo[0], renderBuffer[0]);
    water->getRefractionBuffer(fbo[1], renderBuffer[1]);
    EXPECT_NE(fbo[0], fbo[1]);
    for (const unsigned int i : {0u, 1u}) {
        const RVTEXTURE *image = RVMATERIAL::getFirst()->getTexture(2 * i);
        RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fbo[i]);
        EXPECT_EQ(RVOPENGL::glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT),
                  static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE_EXT));
        EXPECT_EQ(attachedType(GL_COLOR_ATTACHMENT0_EXT), GL_TEXTURE);
        EXPECT_EQ(attachedName(GL_COLOR_ATTACHMENT0_EXT), static_cast<int>(image->getGLId()));
        EXPECT_EQ(attachedType(GL_DEPTH_ATTACHMENT_EXT), GL_RENDERBUFFER_EXT);
        EXPECT_EQ(attachedName(GL_DEPTH_ATTACHMENT_EXT), static_cast<int>(renderBuffer[i]));
        RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, renderBuffer[i]);
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_WIDTH_EXT), 64);
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_HEIGHT_EXT), 64);
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_DEPTH_SIZE_EXT), 24);

        glBindTexture(GL_TEXTURE_2D, image->getGLId());
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH), 64);
        EXPECT_EQ(textureLevel(GL_TEXTURE_HEIGHT), 64);
        EXPECT_EQ(textureLevel(GL_TEXTURE_INTERNAL_FORMAT), GL_RGB);
        EXPECT_EQ(textureLevel(GL_TEXTURE_ALPHA_SIZE), 0);
        EXPECT_EQ(textureParameter(GL_TEXTURE_MIN_FILTER), GL_LINEAR);
        EXPECT_EQ(textureParameter(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
        EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
    RVOPENGL::glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

TEST_F(WaterDrawingTest, UnloadedImageIsDrawnAgainOnceItIsFilled) {
    const Picture before = draw();
    RVMATERIAL::getFirst()->getTexture(0)->unload(true);
    EXPECT_GT(differenceOf(draw(), before).mean, 1.0); // black until it is drawn into
    fillImages();
    EXPECT_EQ(differenceOf(draw(), before).maximum, 0);
}

} // namespace
