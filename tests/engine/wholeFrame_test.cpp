// A whole frame with everything on, call by call: the calls of each step, written by hand, against
// a recording. No display: the driver is silent.
//
// The nodes only mark the profile that they are drawn in, and the last one enables as much state as
// a node can, so that the steps are seen to restore it.

#include "ravolt/RVHELPER.h"
#include "ravolt/RVSHADER.h"
#include "testing/mark.h"
#include "tests/engine/adaptedLuminance.h"
#include "tests/engine/effectsTest.h"
#include "tests/scene/sceneProbes.h"

namespace ravolt::test {
namespace {

constexpr int targetX = 64, targetY = 48, mapSize = 64, luminanceSize = 256;
constexpr int windowX = 128, windowY = 96;

Calls operator+(const Calls &a, const Calls &b) {
    std::vector<Call> all(a.begin(), a.end());
    all.insert(all.end(), b.begin(), b.end());
    return Calls(std::move(all));
}

// --- the parts of the sequence

GLuint textureName(int index) { return RVOPENGL::getFbo(index)->getTexture()->getGLId(); }

Calls drawn(const std::string &node, RV_OPENGL_PROFILE profile) {
    return {Call(markName + node + " in profile " + std::to_string(profile), {})};
}

Calls target(int index) {
    const RVFBO *fbo = RVOPENGL::getFbo(index);
    return {{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, fbo->getGLId()},
            {"glViewport", 0, 0, fbo->getSizeX(), fbo->getSizeY()}};
}
const Calls window = {{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}};

Calls clear(double mask) { return {{"glClear", mask}}; }
constexpr double both = GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT;

const Calls depthTestOn = {{"glEnable", GL_DEPTH_TEST}},
            depthTestOff = {{"glDisable", GL_DEPTH_TEST}}, blendingOn = {{"glEnable", GL_BLEND}},
            blendingOff = {{"glDisable", GL_BLEND}}, lightingOff = {{"glDisable", GL_LIGHTING}},
            projectionMode = {{"glMatrixMode", GL_PROJECTION}},
            modelviewMode = {{"glMatrixMode", GL_MODELVIEW}}, identity = {{"glLoadIdentity"}},
            push = {{"glPushMatrix"}}, pop = {{"glPopMatrix"}};
const Calls readModelview = {{"glGetFloatv", GL_MODELVIEW_MATRIX}};

Calls color(double red, double green, double blue, double alpha) {
    return {{"glColor4f", red, green, blue, alpha}};
}
Calls colorMask(int color, int alpha) { return {{"glColorMask", color, color, color, alpha}}; }

Calls screenOrtho(int x, int y) { return {{"glOrtho", 0, x, y, 0, -1, 1}}; }

// A projection of its own, in pixels, and an identity on the modelview matrix.
Calls pixels(int x, int y) {
    return projectionMode + push + identity + screenOrtho(x, y) + modelviewMode + identity;
}
const Calls popProjection = projectionMode + pop + modelviewMode;

Calls quad(int x, int y) {
    return {{"glBegin", GL_QUADS}, {"glTexCoord2f", 0, 1},
            {"glVertex2i", 0, 0},  {"glTexCoord2f", 0, 0},
            {"glVertex2i", 0, y},  {"glTexCoord2f", 1, 0},
            {"glVertex2i", x, y},  {"glTexCoord2f", 1, 1},
            {"glVertex2i", x, 0},  {"glEnd"}};
}

Calls unit(int number) { return {{"glActiveTextureARB", GL_TEXTURE0 + number}}; }
Calls texturing(const char *enable, int number) {
    return unit(number) + Calls{{enable, GL_TEXTURE_2D}};
}
Calls texturingOn(int number) { return texturing("glEnable", number); }
Calls texturingOff(int number) { return texturing("glDisable", number); }

// The texture of a target on a unit where texturing is on; a program gets its sampler's number.
Calls texture(int index, int number = 0) {
    return unit(number) + Calls{{"glBindTexture", GL_TEXTURE_2D, textureName(index)}};
}
Calls sampler(int number) {
    constexpr unsigned int slot[] = {0, 1, 8, 9};
    return {{"glUniform1iARB", RVSHADER::bloomCombine->getParam(slot[number]), number}};
}

// The call that uses a program.
Calls program(const RVSHADER *shader) {
    Recorder &recorder = Recorder::instance();
    const Calls before = recorder.stop();
    RVSHADER::disable();
    const Calls use = callsOf([&] { const_cast<RVSHADER *>(shader)->render(nullptr); });
    RVSHADER::disable();
    return use;
}
const Calls noProgram = {{"glUseProgramObjectARB", 0}};

Calls value(const RVSHADER *shader, unsigned int slot, double number) {
    return {{"glUniform1fARB", shader->getParam(slot), number}};
}
Calls sizes(const RVSHADER *shader, int x, int y) {
    return value(shader, 2, x) + value(shader, 3, y);
}

// --- the scene

// Marks its draws and, on request, enables every state that a node may.
template <class Node> class Marked : public Node {
  public:
    explicit Marked(const char *itsName) : name(itsName) {}

    bool render(void *) override {
        Recorder::instance().mark(name + " in profile " + std::to_string(RVOPENGL::getProfile()));
        if (enablesAll) {
            RVOPENGL::blendingOn();
            RVLIGHT::lightingOn();
            RVTEXTURE::texturingOn(0);
            RVTEXTURE::texturingOn(1);
            RVSHADER::pplSpot->render(nullptr);
        }
        return true;
    }

    bool enablesAll = false;

  private:
    std::string name;
};

class Dome : public RVNODE {
  public:
    Dome() { type = RV_NODE_TYPE_SKYDOME; }
};

constexpr float luminanceBefore = 0.75f;

class WholeFrame : public SilentEngineTest {
  protected:
    RVCAMERA *camera = nullptr;
    RVLIGHT *caster = nullptr;
    std::vector<RVNODE *> roots;

