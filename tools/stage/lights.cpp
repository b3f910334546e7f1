// Lights of the rigs are directional. The position of such a light has no effect, except that
// programs go by the nearest light alone: so they are all at the camera and behind it, the first
// one nearest to the scene.
//
// The engine leaves OpenGL lights on that an object does not need any more. So there are always
// four of them, the most that an object can have; those that are not needed are black.

#include "tools/stage/lights.h"

#include "tools/stage/vectors.h"
#include "tools/stage/walk.h"

#include <algorithm>
#include <cmath>
#include <ravolt.h>

namespace ravolt::tool {

namespace {

constexpr std::size_t lightsOfAnObject = 4;
constexpr float spotAmbient = 0.2f;

// One light of a rig: where it comes from, in the axes of the view or of the world. A light
// may be brighter in highlights, which are all that is visible of black plastic.
struct RigLight {
    double right, up, back;
    float brightness, highlight;
};

struct Rig {
    const char *name;
    bool withCamera; // else fixed in the world
    float ambient;
    std::vector<RigLight> lights;
};

const std::vector<Rig> &rigs() {
    static const std::vector<Rig> all = {
        {"studio",
         true,
         0.25f,
         {{-0.6, 0.7, 0.7, 0.65f, 1.0f},    // key
          {0.9, 0.1, 0.5, 0.25f, 1.0f},     // fill
          {0.3, 0.6, -0.9, 0.5f, 4.0f},     // rim
          {-0.9, -0.3, -0.6, 0.2f, 3.0f}}}, // rim of the other side
        {"headlight", true, 0.2f, {{0, 0, 1, 0.85f, 0.85f}}},
        {"sun", false, 0.3f, {{0.5, 0.8, 0.4, 0.9f, 0.9f}}},
        {"low sun", false, 0.15f, {{-1, 0.25, 0.2, 0.95f, 0.95f}}},
    };
    return all;
}

void setGlobalAmbient(float ambient) {
    RVOPENGL::setGlobalAmbientLight(ambient, ambient, ambient, 1.0f);
}

void shine(RVLIGHT &light, double brightness, double highlight) {
    const float b = static_cast<float>(brightness), h = static_cast<float>(highlight);
    light.setAmbient(0, 0, 0, 1);
    light.setDiffuse(b, b, b, 1);
    light.setSpecular(h, h, h, 1);
}

} // namespace

Vector directionAt(double yaw, double pitch) {
    return {std::sin(yaw * degree) * std::cos(pitch * degree), std::sin(pitch * degree),
            std::cos(yaw * degree) * std::cos(pitch * degree)};
}

Lights::Lights(RVNODE *scene) : spot(new RVLIGHT) {
    for (std::size_t i = 0; i < lightsOfAnObject; ++i) {
        rigLights.push_back(new RVLIGHT);
        rigLights.back()->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    }
    spot->setLightType(RV_LIGHT_TYPE_SPOT);
    spot->setExclusive(true);
    walk(scene, [this](RVNODE *node) {
        // A light with children cannot be unlinked without them.
        const bool leaf = node->getNumberOfChildren() == 0 && node->getParent();
        if (node->getType() == RV_NODE_TYPE_LIGHT && leaf) {
            sceneLights.push_back(node);
            lightParents.push_back(node->getParent());
        }
    });
}

int Lights::numberOfRigs() const {
    return static_cast<int>(rigs().size()) + (sceneLights.empty() ? 0 : 1);
}

std::string Lights::rigName(int index) {
    const auto place = static_cast<std::size_t>(index);
    return place < rigs().size() ? rigs()[place].name : "the scene's own lights";
}

void Lights::setRig(int index) { rig = std::clamp(index, 0, numberOfRigs() - 1); }

bool Lights::isOwnRig() const { return static_cast<std::size_t>(rig) >= rigs().size(); }

void Lights::showOwnLights(bool on) {
    for (std::size_t i = 0; i < sceneLights.size(); ++i)
        if (on && !sceneLights[i]->getParent())
            sceneLights[i]->link(lightParents[i]);
        else if (!on && sceneLights[i]->getParent())
            sceneLights[i]->unlink();
}

void Lights::arrange(const View &view, const Sphere &scene, const Effects &effects) {
    spotIsOn = effects.isOn(Effect::spot);
    const bool own = isOwnRig() && !spotIsOn;
    showOwnLights(own);
    for (RVLIGHT *light : rigLights) {
        // Nearer lights, which cannot be unlinked, have lower priority.
        light->setExclusive(!own && !spotIsOn);
        light->setDirection(floats(view.back * -1.0));
        shine(*light, 0, 0);
    }
    for (std::size_t i = 0; i < rigLights.size(); ++i) {
        const double behind = view.distance * (1 + 0.01 * static_cast<double>(i));
        rigLights[i]->setPosition(floats(view.eye + view.back * behind));
    }
    if (spotIsOn)
        arrangeSpot(scene, effects);
    else if (!own)
        arrangeRig(view, effects.get(EffectParameter::brightness));
    else
        setGlobalAmbient(0.2f);
}

void Lights::arrangeRig(const View &view, double brightness) {
    const Rig &chosen = rigs()[static_cast<std::size_t>(rig)];
    setGlobalAmbient(chosen.ambient);
    for (std::size_t i = 0; i < chosen.lights.size(); ++i) {
        const RigLight &light = chosen.lights[i];
        const Vector from = chosen.withCamera ? view.right * light.right + view.up * light.up +
                                                    view.back * light.back
                                              : Vector{light.right, light.up, light.back};
        rigLights[i]->setDirection(floats(unit(from) * -1.0));
        shine(*rigLights[i], light.brightness * brightness, light.highlight * brightness);
    }
}

void Lights::arrangeSpot(const Sphere &scene, const Effects &effects) {
    const Vector from =
        directionAt(effects.get(EffectParameter::spotYaw), effects.get(EffectParameter::spotPitch));
    const double distance = effects.get(EffectParameter::spotDistance) * scene.radius;
    const auto f = [](double value) { return static_cast<float>(value); };
    spot->setPosition(floats(scene.center + from * distance));
    spot->setDirection(floats(from * -1.0));
    spot->setCutOff(f(effects.get(EffectParameter::spotAngle) / 2));
    spot->setExponent(f(effects.get(EffectParameter::spotFade)));
    RAVOLT::setShadowOffset(4, 8); // two-sided surfaces would shadow themselves in stripes
    spot->castShadows(effects.isOn(Effect::shadows));
    spot->setShadowNearPlane(f(std::max(distance - 1.05 * scene.radius, 0.05 * distance)));
    spot->setShadowFarPlane(f(distance + 8 * scene.radius));
    const double brightness = effects.get(EffectParameter::brightness);
    shine(*spot, brightness, brightness);
    setGlobalAmbient(spotAmbient);
}

// Beside the scene's own lights, black lights of the rig only fill the remaining slots.
void Lights::pass() {
    std::size_t others = 0;
    if (spotIsOn) {
        spot->pass();
        others = 1;
    } else if (isOwnRig()) {
        others = sceneLights.size();
    }
    for (std::size_t i = std::min(rigLights.size(), others); i < rigLights.size(); ++i)
        rigLights[i]->pass();
}

} // namespace ravolt::tool
