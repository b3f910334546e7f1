#pragma once

#include "ravolt/RAVOLT.h"
#include "ravolt/Z3MMATRIX.h"

// The steps of a frame, as RAVOLT::end3D runs them. A step that draws the render list once more or
// composites the picture ends with the full profile, an open colour mask, blending off with its
// standard function, and the frame's own target bound.
struct RAVOLT::Frame {
    // Whether all render targets exist, and whether the frame must be drawn into target 0.
    static bool haveTargets();
    static bool needsTarget();

    // Whether an effect is requested and supported.
    static bool haveBloom();
    static bool haveDepthOfField();
    static bool haveShadows();

    // Draws the entries of the render list, in their order, whose nodes are accepted.
    static void drawList(bool (*isDrawn)(const RVNODE &node));

    // Whether the node's `render` is one of the engine's that leaves all state known (see
    // KnownState).
    static bool keepsStateKnown(const RVNODE &node);

    // Depths into target 1's alpha, for applyDepthOfField.
    static void drawDepths();
    static void drawSkybox();
    // The shadow map of the last spot light that casts shadows, and a lit pass with it.
    static void drawShadows();
    static void drawMainPass();
    // Blurs what is brighter than white and adds it to the scene; tone mapping with HDR.
    static void applyBloom();
    // Blurs the scene by its distance from the focus.
    static void applyDepthOfField();
    // Copies target 0 to the window, scaled to the window's size.
    static void presentScene();

  private:
    // Afterwards the blending is that of the last entry, and there is OpenGL state that the
    // material cache does not know. Neither must affect what follows.
    static void invalidateAfterList();
    static void drawMap(const Z3MMATRIX &eyeToLight);
    static void drawCasters(const Z3MMATRIX &eyeToLight);
};
