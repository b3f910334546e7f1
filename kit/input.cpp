// The state of keys and pointer, and the steps that the widgets get: one for each change of a
// button and each character, so that a click within one frame is not lost.

#include "ravolt/kit/input.h"

#include "kit/surface.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"

#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ravolt::kit {

namespace {

constexpr unsigned int backspace = 8, firstPrintable = 0x20, deleteCharacter = 0x7f,
                       firstBeyondAscii = 0x80;
constexpr std::size_t maxSteps = 1024; // of an application that does not call manageGUI

// Render target 0 if all frames are drawn into it; NULL for the window.
const RVFBO *forcedTarget() {
    const RVFBO *target =
        RVSETTINGS::getSDLForceFBO() && RVOPENGL::useFBO() ? RVOPENGL::getFbo(0) : nullptr;
    return target && target->getTexture() ? target : nullptr;
}

// A driver may pass numbers that are none of SDLKey's, which must not be read as one.
unsigned int numberOf(const SDL_keysym &symbol) {
    static_assert(sizeof symbol.sym == sizeof(unsigned int));
    unsigned int number = 0;
    std::memcpy(&number, &symbol.sym, sizeof number);
    return number;
}

void appendUtf8(std::string &text, unsigned int character) {
    const auto append = [&text](unsigned int byte) { text += static_cast<char>(byte); };
    if (character < firstBeyondAscii) {
        append(character);
    } else if (character < 0x800) {
        append(0xc0 | character >> 6);
        append(0x80 | (character & 0x3f));
    } else {
        append(0xe0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3f));
        append(0x80 | (character & 0x3f));
    }
}

// Far outside of every window and target a pixel is as good as any other.
constexpr int maxPixels = 1 << 28;

template <class Number> int limited(Number pixels) {
    return static_cast<int>(
        std::clamp(pixels, static_cast<Number>(-maxPixels), static_cast<Number>(maxPixels)));
}

// The pixel of `size` pixels that has the centre of pixel `index` of `of` pixels over the same
// length.
int scaled(int index, int size, int of) {
    if (size == of || of < 1)
        return index;
    return limited(std::floor((index + 0.5) * size / of));
}

template <std::size_t size> bool isSet(const std::bitset<size> &bits, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < size &&
           bits[static_cast<std::size_t>(index)];
}

// Along the axes of the 2D block.
Pixel alongBlock(Pixel motion) {
    return RVSETTINGS::isSDLLandscape() ? Pixel{-motion.y, motion.x} : motion;
}

} // namespace

bool Input::poll(const Filter &filter) {
    beginFrame();
    for (SDL_Event event; SDL_PollEvent(&event);)
        if (!filter || !filter(event))
            handle(event);
    return !closed;
}

// In each frame, since every start of the engine resets SDL. Setting the same key repeat again
// would end the repeat of a key that is held.
void Input::beginFrame() {
    SDL_EnableUNICODE(1);
    int delay = 0, interval = 0;
    SDL_GetKeyRepeat(&delay, &interval);
    if (delay == 0)
        SDL_EnableKeyRepeat(SDL_DEFAULT_REPEAT_DELAY, SDL_DEFAULT_REPEAT_INTERVAL);
    keysPressed.reset();
    buttonsPressed.reset();
    text.clear();
    motion = {0, 0};
    drags.fill({0, 0});
    wheel = 0;
}

bool Input::handle(const SDL_Event &event) {
    switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        return handleKey(event);
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        return handleButton(event);
    case SDL_MOUSEMOTION:
        pointer = {event.motion.x, event.motion.y};
        addMotion(event.motion.xrel, event.motion.yrel);
        addStep(0, true);
        return true;
    case SDL_ACTIVEEVENT:
        if (!event.active.gain && (event.active.state & SDL_APPINPUTFOCUS))
            releaseAll();
        return false;
    case SDL_QUIT:
        closed = true;
        return false;
    default:
        return false;
    }
}

void Input::addMotion(int dx, int dy) {
    motion = {motion.x + dx, motion.y + dy};
    for (std::size_t button = 0; button < drags.size(); ++button)
        if (buttonsDown[button])
            drags[button] = {drags[button].x + dx, drags[button].y + dy};
}

// The interface of SDL 1.2 on SDL 2 (1.2.60) repeats a key that was pressed and released between
// two polls until another one is pressed, if it makes characters as well. This ends all repeats.
static void restartKeyRepeat() {
    int delay = 0, interval = 0;
    SDL_GetKeyRepeat(&delay, &interval);
    SDL_EnableKeyRepeat(0, 0);
    SDL_EnableKeyRepeat(delay, interval);
}

bool Input::handleKey(const SDL_Event &event) {
    const SDL_keysym &symbol = event.key.keysym;
    const unsigned int key = numberOf(symbol);
    const bool down = event.type == SDL_KEYDOWN;
    if (key < numberOfKeys) {
        if (down && !keysDown[key])
            keysPressed.set(key);
        keysDown.set(key, down);
    }
    if (keysDown.none())
        restartKeyRepeat();
    if (down)
        handleText(key == SDLK_BACKSPACE ? backspace : symbol.unicode);
    return true;
}

