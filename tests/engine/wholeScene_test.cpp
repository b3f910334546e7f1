// A scene with something of every kind, drawn with everything on by a real driver: the state when
// the frame returns, and that nothing is allocated in it.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVSHADER.h"
#include "tests/engine/effectsTest.h"
#include "tests/engine/openGLAccess.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"

namespace ravolt::test {

// The caches that have no accessor.
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

const std::array<float, 16> identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

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

class WholeScene : public EffectsTest {
  protected:
    RVNODE *root = nullptr;
    RVNODE *label = nullptr;

    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        camera->setPosition(0, 4, 11);
        camera->setRotation(-20, 0, 0);
        label = new Label;
        root = loadScene(
            {{coloured("paint", {0.9f, 0.2f, 0.1f, 1}), coloured("tiles", {0.8f, 0.8f, 0.8f, 1}),
              coloured("glass", {0.2f, 0.4f, 0.9f, 1}, 0.5f)},
             rootOver({placed(squareMesh("floor", "paint", 14), {0, -1, 0}, {-90, 0, 0}),
                       placed(cubeMesh("tiled", "tiles"), {-2.5f, 0, 3}, {0, 30, 0}),
                       placed(cubeMesh("clear", "glass"), {0, 0, 0}, {0, 20, 0}),
                       emptyMesh("bone", {3, 0, 1}), skinnedCube("skinned", "bone"),
                       placed(cubeMesh("sky", "paint"), {0, 0, 0})})});
        auto *texture = new RVTEXTURE;
        texture->create(4, 4, 4);
        RVMATERIAL::findByName("tiles")->setTexture(0, texture);
        const Z3MVECTOR3D direction(0.55f, -0.68f, -0.48f);
        newCaster({-7, 9, 7}, direction, 35, 2)->link(root);
        RVLIGHT *omni = newCaster({4, 6, 2}, direction);
        omni->setLightType(RV_LIGHT_TYPE_OMNI);
        omni->castShadows(false);
        omni->link(root);
        (new RVHELPER)->link(root);
        auto *sky = new RVNODE;
        meshNamed("sky")->unlink();
        meshNamed("sky")->link(sky);
        RAVOLT::setSkybox(sky);
    }

    static void switchAllOn() {
        allEffectsOn();
        ASSERT_TRUE(RAVOLT::isShadowed() && RVSHADER::useBloom() && RVSHADER::useDOF());
    }

    void draw(bool blit) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        root->pass(true);
        RAVOLT::end3D(blit);
    }

    void flatBlock() {
        drawFrame2D(label);
        RAVOLT::swap();
    }
};

bool isOn(GLenum what) { return glIsEnabled(what) == GL_TRUE; }

void expectSwitchesAreCached() {
    const struct {
        GLenum state;
        bool cached;
    } rows[] = {{GL_BLEND, RVOPENGL::isBlended()},
                {GL_CULL_FACE, RVOPENGL::isCulled()},
                {GL_LIGHTING, RVLIGHT::getLighting()},
                {GL_SCISSOR_TEST, *reach(Cache_scissor())},
                {GL_VERTEX_ARRAY, *reach(Cache_vertexArrayStatus())},
                {GL_INDEX_ARRAY, *reach(Cache_indexArrayStatus())},
                {GL_NORMAL_ARRAY, *reach(Cache_normalArrayStatus())},
                {GL_COLOR_ARRAY, *reach(Cache_colorArrayStatus())},
                {GL_TEXTURE_COORD_ARRAY, *reach(Cache_textureArrayStatus())}};
    for (const auto &row : rows)
        EXPECT_EQ(isOn(row.state), row.cached) << "state " << row.state;
    EXPECT_EQ(integerOf(GL_LIGHT_MODEL_TWO_SIDE) != 0, RVOPENGL::isTwoSide());
}

