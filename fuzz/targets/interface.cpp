// An interface file: its widgets are drawn, clicked and typed into.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVWINDOW.h"

namespace ravolt::fuzz {
namespace {

void drawInterface(RVNODE *root) {
    RAVOLT::clear(true, true, true);
    RAVOLT::begin2D();
    root->pass();
    RAVOLT::end2D();
    RAVOLT::swap();
}

void use(RVNODE *node) {
    if (node->getType() == RV_NODE_TYPE_TEXTFIELD)
        for (const char key : {'a', '^', '%', '\b'})
            static_cast<RVTEXTFIELD *>(node)->manageKey(key);
    if (node->getType() == RV_NODE_TYPE_WINDOW) {
        static_cast<RVWINDOW *>(node)->updateScroll();
        static_cast<RVWINDOW *>(node)->minmaximize();
    }
}

void useAll() {
    for (RVNODE *node = RVNODE::getFirstNode(); node;) {
        RVNODE *const next = node->getNextNode();
        use(node);
        node = next;
    }
}

} // namespace

void interface(Bytes bytes) {
    const SilentRun run;
    const std::string path = writeFile("i.xml", bytes);
    RVNODE *const root = RAVOLT::loadXML(path.c_str());
    if (!root)
        return;
    drawInterface(root);
    useAll();
    drawInterface(root);
}

} // namespace ravolt::fuzz
