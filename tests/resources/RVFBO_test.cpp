// Render targets: what is attached and current, the engine's pool as OpenGL reports it, the blur
// pyramid and the luminance against references.

#include "ravolt/RVFBO.h"

#include "engine/gl/screenQuad.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <SDL/SDL.h>

#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

using Box = std::array<int, 4>;

int textureLevel(GLenum name, int level = 0) {
    int value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
    return value;
}

int textureParameter(GLenum name) {
    int value = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    return value;
}

template <class Function> Function entryPoint(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

int attachmentOf(GLenum attachment, GLenum name) {
    static const auto ask = entryPoint<PFNGLGETFRAMEBUFFERATTACHMENTPARAMETERIVEXTPROC>(
        "glGetFramebufferAttachmentParameterivEXT");
    int value = 0;
    ask(GL_FRAMEBUFFER_EXT, attachment, name, &value);
    return value;
}

int renderBufferOf(GLenum name) {
    static const auto ask =
        entryPoint<PFNGLGETRENDERBUFFERPARAMETERIVEXTPROC>("glGetRenderbufferParameterivEXT");
    int value = 0;
    ask(GL_RENDERBUFFER_EXT, name, &value);
    return value;
}

RVTEXTURE *newTexture(unsigned int width, unsigned int height, unsigned int depth) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(true, false, true);
    texture->create(width, height, depth);
    return texture;
}

const std::string invalidParams = "   [!] Invalid params @ RVFBO::bindTexture\n";
const std::string invalidTexture = "   [!] Invalid operation @ RVFBO::bindTexture\n";
const std::string invalidBuffer = "   [!] Invalid operation @ RVFBO::bindBuffer\n";

class Target : public EngineTest {};

// --- registry

TEST_F(Target, ANewTargetIsEmptyAndNamedByItsIdentifier) {
    const auto *target = new RVFBO;
    auto *other = new RVFBO;
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 16u); // the engine's own among them
    EXPECT_EQ(std::string(other->getName()), "[fbo " + std::to_string(other->getId()) + "]");
    EXPECT_NE(other->getId(), target->getId());
    EXPECT_NE(other->getGLId(), 0u);
    EXPECT_NE(other->getGLId(), target->getGLId());
    EXPECT_EQ(other->getTexture(), nullptr);
    EXPECT_EQ(other->getSizeX(), 0);
    EXPECT_EQ(other->getSizeY(), 0);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
}

TEST_F(Target, TheDestructorReleasesBothObjectsAndTheIdentifierButNotTheTexture) {
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4);
    target->bindTexture(0, texture);
    target->bindRenderBuffer(2, 8, 8);
    RVFBO::unbind();
    const unsigned int id = target->getId(), glId = target->getGLId();
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    const Calls calls = callsOf([&] { delete target; });
    ASSERT_EQ(calls.names(),
              (std::vector<std::string>{"glDeleteRenderbuffersEXT", "glDeleteFramebuffersEXT"}));
    EXPECT_EQ(calls[1], (Call{"glDeleteFramebuffersEXT", 1, glId}));
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 14u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    EXPECT_TRUE(texture->isLoaded());
    const unsigned int next = zlfNewId();
    EXPECT_EQ(next, id);
    releaseId(next);
}

TEST_F(Target, CleanUpDeletesAllAndSaysHowMany) {
    new RVFBO;
    EXPECT_TRUE(RVFBO::cleanUp());
    EXPECT_LOGGED_EXACTLY("   15 fbo(s) released\n");
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
    EXPECT_FALSE(RVFBO::cleanUp());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Target, ANewTargetAtTheAddressOfTheCurrentOneIsNotCurrent) {
    alignas(RVFBO) unsigned char place[sizeof(RVFBO)];
    auto *target = new (place) RVFBO;
    target->render(nullptr);
    target->~RVFBO();
    EXPECT_EQ(RVFBO::getCurrent(), target); // compared and never followed
    target = new (place) RVFBO;
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(callsOf([&] { target->render(nullptr); }),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId()},
                     {"glViewport", 0, 0, 0, 0}}));
    RVFBO::unbind();
    target->~RVFBO();
}

// --- what is current

