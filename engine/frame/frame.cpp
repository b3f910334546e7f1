// The frame between its marks. The application's passes fill the render list between a begin and
// an end, and the end functions draw it, each entry through its node's `render`; the current
// profile and target decide what that produces. A projection pushed by begin2D is popped by end2D;
// everything else leaves the stacks as it found them.

#include "engine/frame/frameSteps.h"
#include "engine/gl/bindings.h"
#include "engine/gl/screenQuad.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "resources/framebuffers.h"
#include "scene/localTransform.h"
#include "scene/nodeTraits.h"
#include "scene/renderList.h"

#include <algorithm>
#include <iterator>

namespace {

bool isAnyNode(const RVNODE &) { return true; }

bool isInBlock2D(const RVNODE &node) { return ravolt::traitsOf(node).inBlock2D; }

void resetFrameState() {
    RVELEMENT::reset();
    RVSHADER::reset();
    RVMATERIAL::reset();
    RVMESH::reset();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOff();
    RVOPENGL::twoSideOff();
}

void loadView(RVCAMERA *camera) {
    if (camera) {
        camera->render(nullptr);
        return;
    }
    RVCAMERA standard;
    standard.render(nullptr);
}

// On purpose: nothing ends the lines but the next begin2D.
void startWireframe() {
    glDisable(GL_CULL_FACE); // not through the switch, so that end2D still knows what to restore
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
}

// The state in which everything flat is drawn.
void startFlatDrawing() {
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    RVSHADER::disable();
    RVLIGHT::lightingOff();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVMATERIAL::reset(); // its textures, blending and lighting have just gone
    RVELEMENT::reset();
    RVOPENGL::blendingOff();
    glDisable(GL_CULL_FACE); // not through the switch, so that end2D still knows what to restore
    glDisable(GL_DEPTH_TEST);
    RVOPENGL::twoSideOff();
}

// Vertices, colours and texture coordinates, from the application's memory.
void setFlatArrays() {
    ravolt::unbindBuffers();
    RVOPENGL::vertexArrayOn();
    RVOPENGL::normalArrayOff();
    RVOPENGL::colorArrayOn();
    if (RVOPENGL::useMultitexturing())
        ravolt::selectClientUnit(0);
    RVOPENGL::textureArrayOn();
}

// Pixels of the current viewport, which need not be the window's.
void pushPixelProjection() {
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    const GLint width = viewport[2], height = viewport[3];
    ravolt::pushProjection();
    if (RVSETTINGS::isSDLLandscape()) {
        glRotatef(90, 0, 0, 1);
        ravolt::applyPixelProjection(height, width);
    } else {
        ravolt::applyPixelProjection(width, height);
    }
}

// The view's rotation and the sky's own: the sky turns with the camera and never moves.
Z3MMATRIX skyMatrix(const RVNODE &sky) {
    glLoadIdentity();
    glMultMatrixf(RVCAMERA::getCameraMatrix()->e);
    ravolt::applyRotation(sky.getRotation());
    Z3MMATRIX matrix;
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix.e);
    matrix.setTranslation(0, 0, 0);
    return matrix;
}

} // namespace

// Here and not beside the other switches, since the programs are asked.
void RAVOLT::shadowingOn() {
    if (RVSHADER::useShadows())
        shadowing = true;
}

bool RAVOLT::clear(bool color, bool depth, bool stencil) {
    // On purpose: where the target is not chosen, one that is left bound stays bound.
    renderingOnFbo = Frame::wantsTarget();
    if (renderingOnFbo)
        RVOPENGL::getFbo(0)->render(nullptr);
    const GLbitfield mask = (color ? GL_COLOR_BUFFER_BIT : 0u) |
                            (depth ? GL_DEPTH_BUFFER_BIT : 0u) |
                            (stencil ? GL_STENCIL_BUFFER_BIT : 0u);
    if (mask)
        glClear(mask);
    return true;
}

// The application may have deleted one of them, or its texture, with all others.
bool RAVOLT::Frame::haveTargets() {
    return active && ravolt::framebuffersWork() &&
           std::all_of(std::begin(RVOPENGL::fbo), std::end(RVOPENGL::fbo),
                       [](const RVFBO *target) { return target && target->getTexture(); });
}

// Asked by the settings or by an effect that composes the picture.
bool RAVOLT::Frame::wantsTarget() {
    if (RVSETTINGS::getSDLForceFBO())
        return haveTargets(); // without targets the wish is ignored
    return haveBloom() || haveDepthOfField();
}

bool RAVOLT::begin3D(RVCAMERA *camera) {
    updateTimer();
    ++timeStamp;
    resetFrameState();
    loadView(camera);
    return true;
}

// On purpose: with shadows the main pass draws once more what the shadow pass has drawn; at equal
// depths the shadowed picture stands, while what is transparent blends a second time.
bool RAVOLT::end3D(bool blit) {
    RVELEMENT::sort3D();
    if (wireframe)
        startWireframe();
    if (Frame::haveDepthOfField())
        Frame::drawDepths();
    if (skybox)
        Frame::drawSkybox();
    if (Frame::haveShadows())
        Frame::drawShadows();
    Frame::drawMainPass();
    if (Frame::haveBloom())
        Frame::applyBloom();
    if (Frame::haveDepthOfField())
        Frame::applyDepthOfField();
    if (blit && renderingOnFbo && Frame::haveTargets() && !RVSETTINGS::getSDLForceFBO())
        Frame::presentScene();
    return true;
}

bool RAVOLT::begin2D() {
    updateTimer();
    startFlatDrawing();
    setFlatArrays();
    pushPixelProjection();
    return true;
}

bool RAVOLT::end2D() {
    RVELEMENT::sort2D();
    Frame::drawList(isInBlock2D);
    ravolt::popProjection();
    if (RVOPENGL::isCulled())
        glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    return true;
}

void RAVOLT::Frame::drawList(bool (*isDrawn)(const RVNODE &node)) {
    for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index) {
        RVELEMENT *element = ravolt::RenderList::entry(index);
        RVNODE *node = element->getNode();
        if (isDrawn(*node))
            node->render(element);
    }
}

void RAVOLT::Frame::drawMainPass() { drawList(isAnyNode); }

void RAVOLT::Frame::presentScene() {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    RVFBO::unbind();
    ravolt::pushProjection();
    ravolt::applyWindowProjection(width, height);
    RVTEXTURE::texturingOn(0);
    RVOPENGL::blendingOff();
    RVLIGHT::lightingOff();
    RVSHADER::disable();
    glDisable(GL_DEPTH_TEST);
    glColor4f(1, 1, 1, 1);
    RVOPENGL::getFbo(0)->getTexture()->render(nullptr);
    ravolt::drawQuad(width, height);
    ravolt::popProjection();
    glEnable(GL_DEPTH_TEST);
}

// Only the first child; the skybox itself holds it and its rotation.
void RAVOLT::Frame::drawSkybox() {
    RVMATERIAL::reset();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVLIGHT::lightingOff();
    glColor4f(1, 1, 1, 1);

    RVELEMENT element = ravolt::RenderList::entryOutside(skybox);
    *element.getMatrix() = skyMatrix(*skybox);
    element.setParam1(RV_SKELETONS); // never in the skeleton cache
    if (RVNODE *sky = skybox->getChild(0))
        sky->render(&element);
}
