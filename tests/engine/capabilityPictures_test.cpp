// All effects asked for, on drivers that lack something: the picture is that of a whole driver on
// which only those effects are asked for that are left. The cases in which the picture could
// differ; effectCapabilities_test.cpp has all of them, without pictures.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/resetEffects.h"
#include "tests/engine/supportedEffects.h"
#include "tests/support/engineFixture.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {
namespace {

constexpr int center = 64, middle = 48;

class CapabilityPictures : public EngineTest {
  protected:
    CapabilityPictures() { settings.setShaders(true); }

    void SetUp() override {
        resetCapabilities();
        EngineTest::SetUp();
        ASSERT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF() && RVSHADER::useShadows());
        RAVOLT::setDOFFocus(0);
        RAVOLT::setDOFRange(1);
        for (const bool bloom : {false, true})
            for (const bool focus : {false, true})
                wanted[{bloom, focus}] = picture(bloom, focus);
    }

    void TearDown() override {
        resetEffects();
        recorder.reset();
        recorder.forgiveUnits();
        resetCapabilities();
        EngineTest::TearDown();
        resetCapabilities();
    }

    // A square before the background, in a frame of its own nodes.
    static Picture picture(bool bloom, bool focus) {
        bloom ? RAVOLT::bloomingOn() : RAVOLT::bloomingOff();
        focus ? RAVOLT::DOFOn() : RAVOLT::DOFOff();
        auto *camera = new RVCAMERA;
        auto *square = new BrightSquare;
        drawFrame(camera, square);
        const Picture made = readFrame();
        delete square;
        delete camera;
        return made;
    }

    // All effects asked for, in an engine that is started anew on the driver that the recorder
    // makes believe. OpenGL refuses to use a program that does not link, at each of its uses.
    Picture pictureOfANewStart() {
        RAVOLT::free();
        resetCapabilities();
        EXPECT_TRUE(RAVOLT::init(&settings));
        const Picture made = picture(true, true);
        while (glGetError() != GL_NO_ERROR)
            ;
        recorder.reset();
        recorder.forgiveUnits();
        return made;
    }

    int changeFrom(const Supported &left, const Picture &made) {
        return differenceOf(made, wanted[{left.bloom, left.depthOfField}]).maximum;
    }

    // Whatever became of the effects.
    static void expectSquareAndBackground(const Picture &made) {
        EXPECT_GT(made.at(center, middle).red, made.at(2, 2).red + 5);
        EXPECT_GT(made.at(2, 2).blue, 50);
    }

    std::map<std::pair<bool, bool>, Picture> wanted; // by bloom and depth of field
};

TEST_F(CapabilityPictures, TheEffectsAreSeen) {
    const Picture plain = wanted[{false, false}], both = wanted[{true, true}];
    EXPECT_PIXEL(plain.at(center, middle), (Pixel{255, 255, 191}), 1);
    EXPECT_PIXEL(plain.at(2, 2), (Pixel{51, 51, 153}), 1);
    for (const auto &one : {wanted[{true, false}], wanted[{false, true}]}) {
        EXPECT_GT(differenceOf(plain, one).maximum, 20);
        EXPECT_GT(differenceOf(both, one).maximum, 20);
    }
    expectSquareAndBackground(both);
}

TEST_F(CapabilityPictures, WithoutAnExtensionTheOtherEffectsAreSeen) {
    for (const Driver &driver : drivers) {
        SCOPED_TRACE(driver.name);
        driver.pretend(recorder, settings);
        const Picture made = pictureOfANewStart();
        // The levels of the blur are filtered by anisotropy where the driver has it.
        const bool plain = driver.name == std::string("Anisotropy");
        EXPECT_LE(changeFrom(driver.left, made), plain ? 16 : 0);
    }
}

TEST_F(CapabilityPictures, WithoutAFunctionTheOtherEffectsAreSeen) {
    std::vector<const char *> needed = {"glGenFramebuffersEXT", "glGenerateMipmapEXT"};
    needed.insert(needed.end(), std::begin(functionsOfPrograms), std::end(functionsOfPrograms));
    for (const char *name : needed) {
        SCOPED_TRACE(name);
        recorder.nullEntryPoint(name);
        EXPECT_EQ(changeFrom(nothing, pictureOfANewStart()), 0);
    }
    for (const char *name :
         {"glMultiTexCoord2fARB", "glClientActiveTextureARB", "glBindBufferARB",
          "glDeleteObjectARB", "glDetachObjectARB", "glUniform3fvARB", "glVertexAttribPointerARB",
          "glGetAttribLocationARB", "glBeginQueryARB"}) {
        SCOPED_TRACE(name);
        recorder.nullEntryPoint(name);
        EXPECT_EQ(changeFrom(all, pictureOfANewStart()), 0);
    }
}

TEST_F(CapabilityPictures, WithoutAProgramTheOtherEffectsAreSeen) {
    for (unsigned int index = 0; index < std::size(programs); ++index) {
        const std::string name = programs[index].name;
        if (name.find("bloom") != 0 && name.find("dof") != 0 && name != "pplSpotS")
            continue;
        SCOPED_TRACE(name);
        recorder.refuse("glCompileShaderARB", 2 * index + index % 2, 1);
        const Picture made = pictureOfANewStart();
        // No effect asks for this one; without it the depths that stand in alpha weigh the glow.
        if (name == "bloomForceAlpha")
            expectSquareAndBackground(made);
        else
            EXPECT_EQ(changeFrom(programs[index].left, made), 0);
    }
}

// Bloom does not ask for it.
TEST_F(CapabilityPictures, WithoutItsProgramToneMappingLeavesThePictureAlone) {
    recorder.refuse("glCompileShaderARB", 2 * 21, 1);
    RAVOLT::HDROn();
    testing::internal::CaptureStdout();
    const Picture made = pictureOfANewStart();
    testing::internal::GetCapturedStdout();
    RAVOLT::HDROff();
    EXPECT_FALSE(RVSHADER::bloomToneMapping->isOperative());
    EXPECT_EQ(changeFrom(all, made), 0);
}

} // namespace
} // namespace ravolt::test
