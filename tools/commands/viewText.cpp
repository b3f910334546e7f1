// Panels are as large as fits into the window: letters of one or two pixels a dot, and several
// blocks side by side where one is too high.

#include "tools/commands/viewText.h"

#include <algorithm>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVOPENGL.h>
#include <ravolt/RVTEXTURE.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/overlay.h>

namespace ravolt::tool {

namespace {

constexpr int margin = 8, padding = 6; // pixels
constexpr int largestScale = 2;

// The rows of a text in a certain size of letters.
class Panel2D {
  public:
    Panel2D(const TextRows &shown, kit::Pixel window, int scale) : rows(shown) {
        overlay.setScale(scale);
        rowHeight = overlay.heightOf("");
        const int room = std::max(1, (window.y - 2 * (margin + padding)) / rowHeight);
        const int number = static_cast<int>(rows.size());
        blocks = (number + room - 1) / room;
        rowsOfBlock = (number + blocks - 1) / blocks;
        for (const auto &[name, text] : rows) {
            nameWidth = std::max(nameWidth, overlay.widthOf(name + "  "));
            textWidth = std::max(textWidth, overlay.widthOf(text + "  "));
        }
    }

    int width() const { return blocks * (nameWidth + textWidth) + 2 * padding; }
    int height() const { return rowsOfBlock * rowHeight + 2 * padding; }

    void draw(int left, int top) {
        darken(left, top);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const int index = static_cast<int>(i), block = index / rowsOfBlock;
            const int x = left + padding + block * (nameWidth + textWidth);
            const int y = top + padding + index % rowsOfBlock * rowHeight;
            overlay.setColor(1, 0.8f, 0.3f);
            overlay.text(x, y, rows[i].first);
            overlay.setColor(1, 1, 1);
            overlay.text(x + nameWidth, y, rows[i].second);
        }
    }

  private:
    // What is below letters must not have their brightness.
    void darken(int left, int top) const {
        RVOPENGL::blendingOn();
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(0, 0, 0, 0.7f);
        glRecti(left, top, left + width(), top + height());
        glColor4f(1, 1, 1, 1);
    }

    const TextRows &rows;
    kit::Overlay overlay;
    int rowHeight = 0, blocks = 1, rowsOfBlock = 1, nameWidth = 0, textWidth = 0;
};

Panel2D fitting(const TextRows &rows, kit::Pixel window, int maxScale = largestScale) {
    for (int scale = maxScale; scale > 1; --scale) {
        const Panel2D panel(rows, window, scale);
        if (panel.width() <= window.x - 2 * margin && panel.height() <= window.y - 2 * margin)
            return panel;
    }
    return Panel2D(rows, window, 1);
}

} // namespace

std::string printed(const TextRows &rows) {
    constexpr std::size_t width = 10; // of the names
    std::string text;
    for (const auto &[name, what] : rows)
        text += "  " + name + std::string(std::max(width, name.size() + 1) - name.size(), ' ') +
                what + "\n";
    return text;
}

void ScreenText::draw(const TextRows &keys, const TextRows &facts) const {
    if (!help && !information && message.empty())
        return;
    const kit::Pixel window = kit::Input::getWindowSize();
    RAVOLT::begin2D();
    RVTEXTURE::texturingOff(0);
    if (information) // beside the help as small as that is
        fitting(facts, window, help ? 1 : largestScale).draw(margin, margin);
    if (help) {
        Panel2D panel = fitting(keys, window);
        panel.draw(std::max(margin, window.x - margin - panel.width()), margin);
    }
    if (!message.empty()) {
        const TextRows line = {{"", message}};
        Panel2D panel = fitting(line, window);
        panel.draw(margin, std::max(margin, window.y - margin - panel.height()));
    }
    RAVOLT::end2D();
}

} // namespace ravolt::tool
