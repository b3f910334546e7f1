// The blur pyramid and the measure of the luminance, call by call before a silent driver. What they
// make of a picture is in RVFBO_test.cpp.

#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"

#include <vector>

namespace ravolt::test {
namespace {

class BlurCalls : public SilentEngineTest {
  protected:
    BlurCalls() { settings.setShaders(true); }

    void SetUp() override {
        SilentEngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVTEXTURE::texturingOn(0);
        RVSHADER::disable();
    }

    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }

    template <class Step> Calls callsOf(Step step) {
        recorder.start();
        step();
        return recorder.stop();
    }
};

// Makes the calls that are expected, one after the other.
class Script {
  public:
    Calls calls() const { return Calls(list); }

    void target(int index) {
        const RVFBO *target = RVOPENGL::getFbo(index);
        list.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, target->getGLId()});
        list.push_back({"glViewport", 0, 0, target->getSizeX(), target->getSizeY()});
    }
    void window() { list.push_back({"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}); }

    void pushPixelsOf(int index) {
        const RVFBO *target = RVOPENGL::getFbo(index);
        list.push_back({"glMatrixMode", GL_PROJECTION});
        list.push_back({"glPushMatrix"});
        list.push_back({"glLoadIdentity"});
        list.push_back({"glOrtho", 0, target->getSizeX(), target->getSizeY(), 0, -1, 1});
        list.push_back({"glMatrixMode", GL_MODELVIEW});
        list.push_back({"glLoadIdentity"});
    }
    void popPixels() {
        list.push_back({"glMatrixMode", GL_PROJECTION});
        list.push_back({"glPopMatrix"});
        list.push_back({"glMatrixMode", GL_MODELVIEW});
        list.push_back({"glLoadIdentity"});
    }

    void program(GLuint name) { list.push_back({"glUseProgramObjectARB", name}); }
    void sizes(RVSHADER *program, int index) {
        const RVFBO *target = RVOPENGL::getFbo(index);
        const auto width = static_cast<int>(program->getParam(2));
        const auto height = static_cast<int>(program->getParam(3));
        list.push_back({"glUniform1fARB", width, target->getSizeX()});
        list.push_back({"glUniform1fARB", height, target->getSizeY()});
    }

    void texture(int index, bool switchesOn = false, unsigned int unit = 0) {
        if (switchesOn) {
            select(unit);
            list.push_back({"glEnable", GL_TEXTURE_2D});
        }
        select(unit);
        const GLuint name = RVOPENGL::getFbo(index)->getTexture()->getGLId();
        list.push_back({"glBindTexture", GL_TEXTURE_2D, name});
    }
    void noTexture(unsigned int unit) {
        select(unit);
        list.push_back({"glDisable", GL_TEXTURE_2D});
    }

    void quad(int width, int height) {
        list.push_back({"glBegin", GL_QUADS});
        list.push_back({"glTexCoord2f", 0, 1});
        list.push_back({"glVertex2i", 0, 0});
        list.push_back({"glTexCoord2f", 0, 0});
        list.push_back({"glVertex2i", 0, height});
        list.push_back({"glTexCoord2f", 1, 0});
        list.push_back({"glVertex2i", width, height});
        list.push_back({"glTexCoord2f", 1, 1});
        list.push_back({"glVertex2i", width, 0});
        list.push_back({"glEnd"});
    }
    void quadOver(int index) {
        const RVFBO *target = RVOPENGL::getFbo(index);
        quad(target->getSizeX(), target->getSizeY());
    }

    void call(const Call &other) { list.push_back(other); }

  private:
    std::vector<Call> list;

    void select(unsigned int unit) { list.push_back({"glActiveTextureARB", GL_TEXTURE0 + unit}); }
};

GLuint nameOf(RVSHADER *program) {
    Recorder &recorder = Recorder::instance();
    RVSHADER::disable();
    recorder.start();
    program->render(nullptr);
    const Calls calls = recorder.stop();
    RVSHADER::disable();
    return static_cast<GLuint>(calls.named("glUseProgramObjectARB")[0].arguments[0]);
}

TEST_F(BlurCalls, BlurIsFourLevelsAndTheirSumInTheStatedOrder) {
    const GLuint alongY = nameOf(RVSHADER::bloomH), alongX = nameOf(RVSHADER::bloomV);
    const GLuint sum = nameOf(RVSHADER::dofCombine);
    Script script;
    int source = 4;
    for (const int result : {6, 8, 10, 12}) {
        const int scratch = result + 1;
        script.pushPixelsOf(result);
        script.target(scratch);
        script.program(alongY);
        script.sizes(RVSHADER::bloomH, result);
        script.texture(source);
        script.quadOver(scratch);
        script.target(result);
        script.program(alongX);
        script.sizes(RVSHADER::bloomV, result);
        script.texture(scratch);
        script.quadOver(result);
        script.popPixels();
        source = result;
    }
    script.target(1);
    script.pushPixelsOf(1);
    script.program(sum);
    script.texture(6);
    script.texture(8, true, 1);
    script.texture(10, true, 2);
    script.texture(12, true, 3);
    script.quadOver(1);
    for (const unsigned int unit : {1u, 2u, 3u})
        script.noTexture(unit);
    script.window();
    script.popPixels();

    const Calls calls = callsOf([] {
        EXPECT_TRUE(RVOPENGL::getFbo(4)->blur(RVOPENGL::getFbo(1), RVSHADER::dofCombine, 6));
    });
    EXPECT_EQ(calls.without({"glUniform1iARB"}), script.calls());
    // The samplers, by unit.
    const Calls samplers = calls.named("glUniform1iARB");
    ASSERT_GE(samplers.size(), 4u);
    const unsigned int slots[] = {0, 1, 8, 9};
    for (int unit = 0; unit < 4; ++unit)
        EXPECT_TRUE(samplers.contains(
            Call{"glUniform1iARB", RVSHADER::dofCombine->getParam(slots[unit]), unit}))
            << unit;
}

TEST_F(BlurCalls, LuminanceIsTwoQuadsAndOnePixelInTheStatedOrder) {
    RVSHADER::bloomBright->render(nullptr); // to be switched off
    Script script;
    script.target(3);
    script.pushPixelsOf(3);
    script.program(0);
    script.call({"glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT});
    script.texture(0);
    script.call({"glColor4f", 1, 1, 1, 1});
    script.quadOver(3);
    script.texture(3);
    script.call({"glGenerateMipmapEXT", GL_TEXTURE_2D});
    // Level 0 is drawn into and must not be read.
    script.call({"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 1});
    script.quad(1, 1);
    script.call({"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0});
    script.call({"glReadBuffer", GL_COLOR_ATTACHMENT0_EXT});
    script.call({"glReadPixels", 0, 255, 1, 1, GL_RGB, GL_FLOAT});
    script.window();
    script.popPixels();
    float luminance = 0;
    for (float *result : {static_cast<float *>(nullptr), &luminance}) {
        RVSHADER::bloomBright->render(nullptr);
        recorder.answerReadPixels({0, 0, 128, 63, 0, 0, 0, 64, 0, 0, 128, 64}); // 1, 2, 4
        EXPECT_EQ(callsOf([&] { EXPECT_TRUE(RVOPENGL::getFbo(9)->computeLuminance(result)); }),
                  script.calls());
    }
    EXPECT_FLOAT_EQ(luminance, 0.3f * 1 + 0.59f * 2 + 0.11f * 4);
}

} // namespace
} // namespace ravolt::test
