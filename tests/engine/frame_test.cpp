// The frame: the calls that its four members make around the nodes, and the picture.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/resetEffects.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace ravolt::test {
namespace {

using Numbers = std::array<float, 16>;

constexpr Pixel background{51, 51, 153};
constexpr Pixel red{255, 0, 0};
constexpr Pixel green{0, 255, 0};

// Makes a call of its own: a point size that is its number.
class Signature : public CustomNode {
  public:
    explicit Signature(float ownNumber) : number(ownNumber) {}

    bool render(void *) override {
        glPointSize(number);
        return true;
    }

  private:
    float number;
};

// A rectangle at z = depth; at z = 0 in the coordinates of the current matrix.
class Rectangle : public CustomNode {
  public:
    Rectangle(Pixel itsColor, float x1, float y1, float x2, float y2, float itsDepth)
        : color(itsColor), left(x1), top(y1), right(x2), bottom(y2), depth(itsDepth) {}

    bool render(void *entry) override {
        if (depth != 0)
            glLoadMatrixf(static_cast<RVELEMENT *>(entry)->getMatrix()->e);
        glColor4ub(color.red, color.green, color.blue, 255);
        glBegin(GL_QUADS);
        for (const auto &[x, y] :
             {std::pair{left, top}, {left, bottom}, {right, bottom}, {right, top}})
            glVertex3f(x, y, depth);
        glEnd();
        return true;
    }

  private:
    Pixel color;
    float left, top, right, bottom, depth;
};

// Fills the middle of the view, its front towards the camera.
Rectangle *wall(Pixel color) { return new Rectangle(color, -1, 1, 1, -1, -5); }

class Frame : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
    }

    void TearDown() override {
        RAVOLT::setSkybox(nullptr);
        RAVOLT::wireframeOff();
        glPointSize(1);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        EngineTest::TearDown();
    }

    static Pixel middle() { return pixelAt(width / 2, height / 2); }
};

const Numbers identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

class LandscapeFrame : public Frame {
  protected:
    LandscapeFrame() { settings.setLandscape(true); }
};

// A driver without buffers and with few units.
class PoorFrame : public Frame {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_ARB_vertex_buffer_object");
        recorder.setTextureUnits(8);
        Frame::SetUp();
    }
};

// --- begin3D

TEST_F(Frame, Begin3DStartsFromACleanState) {
    RVTEXTURE::texturingOn(0);
    RVOPENGL::blendingOn();
    RVOPENGL::twoSideOn();
    RVOPENGL::vertexArrayOn();
    const Calls calls = callsOf([&] { EXPECT_TRUE(RAVOLT::begin3D(camera)); });
    EXPECT_TRUE(calls.haveInOrder({{"glDisableClientState", GL_VERTEX_ARRAY},
                                   {"glDisable", GL_TEXTURE_2D},
                                   {"glDisable", GL_BLEND},
                                   {"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0},
                                   {"glLoadIdentity"}}));
    EXPECT_FALSE(RVOPENGL::isBlended() || RVOPENGL::isTwoSide());
}

TEST_F(Frame, EachBlockEmptiesTheListAndBegin3DAloneRaisesTheStamp) {
    const long stamp = RAVOLT::getTimeStamp();
    for (long block = 1; block <= 2; ++block) {
        RAVOLT::begin3D(camera);
        EXPECT_EQ(RAVOLT::getTimeStamp(), stamp + block);
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
        camera->pass();
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    }
    RAVOLT::begin2D();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp + 2);
    RAVOLT::end2D();
}

TEST_F(Frame, Begin3DLoadsTheViewOfTheCameraOrOfATemporaryDefaultOne) {
    camera->setPosition(1, 2, 3);
    RAVOLT::begin3D(camera);
    EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX),
              (Numbers{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1}));
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), camera);
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    const unsigned int freeId = zlfNewId();
    releaseId(freeId);

    EXPECT_TRUE(RAVOLT::begin3D(nullptr));
    EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    const unsigned int nextId = zlfNewId();
    EXPECT_EQ(nextId, freeId);
    releaseId(nextId);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Frame, AFrameWithoutACameraShowsWhatIsInFrontOfTheOrigin) {
    drawFrame(nullptr, wall(red));
    EXPECT_PIXEL(middle(), red, 0);
    EXPECT_PIXEL(pixelAt(2, 2), background, 0);
}

// --- end3D

