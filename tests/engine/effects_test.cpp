// The effect passes: what each effect makes of the picture, and the state after it. The calls of a
// whole frame are tested, one by one, in wholeFrame_test.cpp.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVSHADER.h"
#include "scene/renderList.h"
#include "tests/engine/adaptedLuminance.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/effectsTest.h"

#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <utility>
#include <vector>

namespace ravolt::test {
namespace {

constexpr Pixel background{51, 51, 153}, green{0, 255, 0};
const std::string noCaster =
    "   [!] Invalid shadow pass: no shadow casters detected @ RAVOLT::end3D\n";

class Effects : public EffectsTest {
  protected:
    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        ASSERT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF() && RVSHADER::useShadows())
            << logTextSince(startMark);
        markLog();
    }

    void TearDown() override {
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        glPointSize(1);
        EffectsTest::TearDown();
    }

    void frame(RVNODE *root) { drawFrame(camera, root); }

    // The picture remains in target 0, until the function ends.
    template <class Look> void frameInTarget(RVNODE *root, Look look) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        root->pass();
        RAVOLT::end3D(false);
        look();
        RVFBO::unbind();
    }

    std::string printedByFrame(RVNODE *root) {
        return printedBy([&] { frame(root); });
    }

    static void setBackground(float grey) { RVOPENGL::setBackgroundColor(grey, grey, grey, 1); }
};

// --- the choice of the target

TEST_F(Effects, ClearChoosesTargetZeroForBloomAndForDepthOfField) {
    const struct {
        void (*on)(), (*off)();
        RVFBO *target;
    } rows[] = {{[] {}, [] {}, nullptr},
                {RAVOLT::HDROn, RAVOLT::HDROff, nullptr},
                {RAVOLT::shadowingOn, RAVOLT::shadowingOff, nullptr},
                {RAVOLT::bloomingOn, RAVOLT::bloomingOff, RVOPENGL::getFbo(0)},
                {RAVOLT::DOFOn, RAVOLT::DOFOff, RVOPENGL::getFbo(0)}};
    for (const auto &row : rows)
        for (bool nothing : {false, true}) {
            row.on();
            EXPECT_EQ(callsOf([&] { RAVOLT::clear(!nothing, false, false); }).count("glClear"),
                      nothing ? 0u : 1u);
            EXPECT_EQ(RVFBO::getCurrent(), row.target) << "row " << &row - rows;
            row.off();
            RVFBO::unbind();
        }
}

TEST_F(Effects, ClearWithoutATargetUnbindsNoBoundTarget) {
    RVOPENGL::getFbo(4)->render(nullptr);
    const Calls calls = callsOf([] { RAVOLT::clear(true, false, true); });
    EXPECT_EQ(calls, (Calls{{"glClear", GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT}}));
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(4));
    RVFBO::unbind();
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
    const GLuint scene = RVOPENGL::getFbo(0)->getTexture()->getGLId();
    EXPECT_EQ(calls.count(Call{"glBindTexture", GL_TEXTURE_2D, scene}), 1u);
    EXPECT_EQ(calls.count("glBegin"), 1u);
    expectStateOfAFrame();
}

TEST_F(Effects, WithoutBlitThePictureStaysInTargetZeroAnd2DIsDrawnThere) {
    frame(nullptr); // the window is empty
    RAVOLT::bloomingOn();
    frameInTarget(new Wall({0, 1, 0, 1}), [] {
        EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
        EXPECT_NEAR(texelOf(0, 32, 24)[1], 1, 0.01);
        RAVOLT::begin2D();
        const auto projection = matrixOf(GL_PROJECTION_MATRIX);
        EXPECT_FLOAT_EQ(projection[0], 2.0f / 64); // the target's width is the coordinates' range
        EXPECT_FLOAT_EQ(projection[5], -2.0f / 48);
        glColor4f(1, 0, 0, 1);
        glRecti(60, 48, 64, 44);
        RAVOLT::end2D();
        EXPECT_NEAR(texelOf(0, 62, 2)[0], 1, 0.01) << "the lower right corner";
    });
    EXPECT_PIXEL(pixelAt(64, 48), background, 1);
    EXPECT_PIXEL(pixelAt(126, 94), background, 1);
}

// As lit, transparent nodes leave it.
class WallThatLeavesState : public Wall {
  public:
    using Wall::Wall;