TEST_F(Target, RenderBindsOnceAndSetsTheViewport) {
    RVFBO *target = RVOPENGL::getFbo(6);
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(target->render(nullptr)); }),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId()},
                     {"glViewport", 0, 0, 32, 24}}));
    EXPECT_EQ(RVFBO::getCurrent(), target);
    glViewport(1, 2, 3, 4);
    EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(target->render(nullptr)); }).empty());
    EXPECT_EQ(viewportNow(), (Box{1, 2, 3, 4}));
}

TEST_F(Target, UnbindGoesBackToTheWindowOnceAndLeavesTheViewport) {
    EXPECT_TRUE(callsOf([] { RVFBO::unbind(); }).empty());
    RVOPENGL::getFbo(6)->render(nullptr);
    EXPECT_EQ(callsOf([] { RVFBO::unbind(); }),
              (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}}));
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(viewportNow(), (Box{0, 0, 32, 24}));
}

TEST_F(Target, WhatIsDrawnLandsInTheTargetAndNotInTheWindow) {
    RAVOLT::clear(true, true, false);
    const Pixel before = pixelAt(5, 5);
    RVOPENGL::getFbo(0)->render(nullptr);
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_PIXEL(pixelAt(5, 95), (Pixel{255, 0, 0}), 0);
    RVFBO::unbind();
    EXPECT_PIXEL(pixelAt(5, 5), before, 0);
}

// --- bindTexture

TEST_F(Target, BindTextureAttachesColourAndTakesTheSize) {
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(24, 20, 4);
    const Calls calls = callsOf([&] { EXPECT_TRUE(target->bindTexture(0, texture)); });
    EXPECT_EQ(calls, (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId()},
                            {"glViewport", 0, 0, 0, 0},
                            {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT,
                             GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, texture->getGLId(), 0}}));
    EXPECT_EQ(target->getTexture(), texture);
    EXPECT_EQ(target->getSizeX(), 24);
    EXPECT_EQ(target->getSizeY(), 20);
    EXPECT_EQ(viewportNow(), (Box{0, 0, 0, 0})) << "it follows with the next bind";
    RVFBO::unbind();
    target->render(nullptr);
    EXPECT_EQ(viewportNow(), (Box{0, 0, 24, 20}));
    EXPECT_TRUE(target->isOk());
}

TEST_F(Target, BindTextureAttachesDepthWithoutColour) {
    const int draw = integerOf(GL_DRAW_BUFFER), read = integerOf(GL_READ_BUFFER);
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(16, 16, 5);
    const Calls calls = callsOf([&] { EXPECT_TRUE(target->bindTexture(1, texture)); });
    EXPECT_EQ(calls, (Calls{{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId()},
                            {"glViewport", 0, 0, 0, 0},
                            {"glReadBuffer", GL_NONE},
                            {"glDrawBuffer", GL_NONE},
                            {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT,
                             GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D, texture->getGLId(), 0}}));
    EXPECT_TRUE(target->isOk());
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER), GL_NONE);
    RVFBO::unbind();
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER), draw) << "the window's own";
    EXPECT_EQ(integerOf(GL_READ_BUFFER), read);
}

