// Render targets: attachments, the current target, the engine's pool as OpenGL reports it, the blur
// pyramid and the luminance against references.

#include "ravolt/RVFBO.h"

#include "engine/gl/screenQuad.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/resources/targetImages.h"
#include "tests/support/callNames.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glObjects.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <array>
#include <climits>
#include <cmath>
#include <new>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

using Box = std::array<int, 4>;
using Size = std::pair<int, int>;

Size sizeOf(const RVFBO *target) { return {target->getSizeX(), target->getSizeY()}; }

RVTEXTURE *newTexture(unsigned int width, unsigned int height, unsigned int depth) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(true, false, true);
    texture->create(width, height, depth);
    return texture;
}

Calls renderCalls(RVFBO *target) {
    return callsOf([&] { EXPECT_TRUE(target->render(nullptr)); });
}

Call bindCall(const RVFBO *target) {
    return {"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target ? target->getGLId() : 0};
}

const std::string invalidParams = "   [!] Invalid params @ RVFBO::bindTexture\n";

class Target : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }
};

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
    EXPECT_EQ(sizeOf(other), Size(0, 0));
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
    ASSERT_EQ(namesOf(calls), "glDeleteRenderbuffersEXT glDeleteFramebuffersEXT");
    EXPECT_EQ(calls[1], (Call{"glDeleteFramebuffersEXT", 1, glId}));
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 14u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    EXPECT_TRUE(texture->isLoaded());
    const unsigned int next = zlfNewId();
    EXPECT_EQ(next, id);
    releaseId(next);
}

TEST_F(Target, CleanUpDeletesAllAndLogsTheirNumber) {
    new RVFBO;
    EXPECT_TRUE(RVFBO::cleanUp());
    EXPECT_LOGGED_EXACTLY("   15 fbo(s) released\n");
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
    EXPECT_FALSE(RVFBO::cleanUp());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Target, ANewTargetAtTheAddressOfTheCurrentOneIsNotCurrent) {
    alignas(RVFBO) unsigned char storage[sizeof(RVFBO)];
    auto *target = new (storage) RVFBO;
    target->render(nullptr);
    target->~RVFBO();
    EXPECT_EQ(RVFBO::getCurrent(), target); // compared and never followed
    target = new (storage) RVFBO;
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(renderCalls(target), (Calls{bindCall(target), {"glViewport", 0, 0, 0, 0}}));
    RVFBO::unbind();
    target->~RVFBO();
}

// --- the current target

TEST_F(Target, RenderBindsOnceWithItsViewportAndUnbindTheWindowOnceWithout) {
    const auto unbind = [] { RVFBO::unbind(); };
    RVFBO *target = RVOPENGL::getFbo(6);
    EXPECT_EQ(renderCalls(target), (Calls{bindCall(target), {"glViewport", 0, 0, 32, 24}}));
    EXPECT_EQ(RVFBO::getCurrent(), target);
    glViewport(1, 2, 3, 4);
    EXPECT_TRUE(renderCalls(target).empty());
    EXPECT_EQ(callsOf(unbind), (Calls{bindCall(nullptr)}));
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(viewportNow(), (Box{1, 2, 3, 4}));
    EXPECT_TRUE(callsOf(unbind).empty());
}

