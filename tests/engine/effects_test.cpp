// The effect passes: what each effect makes of the picture, and what it leaves behind. The calls of
// a whole frame stand, one by one, in wholeFrame_test.cpp.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/adaptedLuminance.h"
#include "tests/engine/resetEffects.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>

namespace ravolt::test {
namespace {

constexpr Pixel background{51, 51, 153};
const std::string noCaster =
    "   [!] Invalid shadow pass: no shadow casters detected @ RAVOLT::end3D\n";

GLuint targetName(int index) { return RVOPENGL::getFbo(index)->getGLId(); }
GLuint textureName(int index) { return RVOPENGL::getFbo(index)->getTexture()->getGLId(); }

// The colour of a pixel of a target, as floats, from its lower left corner.
std::array<float, 4> texelOf(int index, int x, int y) {
    const RVFBO *target = RVOPENGL::getFbo(index);
    std::vector<float> values(
        static_cast<std::size_t>(target->getSizeX() * target->getSizeY() * 4));
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    target->getTexture()->render(nullptr);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, values.data());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    const auto place = static_cast<std::size_t>((y * target->getSizeX() + x) * 4);
    return {values[place], values[place + 1], values[place + 2], values[place + 3]};
}

// A square of the given colour that fills the middle of the view; leaves its number in a recording.
class Wall : public CustomNode {
  public:
    std::array<float, 4> color{0, 0, 0, 1};
    float depth = -5, half = 1, number = 1;
    bool blended = false;
    int layers = 1; // that add up, beyond what one colour can be
    std::vector<RV_OPENGL_PROFILE> profiles;

    explicit Wall(std::array<float, 4> itsColor = {0, 0, 0, 1}) : color(itsColor) {}

    bool render(void *entry) override {
        profiles.push_back(RVOPENGL::getProfile());
        glPointSize(number);
        RVLIGHT::lightingOff();
        RVSHADER::disable();
        RVTEXTURE::texturingOff(0);
        if (blended)
            RVOPENGL::blendingOn();
        glLoadMatrixf(static_cast<RVELEMENT *>(entry)->getMatrix()->e);
        glColor4fv(color.data());
        drawSquare();
        for (int layer = 1; layer < layers; ++layer) {
            RVOPENGL::blendingOn();
            glBlendFunc(GL_ONE, GL_ONE);
            glDepthFunc(GL_LEQUAL);
            drawSquare();
            glDepthFunc(GL_LESS);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            RVOPENGL::blendingOff();
        }
        return true;
    }

  private:
    void drawSquare() const {
        glBegin(GL_QUADS);
        glVertex3f(-half, half, depth);
        glVertex3f(-half, -half, depth);
        glVertex3f(half, -half, depth);
        glVertex3f(half, half, depth);
        glEnd();
    }
};

class Effects : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;

    Effects() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        ASSERT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF() && RVSHADER::useShadows())
            << logTextSince(startMark);
        markLog();
    }

    void TearDown() override {
        resetEffects();
        RAVOLT::wireframeOff();
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glPointSize(1);
        EngineTest::TearDown();
    }

    // What an end3D prints to standard output.
    std::string printedBy(RVNODE *root) {
        testing::internal::CaptureStdout();
        drawFrame(camera, root);
        std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }

    RVLIGHT *newCaster(Z3MVECTOR3D place = {0, 4, 0}, Z3MVECTOR3D direction = {0, -0.6f, -0.8f}) {
        auto *light = new RVLIGHT;
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setPosition(place.x, place.y, place.z);
        light->setDirection(direction);
        light->setCutOff(40);
        light->setShadowNearPlane(1);
        light->setShadowFarPlane(40);
        light->castShadows(true);
        return light;
    }
};

