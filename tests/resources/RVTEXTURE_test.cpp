// Textures as OpenGL reports them.

#include "ravolt/RVTEXTURE.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glObjects.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <gtest/gtest.h>

namespace ravolt::test {

namespace {

class Texture : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS); // what an earlier context stored in the cache
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    }

    // A texture with these pixels, uploaded from a copy of its own and bound.
    RVTEXTURE *makeTexture(unsigned int sizeX, unsigned int sizeY, unsigned int depth,
                           const Bytes &pixels, bool mipmap) {
        RVTEXTURE *texture = new RVTEXTURE;
        texture->setFilter(true, mipmap, false);
        EXPECT_TRUE(texture->create(sizeX, sizeY, depth));
        std::copy(pixels.begin(), pixels.end(), texture->getBitmap());
        EXPECT_TRUE(texture->update());
        bind(texture);
        return texture;
    }

    // A texture from a file, bound.
    RVTEXTURE *loadTexture(const char *name, const Bytes &file, bool mipmap = false) {
        writeFile(name, file);
        RVTEXTURE *texture = new RVTEXTURE;
        texture->setFilter(true, mipmap, false);
        EXPECT_TRUE(texture->load(name));
        return texture;
    }

    static void bind(const RVTEXTURE *texture) {
        if (RVOPENGL::glActiveTextureARB)
            RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, texture->getGLId());
    }

    // Of the bound texture.
    static Bytes levelPixels(GLint level, unsigned int depth) {
        const int texels =
            textureLevel(GL_TEXTURE_WIDTH, level) * textureLevel(GL_TEXTURE_HEIGHT, level);
        Bytes pixels(static_cast<std::size_t>(texels) * depth);
        glGetTexImage(GL_TEXTURE_2D, level, depth == 3 ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE,
                      pixels.data());
        return pixels;
    }

    void leaveFree(unsigned int bytes) {
        RAVOLT::pushVideoMemory(RAVOLT::getFreeVideoMemory() - bytes);
    }

    // Draws the whole window in the texture's colours.
    Pixel drawn(RVTEXTURE *texture) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        EXPECT_TRUE(texture->render(nullptr));
        glColor4f(1, 1, 1, 1);
        glBegin(GL_QUADS);
        const int corners[][2] = {{0, 0}, {0, 1}, {1, 1}, {1, 0}};
        for (const auto &corner : corners) {
            glTexCoord2i(corner[0], corner[1]);
            glVertex2i(corner[0] * width, corner[1] * height);
        }
        glEnd();
        RAVOLT::end2D();
        return pixelAt(width / 2, height / 2);
    }
};

// The next level of a square image: the truncated mean of each two by two pixels.
Bytes halvedImage(const Bytes &image, std::size_t size, unsigned int depth) {
    Bytes half;
    const auto at = [&](std::size_t x, std::size_t y, unsigned int channel) -> unsigned int {
        return image[(y * size + x) * depth + channel];
    };
    for (std::size_t y = 0; y < size; y += 2)
        for (std::size_t x = 0; x < size; x += 2)
            for (unsigned int c = 0; c < depth; ++c)
                half.push_back(static_cast<unsigned char>(
                    (at(x, y, c) + at(x + 1, y, c) + at(x, y + 1, c) + at(x + 1, y + 1, c)) / 4));
    return half;
}

TEST_F(Texture, FilterAndWrapAreAsSet) {
    struct Row {
        bool linear, mipmap, clamp;
        GLint magnification, minification, wrap;
    };
    const Row rows[] = {
        {true, true, false, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR, GL_REPEAT},
        {true, false, true, GL_LINEAR, GL_LINEAR, GL_CLAMP_TO_EDGE},
        {false, true, true, GL_NEAREST, GL_NEAREST_MIPMAP_NEAREST, GL_CLAMP_TO_EDGE},
        {false, false, false, GL_NEAREST, GL_NEAREST, GL_REPEAT},
    };
    RVTEXTURE *texture = makeTexture(4, 4, 3, Bytes(48), false);
    for (const Row &row : rows) {
        texture->setFilter(row.linear, row.mipmap, row.clamp);
        bind(texture);
        EXPECT_EQ(textureParameter(GL_TEXTURE_MAG_FILTER), row.magnification);
        EXPECT_EQ(textureParameter(GL_TEXTURE_MIN_FILTER), row.minification);
        EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_S), row.wrap);
        EXPECT_EQ(textureParameter(GL_TEXTURE_WRAP_T), row.wrap);
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH, 1), row.mipmap ? 2 : 0);
    }
}

TEST_F(Texture, AnisotropyIsTheDriversMaximum) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    ASSERT_TRUE(RVOPENGL::useAnisotropic());
    makeTexture(2, 2, 4, Bytes(16), false);
    GLfloat level = 0, maximum = 0;
    glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, &level);
    glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &maximum);
    EXPECT_EQ(level, maximum);
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), maximum);
}

