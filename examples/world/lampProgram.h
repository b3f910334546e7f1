#pragma once

// Programs of the demo's own. The engine's per-pixel programs know one light; one of these has the
// main light with its shadows and three more. The other has the main light without its cone, for
// what is beyond it.

class RVMATERIAL;
class RVSHADER;

namespace world {

// To be made after the village's materials and before the terrain's, which it does not change.
class LampProgram {
  public:
    LampProgram();

    // Sets the program on all those materials, or the engine's choice again; what is away from the
    // village always has its own. Where programs do not work the fixed functions draw.
    void apply(bool on, bool shadows);

  private:
    RVSHADER *programs[2][2] = {}; // skinned, shadowed
    RVSHADER *sunlit = nullptr;
    RVMATERIAL *last = nullptr; // of the village's
};

} // namespace world
