// Widgets are drawn in the frame's 2D block alone.

#include "tools/stage/panel.h"

#include "tools/stage/walk.h"

#include <algorithm>
#include <ravolt.h>
#include <ravolt/RVBOX.h>

namespace ravolt::tool {

namespace {

constexpr int panelMargin = 16, minSize = 64, maxSize = 4096;

} // namespace

Panel::Panel(RVNODE *root) : widgets(root) {
    RVOPENGL::setBackgroundColor(background[0], background[1], background[2], 1.0f);
}

WindowSize Panel::fittingSize() const {
    WindowSize size = {0, 0};
    walk(widgets, [&](RVNODE *node) {
        const RVBOX *box = dynamic_cast<const RVBOX *>(node);
        if (!box)
            return;
        float right = static_cast<float>(box->getSizeX()), lower = float(box->getSizeY());
        for (const RVNODE *each = node; each; each = each->getParent()) {
            right += each->getPosition().x;
            lower += each->getPosition().y;
        }
        const auto whole = [](float edge) {
            return static_cast<int>(std::clamp(edge, 0.0f, float(maxSize)));
        };
        size.width = std::max(size.width, whole(right));
        size.height = std::max(size.height, whole(lower));
    });
    return {std::clamp(size.width + panelMargin, minSize, maxSize),
            std::clamp(size.height + panelMargin, minSize, maxSize)};
}

void Panel::draw() {
    RVFBO::unbind(); // so that a picture in a target gets the target's size
    const WindowSize canvas = canvasSize();
    RVOPENGL::resize(0, 0, canvas.width, canvas.height);
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    RAVOLT::end3D(false);
    RAVOLT::begin2D();
    widgets->pass();
    RAVOLT::end2D();
}

} // namespace ravolt::tool
