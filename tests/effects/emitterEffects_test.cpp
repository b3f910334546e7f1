// Emitters in frames with effects, on both paths: how often they are drawn, and so advance, and
// what they are in the shadow map, in the depths of depth of field and under bloom.

#include "tests/effects/stillParticles.h"
#include "tests/engine/effectsTest.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"

#include "ravolt/RVMESH.h"
#include "ravolt/RVSHADER.h"

#include <cmath>
#include <set>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Pixel black{0, 0, 0, 255};

class EmitterEffects : public EffectsTest, public testing::WithParamInterface<bool> {
  protected:
    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        ASSERT_TRUE(RVSHADER::useEmitter() && RVSHADER::useBloom() && RVSHADER::useDOF() &&
                    RVSHADER::useShadows());
        if (!program)
            RVSHADER::emitter->forceDeactivation();
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
        advanceBy(1e-4f); // the energy stays what it is
        root = new RVNODE;
        emitter = new RVEMITTER;
        emitter->setColorStart(Z3MVECTOR3D(1, 1, 1));
        emitter->setColorEnd(Z3MVECTOR3D(1, 1, 1));
        emitter->setMaximumEnergy(1); // born again, they are not seen
        emitter->setTexture(squareTexture("white_d.tga", 1, {255, 255, 255}));
        emitter->link(root);
    }

    void TearDown() override {
        RAVOLT::setFrameDuration(0);
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        EffectsTest::TearDown();
    }

    // Seconds of a draw, of which there may be several in a frame.
    static void advanceBy(float seconds) { RAVOLT::setFrameDuration(seconds); }

    void place(const std::vector<Still> &particles) {
        ravolt::test::place(*emitter, particles, program);
    }

    // At the centre of the view, 5 units away. As many as there are layers.
    void placeInTheMiddle(float energy, int layers = 1) {
        emitter->setPosition(0, 0, -5);
        place(std::vector<Still>(static_cast<std::size_t>(layers), {{0, 0, 0}, 1, energy, 0}));
    }

    // Before the camera, looking along -z, from z = 5.
    void addCaster() { newCaster({0, 0, 5}, {0, 0, -1})->link(root); }

    Picture frame() {
        RAVOLT::swap();
        drawFrame(camera, root);
        return readFrame();
    }

    Pixel middle() { return frame().at(width / 2, height / 2); }

    // White over black with this alpha, so often.
    static int brightness(double alpha, int draws) {
        return static_cast<int>(255 * (1 - std::pow(1 - alpha, draws)));
    }
    static Pixel grey(int value) {
        const auto byte = static_cast<unsigned char>(value);
        return {byte, byte, byte};
    }

    const bool program = GetParam();
    RVNODE *root = nullptr;
    RVEMITTER *emitter = nullptr;
};

TEST_P(EmitterEffects, AdvancesAsOftenAsTheListIsDrawn) {
    const struct {
        const char *effects; // b: bloom, d: depth of field, s: shadows, k: the map is kept
        int draws;
    } rows[] = {{"", 1},   {"b", 1},  {"d", 2},  {"s", 3},
                {"sk", 2}, {"bs", 3}, {"ds", 4}, {"bdsk", 3}};
    addCaster();
    constexpr float seconds = 0.125f;
    advanceBy(seconds);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.effects);
        const std::set<char> effects(row.effects, row.effects + std::string(row.effects).size());
        resetEffects();
        if (effects.count('b'))
            RAVOLT::bloomingOn();
        if (effects.count('d'))
            RAVOLT::DOFOn();
        if (effects.count('s'))
            RAVOLT::shadowingOn();
        if (effects.count('k'))
            RAVOLT::skipShadowsGeneration();
        placeInTheMiddle(0.9f);
        RVPARTICLE &p = particleOf(*emitter, 0);
        p.position.reset();
        p.velocity.set(0, 1, 0);
        p.energy = p.startEnergy = 2;
        emitter->setGravity(Z3MVECTOR3D(1, 0, 0));
        const Calls calls = callsOf([&] { drawFrame(camera, root); });
        const auto draws = static_cast<float>(row.draws);
        EXPECT_EQ(calls.count(Call{"glDrawArrays", GL_QUADS, 0, 4}), std::size_t(row.draws));
        EXPECT_FLOAT_EQ(p.position.y, draws * seconds);
        EXPECT_FLOAT_EQ(p.position.x, draws * (draws + 1) / 2 * seconds * seconds);
        EXPECT_FLOAT_EQ(p.energy, 2 - draws * seconds * 0.5f);
    }
}

// --- shadows

TEST_P(EmitterEffects, ShadowMapHasTheDepthsOfParticlesThatAreSeen) {
    addCaster();
    RAVOLT::shadowingOn();
    const double n = 1, f = 40, z = 10; // of the particle, before the caster
    const double window = 0.5 + 0.5 * ((f + n) / (f - n) - 2 * f * n / ((f - n) * z));
    const double half = 32 / (z * std::tan(40 * 3.14159265 / 180)); // texels
    const struct {
        float energy;
        double center;
        int texels;
    } rows[] = {{0.9f, window, static_cast<int>(4 * half * half)}, {0.15f, 1, 0}};
    for (const auto &row : rows) {
        placeInTheMiddle(row.energy);
        frame();
        const std::vector<float> depths = texelsOf(2, GL_DEPTH_COMPONENT);
        EXPECT_NEAR(depths[32 * 64 + 32], row.center, 1e-4);
        int texels = 0;
        for (const float depth : depths) {
            EXPECT_TRUE(depth == 1 || std::fabs(depth - row.center) < 1e-4) << depth;
            texels += depth < 1;
        }
        EXPECT_NEAR(texels, row.texels, 4 * half);
    }
}

