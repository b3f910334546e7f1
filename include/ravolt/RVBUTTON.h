#pragma once

#include "ravolt/RVBOX.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVFONT;

// What a click does; see RVELEMENT::manageGUIEvents.
enum RV_BUTTON_EVENT : unsigned int {
    RV_BUTTON_NORMAL = 0,   // reports the button's id when the pointer is released over it
    RV_BUTTON_INVERTED = 1, // reports it when pressed, and in every further call while held
    RV_BUTTON_SWITCH = 2,   // toggles the clicked status and reports the id, once a press
    RV_BUTTON_TITLEBAR = 3  // of a window: a drag moves the parent, a click minimizes it
};

// A box with a caption.
class RV_API RVBUTTON : public RVBOX {
  public:
    // Orange, checked, with the caption "[button ID]".
    RVBUTTON();
    RVBUTTON(const RVBUTTON &other);
    RVBUTTON &operator=(const RVBUTTON &other);

    // The box, and its caption at (1, 1), or (2, 2) while it is clicked; "[...]" in its place where
    // it is as wide as the box or wider, and nothing where that is too wide as well. True.
    bool render(void *element) override;

    // NULL, or 256 characters and more, changes nothing. Tags act (see RVFONT), and "%%" is drawn
    // as one percent sign.
    void setCaption(const char *text);
    char *getCaption() { return caption; }

    // Not owned; a button without its font shows no caption.
    void setFont(RVFONT *newFont);
    RVFONT *getFont() const { return font.get(); }

    // What a click does: RV_BUTTON_NORMAL by default.
    void setEventType(RV_BUTTON_EVENT newType) { eventType = newType; }
    RV_BUTTON_EVENT getEventType() const { return eventType; }

  protected:
    // Draws a stored text, as a format without arguments.
    void drawText(int x, int y, const char *stored) const;

    // Where the caption starts, in both axes: it sinks with the button.
    int captionOffset() const { return isClicked() ? 2 : 1; }

    // Of the caption.
    ravolt::WeakPointer<RVFONT> font;
    char caption[256];

  private:
    void drawCaption() const;

    RV_BUTTON_EVENT eventType;
};