TEST_F(Target, BindTextureRefusesNullAndOtherAttachments) {
    auto *target = new RVFBO;
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(target->bindTexture(0, nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY(invalidParams);
    RVTEXTURE *texture = newTexture(8, 8, 4);
    for (int attachment : {2, -1}) {
        EXPECT_FALSE(target->bindTexture(attachment, texture));
        EXPECT_LOGGED_EXACTLY(invalidTexture);
        EXPECT_EQ(target->getTexture(), nullptr);
        EXPECT_EQ(RVFBO::getCurrent(), target);
    }
}

// --- bindRenderBuffer

TEST_F(Target, BindRenderBufferReplacesAFormerOne) {
    auto *target = new RVFBO;
    target->bindTexture(0, newTexture(16, 12, 4));
    target->bindRenderBuffer(2, 16, 12);
    const Calls calls = callsOf([&] { EXPECT_TRUE(target->bindRenderBuffer(2, 10, 9)); });
    EXPECT_EQ(calls.names(),
              (std::vector<std::string>{"glDeleteRenderbuffersEXT", "glGenRenderbuffersEXT",
                                        "glBindRenderbufferEXT", "glRenderbufferStorageEXT",
                                        "glFramebufferRenderbufferEXT"}));
    EXPECT_TRUE(calls.contains(
        Call{"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, 10, 9}));
    EXPECT_EQ(target->getSizeX(), 10);
    EXPECT_EQ(target->getSizeY(), 9);
}

TEST_F(Target, BindRenderBufferRefusesOtherAttachmentsAndKeepsTheEmptyBuffer) {
    auto *target = new RVFBO;
    const Calls calls = callsOf([&] { EXPECT_FALSE(target->bindRenderBuffer(0, 64, 64)); });
    EXPECT_LOGGED_EXACTLY(invalidBuffer);
    EXPECT_FALSE(calls.contains("glRenderbufferStorageEXT"));
    EXPECT_EQ(target->getSizeX(), 0);
    RVFBO::unbind();
    EXPECT_TRUE(callsOf([&] { delete target; }).contains("glDeleteRenderbuffersEXT"));
}

// --- isOk

TEST_F(Target, AnIncompleteTargetIsReportedWithOpenGLsStatus) {
    auto *target = new RVFBO;
    EXPECT_FALSE(target->isOk());
    EXPECT_LOGGED_EXACTLY("   [!] FBO not complete (error " +
                          std::to_string(GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT_EXT) +
                          ") @ RVFBO::isOk\n");
    EXPECT_EQ(RVFBO::getCurrent(), target);
}

// --- without frame buffer objects

class NoTargets : public Target {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_EXT_framebuffer_object");
        Target::SetUp();
    }
};

TEST_F(NoTargets, TheClassIsAnEmptyShell) {
    ASSERT_FALSE(RVOPENGL::useFBO());
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4);
    float luminance = -3;
    recorder.start();
    EXPECT_EQ(target->getGLId(), 0u);
    EXPECT_FALSE(target->bindTexture(0, texture));
    EXPECT_FALSE(target->bindTexture(7, texture));
    EXPECT_FALSE(target->bindRenderBuffer(2, 8, 8));
    EXPECT_FALSE(target->bindRenderBuffer(0, 8, 8));
    EXPECT_FALSE(target->isOk());
    EXPECT_TRUE(target->render(nullptr));
    RVFBO::unbind();
    EXPECT_FALSE(target->blur(target, nullptr, 6));
    EXPECT_FALSE(target->computeLuminance(&luminance));
    delete target;
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(luminance, -3);
    EXPECT_FALSE((new RVFBO)->bindTexture(0, nullptr));
    EXPECT_LOGGED_EXACTLY(invalidParams);
}

TEST_F(NoTargets, TheEngineDrawsIntoTheWindowWhateverIsWanted) {
    settings.setForceFBO(true);
    restart();
    RAVOLT::bloomingOn();
    RAVOLT::DOFOn();
    drawFrame(nullptr, nullptr);
    RAVOLT::bloomingOff();
    RAVOLT::DOFOff();
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{51, 51, 153}), 0);
}

// A driver that names the extension and hands out all functions but one.
class HalfTargets : public Target, public testing::WithParamInterface<const char *> {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.nullEntryPoint(GetParam());
        settings.setForceFBO(true);
        Target::SetUp();
    }
};

TEST_P(HalfTargets, TheEngineDrawsIntoTheWindow) {
    EXPECT_TRUE(logTextSince(startMark).find("   [!] FBO incomplete extension!!\n") !=
                std::string::npos);
    EXPECT_TRUE(RVOPENGL::useFBO());
    ASSERT_NE(RVOPENGL::getFbo(0), nullptr);
    EXPECT_FALSE(RVOPENGL::getFbo(0)->isOk());
    drawFrame(nullptr, nullptr);
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{51, 51, 153}), 0);
}

