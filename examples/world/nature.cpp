// Loads trees, rocks, jetty and seabed, and lets schools of fish swim in circles.

#include "examples/world/nature.h"

#include "examples/world/places.h"

#include <ravolt.h>

namespace world {

namespace {

const Point schoolAt[] = {seabed + Point(-6.5f, -0.6f, -6), seabed + Point(0, 1.6f, -1),
                          seabed + Point(7, 2.2f, 5)};

} // namespace

bool Nature::load(const std::string &folder) {
    root = RAVOLT::load((folder + "nature.rve").c_str());
    if (!root)
        return false;
    for (const Point &at : schoolAt) {
        RVNODE *const school = RAVOLT::load((folder + "fish.rve").c_str());
        if (!school)
            return false;
        school->link(root);
        school->setPosition(at);
        schools.push_back(school);
    }
    advance(0);
    return true;
}

// Each in its own direction, as fast as it is small.
void Nature::advance(float seconds) {
    angle += seconds * 9;
    for (std::size_t i = 0; i < schools.size(); ++i)
        schools[i]->setRotation(
            0.0f, angle * (1 + 0.3f * static_cast<float>(i)) + 100.0f * static_cast<float>(i),
            0.0f);
}

void Nature::pass() const { root->pass(true); }

} // namespace world
