// One file after the other in one window.

#include "tests/tools/openStage.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"
#include "tools/stage/particles.h"
#include "tools/stage/playback.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;

constexpr WindowSize size = {200, 150};

// The numbers of all that the engine's lists have.
std::vector<unsigned int> registries() {
    return {RVNODE::getNumberOfNodes(),       RVMATERIAL::getNumberOfMaterials(),
            RVTEXTURE::getNumberOfTextures(), RVSHADER::getNumberOfShaders(),
            RVFBO::getNumberOfFbos(),         RVANIM::getNumberOfAnims(),
            RVFONT::getNumberOfFonts(),       RVVIDEO::getNumberOfVideos()};
}

void writeTexture(const std::string &file) {
    std::string pixels = "P6 8 8 255\n";
    pixels.append(8 * 8 * 3, '\xc0');
    writeFile(file, pixels);
}

class UnloadTest : public ::testing::Test {
  protected:
    UnloadTest() {
        writeTexture("picture.ppm");
        writeSquare("Kd 1 1 1\nmap_Kd picture.ppm\n");
        writeScene();
        writeFile("emitter.xml", "<emitter><max_particles value=\"20\"/></emitter>");
        writeFile("gui.xml", "<root><button><name value=\"b\"/></button></root>");
        Drawing drawing;
        drawing.programs = true;
        drawing.picture = size;
        drawing.anisotropy = 1;
        engine.emplace(size, "test", false, "ravolt_log.txt", drawing);
    }

    Picture picture(const Effects &effects = {}) {
        Stage stage(engine->load("scene.rve"));
        stage.setEffects(effects);
        return shoot(stage, size);
    }

    std::optional<Engine> engine;
};

TEST_F(UnloadTest, TheListsAreAsAtTheStartAfterManyFiles) {
    const std::vector<unsigned int> before = registries();
    Effects effects;
    for (const EffectRow &row : effectTable())
        effects.switchOn(row.effect);
    for (int i = 0; i < 7; ++i) {
        picture(effects);
        EXPECT_GT(engine->numberOfTextures(), 0u);
        EXPECT_NE(registries(), before);
        engine->unload();
        ASSERT_EQ(registries(), before) << "scene " << i;
        EXPECT_EQ(engine->numberOfTextures(), 0u);
        {
            RVEMITTER *emitter = engine->loadEmitter("emitter.xml");
            Stage stage(emitter->getParent());
            shoot(stage, size);
        }
        engine->unload();
        ASSERT_EQ(registries(), before) << "emitter " << i;
        Panel(engine->loadInterface("gui.xml")).draw();
        engine->unload();
        ASSERT_EQ(registries(), before) << "interface " << i;
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(UnloadTest, ASceneIsDrawnAsInANewWindow) {
    const Picture before = picture();
    engine->unload();
    Effects effects;
    for (const EffectRow &row : effectTable())
        effects.switchOn(row.effect);
    picture(effects);
    RAVOLT::wireframeOn();
    RVMESH::showNormals();
    engine->unload();
    EXPECT_EQ(differences(before, picture()), 0u);
}

TEST_F(UnloadTest, ReturnsToTheWorkingFolder) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories("inside");
    std::filesystem::copy_file("scene.rve", "inside/scene.rve",
                               std::filesystem::copy_options::overwrite_existing);
    engine->load("inside/scene.rve");
    EXPECT_NE(std::filesystem::current_path(), before);
    engine->unload();
    EXPECT_EQ(std::filesystem::current_path(), before);
}

} // namespace
