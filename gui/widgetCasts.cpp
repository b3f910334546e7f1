// Casts of nodes to widgets, by the type of the node.

#include "gui/boxNodes.h"

#include "ravolt/RVBOX.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVWINDOW.h"
#include "scene/nodeInternals.h"

#include <climits>

namespace ravolt {

namespace {

template <class Widget> Widget *as(RVNODE *node, RV_NODE_TYPE type) {
    return node && NodeInternals::isObjectOf(*node, type) ? static_cast<Widget *>(node) : nullptr;
}

} // namespace

RVBOX *asBox(RVNODE *node) {
    constexpr RV_NODE_TYPE widgets[] = {
        RV_NODE_TYPE_BOX,        RV_NODE_TYPE_LABEL,     RV_NODE_TYPE_BUTTON,
        RV_NODE_TYPE_WINDOW,     RV_NODE_TYPE_TEXTFIELD, RV_NODE_TYPE_HSCROLLBAR,
        RV_NODE_TYPE_VSCROLLBAR,
    };
    for (const RV_NODE_TYPE type : widgets)
        if (RVBOX *box = as<RVBOX>(node, type))
            return box;
    return nullptr;
}

RVBUTTON *asButton(RVNODE *node) { return as<RVBUTTON>(node, RV_NODE_TYPE_BUTTON); }
RVLABEL *asLabel(RVNODE *node) { return as<RVLABEL>(node, RV_NODE_TYPE_LABEL); }
RVTEXTFIELD *asTextField(RVNODE *node) { return as<RVTEXTFIELD>(node, RV_NODE_TYPE_TEXTFIELD); }
RVWINDOW *asWindow(RVNODE *node) { return as<RVWINDOW>(node, RV_NODE_TYPE_WINDOW); }

RVBOX *findWindow(RVNODE &node) {
    for (RVNODE *each = &node; each; each = each->getParent())
        if (RVWINDOW *window = asWindow(each))
            return window;
    return nullptr;
}

void enableWindowScissor(RVBOX &window) { static_cast<RVWINDOW &>(window).enableScissor(); }

Z3MVECTOR2D parentsPosition(const RVNODE &node) {
    Z3MVECTOR2D sum;
    for (const RVNODE *parent = node.getParent(); parent; parent = parent->getParent()) {
        sum.x += parent->getPosition().x;
        sum.y += parent->getPosition().y;
    }
    return sum;
}

int truncated(double value) {
    if (!(value > INT_MIN))
        return value == value ? INT_MIN : 0;
    return value < INT_MAX ? static_cast<int>(value) : INT_MAX;
}

} // namespace ravolt