INSTANTIATE_TEST_SUITE_P(EachFunction, HalfTargets,
                         testing::Values("glGenFramebuffersEXT", "glDeleteFramebuffersEXT",
                                         "glBindFramebufferEXT", "glFramebufferTexture2DEXT",
                                         "glGenRenderbuffersEXT", "glDeleteRenderbuffersEXT",
                                         "glBindRenderbufferEXT", "glRenderbufferStorageEXT",
                                         "glFramebufferRenderbufferEXT", "glGenerateMipmapEXT",
                                         "glCheckFramebufferStatusEXT"),
                         [](const auto &tested) { return std::string(tested.param); });

// --- the pool

struct Kind {
    int width, height;
    GLint format;
    bool depthBuffer = false;
};

// Of a scene of 64 by 48 and a shadow map of 64.
constexpr Kind kinds[] = {
    {64, 48, GL_RGBA16F_ARB, true},
    {64, 48, GL_RGBA16F_ARB, true},
    {64, 64, 0},
    {256, 256, GL_RGBA16F_ARB},
    {64, 48, GL_RGBA16F_ARB},
    {64, 48, GL_RGBA16F_ARB},
    {32, 24, GL_RGBA},
    {32, 24, GL_RGBA},
    {16, 12, GL_RGBA},
    {16, 12, GL_RGBA},
    {8, 6, GL_RGBA},
    {8, 6, GL_RGBA},
    {4, 3, GL_RGBA},
    {4, 3, GL_RGBA},
};

class Pool : public Target, public testing::WithParamInterface<int> {};

TEST_P(Pool, IsAsItsTableSays) {
    const int index = GetParam();
    const Kind kind = kinds[index];
    const bool isMap = index == 2;
    RVFBO *target = RVOPENGL::getFbo(index);
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->getSizeX(), kind.width);
    EXPECT_EQ(target->getSizeY(), kind.height);
    EXPECT_TRUE(target->isOk());

    RVTEXTURE *texture = target->getTexture();
    ASSERT_TRUE(texture->render(nullptr));
    EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH), kind.width);
    EXPECT_EQ(textureLevel(GL_TEXTURE_HEIGHT), kind.height);
    if (isMap) {
        EXPECT_GE(textureLevel(GL_TEXTURE_DEPTH_SIZE), 16);
        EXPECT_EQ(textureParameter(GL_TEXTURE_COMPARE_MODE), GL_COMPARE_R_TO_TEXTURE);
    } else {
        EXPECT_EQ(textureLevel(GL_TEXTURE_INTERNAL_FORMAT), kind.format);
        EXPECT_EQ(textureLevel(GL_TEXTURE_RED_SIZE), kind.format == GL_RGBA ? 8 : 16);
        EXPECT_EQ(textureLevel(GL_TEXTURE_ALPHA_SIZE), kind.format == GL_RGBA ? 8 : 16);
    }
    EXPECT_EQ(textureParameter(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(GL_TEXTURE_MIN_FILTER),
              index == 3 ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);

    const GLenum place = isMap ? GL_DEPTH_ATTACHMENT_EXT : GL_COLOR_ATTACHMENT0_EXT;
    EXPECT_EQ(attachmentOf(place, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT),
              static_cast<int>(texture->getGLId()));
    const int buffer = kind.depthBuffer ? attachmentOf(GL_DEPTH_ATTACHMENT_EXT,
                                                       GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT)
                                        : 0;
    EXPECT_EQ(attachmentOf(GL_DEPTH_ATTACHMENT_EXT, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE_EXT),
              kind.depthBuffer ? GL_RENDERBUFFER_EXT
              : isMap          ? GL_TEXTURE
                               : GL_NONE);
    if (kind.depthBuffer) {
        RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, static_cast<GLuint>(buffer));
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_WIDTH_EXT), kind.width);
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_HEIGHT_EXT), kind.height);
        EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_DEPTH_SIZE_EXT), 24);
    }
}

INSTANTIATE_TEST_SUITE_P(EachTarget, Pool, testing::Range(0, 14));

TEST_F(Target, ThePoolIsThereWithoutShadersAndCountsForNothing) {
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 14u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 14u);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    EXPECT_EQ(RVTEXTURE::getUsedMemory(), 0);
}

TEST_F(Target, TheCollectorSparesThePool) {
    RVTEXTURE::garbageCollect(~0ul);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 14u);
    EXPECT_TRUE(RVOPENGL::getFbo(0)->isOk());
}

