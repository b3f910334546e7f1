// All effects requested, on drivers that lack something: what is skipped, and that the frame is
// drawn. The driver is silent, so that it can lack anything.

#include "ravolt/RVHELPER.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVSHADER.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/effectsTest.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/supportedEffects.h"
#include "tests/scene/sceneProbes.h"

namespace ravolt::test {
namespace {

class EffectCapabilities : public SilentEngineTest {
  protected:
    EffectCapabilities() { settings.setShaders(true); }

    void SetUp() override { resetCapabilities(); } // each test sets those of the driver

    void TearDown() override {
        resetEffects();
        RVSHADER::reset();
        SilentEngineTest::TearDown();
        resetCapabilities();
    }

    void start() {
        SilentEngineTest::SetUp();
        caster = newCaster({0, 0, 0}, {0.6f, 0, -0.8f});
        square = new BrightSquare;
        square->link(caster);
        allEffectsOn();
    }

    Calls callsOfAFrame() {
        recorder.start();
        printed = printedBy([&] { drawFrame(nullptr, caster); });
        RAVOLT::swap();
        return recorder.stop();
    }

    static void expectSupported(const Supported &wanted) {
        EXPECT_EQ(RVSHADER::useBloom(), wanted.bloom);
        EXPECT_EQ(RVSHADER::useShadows(), wanted.shadows);
        EXPECT_EQ(RVSHADER::useDOF(), wanted.depthOfField);
        EXPECT_EQ(RAVOLT::isShadowed(), wanted.shadows);
        EXPECT_TRUE(RAVOLT::isBlooming()) << "still requested";
    }

    void expectFrame(const Supported &drawn) {
        const Calls calls = callsOfAFrame();
        EXPECT_EQ(square->draws(RV_OPENGL_PROFILE_FULL), drawn.shadows ? 2 : 1);
        EXPECT_EQ(square->draws(RV_OPENGL_PROFILE_FLAT), drawn.shadows ? 1 : 0);
        EXPECT_EQ(square->draws(RV_OPENGL_PROFILE_ZPASS), drawn.depthOfField ? 1 : 0);
        EXPECT_EQ(calls.count("glGenerateMipmapEXT"), drawn.bloom ? 1u : 0u);
        EXPECT_EQ(printed.empty(), !drawn.bloom) << printed;
        EXPECT_EQ(calls.count("glCopyTexSubImage2D"),
                  (drawn.bloom ? 1u : 0u) + (drawn.depthOfField ? 1u : 0u));
        if (!drawn.bloom && !drawn.shadows && !drawn.depthOfField) {
            EXPECT_FALSE(calls.contains("glBindFramebufferEXT"));
        } else {
            EXPECT_EQ(calls.named("glBindFramebufferEXT").back(),
                      (Call{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}));
        }
        EXPECT_EQ(calls.back().name, "SDL_GL_SwapBuffers");
    }