TEST_F(Frame, End3DDrawsTheListOnceInItsOrderWhateverTheFlag) {
    RVNODE *node = wall(red);
    for (float number : {1.0f, 2.0f, 3.0f})
        (new Signature(number))->link(node);
    for (bool blit : {true, false}) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(RAVOLT::end3D(blit)); }).empty());
        RAVOLT::begin3D(camera);
        node->pass(true);
        const Calls calls = callsOf([&] { EXPECT_TRUE(RAVOLT::end3D(blit)); });
        EXPECT_EQ(calls.named("glPointSize"),
                  (Calls{{"glPointSize", 1}, {"glPointSize", 2}, {"glPointSize", 3}}))
            << "blit " << blit;
        EXPECT_FALSE(calls.contains("glBindFramebufferEXT"));
        EXPECT_PIXEL(middle(), red, 0);
    }
}

TEST_F(Frame, LightsComeFirstIn3DAndOnlyCustomNodesAndHelpersAreDrawnIn2D) {
    Drawings drawings;
    CustomProbe custom(drawings);
    MeshProbe mesh(drawings);
    LightProbe light(drawings);
    HelperProbe helper(drawings);
    const auto drawn = [&](bool (*end)()) {
        for (RVNODE *node : std::initializer_list<RVNODE *>{&mesh, &custom, &light, &helper})
            node->pass();
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 4u);
        drawings.clear();
        end();
        std::vector<const RVNODE *> nodes;
        for (const Drawn &each : drawings)
            nodes.push_back(each.node);
        return nodes;
    };
    RAVOLT::begin3D(camera);
    const auto nodes = drawn([] { return RAVOLT::end3D(true); });
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0], &light);
    RAVOLT::begin2D();
    EXPECT_EQ(drawn(RAVOLT::end2D), (std::vector<const RVNODE *>{&custom, &helper}));
}

TEST_F(Frame, NearerThingsHideFartherOnesOfAnyOrder) {
    RVNODE *far = wall(red);
    far->setPosition(0, 0, -1);
    RVNODE *near = wall(green);
    far->link(near);
    drawFrame(camera, near);
    EXPECT_PIXEL(middle(), green, 0);
}

// --- wireframe

TEST_F(Frame, WireframeLastsFromTheDrawingUntilTheNext2DBlock) {
    RAVOLT::wireframeOn();
    RAVOLT::begin3D(camera);
    (new Signature(5))->pass();
    EXPECT_EQ(callsOf([] { RAVOLT::end3D(true); }),
              (Calls{{"glDisable", GL_CULL_FACE},
                     {"glPolygonMode", GL_FRONT_AND_BACK, GL_LINE},
                     {"glPointSize", 5}}));
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_LINE);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(RVOPENGL::isCulled());

    RAVOLT::begin2D();
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_FILL);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    RAVOLT::end2D();
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
}

TEST_F(Frame, WireframeShowsLinesOfBothSidesIntoTheNextFrameWithoutA2DBlock) {
    RVNODE *away = new Rectangle(red, 1, 1, -1, -1, -5);
    drawFrame(camera, away);
    EXPECT_EQ(readFrame().pixelsUnlike(background), 0u); // culled
    RAVOLT::wireframeOn();
    for (int frame = 0; frame < 2; ++frame) {
        drawFrame(camera, away);
        EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_LINE);
        EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
        EXPECT_PIXEL(middle(), background, 0);
        EXPECT_NE(readFrame().pixelsUnlike(background), 0u);
        RAVOLT::swap();
        RAVOLT::wireframeOff();
    }
}

// --- skybox

class SkyChild : public CustomNode {
  public:
    bool render(void *entry) override {
        const auto *element = static_cast<const RVELEMENT *>(entry);
        ++renders;
        node = element->getNode();
        matrix = *element->getMatrix();
        auxId = element->getAuxId();
        param1 = element->getParam1();
        hasLight = element->getNearestLight(0) != nullptr;
        lighting = glIsEnabled(GL_LIGHTING);
        glGetFloatv(GL_CURRENT_COLOR, color);
        return true;
    }

    int renders = 0;
    RVNODE *node = nullptr;
    Z3MMATRIX matrix;
    unsigned int auxId = 1, param1 = 0;
    bool hasLight = true;
    bool lighting = true;
    float color[4] = {};
};