void expectStateOfAFrame() {
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
    GLboolean mask[4] = {};
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(RVOPENGL::isBlended());
    EXPECT_EQ(integerOf(GL_BLEND_SRC), GL_SRC_ALPHA);
    EXPECT_EQ(integerOf(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_EQ(integerOf(GL_CULL_FACE_MODE), GL_BACK);
    EXPECT_EQ(integerOf(GL_SHADE_MODEL), GL_SMOOTH);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
    EXPECT_EQ(integerOf(GL_MODELVIEW_STACK_DEPTH), 1);
    EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
}

// --- the choice of the target

TEST_F(Effects, ClearChoosesTargetZeroForBloomAndForDepthOfField) {
    RAVOLT::clear(true, true, false);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    for (void (*on)() : {RAVOLT::bloomingOn, RAVOLT::DOFOn}) {
        on();
        RAVOLT::clear(true, true, false);
        EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
        RAVOLT::bloomingOff();
        RAVOLT::DOFOff();
        RVFBO::unbind();
    }
    RAVOLT::HDROn();
    RAVOLT::shadowingOn();
    RAVOLT::clear(true, true, false);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
}

TEST_F(Effects, ClearWithoutATargetUnbindsNoBoundTarget) {
    RVOPENGL::getFbo(4)->render(nullptr);
    const Calls calls = callsOf([] { RAVOLT::clear(true, false, true); });
    EXPECT_EQ(calls, (Calls{{"glClear", GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT}}));
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(4));
    RVFBO::unbind();
}

TEST_F(Effects, ClearOfNothingChoosesTheTargetAllTheSame) {
    RAVOLT::bloomingOn();
    EXPECT_FALSE(callsOf([] { RAVOLT::clear(false, false, false); }).contains("glClear"));
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
}

// --- the final copy

TEST_F(Effects, APictureInTargetZeroIsCopiedAlsoWhenItsEffectIsOffByThen) {
    RAVOLT::DOFOn();
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    RAVOLT::DOFOff();
    const Calls calls = callsOf([] { RAVOLT::end3D(true); });
    EXPECT_EQ(calls.named("glBindFramebufferEXT"),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}}));
    EXPECT_EQ(calls.count(Call{"glBindTexture", GL_TEXTURE_2D, textureName(0)}), 1u);
    EXPECT_EQ(calls.count("glBegin"), 1u);
    expectStateOfAFrame();
}

TEST_F(Effects, End3DWithoutBlitLeavesThePictureInTargetZeroAnd2DLandsThere) {
    RAVOLT::bloomingOn();
    RAVOLT::clear(true, true, false);
    RVFBO::unbind();
    glClear(GL_COLOR_BUFFER_BIT);
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    auto *wall = new Wall({0, 1, 0, 1});
    wall->pass();
    RAVOLT::end3D(false);
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    EXPECT_NEAR(texelOf(0, 32, 24)[1], 1, 0.01);

    RAVOLT::begin2D();
    float projection[16] = {};
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    EXPECT_FLOAT_EQ(projection[0], 2.0f / 64); // the target's width is the coordinates' range
    EXPECT_FLOAT_EQ(projection[5], -2.0f / 48);
    glColor4f(1, 0, 0, 1);
    glRecti(60, 48, 64, 44);
    RAVOLT::end2D();
    EXPECT_NEAR(texelOf(0, 62, 2)[0], 1, 0.01) << "the lower right corner";
    RVFBO::unbind();
    EXPECT_PIXEL(pixelAt(64, 48), background, 1);
    EXPECT_PIXEL(pixelAt(126, 94), background, 1);
}

TEST_F(Effects, BlitHasNoEffectOnAPictureInTheWindow) {
    auto *wall = new Wall({0, 1, 0, 1});
    drawFrame(camera, wall);
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{0, 255, 0}), 0);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
}

class ForcedTarget : public Effects {
  protected:
    ForcedTarget() { settings.setForceFBO(true); }
};

TEST_F(ForcedTarget, ThePictureStaysInTargetZero) {
    RVFBO::unbind();
    glClear(GL_COLOR_BUFFER_BIT);
    drawFrame(camera, new Wall({0, 1, 0, 1}));
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    EXPECT_NEAR(texelOf(0, 32, 24)[1], 1, 0.001);
    RVFBO::unbind();
    EXPECT_PIXEL(pixelAt(64, 48), background, 0);
}

// --- bloom

TEST_F(Effects, BloomLetsWhatIsBrighterThanWhiteGlowAndLeavesTheRest) {
    auto *wall = new Wall({1, 1, 1, 1});
    wall->layers = 3;
    drawFrame(camera, wall);
    const Pixel plain = pixelAt(64 + 34, 48);
    EXPECT_PIXEL(plain, background, 0);
    RAVOLT::bloomingOn();
    drawFrame(camera, wall);
    const Pixel glowing = pixelAt(64 + 34, 48);
    EXPECT_GT(glowing.red, background.red + 20);
    EXPECT_GT(glowing.blue, background.blue + 20);
    EXPECT_LT(pixelAt(2, 2).red, glowing.red) << "less with the distance";
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();

    RAVOLT::setBloomingIntensity(0);
    drawFrame(camera, wall);
    EXPECT_PIXEL(pixelAt(64 + 34, 48), background, 1);

    RAVOLT::setBloomingIntensity(1);
    wall->layers = 1;
    drawFrame(camera, wall);
    EXPECT_PIXEL(pixelAt(64 + 34, 48), background, 1) << "white alone does not glow";
}

