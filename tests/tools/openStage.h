#pragma once

// A stage in a window, and what its pictures show.

#include "tests/tools/support.h"
#include "tools/stage/engine.h"
#include "tools/stage/picture.h"
#include "tools/stage/stage.h"

#include <cmath>
#include <ravolt.h>

namespace tool_test {

// The engine with a scene on its stage, seen from the front.
struct OpenStage {
    explicit OpenStage(WindowSize size = {200, 150}, const Drawing &drawing = {},
                       bool resizable = false)
        : picture(size), engine(size, "test", resizable, "ravolt_log.txt", drawing),
          root(engine.load("scene.rve")), stage(root) {
        stage.setYaw(0);
        stage.setPitch(0);
    }

    Picture shoot() {
        const Picture shown = ravolt::tool::shoot(stage, picture);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        return shown;
    }
    Picture shootFrom(double yaw, double pitch = 0) {
        stage.setYaw(yaw);
        stage.setPitch(pitch);
        return shoot();
    }

    WindowSize picture;
    Engine engine;
    RVNODE *root;
    Stage stage;
};

inline void writeRve(const std::vector<RveNode> &children, const std::string &material = "") {
    ravolt::RveScene scene;
    scene.root = meshNode("[root]");
    scene.root.children = children;
    if (!material.empty()) {
        scene.materials.emplace_back();
        scene.materials[0].name = material;
        scene.materials[0].diffuse = {1, 1, 1, 1};
    }
    ASSERT_EQ(ravolt::writeRve("scene.rve", scene), "");
}

// R, G and B; x and y are from 0 to 1.
inline std::array<int, 3> colorAt(const Picture &picture, double x, double y) {
    const auto column = static_cast<std::size_t>(x * picture.getWidth());
    const auto row = static_cast<std::size_t>(y * picture.getHeight());
    const unsigned char *p =
        &picture.getPixels()[3 * (row * static_cast<std::size_t>(picture.getWidth()) + column)];
    return {p[0], p[1], p[2]};
}

inline double brightnessAt(const Picture &picture, double x, double y) {
    const auto [r, g, b] = colorAt(picture, x, y);
    return (r + g + b) / 3.0;
}

// Those of the pixels that are not the background, from dark to bright.
inline std::vector<int> brightnesses(const Picture &picture) {
    std::vector<int> all;
    for (std::size_t i = 0; i < picture.getPixels().size(); i += 3) {
        const unsigned char *p = &picture.getPixels()[i];
        if (!Stage::isBackground(p[0], p[1], p[2]))
            all.push_back((p[0] + p[1] + p[2]) / 3);
    }
    std::sort(all.begin(), all.end());
    return all;
}

// How much of the picture is not the background, from 0 to 1.
inline double coverage(const Picture &picture) {
    return 3.0 * static_cast<double>(brightnesses(picture).size()) /
           static_cast<double>(picture.getPixels().size());
}

// In how many of the numbers two pictures of one size differ by more than `step`.
inline std::size_t differences(const Picture &a, const Picture &b, int step = 0) {
    EXPECT_EQ(a.getWidth(), b.getWidth());
    if (a.getPixels().size() != b.getPixels().size())
        throw Failure("pictures of different sizes");
    std::size_t number = 0;
    for (std::size_t i = 0; i < a.getPixels().size(); ++i)
        number += std::abs(a.getPixels()[i] - b.getPixels()[i]) > step;
    return number;
}

} // namespace tool_test
