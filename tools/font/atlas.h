#pragma once

// The texture of a font: white characters whose coverage is in alpha, each in its cell, with a
// black outline and a black shadow if these are wanted.

#include "tools/font/cells.h"
#include "tools/font/face.h"

#include <vector>

namespace ravolt::tool::font {

struct CellLayout {
    unsigned int width = 16, height = 16;
    unsigned int outline = 0;   // pixels around the strokes
    unsigned int shadow = 0;    // pixels to the right and down
    int penX = 0, baseline = 0; // of the characters in their cells, from the left and from the top

    // Sets the pen for characters within `extent`. False, if they do not fit.
    bool place(const Extent &extent);
    // The smallest cell for them.
    unsigned int neededWidth(const Extent &extent) const;
    unsigned int neededHeight(const Extent &extent) const;
};

class Atlas {
  public:
    explicit Atlas(const CellLayout &cellLayout);

    void draw(char c, const Glyph &glyph);
    // A bar as high as `extent`.
    void drawCursor(const Extent &extent);

    std::vector<unsigned char> tga() const;

  private:
    using Coverage = std::vector<float>; // of a cell, rows from the top, 0 to 1

    Coverage place(const Glyph &glyph) const;
    Coverage outlined(const Coverage &strokes) const;
    float at(const Coverage &coverage, int x, int y) const;
    void store(char c, const Coverage &strokes);

    CellLayout layout;
    std::vector<unsigned char> pixels; // R G B A, rows from the top
};

} // namespace ravolt::tool::font
