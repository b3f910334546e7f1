// Pointer and keys for the widgets of the last 2D block.

#include "gui/interaction.h"

#include "foundation/registry.h"
#include "gui/boxNodes.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVWINDOW.h"
#include "scene/renderList.h"

#include <utility>

namespace {

// The arguments of a call, in pixels of the 2D block.
struct Input {
    char key;
    int x, y;
    bool left;
    unsigned int *eventId;
    int dx = 0, dy = 0; // since the last call

    void report(const RVBOX &box) const {
        if (eventId)
            *eventId = box.getId();
    }
};

// The state between two calls. The pointers are NULL after their widgets are deleted.
struct Interaction {
    int previousX = -1, previousY = -1;
    int previousLeft = 0, previousRight = 0;
    ravolt::WeakPointer<RVBOX> pressed; // pressed by the mouse
    ravolt::WeakPointer<RVBOX> focused; // a text field
    bool dragged = false;

    bool handle(const Input &input);

  private:
    void sendKey(char key) const;
    void release(const Input &input);
    RVBOX *findHit(const Input &input) const;
    bool hold(const Input &input, RVBOX *&hit) const;
    void press(RVBOX &hit, const Input &input);
    void drag(RVBOX &hit, const Input &input);
};

Interaction interaction;

int difference(int a, int b) {
    return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

bool isButtonOf(RVBOX *box, RV_BUTTON_EVENT type) {
    const RVBUTTON *button = ravolt::asButton(box);
    return button && button->getEventType() == type;
}

bool isMinimized(RVBOX *box) {
    const RVWINDOW *window = ravolt::asWindow(box);
    return window && window->isMinimized();
}

bool Interaction::handle(const Input &input) {
    sendKey(input.key);
    if (pressed && !input.left)
        release(input);
    RVBOX *hit = nullptr;
    if (previousLeft == 0 && !pressed)
        hit = findHit(input);
    bool used = hit != nullptr;
    if (pressed && input.left)
        used = hold(input, hit);
    if (hit && input.left) {
        press(*hit, input);
        used = true;
    }
    return used;
}

// Also key 0, which keeps the cursor blinking.
void Interaction::sendKey(char key) const {
    if (RVTEXTFIELD *field = ravolt::asTextField(focused.get()))
        field->manageKey(key);
}

// A click on a title bar without a drag toggles its window.
void Interaction::release(const Input &input) {
    RVBOX &box = *pressed.get();
    const bool inside = box.checkBoundaries(input.x, input.y);
    if (isButtonOf(&box, RV_BUTTON_NORMAL) && inside)
        input.report(box);
    if (isButtonOf(&box, RV_BUTTON_TITLEBAR) && !dragged && inside)
        if (RVWINDOW *window = ravolt::asWindow(box.getParent()))
            window->minmaximize();
    box.setClickedStatus(false);
    pressed.set(nullptr);
    dragged = false;
}

// The foremost box under the pointer; of equal stamps the first, and none with a stamp of 0.
RVBOX *Interaction::findHit(const Input &input) const {
    RVBOX *hit = nullptr;
    long best = 0;
    for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index) {
        RVBOX *const box = ravolt::asBox(ravolt::RenderList::entry(index)->getNode());
        if (box && box->getDisplayStatus() && box->checkBoundaries(input.x, input.y) &&
            box->getForemostTimeStamp() > best && !isMinimized(box)) {
            hit = box;
            best = box->getForemostTimeStamp();
        }
    }
    return hit;
}

// A static box is not pressed while the pointer is outside of it.
bool Interaction::hold(const Input &input, RVBOX *&hit) const {
    RVBOX &box = *pressed.get();
    const bool held = !box.isStatic() || box.checkBoundaries(input.x, input.y);
    box.setClickedStatus(held);
    hit = held ? &box : nullptr;
    return true;
}

void Interaction::press(RVBOX &hit, const Input &input) {
    const long stamp = RAVOLT::getTimeStamp();
    if (RVWINDOW *window = ravolt::asWindow(&hit))
        window->setForemost(stamp);
    const bool titleBar = isButtonOf(&hit, RV_BUTTON_TITLEBAR);
    if (RVBOX *parent = titleBar ? ravolt::asBox(hit.getParent()) : nullptr)
        parent->setForemost(stamp);
    if (isButtonOf(&hit, RV_BUTTON_INVERTED))
        input.report(hit);
    focused.set(ravolt::asTextField(&hit));
    if (&hit == pressed.get() && !hit.isStatic() && (input.dx != 0 || input.dy != 0))
        drag(hit, input);
    pressed.set(&hit);
    if (isButtonOf(&hit, RV_BUTTON_SWITCH)) {
        hit.setClickedStatus(!hit.getClickedStatus());
        input.report(hit);
        pressed.set(nullptr);
    }
}

void Interaction::drag(RVBOX &hit, const Input &input) {
    int dx = input.dx, dy = input.dy;
    hit.checkLimits(&dx, &dy);
    RVNODE *moved = &hit;
    if (isButtonOf(&hit, RV_BUTTON_TITLEBAR) && hit.getParent())
        moved = hit.getParent();
    moved->move(static_cast<float>(dx), static_cast<float>(dy));
    dragged = true;
}

} // namespace

void ravolt::resetInteraction() {
    interaction.pressed.set(nullptr);
    interaction.focused.set(nullptr);
    interaction.previousX = interaction.previousY = -1;
    interaction.previousLeft = interaction.previousRight = 0;
    interaction.dragged = false;
}

bool RVELEMENT::manageGUIEvents(char key, int x, int y, int left, int right,
                                unsigned int *eventId) {
    if (RVSETTINGS::isSDLLandscape()) {
        const int turned = difference(RVSETTINGS::getSDLWindowY(), y);
        y = std::exchange(x, turned);
    }
    if (eventId)
        *eventId = 0;
    const bool used =
        interaction.handle({key, x, y, left != 0, eventId, difference(x, interaction.previousX),
                            difference(y, interaction.previousY)});
    interaction.previousX = x;
    interaction.previousY = y;
    interaction.previousLeft = left;
    interaction.previousRight = right;
    return used;
}
