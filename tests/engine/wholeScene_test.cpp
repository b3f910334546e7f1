// A scene with something of every kind, drawn with everything on by a real driver: what stands
// when the frame returns, and that nothing is allocated in it.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/recorderState.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace ravolt::test {

// The caches that no accessor hands out.
#define RV_OPEN(name, owner, type)                                                                 \
    struct Cache_##name {                                                                          \
        using Type = type;                                                                         \
        friend Type reach(Cache_##name);                                                           \
    };                                                                                             \
    template struct Opened<Cache_##name, &owner::name>;

using TextureCache = RVTEXTURE *(*)[RV_TEXTURE_UNITS];
using UnitCache = bool (*)[RV_TEXTURE_UNITS];
using ProgramCache = RVSHADER **;
using MaterialCache = RVMATERIAL **;
RV_OPEN(channelCache, RVTEXTURE, TextureCache)
RV_OPEN(channelActive, RVTEXTURE, UnitCache)
RV_OPEN(currentShader, RVSHADER, ProgramCache)
RV_OPEN(currentMaterial, RVMATERIAL, MaterialCache)
RV_OPEN(scissor, RVOPENGL, Flag)
RV_OPEN(vertexArrayStatus, RVOPENGL, Flag)
RV_OPEN(indexArrayStatus, RVOPENGL, Flag)
RV_OPEN(normalArrayStatus, RVOPENGL, Flag)
RV_OPEN(colorArrayStatus, RVOPENGL, Flag)
RV_OPEN(textureArrayStatus, RVOPENGL, Flag)
#undef RV_OPEN

namespace {

using Numbers = std::array<float, 16>;

// A cube that hangs on one bone, with four weights a vertex.
RveNode skinnedCube(const std::string &name, const std::string &bone) {
    RveNode node = cubeMesh(name, "paint");
    node.mesh.skin.weightsPerVertex = 4;
    node.mesh.skin.bones = {bone};
    node.mesh.skin.boneIndices.assign(4 * node.mesh.vertices.size(), 0);
    node.mesh.skin.boneWeights.assign(4 * node.mesh.vertices.size(), 0.25f);
    return node;
}

// Flat things are nodes too.
class Label : public RVNODE {
  public:
    Label() { type = RV_NODE_TYPE_CUSTOM; }
    bool render(void *) override {
        glRecti(2, 12, 12, 2);
        return true;
    }
};

class WholeScene : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;
    RVNODE *root = nullptr;
    RVNODE *label = nullptr;

    WholeScene() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        camera->setPosition(0, 4, 11);
        camera->setRotation(-20, 0, 0);
        label = new Label;
        loadMeshes();
        addLight(RV_LIGHT_TYPE_SPOT, -7, 9, 7)->castShadows(true);
        addLight(RV_LIGHT_TYPE_OMNI, 4, 6, 2);
        (new RVHELPER)->link(root);
        auto *sky = new RVNODE;
        RVMESH *skyMesh = meshNamed("sky");
        skyMesh->unlink();
        skyMesh->link(sky);
        RAVOLT::setSkybox(sky);
    }

    void TearDown() override {
        RAVOLT::setSkybox(nullptr);
        resetEffects();
        EngineTest::TearDown();
    }

    static void switchAllOn() {
        RAVOLT::bloomingOn();
        RAVOLT::HDROn();
        RAVOLT::DOFOn();
        RAVOLT::shadowingOn();
        ASSERT_TRUE(RAVOLT::isShadowed() && RVSHADER::useBloom() && RVSHADER::useDOF());
    }

    // Nothing is printed.
    template <class Step> static void quietly(Step step) {
        testing::internal::CaptureStdout();
        step();
        std::fflush(stdout);
        testing::internal::GetCapturedStdout();
    }

    void begin() {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        root->pass(true);
    }

    void flatBlock() {
        RAVOLT::begin2D();
        label->pass();
        RAVOLT::end2D();
        RAVOLT::swap();
    }

  private:
    void loadMeshes() {
        root = loadScene(
            {{coloured("paint", {0.9f, 0.2f, 0.1f, 1}), coloured("tiles", {0.8f, 0.8f, 0.8f, 1}),
              coloured("glass", {0.2f, 0.4f, 0.9f, 1}, 0.5f)},
             rootOver({placed(squareMesh("floor", "paint", 14), {0, -1, 0}, {-90, 0, 0}),
                       placed(cubeMesh("tiled", "tiles"), {-2.5f, 0, 3}, {0, 30, 0}),
                       placed(cubeMesh("clear", "glass"), {0, 0, 0}, {0, 20, 0}),
                       emptyMesh("bone", {3, 0, 1}), skinnedCube("bent", "bone"),
                       placed(cubeMesh("sky", "paint"), {0, 0, 0})})});
        auto *texture = new RVTEXTURE;
        texture->create(4, 4, 4);
        RVMATERIAL::findByName("tiles")->setTexture(0, texture);
    }

    RVLIGHT *addLight(RV_LIGHT_TYPE type, float x, float y, float z) {
        auto *light = new RVLIGHT;
        light->setLightType(type);
        light->setPosition(x, y, z);
        light->setDirection(Z3MVECTOR3D(0.55f, -0.68f, -0.48f));
        light->setCutOff(35);
        light->setShadowNearPlane(2);
        light->setShadowFarPlane(40);
        light->link(root);
        return light;
    }
};

