#pragma once

// A part of an application: a node of the 2D block that draws a point for each target, near ones
// red.

#include <ravolt.h>

#include <vector>

class Radar : public RVNODE {
  public:
    struct Target {
        float x, y; // pixels from the centre
    };
    static constexpr float nearRadius = 20.0f;

    Radar() { type = RV_NODE_TYPE_CUSTOM; }

    std::vector<Target> targets;

    bool render(void *element) override {
        glLoadMatrixf(static_cast<RVELEMENT *>(element)->getMatrix()->e);
        RVTEXTURE::texturingOff(0);
        RVOPENGL::blendingOn();
        glBegin(GL_POINTS);
        for (const Target &target : targets) {
            const bool isNear = target.x * target.x + target.y * target.y < nearRadius * nearRadius;
            glColor4f(1.0f, isNear ? 0.0f : 1.0f, 0.0f, 0.5f);
            glVertex2f(target.x, target.y);
        }
        glEnd();
        RVOPENGL::blendingOff();
        return true;
    }
};
