// The frame: which calls its four members make around the nodes, and what is then to be seen.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <array>

namespace ravolt::test {
namespace {

using Numbers = std::array<float, 16>;

constexpr Pixel background{51, 51, 153};
constexpr Pixel red{255, 0, 0};
constexpr Pixel green{0, 255, 0};

// Leaves a call of its own in a recording: a point size that is its number.
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

// A rectangle at z = depth, in the coordinates of the matrix that stands.
class Rectangle : public CustomNode {
  public:
    Rectangle(Pixel itsColor, float x1, float y1, float x2, float y2, float itsDepth)
        : color(itsColor), left(x1), top(y1), right(x2), bottom(y2), depth(itsDepth) {}

    bool render(void *entry) override {
        if (depth != 0)
            glLoadMatrixf(static_cast<RVELEMENT *>(entry)->getMatrix()->e);
        glColor4ub(color.red, color.green, color.blue, 255);
        glBegin(GL_QUADS);
        glVertex3f(left, top, depth);
        glVertex3f(left, bottom, depth);
        glVertex3f(right, bottom, depth);
        glVertex3f(right, top, depth);
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
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        EngineTest::TearDown();
    }
};

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
    EXPECT_FALSE(RVOPENGL::isBlended());
    EXPECT_FALSE(RVOPENGL::isTwoSide());
}

TEST_F(Frame, Begin3DEmptiesTheListAndRaisesTheStamp) {
    Signature node(7);
    const long stamp = RAVOLT::getTimeStamp();
    RAVOLT::begin3D(camera);
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp + 1);
    node.pass();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    RAVOLT::begin3D(camera);
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp + 2);
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
}

TEST_F(Frame, Begin3DLoadsTheCamerasView) {
    camera->setPosition(1, 2, 3);
    RAVOLT::begin3D(camera);
    const Numbers wanted{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1};
    EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), wanted);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), camera);
}

TEST_F(Frame, Begin3DWithoutACameraUsesADefaultOneThatIsGoneAfterwards) {
    camera->setPosition(1, 2, 3);
    RAVOLT::begin3D(camera);
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    const unsigned int freeId = zlfNewId();
    releaseId(freeId);

    EXPECT_TRUE(RAVOLT::begin3D(nullptr));
    const Numbers identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
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
    EXPECT_PIXEL(pixelAt(width / 2, height / 2), red, 0);
    EXPECT_PIXEL(pixelAt(2, 2), background, 0);
}

// --- end3D

TEST_F(Frame, End3DOfAnEmptyListCallsNothing) {
    RAVOLT::begin3D(camera);
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RAVOLT::end3D(true)); }).empty());
}

TEST_F(Frame, End3DDrawsTheListOnceInItsOrder) {
    for (float number : {1.0f, 2.0f, 3.0f})
        new Signature(number);
    for (bool blit : {true, false}) {
        RAVOLT::begin3D(camera);
        for (RVNODE *node = camera->getNextNode(); node; node = node->getNextNode())
            node->pass();
        EXPECT_EQ(callsOf([&] { EXPECT_TRUE(RAVOLT::end3D(blit)); }),
                  (Calls{{"glPointSize", 1}, {"glPointSize", 2}, {"glPointSize", 3}}))
            << "blit " << blit;
    }
    glPointSize(1);
}

TEST_F(Frame, End3DDrawsLightsFirstAndEveryType) {
    Drawings drawings;
    CustomProbe custom(drawings);
    MeshProbe mesh(drawings);
    LightProbe light(drawings);
    RAVOLT::begin3D(camera);
    custom.pass();
    mesh.pass();
    light.pass();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawings.size(), 3u);
    EXPECT_EQ(drawings[0].node, &light);
}

TEST_F(Frame, ThePictureOfTheBlockIsToBeSeenWhateverTheFlag) {
    RVNODE *node = wall(red);
    for (bool blit : {false, true}) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        node->pass();
        RAVOLT::end3D(blit);
        EXPECT_PIXEL(pixelAt(width / 2, height / 2), red, 0);
    }
}

TEST_F(Frame, NearerThingsHideFartherOnesOfAnyOrder) {
    RVNODE *far = wall(red);
    far->setPosition(0, 0, -1);
    RVNODE *near = wall(green);
    far->link(near);
    drawFrame(camera, near);
    EXPECT_PIXEL(pixelAt(width / 2, height / 2), green, 0);
}

// --- wireframe

TEST_F(Frame, WireframeStartsAfterTheSortAndBeforeTheDrawing) {
    Signature node(5);
    RAVOLT::wireframeOn();
    RAVOLT::begin3D(camera);
    node.pass();
    EXPECT_EQ(callsOf([] { RAVOLT::end3D(true); }),
              (Calls{{"glDisable", GL_CULL_FACE},
                     {"glPolygonMode", GL_FRONT_AND_BACK, GL_LINE},
                     {"glPointSize", 5}}));
    glPointSize(1);
}

