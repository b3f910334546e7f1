// What is on the village's square: market stalls, fences, lamps, the screen, benches and barrels.

#include "examples/village/parts.h"

#include <cmath>

namespace village {

// A table under a striped awning, with crates of fruit.
void writeStall(ObjWriter &obj, const std::string &name, const Frame &where) {
    obj.begin(name + "_wood", "planks", where, 1);
    obj.box({0, 0.85f, 0}, {2.6f, 0.08f, 1.1f});
    obj.box({0, 0.1f, 0.5f}, {2.5f, 0.75f, 0.06f});
    for (const float x : {-1.3f, 1.3f})
        for (const float z : {-0.6f, 0.6f})
            obj.box({x, 0, z}, {0.1f, z > 0 ? 2.1f : 2.6f, 0.1f});
    for (const float x : {-0.85f, 0.0f, 0.85f})
        obj.box({x, 0.93f, 0.05f}, {0.72f, 0.16f, 0.8f});
    const char *fruits[] = {"apples", "oranges", "leaves"};
    for (int i = 0; i < 3; ++i) {
        obj.begin(name + "_fruit" + std::to_string(i), fruits[i], where, 1);
        const float x = -0.85f + 0.85f * static_cast<float>(i);
        for (int k = 0; k < 12; ++k) {
            const int column = k % 4, row = k / 4;
            obj.turnedBody({x - 0.24f + 0.16f * static_cast<float>(column), 1.06f,
                            -0.18f + 0.2f * static_cast<float>(row)},
                           {{0, 0.16f}, {0.06f, 0.14f}, {0.085f, 0.08f}, {0.06f, 0.02f}, {0, 0}}, 8,
                           1);
        }
    }
    obj.begin(name + "_awning", "awning", where, 1);
    for (int side = 0; side < 2; ++side) {
        const Point a = {-1.5f, 2.1f, 0.95f}, b = {1.5f, 2.1f, 0.95f}, up = {0, 0.04f, 0};
        const Point c = {1.5f, 2.75f, -0.75f}, d = {-1.5f, 2.75f, -0.75f}, low = {0, -0.28f, 0};
        side ? obj.picture(b, a, d, c, {3, 0}, {0, 1})
             : obj.picture(a + up, b + up, c + up, d + up, {0, 0}, {3, 1});
        side ? obj.picture(b + low, a + low, a, b, {3, 0}, {0, 1})
             : obj.picture(a + low, b + low, b + up, a + up, {0, 0}, {3, 1});
    }
}

void writeFence(ObjWriter &obj, const std::string &name, const Point &from, const Point &to) {
    obj.begin(name, "planks", {}, 1);
    const Point way = to - from;
    const int posts = static_cast<int>(std::hypot(way[0], way[2]) / 1.4f) + 1;
    for (int i = 0; i <= posts; ++i)
        obj.box(from + way * (static_cast<float>(i) / static_cast<float>(posts)) +
                    Point{0, -0.8f, 0},
                {0.16f, 2.0f, 0.16f});
    for (const float y : {0.45f, 0.95f})
        obj.beam(from + Point{0, y, 0}, to + Point{0, y, 0}, 0.11f);
}

void writeLamp(ObjWriter &obj, const std::string &name, const Point &foot) {
    obj.begin(name + "_post", "iron", {}, 1);
    obj.turnedBody(
        foot,
        {{0.05f, 3.1f}, {0.06f, 1.0f}, {0.11f, 0.9f}, {0.13f, 0.12f}, {0.24f, 0.1f}, {0.26f, 0}},
        12, 1);
    obj.turnedBody(foot, {{0, 3.78f}, {0.05f, 3.72f}, {0.3f, 3.6f}, {0.3f, 3.56f}}, 12, 1);
    obj.turnedBody(foot, {{0.16f, 3.16f}, {0.05f, 3.06f}}, 12, 1);
    obj.begin(name + "_glass", "bulb", {}, 1);
    obj.turnedBody(foot, {{0, 3.58f}, {0.24f, 3.56f}, {0.15f, 3.16f}}, 12, 1);
}

// The picture of a video of 320 by 240 in a texture of 512 by 256.
void writeScreen(ObjWriter &obj, const Frame &where) {
    obj.begin("screen_frame", "timber", where, 1);
    obj.box({0, 1.1f, -0.12f}, {4.5f, 3.45f, 0.2f});
    for (const float x : {-1.7f, 1.7f})
        obj.box({x, -0.5f, -0.12f}, {0.24f, 1.8f, 0.24f});
    obj.begin("screen", "screen", where, 1);
    obj.picture({-2.05f, 1.28f, 0}, {2.05f, 1.28f, 0}, {2.05f, 4.36f, 0}, {-2.05f, 4.36f, 0},
                {0.001f, 0.9355f}, {0.624f, 0.002f});
}

void writeBench(ObjWriter &obj, const std::string &name, const Frame &where) {
    obj.begin(name, "planks", where, 1);
    for (const float z : {-0.15f, 0.08f})
        obj.box({0, 0.45f, z}, {1.8f, 0.06f, 0.2f});
    obj.box({0, 0.7f, -0.3f}, {1.8f, 0.22f, 0.05f});
    for (const float x : {-0.75f, 0.75f}) {
        obj.box({x, 0, -0.05f}, {0.1f, 0.45f, 0.45f});
        obj.box({x, 0.45f, -0.3f}, {0.08f, 0.5f, 0.08f});
    }
}

void writeBarrel(ObjWriter &obj, const std::string &name, const Point &foot) {
    obj.begin(name, "planks", {}, 1);
    obj.turnedBody(foot,
                   {{0, 0.9f},
                    {0.3f, 0.9f},
                    {0.31f, 0.93f},
                    {0.37f, 0.6f},
                    {0.38f, 0.45f},
                    {0.37f, 0.3f},
                    {0.31f, 0}},
                   16, 3);
    obj.begin(name + "_hoops", "iron", {}, 1);
    for (const float y : {0.2f, 0.68f})
        obj.turnedBody(foot,
                       {{0.36f, y + 0.06f}, {0.385f, y + 0.05f}, {0.385f, y}, {0.36f, y - 0.01f}},
                       16, 1);
}

} // namespace village