    WholeFrame() { settings.setShaders(true); }

    void SetUp() override {
        SilentEngineTest::SetUp();
        camera = new RVCAMERA;
        camera->setPosition(1, 2, 3);
        auto *light = new Marked<RVLIGHT>("caster");
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->castShadows(true);
        light->setPosition(5, 4, 0);
        light->setDirection(Z3MVECTOR3D(-1, 0, 0));
        light->setCutOff(45);
        light->setShadowNearPlane(1);
        light->setShadowFarPlane(3);
        auto *glass = new Marked<RVHELPER>("glass");
        glass->enablesAll = true;
        caster = light;
        roots = {glass, light, new Marked<Dome>("dome"), new Marked<CustomNode>("wall")};
        auto *sky = new RVNODE;
        (new Marked<CustomNode>("sky"))->link(sky);
        sky->setRotation(10, 20, 30);
        RAVOLT::setSkybox(sky);
        switchAllOn();
        recorder.stopClock();
        frame(true);
        adaptedLuminance() = luminanceBefore;
        recorder.advanceClock(0.25);
    }

    void TearDown() override {
        resetEffects();
        SilentEngineTest::TearDown();
    }

    static void switchAllOn() {
        allEffectsOn();
        RAVOLT::setBloomingIntensity(0.625f);
        RAVOLT::setHDRExposure(1.5f);
        RAVOLT::setDOFFocus(0.375f);
        RAVOLT::setDOFRange(7);
        EXPECT_TRUE(RAVOLT::isShadowed());
    }

