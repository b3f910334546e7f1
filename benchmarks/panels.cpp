// The interface: strings that are new in each frame, and a window of widgets.

#include "benchScene.h"
#include "jobs.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVBUTTON.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVWINDOW.h"
#include "tools/writers/tgaWriter.h"

#include <array>
#include <cstdio>
#include <vector>

namespace {

constexpr int glyphWidth = 16, cells = 16;

using Color = std::array<float, 4>;

struct Vertex {
    float position[2], uv[2];
    Color color;
};

class Interface : public bench::Job {
  public:
    Interface();

    void startHand() override { RAVOLT::begin2D(); }

  protected:
    RVTEXTURE *atlas;
    RVFONT *font;
    std::vector<Vertex> quads, glyphs; // of the frame by hand

    void addText(int x, int y, int height, const char *text);
    void drawAll();
};

Interface::Interface() {
    bench::stopEngine();
    bench::startEngine(false);
    std::vector<unsigned char> texels;
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            const int cell = x / cells + y / cells * 7, stroke = (x + cell * y / 3) % 16;
            const auto alpha = static_cast<unsigned char>(stroke < 6 ? 255 : 0);
            texels.insert(texels.end(), {255, 240, static_cast<unsigned char>(y), alpha});
        }
    ravolt::writeTga("bench_font.tga", {256, 256, 4, true, texels.data()});
    atlas = new RVTEXTURE;
    atlas->load("bench_font.tga");
    std::remove("bench_font.tga");
    font = new RVFONT;
    font->setTexture(atlas);
}

void Interface::addText(int x, int y, int height, const char *text) {
    for (; *text; ++text, x += glyphWidth) {
        const int cell = *text - ' ';
        const float left = static_cast<float>(x), top = static_cast<float>(y);
        const float right = left + glyphWidth, bottom = top + static_cast<float>(height);
        const float u = static_cast<float>(cell % cells) / cells;
        const float v = static_cast<float>(cells - cell / cells) / cells;
        const float nextU = u + 1.0f / cells, nextV = v - 1.0f / cells;
        constexpr Color white = {1, 1, 1, 1};
        glyphs.push_back({{left, top}, {u, v}, white});
        glyphs.push_back({{right, top}, {nextU, v}, white});
        glyphs.push_back({{right, bottom}, {nextU, nextV}, white});
        glyphs.push_back({{left, bottom}, {u, nextV}, white});
    }
}

void drawQuads(const std::vector<Vertex> &vertices) {
    if (vertices.empty())
        return;
    constexpr GLsizei stride = sizeof(Vertex);
    glVertexPointer(2, GL_FLOAT, stride, vertices[0].position);
    glTexCoordPointer(2, GL_FLOAT, stride, vertices[0].uv);
    glColorPointer(4, GL_FLOAT, stride, vertices[0].color.data());
    glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(vertices.size()));
}

void Interface::drawAll() {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_TEXTURE_2D);
    drawQuads(quads);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, atlas->getGLId());
    drawQuads(glyphs);
    glFinish();
    quads.clear();
    glyphs.clear();
}

// ---- 100 strings of 40 characters, other ones in each frame.

constexpr int strings = 100, lineHeight = 4;
constexpr const char *lineFormat = "line %03d of frame %08u, what it says";

class Strings : public Interface {
  public:
    Strings() { font->setCharSizeY(lineHeight); }

    void drawByEngine() override {
        ++frames[0];
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        for (int i = 0; i < strings; ++i)
            font->putString(0, i * lineHeight, lineFormat, i, frames[0]);
        RAVOLT::end2D();
        glFinish();
    }

    void drawByHand() override {
        ++frames[1];
        for (int i = 0; i < strings; ++i) {
            char text[64];
            std::snprintf(text, sizeof text, lineFormat, i, frames[1]);
            addText(0, i * lineHeight, lineHeight, text);
        }
        drawAll();
    }

  private:
    unsigned int frames[2] = {};
};

// ---- A window whose 200 widgets are itself, its title bar, its hidden scroll bar, and a grid of
// labels, buttons and boxes.

constexpr int contents = 197, columns = 14, columnWidth = 44, rowHeight = 28;
constexpr int windowX = 8, windowY = 40, windowWidth = 624, windowHeight = 430;
constexpr int boxWidth = 40, boxHeight = 22, titleHeight = 19, rings = 3;
constexpr Color windowColor = {0.1f, 0.1f, 0.6f, 0.9f}, buttonColor = {0.8f, 0.3f, 0.0f, 0.9f},
                boxColor = {0.5f, 0.5f, 0.5f, 1.0f};

