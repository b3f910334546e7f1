#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ravolt::kit {

// A picture of the frame: read, made smooth or smaller, and written as a PNG file. It is upright
// also in landscape mode, where the window has it lying on its side. Refused calls give false and a
// line in the log, and the picture is as before.
class Screenshot {
  public:
    // Reads the picture of the frame, between RAVOLT::end3D or end2D and swap: that of the bound
    // target, as target 0 where the settings force it or after end3D(false), or else the window's.
    bool take();

    // Takes over the pixels of another picture, as of one that was drawn in parts: rows from the
    // top, red, green and blue of each pixel. False if their number is not that of the size.
    bool setPixels(int newWidth, int newHeight, std::vector<unsigned char> newPixels);

    // Draws the frame `samples` times `samples` times, each time shifted by part of a pixel, and
    // takes the mean: the same as a picture so many times as wide and high, of which each pixel is
    // the mean of a square, and right with every effect. `draw` draws the frame from RAVOLT::clear
    // to end3D or end2D, without swap, and does not set the projection. Clocks stand still after
    // the first time. 2D blocks are not shifted, and so not changed. 1 to 16 samples.
    bool takeSmooth(const std::function<void()> &draw, int samples = 3);

    // Makes the picture smaller: each pixel is the mean of a square of `factor` by `factor`, as of
    // a target that is larger than the window. Columns and rows that remain at the right and at the
    // bottom are cut off. False if nothing would remain.
    bool shrink(int factor);

    // Writes a PNG file, or replaces it: a file that cannot be written completely is unchanged.
    bool save(const std::string &fileName) const;

    // The same as bytes; none without a picture.
    std::vector<unsigned char> encode() const;

    // Rows from the top, red, green and blue of each pixel; nothing before there is a picture.
    int getWidth() const { return width; }
    int getHeight() const { return height; }
    const std::vector<unsigned char> &getPixels() const { return pixels; }

  private:
    int width = 0, height = 0;
    std::vector<unsigned char> pixels;
};

} // namespace ravolt::kit