TEST_F(Effects, AnEmptyListRunsAllEffectsOnTheBackground) {
    RAVOLT::bloomingOn();
    RAVOLT::DOFOn();
    RAVOLT::HDROn();
    EXPECT_NE(printedBy(nullptr), "");
    EXPECT_EQ(texelOf(4, 32, 24), (std::array<float, 4>{0, 0, 0, 1})) << "nothing is that bright";
    EXPECT_NEAR(texelOf(3, 128, 128)[2], 0.6, 0.001) << "the background alone is measured";
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();

    RAVOLT::shadowingOn();
    printedBy(nullptr);
    EXPECT_LOGGED_EXACTLY(noCaster);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    expectStateOfAFrame();
}

TEST_F(Effects, AViewBeyondWhiteGlowsAllOver) {
    RAVOLT::bloomingOn();
    auto *wall = new Wall({0.5f, 0.75f, 1, 1}); // the whole view
    wall->half = 10;
    wall->layers = 2;
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    wall->pass();
    RAVOLT::end3D(false);
    const double luminance = 0.3 * 1 + 0.59 * 1.5 + 0.11 * 2;
    EXPECT_NEAR(texelOf(4, 32, 24)[0], 1 * luminance, 0.01);
    EXPECT_NEAR(texelOf(4, 32, 24)[2], 2 * luminance, 0.01);
    // The levels of the blur hold no more than 1, and there are four.
    EXPECT_NEAR(texelOf(0, 32, 24)[0], 1 + 4, 0.02);
    EXPECT_NEAR(texelOf(0, 32, 24)[2], 2 + 4, 0.02);
    RVFBO::unbind();
}

// --- tone mapping

TEST_F(Effects, HDRWithoutBloomPrintsAndChangesNothing) {
    auto *wall = new Wall({0.5f, 0.5f, 0.5f, 1});
    drawFrame(camera, wall);
    const Picture plain = readFrame();
    RAVOLT::HDROn();
    EXPECT_EQ(printedBy(wall), "");
    EXPECT_EQ(readFrame().bytes, plain.bytes);
}

TEST_F(Effects, HDRPrintsOneLineAFrameAndLogsNone) {
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    RVOPENGL::setBackgroundColor(0.5f, 0.5f, 0.5f, 1);
    const std::string line = printedBy(nullptr);
    RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
    float luminance = -1;
    int length = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "luminance: %f\n%n", &luminance, &length), 1);
    EXPECT_EQ(static_cast<std::size_t>(length), line.size());
    EXPECT_NEAR(luminance, 0.5, 0.005);
    char wanted[64];
    std::snprintf(wanted, sizeof wanted, "luminance: %f\n", static_cast<double>(luminance));
    EXPECT_EQ(line, wanted);
    EXPECT_NOTHING_LOGGED();
}

double toneOf(double color, double luminance, double adapted, double exposure) {
    const double delta = exposure / adapted * luminance;
    return color * (delta * (1 + delta / (exposure * exposure)) / (1 + delta));
}

// The adapted luminance, as the program gets it: the last two values of a frame without depth of
// field are that and the exposure.
double adaptedIn(const Calls &calls) {
    const Calls values = calls.named("glUniform1fARB");
    if (values.size() < 2) {
        ADD_FAILURE() << "the luminance was not handed to the program";
        return 1;
    }
    EXPECT_EQ(values[values.size() - 2].arguments[0],
              static_cast<int>(RVSHADER::bloomToneMapping->getParam(10)));
    EXPECT_EQ(values.back().arguments[1], static_cast<double>(RAVOLT::getHDRExposure()));
    return values[values.size() - 2].arguments[1];
}

