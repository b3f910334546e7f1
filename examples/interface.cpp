// An interface that the input drives: a button that counts its clicks in the window's title, and a
// box that can be dragged. Both are where they are seen, also in a resized window and on the full
// screen.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>

#include <string>

template <class Widget> Widget *add(RVNODE *root, float x, float y, int width, int height) {
    Widget *widget = new Widget();
    widget->setPosition(x, y);
    widget->setSizes(width, height);
    widget->setCheckStatus(true); // it takes part in pointer tests
    widget->link(root);
    return widget;
}

int main(int argc, char **argv) {
    Example example(argc, argv);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: interface");
    settings.setResizable(true);
    if (!RAVOLT::init(&settings))
        return 1;
    RVNODE *root = new RVNODE();
    RVBUTTON *button = add<RVBUTTON>(root, 40, 40, 160, 48);
    button->setColor(0.2f, 0.6f, 0.9f, 1);
    RVBOX *box = add<RVBOX>(root, 300, 200, 120, 90);
    box->setColor(0.9f, 0.6f, 0.2f, 1);
    box->setStaticStatus(false); // it can be dragged

    if (example.frames) // nobody clicks
        for (const Uint8 type : {SDL_MOUSEBUTTONDOWN, SDL_MOUSEBUTTONUP}) {
            SDL_Event event = {};
            event.type = type;
            event.button.button = SDL_BUTTON_LEFT;
            event.button.x = event.button.y = 60;
            SDL_PushEvent(&event);
        }
    int clicks = 0;
    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        root->pass();
        RAVOLT::end2D();
        if (example.input.manageGUI() == button->getId()) {
            SDL_WM_SetCaption(("Clicks: " + std::to_string(++clicks)).c_str(), nullptr);
            button->setColor(clicks % 2 ? 0.3f : 0.2f, clicks % 2 ? 0.8f : 0.6f, 0.4f, 1);
        }
        RAVOLT::swap();
    } while (example.next());
    RAVOLT::free();
    return example.frames && clicks != 1; // the click of a run with --frames was counted
}
