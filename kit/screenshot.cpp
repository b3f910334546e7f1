// The picture is read from what is bound: OpenGL's first row is the lowest, and in landscape mode
// its columns from the left are the rows from the top.

#include "ravolt/kit/screenshot.h"

#include "kit/files/pngWriter.h"
#include "kit/surface.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace ravolt::kit {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int maxSamples = 16;
constexpr float standingStill = 1e-6f; // seconds of a frame

std::size_t bytesOf(int width, int height) {
    return std::size_t(3) * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

// Rows from the bottom.
Bytes readRows(const Surface &surface) {
    Bytes rows(bytesOf(surface.width, surface.height));
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    readPixels(0, 0, surface.width, surface.height, GL_RGB, GL_UNSIGNED_BYTE, rows.data());
    glPopClientAttrib();
    return rows;
}

Bytes turnedUpright(const Surface &surface, const Bytes &rows) {
    const bool landscape = RVSETTINGS::isSDLLandscape();
    const int width = landscape ? surface.height : surface.width;
    const int height = landscape ? surface.width : surface.height;
    Bytes upright(rows.size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int column = landscape ? y : x, row = landscape ? x : height - 1 - y;
            std::copy_n(rows.begin() + static_cast<std::ptrdiff_t>(bytesOf(surface.width, row)) +
                            3 * column,
                        3,
                        upright.begin() + static_cast<std::ptrdiff_t>(bytesOf(width, y)) + 3 * x);
        }
    return upright;
}

// The projection of the frame, shifted by parts of a pixel, until the end of its lifetime.
class ShiftedProjection {
  public:
    ShiftedProjection() { glGetFloatv(GL_PROJECTION_MATRIX, projection); }
    ~ShiftedProjection() { load(0, 0); }
    ShiftedProjection(const ShiftedProjection &) = delete;
    ShiftedProjection &operator=(const ShiftedProjection &) = delete;

    // In units of the whole picture.
    void load(float x, float y) const {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glTranslatef(2 * x, 2 * y, 0);
        glMultMatrixf(projection);
        glMatrixMode(GL_MODELVIEW);
    }

  private:
    float projection[16] = {};
};

// The duration of a frame, restored at the end of its lifetime.
class FrameDuration {
  public:
    FrameDuration() : former(RAVOLT::getFrameDuration()) {}
    ~FrameDuration() { RAVOLT::setFrameDuration(former); }
    FrameDuration(const FrameDuration &) = delete;
    FrameDuration &operator=(const FrameDuration &) = delete;

  private:
    float former;
};

// Of the whole picture. The larger pixels count: those of the window, or of a target that is
// smaller.
std::pair<float, float> sizeOfPixel() {
    const BindingScope restore;
    const Surface surface = bindDrawnSurface();
    return {1 / static_cast<float>(std::min(surface.width, RVSETTINGS::getSDLWindowX())),
            1 / static_cast<float>(std::min(surface.height, RVSETTINGS::getSDLWindowY()))};
}

} // namespace

bool Screenshot::take() {
    if (!RAVOLT::isActive()) {
        zlfLog("   [!] Engine not running @ Screenshot::take\n");
        return false;
    }
    const Surface surface = boundSurface();
    try {
        Bytes upright = turnedUpright(surface, readRows(surface));
        pixels.swap(upright);
    } catch (const std::bad_alloc &) {
        zlfLog("   [!] Out of memory @ Screenshot::take\n");
        return false;
    }
    width = surface.width;
    height = surface.height;
    if (RVSETTINGS::isSDLLandscape())
        std::swap(width, height);
    return true;
}

bool Screenshot::setPixels(int newWidth, int newHeight, Bytes newPixels) {
    if (newWidth < 1 || newHeight < 1 || newPixels.size() != bytesOf(newWidth, newHeight)) {
        zlfLog("   [!] Invalid params @ Screenshot::setPixels\n");
        return false;
    }
    width = newWidth;
    height = newHeight;
    pixels = std::move(newPixels);
    return true;
}

bool Screenshot::takeSmooth(const std::function<void()> &draw, int samples) {
    if (!draw || samples < 1 || samples > maxSamples) {
        zlfLog("   [!] Invalid params @ Screenshot::takeSmooth\n");
        return false;
    }
    if (!RAVOLT::isActive()) {
        zlfLog("   [!] Engine not running @ Screenshot::takeSmooth\n");
        return false;
    }
    const auto [pixelX, pixelY] = sizeOfPixel();
    const ShiftedProjection projection;
    const FrameDuration duration;
    Screenshot one;
    std::vector<std::uint32_t> sums;
    const auto shift = [samples](int sample) {
        return (static_cast<float>(sample) + 0.5f) / static_cast<float>(samples) - 0.5f;
    };
    for (int sample = 0; sample < samples * samples; ++sample) {
        if (sample > 0)
            RAVOLT::setFrameDuration(standingStill);
        projection.load(shift(sample % samples) * pixelX, shift(sample / samples) * pixelY);
        draw();
        if (!one.take())
            return false;
        try {
            sums.resize(one.pixels.size());
        } catch (const std::bad_alloc &) {
            zlfLog("   [!] Out of memory @ Screenshot::takeSmooth\n");
            return false;
        }
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += one.pixels[i];
    }
    const std::uint32_t count = static_cast<std::uint32_t>(samples * samples);
    for (std::size_t i = 0; i < sums.size(); ++i)
        one.pixels[i] = static_cast<unsigned char>((sums[i] + count / 2) / count);
    *this = std::move(one);
    return true;
}

bool Screenshot::shrink(int factor) {
    if (factor < 1 || factor > std::min(width, height)) {
        zlfLog("   [!] Invalid params @ Screenshot::shrink\n");
        return false;
    }
    const int newWidth = width / factor, newHeight = height / factor;
    const std::uint32_t count =
        static_cast<std::uint32_t>(factor) * static_cast<std::uint32_t>(factor);
    for (int y = 0; y < newHeight; ++y) // in place: nothing is written before it has been read
        for (int x = 0; x < newWidth; ++x)
            for (std::size_t channel = 0; channel < 3; ++channel) {
                std::uint32_t sum = count / 2;
                for (int row = y * factor; row < (y + 1) * factor; ++row)
                    for (int column = x * factor; column < (x + 1) * factor; ++column)
                        sum += pixels[bytesOf(width, row) + bytesOf(column, 1) + channel];
                pixels[bytesOf(newWidth, y) + bytesOf(x, 1) + channel] =
                    static_cast<unsigned char>(sum / count);
            }
    width = newWidth;
    height = newHeight;
    pixels.resize(bytesOf(width, height));
    return true;
}

bool Screenshot::save(const std::string &fileName) const {
    if (pixels.empty()) {
        zlfLog("   [!] No picture @ Screenshot::save\n");
        return false;
    }
    try {
        const std::string error = writePng(fileName, {width, height, 3, true, pixels.data()});
        if (error.empty())
            return true;
        zlfLog("   [!] %s @ Screenshot::save\n", error.c_str());
    } catch (const std::bad_alloc &) {
        zlfLog("   [!] Out of memory @ Screenshot::save\n");
    }
    return false;
}

std::vector<unsigned char> Screenshot::encode() const {
    try {
        return pixels.empty() ? Bytes() : encodePng({width, height, 3, true, pixels.data()});
    } catch (const std::bad_alloc &) {
        zlfLog("   [!] Out of memory @ Screenshot::encode\n");
        return {};
    }
}

} // namespace ravolt::kit
