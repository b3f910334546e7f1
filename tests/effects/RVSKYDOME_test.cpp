// The calls of a sky. The silent driver has every extension.

#include "ravolt/RVSKYDOME.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/effects/sceneryCalls.h"

#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

constexpr char nothingDrawn[] = "   [!] No texture or no vertex buffers @ RVSKYDOME::render\n";
const std::string invalidParams = "   [!] Invalid params @ RVSKYDOME::loadTexture";
const Call strip{"glDrawElements", GL_TRIANGLE_STRIP, 300, GL_UNSIGNED_SHORT, 0};

class SkydomeTest : public SceneryCalls {
  protected:
    void SetUp() override {
        SceneryCalls::SetUp();
        writeFile("sky.tga", plainTga(4, 4));
        make();
    }

    // A sky with its texture.
    void make() {
        buffers.clear();
        const Calls calls = callsOf([&] { sky = new RVSKYDOME; });
        for (const Call &call : calls.named("glGenBuffersARB"))
            buffers.push_back(call.arguments.back());
        ASSERT_TRUE(sky->loadTexture("sky.tga"));
        sky->render(nullptr); // the first upload
        startFrame();
    }

    Calls render(void *data = nullptr) {
        return callsOf([&] { EXPECT_TRUE(sky->render(data)); });
    }

    Calls buffersDeleted() {
        return callsOf([&] { delete sky; }).named("glDeleteBuffersARB");
    }
    Calls ownBuffersDeleted() {
        return {{"glDeleteBuffersARB", 1, buffers[0]}, {"glDeleteBuffersARB", 1, buffers[1]}};
    }

    RVSKYDOME *sky = nullptr;
    std::vector<double> buffers; // OpenGL's names: vertices, indices
};

TEST_F(SkydomeTest, ConstructorFillsTwoBuffersAndUnbindsThem) {
    const Calls calls = callsOf([] { new RVSKYDOME; });
    const Calls names = calls.named("glGenBuffersARB");
    ASSERT_EQ(names.size(), 2u);
    const double vertices = names[0].arguments.back(), indices = names[1].arguments.back();
    EXPECT_EQ(
        calls.without({"glGenBuffersARB"}),
        (Calls{{"glBindBufferARB", GL_ARRAY_BUFFER_ARB, vertices},
               {"glBufferDataARB", GL_ARRAY_BUFFER_ARB, 175 * 20, anyAddress, GL_STATIC_DRAW_ARB},
               {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, indices},
               {"glBufferDataARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 300 * 2, anyAddress,
                GL_STATIC_DRAW_ARB},
               {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
               {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0}}));
}

TEST_F(SkydomeTest, InitSpeedAndAFailedLoadDoNotChangeWhatIsDrawn) {
    const Calls before = render();
    startFrame();
    EXPECT_TRUE(callsOf([&] { sky->init(10, 45, 90); }).empty());
    sky->setSpeed(5);
    EXPECT_FALSE(sky->loadTexture("gone.tga"));
    EXPECT_EQ(render(), before);
}

TEST_F(SkydomeTest, DestructorDeletesBothBuffersOnly) {
    EXPECT_EQ(buffersDeleted(), ownBuffersDeleted());
    EXPECT_NE(RVTEXTURE::findByFilename("sky.tga"), nullptr);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
}

TEST_F(SkydomeTest, CopyDrawsFromTheBuffersOfTheOriginalAndDeletesNone) {
    {
        RVSKYDOME copy(*sky);
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_SKYDOME);
        const Calls calls = callsOf([&] { EXPECT_TRUE(copy.render(nullptr)); });
        EXPECT_TRUE(calls.contains(Call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, buffers[0])));
        recorder.start();
    }
    EXPECT_FALSE(recorder.stop().contains("glDeleteBuffersARB"));
}

TEST_F(SkydomeTest, AssignedSkyDrawsFromTheOthersBuffersAndDeletesItsOwn) {
    const double first = buffers[0];
    RVSKYDOME *const original = sky;
    make();
    *sky = *original;
    EXPECT_TRUE(render().contains(Call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, first)));
    EXPECT_EQ(buffersDeleted(), ownBuffersDeleted());
}

// --- loadTexture