TEST_F(Target, ATextureThatTheCollectorThrowsOutComesBackWithItsTarget) {
    for (int index = 0; index < 14; ++index) {
        RVFBO *target = RVOPENGL::getFbo(index);
        target->getTexture()->unload(true);
        ASSERT_FALSE(target->getTexture()->isLoaded());
        markLog();
        target->render(nullptr);
        EXPECT_TRUE(target->getTexture()->isLoaded()) << index;
        EXPECT_TRUE(target->isOk()) << index;
        EXPECT_NOTHING_LOGGED();
        EXPECT_EQ(target->getTexture()->getSizeX(), static_cast<unsigned int>(target->getSizeX()));
    }
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    RVFBO::unbind();
}

TEST_F(Target, ATargetWhoseTextureIsDeletedHasNone) {
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4);
    target->bindTexture(0, texture);
    RVFBO::unbind();
    delete texture;
    EXPECT_TRUE(target->render(nullptr));
    EXPECT_EQ(target->getTexture(), nullptr);
    RVFBO::unbind();
}

TEST_F(Target, ASecondStartMakesAFreshPoolThatIsNotTakenForBound) {
    RVOPENGL::getFbo(0)->render(nullptr);
    ASSERT_TRUE(restart());
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    for (int index = 0; index < 14; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->isOk()) << index;
    EXPECT_TRUE(problemsSince(logMark()).empty());
}

// --- pictures in targets

// Rows from the lowest, four floats a pixel.
struct Image {
    int width, height;
    std::vector<float> values;

    Image(int itsWidth, int itsHeight)
        : width(itsWidth), height(itsHeight),
          values(static_cast<std::size_t>(itsWidth * itsHeight * 4)) {}

    float &at(int x, int y, int channel) {
        return values[static_cast<std::size_t>((y * width + x) * 4 + channel)];
    }
    double clamped(int x, int y, int channel) const {
        x = std::min(std::max(x, 0), width - 1);
        y = std::min(std::max(y, 0), height - 1);
        return values[static_cast<std::size_t>((y * width + x) * 4 + channel)];
    }
    // As a bilinear filter reads it; (u, v) from 0 to 1.
    double sample(double u, double v, int channel) const {
        const double x = u * width - 0.5, y = v * height - 0.5;
        const int left = static_cast<int>(std::floor(x)), low = static_cast<int>(std::floor(y));
        const double s = x - left, t = y - low;
        return (clamped(left, low, channel) * (1 - s) + clamped(left + 1, low, channel) * s) *
                   (1 - t) +
               (clamped(left, low + 1, channel) * (1 - s) +
                clamped(left + 1, low + 1, channel) * s) *
                   t;
    }
};

// On unit 0, which need not be the selected one when the texture is there already.
void bind(RVFBO *target) {
    RVTEXTURE::texturingOn(0);
    target->getTexture()->render(nullptr);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
}

Image imageOf(RVFBO *target) {
    Image image(target->getSizeX(), target->getSizeY());
    bind(target);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, image.values.data());
    return image;
}

void put(const Image &image, RVFBO *target) {
    bind(target);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, image.width, image.height, GL_RGBA, GL_FLOAT,
                    image.values.data());
}

Image uniform(int width, int height, std::array<float, 3> color) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            for (int channel = 0; channel < 3; ++channel)
                image.at(x, y, channel) = color[static_cast<std::size_t>(channel)];
            image.at(x, y, 3) = 1;
        }
    return image;
}

// Blobs that have no symmetry, so that a mirrored or turned result differs; from 0 to 0.9.
Image pattern(int width, int height) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double u = (x + 0.5) / width, v = (y + 0.5) / height;
            image.at(x, y, 0) = u > 0.6 && v > 0.7 ? 0.9f : 0.05f;
            image.at(x, y, 1) = static_cast<float>(0.9 * u * v);
            image.at(x, y, 2) = (x / 5 + y / 3) % 2 ? 0.5f : 0.0f;
            image.at(x, y, 3) = static_cast<float>(v);
        }
    return image;
}

