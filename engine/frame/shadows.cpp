// The shadow pass: the depths of the scene, seen from the caster, are drawn into target 2, a depth
// texture. Then the list is drawn with that map on unit 1, whose texture matrix transforms
// positions from eye space to the map. The map is preserved until the next frame, on which
// RAVOLT::skipShadowsGeneration relies.

#include "engine/frame/frameSteps.h"

#include "engine/gl/bindings.h"
#include "engine/gl/screenQuad.h"
#include "engine/gl/stateCache.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/textureInternals.h"
#include "scene/nodeTraits.h"
#include "scene/renderList.h"
#include "scene/shadowCaster.h"

namespace {

constexpr unsigned int mapUnit = 1;

RVFBO &shadowMap() { return *RVOPENGL::getFbo(2); }

// Multiplies the perspective of the light's cone onto the projection, which is the current matrix.
Z3MMATRIX loadProjection(const RVLIGHT &light) {
    RVOPENGL::setPerspective(2 * light.getCutOff(), 1, light.getShadowNearPlane(),
                             light.getShadowFarPlane());
    glMatrixMode(GL_MODELVIEW);
    Z3MMATRIX projection;
    glGetFloatv(GL_PROJECTION_MATRIX, projection.e);
    return projection;
}

// Also loads the view into the modelview matrix.
// On purpose: for a light that points along the y axis `side` is a null vector, and the shadows are
// not sensible.
Z3MMATRIX loadView(RVLIGHT &light) {
    const Z3MMATRIX transform = light.getFinalMatrix(nullptr);
    const Z3MVECTOR3D eye(transform.e[12], transform.e[13], transform.e[14]);
    const Z3MVECTOR3D target = eye + transform.rotate(light.getDirection());
    Z3MVECTOR3D forward = eye - target;
    forward.normalize();
    Z3MVECTOR3D up(0, 1, 0);
    Z3MVECTOR3D side = up ^ forward;
    up = forward ^ side;
    side.normalize();
    up.normalize();
    const float rotation[16] = {side.x, up.x, forward.x, 0, side.y, up.y, forward.y, 0,
                                side.z, up.z, forward.z, 0, 0,      0,    0,         1};
    glLoadMatrixf(rotation);
    glTranslatef(-eye.x, -eye.y, -eye.z);
    Z3MMATRIX view;
    glGetFloatv(GL_MODELVIEW_MATRIX, view.e);
    return view;
}

// The matrices of the caster.
struct Caster {
    Z3MMATRIX projection, view, cameraInverse;

    explicit Caster(RVLIGHT &light)
        : projection(loadProjection(light)), view(loadView(light)),
          cameraInverse(*RVCAMERA::getCameraMatrix()) {
        cameraInverse.invert();
    }

    Z3MMATRIX eyeToLight() const { return cameraInverse * view; }
};

// Only back faces are drawn for its lifetime, independent of the cached switch.
class BackFaces {
  public:
    BackFaces() : culled(RVOPENGL::isCulled()) {
        if (!culled)
            glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
    }
    ~BackFaces() {
        glCullFace(GL_BACK);
        if (!culled)
            glDisable(GL_CULL_FACE);
    }
    BackFaces(const BackFaces &) = delete;
    BackFaces &operator=(const BackFaces &) = delete;

  private:
    bool culled;
};

// Sets the offset of filled polygons for its lifetime, unless both numbers are 0: then OpenGL's
// current offset, which may be the application's, is not changed.
class DepthOffset {
  public:
    DepthOffset(float factor, float units) : shifts(factor != 0.0f || units != 0.0f) {
        if (!shifts)
            return;
        enabled = glIsEnabled(GL_POLYGON_OFFSET_FILL);
        glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &oldFactor);
        glGetFloatv(GL_POLYGON_OFFSET_UNITS, &oldUnits);
        glPolygonOffset(factor, units);
        glEnable(GL_POLYGON_OFFSET_FILL);
    }
    ~DepthOffset() {
        if (!shifts)
            return;
        if (!enabled)
            glDisable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(oldFactor, oldUnits);
    }
    DepthOffset(const DepthOffset &) = delete;
    DepthOffset &operator=(const DepthOffset &) = delete;

