// The OpenGL layer on a real driver: what its members set, as OpenGL reports it, and the calls that
// the switches make.

#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <numbers>

namespace ravolt::test {
namespace {

using Numbers = std::array<float, 16>;

const Numbers identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

std::array<float, 4> colorOf(GLenum name) {
    std::array<float, 4> color{};
    glGetFloatv(name, color.data());
    return color;
}

float floatOf(GLenum name) { return colorOf(name)[0]; }

float lightNumber(GLenum light, GLenum name) {
    float value = -1;
    glGetLightfv(light, name, &value);
    return value;
}

void expectNear(const Numbers &actual, const Numbers &wanted) {
    for (std::size_t index = 0; index < wanted.size(); ++index)
        EXPECT_NEAR(actual[index], wanted[index], 1e-5f * (1 + std::abs(wanted[index])))
            << "element " << index;
}

Numbers frustum(double left, double right, double bottom, double top, double zNear, double zFar) {
    const double numbers[] = {2 * zNear / (right - left),
                              0,
                              0,
                              0, //
                              0,
                              2 * zNear / (top - bottom),
                              0,
                              0, //
                              (right + left) / (right - left),
                              (top + bottom) / (top - bottom),
                              -(zFar + zNear) / (zFar - zNear),
                              -1, //
                              0,
                              0,
                              -2 * zFar * zNear / (zFar - zNear),
                              0};
    Numbers result{};
    std::transform(std::begin(numbers), std::end(numbers), result.begin(),
                   [](double number) { return static_cast<float>(number); });
    return result;
}

Numbers perspective(double degrees, double aspect, double zNear, double zFar) {
    const double top = std::tan(degrees * std::numbers::pi / 360) * zNear;
    return frustum(-top * aspect, top * aspect, -top, top, zNear, zFar);
}

class OpenGL : public EngineTest {
  protected:
    OpenGL() {
        settings.setShaders(true);
        settings.setResizable(true);
    }

    void TearDown() override {
        RVOPENGL::setAngleOfView(45);
        RVOPENGL::setNearPlane(1);
        RVOPENGL::setFarPlane(1024);
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        RVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.2f, 1);
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        EngineTest::TearDown();
    }
};

class LandscapeOpenGL : public OpenGL {
  protected:
    LandscapeOpenGL() { settings.setLandscape(true); }
};

TEST_F(OpenGL, StartsWithTheStatedValues) {
    EXPECT_EQ(RVOPENGL::getNearPlane(), 1);
    EXPECT_EQ(RVOPENGL::getFarPlane(), 1024);
    EXPECT_EQ(RVOPENGL::getAngleOfView(), 45);
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
    EXPECT_TRUE(RVOPENGL::getBackgroundColor() == Z3MVECTOR4D(0.2f, 0.2f, 0.6f, 1));
    EXPECT_TRUE(RVOPENGL::getGlobalAmbientLight() == Z3MVECTOR4D(0.2f, 0.2f, 0.2f, 1));
    EXPECT_TRUE(RVOPENGL::isCulled());
    EXPECT_FALSE(RVOPENGL::isBlended() || RVOPENGL::isTwoSide());
}

TEST_F(OpenGL, FindsAllThatThisDriverOffers) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    for (bool (*isUsed)() :
         {RVOPENGL::useVBO, RVOPENGL::useAnisotropic, RVOPENGL::useFBO, RVOPENGL::useMultitexturing,
          RVOPENGL::useShaders, RVOPENGL::useOcclusionQuery})
        EXPECT_TRUE(isUsed());
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), floatOf(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT));
#define RV_GL_ENTRY_POINT(group, name) EXPECT_NE(RVOPENGL::name, nullptr) << #name;
#include "engine/gl/glEntryPoints.inc"
    for (int index : {std::numeric_limits<int>::min(), -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12,
                      13, 14, 15, std::numeric_limits<int>::max()})
        EXPECT_EQ(RVOPENGL::getFbo(index) != nullptr, index >= 0 && index < 14) << index;
}

