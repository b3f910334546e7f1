// The loop draws when something has changed, or when the numbers of the frames are shown, and
// sleeps otherwise.

#include "tools/commands/viewLoop.h"

#include "tools/commands/show.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"
#include "tools/stage/picture.h"

#include <SDL.h>
#include <cstdio>
#include <ravolt/RAVOLT.h>
#include <ravolt/kit/screenshot.h>
#include <sstream>

namespace ravolt::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int samplesASide = 2; // of a pixel

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

} // namespace

std::string titleOf(const std::filesystem::path &file) {
    return "ravolt - " + file.filename().string();
}

void sayLine(const std::string &line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

ViewSession::ViewSession(double limit) : seconds(limit) {}

Engine &ViewSession::open(const ShowOptions &options, WindowSize size) {
    if (engine) {
        setTitle(options.input);
        return *engine;
    }
    engine = std::make_unique<Engine>(size, titleOf(options.input), true, LogRedirect::log(),
                                      drawingFor(options, true));
    drop = std::make_unique<FileDrop>();
    return *engine;
}

void ViewSession::setTitle(const std::filesystem::path &file) {
    SDL_WM_SetCaption(titleOf(file).c_str(), nullptr);
}

void ViewSession::unload() {
    if (engine)
        engine->unload();
}

bool ViewSession::isOver() const { return seconds > 0 && secondsSince(start) >= seconds; }

const std::vector<ViewKey<ViewLoop>> &ViewLoop::commonKeys() {
    using Loop = ViewLoop;
    static const std::vector<ViewKey<Loop>> all = {
        {SDLK_F1, "F1, h", "these keys, on the screen and on standard output", &Loop::toggleHelp},
        {SDLK_F3, "F3, i", "the file, the clip, and the numbers of frames and of what is drawn",
         [](Loop &loop) { loop.session.text.toggleInformation(); }},
        {SDLK_F4, "F4", "smooth edges by four samples a pixel, and back", &Loop::toggleSmooth},
        {SDLK_PAGEDOWN, "PgDown", "the next file of the folder",
         [](Loop &loop) { loop.ending = Ending::nextFile; }},
        {SDLK_PAGEUP, "PgUp", "the previous file",
         [](Loop &loop) { loop.ending = Ending::previousFile; }},
        {0, "Drop", "files on the window to open them (X11); PgDown goes through them", nullptr},
        {0, "Alt Enter", "fill the screen, and go back", nullptr},
        {SDLK_ESCAPE, "Escape", "quit", &Loop::close},
    };
    return all;
}

void ViewLoop::toggleHelp() {
    session.text.toggleHelp();
    if (session.text.isShowingHelp())
        sayLine(printed(help()));
}

void ViewLoop::takeDropped() {
    std::vector<std::filesystem::path> files = session.drop->take();
    if (files.empty())
        return;
    session.dropped = std::move(files);
    ending = Ending::dropped;
}

// Keys that repeat are those of SDL's events; held keys are read from the input.
bool ViewLoop::take(const SDL_Event &event) {
    if (session.drop->handle(event)) {
        takeDropped();
        return true;
    }
    changed = changed || event.type != SDL_MOUSEMOTION;
    if (session.window.handle(event))
        return true;
    if (event.type != SDL_KEYDOWN || ending != Ending::none)
        return false;
    int pressed = event.key.keysym.sym;
    if (hasLetterKeys() && pressed == SDLK_h)
        pressed = SDLK_F1;
    if (hasLetterKeys() && pressed == SDLK_i)
        pressed = SDLK_F3;
    if (pressOf(commonKeys(), pressed, *this))
        return true; // no key of a camera
    press(pressed);
    return false;
}

TextRows ViewLoop::allFacts() const {
    TextRows facts = {{"file", name}};
    for (auto &fact : information())
        facts.push_back(fact);
    std::istringstream lines(session.statistics.getText());
    for (std::string line, label = "frames"; std::getline(lines, line); label.clear())
        facts.emplace_back(label, line);
    return facts;
}

void ViewLoop::toggleSmooth() {
    session.smooth = !session.smooth;
    sayLine(session.smooth ? "edges: smooth" : "edges: as they are");
}

// The frame once a sample, each time shifted by part of a pixel, and the mean of these frames.
void ViewLoop::drawSmooth() {
    const WindowSize size = canvasSize();
    const auto offset = [](int step) { return (step + 0.5) / samplesASide - 0.5; };
    int sample = 0;
    kit::Screenshot mean;
    const bool taken = mean.takeSmooth(
        [&] {
            shift({size.width, size.height, offset(sample % samplesASide),
                   offset(sample / samplesASide)});
            ++sample;
            draw();
        },
        samplesASide);
    shift({});
    if (taken)
        showPicture(mean);
}

void ViewLoop::drawFrame(double passed) {
    if (session.smooth && shift({}))
        drawSmooth();
    else
        draw();
    onDrawn();
    if (drawn) // the pause before is not the time of a frame
        session.statistics.add(static_cast<float>(passed));
    session.text.draw(help(), allFacts());
    RAVOLT::swap();
}

Ending ViewLoop::run() {
    session.statistics.clear(); // of another file
    Clock::time_point last = Clock::now();
    while (ending == Ending::none) {
        if (!session.input.poll([this](const SDL_Event &event) { return take(event); }))
            return Ending::closed;
        throwIfInterrupted();
        session.drop->announce();
        const double passed = secondsSince(last);
        last = Clock::now();
        const bool redraw = advance(passed) || changed || session.text.isShowingInformation();
        changed = false;
        if (redraw)
            drawFrame(passed);
        else
            SDL_Delay(10);
        drawn = redraw;
        if (session.isOver())
            return Ending::closed;
    }
    return ending;
}

void EmptyViewer::draw() { RAVOLT::clear(true, true, false); }

} // namespace ravolt::tool