TEST_F(Effects, ToneMappingIsThePictureOfItsFormula) {
    RAVOLT::bloomingOn();
    RAVOLT::setBloomingIntensity(0);
    RAVOLT::HDROn();
    RAVOLT::setHDRExposure(0.7f);
    auto *wall = new Wall({0.8f, 0.4f, 0.2f, 1});
    for (int frame = 0; frame < 2; ++frame) {
        recorder.start();
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        wall->pass();
        RAVOLT::end3D(false);
        const double adapted = adaptedIn(recorder.stop());
        const auto inside = texelOf(0, 32, 24), outside = texelOf(0, 2, 2);
        const double wallLuminance = 0.3 * 0.8 + 0.59 * 0.4 + 0.11 * 0.2;
        EXPECT_NEAR(inside[0], toneOf(0.8, wallLuminance, adapted, 0.7), 0.004);
        EXPECT_NEAR(inside[1], toneOf(0.4, wallLuminance, adapted, 0.7), 0.004);
        EXPECT_NEAR(inside[2], toneOf(0.2, wallLuminance, adapted, 0.7), 0.004);
        const double backLuminance = 0.3 * 0.2 + 0.59 * 0.2 + 0.11 * 0.6;
        EXPECT_NEAR(outside[2], toneOf(0.6, backLuminance, adapted, 0.7), 0.004);
        RVFBO::unbind();
        RAVOLT::swap();
    }
}

// A frame of the given length over a background; returns the measured luminance, as printed.
struct AdaptingFrame {
    double seconds, grey, adapted;
};

// The luminance is 1 at first. Each frame goes on from where the one before has ended.
constexpr AdaptingFrame adaptingFrames[] = {
    {0.5, 0.25, 0.625},    // half of the gap of 0.75, down
    {0.25, 0.25, 0.53125}, // a quarter of 0.375
    {0.5, 1.0, 0.765625},  // up
    {1.0, 0.25, 0.25},     // a second closes the gap
    {1.5, 1.0, 1.375},     // more than that overshoots
    {0.5, 1.0, 1.1875},    // and comes back
    {0.5, 0.0, 0.59375},   // black
};

TEST_F(Effects, TheEyeAdaptsByTheGapASecond) {
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    adaptedLuminance() = 1;
    recorder.stopClock();
    RAVOLT::updateTimer(); // the clock starts with the first frame
    RAVOLT::swap();
    for (const AdaptingFrame &frame : adaptingFrames) {
        const auto grey = static_cast<float>(frame.grey);
        RVOPENGL::setBackgroundColor(grey, grey, grey, 1);
        recorder.letPass(frame.seconds);
        recorder.start();
        const std::string line = printedBy(nullptr);
        EXPECT_NEAR(adaptedIn(recorder.stop()), frame.adapted, 0.0005) << frame.seconds;
        EXPECT_NEAR(std::atof(line.c_str() + 11), frame.grey, 0.0005);
        RAVOLT::swap();
    }
    RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
}

// The wall fills the view in part; red counts 0.3, green 0.59 and blue 0.11 of it, also beyond 1.
TEST_F(Effects, TheLuminanceIsThatOfTheWholePicture) {
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    const struct {
        std::array<float, 4> color;
        int layers;
        double share; // of the view, by its width
        double luminance;
    } rows[] = {
        {{1, 0, 0, 1}, 1, 1, 0.3},          {{0, 1, 0, 1}, 1, 1, 0.59},
        {{0, 0, 1, 1}, 1, 1, 0.11},         {{1, 1, 1, 1}, 3, 1, 3},
        {{0, 1, 0, 1}, 2, 0.5, 0.5 * 1.18}, {{0.5f, 0.25f, 1, 1}, 1, 0.25, 0.25 * 0.4075},
    };
    for (const auto &row : rows) {
        auto *wall = new Wall(row.color);
        wall->layers = row.layers;
        wall->half = 4; // beyond the view of 5.52 by 4.14
        wall->setPosition(static_cast<float>(5.5228 * (1 - row.share) + 1.2386), 0, 0);
        EXPECT_NEAR(std::atof(printedBy(wall).c_str() + 11), row.luminance, 0.012 * row.luminance);
        delete wall;
    }
    RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
}

// --- depth of field

