#pragma once

#include <cstddef>
#include <vector>

namespace ravolt::kit {

// The heights of a terrain's ground, read from its geometry file: the engine has them on the GPU
// alone. Coordinates are those of the terrain's own space, so subtract the position of its node.
class TerrainHeights {
  public:
    // How much higher than its heights RVTERRAIN draws the land.
    static constexpr double landLift = 2;

    // Reads the file that the terrain's configuration names, relative to the working directory.
    // False, with a line in the log, for a file that cannot be read or is shorter than its header
    // says; the heights are then those from before.
    bool load(const char *filename);

    // In the file, between the four vertices around a point; beyond the rim that of the rim, and 0
    // before a successful load.
    double at(double x, double z) const;
    // As the ground is seen.
    double drawnAt(double x, double z) const { return at(x, z) + landLift; }

    // Units along X and Z; 0 before.
    double getWidth() const;
    double getDepth() const;

  private:
    bool read(const char *filename);
    double vertex(std::size_t column, std::size_t row) const {
        return static_cast<double>(heights[row * columns + column]);
    }

    std::size_t columns = 0, rows = 0; // vertices along X and Z
    double scale = 1;
    std::vector<float> heights; // row by row
};

} // namespace ravolt::kit