// Each unit has the texture of the caches, and units beyond the fixed functions' have no switch.
void expectTexturesAreCached() {
    const int active = integerOf(GL_ACTIVE_TEXTURE), switches = integerOf(GL_MAX_TEXTURE_UNITS);
    for (int unit = 0; unit < static_cast<int>(RV_TEXTURE_UNITS); ++unit) {
        RVOPENGL::glActiveTextureARB(static_cast<GLenum>(GL_TEXTURE0 + unit));
        if (const RVTEXTURE *texture = (*reach(Cache_channelCache()))[unit]) {
            EXPECT_EQ(integerOf(GL_TEXTURE_BINDING_2D), static_cast<int>(texture->getGLId()))
                << unit;
        }
        if (unit < switches) {
            EXPECT_EQ(isOn(GL_TEXTURE_2D), (*reach(Cache_channelActive()))[unit]) << unit;
            EXPECT_EQ(integerOf(GL_TEXTURE_STACK_DEPTH), 1) << unit;
            EXPECT_EQ(matrixOf(GL_TEXTURE_MATRIX), identity) << unit;
        }
    }
    RVOPENGL::glActiveTextureARB(static_cast<GLenum>(active));
}

void expectStateAndCaches() {
    expectStateOfAFrame();
    expectSwitchesAreCached();
    expectTexturesAreCached();
}

// OpenGL's state of the window, which is a frame buffer object itself in one of the settings.
struct Window {
    int binding = integerOf(GL_FRAMEBUFFER_BINDING_EXT);
    int buffer = integerOf(GL_DRAW_BUFFER);
};

// Cubes that cover one another, with three materials in turns, one of them transparent.
class StateOrder : public EffectsTest {
  protected:
    RVNODE *root = nullptr;

    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        camera->setPosition(0, 1, 12);
        std::vector<RveNode> cubes;
        constexpr std::array materials{"red", "blue", "glass"};
        for (int i = 0; i < 24; ++i) {
            const float x = static_cast<float>(i % 6) - 2.5f, z = static_cast<float>(i / 6) * -1.3f;
            cubes.push_back(placed(cubeMesh("cube" + std::to_string(i), materials[i % 3u]),
                                   {1.4f * x, 0.2f * z, z},
                                   {static_cast<float>(i) * 17, static_cast<float>(i) * 31, 0}));
        }
        root = loadScene(
            {{coloured("red", {0.9f, 0.2f, 0.1f, 1}), coloured("blue", {0.1f, 0.2f, 0.9f, 1}),
              coloured("glass", {0.2f, 0.9f, 0.2f, 1}, 0.5f)},
             rootOver(cubes)});
    }
    void TearDown() override {
        RVELEMENT::stateOrderOff();
        RVLIGHT::markersOn();
        EffectsTest::TearDown();
    }

    Picture picture() {
        drawFrame(camera, root);
        return readFrame();
    }

    void expectTheSamePicture() {
        const Picture passed = picture();
        EXPECT_GT(drawnPixels(passed), 1000) << "of the background";
        RVELEMENT::stateOrderOn();
        EXPECT_EQ(picture().bytes, passed.bytes);
        RVELEMENT::stateOrderOff();
    }

    // Pixels that are not of the background's colour.
    static int drawnPixels(const Picture &drawn) {
        int pixels = 0;
        for (std::size_t i = 4; i < drawn.bytes.size(); i += 4)
            pixels += !std::equal(&drawn.bytes[i], &drawn.bytes[i + 3], &drawn.bytes[0]);
        return pixels;
    }
};

TEST_F(StateOrder, DoesNotChangeThePicture) {
    expectTheSamePicture();
    RVMATERIAL::findByName("glass")->setTransparency(1);
    expectTheSamePicture();
    RVLIGHT::markersOff();
    auto *light = new RVLIGHT;
    light->setPosition(3, 4, 8);
    light->link(root);
    expectTheSamePicture();
    RAVOLT::bloomingOn();
    expectTheSamePicture();
}

