// The programs of full-screen effects, the sky and the plain ones against their formulas in double
// precision.

#include "tests/resources/shaders/programScene.h"

namespace ravolt::test {
namespace {

// The common vertex stage: positions, texture coordinates and the colour pass through.
VertexResult through(const ProgramScene &scene, const Vertex &vertex) {
    const Vec place = scene.modelview * vertex.position;
    return {scene.projection * place,
            {{"texCoord", vertex.texCoord[0]}, {"color", vertex.color}, {"clipVertex", place}}};
}

// Texture coordinates over the whole picture and beyond, colours that differ, and a picture of
// 16 by 8 on each of the first `units` units.
ProgramScene pictureScene(int units) {
    ProgramScene scene;
    scene.modelview = turn(20, {0, 0, 1, 0});
    const Vec texCoords[] = {{-0.05, 0.03, 0, 1}, {1.1, 0.07, 0, 1}, {0.35, 1.2, 0, 1}};
    const Vec colors[] = {{0.25, 0.5, 1, 0.3}, {0.75, 0.1, 0.4, 0.9}, {0.6, 0.8, 0.2, 0.6}};
    for (int i = 0; i < 3; ++i) {
        scene.corners[i].texCoord[0] = texCoords[i];
        scene.corners[i].color = colors[i];
    }
    for (int unit = 0; unit < units; ++unit)
        scene.images[unit] = Image::random(16, 8, 100u + static_cast<unsigned int>(unit), 0, 2.5);
    return scene;
}

Vec sampled(const ProgramScene &scene, const Varyings &in, Trace &trace, int unit, double right = 0,
            double up = 0) {
    const Vec coord = in.at("texCoord");
    return scene.sample(trace, unit, coord.x + right, coord.y + up);
}

double brightness(Vec texel) { return 0.30 * texel.x + 0.59 * texel.y + 0.11 * texel.z; }

void addTwoBones(ProgramScene &scene) {
    scene.boneQuat = {{0, 0, std::sin(0.2), std::cos(0.2)}, {std::sin(0.3), 0, 0, std::cos(0.3)}};
    scene.boneTrans = {{0.3, 0.1, -0.2, 0}, {-0.1, 0.2, 0.4, 0}};
    for (int i = 0; i < 3; ++i) {
        scene.corners[i].boneIndex = {0, 1, 1, 0};
        scene.corners[i].boneWeight = {0.25 * i, 0.5, 0.25, 0.25 - 0.25 * i};
    }
}

VertexResult skinnedThrough(const ProgramScene &scene, const Vertex &vertex) {
    Vertex skinned = vertex;
    skinned.position = scene.skinning(vertex) * vertex.position;
    return through(scene, skinned);
}

// The same with the position in eye space, before skinning.
VertexReference withDepth(const VertexReference &stage) {
    return [stage](const ProgramScene &scene, const Vertex &vertex) {
        VertexResult result = stage(scene, vertex);
        result.varyings["pos"] = scene.modelview * vertex.position;
        return result;
    };
}

} // namespace

class ScreenProgram : public ProgramTest {
  protected:
    static Comparison expectPair(const std::string &vertexLabel, const std::string &pixelLabel,
                                 ProgramScene scene, const VertexReference &vertex,
                                 const PixelReference &pixel, bool cut = false) {
        place(scene);
        if (cut)
            compareCut(vertexLabel, pixelLabel, scene, vertex, pixel);
        return compare(vertexLabel, pixelLabel, scene, vertex, pixel);
    }

