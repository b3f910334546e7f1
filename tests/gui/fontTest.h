#pragma once

// Fonts in front of a silent driver, and what they draw as text.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/gui/drawnArrays.h"
#include "tests/support/engineFixture.h"

#include <string>
#include <vector>

namespace ravolt::test {

// The vertices of a glyph at (x, y), of the cell at `column` and `row`.
std::vector<DrawnVertex> glyph(float x, float y, float width, float height, float column, float row,
                               const std::array<float, 4> &color);

// The glyphs of all drawings of a font with cells of 16 by 16, "a 0 0" each and the colour where it
// is not white, separated by commas; drawings are separated by bars. A drawing of no glyphs is
// "nothing".
std::string glyphsOf(const Drawings &drawings);

class FontTest : public SilentEngineTest {
  protected:
    // A font with a texture, in a 2D block.
    void SetUp() override;
    void TearDown() override;

    // Draws a widget at its element; the glyphs of its texts.
    std::string textOf(RVNODE *widget);
    Calls renderCalls(RVNODE *widget);

    RVELEMENT element;
    RVFONT *font = nullptr;
    RVTEXTURE *atlas = nullptr;
};

} // namespace ravolt::test