void Input::handleText(unsigned int character) {
    const bool printable = character >= firstPrintable && character != deleteCharacter;
    if (!printable && character != backspace)
        return;
    appendUtf8(text, character);
    if (character < firstBeyondAscii) // the widgets' fonts have no other characters
        addStep(static_cast<char>(character));
}

bool Input::handleButton(const SDL_Event &event) {
    const SDL_MouseButtonEvent &change = event.button;
    const bool down = event.type == SDL_MOUSEBUTTONDOWN;
    pointer = {change.x, change.y};
    if (change.button == SDL_BUTTON_WHEELUP || change.button == SDL_BUTTON_WHEELDOWN) {
        if (down)
            wheel += change.button == SDL_BUTTON_WHEELUP ? 1 : -1;
        return true;
    }
    if (change.button < numberOfButtons) {
        if (down)
            buttonsPressed.set(change.button);
        buttonsDown.set(change.button, down);
    }
    addStep(0);
    return true;
}

void Input::releaseAll() {
    keysDown.reset();
    buttonsDown.reset();
    addStep(0);
}

// Steps in which only the pointer moves are one.
void Input::addStep(char key, bool moved) {
    const Step step = {key, pointer, isButtonDown(SDL_BUTTON_LEFT), isButtonDown(SDL_BUTTON_RIGHT),
                       moved};
    if (moved && !steps.empty() && steps.back().moved)
        steps.back() = step;
    else
        steps.push_back(step);
    if (steps.size() > maxSteps)
        steps.pop_front();
}

bool Input::isKeyDown(int key) const { return isSet(keysDown, key); }
bool Input::wasKeyPressed(int key) const { return isSet(keysPressed, key); }
bool Input::isButtonDown(int button) const { return isSet(buttonsDown, button); }
bool Input::wasButtonPressed(int button) const { return isSet(buttonsPressed, button); }

int Input::keyAxis(int positive, int negative) const {
    return isKeyDown(positive) - isKeyDown(negative);
}

Pixel Input::getMotion() const { return alongBlock(motion); }

Pixel Input::getDrag(int button) const {
    return button >= 0 && button < numberOfButtons
               ? alongBlock(drags[static_cast<std::size_t>(button)])
               : Pixel{0, 0};
}

// manageGUIEvents turns its pixel in landscape mode by the window's height, whatever the height of
// the block is: the difference is added here.
unsigned int Input::manageGUI() {
    findBlock();
    if (steps.empty())
        addStep(0);
    unsigned int used = 0;
    onWidget = false;
    while (!steps.empty() && !used) {
        const Step step = steps.front();
        steps.pop_front();
        Pixel pixel = toDrawn(step.pointer);
        if (RVSETTINGS::isSDLLandscape())
            pixel.y += getWindowSize().y - drawnSize().y;
        if (RVELEMENT::manageGUIEvents(step.key, pixel.x, pixel.y, step.left, step.right, &used))
            onWidget = true; // a press and its release may be in one frame
    }
    return used;
}

// begin2D takes the viewport for the block.
void Input::findBlock() {
    if (!RVSETTINGS::isActive())
        return;
    GLint values[4] = {};
    glGetIntegerv(GL_VIEWPORT, values);
    viewport = {values[0], getWindowSize().y - values[1] - values[3], values[2], values[3]};
    drawnIntoTarget = boundSurface().target != nullptr;
    windowThen = getWindowSize();
}

// A viewport of the window changes with its size.
bool Input::knowsViewport() const {
    const Pixel now = getWindowSize();
    return !viewport.isEmpty() &&
           (drawnIntoTarget || (now.x == windowThen.x && now.y == windowThen.y));
}

void Input::setArea(int x, int y, int width, int height) {
    area = {limited(x), limited(y), limited(width), limited(height)};
}

Pixel Input::getWindowSize() { return {RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY()}; }

// The size of the block before landscape mode turns it.
Pixel Input::drawnSize() const {
    if (knowsViewport())
        return {viewport.width, viewport.height};
    if (const RVFBO *target = forcedTarget())
        return {target->getSizeX(), target->getSizeY()};
    return area.isEmpty() ? getWindowSize() : Pixel{area.width, area.height};
}

Input::Rectangle Input::shownArea() const {
    if (!area.isEmpty())
        return area;
    if (knowsViewport() && !drawnIntoTarget)
        return viewport;
    return {0, 0, getWindowSize().x, getWindowSize().y};
}

Pixel Input::toDrawn(Pixel pixel) const {
    const Pixel size = drawnSize();
    const Rectangle shown = shownArea();
    return {scaled(limited(pixel.x) - shown.x, size.x, shown.width),
            scaled(limited(pixel.y) - shown.y, size.y, shown.height)};
}

Pixel Input::getBlockSize() const {
    const Pixel size = drawnSize();
    return RVSETTINGS::isSDLLandscape() ? Pixel{size.y, size.x} : size;
}

Pixel Input::toBlock(Pixel windowPixel) const {
    const Pixel pixel = toDrawn(windowPixel);
    return RVSETTINGS::isSDLLandscape() ? Pixel{drawnSize().y - pixel.y, pixel.x} : pixel;
}

} // namespace ravolt::kit
