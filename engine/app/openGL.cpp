// Start and stop of the OpenGL layer, and its base state.

#include "engine/gl/capabilities.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/renderTargets.h"

bool RVOPENGL::init() {
    static_assert(Capabilities::requiredUnits == RV_TEXTURE_UNITS);
    if (active) {
        zlfLog("   [!] OpenGL already active @ RVOPENGL::init\n");
        return false;
    }
    zlfLog("   Init OpenGL...\n");
    Capabilities::detect(ravolt::makeRenderTargets);
    if (useFBO() && !fbo[0]) {
        zlfLog("   [!] Out of memory @ RVOPENGL::init\n");
        return false;
    }
    reapplySwitches();
    reset();
    zlfLog("   OpenGL initialized\n");
    active = true;
    return true;
}

// A new context has every switch off, while the flags are as the last run left them. Those that are
// on are switched on again. Texturing is switched off, since the textures of the last run are
// deleted.
void RVOPENGL::reapplySwitches() {
    static constexpr struct {
        bool *flag;
        void (*on)();
    } switches[] = {
        {&culling, cullingOn},
        {&blending, blendingOn},
        {&scissor, scissorOn},
        {&twoSide, twoSideOn},
        {&vertexArrayStatus, vertexArrayOn},
        {&indexArrayStatus, indexArrayOn},
        {&normalArrayStatus, normalArrayOn},
        {&colorArrayStatus, colorArrayOn},
        {&textureArrayStatus, textureArrayOn},
    };
    for (const auto &each : switches) {
        if (!*each.flag)
            continue;
        *each.flag = false;
        each.on();
    }
    if (RVLIGHT::getLighting()) {
        RVLIGHT::lightingOff();
        RVLIGHT::lightingOn();
    }
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

// On purpose: flags, entry points and switches are not reset.
bool RVOPENGL::free() {
    if (!active)
        return false;
    zlfLog("   Release OpenGL...\n");
    zlfLog("   OpenGL released\n");
    active = false;
    return true;
}

bool RVOPENGL::reset() {
    setBackgroundColor(backgroundColor);
    setGlobalAmbientLight(globalAmbientLight);
    glClearDepth(1);
    glClearStencil(0);
    glDepthFunc(GL_LESS);
    glEnable(GL_DEPTH_TEST);
    glShadeModel(GL_SMOOTH);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glDisable(GL_DITHER);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glAlphaFunc(GL_GREATER, 0.5f);
    cullingOn();
    for (GLenum light = GL_LIGHT0; light <= GL_LIGHT3; ++light) {
        glLightf(light, GL_SPOT_EXPONENT, 0);
        glLightf(light, GL_SPOT_CUTOFF, 180);
        glLightf(light, GL_CONSTANT_ATTENUATION, 1);
        glLightf(light, GL_LINEAR_ATTENUATION, 0);
        glLightf(light, GL_QUADRATIC_ATTENUATION, 0);
    }
    return true;
}