TEST_F(Effects, DepthOfFieldDrawsTheListInTheDepthProfileFirst) {
    RAVOLT::DOFOn();
    auto *wall = new Wall({1, 0, 0, 1});
    drawFrame(camera, wall);
    EXPECT_EQ(wall->profiles,
              (std::vector<RV_OPENGL_PROFILE>{RV_OPENGL_PROFILE_ZPASS, RV_OPENGL_PROFILE_FULL}));
    expectStateOfAFrame();
}

TEST_F(Effects, DepthOfFieldMixesByTheDistanceFromTheFocus) {
    RAVOLT::DOFOn();
    auto *wall = new Wall({1, 0, 0, 0.5f}); // its alpha is the depth that it codes
    RAVOLT::setDOFFocus(0.5f);
    RAVOLT::setDOFRange(2);
    drawFrame(camera, wall);
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{255, 0, 0}), 2) << "in focus";
    EXPECT_PIXEL(pixelAt(64 + 16, 48), (Pixel{255, 0, 0}), 60) << "sharp near its edge";
    const Pixel sharp = pixelAt(64 + 20, 48);
    RAVOLT::setDOFFocus(0);
    drawFrame(camera, wall);
    const Pixel soft = pixelAt(64 + 20, 48);
    EXPECT_GT(soft.blue, sharp.blue + 10) << "the background runs into it";
    RAVOLT::setDOFFocus(1);
    drawFrame(camera, wall);
    EXPECT_PIXEL(pixelAt(64 + 28, 48), background, 1) << "the background is in focus";
}

TEST_F(Effects, TheDepthsOutliveTheBlurs) {
    RAVOLT::DOFOn();
    RAVOLT::bloomingOn();
    drawFrame(camera, new Wall({1, 0, 0, 0.25f}));
    EXPECT_NEAR(texelOf(1, 32, 24)[3], 0.25, 0.001);
    EXPECT_NEAR(texelOf(1, 1, 1)[3], 1, 0.001);
}

TEST_F(Effects, BlendingOfTheLastEntryDoesNotReachTheDepthOfField) {
    RAVOLT::DOFOn();
    auto *wall = new Wall({1, 0, 0, 1});
    wall->blended = true;
    const Calls calls = callsOf([&] { drawFrame(camera, wall); });
    EXPECT_TRUE(calls.haveInOrder({{"glPointSize", 1},
                                   {"glPointSize", 1},
                                   {"glDisable", GL_BLEND},
                                   {"glColorMask", 1, 1, 1, 0}}));
    expectStateOfAFrame();
}

// Notes what stands when it is drawn.
class Witness : public CustomNode {
  public:
    bool render(void *) override {
        blended.push_back(glIsEnabled(GL_BLEND) || RVOPENGL::isBlended());
        return true;
    }
    std::vector<bool> blended;
};

TEST_F(Effects, BlendingIsOffAfterEachPassWhateverDrewLast) {
    RAVOLT::DOFOn();
    RAVOLT::shadowingOn();
    auto *sky = new RVNODE;
    auto *inTheSky = new Witness;
    inTheSky->link(sky);
    RAVOLT::setSkybox(sky);
    auto *root = new RVNODE;
    auto *first = new Witness;
    auto *last = new Wall({1, 0, 0, 0.5f});
    last->blended = true;
    newCaster()->link(root);
    first->link(root);
    last->link(root);
    drawFrame(camera, root);
    RAVOLT::setSkybox(nullptr);
    EXPECT_EQ(inTheSky->blended, (std::vector<bool>{false})) << "behind the depth pass";
    // Depth pass, map, lit pass, main pass; the map follows the sky.
    ASSERT_EQ(first->blended.size(), 4u);
    EXPECT_FALSE(first->blended[1]) << "the map";
    EXPECT_FALSE(first->blended[3]) << "behind the lit pass";
    expectStateOfAFrame();
}

// --- shadows

TEST_F(Effects, WithoutACasterTheFrameLogsItAndIsDrawn) {
    RAVOLT::shadowingOn();
    ASSERT_TRUE(RAVOLT::isShadowed());
    auto *omni = new RVLIGHT;
    omni->castShadows(true); // but it is no spot light
    auto *dark = newCaster({0, 0, 0}, {0, 0, -1});
    dark->castShadows(false);
    auto *wall = new Wall({0, 1, 0, 1});
    RAVOLT::skipShadowsGeneration(); // stays pending
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    for (RVNODE *node :
         {static_cast<RVNODE *>(omni), static_cast<RVNODE *>(dark), static_cast<RVNODE *>(wall)})
        node->pass();
    const Calls calls = callsOf([] { RAVOLT::end3D(true); });
    EXPECT_LOGGED_EXACTLY(noCaster);
    EXPECT_FALSE(calls.contains("glBindFramebufferEXT"));
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{0, 255, 0}), 0);
    expectStateOfAFrame();

    newCaster()->link(wall);
    EXPECT_FALSE(callsOf([&] { drawFrame(camera, wall); }).contains("glShadeModel"))
        << "the skip that was pending";
}

