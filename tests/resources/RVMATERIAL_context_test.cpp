// Materials as OpenGL holds them.

#include "ravolt/RVMATERIAL.h"

#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <array>

namespace ravolt::test {

namespace {

using Color = std::array<GLfloat, 4>;

Color held(GLenum face, GLenum name) {
    Color color{};
    glGetMaterialfv(face, name, color.data());
    return color;
}

class MaterialState : public EngineTest {};

TEST_F(MaterialState, ColoursStandOnBothFaces) {
    RVMATERIAL material;
    material.setAmbient(0.125f, 0.25f, 0.375f, 1);
    material.setDiffuse(0.5f, 0.625f, 0.75f, 1);
    material.setSpecular(0.875f, 1.0f, 0.0f, 1);
    material.setEmission(0.25f, 0.5f, 0.75f, 1);
    material.setShininess(64);
    material.setTransparency(0.5f);
    material.render(nullptr);
    for (const GLenum face : {GL_FRONT, GL_BACK}) {
        EXPECT_EQ((Color{0.125f, 0.25f, 0.375f, 0.5f}), held(face, GL_AMBIENT));
        EXPECT_EQ((Color{0.5f, 0.625f, 0.75f, 0.5f}), held(face, GL_DIFFUSE));
        EXPECT_EQ((Color{0.875f, 1.0f, 0.0f, 0.5f}), held(face, GL_SPECULAR));
        EXPECT_EQ((Color{0.25f, 0.5f, 0.75f, 0.5f}), held(face, GL_EMISSION));
        EXPECT_EQ(held(face, GL_SHININESS)[0], 64.0f);
    }
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    GLint factor = 0;
    glGetIntegerv(GL_BLEND_SRC, &factor);
    EXPECT_EQ(factor, GL_SRC_ALPHA);
    glGetIntegerv(GL_BLEND_DST, &factor);
    EXPECT_EQ(factor, GL_ONE_MINUS_SRC_ALPHA);
}

TEST_F(MaterialState, OpaqueUntexturedMaterialLeavesPlainState) {
    RVTEXTURE::texturingOn(0);
    RVTEXTURE::texturingOn(3);
    RVOPENGL::blendingOn();
    RVMATERIAL material;
    material.render(nullptr);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    for (const GLenum unit : {GL_TEXTURE0, GL_TEXTURE3}) {
        RVOPENGL::glActiveTextureARB(unit);
        EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    }
}

TEST_F(MaterialState, SlotsAreBoundOnTheirUnits) {
    RVTEXTURE *a = new RVTEXTURE, *b = new RVTEXTURE;
    for (RVTEXTURE *texture : {a, b})
        ASSERT_TRUE(texture->create(2, 2, 3));
    RVMATERIAL material;
    material.setTexture(0, a);
    material.setTexture(5, b);
    material.render(nullptr);
    for (const auto &[unit, texture] : {std::pair{GL_TEXTURE0, a}, std::pair{GL_TEXTURE5, b}}) {
        RVOPENGL::glActiveTextureARB(static_cast<GLenum>(unit));
        GLint bound = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        EXPECT_EQ(bound, static_cast<GLint>(texture->getGLId()));
        EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    }
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

// The first frame of a textured model.
TEST_F(MaterialState, TexturesThatComeBackWithinRenderAreBoundOnTheirUnits) {
    RVMATERIAL material;
    constexpr unsigned int slots[] = {0, 1, 2};
    for (const unsigned int slot : slots) {
        RVTEXTURE *texture = new RVTEXTURE;
        ASSERT_TRUE(texture->create(2, 2, 3));
        texture->unload(false);
        material.setTexture(slot, texture);
    }
    material.render(nullptr);
    for (const unsigned int slot : slots) {
        RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + slot);
        GLint bound = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        EXPECT_NE(bound, 0);
        EXPECT_EQ(bound, static_cast<GLint>(material.getTexture(slot)->getGLId())) << slot;
    }
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

} // namespace

} // namespace ravolt::test
