// The splash picture, drawn from distances: each shape is a function that returns the distance of a
// point from its edge, which gives smooth edges. Coordinates are pixels from the top left.

#include "engine/app/splash.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <new>

namespace {

struct Point {
    float x, y;
};

Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }

float dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }

// The middle of a pixel.
Point middleOf(int row, int column) {
    return {static_cast<float>(column) + 0.5f, static_cast<float>(row) + 0.5f};
}

struct Color {
    float red, green, blue; // 0 to 1
};

Color mix(Color a, Color b, float fraction) {
    const auto between = [fraction](float from, float to) { return from + (to - from) * fraction; };
    return {between(a.red, b.red), between(a.green, b.green), between(a.blue, b.blue)};
}

constexpr Color white = {1.0f, 1.0f, 1.0f};
constexpr Color night = {0.11f, 0.10f, 0.32f};
constexpr Color dusk = {0.45f, 0.27f, 0.78f};
constexpr Color gold = {1.0f, 0.76f, 0.26f};
constexpr Color shade = {0.87f, 0.87f, 0.92f};

constexpr Point center = {128.0f, 98.0f};
constexpr float radius = 78.0f;

// A stroke of the lettering, from a to b.
struct Stroke {
    Point a, b;
};

float squaredDistanceToStroke(Point p, const Stroke &stroke) {
    const Point along = stroke.b - stroke.a, from = p - stroke.a;
    const float fraction = std::clamp(dot(from, along) / dot(along, along), 0.0f, 1.0f);
    const Point away = {from.x - along.x * fraction, from.y - along.y * fraction};
    return dot(away, away);
}

constexpr int arcParts = 24;

// Strokes along an arc of a circle; degrees clockwise from the right. Returns the end of the
// written strokes.
Stroke *drawArc(Stroke *stroke, Point middle, float size, float from, float to) {
    const auto at = [&](int part) {
        const float angle =
            (from + (to - from) * static_cast<float>(part) / arcParts) * 0.01745329f;
        return Point{middle.x + size * std::cos(angle), middle.y + size * std::sin(angle)};
    };
    for (int part = 0; part < arcParts; ++part)
        *stroke++ = {at(part), at(part + 1)};
    return stroke;
}

// The name, 30 pixels high between the lines 202 and 232.
using Lettering = std::array<Stroke, 13 + 2 * arcParts>;

Lettering lettering() {
    constexpr float top = 202.0f, bottom = 232.0f, waist = 218.0f;
    constexpr Stroke straight[] = {
        {{22, bottom}, {22, top}},   {{22, top}, {32, top}},         // R
        {{22, waist}, {32, waist}},  {{31, waist}, {41, bottom}},    //
        {{54, bottom}, {66, top}},   {{66, top}, {78, bottom}},      // A
        {{59, 223}, {73, 223}},                                      //
        {{88, top}, {100, bottom}},  {{100, bottom}, {112, top}},    // V
        {{175, top}, {175, bottom}}, {{175, bottom}, {192, bottom}}, // L
        {{204, top}, {230, top}},    {{217, top}, {217, bottom}},    // T
    };
    static_assert(std::size(straight) + 2 * arcParts == std::tuple_size_v<Lettering>);
    Lettering strokes;
    Stroke *arcs = std::copy(std::begin(straight), std::end(straight), strokes.data());
    arcs = drawArc(arcs, {32, (top + waist) / 2}, (waist - top) / 2, -90, 90);
    drawArc(arcs, {143, (top + bottom) / 2}, (bottom - top) / 2, 0, 360); // O
    return strokes;
}

constexpr std::array<Point, 7> bolt = {{
    {150, 38},
    {94, 106},
    {122, 106},
    {108, 152},
    {164, 84},
    {135, 84},
    {150, 38},
}};

// Distance to the bolt's edge, negative inside it.
float distanceToBolt(Point p) {
    float nearest = 1.0e9f; // squared
    bool inside = false;
    for (std::size_t corner = 0; corner + 1 < bolt.size(); ++corner) {
        const Point a = bolt[corner], b = bolt[corner + 1];
        nearest = std::min(nearest, squaredDistanceToStroke(p, {a, b}));
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y))
            inside = !inside;
    }
    const float distance = std::sqrt(nearest);
    return inside ? -distance : distance;
}

