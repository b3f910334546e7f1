#pragma once

class RVANIM;
class RVNODE;

// A character that walks round a circle: a clip moves its bones, and it advances with its feet.
class Walker {
  public:
    // Loads the character and its clip.
    Walker(const char *scene, const char *clipFile);
    bool isReady() const; // both have been loaded

    void advance(float seconds);

    // The node to pass: the centre of the circle, whose child is the character.
    RVNODE *getNode() const { return middle; }

  private:
    unsigned int period() const; // frames until the clip begins again

    RVNODE *middle;
    RVNODE *character;
    RVANIM *clip;
    bool hasClip;
    float time = 0;
};
