#pragma once

#include "ravolt/RVBUTTON.h"
#include "ravolt/api.h"

// A button whose caption the user types. The field that was pressed last gets the keys of
// RVELEMENT::manageGUIEvents and blinks a cursor, the font's glyph of 0x7F.
class RV_API RVTEXTFIELD : public RVBUTTON {
  public:
    // On purpose with the caption "[button ID]": call clear.
    RVTEXTFIELD();
    RVTEXTFIELD(const RVTEXTFIELD &other);
    RVTEXTFIELD &operator=(const RVTEXTFIELD &other) = default;

    // The button, the text and its frame; on purpose the display status (RVBOX) hides the button
    // alone.
    bool render(void *element) override;

    // Appends a character from 0x20 to 0x7F where there is room, up to 255 of them, removes the
    // last one for 8 (backspace), and shows the cursor in the next drawing for any key. False
    // without a font.
    bool manageKey(char key);

    // Empties the text.
    void clear() { caption[0] = '\0'; }

  private:
    void append(char key);
    void drawContents();
    void drawFrame() const;

    bool hasFocus;     // since the last drawing
    float cursorPhase; // 0 to 1
};
