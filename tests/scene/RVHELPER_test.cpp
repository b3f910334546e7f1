// Helpers: the box that they draw, and the state before and after.

#include "ravolt/RVHELPER.h"

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <cmath>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

class HelperTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        helper = new RVHELPER;
        element.getMatrix()->setTranslation(0, 0, -6);
    }

    Calls recordRender() {
        return callsOf([&] { EXPECT_TRUE(helper->render(&element)); });
    }

    RVHELPER *helper = nullptr;
    RVELEMENT element;
};

TEST_F(HelperTest, FieldsHaveDefaultsAndAreWhatWasSet) {
    EXPECT_EQ(helper->getType(), RV_NODE_TYPE_HELPER);
    EXPECT_EQ(helper->getName(), "[helper " + std::to_string(helper->getId()) + "]");
    EXPECT_EQ(helper->getRadius(), 1);
    EXPECT_EQ(helper->getThickness(), 1);
    EXPECT_EQ(helper->getColor(), Z3MVECTOR4D(1.0, 0.8, 0.2, 0.5));
    helper->setRadius(7);
    helper->setThickness(3);
    helper->setColor(Z3MVECTOR4D(1, 2, 3, 4));
    EXPECT_EQ(helper->getRadius(), 7);
    EXPECT_EQ(helper->getThickness(), 3);
    EXPECT_EQ(helper->getColor(), Z3MVECTOR4D(1, 2, 3, 4));
    helper->setColor(4, 3, 2, 1);
    EXPECT_EQ(helper->getColor(), Z3MVECTOR4D(4, 3, 2, 1));
}

