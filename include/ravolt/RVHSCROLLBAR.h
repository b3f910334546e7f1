#pragma once

#include "ravolt/RVSCROLLBAR.h"
#include "ravolt/api.h"

// A slider along X: 64 by 4 pixels, with a cursor of 16 by 8.
class RV_API RVHSCROLLBAR : public RVSCROLLBAR {
  public:
    RVHSCROLLBAR();
    RVHSCROLLBAR(const RVHSCROLLBAR &other);
    RVHSCROLLBAR &operator=(const RVHSCROLLBAR &other) = default;

    bool render(void *element) override;

    // Clamped to the range. A line in the log, and a value of 0, without a cursor.
    void setValue(float value);
    float getValue();
};
