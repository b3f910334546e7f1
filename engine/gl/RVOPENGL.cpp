// The engine's side of OpenGL's state. The flags say what start-up has detected
// (engine/gl/capabilities.cpp) and nothing here writes them. A switch and its flag change together,
// and only here may blending, culling, two-sided lighting and the client arrays be switched; the
// frame and the selection drive culling and scissor directly on purpose, and say so where they do.

#include "ravolt/RVOPENGL.h"

#include "engine/gl/entryPoint.h"
#include "engine/gl/stateCache.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

RVFBO *RVOPENGL::fbo[14] = {};
float RVOPENGL::anisotropicLevel = 0.0f;
bool RVOPENGL::active = false;
bool RVOPENGL::blending = false;
bool RVOPENGL::scissor = false;
bool RVOPENGL::culling = false;
bool RVOPENGL::twoSide = false;
bool RVOPENGL::vertexArrayStatus = false;
bool RVOPENGL::indexArrayStatus = false;
bool RVOPENGL::normalArrayStatus = false;
bool RVOPENGL::colorArrayStatus = false;
bool RVOPENGL::textureArrayStatus = false;
bool RVOPENGL::multitextureFlag = false;
bool RVOPENGL::VBOFlag = false;
bool RVOPENGL::shadersFlag = false;
bool RVOPENGL::anisotropicFlag = false;
bool RVOPENGL::FBOFlag = false;
bool RVOPENGL::OcclusionQueryFlag = false;
Z3MVECTOR4D RVOPENGL::globalAmbientLight(0.2f, 0.2f, 0.2f, 1.0f);
Z3MVECTOR4D RVOPENGL::backgroundColor(0.2f, 0.2f, 0.6f, 1.0f);
float RVOPENGL::nearPlane = 1.0f;
float RVOPENGL::farPlane = 1024.0f;
float RVOPENGL::angleOfView = 45.0f;
RV_OPENGL_PROFILE RVOPENGL::currentProfile = RV_OPENGL_PROFILE_FULL;

#define RV_GL_ENTRY_POINT(group, name) decltype(RVOPENGL::name) RVOPENGL::name = nullptr;
#include "engine/gl/glEntryPoints.inc"

namespace {

constexpr float halfDegree = 0.008726646192371845f; // in radians

// Change the flag of a switch; true when OpenGL must be called.
bool mustEnable(bool &flag) { return !ravolt::cacheHit(std::exchange(flag, true)); }
bool mustDisable(bool &flag) { return !ravolt::cacheHit(!std::exchange(flag, false)); }

} // namespace

void RVOPENGL::onTargetDestroyed(const RVFBO *target) {
    std::replace(std::begin(fbo), std::end(fbo), const_cast<RVFBO *>(target),
                 static_cast<RVFBO *>(nullptr));
}

bool RVOPENGL::isActive() { return active; }

bool RVOPENGL::useVBO() { return VBOFlag; }

bool RVOPENGL::useAnisotropic() { return anisotropicFlag; }

bool RVOPENGL::useFBO() { return FBOFlag; }

bool RVOPENGL::useMultitexturing() { return multitextureFlag; }

bool RVOPENGL::useShaders() { return shadersFlag; }

bool RVOPENGL::useOcclusionQuery() { return OcclusionQueryFlag; }

float RVOPENGL::getAnisotropicLevel() { return anisotropicLevel; }

void RVOPENGL::setProfile(RV_OPENGL_PROFILE profile) { currentProfile = profile; }

RV_OPENGL_PROFILE RVOPENGL::getProfile() { return currentProfile; }

void RVOPENGL::setNearPlane(float distance) { nearPlane = distance; }

float RVOPENGL::getNearPlane() { return nearPlane; }

void RVOPENGL::setFarPlane(float distance) { farPlane = distance; }

float RVOPENGL::getFarPlane() { return farPlane; }

void RVOPENGL::setAngleOfView(float degrees) { angleOfView = degrees; }

float RVOPENGL::getAngleOfView() { return angleOfView; }

void RVOPENGL::setBackgroundColor(Z3MVECTOR4D color) {
    backgroundColor = color;
    glClearColor(color.x, color.y, color.z, color.w);
}

void RVOPENGL::setBackgroundColor(float red, float green, float blue, float alpha) {
    setBackgroundColor(Z3MVECTOR4D(red, green, blue, alpha));
}

Z3MVECTOR4D RVOPENGL::getBackgroundColor() { return backgroundColor; }

void RVOPENGL::setGlobalAmbientLight(Z3MVECTOR4D color) {
    globalAmbientLight = color;
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, color);
}