  private:
    bool shifts;
    bool enabled = false;
    float oldFactor = 0.0f, oldUnits = 0.0f;
};

void startDepths() {
    shadowMap().render(nullptr);
    glColorMask(0, 0, 0, 0);
    glShadeModel(GL_FLAT);
    glClear(GL_DEPTH_BUFFER_BIT);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    RVLIGHT::lightingOff();
}

void endDepths() {
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
    glColorMask(1, 1, 1, 1);
    glShadeModel(GL_SMOOTH);
}

// From eye space through the world to the map, whose coordinates and depths run from 0 to 1.
void loadMapMatrix(const Caster &caster) {
    ravolt::selectUnit(mapUnit);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glTranslatef(0.5f, 0.5f, 0.5f);
    glScalef(0.5f, 0.5f, 0.5f);
    glMultMatrixf(caster.projection.e);
    glMultMatrixf(caster.view.e);
    glMultMatrixf(caster.cameraInverse.e);
    glMatrixMode(GL_MODELVIEW);
}

// Not through RVTEXTURE, which enables the unit: it must be off for what is drawn without a
// program.
void bindMap() {
    glBindTexture(GL_TEXTURE_2D, shadowMap().getTexture()->getGLId());
    RVSHADER::bindTexture(mapUnit);
    ravolt::selectUnit(0);
}

void unloadMapMatrix() {
    ravolt::selectUnit(mapUnit);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    ravolt::selectUnit(0);
    RVTEXTURE::texturingOff(mapUnit);
}

} // namespace

// Draws the entries that cast shadows: not the lights, nor what extends to the horizon, as the sky
// does. The matrix of an entry is in the caster's eye space while it is drawn.
void RAVOLT::Frame::drawCasters(const Z3MMATRIX &eyeToLight) {
    ravolt::RenderListWalk walk(RVELEMENT::getNumberOfLights());
    ravolt::KnownState state;
    while (RVELEMENT *const element = walk.next()) {
        RVNODE *const node = element->getNode();
        if (!ravolt::traitsOf(*node).casts)
            continue;
        const Z3MMATRIX matrix = *element->getMatrix();
        *element->getMatrix() = matrix * eyeToLight;
        state.beforeNode(keepsStateKnown(*node));
        node->render(element);
        if (RVELEMENT *const drawn = walk.current())
            *drawn->getMatrix() = matrix;
    }
}

void RAVOLT::Frame::drawMap(const Z3MMATRIX &eyeToLight) {
    GLint viewport[4] = {};
    {
        const BackFaces backFaces;
        glGetIntegerv(GL_VIEWPORT, viewport);
        startDepths();
        {
            const DepthOffset offset(getShadowOffsetFactor(), getShadowOffsetUnits());
            drawCasters(eyeToLight);
        }
        endDepths();
    }
    if (renderingOnFbo)
        RVOPENGL::getFbo(0)->render(nullptr);
    else
        RVFBO::unbind();
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    invalidateAfterList();
}

void RAVOLT::Frame::drawShadows() {
    RVLIGHT *light = ravolt::findShadowCaster();
    if (!light) {
        zlfLog("   [!] Invalid shadow pass: no shadow casters detected @ RAVOLT::end3D\n");
        return;
    }
    ravolt::pushProjection();
    const Caster caster(*light);
    if (!skipShadows)
        drawMap(caster.eyeToLight());
    skipShadows = false;
    ravolt::popProjection();

    loadMapMatrix(caster);
    bindMap();
    ravolt::TextureInternals::invalidateUnit(mapUnit);
    drawList([](const RVNODE &) { return true; });
    unloadMapMatrix();
    ravolt::TextureInternals::invalidateUnit(mapUnit);
    invalidateAfterList();
}
