// The effect passes on whole pictures: depth pass, bloom with tone mapping, depth of field. Target
// 0 is the scene. Target 1 gets the depth pass and then the result of a blur, whose colour mask
// keeps the depths in its alpha.
//
// Tone mapping and depth of field draw the scene's own texture onto the scene. What a program reads
// while it draws there is undefined, so that the texture which they read is a copy: target 5's,
// which nothing else uses, filled by OpenGL from target 0 just before. The picture is that of the
// formulas on every driver.

#include "engine/frame/frameSteps.h"

#include "engine/gl/screenQuad.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"

#include <cmath>
#include <cstdio>

namespace {

RVFBO &scene() { return *RVOPENGL::getFbo(0); }
RVFBO &blurred() { return *RVOPENGL::getFbo(1); }
RVFBO &bright() { return *RVOPENGL::getFbo(4); }
RVFBO &sceneCopy() { return *RVOPENGL::getFbo(5); }

constexpr int firstLevel = 6; // of the targets that blur uses

void drawOver(const RVFBO &target) { ravolt::drawQuad(target.getSizeX(), target.getSizeY()); }

// Puts a copy of the scene, which must be the current target, on unit 0.
void renderCopyOfScene() {
    sceneCopy().getTexture()->render(nullptr);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, scene().getSizeX(), scene().getSizeY());
}

// The blur of a target into target 1, whose alpha stays.
void blurKeepingDepths(RVFBO &source, RVSHADER *combine) {
    glColorMask(1, 1, 1, 0);
    source.blur(&blurred(), combine, firstLevel);
    glColorMask(1, 1, 1, 1);
}

// What is brighter than white, into target 4; what stands there is drawn in pixels of its size.
void drawBrightParts() {
    RVTEXTURE::texturingOn(0);
    RVOPENGL::blendingOff();
    RVLIGHT::lightingOff();
    glColor4f(1, 1, 1, 1);
    RVSHADER::bloomBright->render(nullptr);
    RVSHADER::bindSizes(RVSETTINGS::getSDLFBOSizeX(), RVSETTINGS::getSDLFBOSizeY());
    scene().getTexture()->render(nullptr);
    drawOver(bright());
}

// The eye closes the gap at a rate of the whole gap a second.
// On purpose: a frame longer than a second overshoots.
float adapt(float current, float luminance, float seconds) {
    const float gap = current - luminance;
    const float difference = std::sqrt(gap * gap);
    return luminance > current ? current + seconds * difference : current - seconds * difference;
}

void toneMap(float luminance, float exposure) {
    renderCopyOfScene();
    RVSHADER::bloomToneMapping->render(nullptr);
    RVSHADER::bindLuminanceAndExposure(luminance, exposure);
    glColor4f(1, 1, 1, 1);
    drawOver(scene());
    RVSHADER::disable();
}

// Adds the blurred bright parts to the scene.
void compositeBloom(float intensity) {
    ravolt::resetProjection();
    ravolt::applyPixelProjection(scene().getSizeX(), scene().getSizeY());
    RVOPENGL::blendingOn();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    RVSHADER::bloomForceAlpha->render(nullptr);
    glColor4f(1, 1, 1, intensity);
    blurred().getTexture()->render(nullptr);
    drawOver(scene());
    RVSHADER::disable();
    RVOPENGL::blendingOff();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

// Mixes the scene with its blurred copy by the depths.
void compositeDepthOfField(float focus, float range) {
    scene().render(nullptr);
    RVSHADER::dof->render(nullptr);
    RVSHADER::bindFocusAndRange(focus, range);
    renderCopyOfScene();
    unsigned int unit = 1;
    blurred().getTexture()->render(&unit);
    drawOver(scene());
    RVTEXTURE::texturingOff(1);
}

} // namespace

// The flags outlive the programs, which the application may have deleted.
bool RAVOLT::Frame::haveBloom() {
    return blooming && RVSHADER::useBloom() && RVSHADER::bloomBright && RVSHADER::bloomCombine &&
           RVSHADER::bloomH && RVSHADER::bloomV && RVSHADER::bloomToneMapping &&
           RVSHADER::bloomForceAlpha && haveTargets();
}

bool RAVOLT::Frame::haveDepthOfField() {
    return DOF && RVSHADER::useDOF() && RVSHADER::dofCombine && RVSHADER::dof && RVSHADER::bloomH &&
           RVSHADER::bloomV && haveTargets();
}

bool RAVOLT::Frame::haveShadows() { return shadowing && RVSHADER::useShadows() && haveTargets(); }

void RAVOLT::Frame::invalidateAfterList() {
    RVOPENGL::blendingOff();
    RVMATERIAL::reset();
}

// On purpose: a mesh that no light was ever picked for leaves its program, here too, and the lights
// are picked behind this pass. So in the first frame the alpha of the current colour, mostly 1,
// stands for the depth of every mesh, and the focus on one of them blurs them all.
void RAVOLT::Frame::drawDepths() {
    blurred().render(nullptr);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_ZPASS);
    drawList([](const RVNODE &) { return true; });
    RVSHADER::disable();
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
    scene().render(nullptr);
    glClear(GL_DEPTH_BUFFER_BIT);
    invalidateAfterList();
}

void RAVOLT::Frame::applyBloom() {
    bright().render(nullptr);
    glDisable(GL_DEPTH_TEST);
    {
        const ravolt::PixelProjection pixels(bright().getSizeX(), bright().getSizeY());
        drawBrightParts();
        blurKeepingDepths(bright(), RVSHADER::bloomCombine);
        float luminance = 1.0f;
        if (HDR)
            scene().computeLuminance(&luminance);
        scene().render(nullptr);
        if (HDR) {
            std::printf("luminance: %f\n", static_cast<double>(luminance));
            HDRCurrentLuminance = adapt(HDRCurrentLuminance, luminance, getFPSfactor());
            toneMap(HDRCurrentLuminance, HDRExposure);
        }
        compositeBloom(bloomingIntensity);
    }
    glEnable(GL_DEPTH_TEST);
    invalidateAfterList();
}

void RAVOLT::Frame::applyDepthOfField() {
    {
        const ravolt::PixelProjection pixels(scene().getSizeX(), scene().getSizeY());
        RVTEXTURE::texturingOn(0);
        RVOPENGL::blendingOff(); // the last thing drawn may have been transparent
        RVLIGHT::lightingOff();
        glColor4f(0, 0, 0, 1);
        glDisable(GL_DEPTH_TEST);
        blurKeepingDepths(scene(), RVSHADER::dofCombine);
        compositeDepthOfField(DOFFocus, DOFRange);
        glEnable(GL_DEPTH_TEST);
    }
    glEnable(GL_DEPTH_TEST);
    invalidateAfterList();
}
