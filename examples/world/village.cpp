// Loads the village and its models, and puts them where they belong.

#include "examples/world/village.h"

#include "examples/world/places.h"

#include <ravolt.h>

#include <cstring>

namespace world {

namespace {

void setEmission(const char *material, float red, float green, float blue) {
    if (RVMATERIAL *found = RVMATERIAL::findByName(material))
        found->setEmission(red, green, blue, 1);
}

// What is nearly white reflects less than the rest, and what is dark more.
float reflectedBy(const char *material) {
    constexpr struct {
        const char *prefix;
        float reflected;
    } all[] = {{"truck_", 0.46f}, {"spider_", 1.5f}, {"nature_", 0.75f}, {"fish_", 0.8f}};
    for (const auto &[prefix, reflected] : all)
        if (!std::strncmp(material, prefix, std::strlen(prefix)))
            return reflected;
    return 0.6f;
}

} // namespace

// The light is stronger than white, for the land: surfaces that are nearly white would burn out.
// And a normal map, which these programs do not read, would be bound where the shadow map is.
void adjustMaterials() {
    for (RVMATERIAL *material = RVMATERIAL::getFirst(); material; material = material->getNext()) {
        const float reflected = reflectedBy(material->getName());
        const Z3MVECTOR4D color = material->getDiffuse(), ambient = material->getAmbient();
        material->setDiffuse(color.x * reflected, color.y * reflected, color.z * reflected, 1);
        const float around = 1.4f * reflected;
        material->setAmbient(ambient.x * around, ambient.y * around, ambient.z * around, 1);
        material->setTexture(1, nullptr);
    }
}

bool Village::add(const std::string &file, float x, float y, float z, float degrees) {
    RVNODE *model = RAVOLT::load(file.c_str());
    if (!model)
        return false;
    model->setPosition(x, y, z);
    model->setRotation(0.0f, degrees, 0.0f);
    model->link(root);
    return true;
}

bool Village::load(const std::string &folder) {
    root = new RVNODE();
    root->setPosition(square);
    if (!add(folder + "village.rve", 0, 0, 0, 0) ||
        !add(folder + "truck.rve", 5.6f, 0.06f, 3.0f, 205) ||
        !add(folder + "jeep.rve", -9.2f, 0.06f, -2.2f, 35) ||
        !add(folder + "duck.rve", -45.0f, -6.7f, -43.0f, 40) ||
        !add(folder + "spider.rve", 5.2f, 0.36f, -12.6f, 30))
        return false;
    for (RVLIGHT *&light : lights) {
        light = new RVLIGHT();
        light->setPosition(lamps[&light - lights]);
        light->setAmbient(0, 0, 0, 1);
        light->setDiffuse(3.7f, 2.5f, 1.2f, 1);
        light->setSpecular(0.3f, 0.25f, 0.2f, 1);
        light->setAttenuation(0.8f, 0.0f, 0.13f);
    }
    return true;
}

void Village::setNight(bool night) const {
    night ? setEmission("village_window", 2.3f, 1.45f, 0.55f)
          : setEmission("village_window", 0, 0, 0);
    night ? setEmission("village_bulb", 1.2f, 1.1f, 0.9f)
          : setEmission("village_bulb", 0.5f, 0.48f, 0.42f);
}

void Village::passLights(unsigned int number) const {
    for (unsigned int i = 3 - number; i < 3; ++i)
        lights[i]->pass(true);
}

void Village::pass() const { root->pass(true); }

} // namespace world