TEST_F(HelperTest, SetsItsMaterialMatrixAndColorInOrder) {
    helper->setThickness(2);
    helper->setColor(0.5, 0.25, 0.125, 0.75);
    RVLIGHT::lightingOn();
    const Calls calls = recordRender();
    EXPECT_TRUE(calls.haveInOrder(
        {{"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -6, 1},
         {"glMaterialfv", GL_FRONT_AND_BACK, GL_EMISSION, 0.25, 0.125, 0.0625, 0.75},
         {"glMaterialfv", GL_FRONT_AND_BACK, GL_AMBIENT, 0, 0, 0, 0},
         {"glMaterialfv", GL_FRONT_AND_BACK, GL_DIFFUSE, 0.5, 0.25, 0.125, 0.75},
         {"glMaterialfv", GL_FRONT_AND_BACK, GL_SPECULAR, 0, 0, 0, 0},
         {"glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 30},
         {"glScalef", 1.01f, 1.01f, 1.01f},
         {"glLineWidth", 2},
         {"glDisable", GL_LIGHTING},
         {"glColor4fv", 0.5, 0.25, 0.125, 0.75},
         {"glBegin", GL_LINE_STRIP},
         {"glEnable", GL_LIGHTING},
         {"glEnable", GL_BLEND},
         {"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA},
         {"glDisable", GL_BLEND}}));
    EXPECT_EQ(calls.count("glScalef"), 1u);
}

TEST_F(HelperTest, DrawsTheEdgesAndFourSpaceDiagonals) {
    helper->setMin(Z3MVECTOR3D(-1, -2, -3));
    helper->setMax(Z3MVECTOR3D(4, 5, 6));
    // The corners, each coordinate the lower or the upper one.
    const auto shape = [](GLenum mode, std::initializer_list<const char *> corners) {
        std::vector<Call> calls = {Call("glBegin", mode)};
        for (const char *c : corners)
            calls.push_back(Call("glVertex3f", c[0] == 'X' ? 4 : -1, c[1] == 'Y' ? 5 : -2,
                                 c[2] == 'Z' ? 6 : -3));
        calls.push_back(Call("glEnd"));
        return Calls(calls).text();
    };
    EXPECT_EQ(recordRender().named({"glBegin", "glVertex3f", "glEnd"}).text(),
              shape(GL_LINE_STRIP, {"XyZ", "xYz", "XYz", "XYZ", "xYZ", "xYz"}) +
                  shape(GL_LINE_STRIP, {"XYZ", "xyz", "Xyz", "XyZ", "xyZ", "xyz"}) +
                  shape(GL_LINES, {"Xyz", "xYZ", "xyZ", "XYz", "xyz", "xYz", "Xyz", "XYz", "xyZ",
                                   "xYZ", "XyZ", "XYZ"}));
}

// Six faces of two triangles in their order, each with its normal and counter-clockwise seen from
// outside, so that each of the six covers its side of the box.
TEST_F(HelperTest, SolidHasSixFacesThatLookOutward) {
    helper->setMin(Z3MVECTOR3D(-1, -2, -3));
    helper->setMax(Z3MVECTOR3D(4, 5, 6));
    helper->render(&element);
    void *vertices = nullptr, *normals = nullptr;
    glGetPointerv(GL_VERTEX_ARRAY_POINTER, &vertices);
    glGetPointerv(GL_NORMAL_ARRAY_POINTER, &normals);
    const auto vertex = [vertices](int index) {
        return Z3MVECTOR3D(static_cast<const float *>(vertices) + 3 * index);
    };
    const Z3MVECTOR3D outward[6] = {{0, 0, -1}, {0, 0, 1}, {-1, 0, 0},
                                    {1, 0, 0},  {0, 1, 0}, {0, -1, 0}};
    const float plane[6] = {3, 6, 1, 4, 5, 2};
    const float area[6] = {35, 35, 63, 63, 45, 45};
    for (int index = 0; index < 36; ++index) {
        const Z3MVECTOR3D &normal = outward[index / 6];
        EXPECT_TRUE(Z3MVECTOR3D(static_cast<const float *>(normals) + 3 * index) == normal);
        EXPECT_EQ(vertex(index) % normal, plane[index / 6]) << index;
    }
    for (int triangle = 0; triangle < 12; ++triangle) {
        const Z3MVECTOR3D a = vertex(3 * triangle), b = vertex(3 * triangle + 1),
                          c = vertex(3 * triangle + 2);
        const Z3MVECTOR3D turn = (b - a) ^ (c - a);
        EXPECT_TRUE(turn == outward[triangle / 2] * area[triangle / 2]) << triangle;
    }
    for (int face = 0; face < 6; ++face) { // the two halves are not the same triangle
        const Z3MVECTOR3D first = vertex(6 * face) + vertex(6 * face + 1) + vertex(6 * face + 2);
        const Z3MVECTOR3D second =
            vertex(6 * face + 3) + vertex(6 * face + 4) + vertex(6 * face + 5);
        EXPECT_FALSE(first == second) << face;
    }
}

TEST_F(HelperTest, DrawsTheFarSideOfTheSolidFirst) {
    RVOPENGL::cullingOff();
    const Calls calls = recordRender().where([](const Call &call) {
        return call == Call("glEnable", GL_CULL_FACE) || call == Call("glDisable", GL_CULL_FACE) ||
               call.name == "glCullFace" || call.name == "glDrawArrays";
    });
    EXPECT_EQ(calls.text(), "glEnable(GL_CULL_FACE)\n"
                            "glCullFace(GL_FRONT)\nglDrawArrays(GL_TRIANGLES, 0, 36)\n"
                            "glCullFace(GL_BACK)\nglDrawArrays(GL_TRIANGLES, 0, 36)\n"
                            "glDisable(GL_CULL_FACE)\n");
}

TEST_F(HelperTest, RestoresCulling) {
    for (const bool culled : {true, false}) {
        culled ? RVOPENGL::cullingOn() : RVOPENGL::cullingOff();
        helper->render(&element);
        EXPECT_EQ(RVOPENGL::isCulled(), culled);
        EXPECT_EQ(glIsEnabled(GL_CULL_FACE) != 0, culled);
    }
}

TEST_F(HelperTest, SwitchesBlendingOffAndLightingOn) {
    RVOPENGL::blendingOn();
    RVLIGHT::lightingOff();
    helper->render(&element);
    EXPECT_FALSE(RVOPENGL::isBlended());
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(RVLIGHT::getLighting());
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    EXPECT_TRUE(glIsEnabled(GL_VERTEX_ARRAY));
    EXPECT_TRUE(glIsEnabled(GL_NORMAL_ARRAY));
    EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_COORD_ARRAY));
}

TEST_F(HelperTest, OpensWithTextureMatrixAndArrays) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    ASSERT_TRUE(RVOPENGL::useVBO());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVTEXTURE::texturingOn(0);
    RVOPENGL::vertexArrayOff();
    RVOPENGL::normalArrayOff();
    RVOPENGL::textureArrayOn();
    RVOPENGL::colorArrayOn();
    const Calls calls = recordRender().without({"glActiveTextureARB", "glClientActiveTextureARB"});
    ASSERT_GE(calls.size(), 9u);
    EXPECT_EQ(Calls(std::vector<Call>(calls.begin(), calls.begin() + 8)),
              (Calls{{"glDisable", GL_TEXTURE_2D},
                     {"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -6, 1},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                     {"glEnableClientState", GL_VERTEX_ARRAY},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                     {"glEnableClientState", GL_NORMAL_ARRAY},
                     {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glDisableClientState", GL_COLOR_ARRAY}}));
    EXPECT_EQ(calls[8].name, "glMaterialfv");
}

TEST_F(HelperTest, UnbindsBuffersWhereTheyAreSupported) {
    const std::size_t expected = RVOPENGL::useVBO() ? 2 : 0;
    EXPECT_EQ(recordRender().count(Call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0)), expected);
    const Calls before = recordRender();
    helper->setRadius(100);
    EXPECT_EQ(recordRender(), before) << "the radius does not change the drawing";
}

TEST_F(HelperTest, InvalidatesTheMaterialThatItHasOverwritten) {
    RVMATERIAL *material = new RVMATERIAL;
    material->render(nullptr);
    helper->render(&element);
    EXPECT_TRUE(callsOf([&] { material->render(nullptr); }).contains("glMaterialfv"));
}

TEST_F(HelperTest, BoxOfOnePointIsDrawn) {
    helper->setMin(Z3MVECTOR3D(1, 1, 1));
    helper->setMax(Z3MVECTOR3D(1, 1, 1));
    helper->setPosition(0, 0, -5);
    drawFrame(nullptr, helper);
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    EXPECT_NOTHING_LOGGED();
}

// Both sides of a box that is half as opaque show: the near face over the far one.
TEST_F(HelperTest, SolidIsSeenThrough) {
    RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    helper->setColor(0, 1, 0, 0.5);
    helper->setMin(Z3MVECTOR3D(-2, -3, -1));
    helper->setMax(Z3MVECTOR3D(2, 3, 1));
    helper->setPosition(0, 0, -8);
    drawFrame(nullptr, helper);
    // Emission alone, 0.5 in green, blended by half twice: 0.25, then 0.375. Off the diagonals.
    EXPECT_PIXEL(pixelAt(width / 2 + 6, height / 2 + 1), (Pixel{0, 96, 0}), 2);
    EXPECT_PIXEL(pixelAt(2, 2), (Pixel{0, 0, 0}), 0);
}

TEST_F(HelperTest, DrawsNothingForNull) {
    EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(helper->render(nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVHELPER::render\n");
}

} // namespace
