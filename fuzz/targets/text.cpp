// A text: measured, broken into lines, drawn, and stored in widgets, which expand "%%".

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVBUTTON.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWINDOW.h"

#include <vector>

namespace ravolt::fuzz {
namespace {

RVFONT *makeFont(Input &input) {
    auto *const texture = new RVTEXTURE;
    texture->load("t.tga");
    auto *const font = new RVFONT;
    font->setTexture(texture);
    font->setCharSizeX(input.below(40));
    font->setCharSizeY(input.below(40));
    font->setKerning('a', static_cast<char>(input.byte()));
    return font;
}

void breakLines(const RVFONT &font, const std::string &text, unsigned int width) {
    std::vector<char> lines(2 * text.size() + 1);
    font.format(text.c_str(), lines.data(), width, 0);
    std::vector<char> cut(text.size() / 2 + 1);
    font.formatInto(text.c_str(), cut.data(), cut.size(), width);
}

void drawText(RVFONT &font, const std::string &text) {
    RAVOLT::begin2D();
    font.putText(3, 3, text.c_str());
    font.putString(3, 3, "%s", text.c_str());
    for (const char character : text.substr(0, 8))
        font.putChar(1, 1, character, character & 1);
    RAVOLT::end2D();
}

// A stored text is drawn in the next frames.
void drawWidgets(RVFONT &font, const std::string &text) {
    auto *const window = new RVWINDOW;
    auto *const label = new RVLABEL;
    auto *const button = new RVBUTTON;
    auto *const field = new RVTEXTFIELD;
    window->setFont(&font);
    window->setSizes(60, 40);
    window->setCaption(text.c_str());
    window->write("%s", text.c_str());
    window->write("%s", text.c_str());
    label->setFont(&font);
    label->write("%s", text.c_str());
    button->setFont(&font);
    button->setCaption(text.c_str());
    field->setFont(&font);
    for (const char key : text.substr(0, 300))
        field->manageKey(key);
    RAVOLT::begin2D();
    for (RVNODE *node : {static_cast<RVNODE *>(window), static_cast<RVNODE *>(label),
                         static_cast<RVNODE *>(button), static_cast<RVNODE *>(field)})
        node->pass();
    RAVOLT::end2D();
}

} // namespace

void text(Bytes bytes) {
    Input input(bytes);
    const SilentRun run;
    RVFONT *const font = makeFont(input);
    const unsigned int width = input.byte();
    const std::string text = input.text(6000);
    font->stringLength(text.c_str());
    breakLines(*font, text, width);
    drawText(*font, text);
    drawWidgets(*font, text);
}

} // namespace ravolt::fuzz
