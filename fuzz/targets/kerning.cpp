// A kerning file, and a text that is measured and drawn with it.

#include "fuzz/support/silentRun.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVTEXTURE.h"

void ravolt::fuzz::kerning(Bytes bytes) {
    const SilentRun run;
    writeFile("i.txt", bytes);
    auto *const font = new RVFONT;
    auto *const texture = new RVTEXTURE;
    texture->load("t.tga");
    font->setTexture(texture);
    font->loadKerning("i.txt");
    for (char c = 0x20; c < 0x7f; ++c)
        font->getKerning(c);
    char broken[128];
    font->formatInto("a text =# of some words", broken, sizeof broken, 40);
    RAVOLT::begin2D();
    font->putText(1, 1, broken);
    font->stringLength(broken);
    RAVOLT::end2D();
}