    bool render(void *entry) override {
        Wall::render(entry);
        RVLIGHT::lightingOn();
        RVOPENGL::blendingOn();
        glColor4f(1, 0, 0, 0.5f);
        return true;
    }
};

TEST_F(Effects, TheFinalCopyIsThePictureWhateverStateTheLastNodeLeaves) {
    RAVOLT::DOFOn();
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    RAVOLT::DOFOff();
    (new WallThatLeavesState({0, 1, 0, 0.5f}))->pass();
    RAVOLT::end3D(true);
    EXPECT_PIXEL(pixelAt(64, 48), green, 1);
    EXPECT_PIXEL(pixelAt(126, 94), background, 1);
    RVLIGHT::lightingOff();
}

class ForcedTarget : public Effects {
  protected:
    ForcedTarget() { settings.setForceFBO(true); }
};

TEST_F(ForcedTarget, ThePictureStaysInTargetZero) {
    RVFBO::unbind();
    glClear(GL_COLOR_BUFFER_BIT);
    frame(new Wall({0, 1, 0, 1}));
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    EXPECT_NEAR(texelOf(0, 32, 24)[1], 1, 0.001);
    RVFBO::unbind();
    EXPECT_PIXEL(pixelAt(64, 48), background, 0);
}

// --- bloom

TEST_F(Effects, BloomSpillsOverFromWhatIsBrighterThanWhiteAlone) {
    auto *wall = new Wall({1, 1, 1, 1});
    const auto besideIt = [&](int layers, float intensity) {
        wall->layers = layers;
        RAVOLT::setBloomingIntensity(intensity);
        frame(wall);
        return pixelAt(64 + 34, 48);
    };
    EXPECT_PIXEL(besideIt(3, 1), background, 0) << "without bloom";
    RAVOLT::bloomingOn();
    EXPECT_PIXEL(besideIt(3, 0), background, 1);
    EXPECT_PIXEL(besideIt(1, 1), background, 1) << "white alone does not glow";
    const Pixel glowing = besideIt(3, 1);
    EXPECT_GT(glowing.red, background.red + 20);
    EXPECT_GT(glowing.blue, background.blue + 20);
    EXPECT_LT(pixelAt(2, 2).red, glowing.red) << "less with the distance";
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();
}

TEST_F(Effects, AnEmptyListRunsAllEffectsOnTheBackground) {
    allEffectsOn();
    RAVOLT::shadowingOff();
    EXPECT_NE(printedByFrame(nullptr), "");
    EXPECT_EQ(texelOf(4, 32, 24), (std::array<float, 4>{0, 0, 0, 1})) << "nothing is that bright";
    EXPECT_NEAR(texelOf(3, 128, 128)[2], 0.6, 0.001) << "the background alone is measured";
    EXPECT_NOTHING_LOGGED();
    RAVOLT::shadowingOn();
    printedByFrame(nullptr);
    EXPECT_LOGGED_EXACTLY(noCaster);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    expectStateOfAFrame();
}

TEST_F(Effects, AViewBeyondWhiteGlowsAllOver) {
    RAVOLT::bloomingOn();
    auto *wall = new Wall({0.5f, 0.75f, 1, 1}); // the whole view
    wall->half = 10;
    wall->layers = 2;
    frameInTarget(wall, [] {
        const double luminance = 0.3 * 1 + 0.59 * 1.5 + 0.11 * 2;
        EXPECT_NEAR(texelOf(4, 32, 24)[0], 1 * luminance, 0.01);
        EXPECT_NEAR(texelOf(4, 32, 24)[2], 2 * luminance, 0.01);
        // The levels of the blur store no more than 1, and there are four.
        EXPECT_NEAR(texelOf(0, 32, 24)[0], 1 + 4, 0.02);
        EXPECT_NEAR(texelOf(0, 32, 24)[2], 2 + 4, 0.02);
    });
}

// --- tone mapping

TEST_F(Effects, HDRWithoutBloomPrintsAndChangesNothing) {
    auto *wall = new Wall({0.5f, 0.5f, 0.5f, 1});
    frame(wall);
    const Picture plain = readFrame();
    RAVOLT::HDROn();
    EXPECT_EQ(printedByFrame(wall), "");
    EXPECT_EQ(readFrame().bytes, plain.bytes);
}

