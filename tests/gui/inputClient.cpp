// An application with widgets, for tests/gui/driveInput.py: it polls SDL as a user's program does,
// and writes a line to its output after each frame that has changed what it says there. It ends at
// the Escape key, and after a minute at the latest.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVBUTTON.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/RVWINDOW.h"
#include "ravolt/zlf.h"

#include <SDL/SDL.h>

#include <iostream>
#include <queue>
#include <sstream>
#include <string>

namespace {

constexpr unsigned int longestRun = 60000; // milliseconds
constexpr unsigned int pause = 5;

template <class Widget> Widget *add(RVNODE *parent, float x, float y, int sizeX, int sizeY) {
    Widget *const widget = new Widget;
    widget->setSizes(sizeX, sizeY);
    widget->setPosition(x, y);
    widget->link(parent);
    return widget;
}

class Client {
  public:
    Client() {
        font->setCharSizeX(8);
        field->setFont(font);
        field->clear();
        window->setFont(font);
        window->setCaption("Log");
        add<RVBOX>(window, 0, 0, 50, 300); // taller than the window
        SDL_EnableUNICODE(1);
    }

    void run() {
        const unsigned int start = SDL_GetTicks();
        while (!ended && SDL_GetTicks() - start < longestRun) {
            poll();
            draw();
            passInput();
            report();
            RAVOLT::swap();
            SDL_Delay(pause);
        }
    }

  private:
    void poll() {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            if (event.type != SDL_KEYDOWN)
                continue;
            if (event.key.keysym.sym == SDLK_ESCAPE)
                ended = true;
            else if (const auto character = event.key.keysym.unicode; character && character < 128)
                keys.push(static_cast<char>(character));
        }
    }

    void draw() {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        root->pass();
        RAVOLT::end2D();
    }

    void passInput() {
        const char key = keys.empty() ? '\0' : keys.front();
        if (!keys.empty())
            keys.pop();
        left = (SDL_GetMouseState(&x, &y) & SDL_BUTTON(SDL_BUTTON_LEFT)) != 0;
        unsigned int event = 0;
        RVELEMENT::manageGUIEvents(key, x, y, left, 0, &event);
        clicks += event == button->getId();
    }

    void report() {
        std::ostringstream text;
        text << "clicks=" << clicks << "\tfield=" << field->getCaption()
             << "\twindow=" << window->getPosition().x << "," << window->getPosition().y
             << "\tminimized=" << window->isMinimized()
             << "\tcaption=" << window->getTitleBar()->getCaption()
             << "\tvalue=" << window->getScrollBar()->getValue() << "\tpointer=" << x << "," << y
             << "\tleft=" << left;
        const std::string line = text.str();
        if (line == reported)
            return;
        reported = line;
        std::cout << line << std::endl;
    }

    RVNODE *root = new RVNODE;
    RVFONT *font = new RVFONT;
    RVBUTTON *button = add<RVBUTTON>(root, 20, 20, 80, 20);
    RVTEXTFIELD *field = add<RVTEXTFIELD>(root, 120, 20, 120, 20);
    RVWINDOW *window = add<RVWINDOW>(root, 20, 100, 128, 100);
    std::queue<char> keys; // one for each frame
    int x = 0, y = 0, left = 0, clicks = 0;
    bool ended = false;
    std::string reported;
};

} // namespace

int main() {
    zlfSetConsoleEcho(false);
    RVSETTINGS settings;
    settings.setTitle("Ravolt input test");
    settings.setWindowX(320);
    settings.setWindowY(240);
    if (!RAVOLT::init(&settings))
        return 1;
    Client().run();
    return RAVOLT::free() ? 0 : 1;
}
