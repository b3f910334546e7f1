// The frame, from `clear` to `end2D`. Between a begin and an end function the application's passes
// fill the render list; the end function draws each entry through its node's `render`, which
// depends on the current profile and target. The projection that begin2D pushes is popped by end2D;
// all other functions restore the matrix stacks.

#include "engine/frame/frameSteps.h"
#include "engine/gl/bindings.h"
#include "engine/gl/screenQuad.h"
#include "engine/gl/stateCache.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "resources/framebuffers.h"
#include "resources/renderTargets.h"
#include "scene/localTransform.h"
#include "scene/nodeTraits.h"
#include "scene/renderList.h"

#include <algorithm>
#include <iterator>
#include <typeinfo>

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
    RVCAMERA defaultCamera;
    defaultCamera.render(nullptr);
}

// On purpose: only the next begin2D ends line mode.
void startWireframe() {
    glDisable(GL_CULL_FACE); // not through the switch, so that end2D still knows what to restore
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
}

// The state of the 2D block.
void setState2D() {
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    RVSHADER::disable();
    RVLIGHT::lightingOff();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVMATERIAL::reset(); // its textures, blending and lighting have just been switched off
    RVELEMENT::reset();
    RVFONT::reset();
    RVOPENGL::blendingOff();
    glDisable(GL_CULL_FACE); // not through the switch, so that end2D still knows what to restore
    glDisable(GL_DEPTH_TEST);
    RVOPENGL::twoSideOff();
}

// Vertices, colours and texture coordinates, from the application's memory.
void setArrays2D() {
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

// The rotations of the view and of the sky, without a translation.
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

// The switches of the effects that draw into targets: the frame is not to wait for their memory.
// The other switches are in engine/state.

void RAVOLT::shadowingOn() {
    if (!RVSHADER::useShadows())
        return;
    shadowing = true;
    ravolt::allocateRenderTargets();
}

void RAVOLT::bloomingOn() {
    blooming = true;
    if (RVSHADER::useBloom())
        ravolt::allocateRenderTargets();
}

void RAVOLT::DOFOn() {
    DOF = true;
    if (RVSHADER::useDOF())
        ravolt::allocateRenderTargets();
}

bool RAVOLT::clear(bool color, bool depth, bool stencil) {
    // On purpose: a target that is bound is not unbound where target 0 is not needed.
    renderingOnFbo = Frame::needsTarget();
    if (renderingOnFbo)
        RVOPENGL::getFbo(0)->render(nullptr);
    const GLbitfield mask = (color ? GL_COLOR_BUFFER_BIT : 0u) |
                            (depth ? GL_DEPTH_BUFFER_BIT : 0u) |
                            (stencil ? GL_STENCIL_BUFFER_BIT : 0u);
    if (mask)
        glClear(mask);
    return true;
}

// The application may have deleted some of them or of their textures.
bool RAVOLT::Frame::haveTargets() {
    return active && ravolt::framebuffersWork() &&
           std::all_of(std::begin(RVOPENGL::fbo), std::end(RVOPENGL::fbo),
                       [](const RVFBO *target) { return target && target->getTexture(); });
}

// The settings force target 0, or an effect draws into it.
bool RAVOLT::Frame::needsTarget() {
    if (RVSETTINGS::getSDLForceFBO())
        return haveTargets(); // without targets the setting is ignored
    return haveBloom() || haveDepthOfField();
}

bool RAVOLT::begin3D(RVCAMERA *camera) {
    updateTimer();
    ++timeStamp;
    resetFrameState();
    loadView(camera);
    return true;
}

// On purpose: after the shadow pass the main pass draws the list once more. At equal depths the
// shadowed pixels remain, while transparent entries are blended a second time.
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
    setState2D();
    setArrays2D();
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
    ravolt::KnownState state;
    ravolt::RenderListWalk walk;
    while (RVELEMENT *const element = walk.next()) {
        RVNODE *const node = element->getNode();
        if (!isDrawn(*node))
            continue;
        state.beforeNode(keepsStateKnown(*node));
        node->render(element);
    }
}

// Other kinds change more than the caches record, and an application's class may change anything.
bool RAVOLT::Frame::keepsStateKnown(const RVNODE &node) {
    const std::type_info *const type = &typeid(node);
    return type == &typeid(RVMESH) || type == &typeid(RVLIGHT);
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

// Draws the first child only. The skybox node itself has the rotation.
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
