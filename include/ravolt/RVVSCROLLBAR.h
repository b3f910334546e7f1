#pragma once

#include "ravolt/RVSCROLLBAR.h"
#include "ravolt/api.h"

// A slider along Y: 4 by 64 pixels, with a cursor of 8 by 16. On purpose its default name is
// "[hscrollbar ID]".
class RV_API RVVSCROLLBAR : public RVSCROLLBAR {
  public:
    RVVSCROLLBAR();
    RVVSCROLLBAR(const RVVSCROLLBAR &other);
    RVVSCROLLBAR &operator=(const RVVSCROLLBAR &other) = default;

    bool render(void *element) override;

    // Clamped to the range. A line in the log, and a value of 0, without a cursor.
    void setValue(float value);
    float getValue();
};
