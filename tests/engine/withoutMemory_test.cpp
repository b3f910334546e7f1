// A whole run of the engine in which one allocation of the library fails, each in turn: no
// exception is thrown to the application, the end and another start work, nothing is left.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/zlf.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"
#include "tests/support/heap.h"
#include "tools/writers/tgaWriter.h"

#include <new>
#include <set>
#include <string>

namespace ravolt::test {
namespace {

// The memory of the object itself is the application's and always there; what its constructor
// allocates is the library's.
template <class T> T *make() {
    void *memory;
    {
        const ScopedUnrecorded application;
        memory = ::operator new(sizeof(T));
    }
    return new (memory) T;
}

RveScene sceneOfEverything() {
    RveNode skinned = squareMesh("skinned", "stone");
    skinned.mesh.skin.weightsPerVertex = 4;
    skinned.mesh.skin.boneIndices.assign(16, 0);
    skinned.mesh.skin.boneWeights.assign(16, 0.25f);
    skinned.mesh.skin.bones = {"bone"};
    RveNode light = nodeNamed("lamp");
    light.kind = RveKind::light;
    light.light.type = RveLightType::spot;
    RveScene scene{{materialNamed("stone"), materialNamed("glass", 0.5f)},
                   rootOver({nodeNamed("group", {skinned, light}), emptyMesh("bone"),
                             squareMesh("pane", "glass")})};
    scene.materials[0].texture = "wall_d.tga";
    scene.materials[1].shader = "own";
    return scene;
}

class WithoutMemory : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        const unsigned char pixels[4 * 3] = {};
        TgaPicture picture;
        picture.width = picture.height = 2;
        picture.pixels = pixels;
        ASSERT_TRUE(writeTga("wall_d.tga", picture));
        ASSERT_TRUE(writeTga("wall_n.tga", picture));
        writeFile("life.rve", bytesOf(sceneOfEverything()));
        writeFile("ownVS.glsl", Bytes{' '});
        writeFile("ownPS.glsl", Bytes{' '});
        settings.setShaders(true);
        zlfSetConsoleEcho(false);
        ASSERT_TRUE(endsInOrder()); // and so from here on
    }
    void TearDown() override {
        recorder.allocationsWork();
        RAVOLT::free();
        resetEffects();
        zlfSetConsoleEcho(true);
        SilentTest::TearDown();
    }

    void textures() {
        auto *texture = make<RVTEXTURE>();
        texture->incReferences();
        texture->load("wall_d.tga");
        texture->update();
        texture->setFilter(true, true, true);
        texture->unload(true);
        texture->reload();
        texture->unload(true);
        texture->render(nullptr);
        const char pixels[8 * 8 * 4] = {};
        texture->create(8, 8, 4);
        texture->unload(true);
        texture->modify(pixels, true);
        RVTEXTURE::garbageCollect(0);
    }

    void resources() {
        textures();
        auto *program = make<RVSHADER>();
        program->load("ownVS.glsl", "ownPS.glsl", false);
        auto *material = make<RVMATERIAL>();
        auto *copy = make<RVMATERIAL>();
        copy->clone(material);
        auto *clip = make<RVANIM>();
        clip->save("life.rva");
        clip->load("life.rva");
        auto *video = make<RVVIDEO>();
        video->load("life.rve"); // no video, but a file
        video->play();
        video->update(2);
        video->load(nullptr); // closes the file, which the destructor does not
    }

    static void tree() {
        auto *root = make<RVNODE>(), *middle = make<RVNODE>();
        middle->link(root);
        for (int child = 0; child < 3; ++child)
            make<RVNODE>()->link(middle);
        middle->remove();
        middle->link(root);
        middle->unlink();
    }

    static void frame(RVNODE *root) {
        auto *camera = make<RVCAMERA>();
        allEffectsOn();
        for (int number = 0; number < 2; ++number) {
            drawFrame(camera, root);
            RAVOLT::select(1, 1);
            drawFrame2D(root);
            RAVOLT::swap();
        }
    }

    void life() {
        if (!RAVOLT::init(&settings))
            return;
        RVNODE *const root = RAVOLT::load("life.rve");
        resources();
        tree();
        frame(root);
        RAVOLT::free();
    }

    // A run with these allocations failing. Returns whether any failed.
    bool lifeWithout(unsigned int after, unsigned int times) {
        const LogMark mark = logMark();
        const unsigned int blocks = heap.failedMallocs;
        recorder.failAllocation(1, after, times);
        try {
            life();
        } catch (...) {
            ADD_FAILURE() << "an exception was thrown";
        }
        const bool failed = heap.failure.after == 0 && heap.failure.times != times;
        recorder.allocationsWork();
        for (const std::string &line : problemsSince(mark))
            problems.insert(line);
        RAVOLT::free();
        expectNothingLeft();
        // A block whose allocation failed is never subtracted from the ratio.
        EXPECT_EQ(finalMemoryRatio() - ratio, static_cast<int>(heap.failedMallocs - blocks));
        ratio += static_cast<int>(heap.failedMallocs - blocks);
        return failed;
    }

    // So many allocations fail from each one on. The number of allocations of a life.
    unsigned int failFromEach(unsigned int times) {
        unsigned int after = 0;
        for (; lifeWithout(after, times) && !HasFailure(); ++after)
            EXPECT_TRUE(endsInOrder());
        EXPECT_FALSE(HasFailure()) << "at allocation " << after;
        return after;
    }

    static void expectNothingLeft() {
        EXPECT_FALSE(RAVOLT::isActive());
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
        EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
        EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
        EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
        const unsigned int id = zlfNewId();
        EXPECT_EQ(id, 1u);
        releaseId(id);
    }

    bool endsInOrder() {
        const bool started = RAVOLT::init(&settings);
        const bool ended = RAVOLT::free();
        ratio = finalMemoryRatio();
        return started && ended;
    }

    RVSETTINGS settings = smallSettings();
    int ratio = 0;
    std::set<std::string> problems;
};

TEST_F(WithoutMemory, EachAllocationMayFailByItself) {
    EXPECT_GT(failFromEach(1), 80u) << "more than the start was run";
    for (const char *line :
         {"   [!] Out of memory for the splash picture @ RVSETTINGS::init",
          "   [!] Out of memory @ RVOPENGL::init", "   [!] Out of memory @ RVSHADER::init",
          "   [!] Out of memory @ RVNODE::link", "   [!] Out of memory @ RVNODE::remove"})
        EXPECT_EQ(problems.count(line), 1u) << line;
}

TEST_F(WithoutMemory, AllAllocationsMayFailFromEachOn) {
    failFromEach(1'000'000); // counted down, so that it shows
}

} // namespace
} // namespace ravolt::test
