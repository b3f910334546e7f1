// `ravolt font` as its users run it, and what the engine reads and draws of its files.

#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"
#include "tests/tools/cli.h"

#include <cstring>
#include <fstream>

#include <ft2build.h>
#include FT_FREETYPE_H

namespace {

using namespace tool_test;
using namespace ravolt::test;
using tool_test::readText;
using tool_test::writeFile;

const std::string fonts = "/usr/share/fonts/truetype/dejavu/";
constexpr char firstCharacter = 0x20, lastCharacter = 0x7e, cursor = 0x7f;

// --- The command

// Replaces the first occurrence of a part, which must exist.
std::string replaced(std::string text, const std::string &part, const std::string &by) {
    const std::size_t start = text.find(part);
    EXPECT_NE(start, std::string::npos);
    return text.replace(start, part.size(), by);
}

// Without x.tga, x.txt and temporaries.
void expectRefused(const std::string &arguments, int code, const std::string &start,
                   const std::string &before = "") {
    expectFailure("font " + arguments, code, start, before);
    for (const fs::directory_entry &entry : fs::directory_iterator("."))
        EXPECT_FALSE(startsWith(entry.path().filename().string(), ".ravolt-") ||
                     startsWith(entry.path().filename().string(), "x."))
            << entry.path();
}

TEST(FontCommand, WritesTextureAndKerningFileAndOneLine) {
    const Outcome result = run("font " + fonts + "DejaVuSans.ttf -o f.tga");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "f.tga: 256 x 256 pixels, size 15; f.txt: 95 characters\n");
    EXPECT_EQ(run("font " + fonts + "DejaVuSans.ttf -q -o g.tga").out, "");
    EXPECT_TRUE(areEqual("f.tga", "g.tga"));
    EXPECT_TRUE(areEqual("f.txt", "g.txt"));
    const std::string help = run("font --help").out;
    for (const char *option : {"--face", "--cell", "--size", "--weight", "--outline", "--shadow"})
        EXPECT_TRUE(has(help, option)) << option;
}

TEST(FontCommand, RefusesWhatMakesNoSenseWithOneLine) {
    const std::string font = fonts + "DejaVuSans.ttf", out = " -o x.tga ";
    fs::copy_file(font, "own.tga", fs::copy_options::overwrite_existing);
    fs::copy_file(font, "own.txt", fs::copy_options::overwrite_existing);
    writeFile("broken.ttf", readText(font).substr(0, 5000));
    writeFile("empty.ttf", "");
    // Neither codes nor names of its characters.
    writeFile("nothing.ttf", replaced(replaced(readText(font), "cmap", "none"), "post", "none"));
    writeFile("pictures.bdf", "STARTFONT 2.1\nFONT a\nSIZE 8 75 75\nFONTBOUNDINGBOX 8 8 0 0\n"
                              "STARTPROPERTIES 1\nFONT_ASCENT 8\nENDPROPERTIES\nCHARS 1\n"
                              "STARTCHAR A\nENCODING 65\nSWIDTH 500 0\nDWIDTH 8 0\nBBX 8 1 0 0\n"
                              "BITMAP\nFF\nENDCHAR\nENDFONT\n");
    const struct {
        std::string arguments;
        int code;
        std::string start;
    } rows[] = {
        {font, 2, "--output is required"},
        {font + " -o x.png", 2, "--output x.png: expected a name that ends with .tga\n"},
        {font + " -o .tga", 2, "--output .tga: expected a name that ends with .tga\n"},
        {font + " -o ''", 2, "--output: the name is empty\n"},
        {font + out + "--cell 16", 2, "--cell 16: expected WIDTHxHEIGHT, each from 4 to 128\n"},
        {font + out + "--cell 16x129", 2, "--cell 16x129: expected WIDTHxHEIGHT"},
        {font + out + "--cell 3x16", 2, "--cell 3x16: expected WIDTHxHEIGHT"},
        {font + out + "--cell 16x16x", 2, "--cell 16x16x: expected WIDTHxHEIGHT"},
        {font + out + "--size 0", 2, "--size: "},
        {font + out + "--weight nan", 2, "--weight nan: expected a number from 0 to 8\n"},
        {font + out + "--outline 17", 2, "--outline: "},
        {font + out + "--shadow -1", 2, "--shadow: "},
        {"none.ttf" + out, 1, "none.ttf: no such file\n"},
        {"." + out, 1, ".: is a folder, not a font\n"},
        {"/dev/null" + out, 1, "/dev/null: is no regular file\n"},
        {"empty.ttf" + out, 1, "empty.ttf: is no font that FreeType reads\n"},
        {"broken.ttf" + out, 1, "broken.ttf: "},
        {font + out + "--face 1", 1, font + ": has no face 1: the last one is 0\n"},
        {font + out + "--size 40", 1, font + ": needs cells of "},
        {font + out + "--outline 8", 1, font + ": fits at no size into cells of 16 x 16\n"},
        {"own.tga -o own.tga", 1, "own.tga: is read by this command; choose another name\n"},
        {"own.txt -o own.tga", 1, "own.txt: is read by this command; choose another name\n"},
        {font + " -o none/x.tga", 1, "none/x.tga: "},
        {"nothing.ttf" + out, 1, "nothing.ttf: has none of the printable characters of ASCII\n"},
        {"pictures.bdf" + out, 1, "pictures.bdf: has pictures of one size, but no outlines\n"},
    };
    for (const auto &row : rows)
        expectRefused(row.arguments, row.code, row.start);
    EXPECT_EQ(readText("own.tga"), readText(font));
}