TEST_F(Effects, AnEmptyListWithShadowsSaysSo) {
    RAVOLT::shadowingOn();
    drawFrame(camera, nullptr);
    EXPECT_LOGGED_EXACTLY(noCaster);
}

class Shadows : public Effects {
  protected:
    // How often each frame draws the flat profile.
    static long flatDraws(const Wall &wall) {
        return std::count(wall.profiles.begin(), wall.profiles.end(), RV_OPENGL_PROFILE_FLAT);
    }

    void draw(std::vector<RVNODE *> nodes) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        for (RVNODE *node : nodes)
            node->pass();
        RAVOLT::end3D(true);
    }
};

TEST_F(Shadows, SkipKeepsTheMapForOneFrameWithAShadowPass) {
    RAVOLT::shadowingOn();
    auto *wall = new Wall;
    RVLIGHT *light = newCaster();
    draw({light, wall});
    EXPECT_EQ(flatDraws(*wall), 1);
    RAVOLT::skipShadowsGeneration();
    RAVOLT::shadowingOff();
    draw({light, wall}); // no shadow pass, the skip stays
    RAVOLT::shadowingOn();
    draw({light, wall});
    EXPECT_EQ(flatDraws(*wall), 1) << "skipped";
    draw({light, wall});
    EXPECT_EQ(flatDraws(*wall), 2);
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();
}

TEST_F(Shadows, AMapThatIsKeptBeforeOneWasDrawnIsReadAsItIs) {
    RAVOLT::shadowingOn();
    RAVOLT::skipShadowsGeneration();
    auto *wall = new Wall({0, 1, 0, 1});
    draw({newCaster(), wall});
    EXPECT_EQ(flatDraws(*wall), 0);
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{0, 255, 0}), 0);
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();
}

TEST_F(Shadows, TheListIsDrawnIntoTheMapThenTwice) {
    RAVOLT::shadowingOn();
    auto *wall = new Wall;
    draw({newCaster(), wall});
    EXPECT_EQ(wall->profiles,
              (std::vector<RV_OPENGL_PROFILE>{RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_FULL,
                                              RV_OPENGL_PROFILE_FULL}));
}

// A node of any type that counts its draws by profile.
class Typed : public RVNODE {
  public:
    explicit Typed(RV_NODE_TYPE itsType) { type = itsType; }
    bool render(void *) override {
        profiles.push_back(RVOPENGL::getProfile());
        return true;
    }
    std::vector<RV_OPENGL_PROFILE> profiles;
};

TEST_F(Shadows, SkyWaterAndTerrainAreLeftOutOfTheMap) {
    RAVOLT::shadowingOn();
    for (RV_NODE_TYPE type : {RV_NODE_TYPE_SKYDOME, RV_NODE_TYPE_WATER, RV_NODE_TYPE_TERRAIN}) {
        auto *node = new Typed(type);
        draw({newCaster(), node});
        EXPECT_EQ(node->profiles,
                  (std::vector<RV_OPENGL_PROFILE>{RV_OPENGL_PROFILE_FULL, RV_OPENGL_PROFILE_FULL}))
            << type;
    }
}

TEST_F(Shadows, LightsAreLeftOutOfTheMap) {
    RAVOLT::shadowingOn();
    RVLIGHT *light = newCaster();
    const Calls calls = callsOf([&] { draw({light}); });
    std::size_t inside = 0;
    bool flat = false;
    for (const Call &call : calls) {
        if (call == Call{"glShadeModel", GL_FLAT})
            flat = true;
        if (call == Call{"glShadeModel", GL_SMOOTH})
            flat = false;
        if (flat && call.name == "glBegin")
            ++inside;
    }
    EXPECT_EQ(inside, 0u);
    EXPECT_GT(calls.count("glBegin"), 0u) << "the light's shape in the other passes";
}

