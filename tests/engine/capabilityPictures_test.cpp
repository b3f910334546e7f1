// All effects requested, on drivers that lack something: the picture is that of a complete driver
// with only the remaining effects requested. Only the cases in which the picture could differ;
// effectCapabilities_test.cpp has all of them, without pictures.

#include "ravolt/RVSHADER.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/effectsTest.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/supportedEffects.h"

#include <map>

namespace ravolt::test {
namespace {

constexpr int center = 64, middle = 48;

class CapabilityPictures : public EffectsTest {
  protected:
    void SetUp() override {
        resetCapabilities();
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        ASSERT_TRUE(RVSHADER::useBloom() && RVSHADER::useDOF() && RVSHADER::useShadows());
        RAVOLT::setDOFFocus(0);
        RAVOLT::setDOFRange(1);
        for (const bool bloom : {false, true})
            for (const bool focus : {false, true})
                wanted[{bloom, focus}] = picture(bloom, focus);
    }

    void TearDown() override {
        recorder.reset();
        recorder.suppressUnitErrors();
        resetCapabilities();
        EffectsTest::TearDown();
        resetCapabilities();
    }

    // A square before the background, in a frame of its own nodes.
    static Picture picture(bool bloom, bool focus) {
        bloom ? RAVOLT::bloomingOn() : RAVOLT::bloomingOff();
        focus ? RAVOLT::DOFOn() : RAVOLT::DOFOff();
        auto *square = new BrightSquare;
        drawFrame(nullptr, square);
        delete square;
        return readFrame();
    }

    // All effects requested, in an engine that is started again on the driver that the recorder
    // simulates. OpenGL refuses to use a program that does not link, at each of its uses.
    Picture pictureOfANewStart() {
        RAVOLT::free();
        resetCapabilities();
        EXPECT_TRUE(RAVOLT::init(&settings));
        const Picture made = picture(true, true);
        while (glGetError() != GL_NO_ERROR)
            ;
        recorder.reset();
        recorder.suppressUnitErrors();
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
    const auto expectLeft = [this](const Supported &left, const std::vector<std::string> &names) {
        for (const std::string &name : names) {
            SCOPED_TRACE(name);
            recorder.nullEntryPoint(name);
            EXPECT_EQ(changeFrom(left, pictureOfANewStart()), 0);
        }
    };
    expectLeft(nothing, wordsOf("glGenFramebuffersEXT glGenerateMipmapEXT"));
    expectLeft(nothing, functionsOfPrograms);
    expectLeft(all, wordsOf("glMultiTexCoord2fARB glClientActiveTextureARB glBindBufferARB "
                            "glDeleteObjectARB glDetachObjectARB glUniform3fvARB "
                            "glVertexAttribPointerARB glGetAttribLocationARB glBeginQueryARB"));
}

TEST_F(CapabilityPictures, WithoutAProgramTheOtherEffectsAreSeen) {
    ASSERT_EQ(programs.size(), 35u);
    for (unsigned int index = 0; index < programs.size(); ++index) {
        const std::string &name = programs[index];
        if (name.find("bloom") != 0 && name.find("dof") != 0 && name != "pplSpotS")
            continue;
        SCOPED_TRACE(name);
        recorder.failCalls("glCompileShaderARB", 2 * index + index % 2, 1);
        const Picture made = pictureOfANewStart();
        // No effect requires this one; without it the depths in alpha weigh the glow.
        if (name == "bloomForceAlpha")
            expectSquareAndBackground(made);
        else
            EXPECT_EQ(changeFrom(leftWithout(name), made), 0);
    }
}

// Bloom does not require it.
TEST_F(CapabilityPictures, WithoutItsProgramToneMappingDoesNotChangeThePicture) {
    recorder.failCalls("glCompileShaderARB", 2 * 21, 1);
    RAVOLT::HDROn();
    Picture made;
    printedBy([&] { made = pictureOfANewStart(); });
    RAVOLT::HDROff();
    EXPECT_FALSE(RVSHADER::bloomToneMapping->isOperative());
    EXPECT_EQ(changeFrom(all, made), 0);
}

} // namespace
} // namespace ravolt::test
