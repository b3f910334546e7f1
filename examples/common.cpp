// The main loop of the examples: events, numbers of frames and pictures.

#include "common.h"

#include "tools/writers/pngWriter.h"

#include <ravolt.h>

#include <SDL/SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// SDL 1.2 falls back to a text-mode driver when it finds no X server, which garbles the terminal.
void requireDisplay() {
    if (std::getenv("DISPLAY") || std::getenv("SDL_VIDEODRIVER"))
        return;
    std::fprintf(stderr,
                 "There is no display. Set DISPLAY, or draw without one by means of SDL 1.2's\n"
                 "interface on SDL 2 (Debian: libsdl1.2-compat): put its folder sdl12-compat into\n"
                 "LD_LIBRARY_PATH and set SDL_VIDEODRIVER=offscreen.\n");
    std::exit(2);
}

} // namespace

std::string folderOf(const std::string &file) { return file.substr(0, file.find_last_of('/') + 1); }

Example::Example(int argc, char **argv, std::initializer_list<const char *> required) {
    bool valid = true;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--frames") && i + 1 < argc) {
            frames = std::atoi(argv[++i]);
        } else if (!std::strcmp(argv[i], "--picture") && i + 1 < argc) {
            picture = argv[++i];
        } else if (!std::strcmp(argv[i], "--draft")) {
            draft = true;
        } else {
            valid = valid && argv[i][0] != '-';
            files.push_back(argv[i]);
        }
    }
    if (!valid || files.size() != required.size()) {
        std::fprintf(stderr, "usage: %s [--frames N] [--picture FILE.png] [--draft]", argv[0]);
        for (const char *file : required)
            std::fprintf(stderr, " %s", file);
        std::fprintf(stderr, "\n");
        std::exit(2);
    }
    requireDisplay();
}

void Example::writePicture(const char *path) {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    std::vector<unsigned char> rows(static_cast<std::size_t>(width) * height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, rows.data());
    const std::string error = ravolt::writePng(path, {width, height, 3, false, rows.data()});
    if (!error.empty())
        std::fprintf(stderr, "%s\n", error.c_str());
}

void Example::handleEvents() {
    mouseX = mouseY = -1;
    wheel = 0;
    typed = 0;
    SDL_EnableUNICODE(1); // characters as they are typed
    for (SDL_Event event; SDL_PollEvent(&event);) {
        switch (event.type) {
        case SDL_QUIT:
            closed = true;
            break;
        case SDL_KEYDOWN:
            closed = closed || event.key.keysym.sym == SDLK_ESCAPE;
            if (event.key.keysym.unicode < 0x80)
                typed = static_cast<char>(event.key.keysym.unicode);
            break;
        case SDL_MOUSEMOTION:
            pointerX = event.motion.x;
            pointerY = event.motion.y;
            break;
        case SDL_MOUSEBUTTONDOWN:
            handleButton(event.button);
            break;
        case SDL_MOUSEBUTTONUP:
            pressed = pressed && event.button.button != SDL_BUTTON_LEFT;
            break;
        }
    }
}

void Example::handleButton(const SDL_MouseButtonEvent &event) {
    if (event.button == SDL_BUTTON_WHEELUP) {
        ++wheel;
    } else if (event.button == SDL_BUTTON_WHEELDOWN) {
        --wheel;
    } else {
        mouseX = pointerX = event.x;
        mouseY = pointerY = event.y;
        pressed = pressed || event.button == SDL_BUTTON_LEFT;
    }
}

float Example::seconds() const { return frames ? 1.0f / 30.0f : RAVOLT::getFPSfactor(); }

// Only one %d or %s in the name is replaced: the name is not used as a format.
void Example::writeFramePicture(bool last) const {
    const std::string name = picture ? picture : "";
    const std::size_t percent = name.find('%');
    if (percent == std::string::npos) {
        if (picture && last)
            writePicture(picture);
        return;
    }
    const std::size_t kind = name.find_first_not_of("0123456789", percent + 1);
    char number[16];
    std::snprintf(number, sizeof number, "%03d", frame - 1);
    std::string word = number;
    if (kind != std::string::npos && name[kind] == 's') {
        if (!label)
            return;
        word = label;
        std::replace(word.begin(), word.end(), ' ', '_');
    }
    const bool known = kind != std::string::npos && std::strchr("sd", name[kind]);
    const std::string rest = kind == std::string::npos ? "" : name.substr(known ? kind + 1 : kind);
    writePicture((name.substr(0, percent) + word + rest).c_str());
}

bool Example::next() {
    handleEvents();
    ++frame;
    const bool last = closed || (frames > 0 && frame >= frames);
    writeFramePicture(last);
    return !last;
}