void RVOPENGL::setGlobalAmbientLight(float red, float green, float blue, float alpha) {
    setGlobalAmbientLight(Z3MVECTOR4D(red, green, blue, alpha));
}

Z3MVECTOR4D RVOPENGL::getGlobalAmbientLight() { return globalAmbientLight; }

bool RVOPENGL::resize(int x, int y, int sizeX, int sizeY) {
    if (sizeX < 1 || sizeY < 1)
        zlfLog("   [!] invalid params @ RVOPENGL::resize\n");
    // On purpose: such a size is used all the same, even for a division by zero.
    const float width = static_cast<float>(sizeX), height = static_cast<float>(sizeY);

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // Unsigned, as the sizes may be any: where the difference does not fit, it wraps.
    const auto bottom = static_cast<unsigned int>(RVSETTINGS::getSDLWindowY()) -
                        static_cast<unsigned int>(y) - static_cast<unsigned int>(sizeY);
    glViewport(x, static_cast<GLint>(bottom), sizeX, sizeY);
    if (RVSETTINGS::isSDLLandscape()) {
        glRotatef(90, 0, 0, 1);
        setPerspective(angleOfView, height / width, nearPlane, farPlane);
    } else {
        setPerspective(angleOfView, width / height, nearPlane, farPlane);
    }
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    return true;
}

void RVOPENGL::setPerspective(float angle, float aspect, float zNear, float zFar) {
    const float top = std::tan(angle * halfDegree) * zNear;
    const float bottom = -top;
    glFrustum(bottom * aspect, top * aspect, bottom, top, zNear, zFar);
}

bool RVOPENGL::setFrustum(float left, float right, float bottom, float top, float zNear, float zFar,
                          bool) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(left, right, bottom, top, zNear, zFar);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    return true;
}

void RVOPENGL::cullingOn() {
    if (mustEnable(culling))
        glEnable(GL_CULL_FACE);
}

void RVOPENGL::cullingOff() {
    if (mustDisable(culling))
        glDisable(GL_CULL_FACE);
}

bool RVOPENGL::isCulled() { return culling; }

void RVOPENGL::blendingOn() {
    if (mustEnable(blending))
        glEnable(GL_BLEND);
}

void RVOPENGL::blendingOff() {
    if (mustDisable(blending))
        glDisable(GL_BLEND);
}

bool RVOPENGL::isBlended() { return blending; }

void RVOPENGL::scissorOn() {
    if (mustEnable(scissor))
        glEnable(GL_SCISSOR_TEST);
}

void RVOPENGL::scissorOff() {
    if (mustDisable(scissor))
        glDisable(GL_SCISSOR_TEST);
}

void RVOPENGL::twoSideOn() {
    if (mustEnable(twoSide))
        glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1);
}

void RVOPENGL::twoSideOff() {
    if (mustDisable(twoSide))
        glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 0);
}

bool RVOPENGL::isTwoSide() { return twoSide; }

void RVOPENGL::vertexArrayOn() {
    if (mustEnable(vertexArrayStatus))
        glEnableClientState(GL_VERTEX_ARRAY);
}

void RVOPENGL::vertexArrayOff() {
    if (mustDisable(vertexArrayStatus))
        glDisableClientState(GL_VERTEX_ARRAY);
}

void RVOPENGL::indexArrayOn() {
    if (mustEnable(indexArrayStatus))
        glEnableClientState(GL_INDEX_ARRAY);
}

void RVOPENGL::indexArrayOff() {
    if (mustDisable(indexArrayStatus))
        glDisableClientState(GL_INDEX_ARRAY);
}

void RVOPENGL::normalArrayOn() {
    if (mustEnable(normalArrayStatus))
        glEnableClientState(GL_NORMAL_ARRAY);
}

void RVOPENGL::normalArrayOff() {
    if (mustDisable(normalArrayStatus))
        glDisableClientState(GL_NORMAL_ARRAY);
}

void RVOPENGL::colorArrayOn() {
    if (mustEnable(colorArrayStatus))
        glEnableClientState(GL_COLOR_ARRAY);
}

void RVOPENGL::colorArrayOff() {
    if (mustDisable(colorArrayStatus))
        glDisableClientState(GL_COLOR_ARRAY);
}

void RVOPENGL::textureArrayOn() {
    if (!mustEnable(textureArrayStatus))
        return;
    ravolt::callIfPresent<RVOPENGL::glClientActiveTextureARB>(GL_TEXTURE0);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
}

void RVOPENGL::textureArrayOff() {
    if (!mustDisable(textureArrayStatus))
        return;
    ravolt::callIfPresent<RVOPENGL::glClientActiveTextureARB>(GL_TEXTURE0);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}