// A range of the font's characters that begins with the blank.
TEST(FontCommand, NamesTheCharactersThatAFontLacks) {
    using namespace std::string_literals;
    writeFile("few.ttf", replaced(readText(fonts + "DejaVuSans.ttf"), "\0\0\0\x20\0\0\0\x7e"s,
                                  "\0\0\0\x24\0\0\0\x7e"s));
    const Outcome result = run("font few.ttf -o few.tga");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "ravolt: warning: few.ttf: has no  !\"#\n");
    EXPECT_TRUE(fs::exists("few.tga"));
}

// A kerning file that cannot be written: the texture is not replaced either.
TEST(FontCommand, ReplacesBothFilesOrNone) {
    fs::create_directory("both");
    writeFile("both/f.tga", "old");
    fs::create_directory("both/f.txt");
    expectRefused(fonts + "DejaVuSans.ttf -o both/f.tga", 1, "both/f.txt: ");
    EXPECT_EQ(readText("both/f.tga"), "old");
}

// --- In the engine

struct Made {
    const char *font, *options;
    unsigned int width, height, size;
};

constexpr Made made[] = {
    {"DejaVuSansMono.ttf", "--cell 8x16", 8, 16, 13},
    {"DejaVuSans.ttf", "", 16, 16, 15},
    {"DejaVuSans.ttf", "--cell 20x24 --size 17", 20, 24, 17},
    {"DejaVuSerif-Bold.ttf", "--cell 128x128 --size 90", 128, 128, 90},
};

// The font of the tool, drawn by FreeType once more.
class Reference {
  public:
    explicit Reference(const Made &row) {
        EXPECT_EQ(FT_Init_FreeType(&library), 0);
        EXPECT_EQ(FT_New_Face(library, (fonts + row.font).c_str(), 0, &face), 0);
        EXPECT_EQ(FT_Set_Pixel_Sizes(face, 0, row.size), 0);
    }
    ~Reference() {
        FT_Done_Face(face);
        FT_Done_FreeType(library);
    }
    Reference(const Reference &) = delete;
    Reference &operator=(const Reference &) = delete;