TEST_F(SkydomeTest, BadNamesAreRefusedAndAMissingFileHasItsTextureAndMaterial) {
    RVSKYDOME *bare = new RVSKYDOME;
    const unsigned int textures = RVTEXTURE::getNumberOfTextures();
    markLog();
    EXPECT_FALSE(bare->loadTexture(nullptr));
    EXPECT_LOGGED_EXACTLY(invalidParams + "\n");
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u); // that of the first sky
    EXPECT_EQ(RVTEXTURE::findByFilename("sky.tga")->getReferences(), 1);

    EXPECT_FALSE(bare->loadTexture("gone.tga"));
    EXPECT_LOGGED_EXACTLY("   [!] Unable to open file gone.tga @ RVTEXTURE::loadTGA\n" +
                          invalidParams + "\n");
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), textures + 1);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 2u);
}

TEST_F(SkydomeTest, TextureIsFoundInTheRegistryAndTheMaterialIsReused) {
    RVTEXTURE *known = RVTEXTURE::findByFilename("sky.tga");
    ASSERT_NE(known, nullptr);
    EXPECT_TRUE(known->isTrilinear());
    EXPECT_TRUE(known->isMipmapped());
    EXPECT_FALSE(known->isClamped());
    EXPECT_EQ(known->getReferences(), 1);
    known->setFilter(false, false, true);
    RVMATERIAL *material = RVMATERIAL::getFirst();
    EXPECT_TRUE(sky->loadTexture("sky.tga"));
    EXPECT_EQ(material->getTexture(0), known);
    EXPECT_FALSE(known->isTrilinear()); // as it was

    writeFile("night.tga", plainTga(2, 2));
    EXPECT_TRUE(sky->loadTexture("night.tga"));
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 1u);
    EXPECT_EQ(material->getTexture(0), RVTEXTURE::findByFilename("night.tga"));
    EXPECT_EQ(known->getReferences(), 0);
}

TEST_F(SkydomeTest, WithoutProgramsTheMaterialHasNone) {
    EXPECT_FALSE(RVSHADER::useSkydome());
    EXPECT_EQ(RVMATERIAL::getFirst()->getShader(), nullptr);
    EXPECT_FALSE(render().contains("glUseProgramObjectARB"));
}

TEST_F(SkydomeTest, WithProgramsTheSkysOwnIsUsedWithoutALight) {
    settings.setShaders(true);
    ASSERT_TRUE(restart());
    make();
    auto names = programNames();
    EXPECT_EQ(RVMATERIAL::getFirst()->getShader(), RVSHADER::skydome);
    const Calls used = render().named("glUseProgramObjectARB");
    ASSERT_EQ(used.size(), 1u);
    EXPECT_EQ(names[used[0].arguments[0]], "skydomeShader");
}

TEST_F(SkydomeTest, LoadWithoutMemoryFails) {
    RVSKYDOME *bare = new RVSKYDOME;
    for (const unsigned int allocation : {0u, 1u}) { // the material, the texture
        markLog();
        recorder.failAllocation(1, allocation, 1);
        EXPECT_FALSE(bare->loadTexture("gone.tga"));
        recorder.allocationsWork();
        EXPECT_LOGGED(invalidParams);
    }
    EXPECT_FALSE(bare->render(nullptr));

    RVSKYDOME *textured = new RVSKYDOME;
    markLog();
    recorder.failAllocation(1, 0, 1); // the material
    EXPECT_FALSE(textured->loadTexture("sky.tga"));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVSKYDOME::loadTexture\n");
    EXPECT_TRUE(textured->loadTexture("sky.tga"));
}

// --- render

