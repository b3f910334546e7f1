#pragma once

// Terrain, sky and water, with the sun or the moon.

#include "examples/world/places.h"

class RVLIGHT;
class RVTERRAIN;

namespace world {

struct Color {
    float red, green, blue;
};

// The main light, and what else the picture's brightness is made of.
struct Lighting {
    Point from; // the direction to the light, of length 1
    Color light;
    float landAmbient; // which the terrain adds to its colours
    Color ambient;
    Color haze; // where the terrain and the sky end
    const char *sky;
    float skyTurn; // degrees, so that its sun or moon is where the light comes from
    bool night;
};
extern const Lighting day, atSea, underWater, night;

class Land {
  public:
    // False when the terrain, its textures or its sky cannot be loaded.
    bool load(const char *file);
    void apply(const Lighting &lighting);
    void pass() const;

  private:
    RVTERRAIN *terrain = nullptr;
    RVLIGHT *light = nullptr; // a spot, whose shadows reach round the village
};

} // namespace world
