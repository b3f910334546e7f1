// The ground of the village's square, its well and the place of its fire.

#include "examples/village/parts.h"

#include <cmath>

namespace village {

namespace {

constexpr float pi = 3.1415927f;

Point onCircle(float radius, float degrees, float height) {
    return {radius * std::sin(degrees * pi / 180), height, radius * std::cos(degrees * pi / 180)};
}

} // namespace

void writeYard(ObjWriter &obj) {
    constexpr int sectors = 72;
    const auto edge = [](int i, float height) {
        const float degrees = 360.0f / sectors * static_cast<float>(i % sectors);
        const float turn = degrees * pi / 180;
        return onCircle(16.4f + 0.9f * std::sin(5 * turn) + 0.5f * std::sin(13 * turn + 1), degrees,
                        height);
    };
    obj.begin("yard", "gravel", {}, 1);
    for (int i = 0; i < sectors; ++i) {
        const float from = 360.0f / sectors * static_cast<float>(i), to = from + 360.0f / sectors;
        const Point corners[] = {edge(i, -0.03f), edge(i + 1, -0.03f), onCircle(12.4f, to, 0.02f),
                                 onCircle(12.4f, from, 0.02f)};
        obj.ground(corners, 5);
    }
}

// Rings of quads, coarse on purpose: light by corners and light by pixels are told apart on them.
void writePaving(ObjWriter &obj) {
    constexpr float radii[] = {0.001f, 2.5f, 5, 7.5f, 10, 12.5f};
    constexpr int sectors = 30;
    obj.begin("floor", "paving", {}, 1);
    for (int ring = 0; ring < 5; ++ring)
        for (int i = 0; i < sectors; ++i) {
            const float from = 360.0f / sectors * static_cast<float>(i),
                        to = from + 360.0f / sectors;
            const Point corners[] = {
                onCircle(radii[ring + 1], from, 0.06f), onCircle(radii[ring + 1], to, 0.06f),
                onCircle(radii[ring], to, 0.06f), onCircle(radii[ring], from, 0.06f)};
            obj.ground(corners, 4);
        }
    obj.begin("kerb", "stone", {}, 1.5f);
    for (int i = 0; i < 60; ++i)
        obj.beam(onCircle(12.6f, 6.0f * static_cast<float>(i), -0.02f),
                 onCircle(12.6f, 6.0f * static_cast<float>(i + 1), -0.02f), 0.34f);
}

void writeWell(ObjWriter &obj, const Frame &where) {
    obj.begin("well_wall", "stone", where, 1);
    obj.turnedBody(
        {0, 0, 0},
        {{0.86f, 0.85f}, {0.88f, 0.95f}, {1.15f, 0.95f}, {1.15f, 0.85f}, {1.1f, 0.8f}, {1.12f, 0}},
        20, 4);
    obj.begin("well_water", "dark", where, 1);
    obj.turnedBody({0, 0, 0}, {{0, 0.55f}, {0.9f, 0.55f}}, 20, 1);
    obj.begin("well_frame", "timber", where, 1);
    for (const float x : {-1.0f, 1.0f})
        obj.box({x, 0, 0}, {0.16f, 2.5f, 0.16f});
    obj.beam({-1.1f, 1.75f, 0}, {1.1f, 1.75f, 0}, 0.14f);
    obj.beam({-1.2f, 2.5f, 0}, {1.2f, 2.5f, 0}, 0.14f);
    obj.beam({0, 1.75f, 0}, {0, 1.2f, 0}, 0.03f);
    obj.begin("well_bucket", "planks", where, 0.5f);
    obj.turnedBody({0, 0.95f, 0}, {{0.2f, 0.32f}, {0.15f, 0}}, 12, 3);
    obj.begin("well_roof", "tiles", where, 1.8f);
    for (const float side : {-1.0f, 1.0f})
        for (const float under : {0.0f, 1.0f}) {
            const Point a = {-side * 1.5f, 2.2f, side * 0.95f},
                        b = {side * 1.5f, 2.2f, side * 0.95f};
            const Point c = {side * 1.5f, 3.0f, 0}, d = {-side * 1.5f, 3.0f, 0}, up = {0, 0.08f, 0};
            under > 0 ? obj.quad(b, a, d, c) : obj.quad(a + up, b + up, c + up, d + up);
        }
}

// Stones in a circle and logs in a cone.
void writeFirePlace(ObjWriter &obj, const Point &foot) {
    obj.begin("fire_stones", "rock");
    for (int i = 0; i < 13; ++i) {
        const float degrees = 360.0f / 13 * static_cast<float>(i);
        const float size = 0.28f + 0.05f * std::sin(3 * degrees);
        writeRock(obj, foot + onCircle(1.15f, degrees, size * 0.25f), size, 700 + i);
    }
    obj.begin("fire_logs", "bark", {}, 0.6f);
    for (int i = 0; i < 6; ++i)
        obj.beam(foot + onCircle(0.8f, 60.0f * static_cast<float>(i), 0.05f),
                 foot + onCircle(0.08f, 60.0f * static_cast<float>(i), 0.75f), 0.17f);
}

} // namespace village
