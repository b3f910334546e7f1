// Trees and bushes: a trunk, and crowns of balls that noise has made uneven.

#include "examples/village/parts.h"

#include "tools/terrain/noise.h"

#include <cmath>

namespace village {

namespace {

constexpr float pi = 3.1415927f;

void writeCrown(ObjWriter &obj, const Point &middle, float radius, int seed,
                Detail detail = Detail::near) {
    const bool near = detail == Detail::near;
    writeBall(obj, middle, {radius, 0.85f, 0.42f, 2.2f, near ? 12 : 6, near ? 18 : 9, 3}, seed);
}

} // namespace

void writeTree(ObjWriter &obj, const std::string &name, const Point &foot, float height, int seed,
               Detail detail) {
    ravolt::tool::terrain::Dice dice(static_cast<unsigned int>(seed));
    obj.begin(name + "_trunk", "bark", {}, 1);
    const float width = height * 0.045f;
    obj.turnedBody(foot,
                   {{width * 0.45f, height * 0.75f},
                    {width * 0.7f, height * 0.4f},
                    {width, 0.3f},
                    {width * 1.7f, -0.2f},
                    {width * 1.8f, -1}},
                   detail == Detail::near ? 10 : 6, 2);
    obj.begin(name + "_crown", "leaves", {}, 1);
    writeCrown(obj, foot + Point{0, height * 0.74f, 0}, height * 0.27f, seed, detail);
    for (int i = 0; i < 5; ++i) {
        const float angle = 2 * pi * (static_cast<float>(i) + 0.5f * dice.roll()) / 5;
        const float out = height * (0.15f + 0.06f * dice.roll());
        writeCrown(obj,
                   foot + Point{out * std::sin(angle), height * (0.52f + 0.2f * dice.roll()),
                                out * std::cos(angle)},
                   height * (0.15f + 0.05f * dice.roll()), seed + 10 + i, detail);
    }
}

void writeBush(ObjWriter &obj, const std::string &name, const Point &foot, float size, int seed) {
    obj.begin(name, "leaves", {}, 1);
    writeCrown(obj, foot + Point{0, size * 0.35f, 0}, size * 0.6f, seed);
    writeCrown(obj, foot + Point{size * 0.5f, size * 0.25f, 0.2f}, size * 0.42f, seed + 1);
}

} // namespace village
