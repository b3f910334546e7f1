#pragma once

#include "ravolt/RVBOXCOORD.h"
#include "ravolt/RVNODE.h"
#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVSHADER;
class RVTEXTURE;

// A rectangle of the interface, and the base of all widgets: a fill with a texture or a program, a
// bevelled border, and the state that RVELEMENT::manageGUIEvents reads and changes. Its position is
// that of its top left corner in the parent, in pixels, Y downwards. It is drawn in the 2D block,
// in the order of the stamps: the box that was created or raised last is in front. Boxes are nodes:
// create them with `new` and link them; the registry of nodes owns them.
class RV_API RVBOX : public RVNODE {
  public:
    // 64 by 64 pixels, grey, opaque, with a border of 3 pixels; shown, static, not checked, in
    // front of all boxes so far.
    RVBOX();
    ~RVBOX() override;

    // A copy has the values of every field, the stamp too, and does not count as a user of the
    // texture. Assignment likewise.
    RVBOX(const RVBOX &other);
    RVBOX &operator=(const RVBOX &other);

    // Draws the box; `element` is its RVELEMENT, or NULL to draw with the modelview matrix as it
    // is. False for a box that is not shown.
    bool render(void *element) override;

    // Whether a pixel is on the box, edges included, so that it counts one pixel wider and taller
    // than it is drawn. False while the box is not checked, and where the first window around it
    // is not under the pixel, except for that window's child 0, its title bar.
    bool checkBoundaries(int x, int y);

    // Changes a step of movement, in pixels, so that the box stays within its limits; the end
    // limits win. False, with the step unchanged, without limits, and, with a line in the log, for
    // NULL.
    bool checkLimits(int *dx, int *dy);
    // Pixels in the parent; they apply while the limit status is set.
    void setLimits(int newStartX, int newStartY, int newEndX, int newEndY);
    int getStartX() const { return startX; }
    int getStartY() const { return startY; }
    int getEndX() const { return endX; }
    int getEndY() const { return endY; }

    // Raises the box, and then its children in order, above all others. The argument is ignored on
    // purpose. Always true.
    bool setForemost(long stamp);
    long getForemostTimeStamp() const { return foremostTimeStamp; }
    // A new highest stamp.
    static long getNextCounter() { return ++foremostCounter; }

    // NULL removes the texture. The box counts as a user of its texture until the next setTexture;
    // its destructor does not release it. Always true.
    bool setTexture(RVTEXTURE *newTexture);
    // Additional: NULL for none, and after the texture was deleted.
    RVTEXTURE *getTexture() const { return texture.get(); }
    // Not owned; NULL, and a program that was deleted, mean none. Always true.
    bool setShader(RVSHADER *newShader);

    // Red, green, blue and alpha from 0 to 1. The border has the same colour, brighter and darker.
    void setColor(float red, float green, float blue, float alpha);
    void setColor(const Z3MVECTOR4D &value) { color = value; }
    Z3MVECTOR4D getColor() const { return color; }
    // Whether the alpha is not exactly 1.
    bool isTransparent() const { return color.w != 1.0f; }

    // Pixels.
    void setSizes(int width, int height);
    void setSizeX(int width) { sizeX = width; }
    void setSizeY(int height) { sizeY = height; }
    Z3MVECTOR2D getSizes() const { return Z3MVECTOR2D(sizeX, sizeY); }
    int getSizeX() const { return sizeX; }
    int getSizeY() const { return sizeY; }

    // Width of the border in pixels, inside of the box; 0 for none. At most 4,096 are drawn.
    void setThickness(unsigned int pixels) { thickness = pixels; }
    unsigned int getThickness() const { return thickness; }

    // The texture coordinates; the whole texture by default.
    void setBoxCoords(const RVBOXCOORD &coords) { boxCoord = coords; }
    RVBOXCOORD getBoxCoord() const { return boxCoord; }

    // Whether the pointer acts on the box (false), it is shown (true), it cannot be dragged (true),
    // it looks pressed (false), its limits apply (false), and it is cut at the edges of the first
    // window around it (true).
    void setCheckStatus(bool on) { checkStatus = on; }
    bool getCheckStatus() const { return checkStatus; }
    void setDisplayStatus(bool on) { displayStatus = on; }
    bool getDisplayStatus() const { return displayStatus; }
    void setStaticStatus(bool on) { staticStatus = on; }
    bool isStatic() const { return staticStatus; }
    void setClickedStatus(bool on) { clickedStatus = on; }
    bool getClickedStatus() const { return clickedStatus; }
    bool isClicked() const { return clickedStatus; }
    void setLimitStatus(bool on) { limitStatus = on; }
    bool getLimitStatus() const { return limitStatus; }
    void setScissorStatus(bool on) { scissorStatus = on; }
    bool getScissorStatus() const { return scissorStatus; }

  protected:
    // `color` with its red, green and blue multiplied, and another alpha.
    Z3MVECTOR4D shadeOf(float factor, float alpha) const;

    // The number of pixels that a border of this thickness is drawn with.
    int borderRings() const;

  private:
    void copyFields(const RVBOX &other);
    void beginScissor();
    void applySurface() const;
    void drawFill() const;
    void drawBorder() const;

    int sizeX, sizeY;
    int startX, startY, endX, endY;
    unsigned int thickness;
    Z3MVECTOR4D color;
    bool checkStatus;
    bool displayStatus;
    bool staticStatus;
    bool clickedStatus;
    bool limitStatus;
    bool scissorStatus;
    long foremostTimeStamp;
    ravolt::WeakPointer<RVTEXTURE> texture;
    RVSHADER *shader; // compared with the registry before it is followed
    RVBOXCOORD boxCoord;
    ravolt::WeakPointers<RVBOX> weakPointers;

    static long foremostCounter;

    friend struct ravolt::Registry<RVBOX>;
};