    FT_GlyphSlot draw(char c) {
        EXPECT_EQ(FT_Load_Char(face, static_cast<FT_ULong>(c), FT_LOAD_RENDER | FT_LOAD_NO_BITMAP),
                  0);
        return face->glyph;
    }

    // Of a text without a line break, in pixels.
    double width(const std::string &text) {
        double sum = 0;
        for (const char c : text)
            sum += static_cast<double>(draw(c)->advance.x) / 64;
        return sum;
    }

  private:
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

class FontInEngine : public EngineTest {
  protected:
    FontInEngine() {
        settings.setWindowX(320);
        settings.setWindowY(144);
        settings.setMaxAnisotropy(1); // which some drivers use with a sharp filter, too
        settings.setColorDepth(32);
    }

    void SetUp() override {
        EngineTest::SetUp();
        RVTEXTURE::setPath(nullptr);
        RVFONT::setPath(nullptr);
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    }

    void TearDown() override {
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        EngineTest::TearDown();
    }

    static RVFONT *make(const Made &row) {
        const Outcome result = run("font " + fonts + row.font + " -o f.tga " + row.options);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(has(result.out, "size " + std::to_string(row.size) + ";")) << result.out;
        auto *const texture = new RVTEXTURE;
        EXPECT_TRUE(texture->load("f.tga"));
        texture->setFilter(false, false, false);
        auto *const font = new RVFONT;
        font->setTexture(texture);
        font->setCharSizeX(row.width);
        font->setCharSizeY(row.height);
        return font;
    }

    // Draws texts, one below the other, on black.
    static Picture draw(RVFONT *font, const std::vector<std::string> &texts) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        int y = 0;
        for (const std::string &text : texts) {
            font->putText(0, y, text.c_str());
            y += static_cast<int>(font->getCharSizeY());
        }
        RAVOLT::end2D();
        return readFrame();
    }
};

// In cells of any width the engine shows the right characters, the cursor included.
TEST_F(FontInEngine, EveryCharacterIsDrawnAsFreeTypeDrawsIt) {
    for (const Made &row : made) {
        SCOPED_TRACE(std::string(row.font) + " " + row.options);
        if (row.width * 16 > 320)
            continue;
        RVFONT *font = make(row);
        std::vector<std::string> texts(6);
        for (char c = firstCharacter; c <= lastCharacter; ++c)
            texts[static_cast<std::size_t>(c - firstCharacter) / 16] += c;
        const Picture picture = draw(font, texts);
        Reference reference(row);
        // Where the pen is in a cell: from the first column and row of the ink of an H.
        const auto inkOf = [&](char c) {
            const int left = (c - firstCharacter) % 16 * static_cast<int>(row.width);
            const int top = (c - firstCharacter) / 16 * static_cast<int>(row.height);
            int x = 1000, y = 1000;
            for (int j = 0; j < static_cast<int>(row.height); ++j)
                for (int i = 0; i < static_cast<int>(row.width); ++i)
                    if (picture.at(left + i, top + j).red) {
                        x = std::min(x, i);
                        y = std::min(y, j);
                    }
            return std::pair(x, y);
        };
        const FT_GlyphSlot upright = reference.draw('H');
        const auto [inkX, inkY] = inkOf('H');
        const int penX = inkX - upright->bitmap_left, baseline = inkY + upright->bitmap_top;
        for (char c = firstCharacter; c <= lastCharacter; ++c) {
            const int left = (c - firstCharacter) % 16 * static_cast<int>(row.width);
            const int top = (c - firstCharacter) / 16 * static_cast<int>(row.height);
            const FT_GlyphSlot glyph = reference.draw(c);
            const FT_Bitmap &bitmap = glyph->bitmap;
            int largest = 0;
            for (int j = 0; j < static_cast<int>(row.height); ++j)
                for (int i = 0; i < static_cast<int>(row.width); ++i) {
                    const int x = i - penX - glyph->bitmap_left;
                    const int y = j - baseline + glyph->bitmap_top;
                    const bool inside = x >= 0 && y >= 0 && x < static_cast<int>(bitmap.width) &&
                                        y < static_cast<int>(bitmap.rows);
                    const int expected = inside ? bitmap.buffer[y * bitmap.pitch + x] : 0;
                    largest =
                        std::max(largest, std::abs(picture.at(left + i, top + j).red - expected));
                }
            EXPECT_LE(largest, 2) << c; // the driver's blending
        }
        const Picture bar = draw(font, {std::string(1, cursor)});
        EXPECT_EQ(bar.at(static_cast<int>(row.width) - 1, baseline - 1).red, 0);
        EXPECT_EQ(bar.at(penX, baseline - 1).red, 255);
        EXPECT_EQ(bar.pixelsUnlike({0, 0, 0, 255}) % std::max(1u, row.width / 8), 0u);
        delete font;
    }
}