TEST_F(Target, DrawingGoesToTheTargetAndNotToTheWindow) {
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

TEST_F(Target, BindTextureAttachesColourAndSetsTheSize) {
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(24, 20, 4);
    const Calls calls = callsOf([&] { EXPECT_TRUE(target->bindTexture(0, texture)); });
    EXPECT_EQ(calls, (Calls{bindCall(target),
                            {"glViewport", 0, 0, 0, 0},
                            {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT,
                             GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, texture->getGLId(), 0}}));
    EXPECT_EQ(target->getTexture(), texture);
    EXPECT_EQ(sizeOf(target), Size(24, 20));
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
    EXPECT_EQ(calls, (Calls{bindCall(target),
                            {"glViewport", 0, 0, 0, 0},
                            {"glReadBuffer", GL_NONE},
                            {"glDrawBuffer", GL_NONE},
                            {"glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT,
                             GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D, texture->getGLId(), 0}}));
    EXPECT_TRUE(target->isOk());
    RVFBO::unbind();
    EXPECT_EQ(integerOf(GL_DRAW_BUFFER), draw) << "the window's own";
    EXPECT_EQ(integerOf(GL_READ_BUFFER), read);
}

// --- bindRenderBuffer

TEST_F(Target, BindRenderBufferReplacesAFormerOne) {
    auto *target = new RVFBO;
    target->bindTexture(0, newTexture(16, 12, 4));
    target->bindRenderBuffer(2, 16, 12);
    const Calls calls = callsOf([&] { EXPECT_TRUE(target->bindRenderBuffer(2, 10, 9)); });
    EXPECT_EQ(namesOf(calls),
              "glDeleteRenderbuffersEXT glGenRenderbuffersEXT glBindRenderbufferEXT "
              "glRenderbufferStorageEXT glFramebufferRenderbufferEXT");
    EXPECT_EQ(calls[3],
              (Call{"glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, 10, 9}));
    EXPECT_EQ(sizeOf(target), Size(10, 9));
}

// On purpose: a refused render buffer is stored, empty.
TEST_F(Target, NullOtherAttachmentsAndIncompleteTargetsAreLogged) {
    auto *target = new RVFBO;
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(target->bindTexture(0, nullptr)); }).empty());
    EXPECT_LOGGED_EXACTLY(invalidParams);
    RVTEXTURE *texture = newTexture(8, 8, 4);
    for (int attachment : {2, -1}) {
        EXPECT_FALSE(target->bindTexture(attachment, texture));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid operation @ RVFBO::bindTexture\n");
        EXPECT_EQ(target->getTexture(), nullptr);
        EXPECT_EQ(RVFBO::getCurrent(), target);
    }
    EXPECT_FALSE(target->isOk());
    EXPECT_LOGGED_EXACTLY("   [!] FBO not complete (error " +
                          std::to_string(GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT_EXT) +
                          ") @ RVFBO::isOk\n");
    const Calls calls = callsOf([&] { EXPECT_FALSE(target->bindRenderBuffer(0, 64, 64)); });
    EXPECT_LOGGED_EXACTLY("   [!] Invalid operation @ RVFBO::bindBuffer\n");
    EXPECT_FALSE(calls.contains("glRenderbufferStorageEXT"));
    EXPECT_EQ(sizeOf(target), Size(0, 0));
    EXPECT_EQ(RVFBO::getCurrent(), target);
    RVFBO::unbind();
    EXPECT_TRUE(callsOf([&] { delete target; }).contains("glDeleteRenderbuffersEXT"));
}

// --- without frame buffer objects

// A frame in the window has the background's colour.
void expectFrameInWindow() {
    drawFrame(nullptr, nullptr);
    EXPECT_PIXEL(pixelAt(64, 48), (Pixel{51, 51, 153}), 0);
}

class NoTargets : public Target {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_EXT_framebuffer_object");
        Target::SetUp();
    }
};

TEST_F(NoTargets, EveryFunctionIsInoperative) {
    ASSERT_FALSE(RVOPENGL::useFBO());
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4);
    float luminance = -3;
    recorder.start();
    EXPECT_EQ(target->getGLId(), 0u);
    for (const int attachment : {0, 2, 7}) {
        EXPECT_FALSE(target->bindTexture(attachment, texture));
        EXPECT_FALSE(target->bindRenderBuffer(attachment, 8, 8));
    }
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

TEST_F(NoTargets, TheEngineDrawsIntoTheWindowWhateverTheSettings) {
    settings.setForceFBO(true);
    restart();
    RAVOLT::bloomingOn();
    RAVOLT::DOFOn();
    expectFrameInWindow();
    RAVOLT::bloomingOff();
    RAVOLT::DOFOff();
}

// A driver that names the extension and has all its functions but one.
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
    EXPECT_NE(logTextSince(startMark).find("   [!] FBO incomplete extension!!\n"),
              std::string::npos);
    EXPECT_TRUE(RVOPENGL::useFBO());
    ASSERT_NE(RVOPENGL::getFbo(0), nullptr);
    EXPECT_FALSE(RVOPENGL::getFbo(0)->isOk());
    expectFrameInWindow();
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