// Without anisotropy, which a driver may filter by even where a texture is seen head-on.
class ShadedTarget : public Target {
  protected:
    ShadedTarget() { settings.setShaders(true); }

    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_EXT_texture_filter_anisotropic");
        Target::SetUp();
        ASSERT_TRUE(RVSHADER::useBloom()) << logTextSince(startMark);
        glDisable(GL_DEPTH_TEST);
    }

    void TearDown() override {
        glEnable(GL_DEPTH_TEST);
        Target::TearDown();
    }
};

// Five taps of a fifth each along one axis, in steps of the target's pixels.
double taps(const Image &source, const Image &target, int x, int y, bool alongX, int channel) {
    double sum = 0;
    for (int tap = -2; tap <= 2; ++tap) {
        const double u = (x + 0.5 + (alongX ? tap : 0)) / target.width;
        const double v = (y + 0.5 + (alongX ? 0 : tap)) / target.height;
        sum += 0.2 * source.sample(u, v, channel);
    }
    return sum;
}

// The largest difference of a colour channel.
double unlike(const Image &source, const Image &result, bool alongX) {
    double largest = 0;
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                largest = std::max(largest, std::abs(taps(source, result, x, y, alongX, channel) -
                                                     result.clamped(x, y, channel)));
    return largest;
}

// Half a step of eight bits, and what eight bits of a filter's weights leave.
constexpr double byteStep = 0.5 / 255 + 0.006;

TEST_F(ShadedTarget, BlurIsThePyramidOfFiveTapsAlongYThenX) {
    const Image source = pattern(64, 48);
    put(source, RVOPENGL::getFbo(4));
    EXPECT_TRUE(RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), RVSHADER::bloomCombine, 6));
    EXPECT_NOTHING_LOGGED();

    Image below = source;
    for (int level = 6; level < 14; level += 2) {
        const Image result = imageOf(RVOPENGL::getFbo(level));
        const Image scratch = imageOf(RVOPENGL::getFbo(level + 1));
        EXPECT_LT(unlike(below, scratch, false), byteStep) << level;
        EXPECT_LT(unlike(scratch, result, true), byteStep) << level;
        below = result;
    }
}

TEST_F(ShadedTarget, BlurCombinesTheLevelsByTheGivenProgram) {
    const Image source = pattern(64, 48);
    // The second program must not read what the first has left on the units.
    for (const auto &[combine, weight] :
         {std::pair{RVSHADER::bloomCombine, 1.0}, {RVSHADER::dofCombine, 0.25}}) {
        put(source, RVOPENGL::getFbo(4));
        EXPECT_TRUE(RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), combine, 6));
        const Image result = imageOf(RVOPENGL::getFbo(1));
        const Image levels[] = {imageOf(RVOPENGL::getFbo(6)), imageOf(RVOPENGL::getFbo(8)),
                                imageOf(RVOPENGL::getFbo(10)), imageOf(RVOPENGL::getFbo(12))};
        double largest = 0;
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                for (int channel = 0; channel < 3; ++channel) {
                    double sum = 0;
                    for (const Image &level : levels)
                        sum += weight * level.sample((x + 0.5) / 64, (y + 0.5) / 48, channel);
                    largest = std::max(largest, std::abs(sum - result.clamped(x, y, channel)));
                }
        EXPECT_LT(largest, 0.02) << combine->getName();
        EXPECT_EQ(result.clamped(20, 20, 3), 1);
    }
}

TEST_F(ShadedTarget, AfterBlurTheWindowIsCurrentAndUnitsOneToThreeAreOff) {
    const auto projection = [] {
        std::array<float, 16> matrix{};
        glGetFloatv(GL_PROJECTION_MATRIX, matrix.data());
        return matrix;
    };
    const auto before = projection();
    RVTEXTURE::texturingOn(0);
    RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), RVSHADER::bloomCombine, 6);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    for (unsigned int unit = 0; unit < 4; ++unit) {
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + unit);
        EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), unit == 0 ? GL_TRUE : GL_FALSE) << unit;
    }
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    EXPECT_EQ(projection(), before);
    EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
}

