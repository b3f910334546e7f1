// Pictures of one frame or of several parts, shown or written as PNG files.

#include "tools/stage/picture.h"

#include "kit/files/wholeFile.h"
#include "tools/common/failure.h"
#include "tools/process/signals.h"
#include "tools/stage/stage.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVOPENGL.h>
#include <utility>

namespace ravolt::tool {

namespace {

// SDL refuses windows larger than the screen, whose size this is off screen.
constexpr WindowSize maxWindow = {1024, 768};

// The size of the fewest equal parts of at most `maximum` pixels.
int partOf(int whole, int maximum) {
    const int parts = (whole + maximum - 1) / maximum;
    return (whole + parts - 1) / parts;
}

// A large picture of parts.
struct Canvas {
    explicit Canvas(WindowSize whole)
        : size(whole), pixels(std::size_t(3) * static_cast<std::size_t>(whole.width) *
                              static_cast<std::size_t>(whole.height)) {}

    // `bottom` counts from the lowest row; pixels beyond the whole are skipped.
    void copy(const Picture &part, int left, int bottom) {
        const int columns = std::min(part.getWidth(), size.width - left);
        for (int up = 0; up < std::min(part.getHeight(), size.height - bottom); ++up) {
            const int from = (part.getHeight() - 1 - up) * part.getWidth();
            const int to = (size.height - 1 - bottom - up) * size.width + left;
            std::copy_n(part.getPixels().begin() + 3 * from, 3 * columns, pixels.begin() + 3 * to);
        }
    }

    WindowSize size;
    std::vector<unsigned char> pixels;
};

} // namespace

void showPicture(const Picture &picture) {
    RAVOLT::begin2D();
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glRasterPos2i(0, 0);
    glPixelZoom(1, -1); // its rows go from the top down
    glDrawPixels(picture.getWidth(), picture.getHeight(), GL_RGB, GL_UNSIGNED_BYTE,
                 picture.getPixels().data());
    glPixelZoom(1, 1);
    glPopClientAttrib();
    RAVOLT::end2D();
}

WindowSize windowFor(WindowSize picture) {
    return {partOf(picture.width, maxWindow.width), partOf(picture.height, maxWindow.height)};
}

namespace {

// Draws all parts of a picture; `finish` is called with the left and bottom edge of each one before
// it is presented.
template <class Finish> void drawParts(Drawable &drawable, WindowSize size, Finish finish) {
    const auto [width, height] = canvasSize();
    const bool inParts = width != size.width || height != size.height;
    for (int bottom = 0; bottom < size.height; bottom += height)
        for (int left = 0; left < size.width; left += width) {
            throwIfInterrupted();
            if (inParts)
                drawable.setPart({size.width, size.height, double(left), double(bottom)});
            drawable.draw();
            finish(left, bottom);
            RAVOLT::swap();
        }
    drawable.setPart({});
}

} // namespace

Picture shoot(Drawable &drawable, WindowSize size) {
    Canvas canvas(size);
    drawParts(drawable, size,
              [&](int left, int bottom) { canvas.copy(takePicture(), left, bottom); });
    Picture whole;
    whole.setPixels(size.width, size.height, std::move(canvas.pixels));
    return whole;
}

void drawUnseen(Drawable &drawable, WindowSize size) {
    drawParts(drawable, size, [](int, int) {});
}

namespace {

void drawDiscarded(Drawable &drawable) {
    drawable.draw();
    RAVOLT::swap();
}

} // namespace

void drawAfterPause(Drawable &drawable) {
    const Effects effects = drawable.getEffects();
    if (!effects.needWholePicture() && !effects.isOn(Effect::shadows))
        return;
    Effects without = effects;
    without.switchOff(Effect::toneMapping);
    drawable.setEffects(without);
    drawDiscarded(drawable);
    drawable.setEffects(effects);
}

void settle(Drawable &drawable) {
    drawAfterPause(drawable);
    if (!drawable.getEffects().isOn(Effect::toneMapping))
        return;
    const float before = RAVOLT::getFrameDuration();
    RAVOLT::setFrameDuration(1); // in which it adapts completely
    drawDiscarded(drawable);
    drawDiscarded(drawable);
    RAVOLT::setFrameDuration(before);
}

bool showsSomething(const Picture &picture) {
    const std::vector<unsigned char> &pixels = picture.getPixels();
    for (std::size_t i = 0; i < pixels.size(); i += 3)
        if (!Stage::isBackground(pixels[i], pixels[i + 1], pixels[i + 2]))
            return true;
    return false;
}

Picture takePicture() {
    Picture picture;
    if (!picture.take())
        throw std::bad_alloc(); // the engine is running
    return picture;
}

std::vector<unsigned char> encodePng(const Picture &picture) {
    std::vector<unsigned char> bytes = picture.encode();
    if (bytes.empty())
        throw std::bad_alloc(); // there is a picture
    return bytes;
}

void printPng(const Picture &picture) {
    const std::vector<unsigned char> bytes = encodePng(picture);
    const std::size_t count = std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    if (count != bytes.size() || std::fflush(stdout) != 0)
        throw Failure("standard output", "cannot be written");
}

void writePng(const Picture &picture, const std::filesystem::path &file) {
    const std::string error = writeWholeFile(file.string(), encodePng(picture));
    if (!error.empty())
        throw Failure(error);
}

} // namespace ravolt::tool
