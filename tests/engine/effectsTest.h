#pragma once

// What the tests of the effects share: the fixture, a shadow caster, and what a frame prints, codes
// and sets.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/resetEffects.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace ravolt::test {

class EffectsTest : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;

    EffectsTest() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        camera = new RVCAMERA;
    }

    void TearDown() override {
        resetEffects();
        EngineTest::TearDown();
    }
};

inline RVLIGHT *newCaster(const Z3MVECTOR3D &position, const Z3MVECTOR3D &direction,
                          float cutOff = 40, float nearPlane = 1, float farPlane = 40) {
    auto *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setPosition(position.x, position.y, position.z);
    light->setDirection(direction);
    light->setCutOff(cutOff);
    light->setShadowNearPlane(nearPlane);
    light->setShadowFarPlane(farPlane);
    light->castShadows(true);
    return light;
}

// What a step prints to standard output.
template <class Step> std::string printedBy(Step step) {
    testing::internal::CaptureStdout();
    step();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// All texels of a target's texture, or all depths of a map, from the lower left corner.
inline std::vector<float> texelsOf(int index, GLenum format = GL_RGBA) {
    const RVFBO *target = RVOPENGL::getFbo(index);
    const int channels = format == GL_RGBA ? 4 : 1;
    std::vector<float> values(
        static_cast<std::size_t>(target->getSizeX() * target->getSizeY() * channels));
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    target->getTexture()->render(nullptr);
    glGetTexImage(GL_TEXTURE_2D, 0, format, GL_FLOAT, values.data());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    return values;
}

inline std::array<float, 4> texelOf(int index, int x, int y) {
    const std::vector<float> all = texelsOf(index);
    const auto first = static_cast<std::size_t>((y * RVOPENGL::getFbo(index)->getSizeX() + x) * 4);
    return {all[first], all[first + 1], all[first + 2], all[first + 3]};
}

// The state after a frame with any effects.
inline void expectStateOfAFrame() {
    EXPECT_EQ(RVOPENGL::getProfile(), RV_OPENGL_PROFILE_FULL);
    GLboolean color[4] = {}, depth = GL_FALSE;
    glGetBooleanv(GL_COLOR_WRITEMASK, color);
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depth);
    EXPECT_TRUE(color[0] && color[1] && color[2] && color[3] && depth);
    EXPECT_FALSE(glIsEnabled(GL_BLEND) || RVOPENGL::isBlended());
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    const struct {
        GLenum state;
        int value;
    } rows[] = {{GL_BLEND_SRC, GL_SRC_ALPHA},   {GL_BLEND_DST, GL_ONE_MINUS_SRC_ALPHA},
                {GL_DEPTH_FUNC, GL_LESS},       {GL_CULL_FACE_MODE, GL_BACK},
                {GL_SHADE_MODEL, GL_SMOOTH},    {GL_POLYGON_MODE, GL_FILL},
                {GL_MATRIX_MODE, GL_MODELVIEW}, {GL_PROJECTION_STACK_DEPTH, 1},
                {GL_MODELVIEW_STACK_DEPTH, 1}};
    for (const auto &row : rows)
        EXPECT_EQ(integerOf(row.state), row.value) << "state " << row.state;
}

} // namespace ravolt::test