// Without blit the frame ends in target 0, with the last program still in use.
// The marker of a light: lighting off, its matrix, its colour, twelve points, lighting on.
TEST_F(WholeScene, WithoutMarkersEveryOtherCallOfTheFrameIsTheSame) {
    switchAllOn();
    RAVOLT::HDROff(); // which adapts to what is seen
    draw(true);       // what is made in a first frame
    const Calls shown = callsOf([this] { draw(true); });
    RVLIGHT::markersOff();
    const Calls hidden = callsOf([this] { draw(true); });
    RVLIGHT::markersOn();
    std::vector<Call> others(shown.begin(), shown.end());
    int markers = 0;
    for (std::size_t i = others.size(); i-- > 1;) { // debug helpers are strips too
        if (others[i] != Call("glBegin", GL_LINE_STRIP) || others[i + 1].name != "glVertex3fv")
            continue;
        const auto begin = others.begin() + static_cast<std::ptrdiff_t>(i);
        others.erase(begin - 3, begin + 15);
        ++markers;
    }
    EXPECT_GT(markers, 10) << "two lights in each pass, and for each lit mesh";
    EXPECT_EQ(hidden.text(), Calls(std::move(others)).text());
}

TEST_F(WholeScene, EndsWithTheStatedStateInTheWindowOrInTargetZero) {
    const Window window;
    const auto projection = matrixOf(GL_PROJECTION_MATRIX);
    RVFBO *const target = RVOPENGL::getFbo(0);
    switchAllOn();
    for (int frame = 0; frame < 6; ++frame) {
        const bool blit = frame < 3;
        printedBy([&] { draw(blit); });
        SCOPED_TRACE(frame);
        expectStateAndCaches();
        EXPECT_EQ(*reach(Cache_currentMaterial()), nullptr);
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT),
                  blit ? window.binding : static_cast<int>(target->getGLId()));
        EXPECT_EQ(RVFBO::getCurrent(), blit ? nullptr : target);
        EXPECT_EQ(viewportNow(), blit ? (std::array{0, 0, width, height})
                                      : (std::array{0, 0, target->getSizeX(), target->getSizeY()}));
        EXPECT_EQ(*reach(Cache_currentShader()), blit ? nullptr : RVSHADER::dof);
        EXPECT_EQ(integerOf(GL_CURRENT_PROGRAM) == 0, blit);
        EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), projection);
        if (!blit) {
            RAVOLT::swap();
            continue;
        }
        EXPECT_EQ(integerOf(GL_DRAW_BUFFER), window.buffer);
        EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
        EXPECT_FALSE(isOn(GL_LIGHTING));
        EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), identity);
        flatBlock();
        expectSwitchesAreCached();
        expectTexturesAreCached();
    }
    RVFBO::unbind();
}

// Whatever else is on, the state is restored by the effect itself.
TEST_F(WholeScene, EndsWithTheStatedStateAfterEachEffectAlone) {
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
        draw(true);
        expectStateAndCaches();
        EXPECT_EQ(integerOf(GL_FRAMEBUFFER_BINDING_EXT), window.binding);
        EXPECT_EQ(viewportNow(), (std::array{0, 0, width, height}));
        row.off();
        flatBlock();
    }
}

// Counts what the library and this test allocate. What the driver and the C library allocate for
// themselves is out of the linker's reach, and so is not counted.
TEST_F(WholeScene, AllocatesNothingInAHundredFramesNorToSelect) {
    switchAllOn();
    unsigned long allocations = 0;
    printedBy([&] {
        for (int number = -2; number < 100; ++number) {
            const unsigned long before = recorder.allocations();
            camera->setRotation(-20 + 0.1f * static_cast<float>(number), 0, 0);
            if (number > 0 && number % 7 == 0)
                RAVOLT::skipShadowsGeneration();
            draw(true);
            if (number % 20 == 0)
                RAVOLT::select(64, 48);
            flatBlock();
            if (number > 0)
                allocations += recorder.allocations() - before;
        }
    });
    EXPECT_EQ(allocations, 0u);
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u) << "the flat block's";
}

} // namespace
} // namespace ravolt::test
