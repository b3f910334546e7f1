#pragma once

#include "ravolt/RVBUTTON.h"
#include "ravolt/api.h"

#include <cstddef>

class RVVSCROLLBAR;

// A panel that can be dragged, with a title bar above it (child 0), which minimizes it on a click,
// a vertical scroll bar (child 1), which shows while the content is taller than the window, a text,
// and clipping of everything inside it. Children from number 2 on are the application's; they
// scroll with the text, other windows among them excepted. The registry of nodes owns the two
// children.
class RV_API RVWINDOW : public RVBUTTON {
  public:
    // 128 by 128 pixels at (0, 19), dark blue.
    RVWINDOW();
    RVWINDOW(const RVWINDOW &other);
    RVWINDOW &operator=(const RVWINDOW &other);

    // The body with the text, which scrolls one frame after the scroll bar; nothing while it is
    // minimized or not shown. Always true.
    bool render(void *element) override;

    // printf, appended to the text; format shows it. False, with a line in the log, for NULL and
    // when the text would reach 3,968 bytes: then nothing is appended.
    [[gnu::format(printf, 2, 3)]] bool write(const char *format, ...);
    // Breaks the text into lines of the window's width. False without a font.
    bool format();
    // Empties the text; what is shown stays until the next format.
    void clear();

    // Minimizes or maximizes the window, and returns whether it is maximized now. The caption of a
    // minimized one starts with "[+] "; maximizing removes its first four characters.
    bool minmaximize();
    bool isMinimized() const { return !maximized; }

    // Computes the height of the content, shows or hides the scroll bar, and moves the children by
    // what the scroll offset has changed since the last drawing. For render. Always true.
    bool updateScroll();

    // Clip to the window's body, and to the application's window.
    void enableScissor();
    void disableScissor();

    // The caption of the title bar; nothing without one.
    void setCaption(const char *text);
    // Of the title bar and the text.
    void setFont(RVFONT *newFont);
    // Also of the title bar and the scroll bar, which returns to its start.
    void setSizes(int width, int height);

    // Offset of the content in pixels, which render sets by the scroll bar.
    void setScrollLine(int pixels) { scrollLine = pixels; }
    int getScrollLine() const { return scrollLine; }

    // NULL after it was deleted.
    RVBUTTON *getTitleBar() const;
    // Additional: the scroll bar; NULL after it was deleted.
    RVVSCROLLBAR *getScrollBar() const;

  private:
    static constexpr std::size_t textSize = 3968;

    void copyFields(const RVWINDOW &other);
    void createTitleBar();
    void createScrollBar();
    void measureChildren();
    void showScrollBar();
    void moveChildren(int delta);
    template <class Action> void forEachContent(const Action &action);

    bool maximized;
    char text[textSize];
    char formattedText[textSize];
    ravolt::WeakPointer<RVBOX> titleBar;
    ravolt::WeakPointer<RVBOX> scrollBar;
    int scrollLine;
    int lastScrollLine; // applied to the children
    int contentHeight;
    int textHeight;
    bool captionMarked; // by "[+] ", for which a long caption has no room
};