TEST_F(ShadedTarget, BlurKeepsWhatTheColourMaskCloses) {
    Image depths = uniform(64, 48, {0, 0, 0});
    for (int y = 0; y < 48; ++y)
        depths.at(10, y, 3) = 0.25f;
    put(depths, RVOPENGL::getFbo(1));
    put(pattern(64, 48), RVOPENGL::getFbo(4));
    glColorMask(1, 1, 1, 0);
    RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), RVSHADER::bloomCombine, 6);
    glColorMask(1, 1, 1, 1);
    const Image result = imageOf(RVOPENGL::getFbo(1));
    EXPECT_EQ(result.clamped(10, 20, 3), 0.25);
    EXPECT_EQ(result.clamped(11, 20, 3), 1);
    EXPECT_GT(result.clamped(11, 20, 1), 0);
}

TEST_F(ShadedTarget, BlurWithoutWhatItNeedsDrawsNothing) {
    RVFBO *source = RVOPENGL::getFbo(4), *target = RVOPENGL::getFbo(1);
    auto *empty = new RVFBO;
    recorder.start();
    EXPECT_FALSE(source->blur(nullptr, RVSHADER::bloomCombine, 6));
    EXPECT_FALSE(source->blur(target, nullptr, 6));
    EXPECT_FALSE(source->blur(target, RVSHADER::bloomCombine, 7));
    EXPECT_FALSE(source->blur(target, RVSHADER::bloomCombine, -1));
    EXPECT_FALSE(empty->blur(target, RVSHADER::bloomCombine, 6));
    EXPECT_TRUE(recorder.stop().empty());
}

// --- luminance

constexpr double luminanceOf(double red, double green, double blue) {
    return 0.3 * red + 0.59 * green + 0.11 * blue;
}

TEST_F(ShadedTarget, TheLuminanceOfOneColourIsItsOwnAlsoAboveWhite) {
    for (const std::array<float, 3> &color :
         {std::array{0.5f, 0.25f, 1.0f}, {4.0f, 2.0f, 8.0f}, {0.0f, 0.0f, 0.0f}}) {
        put(uniform(64, 48, color), RVOPENGL::getFbo(0));
        float luminance = -1;
        // Whichever target is asked, the scene is measured.
        EXPECT_TRUE(RVOPENGL::getFbo(9)->computeLuminance(&luminance));
        const double wanted = luminanceOf(color[0], color[1], color[2]);
        EXPECT_NEAR(luminance, wanted, 0.005 * wanted + 1e-6);
    }
}

TEST_F(ShadedTarget, TheLuminanceIsTheMeanOfThePicture) {
    Image image = uniform(64, 48, {0, 0, 0});
    for (int y = 0; y < 12; ++y) // a quarter, at one edge
        for (int x = 0; x < 64; ++x)
            image.at(x, y, 1) = 2;
    put(image, RVOPENGL::getFbo(0));
    float luminance = -1;
    EXPECT_TRUE(RVOPENGL::getFbo(0)->computeLuminance(&luminance));
    EXPECT_NEAR(luminance, 0.25 * 2 * 0.59, 0.01);
}

TEST_F(ShadedTarget, TheLuminanceOfTheFrameBeforeDoesNotCount) {
    float luminance = -1;
    for (const float value : {8.0f, 0.5f, 2.0f}) {
        put(uniform(64, 48, {value, value, value}), RVOPENGL::getFbo(0));
        RVOPENGL::getFbo(0)->computeLuminance(&luminance);
        EXPECT_NEAR(luminance, value, 0.005 * value);
    }
}

// Its calls stand in tests/engine/wholeFrame_test.cpp.
TEST_F(ShadedTarget, ComputeLuminanceReadsOnePixelAndGoesBackToTheWindow) {
    float luminance = 0;
    for (float *result : {&luminance, static_cast<float *>(nullptr)}) {
        const Calls calls =
            callsOf([&] { EXPECT_TRUE(RVOPENGL::getFbo(0)->computeLuminance(result)); });
        EXPECT_EQ(calls.count("glReadPixels"), 1u);
        EXPECT_EQ(RVFBO::getCurrent(), nullptr);
        EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
    }
}

} // namespace
} // namespace ravolt::test
