#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"

// A visible marker for debugging: a wire box around a translucent solid one, between two corners
// in the node's own frame. On purpose both are larger by a hundredth, and the wire has two
// diagonals through the box. It counts as transparent whatever its alpha. Needs the live OpenGL
// context to be rendered.
class RV_API RVHELPER : public RVNODE {
  public:
    RVHELPER();
    ~RVHELPER() override;

    // Draws the box; `element` is the helper's RVELEMENT. Nothing is drawn for NULL, with a line in
    // the log. Blending is off afterwards. Always true.
    bool render(void *element) override;

    RVHELPER(const RVHELPER &other);
    RVHELPER &operator=(const RVHELPER &) = default;

    // In units of the scene, for clipping and sorting only; what is drawn depends on the corners. 1
    // by default.
    void setRadius(float value) { radius = value; }
    float getRadius() const { return radius; }

    // Width of the lines in pixels, above 0 (OpenGL refuses others with an error); 1 by default.
    void setThickness(float pixels) { thickness = pixels; }
    float getThickness() const { return thickness; }

    // (1, 0.8, 0.2, 0.5) by default.
    void setColor(const Z3MVECTOR4D &value) { color = value; }
    void setColor(float r, float g, float b, float a) { color = Z3MVECTOR4D(r, g, b, a); }
    Z3MVECTOR4D getColor() const { return color; }

    // The corners, (-1, -1, -1) and (1, 1, 1) by default.
    void setMin(const Z3MVECTOR3D &corner) { min = corner; }
    void setMax(const Z3MVECTOR3D &corner) { max = corner; }

  private:
    float radius;
    float thickness;
    Z3MVECTOR4D color;
    Z3MVECTOR3D reserved1; // stored and copied only
    Z3MVECTOR3D reserved2;
    Z3MVECTOR3D min;
    Z3MVECTOR3D max;
};
