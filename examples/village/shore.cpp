// The jetty with its boats, and the path to it.

#include "examples/village/island.h"
#include "examples/village/parts.h"

#include <cmath>

namespace village {

namespace {

constexpr float jettyDegrees = 237, deck = 0.85f; // from the square; its height over the water
constexpr float pi = 3.1415927f;

// Both sides of a quad.
void sheet(ObjWriter &obj, const Point &a, const Point &b, const Point &c, const Point &d) {
    obj.quad(a, b, c, d);
    obj.quad(b, a, d, c);
}

// A point of the hull: `along` from stern, 0, to bow, 1; `round` from one edge, -1, by the keel to
// the other edge, 1.
Point hullAt(float along, float round) {
    const float width = 0.75f * std::sqrt(std::fmax(1 - std::pow(along, 2.6f), 0.0f));
    const float depth = 0.62f * std::sqrt(std::fmax(1 - std::pow(along, 5.0f), 0.02f));
    const float angle = round * pi / 2, rise = 0.42f + 0.28f * along * along;
    return {width * std::sin(angle), rise - depth * std::pow(std::cos(angle), 0.7f),
            (along - 0.5f) * 4.4f};
}

void writeHull(ObjWriter &obj, const std::string &name, const Frame &where) {
    constexpr int lengths = 9, widths = 8;
    const auto at = [](int i, int j) {
        return hullAt(static_cast<float>(i) / lengths, 2.0f * static_cast<float>(j) / widths - 1);
    };
    obj.begin(name + "_hull", "hull", where, 1.2f);
    for (int i = 0; i < lengths; ++i)
        for (int j = 0; j < widths; ++j)
            sheet(obj, at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j));
    sheet(obj, at(0, 0), at(0, widths), at(0, widths / 2), at(0, widths / 2));
    obj.begin(name + "_wood", "timber", where, 1);
    for (int i = 0; i < lengths; ++i)
        for (const int edge : {0, widths})
            obj.beam(at(i, edge), at(i + 1, edge), 0.09f);
    for (const float z : {-1.2f, 0.1f, 1.1f})
        obj.box({0, 0.2f, z}, {1.1f, 0.06f, 0.28f});
}

// A point of the sail: `up` from the boom, 0, to the top, 1; `out` from the mast, 0, to the
// edge, 1.
Point sailAt(float up, float out) {
    const float curved = 0.35f * std::sin(pi * out) * (1 - up); // by the wind
    return {curved, 1.15f + 4.0f * up, 0.3f - 2.35f * (1 - up) * out};
}

void writeSail(ObjWriter &obj, const std::string &name, const Frame &where) {
    obj.begin(name + "_mast", "timber", where, 1);
    obj.turnedBody({0, 0, 0.4f}, {{0.03f, 5.4f}, {0.07f, 0}}, 8, 1);
    obj.beam({0, 1.0f, 0.4f}, {0, 1.05f, -2.1f}, 0.08f);
    obj.begin(name + "_sail", "awning", where, 1);
    constexpr int rows = 6, columns = 4;
    for (int i = 0; i < rows; ++i)
        for (int k = 0; k < columns; ++k) {
            const float low = static_cast<float>(i) / rows, high = low + 1.0f / rows;
            const float near = static_cast<float>(k) / columns, far = near + 1.0f / columns;
            const Point a = sailAt(low, far), b = sailAt(low, near), c = sailAt(high, near),
                        d = sailAt(high, far);
            obj.picture(a, b, c, d, {low, near}, {high, far});
            obj.picture(b, a, d, c, {low, far}, {high, near});
        }
}

void writeJetty(ObjWriter &obj, const Frame &jetty) {
    constexpr float width = 2, reach = 17, lowest = -6;
    constexpr int posts = 6;
    obj.begin("jetty_deck", "planks", jetty, 0.9f);
    for (int i = 0; i < 54; ++i)
        obj.box({i % 3 ? 0.03f : -0.02f, deck - 0.02f, -1 + 0.333f * static_cast<float>(i)},
                {width, 0.07f, 0.3f});
    obj.begin("jetty_posts", "timber", jetty, 1);
    for (const float side : {-0.92f, 0.92f}) {
        obj.beam({side * 0.8f, deck - 0.1f, -1}, {side * 0.8f, deck - 0.1f, reach}, 0.16f);
        for (int i = 0; i < posts; ++i)
            obj.box({side, lowest, 1 + 3.1f * static_cast<float>(i)},
                    {0.2f, deck - lowest + (i == posts - 1 ? 0.9f : 0.5f), 0.2f});
    }
    for (const float x : {-0.55f, 0.5f})
        writeBarrel(obj, "jetty_barrel" + std::to_string(x > 0),
                    jetty({x, deck + 0.05f, 14.5f - x}));
}

// From the edge of the square to the jetty.
void writePath(ObjWriter &obj, const Island &island, float length) {
    constexpr int steps = 16;
    constexpr float from = 13.5f, half = 0.95f, above = 0.07f; // metres
    const Frame square = {island.square(), jettyDegrees};
    const auto at = [&](int i, float side) {
        const float share = static_cast<float>(i) / steps;
        const Point flat =
            square({side + 1.1f * std::sin(6 * share), 0, from + (length - from) * share});
        return island.onGround(flat[0], flat[2]) + Point{0, above, 0};
    };
    obj.begin("path", "paving");
    for (int i = 0; i < steps; ++i) {
        const Point corners[] = {at(i, half), at(i, -half), at(i + 1, -half), at(i + 1, half)};
        obj.ground(corners, 3);
    }
}

} // namespace

void writeBoat(ObjWriter &obj, const std::string &name, const Frame &where, bool sail) {
    writeHull(obj, name, where);
    if (sail)
        writeSail(obj, name, where);
}

void writeShore(ObjWriter &obj, const Island &island) {
    const Point start = island.whereHeightIs(deck, jettyDegrees), square = island.square();
    const Frame jetty = {{start[0], 0, start[2]}, jettyDegrees};
    writeJetty(obj, jetty);
    writePath(obj, island, std::hypot(start[0] - square[0], start[2] - square[2]) - 0.5f);
    writeBoat(obj, "boat1", {jetty({4.6f, 0.26f, 14}), jettyDegrees + 74}, true);
    writeBoat(obj, "boat2", {island.whereHeightIs(0.75f, 222), 262}, false);
}

} // namespace village
