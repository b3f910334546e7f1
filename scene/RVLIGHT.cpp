// Invariant: `lighting` is what OpenGL's switch GL_LIGHTING was last set to. Only this source
// changes that switch and the lights.

#include "ravolt/RVLIGHT.h"

#include "engine/gl/stateCache.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"
#include "scene/localTransform.h"
#include "scene/nodeInternals.h"

#include <iterator>
#include <typeinfo>

namespace {

// Lights that an object gets, and lights that every OpenGL has.
constexpr unsigned int lightsOfAnObject = 4;
constexpr unsigned int openGLLights = 8;

constexpr float allAround = 180.0f;

// Position, direction and cut-off that OpenGL gets, in the light's own frame.
struct Aim {
    float position[4];
    float direction[4]; // of which OpenGL reads three
    float cutOff;
};

// Turns the direction of a light with a target to that target.
void aimAtTarget(RVLIGHT &light) {
    RVNODE *const node = light.getTargetNode();
    if (!node)
        return;
    const Z3MVECTOR3D position = light.getPositioning() == RV_NODE_POSITIONING_MATRIX
                                     ? light.getMatrix().getTranslation()
                                     : light.getPosition();
    Z3MVECTOR3D way =
        (node == &light ? light.getTarget() : node->getFinalMatrix(nullptr).getTranslation()) -
        position;
    way.normalize();
    light.setDirection(way);
}

Aim aimByType(const RVLIGHT &light) {
    const Z3MVECTOR3D way = light.getDirection();
    const Aim omni = {{0, 0, 0, 1}, {0, 0, 0, 1}, allAround};
    switch (light.getLightType()) {
    case RV_LIGHT_TYPE_OMNI:
        return omni;
    case RV_LIGHT_TYPE_DIRECTIONAL:
        return {{-way.x, -way.y, -way.z, 0}, {0, 0, 0, 0}, allAround};
    case RV_LIGHT_TYPE_SPOT:
        return {{0, 0, 0, 1}, {way.x, way.y, way.z, 1}, light.getCutOff()};
    }
    zlfLog("   [!] Consistency broken: unknow type for %s @ RVLIGHT::render\n", light.getName());
    return omni;
}

// What an OpenGL light was last set to, and from which entry.
struct Slot {
    unsigned int period = 0; // of KnownState
    const RVELEMENT *entry = nullptr;
    Z3MVECTOR4D ambient, diffuse, specular;
    Z3MVECTOR3D attenuation;
    float cutOff = 0, exponent = 0;
    bool noDirection = false; // the direction is (0, 0, 0), in any frame
};
Slot slots[openGLLights];

bool isSetUp(const RVELEMENT &entry) {
    if (entry.getParam1() >= openGLLights)
        return false;
    const Slot &slot = slots[entry.getParam1()];
    return ravolt::KnownState::hit(slot.period, slot.entry == &entry);
}

// A light of an unknown type is logged each time, and so set up each time.
bool hasKnownType(const RVLIGHT &light) {
    return light.getLightType() >= RV_LIGHT_TYPE_OMNI && light.getLightType() <= RV_LIGHT_TYPE_SPOT;
}

// Sets one of the parameters of a light that do not depend on a matrix, and records it.
class Parameters {
  public:
    explicit Parameters(unsigned int number) : light(GL_LIGHT0 + number), slot(slots[number]) {}

    void set(GLenum name, Z3MVECTOR4D &recorded, const Z3MVECTOR4D &value) const {
        if (ravolt::KnownState::hit(slot.period, recorded == value))
            return;
        recorded = value;
        glLightfv(light, name, recorded);
    }

    void set(GLenum name, float &recorded, float value) const {
        if (ravolt::KnownState::hit(slot.period, recorded == value))
            return;
        recorded = value;
        glLightf(light, name, value);
    }

