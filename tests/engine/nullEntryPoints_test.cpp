// A driver that names an extension and then has no function for it: the start says so or not, and
// the frame goes on without. No display: a silent driver stands behind.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/openGLAccess.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"

namespace ravolt::test {
namespace {

constexpr const char *entryPoints[] = {
#define RV_GL_ENTRY_POINT(group, name) #name,
#include "engine/gl/glEntryPoints.inc"
};

class NullEntryPoint : public SilentEngineTest, public testing::WithParamInterface<const char *> {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.nullEntryPoint(GetParam());
        SilentEngineTest::SetUp();
    }
    void TearDown() override {
        SilentEngineTest::TearDown();
        resetCapabilities();
    }

    // A mesh with textures on two units, and a helper below it.
    static RVNODE *makeScene() {
        RVMATERIAL *material = new RVMATERIAL;
        for (unsigned int unit : {0u, 3u}) {
            RVTEXTURE *texture = new RVTEXTURE;
            texture->incReferences();
            EXPECT_TRUE(texture->create(4, 4, 3));
            material->setTexture(unit, texture);
        }
        RVMESH *mesh = loadMesh(meshBody("mesh", 1));
        mesh->setMaterial(material);
        (new RVHELPER)->link(mesh);
        return mesh;
    }
};

TEST_P(NullEntryPoint, IsNeverCalled) {
    RVNODE *scene = makeScene();
    recorder.start();
    drawFrame(nullptr, scene);
    RAVOLT::select(1, 1);
    drawFrame2D(scene);
    RAVOLT::swap();
    const Calls calls = recorder.stop();
    EXPECT_FALSE(calls.contains(GetParam()));
    EXPECT_EQ(calls.count("glBindTexture"), 2u);
    EXPECT_EQ(calls.count(Call("glDrawArrays", GL_TRIANGLES, 0, 36)), 4u);
    EXPECT_TRUE(calls.contains("SDL_GL_SwapBuffers"));
    EXPECT_TRUE(RVOPENGL::useVBO());
    EXPECT_TRUE(RVOPENGL::useMultitexturing());
}

INSTANTIATE_TEST_SUITE_P(Each, NullEntryPoint, testing::ValuesIn(entryPoints),
                         [](const auto &test) { return std::string(test.param); });

} // namespace
} // namespace ravolt::test
