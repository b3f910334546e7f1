// Terrains: their construction and their drawing. The frame buffers of the water are bound by
// direct calls, without RVFBO, as in RVWATER.
//
// Invariants: `chunks` has numberOfChunks objects; while it is NULL, numberOfChunks is 0. The
// planes are those of cachedModelview and of the projection when they were computed.

#include "ravolt/RVTERRAIN.h"

#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWATER.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"

#include <algorithm>
#include <iterator>

namespace {

bool restoringTarget = false;

// So that no gap opens between the land and the water, whose images show it lower.
constexpr float landLift = 2.0f;

// Near this height of the camera both sides of the surface are visible.
constexpr float surfaceMargin = 1.0f;

void bindFramebuffer(GLuint framebuffer) {
    ravolt::callIfPresent<RVOPENGL::glBindFramebufferEXT>(GLenum{GL_FRAMEBUFFER_EXT}, framebuffer);
}

void bindRenderbuffer(GLuint renderbuffer) {
    ravolt::callIfPresent<RVOPENGL::glBindRenderbufferEXT>(GLenum{GL_RENDERBUFFER_EXT},
                                                           renderbuffer);
}

void bindAndClear(GLuint framebuffer, GLuint renderbuffer) {
    bindRenderbuffer(renderbuffer);
    bindFramebuffer(framebuffer);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void vertexArraysOn() {
    RVOPENGL::indexArrayOn();
    RVOPENGL::vertexArrayOn();
    RVOPENGL::textureArrayOn();
}

void vertexArraysOff() {
    RVOPENGL::indexArrayOff();
    RVOPENGL::vertexArrayOff();
    RVOPENGL::textureArrayOff();
}

// Emitters and the 2D block disable culling without an update of the cached switch, which then has
// no effect.
void cullBackFaces() {
    if (!glIsEnabled(GL_CULL_FACE))
        RVOPENGL::cullingOff();
    RVOPENGL::cullingOn();
}

// The target that was bound when the drawing began.
class EntryTarget {
  public:
    EntryTarget() : current(RVFBO::getCurrent()), framebuffer(0) {
        if (!ravolt::RenderTargets::exists(current)) // the application may have deleted it
            current = nullptr;
        glGetIntegerv(GL_VIEWPORT, viewport);
        if (restoringTarget && RVOPENGL::useFBO())
            framebuffer = ravolt::boundFramebuffer();
        if (RVSETTINGS::getSDLForceFBO())
            RVFBO::unbind();
    }

    // Binds the target of the screen's pass.
    void bind() const {
        if (restoringTarget)
            restore();
        else
            bindWindow();
    }

  private:
    void setViewport() const { glViewport(viewport[0], viewport[1], viewport[2], viewport[3]); }

    void bindWindow() const {
        setViewport();
        bindFramebuffer(0);
        bindRenderbuffer(0);
        RVFBO *const forced = RVSETTINGS::getSDLForceFBO() ? RVOPENGL::getFbo(0) : nullptr;
        if (forced)
            forced->render(nullptr);
    }

    // RVFBO binds its target only if it is not the recorded current one.
    void restore() const {
        RVFBO::unbind();
        if (current)
            current->render(nullptr);
        bindFramebuffer(framebuffer);
        bindRenderbuffer(0);
        setViewport();
    }

    RVFBO *current; // as recorded by RVFBO; NULL for the window
    unsigned int framebuffer;
    GLint viewport[4];
};

} // namespace

RVTERRAIN::RVTERRAIN()
    : clipPlaneBelow{0, -1, 0, 0}, clipPlaneAbove{0, 1, 0, 0}, reflectionFbo(0),
      reflectionRenderbuffer(0), refractionFbo(0), refractionRenderbuffer(0),
      camera(nullptr), header{}, chunks(nullptr), indexTable(nullptr), coordBuffer(nullptr),
      numberOfChunks(0), lodThresholds(nullptr), lodEnabled(false), cachedModelview{},
      waterLoaded(false), failureReported(false) {
    initType(RV_NODE_TYPE_TERRAIN);
}

RVTERRAIN::~RVTERRAIN() {
    std::for_each(chunks, chunks + numberOfChunks, [](RVTERRAIN_CHUNK *chunk) { delete chunk; });
    delete[] chunks;
    delete coordBuffer;
    delete indexTable;
    delete[] lodThresholds;
}

void RVTERRAIN::setWaterSpeed(float speed) {
    if (water)
        water->setSpeed(speed);
}

void RVTERRAIN::setSkySpeed(float speed) {
    if (sky)
        sky->setSpeed(speed);
}

const RVTERRAIN_CHUNK *RVTERRAIN::getChunk(unsigned int index) const {
    return index < numberOfChunks ? chunks[index] : nullptr;
}

void RVTERRAIN::restoreTargetOn() { restoringTarget = true; }
void RVTERRAIN::restoreTargetOff() { restoringTarget = false; }
bool RVTERRAIN::isRestoringTarget() { return restoringTarget; }

bool RVTERRAIN::render(void *element) {
    if (!canRender())
        return false;
    const bool culled = RVOPENGL::isCulled();
    camera = RVCAMERA::getThisPassCamera();
    if (element) {
        RVELEMENT &entry = *static_cast<RVELEMENT *>(element);
        RVLIGHT::activateNearest(&entry);
        glLoadMatrixf(entry.getMatrix()->e);
    }
    computeFrustrum();
    RVLIGHT::lightingOff();
    cullBackFaces();
    const EntryTarget entryTarget;
    drawImages();
    entryTarget.bind();
    drawScreen();
    drawWater();
    finish(culled);
    return true;
}

bool RVTERRAIN::canRender() {
    if (numberOfChunks > 0 && ravolt::canBindBuffers())
        return true;
    if (!failureReported)
        zlfLog("   [!] No chunks or no vertex buffers @ RVTERRAIN::render\n");
    failureReported = true;
    return false;
}

// On purpose: a change of the projection alone does not change the planes.
void RVTERRAIN::computeFrustrum() {
    float projection[16], modelview[16], clip[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelview);
    if (std::equal(std::begin(modelview), std::end(modelview), cachedModelview))
        return;
    std::copy(std::begin(modelview), std::end(modelview), cachedModelview);

    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) {
            float sum = 0.0f;
            for (int k = 0; k < 4; ++k)
                sum += modelview[4 * row + k] * projection[4 * k + column];
            clip[4 * row + column] = sum;
        }
    // Left, right, bottom, top, near, far: the last column plus or minus one of the others.
    for (int plane = 0; plane < 6; ++plane) {
        const int column = plane / 2;
        const float sign = plane % 2 == 0 ? 1.0f : -1.0f;
        frustumPlanes[plane] =
            Z3MVECTOR4D(clip[3] + sign * clip[column], clip[7] + sign * clip[4 + column],
                        clip[11] + sign * clip[8 + column], clip[15] + sign * clip[12 + column]);
        frustumPlanes[plane].normalize();
    }
    std::for_each(chunks, chunks + numberOfChunks,
                  [this](RVTERRAIN_CHUNK *chunk) { chunk->setFrustumPlanes(frustumPlanes); });
}