TEST_F(Shadows, OfTwoCastersTheLaterOneInTheListCasts) {
    RAVOLT::shadowingOn();
    RVLIGHT *first = newCaster();
    RVLIGHT *second = newCaster();
    first->setShadowNearPlane(3);
    second->setShadowNearPlane(7);
    auto *wall = new Wall;
    for (const std::vector<RVNODE *> &lights :
         {std::vector<RVNODE *>{first, second, wall}, {second, first, wall}}) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        for (RVNODE *node : lights)
            node->pass();
        RVELEMENT::sort3D();
        const unsigned int number = RVELEMENT::getNumberOfLights();
        ASSERT_EQ(number, 2u);
        const auto *last = static_cast<const RVLIGHT *>(RVELEMENT::getLight(number - 1)->getNode());
        const Calls calls = callsOf([] { RAVOLT::end3D(true); });
        const Calls frusta = calls.named("glFrustum");
        ASSERT_EQ(frusta.size(), 1u);
        EXPECT_EQ(frusta[0].arguments[4], static_cast<double>(last->getShadowNearPlane()));
    }
}

TEST_F(Shadows, TheWindowFollowsTheMapWhereItIsTheTarget) {
    RAVOLT::shadowingOn();
    auto *wall = new Wall;
    wall->number = 7;
    RVLIGHT *light = newCaster();
    const Calls calls = callsOf([&] { draw({light, wall}); });
    EXPECT_EQ(calls.named({"glBindFramebufferEXT", "glViewport", "glPointSize"}),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, targetName(2)},
                     {"glViewport", 0, 0, 64, 64},
                     {"glPointSize", 7},
                     {"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0},
                     {"glViewport", 0, 0, 128, 96},
                     {"glPointSize", 7},
                     {"glPointSize", 7}}));
    EXPECT_EQ(calls.count(Call{"glEnable", GL_CULL_FACE}), 0u);
}

// An offset of the application's own stays in force as well.
TEST_F(Shadows, WithoutAnOffsetOpenGLsOwnStaysInTheMap) {
    EXPECT_EQ(RAVOLT::getShadowOffsetFactor(), 0);
    EXPECT_EQ(RAVOLT::getShadowOffsetUnits(), 0);
    RAVOLT::shadowingOn();
    const std::vector<RVNODE *> nodes{newCaster({0, 4, 0}, {0, -0.6f, -0.8f}), new Wall};
    glPolygonOffset(3, 5);
    glEnable(GL_POLYGON_OFFSET_FILL);
    const Calls calls = callsOf([&] { draw(nodes); });
    EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
    glDisable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0, 0);
    EXPECT_FALSE(calls.contains("glPolygonOffset"));
    EXPECT_FALSE(calls.contains("glIsEnabled"));
    EXPECT_EQ(calls.count(Call{"glEnable", GL_POLYGON_OFFSET_FILL}), 0u);
    EXPECT_EQ(calls.count(Call{"glDisable", GL_POLYGON_OFFSET_FILL}), 0u);
}

TEST_F(Shadows, TheOffsetIsAroundTheDrawingOfTheMapAlone) {
    RAVOLT::shadowingOn();
    RAVOLT::setShadowOffset(4, 8);
    EXPECT_EQ(RAVOLT::getShadowOffsetFactor(), 4);
    EXPECT_EQ(RAVOLT::getShadowOffsetUnits(), 8);
    auto *wall = new Wall;
    wall->number = 7;
    const std::vector<RVNODE *> nodes{newCaster({0, 4, 0}, {0, -0.6f, -0.8f}), wall};
    const Calls calls = callsOf([&] { draw(nodes); });
    EXPECT_TRUE(calls.haveInOrder({{"glShadeModel", GL_FLAT},
                                   {"glClear", GL_DEPTH_BUFFER_BIT},
                                   {"glPolygonOffset", 4, 8},
                                   {"glEnable", GL_POLYGON_OFFSET_FILL},
                                   {"glPointSize", 7},
                                   {"glDisable", GL_POLYGON_OFFSET_FILL},
                                   {"glPolygonOffset", 0, 0},
                                   {"glColorMask", 1, 1, 1, 1},
                                   {"glShadeModel", GL_SMOOTH},
                                   {"glPointSize", 7},
                                   {"glPointSize", 7}}));
    EXPECT_EQ(calls.count("glPolygonOffset"), 2u);

    RAVOLT::skipShadowsGeneration();
    EXPECT_FALSE(callsOf([&] { draw(nodes); }).contains("glPolygonOffset")) << "no map is drawn";
}