TEST_F(OpenGL, ProfilesAreOrderedNumbers) {
    EXPECT_EQ(static_cast<int>(RV_OPENGL_PROFILE_FULL), 1);
    EXPECT_EQ(static_cast<int>(RV_OPENGL_PROFILE_FLAT), 2);
    EXPECT_EQ(static_cast<int>(RV_OPENGL_PROFILE_ZPASS), 3);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_ZPASS);
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_ZPASS);
}

struct Switch {
    const char *name;
    void (*on)();
    void (*off)();
    GLenum state;
    Calls whenOn, whenOff;
    bool (*isOn)() = nullptr; // where there is a getter
};

Switch serverSwitch(const char *name, void (*on)(), void (*off)(), GLenum state,
                    bool (*isOn)() = nullptr) {
    return {name, on, off, state, {{"glEnable", state}}, {{"glDisable", state}}, isOn};
}

Switch arraySwitch(const char *name, void (*on)(), void (*off)(), GLenum state) {
    return {
        name, on, off, state, {{"glEnableClientState", state}}, {{"glDisableClientState", state}}};
}

// The texture array is always that of unit 0.
const Calls unitZero = {{"glClientActiveTextureARB", GL_TEXTURE0}};
const Switch switches[] = {
    serverSwitch("culling", RVOPENGL::cullingOn, RVOPENGL::cullingOff, GL_CULL_FACE,
                 RVOPENGL::isCulled),
    serverSwitch("blending", RVOPENGL::blendingOn, RVOPENGL::blendingOff, GL_BLEND,
                 RVOPENGL::isBlended),
    serverSwitch("scissor", RVOPENGL::scissorOn, RVOPENGL::scissorOff, GL_SCISSOR_TEST),
    {"two sides", RVOPENGL::twoSideOn, RVOPENGL::twoSideOff, GL_LIGHT_MODEL_TWO_SIDE,
     Calls{{"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 1}},
     Calls{{"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0}}, RVOPENGL::isTwoSide},
    arraySwitch("vertex array", RVOPENGL::vertexArrayOn, RVOPENGL::vertexArrayOff, GL_VERTEX_ARRAY),
    arraySwitch("index array", RVOPENGL::indexArrayOn, RVOPENGL::indexArrayOff, GL_INDEX_ARRAY),
    arraySwitch("normal array", RVOPENGL::normalArrayOn, RVOPENGL::normalArrayOff, GL_NORMAL_ARRAY),
    arraySwitch("color array", RVOPENGL::colorArrayOn, RVOPENGL::colorArrayOff, GL_COLOR_ARRAY),
    {"texture array", RVOPENGL::textureArrayOn, RVOPENGL::textureArrayOff, GL_TEXTURE_COORD_ARRAY,
     Calls{unitZero[0], {"glEnableClientState", GL_TEXTURE_COORD_ARRAY}},
     Calls{unitZero[0], {"glDisableClientState", GL_TEXTURE_COORD_ARRAY}}},
};

TEST_F(OpenGL, ASwitchMakesItsCallsForAChangeAndNoneForARepeat) {
    SKIP_WITHOUT_EXTENSIONS(multitextureExtensions);
    for (const Switch &each : switches) {
        SCOPED_TRACE(each.name);
        each.off();
        for (bool on : {true, false}) {
            void (*const step)() = on ? each.on : each.off;
            EXPECT_EQ(callsOf(step), on ? each.whenOn : each.whenOff);
            EXPECT_TRUE(callsOf(step).empty());
            EXPECT_EQ(each.isOn ? each.isOn() : on, on);
        }
    }
    RVOPENGL::cullingOn();
}

TEST_F(OpenGL, WithoutTheUnitFunctionTheTextureArrayIsSwitchedAlone) {
    const auto function = RVOPENGL::glClientActiveTextureARB;
    RVOPENGL::glClientActiveTextureARB = nullptr;
    RVOPENGL::textureArrayOff();
    EXPECT_EQ(callsOf(RVOPENGL::textureArrayOn),
              (Calls{{"glEnableClientState", GL_TEXTURE_COORD_ARRAY}}));
    EXPECT_EQ(callsOf(RVOPENGL::textureArrayOff),
              (Calls{{"glDisableClientState", GL_TEXTURE_COORD_ARRAY}}));
    RVOPENGL::glClientActiveTextureARB = function;
}

TEST_F(OpenGL, BackgroundAndAmbientLightAreOpenGLsAtOnce) {
    RVOPENGL::setBackgroundColor(0.1f, 0.2f, 0.3f, 0.4f);
    RVOPENGL::setGlobalAmbientLight(0.4f, 0.3f, 0.2f, 0.1f);
    EXPECT_EQ(colorOf(GL_COLOR_CLEAR_VALUE), (std::array{0.1f, 0.2f, 0.3f, 0.4f}));
    EXPECT_EQ(colorOf(GL_LIGHT_MODEL_AMBIENT), (std::array{0.4f, 0.3f, 0.2f, 0.1f}));
    const Z3MVECTOR4D background(0.5f, 0.6f, 0.7f, 0.8f), ambient(0.8f, 0.7f, 0.6f, 0.5f);
    RVOPENGL::setBackgroundColor(background);
    RVOPENGL::setGlobalAmbientLight(ambient);
    EXPECT_EQ(colorOf(GL_COLOR_CLEAR_VALUE), (std::array{0.5f, 0.6f, 0.7f, 0.8f}));
    EXPECT_EQ(colorOf(GL_LIGHT_MODEL_AMBIENT), (std::array{0.8f, 0.7f, 0.6f, 0.5f}));
    EXPECT_TRUE(RVOPENGL::getBackgroundColor() == background);
    EXPECT_TRUE(RVOPENGL::getGlobalAmbientLight() == ambient);
}

TEST_F(OpenGL, TheStartSetsTheBaseState) {
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_DITHER));
    const struct {
        GLenum state;
        int value;
    } rows[] = {{GL_DEPTH_FUNC, GL_LESS},
                {GL_SHADE_MODEL, GL_SMOOTH},
                {GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST},
                {GL_BLEND_SRC, GL_SRC_ALPHA},
                {GL_BLEND_DST, GL_ONE_MINUS_SRC_ALPHA},
                {GL_ALPHA_TEST_FUNC, GL_GREATER},
                {GL_STENCIL_CLEAR_VALUE, 0}};
    for (const auto &row : rows)
        EXPECT_EQ(integerOf(row.state), row.value) << "state " << row.state;
    EXPECT_EQ(floatOf(GL_ALPHA_TEST_REF), 0.5f);
    EXPECT_EQ(floatOf(GL_DEPTH_CLEAR_VALUE), 1);
    EXPECT_EQ(colorOf(GL_COLOR_CLEAR_VALUE), (std::array{0.2f, 0.2f, 0.6f, 1.0f}));
    EXPECT_EQ(colorOf(GL_LIGHT_MODEL_AMBIENT), (std::array{0.2f, 0.2f, 0.2f, 1.0f}));
}

TEST_F(OpenGL, ResetSetsTheFirstFourLightsAloneToOpenGLsDefaults) {
    constexpr GLenum names[] = {GL_SPOT_EXPONENT, GL_SPOT_CUTOFF, GL_CONSTANT_ATTENUATION,
                                GL_LINEAR_ATTENUATION, GL_QUADRATIC_ATTENUATION};
    constexpr float base[] = {0, 180, 1, 0, 0};
    constexpr float other[] = {3, 20, 0.5f, 0.25f, 0.125f};
    const auto expectLights = [&](const float(&upper)[5]) {
        for (GLenum light = GL_LIGHT0; light <= GL_LIGHT7; ++light)
            for (int index = 0; index < 5; ++index)
                EXPECT_EQ(lightNumber(light, names[index]),
                          light <= GL_LIGHT3 ? base[index] : upper[index])
                    << "light " << light - GL_LIGHT0 << ", number " << index;
    };
    expectLights(base);
    for (GLenum light = GL_LIGHT0; light <= GL_LIGHT7; ++light) {
        EXPECT_FALSE(glIsEnabled(light));
        for (int index = 0; index < 5; ++index)
            glLightf(light, names[index], other[index]);
    }
    EXPECT_TRUE(resetOpenGL());
    expectLights(other);
}

TEST_F(OpenGL, TheStartShowsTheWholeWindowInPerspective) {
    EXPECT_EQ(viewportNow(), (std::array{0, 0, width, height}));
    expectNear(matrixOf(GL_PROJECTION_MATRIX), perspective(45, double(width) / height, 1, 1024));
    EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
}

TEST_F(OpenGL, ResizeCountsFromTheTopAndUsesTheCurrentParameters) {
    RVOPENGL::setAngleOfView(60);
    RVOPENGL::setNearPlane(0.5f);
    RVOPENGL::setFarPlane(200);
    glTranslatef(1, 2, 3);
    EXPECT_TRUE(RVOPENGL::resize(10, 20, 60, 30));
    EXPECT_EQ(viewportNow(), (std::array{10, height - 20 - 30, 60, 30}));
    expectNear(matrixOf(GL_PROJECTION_MATRIX), perspective(60, 2, 0.5, 200));
    EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(OpenGL, ParametersOfTheProjectionWaitForAResize) {
    const Numbers before = matrixOf(GL_PROJECTION_MATRIX);
    recorder.start();
    RVOPENGL::setAngleOfView(90);
    RVOPENGL::setNearPlane(2);
    RVOPENGL::setFarPlane(64);
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_EQ(RVOPENGL::getAngleOfView(), 90);
    EXPECT_EQ(RVOPENGL::getNearPlane(), 2);
    EXPECT_EQ(RVOPENGL::getFarPlane(), 64);
    EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), before);
    RVOPENGL::resize(0, 0, width, height);
    expectNear(matrixOf(GL_PROJECTION_MATRIX), perspective(90, double(width) / height, 2, 64));
}

TEST_F(LandscapeOpenGL, ResizeTurnsTheDisplayFirst) {
    recorder.start();
    EXPECT_TRUE(RVOPENGL::resize(0, 0, width, height));
    EXPECT_TRUE(recorder.stop().haveInOrder({{"glMatrixMode", GL_PROJECTION},
                                             {"glLoadIdentity"},
                                             {"glViewport", 0, 0, width, height},
                                             {"glRotatef", 90, 0, 0, 1},
                                             {"glMatrixMode", GL_MODELVIEW},
                                             {"glLoadIdentity"}}));
    const Numbers upright = perspective(45, double(height) / width, 1, 1024);
    Numbers turned = upright; // x of the result is minus y of the upright one, and y is x
    turned[0] = 0;
    turned[1] = upright[0];
    turned[4] = -upright[5];
    turned[5] = 0;
    expectNear(matrixOf(GL_PROJECTION_MATRIX), turned);
}

// A height of zero is divided by.
TEST_F(OpenGL, InvalidSizesAreLoggedAndUsed) {
    for (const auto &size : {std::pair{64, 0}, {0, 48}, {0, 0}, {-4, 48}}) {
        glLoadIdentity();
        const auto [x, y] = size;
        const Calls calls =
            callsOf([&] { EXPECT_TRUE(RVOPENGL::resize(0, 0, size.first, size.second)); });
        EXPECT_LOGGED_EXACTLY("   [!] invalid params @ RVOPENGL::resize\n");
        const Calls frusta = calls.named("glFrustum");
        ASSERT_EQ(frusta.size(), 1u);
        EXPECT_TRUE(calls.contains({"glViewport", 0, height - y, x, y}));
        EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
        for (std::size_t side = 0; side < 2 && x == 64; ++side)
            EXPECT_TRUE(std::isinf(frusta[0].arguments[side]));
        while (glGetError() != GL_NO_ERROR) { // no frustum without a width, no negative viewport
        }
    }
    RVOPENGL::resize(0, 0, width, height);
}

TEST_F(OpenGL, SetPerspectiveMultipliesOntoTheCurrentMatrix) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glScalef(2, 3, 4);
    RVOPENGL::setPerspective(70, 1.5f, 0.25f, 50);
    Numbers wanted = perspective(70, 1.5, 0.25, 50);
    for (std::size_t column = 0; column < 16; column += 4) {
        wanted[column] *= 2;
        wanted[column + 1] *= 3;
        wanted[column + 2] *= 4;
    }
    expectNear(matrixOf(GL_PROJECTION_MATRIX), wanted);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_PROJECTION);
    glMatrixMode(GL_MODELVIEW);
}

