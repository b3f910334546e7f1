#pragma once

// The values that the table passes to a parameter, by its type: first an ordinary one, then those
// of a careless caller. Every pointer is NULL, or points to something alive that is large enough.

#include "ravolt.h"
#include "tests/faults/world.h"

#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

namespace ravolt::test {

// Where functions write to.
struct Buffers {
    char text[32768] = {};
    int integer = 1;
    unsigned int number = 1;
    float values[1024] = {};
    RVELEMENT element;
    zlfPARSER closed, opened;
    RVSETTINGS settings;
    Z3MVECTOR4D planes[RVTERRAIN_CHUNK::frustumPlaneCount];
};

inline const std::array<float, 9> &hostileFloats() {
    static const std::array<float, 9> values = {
        1.0f, 0.0f, -1.0f, std::nanf(""), HUGE_VALF, -HUGE_VALF, FLT_MAX, -FLT_MAX, FLT_MIN / 2};
    return values;
}

// NULL, empty, of several lengths, conversions of printf, tags, control characters, paths.
inline std::vector<const char *> hostileTexts() {
    static const std::string full(255, 'n'), longer(256, 'n'), longest(5000, 'n');
    return {"name",
            nullptr,
            "",
            full.c_str(),
            longer.c_str(),
            longest.c_str(),
            "%s%n%*d%",
            "%%",
            "^c9zzz^x-99999999999^y",
            "\x01\n\t\x7f\xff",
            "../../etc/passwd",
            "/",
            "\\",
            "a.xml"};
}

template <class Vector> std::vector<Vector> hostileVectors() {
    std::vector<Vector> vectors;
    for (const float value : hostileFloats()) {
        Vector vector;
        for (std::size_t i = 0; i < sizeof(Vector) / sizeof(float); ++i)
            (&vector.x)[i] = value;
        vectors.push_back(vector);
    }
    return vectors;
}

// The object of a class that has content; NULL for none.
template <class T> T *preparedObject(const World &world) {
    if constexpr (std::is_same_v<T, RVNODE>)
        return world.root;
    else if constexpr (std::is_same_v<T, RVCAMERA>)
        return world.camera;
    else if constexpr (std::is_same_v<T, RVLIGHT>)
        return world.light;
    else if constexpr (std::is_same_v<T, RVMESH>)
        return world.mesh;
    else if constexpr (std::is_same_v<T, RVHELPER>)
        return world.helper;
    else if constexpr (std::is_same_v<T, RVEMITTER>)
        return world.emitter;
    else if constexpr (std::is_same_v<T, RVSKYDOME>)
        return world.dome;
    else if constexpr (std::is_same_v<T, RVWATER>)
        return world.water;
    else if constexpr (std::is_same_v<T, RVTERRAIN>)
        return world.terrain;
    else if constexpr (std::is_same_v<T, RVBOX>)
        return world.box;
    else if constexpr (std::is_same_v<T, RVLABEL>)
        return world.label;
    else if constexpr (std::is_same_v<T, RVBUTTON>)
        return world.button;
    else if constexpr (std::is_same_v<T, RVTEXTFIELD>)
        return world.field;
    else if constexpr (std::is_same_v<T, RVHSCROLLBAR> || std::is_same_v<T, RVSCROLLBAR>)
        return world.horizontal;
    else if constexpr (std::is_same_v<T, RVVSCROLLBAR>)
        return world.vertical;
    else if constexpr (std::is_same_v<T, RVWINDOW>)
        return world.window;
    else if constexpr (std::is_same_v<T, RVTEXTURE>)
        return world.texture;
    else if constexpr (std::is_same_v<T, RVMATERIAL>)
        return world.material;
    else if constexpr (std::is_same_v<T, RVSHADER>)
        return world.shader;
    else if constexpr (std::is_same_v<T, RVFONT>)
        return world.font;
    else if constexpr (std::is_same_v<T, RVFBO>)
        return world.target;
    else if constexpr (std::is_same_v<T, RVANIM>)
        return world.clip;
    else if constexpr (std::is_same_v<T, RVVIDEO>)
        return world.video;
    else if constexpr (std::is_same_v<T, RVTERRAIN_CHUNK>)
        return const_cast<RVTERRAIN_CHUNK *>(world.terrain->getChunk(0));
    else
        return nullptr;
}

// The classes of functions whose `void *` points to a number, and one for all others, so that the
// compiler makes few functions.
template <class Owner>
using OwnerOf =
    std::conditional_t<std::is_same_v<Owner, RVTEXTURE> || std::is_same_v<Owner, RVMATERIAL>, Owner,
                       RVNODE>;

// `Owner` is the class of the function: what a `void *` means depends on it.
template <class Owner, class T> std::vector<T> hostileValues(const World &world, Buffers &buffers) {
    if constexpr (std::is_same_v<T, bool>)
        return {true, false};
    else if constexpr (std::is_same_v<T, char>)
        return {'a', '\0', '\b', '\n', ' ', '\x7f', '\xff', '\x80'};
    else if constexpr (std::is_floating_point_v<T>)
        return {hostileFloats().begin(), hostileFloats().end()};
    else if constexpr (std::is_enum_v<T>)
        return {static_cast<T>(1),  static_cast<T>(0),       static_cast<T>(2),
                static_cast<T>(3),  static_cast<T>(18),      static_cast<T>(19),
                static_cast<T>(-1), static_cast<T>(INT_MAX), static_cast<T>(INT_MIN)};
    else if constexpr (std::is_integral_v<T>) {
        std::vector<T> values;
        for (const long long value :
             {1LL, 0LL, -1LL, 2LL, 3LL, 15LL, 16LL, 17LL, 100LL, 255LL, 4097LL, 65536LL,
              static_cast<long long>(INT_MAX), static_cast<long long>(INT_MIN)})
            values.push_back(static_cast<T>(value));
        return values;
    } else if constexpr (std::is_same_v<T, const char *>)
        return hostileTexts();
    else if constexpr (std::is_same_v<T, char *>)
        return {buffers.text, nullptr};
    else if constexpr (std::is_same_v<T, int *>)
        return {&buffers.integer, nullptr};
    else if constexpr (std::is_same_v<T, unsigned int *>)
        return {&buffers.number, nullptr};
    else if constexpr (std::is_same_v<T, float *> || std::is_same_v<T, const float *>)
        return {buffers.values, nullptr};
    else if constexpr (std::is_same_v<T, long *>)
        return {nullptr};
    else if constexpr (std::is_same_v<T, RVSETTINGS *>)
        return {&buffers.settings, nullptr};
    else if constexpr (std::is_same_v<T, Z3MVECTOR4D *>)
        return {buffers.planes, nullptr};
    else if constexpr (std::is_same_v<T, RVTERRAIN_CHUNK *>)
        return {preparedObject<RVTERRAIN_CHUNK>(world), nullptr};
    else if constexpr (std::is_same_v<T, zlfPARSER *>)
        return {&buffers.opened, nullptr, &buffers.closed};
    else if constexpr (std::is_same_v<T, RVELEMENT *>)
        return {&buffers.element, nullptr};
    else if constexpr (std::is_same_v<T, void *>) {
        if constexpr (std::is_same_v<Owner, RVTEXTURE>)
            return {nullptr, &buffers.number};
        else if constexpr (std::is_same_v<Owner, RVMATERIAL>)
            return {nullptr, &buffers.integer};
        else
            return {&buffers.element, nullptr};
    } else if constexpr (std::is_same_v<T, RVNODE *>)
        return {world.root, nullptr, world.child, world.mesh, world.light, world.window};
    else if constexpr (std::is_same_v<T, RVCAMERA *>)
        return {world.camera, nullptr};
    else if constexpr (std::is_same_v<T, RVMESH *> || std::is_same_v<T, const RVMESH *>)
        return {world.mesh, nullptr};
    else if constexpr (std::is_same_v<T, RVTEXTURE *>)
        return {world.texture, nullptr};
    else if constexpr (std::is_same_v<T, RVMATERIAL *> || std::is_same_v<T, const RVMATERIAL *>)
        return {world.material, nullptr};
    else if constexpr (std::is_same_v<T, RVSHADER *>)
        return {world.shader, nullptr};
    else if constexpr (std::is_same_v<T, RVFONT *>)
        return {world.font, nullptr};
    else if constexpr (std::is_same_v<T, RVFBO *>)
        return {world.target, nullptr};
    else if constexpr (std::is_same_v<T, RVBOXCOORD>)
        return {RVBOXCOORD()};
    else if constexpr (std::is_same_v<T, Z3MMATRIX>) {
        std::vector<Z3MMATRIX> matrices(1);
        for (const float value : hostileFloats()) {
            matrices.emplace_back();
            for (float &each : matrices.back().e)
                each = value;
        }
        return matrices;
    } else if constexpr (std::is_same_v<T, Z3MPLANE>)
        return {Z3MPLANE()};
    else
        return hostileVectors<T>();
}

} // namespace ravolt::test
