// The pictures of a sky, and its buffers as OpenGL reports them.

#include "ravolt/RVSKYDOME.h"

#include "effects/domeGeometry.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/effects/sceneryPictures.h"
#include "tests/support/glObjects.h"
#include "tests/support/realDriver.h"

#include <vector>

using namespace ravolt::test;

namespace {

class SkydomeDrawingTest : public EngineTest {
  protected:
    SkydomeDrawingTest() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        writeBoard("sky.tga", 32, 16);
        makeScene();
    }

    void TearDown() override {
        RVOPENGL::setFarPlane(1024);
        EngineTest::TearDown();
    }

    void makeScene() {
        camera = new RVCAMERA;
        camera->setRotation(15, 0, 0); // the rim and some rows above it
        root = new RVNODE;
        sky = new RVSKYDOME;
        ASSERT_TRUE(sky->loadTexture("sky.tga"));
        sky->link(root);
    }

    Picture draw() {
        drawFrame(camera, root);
        return readFrame();
    }

    // The sky alone, as the terrain draws it for the reflection.
    Picture drawMirrored() {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        glCullFace(GL_FRONT);
        glPushMatrix();
        glScalef(1, -1, 1);
        sky->render(nullptr);
        glPopMatrix();
        glCullFace(GL_BACK);
        RAVOLT::end3D(true);
        return readFrame();
    }

    RVCAMERA *camera = nullptr;
    RVNODE *root = nullptr;
    RVSKYDOME *sky = nullptr;
};

TEST_F(SkydomeDrawingTest, LooksUpAtTheSky) {
    ASSERT_TRUE(RVSHADER::useSkydome());
    EXPECT_PICTURE(draw(), "skydome_program", edges);
    expectSameFrames([this] { return draw(); });
}

// On purpose: of the colour of the light model alone, not of the lights.
TEST_F(SkydomeDrawingTest, ProgramBrightensTheSkyByAFifthOfTheAmbientLight) {
    const Picture dim = draw();
    const float ambient[] = {1, 0.5f, 0, 1}, standard[] = {0.2f, 0.2f, 0.2f, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    const Picture bright = draw();
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, standard);
    const Pixel before = dim.at(width / 2, height / 2), after = bright.at(width / 2, height / 2);
    EXPECT_NEAR(after.red - before.red, (1 - 0.2) * 0.2 * 255, 2);
    EXPECT_NEAR(after.green - before.green, (0.5 - 0.2) * 0.2 * 255, 2);
    EXPECT_NEAR(after.blue - before.blue, -0.2 * 0.2 * 255, 2);
}

TEST_F(SkydomeDrawingTest, WithoutAProgramEarlierColoursDoNotTintTheSky) {
    settings.setShaders(false);
    ASSERT_TRUE(restart());
    makeScene();
    RVMATERIAL::getFirst()->setShader(nullptr); // the features outlive a restart
    const Picture plain = draw();
    EXPECT_PICTURE(plain, "skydome_fixed", edges);
    RVLIGHT *light = new RVLIGHT; // draws its own shape in its colour
    light->setDiffuse(1, 0, 0, 1);
    light->link(root);
    glColor4f(0, 1, 0, 1);
    EXPECT_EQ(differenceOf(draw(), plain).maximum, 0);
}

TEST_F(SkydomeDrawingTest, CoversAllAboveItsRimWithoutAGap) {
    constexpr Pixel gap{255, 0, 255, 255}; // a colour that the sky has nowhere
    glClearColor(1, 0, 1, 1);
    for (float turn = 0; turn < 360; turn += 40)
        for (const float up : {15.0f, 50.0f, 90.0f}) {
            camera->setRotation(up, turn, 0);
            EXPECT_EQ(draw().pixelsUnlike(gap), std::size_t(width * height))
                << turn << " around, " << up << " up";
        }
    camera->setRotation(-60, 0, 0);
    EXPECT_EQ(draw().pixelsUnlike(gap), 0u);
}

TEST_F(SkydomeDrawingTest, MovesWithTheCamera) {
    const Picture before = draw();
    camera->setPosition(300, -20, 4000);
    EXPECT_LE(differenceOf(draw(), before).mean, 0.05);
}