// The part of a pixel that a shape covers, by the pixel's distance; `softness` is the width of the
// edge.
float coverage(float distance, float softness = 1.0f) {
    return std::clamp(0.5f - distance / softness, 0.0f, 1.0f);
}

// Nothing of the bolt, its glow included, is visible outside of this box.
bool isNearBolt(Point p) {
    constexpr float glow = 16.0f;
    return p.x > 94 - glow && p.x < 164 + glow && p.y > 38 - glow && p.y < 152 + glow;
}

Color emblem(Point p) {
    const Point out = p - center;
    const float toRim = std::sqrt(dot(out, out)) - radius;
    const Point below = {out.x, out.y - 5};
    const float shadow = coverage(std::sqrt(dot(below, below)) - radius + 1, 14.0f);
    const float disc = coverage(toRim);
    if (shadow == 0 && disc == 0)
        return white;
    Color color = mix(white, shade, shadow);

    const float height = (out.y + radius) / (2 * radius);
    color = mix(color, mix(dusk, night, std::clamp(height, 0.0f, 1.0f)), disc);
    color = mix(color, white, 0.55f * coverage(std::fabs(toRim + 7) - 1)); // a thin ring
    if (!isNearBolt(p))
        return color;
    const float distance = distanceToBolt(p);
    color =
        mix(color, gold, 0.35f * coverage(distance - 5, 22.0f) * coverage(toRim + 8)); // its glow
    return mix(color, mix(white, gold, std::clamp(height * 1.3f - 0.15f, 0.0f, 1.0f)),
               coverage(distance - 1.5f));
}

// The distances of the pixels from the name, for the rows that it is in. A pixel farther from every
// stroke than `reach` may have any larger distance.
class NameDistances {
  public:
    static constexpr int firstRow = 195, rows = 45;
    static constexpr float halfStroke = 2.6f, reach = halfStroke + 1;

    NameDistances() {
        squared.fill(1.0e18f);
        for (const Stroke &stroke : lettering())
            add(stroke);
    }

    float at(int row, int column) const {
        return std::sqrt(squared[static_cast<std::size_t>(indexOf(row, column))]);
    }

  private:
    static int indexOf(int row, int column) {
        return (row - firstRow) * ravolt::splashSize + column;
    }

    void add(const Stroke &stroke) {
        const auto [left, right] = std::minmax(stroke.a.x, stroke.b.x);
        const auto [top, bottom] = std::minmax(stroke.a.y, stroke.b.y);
        for (int row = static_cast<int>(top - reach); row <= static_cast<int>(bottom + reach);
             ++row)
            for (int column = static_cast<int>(left - reach);
                 column <= static_cast<int>(right + reach); ++column) {
                float &nearest = squared[static_cast<std::size_t>(indexOf(row, column))];
                nearest = std::min(nearest, squaredDistanceToStroke(middleOf(row, column), stroke));
            }
    }

    std::array<float, rows * ravolt::splashSize> squared;
};

} // namespace

namespace ravolt {

std::unique_ptr<unsigned char[]> splashPicture() {
    constexpr std::size_t bytes = splashSize * splashSize * 3;
    std::unique_ptr<unsigned char[]> picture(new (std::nothrow) unsigned char[bytes]);
    if (!picture)
        return nullptr;
    const NameDistances name;
    unsigned char *written = picture.get();
    for (int row = splashSize - 1; row >= 0; --row) {
        const bool inName =
            row >= NameDistances::firstRow && row < NameDistances::firstRow + NameDistances::rows;
        for (int column = 0; column < splashSize; ++column) {
            Color color = emblem(middleOf(row, column));
            if (inName)
                color =
                    mix(color, night, coverage(name.at(row, column) - NameDistances::halfStroke));
            for (const float part : {color.blue, color.green, color.red})
                *written++ = static_cast<unsigned char>(part * 255.0f + 0.5f);
        }
    }
    return picture;
}

} // namespace ravolt
