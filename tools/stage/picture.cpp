// Reads the pixels of the frame and writes them as a PNG file.

#include "tools/stage/picture.h"

#include "tools/common/failure.h"
#include "tools/process/signals.h"
#include "tools/stage/stage.h"
#include "tools/writers/pngWriter.h"
#include "tools/writers/wholeFile.h"

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

WindowSize windowFor(WindowSize picture) {
    return {partOf(picture.width, maxWindow.width), partOf(picture.height, maxWindow.height)};
}

Picture shoot(Drawable &drawable, WindowSize size) {
    const auto [width, height] = canvasSize();
    Picture whole;
    whole.width = size.width;
    whole.height = size.height;
    whole.pixels.resize(std::size_t(3) * static_cast<std::size_t>(size.width) *
                        static_cast<std::size_t>(size.height));
    const bool inParts = width != size.width || height != size.height;
    for (int bottom = 0; bottom < size.height; bottom += height)
        for (int left = 0; left < size.width; left += width) {
            throwIfInterrupted();
            if (inParts)
                drawable.setPart({size.width, size.height, left, bottom});
            drawable.draw();
            copyTile(takePicture(), left, bottom, whole);
            RAVOLT::swap();
        }
    drawable.setPart({});
    return whole;
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

Picture halved(const Picture &picture) {
    Picture half;
    half.width = picture.width / 2;
    half.height = picture.height / 2;
    const auto row = 3 * static_cast<std::size_t>(picture.width);
    half.pixels.reserve(row / 2 * static_cast<std::size_t>(half.height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(half.height); ++y)
        for (std::size_t x = 0; x < static_cast<std::size_t>(half.width); ++x)
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const unsigned char *four = &picture.pixels[2 * y * row + 6 * x + channel];
                const int sum = four[0] + four[3] + four[row] + four[row + 3];
                half.pixels.push_back(static_cast<unsigned char>((sum + 2) / 4));
            }
    return half;
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
