#pragma once

// A square that is drawn without lights, programs and textures, brighter than white on targets that
// can hold that: what bloom, depth of field and their absence can be seen on.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace ravolt::test {

class BrightSquare : public RVNODE {
  public:
    std::vector<RV_OPENGL_PROFILE> profiles; // of its draws
    std::function<void()> meanwhile = [] {}; // what happens in each draw, before the square

    BrightSquare() { type = RV_NODE_TYPE_CUSTOM; }

    bool render(void *entry) override {
        profiles.push_back(RVOPENGL::getProfile());
        meanwhile();
        RVLIGHT::lightingOff();
        RVSHADER::disable();
        RVTEXTURE::texturingOff(0);
        glLoadMatrixf(static_cast<RVELEMENT *>(entry)->getMatrix()->e);
        glColor4f(1, 0.5f, 0.25f, 0.5f);
        glDepthFunc(GL_LEQUAL);
        for (int layer = 0; layer < 3; ++layer) {
            draw();
            RVOPENGL::blendingOn();
            glBlendFunc(GL_ONE, GL_ONE);
        }
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        RVOPENGL::blendingOff();
        glDepthFunc(GL_LESS);
        return true;
    }

    long draws(RV_OPENGL_PROFILE profile) const {
        return std::count(profiles.begin(), profiles.end(), profile);
    }

  private:
    static void draw() {
        glBegin(GL_QUADS);
        for (const auto &[x, y] : {std::pair{-1, 1}, {-1, -1}, {1, -1}, {1, 1}})
            glVertex3f(static_cast<GLfloat>(x), static_cast<GLfloat>(y), -5);
        glEnd();
    }
};

} // namespace ravolt::test
