// Half-timbered houses: stone base, plaster, beams, windows with shutters, a tiled roof and a
// chimney.

#include "examples/village/parts.h"

namespace village {

namespace {

constexpr float base = 0.6f, beamSize = 0.2f, overhang = 0.5f;

void writeWalls(ObjWriter &obj, const std::string &name, const House &h) {
    obj.begin(name + "_base", "stone", h.where, 2);
    obj.box({0, -1.5f, 0}, {h.width + 0.3f, 1.5f + base, h.depth + 0.3f});
    obj.begin(name + "_walls", h.plaster, h.where, 3);
    const float wall = h.storey * static_cast<float>(h.storeys);
    obj.box({0, base, 0}, {h.width, wall, h.depth});
    const float x = h.width / 2, z = h.depth / 2, top = base + wall;
    const float ridge = top + h.depth * 0.55f;
    obj.triangle({x, top, z}, {x, top, -z}, {x, ridge, 0});
    obj.triangle({-x, top, -z}, {-x, top, z}, {-x, ridge, 0});
}

// Posts and rails on all four sides, and a brace at each corner.
void writeBeams(ObjWriter &obj, const std::string &name, const House &h) {
    obj.begin(name + "_beams", "timber", h.where, 1);
    const float x = h.width / 2, z = h.depth / 2, out = 0.03f;
    const float top = base + h.storey * static_cast<float>(h.storeys);
    for (int level = 0; level <= h.storeys; ++level) {
        const float y = base + h.storey * static_cast<float>(level) + (level ? -0.1f : 0.1f);
        for (const float side : {-1.0f, 1.0f}) {
            obj.beam({-x - 0.1f, y, side * (z + out)}, {x + 0.1f, y, side * (z + out)}, beamSize);
            obj.beam({side * (x + out), y, -z}, {side * (x + out), y, z}, beamSize);
        }
    }
    for (const float sideX : {-1.0f, 1.0f})
        for (const float sideZ : {-1.0f, 1.0f}) {
            const Point corner = {sideX * (x + out), base, sideZ * (z + out)};
            obj.beam(corner, {corner[0], top, corner[2]}, beamSize * 1.2f);
            obj.beam({corner[0] - sideX * 1.0f, top - h.storey, corner[2]},
                     {corner[0], top - 0.5f, corner[2]}, beamSize * 0.7f);
            obj.beam({corner[0], top - h.storey, corner[2] - sideZ * 1.0f},
                     {corner[0], top - 0.5f, corner[2]}, beamSize * 0.7f);
        }
    const float ridge = top + h.depth * 0.55f;
    for (const float side : {-1.0f, 1.0f}) {
        const float plane = side * (x + out);
        obj.beam({plane, top, 0}, {plane, ridge - 0.2f, 0}, beamSize * 0.8f);
        obj.beam({plane, top + 0.9f, -z + 0.8f}, {plane, top + 0.9f, z - 0.8f}, beamSize * 0.8f);
    }
}

// Two slopes with a lower side, so that they have a shadow of their own.
void writeRoof(ObjWriter &obj, const std::string &name, const House &h) {
    obj.begin(name + "_roof", "tiles", h.where, 2.4f);
    const float top = base + h.storey * static_cast<float>(h.storeys), steep = 1.1f;
    const float x = h.width / 2 + overhang, z = h.depth / 2 + overhang;
    const float eaves = top - overhang * steep + 0.12f, ridge = top + h.depth / 2 * steep + 0.12f;
    const Point thick = {0, 0.16f, 0};
    for (const float side : {-1.0f, 1.0f}) {
        const Point a = {-side * x, eaves, side * z}, b = {side * x, eaves, side * z};
        const Point c = {side * x, ridge, 0}, d = {-side * x, ridge, 0};
        obj.quad(a + thick, b + thick, c + thick, d + thick);
        obj.quad(b, a, d, c);
        obj.quad(a, b, b + thick, a + thick);
        obj.quad(b, c, c + thick, b + thick);
        obj.quad(d, a, a + thick, d + thick);
    }
    obj.beam({-x, ridge + 0.14f, 0}, {x, ridge + 0.14f, 0}, 0.28f);
    obj.begin(name + "_chimney", "brick", h.where, 1.2f);
    obj.box({h.width * 0.25f, top, -h.depth * 0.2f}, {0.7f, h.depth * 0.55f + 0.7f, 0.7f});
}

// A window with frame, shutters and a box of flowers in the plane of the frame's +Z.
void writeWindow(ObjWriter &obj, const std::string &name, const Frame &at) {
    obj.begin(name + "_glass", "window", at, 1);
    obj.picture({-0.4f, 0, 0.06f}, {0.4f, 0, 0.06f}, {0.4f, 1.1f, 0.06f}, {-0.4f, 1.1f, 0.06f},
                {0, 0}, {1, 1});
    obj.begin(name + "_frame", "whitewood", at, 1);
    for (const float side : {-0.44f, 0.44f})
        obj.box({side, -0.06f, 0.06f}, {0.1f, 1.22f, 0.12f});
    for (const float y : {-0.08f, 1.06f})
        obj.box({0, y, 0.06f}, {0.98f, 0.1f, 0.14f});
    obj.box({0, 0, 0.06f}, {0.05f, 1.1f, 0.07f});
    obj.box({0, 0.58f, 0.06f}, {0.8f, 0.05f, 0.07f});
    obj.begin(name + "_shutters", "shutter", at, 1);
    for (const float side : {-0.75f, 0.75f})
        obj.box({side, -0.04f, 0.05f}, {0.46f, 1.16f, 0.07f});
    obj.begin(name + "_flowers", "flowers", at, 0.6f);
    obj.box({0, -0.3f, 0.2f}, {0.95f, 0.3f, 0.24f});
}

void writeDoor(ObjWriter &obj, const std::string &name, const Frame &at) {
    obj.begin(name + "_door", "planks", at, 1.1f);
    obj.box({0, base - 0.35f, 0.02f}, {1.1f, 2.25f, 0.14f});
    obj.begin(name + "_doorframe", "timber", at, 1);
    for (const float side : {-0.65f, 0.65f})
        obj.box({side, base - 0.35f, 0.03f}, {0.2f, 2.35f, 0.22f});
    obj.box({0, base + 1.95f, 0.03f}, {1.5f, 0.2f, 0.24f});
    obj.begin(name + "_steps", "stone", at, 1);
    obj.box({0, -0.3f, 0.55f}, {1.7f, 0.5f, 0.8f});
    obj.box({0, -0.3f, 1.0f}, {1.9f, 0.38f, 0.9f});
}

} // namespace

void writeHouse(ObjWriter &obj, const std::string &name, const House &h) {
    writeWalls(obj, name, h);
    writeBeams(obj, name, h);
    writeRoof(obj, name, h);
    const auto side = [&](float x, float y, float z, float degrees) {
        return Frame{h.where({x, y, z}), h.where.degrees + degrees};
    };
    writeDoor(obj, name, side(-h.width * 0.22f, 0, h.depth / 2, 0));
    int number = 0;
    for (int level = 0; level < h.storeys; ++level) {
        const float y = base + h.storey * static_cast<float>(level) + 0.85f;
        for (const float x : {-h.width * 0.22f, h.width * 0.24f})
            if (level || x > 0)
                writeWindow(obj, name + "_w" + std::to_string(number++),
                            side(x, y, h.depth / 2, 0));
        for (const float degrees : {-90.0f, 90.0f})
            writeWindow(obj, name + "_w" + std::to_string(number++),
                        side(degrees / 90 * h.width / 2, y, 0, degrees));
    }
}

} // namespace village
