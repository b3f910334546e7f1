#pragma once

#include <string>

class RVFONT;
class RVTEXTURE;

namespace ravolt::kit {

// Draws a text or a picture in the 2D block, in one call each, between RAVOLT::begin2D and end2D.
// They are drawn at once: below the nodes that are passed in the same block, which end2D draws.
// Pixels are those of the block, from its top left.
class Overlay {
  public:
    // Texts are drawn in this font, which is not owned; with NULL in built-in letters, which need
    // no file: capitals 7 dots high, of the characters 32 to 126, others as '?', and 4096 of a
    // line.
    explicit Overlay(RVFONT *textFont = nullptr) : font(textFont) {}
    void setFont(RVFONT *newFont) { font = newFont; }

    // Pixels for each dot of the built-in letters: 1 to 64, 2 by default.
    void setScale(int pixels);
    int getScale() const { return scale; }

    // The colour of texts, in eighths with a font, and of pictures, which it multiplies: red to
    // alpha from 0 to 1, opaque white by default. Tags of RVFONT in a text override it.
    void setColor(float red, float green, float blue, float alpha = 1);

    // One or more lines, separated by '\n', the first with its upper left corner at (x, y). False
    // if the font has no texture.
    bool text(int x, int y, const std::string &text);

    // Pixels that a text takes: its longest line, and all its lines.
    int widthOf(const std::string &text) const;
    int heightOf(const std::string &text) const;

    // A texture upright, with its upper left corner at (x, y); of a width or height of 0 or less
    // the texture's own is taken. Transparent pixels are blended. False, with a line in the log,
    // for NULL.
    bool picture(RVTEXTURE *texture, int x, int y, int width = 0, int height = 0);

  private:
    void drawLetters(int x, int y, const std::string &line) const;
    void applyState() const;

    RVFONT *font;
    int scale = 2;
    float color[4] = {1, 1, 1, 1};
};

} // namespace ravolt::kit