class ToneMapping : public Effects {
  protected:
    void SetUp() override {
        Effects::SetUp();
        if (IsSkipped())
            return;
        RAVOLT::bloomingOn();
        RAVOLT::HDROn();
    }

    static double toneOf(double color, double luminance, double adapted, double exposure) {
        const double delta = exposure / adapted * luminance;
        return color * (delta * (1 + delta / (exposure * exposure)) / (1 + delta));
    }

    // The adapted luminance, as the program gets it: the last two values of a frame without depth
    // of field are that and the exposure.
    static double adaptedIn(const Calls &calls) {
        const Calls values = calls.named("glUniform1fARB");
        if (values.size() < 2) {
            ADD_FAILURE() << "the luminance was not passed to the program";
            return 1;
        }
        const Call &adapted = values[values.size() - 2];
        EXPECT_EQ(adapted.arguments[0], static_cast<int>(RVSHADER::bloomToneMapping->getParam(10)));
        EXPECT_EQ(values.back().arguments[1], static_cast<double>(RAVOLT::getHDRExposure()));
        return adapted.arguments[1];
    }
};

TEST_F(ToneMapping, PrintsOneLineAFrameAndLogsNone) {
    setBackground(0.5f);
    const std::string line = printedByFrame(nullptr);
    const double luminance = std::atof(line.c_str() + 11);
    EXPECT_NEAR(luminance, 0.5, 0.005);
    char wanted[64];
    std::snprintf(wanted, sizeof wanted, "luminance: %f\n", luminance);
    EXPECT_EQ(line, wanted);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(ToneMapping, IsThePictureOfItsFormula) {
    RAVOLT::setBloomingIntensity(0);
    RAVOLT::setHDRExposure(0.7f);
    auto *wall = new Wall({0.8f, 0.4f, 0.2f, 1});
    const double wallLuminance = 0.3 * 0.8 + 0.59 * 0.4 + 0.11 * 0.2;
    const double backLuminance = 0.3 * 0.2 + 0.59 * 0.2 + 0.11 * 0.6;
    for (int number = 0; number < 2; ++number) {
        recorder.start();
        frameInTarget(wall, [&] {
            const double adapted = adaptedIn(recorder.stop());
            const auto inside = texelOf(0, 32, 24), outside = texelOf(0, 2, 2);
            EXPECT_NEAR(inside[0], toneOf(0.8, wallLuminance, adapted, 0.7), 0.004);
            EXPECT_NEAR(inside[1], toneOf(0.4, wallLuminance, adapted, 0.7), 0.004);
            EXPECT_NEAR(inside[2], toneOf(0.2, wallLuminance, adapted, 0.7), 0.004);
            EXPECT_NEAR(outside[2], toneOf(0.6, backLuminance, adapted, 0.7), 0.004);
        });
        RAVOLT::swap();
    }
}

TEST_F(ToneMapping, TheEyeAdaptsByTheGapASecond) {
    // The luminance is 1 initially. Each frame continues from the end of the one before.
    const struct {
        double seconds, grey, adapted;
    } frames[] = {
        {0.5, 0.25, 0.625},    // half of the gap of 0.75, down
        {0.25, 0.25, 0.53125}, // a quarter of 0.375
        {0.5, 1.0, 0.765625},  // up
        {1.0, 0.25, 0.25},     // a second closes the gap
        {1.5, 1.0, 1.375},     // more than that overshoots
        {0.5, 1.0, 1.1875},    // and comes back
        {0.5, 0.0, 0.59375},   // black
    };
    recorder.stopClock();
    RAVOLT::updateTimer(); // the clock starts with the first frame
    RAVOLT::swap();
    for (const auto &each : frames) {
        setBackground(static_cast<float>(each.grey));
        recorder.advanceClock(each.seconds);
        recorder.start();
        const std::string line = printedByFrame(nullptr);
        EXPECT_NEAR(adaptedIn(recorder.stop()), each.adapted, 0.0005) << each.seconds;
        EXPECT_NEAR(std::atof(line.c_str() + 11), each.grey, 0.0005);
        RAVOLT::swap();
    }
}

// The wall fills the view in part; red counts 0.3, green 0.59 and blue 0.11 of it, also beyond 1.
TEST_F(ToneMapping, TheLuminanceIsThatOfTheWholePicture) {
    setBackground(0);
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
        EXPECT_NEAR(std::atof(printedByFrame(wall).c_str() + 11), row.luminance,
                    0.012 * row.luminance);
        delete wall;
    }
}

