#pragma once

// A program of the demo's own: the engine's per-pixel programs know one light, this one the main
// light with its shadows and three more.

class RVMATERIAL;
class RVSHADER;

namespace world {

// To be made after the village's materials and before the terrain's, which it does not change.
class LampProgram {
  public:
    LampProgram();

    // Sets the program on all those materials, or the engine's choice again. Where programs do not
    // work the fixed functions draw.
    void apply(bool on, bool shadows);

  private:
    RVSHADER *programs[2][2] = {}; // skinned, shadowed
    RVMATERIAL *last = nullptr;    // of the village's
};

} // namespace world