TEST_F(Frame, WireframeLastsUntilTheNext2DBlock) {
    RAVOLT::wireframeOn();
    drawFrame(camera, nullptr);
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_LINE);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(RVOPENGL::isCulled());

    RAVOLT::begin2D();
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_FILL);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    RAVOLT::end2D();
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
}

TEST_F(Frame, WithoutA2DBlockLinesStayIntoTheNextFrame) {
    RVNODE *node = wall(red);
    RAVOLT::wireframeOn();
    drawFrame(camera, node);
    RAVOLT::swap();
    RAVOLT::wireframeOff();
    drawFrame(camera, node);
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_LINE);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_PIXEL(pixelAt(width / 2, height / 2), background, 0);
    EXPECT_NE(readFrame().pixelsUnlike(background), 0u);
}

TEST_F(Frame, WireframeShowsBothSides) {
    RVNODE *away = new Rectangle(red, 1, 1, -1, -1, -5);
    drawFrame(camera, away);
    EXPECT_EQ(readFrame().pixelsUnlike(background), 0u); // culled
    RAVOLT::wireframeOn();
    drawFrame(camera, away);
    EXPECT_NE(readFrame().pixelsUnlike(background), 0u);
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
    auto *first = new SkyChild;
    auto *second = new SkyChild;
    first->link(sky);
    second->link(sky);
    sky->setRotation(0, 90, 0);
    sky->setPosition(7, 8, 9);
    sky->setAuxId(3);
    camera->setPosition(10, 20, 30);
    camera->setRotation(0, 90, 0);
    RVLIGHT::lightingOn();
    RAVOLT::setSkybox(sky);
    EXPECT_EQ(RAVOLT::getSkybox(), sky);
    drawFrame(camera, nullptr);

    EXPECT_EQ(first->renders, 1);
    EXPECT_EQ(second->renders, 0);
    EXPECT_TRUE(drawings.empty());
    EXPECT_EQ(first->node, sky);
    EXPECT_FALSE(first->hasLight);
    EXPECT_EQ(first->auxId, 0u);
    EXPECT_EQ(first->param1, 256u);
    EXPECT_FALSE(first->lighting);
    for (float channel : first->color)
        EXPECT_EQ(channel, 1);
    const Z3MMATRIX identity; // the turns of camera and sky undo each other
    for (int index = 0; index < 16; ++index)
        EXPECT_NEAR(first->matrix.e[index], identity.e[index], 1e-6f) << index;
}

TEST_F(Frame, TheSkyTurnsTexturingOff) {
    auto *sky = new CustomNode;
    auto *child = new SkyChild;
    child->link(sky);
    RAVOLT::setSkybox(sky);
    RAVOLT::begin3D(camera);
    RVTEXTURE::texturingOn(0);
    RAVOLT::end3D(true);
    EXPECT_EQ(child->renders, 1);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(Frame, ASkyboxWithoutChildrenDrawsNothing) {
    Drawings drawings;
    RAVOLT::setSkybox(new CustomProbe(drawings));
    Signature list(2);
    RAVOLT::begin3D(camera);
    list.pass();
    const Calls calls = callsOf([] { EXPECT_TRUE(RAVOLT::end3D(true)); });
    EXPECT_TRUE(drawings.empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVNODE::getChild\n");
    EXPECT_EQ(calls.count("glPointSize"), 1u);
    glPointSize(1);
}

TEST_F(Frame, ASkyboxThatIsDeletedIsDrawnNoMore) {
    RVNODE *sky = new CustomNode;
    auto *child = new SkyChild;
    child->link(sky);
    RAVOLT::setSkybox(sky);
    drawFrame(camera, nullptr);
    child->unlink();
    delete sky;
    drawFrame(camera, nullptr);
    EXPECT_EQ(child->renders, 1);
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

TEST_F(Frame, Begin2DPreparesFlatDrawingByTheStatedCalls) {
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
    RAVOLT::end2D();
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

TEST_F(Frame, Begin2DEmptiesTheListAndLeavesTheStamp) {
    RAVOLT::begin3D(camera);
    camera->pass();
    EXPECT_NE(RVELEMENT::getNumberOfPassedElements(), 0u);
    const long stamp = RAVOLT::getTimeStamp();
    RAVOLT::begin2D();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp);
    RAVOLT::end2D();
}

TEST_F(Frame, CoordinatesAreThoseOfTheViewportInForce) {
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

TEST_F(Frame, End2DRestoresTheStateByTheStatedCalls) {
    auto *node = new Signature(9);
    RAVOLT::begin2D();
    node->pass();
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RAVOLT::end2D()); }), (Calls{{"glPointSize", 9},
                                                                    {"glMatrixMode", GL_PROJECTION},
                                                                    {"glPopMatrix"},
                                                                    {"glMatrixMode", GL_MODELVIEW},
                                                                    {"glEnable", GL_CULL_FACE},
                                                                    {"glEnable", GL_DEPTH_TEST}}));
    glPointSize(1);
}

