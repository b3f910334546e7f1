// Draws the characters of a small font into a texture.

#include "tests/gui/pixelFont.h"

#include "ravolt/RVFONT.h"
#include "ravolt/RVTEXTURE.h"
#include "tools/writers/tgaWriter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace ravolt::test {
namespace {

constexpr unsigned int cell = 8, side = 16 * cell;

// The rows from the top, five pixels wide.
struct Glyph {
    char character;
    const char *rows[7];
};
constexpr Glyph glyphs[] = {
    {'R', {"####.", "#...#", "#...#", "####.", "#.#..", "#..#.", "#...#"}},
    {'a', {".....", ".....", ".###.", "....#", ".####", "#...#", ".####"}},
    {'v', {".....", ".....", "#...#", "#...#", "#...#", ".#.#.", "..#.."}},
    {'o', {".....", ".....", ".###.", "#...#", "#...#", "#...#", ".###."}},
    {'l', {".##..", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {'t', {".#...", ".#...", "####.", ".#...", ".#...", ".#..#", "..##."}},
    {'[', {".###.", ".#...", ".#...", ".#...", ".#...", ".#...", ".###."}},
    {']', {".###.", "...#.", "...#.", "...#.", "...#.", "...#.", ".###."}},
    {'.', {".....", ".....", ".....", ".....", ".....", ".##..", ".##.."}},
    {'0', {".###.", "#...#", "#..##", "#.#.#", "##..#", "#...#", ".###."}},
    {'1', {"..#..", ".##..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {'2', {".###.", "#...#", "....#", "...#.", "..#..", ".#...", "#####"}},
    {'3', {"#####", "...#.", "..#..", "...#.", "....#", "#...#", ".###."}},
    {0x7f, {"##...", "##...", "##...", "##...", "##...", "##...", "##..."}},
};

void drawGlyph(const Glyph &glyph, std::vector<unsigned char> &pixels) {
    const unsigned int index = static_cast<unsigned int>(glyph.character - ' ');
    for (unsigned int y = 0; y < 7; ++y)
        for (unsigned int x = 0; x < 5; ++x) {
            const std::size_t row = index / 16 * cell + y, column = index % 16 * cell + x + 1;
            pixels[(row * side + column) * 4 + 3] = glyph.rows[y][x] == '#' ? 255 : 0;
        }
}

} // namespace

RVFONT *makePixelFont() {
    std::vector<unsigned char> pixels;
    for (unsigned int pixel = 0; pixel < side * side; ++pixel)
        pixels.insert(pixels.end(), {255, 255, 255, 0});
    for (const Glyph &glyph : glyphs)
        drawGlyph(glyph, pixels);
    EXPECT_TRUE(writeTga("font.tga", {.width = side,
                                      .height = side,
                                      .channels = 4,
                                      .topRowFirst = true,
                                      .pixels = pixels.data()}));
    auto *atlas = new RVTEXTURE;
    EXPECT_TRUE(atlas->load("font.tga"));
    atlas->setFilter(false, false, false);
    auto *font = new RVFONT;
    EXPECT_TRUE(font->setTexture(atlas));
    for (char c = ' '; c < 0x7f; ++c)
        font->setKerning(c, 4);
    return font;
}

} // namespace ravolt::test