TEST_F(SkydomeTest, DrawsItsStripAroundTheCameraOfThePass) {
    RVCAMERA camera;
    camera.setPosition(3, 4, 5);
    camera.render(nullptr);
    sky->setRotation(10, 20, 30);
    RVLIGHT::lightingOn();
    const Calls calls = render();
    EXPECT_EQ(calls.without({"glMaterialfv", "glMaterialf", "glActiveTextureARB",
                             "glClientActiveTextureARB", "glBindTexture", "glBlendFunc"}),
              (Calls{{"glEnableClientState", GL_INDEX_ARRAY},
                     {"glEnableClientState", GL_VERTEX_ARRAY},
                     {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glDisable", GL_LIGHTING},
                     {"glColor4f", 1, 1, 1, 1},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glTranslatef", 3, 4, 5},
                     {"glRotatef", 20, 0, 1, 0},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, buffers[0]},
                     {"glVertexPointer", 3, GL_FLOAT, 20, 0},
                     {"glTexCoordPointer", 2, GL_FLOAT, 20, 12},
                     {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, buffers[1]},
                     strip,
                     {"glDisableClientState", GL_INDEX_ARRAY},
                     {"glDisableClientState", GL_VERTEX_ARRAY},
                     {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glEnable", GL_LIGHTING},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                     {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0}}))
        << calls.text(); // no glIndexPointer, which is an error with a buffer
}

TEST_F(SkydomeTest, LightingIsOnAfterwardsEvenIfItWasOff) {
    ASSERT_FALSE(RVLIGHT::getLighting());
    render();
    EXPECT_TRUE(RVLIGHT::getLighting());
}

TEST_F(SkydomeTest, LoadsTheMatrixOfItsEntryAndNoneForNull) {
    RVCAMERA camera;
    camera.render(nullptr);
    RVELEMENT entry;
    entry.getMatrix()->setTranslation(1, 2, 3);
    EXPECT_TRUE(render(&entry).haveInOrder(
        {{"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1},
         {"glTranslatef", 0, 0, 0},
         strip}));
    startFrame();
    EXPECT_FALSE(render().contains("glLoadMatrixf"));
}

TEST_F(SkydomeTest, WithoutACameraTheViewOfTheLastOneIsUsed) {
    {
        RVCAMERA camera;
        camera.setPosition(7, 8, 9);
        camera.render(nullptr);
    }
    ASSERT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    EXPECT_TRUE(render().contains(Call("glTranslatef", 7, 8, 9)));
}

TEST_F(SkydomeTest, ArraysThatOtherNodesEnabledAreNotRead) {
    RVOPENGL::normalArrayOn();
    RVOPENGL::colorArrayOn();
    EXPECT_TRUE(render().haveInOrder({{"glDisableClientState", GL_NORMAL_ARRAY},
                                      {"glDisableClientState", GL_COLOR_ARRAY},
                                      strip}));
}

TEST_F(SkydomeTest, WithoutATextureNothingIsDrawnAndLoggedOnce) {
    RVSKYDOME *bare = new RVSKYDOME;
    const auto expectNothingDrawn = [&](const char *line) {
        markLog();
        EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(bare->render(nullptr)); }).empty());
        EXPECT_LOGGED_EXACTLY(line);
    };
    expectNothingDrawn(nothingDrawn);
    expectNothingDrawn("");
    EXPECT_FALSE(bare->loadTexture("gone.tga")); // makes a material, without a texture
    expectNothingDrawn("");
    EXPECT_TRUE(bare->loadTexture("sky.tga"));
    EXPECT_TRUE(bare->render(nullptr));
}

TEST_F(SkydomeTest, DeletedTextureOrMaterialIsNotDrawn) {
    delete RVTEXTURE::findByFilename("sky.tga");
    markLog();
    EXPECT_FALSE(sky->render(nullptr));
    EXPECT_LOGGED_EXACTLY(nothingDrawn);
    delete RVMATERIAL::getFirst();
    EXPECT_FALSE(sky->render(nullptr));
    EXPECT_TRUE(sky->loadTexture("sky.tga"));
    EXPECT_TRUE(sky->render(nullptr));
}

TEST_F(SkydomeTest, WithoutItsBuffersNothingIsDrawn) {
    const char *const outOfMemory = "";
    for (const char *name :
         {"glGenBuffersARB", "glBindBufferARB", "glBufferDataARB", outOfMemory}) {
        SCOPED_TRACE(name);
        restartWithout(name);
        if (name == outOfMemory)
            recorder.failAllocation(175 * 20, 0, 1); // the vertices
        Calls calls = callsOf([&] { sky = new RVSKYDOME; });
        recorder.allocationsWork();
        EXPECT_FALSE(calls.contains("glBufferDataARB"));
        ASSERT_TRUE(sky->loadTexture("sky.tga"));
        markLog();
        calls = callsOf([&] {
            EXPECT_FALSE(sky->render(nullptr));
            EXPECT_FALSE(sky->render(nullptr));
        });
        EXPECT_TRUE(calls.empty()) << calls.text();
        EXPECT_LOGGED_EXACTLY(nothingDrawn);
    }
}

} // namespace