TEST_F(OpenGL, SetPerspectiveCalculatesInSinglePrecision) {
    recorder.start();
    RVOPENGL::setPerspective(45, 1.25f, 0.1f, 100);
    const float top = std::tan(45 * 0.008726646192371845f) * 0.1f;
    EXPECT_EQ(recorder.stop(),
              (Calls{{"glFrustum", -top * 1.25f, top * 1.25f, -top, top, 0.1f, 100}}));
    RVOPENGL::resize(0, 0, width, height);
}

TEST_F(OpenGL, SetFrustumReplacesTheProjectionWhateverItsLastArgument) {
    for (bool last : {false, true}) {
        glTranslatef(1, 2, 3);
        RVOPENGL::resize(0, 0, width, height);
        EXPECT_TRUE(RVOPENGL::setFrustum(-1, 2, -3, 4, 1, 100, last));
        expectNear(matrixOf(GL_PROJECTION_MATRIX), frustum(-1, 2, -3, 4, 1, 100));
        EXPECT_EQ(matrixOf(GL_MODELVIEW_MATRIX), identity);
        EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
    }
}

TEST_F(OpenGL, ANewContextHasTheSwitchesThatTheFlagsSay) {
    const auto isOn = [](GLenum state) {
        GLboolean on = GL_FALSE;
        glGetBooleanv(state, &on);
        return on == GL_TRUE;
    };
    for (bool on : {true, false}) {
        for (const Switch &each : switches)
            on ? each.on() : each.off();
        on ? RVLIGHT::lightingOn() : RVLIGHT::lightingOff();
        ASSERT_TRUE(restart());
        for (const Switch &each : switches) {
            // The start itself sets culling.
            const bool wanted = on || each.state == GL_CULL_FACE;
            EXPECT_EQ(isOn(each.state), wanted) << each.name;
            EXPECT_EQ(each.isOn ? each.isOn() : wanted, wanted) << each.name;
        }
        EXPECT_EQ(RVLIGHT::getLighting(), on);
        EXPECT_EQ(isOn(GL_LIGHTING), on);
    }
}

