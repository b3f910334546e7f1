// Glyphs and strings: the arrays that OpenGL reads, and the calls around the draw calls.

#include "tests/gui/fontTest.h"

#include "engine/gl/bindings.h"
#include "ravolt/RVOPENGL.h"

#include <algorithm>

using namespace ravolt::test;

namespace {

constexpr std::array<float, 4> white{255, 255, 255, 255};

class FontDrawing : public FontTest {
  protected:
    // Of a text that is no format.
    std::string glyphsOfText(const std::string &text, bool result = true) {
        return glyphsOf(drawingsOf(
            [&] { EXPECT_EQ(font->putString(0, 0, "%s", text.c_str()), result) << text; }));
    }

    // Glyph number `index` of a text of one letter each, on one line.
    static std::string at(char letter, std::size_t index) {
        return std::string(1, letter) + " " + std::to_string(16 * index) + " 0";
    }
    static std::string row(char letter, std::size_t first, std::size_t end) {
        std::string text;
        for (std::size_t index = first; index < end; ++index)
            text += (text.empty() ? "" : ", ") + at(letter, index);
        return text;
    }
};

// --- putChar

TEST_F(FontDrawing, GlyphsAreTheCellsOfTheAtlas) {
    const struct {
        const char *what;
        char c;
        unsigned int width, height;
        float column, row;
    } cases[] = {
        {"the blank", ' ', 16, 16, 0, 0},
        {"end of the first row", '/', 16, 16, 15, 0},
        {"start of the second row", '0', 16, 16, 0, 1},
        {"a letter", 'A', 16, 16, 1, 2},
        {"the height does not count", 'z', 16, 40, 10, 5},
        {"the cursor", 0x7f, 16, 16, 15, 5},
        {"a low byte is the blank", 0x1f, 16, 16, 0, 0},
        {"zero", 0, 16, 16, 0, 0},
        {"a high byte is the blank", '\x80', 16, 16, 0, 0},
        {"the last byte", '\xff', 16, 16, 0, 0},
        {"narrow, in the first row", '/', 8, 8, 15, 0},
        {"narrow: half a row is skipped for each", 'A', 8, 8, 17, 2},
        {"wide", '0', 20, 16, -4, 1},
        {"wide, far to the left", 'z', 32, 16, -70, 5},
        {"no width", 'A', 0, 0, 33, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        font->setCharSizeX(c.width);
        font->setCharSizeY(c.height);
        const Drawings drawings =
            drawingsOf([&] { EXPECT_TRUE(font->putChar(-3, 70, c.c, true)); });
        ASSERT_EQ(drawings.size(), 1u);
        EXPECT_EQ(drawings[0].mode, static_cast<GLenum>(GL_TRIANGLES));
        EXPECT_EQ(drawings[0].vertices,
                  glyph(-3, 70, static_cast<float>(c.width), static_cast<float>(c.height), c.column,
                        c.row, white));
    }
}

TEST_F(FontDrawing, TheVerticesOfAGlyphAreTwoTriangles) {
    font->setCharSizeX(16);
    font->setCharSizeY(20);
    const Drawings drawings = drawingsOf([this] { font->putChar(100, 50, 'A', true); });
    const float u0 = 0.0625f, u1 = 0.125f, top = 0.875f, bottom = 0.8125f;
    EXPECT_EQ(drawings[0].vertices, (std::vector<DrawnVertex>{{100, 70, u0, bottom, white},
                                                              {116, 70, u1, bottom, white},
                                                              {100, 50, u0, top, white},
                                                              {116, 70, u1, bottom, white},
                                                              {116, 50, u1, top, white},
                                                              {100, 50, u0, top, white}}));
}

// The calls of the arrays and these.
Calls withArrays(std::initializer_list<Call> drawing, std::vector<Call> before = {}) {
    before.insert(before.end(), {{"glColorPointer", 4, GL_UNSIGNED_BYTE, 0, anyAddress},
                                 {"glVertexPointer", 2, GL_FLOAT, 0, anyAddress},
                                 {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress}});
    before.insert(before.end(), drawing);
    return Calls(before);
}

Call elements(int indices) {
    return {"glDrawElements", GL_TRIANGLES, indices, GL_UNSIGNED_SHORT, anyAddress};
}

const Call blend("glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

TEST_F(FontDrawing, AGlyphIsDrawnAtOnceWithItsTextureAndBlended) {
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOff();
    const Calls calls = callsOf([this] { EXPECT_TRUE(font->putChar(0, 0, 'a', true)); });
    EXPECT_EQ(calls.count("glBindTexture"), 1u);
    EXPECT_TRUE(calls.haveInOrder({{"glEnable", GL_TEXTURE_2D}, {"glEnable", GL_BLEND}}));
    const std::vector<Call> last(calls.end() - 5, calls.end());
    EXPECT_EQ(Calls(last), withArrays({{"glDrawArrays", GL_TRIANGLES, 0, 6}}, {blend}));
    // Its slot is free again, and is that after the stored ones.
    EXPECT_EQ(glyphsOfText("b"), "b 0 0");
    EXPECT_TRUE(font->putChar(0, 0, 'c', false));
    EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putChar(7, 8, 'd', true); })), "d 7 8");
}