bool isOn(GLenum what) { return glIsEnabled(what) == GL_TRUE; }

void expectSwitchesAreCached() {
    EXPECT_EQ(isOn(GL_BLEND), RVOPENGL::isBlended());
    EXPECT_EQ(isOn(GL_CULL_FACE), RVOPENGL::isCulled());
    EXPECT_EQ(isOn(GL_LIGHTING), RVLIGHT::getLighting());
    EXPECT_EQ(integerOf(GL_LIGHT_MODEL_TWO_SIDE) != 0, RVOPENGL::isTwoSide());
    EXPECT_EQ(isOn(GL_SCISSOR_TEST), *reach(Cache_scissor()));
    EXPECT_EQ(isOn(GL_VERTEX_ARRAY), *reach(Cache_vertexArrayStatus()));
    EXPECT_EQ(isOn(GL_INDEX_ARRAY), *reach(Cache_indexArrayStatus()));
    EXPECT_EQ(isOn(GL_NORMAL_ARRAY), *reach(Cache_normalArrayStatus()));
    EXPECT_EQ(isOn(GL_COLOR_ARRAY), *reach(Cache_colorArrayStatus()));
    EXPECT_EQ(isOn(GL_TEXTURE_COORD_ARRAY), *reach(Cache_textureArrayStatus()));
}

// Each unit has what the caches say, and units beyond the fixed functions' have no switch.
void expectTexturesAreCached() {
    const int active = integerOf(GL_ACTIVE_TEXTURE), switches = integerOf(GL_MAX_TEXTURE_UNITS);
    for (int unit = 0; unit < static_cast<int>(RV_TEXTURE_UNITS); ++unit) {
        RVOPENGL::glActiveTextureARB(static_cast<GLenum>(GL_TEXTURE0 + unit));
        if (unit < switches) {
            EXPECT_EQ(isOn(GL_TEXTURE_2D), (*reach(Cache_channelActive()))[unit]) << unit;
        }
        if (const RVTEXTURE *texture = (*reach(Cache_channelCache()))[unit]) {
            EXPECT_EQ(integerOf(GL_TEXTURE_BINDING_2D), static_cast<int>(texture->getGLId()))
                << unit;
        }
        if (unit < switches) {
            EXPECT_EQ(integerOf(GL_TEXTURE_STACK_DEPTH), 1) << unit;
            EXPECT_EQ(matrixOf(GL_TEXTURE_MATRIX), (Numbers{1, 0, 0, 0, 0, 1, 0, 0, //
                                                            0, 0, 1, 0, 0, 0, 0, 1}))
                << unit;
        }
    }
    RVOPENGL::glActiveTextureARB(static_cast<GLenum>(active));
}

void expectOpenMasks() {
    GLboolean color[4] = {}, depth = GL_FALSE;
    glGetBooleanv(GL_COLOR_WRITEMASK, color);
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depth);
    EXPECT_TRUE(color[0] && color[1] && color[2] && color[3] && depth);
}