TEST_F(Frame, End2DRestoresCullingOnlyWhereItWasOn) {
    RVOPENGL::cullingOff();
    RAVOLT::begin2D();
    const Calls calls = callsOf([] { RAVOLT::end2D(); });
    EXPECT_FALSE(calls.contains(Call("glEnable", GL_CULL_FACE)));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    RVOPENGL::cullingOn();
}

TEST_F(Frame, End2DSkipsLightsAndMeshes) {
    Drawings drawings;
    CustomProbe custom(drawings);
    MeshProbe mesh(drawings);
    LightProbe light(drawings);
    HelperProbe helper(drawings);
    RAVOLT::begin2D();
    mesh.pass();
    custom.pass();
    light.pass();
    helper.pass();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 4u);
    RAVOLT::end2D();
    ASSERT_EQ(drawings.size(), 2u);
    EXPECT_EQ(drawings[0].node, &custom);
    EXPECT_EQ(drawings[1].node, &helper);
}

TEST_F(Frame, FlatThingsLieOverTheSceneInPixelsFromTheTopLeft) {
    drawFrame(camera, wall(red));
    drawFrame2D(new Rectangle(green, 50, 40, 70, 60, 0));
    const Picture picture = readFrame();
    EXPECT_PIXEL(picture.at(50, 40), green, 0);
    EXPECT_PIXEL(picture.at(69, 59), green, 0);
    EXPECT_PIXEL(picture.at(49, 40), red, 0);
    EXPECT_PIXEL(picture.at(70, 59), red, 0);
    EXPECT_PIXEL(picture.at(60, 39), red, 0);
    EXPECT_PIXEL(picture.at(60, 60), red, 0);
}

TEST_F(Frame, ASceneAfterA2DBlockIsAsBefore) {
    RVNODE *scene = wall(red);
    drawFrame(camera, scene);
    const Picture first = readFrame();
    drawFrame2D(new Rectangle(green, 50, 40, 70, 60, 0));
    RAVOLT::swap();
    drawFrame(camera, scene);
    EXPECT_EQ(readFrame().bytes, first.bytes);
}

// --- the whole

// A wish alone changes nothing where no effect can be drawn.
TEST_F(Frame, WithRequestedEffectsIsDrawnAsWithout) {
    RVNODE *scene = wall(red);
    drawFrame(camera, scene);
    const Calls plain = callsOf([&] { drawFrame(camera, scene); });
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    RAVOLT::DOFOn();
    RAVOLT::shadowingOn();
    EXPECT_EQ(callsOf([&] { drawFrame(camera, scene); }), plain);
    EXPECT_TRUE(RAVOLT::isBlooming());
    EXPECT_FALSE(RAVOLT::isShadowed());
    RAVOLT::bloomingOff();
    RAVOLT::HDROff();
    RAVOLT::DOFOff();
}

TEST_F(Frame, MatrixStacksAreAsBefore) {
    const int projections = integerOf(GL_PROJECTION_STACK_DEPTH);
    const int modelviews = integerOf(GL_MODELVIEW_STACK_DEPTH);
    const Numbers projection = matrixOf(GL_PROJECTION_MATRIX);
    auto *sky = new CustomNode;
    wall(green)->link(sky);
    RAVOLT::setSkybox(sky);
    drawFrame(camera, wall(red));
    drawFrame2D(nullptr);
    EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), projections);
    EXPECT_EQ(integerOf(GL_MODELVIEW_STACK_DEPTH), modelviews);
    EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), projection);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
}

TEST_F(Frame, TheClockAdvancesOnceAtTheFirstBlockOfAFrame) {
    recorder.stopClock();
    RAVOLT::swap();
    RAVOLT::updateTimer();
    for (bool starts3D : {true, false}) {
        RAVOLT::swap();
        recorder.letPass(0.25);
        starts3D ? RAVOLT::begin3D(camera) : RAVOLT::begin2D();
        EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
        recorder.letPass(0.5);
        if (!starts3D)
            RAVOLT::end2D();
        RAVOLT::begin3D(camera);
        RAVOLT::begin2D();
        EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
        RAVOLT::end2D();
        RAVOLT::swap();
        RAVOLT::updateTimer();
    }
}

TEST_F(Frame, NothingIsAllocatedInAFrame) {
    RVNODE *scene = wall(red);
    RVNODE *flat = new Rectangle(green, 50, 40, 70, 60, 0);
    auto *sky = new CustomNode;
    wall(green)->link(sky);
    sky->setRotation(1, 2, 3);
    RAVOLT::setSkybox(sky);
    const auto frame = [&] {
        drawFrame(camera, scene);
        drawFrame2D(flat);
        RAVOLT::swap();
    };
    frame();
    const unsigned long before = recorder.allocations();
    for (int number = 0; number < 20; ++number)
        frame();
    EXPECT_EQ(recorder.allocations(), before);
}

} // namespace
} // namespace ravolt::test