TEST_F(FontDrawing, WithoutATextureGlyphsAreOnlyStored) {
    RVFONT other;
    EXPECT_TRUE(callsOf([&] {
                    EXPECT_FALSE(other.putChar(0, 0, 'a', true));
                    EXPECT_TRUE(other.putChar(0, 0, 'b', false));
                    EXPECT_FALSE(other.putString(0, 0, "text"));
                    EXPECT_FALSE(other.putText(0, 0, "text"));
                }).empty());
    delete atlas;
    EXPECT_LOGGED_EXACTLY("   [dynamic] unloaded\n");
    EXPECT_FALSE(font->putChar(0, 0, 'a', true));
    EXPECT_FALSE(font->putString(0, 0, "text"));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(FontDrawing, StoredGlyphsAreDrawnWhenTheCacheIsFull) {
    const Calls none = callsOf([this] {
        for (int i = 0; i < 1023; ++i)
            EXPECT_TRUE(font->putChar(16 * i, 0, 'a', false));
    });
    EXPECT_TRUE(none.empty());
    Calls calls;
    const Drawings drawings = drawingsOf(
        [&] { calls = callsOf([this] { EXPECT_TRUE(font->putChar(16 * 1023, 0, 'a', false)); }); });
    EXPECT_EQ(calls, withArrays({elements(6144), {"glFinish"}}));
    EXPECT_EQ(glyphsOf(drawings), row('a', 0, 1024));
    EXPECT_EQ(glyphsOfText("b"), "b 0 0") << "the cache is empty again";
}

TEST_F(FontDrawing, TheCellsOfATextAreThoseOfTheWidthThatItIsDrawnWith) {
    for (const unsigned int pixels : {16u, 8u, 16u, 0u, 20u}) {
        font->setCharSizeX(pixels);
        const auto size = static_cast<float>(pixels);
        std::vector<DrawnVertex> expected;
        float x = 5;
        for (const int cell : {0x21, 0x10, 0x5a, 0x21}) {
            const int row = cell / 16, column = cell - static_cast<int>(pixels) * row;
            const auto quad =
                glyph(x, 7, size, 16, static_cast<float>(column), static_cast<float>(row), white);
            expected.insert(expected.end(), quad.begin(), quad.end());
            x += size;
        }
        const Drawings drawings = drawingsOf([this] { font->putText(5, 7, "A0zA"); });
        ASSERT_EQ(drawings.size(), 1u);
        EXPECT_EQ(drawings[0].vertices, expected) << pixels;
    }
}

TEST_F(FontDrawing, TagsLineBreaksAndTheEndActAfterTheyWereDrawnByPutChar) {
    drawingsOf([this] {
        for (const char c : {'^', '\n', '\0'})
            EXPECT_TRUE(font->putChar(0, 0, c, true));
    });
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(glyphsOfText("ab^c8008c\nd"),
                  "a 0 0, b 16 0, c 32 0 #255.0.0.255, d 0 16 #255.0.0.255");
        EXPECT_EQ(glyphsOfText("a^^a^", false), "") << "truncated";
        RVFONT::reset();
    }
}

// --- putString

TEST_F(FontDrawing, AStringIsOneDrawCallAfterTextureAndBlending) {
    for (const bool again : {false, true}) {
        const Calls calls = callsOf([this] { EXPECT_TRUE(font->putString(1, 2, "%d%%", 42)); });
        EXPECT_EQ(calls.contains("glBindTexture"), !again) << "bound already";
        EXPECT_EQ(calls.contains(Call("glEnable", GL_BLEND)), !again);
        const std::vector<Call> last(calls.end() - 5, calls.end());
        EXPECT_EQ(Calls(last), withArrays({elements(18)}, {blend}));
    }
    EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putString(-5, 9, "%s%c", "a", 'b'); })),
              "a -5 9, b 11 9");
}