// --- depth of field

TEST_F(Effects, DepthOfFieldMixesByTheDistanceFromTheFocus) {
    RAVOLT::DOFOn();
    RAVOLT::setDOFRange(2);
    auto *wall = new Wall({1, 0, 0, 0.5f}); // its alpha is the depth that it codes
    const auto pictureWithFocus = [&](float focus) {
        RAVOLT::setDOFFocus(focus);
        frame(wall);
        return readFrame();
    };
    const Picture sharp = pictureWithFocus(0.5f), soft = pictureWithFocus(0);
    EXPECT_PIXEL(sharp.at(64, 48), (Pixel{255, 0, 0}), 2) << "in focus";
    EXPECT_PIXEL(sharp.at(64 + 16, 48), (Pixel{255, 0, 0}), 60) << "sharp near its edge";
    EXPECT_GT(soft.at(64 + 20, 48).blue, sharp.at(64 + 20, 48).blue + 10) << "the background in it";
    EXPECT_PIXEL(pictureWithFocus(1).at(64 + 28, 48), background, 1)
        << "the background is in focus";
}

TEST_F(Effects, TheBlursDoNotChangeTheDepths) {
    RAVOLT::DOFOn();
    RAVOLT::bloomingOn();
    frame(new Wall({1, 0, 0, 0.25f}));
    EXPECT_NEAR(texelOf(1, 32, 24)[3], 0.25, 0.001);
    EXPECT_NEAR(texelOf(1, 1, 1)[3], 1, 0.001);
}

// --- shadows

// A caster and a wall, which marks its draws in a recording.
class Shadows : public Effects {
  protected:
    RVNODE *root = nullptr;
    RVLIGHT *light = nullptr;
    Wall *wall = nullptr;

    void SetUp() override {
        Effects::SetUp();
        if (IsSkipped())
            return;
        RAVOLT::shadowingOn();
        ASSERT_TRUE(RAVOLT::isShadowed());
        root = new RVNODE;
        light = newCaster({0, 4, 0}, {0, -0.6f, -0.8f});
        wall = new Wall({0, 1, 0, 1});
        wall->meanwhile = [] { glPointSize(7); };
        light->link(root);
        wall->link(root);
    }

    Calls calls() {
        return callsOf([&] { frame(root); });
    }

    // How often the frames so far have drawn the flat profile.
    long maps() const { return wall->draws(RV_OPENGL_PROFILE_FLAT); }
};

TEST_F(Shadows, WithoutACasterTheFrameLogsItAndIsDrawn) {
    light->castShadows(false);
    auto *omni = new RVLIGHT;
    omni->castShadows(true); // but it is no spot light
    omni->link(root);
    RAVOLT::skipShadowsGeneration(); // stays pending
    EXPECT_FALSE(calls().contains("glBindFramebufferEXT"));
    EXPECT_LOGGED_EXACTLY(noCaster);
    EXPECT_PIXEL(pixelAt(64, 48), green, 0);
    expectStateOfAFrame();

    light->castShadows(true);
    frame(root);
    EXPECT_EQ(maps(), 0) << "the skip that was pending";
}

TEST_F(Shadows, SkipKeepsTheMapForOneFrameWithAShadowPass) {
    RAVOLT::skipShadowsGeneration();
    frame(root);
    EXPECT_EQ(maps(), 0) << "not drawn yet, and read as it is";
    EXPECT_PIXEL(pixelAt(64, 48), green, 0);
    frame(root);
    EXPECT_EQ(maps(), 1);
    RAVOLT::skipShadowsGeneration();
    RAVOLT::shadowingOff();
    frame(root); // no shadow pass, the skip stays pending
    RAVOLT::shadowingOn();
    frame(root);
    EXPECT_EQ(maps(), 1) << "skipped";
    frame(root);
    EXPECT_EQ(maps(), 2);
    EXPECT_NOTHING_LOGGED();
    expectStateOfAFrame();
}