// With a scene of 64 by 48 and a shadow map of 64.
TEST_F(Target, ThePoolHasItsSizesFormatsAndBuffers) {
    const struct {
        int index, width, height;
        GLint format;
        bool depthBuffer = false;
    } cases[] = {{0, 64, 48, GL_RGBA16F_ARB, true},
                 {1, 64, 48, GL_RGBA16F_ARB, true},
                 {2, 64, 64, 0},
                 {3, 256, 256, GL_RGBA16F_ARB},
                 {4, 64, 48, GL_RGBA16F_ARB},
                 {5, 64, 48, GL_RGBA16F_ARB},
                 {6, 32, 24, GL_RGBA},
                 {7, 32, 24, GL_RGBA},
                 {8, 16, 12, GL_RGBA},
                 {9, 16, 12, GL_RGBA},
                 {10, 8, 6, GL_RGBA},
                 {11, 8, 6, GL_RGBA},
                 {12, 4, 3, GL_RGBA},
                 {13, 4, 3, GL_RGBA}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.index);
        const bool isMap = c.index == 2;
        RVFBO *target = RVOPENGL::getFbo(c.index);
        ASSERT_NE(target, nullptr);
        EXPECT_EQ(sizeOf(target), Size(c.width, c.height));
        EXPECT_TRUE(target->isOk());

        RVTEXTURE *texture = target->getTexture();
        ASSERT_TRUE(texture->render(nullptr));
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH), c.width);
        EXPECT_EQ(textureLevel(GL_TEXTURE_HEIGHT), c.height);
        if (isMap) {
            EXPECT_GE(textureLevel(GL_TEXTURE_DEPTH_SIZE), 16);
            EXPECT_EQ(textureParameter(GL_TEXTURE_COMPARE_MODE), GL_COMPARE_R_TO_TEXTURE);
        } else {
            const int bits = c.format == GL_RGBA ? 8 : 16;
            EXPECT_EQ(textureLevel(GL_TEXTURE_INTERNAL_FORMAT), c.format);
            EXPECT_EQ(textureLevel(GL_TEXTURE_RED_SIZE), bits);
            EXPECT_EQ(textureLevel(GL_TEXTURE_ALPHA_SIZE), bits);
        }
        EXPECT_EQ(textureParameter(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
        EXPECT_EQ(textureParameter(GL_TEXTURE_MIN_FILTER),
                  c.index == 3 ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
        EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);

        EXPECT_EQ(attachedName(isMap ? GL_DEPTH_ATTACHMENT_EXT : GL_COLOR_ATTACHMENT0_EXT),
                  static_cast<int>(texture->getGLId()));
        EXPECT_EQ(attachedType(GL_DEPTH_ATTACHMENT_EXT), c.depthBuffer ? GL_RENDERBUFFER_EXT
                                                         : isMap       ? GL_TEXTURE
                                                                       : GL_NONE);
        if (c.depthBuffer) {
            const int buffer = attachedName(GL_DEPTH_ATTACHMENT_EXT);
            RVOPENGL::glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, static_cast<GLuint>(buffer));
            EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_WIDTH_EXT), c.width);
            EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_HEIGHT_EXT), c.height);
            EXPECT_EQ(renderBufferOf(GL_RENDERBUFFER_DEPTH_SIZE_EXT), 24);
        }
        RVFBO::unbind();
    }
}

TEST_F(Target, ThePoolExistsWithoutShadersAndIsNeitherCountedNorCollected) {
    RVTEXTURE::garbageCollect(~0ul);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 14u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 14u);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    EXPECT_EQ(RVTEXTURE::getUsedMemory(), 0);
}

TEST_F(Target, AnEvictedTextureIsReloadedWithItsTargetAndADeletedOneDetached) {
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

    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4);
    target->bindTexture(0, texture);
    RVFBO::unbind();
    delete texture;
    EXPECT_TRUE(target->render(nullptr));
    EXPECT_EQ(target->getTexture(), nullptr);
    RVFBO::unbind();
}

