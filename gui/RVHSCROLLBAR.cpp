#include "ravolt/RVHSCROLLBAR.h"

#include "ravolt/zlf.h"

RVHSCROLLBAR::RVHSCROLLBAR() : RVSCROLLBAR(RV_NODE_TYPE_HSCROLLBAR, Axis::x) {}
RVHSCROLLBAR::RVHSCROLLBAR(const RVHSCROLLBAR &other)
    : RVSCROLLBAR(other, RV_NODE_TYPE_HSCROLLBAR) {}

bool RVHSCROLLBAR::render(void *element) { return RVSCROLLBAR::render(element); }

void RVHSCROLLBAR::setValue(float value) {
    if (cursorButton())
        moveCursor(value);
    else
        zlfLog("   [!] Invalid cursor reference @ RVHSCROLLBAR::setValue\n");
}

float RVHSCROLLBAR::getValue() {
    if (cursorButton())
        return readCursor();
    zlfLog("   [!] Invalid cursor reference @ RVHSCROLLBAR::getValue\n");
    return 0.0f;
}
