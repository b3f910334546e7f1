// Reads the pixels of the frame and writes them as a PNG file.

#include "tools/stage/picture.h"

#include "kit/files/pngWriter.h"
#include "kit/files/wholeFile.h"
#include "tools/common/failure.h"
#include "tools/process/signals.h"
#include "tools/stage/stage.h"

#include <algorithm>
#include <cstdio>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVOPENGL.h>

namespace ravolt::tool {

namespace {

// SDL refuses windows larger than the screen, whose size this is off screen.
constexpr WindowSize maxWindow = {1024, 768};

// The size of the fewest equal parts of at most `maximum` pixels.
int partOf(int whole, int maximum) {
    const int parts = (whole + maximum - 1) / maximum;
    return (whole + parts - 1) / parts;
}

// `bottom` counts from the whole picture's lowest row; pixels beyond the whole are skipped.
void copyTile(const Picture &tile, int left, int bottom, Picture &whole) {
    const int columns = std::min(tile.width, whole.width - left);
    for (int up = 0; up < std::min(tile.height, whole.height - bottom); ++up) {
        const int from = (tile.height - 1 - up) * tile.width;
        const int to = (whole.height - 1 - bottom - up) * whole.width + left;
        std::copy_n(tile.pixels.begin() + 3 * from, 3 * columns, whole.pixels.begin() + 3 * to);
    }
}

} // namespace

void showPicture(const Picture &picture) {
    RAVOLT::begin2D();
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glRasterPos2i(0, 0);
    glPixelZoom(1, -1); // its rows go from the top down
    glDrawPixels(picture.width, picture.height, GL_RGB, GL_UNSIGNED_BYTE, picture.pixels.data());
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
    Picture whole;
    whole.width = size.width;
    whole.height = size.height;
    whole.pixels.resize(std::size_t(3) * static_cast<std::size_t>(size.width) *
                        static_cast<std::size_t>(size.height));
    drawParts(drawable, size,
              [&](int left, int bottom) { copyTile(takePicture(), left, bottom, whole); });
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

Picture boxFiltered(const Picture &picture, int side) {
    const auto samples = static_cast<std::size_t>(side);
    const auto row = 3 * static_cast<std::size_t>(picture.width);
    Picture filtered;
    filtered.width = picture.width / side;
    filtered.height = picture.height / side;
    const auto columns = static_cast<std::size_t>(filtered.width);
    std::vector<std::size_t> sums(3 * columns); // of one row
    filtered.pixels.reserve(sums.size() * static_cast<std::size_t>(filtered.height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(filtered.height); ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (std::size_t sample = 0; sample < samples; ++sample) {
            const unsigned char *from = &picture.pixels[(y * samples + sample) * row];
            for (std::size_t i = 0; i < 3 * columns * samples; ++i)
                sums[i / (3 * samples) * 3 + i % 3] += from[i];
        }
        for (const std::size_t sum : sums)
            filtered.pixels.push_back(
                static_cast<unsigned char>((sum + samples * samples / 2) / (samples * samples)));
    }
    return filtered;
}

bool showsSomething(const Picture &picture) {
    for (std::size_t i = 0; i < picture.pixels.size(); i += 3)
        if (!Stage::isBackground(picture.pixels[i], picture.pixels[i + 1], picture.pixels[i + 2]))
            return true;
    return false;
}

Picture takePicture() {
    Picture picture;
    picture.width = canvasSize().width;
    picture.height = canvasSize().height;
    const std::size_t row = std::size_t(3) * static_cast<std::size_t>(picture.width);
    std::vector<unsigned char> upward(row * static_cast<std::size_t>(picture.height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, picture.width, picture.height, GL_RGB, GL_UNSIGNED_BYTE, upward.data());
    picture.pixels.reserve(upward.size());
    for (std::size_t end = upward.size(); end > 0; end -= row) // OpenGL's first row is the lowest
        picture.pixels.insert(picture.pixels.end(),
                              upward.begin() + static_cast<std::ptrdiff_t>(end - row),
                              upward.begin() + static_cast<std::ptrdiff_t>(end));
    return picture;
}

std::vector<unsigned char> encodePng(const Picture &picture) {
    return ravolt::encodePng({picture.width, picture.height, 3, true, picture.pixels.data()});
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
