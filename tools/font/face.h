#pragma once

// The characters of a font file, drawn by FreeType.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ravolt::tool::font {

// Pixels from the pen on the baseline: to the right and up.
struct Extent {
    int left = 0, right = 0, bottom = 0, top = 0;

    int width() const { return right - left; }
    int height() const { return top - bottom; }
    void include(const Extent &other);
};

struct Glyph {
    Extent extent;
    int advance = 0;
    std::vector<unsigned char> coverage; // rows from the top
};

class Face {
  public:
    // `index` is the number of the face in a collection. Throws Failure for a file that cannot be
    // read and for a font without outlines.
    Face(const std::filesystem::path &file, unsigned int index);
    ~Face();
    Face(const Face &) = delete;
    Face &operator=(const Face &) = delete;

    bool has(char c) const;

    // Pixels of the em square, and by how many pixels strokes are thicker.
    void setSize(unsigned int pixels, double addedWeight);

    // A character that the font has not got is its picture for that case.
    Extent extentOf(char c);
    Glyph draw(char c);

  private:
    struct Handles;

    void load(char c);

    std::string name; // of the file
    std::unique_ptr<Handles> handles;
    double weight = 0;
};

} // namespace ravolt::tool::font
