// The vertices that a glyph is drawn with, and the text that drawn vertices show.

#include "tests/gui/fontTest.h"

#include <sstream>

namespace ravolt::test {

std::vector<DrawnVertex> glyph(float x, float y, float width, float height, float column, float row,
                               const std::array<float, 4> &color) {
    const float right = x + width, bottom = y + height;
    const float u = column / 16, top = (16 - row) / 16;
    const float nextU = u + 0.0625f, below = top - 0.0625f;
    return {{x, bottom, u, below, color},  {right, bottom, nextU, below, color},
            {x, y, u, top, color},         {right, bottom, nextU, below, color},
            {right, y, nextU, top, color}, {x, y, u, top, color}};
}

namespace {

std::string glyphsOf(const Drawing &drawing) {
    constexpr std::array<float, 4> white{255, 255, 255, 255};
    EXPECT_EQ(drawing.mode, static_cast<GLenum>(GL_TRIANGLES));
    EXPECT_EQ(drawing.vertices.size() % 6, 0u);
    std::ostringstream text;
    for (std::size_t at = 0; at + 6 <= drawing.vertices.size(); at += 6) {
        const DrawnVertex *const vertices = &drawing.vertices[at];
        const auto [x, y, u, v, color] = vertices[2];
        const float column = u * 16, row = 16 - v * 16;
        EXPECT_EQ(std::vector<DrawnVertex>(vertices, vertices + 6),
                  glyph(x, y, 16, 16, column, row, color));
        text << (at ? ", " : "") << static_cast<char>(' ' + column + 16 * row) << ' ' << x << ' '
             << y;
        if (color != white)
            for (const float &channel : color)
                text << (&channel == &color[0] ? " #" : ".") << channel;
    }
    return drawing.vertices.empty() ? "nothing" : text.str();
}

} // namespace

std::string glyphsOf(const Drawings &drawings) {
    std::string text;
    for (const Drawing &drawing : drawings)
        text += (text.empty() ? "" : " | ") + glyphsOf(drawing);
    return text;
}

void FontTest::SetUp() {
    SilentEngineTest::SetUp();
    font = new RVFONT;
    atlas = new RVTEXTURE;
    ASSERT_TRUE(atlas->create(16, 16, RV_TEXTURE_RGBA));
    ASSERT_TRUE(font->setTexture(atlas));
    RAVOLT::begin2D();
    markLog();
}

void FontTest::TearDown() {
    RAVOLT::end2D();
    SilentEngineTest::TearDown();
}

std::string FontTest::textOf(RVNODE *widget) {
    Drawings drawings = drawingsOf([&] { EXPECT_TRUE(widget->render(&element)); });
    std::erase_if(drawings, [](const Drawing &each) { return each.mode != GL_TRIANGLES; });
    return glyphsOf(drawings);
}

Calls FontTest::renderCalls(RVNODE *widget) {
    return callsOf([&] { EXPECT_TRUE(widget->render(&element)); });
}

} // namespace ravolt::test
