#pragma once

// What lights a scene on its stage: one of several rigs, the scene's own lights, or a spot light.

#include "tools/stage/effects.h"
#include "tools/stage/sphere.h"

#include <cstddef>
#include <string>
#include <vector>

class RVLIGHT;
class RVNODE;

namespace ravolt::tool {

// Eye and axes of one frame.
struct View {
    double distance = 0; // from the scene's centre
    Vector right, up, back, eye;
};

// The direction to a point at these angles, in degrees, around the scene and above its horizon.
Vector directionAt(double yaw, double pitch);

class Lights {
  public:
    explicit Lights(RVNODE *scene);

    // Rigs from 0. The last is the scene's own lights, where it has some.
    int numberOfRigs() const;
    void setRig(int index);
    int getRig() const { return rig; }
    static std::string rigName(int index);

    // Sets up the lights for a frame.
    void arrange(const View &view, const Sphere &scene, const Effects &effects);
    // Within the frame, in addition to the scene's own pass.
    void pass();

  private:
    bool isOwnRig() const;
    void showOwnLights(bool on);
    void arrangeRig(const View &view, double brightness);
    void arrangeSpot(const Sphere &scene, const Effects &effects);

    std::vector<RVLIGHT *> rigLights;   // always as many as an object can have
    RVLIGHT *spot;                      // replaces the first of them
    std::vector<RVNODE *> sceneLights;  // of the scene itself
    std::vector<RVNODE *> lightParents; // of each of them
    int rig = 0;
    bool spotIsOn = false;
};

} // namespace ravolt::tool