    Calls frame(bool blit) {
        recorder.start();
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        for (RVNODE *root : roots)
            root->pass();
        printedBy([&] { RAVOLT::end3D(blit); });
        const Calls calls = recorder.stop();
        RAVOLT::swap();
        return calls;
    }
};

// The last node when all of its state was off.
Calls glass(RV_OPENGL_PROFILE profile) {
    return drawn("glass", profile) + blendingOn + Calls{{"glEnable", GL_LIGHTING}} +
           texturingOn(0) + texturingOn(1) + program(RVSHADER::pplSpot);
}

// --- the steps

struct Step {
    const char *name;
    Calls calls;
};
using Steps = std::vector<Step>;

Calls matrix(const char *load, const float (&numbers)[16]) {
    return {Call(load, std::vector<double>(numbers, numbers + 16))};
}

constexpr RV_OPENGL_PROFILE full = RV_OPENGL_PROFILE_FULL, flat = RV_OPENGL_PROFILE_FLAT,
                            depth = RV_OPENGL_PROFILE_ZPASS;

// The last frame has left texturing on, on unit 0, for its copy.
Steps opening() {
    const Calls coordinatesOff = {{"glDisableClientState", GL_TEXTURE_COORD_ARRAY}};
    const auto clientUnit = [](int number) {
        return Calls{{"glClientActiveTextureARB", GL_TEXTURE0 + number}};
    };
    Calls turns;
    for (const auto &[x, y, z] : std::initializer_list<std::array<double, 3>>{
             {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}})
        turns = turns + Calls{{"glRotatef", 0, x, y, z}};
    return {
        {"clear", target(0) + clear(both)},
        {"begin3D: arrays", clientUnit(1) + coordinatesOff + clientUnit(0) + coordinatesOff +
                                Calls{{"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0}}},
        {"begin3D: textures", texturingOff(0)},
        {"begin3D: view", identity + turns + Calls{{"glTranslatef", -1, -2, -3}} + readModelview},
        // Of each of the four trees; the calls of the matrix stack may be absent.
        {"pass", readModelview + readModelview + readModelview + readModelview}};
}

Steps depthPass() {
    return {{"2 depth pass: target", target(1) + clear(both)},
            {"2 depth pass: list",
             drawn("caster", depth) + drawn("dome", depth) + drawn("wall", depth) + glass(depth)},
            {"2 depth pass: back to the scene",
             noProgram + target(0) + clear(GL_DEPTH_BUFFER_BIT) + blendingOff}};
}

Steps skybox() {
    return {
        {"3.1 skybox: state", texturingOff(0) + texturingOff(1) + lightingOff + color(1, 1, 1, 1)},
        {"3.2 skybox: matrix",
         identity + matrix("glMultMatrixf", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1}) +
             Calls{{"glRotatef", 10, 1, 0, 0},
                   {"glRotatef", 20, 0, 1, 0},
                   {"glRotatef", 30, 0, 0, 1}}},
        {"3.3 skybox: its reading", readModelview},
        {"3.5 skybox: first child", drawn("sky", full)}};
}

// A cone of 90 degrees from 1 to 3, at (5, 4, 0), along -x.
Steps lightProjection() {
    const float turn[16] = {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1};
    return {{"4.3 shadows: the light's projection",
             projectionMode + push + identity + Calls{{"glFrustum", -1, 1, -1, 1, 1, 3}} +
                 modelviewMode + Calls{{"glGetFloatv", GL_PROJECTION_MATRIX}}},
            // The light's final matrix: the calls of the matrix stack may be absent.
            {"4.4 shadows: the light's view",
             matrix("glLoadMatrixf", turn) + Calls{{"glTranslatef", -5, -4, 0}} + readModelview}};
}

Steps shadowMap(const Calls &switchesOff, const Calls &lastEntry) {
    return {{"4.7 map: back faces", {{"glCullFace", GL_FRONT}, {"glGetIntegerv", GL_VIEWPORT}}},
            {"4.7 map: target", target(2) + colorMask(0, 0) + Calls{{"glShadeModel", GL_FLAT}} +
                                    clear(GL_DEPTH_BUFFER_BIT) + switchesOff},
            {"4.7 map: list without lights and sky", drawn("wall", flat) + lastEntry},
            {"4.7 map: end",
             colorMask(1, 1) + Calls{{"glShadeModel", GL_SMOOTH}, {"glCullFace", GL_BACK}}},
            {"4.7 map: back to the scene",
             target(0) + Calls{{"glViewport", 0, 0, targetX, targetY}} + blendingOff}};
}

Steps lightProjectionEnds() { return {{"4.8 shadows: the projection again", popProjection}}; }

// The program of the map's last entry is still in use; without a map there is none, and the list
// finds nothing on.
enum class Map { drawn, kept };

Steps shadowedPass(Map map) {
    const float projection[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0};
    const float view[16] = {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, -4, -5, 1};
    const float cameraInverse[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    const Calls textureMode = {{"glMatrixMode", GL_TEXTURE}};
    return {{"4.9 shadows: the matrix of unit 1",
             unit(1) + textureMode + identity +
                 Calls{{"glTranslatef", 0.5, 0.5, 0.5}, {"glScalef", 0.5, 0.5, 0.5}} +
                 matrix("glMultMatrixf", projection) + matrix("glMultMatrixf", view) +
                 matrix("glMultMatrixf", cameraInverse) + modelviewMode},
            {"4.10 shadows: the map on unit 1",
             Calls{{"glBindTexture", GL_TEXTURE_2D, textureName(2)}} +
                 (map == Map::drawn ? sampler(1) : Calls()) + unit(0)},
            {"4.11 shadows: list",
             drawn("caster", full) + drawn("dome", full) + drawn("wall", full) +
                 (map == Map::drawn ? drawn("glass", full) + blendingOn : glass(full))},
            {"4.12 shadows: end", unit(1) + textureMode + identity + modelviewMode + unit(0) +
                                      texturingOff(1) + blendingOff}};
}

// With `lastEntry` for what the last one does.
Steps mainPass(const Calls &lastEntry) {
    return {{"5 main pass",
             drawn("caster", full) + drawn("dome", full) + drawn("wall", full) + lastEntry}};
}
Calls glassAgain() { return drawn("glass", full) + blendingOn + texturingOn(1); }

// One direction of a level of the blur.
Calls blurOnce(int source, const RVSHADER *shader, int into, int x, int y) {
    return target(into) + program(shader) + sizes(shader, x, y) + texture(source) + sampler(0) +
           quad(x, y);
}

Calls blurLevel(int source, int result, int scratch) {
    const int x = RVOPENGL::getFbo(result)->getSizeX(), y = RVOPENGL::getFbo(result)->getSizeY();
    return pixels(x, y) + blurOnce(source, RVSHADER::bloomH, scratch, x, y) +
           blurOnce(scratch, RVSHADER::bloomV, result, x, y) + popProjection + identity;
}

// The levels on their units: units 0 and 1 are on; a texture that is still bound is not bound
// again, but any program's samplers are pointed at their units.
Calls levelsForTheFirstTime() {
    return texture(6) + sampler(0) + sampler(0) +                      //
           texture(8, 1) + sampler(1) + sampler(1) +                   //
           texturingOn(2) + texture(10, 2) + sampler(2) + sampler(2) + //
           texturingOn(3) + texture(12, 3) + sampler(3) + sampler(3);
}
Calls levelsOnceMore() {
    return texture(6) + sampler(0) + sampler(0) + sampler(1) + sampler(2) + sampler(3);
}
Calls levelsOff() { return texturingOff(1) + texturingOff(2) + texturingOff(3); }

// The blur of `source` into target 1, whose alpha the colour mask protects.
Calls blur(int source, const RVSHADER *combine, const Calls &levels, const Calls &off) {
    return colorMask(1, 0) + blurLevel(source, 6, 7) + blurLevel(6, 8, 9) + blurLevel(8, 10, 11) +
           blurLevel(10, 12, 13) + target(1) + pixels(targetX, targetY) + program(combine) +
           levels + quad(targetX, targetY) + off + window + popProjection + identity +
           colorMask(1, 1);
}

Steps brightParts() {
    return {{"6.1 bright pass: state", target(4) + depthTestOff + pixels(targetX, targetY) +
                                           blendingOff + lightingOff + color(1, 1, 1, 1)},
            {"6.1 bright pass: picture", program(RVSHADER::bloomBright) +
                                             sizes(RVSHADER::bloomBright, targetX, targetY) +
                                             texture(0) + sampler(0) + quad(targetX, targetY)},
            {"6.2 blur of the bright parts",
             blur(4, RVSHADER::bloomCombine, levelsForTheFirstTime(), levelsOff())}};
}

Steps luminance() {
    return {{"6.3 luminance: the scene in small",
             target(3) + pixels(luminanceSize, luminanceSize) + noProgram + clear(both) +
                 texture(0) + color(1, 1, 1, 1) + quad(luminanceSize, luminanceSize)},
            {"6.3 luminance: in one pixel",
             texture(3) +
                 Calls{{"glGenerateMipmapEXT", GL_TEXTURE_2D},
                       {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 1}} +
                 quad(1, 1) + Calls{{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0}}},
            {"6.3 luminance: its reading",
             Calls{{"glReadBuffer", GL_COLOR_ATTACHMENT0_EXT},
                   {"glReadPixels", 0, luminanceSize - 1, 1, 1, GL_RGB, GL_FLOAT}} +
                 window + popProjection + identity}};
}

Steps backToTheScene() { return {{"6.4 back to the scene", target(0)}}; }

const Calls copyOfScene = {{"glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 0, 0, targetX, targetY}};

// A quarter of a second towards nothing: the silent driver's pixel is black.
Steps toneMapping(float before) {
    const RVSHADER *shader = RVSHADER::bloomToneMapping;
    return {{"6.5 tone mapping: a copy of the scene", texture(5) + copyOfScene},
            {"6.5 tone mapping: the adapted luminance and the exposure",
             program(shader) + value(shader, 10, before * 0.75) + value(shader, 11, 1.5)},
            {"6.5 tone mapping: picture", color(1, 1, 1, 1) + quad(targetX, targetY) + noProgram}};
}

Steps overlay() {
    return {{"6.6 overlay: projection",
             projectionMode + identity + screenOrtho(targetX, targetY) + modelviewMode + identity},
            {"6.6 overlay: picture", blendingOn + Calls{{"glBlendFunc", GL_SRC_ALPHA, GL_ONE}} +
                                         program(RVSHADER::bloomForceAlpha) +
                                         color(1, 1, 1, 0.625) + texture(1) + sampler(0) +
                                         quad(targetX, targetY) + noProgram},
            {"6.6 overlay: blending",
             blendingOff + Calls{{"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}}},
            {"6.7 bloom: end", popProjection + depthTestOn}};
}

Steps depthOfField(const Calls &switchesOff, const Calls &levels, const Calls &levelsAreOff) {
    return {
        {"7.1 depth of field: state",
         pixels(targetX, targetY) + switchesOff + color(0, 0, 0, 1) + depthTestOff},
        {"7.2 blur of the scene", blur(0, RVSHADER::dofCombine, levels, levelsAreOff)},
        {"7.3 depth of field: program", target(0) + program(RVSHADER::dof) +
                                            value(RVSHADER::dof, 12, 0.375) +
                                            value(RVSHADER::dof, 13, 7)},
        {"7.3 depth of field: a copy of the scene", texture(5) + sampler(0) + copyOfScene},
        {"7.3 depth of field: the blurred scene", texturingOn(1) + texture(1, 1) + sampler(1)},
        {"7.3 depth of field: picture", quad(targetX, targetY)},
        {"7.4 depth of field: end", texturingOff(1) + depthTestOn + popProjection + depthTestOn}};
}

Steps finalCopy() {
    return {{"8.1 copy: projection", window + projectionMode + push + identity +
                                         Calls{{"glViewport", 0, 0, windowX, windowY}} +
                                         screenOrtho(windowX, windowY) + modelviewMode + identity},
            {"8.2 copy: state", noProgram + depthTestOff + color(1, 1, 1, 1)},
            {"8.3 copy: picture", texture(0) + quad(windowX, windowY)},
            {"8.4 copy: end", popProjection + depthTestOn}};
}

Steps operator+(Steps a, const Steps &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Names the first step that differs, with its calls.
void expectSteps(const Calls &calls, const Steps &steps) {
    std::size_t next = 0;
    for (const Step &step : steps) {
        const std::size_t begin = next;
        for (const Call &wanted : step.calls) {
            if (next < calls.size() && calls[next] == wanted) {
                ++next;
                continue;
            }
            const auto from = calls.begin() + static_cast<std::ptrdiff_t>(begin);
            const auto number =
                static_cast<std::ptrdiff_t>(std::min(step.calls.size() + 4, calls.size() - begin));
            FAIL() << "step \"" << step.name << "\", call " << next - begin << " of it, should be "
                   << testing::PrintToString(wanted) << "; the step's calls should be\n"
                   << step.calls.text() << "and are\n"
                   << Calls(std::vector<Call>(from, from + number)).text();
        }
    }
    const Calls rest(
        std::vector<Call>(calls.begin() + static_cast<std::ptrdiff_t>(next), calls.end()));
    EXPECT_TRUE(rest.empty()) << "after the last step:\n" << rest.text();
}

// --- frames

Steps bloomWithHDR() {
    return brightParts() + luminance() + backToTheScene() + toneMapping(luminanceBefore) +
           overlay();
}
Steps afterBloom() { return depthOfField({}, levelsOnceMore(), {}) + finalCopy(); }
Steps shadows() {
    return lightProjection() + shadowMap({}, glass(flat)) + lightProjectionEnds() +
           shadowedPass(Map::drawn);
}
Steps untilTheMainPass() { return depthPass() + skybox() + shadows() + mainPass(glassAgain()); }

TEST_F(WholeFrame, MakesTheStatedCallsStepByStep) {
    expectSteps(frame(true), opening() + untilTheMainPass() + bloomWithHDR() + afterBloom());
    EXPECT_NEAR(adaptedLuminance(), luminanceBefore * 0.75f, 1e-6f);
}

TEST_F(WholeFrame, EndsAfterTheDepthOfFieldWithoutBlit) {
    expectSteps(frame(false), opening() + untilTheMainPass() + bloomWithHDR() +
                                  depthOfField({}, levelsOnceMore(), {}));
}

// On purpose: what composes the picture is drawn in lines then, too.
TEST_F(WholeFrame, IsDrawnInLinesToItsEndUnderWireframe) {
    RAVOLT::wireframeOn();
    const Calls calls = frame(true);
    RAVOLT::wireframeOff();
    const Steps lines = {{"1 wireframe", Calls{{"glDisable", GL_CULL_FACE},
                                               {"glPolygonMode", GL_FRONT_AND_BACK, GL_LINE}}}};
    expectSteps(calls, opening() + lines + untilTheMainPass() + bloomWithHDR() + afterBloom());
}

// What the depth pass has enabled is still on when the map begins.
TEST_F(WholeFrame, GoesFromTheDepthsToTheMapWithoutASkybox) {
    RAVOLT::setSkybox(nullptr);
    const Calls lastEntry = drawn("glass", flat) + blendingOn + Calls{{"glEnable", GL_LIGHTING}} +
                            program(RVSHADER::pplSpot);
    expectSteps(frame(true), opening() + depthPass() + lightProjection() +
                                 shadowMap(lightingOff, lastEntry) + lightProjectionEnds() +
                                 shadowedPass(Map::drawn) + mainPass(glassAgain()) +
                                 bloomWithHDR() + afterBloom());
}

TEST_F(WholeFrame, SkipsTheMapWhenItIsKept) {
    RAVOLT::skipShadowsGeneration();
    expectSteps(frame(true), opening() + depthPass() + skybox() + lightProjection() +
                                 lightProjectionEnds() + shadowedPass(Map::kept) +
                                 mainPass(glassAgain()) + bloomWithHDR() + afterBloom());
}

TEST_F(WholeFrame, SkipsTheShadowsWithoutACaster) {
    caster->castShadows(false);
    expectSteps(frame(true), opening() + depthPass() + skybox() + mainPass(glass(full)) +
                                 bloomWithHDR() + afterBloom());
    EXPECT_LOGGED_EXACTLY(
        "   [!] Invalid shadow pass: no shadow casters detected @ RAVOLT::end3D\n");
}

TEST_F(WholeFrame, SkipsTheToneMappingWithoutHDROrBloom) {
    RAVOLT::HDROff();
    expectSteps(frame(true), opening() + untilTheMainPass() + brightParts() + backToTheScene() +
                                 overlay() + afterBloom());
    RAVOLT::HDROn();
    RAVOLT::bloomingOff();
    expectSteps(frame(true),
                opening() + untilTheMainPass() +
                    depthOfField(blendingOff + lightingOff, levelsForTheFirstTime(), levelsOff()) +
                    finalCopy());
    EXPECT_EQ(adaptedLuminance(), luminanceBefore);
}

} // namespace
} // namespace ravolt::test