TEST_F(Shadows, SkyWaterAndTerrainAreNotDrawnIntoTheMap) {
    class Typed : public Wall {
      public:
        explicit Typed(RV_NODE_TYPE itsType) { type = itsType; }
    };
    for (RV_NODE_TYPE type : {RV_NODE_TYPE_SKYDOME, RV_NODE_TYPE_WATER, RV_NODE_TYPE_TERRAIN}) {
        auto *node = new Typed(type);
        node->link(root);
        frame(root);
        EXPECT_EQ(node->draws(RV_OPENGL_PROFILE_FLAT), 0) << type;
        EXPECT_EQ(node->draws(RV_OPENGL_PROFILE_FULL), 2) << type;
    }
}

// In the map, under the map's texture and in the main pass, of two frames.
TEST_F(Shadows, ATextureOnTheUnitOfTheMapIsBoundAndEnabledInEachPass) {
    auto *texture = new RVTEXTURE;
    ASSERT_TRUE(texture->create(2, 2, RV_TEXTURE_RGBA));
    int passes = 0;
    wall->meanwhile = [&] {
        unsigned int unit = 1;
        texture->render(&unit);
        EXPECT_EQ(integerOf(GL_TEXTURE_BINDING_2D), static_cast<int>(texture->getGLId())) << passes;
        EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D)) << passes;
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        texture->render(&unit);
        ++passes;
    };
    frame(root);
    frame(root);
    EXPECT_EQ(passes, 6);
    wall->meanwhile = [] {};
    delete texture;
}

TEST_F(Shadows, TheWindowFollowsTheMapWhereItIsTheTarget) {
    const Calls all = calls();
    EXPECT_EQ(all.named({"glBindFramebufferEXT", "glViewport", "glPointSize"}),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, RVOPENGL::getFbo(2)->getGLId()},
                     {"glViewport", 0, 0, 64, 64},
                     {"glPointSize", 7},
                     {"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0},
                     {"glViewport", 0, 0, 128, 96},
                     {"glPointSize", 7},
                     {"glPointSize", 7}}));
    EXPECT_EQ(all.count(Call{"glEnable", GL_CULL_FACE}), 0u);
}

TEST_F(Shadows, CullingThatIsOffIsOnForTheMapAlone) {
    RVOPENGL::cullingOff();
    EXPECT_TRUE(calls().haveInOrder({{"glEnable", GL_CULL_FACE},
                                     {"glCullFace", GL_FRONT},
                                     {"glCullFace", GL_BACK},
                                     {"glDisable", GL_CULL_FACE}}));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    RVOPENGL::cullingOn();
}

TEST_F(Shadows, TheOffsetIsAroundTheDrawingOfTheMapAlone) {
    RAVOLT::setShadowOffset(4, 8);
    const Calls all = calls();
    EXPECT_TRUE(all.haveInOrder({{"glShadeModel", GL_FLAT},
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
    EXPECT_EQ(all.count("glPolygonOffset"), 2u);
    RAVOLT::skipShadowsGeneration();
    EXPECT_FALSE(calls().contains("glPolygonOffset")) << "no map is drawn";
}

// Without an offset of the engine it is used for the map, too.
TEST_F(Shadows, TheOffsetOfTheApplicationIsRestoredAfterTheMap) {
    glPolygonOffset(3, 5);
    glEnable(GL_POLYGON_OFFSET_FILL);
    Calls all = calls();
    EXPECT_FALSE(all.contains("glPolygonOffset"));
    EXPECT_FALSE(all.contains("glIsEnabled"));
    EXPECT_EQ(all.count(Call{"glEnable", GL_POLYGON_OFFSET_FILL}), 0u);
    EXPECT_EQ(all.count(Call{"glDisable", GL_POLYGON_OFFSET_FILL}), 0u);
    for (const auto &[factor, units] : {std::pair{4.0f, 0.0f}, {0.0f, -8.0f}}) {
        RAVOLT::setShadowOffset(factor, units);
        all = calls();
        EXPECT_TRUE(
            all.haveInOrder({{"glPolygonOffset", factor, units}, {"glPolygonOffset", 3, 5}}));
        EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
        EXPECT_EQ(integerOf(GL_POLYGON_OFFSET_FACTOR), 3);
        EXPECT_EQ(integerOf(GL_POLYGON_OFFSET_UNITS), 5);
    }
    glDisable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0, 0);
}

// The first victim is in the storage of the list before the nodes and is drawn after them, as
// transparent ones are: the entry of the node that deletes it is moved while it is drawn. The
// second one is drawn before.
TEST_F(Shadows, ANodeMayDeleteOthersWhileTheMapIsDrawn) {
    class Deleter : public Wall {
      public:
        Deleter() : Wall({0, 1, 0, 1}) {}

        bool render(void *entry) override {
            if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FLAT)
                cast();
            if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FULL)
                positions.push_back(static_cast<RVELEMENT *>(entry)->getMatrix()->getTranslation());
            return Wall::render(entry);
        }

        void cast() {
            ++casts;
            for (RVNODE *victim : std::exchange(victims, {})) {
                victim->unlink();
                delete victim;
            }
        }

        std::vector<RVNODE *> victims;
        int casts = 0;
        std::vector<Z3MVECTOR3D> positions; // in the eye space, of each draw that is seen
    };
    auto *helper = new RVHELPER;
    auto *before = new Deleter, *deleter = new Deleter, *after = new Deleter;
    for (RVNODE *node : std::initializer_list<RVNODE *>{helper, before, deleter, after})
        node->link(root);
    deleter->setPosition(1, 2, -7);
    after->setPosition(3, 4, -8);
    frame(root);
    const auto positions = std::exchange(deleter->positions, {});
    const auto positionsAfter = std::exchange(after->positions, {});
    const int casts = after->casts;
    ASSERT_GT(casts, 0);
    ASSERT_FALSE(positions.empty());
    deleter->victims = {helper, before};
    frame(root);
    EXPECT_TRUE(deleter->victims.empty());
    EXPECT_EQ(after->casts, 2 * casts);
    const auto expectEqual = [](const auto &drawn, const auto &expected) {
        ASSERT_EQ(drawn.size(), expected.size());
        for (std::size_t index = 0; index < drawn.size(); ++index) {
            EXPECT_EQ(drawn[index].x, expected[index].x);
            EXPECT_EQ(drawn[index].y, expected[index].y);
            EXPECT_EQ(drawn[index].z, expected[index].z);
        }
    };
    expectEqual(deleter->positions, positions);
    expectEqual(after->positions, positionsAfter);
}

