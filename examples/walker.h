#pragma once

#include <memory>

class RVNODE;

namespace ravolt::kit {
class ClipPlayer;
}

// Gives the materials of a character that have no texture a brown fur.
void dressInFur(RVNODE *character);

// A character that walks round a circle: a clip moves its bones, and it advances with its feet.
class Walker {
  public:
    // Loads the character and its clip.
    Walker(const char *scene, const char *clipFile);
    ~Walker();
    bool isReady() const; // both have been loaded

    void advance(float seconds);

    // The node to pass: the centre of the circle, whose child is the character.
    RVNODE *getNode() const { return middle; }

  private:
    RVNODE *middle;
    RVNODE *character;
    std::unique_ptr<ravolt::kit::ClipPlayer> player; // of the character, once both are loaded
    float time = 0;
};