TEST_F(SkydomeDrawingTest, RotatesByItsOwnRotationAndThatOfItsEntry) {
    camera->setRotation(15, 60, 0);
    const Picture wanted = draw();
    camera->setRotation(15, 0, 0);
    sky->setRotation(0, -30, 0); // on purpose: counts twice
    EXPECT_LE(differenceOf(draw(), wanted).mean, 0.3);
    sky->setRotation(0, 0, 0);
    EXPECT_GT(differenceOf(draw(), wanted).mean, 5);
}

TEST_F(SkydomeDrawingTest, DrawnWithNullItKeepsAMirroredMatrix) {
    camera->setRotation(-15, 0, 0);
    const Picture mirrored = drawMirrored();
    camera->setRotation(15, 0, 0);
    Picture upright = draw(), flipped = upright;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            flipped.set(x, height - 1 - y, upright.at(x, y));
    EXPECT_LE(differenceOf(mirrored, flipped).mean, 1.0);
    EXPECT_GT(differenceOf(mirrored, upright).mean, 10.0);
}

TEST_F(SkydomeDrawingTest, UserClipPlanesCutTheSky) {
    const Picture cut = drawCut([this] { return draw(); });
    EXPECT_EQ(cut.at(width / 2 + 8, height / 2), background);
    EXPECT_NE(cut.at(width / 2 - 8, height / 2), background);
    EXPECT_EQ(cut.at(width / 2 - 8, height / 2), draw().at(width / 2 - 8, height / 2));
}

TEST_F(SkydomeDrawingTest, DepthOfTheSkyIsNearlyThatOfTheFarPlane) {
    drawFrame(camera, root);
    float depth = 0;
    glReadPixels(width / 2, height / 2, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    EXPECT_GT(depth, 0.99f);
    EXPECT_LT(depth, 1.0f);
}

// The values in a buffer of the driver.
template <class T>
std::vector<T> bufferValues(GLenum target, const Call &made, std::size_t number) {
    const auto readBuffer = entryPoint<PFNGLGETBUFFERSUBDATAARBPROC>("glGetBufferSubDataARB");
    const auto sizeOf = entryPoint<PFNGLGETBUFFERPARAMETERIVARBPROC>("glGetBufferParameterivARB");
    std::vector<T> values(number);
    const auto bytes = static_cast<GLsizeiptrARB>(number * sizeof(T));
    RVOPENGL::glBindBufferARB(target, static_cast<GLuint>(made.arguments.back()));
    GLint size = 0;
    sizeOf(target, GL_BUFFER_SIZE_ARB, &size);
    EXPECT_EQ(size, bytes);
    readBuffer(target, 0, bytes, values.data());
    RVOPENGL::glBindBufferARB(target, 0);
    return values;
}

TEST_F(SkydomeDrawingTest, BuffersHaveADomeOfNineTenthsOfTheFarPlane) {
    for (const float farPlane : {1024.0f, 100.0f}) {
        RVOPENGL::setFarPlane(farPlane);
        const Calls made = callsOf([] { new RVSKYDOME; }).named("glGenBuffersARB");
        const auto vertices = bufferValues<RVSKYDOME_VERTEX>(GL_ARRAY_BUFFER_ARB, made[0], 175);
        const ravolt::DomeGeometry dome = ravolt::makeDome(farPlane * 0.9f, 15, 15);
        EXPECT_EQ(bufferValues<unsigned short>(GL_ELEMENT_ARRAY_BUFFER_ARB, made[1], 300),
                  dome.indices);
        for (std::size_t i = 0; i < dome.vertices.size(); ++i) {
            const Z3MVECTOR3D gap = vertices[i].position - dome.vertices[i].position;
            EXPECT_LT(gap.length(), farPlane * 1e-5f) << i;
            EXPECT_TRUE(vertices[i].texCoord == dome.vertices[i].texCoord) << i;
        }
        EXPECT_NEAR(vertices[0].position.y, farPlane * 0.6f, farPlane * 1e-5f);
    }
}

} // namespace