// The shadowed pass and the main pass.
TEST_P(EmitterEffects, ParticlesAreBlendedTwiceWithShadowsAndOnceWithout) {
    addCaster();
    for (const bool shadows : {false, true}) {
        if (shadows)
            RAVOLT::shadowingOn();
        placeInTheMiddle(0.5f);
        EXPECT_PIXEL(middle(), grey(brightness(0.5, shadows ? 2 : 1)), 2);
    }
}

// A floor under a light from above, and a particle beside the picture's middle between them.
TEST_P(EmitterEffects, ParticlesDarkenTheFloor) {
    RVNODE *scene =
        loadScene({{coloured("paint", {0.8f, 0.8f, 0.8f, 1})},
                   rootOver({placed(squareMesh("floor", "paint", 20), {0, 0, 0}, {-90, 0, 0})})});
    scene->link(root);
    Z3MVECTOR3D down(0.02f, -1, 0.01f); // a light from straight above casts no shadow
    down.normalize();
    newCaster({0, 12, 0}, down, 35, 2)->link(root);
    camera->setPosition(0, 7, 9);
    camera->setRotation(-38, 0, 0);
    emitter->setPosition(0, 8, 0); // above the picture
    RAVOLT::shadowingOn();
    int dark[2] = {};
    Pixel center[2];
    for (const bool seen : {false, true}) {
        place({{{0, 0, 0}, 1, seen ? 0.9f : 0.1f, 0}});
        frame(); // the lights of a mesh are chosen in its first frame
        place({{{0, 0, 0}, 1, seen ? 0.9f : 0.1f, 0}});
        const Picture picture = frame();
        center[seen] = picture.at(width / 2, height / 2);
        for (int y = height / 4; y < 3 * height / 4; ++y)
            for (int x = width / 4; x < 3 * width / 4; ++x)
                dark[seen] += picture.at(x, y).red < 30;
    }
    EXPECT_EQ(dark[false], 0);
    EXPECT_GT(center[false].red, 60);
    EXPECT_LT(center[true].red, 30);
    EXPECT_GT(dark[true], 100);
}

// --- depth of field

// Not coded as those of meshes are: the alpha is blended with itself.
TEST_P(EmitterEffects, DepthsOfDepthOfFieldAreTheBlendedAlphaOfParticles) {
    RAVOLT::DOFOn();
    RAVOLT::setDOFRange(0); // nothing is blurred
    for (const float energy : {0.5f, 0.9f, 0.15f}) {
        SCOPED_TRACE(energy);
        placeInTheMiddle(energy);
        const bool seen = energy > 0.2f;
        EXPECT_PIXEL(middle(), grey(seen ? brightness(energy, 1) : 0), 2) << "once, and sharp";
        const double alpha = seen ? energy * energy + 1 - energy : 1;
        EXPECT_NEAR(texelOf(1, 32, 24)[3], alpha, 0.01);
        EXPECT_NEAR(texelOf(1, 2, 2)[3], 1, 0.01);
    }
}

TEST_P(EmitterEffects, FocusOnTheAlphaOfParticlesShowsThemSharp) {
    placeInTheMiddle(0.5f); // its alpha is 0.75
    const Picture plain = frame();
    RAVOLT::DOFOn();
    RAVOLT::setDOFRange(100);
    // Of target 1, whose rows and columns are half as many.
    const auto differing = [&](float focus) {
        RAVOLT::setDOFFocus(focus);
        placeInTheMiddle(0.5f);
        const Picture picture = frame();
        unsigned int inside = 0, outside = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (std::abs(picture.at(x, y).red - plain.at(x, y).red) > 8)
                    ++(plain.at(x, y).red ? inside : outside);
        return std::pair(inside, outside);
    };
    const auto [sharpInside, blurredOutside] = differing(0.75f);
    const auto [blurredInside, sharpOutside] = differing(1);
    EXPECT_GT(blurredOutside, 4 * sharpOutside + 20);
    EXPECT_GT(blurredInside, 4 * sharpInside + 20);
}

// --- bloom

TEST_P(EmitterEffects, AddedParticlesGlowWhereTheyAreBrighterThanWhite) {
    emitter->setBlendingDst(GL_ONE);
    const auto besideIt = [this](int layers, bool bloom) {
        if (bloom)
            RAVOLT::bloomingOn();
        else
            RAVOLT::bloomingOff();
        placeInTheMiddle(0.9f, layers);
        const Picture picture = frame();
        EXPECT_GT(picture.at(width / 2, height / 2).red, 220);
        return picture.at(width / 2 + 28, height / 2);
    };
    EXPECT_PIXEL(besideIt(4, false), black, 0);
    EXPECT_PIXEL(besideIt(1, true), black, 1) << "0.9 of white does not glow";
    EXPECT_GT(besideIt(4, true).red, 15);
}

INSTANTIATE_TEST_SUITE_P(EachPath, EmitterEffects, testing::Bool(), [](const auto &each) {
    return std::string(each.param ? "Program" : "Processor");
});

} // namespace
