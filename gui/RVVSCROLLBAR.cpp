#include "ravolt/RVVSCROLLBAR.h"

#include "ravolt/zlf.h"

RVVSCROLLBAR::RVVSCROLLBAR() : RVSCROLLBAR(RV_NODE_TYPE_VSCROLLBAR, Axis::y) {}
RVVSCROLLBAR::RVVSCROLLBAR(const RVVSCROLLBAR &other)
    : RVSCROLLBAR(other, RV_NODE_TYPE_VSCROLLBAR) {}

bool RVVSCROLLBAR::render(void *element) { return RVSCROLLBAR::render(element); }

void RVVSCROLLBAR::setValue(float value) {
    if (cursorButton())
        moveCursor(value);
    else
        zlfLog("   [!] Invalid cursor reference @ RVVSCROLLBAR::setValue\n");
}

float RVVSCROLLBAR::getValue() {
    if (cursorButton())
        return readCursor();
    zlfLog("   [!] Invalid cursor reference @ RVVSCROLLBAR::getValue\n");
    return 0.0f;
}
