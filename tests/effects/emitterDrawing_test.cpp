// The pictures of emitters on both paths, and of the meshes that are drawn after them.

#include "tests/effects/stillParticles.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tools/writers/tgaWriter.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/realDriver.h"

#include <string>
#include <tuple>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Pixel black{0, 0, 0, 255};
constexpr Tolerance edges{
    .maximum = 255, .mean = 0.3, .reason = "samples at edges differ between the two settings"};

class EmitterDrawing : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        recorder.stopClock();
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
        emitter = new RVEMITTER;
        emitter->setPosition(0, 0, -12);
        emitter->setColorStart(Z3MVECTOR3D(1, 1, 1));
        emitter->setColorEnd(Z3MVECTOR3D(1, 1, 1));
        emitter->setMaximumEnergy(1); // born again, they are not seen
    }
    void TearDown() override {
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        RAVOLT::swap();
        EngineTest::TearDown();
    }

    void place(const std::vector<Still> &particles, bool hardware = false) {
        ravolt::test::place(*emitter, particles, hardware);
    }

    // Each orientation looks different.
    static RVTEXTURE *makeArrow() {
        constexpr unsigned int side = 8;
        std::vector<unsigned char> pixels;
        for (unsigned int y = 0; y < side; ++y)
            for (unsigned int x = 0; x < side; ++x)
                for (const bool on : {true, x < side / 2, y < side / 2})
                    pixels.push_back(on ? 255 : 40);
        return squareTexture("arrow_d.tga", side, pixels);
    }

    RVEMITTER *emitter = nullptr;
};

class EmitterDrawingWithProgram : public EmitterDrawing {
  protected:
    EmitterDrawingWithProgram() { settings.setShaders(true); }

    void SetUp() override {
        EmitterDrawing::SetUp();
        SKIP_WITHOUT_EXTENSIONS(programExtensions);
    }
};

TEST_F(EmitterDrawing, ParticlesAreTexturedBlendedQuads) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    emitter->setTexture(makeArrow());
    emitter->setRotation(20, 30, 0);
    place({{{-3, 0, 0}, 1, 0.9f, 0}, {{0, 1, 0}, 1.5f, 0.7f, 30}, {{3, -1, 0}, 1, 0.4f, 0}});
    drawFrame(nullptr, emitter);
    EXPECT_PICTURE(readFrame(), "emitter_particles", edges);
}

TEST_F(EmitterDrawing, AlphaIsTheEnergyAndTheBlendingIsTheEmitters) {
    const struct {
        const char *what;
        float energy, red; // of the background
        Pixel expected;
    } cases[] = {{"half of white", 0.5f, 0, {127, 127, 127}},
                 {"too faint to be drawn", 0.19f, 0, black},
                 {"blending of its own", 0.75f, 1, {64, 0, 0}}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        if (c.red)
            emitter->setBlendingSrc(GL_ZERO);
        RVOPENGL::setBackgroundColor(c.red, 0, 0, 1);
        place({{{0, 0, 0}, 1, c.energy, 0}});
        drawFrame(nullptr, emitter);
        EXPECT_PIXEL(pixelAt(width / 2, height / 2), c.expected, 2);
        EXPECT_PIXEL(pixelAt(2, 2), (Pixel{static_cast<unsigned char>(c.red * 255), 0, 0}), 0);
    }
}

TEST_F(EmitterDrawing, ParticlesWriteNoDepth) {
    place({{{0, 0, 0}, 2, 0.9f, 0}});
    drawFrame(nullptr, emitter);
    float depth = 0;
    glReadPixels(width / 2, height / 2, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    EXPECT_EQ(depth, 1.0f);
    EXPECT_EQ(integerOf(GL_DEPTH_WRITEMASK), GL_TRUE);
}

TEST_F(EmitterDrawing, CullingIsOffWhereItsSwitchIsOn) {
    place({{{0, 0, 0}, 1, 0.9f, 0}});
    RVOPENGL::cullingOn();
    drawFrame(nullptr, emitter);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(RVOPENGL::isCulled());
    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    for (const GLenum array :
         {GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_NORMAL_ARRAY, GL_TEXTURE_COORD_ARRAY})
        EXPECT_FALSE(glIsEnabled(array));
    drawFrame2D(nullptr);
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE)) << "after a 2D block";
}

