#pragma once

// What pictures are made of.

namespace ravolt::tool {

class Effects;

// Behind models and interfaces.
constexpr float background[3] = {0.16f, 0.18f, 0.22f};

// What the window shows of a larger picture, in pixels from its lower left corner. As it is made:
// the window shows all of the picture. Parts of pixels shift it.
struct PicturePart {
    int wholeWidth = 0, wholeHeight = 0;
    double left = 0, bottom = 0;
};

class Drawable {
  public:
    Drawable() = default;
    virtual ~Drawable() = default;
    Drawable(const Drawable &) = delete;
    Drawable &operator=(const Drawable &) = delete;

    // Draws one frame into the window, which is then to be shown by RAVOLT::swap.
    virtual void draw() = 0;

    // What the display cannot do is left out by the engine without a word.
    virtual void setEffects(const Effects &wanted) = 0;
    virtual const Effects &getEffects() const = 0;

    // For pictures that are larger than a window can be.
    virtual void setPart(const PicturePart &shown) = 0;
};

// The planes of the engine's projection, and its angle of view in degrees.
struct Projection {
    double angle, nearest, farthest;
};

// Sets it for that part of the picture.
void project(const Projection &projection, const PicturePart &part);

// Ends the 3D block of a frame. The 2D block after it ends the wireframe and brings culling back.
void endFrame();

// Width through height of the whole picture.
double aspectOf(const PicturePart &part);

} // namespace ravolt::tool
