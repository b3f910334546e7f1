#pragma once

// Animals that go round the square, each at its own gait; they change from walking to running and
// back by cross-fades.

#include <memory>
#include <string>
#include <vector>

class RVANIM;
class RVNODE;

namespace ravolt::kit {
class ClipPlayer;
}

namespace world {

class Herd {
  public:
    Herd();
    ~Herd();

    // Loads wisent.rve and its clips from this folder, which ends with '/', once for each animal,
    // and links them to a node whose origin is the middle of the square.
    bool load(const std::string &folder, RVNODE *parent);

    void advance(float seconds);

  private:
    struct Animal;

    RVANIM *walk = nullptr, *run = nullptr;
    std::vector<std::unique_ptr<Animal>> animals;
};

} // namespace world
