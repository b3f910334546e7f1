#pragma once

// Squares that are drawn without lights, programs and textures. A bright one adds up to more than
// white on targets that can store that: bloom, depth of field and their absence show on it.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>
#include <vector>

namespace ravolt::test {

// Fills the middle of the view.
class Wall : public RVNODE {
  public:
    std::array<float, 4> color;
    float depth = -5, half = 1;
    int layers = 1;                          // that add up
    std::vector<RV_OPENGL_PROFILE> profiles; // of its draws
    std::function<void()> meanwhile = [] {}; // what happens in each draw, before the square

    explicit Wall(const std::array<float, 4> &itsColor = {0, 0, 0, 1}) : color(itsColor) {
        type = RV_NODE_TYPE_CUSTOM;
    }

    bool render(void *entry) override {
        profiles.push_back(RVOPENGL::getProfile());
        meanwhile();
        RVLIGHT::lightingOff();
        RVSHADER::disable();
        RVTEXTURE::texturingOff(0);
        glLoadMatrixf(static_cast<RVELEMENT *>(entry)->getMatrix()->e);
        glColor4fv(color.data());
        draw();
        for (int layer = 1; layer < layers; ++layer) {
            RVOPENGL::blendingOn();
            glBlendFunc(GL_ONE, GL_ONE);
            glDepthFunc(GL_LEQUAL);
            draw();
            glDepthFunc(GL_LESS);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            RVOPENGL::blendingOff();
        }
        return true;
    }

    long draws(RV_OPENGL_PROFILE profile) const {
        return std::count(profiles.begin(), profiles.end(), profile);
    }

  private:
    void draw() const {
        glBegin(GL_QUADS);
        for (const auto &[x, y] : {std::pair{-1, 1}, {-1, -1}, {1, -1}, {1, 1}})
            glVertex3f(static_cast<float>(x) * half, static_cast<float>(y) * half, depth);
        glEnd();
    }
};

class BrightSquare : public Wall {
  public:
    BrightSquare() : Wall({1, 0.5f, 0.25f, 0.5f}) { layers = 3; }
};

} // namespace ravolt::test
