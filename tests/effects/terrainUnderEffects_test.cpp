// Terrains in the target of the effects, and a mesh that is drawn after them: which targets the two
// reach, and bloom and depth of field against pictures composed from the scene drawn without them.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTERRAIN.h"
#include "tests/effects/litScene.h"
#include "tests/effects/terrainScene.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/resources/targetImages.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// The levels of the blur store eight bits, and a filter of bytes computes with as many: on average
// half a step in each of the four, which bloom adds up.
constexpr double blurError = 0.02, meanBlurError = 4 * 0.5 / 255;

constexpr int middleX = 32, middleY = 24; // of the target, where the square is
constexpr int landX = 32, landY = 3;      // below the square

struct Scene {
    Image colors;
    std::vector<double> depths; // as the depth pass codes them
};

// What is brighter than white, times its luminance.
Image brightPartsOf(const Image &scene) {
    Image bright{scene.width, scene.height};
    forEachValue(scene, [&](int x, int y, int channel) {
        const double luminance = 0.3 * scene.clamped(x, y, 0) + 0.59 * scene.clamped(x, y, 1) +
                                 0.11 * scene.clamped(x, y, 2);
        if (luminance > 1)
            bright.at(x, y, channel) = static_cast<float>(scene.clamped(x, y, channel) * luminance);
    });
    return bright;
}

// One direction of a level, which stores 0 to 1.
Image blurredOnce(const Image &source, const Image &size, bool alongX) {
    Image result{size.width, size.height};
    forEachValue(result, [&](int x, int y, int channel) {
        const double sum = taps(source, result, x, y, alongX, channel);
        result.at(x, y, channel) = static_cast<float>(std::clamp(sum, 0.0, 1.0));
    });
    return result;
}

// The sum of four levels, each half the size of the one before, times `weight`.
Image blurred(const Image &source, double weight) {
    std::vector<Image> levels{source};
    for (int divisor = 2; divisor <= 16; divisor *= 2) {
        const Image size{source.width / divisor, source.height / divisor};
        levels.push_back(blurredOnce(blurredOnce(levels.back(), size, false), size, true));
    }
    Image result{source.width, source.height};
    forEachValue(result, [&](int x, int y, int channel) {
        double sum = 0;
        for (auto level = levels.begin() + 1; level != levels.end(); ++level)
            sum += level->sample((x + 0.5) / result.width, (y + 0.5) / result.height, channel);
        result.at(x, y, channel) = static_cast<float>(weight * sum);
    });
    return result;
}

Image withBloom(Image image, double intensity) {
    const Image glow = blurred(brightPartsOf(image), 1);
    forEachValue(glow, [&](int x, int y, int channel) {
        image.at(x, y, channel) += static_cast<float>(intensity * glow.clamped(x, y, channel));
    });
    return image;
}

Image withDepthOfField(Image image, const std::vector<double> &depths, double focus, double range) {
    const Image soft = blurred(image, 0.25);
    forEachValue(soft, [&](int x, int y, int channel) {
        const double depth = depths[static_cast<std::size_t>(y * soft.width + x)];
        const double share = std::clamp(std::abs(depth - focus) * range, 0.0, 1.0);
        image.at(x, y, channel) = static_cast<float>(
            std::lerp(image.clamped(x, y, channel), soft.clamped(x, y, channel), share));
    });
    return image;
}

struct ImageDifference {
    double largest = 0, mean = 0;
};

ImageDifference differenceOf(const Image &actual, const Image &expected) {
    ImageDifference result;
    forEachValue(expected, [&](int x, int y, int channel) {
        const double difference =
            std::abs(actual.clamped(x, y, channel) - expected.clamped(x, y, channel));
        result.largest = std::max(result.largest, difference);
        result.mean += difference / (3.0 * expected.width * expected.height);
    });
    return result;
}

