// The materials of the village: their colours, and which have a texture.

#include "examples/village/parts.h"
#include "examples/village/textures.h"

#include <algorithm>
#include <cmath>

namespace village {

namespace {

struct Material {
    const char *name;
    Color (*texture)(float u, float v); // NULL: the colour alone
    Color color;
    float shine; // 0 for none
    Color emission;
};
constexpr Color white = {1, 1, 1}, none = {0, 0, 0};
const Material all[] = {
    {"gravel", gravelTexture, white, 0, none},
    {"paving", pavingTexture, white, 0, none},
    {"stone", stoneTexture, white, 0, none},
    {"brick", brickTexture, white, 0, none},
    {"tiles", tilesTexture, white, 0, none},
    {"cream", creamTexture, white, 0, none},
    {"ochre", ochreTexture, white, 0, none},
    {"rose", roseTexture, white, 0, none},
    {"pale", paleTexture, white, 0, none},
    {"timber", timberTexture, white, 0, none},
    {"whitewood", whitewoodTexture, white, 0, none},
    {"planks", planksTexture, white, 0, none},
    {"shutter", shutterTexture, white, 0, none},
    {"bark", barkTexture, white, 0, none},
    {"leaves", leavesTexture, white, 0, none},
    {"flowers", flowersTexture, white, 0, none},
    {"awning", awningTexture, white, 0, none},
    {"window", windowTexture, white, 0.5f, none},
    {"rock", rockTexture, white, 0, none},
    {"needles", needlesTexture, white, 0, none},
    {"hull", hullTexture, white, 0.2f, none},
    {"fish", fishTexture, white, 0.4f, none},
    {"grass", nullptr, {0.34f, 0.46f, 0.15f}, 0, none},
    {"dryGrass", nullptr, {0.55f, 0.55f, 0.27f}, 0, none},
    {"seaweed", nullptr, {0.30f, 0.44f, 0.12f}, 0, none},
    {"coralRed", nullptr, {0.95f, 0.32f, 0.25f}, 0, none},
    {"coralYellow", nullptr, {0.95f, 0.72f, 0.25f}, 0, none},
    {"coralViolet", nullptr, {0.72f, 0.38f, 0.85f}, 0, none},
    {"clay", nullptr, {0.74f, 0.44f, 0.28f}, 0, none},
    {"iron", nullptr, {0.12f, 0.13f, 0.14f}, 0.3f, none},
    {"dark", nullptr, {0.05f, 0.08f, 0.1f}, 0.6f, none},
    {"apples", nullptr, {0.72f, 0.14f, 0.1f}, 0.3f, none},
    {"oranges", nullptr, {0.92f, 0.52f, 0.1f}, 0.2f, none},
    {"bulb", nullptr, {0.3f, 0.3f, 0.28f}, 0, {0.9f, 0.86f, 0.74f}},
    {"screen", nullptr, {0, 0, 0}, 0, none},
};

void writeColor(std::string &text, const char *key, const Color &color) {
    text += key;
    for (const float part : color) {
        text += ' ';
        text += std::to_string(part);
    }
    text += "\n";
}

} // namespace

std::string materials() {
    std::string text;
    for (const Material &material : all) {
        text += std::string("newmtl ") + material.name + "\n";
        writeColor(text, "Ka", material.color);
        writeColor(text, "Kd", material.color);
        writeColor(text, "Ks", white * material.shine);
        writeColor(text, "Ke", material.emission);
        text += material.shine > 0 ? "Ns 30\nillum 2\n" : "illum 1\n";
        if (material.texture)
            text += std::string("map_Kd ") + material.name + ".png\n";
    }
    return text;
}

void makeTextures(unsigned int side, const PictureSink &sink) {
    std::vector<unsigned char> pixels(std::size_t(side) * side * 3);
    for (const Material &material : all) {
        if (!material.texture)
            continue;
        for (unsigned int y = 0; y < side; ++y)
            for (unsigned int x = 0; x < side; ++x) {
                const Color color = material.texture(
                    (static_cast<float>(x) + 0.5f) / static_cast<float>(side),
                    1 - (static_cast<float>(y) + 0.5f) / static_cast<float>(side)); // V upwards
                for (std::size_t i = 0; i < 3; ++i)
                    pixels[(std::size_t(y) * side + x) * 3 + i] = static_cast<unsigned char>(
                        std::lround(255 * std::clamp(color[i], 0.0f, 1.0f)));
            }
        sink(material.name, side, pixels);
    }
}

} // namespace village
