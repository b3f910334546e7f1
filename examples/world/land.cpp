// Loads the terrain, and applies the light of a time of the day to it.

#include "examples/world/land.h"

#include <ravolt.h>

#include <cmath>

namespace world {

namespace {

constexpr Color skyHaze = {0.79f, 0.86f, 0.92f}; // of the texture by day, at the horizon
constexpr char daySky[] = "sky_day.tga", nightSky[] = "sky_night.tga";
constexpr float lightDistance = 700, villageRadius = 24; // units

} // namespace

// In the textures of the sky the sun is at +X and the moon at -X, both 35 degrees up.
const Lighting day = {{-0.723f, 0.574f, -0.385f},
                      {1.6f, 1.48f, 1.26f},
                      0.11f,
                      {0.34f, 0.37f, 0.43f},
                      skyHaze,
                      daySky,
                      152.0f,
                      false};
// Water mirrors much of the light, which is from behind the one who comes from the sea.
const Lighting atSea = {{-0.451f, 0.574f, -0.684f},
                        {1.28f, 1.19f, 1.02f},
                        0.12f,
                        {0.30f, 0.32f, 0.36f},
                        skyHaze,
                        daySky,
                        123.4f,
                        false};
const Lighting underWater = {{-0.723f, 0.574f, -0.385f},
                             {0.52f, 0.98f, 0.96f},
                             0.12f,
                             {0.14f, 0.32f, 0.37f},
                             {0.10f, 0.36f, 0.44f},
                             daySky,
                             152.0f,
                             false};
const Lighting night = {{0.80f, 0.574f, 0.18f},
                        {0.50f, 0.58f, 0.86f},
                        0.06f,
                        {0.24f, 0.27f, 0.40f},
                        {0.055f, 0.075f, 0.13f},
                        nightSky,
                        167.3f,
                        true};

bool Land::load(const char *file) {
    terrain = new RVTERRAIN();
    light = new RVLIGHT();
    RVTERRAIN::restoreTargetOn(); // it is drawn into the target of the effects
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setTargetNode(light);
    light->setTarget(square);
    light->setCutOff(std::atan(villageRadius / lightDistance) * 57.29578f);
    light->setExponent(0);
    light->setShadowNearPlane(lightDistance - 40);
    light->setShadowFarPlane(lightDistance + 40);
    light->setExclusive(true); // the terrain takes the first light
    light->castShadows(true);
    return terrain->load(file) && terrain->getSkydome()->loadTexture(nightSky);
}

void Land::apply(const Lighting &lighting) {
    const auto &[red, green, blue] = lighting.light;
    light->setPosition(square + lighting.from * lightDistance);
    light->setDiffuse(red, green, blue, 1);
    light->setSpecular(red * 0.4f, green * 0.4f, blue * 0.4f, 1);
    const float own = lighting.landAmbient;
    light->setAmbient(own, own, own * 1.2f, 1);
    RVOPENGL::setGlobalAmbientLight(lighting.ambient.red, lighting.ambient.green,
                                    lighting.ambient.blue, 1);
    const Color haze = lighting.haze,
                &ambient = lighting.ambient; // the sky adds a part of it to its own
    RVOPENGL::setBackgroundColor(haze.red + 0.2f * ambient.red, haze.green + 0.2f * ambient.green,
                                 haze.blue + 0.2f * ambient.blue, 1);
    terrain->getSkydome()->loadTexture(lighting.sky);
    terrain->getSkydome()->setRotation(0.0f, lighting.skyTurn, 0.0f);
}

void Land::pass() const {
    light->pass(true);
    terrain->pass(true);
}

} // namespace world