// The matrix of the entry that is drawn is not restored into an entry of the new list.
TEST_F(Shadows, ANodeMayFillTheListAnewWhileTheMapIsDrawn) {
    class Refiller : public Wall {
      public:
        Refiller() : Wall({0, 1, 0, 1}) {}

        bool render(void *entry) override {
            if (RVOPENGL::getProfile() != RV_OPENGL_PROFILE_FLAT || !successor)
                return Wall::render(entry);
            RVELEMENT::reset();
            glPushMatrix();
            glLoadIdentity();
            for (int copies = 0; copies < 4; ++copies)
                successor->pass(false);
            glPopMatrix();
            for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index)
                passed.push_back(RenderList::entry(index));
            successor = nullptr;
            return true;
        }

        RVNODE *successor = nullptr;
        std::vector<RVELEMENT *> passed;
    };
    auto *refiller = new Refiller;
    refiller->setPosition(1, 2, -7);
    refiller->link(root);
    auto *other = new Wall({1, 0, 0, 1});
    other->setPosition(3, 4, -8);
    refiller->successor = other;
    frame(root);
    EXPECT_EQ(refiller->passed.size(), 4u);
    for (RVELEMENT *entry : refiller->passed)
        EXPECT_EQ(entry->getMatrix()->getTranslation().x, 3);
}

TEST_F(Shadows, TheMapHasTheDepthsThatTheCasterSees) {
    // The caster looks along -z from z = 5; the wall's back is towards it, as back faces count.
    light->setPosition(0, 0, 5);
    light->setDirection(Z3MVECTOR3D(0, 0, -1));
    wall->half = 2;
    wall->setRotation(0, 180, 0);
    const double n = 1, f = 40, z = 10;
    const double window = 0.5 + 0.5 * ((f + n) / (f - n) - 2 * f * n / ((f - n) * z));
    // Turned, the wall is at z = 5 in the caster's own plane, and at z = -5, ten before it.
    for (const auto &[depth, center] : {std::pair{-5.0f, 1.0}, {5.0f, window}}) {
        wall->depth = depth;
        frame(root);
        const std::vector<float> depths = texelsOf(2, GL_DEPTH_COMPONENT);
        EXPECT_EQ(depths[0], 1) << "nothing in the corner";
        EXPECT_NEAR(depths[32 * 64 + 32], center, depth > 0 ? 1e-3 : 0);
    }
}

} // namespace
} // namespace ravolt::test