class Panel : public Interface {
  public:
    Panel();

    void drawByEngine() override {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        window->pass();
        RAVOLT::end2D();
        glFinish();
    }
    void drawByHand() override;

  private:
    RVWINDOW *window;

    void addQuad(int x1, int y1, int x2, int y2, const Color &color);
    void addBox(int x, int y, int w, int h, int thickness, const Color &color);
};

int placeX(int number) { return 2 + number % columns * columnWidth; }
int placeY(int number) { return 4 + number / columns * rowHeight; }

std::array<char, 4> textOf(int number) {
    return {static_cast<char>('A' + number % 26), static_cast<char>('a' + number % 23), '\0'};
}

Panel::Panel() : window(new RVWINDOW) {
    window->setPosition(windowX, windowY);
    window->setSizes(windowWidth, windowHeight);
    window->setColor(windowColor[0], windowColor[1], windowColor[2], windowColor[3]);
    window->setFont(font);
    window->setCaption("Panel");
    for (int i = 0; i < contents; ++i) {
        RVBOX *widget = nullptr;
        if (i % 3 == 0) {
            auto *label = new RVLABEL;
            label->setFont(font);
            label->write("%s", textOf(i).data());
            widget = label;
        } else if (i % 3 == 1) {
            auto *button = new RVBUTTON;
            button->setFont(font);
            button->setCaption(textOf(i).data());
            widget = button;
        } else {
            widget = new RVBOX;
        }
        widget->setSizes(boxWidth, boxHeight);
        widget->setPosition(static_cast<float>(placeX(i)), static_cast<float>(placeY(i)));
        widget->link(window);
    }
}

void Panel::addQuad(int x1, int y1, int x2, int y2, const Color &color) {
    const float left = static_cast<float>(x1), top = static_cast<float>(y1);
    const float right = static_cast<float>(x2), bottom = static_cast<float>(y2);
    quads.push_back({{left, top}, {}, color});
    quads.push_back({{right, top}, {}, color});
    quads.push_back({{right, bottom}, {}, color});
    quads.push_back({{left, bottom}, {}, color});
}

void Panel::addBox(int x, int y, int w, int h, int thickness, const Color &color) {
    const auto shade = [&color](float factor) -> Color {
        return {color[0] * factor, color[1] * factor, color[2] * factor, 0.5f};
    };
    const int right = x + w, bottom = y + h;
    addQuad(x, y, right, bottom, color);
    for (int i = 0; i < thickness; ++i) {
        addQuad(x + i + 1, y + i, right - i - 1, y + i + 1, shade(1.3f));
        addQuad(x + i, y + i + 1, x + i + 1, bottom - i - 1, shade(1.3f));
        addQuad(x + i + 1, bottom - i, right - i - 1, bottom - i - 1, shade(0.7f));
        addQuad(right - i, y + i + 1, right - i - 1, bottom - i - 1, shade(0.7f));
        addQuad(x + i, y + i, x + i + 1, y + i + 1, shade(1.6f));
        addQuad(x + i, bottom - i, x + i + 1, bottom - i - 1, shade(1));
        addQuad(right - i, y + i, right - i - 1, y + i + 1, shade(1));
        addQuad(right - i, bottom - i, right - i - 1, bottom - i - 1, shade(0.4f));
    }
}

// No text is below a box, so that all boxes come first.
void Panel::drawByHand() {
    addBox(windowX, windowY, windowWidth, windowHeight, 2, windowColor);
    addBox(windowX, windowY - titleHeight, windowWidth, titleHeight, rings, buttonColor);
    addText(windowX + 1, windowY - titleHeight + 1, glyphWidth, "Panel");
    for (int i = 0; i < contents; ++i) {
        const int x = windowX + placeX(i), y = windowY + placeY(i);
        if (i % 3 > 0)
            addBox(x, y, boxWidth, boxHeight, rings, i % 3 == 1 ? buttonColor : boxColor);
        if (i % 3 < 2)
            addText(x + i % 3, y + i % 3, glyphWidth, textOf(i).data());
    }
    drawAll();
}

const bench::AddedJobs added({
    {"100 strings of 40 characters", "strings",
     []() -> std::unique_ptr<bench::Job> { return std::make_unique<Strings>(); }},
    {"panel of 200 widgets", "panel",
     []() -> std::unique_ptr<bench::Job> { return std::make_unique<Panel>(); }},
});

} // namespace