TEST_F(Texture, LoadedFileIsUploadedFromItsLastRow) {
    RVTEXTURE *texture =
        loadTexture("two.tga", tgaHeader(plainType, 1, 2, 24, 32) + Bytes{3, 2, 1, 6, 5, 4});
    ASSERT_TRUE(texture->render(nullptr));
    EXPECT_EQ(levelPixels(0, 3), (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST_F(Texture, ChainOfASquareIsTheMeanOfEachLevelAbove) {
    for (const unsigned int depth : {3u, 4u}) {
        const unsigned int size = 32;
        Bytes wanted = pattern(size * size * depth);
        const Bytes pixels = wanted;
        RVTEXTURE *texture = makeTexture(size, size, depth, wanted, true);
        EXPECT_EQ(levelPixels(0, depth), wanted);
        GLint level = 1;
        for (unsigned int edge = size; edge > 1; edge /= 2, ++level) {
            wanted = halvedImage(wanted, edge, depth);
            EXPECT_EQ(levelPixels(level, depth), wanted) << level;
        }
        EXPECT_EQ(level, 6);
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH, level), 0);
        // The levels are computed in the texture's own pixels, which a second upload shows.
        EXPECT_EQ(wanted, Bytes(texture->getBitmap(), texture->getBitmap() + depth));
        texture->setFilter(true, false, false);
        bind(texture);
        const Bytes second = levelPixels(0, depth);
        EXPECT_EQ(wanted, Bytes(second.begin(), second.begin() + depth));
        EXPECT_EQ(Bytes(pixels.end() - 3, pixels.end()), Bytes(second.end() - 3, second.end()));
    }
}

// Rows of 15 and 20 bytes are not padded.
TEST_F(Texture, ChainsOfOtherShapesStayInsideTheirPixels) {
    const unsigned int shapes[][2] = {{1, 1},  {1, 64}, {64, 1}, {2, 64}, {64, 2},
                                      {7, 7},  {5, 3},  {3, 5},  {1, 7},  {7, 1},
                                      {33, 2}, {2, 33}, {31, 9}, {9, 31}, {100, 60}};
    for (const auto &shape : shapes)
        for (const unsigned int depth : {3u, 4u}) {
            const Bytes pixels = pattern(std::size_t(shape[0]) * shape[1] * depth);
            makeTexture(shape[0], shape[1], depth, pixels, true);
            EXPECT_EQ(levelPixels(0, depth), pixels) << shape[0] << "x" << shape[1];
        }
}

TEST_F(Texture, ModifyReplacesTheImageButNotTheLevels) {
    for (const unsigned int depth : {3u, 4u}) {
        RVTEXTURE *texture = makeTexture(4, 4, depth, pattern(16 * depth), true);
        const Bytes first = levelPixels(1, depth);
        const Bytes pixels = repeated(16 * depth, {7});
        EXPECT_TRUE(texture->modify(reinterpret_cast<const char *>(pixels.data()), false));
        EXPECT_EQ(levelPixels(0, depth), pixels);
        EXPECT_EQ(levelPixels(1, depth), first);
    }
}

TEST_F(Texture, CreatedTextureIsBlack) {
    RVTEXTURE *texture = new RVTEXTURE;
    ASSERT_TRUE(texture->create(4, 4, 4));
    bind(texture);
    EXPECT_EQ(levelPixels(0, 4), Bytes(64));
}

TEST_F(Texture, ShadowMapsCompareAndFloatTargetsHaveHalfFloats) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    for (const bool shadowMap : {true, false}) {
        RVTEXTURE *texture = new RVTEXTURE;
        texture->setFilter(true, !shadowMap, true);
        ASSERT_TRUE(texture->create(64, 32, shadowMap ? 5 : 6));
        bind(texture);
        EXPECT_EQ(texture->getBitmap(), nullptr);
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH), 64);
        EXPECT_EQ(textureLevel(GL_TEXTURE_HEIGHT), 32);
        EXPECT_EQ(textureLevel(GL_TEXTURE_WIDTH, 1), 0) << "no levels of its own";
        EXPECT_EQ(textureParameter(GL_TEXTURE_MAX_ANISOTROPY_EXT), 1);
        EXPECT_EQ(textureParameter(GL_TEXTURE_COMPARE_MODE),
                  shadowMap ? GL_COMPARE_R_TO_TEXTURE : GL_NONE);
        if (shadowMap) {
            EXPECT_GT(textureLevel(GL_TEXTURE_DEPTH_SIZE), 0);
            EXPECT_EQ(textureParameter(GL_TEXTURE_COMPARE_FUNC), GL_LEQUAL);
        } else {
            EXPECT_EQ(textureLevel(GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA16F_ARB);
            EXPECT_EQ(textureParameter(GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
        }
    }
}

TEST_F(Texture, AllUnitsOfTheDriverAreSwitched) {
    SKIP_WITHOUT_EXTENSIONS(multitextureExtensions);
    const int units = std::min(integerOf(GL_MAX_TEXTURE_UNITS), 16);
    for (const bool on : {true, false}) {
        (on ? RVTEXTURE::texturingOn : RVTEXTURE::texturingOff)(RV_TEXTURE_UNITS);
        for (int unit = 0; unit < units; ++unit) {
            RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + static_cast<GLenum>(unit));
            EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), on) << unit;
        }
    }
    expectNoGlErrors();
}