float RVTERRAIN::eyeHeight() const {
    return (camera ? camera->getPosition() : RVCAMERA::getCameraPosition()).y;
}

// In every frame, since the application may load the water again.
void RVTERRAIN::fetchBuffers() {
    water->getReflectionBuffer(reflectionFbo, reflectionRenderbuffer);
    water->getRefractionBuffer(refractionFbo, refractionRenderbuffer);
}

// The plane that the reflection has set stays in use for the refraction. The screen's pass only
// replaces it, so that clipping is on without images, too.
void RVTERRAIN::drawImages() {
    if (!water)
        return;
    fetchBuffers();
    if (!reflectionFbo || !refractionFbo) {
        if (drawsWater())
            glEnable(GL_CLIP_PLANE0);
        return;
    }
    const int size = RVSETTINGS::getSDLWaterSize();
    glViewport(0, 0, size, size);
    glEnable(GL_CLIP_PLANE0);
    glClipPlane(GL_CLIP_PLANE0, eyeHeight() < 0.0f ? clipPlaneAbove : clipPlaneBelow);
    drawReflection();
    drawRefraction();
}

// Mirrored, so that back faces are front faces.
void RVTERRAIN::drawReflection() {
    for (unsigned int number = 0; number < numberOfChunks; ++number) {
        chunks[number]->computeLevel(camera, lodEnabled, true);
        chunks[number]->cullSurface(camera);
    }
    bindAndClear(reflectionFbo, reflectionRenderbuffer);
    glCullFace(GL_FRONT);
    if (eyeHeight() >= 0.0f)
        drawSky(-1.0f);
    vertexArraysOn();
    renderTerrainInv();
    glCullFace(GL_BACK);
}