// OpenGL may give a name that was deleted to the next upload: which one was uploaded again does not
// show in the names.
TEST_F(Target, ItsTextureIsAttachedAgainAfterAnyUploadWasDeleted) {
    auto *target = new RVFBO;
    RVTEXTURE *texture = newTexture(8, 8, 4), *other = newTexture(8, 8, 4);
    target->bindTexture(0, texture);
    RVFBO::unbind();
    const auto attachments = [&] {
        RVFBO::unbind();
        return callsOf([&] { target->render(nullptr); }).count("glFramebufferTexture2DEXT");
    };
    EXPECT_EQ(attachments(), 0u);
    other->unload(true);
    EXPECT_EQ(attachments(), 1u);
    EXPECT_EQ(attachments(), 0u);
    texture->setFilter(false, false, true);
    EXPECT_EQ(attachments(), 1u);
    RVFBO::unbind();
}

TEST_F(Target, ARestartMakesAPoolOfWhichNoneIsCurrent) {
    RVOPENGL::getFbo(0)->render(nullptr);
    ASSERT_TRUE(restart());
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    for (int index = 0; index < 14; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->isOk()) << index;
    EXPECT_TRUE(problemsSince(logMark()).empty());
}

// --- pictures in targets

void upload(const Image &image, int index) {
    bind(RVOPENGL::getFbo(index));
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, image.width, image.height, GL_RGBA, GL_FLOAT,
                    image.values.data());
}

Image uniform(std::array<float, 3> color) {
    Image image{64, 48};
    for (std::size_t i = 0; i < image.values.size(); ++i)
        image.values[i] = i % 4 == 3 ? 1 : color[i % 4];
    return image;
}

// Blobs that have no symmetry, so that a mirrored or rotated result differs; from 0 to 0.9.
Image pattern() {
    Image image{64, 48};
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            const double u = (x + 0.5) / 64, v = (y + 0.5) / 48;
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
        if (IsSkipped())
            return;
        ASSERT_TRUE(RVSHADER::useBloom()) << logTextSince(startMark);
        glDisable(GL_DEPTH_TEST);
    }

    void TearDown() override {
        glEnable(GL_DEPTH_TEST);
        Target::TearDown();
    }

    static bool blur(RVSHADER *combine) {
        return RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), combine, 6);
    }

    static float luminance(int index = 0) {
        float result = -1;
        EXPECT_TRUE(RVOPENGL::getFbo(index)->computeLuminance(&result));
        return result;
    }
};

// The largest difference of a colour channel.
double unlike(const Image &source, const Image &result, bool alongX) {
    double largest = 0;
    forEachValue(result, [&](int x, int y, int channel) {
        largest = std::max(largest, std::abs(taps(source, result, x, y, alongX, channel) -
                                             result.clamped(x, y, channel)));
    });
    return largest;
}

// Half a step of eight bits, and the error of a filter's weights of eight bits.
constexpr double byteStep = 0.5 / 255 + 0.006;

TEST_F(ShadedTarget, BlurIsThePyramidOfFiveTapsAlongYThenX) {
    const Image source = pattern();
    upload(source, 4);
    EXPECT_TRUE(blur(RVSHADER::bloomCombine));
    EXPECT_NOTHING_LOGGED();

    Image below = source;
    for (int level = 6; level < 14; level += 2) {
        const Image result = imageOf(level), scratch = imageOf(level + 1);
        EXPECT_LT(unlike(below, scratch, false), byteStep) << level;
        EXPECT_LT(unlike(scratch, result, true), byteStep) << level;
        below = result;
    }
}

TEST_F(ShadedTarget, BlurCombinesTheLevelsByTheGivenProgram) {
    // The second program must not read what the first has bound on the units.
    for (const auto &[combine, weight] :
         {std::pair{RVSHADER::bloomCombine, 1.0}, {RVSHADER::dofCombine, 0.25}}) {
        upload(pattern(), 4);
        EXPECT_TRUE(blur(combine));
        const Image result = imageOf(1);
        const Image levels[] = {imageOf(6), imageOf(8), imageOf(10), imageOf(12)};
        double largest = 0;
        forEachValue(result, [&](int x, int y, int channel) {
            double sum = 0;
            for (const Image &level : levels)
                sum += level.sample((x + 0.5) / 64, (y + 0.5) / 48, channel);
            largest = std::max(largest, std::abs(weight * sum - result.clamped(x, y, channel)));
        });
        EXPECT_LT(largest, 0.02) << combine->getName();
        EXPECT_EQ(result.clamped(20, 20, 3), 1);
    }
}