TEST_F(OpenGL, ADriverThatLosesAnExtensionLosesWhatDependsOnIt) {
    if (!std::getenv("RAVOLT_TEST_POOR_DRIVER")) {
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        // The driver reads its variable once in a process.
        const std::string program = std::filesystem::read_symlink("/proc/self/exe");
        std::filesystem::create_directory("poorDriver"); // with a log of its own
        const std::string command =
            "cd poorDriver && RAVOLT_TEST_POOR_DRIVER=1 "
            "MESA_EXTENSION_OVERRIDE=-GL_ARB_texture_float '" +
            program + "' --gtest_filter='" +
            testing::UnitTest::GetInstance()->current_test_suite()->name() + "." +
            testing::UnitTest::GetInstance()->current_test_info()->name() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return;
    }
    EXPECT_FALSE(RVOPENGL::useFBO());
    EXPECT_EQ(RVOPENGL::getFbo(0), nullptr);
    EXPECT_TRUE(RVOPENGL::useOcclusionQuery());
    const std::string log = logTextSince(startMark);
    EXPECT_NE(log.find("      GL_ARB_texture_non_power_of_two\n"
                       "   [!] GL_ARB_texture_float not found @ RVOPENGL::init\n"
                       "      GL_ARB_occlusion_query\n"),
              std::string::npos)
        << log;
}

} // namespace
} // namespace ravolt::test
