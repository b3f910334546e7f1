#pragma once

#include "ravolt/RVBOX.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVBUTTON;

// Additional: what RVHSCROLLBAR and RVVSCROLLBAR have in common: a thin track with a cursor, a
// button that the pointer drags along it, and a value by the cursor's position. The cursor is child
// 0 of the bar, and owned by the registry of nodes like the bar.
class RV_API RVSCROLLBAR : public RVBOX {
  public:
    // Draws the track, and sets the cursor's limits for the present sizes.
    bool render(void *element) override;

    // The values at the start (0) and at the end (1) of the track. The cursor does not move.
    void setMinValue(float value) { minValue = value; }
    float getMinValue() const { return minValue; }
    void setMaxValue(float value) { maxValue = value; }
    float getMaxValue() const { return maxValue; }

    // Length of the cursor along the track, in pixels; its middle stays where it is.
    void setCursorSize(int pixels);

    // Shows or hides the bar and its cursor.
    void setDisplayStatus(bool on);

    // Child 0 of the bar; NULL for none.
    RVBUTTON *getCursor();

  protected:
    // Along which the cursor moves.
    enum class Axis { x, y };

    // A track of 64 by 4 pixels along the axis, with a cursor of 16 by 8.
    RVSCROLLBAR(RV_NODE_TYPE ownType, Axis barAxis);
    RVSCROLLBAR(const RVSCROLLBAR &other, RV_NODE_TYPE ownType);
    RVSCROLLBAR &operator=(const RVSCROLLBAR &other);

    // The cursor; NULL after it was deleted.
    RVBUTTON *cursorButton() const;
    // With a cursor.
    void moveCursor(float value);
    float readCursor() const;

  private:
    int lengthOf(const RVBOX &box) const;
    int widthOf(const RVBOX &box) const;
    float offsetOf(const RVBOX &box) const;
    float sideOf(const RVBOX &box) const;
    void setOffset(RVBOX &box, float along, float across) const;
    void setCursorLimits(RVBUTTON &button) const;

    int unused[2]; // copied by assignment, read by nothing
    float minValue;
    float maxValue;
    ravolt::WeakPointer<RVBOX> cursor;
    Axis axis;
};
