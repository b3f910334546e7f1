// The full-screen passes: depths, bloom with tone mapping, depth of field. Target 0 is the scene.
// Target 1 gets the depths in its alpha and then a blurred picture in its colours; the colour mask
// protects the alpha.
//
// Tone mapping and depth of field would read the texture that they draw into, with an undefined
// result. They read a copy: the texture of target 5, which nothing else uses, copied from target 0
// just before. So every driver draws the same picture.

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

// Copies the scene, which must be the current target, and binds the copy to unit 0.
void bindSceneCopy() {
    sceneCopy().getTexture()->render(nullptr);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, scene().getSizeX(), scene().getSizeY());
}

// Blurs a target into the colours of target 1.
void blurColors(RVFBO &source, RVSHADER *combine) {
    glColorMask(1, 1, 1, 0);
    source.blur(&blurred(), combine, firstLevel);
    glColorMask(1, 1, 1, 1);
}

// Draws what is brighter than white into target 4, whose pixel projection is current.
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

// The adapted luminance approaches the measured one by the whole difference per second.
// On purpose: a frame longer than a second overshoots.
float adapt(float current, float luminance, float seconds) {
    const float gap = current - luminance;
    const float difference = std::sqrt(gap * gap);
    return luminance > current ? current + seconds * difference : current - seconds * difference;
}

void toneMap(float luminance, float exposure) {
    bindSceneCopy();
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
    bindSceneCopy();
    unsigned int unit = 1;
    blurred().getTexture()->render(&unit);
    drawOver(scene());
    RVTEXTURE::texturingOff(1);
}

} // namespace

// The flags of RVSHADER remain true when the application deletes the programs.
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

// On purpose: a mesh for which no light was ever chosen is drawn without a program, here too, and
// the lights of a frame are chosen after this pass. So in the first frame the depth of every mesh
// is the alpha of the current colour, mostly 1, and the focus on one of them blurs them all.
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
        blurColors(bright(), RVSHADER::bloomCombine);
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
        blurColors(scene(), RVSHADER::dofCombine);
        compositeDepthOfField(DOFFocus, DOFRange);
        glEnable(GL_DEPTH_TEST);
    }
    glEnable(GL_DEPTH_TEST);
    invalidateAfterList();
}
