// Picking: what select returns, the state after it, and how colours are decoded to object ids.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <array>
#include <tuple>
#include <utility>

namespace ravolt::test {
namespace {

constexpr Pixel red{255, 0, 0};

// The pixel that select works on: a row above the one of the same number from the top.
constexpr int centreX = 64, centreY = 48;

std::array<unsigned char, 4> bytesAt(int x, int y) {
    std::array<unsigned char, 4> bytes{};
    glReadPixels(x, RVSETTINGS::getSDLWindowY() - y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

// A square before the camera, red in the normal pass and its object id in the flat one.
class Square : public CustomNode {
  public:
    bool render(void *entry) override {
        profiles.push_back(RVOPENGL::getProfile());
        const auto *element = static_cast<const RVELEMENT *>(entry);
        const unsigned int objectId = element->getAuxId() ? element->getAuxId() : getId();
        const auto byte = [objectId](int index) {
            return static_cast<GLubyte>(objectId >> (8 * index));
        };
        if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FLAT)
            glColor4ub(byte(0), byte(1), byte(2), byte(3));
        else
            glColor4ub(red.red, red.green, red.blue, 255);
        glLoadMatrixf(element->getMatrix()->e);
        glBegin(GL_QUADS);
        for (const auto &[x, y] : {std::pair{-1, 1}, {-1, -1}, {1, -1}, {1, 1}})
            glVertex3i(x, y, -5);
        glEnd();
        return true;
    }

    std::vector<RV_OPENGL_PROFILE> profiles;
};

// The body of a mesh: the same square, as two triangles.
Bytes squareBody() {
    Bytes body;
    body.add(std::uint32_t{0}).text("square").floats({0, 0, 0}).floats({0, 0, 0}).floats({0, 0, 0});
    body.text("").add(1.5f).floats({-1, -1, -5}).floats({1, 1, -5}).add(std::uint8_t{0});
    for (const std::uint16_t count : {4, 0, 2, 0, 0})
        body.add(count);
    body.floats({-1, 1, -5, -1, -1, -5, 1, -1, -5, 1, 1, -5});
    body.floats({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
    for (const std::uint16_t index : {0, 1, 2, 0, 2, 3})
        body.add(index);
    body.floats({0, 0, 1, 0, 0, 1});
    return body;
}

class Selection : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
    }

    static unsigned int selectCentre() { return RAVOLT::select(centreX, centreY); }

    // What a frame of this scene has in its centre.
    unsigned int selectedIn(RVNODE *scene) {
        drawFrame(camera, scene);
        return selectCentre();
    }

    static RVMESH *newMesh() {
        RVMESH *mesh = loadMesh(squareBody());
        EXPECT_NE(mesh, nullptr);
        return mesh;
    }
};

class LandscapeSelection : public Selection {
  protected:
    LandscapeSelection() { settings.setLandscape(true); }
};

// --- what is found

// With 24 bits the highest byte of an object id does not count.
class SelectionOfDepth : public Selection, public testing::WithParamInterface<int> {
  protected:
    SelectionOfDepth() { settings.setColorDepth(GetParam()); }
    void SetUp() override {
        Selection::SetUp();
        ASSERT_EQ(RVSETTINGS::getSDLColorDepth(), GetParam());
    }
};

TEST_P(SelectionOfDepth, ANodeIsFoundByItsIdOrItsAuxiliaryId) {
    for (RVNODE *node : {static_cast<RVNODE *>(new Square), static_cast<RVNODE *>(newMesh())}) {
        EXPECT_EQ(selectedIn(node), node->getId());
        EXPECT_EQ(selectCentre(), node->getId()) << "once more";
        EXPECT_EQ(RAVOLT::select(2, 90), 0u) << "the background";
        node->setAuxId(0x81c2a3f4);
        EXPECT_EQ(selectedIn(node), GetParam() == 32 ? 0x81c2a3f4u : 0x00c2a3f4u);
    }
}

INSTANTIATE_TEST_SUITE_P(Bits, SelectionOfDepth, testing::Values(24, 32));

class MultisampledSelection : public Selection {
  protected:
    MultisampledSelection() { settings.setMultisampling(4); }
};

TEST_F(Selection, TheNearestOfSeveralIsFoundUntilItIsDeleted) {
    auto *far = new Square, *near = new Square;
    far->setPosition(0, 0, -1);
    near->link(far);
    near->setPosition(0, 0, 2);
    EXPECT_EQ(selectedIn(far), near->getId());
    drawFrame(camera, far);
    near->unlink();
    delete near;
    EXPECT_EQ(selectCentre(), far->getId());
}

TEST_F(Selection, OnlyMeshesAndCustomNodesAreDrawn) {
    Drawings drawings;
    CustomProbe custom(drawings);
    MeshProbe mesh(drawings);
    LightProbe light(drawings);
    HelperProbe helper(drawings);
    RAVOLT::begin3D(camera);
    for (RVNODE *node : std::initializer_list<RVNODE *>{&helper, &mesh, &light, &custom})
        node->pass();
    selectCentre();
    ASSERT_EQ(drawings.size(), 2u);
    EXPECT_EQ(drawings[0].node, &mesh);
    EXPECT_EQ(drawings[1].node, &custom);
}

TEST_F(Selection, OutsideTheWindowIsNothing) {
    drawFrame(camera, new Square);
    for (const auto &[x, y] : {std::pair{-1, 48}, {128, 48}, {64, -1}, {64, 0}, {64, 97}})
        EXPECT_EQ(RAVOLT::select(x, y), 0u) << x << ", " << y;
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(Selection, AfterBegin2DOnlyACustomNodeOfThatBlockIsFound) {
    drawFrame(camera, new Square);
    RAVOLT::begin2D();
    EXPECT_EQ(selectCentre(), 0u);
    RAVOLT::end2D();
    RAVOLT::begin2D();
    auto *flat = new Square;
    flat->pass();
    RVOPENGL::resize(0, 0, width, height); // the square is drawn in perspective
    EXPECT_EQ(selectCentre(), flat->getId());
    RAVOLT::end2D();
}

// The array of colours stays on after the 2D block.
TEST_F(Selection, AMeshIsFoundAfterA2DBlockWithColours) {
    const unsigned char colors[4][4] = {{9, 9, 9, 9}, {9, 9, 9, 9}, {9, 9, 9, 9}, {9, 9, 9, 9}};
    RVMESH *mesh = newMesh();
    RAVOLT::begin2D();
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colors);
    mesh->pass();
    RAVOLT::end2D();
    EXPECT_EQ(selectCentre(), mesh->getId());
    EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, nullptr);
}

TEST_F(Selection, UnderWireframeOnlyLinesAreFound) {
    auto *node = new Square;
    RAVOLT::wireframeOn();
    EXPECT_EQ(selectedIn(node), 0u);
    unsigned int found = 0;
    for (int x = 0; x < centreX && !found; ++x)
        found = RAVOLT::select(x, centreY);
    EXPECT_EQ(found, node->getId());
    RAVOLT::wireframeOff();
    drawFrame2D(nullptr);
}

// --- the state after it

// The pixel is restored by a point at the corner of four, which OpenGL draws into the one above it
// and to its right. Mesa's softpipe draws it one row lower where the window is upside down in
// memory.
bool drawsPointsAtCornersUpwards() {
    RVFBO::unbind();
    RAVOLT::begin2D();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glColor4f(1, 1, 1, 1);
    glBegin(GL_POINTS);
    glVertex2i(8, 8);
    glEnd();
    RAVOLT::end2D();
    return readFrame().at(8, 7).red == 255;
}

TEST_F(Selection, ThePictureIsAsBefore) {
    if (!drawsPointsAtCornersUpwards())
        GTEST_SKIP() << "the driver draws points at the corner of four pixels into another one";
    drawFrame(camera, new Square);
    const Picture before = readFrame();
    EXPECT_EQ(bytesAt(centreX, centreY)[0], 255);
    selectCentre();
    RAVOLT::select(2, 90);
    EXPECT_EQ(readFrame().bytes, before.bytes);
}

TEST_F(Selection, TheDepthOfThePixelStaysOverwritten) {
    const auto depthAt = [](int x, int y) {
        float depth = -1;
        glReadPixels(x, height - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        return depth;
    };
    auto *helper = new RVHELPER; // is seen, and not selected
    helper->setPosition(0, 0, -5);
    drawFrame(camera, helper);
    ASSERT_LT(depthAt(centreX, centreY), 1);
    EXPECT_EQ(selectCentre(), 0u);
    EXPECT_EQ(depthAt(centreX, centreY), 1);
    EXPECT_LT(depthAt(centreX + 1, centreY), 1);
}

TEST_F(Selection, MatricesViewportAndBackgroundAreAsBefore) {
    drawFrame(camera, new Square);
    RVOPENGL::setBackgroundColor(0.1f, 0.2f, 0.3f, 0.4f);
    glViewport(3, 4, 50, 60);
    glTranslatef(1, 2, 3);
    const auto state = [] {
        std::array<float, 4> color{};
        glGetFloatv(GL_COLOR_CLEAR_VALUE, color.data());
        return std::tuple{matrixOf(GL_MODELVIEW_MATRIX), matrixOf(GL_PROJECTION_MATRIX),
                          viewportNow(), color};
    };
    const auto before = state();
    selectCentre();
    EXPECT_EQ(state(), before);
    EXPECT_EQ(viewportNow(), (std::array{3, 4, 50, 60}));
    EXPECT_TRUE(RVOPENGL::getBackgroundColor() == Z3MVECTOR4D(0.1f, 0.2f, 0.3f, 0.4f));
    RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
    RVOPENGL::resize(0, 0, width, height);
}

TEST_F(Selection, TheFramesStateIsSetAtTheEndAndTheScissorTestWithoutItsSwitch) {
    auto *node = new Square;
    drawFrame(camera, node);
    node->profiles.clear();
    RVLIGHT::lightingOn();
    RVOPENGL::blendingOn();
    RVOPENGL::scissorOn();
    selectCentre();
    EXPECT_EQ(node->profiles, std::vector{RV_OPENGL_PROFILE_FLAT});
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
    EXPECT_FALSE(RVLIGHT::getLighting());
    EXPECT_FALSE(RVOPENGL::isBlended());
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(integerOf(GL_DEPTH_FUNC), GL_LESS);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    EXPECT_FALSE(glIsEnabled(GL_SCISSOR_TEST));
    EXPECT_TRUE(callsOf(RVOPENGL::scissorOn).empty()) << "still counts as on";
    RVOPENGL::scissorOff();
}

TEST_F(Selection, TheCallsComeInTheStatedOrder) {
    drawFrame(camera, new Square);
    RVLIGHT::lightingOn();
    RVOPENGL::blendingOn();
    const Calls calls = callsOf([] { RAVOLT::select(40, 30); });
    const int row = height - 30;
    EXPECT_TRUE(calls.haveInOrder({{"glGetIntegerv", GL_VIEWPORT},
                                   {"glReadPixels", 40, row, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE},
                                   {"glMatrixMode", GL_PROJECTION},
                                   {"glPushMatrix"},
                                   {"glMatrixMode", GL_MODELVIEW},
                                   {"glPushMatrix"},
                                   {"glClearColor", 0, 0, 0, 0},
                                   {"glScissor", 40, row, 1, 1},
                                   {"glEnable", GL_SCISSOR_TEST},
                                   {"glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT},
                                   {"glDepthFunc", GL_LEQUAL},
                                   {"glBegin", GL_QUADS},
                                   {"glEnd"},
                                   {"glClearColor", 0.2, 0.2, 0.6, 1},
                                   {"glReadPixels", 40, row, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE},
                                   {"glDisable", GL_DEPTH_TEST},
                                   {"glMatrixMode", GL_PROJECTION},
                                   {"glLoadIdentity"},
                                   {"glViewport", 0, 0, width, height},
                                   {"glOrtho", 0, width, height, 0, -1, 1},
                                   {"glMatrixMode", GL_MODELVIEW},
                                   {"glLoadIdentity"},
                                   {"glDisable", GL_LIGHTING},
                                   {"glDisable", GL_BLEND},
                                   {"glBegin", GL_POINTS},
                                   {"glColor4ubv", 51, 51, 153, 255},
                                   {"glVertex2i", 40, 30},
                                   {"glEnd"},
                                   {"glMatrixMode", GL_PROJECTION},
                                   {"glPopMatrix"},
                                   {"glViewport", 0, 0, width, height},
                                   {"glMatrixMode", GL_MODELVIEW},
                                   {"glPopMatrix"},
                                   {"glDisable", GL_SCISSOR_TEST},
                                   {"glEnable", GL_DEPTH_TEST},
                                   {"glDepthFunc", GL_LESS}}));
    for (const char *name : {"glPushMatrix", "glPopMatrix", "glReadPixels"})
        EXPECT_EQ(calls.count(name), 2u) << name;
}

TEST_F(LandscapeSelection, CoordinatesAreTurnedBeforeTheyAreUsed) {
    drawFrame(camera, new Square);
    const int x = height - 30, y = 70;
    const Call reading{"glReadPixels", x, height - y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE};
    EXPECT_EQ(
        callsOf([] { RAVOLT::select(70, 30); }).named({"glReadPixels", "glScissor", "glVertex2i"}),
        (Calls{reading, {"glScissor", x, height - y, 1, 1}, reading, {"glVertex2i", x, y}}));
}

// --- decoding

struct Decoding {
    const char *name;
    int red, green, blue, alpha;      // sizes of the display's channels
    std::vector<unsigned char> bytes; // of the pixel
    unsigned int id;
};

const Decoding decodings[] = {
    {"32 bits are taken as read", 8, 8, 8, 8, {0xf4, 0xa3, 0xc2, 0x81}, 0x81c2a3f4},
    {"24 bits lose the top byte", 8, 8, 8, 0, {0xf4, 0xa3, 0xc2, 0xff}, 0x00c2a3f4},
    {"16 bits, red", 5, 6, 5, 0, {0xff, 0, 0, 0xff}, 0xf800},
    {"16 bits, green", 5, 6, 5, 0, {0, 0xff, 0, 0xff}, 0x07e0},
    {"16 bits, blue", 5, 6, 5, 0, {0, 0, 0xff, 0xff}, 0x001f},
    {"16 bits, the lowest that count", 5, 6, 5, 0, {0x08, 0x04, 0x08, 0xff}, 0x0821},
    {"16 bits, what does not count", 5, 6, 5, 0, {0x07, 0x03, 0x07, 0xff}, 0x0000},
    {"15 bits are not decoded", 5, 5, 5, 0, {0xf4, 0xa3, 0xc2, 0xff}, 0xffc2a3f4},
    {"30 bits are not decoded", 10, 10, 10, 0, {0xf4, 0xa3, 0xc2, 0xff}, 0xffc2a3f4},
};

class Decoded : public Selection, public testing::WithParamInterface<Decoding> {
  protected:
    void SetUp() override {
        const Decoding &wanted = GetParam();
        recorder.channelSizes(wanted.red, wanted.green, wanted.blue, wanted.alpha);
        Selection::SetUp();
    }
};

TEST_P(Decoded, FromTheSecondReading) {
    drawFrame(camera, nullptr);
    recorder.fakeReadPixels({9, 8, 7, 6});
    recorder.fakeReadPixels(GetParam().bytes);
    recorder.start();
    EXPECT_EQ(selectCentre(), GetParam().id);
    EXPECT_EQ(recorder.stop().named("glColor4ubv"), (Calls{{"glColor4ubv", 9, 8, 7, 6}}));
}

INSTANTIATE_TEST_SUITE_P(Depths, Decoded, testing::ValuesIn(decodings), [](const auto &test) {
    std::string name;
    for (const char *letter = test.param.name; *letter; ++letter)
        if (std::isalnum(static_cast<unsigned char>(*letter)))
            name += *letter;
    return name;
});

// At 16 bits a mesh writes the low 16 bits of its object id in fields of 5, 6 and 5, and those are
// read again from such a display.
class Selection16 : public Selection {
  protected:
    void SetUp() override {
        recorder.channelSizes(5, 6, 5, 0);
        Selection::SetUp();
    }
};

TEST_F(Selection16, AMeshIsFoundByItsLow16Bits) {
    RVMESH *mesh = newMesh();
    for (unsigned int id : {0x00000001u, 0x0000f81fu, 0x00001234u, 0xabcd8421u}) {
        mesh->setAuxId(id);
        EXPECT_EQ(selectedIn(mesh), id & 0xffff);
    }
}

// --- through render target 0

// The target is 64 by 48; select counts its rows as those of the window.
constexpr int targetX = 32, targetY = 96 - 24;

class TargetSelection : public Selection {
  protected:
    TargetSelection() { settings.setForceFBO(true); }

    void SetUp() override {
        Selection::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }
};

// Draws through target 0, and then binds the window as the copy at a frame's end does.
TEST_F(TargetSelection, WorksOnTargetZeroAndDoesNotUnbindIt) {
    auto *node = new Square;
    drawFrame(camera, node);
    RVFBO::unbind();
    const Calls calls =
        callsOf([&] { EXPECT_EQ(RAVOLT::select(targetX, targetY), node->getId()); });
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    EXPECT_EQ(calls.named({"glBindFramebufferEXT", "glReadPixels", "glClear"}).names(),
              (std::vector<std::string>{"glReadPixels", "glBindFramebufferEXT", "glClear",
                                        "glReadPixels"}))
        << "the first pixel comes from what was bound before";
    EXPECT_EQ(node->profiles.back(), RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(RAVOLT::select(1, 95), 0u) << "the background";
    RVFBO::unbind();
}

class BloomingSelection : public Selection {
  protected:
    BloomingSelection() { settings.setShaders(true); }

    void SetUp() override {
        Selection::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }
};

// The frame ends in the window; a selection binds its target again.
TEST_F(BloomingSelection, A2DBlockAfterItIsDrawnIntoTargetZeroUnlessThatIsUnbound) {
    const auto blueBlock = [](int x1, int y1, int x2, int y2) {
        RAVOLT::begin2D();
        glColor4f(0, 0, 1, 1);
        glRecti(x1, y1, x2, y2);
        RAVOLT::end2D();
    };
    const Pixel blue{0, 0, 255, 255};
    RAVOLT::bloomingOn();
    drawFrame(camera, new Square);
    ASSERT_EQ(RVFBO::getCurrent(), nullptr);
    const Picture before = readFrame();
    RAVOLT::select(targetX, targetY);
    EXPECT_EQ(RVFBO::getCurrent(), RVOPENGL::getFbo(0));
    blueBlock(0, 96, 64, 48); // the viewport is still the window's
    EXPECT_EQ(bytesAt(targetX, targetY), (std::array<unsigned char, 4>{0, 0, 255, 255}));
    RVFBO::unbind();
    EXPECT_EQ(readFrame().bytes, before.bytes);

    RAVOLT::select(targetX, targetY);
    RVFBO::unbind();
    blueBlock(100, 90, 128, 80); // pixels of the window
    RAVOLT::bloomingOff();
    EXPECT_PIXEL(pixelAt(127, 81), blue, 0);
    EXPECT_PIXEL(pixelAt(101, 89), blue, 0);
    EXPECT_FALSE(pixelAt(98, 85) == blue);
}

// Samples of an edge have the id of either side, and their mean would be that of a third node.
TEST_F(MultisampledSelection, EdgesHaveTheIdsOfTheirSidesAlone) {
    SKIP_WITHOUT_SAMPLES(4);
    ASSERT_EQ(RVSETTINGS::getSDLMultisampling(), 4);
    auto *scene = new RVNODE;
    auto *square = new Square;
    square->link(scene);
    square->setRotation(0, 0, 20);
    for (int i = 0; i < 9; ++i) // so that the id is not 1
        (new RVNODE)->link(scene);
    const unsigned int id = square->getId();
    unsigned int seen = 0, unseen = 0;
    for (int x = 0; x < width; ++x) {
        drawFrame(camera, scene);
        const unsigned int selected = RAVOLT::select(x, 40);
        EXPECT_TRUE(selected == id || selected == 0) << selected << " at " << x;
        ++(selected ? seen : unseen);
    }
    EXPECT_GT(seen, 10u);
    EXPECT_GT(unseen, 10u);
    EXPECT_TRUE(glIsEnabled(GL_MULTISAMPLE));
}

} // namespace
} // namespace ravolt::test
