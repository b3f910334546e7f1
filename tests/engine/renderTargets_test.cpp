// The calls that create the engine's render targets, on a silent driver, the first use of their
// images, and what is drawn when OpenGL refuses one of them.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/resetEffects.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

// --- their making

struct Sizes {
    const char *name;
    int sceneX, sceneY, map;
};

void PrintTo(const Sizes &sizes, std::ostream *out) { *out << sizes.name; }

class PoolCalls : public SilentEngineTest, public testing::WithParamInterface<Sizes> {
  protected:
    PoolCalls() {
        settings.setFBOSizeX(GetParam().sceneX);
        settings.setFBOSizeY(GetParam().sceneY);
        settings.setShadowMapSize(GetParam().map);
    }
};

struct Made {
    int index, width, height, format; // format as RVTEXTURE::create takes it
    bool depthBuffer = false;
};

// The order in which their textures are made.
std::vector<Made> poolOf(const Sizes &sizes) {
    const int x = sizes.sceneX, y = sizes.sceneY;
    return {{2, sizes.map, sizes.map, 5},
            {0, x, y, 6, true},
            {1, x, y, 6, true},
            {3, 256, 256, 6},
            {4, x, y, 6},
            {5, x, y, 6},
            {6, x / 2, y / 2, 4},
            {7, x / 2, y / 2, 4},
            {8, x / 4, y / 4, 4},
            {9, x / 4, y / 4, 4},
            {10, x / 8, y / 8, 4},
            {11, x / 8, y / 8, 4},
            {12, x / 16, y / 16, 4},
            {13, x / 16, y / 16, 4}};
}

Call imageCall(const Made &made, bool placeholder = false) {
    const int width = placeholder ? 1 : made.width, height = placeholder ? 1 : made.height;
    switch (made.format) {
    case 4:
        return {"glTexImage2D", GL_TEXTURE_2D,    0,         GL_RGBA, width, height, 0,
                GL_RGBA,        GL_UNSIGNED_BYTE, anyAddress};
    case 5:
        return {"glTexImage2D",     GL_TEXTURE_2D,    0, GL_DEPTH_COMPONENT, width, height, 0,
                GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE, 0};
    default:
        return {"glTexImage2D", GL_TEXTURE_2D,     0, GL_RGBA16F_ARB, width, height, 0,
                GL_RGBA,        GL_HALF_FLOAT_ARB, 0};
    }
}

// The placeholder must not stay where the image is refused.
Call withoutPixels(const Made &made) {
    Call call = imageCall(made);
    call.arguments[3] = call.arguments[4] = 0;
    call.arguments.back() = 0;
    return call;
}

// A side of no pixels is refused at the start, and the target reported.
bool startsAsPlaceholder(const Made &made) { return made.width > 0 && made.height > 0; }

Calls callsThatMake(const std::vector<Made> &pool) {
    std::vector<Call> calls;
    for (const Made &made : pool) {
        const bool placeholder = startsAsPlaceholder(made);
        const RVFBO *target = RVOPENGL::getFbo(made.index);
        const GLuint name = target->getGLId(), texture = target->getTexture()->getGLId();
        const bool isDepth = made.format == 5;
        calls.push_back({"glBindTexture", GL_TEXTURE_2D, texture});
        calls.push_back(imageCall(made, placeholder));
        calls.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, name});
        calls.push_back({"glViewport", 0, 0, 0, 0}); // it has no size yet
        if (isDepth) {
            calls.push_back({"glReadBuffer", GL_NONE});
            calls.push_back({"glDrawBuffer", GL_NONE});
        }
        calls.push_back({"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT,
                         isDepth ? GL_DEPTH_ATTACHMENT_EXT : GL_COLOR_ATTACHMENT0_EXT,
                         GL_TEXTURE_2D, texture, 0});
        if (made.depthBuffer)
            calls.push_back({"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24,
                             placeholder ? 1 : made.width, placeholder ? 1 : made.height});
        calls.push_back({"glCheckFramebufferStatusEXT", GL_FRAMEBUFFER_EXT});
        calls.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0});
    }
    return Calls(calls);
}

