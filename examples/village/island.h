#pragma once

// The ground of the island on which the village is, as `ravolt terrain --island 7` makes it.

#include "examples/village/objWriter.h"

#include "tools/terrain/island.h"

namespace village {

class Island {
  public:
    Island();

    // Of the ground on the screen, where the surface of the water is at 0.
    float heightAt(float x, float z) const;
    Point onGround(float x, float z) const { return {x, heightAt(x, z), z}; }

    float slopeAt(float x, float z) const; // rise over run

    Point square() const; // its middle

    // Where the ground has this height, on the way from the square in this direction.
    Point whereHeightIs(float height, float degrees) const;

  private:
    ravolt::tool::terrain::Island island;
};

} // namespace village