// What stands whatever the effects are.
void expectStateOfTheFrame() {
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
    EXPECT_TRUE(isOn(GL_DEPTH_TEST) && isOn(GL_CULL_FACE));
    EXPECT_FALSE(isOn(GL_BLEND));
    EXPECT_EQ(integerOf(GL_BLEND_SRC), GL_SRC_ALPHA);
    EXPECT_EQ(integerOf(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_EQ(integerOf(GL_DEPTH_FUNC), GL_LESS);
    EXPECT_EQ(integerOf(GL_CULL_FACE_MODE), GL_BACK);
    EXPECT_EQ(integerOf(GL_SHADE_MODEL), GL_SMOOTH);
    EXPECT_EQ(integerOf(GL_POLYGON_MODE), GL_FILL);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
    EXPECT_EQ(integerOf(GL_MODELVIEW_STACK_DEPTH), 1);
    EXPECT_EQ(*reach(Cache_currentMaterial()), nullptr);
    expectOpenMasks();
    expectSwitchesAreCached();
    expectTexturesAreCached();
}

int programInUse() { return integerOf(GL_CURRENT_PROGRAM); }

// What OpenGL says of the window, which is a frame buffer object itself in one of the settings.
struct Window {
    int binding = integerOf(GL_FRAMEBUFFER_BINDING_EXT);
    int buffer = integerOf(GL_DRAW_BUFFER);
};

TEST_F(WholeScene, LeavesTheStatedStateInTheWindow) {
    const Window window;
    const Numbers projection = matrixOf(GL_PROJECTION_MATRIX);
    switchAllOn();
    for (int frame = 0; frame < 3; ++frame) {
        begin();
        quietly([] { RAVOLT::end3D(true); });
        SCOPED_TRACE(frame);
        expectStateOfTheFrame();
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), window.binding);
        EXPECT_EQ(RVFBO::getCurrent(), nullptr);
        EXPECT_EQ(viewportNow(), (std::array{0, 0, width, height}));
        EXPECT_EQ(integerOf(GL_DRAW_BUFFER), window.buffer);
        EXPECT_EQ(programInUse(), 0);
        EXPECT_EQ(*reach(Cache_currentShader()), nullptr);
        EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
        EXPECT_FALSE(isOn(GL_LIGHTING));
        EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), projection);
        EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX),
                  (Numbers{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
        flatBlock();
        expectSwitchesAreCached();
        expectTexturesAreCached();
    }
}

TEST_F(WholeScene, LeavesTheStatedStateInTargetZeroWithoutBlit) {
    const Numbers projection = matrixOf(GL_PROJECTION_MATRIX);
    switchAllOn();
    for (int frame = 0; frame < 3; ++frame) {
        begin();
        quietly([] { RAVOLT::end3D(false); });
        SCOPED_TRACE(frame);
        expectStateOfTheFrame();
        const RVFBO *target = RVOPENGL::getFbo(0);
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), static_cast<int>(target->getGLId()));
        EXPECT_EQ(RVFBO::getCurrent(), target);
        EXPECT_EQ(viewportNow(), (std::array{0, 0, target->getSizeX(), target->getSizeY()}));
        EXPECT_EQ(*reach(Cache_currentShader()), RVSHADER::dof) << "nothing has ended it";
        EXPECT_NE(programInUse(), 0);
        EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), projection);
        RAVOLT::swap();
    }
    RVFBO::unbind();
}

// Each effect alone, too: the state is that of the effect, whatever comes behind it.
TEST_F(WholeScene, LeavesTheStatedStateAfterEachEffectAlone) {
    const Window window;
    const struct {
        const char *name;
        void (*on)(), (*off)();
    } rows[] = {{"shadows", RAVOLT::shadowingOn, RAVOLT::shadowingOff},
                {"bloom", RAVOLT::bloomingOn, RAVOLT::bloomingOff},
                {"depth of field", RAVOLT::DOFOn, RAVOLT::DOFOff}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        row.on();
        begin();
        RAVOLT::end3D(true);
        EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), window.binding);
        EXPECT_EQ(viewportNow(), (std::array{0, 0, width, height}));
        EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
        EXPECT_EQ(integerOf(GL_MODELVIEW_STACK_DEPTH), 1);
        EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
        EXPECT_TRUE(isOn(GL_DEPTH_TEST) && isOn(GL_CULL_FACE));
        expectOpenMasks();
        expectSwitchesAreCached();
        expectTexturesAreCached();
        row.off();
        flatBlock();
    }
}

// Counts what the library and this test allocate. What the driver and the C library do for
// themselves lies behind the linker's reach, and so is not counted.
TEST_F(WholeScene, AllocatesNothingInAHundredFrames) {
    switchAllOn();
    const auto frame = [this] {
        begin();
        RAVOLT::end3D(true);
        flatBlock();
    };
    unsigned long allocations = 0;
    quietly([&] {
        for (int number = 0; number < 2; ++number)
            frame();
        const unsigned long before = recorder.allocations();
        for (int number = 0; number < 100; ++number) {
            camera->setRotation(-20 + 0.1f * static_cast<float>(number), 0, 0);
            if (number % 7 == 0)
                RAVOLT::skipShadowsGeneration();
            frame();
        }
        allocations = recorder.allocations() - before;
    });
    EXPECT_EQ(allocations, 0u);
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u) << "the flat block's";
}

TEST_F(WholeScene, AllocatesNothingToSelect) {
    switchAllOn();
    unsigned long allocations = 1;
    quietly([&] {
        for (int number = 0; number < 5; ++number) {
            begin();
            RAVOLT::end3D(true);
            const unsigned long before = recorder.allocations();
            RAVOLT::select(64, 48);
            allocations = recorder.allocations() - before;
            flatBlock();
        }
    });
    EXPECT_EQ(allocations, 0u);
}

} // namespace
} // namespace ravolt::test