void RVTERRAIN::drawRefraction() {
    for (unsigned int number = 0; number < numberOfChunks; ++number) {
        chunks[number]->computeLevel(camera, lodEnabled, false);
        chunks[number]->cullSurfaceInverse(camera);
    }
    bindAndClear(refractionFbo, refractionRenderbuffer);
    if (eyeHeight() <= 0.0f)
        drawSky(1.0f);
    vertexArraysOn();
    renderTerrain();
}

void RVTERRAIN::drawScreen() {
    const float y = eyeHeight();
    if (y <= -surfaceMargin)
        glClipPlane(GL_CLIP_PLANE0, clipPlaneBelow);
    else if (y >= surfaceMargin)
        glClipPlane(GL_CLIP_PLANE0, clipPlaneAbove);
    else
        glDisable(GL_CLIP_PLANE0);
    for (unsigned int number = 0; number < numberOfChunks; ++number) {
        chunks[number]->computeLevel(camera, lodEnabled, false);
        if (drawsWater()) // it hides the objects on its other side
            chunks[number]->cullSurface(camera);
    }
    drawSky(1.0f);
    vertexArraysOn();
    glPushMatrix();
    glTranslatef(0, landLift, 0);
    renderTerrain();
    if (RVOPENGL::getProfile() == RV_OPENGL_PROFILE_FLAT)
        glCullFace(GL_BACK);
    glPopMatrix();
}

// With its element the sky would load a matrix and undo the mirror.
void RVTERRAIN::drawSky(float scaleY) const {
    if (!sky)
        return;
    glPushMatrix();
    if (scaleY != 1.0f)
        glScalef(1, scaleY, 1);
    sky->render(nullptr);
    glPopMatrix();
}

// The surface is in the clip plane, where rounding errors would decide on clipping.
void RVTERRAIN::drawWater() const {
    RVOPENGL::cullingOff();
    glDisable(GL_CLIP_PLANE0);
    if (drawsWater())
        water->render(nullptr);
}

void RVTERRAIN::renderTerrain() { renderChunks(1.0f); }
void RVTERRAIN::renderTerrainInv() { renderChunks(-1.0f); }

void RVTERRAIN::renderChunks(float inv) {
    RVOPENGL::normalArrayOn();
    RVOPENGL::colorArrayOn();
    std::for_each(chunks, chunks + numberOfChunks,
                  [inv](RVTERRAIN_CHUNK *chunk) { chunk->render(inv); });
    RVOPENGL::normalArrayOff();
    RVOPENGL::colorArrayOff();
}

// The next object must not be drawn with the textures and the program of a chunk or of the water: a
// material does not disable the units of an earlier one.
void RVTERRAIN::finish(bool culled) {
    vertexArraysOff();
    ravolt::unbindBuffers();
    glDisable(GL_CLIP_PLANE0);
    if (culled)
        RVOPENGL::cullingOn();
    RVLIGHT::lightingOn();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVSHADER::disable();
    RVMATERIAL::reset();
}
