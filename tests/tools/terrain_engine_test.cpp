// What `ravolt terrain` writes, loaded and drawn by the engine. Unlike the tool's other tests these
// use the engine's fixtures.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>
#include <sys/wait.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// The exit status; -1 when it does not exit by itself.
int run(const std::string &command) {
    const int status = std::system((command + " >output.txt 2>errors.txt </dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class TerrainFolder : public EngineTest {
  protected:
    TerrainFolder() {
        settings.setShaders(true);
        settings.setVideoMemory(256);
        settings.setMaxAnisotropy(1); // for speed
        settings.setTexturePath("land/");
    }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        recorder.stopClock();
    }

    // Whether the tool accepts the heights.
    static bool make(const std::string &heights) {
        return run("'" RAVOLT_TOOL "' terrain " + heights + " --texture-size 64 -o land") == 0;
    }

    void load() {
        terrain = new RVTERRAIN;
        ASSERT_TRUE(terrain->load("land/terrain.xml"));
        for (const char *file : {"land/fire.xml", "land/smoke.xml"}) {
            auto *emitter = new RVEMITTER;
            EXPECT_TRUE(emitter->load(file)) << file;
            EXPECT_GT(emitter->getNumberOfParticles(), 0u) << file;
            emitter->link(terrain);
        }
        expectLoaded();
        light = new RVLIGHT;
        light->setPosition(-200, 300, -100);
        light->setDiffuse(1, 1, 1, 1);
        light->link(terrain);
    }

    // Chunks with the program and all textures, and nothing missing.
    void expectLoaded() const {
        ASSERT_GT(terrain->getNumberOfChunks(), 0u);
        for (unsigned int number = 0; number < terrain->getNumberOfChunks(); ++number) {
            const RVMATERIAL *material = terrain->getChunk(number)->getMaterial();
            ASSERT_TRUE(material);
            EXPECT_EQ(material->getShader(), RVSHADER::terrainComplex);
            for (const unsigned int slot : {0, 2, 3, 4, 5, 6, 7, 8})
                EXPECT_TRUE(material->getTexture(slot)) << slot;
        }
        EXPECT_TRUE(terrain->getSkydome());
    }

    // From above its near side, over the whole.
    Picture draw() {
        const RVTERRAIN_CHUNK *last = terrain->getChunk(terrain->getNumberOfChunks() - 1);
        const Z3MVECTOR3D end = last->getMaximum();
        auto *camera = new RVCAMERA;
        camera->setTargetNode(camera);
        camera->setPosition(end.x / 2, 0.2f * end.z, 0.95f * end.z);
        camera->setTarget(end.x / 2, 0, 0.4f * end.z);
        drawFrame(camera, terrain);
        expectNoGlErrors();
        EXPECT_EQ(logTextSince(startMark).find("[!]"), std::string::npos)
            << logTextSince(startMark);
        return readFrame();
    }

    // Sky at the top; land and water of many colours in the lower half. Between them, beyond the
    // end of the land, the background may be seen.
    static void expectALandscape(const Picture &picture) {
        constexpr Pixel cleared{51, 51, 153, 255}; // by the engine
        std::set<int> colors;
        for (int x = 0; x < width; ++x)
            EXPECT_FALSE(picture.at(x, 0) == cleared) << x;
        for (int y = height / 2; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const Pixel pixel = picture.at(x, y);
                EXPECT_FALSE(pixel == cleared) << x << ", " << y;
                colors.insert(pixel.red / 8 * 1024 + pixel.green / 8 * 32 + pixel.blue / 8);
            }
        EXPECT_GT(colors.size(), 30u);
    }

    RVTERRAIN *terrain = nullptr;
    RVLIGHT *light = nullptr;
};

TEST_F(TerrainFolder, IslandLoadsAndIsDrawn) {
    ASSERT_TRUE(make("--island 7")) << readText("errors.txt");
    load();
    expectALandscape(draw());
}

TEST_F(TerrainFolder, MeasuredHeightsLoadAndAreDrawnUnlessPython3MatplotlibIsMissing) {
    if (run("/usr/bin/python3 -c 'import matplotlib, numpy'") != 0)
        GTEST_SKIP() << "python3-matplotlib, which has the heights, is not installed";
    ASSERT_EQ(run("/usr/bin/python3 '" RAVOLT_SOURCE "/scripts/measuredHeights.py' heights.png"), 0)
        << readText("errors.txt");
    ASSERT_TRUE(make("heights.png")) << readText("errors.txt");
    load();
    expectALandscape(draw());
}

} // namespace
