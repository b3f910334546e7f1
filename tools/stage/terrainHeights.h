#pragma once

// The heights of a terrain's ground, from its geometry file: the engine has them on the GPU alone.

#include <filesystem>
#include <vector>

namespace ravolt::tool {

class TerrainHeights {
  public:
    // Throws Failure for a file that is shorter than its header says. The engine has loaded it.
    explicit TerrainHeights(const std::filesystem::path &geometry);

    // Between the four vertices around a point; beyond the rim that of the rim.
    double at(double x, double z) const;

  private:
    float vertex(std::size_t column, std::size_t row) const {
        return heights[row * stride + column];
    }

    std::size_t columns = 0, rows = 0; // vertices along X and Z
    std::size_t stride = 0;            // of a row in `heights`
    double scale = 1;
    std::vector<float> heights; // row by row
};

} // namespace ravolt::tool
