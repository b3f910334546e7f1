// Scroll bars on both axes: "along" is the axis of the bar, "across" the other one.

#include "ravolt/RVSCROLLBAR.h"

#include "foundation/registry.h"
#include "gui/boxNodes.h"
#include "ravolt/RVBUTTON.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

RVSCROLLBAR::RVSCROLLBAR(RV_NODE_TYPE ownType, Axis barAxis)
    : unused{}, minValue(0.0f), maxValue(1.0f), axis(barAxis) {
    initType(ownType);
    setColor(0.6f, 0.2f, 0.0f, 0.35f);
    const bool horizontal = axis == Axis::x;
    setSizes(horizontal ? 64 : 4, horizontal ? 4 : 64);

    auto *const button = new (std::nothrow) RVBUTTON;
    if (!button) {
        zlfLog("   [!] Out of memory for the cursor @ RVSCROLLBAR::RVSCROLLBAR\n");
        return;
    }
    cursor.set(button);
    button->setStaticStatus(false);
    button->setLimitStatus(true);
    button->setColor(0.8f, 0.3f, 0.0f, 0.9f);
    button->setSizes(horizontal ? 16 : 8, horizontal ? 8 : 16);
    setOffset(*button,
              static_cast<float>(lengthOf(*this)) / 2.0f -
                  static_cast<float>(lengthOf(*button)) / 2.0f,
              -static_cast<float>(widthOf(*button)) / 4.0f);
    setCursorLimits(*button);
    button->link(this);
}

RVSCROLLBAR::RVSCROLLBAR(const RVSCROLLBAR &other, RV_NODE_TYPE ownType) : RVBOX(other) {
    *this = other;
    setDynamicClass(ownType);
}

RVSCROLLBAR &RVSCROLLBAR::operator=(const RVSCROLLBAR &other) {
    RVBOX::operator=(other);
    std::copy(std::begin(other.unused), std::end(other.unused), unused);
    minValue = other.minValue;
    maxValue = other.maxValue;
    cursor.set(other.cursor.get());
    axis = other.axis;
    return *this;
}

int RVSCROLLBAR::lengthOf(const RVBOX &box) const {
    return axis == Axis::x ? box.getSizeX() : box.getSizeY();
}

int RVSCROLLBAR::widthOf(const RVBOX &box) const {
    return axis == Axis::x ? box.getSizeY() : box.getSizeX();
}

float RVSCROLLBAR::offsetOf(const RVBOX &box) const {
    return axis == Axis::x ? box.getPosition().x : box.getPosition().y;
}

float RVSCROLLBAR::sideOf(const RVBOX &box) const {
    return axis == Axis::x ? box.getPosition().y : box.getPosition().x;
}

void RVSCROLLBAR::setOffset(RVBOX &box, float along, float across) const {
    if (axis == Axis::x)
        box.setPosition(along, across);
    else
        box.setPosition(across, along);
}

// The cursor's middle reaches both ends of the track, and a quarter of its width is beyond the
// side.
void RVSCROLLBAR::setCursorLimits(RVBUTTON &button) const {
    const int half = lengthOf(button) / 2, quarter = widthOf(button) / 4;
    const int start = -half;
    const int end = ravolt::truncated(static_cast<double>(lengthOf(*this)) + half);
    const int side = -quarter, otherSide = widthOf(button) - quarter;
    if (axis == Axis::x)
        button.setLimits(start, side, end, otherSide);
    else
        button.setLimits(side, start, otherSide, end);
}

RVBUTTON *RVSCROLLBAR::cursorButton() const { return static_cast<RVBUTTON *>(cursor.get()); }

RVBUTTON *RVSCROLLBAR::getCursor() {
    return getNumberOfChildren() > 0 ? ravolt::asButton(getChild(0)) : nullptr;
}

void RVSCROLLBAR::setDisplayStatus(bool on) {
    RVBOX::setDisplayStatus(on);
    if (RVBOX *child = getNumberOfChildren() > 0 ? ravolt::asBox(getChild(0)) : nullptr)
        child->setDisplayStatus(on);
}

void RVSCROLLBAR::setCursorSize(int pixels) {
    RVBUTTON *const button = cursorButton();
    if (!button)
        return;
    const float middle = offsetOf(*button) + static_cast<float>(lengthOf(*button)) / 2.0f;
    setOffset(*button, middle - static_cast<float>(pixels) / 2.0f, sideOf(*button));
    if (axis == Axis::x)
        button->setSizeX(pixels);
    else
        button->setSizeY(pixels);
}

void RVSCROLLBAR::moveCursor(float value) {
    if (value < minValue)
        value = minValue;
    if (value > maxValue)
        value = maxValue;
    const float ratio = (value - minValue) / (maxValue - minValue);
    RVBUTTON &button = *cursorButton();
    // An empty range has no ratio.
    const float middle = static_cast<float>(lengthOf(*this)) * (std::isfinite(ratio) ? ratio : 0);
    setOffset(button, middle - static_cast<float>(lengthOf(button)) / 2.0f, sideOf(button));
}

float RVSCROLLBAR::readCursor() const {
    const RVBUTTON &button = *cursorButton();
    const float length = static_cast<float>(lengthOf(*this));
    if (length == 0.0f)
        return minValue; // no position on the track has a meaning
    const float middle = offsetOf(button) + static_cast<float>(lengthOf(button)) / 2.0f;
    const float ratio = 1.0f - (length - middle) / length;
    float value = (maxValue - minValue) * ratio + minValue;
    if (value > maxValue)
        value = maxValue;
    if (value < minValue)
        value = minValue;
    return value;
}

bool RVSCROLLBAR::render(void *element) {
    if (RVBUTTON *button = cursorButton())
        setCursorLimits(*button);
    return RVBOX::render(element);
}
