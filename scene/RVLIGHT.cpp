// Invariant: `lighting` is what OpenGL's switch GL_LIGHTING was last set to. Only this source
// changes that switch and the lights.

#include "ravolt/RVLIGHT.h"

#include "engine/gl/stateCache.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"
#include "scene/localTransform.h"

#include <iterator>

namespace {

// Lights that an object gets, and lights that every OpenGL has.
constexpr unsigned int lightsOfAnObject = 4;
constexpr unsigned int openGLLights = 8;

constexpr float allAround = 180.0f;

} // namespace

// What OpenGL is told of the place and the direction of a light, in the light's own frame.
struct RVLIGHT::Aim {
    float position[4];
    float direction[4]; // of which OpenGL reads three
    float cutOff;
};

bool RVLIGHT::lighting = false;

RVLIGHT::RVLIGHT()
    : lightType(RV_LIGHT_TYPE_OMNI), ambient(0.2, 0.2, 0.2, 1), diffuse(0.7, 0.7, 0.7, 1),
      specular(0.2, 0.2, 0.2, 1), attenuation(1, 0, 0), cutOff(allAround), exponent(0),
      exclusive(false), shadowCaster(false), shadowNearPlane(1.0f), shadowFarPlane(1024.0f) {
    initType(RV_NODE_TYPE_LIGHT);
}

RVLIGHT::RVLIGHT(const RVLIGHT &other) : RVNODE(other) {
    *this = other;
    setDynamicClass(RV_NODE_TYPE_LIGHT);
}

RVLIGHT::~RVLIGHT() = default;

void RVLIGHT::lightingOn() {
    if (ravolt::cacheHit(lighting))
        return;
    lighting = true;
    glEnable(GL_LIGHTING);
}

void RVLIGHT::lightingOff() {
    if (ravolt::cacheHit(!lighting))
        return;
    lighting = false;
    glDisable(GL_LIGHTING);
}

// On purpose: lights beyond the fourth, and the entry's places that get no light, stay as they are.
bool RVLIGHT::activateNearest(RVELEMENT *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVLIGHT::activateNearest\n");
        return false;
    }
    if (!lighting)
        return false;
    RVELEMENT::sortLights(element->getMatrix()->getTranslation());
    for (unsigned int slot = 0; slot < lightsOfAnObject; ++slot) {
        RVELEMENT *light = RVELEMENT::getLight(slot);
        if (!light)
            break;
        if (light->getNode()->getType() != RV_NODE_TYPE_LIGHT) {
            zlfLog("   [!] Consistency error: invalid object passed as light @ "
                   "RVLIGHT::activateNearest\n");
            return false;
        }
        light->setParam1(slot);
        light->getNode()->render(light);
        element->setNearestLight(slot, light);
    }
    return true;
}

bool RVLIGHT::render(void *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVLIGHT::render\n");
        return false;
    }
    const RVELEMENT &entry = *static_cast<const RVELEMENT *>(element);
    takeAim();
    const Aim aim = aimByType();
    lightingOn();
    // A light that no object has asked for may hold the number that a mesh left in its entry.
    if (entry.getParam1() < openGLLights)
        setUp(entry, aim);
    drawShape(entry);
    return true;
}

void RVLIGHT::takeAim() {
    RVNODE *const node = getTargetNode();
    if (!node)
        return;
    const Z3MVECTOR3D place = getPositioning() == RV_NODE_POSITIONING_MATRIX
                                  ? getMatrix().getTranslation()
                                  : getPosition();
    Z3MVECTOR3D way =
        (node == this ? getTarget() : node->getFinalMatrix(nullptr).getTranslation()) - place;
    way.normalize();
    setDirection(way);
}

RVLIGHT::Aim RVLIGHT::aimByType() const {
    const Z3MVECTOR3D way = getDirection();
    const Aim omni = {{0, 0, 0, 1}, {0, 0, 0, 1}, allAround};
    switch (lightType) {
    case RV_LIGHT_TYPE_OMNI:
        return omni;
    case RV_LIGHT_TYPE_DIRECTIONAL:
        return {{-way.x, -way.y, -way.z, 0}, {0, 0, 0, 0}, allAround};
    case RV_LIGHT_TYPE_SPOT:
        return {{0, 0, 0, 1}, {way.x, way.y, way.z, 1}, cutOff};
    }
    zlfLog("   [!] Consistency broken: unknow type for %s @ RVLIGHT::render\n", getName());
    return omni;
}

void RVLIGHT::setUp(const RVELEMENT &entry, const Aim &aim) const {
    const GLenum light = GL_LIGHT0 + entry.getParam1();
    glEnable(light);
    glLightfv(light, GL_AMBIENT, &ambient.x);
    glLightfv(light, GL_DIFFUSE, &diffuse.x);
    glLightfv(light, GL_SPECULAR, &specular.x);
    glLightf(light, GL_SPOT_CUTOFF, aim.cutOff);
    glLightf(light, GL_SPOT_EXPONENT, exponent);
    glLightf(light, GL_CONSTANT_ATTENUATION, attenuation.x);
    glLightf(light, GL_LINEAR_ATTENUATION, attenuation.y);
    glLightf(light, GL_QUADRATIC_ATTENUATION, attenuation.z);
    // On purpose: the matrix holds the rotation already, so a rotated light turns twice.
    glLoadMatrixf(entry.getMatrix()->e);
    ravolt::applyRotation(getRotation());
    glLightfv(light, GL_POSITION, aim.position);
    glLightfv(light, GL_SPOT_DIRECTION, aim.direction);
}

// On purpose: the shape is drawn at each set-up, and so for each object that the light reaches.
void RVLIGHT::drawShape(const RVELEMENT &entry) const {
    constexpr float s = 2.0f;
    constexpr float corner[][3] = {{0, s, 0},   {s, -s, -s}, {-s, -s, -s}, {0, s, 0},
                                   {s, -s, s},  {-s, -s, s}, {0, s, 0},    {s, -s, s},
                                   {s, -s, -s}, {0, s, 0},   {-s, -s, s},  {-s, -s, -s}};
    lightingOff();
    glLoadMatrixf(entry.getMatrix()->e);
    glColor4fv(&diffuse.x);
    glBegin(GL_LINE_STRIP);
    for (const auto &point : corner)
        glVertex3fv(point);
    glEnd();
    lightingOn();
}
