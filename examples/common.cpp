// The main loop of the examples: numbers of frames and pictures.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int minWidth = 240, maxWidth = 1920; // of the stage's window

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
            width = minWidth;
        } else if (!std::strcmp(argv[i], "--width") && i + 1 < argc) {
            width = std::clamp(std::atoi(argv[++i]), minWidth, maxWidth);
        } else {
            valid = valid && argv[i][0] != '-';
            files.push_back(argv[i]);
        }
    }
    if (!valid || files.size() != required.size()) {
        std::fprintf(stderr, "usage: %s [--frames N] [--picture FILE.png] [--width N] [--draft]",
                     argv[0]);
        for (const char *file : required)
            std::fprintf(stderr, " %s", file);
        std::fprintf(stderr, "\n");
        std::exit(2);
    }
    requireDisplay();
}

RVNODE *Example::openScene(RVSETTINGS &settings) const {
    const std::string folder = folderOf(files[0]);
    settings.setVideoMemory(256); // megabytes for textures
    settings.setColorDepth(32);   // all four bytes of an identifier fit into a pixel
    settings.setRVEPath(folder.c_str());
    settings.setTexturePath(folder.c_str());
    RVNODE *scene = RAVOLT::init(&settings) ? RAVOLT::load(files[0] + folder.size()) : nullptr;
    if (!scene)
        RAVOLT::free();
    return scene;
}

void Example::writePicture(const char *path) {
    ravolt::kit::Screenshot picture;
    if (picture.take())
        picture.save(path); // the log says why it was not saved
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
    bool open = input.poll([this](const SDL_Event &event) { return window.handle(event); });
    open = open && !input.wasKeyPressed(SDLK_ESCAPE);
    ++frame;
    const bool last = !open || (frames > 0 && frame >= frames);
    writeFramePicture(last);
    return !last;
}