TEST_P(PoolCalls, AreThoseOfTheirTable) {
    recorder.start();
    ASSERT_TRUE(restart());
    // From the first target's creation to the look-up of the next extension.
    const Calls all = recorder.stop();
    const auto begin = std::find_if(all.begin(), all.end(), [](const Call &call) {
        return call.name == "glGenFramebuffersEXT";
    });
    const Calls calls(std::vector<Call>(begin, std::find_if(begin, all.end(), [](const Call &call) {
                                            return call.name == "SDL_GL_GetProcAddress";
                                        })));
    const std::vector<Made> pool = poolOf(GetParam());
    EXPECT_EQ(calls.named({"glBindTexture", "glTexImage2D", "glBindFramebufferEXT", "glViewport",
                           "glReadBuffer", "glDrawBuffer", "glFramebufferTexture2DEXT",
                           "glRenderbufferStorageEXT", "glCheckFramebufferStatusEXT"}),
              callsThatMake(pool));
    EXPECT_EQ(calls.count("glFramebufferRenderbufferEXT"), 2u);
    std::vector<Call> filters;
    for (const Made &made : pool) {
        filters.push_back({"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                           made.index == 3 ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR});
        EXPECT_EQ(RVOPENGL::getFbo(made.index)->getSizeX(), made.width) << made.index;
        EXPECT_EQ(RVOPENGL::getFbo(made.index)->getSizeY(), made.height) << made.index;
    }
    EXPECT_EQ(calls.where([](const Call &call) {
        return call.name == "glTexParameteri" && call.arguments[1] == GL_TEXTURE_MIN_FILTER;
    }),
              Calls(filters));
}

// The sizes come with the first use, under the same names.
TEST_P(PoolCalls, AllocateTheImagesOnce) {
    ASSERT_TRUE(restart());
    std::vector<Made> pool = poolOf(GetParam());
    const Calls first = callsOf([] { RVOPENGL::getFbo(5); });
    std::sort(pool.begin(), pool.end(),
              [](const Made &a, const Made &b) { return a.index < b.index; });
    std::vector<Call> images, depths;
    for (const Made &made : pool) {
        if (!startsAsPlaceholder(made))
            continue;
        images.push_back(withoutPixels(made));
        images.push_back(imageCall(made));
        if (made.depthBuffer)
            depths.push_back({"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24,
                              made.width, made.height});
    }
    EXPECT_EQ(first.named("glTexImage2D"), Calls(images));
    EXPECT_EQ(first.named("glRenderbufferStorageEXT"), Calls(depths));
    for (const char *name : {"glGenTextures", "glGenRenderbuffersEXT", "glViewport",
                             "glFramebufferTexture2DEXT", "glTexParameteri"})
        EXPECT_EQ(first.count(name), 0u) << name;
    EXPECT_TRUE(callsOf([] { RVOPENGL::getFbo(5); }).empty());
}

INSTANTIATE_TEST_SUITE_P(OfSizes, PoolCalls,
                         testing::Values(Sizes{"Usual", 1024, 768, 1024}, Sizes{"Odd", 101, 77, 33},
                                         Sizes{"TooSmallForAllLevels", 15, 31, 1}),
                         [](const auto &tested) { return std::string(tested.param.name); });

// --- the first use of their images

struct Use {
    const char *name;
    void (*call)();
};

void PrintTo(const Use &use, std::ostream *out) { *out << use.name; }

// The luminance's texture, as an application finds it.
RVTEXTURE &poolTexture() {
    for (RVTEXTURE *texture = RVTEXTURE::getFirst(); texture; texture = texture->getNext())
        if (texture->getSizeX() == 256)
            return *texture;
    std::abort();
}

const char pixels[256 * 256 * 4] = {};

constexpr Use uses[] = {
    {"Shadows", RAVOLT::shadowingOn},
    {"Bloom", RAVOLT::bloomingOn},
    {"DepthOfField", RAVOLT::DOFOn},
    {"Target", [] { RVOPENGL::getFbo(0); }},
    {"NameOfATexture", [] { EXPECT_NE(poolTexture().getGLId(), 0u); }},
    {"BindingOfATexture", [] { poolTexture().render(nullptr); }},
    {"UploadOfATexture", [] { poolTexture().update(); }},
    {"FilterOfATexture", [] { poolTexture().setFilter(true, true, true); }},
    {"PixelsOfATexture", [] { poolTexture().modify(pixels, false); }},
};

class ImagesOfThePool : public SilentEngineTest {
  protected:
    ImagesOfThePool() { settings.setShaders(true); }

    void TearDown() override {
        resetEffects();
        SilentEngineTest::TearDown();
    }

    // Of more than one pixel.
    static std::size_t images(const Calls &calls) {
        return calls
            .where([](const Call &call) {
                return call.name == "glTexImage2D" && call.arguments[3] > 1;
            })
            .size();
    }
};

class ImagesOfThePoolAt : public ImagesOfThePool, public testing::WithParamInterface<Use> {};

TEST_P(ImagesOfThePoolAt, AreAllocated) {
    ASSERT_TRUE(restart());
    EXPECT_GE(images(callsOf(GetParam().call)), 14u);
    EXPECT_EQ(images(callsOf([] { RVOPENGL::getFbo(0); })), 0u);
}

INSTANTIATE_TEST_SUITE_P(TheFirst, ImagesOfThePoolAt, testing::ValuesIn(uses),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(ImagesOfThePool, AreNotAllocatedByFramesWithoutThem) {
    const Calls calls = callsOf([&] {
        ASSERT_TRUE(restart());
        drawFrame(nullptr, new BrightSquare);
        RAVOLT::HDROn(); // nothing without bloom
        auto *texture = new RVTEXTURE;
        texture->create(1, 1, RV_TEXTURE_RGB);
        EXPECT_NE(texture->getGLId(), 0u);
        texture->render(nullptr);
        RAVOLT::free();
    });
    EXPECT_EQ(images(calls), 1u) << "the splash";
}

// No frame waits for them.
TEST_F(ImagesOfThePool, AreAllocatedAtAStartWithEffectsOn) {
    RAVOLT::bloomingOn();
    const Calls start = callsOf([&] { ASSERT_TRUE(restart()); });
    EXPECT_EQ(images(start), 1u + 14u);
    auto *square = new BrightSquare;
    EXPECT_EQ(images(callsOf([&] { drawFrame(nullptr, square); })), 0u);
}

TEST_F(ImagesOfThePool, AreAllocatedAtAStartThatForcesTheTarget) {
    settings.setForceFBO(true);
    EXPECT_EQ(images(callsOf([&] { ASSERT_TRUE(restart()); })), 1u + 14u);
}

// What is bound then is the application's own, for example in a node that it draws itself.
TEST_F(ImagesOfThePool, LeaveTheBindingsAsTheyAre) {
    ASSERT_TRUE(restart());
    recorder.setInteger(GL_ACTIVE_TEXTURE, GL_TEXTURE3);
    recorder.setInteger(GL_TEXTURE_BINDING_2D, 77);
    recorder.setInteger(GL_RENDERBUFFER_BINDING_EXT, 88);
    recorder.setInteger(GL_FRAMEBUFFER_BINDING_EXT, 99);
    const Calls calls = callsOf([] { RVOPENGL::getFbo(0); });
    EXPECT_EQ(calls.named("glBindTexture").back(), (Call{"glBindTexture", GL_TEXTURE_2D, 77}));
    EXPECT_EQ(calls.named("glActiveTextureARB").back(), (Call{"glActiveTextureARB", GL_TEXTURE3}));
    EXPECT_EQ(calls.named("glBindRenderbufferEXT").back(),
              (Call{"glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, 88}));
    EXPECT_EQ(calls.named("glBindFramebufferEXT").back(),
              (Call{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 99}));
}

TEST_F(ImagesOfThePool, AreThoseOfTheTargetsThatExist) {
    ASSERT_TRUE(restart());
    delete &poolTexture();
    EXPECT_EQ(images(callsOf([] { RVOPENGL::getFbo(0); })), 13u);
    ASSERT_TRUE(restart());
    RVFBO::cleanUp();
    EXPECT_EQ(images(callsOf([] { EXPECT_EQ(RVOPENGL::getFbo(0), nullptr); })), 0u);
    RAVOLT::free();
    EXPECT_TRUE(callsOf([] { EXPECT_EQ(RVOPENGL::getFbo(0), nullptr); }).empty());
}

// --- refused ones

class RefusedTarget : public SilentEngineTest, public testing::WithParamInterface<int> {
  protected:
    RefusedTarget() { settings.setShaders(true); }

    void TearDown() override {
        resetEffects();
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
};

TEST_P(RefusedTarget, IsReportedAndUsedAllTheSame) {
    recorder.failCalls("glCheckFramebufferStatusEXT", static_cast<unsigned int>(GetParam()), 1);
    const LogMark mark = markLog();
    ASSERT_TRUE(restart());
    const std::string log = logTextSince(mark);
    const std::string line = "   [!] FBO not complete (error 0) @ RVFBO::isOk\n";
    EXPECT_NE(
        log.find("      GL_EXT_framebuffer_object\n" + line + "      GL_ARB_occlusion_query\n"),
        std::string::npos)
        << log;
    EXPECT_EQ(problemsSince(mark).size(), 2u) << "the line, and no video memory was found";
    EXPECT_TRUE(RVOPENGL::useFBO());
    EXPECT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF() && RVSHADER::useShadows());
    for (int index = 0; index < 14; ++index) {
        ASSERT_NE(RVOPENGL::getFbo(index), nullptr) << index;
        EXPECT_NE(RVOPENGL::getFbo(index)->getTexture(), nullptr) << index;
    }
    RAVOLT::bloomingOn();
    RAVOLT::DOFOn();
    auto *square = new BrightSquare;
    const Calls calls = callsOf([&] { drawFrame(nullptr, square); });
    EXPECT_EQ(square->draws(RV_OPENGL_PROFILE_FULL), 1);
    EXPECT_EQ(square->draws(RV_OPENGL_PROFILE_ZPASS), 1);
    EXPECT_EQ(calls.named("glBindFramebufferEXT").back(),
              (Call{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}));
}

INSTANTIATE_TEST_SUITE_P(InTheOrderOfTheirMaking, RefusedTarget, testing::Range(0, 14));

} // namespace
// The driver may refuse an image when it allocates it, which is after the start.
TEST_F(ImagesOfThePool, AreReportedWhereTheyAreRefused) {
    ASSERT_TRUE(restart());
    recorder.failCalls("glCheckFramebufferStatusEXT", 3, 1);
    const LogMark mark = markLog();
    RAVOLT::bloomingOn();
    EXPECT_EQ(logTextSince(mark), "   [!] FBO not complete (error 0) @ RVFBO::isOk\n");
}

} // namespace ravolt::test
