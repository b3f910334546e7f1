#pragma once

// The frame of the effects' scene by hand-written OpenGL: the same passes into the same targets
// with the same programs as the engine's, from plain arrays and with the fewest calls. The engine
// must be up with its programs, and between two frames.

#include "handMeshes.h"

namespace bench {

class HandEffects {
  public:
    HandEffects(const Scene &scene, const Effects &wanted, Buffers buffers = Buffers::shared);
    void draw();

  private:
    // A program of the engine's, with the uniforms that its frame sets.
    struct Program {
        explicit Program(const char *name);
        void use() const;
        void set(int location, float value) const;

        unsigned int object;
        int width, height, near, far, luminance, exposure, focus, range;
    };

    HandMeshes meshes;
    Effects wanted;
    bool litOneByOne;
    float adapted; // luminance, from frame to frame
    float lightView[16];
    Program lit, shadowed, flat, depth;
    Program brightParts, blurX, blurY, sum, mean, tones, glow, focused;

    void drawDepths() const;
    void drawMap() const;
    void setMapMatrix(unsigned int mode) const;
    void drawMeshes() const;
    void drawList() const;
    void drawBloom();
    void drawFocus() const;
    void blur(int source, const Program &combine) const;
    float measure() const;
};

} // namespace bench