  private:
    const GLenum light;
    const Slot &slot;
};

// Only what the OpenGL light is not known to have already.
void setUp(const RVLIGHT &source, const RVELEMENT &entry, const Aim &aim) {
    const GLenum light = GL_LIGHT0 + entry.getParam1();
    Slot &slot = slots[entry.getParam1()];
    const Parameters parameters(entry.getParam1());
    if (!ravolt::KnownState::hit(slot.period, true))
        glEnable(light);
    parameters.set(GL_AMBIENT, slot.ambient, source.getAmbient());
    parameters.set(GL_DIFFUSE, slot.diffuse, source.getDiffuse());
    parameters.set(GL_SPECULAR, slot.specular, source.getSpecular());
    parameters.set(GL_SPOT_CUTOFF, slot.cutOff, aim.cutOff);
    parameters.set(GL_SPOT_EXPONENT, slot.exponent, source.getExponent());
    const Z3MVECTOR3D attenuation = source.getAttenuation();
    parameters.set(GL_CONSTANT_ATTENUATION, slot.attenuation.x, attenuation.x);
    parameters.set(GL_LINEAR_ATTENUATION, slot.attenuation.y, attenuation.y);
    parameters.set(GL_QUADRATIC_ATTENUATION, slot.attenuation.z, attenuation.z);
    // On purpose: the matrix includes the rotation already, so a rotated light turns twice.
    glLoadMatrixf(entry.getMatrix()->e);
    ravolt::applyRotation(source.getRotation());
    glLightfv(light, GL_POSITION, aim.position);
    const bool noDirection = !aim.direction[0] && !aim.direction[1] && !aim.direction[2];
    if (!ravolt::KnownState::hit(slot.period, noDirection && slot.noDirection))
        glLightfv(light, GL_SPOT_DIRECTION, aim.direction);
    slot.noDirection = noDirection;
    slot.entry = hasKnownType(source) ? &entry : nullptr;
    slot.period = ravolt::KnownState::period();
}

// On purpose: the shape is drawn at each set-up, and so for each object that the light reaches.
void drawShape(const RVLIGHT &light, const RVELEMENT &entry) {
    constexpr float s = 2.0f;
    constexpr float corner[][3] = {{0, s, 0},   {s, -s, -s}, {-s, -s, -s}, {0, s, 0},
                                   {s, -s, s},  {-s, -s, s}, {0, s, 0},    {s, -s, s},
                                   {s, -s, -s}, {0, s, 0},   {-s, -s, s},  {-s, -s, -s}};
    RVLIGHT::lightingOff();
    glLoadMatrixf(entry.getMatrix()->e);
    glColor4fv(light.getDiffuse());
    glBegin(GL_LINE_STRIP);
    for (const auto &point : corner)
        glVertex3fv(point);
    glEnd();
    RVLIGHT::lightingOn();
}

// The render of an application's class may change any state of OpenGL.
void renderLight(RVELEMENT &entry) {
    RVNODE &light = *entry.getNode();
    if (typeid(light) == typeid(RVLIGHT)) {
        light.render(&entry);
        return;
    }
    const ravolt::KnownState unknown;
    light.render(&entry);
}

} // namespace

bool RVLIGHT::lighting = false;
bool RVLIGHT::markers = true;

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

// On purpose: lights beyond the fourth, and elements of the entry without a light, do not change.
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
        // By class: an object of another one that has been assigned from a light would be lit anew.
        if (!ravolt::NodeInternals::isObjectOf(*light->getNode(), RV_NODE_TYPE_LIGHT)) {
            zlfLog("   [!] Consistency error: invalid object passed as light @ "
                   "RVLIGHT::activateNearest\n");
            return false;
        }
        light->setParam1(slot);
        renderLight(*light);
        element->setNearestLight(slot, light);
    }
    return true;
}

// Lights do not change while the state is known: an entry that was set up in the same period is
// still set up.
bool RVLIGHT::render(void *element) {
    if (!element) {
        zlfLog("   [!] Invalid params @ RVLIGHT::render\n");
        return false;
    }
    const RVELEMENT &entry = *static_cast<const RVELEMENT *>(element);
    aimAtTarget(*this);
    lightingOn();
    if (!isSetUp(entry)) {
        const Aim aim = aimByType(*this);
        // The entry of a light that no object has activated may have the number of a former mesh.
        if (entry.getParam1() < openGLLights)
            setUp(*this, entry, aim);
    }
    if (markers)
        drawShape(*this, entry);
    return true;
}