// As by a mesh that was drawn before in the same list.
TEST_F(FontDrawing, ArraysAndIndicesAreInMemoryAlsoAfterBuffersWereBound) {
    ravolt::bindBuffer(GL_ARRAY_BUFFER_ARB, 1);
    ravolt::bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, 2);
    const Calls calls = callsOf([this] { EXPECT_TRUE(font->putString(0, 0, "text")); });
    const auto pointer = std::find_if(
        calls.begin(), calls.end(), [](const Call &call) { return call.name == "glColorPointer"; });
    ASSERT_NE(pointer, calls.end());
    for (const double target : {GL_ARRAY_BUFFER_ARB, GL_ELEMENT_ARRAY_BUFFER_ARB})
        EXPECT_EQ(std::count(calls.begin(), pointer, Call("glBindBufferARB", target, 0)), 1);
}

TEST_F(FontDrawing, TagsActAndTextAdvancesByItsKerning) {
    font->setKerning('i', 10);
    font->setKerning('W', -3);
    font->setKerning('k', 20);
    const struct {
        const char *what, *text, *glyphs;
    } cases[] = {
        {"plain", "ab", "a 0 0, b 16 0"},
        {"narrow, wide and to the left", "iWka", "i 0 0, W 6 0, k 25 0, a 21 0"},
        {"line break", "ab\nc\n\nd", "a 0 0, b 16 0, c 0 16, d 0 48"},
        {"blanks are glyphs", "a b", "a 0 0,   16 0, b 32 0"},
        {"red", "^c8008a", "a 0 0 #255.0.0.255"},
        {"the other case", "^C0808a", "a 0 0 #0.255.0.255"},
        {"all digits", "^c0123a^c4567b^c8888c",
         "a 0 0 #0.31.63.95, b 16 0 #127.159.191.223, c 32 0"},
        {"red without alpha", "a^c8800b", "a 0 0, b 16 0 #255.255.0.0"},
        {"nine wraps around", "^c9999a", "a 0 0 #31.31.31.31"},
        {"no digits", "^c/:08a", "a 0 0 #225.62.0.255"},
        {"X", "a^x0005b^X0100c", "a 0 0, b 21 0, c 137 0"},
        {"to the left", "a^x-010b", "a 0 0, b 6 0"},
        {"Y", "a^y0005b^Y-020c", "a 0 0, b 16 5, c 32 -15"},
        {"numbers as for atoi", "^x+7  a^y 3x b^x  -5c^xqqqqd", "a 7 0, b 23 3, c 34 3, d 50 3"},
        {"a line break ends X, not Y", "^x0050^y0004a\nb", "a 50 4, b 0 20"},
        {"a tag at the end", "a^c8000", "a 0 0"},
        {"another letter", "^ba", "^ 0 0, b 16 0, a 32 0"},
        {"a mark before a tag", "^^x0004a", "^ 0 0, a 20 0"},
        {"low and high bytes",
         "a\x01\x1f\x80\xff"
         "b",
         "a 0 0,   16 0,   32 0,   48 0,   64 0, b 80 0"},
        {"the cursor", "\x7f", "\x7f 0 0"},
        {"nothing to draw", "", ""},
        {"only tags", "^c8000^x0010\n", ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(glyphsOfText(c.text), c.glyphs) << c.what;
    EXPECT_EQ(glyphsOfText("a"), "a 0 0") << "each string starts in white";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(FontDrawing, ATruncatedTagDrawsNothingAndItsGlyphsAreReset) {
    for (const char letter : std::string("cCxXyY"))
        for (std::size_t length = 0; length < 6; ++length) {
            if (length == 0 && letter != 'c')
                continue;
            const std::string tag = (std::string("^") + letter + "8888").substr(0, length);
            const std::string text = length ? "abc" + tag : "abc";
            EXPECT_EQ(glyphsOfText(text, length == 0), length ? "" : "a 0 0, b 16 0, c 32 0")
                << text;
            RAVOLT::begin2D();
            EXPECT_EQ(glyphsOfText("d"), "d 0 0") << "reset by begin2D, after " << text;
        }
    EXPECT_NOTHING_LOGGED();
}

// The number of those glyphs is the number of the first index; so the draw call starts there.
TEST_F(FontDrawing, TheNextStringAfterATruncatedTagStartsAtItsIndices) {
    EXPECT_EQ(glyphsOfText("abcdef^", false), "");
    EXPECT_EQ(glyphsOfText("xy"), "b 16 0, c 32 0") << "6 indices, one glyph";
    EXPECT_EQ(glyphsOfText("xy"), "x 0 0, y 16 0");
    EXPECT_EQ(glyphsOfText("abcdef^x", false), "");
    EXPECT_EQ(glyphsOfText(""), "") << "no new glyphs";
    EXPECT_EQ(glyphsOfText("x"), "b 16 0") << "so those remain";
    EXPECT_EQ(glyphsOfText("abc^", false), "");
    EXPECT_EQ(callsOf([this] { font->putString(0, 0, "d"); }).back(), elements(6));
}

TEST_F(FontDrawing, LongTextsAreDrawnByAThousandGlyphs) {
    const struct {
        const char *what;
        std::size_t length;
        std::string drawings;
    } cases[] = {
        {"one less than the cache", 1023, row('a', 0, 1023)},
        {"the cache", 1024, row('a', 0, 1024) + " | nothing"},
        {"one more", 1025, row('a', 0, 1024) + " | " + at('a', 1024)},
        {"twice", 2049, row('a', 0, 1024) + " | " + row('a', 1024, 2048) + " | " + at('a', 2048)},
    };
    for (const auto &c : cases) {
        Calls calls;
        const Drawings drawings = drawingsOf([&] {
            calls = callsOf([&] {
                EXPECT_TRUE(font->putString(0, 0, "%s", std::string(c.length, 'a').c_str()));
            });
        });
        EXPECT_EQ(glyphsOf(drawings), c.drawings) << c.what;
        EXPECT_EQ(calls.count("glFinish"), drawings.size() - 1) << c.what;
    }
    EXPECT_EQ(glyphsOfText("b"), "b 0 0") << "and the flag is cleared";
    EXPECT_EQ(glyphsOfText(""), "");
}

// Fewer glyphs may be left than there were at the start.
TEST_F(FontDrawing, TheCacheMayFillUpAfterATruncatedTag) {
    EXPECT_EQ(glyphsOfText(std::string(1020, 'a') + "^", false), "");
    EXPECT_EQ(glyphsOfText("bcdefg"),
              row('a', 0, 1020) + ", b 0 0, c 16 0, d 32 0, e 48 0 | f 64 0, g 80 0");
    EXPECT_EQ(glyphsOfText(std::string(1024, 'a') + "b^", false), row('a', 0, 1024));
    RVFONT::reset();
    EXPECT_EQ(glyphsOfText("b"), "b 0 0");
}

TEST_F(FontDrawing, FormattedTextIsCutAtItsBuffer) {
    const auto numberOf = [](const Drawings &drawings) {
        std::size_t number = 0;
        for (const Drawing &drawing : drawings)
            number += drawing.vertices.size() / 6;
        return number;
    };
    const struct {
        std::size_t length, glyphs;
        const char *log;
    } cases[] = {{4095, 4095, ""},
                 {4096, 4095, "   [!] Text of 4096 bytes is cut @ RVFONT::putString\n"},
                 {9999, 4095, "   [!] Text of 9999 bytes is cut @ RVFONT::putString\n"}};
    for (const auto &c : cases) {
        const std::string text(c.length, 'a');
        EXPECT_EQ(numberOf(drawingsOf([&] { font->putString(0, 0, "%s", text.c_str()); })),
                  c.glyphs);
        EXPECT_LOGGED_EXACTLY(c.log);
    }
    const std::string text(5000, 'a');
    EXPECT_EQ(numberOf(drawingsOf([&] { EXPECT_TRUE(font->putText(0, 0, text.c_str())); })), 5000u)
        << "not formatted";
}

TEST_F(FontDrawing, NullAndTextsThatCannotBeFormattedDrawNothing) {
    const char *volatile null = nullptr;
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(font->putString(0, 0, null)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::putString\n");
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(font->putText(0, 0, null)); }).empty());
    EXPECT_NOTHING_LOGGED();
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(font->putString(0, 0, "%ls", unencodable)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVFONT::putString\n");
}

TEST_F(FontDrawing, TextIsNoFormatForPutText) {
    EXPECT_EQ(glyphsOf(drawingsOf([this] { EXPECT_TRUE(font->putText(1, 2, "%s%")); })),
              "% 1 2, s 17 2, % 33 2");
}

// The colour of the block stays for glyphs of putChar.
TEST_F(FontDrawing, GlyphsHaveTheColourOfTheLastString) {
    glyphsOfText("^c8008a");
    EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putChar(0, 0, 'b', true); })),
              "b 0 0 #255.0.0.255");
    glyphsOfText("a");
    EXPECT_EQ(glyphsOf(drawingsOf([this] { font->putChar(0, 0, 'b', true); })), "b 0 0");
}

TEST_F(FontDrawing, CoordinatesWrapAround) {
    font->setCharSizeX(0x7fffffff);
    font->setCharSizeY(0xffffffff);
    font->setKerning('a', -128);
    EXPECT_TRUE(font->putString(2147483647, -2147483647 - 1, "aaa\n\n^x9999^y9999aaa"));
    EXPECT_NOTHING_LOGGED();
}

} // namespace
