#pragma once

// What is about the village on the island and below the water, and the fish.

#include <string>
#include <vector>

class RVNODE;

namespace world {

class Nature {
  public:
    // Loads the scenes of this folder, which ends with '/'. False when one is missing.
    bool load(const std::string &folder);

    void advance(float seconds);
    void pass() const;

  private:
    RVNODE *root = nullptr;
    std::vector<RVNODE *> schools; // of fish
    float angle = 0;               // degrees
};

} // namespace world