TEST_F(Shadows, TheOffsetOfTheApplicationIsRestoredAfterTheMap) {
    RAVOLT::shadowingOn();
    const std::vector<RVNODE *> nodes{newCaster({0, 4, 0}, {0, -0.6f, -0.8f}), new Wall};
    glPolygonOffset(3, 5);
    glEnable(GL_POLYGON_OFFSET_FILL);
    for (const auto &[factor, units] : {std::pair{4.0f, 0.0f}, {0.0f, -8.0f}}) {
        RAVOLT::setShadowOffset(factor, units);
        EXPECT_TRUE(
            callsOf([&] {
                draw(nodes);
            }).haveInOrder({{"glPolygonOffset", factor, units}, {"glPolygonOffset", 3, 5}}));
        EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
        EXPECT_EQ(integerOf(GL_POLYGON_OFFSET_FACTOR), 3);
        EXPECT_EQ(integerOf(GL_POLYGON_OFFSET_UNITS), 5);
    }
    glDisable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0, 0);
}

TEST_F(Shadows, CullingThatIsOffIsOnForTheMapAlone) {
    RAVOLT::shadowingOn();
    RVOPENGL::cullingOff();
    RVLIGHT *light = newCaster();
    const Calls calls = callsOf([&] { draw({light}); });
    EXPECT_TRUE(calls.haveInOrder({{"glEnable", GL_CULL_FACE},
                                   {"glCullFace", GL_FRONT},
                                   {"glCullFace", GL_BACK},
                                   {"glDisable", GL_CULL_FACE}}));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    RVOPENGL::cullingOn();
}

TEST_F(Shadows, TheMapHasTheDepthsThatTheCasterSees) {
    RAVOLT::shadowingOn();
    // The caster looks along -z from z = 5; the wall's back is towards it, as back faces count.
    RVLIGHT *light = newCaster({0, 0, 5}, {0, 0, -1});
    auto *wall = new Wall;
    wall->depth = -5;
    wall->half = 2;
    wall->setRotation(0, 180, 0);
    draw({light, wall});
    std::vector<float> depths(64 * 64);
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::getFbo(2)->getTexture()->render(nullptr);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    EXPECT_EQ(depths[0], 1) << "nothing in the corner";
    // The turned wall stands at z = 5, in the caster's own plane: nothing there either.
    EXPECT_EQ(depths[32 * 64 + 32], 1);

    wall->depth = 5; // turned: at z = -5, ten before the caster
    draw({light, wall});
    RVOPENGL::getFbo(2)->getTexture()->render(nullptr);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    const double n = 1, f = 40, z = 10;
    const double window = 0.5 + 0.5 * ((f + n) / (f - n) - 2 * f * n / ((f - n) * z));
    EXPECT_NEAR(depths[32 * 64 + 32], window, 1e-3);
    EXPECT_EQ(depths[0], 1);
}

// --- the whole frame

// What a target that is drawn into is never bound to be read from, on any unit that a program
// reads.
TEST_F(Effects, NoPassReadsTheTextureThatItDrawsInto) {
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    RAVOLT::DOFOn();
    testing::internal::CaptureStdout();
    const Calls calls = callsOf([&] { drawFrame(camera, nullptr); });
    testing::internal::GetCapturedStdout();
    double target = 0, unit = GL_TEXTURE0;
    std::map<double, double> onUnit;
    int quads = 0;
    for (const Call &call : calls) {
        if (call.name == "glBindFramebufferEXT") {
            target = 0;
            for (int index = 0; index < 14; ++index)
                if (call.arguments[1] == targetName(index))
                    target = textureName(index);
        } else if (call.name == "glActiveTextureARB") {
            unit = call.arguments[0];
        } else if (call.name == "glBindTexture") {
            onUnit[unit] = call.arguments[1];
        } else if (call.name == "glBegin") {
            ++quads;
            // The luminance target reads its smallest level alone while level 0 is drawn into.
            if (target != textureName(3)) {
                EXPECT_NE(onUnit[GL_TEXTURE0], target) << "quad " << quads;
            }
        }
    }
    EXPECT_EQ(quads, 25);
}

} // namespace
} // namespace ravolt::test