// Without anisotropy, which a driver may filter by even where a texture is seen head-on.
class TerrainUnderEffectsTest : public LitSceneTest {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_EXT_texture_filter_anisotropic");
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        ASSERT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF()) << logTextSince(startMark);
        writeTerrainTextures();
        makeScene();
    }

    void TearDown() override {
        RVTERRAIN::restoreTargetOff();
        resetEffects();
        RVFBO::unbind();
        EngineTest::TearDown();
    }

    // Hills, and a square of an orange brighter than white before them. Neither sky nor water,
    // which code no depths.
    void makeScene() {
        makeLitRoot({32, 22, 78}, -22, {20, 60, 10});
        const auto hills = [](unsigned int x, unsigned int z) {
            return 3 * std::sin(static_cast<float>(x)) * std::cos(static_cast<float>(z));
        };
        const TerrainFile file(
            {.side = 9, .columns = 2, .rows = 2, .levels = 4, .scale = 4, .height = hills});
        loadTerrain(file, geometryXml + layersXml())->link(root);
        RveMaterial orange = materialNamed("orange");
        orange.selfIllumination = {2, 1, 0.25f, 1};
        loadScene({{orange}, rootOver({placed(squareMesh("square", "orange", 4), {32, 11, 50})})})
            ->link(root); // the opaque meshes are drawn after the terrains
    }

    // Twice: in the first frame no light was chosen for the mesh yet, which codes no depth then.
    Image drawInTarget() {
        for (int frame = 0; frame < 2; ++frame) {
            RAVOLT::swap();
            drawFrame(camera, root);
        }
        const Image image = imageOf(0);
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        return image;
    }

    // The scene without effects, in a forced target, which the terrain restores by itself.
    Scene drawWithoutEffects() {
        settings.setForceFBO(true);
        EXPECT_TRUE(restart());
        makeScene();
        Scene scene{drawInTarget(), {}};
        scene.depths = codedDepths();
        settings.setForceFBO(false);
        EXPECT_TRUE(restart());
        makeScene();
        return scene;
    }

    // The depth buffer of target 0 as distances from the eye, coded; 1 where nothing is.
    static std::vector<double> codedDepths() {
        RVFBO &target = *RVOPENGL::getFbo(0);
        target.render(nullptr);
        std::vector<float> buffer(static_cast<std::size_t>(target.getSizeX() * target.getSizeY()));
        glReadPixels(0, 0, target.getSizeX(), target.getSizeY(), GL_DEPTH_COMPONENT, GL_FLOAT,
                     buffer.data());
        RVFBO::unbind();
        const double zNear = RVOPENGL::getNearPlane(), zFar = RVOPENGL::getFarPlane();
        std::vector<double> coded;
        for (const double depth : buffer) {
            const double distance =
                2 * zFar * zNear / (zFar + zNear - (2 * depth - 1) * (zFar - zNear));
            coded.push_back(depth < 1 ? (distance + zNear) / zFar : 1);
        }
        return coded;
    }

    static void expectLike(const Image &actual, const Image &expected) {
        const ImageDifference difference = differenceOf(actual, expected);
        EXPECT_LT(difference.largest, blurError);
        EXPECT_LT(difference.mean, meanBlurError);
    }
};

std::array<double, 3> colorOf(const Image &image, int x, int y) {
    return {image.clamped(x, y, 0), image.clamped(x, y, 1), image.clamped(x, y, 2)};
}

TEST_F(TerrainUnderEffectsTest, MeshAfterATerrainReachesTheTargetsOnlyWithTheTargetRestored) {
    const Scene plain = drawWithoutEffects();
    RAVOLT::bloomingOn();
    RAVOLT::setBloomingIntensity(0);
    RAVOLT::DOFOn();
    RAVOLT::setDOFRange(0);
    const auto isAsWithout = [&](const Image &image, const Image &depths, int x, int y) {
        const auto actual = colorOf(image, x, y), wanted = colorOf(plain.colors, x, y);
        double most = 0;
        for (std::size_t i = 0; i < actual.size(); ++i)
            most = std::max(most, std::abs(actual[i] - wanted[i]));
        const double depth = plain.depths[static_cast<std::size_t>(y * image.width + x)];
        EXPECT_LT(depth, 0.5);
        return std::array{most < 0.005, std::abs(depths.clamped(x, y, 3) - depth) < 0.0005};
    };
    EXPECT_GT(plain.colors.clamped(middleX, middleY, 0), 1.5) << "the square";
    for (const bool restoring : {false, true}) {
        SCOPED_TRACE(restoring);
        restoring ? RVTERRAIN::restoreTargetOn() : RVTERRAIN::restoreTargetOff();
        const Image image = drawInTarget(), depths = imageOf(1);
        const std::array both{restoring, restoring};
        EXPECT_EQ(isAsWithout(image, depths, middleX, middleY), both) << "the mesh";
        EXPECT_EQ(isAsWithout(image, depths, landX, landY), both) << "the land";
    }
}

TEST_F(TerrainUnderEffectsTest, BloomIsThatOfThePictureWithoutIt) {
    const Scene plain = drawWithoutEffects();
    RVTERRAIN::restoreTargetOn();
    RAVOLT::bloomingOn();
    for (const float intensity : {0.25f, 1.0f}) {
        SCOPED_TRACE(intensity);
        RAVOLT::setBloomingIntensity(intensity);
        const Image composed = withBloom(plain.colors, static_cast<double>(intensity));
        EXPECT_GT(differenceOf(plain.colors, composed).mean, 0.02);
        expectLike(drawInTarget(), composed);
    }
}

TEST_F(TerrainUnderEffectsTest, DepthOfFieldIsThatOfThePictureAndItsDepths) {
    const Scene plain = drawWithoutEffects();
    RVTERRAIN::restoreTargetOn();
    RAVOLT::DOFOn();
    const double atTheSquare =
        plain.depths[static_cast<std::size_t>(middleY * plain.colors.width + middleX)];
    for (const bool blooming : {false, true}) {
        SCOPED_TRACE(blooming);
        if (blooming)
            RAVOLT::bloomingOn();
        const Image sharp = blooming ? withBloom(plain.colors, 1) : plain.colors;
        for (const double focus : {atTheSquare, 0.07}) {
            SCOPED_TRACE(focus);
            RAVOLT::setDOFFocus(static_cast<float>(focus));
            RAVOLT::setDOFRange(15);
            const Image composed = withDepthOfField(sharp, plain.depths, focus, 15);
            EXPECT_GT(differenceOf(sharp, composed).mean, 0.02);
            expectLike(drawInTarget(), composed);
        }
    }
}

} // namespace