TEST_F(Frame, TheSkyIsItsFirstChildWithoutTranslation) {
    Drawings drawings;
    auto *sky = new CustomProbe(drawings);
    auto *first = new SkyChild, *second = new SkyChild;
    first->link(sky);
    second->link(sky);
    sky->setRotation(0, 90, 0);
    sky->setPosition(7, 8, 9);
    sky->setAuxId(3);
    camera->setPosition(10, 20, 30);
    camera->setRotation(0, 90, 0);
    RAVOLT::setSkybox(sky);
    EXPECT_EQ(RAVOLT::getSkybox(), sky);
    RAVOLT::begin3D(camera);
    RVLIGHT::lightingOn();
    RVTEXTURE::texturingOn(0);
    RAVOLT::end3D(true);

    EXPECT_EQ(first->renders, 1);
    EXPECT_EQ(second->renders, 0);
    EXPECT_TRUE(drawings.empty());
    EXPECT_EQ(first->node, sky);
    EXPECT_FALSE(first->hasLight);
    EXPECT_EQ(first->auxId, 0u);
    EXPECT_EQ(first->param1, 256u);
    EXPECT_FALSE(first->lighting || glIsEnabled(GL_TEXTURE_2D));
    expectNear(first->color, {1, 1, 1, 1}, 0);
    expectNear(first->matrix.e, identity, 1e-6); // the turns of camera and sky cancel out

    first->unlink();
    second->unlink();
    drawFrame(camera, nullptr);
    EXPECT_TRUE(drawings.empty()) << "no child, nothing drawn";
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVNODE::getChild\n");
    first->link(sky);
    first->unlink();
    delete sky;
    drawFrame(camera, nullptr);
    EXPECT_EQ(first->renders, 1) << "a deleted skybox";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Frame, ASkyboxDoesNotOutliveItsEngine) {
    RAVOLT::setSkybox(new CustomNode);
    ASSERT_TRUE(restart());
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    markLog();
    drawFrame(nullptr, nullptr);
    EXPECT_NOTHING_LOGGED();
}

// --- begin2D, end2D

TEST_F(Frame, A2DBlockMakesTheStatedCalls) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    RVLIGHT::lightingOn();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOn();
    RVOPENGL::twoSideOn();
    RVOPENGL::vertexArrayOff();
    RVOPENGL::normalArrayOn();
    RVOPENGL::colorArrayOff();
    RVOPENGL::textureArrayOff();
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RAVOLT::begin2D()); }),
              (Calls{{"glPolygonMode", GL_FRONT_AND_BACK, GL_FILL},
                     {"glDisable", GL_LIGHTING},
                     {"glDisable", GL_BLEND},
                     {"glDisable", GL_CULL_FACE},
                     {"glDisable", GL_DEPTH_TEST},
                     {"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                     {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0},
                     {"glEnableClientState", GL_VERTEX_ARRAY},
                     {"glDisableClientState", GL_NORMAL_ARRAY},
                     {"glEnableClientState", GL_COLOR_ARRAY},
                     {"glClientActiveTextureARB", GL_TEXTURE0},
                     {"glClientActiveTextureARB", GL_TEXTURE0},
                     {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glGetIntegerv", GL_VIEWPORT},
                     {"glMatrixMode", GL_PROJECTION},
                     {"glPushMatrix"},
                     {"glLoadIdentity"},
                     {"glOrtho", 0, width, height, 0, -1, 1},
                     {"glMatrixMode", GL_MODELVIEW},
                     {"glLoadIdentity"}}));
    (new Signature(9))->pass();
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RAVOLT::end2D()); }), (Calls{{"glPointSize", 9},
                                                                    {"glMatrixMode", GL_PROJECTION},
                                                                    {"glPopMatrix"},
                                                                    {"glMatrixMode", GL_MODELVIEW},
                                                                    {"glEnable", GL_CULL_FACE},
                                                                    {"glEnable", GL_DEPTH_TEST}}));
    RVOPENGL::cullingOff();
    EXPECT_FALSE(callsOf([] {
                     RAVOLT::begin2D();
                     RAVOLT::end2D();
                 }).contains(Call("glEnable", GL_CULL_FACE)));
    RVOPENGL::cullingOn();
}

