// What is below the water in front of the shore: seaweed, corals, amphorae, a wreck, and fish.

#include "examples/village/chance.h"
#include "examples/village/island.h"
#include "examples/village/parts.h"

#include <cmath>

namespace village {

namespace {

constexpr float pi = 3.1415927f;
constexpr float middleX = 101, middleZ = 62, around = 15; // metres

Point somewhere(const Island &island, Dice &dice, float radius) {
    const float angle = 2 * pi * dice.roll(), out = radius * std::sqrt(dice.roll());
    return island.onGround(middleX + out * std::sin(angle), middleZ + out * std::cos(angle));
}

// Ribbons that sway.
void writeSeaweed(ObjWriter &obj, const Point &foot, float height, Dice &dice) {
    constexpr int parts = 7;
    for (int ribbon = 0; ribbon < 6; ++ribbon) {
        const float turn = 2 * pi * dice.roll(), bend = between(dice, 0.15f, 0.5f),
                    start = 6 * dice.roll();
        const float own = height * between(dice, 0.6f, 1);
        const Point across = {std::cos(turn), 0, -std::sin(turn)};
        const auto middle = [&](int i) {
            const float up = static_cast<float>(i) / parts,
                        sway = bend * up * std::sin(4 * up + start);
            return foot +
                   Point{std::sin(turn) * (0.2f + sway), own * up - 0.1f,
                         std::cos(turn) * (0.2f + sway)} +
                   across * (0.18f * std::sin(7 * up + start) * up);
        };
        for (int i = 0; i < parts; ++i) {
            const auto half = [&](int k) {
                return across * (0.16f * (1 - std::pow(static_cast<float>(k) / parts, 3.0f)));
            };
            const Point a = middle(i) - half(i), b = middle(i) + half(i);
            const Point c = middle(i + 1) + half(i + 1), d = middle(i + 1) - half(i + 1);
            obj.quad(a, b, c, d);
        }
    }
}

void writeCoral(ObjWriter &obj, const Point &foot, float size, Dice &dice) {
    for (int branch = 0; branch < 9; ++branch) {
        const float angle = 2 * pi * dice.roll(), out = size * 0.5f * dice.roll();
        const float height = size * between(dice, 0.5f, 1),
                    width = size * between(dice, 0.1f, 0.2f);
        obj.turnedBody(foot + Point{out * std::sin(angle), -0.1f, out * std::cos(angle)},
                       {{0, height},
                        {width * 0.7f, height * 0.97f},
                        {width, height * 0.86f},
                        {width * 0.85f, height * 0.7f},
                        {width * 0.6f, 0}},
                       8, 1);
    }
}

void writeAmphora(ObjWriter &obj, const Point &foot, float size) {
    obj.turnedBody(foot,
                   {{0.09f * size, 1.05f * size},
                    {0.14f * size, 1.02f * size},
                    {0.08f * size, 0.92f * size},
                    {0.09f * size, 0.8f * size},
                    {0.27f * size, 0.62f * size},
                    {0.3f * size, 0.48f * size},
                    {0.2f * size, 0.2f * size},
                    {0.07f * size, -0.05f * size}},
                   14, 1);
}

// Its snout is towards -Z.
void writeOneFish(ObjWriter &obj, const Frame &where, float size) {
    constexpr int sections = 8, sides = 10;
    std::vector<std::vector<Point>> rows;
    for (int i = 0; i <= sections; ++i) {
        const float along = static_cast<float>(i) / sections;
        const float body = std::sin(pi * std::pow(along, 0.7f)) * 0.9f + 0.06f;
        std::vector<Point> row;
        for (int k = 0; k < sides; ++k) {
            const float round = 2 * pi * static_cast<float>(k) / sides;
            row.push_back(where(Point{0.14f * body * std::cos(round), 0.3f * body * std::sin(round),
                                      2 * along - 1} *
                                size));
        }
        rows.push_back(row);
    }
    obj.rings(rows, 1);
    const auto fin = [&](const Point &a, const Point &b, const Point &c) {
        obj.triangle(where(a * size), where(b * size), where(c * size));
        obj.triangle(where(b * size), where(a * size), where(c * size));
    };
    fin({0, 0, 0.85f}, {0, 0.36f, 1.4f}, {0, -0.36f, 1.4f});
    fin({0, 0.2f, -0.2f}, {0, 0.2f, 0.4f}, {0, 0.5f, 0.35f});
}

} // namespace

void writeSeabed(ObjWriter &obj, const Island &island) {
    Dice dice(17);
    obj.begin("seaweed", "seaweed");
    for (int i = 0; i < 64; ++i)
        writeSeaweed(obj, somewhere(island, dice, around), between(dice, 1.2f, 3.4f), dice);
    const char *colors[] = {"coralRed", "coralYellow", "coralViolet"};
    for (int color = 0; color < 3; ++color) {
        obj.begin(colors[color], colors[color]);
        for (int i = 0; i < 14; ++i)
            writeCoral(obj, somewhere(island, dice, around * 0.8f), between(dice, 0.4f, 1.1f),
                       dice);
    }
    obj.begin("seabed_rocks", "rock");
    for (int i = 0; i < 26; ++i) {
        const float size = between(dice, 0.3f, 1.7f);
        writeRock(obj, somewhere(island, dice, around) + Point{0, size * 0.1f, 0}, size, 1200 + i);
    }
    obj.begin("amphorae", "clay");
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 3; ++column)
            writeAmphora(obj,
                         island.onGround(middleX - 3.0f + 0.9f * static_cast<float>(column),
                                         middleZ - 4.5f + 1.3f * static_cast<float>(row)),
                         between(dice, 0.9f, 1.3f));
    writeBoat(obj, "wreck", {island.onGround(middleX + 2, middleZ + 1) + Point{0, 0.35f, 0}, 130},
              false);
}

// Each swims where the school turns to.
void writeFish(ObjWriter &obj) {
    constexpr int number = 9;
    Dice dice(5);
    obj.begin("fish", "fish");
    for (int i = 0; i < number; ++i) {
        const float degrees = 360.0f / number * static_cast<float>(i) + 25 * dice.roll();
        const float radius = between(dice, 2.4f, 4.2f), size = between(dice, 0.3f, 0.62f);
        const Frame circle = {{0, 0, 0}, degrees};
        const Point at = circle({radius, between(dice, -0.9f, 1.1f), 0});
        writeOneFish(obj, {at, degrees}, size);
    }
}

} // namespace village