TEST_F(EmitterDrawingWithProgram, ProgramAndProcessorDrawTheSame) {
    ASSERT_TRUE(RVSHADER::useEmitter());
    emitter->setTexture(makeArrow());
    emitter->setRotation(20, 30, 0);
    const std::vector<Still> particles = {
        {{-3, 0, 0}, 1, 0.9f, 0}, {{0, 1, 0}, 1.5f, 0.7f, 0}, {{3, -1, 0}, 1, 0.5f, 0}};
    place(particles, true);
    EXPECT_TRUE(callsOf([&] { drawFrame(nullptr, emitter); }).contains("glNormalPointer"));
    const Picture byProgram = readFrame();
    EXPECT_GT(byProgram.pixelsUnlike(black), 100u);

    RVSHADER::emitter->forceDeactivation();
    // The program moves in the screen's frame, the processor in the emitter's: without a rotation
    // they are the same.
    emitter->setRotation(0, 0, 0);
    place(particles);
    drawFrame(nullptr, emitter);
    EXPECT_LT(differenceOf(byProgram, readFrame()).mean, 0.3);
}

// Meshes that are drawn after an emitter, in the same list and in the next frame.
class MeshAfterEmitter : public EmitterDrawing,
                         public testing::WithParamInterface<std::tuple<bool, bool>> {
  protected:
    MeshAfterEmitter() { settings.setShaders(program); }

    // The cubes in a frame after a frame with the emitter, or without.
    Picture picture(bool withEmitter, bool lit) {
        writeCheck();
        RveMaterial textured = coloured("board", {1, 1, 1, 1});
        textured.texture = "check_d.tga";
        RVNODE *root =
            loadScene({{textured, coloured("plain", {0.9f, 0.6f, 0.1f, 1})},
                       rootOver({placed(cubeMesh("left", "board"), {-2, 0, -9}, {20, 30, 0}),
                                 placed(cubeMesh("right", "plain"), {2, 0, -9}, {20, 30, 0})})});
        if (lit) {
            auto *light = new RVLIGHT;
            light->setPosition(2, 5, 30); // its marker is behind the camera
            light->link(root);
        }
        if (withEmitter) {
            emitter->setTexture(makeArrow());
            emitter->link(root);
        }
        for (int frame = 0; frame < 3; ++frame) {
            if (withEmitter) // beside the picture
                place({{{-40, 0, 0}, 1, 0.9f, 0}, {{40, 0, 0}, 1, 0.9f, 0}}, program);
            if (!lit)
                RVLIGHT::lightingOff();
            drawFrame(nullptr, root);
            RAVOLT::swap();
        }
        if (withEmitter) {
            place({{{-40, 0, 0}, 1, 0.9f, 0}}, program);
            EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
        }
        if (!lit)
            RVLIGHT::lightingOff();
        drawFrame(nullptr, root);
        return readFrame();
    }

    void expectTheSame(bool lit) {
        const Picture with = picture(true, lit);
        emitter->unlink();
        ASSERT_TRUE(restart());
        recorder.stopClock();
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
        const Picture without = picture(false, lit);
        EXPECT_GT(without.pixelsUnlike(black), 500u);
        EXPECT_EQ(differenceOf(with, without).maximum, 0);
        emitter = nullptr;
    }

    static void writeCheck() {
        constexpr unsigned int side = 16;
        std::vector<unsigned char> pixels;
        for (unsigned int index = 0; index < side * side; ++index) {
            const unsigned char value = (index / 4 + index / side / 4) % 2 ? 255 : 60;
            pixels.insert(pixels.end(), {value, value, value});
        }
        EXPECT_TRUE(
            writeTga("check_d.tga", {.width = side, .height = side, .pixels = pixels.data()}));
    }

    const bool program = std::get<0>(GetParam());
};

TEST_P(MeshAfterEmitter, LooksTheSame) { expectTheSame(std::get<1>(GetParam())); }

INSTANTIATE_TEST_SUITE_P(EachPath, MeshAfterEmitter,
                         testing::Combine(testing::Bool(), testing::Bool()), [](const auto &each) {
                             return std::string(std::get<0>(each.param) ? "Program" : "Processor") +
                                    (std::get<1>(each.param) ? "Lit" : "Unlit");
                         });

// The normals of a mesh with few vertices, in the application's memory, are not read for the many
// of an emitter.
TEST_F(EmitterDrawing, ArraysOfSmallMeshesBeforeItAreNotRead) {
    RVNODE *root = loadScene({placed(squareMesh("square"), {0, 0, -20})});
    emitter->link(root);
    emitter->setMaximumParticuleSize(1); // nothing to fill
    emitter->setNumberOfParticles(4096);
    EXPECT_TRUE(callsOf([&] { drawFrame(nullptr, root); })
                    .haveInOrder({{"glEnableClientState", GL_NORMAL_ARRAY},
                                  {"glDisableClientState", GL_NORMAL_ARRAY},
                                  {"glDrawArrays", GL_QUADS, 0, 4 * 4096}}));
}

} // namespace
