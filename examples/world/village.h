#pragma once

// The village with its vehicles, its lamps and what is about it.

#include <string>

class RVLIGHT;
class RVNODE;

namespace world {

// Adjusts the materials of the models that have been loaded so far to the world's light.
void adjustMaterials();

class Village {
  public:
    // Loads the scenes of this folder, which ends with '/'. False when one is missing.
    bool load(const std::string &folder);

    // Windows and lamps shine more by night.
    void setNight(bool night) const;

    void passLights(unsigned int number) const; // of the lamps, the nearest to the fire last
    void pass() const;

    RVNODE *getNode() const { return root; } // its origin is the middle of the square

  private:
    bool add(const std::string &file, float x, float y, float z, float degrees);

    RVNODE *root = nullptr;
    RVLIGHT *lights[3] = {};
};

} // namespace world
