// Flames and smoke from their files, and sparks.

#include "examples/world/campFire.h"

#include "examples/world/places.h"

#include <ravolt.h>

#include <algorithm>
#include <cmath>

namespace world {

namespace {

// A dot in the middle of much that is transparent, since the engine draws no smaller particles.
RVTEXTURE *makeSpark() {
    constexpr unsigned int side = 32;
    constexpr float radius = 0.34f;
    RVTEXTURE *spark = new RVTEXTURE();
    spark->create(side, side, 4);
    const auto fromMiddle = [](unsigned int i) {
        return (static_cast<float>(i) + 0.5f) * 2 / static_cast<float>(side) - 1;
    };
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const float distance = std::hypot(fromMiddle(x), fromMiddle(y)) / radius;
            unsigned char *pixel = spark->getBitmap() + 4 * (y * side + x);
            std::fill_n(pixel, 3, static_cast<unsigned char>(255));
            pixel[3] =
                static_cast<unsigned char>(255 * std::clamp(1.5f - 1.5f * distance, 0.0f, 1.0f));
        }
    spark->update();
    return spark;
}

} // namespace

bool CampFire::load(const std::string &folder) {
    const std::string fireFile = folder + "fire.xml", smokeFile = folder + "smoke.xml";
    flames = new RVEMITTER();
    smoke = new RVEMITTER();
    sparks = new RVEMITTER();
    light = new RVLIGHT();
    if (!flames->load(fireFile.c_str()) || !smoke->load(smokeFile.c_str()) ||
        !sparks->load(fireFile.c_str()))
        return false;
    // Positions are multiplied by the size of a particle, so that large flames rise high, and
    // sparks, which are small, need great speeds. Energies of more than 100 would not be opaque at
    // birth.
    flames->setMaximumParticuleSize(8);
    flames->setGravity(Point(0.05f, 2.6f, 0));
    flames->setNumberOfParticles(150);
    flames->setColorStart(Point(0.40f, 0.20f, 0.06f)); // they add up: white only where many are
    flames->setColorEnd(Point(0.34f, 0.05f, 0.01f));
    smoke->setMaximumParticuleSize(13);
    smoke->setGravity(Point(0.5f, 1.8f, 0.1f));
    smoke->setNumberOfParticles(36);
    sparks->setTexture(makeSpark());
    sparks->setMaximumParticuleSize(2);
    sparks->setRadius(5);
    sparks->setMaximumVelocity(50);
    sparks->setMaximumEnergy(100);
    sparks->setGravity(Point(12, 24, 4));
    sparks->setColorStart(Point(1, 0.85f, 0.5f));
    sparks->setColorEnd(Point(1, 0.35f, 0.05f));
    sparks->setNumberOfParticles(130);
    flames->setPosition(fire + Point(0, 0.25f, 0));
    sparks->setPosition(fire + Point(0, 0.3f, 0));
    smoke->setPosition(fire + Point(0, 0.9f, 0));
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