    static Comparison expectPicture(const std::string &name, const ProgramScene &scene,
                                    const PixelReference &pixel) {
        return expectPair(name + "VST.glsl", name + "PST.glsl", scene, through, pixel);
    }
};

TEST_F(ScreenProgram, BrightPassPassesValuesAboveOneOnly) {
    const Comparison result = expectPicture(
        "bloomBright", pictureScene(1), [](const auto &scene, const auto &in, Trace &trace) {
            const Vec texel = sampled(scene, in, trace, 0);
            const double lum = brightness(texel);
            return trace.above(lum, 1, "bright") ? withW(texel * lum, 1) : Vec{0, 0, 0, 1};
        });
    EXPECT_EQ(result.visited, (std::set<std::string>{"bright", "not bright"}));
}

TEST_F(ScreenProgram, ToneMappingFollowsLuminanceAndExposure) {
    ProgramScene scene = pictureScene(1);
    for (const double exposure : {0.5, 1.75}) {
        scene.floats = {{"maxLuminance", 0.8}, {"exposure", exposure}};
        expectPicture("bloomToneMapping", scene, [](const auto &s, const auto &in, Trace &trace) {
            const Vec texel = sampled(s, in, trace, 0);
            const double e = s.number("exposure");
            const double delta = e / s.number("maxLuminance") * brightness(texel);
            const double final = delta * (1 + delta / (e * e)) / (1 + delta);
            return withW(texel * final, 1);
        });
    }
}

TEST_F(ScreenProgram, CombineAddsFourPicturesAndThatOfDepthOfFieldIsTheirMean) {
    for (const auto &[name, weight] : {std::pair{"bloomCombine", 1.0}, {"dofCombine", 0.25}})
        expectPicture(name, pictureScene(4),
                      [weight = weight](const auto &scene, const auto &in, Trace &trace) {
                          Vec sum;
                          for (int unit = 0; unit < 4; ++unit)
                              sum += sampled(scene, in, trace, unit) * weight;
                          return withW(sum, 1);
                      });
}

TEST_F(ScreenProgram, ForceAlphaTakesTheAlphaOfTheColour) {
    expectPicture("bloomForceAlpha", pictureScene(1),
                  [](const auto &scene, const auto &in, Trace &trace) {
                      return withW(sampled(scene, in, trace, 0), in.at("color").w);
                  });
}

// On purpose the names are the reverse of the directions.
TEST_F(ScreenProgram, VerticalBlurStepsAlongXAndHorizontalBlurAlongY) {
    for (const bool alongX : {true, false}) {
        ProgramScene scene = pictureScene(1);
        const double size = alongX ? 13 : 11;
        scene.floats = {{alongX ? "width" : "height", size}};
        expectPicture(alongX ? "bloomVert" : "bloomHor", scene,
                      [=](const auto &s, const auto &in, Trace &trace) {
                          Vec sum;
                          for (int step = -2; step <= 2; ++step)
                              sum += 0.2 * sampled(s, in, trace, 0, alongX ? step / size : 0,
                                                   alongX ? 0 : step / size);
                          return sum;
                      });
    }
}

TEST_F(ScreenProgram, GaussianFiltersTheLeftHalfBesideARedLine) {
    ProgramScene scene = pictureScene(0);
    scene.images[0] = Image::random(256, 128, 5, 0, 2);
    // The line is so thin that a picture of its own shows it.
    for (const double left : {-0.05, 0.49}) {
        scene.corners[0].texCoord[0].x = left;
        scene.corners[1].texCoord[0].x = left < 0 ? 1.1 : 0.51;
        scene.corners[2].texCoord[0].x = left < 0 ? 0.35 : 0.5;
        expectPair("gaussianVS.glsl", "gaussianPS.glsl", scene, through,
                   [](const auto &s, const auto &in, Trace &trace) {
                       const double across = in.at("texCoord").x;
                       if (trace.above(across, 0.505, "right"))
                           return sampled(s, in, trace, 0);
                       if (!trace.above(0.495, across, "left"))
                           return Vec{1, 0, 0, 1};
                       const double weights[] = {1, 2, 1};
                       Vec sum;
                       for (int row = 0; row < 3; ++row)
                           for (int column = 0; column < 3; ++column)
                               sum += sampled(s, in, trace, 0, (column - 1) / 512.0,
                                              (row - 1) / 512.0) *
                                      (weights[row] * weights[column] / 16);
                       return sum;
                   });
    }
}

TEST_F(ScreenProgram, DepthOfFieldMixesByTheAlphaOfTheBlurredImage) {
    ProgramScene scene = pictureScene(2);
    scene.floats = {{"focus", 0.6}, {"range", 1.5}};
    const Comparison result =
        expectPair("dofVS.glsl", "dofPS.glsl", scene, through,
                   [](const auto &s, const auto &in, Trace &trace) {
                       const Vec sharp = sampled(s, in, trace, 0);
                       const Vec blurred = sampled(s, in, trace, 1);
                       double dist = std::abs(blurred.w - s.number("focus")) * s.number("range");
                       if (trace.above(dist, 1, "beyond the range"))
                           dist = 1;
                       return withW((1 - dist) * sharp + dist * blurred, 1);
                   });
    EXPECT_EQ(result.visited, (std::set<std::string>{"beyond the range", "not beyond the range"}));
}

TEST_F(ScreenProgram, SkyIsBrightenedByAFifthOfTheAmbientLight) {
    ProgramScene scene = pictureScene(1);
    scene.lightModelAmbient = {0.5, 0.25, 1, 0.7};
    expectPair(
        "skydomeVS.glsl", "skydomeFS.glsl", scene, through,
        [](const auto &s, const auto &in, Trace &trace) {
            return withW(sampled(s, in, trace, 0) + s.lightModelAmbient * 0.2, 1);
        },
        true);
}

TEST_F(ScreenProgram, PassthroughWritesTheColour) {
    const auto color = [](const auto &, const auto &in, Trace &) { return in.at("color"); };
    ProgramScene scene = pictureScene(0);
    expectPair("passthroughVS.glsl", "passthroughPS.glsl", scene, through, color);
    addTwoBones(scene);
    expectPair("passthroughVSA.glsl", "passthroughPSA.glsl", scene, skinnedThrough, color);
}

TEST_F(ScreenProgram, DepthCodingPutsTheUnskinnedDepthIntoAlpha) {
    ProgramScene scene = pictureScene(0);
    scene.modelview = translation(0, 0.5, -1) * turn(30, {1, 0, 0, 0});
    scene.floats = {{"near", 1.5}, {"far", 4}};
    const auto depth = [](const auto &s, const auto &in, Trace &) {
        return Vec{0, 0, 0, std::abs((in.at("pos").z - s.number("near")) / s.number("far"))};
    };
    expectPair("passthroughZPassVS.glsl", "passthroughZPassPS.glsl", scene, withDepth(through),
               depth, true);
    addTwoBones(scene);
    expectPair("passthroughZPassVSA.glsl", "passthroughZPassPSA.glsl", scene,
               withDepth(skinnedThrough), depth, true);
}

} // namespace ravolt::test