    RVLIGHT *caster = nullptr;
    BrightSquare *square = nullptr;
    std::string printed;
};

// --- without an extension, with few units, without shaders

class LackingDriver : public EffectCapabilities, public testing::WithParamInterface<Driver> {};

TEST_P(LackingDriver, SkipsTheEffectsThatNeedItAndDrawsTheFrame) {
    const Driver &driver = GetParam();
    driver.pretend(recorder, settings);
    start();
    expectSupported(driver.left);
    expectFrame(driver.left);
}

INSTANTIATE_TEST_SUITE_P(Without, LackingDriver, testing::ValuesIn(drivers),
                         [](const auto &tested) { return std::string(tested.param.name); });

// --- without a function of an extension

class WithoutFunction : public EffectCapabilities,
                        public testing::WithParamInterface<const char *> {};

TEST_P(WithoutFunction, ItIsNeverCalledAndTheFrameIsDrawn) {
    const std::string name = GetParam();
    recorder.nullEntryPoint(name);
    start();
    EXPECT_TRUE(RVOPENGL::useFBO() && RVOPENGL::useShaders() && RVOPENGL::useMultitexturing());
    const Calls calls = callsOfAFrame();
    EXPECT_FALSE(calls.contains(name));
    EXPECT_GE(square->draws(RV_OPENGL_PROFILE_FULL), 1);
    EXPECT_EQ(calls.back().name, "SDL_GL_SwapBuffers");
    if (isOfFramebuffers(name) || isOfPrograms(name)) {
        EXPECT_FALSE(calls.contains("glBindFramebufferEXT")) << "straight into the window";
        EXPECT_EQ(square->profiles, std::vector<RV_OPENGL_PROFILE>{RV_OPENGL_PROFILE_FULL});
    }
}

// A mesh with textures on two units, and a helper below it; no shaders.
TEST_P(WithoutFunction, ItIsNeverCalledForMeshesAndPicking) {
    recorder.nullEntryPoint(GetParam());
    settings.setShaders(false);
    SilentEngineTest::SetUp();
    auto *material = new RVMATERIAL;
    for (unsigned int unit : {0u, 3u}) {
        auto *texture = new RVTEXTURE;
        texture->incReferences();
        EXPECT_TRUE(texture->create(4, 4, 3));
        material->setTexture(unit, texture);
    }
    RVMESH *mesh = loadMesh(meshBody("mesh", 1));
    mesh->setMaterial(material);
    (new RVHELPER)->link(mesh);
    recorder.start();
    drawFrame(nullptr, mesh);
    RAVOLT::select(1, 1);
    drawFrame2D(mesh);
    RAVOLT::swap();
    const Calls calls = recorder.stop();
    EXPECT_FALSE(calls.contains(GetParam()));
    EXPECT_EQ(calls.count("glBindTexture"), 2u);
    EXPECT_EQ(calls.count(Call("glDrawArrays", GL_TRIANGLES, 0, 36)), 4u);
    EXPECT_TRUE(calls.contains("SDL_GL_SwapBuffers"));
    EXPECT_TRUE(RVOPENGL::useVBO() && RVOPENGL::useMultitexturing());
}

INSTANTIATE_TEST_SUITE_P(Each, WithoutFunction, testing::ValuesIn(functions),
                         [](const auto &tested) { return std::string(tested.param); });

// --- after the application has deleted what the effects are made of

struct Deletion {
    const char *name;
    bool (*cleanUp)();
    Supported left;
};

void PrintTo(const Deletion &deletion, std::ostream *out) { *out << deletion.name; }

class WithoutWhatWasDeleted : public EffectCapabilities,
                              public testing::WithParamInterface<Deletion> {};

TEST_P(WithoutWhatWasDeleted, TheFrameIsDrawn) {
    start();
    expectFrame(all);
    RVFBO::unbind();
    EXPECT_TRUE(GetParam().cleanUp());
    for (int frame = 0; frame < 2; ++frame) {
        square->profiles.clear();
        expectFrame(GetParam().left);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, WithoutWhatWasDeleted,
                         testing::Values(Deletion{"Targets", RVFBO::cleanUp, nothing},
                                         Deletion{"Textures", RVTEXTURE::cleanUp, nothing},
                                         Deletion{"Programs", RVSHADER::cleanUp, shadowsAlone}),
                         [](const auto &tested) { return std::string(tested.param.name); });

// --- with a stage that does not compile

class WithoutStage : public EffectCapabilities, public testing::WithParamInterface<unsigned int> {};

TEST_P(WithoutStage, TheEffectsThatNeedItAreSkippedAndTheFrameIsDrawn) {
    const Supported left = leftWithout(programs[GetParam() / 2]);
    recorder.failCalls("glGetObjectParameterivARB", GetParam(), 1);
    start();
    expectSupported(left);
    expectFrame(left);
}

INSTANTIATE_TEST_SUITE_P(Each, WithoutStage, testing::Range(0u, 70u), [](const auto &tested) {
    return programs[tested.param / 2] + (tested.param % 2 ? "Pixel" : "Vertex");
});

} // namespace
} // namespace ravolt::test