TEST_F(ShadedTarget, AfterBlurTheWindowIsCurrentAndUnitsOneToThreeAreOff) {
    const auto before = matrixOf(GL_PROJECTION_MATRIX);
    RVTEXTURE::texturingOn(0);
    blur(RVSHADER::bloomCombine);
    EXPECT_EQ(RVFBO::getCurrent(), nullptr);
    for (unsigned int unit = 0; unit < 4; ++unit) {
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + unit);
        EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), unit == 0 ? GL_TRUE : GL_FALSE) << unit;
    }
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), before);
    EXPECT_EQ(integerOf(GL_PROJECTION_STACK_DEPTH), 1);
    EXPECT_EQ(integerOf(GL_MATRIX_MODE), GL_MODELVIEW);
}

TEST_F(ShadedTarget, BlurDoesNotWriteMaskedChannels) {
    Image depths = uniform({0, 0, 0});
    for (int y = 0; y < 48; ++y)
        depths.at(10, y, 3) = 0.25f;
    upload(depths, 1);
    upload(pattern(), 4);
    glColorMask(1, 1, 1, 0);
    blur(RVSHADER::bloomCombine);
    glColorMask(1, 1, 1, 1);
    const Image result = imageOf(1);
    EXPECT_EQ(result.clamped(10, 20, 3), 0.25);
    EXPECT_EQ(result.clamped(11, 20, 3), 1);
    EXPECT_GT(result.clamped(11, 20, 1), 0);
}

TEST_F(ShadedTarget, BlurWithoutItsParametersDrawsNothing) {
    RVFBO *source = RVOPENGL::getFbo(4), *target = RVOPENGL::getFbo(1);
    auto *empty = new RVFBO;
    recorder.start();
    EXPECT_FALSE(source->blur(nullptr, RVSHADER::bloomCombine, 6));
    EXPECT_FALSE(source->blur(target, nullptr, 6));
    EXPECT_FALSE(source->blur(target, RVSHADER::bloomCombine, 7));
    for (const int first : {INT_MIN, -1, INT_MAX - 7, INT_MAX})
        EXPECT_FALSE(source->blur(target, RVSHADER::bloomCombine, first));
    EXPECT_FALSE(source->blur(target, RVSHADER::bloomCombine, -1));
    EXPECT_FALSE(empty->blur(target, RVSHADER::bloomCombine, 6));
    EXPECT_TRUE(recorder.stop().empty());
}

// --- luminance

// With any target the scene is measured, without those of earlier frames.
TEST_F(ShadedTarget, TheLuminanceOfOneColourIsItsOwnAlsoAboveWhite) {
    for (const std::array<float, 3> &color : {std::array{0.5f, 0.25f, 1.0f},
                                              {4.0f, 2.0f, 8.0f},
                                              {0.0f, 0.0f, 0.0f},
                                              {2.0f, 2.0f, 2.0f}}) {
        upload(uniform(color), 0);
        const double expected = 0.3 * color[0] + 0.59 * color[1] + 0.11 * color[2];
        EXPECT_NEAR(luminance(9), expected, 0.005 * expected + 1e-6);
    }
}

TEST_F(ShadedTarget, TheLuminanceIsTheMeanOfThePicture) {
    Image image = uniform({0, 0, 0});
    for (int y = 0; y < 12; ++y) // a quarter, at one edge
        for (int x = 0; x < 64; ++x)
            image.at(x, y, 1) = 2;
    upload(image, 0);
    EXPECT_NEAR(luminance(), 0.25 * 2 * 0.59, 0.01);
}

// Its calls are compared in tests/engine/wholeFrame_test.cpp.
TEST_F(ShadedTarget, ComputeLuminanceReadsOnePixelAndBindsTheWindow) {
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