TEST_F(Texture, RenderBindsOnItsUnit) {
    SKIP_WITHOUT_EXTENSIONS(multitextureExtensions);
    RVTEXTURE *texture = makeTexture(1, 1, 3, {1, 2, 3}, false);
    unsigned int unit = 2;
    texture->render(&unit);
    EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE2);
    EXPECT_EQ(integerOf(GL_TEXTURE_BINDING_2D), static_cast<GLint>(texture->getGLId()));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

TEST_F(Texture, EvictedTextureIsReloadedWhenItIsDrawn) {
    RVTEXTURE *red = loadTexture("red.tga", plainTga(4, 4, 200, 10, 30), true),
              *big = loadTexture("big.tga", plainTga(64, 64, 20, 100, 30), true);
    for (RVTEXTURE *texture : {red, big})
        texture->incReferences();
    EXPECT_PIXEL(drawn(red), (Pixel{200, 10, 30}), 1);
    RAVOLT::begin3D(nullptr); // the next stamp
    leaveFree(0);
    EXPECT_PIXEL(drawn(big), (Pixel{20, 100, 30}), 1);
    EXPECT_FALSE(red->isLoaded());
    EXPECT_LOGGED("[BEGIN GARBAGE COLLECTOR]");
    EXPECT_LOGGED("   red.tga unloaded");
    RAVOLT::begin3D(nullptr);
    EXPECT_PIXEL(drawn(red), (Pixel{200, 10, 30}), 1);
    EXPECT_TRUE(red->isLoaded());
}

TEST_F(Texture, CollectorDoesNotFreeThePixelsThatAreBeingUploaded) {
    Bytes pixels = pattern(16 * 16 * 3);
    RVTEXTURE *texture = loadTexture("many.tga", tgaHeader(plainType, 16, 16, 24) + pixels, true);
    for (std::size_t i = 0; i < pixels.size(); i += 3)
        std::swap(pixels[i], pixels[i + 2]);
    leaveFree(16 * 16 * 4 - 1);
    ASSERT_TRUE(texture->render(nullptr));
    EXPECT_LOGGED("[BEGIN GARBAGE COLLECTOR]");
    EXPECT_LOGGED("   many.tga unloaded");
    EXPECT_EQ(levelPixels(0, 3), pixels);
    EXPECT_EQ(levelPixels(1, 3), halvedImage(pixels, 16, 3));
}

TEST_F(Texture, OtherHeaderIsUploadedAsBlackAndCounted) {
    EXPECT_GE(RAVOLT::getVideoMemory(), 16u << 20); // where the display reports none
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = loadTexture("other.tga", tgaHeader(3, 8, 8, 24) + Bytes(192, 255));
    markLog();
    EXPECT_TRUE(texture->render(nullptr));
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(levelPixels(0, 3), Bytes(192));
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used + 8 * 8 * 4);
}

// --- Units that the fixed-function pipeline does not have

class ShadedTexture : public Texture {
  protected:
    ShadedTexture() { settings.setShaders(true); }

    void SetUp() override {
        Texture::SetUp();
        SKIP_WITHOUT_EXTENSIONS(programExtensions);
    }

    static Pixel drawnPixel() {
        glDisable(GL_DEPTH_TEST);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRectf(-1, -1, 1, 1);
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glEnable(GL_DEPTH_TEST);
        return pixelAt(64, 48);
    }
};

TEST_F(ShadedTexture, AProgramReadsTheLastUnitAndTheFixedFunctionsDrawAfterIt) {
    ASSERT_LT(integerOf(GL_MAX_TEXTURE_UNITS), RV_TEXTURE_UNITS);
    RVTEXTURE *texture = makeTexture(2, 2, 4, repeated(4, {0, 255, 0, 255}), false);
    auto *program = new RVSHADER;
    ASSERT_TRUE(program->loadVertexShader("v", "void main() { gl_Position = ftransform(); }"));
    ASSERT_TRUE(program->loadPixelShader(
        "p", "uniform sampler2D textureSampler15;"
             "void main() { gl_FragColor = texture2D(textureSampler15, vec2(0.5)); }"));
    ASSERT_TRUE(program->load(nullptr, nullptr, true));
    program->render(nullptr);
    unsigned int unit = RV_TEXTURE_UNITS - 1;
    EXPECT_TRUE(texture->render(&unit));
    EXPECT_PIXEL(drawnPixel(), (Pixel{0, 255, 0}), 0);

    RVSHADER::disable();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    glColor4f(1, 0, 0, 1);
    EXPECT_PIXEL(drawnPixel(), (Pixel{255, 0, 0}), 0);
}

} // namespace

} // namespace ravolt::test