TEST_F(FontInEngine, KerningFilesReadBackForEveryCharacter) {
    for (const Made &row : made) {
        SCOPED_TRACE(std::string(row.font) + " " + row.options);
        RVFONT *font = make(row);
        for (char c = firstCharacter; c <= lastCharacter; ++c)
            font->setKerning(c, 77); // what the file does not name
        ASSERT_TRUE(font->loadKerning("f.txt"));
        Reference reference(row);
        for (char c = firstCharacter; c <= lastCharacter; ++c)
            EXPECT_NEAR(static_cast<int>(row.width) - static_cast<signed char>(font->getKerning(c)),
                        reference.width(std::string(1, c)), 0.5)
                << c;
        for (const std::string text : {"The quick brown fox jumps over the lazy dog.",
                                       "SEDSED sed === ###   ", "0123456789"})
            EXPECT_NEAR(font->stringLength(text.c_str()), reference.width(text),
                        0.5 * static_cast<double>(text.size()));
        delete font;
    }
}

// The sums of all alphas, and how much of the colour is black.
TEST_F(FontInEngine, WeightOutlineAndShadowAddInk) {
    const auto inkOf = [](const char *options) {
        const Made row{"DejaVuSans.ttf", options, 24, 24, 14};
        RVFONT *font = make(row);
        RVTEXTURE *texture = RVTEXTURE::findByFilename("f.tga");
        long alpha = 0, dark = 0;
        for (unsigned int i = 0; i < texture->getSizeX() * texture->getSizeY(); ++i) {
            const auto *pixel =
                reinterpret_cast<const unsigned char *>(texture->getBitmap()) + 4 * i;
            alpha += pixel[3];
            dark += pixel[3] * (255 - pixel[0]) / 255;
        }
        EXPECT_TRUE(font->loadKerning("f.txt"));
        const auto advance = static_cast<long>(font->stringLength("mm"));
        delete font;
        delete texture;
        return std::array{alpha, dark, advance};
    };
    const auto plain = inkOf("--cell 24x24 --size 14");
    const auto heavy = inkOf("--cell 24x24 --size 14 --weight 1");
    const auto outlined = inkOf("--cell 24x24 --size 14 --outline 1");
    const auto shadowed = inkOf("--cell 24x24 --size 14 --shadow 2");
    EXPECT_EQ(plain[1], 0);
    EXPECT_EQ(heavy[1], 0);
    EXPECT_GT(heavy[0], plain[0] * 5 / 4);
    EXPECT_EQ(heavy[2], plain[2] + 2) << "a pixel a character";
    EXPECT_GT(outlined[0], plain[0] * 3 / 2);
    EXPECT_NEAR(outlined[0] - outlined[1], plain[0], plain[0] * 0.05) << "the strokes stay white";
    EXPECT_EQ(outlined[2], plain[2] + 2);
    EXPECT_GT(shadowed[1], plain[0] / 5) << "what the strokes do not cover";
    EXPECT_EQ(shadowed[2], plain[2]);
}

} // namespace
