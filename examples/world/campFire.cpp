// Flames and smoke from their files, and sparks.

#include "examples/world/campFire.h"

#include "examples/world/places.h"

#include <ravolt.h>

#include <cmath>

namespace world {

bool CampFire::load(const std::string &folder) {
    const std::string fireFile = folder + "fire.xml", smokeFile = folder + "smoke.xml";
    flames = new RVEMITTER();
    smoke = new RVEMITTER();
    sparks = new RVEMITTER();
    light = new RVLIGHT();
    if (!flames->load(fireFile.c_str()) || !smoke->load(smokeFile.c_str()) ||
        !sparks->load(fireFile.c_str()))
        return false;
    flames->setMaximumParticuleSize(8);
    flames->setColorStart(Point(0.36f, 0.17f, 0.05f)); // they add up: white only where many are
    flames->setColorEnd(Point(0.30f, 0.05f, 0.01f));
    smoke->setMaximumParticuleSize(12);
    smoke->setNumberOfParticles(45);
    sparks->setMaximumParticuleSize(2);
    sparks->setMaximumVelocity(5);
    sparks->setMaximumEnergy(180);
    sparks->setGravity(Point(0.6f, 0.9f, 0.2f));
    sparks->setColorStart(Point(1, 0.8f, 0.4f));
    sparks->setColorEnd(Point(1, 0.3f, 0.05f));
    sparks->setNumberOfParticles(50);
    flames->setPosition(fire + Point(0, 0.25f, 0));
    sparks->setPosition(fire + Point(0, 0.3f, 0));
    smoke->setPosition(fire + Point(0, 1.6f, 0));
    light->setPosition(fire + Point(0, 1.1f, 0));
    light->setAmbient(0, 0, 0, 1);
    light->setAttenuation(0.7f, 0, 0.05f);
    return true;
}

void CampFire::pass() const {
    smoke->pass(true);
    flames->pass(true);
    sparks->pass(true);
}

void CampFire::passLight(float seconds) const {
    const float flicker = 1 + 0.08f * std::sin(11 * seconds) + 0.06f * std::sin(17 * seconds + 1);
    light->setDiffuse(1.9f * flicker, 1.0f * flicker, 0.38f * flicker, 1);
    light->setSpecular(0.4f * flicker, 0.2f * flicker, 0.1f * flicker, 1);
    light->pass(true);
}

} // namespace world
