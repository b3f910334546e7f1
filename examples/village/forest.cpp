// What grows and lies on the slopes of the island: conifers, other trees, rocks and grass.

#include "examples/village/chance.h"
#include "examples/village/island.h"
#include "examples/village/parts.h"

#include <cmath>

namespace village {

namespace {

using ravolt::tool::terrain::fractalNoise;

constexpr float pi = 3.1415927f;
constexpr float villageRadius = 27;                   // metres, without trees
constexpr float viewWidth = 30, viewDegrees = 229;    // from the square to the sea, without trees
constexpr unsigned int attempts = 5200, perMesh = 60; // trees

// Between the square and the sea, where the camera flies.
bool isInView(const Point &square, float x, float z) {
    const float angle = viewDegrees * pi / 180, dx = x - square[0], dz = z - square[2];
    const float along = dx * std::sin(angle) + dz * std::cos(angle);
    const float across = dx * std::cos(angle) - dz * std::sin(angle);
    return along > 0 && std::fabs(across) < viewWidth;
}

// Tiers of hanging branches: rings of points, every second one farther out and lower.
void writeConifer(ObjWriter &obj, const Point &foot, float height, Dice &dice) {
    constexpr int tiers = 5, sides = 10;
    std::vector<std::vector<Point>> rows;
    const float turn = 2 * pi * dice.roll();
    const auto ring = [&](float radius, float y, float hang) {
        std::vector<Point> row;
        for (int i = 0; i < sides; ++i) {
            const float angle = turn + 2 * pi * static_cast<float>(i) / sides;
            const float out = radius * (i % 2 ? 1.15f : 0.8f) * between(dice, 0.9f, 1.1f);
            row.push_back(
                foot + Point{out * std::sin(angle), y - (i % 2 ? hang : 0), out * std::cos(angle)});
        }
        rows.push_back(row);
    };
    ring(0, height, 0);
    for (int tier = 0; tier < tiers; ++tier) {
        const float down = static_cast<float>(tier + 1) / tiers, y = height * (1 - 0.86f * down);
        ring(height * 0.25f * down, y, height * 0.03f);
        if (tier + 1 < tiers)
            ring(height * 0.11f * down, y + height * 0.02f, 0);
    }
    ring(height * 0.03f, height * 0.14f, 0);
    ring(height * 0.03f, -0.5f, 0);
    obj.rings(rows, 3);
}

// Plants where the ground is neither too high nor too steep, away from the village and from the
// view of it, and densely where the noise is high.
template <class Plant>
void scatter(const Island &island, unsigned int count, unsigned int seed, float lowest,
             float highest, float steepest, float density, Plant plant) {
    Dice dice(seed);
    const Point square = island.square();
    for (unsigned int i = 0; i < count; ++i) {
        const float x = between(dice, 20, 492), z = between(dice, 20, 492);
        const float height = island.heightAt(x, z), chance = dice.roll();
        const float wood = fractalNoise(x / 38, z / 38, 3, static_cast<int>(seed));
        if (height < lowest || height > highest || island.slopeAt(x, z) > steepest ||
            chance > density + 1.6f * wood ||
            std::hypot(x - square[0], z - square[2]) < villageRadius || isInView(square, x, z))
            continue;
        plant(Point{x, height, z}, dice);
    }
}

} // namespace

void writeForest(ObjWriter &obj, const Island &island) {
    unsigned int conifers = 0;
    int leafy = 0;
    scatter(island, attempts, 31, 6, 52, 0.85f, 0.12f, [&](const Point &foot, Dice &dice) {
        if (conifers++ % perMesh == 0)
            obj.begin("conifers" + std::to_string(conifers), "needles");
        writeConifer(obj, foot, between(dice, 5, 9.5f), dice);
    });
    scatter(island, attempts / 5, 57, 4.5f, 22, 0.5f, 0.02f, [&](const Point &foot, Dice &dice) {
        const int number = ++leafy;
        writeTree(obj, "leafy" + std::to_string(number), foot, between(dice, 4.5f, 7), 500 + number,
                  Detail::far);
    });
}

void writeRock(ObjWriter &obj, const Point &middle, float size, int seed) {
    writeBall(obj, middle, {size, 0.72f, 0.55f, 1.3f, 8, 12, 2}, seed);
}

void writeRocks(ObjWriter &obj, const Island &island) {
    int number = 0;
    obj.begin("rocks", "rock");
    scatter(island, 900, 71, -11, 34, 0.9f, 0.05f, [&](const Point &foot, Dice &dice) {
        const float size = between(dice, 0.4f, 1.9f);
        writeRock(obj, foot + Point{0, size * 0.15f, 0}, size, 900 + number++);
    });
    // On the beach in front of the village, in groups.
    Dice dice(73);
    for (int group = 0; group < 7; ++group) {
        const Point shore = island.whereHeightIs(0.1f, 196 + 12 * static_cast<float>(group));
        for (int i = 0; i < 5; ++i) {
            const float x = shore[0] + between(dice, -5, 5), z = shore[2] + between(dice, -5, 5);
            const float size = between(dice, 0.25f, i ? 0.7f : 1.3f);
            writeRock(obj, island.onGround(x, z) + Point{0, size * 0.2f, 0}, size, 950 + number++);
        }
    }
}

// Blades that lean outwards, with their fronts upwards.
static void writeTuft(ObjWriter &obj, const Point &foot, float size, Dice &dice) {
    for (int blade = 0; blade < 6; ++blade) {
        const float angle = 2 * pi * dice.roll(), lean = size * between(dice, 0.15f, 0.6f);
        const Point out = {std::sin(angle), 0, std::cos(angle)};
        const Point side = Point{out[2], 0, -out[0]} * (size * 0.07f);
        const Point tip = foot + out * lean + Point{0, size * between(dice, 0.6f, 1), 0};
        obj.triangle(foot + side, foot - side, tip);
    }
}

void writeGrass(ObjWriter &obj, const Island &island) {
    Dice dice(91);
    const Point square = island.square();
    obj.begin("grass", "grass");
    for (int i = 0; i < 1000; ++i) {
        const float across = dice.roll(); // dense at the edge of the square
        const float radius = 16 + (i % 2 ? 1.6f : 12.0f) * across * across,
                    angle = 2 * pi * dice.roll();
        const float x = square[0] + radius * std::sin(angle),
                    z = square[2] + radius * std::cos(angle);
        writeTuft(obj, island.onGround(x, z) + Point{0, -0.03f, 0}, between(dice, 0.25f, 0.6f),
                  dice);
    }
    obj.begin("beachGrass", "dryGrass");
    for (int i = 0; i < 260; ++i) {
        const Point shore =
            island.whereHeightIs(between(dice, 1.6f, 4.2f), 180 + 110 * dice.roll());
        writeTuft(obj, island.onGround(shore[0], shore[2]), between(dice, 0.4f, 1), dice);
    }
}

} // namespace village
