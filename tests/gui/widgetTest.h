#pragma once

// The fixture of the widgets' call tests, and the private side of boxes and windows.

#include "ravolt/RVBOX.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWINDOW.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/engineFixture.h"

#include <string>
#include <vector>

namespace ravolt::test {

#define RV_OPEN_FIELD(owner, name, type)                                                           \
    struct owner##_##name {                                                                        \
        using Type = type owner::*;                                                                \
        friend Type reach(owner##_##name);                                                         \
    };                                                                                             \
    template struct Opened<owner##_##name, &owner::name>;
RV_OPEN_FIELD(RVBOX, foremostTimeStamp, long)
RV_OPEN_FIELD(RVWINDOW, contentHeight, int)
RV_OPEN_FIELD(RVWINDOW, lastScrollLine, int)
RV_OPEN_FIELD(RVWINDOW, textHeight, int)
#undef RV_OPEN_FIELD

using TextOfWindow = char[3968];
#define RV_OPEN_TEXT(name)                                                                         \
    struct RVWINDOW_##name {                                                                       \
        using Type = TextOfWindow RVWINDOW::*;                                                     \
        friend Type reach(RVWINDOW_##name);                                                        \
    };                                                                                             \
    template struct Opened<RVWINDOW_##name, &RVWINDOW::name>;
RV_OPEN_TEXT(text)
RV_OPEN_TEXT(formattedText)
#undef RV_OPEN_TEXT

inline long &stampOf(RVBOX &box) { return box.*reach(RVBOX_foremostTimeStamp()); }
inline int &contentHeightOf(RVWINDOW &window) { return window.*reach(RVWINDOW_contentHeight()); }
inline int &lastScrollLineOf(RVWINDOW &window) { return window.*reach(RVWINDOW_lastScrollLine()); }
inline int &textHeightOf(RVWINDOW &window) { return window.*reach(RVWINDOW_textHeight()); }
inline std::string textOf(RVWINDOW &window) { return window.*reach(RVWINDOW_text()); }
inline std::string formattedTextOf(RVWINDOW &window) {
    return window.*reach(RVWINDOW_formattedText());
}

// X and Y.
inline std::vector<float> positionOf(const RVNODE &node) {
    return {node.getPosition().x, node.getPosition().y};
}

// Left, top, width and height.
inline std::vector<float> rectangleOf(const RVBOX &box) {
    return {box.getPosition().x, box.getPosition().y, box.getSizes().x, box.getSizes().y};
}

inline std::vector<int> limitsOf(const RVBOX &box) {
    return {box.getStartX(), box.getStartY(), box.getEndX(), box.getEndY()};
}

class WidgetTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        root = new RVNODE;
    }

    // Linked under `parent`, or under the root, at (x, y) there.
    template <class Node>
    Node *add(Node *node, float x = 0, float y = 0, RVNODE *parent = nullptr) {
        node->setPosition(x, y);
        node->link(parent ? parent : root);
        return node;
    }
    // A box that the pointer acts on.
    RVBOX *addBox(float x, float y, int sizeX, int sizeY, RVNODE *parent = nullptr) {
        RVBOX *const box = add(new RVBOX, x, y, parent);
        box->setSizes(sizeX, sizeY);
        box->setCheckStatus(true);
        return box;
    }

    // Cells of 16 by 16 without corrections.
    static RVFONT *makeFont() {
        RVFONT *const font = new RVFONT;
        RVTEXTURE *const atlas = new RVTEXTURE;
        EXPECT_TRUE(atlas->create(16, 16, RV_TEXTURE_RGBA));
        font->setTexture(atlas);
        return font;
    }

    // The 2D block: the list that the input of the pointer works on.
    void show() { drawFrame2D(root); }

    static void erase(RVNODE *node) {
        if (node->getParent())
            node->unlink();
        delete node;
    }

    RVNODE *root = nullptr;
};

} // namespace ravolt::test
