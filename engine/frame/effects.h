#pragma once

#include "ravolt/RAVOLT.h"
#include "ravolt/Z3MMATRIX.h"

class RVLIGHT;

// The effect passes of a frame, between the steps of RAVOLT::end3D. Each runs the render list
// again, or composes the picture between the render targets, and leaves the full profile, an open
// colour mask, blending off with its usual function, and the target of the frame.
struct RAVOLT::Effects {
    // Wanted and supported.
    static bool haveBloom();
    static bool haveDepthOfField();
    static bool haveShadows();

    // Depths into target 1's alpha, for depthOfField.
    static void depthPass();
    // The shadow map of the last casting spot light, and a lit pass with it.
    static void shadows();
    // Blurs what is brighter than white over the scene; tone mapping with HDR.
    static void bloom();
    // Blurs the scene by its distance from the focus.
    static void depthOfField();

  private:
    // What the list has drawn behind the materials' back, and the blending of its last entry, must
    // not reach what follows.
    static void invalidateAfterList();
    static RVLIGHT *findCaster();
    static void drawMap(const Z3MMATRIX &eyeToLight);
    static void drawDepthsOf(const Z3MMATRIX &eyeToLight);
};
