// Draws the coverage of each character with its outline and shadow into its cell.

#include "tools/font/atlas.h"

#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ravolt::tool::font {

namespace {

constexpr float shadowOpacity = 0.6f;

// White or black pixels over one another.
struct Blend {
    float color = 0, alpha = 0; // the color times alpha

    void add(float newColor, float newAlpha) {
        color = newColor * newAlpha + color * (1 - newAlpha);
        alpha = newAlpha + alpha * (1 - newAlpha);
    }
};

unsigned char byteOf(float share) {
    return static_cast<unsigned char>(std::lround(std::clamp(share, 0.0f, 1.0f) * 255));
}

} // namespace

unsigned int CellLayout::neededWidth(const Extent &extent) const {
    return static_cast<unsigned int>(std::max(0, extent.right) - std::min(0, extent.left)) +
           2 * outline + shadow;
}

unsigned int CellLayout::neededHeight(const Extent &extent) const {
    return static_cast<unsigned int>(extent.height()) + 2 * outline + shadow;
}

bool CellLayout::place(const Extent &extent) {
    if (neededWidth(extent) > width || neededHeight(extent) > height)
        return false;
    const unsigned int above = (height - neededHeight(extent)) / 2;
    penX = static_cast<int>(outline) - std::min(0, extent.left);
    baseline = static_cast<int>(above + outline) + extent.top;
    return true;
}

Atlas::Atlas(const CellLayout &cellLayout)
    : layout(cellLayout),
      pixels(std::size_t(layout.width) * layout.height * cellsPerSide * cellsPerSide * 4) {
    if (layout.outline || layout.shadow)
        return;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = i % 4 == 3 ? 0 : 255; // so that a linear filter has no dark edges
}

void Atlas::draw(char c, const Glyph &glyph) { store(c, place(glyph)); }

void Atlas::drawCursor(const Extent &extent) {
    Glyph bar;
    bar.extent = {0, static_cast<int>(std::max(1u, layout.width / 8)), extent.bottom, extent.top};
    bar.coverage.assign(static_cast<std::size_t>(bar.extent.width()) *
                            static_cast<std::size_t>(bar.extent.height()),
                        255);
    store(cursor, place(bar));
}

// The layout has room for it.
Atlas::Coverage Atlas::place(const Glyph &glyph) const {
    Coverage coverage(std::size_t(layout.width) * layout.height);
    if (glyph.coverage.empty())
        return coverage;
    const auto left = static_cast<std::size_t>(layout.penX + glyph.extent.left);
    const auto top = static_cast<std::size_t>(layout.baseline - glyph.extent.top);
    const auto width = static_cast<std::size_t>(glyph.extent.width());
    for (std::size_t i = 0; i < glyph.coverage.size(); ++i)
        coverage.at((top + i / width) * layout.width + left + i % width) =
            static_cast<float>(glyph.coverage[i]) / 255;
    return coverage;
}

float Atlas::at(const Coverage &coverage, int x, int y) const {
    const auto width = static_cast<int>(layout.width), height = static_cast<int>(layout.height);
    return x < 0 || y < 0 || x >= width || y >= height
               ? 0
               : coverage[static_cast<std::size_t>(y * width + x)];
}

// The strokes, thicker by a disc around each pixel.
Atlas::Coverage Atlas::outlined(const Coverage &strokes) const {
    Coverage result(strokes.size());
    const auto radius = static_cast<int>(layout.outline), width = static_cast<int>(layout.width);
    for (std::size_t i = 0; i < result.size(); ++i)
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx) {
                const float distance = std::hypot(static_cast<float>(dx), static_cast<float>(dy));
                const float share =
                    std::clamp(static_cast<float>(radius) + 0.5f - distance, 0.0f, 1.0f);
                const auto index = static_cast<int>(i);
                result[i] = std::max(result[i],
                                     share * at(strokes, index % width + dx, index / width + dy));
            }
    return result;
}

void Atlas::store(char c, const Coverage &strokes) {
    const Coverage border = outlined(strokes);
    const bool plain = !layout.outline && !layout.shadow;
    const auto shadow = static_cast<int>(layout.shadow);
    const std::size_t left = std::size_t(columnOf(c, layout.width)) * layout.width;
    const std::size_t top = std::size_t(rowOf(c)) * layout.height;
    const std::size_t rowLength = std::size_t(layout.width) * cellsPerSide;
    for (unsigned int y = 0; y < layout.height; ++y)
        for (unsigned int x = 0; x < layout.width; ++x) {
            const auto column = static_cast<int>(x), row = static_cast<int>(y);
            Blend blend;
            if (shadow)
                blend.add(0, shadowOpacity * at(border, column - shadow, row - shadow));
            if (layout.outline)
                blend.add(0, at(border, column, row));
            blend.add(1, at(strokes, column, row));
            const unsigned char color = byteOf(plain             ? 1
                                               : blend.alpha > 0 ? blend.color / blend.alpha
                                                                 : 0);
            unsigned char *pixel = &pixels[((top + y) * rowLength + left + x) * 4];
            std::fill(pixel, pixel + 3, color);
            pixel[3] = byteOf(blend.alpha);
        }
}

std::vector<unsigned char> Atlas::tga() const {
    return encodeTga(
        {layout.width * cellsPerSide, layout.height * cellsPerSide, 4, true, pixels.data()},
        TgaEncoding::runLength);
}

} // namespace ravolt::tool::font
