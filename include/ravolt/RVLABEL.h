#pragma once

#include "ravolt/RVBOX.h"
#include "ravolt/api.h"
#include "ravolt/weakPointer.h"

class RVFONT;

// A text without a background. It is not checked, so that the pointer passes through it.
class RV_API RVLABEL : public RVBOX {
  public:
    RVLABEL();
    ~RVLABEL() override;
    RVLABEL(const RVLABEL &other);
    RVLABEL &operator=(const RVLABEL &other);

    // Draws the text, also while the box is not shown.
    bool render(void *element) override;

    // printf into the label, with tags (see RVFONT) and line breaks; the font must be set before.
    // When the label is drawn, "%%" is one percent sign. At most 255 bytes; what is longer is cut,
    // with a line in the log. False, with a line in the log, for NULL and without a font.
    [[gnu::format(printf, 2, 3)]] bool write(const char *format, ...);

    // Not owned; a label without its font draws nothing.
    void setFont(RVFONT *newFont);

    // Additional: the text as it is drawn, before the expansion of "%%".
    const char *getText() const { return text; }

  private:
    char text[256];
    ravolt::WeakPointer<RVFONT> font;
};