TEST_F(PoorFrame, Begin2DCallsNoFunctionThatTheDriverLacks) {
    ASSERT_FALSE(RVOPENGL::useVBO());
    ASSERT_FALSE(RVOPENGL::useMultitexturing());
    RVOPENGL::textureArrayOn();
    const Calls calls = callsOf([] { RAVOLT::begin2D(); });
    EXPECT_FALSE(calls.contains("glBindBufferARB"));
    EXPECT_FALSE(calls.contains("glClientActiveTextureARB"));
    RAVOLT::end2D();
}

TEST_F(Frame, CoordinatesAreThoseOfTheCurrentViewport) {
    glViewport(10, 20, 64, 48);
    const Calls calls = callsOf([] { RAVOLT::begin2D(); });
    EXPECT_EQ(calls.named("glOrtho"), (Calls{{"glOrtho", 0, 64, 48, 0, -1, 1}}));
    RAVOLT::end2D();
    RVOPENGL::resize(0, 0, width, height);
}

TEST_F(LandscapeFrame, CoordinatesAreTurned) {
    const Calls calls = callsOf([] { RAVOLT::begin2D(); });
    EXPECT_TRUE(calls.haveInOrder({{"glMatrixMode", GL_PROJECTION},
                                   {"glPushMatrix"},
                                   {"glLoadIdentity"},
                                   {"glRotatef", 90, 0, 0, 1},
                                   {"glOrtho", 0, height, width, 0, -1, 1},
                                   {"glMatrixMode", GL_MODELVIEW},
                                   {"glLoadIdentity"}}));
    RAVOLT::end2D();
}

TEST_F(LandscapeFrame, APictureIsTurnedByAQuarter) {
    RAVOLT::clear(true, true, false);
    drawFrame2D(new Rectangle(red, 10, 20, 30, 40, 0));
    const Picture picture = readFrame();
    EXPECT_EQ(picture.pixelsUnlike(background), 20u * 20u);
    EXPECT_PIXEL(picture.at(20, height - 11), red, 0);
    EXPECT_PIXEL(picture.at(39, height - 30), red, 0);
}

TEST_F(Frame, FlatThingsAreOverTheSceneInPixelsFromTheTopLeftForOneFrame) {
    RVNODE *scene = wall(red);
    drawFrame(camera, scene);
    const Picture first = readFrame();
    drawFrame2D(new Rectangle(green, 50, 40, 70, 60, 0));
    const Picture picture = readFrame();
    for (const auto &[x, y, color] : {std::tuple{50, 40, green},
                                      {69, 59, green},
                                      {49, 40, red},
                                      {70, 59, red},
                                      {60, 39, red},
                                      {60, 60, red}})
        EXPECT_PIXEL(picture.at(x, y), color, 0) << x << ", " << y;
    RAVOLT::swap();
    drawFrame(camera, scene);
    EXPECT_EQ(readFrame().bytes, first.bytes);
}

// --- the whole

// A request alone changes nothing where no effect can be drawn.
TEST_F(Frame, WithRequestedEffectsIsDrawnAsWithout) {
    RVNODE *scene = wall(red);
    drawFrame(camera, scene);
    const Calls plain = callsOf([&] { drawFrame(camera, scene); });
    allEffectsOn();
    EXPECT_EQ(callsOf([&] { drawFrame(camera, scene); }), plain);
    EXPECT_TRUE(RAVOLT::isBlooming());
    EXPECT_FALSE(RAVOLT::isShadowed());
    resetEffects();
}

TEST_F(Frame, EndsWithTheMatrixStacksOfItsBeginAndAllocatesNothing) {
    const auto state = [] {
        return std::tuple{integerOf(GL_PROJECTION_STACK_DEPTH), integerOf(GL_MODELVIEW_STACK_DEPTH),
                          integerOf(GL_MATRIX_MODE), matrixOf(GL_PROJECTION_MATRIX),
                          RVOPENGL::getProfile()};
    };
    const auto before = state();
    RVNODE *scene = wall(red);
    RVNODE *flat = new Rectangle(green, 50, 40, 70, 60, 0);
    auto *sky = new CustomNode;
    wall(green)->link(sky);
    sky->setRotation(1, 2, 3);
    RAVOLT::setSkybox(sky);
    unsigned long allocations = 0;
    for (int number = 0; number <= 20; ++number) {
        drawFrame(camera, scene);
        drawFrame2D(flat);
        EXPECT_TRUE(state() == before);
        RAVOLT::swap();
        if (number == 0)
            allocations = recorder.allocations();
    }
    EXPECT_EQ(recorder.allocations(), allocations);
}

} // namespace
} // namespace ravolt::test
