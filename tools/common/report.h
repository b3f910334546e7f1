#pragma once

// The messages of a conversion: one line for each thing that the scene format cannot store or that
// had to be changed. Equal lines are stored once.

#include <string>
#include <vector>

namespace ravolt::tool {

class Report {
  public:
    // Something of the model is lost or wrong in the scene.
    void warn(const std::string &line);
    // The scene shows the same, but by other means.
    void note(const std::string &line);

    const std::vector<std::string> &warnings() const { return warningLines; }
    const std::vector<std::string> &notes() const { return noteLines; }

  private:
    std::vector<std::string> warningLines;
    std::vector<std::string> noteLines;
};

// "1 camera" and "3 cameras".
std::string counted(std::size_t number, const std::string &one, const std::string &many);

} // namespace ravolt::tool
